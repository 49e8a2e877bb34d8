// Wall time of one insertion into a real target that kept the focus, with the production
// waits: the accessibility route into a QLineEdit and into a QTextEdit holding 100 kB of
// text (no wait), and the paste route into a Qt Quick TextField (120 + 40 + 180 ms).
// Runs in the headless desktop of scripts/desktop-session:  bench_text_insertion [ROUNDS]

#include "models/QuorlaError.h"
#include "platform/linux/AtSpiAccessibility.h"
#include "platform/QtClipboard.h"
#include "platform/linux/X11KeySynthesizer.h"
#include "platform/linux/X11Workspace.h"
#include "services/TextInsertionService.h"
#include "TextTarget.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>

namespace {

QCoro::Task<void> timedInsert(TextInsertionService *service, ApplicationHandlePtr target, QString text,
                              double *milliseconds, bool *failed)
{
    QElapsedTimer clock;
    clock.start();
    try {
        // Started outside the co_await: GCC 12 destroys a brace-initialized temporary
        // (TextInsertionTarget{...}) twice when it is built inside a co_await expression.
        QCoro::Task<void> inserting = service->insert(std::move(text), TextInsertionTarget{std::move(target)}, true, true);
        co_await std::move(inserting);
    } catch (const QuorlaError &error) {
        std::fprintf(stderr, "insertion failed: %s\n", error.what());
        *failed = true;
    }
    *milliseconds = double(clock.nsecsElapsed()) / 1e6;
}

struct Figures {
    double minimum, median, p95, maximum;
};

Figures figuresOf(std::vector<double> samples)
{
    std::sort(samples.begin(), samples.end());
    const auto at = [&](double q) { return samples[std::min(samples.size() - 1, size_t(q * double(samples.size())))]; };
    return {samples.front(), at(0.5), at(0.95), samples.back()};
}

// Inserts "word " again and again, so each round finds a trigger space before the caret.
int measure(const char *label, const QString &mode, int rounds, double waits, TextInsertionService &service,
            Workspace &workspace, Accessibility &accessibility, const QString &before = {})
{
    QTemporaryDir directory;
    const QString output = directory.filePath(QStringLiteral("field.txt"));
    TextTarget target(workspace, QStringLiteral(QUORLA_TEXT_TARGET), {mode, output, before + QStringLiteral("start ")});
    const ApplicationHandlePtr application = target.application();
    const qint64 pid = target.process().processId();
    if (!application || !waitUntil([&] { return accessibility.focusedElement(pid) != nullptr; })) {
        std::fprintf(stderr, "%s: the target did not come up\n", label);
        return 1;
    }
    // The parts of the overhead that are ours alone: the trust check, the focus search and
    // the one read of the field's text.
    std::vector<double> trust;
    std::vector<double> search;
    std::vector<double> read;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer clock;
        clock.start();
        QCoro::waitFor(accessibility.isProcessTrusted());
        trust.push_back(double(clock.nsecsElapsed()) / 1e6);
        clock.restart();
        const std::unique_ptr<AccessibleElement> element = accessibility.focusedElement(pid);
        search.push_back(double(clock.nsecsElapsed()) / 1e6);
        clock.restart();
        if (element)
            (void)element->value();
        read.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    std::vector<double> samples;
    for (int round = 0; round < rounds; ++round) {
        double milliseconds = 0;
        bool failed = false;
        QCoro::waitFor(timedInsert(&service, application, QStringLiteral("word "), &milliseconds, &failed));
        // Each round's trigger space is replaced by the next round's text.
        const QByteArray expected = "start" + QByteArray("word").repeated(round + 1) + " ";
        if (failed || !waitUntil([&] { return fileContents(output).endsWith(expected); }, 3000)) {
            std::fprintf(stderr, "%s: round %d did not land\n", label, round);
            return 1;
        }
        samples.push_back(milliseconds);
        QTest::qWait(50);
    }
    const Figures f = figuresOf(samples);
    std::printf("%-22s rounds %3d  min %7.1f  median %7.1f  p95 %7.1f  max %7.1f ms  (waits %.0f ms, median over by %.1f ms)\n",
                label, rounds, f.minimum, f.median, f.p95, f.maximum, waits, f.median - waits);
    const Figures t = figuresOf(trust);
    const Figures s = figuresOf(search);
    const Figures r = figuresOf(read);
    std::printf("  of which: trust check median %.2f ms (p95 %.2f), focused-field search median %.2f ms (p95 %.2f),"
                " text read median %.2f ms (p95 %.2f)\n",
                t.median, t.p95, s.median, s.p95, r.median, r.p95);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
    auto accessibility = std::make_shared<AtSpiAccessibility>();
    if (!QCoro::waitFor(accessibility->requestTrust())) {
        std::fprintf(stderr, "the accessibility bus is off or unreachable\n");
        return 1;
    }
    X11Workspace workspace;
    TextInsertionService service(accessibility, std::make_shared<X11KeySynthesizer>(), std::make_shared<QtClipboard>());
    int status = measure("accessibility route", QStringLiteral("widgets"), rounds, 0, service, workspace,
                         *accessibility);
    status |= measure("accessibility, 100 kB", QStringLiteral("rich"), rounds, 0, service, workspace, *accessibility,
                      QStringLiteral("lorem ipsum dolor sit amet ").repeated(100'000 / 27));
    status |= measure("paste route", QStringLiteral("quick"), rounds, 340, service, workspace, *accessibility);
    return status;
}
