#define _POSIX_C_SOURCE 200809L

#include "ovik_client.h"
#include "ovik_client_internal.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <stdbool.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

enum { NOT_CONNECTED = -1, ANSWER_SIZE = 16384 };

struct ovik_client {
    int sock;
    char answer[ANSWER_SIZE];
};

/* --- Deadlines -------------------------------------------------------------------------------- */

typedef struct deadline {
    bool never;
    int64_t end; /* in ns of the monotonic clock */
} deadline;

static int64_t now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (int64_t)time.tv_sec * 1000000000 + time.tv_nsec;
}

static deadline deadline_in(int timeout)
{
    const deadline result = {timeout < 0, now() + (int64_t)timeout * 1000000};
    return result;
}

/* The timeout for poll(), in ms: -1 without limit, 0 when the deadline has passed. */
static int remaining(const deadline* until)
{
    if (until->never)
        return -1;
    const int64_t left = until->end - now();
    return left > 0 ? (int)((left + 999999) / 1000000) : 0;
}

/* --- Connecting ------------------------------------------------------------------------------- */

static void disconnect(ovik_client* client)
{
    const int error = errno;
    if (client->sock != NOT_CONNECTED)
        close(client->sock);
    client->sock = NOT_CONNECTED;
    errno = error;
}

static ovik_client_error error_of_connecting(void)
{
    switch (errno) {
    case EAGAIN: /* the queue stayed full */
        return OVIK_CLIENT_TIMED_OUT;
    case EACCES:
    case EPERM:
        return OVIK_CLIENT_NO_PERMISSION;
    case ENOENT:
    case ENOTDIR:
    case ECONNREFUSED:
    case EPROTOTYPE:
        return OVIK_CLIENT_NO_SERVICE;
    default:
        return OVIK_CLIENT_SYSTEM;
    }
}

/* Limits how long connect() waits while the service's queue is full; poll() cannot wait for that.
 * A limit of 0 would mean no limit, so the socket becomes non-blocking instead. */
static bool bound_connect(int sock, int ms)
{
    if (ms == 0)
        return fcntl(sock, F_SETFL, O_NONBLOCK) != -1;
    const struct timeval bound = {.tv_sec = ms / 1000, .tv_usec = ms % 1000 * 1000L};
    return ms < 0 || setsockopt(sock, SOL_SOCKET, SO_SNDTIMEO, &bound, sizeof bound) != -1;
}

static ovik_client_error connect_by(const deadline* until, int sock,
                                    const struct sockaddr_un* address)
{
    do {
        if (!bound_connect(sock, remaining(until)))
            return OVIK_CLIENT_SYSTEM;
        if (connect(sock, (const struct sockaddr*)address, sizeof *address) == 0)
            return OVIK_CLIENT_OK;
    } while (errno == EINTR);
    return error_of_connecting();
}

/* A buffer for thousands of requests, or as large as the system allows: a service whose queue is
 * empty sleeps before it polls again. */
static void ask_for_room(int sock)
{
    const int room = 1 << 22;
    setsockopt(sock, SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
}

static ovik_client_error address_of(const char* path, struct sockaddr_un* address)
{
    const size_t length = strlen(path);
    errno = length == 0 ? ENOENT : ENAMETOOLONG; /* an empty name would be another address type */
    if (length == 0)
        return OVIK_CLIENT_NO_SERVICE;
    if (length >= sizeof address->sun_path)
        return OVIK_CLIENT_SYSTEM;
    memset(address, 0, sizeof *address);
    address->sun_family = AF_UNIX;
    memcpy(address->sun_path, path, length);
    return OVIK_CLIENT_OK;
}

ovik_client_error ovik_client_open(ovik_client** client, const char* path, int timeout)
{
    const deadline until = deadline_in(timeout);
    struct sockaddr_un address;
    *client = NULL;
    ovik_client_error error = address_of(path ? path : OVIK_CLIENT_SOCKET, &address);
    if (error != OVIK_CLIENT_OK)
        return error;
    ovik_client* const opened = malloc(sizeof *opened);
    if (!opened)
        return OVIK_CLIENT_SYSTEM;
    opened->sock = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    error = opened->sock == NOT_CONNECTED ? OVIK_CLIENT_SYSTEM
                                          : connect_by(&until, opened->sock, &address);
    if (error == OVIK_CLIENT_OK) {
        ask_for_room(opened->sock);
        *client = opened;
    } else {
        ovik_client_close(opened);
    }
    return error;
}

void ovik_client_close(ovik_client* client)
{
    const int error = errno;
    if (client)
        disconnect(client);
    free(client);
    errno = error;
}

int ovik_internal_descriptor(const ovik_client* client) { return client->sock; }

/* --- Numbers ---------------------------------------------------------------------------------- */

/* Reads a number in the form that printf() writes. Returns the rest of the text, or null when there
 * is no number or it has more than 64 bits. */
static const char* scan_number(const char* text, bool* negative, uint64_t* magnitude)
{
    *negative = *text == '-';
    text += *negative;
    if (*text < '0' || *text > '9' || (*text == '0' && *negative))
        return NULL;
    const char* const first = text;
    uint64_t number = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        const unsigned int digit = (unsigned int)(*text - '0');
        if (number > (UINT64_MAX - digit) / 10 || (*first == '0' && text != first))
            return NULL;
        number = number * 10 + digit;
    }
    *magnitude = number;
    return text;
}

