/* The result code shared by every layer, usable from C and C++. */
#ifndef OVIK_STATUS_H
#define OVIK_STATUS_H

/**
 * Result of a call: OVIK_OK, or a negative failure.
 *
 * A status only reports whether the platform was reached. The platform's own answer is in the
 * call's output argument, valid on OVIK_OK only: a getter's value, or the platform's result code of
 * a setter or an action.
 */
typedef int status_t;

/** Every status value in use; the numbers are part of the socket protocol. */
enum ovik_status {
    OVIK_OK = 0,
    OVIK_NO_PLATFORM = -1,    /**< no backend, or the backend lacks the facility */
    OVIK_NO_THREAD = -2,      /**< the application thread could not be created */
    OVIK_NO_APPLICATION = -3, /**< not initialised, not ready in time, or ended; from the socket
                                   also: the bytes to read are fewer than 0, more than 65535, or
                                   there is no memory for them */
    OVIK_REPLY_ERROR = -4,    /**< the platform's reply is an error or did not come */
    OVIK_NOT_STARTED = -5,    /**< mode change or shutdown without an initialised application */
    OVIK_BACKEND_FAILED = -6, /**< the backend chosen by a mode failed to initialise */
    OVIK_ILLEGAL_MODE = -7,   /**< no such mode */
    OVIK_NOT_RUN = -8,        /**< request not understood, operation not supported or not run */
    OVIK_TIMEOUT = -9,        /**< no result of a service command in time */
    OVIK_EMPTY_SLOT = -10,    /**< no plug-in module at that place of the list */
    OVIK_WRONG_MODE = -12     /**< the plug-in point's mode is not 2, so it may not be set */
};

#endif
