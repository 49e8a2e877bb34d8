#include "PasteboardSnapshot.h"

#include <QClipboard>
#include <QMimeData>

namespace {

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

PasteboardSnapshot PasteboardSnapshot::capture(const QClipboard &clipboard, QClipboard::Mode mode)
{
    PasteboardSnapshot snapshot;
    const QMimeData *data = clipboard.mimeData(mode);
    if (!data)
        return snapshot;
    const QStringList formats = data->formats();
    for (const QString &format : formats) {
        if (isMetaFormat(format) || !data->hasFormat(format))
            continue;
        snapshot.formats.append({format, data->data(format)});
    }
    return snapshot;
}

void PasteboardSnapshot::restore(QClipboard &clipboard, QClipboard::Mode mode) const
{
    if (formats.isEmpty()) {
        clipboard.clear(mode);
        return;
    }
    auto *data = new QMimeData;
    for (const auto &[format, bytes] : formats)
        data->setData(format, bytes);
    clipboard.setMimeData(data, mode);
}
