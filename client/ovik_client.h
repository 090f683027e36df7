/*
 * The client library of ovik_server: requests over its socket from C and C++, with deadlines and
 * without Qt.
 *
 *     ovik_client* client;
 *     ovik_client_answer answer;
 *     unsigned brightness;
 *     if (ovik_client_open(&client, NULL, 1000) == OVIK_CLIENT_OK &&
 *         ovik_client_request(client, "getBrightness", 1000, &answer) == OVIK_CLIENT_OK &&
 *         ovik_client_unsigned(&answer, &brightness) == OVIK_CLIENT_OK)
 *         printf("%u\n", brightness);
 *     ovik_client_close(client);
 *
 * - Errors and statuses differ. Functions return an ovik_client_error: whether an answer came. The
 *   answer's status is the service's result: OVIK_OK (0), or a negative value of ovik_status.h.
 * - Timeouts are in milliseconds from the call on, measured with the monotonic clock. 0 does not
 *   wait, a negative timeout waits without limit. A Wi-Fi scan takes up to 60 s, and a request
 *   that the platform does not answer up to 25 s.
 * - The service serves one client at a time. Other clients connect but get no answer until the
 *   first has closed. Do not keep a client open without need.
 * - Any error but OVIK_CLIENT_BAD_REQUEST closes the connection: a late answer would be taken for
 *   the answer to the next request. Every further request then returns OVIK_CLIENT_NOT_CONNECTED.
 *   Close the client and open another.
 * - A request that was sent may be carried out although its answer did not come: the service does
 *   not check whether its client is still connected. After a time-out, read before writing again.
 * - Threads: only one thread may use a client at a time; clients are independent of each other.
 *   The library has no global state, and a lost service raises no SIGPIPE.
 * - The library does not check which program listens at the path. It may be another user's program,
 *   which then reads the requests.
 * - Memory: only ovik_client_open() allocates, about 16 kB.
 */
#ifndef OVIK_CLIENT_H
#define OVIK_CLIENT_H

#include "ovik_status.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The path of the service's socket. */
#define OVIK_CLIENT_SOCKET "/tmp/ovik_server.socket"

/** The longest request that the service takes, in bytes without its NUL. */
#define OVIK_CLIENT_REQUEST_MAX 4999

typedef enum ovik_client_error {
    OVIK_CLIENT_OK = 0,
    OVIK_CLIENT_NO_SERVICE,    /**< no service listens at the path: no socket, no process behind the
                                    socket, or a socket of another type */
    OVIK_CLIENT_NO_PERMISSION, /**< this user may not use the socket */
    OVIK_CLIENT_TIMED_OUT,     /**< not connected or not answered by the deadline */
    OVIK_CLIENT_CLOSED,        /**< the service closed the connection, as it does when it ends */
    OVIK_CLIENT_BAD_ANSWER,    /**< an answer without a status or its NUL, or too long */
    OVIK_CLIENT_BAD_REQUEST,   /**< too long, without fields, or with a ";" in a field, which the
                                    protocol cannot carry; nothing was sent */
    OVIK_CLIENT_REFUSED,       /**< from the typed functions: the answer's status is a failure */
    OVIK_CLIENT_WRONG_SHAPE,   /**< from the typed functions: the answer is of another shape */
    OVIK_CLIENT_NOT_CONNECTED, /**< an earlier call on this client failed */
    OVIK_CLIENT_SYSTEM         /**< no memory, no descriptor, …: see errno */
} ovik_client_error;

/** @return an English sentence, for any value; never null */
const char* ovik_client_error_text(ovik_client_error error);

/** @return the meaning of a status in an English sentence, for any value; never null */
const char* ovik_client_status_text(status_t status);

typedef struct ovik_client ovik_client;

/** An answer as received; the text belongs to the client and is valid until its next call. */
typedef struct ovik_client_answer {
    status_t status;  /**< OVIK_OK, or the failure */
    const char* text; /**< after the status and its blank, NUL-terminated; may be empty */
    size_t length;    /**< of text, in bytes without the NUL; at most 16381 */
} ovik_client_answer;

/**
 * Connects.
 *
 * @param client  receives the new client, or null on an error
 * @param path    of the socket, at most 107 bytes (a longer path is _SYSTEM with ENAMETOOLONG);
 *                null means OVIK_CLIENT_SOCKET
 * @param timeout in ms; needed when the service's queue of 20 clients is full
 * @return OVIK_CLIENT_OK, _NO_SERVICE, _NO_PERMISSION, _TIMED_OUT, _SYSTEM
 */
ovik_client_error ovik_client_open(ovik_client** client, const char* path, int timeout);

