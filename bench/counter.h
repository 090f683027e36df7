/* What the allocation counter, loaded into the service, shares with the benchmark: a file that both
 * map. */
#ifndef OVIK_BENCH_COUNTER_H
#define OVIK_BENCH_COUNTER_H

/* The threads of the service. */
enum { MAIN_THREAD, APPLICATION_THREAD, BUS_THREAD, THREAD_KINDS };

struct counter {
    volatile unsigned long allocations[THREAD_KINDS];
    /* While it is not 0, each allocation's callers are written to the file OVIK_BENCH_STACKS. */
    volatile int recording;
};

#endif
