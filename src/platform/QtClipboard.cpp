#include "QtClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace {

// KDE's marker, honoured by the common clipboard managers: they do not record the transcript.
const QString passwordManagerHint = QStringLiteral("x-kde-passwordManagerHint");

QClipboard::Mode modeOf(Clipboard::Selection selection)
{
    return selection == Clipboard::Selection::primary ? QClipboard::Selection : QClipboard::Clipboard;
}

// Formats Qt's X11 clipboard lists about the selection itself, or synthesizes from
// another format; writing them back would confuse the owner negotiation.
bool isMetaFormat(const QString &format)
{
    static const QStringList meta = {
        QStringLiteral("TARGETS"),
        QStringLiteral("MULTIPLE"),
        QStringLiteral("TIMESTAMP"),
        QStringLiteral("SAVE_TARGETS"),
        QStringLiteral("application/x-qt-image"),
    };
    return meta.contains(format);
}

} // namespace

QCoro::Task<ClipboardFormats> QtClipboard::read(Selection selection)
{
    ClipboardFormats formats;
    const QMimeData *data = QGuiApplication::clipboard()->mimeData(modeOf(selection));
    if (!data)
        co_return formats;
    const QStringList listed = data->formats();
    for (const QString &format : listed) {
        if (isMetaFormat(format) || !data->hasFormat(format))
            continue;
        formats.append({format, data->data(format)});
    }
    co_return formats;
}

bool QtClipboard::mayWrite() const
{
    return m_writer == Writer::anyone || QGuiApplication::focusWindow();
}

bool QtClipboard::writeText(Selection selection, const QString &text, bool keepOutOfHistory)
{
    if (!mayWrite())
        return false;
    auto *data = new QMimeData;
    data->setText(text);
    if (keepOutOfHistory)
        data->setData(passwordManagerHint, QByteArrayLiteral("secret"));
    QGuiApplication::clipboard()->setMimeData(data, modeOf(selection));
    const QMimeData *now = QGuiApplication::clipboard()->mimeData(modeOf(selection));
    return now && now->text() == text;
}

bool QtClipboard::write(Selection selection, const ClipboardFormats &formats)
{
    if (!mayWrite())
        return false;
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (formats.isEmpty()) {
        clipboard->clear(modeOf(selection));
        return true;
    }
    auto *data = new QMimeData;
    for (const auto &[format, bytes] : formats)
        data->setData(format, bytes);
    clipboard->setMimeData(data, modeOf(selection));
    return true;
}

bool QtClipboard::hasPrimarySelection()
{
    return QGuiApplication::clipboard()->supportsSelection();
}

bool QtClipboard::holdsText(Selection selection, const QString &text)
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData(modeOf(selection));
    return data && data->data(passwordManagerHint) == "secret" && data->text() == text;
}
