// The language hint is read on every input-source change and at each dictation's
// start, on the main thread; the XKB registry is parsed once per process.
#include "platform/InputSourceProvider.h"
#include "platform/linux/XkbInputSourceProvider.h"
#include "platform/linux/XkbLayoutRegistry.h"
#include "services/InputSourceLanguageDetector.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <benchmark/benchmark.h>

namespace {

class FixedSource : public InputSourceProvider
{
public:
    explicit FixedSource(InputSourceInfo info)
        : m_info(std::move(info))
    {
    }
    std::optional<InputSourceInfo> currentInputSource() override { return m_info; }
    void startObservingChanges(std::function<void()>) override {}

private:
    InputSourceInfo m_info;
};

void BM_hintFromOneListedLanguage(benchmark::State &state)
{
    InputSourceLanguageDetector detector(std::make_shared<FixedSource>(
        InputSourceInfo{QStringLiteral("xkb:de:nodeadkeys"), {}, QStringLiteral("German (no dead keys)"), {"de"}}));
    for (auto _ : state)
        benchmark::DoNotOptimize(detector.currentLanguageHint());
}
BENCHMARK(BM_hintFromOneListedLanguage);

// The name match, after the first call has built the locale's name tables.
void BM_hintFromTheNameMatch(benchmark::State &state)
{
    InputSourceLanguageDetector detector(std::make_shared<FixedSource>(
        InputSourceInfo{QStringLiteral("com.apple.keylayout.USInternational-PC"), {}, QStringLiteral("U.S. International - PC"), {"en", "fr", "de", "nl", "it"}}));
    benchmark::DoNotOptimize(detector.currentLanguageHint());
    for (auto _ : state)
        benchmark::DoNotOptimize(detector.currentLanguageHint());
}
BENCHMARK(BM_hintFromTheNameMatch);

// The one-time cost of naming every language in a locale.
void BM_localizedLanguageNames(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(InputSourceLanguageDetector::localizedLanguageNames(QLocale(QLocale::German)));
}
BENCHMARK(BM_localizedLanguageNames);

void BM_parseXkbRegistry(benchmark::State &state)
{
    QFile file(QStringLiteral("/usr/share/X11/xkb/rules/evdev.xml"));
    if (!file.open(QIODevice::ReadOnly)) {
        state.SkipWithError("no evdev.xml");
        return;
    }
    const QByteArray bytes = file.readAll();
    for (auto _ : state) {
        QByteArray copy = bytes;
        QBuffer buffer(&copy);
        buffer.open(QIODevice::ReadOnly);
        benchmark::DoNotOptimize(XkbLayoutRegistry::fromDevice(buffer).size());
    }
}
BENCHMARK(BM_parseXkbRegistry)->Unit(benchmark::kMillisecond);

// Two X round trips per read; needs a display.
void BM_xkbCurrentInputSource(benchmark::State &state)
{
    // The provider watches its X connection with a socket notifier, which needs an application.
    int argc = 1;
    char name[] = "bench";
    char *argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    XkbInputSourceProvider provider;
    if (!provider.currentInputSource()) {
        state.SkipWithError("no X display");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(provider.currentInputSource());
}
BENCHMARK(BM_xkbCurrentInputSource)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
