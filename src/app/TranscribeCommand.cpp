#include "TranscribeCommand.h"

#include "AppInfo.h"
#include "models/CustomDictionary.h"
#include "models/QuorlaError.h"
#include "platform/PlatformBackends.h"
#include "services/DictationPipeline.h"
#include "services/InputSourceLanguageDetector.h"
#include "services/OpenAIClient.h"
#include "services/ServiceAddress.h"
#include "services/TranslationLanguageCatalog.h"
#include "stores/CustomDictionaryStorage.h"
#include "stores/KeychainStore.h"
#include "stores/PreferenceKeys.h"
#include "stores/PreferencesStore.h"
#include "support/PlatformError.h"
#include "support/PlatformWords.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QLocale>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QTimer>
#include <cstdio>

namespace {

// Exit statuses: 0 done, 1 the transcription failed, 2 the command line was wrong.
constexpr int failureStatus = 1;
constexpr int usageStatus = 2;

struct TranscribeOptions {
    QString filePath;
    std::optional<QString> languageCode;
    std::optional<TranscriptionMode> mode;
    std::optional<bool> polish;
    std::optional<QString> translateTo;
};

void writeLine(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

// The environment's key wins, as with other command-line tools; else the stored one.
QCoro::Task<QString> commandLineAPIKey()
{
    QString environmentKey = qEnvironmentVariable("OPENAI_API_KEY").trimmed();
    if (!environmentKey.isEmpty())
        co_return environmentKey;
    KeychainStore keychain(makeCredentialStore(), QStringLiteral(QUORLA_APP_ID), PlatformWords::current());
    const KeychainStore::StoredString stored = co_await keychain.loadString(KeychainStore::apiKeyAccount());
    if (stored.state == KeychainStore::ItemState::locked)
        throw QuorlaError(QuorlaError::Kind::keychainLocked);
    QString storedKey = stored.value.trimmed();
    if (storedKey.isEmpty())
        throw QuorlaError(QuorlaError::Kind::missingAPIKey);
    co_return storedKey;
}

// The same request a dictation from the window would send: the stored settings, with
// the command line's options in their place; --language is the speech language.
DictationRequest dictationRequest(const TranscribeOptions &options, const PreferencesStore &preferences,
                                  const QString &apiKey)
{
    DictationRequest request;
    request.recordingPath = options.filePath;
    request.apiKey = apiKey;
    request.mode = options.mode.value_or(transcriptionModeFromRawValue(
        preferences.stringValue(PreferenceKeys::transcriptionMode).value_or(QString())));
    if (options.languageCode)
        request.language = InputSourceLanguageDetector::makeLanguageHint(*options.languageCode, QLocale());
    request.dictionaryGuidance = customDictionaryGuidance(loadedCustomDictionaryEntries(preferences));
    request.polish = options.polish.value_or(preferences.boolValue(PreferenceKeys::shouldPolishTranscript).value_or(false));
    const QString polishPrompt = preferences.stringValue(PreferenceKeys::polishPrompt).value_or(QString());
    if (!polishPrompt.trimmed().isEmpty())
        request.polishPrompt = polishPrompt;
    request.translationTarget = TranslationLanguageCatalog::translationLanguage(
        options.translateTo ? options.translateTo : preferences.stringValue(PreferenceKeys::translationLanguageCode));
    return request;
}

QCoro::Task<QString> transcribeFile(TranscribeOptions options, QNetworkAccessManager *network)
{
    const PreferencesStore preferences(PreferencesStore::defaultFilePath());
    const QString apiKey = co_await commandLineAPIKey();
    const DictationPipeline pipeline(
        std::make_shared<OpenAIClient>(network, ServiceAddress::configuredAPIBaseURL(preferences)));
    const QString text = co_await pipeline.run(dictationRequest(options, preferences, apiKey));
    co_return text;
}

// Reads the options; on a mistake writes it to standard error and returns absent.
std::optional<TranscribeOptions> parsedOptions(const QStringList &arguments, int *exitStatus)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Transcribes an audio file with your OpenAI API key, through the same steps as a "
                       "dictation, and prints the text."));
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("The audio file (m4a, mp3, wav, ...)."),
                                 QStringLiteral("transcribe file"));
    const QCommandLineOption language(QStringLiteral("language"),
                                      QStringLiteral("The spoken language, as an ISO 639-1 code."),
                                      QStringLiteral("code"));
    const QCommandLineOption mode(QStringLiteral("mode"), QStringLiteral("fast or moreAccurate."),
                                  QStringLiteral("mode"));
    const QCommandLineOption polish(QStringLiteral("polish"), QStringLiteral("Clean up the text."));
    const QCommandLineOption noPolish(QStringLiteral("no-polish"), QStringLiteral("Do not clean up the text."));
    const QCommandLineOption translateTo(QStringLiteral("translate-to"),
                                         QStringLiteral("Translate into this language (ISO 639-1 code)."),
                                         QStringLiteral("code"));
    parser.addOptions({language, mode, polish, noPolish, translateTo});
    const QCommandLineOption help = parser.addHelpOption();

    const auto usageError = [&](const QString &message) -> std::optional<TranscribeOptions> {
        writeLine(stderr, message);
        writeLine(stderr, QStringLiteral("Try \"quorla transcribe --help\"."));
        *exitStatus = usageStatus;
        return std::nullopt;
    };
    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(help)) {
        writeLine(stdout, parser.helpText().trimmed());
        *exitStatus = 0;
        return std::nullopt;
    }
    if (parser.positionalArguments().size() != 1)
        return usageError(QStringLiteral("Name exactly one audio file."));

    TranscribeOptions options;
    options.filePath = parser.positionalArguments().first();
    if (parser.isSet(language))
        options.languageCode = parser.value(language);
    if (parser.isSet(mode)) {
        const QString raw = parser.value(mode);
        if (raw != QLatin1String("fast") && raw != QLatin1String("moreAccurate"))
            return usageError(QStringLiteral("The mode must be \"fast\" or \"moreAccurate\"."));
        options.mode = transcriptionModeFromRawValue(raw);
    }
    if (parser.isSet(polish) && parser.isSet(noPolish))
        return usageError(QStringLiteral("Choose either --polish or --no-polish."));
    if (parser.isSet(polish) || parser.isSet(noPolish))
        options.polish = parser.isSet(polish);
    if (parser.isSet(translateTo)) {
        options.translateTo = parser.value(translateTo);
        if (!TranslationLanguageCatalog::translationLanguage(options.translateTo))
            return usageError(QStringLiteral("\"%1\" is not a language Quorla can translate to.")
                                  .arg(*options.translateTo));
    }
    return options;
}

