#include "InputSourceLanguageDetector.h"

#include "platform/InputSourceProvider.h"
#include "services/LanguageNames.h"

#include <QRegularExpression>
#include <QSet>

InputSourceLanguageDetector::InputSourceLanguageDetector(std::shared_ptr<InputSourceProvider> provider)
    : m_provider(std::move(provider))
{
}

std::optional<InputLanguageHint> InputSourceLanguageDetector::currentLanguageHint() const
{
    const auto source = m_provider->currentInputSource();
    if (!source)
        return std::nullopt;
    const QLocale locale;
    if (const auto code = exactLanguageCode(source->languages))
        return makeLanguageHint(*code, locale);
    QStringList searchTexts;
    for (const QString &text : {source->identifier, source->inputModeIdentifier, source->localizedName}) {
        if (const auto normalized = normalizedSearchText(text))
            searchTexts.append(*normalized);
    }
    if (const auto code = matchedLanguageCode(searchTexts, locale))
        return makeLanguageHint(*code, locale);
    return std::nullopt;
}

bool InputSourceLanguageDetector::hasInputSource() const
{
    return m_provider->currentInputSource().has_value();
}

void InputSourceLanguageDetector::startObservingChanges(std::function<void()> onChange)
{
    m_provider->startObservingChanges(std::move(onChange));
}

std::optional<QString> InputSourceLanguageDetector::normalizedISO639LanguageCode(const QString &tag)
{
    static const QRegularExpression twoLetters(QStringLiteral("^[a-z]{2}$"));
    QString code = tag.trimmed();
    if (code.isEmpty())
        return std::nullopt;
    code.replace(QLatin1Char('_'), QLatin1Char('-'));
    code = code.section(QLatin1Char('-'), 0, 0).toLower();
    return twoLetters.match(code).hasMatch() ? std::optional(code) : std::nullopt;
}

std::optional<QString> InputSourceLanguageDetector::normalizedSearchText(const QString &text)
{
    static const QRegularExpression caseBoundary(QStringLiteral("(?<=[\\p{Ll}\\p{Nd}])(?=\\p{Lu})"));
    // An acronym ends where a capitalized word starts: "USInternational" is "US International".
    static const QRegularExpression acronymBoundary(QStringLiteral("(?<=\\p{Lu})(?=\\p{Lu}\\p{Ll})"));
    static const QRegularExpression nonWord(QStringLiteral("[^\\p{L}\\p{Nd}]+"));
    static const QRegularExpression whitespace(QStringLiteral("\\s+"));
    QString normalized = text.trimmed();
    if (normalized.isEmpty())
        return std::nullopt;
    normalized.replace(caseBoundary, QStringLiteral(" "));
    normalized.replace(acronymBoundary, QStringLiteral(" "));
    normalized.replace(nonWord, QStringLiteral(" "));
    normalized.replace(whitespace, QStringLiteral(" "));
    normalized = normalized.trimmed().toLower();
    return normalized.isEmpty() ? std::nullopt : std::optional(normalized);
}

const QList<std::pair<QString, QString>> &InputSourceLanguageDetector::explicitLanguageAliases()
{
    static const QList<std::pair<QString, QString>> aliases = [] {
        QList<std::pair<QString, QString>> list;
        const auto add = [&list](const QString &code, std::initializer_list<const char *> texts) {
            for (const char *text : texts)
                list.append({QString::fromLatin1(text), code});
        };
        add(QStringLiteral("en"), {"abc", "us", "u s", "us international", "u s international", "british", "irish",
                                   "australian", "colemak", "dvorak", "workman"});
        add(QStringLiteral("ja"), {"kotoeri", "hiragana", "katakana", "romaji"});
        add(QStringLiteral("zh"), {"pinyin", "zhuyin", "bopomofo", "cangjie", "wubi", "shuangpin"});
        add(QStringLiteral("ko"), {"hangul", "2 set korean"});
        add(QStringLiteral("vi"), {"telex", "vni"});
        // The input-method engines of Linux desktops (IBus, Fcitx).
        add(QStringLiteral("ja"), {"anthy", "mozc"});
        add(QStringLiteral("zh"), {"libpinyin", "rime"});
        add(QStringLiteral("vi"), {"unikey", "bamboo"});
        return list;
    }();
    return aliases;
}

QHash<QString, QString> InputSourceLanguageDetector::localizedLanguageNames(const QLocale &locale)
{
    QHash<QString, QString> names;
    // Codes come sorted, so when two share a name the lower code keeps it.
    for (const QString &code : twoLetterISOLanguageCodes()) {
        const auto name = languageDisplayName(code, locale);
        const auto searchText = name ? normalizedSearchText(*name) : std::nullopt;
        if (searchText && !names.contains(*searchText))
            names.insert(*searchText, code);
    }
    return names;
}

InputLanguageHint InputSourceLanguageDetector::makeLanguageHint(const QString &code, const QLocale &locale)
{
    auto name = languageDisplayName(code, locale);
    if (!name)
        name = languageDisplayName(code, QLocale(QLocale::English));
    return {code, name.value_or(code.toUpper())};
}

std::optional<QString> InputSourceLanguageDetector::exactLanguageCode(const QStringList &languageTags)
{
    QSet<QString> codes;
    for (const QString &tag : languageTags) {
        const auto code = normalizedISO639LanguageCode(tag);
        if (code && twoLetterISOLanguageCodes().contains(*code))
            codes.insert(*code);
    }
    return codes.size() == 1 ? std::optional(*codes.cbegin()) : std::nullopt;
}

std::optional<QString> InputSourceLanguageDetector::matchedLanguageCode(const QStringList &searchTexts,
                                                                        const QLocale &locale)
{
    // Candidates are built once per locale (naming every language takes a while), each
    // padded with spaces so that a plain substring test finds whole words only.
    using Candidates = QList<std::pair<QString, QString>>;
    static QHash<QString, Candidates> candidatesByLocale;
    auto found = candidatesByLocale.constFind(locale.name());
    if (found == candidatesByLocale.cend()) {
        Candidates candidates;
        const auto addPadded = [&candidates](const QString &text, const QString &code) {
            candidates.append({QLatin1Char(' ') + text + QLatin1Char(' '), code});
        };
        for (const auto &[text, code] : explicitLanguageAliases())
            addPadded(text, code);
        for (const QLocale &namesLocale : {locale, QLocale(QLocale::English)}) {
            const auto names = localizedLanguageNames(namesLocale);
            for (auto it = names.cbegin(); it != names.cend(); ++it)
                addPadded(it.key(), it.value());
        }
        found = candidatesByLocale.insert(locale.name(), candidates);
    }

    const std::pair<QString, QString> *best = nullptr;
    for (const QString &searchText : searchTexts) {
        const QString words = QLatin1Char(' ') + searchText + QLatin1Char(' ');
        for (const auto &candidate : *found) {
            if (candidate.first.size() > words.size() || !words.contains(candidate.first))
                continue;
            const bool better = !best || candidate.first.size() > best->first.size()
                             || (candidate.first.size() == best->first.size() && candidate.second < best->second);
            if (better)
                best = &candidate;
        }
    }
    return best ? std::optional(best->second) : std::nullopt;
}