/* Like scan_number(), for a number from @p least, which is not positive, to @p most. */
static const char* scan_in_range(const char* text, int64_t least, int64_t most, int64_t* value)
{
    bool negative;
    uint64_t magnitude;
    text = scan_number(text, &negative, &magnitude);
    if (!text || magnitude > (uint64_t)(negative ? -least : most))
        return NULL;
    *value = negative ? -(int64_t)magnitude : (int64_t)magnitude;
    return text;
}

static const char* scan_int(const char* text, int* value)
{
    int64_t wide = 0;
    text = scan_in_range(text, INT_MIN, INT_MAX, &wide);
    *value = (int)wide;
    return text;
}

/* --- Requests --------------------------------------------------------------------------------- */

/* A message must be a status, alone or followed by a blank and a text, with one NUL, at the end. */
static bool is_answer(const char* message, size_t size, ovik_client_answer* answer)
{
    if (memchr(message, 0, size) != message + size - 1)
        return false;
    const char* text = scan_int(message, &answer->status);
    if (!text || (*text != 0 && *text != ' '))
        return false;
    answer->text = *text == ' ' ? text + 1 : text;
    answer->length = (size_t)(message + size - 1 - answer->text);
    return true;
}

typedef struct batch {
    const char* const* requests;
    size_t count;
    ovik_client_on_answer* on_answer;
    void* context;
    ovik_client_progress progress;
    bool ended; /* the service has closed the connection; answers may still be queued */
    bool reset; /* recv() has reported that the service closed with requests unread */
} batch;

static bool is_for_later(void) { return errno == EAGAIN || errno == EINTR; }

/* Sends until the socket buffer is full. */
static ovik_client_error send_on(const ovik_client* client, batch* job)
{
    ovik_client_progress* const progress = &job->progress;
    while (progress->sent < job->count && !job->ended) {
        const char* const request = job->requests[progress->sent];
        if (send(client->sock, request, strlen(request) + 1, MSG_DONTWAIT | MSG_NOSIGNAL) != -1)
            ++progress->sent;
        else if (errno == EPIPE || errno == ECONNRESET)
            job->ended = true;
        else
            return is_for_later() ? OVIK_CLIENT_OK : OVIK_CLIENT_SYSTEM;
    }
    return OVIK_CLIENT_OK;
}

/* Receives until no answer is queued. */
static ovik_client_error receive_on(ovik_client* client, batch* job)
{
    ovik_client_progress* const progress = &job->progress;
    while (progress->answered < progress->sent) {
        const ssize_t got =
            recv(client->sock, client->answer, ANSWER_SIZE, MSG_DONTWAIT | MSG_TRUNC);
        if (got == -1 && is_for_later())
            return OVIK_CLIENT_OK;
        if (got == -1 && errno == ECONNRESET && !job->reset) {
            job->ended = job->reset = true; /* reported once, before the queued answers */
            continue;
        }
        if (got == -1 && errno != ECONNRESET)
            return OVIK_CLIENT_SYSTEM;
        if (got <= 0)
            return OVIK_CLIENT_CLOSED;
        ovik_client_answer answer;
        if (got > ANSWER_SIZE || !is_answer(client->answer, (size_t)got, &answer))
            return OVIK_CLIENT_BAD_ANSWER;
        const size_t index = progress->answered++;
        if (job->on_answer)
            job->on_answer(job->context, index, &answer);
    }
    return job->ended && progress->answered < job->count ? OVIK_CLIENT_CLOSED : OVIK_CLIENT_OK;
}

/* Waits for both directions at once: the service blocks while the buffer of its answers is full. */
static ovik_client_error exchange(ovik_client* client, batch* job, const deadline* until)
{
    for (;;) {
        ovik_client_error error = send_on(client, job);
        if (error == OVIK_CLIENT_OK)
            error = receive_on(client, job);
        if (error != OVIK_CLIENT_OK || job->progress.answered == job->count)
            return error;
        const int left = remaining(until);
        if (left == 0)
            return OVIK_CLIENT_TIMED_OUT;
        struct pollfd event = {.fd = client->sock, .events = POLLIN};
        if (job->progress.sent < job->count && !job->ended)
            event.events |= POLLOUT;
        if (poll(&event, 1, left) == -1 && errno != EINTR)
            return OVIK_CLIENT_SYSTEM;
    }
}

