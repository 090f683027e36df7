// The way from a C function to the application thread and back, without a backend behind it, beside
// a bare blocking queued invocation. bridge ROUNDS ITERATIONS: per round a line of the ns that one
// call of each took, in turn.

#include "wrapper_ovik/ovik_c.h"

#include <QObject>
#include <QThread>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

struct Answer {
    int status;
    int value;
};
Q_DECLARE_METATYPE(Answer)

class Plain : public QObject
{
    Q_OBJECT
public Q_SLOTS:
    Answer answer() { return {-1, 0}; }
};

namespace
{
Plain* plain;

void bridge(benchmark::State& state)
{
    int brightness = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(ovik_getBrightness(&brightness));
}

void invocation(benchmark::State& state)
{
    Answer answer = {};
    for (auto _ : state) {
        QMetaObject::invokeMethod(plain, "answer", Qt::BlockingQueuedConnection,
                                  Q_RETURN_ARG(Answer, answer));
        benchmark::DoNotOptimize(answer);
    }
}

class Line : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            printf("%.1f ", run.GetAdjustedRealTime());
    }
};
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3 || ovik_init(0) != 0)
        return 1;
    qRegisterMetaType<Answer>("Answer");
    QThread thread;
    plain = new Plain;
    plain->moveToThread(&thread);
    thread.start();

    const int iterations = atoi(argv[2]);
    benchmark::RegisterBenchmark("bridge", bridge)->Iterations(iterations)->UseRealTime();
    benchmark::RegisterBenchmark("invocation", invocation)->Iterations(iterations)->UseRealTime();
    Line line;
    for (int round = 0; round < atoi(argv[1]); ++round) {
        benchmark::RunSpecifiedBenchmarks(&line, "bridge");
        benchmark::RunSpecifiedBenchmarks(&line, "invocation");
        printf("\n");
    }

    thread.quit();
    thread.wait();
    delete plain;
    return ovik_shutdown();
}

#include "bridge.moc"
