#include "PasteboardSnapshot.h"

QCoro::Task<PasteboardSnapshot> PasteboardSnapshot::capture(std::shared_ptr<Clipboard> clipboard,
                                                            Clipboard::Selection selection)
{
    // Named, not a temporary: g++ 12 mishandles aggregates built around a co_await.
    ClipboardFormats formats = co_await clipboard->read(selection);
    PasteboardSnapshot snapshot;
    snapshot.formats = std::move(formats);
    co_return snapshot;
}

bool PasteboardSnapshot::restore(Clipboard &clipboard, Clipboard::Selection selection) const
{
    return clipboard.write(selection, formats);
}