/** Disconnects and releases the client; null is allowed. errno is preserved. */
void ovik_client_close(ovik_client* client);

/**
 * Joins fields to a request: "setBuzzerMode", "1" to "setBuzzerMode;1".
 *
 * @param fields  the command word and its arguments
 * @param buffer  receives the request with its NUL, at most OVIK_CLIENT_REQUEST_MAX + 1 bytes
 * @param size    of @p buffer in bytes
 * @return OVIK_CLIENT_OK, or _BAD_REQUEST when there is no field, a field has a ";", or @p buffer
 *         is too small; @p buffer is then an empty text, unless @p size is 0
 */
ovik_client_error ovik_client_join(const char* const* fields, size_t count, char* buffer,
                                   size_t size);

/**
 * Sends one request and waits for its answer.
 *
 * @param request in the service's form, "setBuzzerMode;1"; sent with its NUL
 * @param timeout in ms, for sending and waiting together
 * @param answer  written on OVIK_CLIENT_OK
 * @return OVIK_CLIENT_OK, _TIMED_OUT, _CLOSED, _BAD_ANSWER, _BAD_REQUEST, _NOT_CONNECTED, _SYSTEM
 */
ovik_client_error ovik_client_request(ovik_client* client, const char* request, int timeout,
                                      ovik_client_answer* answer);

/** The progress of a batch. */
typedef struct ovik_client_progress {
    size_t sent;     /**< requests from this index on were never sent */
    size_t answered; /**< requests before this index were answered; the outcome of those from here
                          to sent is unknown */
} ovik_client_progress;

/** Receives each answer of a batch, in the order of the requests. Must not use the client. */
typedef void ovik_client_on_answer(void* context, size_t index, const ovik_client_answer* answer);

/**
 * Sends many requests back to back and receives the answers meanwhile. The system's socket buffer
 * queues some hundreds to thousands of requests for a busy service. An idle service polls every
 * 10 ms; a batch pays that delay once.
 *
 * A "quit" in the batch ends the service: requests after it are not answered.
 *
 * @param timeout  in ms, for the whole batch
 * @param onAnswer called for each answer; null discards the answers
 * @param progress always written; may be null. All requests are sent and answered on
 *                 OVIK_CLIENT_OK, none on _BAD_REQUEST.
 * @return as ovik_client_request()
 */
ovik_client_error ovik_client_batch(ovik_client* client, const char* const* requests, size_t count,
                                    int timeout, ovik_client_on_answer* onAnswer, void* context,
                                    ovik_client_progress* progress);

/*
 * The typed functions: each parses one shape of answer and needs no client. Outputs are written on
 * OVIK_CLIENT_OK only. They return _REFUSED when the status is a failure, and _WRONG_SHAPE when the
 * text is not exactly of that shape or does not fit.
 */

/** "75" */
ovik_client_error ovik_client_unsigned(const ovik_client_answer* answer, unsigned int* value);
/** "-3" */
ovik_client_error ovik_client_signed(const ovik_client_answer* answer, int* value);
/** "1073741824"; the service prints the 64 bits as a signed number, so negative ones are parsed. */
ovik_client_error ovik_client_size(const ovik_client_answer* answer, uint64_t* value);
/** Any text; @p text belongs to the client, like the answer's text. */
ovik_client_error ovik_client_text(const ovik_client_answer* answer, const char** text);

typedef struct ovik_client_system_info {
    char moduleName[6];           /**< at most 5 bytes and a NUL */
    unsigned int hwCode;          /**< at most 255 */
    unsigned int manufactureCode; /**< at most 65535 */
} ovik_client_system_info;

/** "name,12,513": the name ends before the last comma but one. */
ovik_client_error ovik_client_system_information(const ovik_client_answer* answer,
                                                 ovik_client_system_info* info);

/**
 * "01,AB,00"
 *
 * @param bytes  receives the bytes
 * @param size   of @p bytes
 * @param count  receives the number of bytes; an answer has at most 3332
 */
ovik_client_error ovik_client_bytes(const ovik_client_answer* answer, unsigned char* bytes,
                                    size_t size, size_t* count);

typedef struct ovik_client_outcome {
    int result;          /**< the platform's own result */
    const char* details; /**< "service;command;result" of a Wi-Fi scan, else "" */
} ovik_client_outcome;

/** The answer to a service command: "-3", for a Wi-Fi scan "-3;service;command;result". */
ovik_client_error ovik_client_service_outcome(const ovik_client_answer* answer,
                                              ovik_client_outcome* outcome);

#ifdef __cplusplus
}
#endif

#endif
