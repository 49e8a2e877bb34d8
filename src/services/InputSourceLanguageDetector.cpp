#include "InputSourceLanguageDetector.h"

#include "platform/InputSourceProvider.h"

#include <QLocale>
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
    QSet<QString> codes;
    static const QRegularExpression twoLetters(QStringLiteral("^[a-z]{2}$"));
    for (QString tag : source->languages) {
        tag = tag.trimmed().replace(QLatin1Char('_'), QLatin1Char('-')).section(QLatin1Char('-'), 0, 0).toLower();
        if (twoLetters.match(tag).hasMatch())
            codes.insert(tag);
    }
    if (codes.size() != 1)
        return std::nullopt;
    const QString code = *codes.begin();
    const QString name = QLocale::languageToString(QLocale::codeToLanguage(code));
    return InputLanguageHint{code, name};
}

void InputSourceLanguageDetector::startObservingChanges(std::function<void()> onChange)
{
    m_provider->startObservingChanges(std::move(onChange));
}
