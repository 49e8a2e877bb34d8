#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>

class QIODevice;

// What xkeyboard-config says about a layout or one of its variants: its description
// and the languages it is meant for.
struct XkbLayoutDescription {
    QString description;   // "German (no dead keys)"
    QStringList languages; // two-letter codes where ISO 639-1 has one, else the 639-2 code
};

// The layouts of an xkeyboard-config registry (evdev.xml), read once.
class XkbLayoutRegistry
{
public:
    // The installed registry; empty when the file is missing or unreadable.
    static const XkbLayoutRegistry &system();
    static XkbLayoutRegistry fromDevice(QIODevice &device);

    // A variant without languages of its own takes its layout's; an unknown variant
    // falls back to the layout.
    [[nodiscard]] std::optional<XkbLayoutDescription> describe(const QString &layout, const QString &variant) const;
    // The layout and variant a description names ("German (no dead keys)" -> de, nodeadkeys),
    // for compositors that report only descriptions; a plain layout wins over its variants.
    [[nodiscard]] std::optional<std::pair<QString, QString>> layoutNamed(const QString &description) const;
    [[nodiscard]] qsizetype size() const { return m_items.size(); }

private:
    // Keyed "layout" and "layout(variant)".
    QHash<QString, XkbLayoutDescription> m_items;
};
