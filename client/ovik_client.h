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
 * - Errors and statuses are two things. A function returns an ovik_client_error: whether there is
 *   an answer at all. What the service made of the request is the answer's status: OVIK_OK (0), or
 *   one of the negative values of ovik_status.h.
 * - Deadlines are in milliseconds from the call on, measured with the monotonic clock; 0 takes only
 *   what is there already, a negative one waits without end. A Wi-Fi scan takes up to 60 s, and a
 *   platform that does not answer up to 25 s.
 * - The service serves one client at a time: others connect but get no answer until that one has
 *   closed. Do not keep a client open without need.
 * - After any error but OVIK_CLIENT_BAD_REQUEST the connection is closed and is not used again, as
 *   the answer to come would be taken for the next one's: every further request answers
 *   OVIK_CLIENT_NOT_CONNECTED. Close the client and open another.
 * - A request that was sent may be carried out although its answer did not come: the service does
 * not look whether its client is still there. After a time-out, read before you write again.
 * - Threads: one client is used by one thread at a time; different clients do not know each other.
 *   There is no state outside of a client, and no signal: a service that is gone raises no SIGPIPE.
 * - Who listens at the path is not checked: it may be another user's program, which then reads what
 *   is sent.
 * - Memory: ovik_client_open() allocates about 16 kB, nothing else does.
 */
#ifndef OVIK_CLIENT_H
#define OVIK_CLIENT_H

#include "ovik_status.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Where the service listens. */
#define OVIK_CLIENT_SOCKET "/tmp/ovik_server.socket"

/** The longest request that the service takes, in bytes without its NUL. */
#define OVIK_CLIENT_REQUEST_MAX 4999

typedef enum ovik_client_error {
    OVIK_CLIENT_OK = 0,
    OVIK_CLIENT_NO_SERVICE,    /**< nobody listens there: no socket, one without a process, or one
                                    of another type */
    OVIK_CLIENT_NO_PERMISSION, /**< this user may not use the socket */
    OVIK_CLIENT_TIMED_OUT,     /**< not connected or not answered by the deadline */
    OVIK_CLIENT_CLOSED,        /**< the service closed the connection, as it does when it ends */
    OVIK_CLIENT_BAD_ANSWER,    /**< an answer without a status or its NUL, or too long */
    OVIK_CLIENT_BAD_REQUEST,   /**< too long, no field at all, or a field with ";" in it, which the
                                    protocol cannot carry; nothing was sent */
    OVIK_CLIENT_REFUSED,       /**< from the typed functions: the answer's status is a failure */
    OVIK_CLIENT_WRONG_SHAPE,   /**< from the typed functions: the answer is of another shape */
    OVIK_CLIENT_NOT_CONNECTED, /**< an earlier call on this client failed */
    OVIK_CLIENT_SYSTEM         /**< no memory, no descriptor, …: errno tells */
} ovik_client_error;

/** One sentence in English, for any value; never null. */
const char* ovik_client_error_text(ovik_client_error error);

/** What a status means, one sentence in English, for any value; never null. */
const char* ovik_client_status_text(status_t status);

typedef struct ovik_client ovik_client;

/** An answer as it came; the texts belong to the client and hold until its next call. */
typedef struct ovik_client_answer {
    status_t status;  /**< OVIK_OK, or the failure */
    const char* text; /**< what follows the status and its blank, NUL-terminated; "" when nothing */
    size_t length;    /**< of text, in bytes without the NUL; at most 16381 */
} ovik_client_answer;

/**
 * Connects.
 *
 * @param client  gets the new client, or null on an error
 * @param path    of the socket, at most 107 bytes (a longer one is _SYSTEM with ENAMETOOLONG); null
 *                means OVIK_CLIENT_SOCKET
 * @param timeout in ms; the service's queue of 20 clients may be full
 * @return OVIK_CLIENT_OK, _NO_SERVICE, _NO_PERMISSION, _TIMED_OUT, _SYSTEM
 */
ovik_client_error ovik_client_open(ovik_client** client, const char* path, int timeout);

/** Disconnects and releases it; null is allowed. errno stays. */
void ovik_client_close(ovik_client* client);

