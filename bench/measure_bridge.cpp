// ovik_bench_bridge ROUNDS CALLS: compares a C function, run on the application thread without a
// backend, with a plain blocking queued invocation. Prints the ns per call of both in each round.

#include "bench/timing.h"
#include "wrapper_ovik/ovik_c.h"

#include <QObject>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <sched.h>
#include <stdexcept>

class Plain : public QObject
{
    Q_OBJECT
public Q_SLOTS:
    int answer() { return OVIK_NO_PLATFORM; }
};

namespace
{
void check(int status)
{
    if (status != OVIK_NO_PLATFORM)
        throw std::runtime_error("a call was not answered as without a backend");
}
} // namespace

int main(int argc, char* argv[])
{
    // Waking a thread on an idle processor takes several times as long as on the same processor.
    // Pin all threads, or the scheduler would decide the times.
    cpu_set_t processor;
    CPU_ZERO(&processor);
    CPU_SET(static_cast<size_t>(sched_getcpu()), &processor);
    if (argc != 3 || sched_setaffinity(0, sizeof processor, &processor) != 0 || ovik_init(0) != 0)
        return 1;
    QThread thread;
    Plain plain;
    plain.moveToThread(&thread);
    thread.start();
    const int calls = atoi(argv[2]);
    const auto bridge = [] {
        int brightness;
        check(ovik_getBrightness(&brightness));
    };
    const auto invocation = [&] {
        int status = OVIK_OK;
        QMetaObject::invokeMethod(&plain, "answer", Qt::BlockingQueuedConnection,
                                  Q_RETURN_ARG(int, status));
        check(status);
    };
    const auto took =
        alternate(atoi(argv[1]), {repeated(calls, bridge), repeated(calls, invocation)});
    for (size_t i = 0; i < took[0].size(); ++i)
        printf("%.1f %.1f\n", took[0][i], took[1][i]);
    thread.quit();
    thread.wait();
    return ovik_shutdown() == 0 ? 0 : 1;
}

#include "measure_bridge.moc"
