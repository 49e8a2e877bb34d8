// Cost of the credential-store calls on a real Secret Service: the launch check
// (exists), the first request's read (copy) and a save (update). Run it inside the
// headless desktop (scripts/desktop-session), whose gnome-keyring it talks to.
#include "AppInfo.h"
#include "platform/linux/SecretServiceCredentialStore.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QUuid>

namespace {

using Outcome = CredentialStore::Outcome;

const QString service = QStringLiteral(QUORLA_APP_ID ".bench-") + QUuid::createUuid().toString(QUuid::Id128);
const QString account = QStringLiteral("openai-api-key");
const QByteArray key = "sk-proj-0123456789abcdefghijklmnopqrstuvwxyz0123456789ABCDEFGHIJ";

// Runs one benchmark over a store holding the key, and removes it afterwards.
template <typename Step>
void withStoredKey(benchmark::State &state, Step step)
{
    SecretServiceCredentialStore store;
    if (QCoro::waitFor(store.update(service, account, key)).outcome == Outcome::itemNotFound)
        QCoro::waitFor(store.add(service, account, key));
    if (QCoro::waitFor(store.exists(service, account)).outcome != Outcome::success) {
        state.SkipWithError("no usable Secret Service: run inside scripts/desktop-session");
        return;
    }
    for (auto _ : state)
        step(store);
    QCoro::waitFor(store.remove(service, account));
}

void BM_existsAtLaunch(benchmark::State &state)
{
    withStoredKey(state, [](SecretServiceCredentialStore &store) {
        benchmark::DoNotOptimize(QCoro::waitFor(store.exists(service, account)));
    });
}

void BM_copyForFirstRequest(benchmark::State &state)
{
    withStoredKey(state, [](SecretServiceCredentialStore &store) {
        benchmark::DoNotOptimize(QCoro::waitFor(store.copy(service, account)));
    });
}

void BM_updateOnSave(benchmark::State &state)
{
    withStoredKey(state, [](SecretServiceCredentialStore &store) {
        benchmark::DoNotOptimize(QCoro::waitFor(store.update(service, account, key)));
    });
}

void BM_existsOfMissingItem(benchmark::State &state)
{
    SecretServiceCredentialStore store;
    const QString nobody = service + QStringLiteral("-missing");
    for (auto _ : state)
        benchmark::DoNotOptimize(QCoro::waitFor(store.exists(nobody, account)));
}

} // namespace

BENCHMARK(BM_existsAtLaunch)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_copyForFirstRequest)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_updateOnSave)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_existsOfMissingItem)->Unit(benchmark::kMicrosecond);

// The keyring answers on the event loop: the calls need an application.
int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
