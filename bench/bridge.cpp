// The way from a C function to the application thread and back, without a backend behind it, beside
// a bare blocking queued invocation. bridge ROUNDS ITERATIONS: per round a line of the ns that one
// call of each took; which of them is measured first changes. Fails when a call does.

#include "wrapper_ovik/ovik_c.h"

#include <QObject>
#include <QThread>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <sched.h>

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
bool failed = false;

void fail(benchmark::State& state, const char* why)
{
    state.SkipWithError(why);
    fprintf(stderr, "%s\n", why);
    failed = true;
}

void bridge(benchmark::State& state)
{
    int brightness = 0;
    for (auto _ : state) {
        if (ovik_getBrightness(&brightness) != OVIK_NO_PLATFORM) {
            fail(state, "the bridge has not answered that there is no backend");
            break;
        }
        benchmark::DoNotOptimize(brightness);
    }
}

void invocation(benchmark::State& state)
{
    Answer answer = {};
    for (auto _ : state) {
        if (!QMetaObject::invokeMethod(plain, "answer", Qt::BlockingQueuedConnection,
                                       Q_RETURN_ARG(Answer, answer)) ||
            answer.status != OVIK_NO_PLATFORM) {
            fail(state, "the bare invocation has not answered");
            break;
        }
    }
}

class Time : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            nanoseconds = run.GetAdjustedRealTime();
    }
    double nanoseconds = 0;
};

double timeOf(const char* name)
{
    Time time;
    benchmark::RunSpecifiedBenchmarks(&time, name);
    return time.nanoseconds;
}

/// Where the threads happen to run decides more than what they do: waking one on an idle processor
/// takes several times as long as one on the same.
bool stayOnOneProcessor()
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<size_t>(sched_getcpu()), &one);
    return sched_setaffinity(0, sizeof one, &one) == 0;
}
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3 || !stayOnOneProcessor() || ovik_init(0) != 0)
        return 1;
    qRegisterMetaType<Answer>("Answer");
    QThread thread;
    plain = new Plain;
    plain->moveToThread(&thread);
    thread.start();

    const int iterations = atoi(argv[2]);
    benchmark::RegisterBenchmark("bridge", bridge)->Iterations(iterations)->UseRealTime();
    benchmark::RegisterBenchmark("invocation", invocation)->Iterations(iterations)->UseRealTime();
    const char* const names[] = {"bridge", "invocation"};
    for (int round = 0; round < atoi(argv[1]) && !failed; ++round) {
        const int first = round % 2;
        double times[2];
        times[first] = timeOf(names[first]);
        times[1 - first] = timeOf(names[1 - first]);
        printf("%.1f %.1f\n", times[0], times[1]);
    }

    thread.quit();
    thread.wait();
    delete plain;
    return ovik_shutdown() != 0 || failed ? 1 : 0;
}

#include "bridge.moc"
