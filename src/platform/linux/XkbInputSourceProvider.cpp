#include "XkbInputSourceProvider.h"

#include "XkbKeyboardConnection.h"
#include "XkbLayoutRegistry.h"

#include <QLoggingCategory>
#include <QSocketNotifier>
#include <QTimer>

Q_LOGGING_CATEGORY(lcXkb, "quorla.xkb")

namespace {

bool sameSource(const std::optional<InputSourceInfo> &a, const std::optional<InputSourceInfo> &b)
{
    if (!a || !b)
        return a.has_value() == b.has_value();
    return a->identifier == b->identifier && a->inputModeIdentifier == b->inputModeIdentifier
        && a->localizedName == b->localizedName && a->languages == b->languages;
}

} // namespace

XkbInputSourceProvider::XkbInputSourceProvider()
    : m_connection(XkbKeyboardConnection::open())
{
    if (!m_connection) {
        qCInfo(lcXkb) << "no X display with XKB; the keyboard layout gives no language hint";
        return;
    }
    // Read events from the start, so they never pile up unread in Xlib's queue.
    m_notifier = std::make_unique<QSocketNotifier>(m_connection->fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { readEvents(); });
}

XkbInputSourceProvider::~XkbInputSourceProvider() = default;

std::optional<InputSourceInfo> XkbInputSourceProvider::currentInputSource()
{
    if (!m_connection)
        return std::nullopt;
    const auto layout = m_connection->currentLayout();
    scheduleQueuedEvents();
    if (!layout)
        return std::nullopt;

    const QString name = QString::fromStdString(layout->layout);
    const QString variant = QString::fromStdString(layout->variant);
    InputSourceInfo source;
    source.identifier = QStringLiteral("xkb:") + name;
    if (!variant.isEmpty())
        source.identifier += QLatin1Char(':') + variant;
    const auto description = XkbLayoutRegistry::system().describe(name, variant);
    if (description && !description->description.isEmpty())
        source.localizedName = description->description;
    else if (!layout->groupName.empty())
        source.localizedName = QString::fromStdString(layout->groupName);
    else
        source.localizedName = name;
    if (description)
        source.languages = description->languages;
    return source;
}

void XkbInputSourceProvider::startObservingChanges(std::function<void()> onChange)
{
    m_onChange = std::move(onChange);
    m_lastSource = currentInputSource();
}

void XkbInputSourceProvider::readEvents()
{
    if (!m_connection->takeLayoutChanges() || !m_onChange)
        return;
    // setxkbmap alone sends several events, and a rewritten keymap may keep the same
    // layout: only a different source is a change.
    auto source = currentInputSource();
    if (sameSource(source, m_lastSource))
        return;
    m_lastSource = std::move(source);
    m_onChange();
}

void XkbInputSourceProvider::scheduleQueuedEvents()
{
    if (m_notifier && m_connection->hasQueuedEvents())
        QTimer::singleShot(0, m_notifier.get(), [this] { readEvents(); });
}
