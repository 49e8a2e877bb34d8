#include "XkbLayoutRegistry.h"

#include <QFile>
#include <QLocale>
#include <QXmlStreamReader>

namespace {

const QString registryPath = QStringLiteral("/usr/share/X11/xkb/rules/evdev.xml");

QString key(const QString &layout, const QString &variant)
{
    return variant.isEmpty() ? layout : layout + QLatin1Char('(') + variant + QLatin1Char(')');
}

// xkeyboard-config lists ISO 639-2 codes; the detector wants ISO 639-1 where one exists.
QString normalizedLanguage(const QString &iso639)
{
    const QString code = iso639.trimmed().toLower();
    const QLocale::Language language = QLocale::codeToLanguage(code, QLocale::ISO639Part2 | QLocale::ISO639Part1);
    const QString twoLetter = language == QLocale::AnyLanguage ? QString() : QLocale::languageToCode(language, QLocale::ISO639Part1);
    return twoLetter.isEmpty() ? code : twoLetter;
}

struct ConfigItem {
    QString name;
    QString description;
    QStringList languages;
};

// Reads one <configItem>; the reader stands on its start element.
ConfigItem readConfigItem(QXmlStreamReader &reader)
{
    ConfigItem item;
    while (reader.readNextStartElement()) {
        if (reader.name() == u"name") {
            item.name = reader.readElementText().trimmed();
        } else if (reader.name() == u"description") {
            item.description = reader.readElementText().trimmed();
        } else if (reader.name() == u"languageList") {
            while (reader.readNextStartElement()) {
                if (reader.name() == u"iso639Id")
                    item.languages.append(normalizedLanguage(reader.readElementText()));
                else
                    reader.skipCurrentElement();
            }
        } else {
            reader.skipCurrentElement();
        }
    }
    return item;
}

} // namespace

const XkbLayoutRegistry &XkbLayoutRegistry::system()
{
    static const XkbLayoutRegistry registry = [] {
        QFile file(registryPath);
        if (!file.open(QIODevice::ReadOnly))
            return XkbLayoutRegistry();
        return fromDevice(file);
    }();
    return registry;
}

XkbLayoutRegistry XkbLayoutRegistry::fromDevice(QIODevice &device)
{
    XkbLayoutRegistry registry;
    auto &items = registry.m_items;
    QXmlStreamReader reader(&device);
    const auto readVariants = [&](const ConfigItem &layout) {
        while (reader.readNextStartElement()) {
            if (reader.name() != u"variant") {
                reader.skipCurrentElement();
                continue;
            }
            while (reader.readNextStartElement()) {
                if (reader.name() != u"configItem") {
                    reader.skipCurrentElement();
                    continue;
                }
                const ConfigItem variant = readConfigItem(reader);
                items.insert(key(layout.name, variant.name),
                             {variant.description.isEmpty() ? layout.description : variant.description,
                              variant.languages.isEmpty() ? layout.languages : variant.languages});
            }
        }
    };
    const auto readLayout = [&] {
        ConfigItem layout;
        while (reader.readNextStartElement()) {
            if (reader.name() == u"configItem") {
                layout = readConfigItem(reader);
                items.insert(key(layout.name, {}), {layout.description, layout.languages});
            } else if (reader.name() == u"variantList" && !layout.name.isEmpty()) {
                readVariants(layout);
            } else {
                reader.skipCurrentElement();
            }
        }
    };

    // <xkbConfigRegistry><layoutList><layout>…; a malformed file keeps what was read
    // before the error.
    if (reader.readNextStartElement()) {
        while (reader.readNextStartElement()) {
            if (reader.name() != u"layoutList") {
                reader.skipCurrentElement();
                continue;
            }
            while (reader.readNextStartElement()) {
                if (reader.name() == u"layout")
                    readLayout();
                else
                    reader.skipCurrentElement();
            }
        }
    }
    return registry;
}

std::optional<XkbLayoutDescription> XkbLayoutRegistry::describe(const QString &layout, const QString &variant) const
{
    auto found = m_items.constFind(key(layout, variant));
    if (found == m_items.cend())
        found = m_items.constFind(key(layout, {}));
    return found == m_items.cend() ? std::nullopt : std::optional(*found);
}

std::optional<std::pair<QString, QString>> XkbLayoutRegistry::layoutNamed(const QString &description) const
{
    std::optional<QString> best;
    for (auto item = m_items.cbegin(); item != m_items.cend(); ++item) {
        if (item->description != description)
            continue;
        // A variant without a description of its own carries its layout's.
        if (!best || (best->contains(u'(') && !item.key().contains(u'(')) || (best->contains(u'(') == item.key().contains(u'(') && item.key() < *best))
            best = item.key();
    }
    if (!best)
        return std::nullopt;
    const qsizetype open = best->indexOf(u'(');
    if (open < 0)
        return std::pair(*best, QString());
    return std::pair(best->left(open), best->mid(open + 1).chopped(1));
}