QCoro::Task<> runTranscription(TranscribeOptions options, QNetworkAccessManager *network)
{
    try {
        const QString text = co_await transcribeFile(std::move(options), network);
        writeLine(stdout, text);
        QCoreApplication::exit(0);
    } catch (const QuorlaError &error) {
        writeLine(stderr, error.errorDescription(PlatformWords::current()));
        QCoreApplication::exit(failureStatus);
    } catch (const PlatformError &error) {
        writeLine(stderr, error.description());
        QCoreApplication::exit(failureStatus);
    } catch (const std::exception &error) {
        writeLine(stderr, QString::fromUtf8(error.what()));
        QCoreApplication::exit(failureStatus);
    }
}

} // namespace

int runTranscribeCommand(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral(QUORLA_APP_NAME));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUORLA_VERSION));
    // Standard error carries only the failure's message; QT_LOGGING_RULES still turns the log on.
    QLoggingCategory::setFilterRules(QStringLiteral("quorla.*.warning=false"));

    // The first argument is the command's own name.
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeAt(1);
    int exitStatus = 0;
    const std::optional<TranscribeOptions> options = parsedOptions(arguments, &exitStatus);
    if (!options)
        return exitStatus;

    QNetworkAccessManager network;
    network.setTransferTimeout(60000);
    // Started from the event loop, so that exit() ends a running exec().
    QTimer::singleShot(0, &app, [&network, options] { runTranscription(*options, &network); });
    return QCoreApplication::exec();
}