static bool can_be_sent(const batch* job)
{
    for (size_t i = 0; i < job->count; ++i) {
        if (strlen(job->requests[i]) > OVIK_CLIENT_REQUEST_MAX)
            return false;
    }
    return true;
}

static ovik_client_error run(ovik_client* client, batch* job, int timeout)
{
    const deadline until = deadline_in(timeout);
    if (!client || client->sock == NOT_CONNECTED)
        return OVIK_CLIENT_NOT_CONNECTED;
    if (!can_be_sent(job))
        return OVIK_CLIENT_BAD_REQUEST;
    const ovik_client_error error = exchange(client, job, &until);
    if (error != OVIK_CLIENT_OK)
        disconnect(client);
    return error;
}

static void keep_answer(void* context, size_t index, const ovik_client_answer* answer)
{
    (void)index;
    *(ovik_client_answer*)context = *answer;
}

ovik_client_error ovik_client_request(ovik_client* client, const char* request, int timeout,
                                      ovik_client_answer* answer)
{
    batch one = {.requests = &request, .count = 1, .on_answer = keep_answer, .context = answer};
    return run(client, &one, timeout);
}

ovik_client_error ovik_client_batch(ovik_client* client, const char* const* requests, size_t count,
                                    int timeout, ovik_client_on_answer* onAnswer, void* context,
                                    ovik_client_progress* progress)
{
    batch all = {.requests = requests, .count = count, .on_answer = onAnswer, .context = context};
    const ovik_client_error error = run(client, &all, timeout);
    if (progress)
        *progress = all.progress;
    return error;
}

ovik_client_error ovik_client_join(const char* const* fields, size_t count, char* buffer,
                                   size_t size)
{
    size_t length = 0;
    if (size > OVIK_CLIENT_REQUEST_MAX + 1)
        size = OVIK_CLIENT_REQUEST_MAX + 1;
    bool good = count > 0;
    for (size_t i = 0; i < count && good; ++i) {
        const size_t more = strlen(fields[i]) + 1; /* with its ";", or the NUL at the end */
        good = more <= size - length && !strchr(fields[i], ';');
        if (good) {
            memcpy(buffer + length, fields[i], more);
            length += more;
            buffer[length - 1] = i + 1 < count ? ';' : 0;
        }
    }
    if (!good && size > 0)
        buffer[0] = 0;
    return good ? OVIK_CLIENT_OK : OVIK_CLIENT_BAD_REQUEST;
}

/* --- Answers ---------------------------------------------------------------------------------- */

static bool is_refused(const ovik_client_answer* answer) { return answer->status != OVIK_OK; }

ovik_client_error ovik_client_unsigned(const ovik_client_answer* answer, unsigned int* value)
{
    int64_t wide;
    if (is_refused(answer))
        return OVIK_CLIENT_REFUSED;
    const char* const end = scan_in_range(answer->text, 0, UINT_MAX, &wide);
    if (!end || *end != 0)
        return OVIK_CLIENT_WRONG_SHAPE;
    *value = (unsigned int)wide;
    return OVIK_CLIENT_OK;
}

ovik_client_error ovik_client_signed(const ovik_client_answer* answer, int* value)
{
    int number;
    if (is_refused(answer))
        return OVIK_CLIENT_REFUSED;
    const char* const end = scan_int(answer->text, &number);
    if (!end || *end != 0)
        return OVIK_CLIENT_WRONG_SHAPE;
    *value = number;
    return OVIK_CLIENT_OK;
}

ovik_client_error ovik_client_size(const ovik_client_answer* answer, uint64_t* value)
{
    bool negative;
    uint64_t magnitude;
    if (is_refused(answer))
        return OVIK_CLIENT_REFUSED;
    const char* const end = scan_number(answer->text, &negative, &magnitude);
    if (!end || *end != 0 || (negative && magnitude > (uint64_t)INT64_MAX + 1))
        return OVIK_CLIENT_WRONG_SHAPE;
    *value = negative ? 0 - magnitude : magnitude;
    return OVIK_CLIENT_OK;
}

ovik_client_error ovik_client_text(const ovik_client_answer* answer, const char** text)
{
    if (is_refused(answer))
        return OVIK_CLIENT_REFUSED;
    *text = answer->text;
    return OVIK_CLIENT_OK;
}

/* The last comma before @p end, or null. */
static const char* comma_before(const char* text, const char* end)
{
    while (end != text) {
        if (*--end == ',')
            return end;
    }
    return NULL;
}

