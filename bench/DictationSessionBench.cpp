// What the model itself adds to a dictation, with the speech service, recorder and
// insertion answered at once by the test fakes: the start, and the whole finish
// (file stop and delete, history, insertion call, clipboard, status lines).
// Also the one-time cost of the translation catalog and a stored-code lookup.
#include "ModelFixture.h"

#include "services/TranslationLanguageCatalog.h"

#include <benchmark/benchmark.h>

namespace {

void BM_holdDictationWithInstantServices(benchmark::State &state)
{
    ModelFixture fixture;
    fixture.workspace->frontmost = std::make_shared<FakeApplication>(42, QStringLiteral("TextEdit"));
    fixture.inputSource->source = InputSourceInfo{QStringLiteral("de"), {}, QStringLiteral("German"), {QStringLiteral("de")}};
    AppModel &model = fixture.makeModel();
    model.setApiKeyDraft(QStringLiteral("sk-bench"));
    for (auto _ : state) {
        QCoro::waitFor(model.globalPressToTalkBegan());
        QCoro::waitFor(model.globalPressToTalkEnded());
    }
    if (model.recentTranscripts().isEmpty())
        state.SkipWithError("no transcript came through");
}
BENCHMARK(BM_holdDictationWithInstantServices)->Unit(benchmark::kMicrosecond);

void BM_startOnly(benchmark::State &state)
{
    ModelFixture fixture;
    fixture.workspace->frontmost = std::make_shared<FakeApplication>(42, QStringLiteral("TextEdit"));
    AppModel &model = fixture.makeModel();
    model.setApiKeyDraft(QStringLiteral("sk-bench"));
    for (auto _ : state) {
        QCoro::waitFor(model.globalPressToTalkBegan());
        state.PauseTiming();
        QCoro::waitFor(model.globalPressToTalkEnded());
        state.ResumeTiming();
    }
}
BENCHMARK(BM_startOnly)->Unit(benchmark::kMicrosecond);

// The catalog is built on first use; this is what that first use costs.
void BM_catalogSortForDisplay(benchmark::State &state)
{
    QList<TranslationLanguage> reversed = TranslationLanguageCatalog::all();
    std::reverse(reversed.begin(), reversed.end());
    for (auto _ : state)
        benchmark::DoNotOptimize(TranslationLanguageCatalog::sortedForDisplay(reversed));
    state.counters["languages"] = static_cast<double>(reversed.size());
}
BENCHMARK(BM_catalogSortForDisplay)->Unit(benchmark::kMicrosecond);

void BM_normalizedStoredCode(benchmark::State &state)
{
    const std::optional<QString> stored = QStringLiteral(" FR ");
    for (auto _ : state)
        benchmark::DoNotOptimize(TranslationLanguageCatalog::normalizedCode(stored));
}
BENCHMARK(BM_normalizedStoredCode);

} // namespace
