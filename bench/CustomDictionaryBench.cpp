// What the dictionary and the statistics cost on the road of one dictation: the
// guidance is built when a recording is sent, the statistics after each insertion.
#include "models/CustomDictionary.h"
#include "models/TranscriptHistory.h"

#include <benchmark/benchmark.h>

namespace {

QList<CustomDictionaryEntry> dictionary(int size)
{
    QList<CustomDictionaryEntry> entries;
    for (int i = 0; i < size; ++i) {
        const QString term = QStringLiteral("Térm number %1 of Acme").arg(i);
        entries.append({term, i % 3 == 0 ? std::optional(QStringLiteral("Output %1").arg(i)) : std::nullopt});
    }
    return entries;
}

void BM_dictionaryGuidance(benchmark::State &state)
{
    const auto entries = dictionary(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(customDictionaryGuidance(entries));
}
BENCHMARK(BM_dictionaryGuidance)->Arg(10)->Arg(200)->Arg(2000);

void BM_dictionaryUpdate(benchmark::State &state)
{
    const auto entries = dictionary(static_cast<int>(state.range(0)));
    const CustomDictionaryEntry adding{QStringLiteral("TERM NUMBER 5 OF ACME"), std::nullopt};
    for (auto _ : state)
        benchmark::DoNotOptimize(updatedCustomDictionaryEntries(entries, adding));
}
BENCHMARK(BM_dictionaryUpdate)->Arg(10)->Arg(200)->Arg(2000);

// A minute of dictation is about 150 words, 900 characters.
void BM_typingStatistics(benchmark::State &state)
{
    QString text;
    while (text.size() < state.range(0))
        text += QStringLiteral("Grüße, the quick brown fox — 👩‍👩‍👧 jumps over the lazy dog.\n");
    for (auto _ : state)
        benchmark::DoNotOptimize(updatedTypingStatistics({}, text));
    state.SetBytesProcessed(state.iterations() * text.size() * 2);
}
BENCHMARK(BM_typingStatistics)->Arg(900)->Arg(20000);

} // namespace

BENCHMARK_MAIN();
