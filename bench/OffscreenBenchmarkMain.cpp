// The main() of the benchmarks that drive the model: Google Benchmark under a Qt event
// loop, with an offscreen platform so that no desktop is needed.
#include <QGuiApplication>
#include <benchmark/benchmark.h>

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