ovik_client_error ovik_client_system_information(const ovik_client_answer* answer,
                                                 ovik_client_system_info* info)
{
    if (is_refused(answer))
        return OVIK_CLIENT_REFUSED;
    const char* const text = answer->text;
    const char* const last = strrchr(text, ',');
    const char* const middle = last ? comma_before(text, last) : NULL;
    int64_t code;
    int64_t manufacture;
    if (!middle || (size_t)(middle - text) >= sizeof info->moduleName ||
        scan_in_range(middle + 1, 0, 255, &code) != last)
        return OVIK_CLIENT_WRONG_SHAPE;
    const char* const end = scan_in_range(last + 1, 0, 65535, &manufacture);
    if (!end || *end != 0)
        return OVIK_CLIENT_WRONG_SHAPE;
    memset(info->moduleName, 0, sizeof info->moduleName);
    memcpy(info->moduleName, text, (size_t)(middle - text));
    info->hwCode = (unsigned int)code;
    info->manufactureCode = (unsigned int)manufacture;
    return OVIK_CLIENT_OK;
}

/* The value of the hexadecimal digit, or -1. */
static int hex_digit(char character)
{
    static const char digits[] = "0123456789ABCDEF";
    const char* const found = character ? strchr(digits, character) : NULL;
    return found ? (int)(found - digits) : -1;
}

static bool is_byte(const char* digits)
{
    return hex_digit(digits[0]) >= 0 && hex_digit(digits[1]) >= 0;
}

ovik_client_error ovik_client_bytes(const ovik_client_answer* answer, unsigned char* bytes,
                                    size_t size, size_t* count)
{
    if (is_refused(answer))
        return OVIK_CLIENT_REFUSED;
    const char* const text = answer->text;
    const size_t all = (strlen(text) + 1) / 3;
    if (strlen(text) != (all == 0 ? 0 : 3 * all - 1) || all > size)
        return OVIK_CLIENT_WRONG_SHAPE;
    for (size_t i = 0; i < all; ++i) {
        if (!is_byte(text + 3 * i) || (i > 0 && text[3 * i - 1] != ','))
            return OVIK_CLIENT_WRONG_SHAPE;
    }
    for (size_t i = 0; i < all; ++i)
        bytes[i] = (unsigned char)(hex_digit(text[3 * i]) << 4 | hex_digit(text[3 * i + 1]));
    *count = all;
    return OVIK_CLIENT_OK;
}

ovik_client_error ovik_client_service_outcome(const ovik_client_answer* answer,
                                              ovik_client_outcome* outcome)
{
    int result;
    if (is_refused(answer))
        return OVIK_CLIENT_REFUSED;
    const char* const end = scan_int(answer->text, &result);
    if (!end || (*end != 0 && *end != ';'))
        return OVIK_CLIENT_WRONG_SHAPE;
    if (*end == ';') {
        const char* const second = strchr(end + 1, ';');
        if (!second || !strchr(second + 1, ';'))
            return OVIK_CLIENT_WRONG_SHAPE;
    }
    outcome->result = result;
    outcome->details = *end == ';' ? end + 1 : end;
    return OVIK_CLIENT_OK;
}

/* --- Texts ------------------------------------------------------------------------------------ */

const char* ovik_client_error_text(ovik_client_error error)
{
    switch (error) {
    case OVIK_CLIENT_OK:
        return "done";
    case OVIK_CLIENT_NO_SERVICE:
        return "no service listens at the socket";
    case OVIK_CLIENT_NO_PERMISSION:
        return "this user may not use the socket";
    case OVIK_CLIENT_TIMED_OUT:
        return "no answer in time: the service is busy, or serves another client; a request that "
               "was "
               "sent may still be carried out";
    case OVIK_CLIENT_CLOSED:
        return "the service closed the connection";
    case OVIK_CLIENT_BAD_ANSWER:
        return "the answer has no status, has no NUL at its end, or is too long";
    case OVIK_CLIENT_BAD_REQUEST:
        return "the request is too long, has no field, or has a field with \";\" in it";
    case OVIK_CLIENT_REFUSED:
        return "the answer's status is a failure";
    case OVIK_CLIENT_WRONG_SHAPE:
        return "the answer is not of the shape that was asked for";
    case OVIK_CLIENT_NOT_CONNECTED:
        return "the client is not connected any more, as an earlier call failed";
    case OVIK_CLIENT_SYSTEM:
        return "the system refused, see errno";
    }
    return "no error of this library";
}

const char* ovik_client_status_text(status_t status)
{
    switch (status) {
#define STATUS(name, number, meaning)                                                              \
    case name:                                                                                     \
        return meaning;
#include "protocol/statuses.def"
    /* No response has these, but a program that uses the C API has them. */
    case OVIK_NO_THREAD:
        return "the application thread could not be created";
    case OVIK_NOT_STARTED:
        return "the application is not started";
    case OVIK_BACKEND_FAILED:
        return "the backend could not be started";
    case OVIK_ILLEGAL_MODE:
        return "there is no such backend";
    default:
        return "no status of the service";
    }
}
