/*
 * A control loop: every 100 ms it reads 20 values of the panel in one batch. It sounds the buzzer
 * while the input at point 1 of slot 0 is on. When the service ends, the loop continues without
 * values and reconnects as soon as possible.
 *
 *     cc control_loop.c $(pkg-config --cflags --libs ovik_client) -o control_loop
 *     ./control_loop 50        # 50 cycles
 */
#define _POSIX_C_SOURCE 200809L

#include <ovik_client.h>

#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

enum {
    CYCLE = 100,   /* ms */
    DEADLINE = 80, /* ms from the start of a cycle; later answers are too late */
    VALUES = 20,
    INPUT = 1 /* the value that the buzzer follows */
};

static const char* const reads[VALUES] = {
    "getHWPluginIO;0;0",      "getHWPluginIO;0;1",      "getHWPluginIO;0;2",
    "getHWPluginIO;0;3",      "getHWPluginIO;0;4",      "getHWPluginIO;0;5",
    "getHWPluginIO;0;6",      "getHWPluginIO;0;7",      "getHWPluginLedMode;0;0",
    "getHWPluginLedMode;0;1", "getHWPluginLedMode;0;2", "getHWPluginLedMode;0;3",
    "getHWPluginLedMode;0;4", "getHWPluginLedMode;0;5", "getHWPluginLedMode;0;6",
    "getHWPluginLedMode;0;7", "getBrightness",          "getBuzzerMode",
    "getBacklightCounter",    "getSysCounter"};

typedef struct panel {
    ovik_client* client; /* null while there is no connection */
    bool known[VALUES];  /* true when the value was read in this cycle */
    int values[VALUES];
    int buzzer; /* the mode set last, or -1 */
} panel;

static int64_t now(void) /* in ms; 32 bits would overflow after 24 days */
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (int64_t)time.tv_sec * 1000 + time.tv_nsec / 1000000;
}

static int until(int64_t deadline)
{
    const int64_t left = deadline - now();
    return left > 0 ? (int)left : 0;
}

static void take_value(void* context, size_t index, const ovik_client_answer* answer)
{
    panel* const self = context;
    /* A failure, such as no platform yet, leaves this one value unknown. */
    self->known[index] = ovik_client_signed(answer, &self->values[index]) == OVIK_CLIENT_OK;
}

static ovik_client_error set_buzzer(panel* self, int mode, int64_t deadline)
{
    ovik_client_answer answer;
    const char* const request = mode ? "setBuzzerMode;1" : "setBuzzerMode;0";
    const ovik_client_error error =
        ovik_client_request(self->client, request, until(deadline), &answer);
    if (error == OVIK_CLIENT_OK && answer.status == OVIK_OK)
        self->buzzer = mode;
    return error;
}

static ovik_client_error cycle(panel* self, int64_t deadline)
{
    ovik_client_error error = OVIK_CLIENT_OK;
    for (int i = 0; i < VALUES; ++i)
        self->known[i] = false;
    if (!self->client)
        error = ovik_client_open(&self->client, NULL, until(deadline));
    if (error == OVIK_CLIENT_OK)
        error =
            ovik_client_batch(self->client, reads, VALUES, until(deadline), take_value, self, NULL);
    const int mode = self->values[INPUT] == 1;
    if (error == OVIK_CLIENT_OK && self->known[INPUT] && mode != self->buzzer)
        error = set_buzzer(self, mode, deadline);
    if (error != OVIK_CLIENT_OK) {
        /* The next cycle reconnects. The buzzer's mode is unknown until then. */
        ovik_client_close(self->client);
        self->client = NULL;
        self->buzzer = -1;
    }
    return error;
}

static bool is_complete(const panel* self)
{
    for (int i = 0; i < VALUES; ++i) {
        if (!self->known[i])
            return false;
    }
    return true;
}

static void sleep_until(int64_t end)
{
    const struct timespec time = {.tv_sec = (time_t)(end / 1000),
                                  .tv_nsec = (long)(end % 1000 * 1000000)};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, NULL) != 0) {
    }
}

int main(int argc, char** argv)
{
    const int cycles = argc > 1 ? atoi(argv[1]) : 50;
    panel self = {.buzzer = -1};
    ovik_client_error last = OVIK_CLIENT_NOT_CONNECTED;
    int complete = 0;
    int64_t start = now();
    setvbuf(stdout, NULL, _IOLBF, 0);
    for (int i = 0; i < cycles; ++i) {
        const ovik_client_error error = cycle(&self, start + DEADLINE);
        if (error != last)
            printf("cycle %d: %s\n", i, ovik_client_error_text(error));
        last = error;
        complete += is_complete(&self);
        start += CYCLE;
        sleep_until(start);
    }
    ovik_client_close(self.client);
    printf("%d of %d cycles read all values\n", complete, cycles);
    return 0;
}