/**
 * Joins fields to a request: "setBuzzerMode", "1" to "setBuzzerMode;1".
 *
 * @param fields  the command word and its arguments
 * @param buffer  gets the request with its NUL; OVIK_CLIENT_REQUEST_MAX + 1 bytes are always enough
 * @param size    of @p buffer in bytes
 * @return OVIK_CLIENT_OK, or _BAD_REQUEST: no field, a ";" in a field, or no room; @p buffer is an
 *         empty text then, if it has any room
 */
ovik_client_error ovik_client_join(const char* const* fields, size_t count, char* buffer,
                                   size_t size);

/**
 * Sends one request and waits for its answer.
 *
 * @param request as the service takes it, "setBuzzerMode;1"; its NUL is sent with it
 * @param timeout in ms, for both together
 * @param answer  written on OVIK_CLIENT_OK
 * @return OVIK_CLIENT_OK, _TIMED_OUT, _CLOSED, _BAD_ANSWER, _BAD_REQUEST, _NOT_CONNECTED, _SYSTEM
 */
ovik_client_error ovik_client_request(ovik_client* client, const char* request, int timeout,
                                      ovik_client_answer* answer);

/** How far a batch got. */
typedef struct ovik_client_progress {
    size_t sent;     /**< requests from this one on never left: the service has not seen them */
    size_t answered; /**< those before this one were answered; from here to sent, nobody knows */
} ovik_client_progress;

/** Told each answer of a batch in the order of the requests. It must not use the client. */
typedef void ovik_client_on_answer(void* context, size_t index, const ovik_client_answer* answer);

/**
 * Sends many requests back to back while taking the answers as they come. As many as the system has
 * room for, some hundreds to thousands, may wait for a service that is busy. An idle service looks
 * for requests every 10 ms; a batch waits for that once.
 *
 * A "quit" among them ends the service: those behind it are not answered.
 *
 * @param timeout  in ms, for all together
 * @param onAnswer called for each answer; null drops them
 * @param progress written always, but may be null. All are sent and answered on OVIK_CLIENT_OK,
 *                 none on _BAD_REQUEST.
 * @return as ovik_client_request()
 */
ovik_client_error ovik_client_batch(ovik_client* client, const char* const* requests, size_t count,
                                    int timeout, ovik_client_on_answer* onAnswer, void* context,
                                    ovik_client_progress* progress);

/*
 * What an answer says, by the shape of its command's answer. Each writes its outputs on
 * OVIK_CLIENT_OK only; _REFUSED when the status is a failure; _WRONG_SHAPE when the text is not
 * exactly of that shape or does not fit. They need no client.
 */

/** "75" */
ovik_client_error ovik_client_unsigned(const ovik_client_answer* answer, unsigned int* value);
/** "-3" */
ovik_client_error ovik_client_signed(const ovik_client_answer* answer, int* value);
/** "1073741824"; the service prints the 64 bits as a signed number, and this takes both signs. */
ovik_client_error ovik_client_size(const ovik_client_answer* answer, uint64_t* value);
/** Any text; @p text belongs to the client, as the answer's. */
ovik_client_error ovik_client_text(const ovik_client_answer* answer, const char** text);

typedef struct ovik_client_system_info {
    char moduleName[6];           /**< at most 5 bytes and a NUL */
    unsigned int hwCode;          /**< at most 255 */
    unsigned int manufactureCode; /**< at most 65535 */
} ovik_client_system_info;

/** "name,12,513": the name goes up to the last comma but one. */
ovik_client_error ovik_client_system_information(const ovik_client_answer* answer,
                                                 ovik_client_system_info* info);

/**
 * "01,AB,00"
 *
 * @param bytes  gets them
 * @param size   of @p bytes
 * @param count  gets how many there are; an answer can hold 3332
 */
ovik_client_error ovik_client_bytes(const ovik_client_answer* answer, unsigned char* bytes,
                                    size_t size, size_t* count);

typedef struct ovik_client_outcome {
    int result;          /**< the platform's own */
    const char* details; /**< "service;command;result" of a Wi-Fi scan, else "" */
} ovik_client_outcome;

/** "-3", for a Wi-Fi scan "-3;service;command;result": what a service command answers. */
ovik_client_error ovik_client_service_outcome(const ovik_client_answer* answer,
                                              ovik_client_outcome* outcome);

#ifdef __cplusplus
}
#endif

#endif
