#include "SwayInputSourceProvider.h"

#include "SwayIpcConnection.h"
#include "XkbLayoutRegistry.h"

#include <QJsonArray>

SwayInputSourceProvider::SwayInputSourceProvider(const QString &socketPath)
    : m_connection(new SwayIpcConnection(socketPath))
{
    QObject::connect(m_connection, &SwayIpcConnection::eventArrived, m_connection,
                     [this](SwayIpcConnection::Event type, const QJsonDocument &event) {
                         if (type == SwayIpcConnection::Event::input)
                             if (auto source = sourceOf(event[u"input"].toObject()))
                                 update(std::move(source));
                     });
    m_connection->open();
    m_connection->send(SwayIpcConnection::Message::subscribe, R"(["input"])");
    m_connection->send(SwayIpcConnection::Message::getInputs, {}, [this](const QJsonDocument &inputs) {
        for (const auto &input : inputs.array()) {
            if (auto source = sourceOf(input.toObject()))
                return update(std::move(source));
        }
    });
}

SwayInputSourceProvider::~SwayInputSourceProvider()
{
    m_connection->disconnect();
    m_connection->close();
    m_connection->deleteLater();
}

void SwayInputSourceProvider::startObservingChanges(std::function<void()> onChange)
{
    m_onChange = std::move(onChange);
}

std::optional<InputSourceInfo> SwayInputSourceProvider::sourceOf(const QJsonObject &input)
{
    const QString description = input[u"xkb_active_layout_name"].toString();
    if (input[u"type"].toString() != u"keyboard" || description.isEmpty())
        return std::nullopt;
    InputSourceInfo source;
    source.localizedName = description;
    source.identifier = QStringLiteral("sway:") + description;
    const XkbLayoutRegistry &registry = XkbLayoutRegistry::system();
    if (const auto layout = registry.layoutNamed(description)) {
        const auto &[name, variant] = *layout;
        source.identifier = QStringLiteral("xkb:") + name + (variant.isEmpty() ? QString() : QLatin1Char(':') + variant);
        source.languages = registry.describe(name, variant).value_or(XkbLayoutDescription{}).languages;
    }
    return source;
}

void SwayInputSourceProvider::update(std::optional<InputSourceInfo> source)
{
    const auto same = [](const InputSourceInfo &a, const InputSourceInfo &b) {
        return a.identifier == b.identifier && a.localizedName == b.localizedName && a.languages == b.languages;
    };
    if (m_source && source && same(*m_source, *source))
        return;
    m_source = std::move(source);
    if (m_onChange)
        m_onChange();
}
