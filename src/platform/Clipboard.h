#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <QCoro/QCoroTask>

#include <utility>

// Every format a selection held, each with its raw bytes, in the order the owner listed them.
using ClipboardFormats = QList<std::pair<QString, QByteArray>>;

// The desktop's clipboard and primary selection, as Quorla borrows them for a paste.
class Clipboard
{
public:
    enum class Selection { clipboard,
                           primary };

    Clipboard() = default;
    Clipboard(const Clipboard &) = delete;
    Clipboard &operator=(const Clipboard &) = delete;
    virtual ~Clipboard() = default;

    // What the selection holds now; empty when it holds nothing or its owner does not answer.
    virtual QCoro::Task<ClipboardFormats> read(Selection selection) = 0;
    // Takes the selection with this text; kept out of history, it is marked so clipboard
    // managers do not record it. False when the desktop refused.
    virtual bool writeText(Selection selection, const QString &text, bool keepOutOfHistory) = 0;
    // Takes the selection with these formats; empty formats leave it empty. False when refused.
    virtual bool write(Selection selection, const ClipboardFormats &formats) = 0;
    // False where there is no primary selection to borrow.
    [[nodiscard]] virtual bool hasPrimarySelection() = 0;
    // True while the selection still holds this text as written by writeText, kept out of
    // history; a copy made since by anyone else makes it false.
    [[nodiscard]] virtual bool holdsText(Selection selection, const QString &text) = 0;
};
