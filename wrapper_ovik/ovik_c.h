/*
 * The flat C interface to the panel's hardware and system facilities.
 *
 * ovik_init() starts the application thread. Every other function runs one request on that thread
 * and blocks its caller until the request is done.
 *
 * Common to all request functions:
 *
 * - Order: ovik_init() first, then any number of requests, then ovik_shutdown(). Call ovik_init()
 *   and ovik_shutdown() from the same thread, with no request under way.
 * - End: the platform's library or a result callback can end the application's event loop by
 *   QCoreApplication::quit(). Requests that still wait return OVIK_NOT_RUN, later ones
 *   OVIK_NO_APPLICATION. ovik_init() then starts a new application.
 * - Threads: any thread may call, except the application thread itself, where result callbacks run.
 *   A call from there would wait for itself, so it returns OVIK_NOT_RUN (-8).
 * - Time: calls are served one after the other. With the D-Bus backend, a request that the platform
 *   does not answer takes 25 s. Initialising the D-Bus backend asks which of the platform's objects
 *   are present; this takes at most 5 s, unless the bus itself does not answer. The in-process
 *   backend takes as long as its library does.
 * - Result: OVIK_OK (0), or
 *     OVIK_NO_PLATFORM (-1)     no backend is in use, or it lacks the facility;
 *     OVIK_NO_APPLICATION (-3)  not initialised, or the event loop has ended;
 *     OVIK_REPLY_ERROR (-4)     the platform's reply is an error or did not come (D-Bus backend);
 *     OVIK_NOT_RUN (-8)         called on the application thread, not served before the event loop
 *                               ended, or not supported by the backend in use; the functions that
 *                               a backend lacks are marked.
 *   The plug-in functions return other statuses, listed below with them.
 * - Outputs are written on OVIK_OK only, and must not be null. An int output named pResp is the
 *   platform's own answer: the value read, or the platform's result code of an action, commonly 0
 *   for success. A D-Bus reply of an unexpected type counts as 0, false or empty.
 * - Texts passed in are NUL-terminated UTF-8; null counts as empty.
 * - Texts returned are copied as by strncpy() with the caller's size in bytes. A shorter text is
 *   padded with NUL bytes. A text of that size or more is cut and NOT terminated: a caller that
 *   needs a C string must terminate the buffer. A negative size counts as 0.
 * - Modes, controls, levels, times, counters, the size of memory and result codes have the
 *   platform's meaning and units. The library checks no ranges.
 */
#ifndef OVIK_C_H
#define OVIK_C_H

#include "../IProxy/ovik_status.h"

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- Start, mode and stop --- */

/**
 * Selects the backend. Functions take the mode as an int.
 *
 * The two modes for ovik_init() only retry D-Bus every second, without limit, until D-Bus is in
 * use. D-Bus thus also replaces a mode OVIK_MODE_NONE or OVIK_MODE_LOCAL set meanwhile with
 * ovik_setMode(). OVIK_MODE_DBUS_AS_IT_IS ends the retries, even when no platform was reached.
 */
enum ovik_mode {
    /** No backend: all but the plug-in functions return OVIK_NO_PLATFORM. */
    OVIK_MODE_NONE = 0,
    /** In-process. It lacks services and plug-in modules: those of D-Bus stay in use, if any. */
    OVIK_MODE_LOCAL = 1,
    /** D-Bus. */
    OVIK_MODE_DBUS = 2,
    /** D-Bus without initialising it: lacks every facility unless initialised before. */
    OVIK_MODE_DBUS_AS_IT_IS = 3,
    /** For ovik_init() only: in-process; after about 10 s D-Bus, as soon as it is available. */
    OVIK_MODE_LOCAL_THEN_DBUS = 4,
    /** D-Bus, or none if D-Bus fails. */
    OVIK_MODE_DBUS_OR_NONE = 5,
    /** For ovik_init() only: none; D-Bus as soon as it is available. */
    OVIK_MODE_NONE_THEN_DBUS = 6
};

/**
 * Starts the application thread; returns when it is ready or after about 10 s.
 *
 * With the modes for D-Bus, a bus that accepts the connection and never answers blocks the
 * application thread for ever, and so every later request. exit() and a return from main() then
 * block too, as both wait for the connection. End the program by _exit() or a signal.
 *
 * @param mode an ovik_mode. When the backend fails to initialise, or for any other value, no
 *             backend is in use; neither is an error. Ignored when the thread runs already.
 * @return OVIK_OK, at once when already initialised;
 *         OVIK_NO_THREAD (-2) when the thread could not be created;
 *         OVIK_NO_APPLICATION (-3) when the thread was not ready in time, as with a bus that does
 *         not answer. It may still become ready: call again to continue waiting;
 *         OVIK_NOT_RUN (-8) on the application thread when its event loop has ended.
 */
status_t ovik_init(int mode);

/**
 * Switches the backend; the previous backend stays initialised.
 *
 * A backend that lacks a facility is initialised anew by each switch to it. With D-Bus, this
 * appends the modules found again to the list of plug-in modules, and drops the callback of
 * ovik_serviceCommand().
 *
 * @param mode an ovik_mode, except the two for ovik_init() only
 * @return OVIK_OK; OVIK_NOT_STARTED (-5) when not initialised, or the event loop has ended;
 *         OVIK_BACKEND_FAILED (-6) or OVIK_ILLEGAL_MODE (-7), both with nothing changed;
 *         OVIK_NOT_RUN (-8).
 */
status_t ovik_setMode(int mode);

/**
 * Ends the application thread and releases the backends. ovik_init() may follow. Qt then warns on
 * standard error that the application is not in the main thread; the warning is harmless.
 *
 * On a bus that never answers (see ovik_init()), this function blocks for ever. If ovik_init() did
 * not return OVIK_OK, it returns OVIK_NOT_STARTED instead and leaves the thread running.
 *
 * @return OVIK_OK; OVIK_NOT_STARTED (-5) when not initialised, or when the event loop had ended
 *         before (the thread is joined then); OVIK_NOT_RUN (-8) on the application thread.
 */
status_t ovik_shutdown(void);

/** Liveness probe of the application thread; always 0, even when not started. */
int ovik_doSomething(void);

/**
 * Receives diagnostic texts, on the application thread. The library's default discards the texts;
 * a program that wants them defines this function.
 */
void logOVIKErrors(char* err);

/* --- Buzzer and backlight --- */

/** Reads the buzzer's mode. */
status_t ovik_getBuzzerMode(int* pMode);
/** Sets the buzzer's mode. */
status_t ovik_setBuzzerMode(int mode, int* pResp);
/** Sets the buzzer's user control. */
status_t ovik_setBuzzerUserControl(int control, int* pResp);
/** Sets the buzzer's on time. */
status_t ovik_setBuzzerOnTime(int time, int* pResp);
/** Sets the buzzer's off time. */
status_t ovik_setBuzzerOffTime(int time, int* pResp);
/** Reads the backlight's brightness. */
status_t ovik_getBrightness(int* pResp);
/** Sets the backlight's brightness; the platform saves it. */
status_t ovik_saveBrightness(int value, int* pResp);

/* --- System information, counters, memory, storage --- */

/**
 * Reads the panel's identity. In-process backend: an empty name and zeros unless the library's
 * object lives in another, running thread.
 *
 * @param moduleName      receives the module name, at most 5 bytes and at most @p maxLen
 * @param maxLen          size of @p moduleName in bytes
 * @param hwCode          receives the hardware code
 * @param manufactureCode receives the two bytes of the manufacturer code, as a little-endian number
 */
status_t ovik_getSystemInfo(char* moduleName, int maxLen, unsigned char* hwCode,
                            unsigned short* manufactureCode);
/** Reads the counter of the panel's operating time. */
status_t ovik_getSysCounter(int* pResp);
/** Reads the counter of the backlight's operating time. */
status_t ovik_getBackLightCounter(int* pResp);
/** Reads the available memory. */
status_t ovik_getAvailableMemory(uint64_t* pSize);
/**
 * Reads the version of the main operating system, up to its first NUL.
 *
 * @param maxLen size of @p version in bytes; the platform's text commonly has at most 20
 */
status_t ovik_mainOsVersion(char* version, int maxLen);
/**
 * Reads the JSON document about a storage device, as Latin-1.
 *
 * @param name   the platform's name of the device. The in-process backend ignores it and always
 *               asks for "/mnt/data".
 * @param maxLen size of @p pJson in bytes
 */
status_t ovik_getStorageInfoJson(const char* name, char* pJson, int maxLen);

/* --- Network --- */

/**
 * Reads the whole network configuration as a JSON document in Latin-1.
 *
 * @param maxLen size of @p json in bytes
 */
status_t ovik_getNetworkConfigJson(char* json, int maxLen);
/** Stores an interface's JSON configuration; ovik_applyNewConfiguration() applies it. */
status_t ovik_setInterfaceConfigJson(const char* interface, const char* config, int* pResp);
/** Applies the stored configuration. */
status_t ovik_applyNewConfiguration(int* pResp);

/* --- Serial EEPROMs --- */

/**
 * Reads from the panel's own serial EEPROM.
 *
 * @param offset of the first byte; only the low 8 bits are used
 * @param len    number of bytes. A negative number requests more than the platform can have;
 *               nothing is then written.
 * @param pData  receives exactly @p len bytes: those that the platform sent, then zero bytes. The
 *               platform's own result code is discarded.
 */
status_t ovik_seepromRead(int offset, int len, unsigned char* pData);
/** The same for the EEPROM at the bus address @p slaveAddr; only its low 8 bits are used. */
status_t ovik_seepromReadSlave(int slaveAddr, int offset, int len, unsigned char* pData);

/* --- Parameters --- */

/**
 * Reads one volatile parameter, as UTF-8.
 *
 * @param maxLength size of @p pResp in bytes, here and below
 */
status_t ovik_getVolatileParameter(const char* key, char* pResp, int maxLength);
/** Reads one system parameter, as UTF-8. */
status_t ovik_getSystemParameter(const char* key, char* pResp, int maxLength);
/** Reads all volatile parameters as a JSON document in UTF-8. In-process backend: OVIK_NOT_RUN. */
status_t ovik_getAllVolatileParametersJson(char* pResp, int maxLength);
/** Reads all system parameters as a JSON document in UTF-8. In-process backend: OVIK_NOT_RUN. */
status_t ovik_getAllSystemParametersJson(char* pResp, int maxLength);
/** Sets one volatile parameter. */
status_t ovik_setVolatileParameter(const char* key, const char* value, int* pResp);
/** Sets one system parameter. In-process backend: its library writes it to storage at once. */
status_t ovik_setSystemParameter(const char* key, const char* value, int* pResp);
/** Sets the system parameters of a JSON document. In-process backend: OVIK_NOT_RUN. */
status_t ovik_setSystemParametersJson(const char* key, const char* json, int* pResp);

/* --- Plug-in modules ----------------------------------------------------------------------------
 *
 * @p slot is a place, from 0, in the list of the modules found, in the order of their slots:
 * with modules in slots 0 and 2, the second is at place 1. @p index is the I/O point or LED of
 * the module.
 *
 * The only failures are OVIK_EMPTY_SLOT (-10) for a place beyond the list, OVIK_NO_APPLICATION
 * and OVIK_NOT_RUN. Everything else is OVIK_OK. The value is -1 when the module has no such points,
 * and 0 when the platform's reply is an error or does not come. In both cases the bytes of
 * ovik_getHWPluginIO() are zero.
 */

/** Reads an I/O point's mode; in mode 2 the point may be set. */
status_t ovik_getHWPluginIOMode(unsigned int slot, unsigned int index, int* mode);
/**
 * Reads @p count bytes of an I/O point. Exactly @p count bytes are written to @p input: those that
 * the platform sent, then zero bytes.
 */
status_t ovik_getHWPluginIO(unsigned int slot, unsigned int index, unsigned char* input,
                            unsigned int count);
/** Writes the @p count bytes of @p output, at most INT_MAX, to an I/O point. */
status_t ovik_setHWPluginIO(unsigned int slot, unsigned int index, unsigned char* output,
                            unsigned int count, int* pResp);
/** Reads an LED's mode; in mode 2 the LED may be set. */
status_t ovik_getHWPluginLedMode(unsigned int slot, unsigned int index, int* mode);
/** Sets an LED's user control. */
status_t ovik_setHWPluginLedUserControl(unsigned int slot, unsigned int index, int control,
                                        int* pResp);
/** Sets an LED's value. */
status_t ovik_setHWPluginLedValue(unsigned int slot, unsigned int index, unsigned int value,
                                  int* pResp);
/** Sets the on time of a blinking LED. */
status_t ovik_setHWPluginLedOnTime(unsigned int slot, unsigned int index, int onTime, int* pResp);
/** Sets the off time of a blinking LED. */
status_t ovik_setHWPluginLedOffTime(unsigned int slot, unsigned int index, int offTime, int* pResp);
/** Lights an LED once, with the value 1, for @p time. */
status_t ovik_setHWPluginLedFlash(unsigned int slot, unsigned int index, int time, int* pResp);
/** Makes an LED blink, with the value 1. */
status_t ovik_setHWPluginLedBlink(unsigned int slot, unsigned int index, int onTime, int offTime,
                                  int* pResp);

/* --- System services ----------------------------------------------------------------------------
 *
 * @p service is the platform's name of the service. Only the D-Bus backend has services.
 */

/** Starts a service. */
status_t ovik_serviceStart(const char* service, int* pResp);
/** Stops a service. */
status_t ovik_serviceStop(const char* service, int* pResp);
/** Stops and starts a service. */
status_t ovik_serviceRestart(const char* service, int* pResp);
/** Makes a service read its configuration again. */
status_t ovik_serviceReload(const char* service, int* pResp);
/** Makes a service start with the panel. */
status_t ovik_serviceEnable(const char* service, int* pResp);
/** Makes a service no longer start with the panel. */
status_t ovik_serviceDisable(const char* service, int* pResp);
/** Reads whether a service starts with the panel. */
status_t ovik_serviceEnabled(const char* service, bool* pResp);
/** Applies a service's settings. */
status_t ovik_serviceApply(const char* service, int* pResp);
/** Reads whether the platform controls the service. */
status_t ovik_serviceControlled(const char* service, bool* pResp);
/** Reads a service's state. */
status_t ovik_serviceState(const char* service, int* pResp);
/**
 * Starts a command of a service; returns when the platform has accepted it.
 *
 * @param fnCallback null, or a void function taking three const char*: service, command, result
 *                   text, each Latin-1, valid during the callback only. It is called on the
 *                   application thread for every result that the platform reports, of this and of
 *                   other commands. It stays in use until another call that returns OVIK_OK or
 *                   OVIK_REPLY_ERROR replaces it, ovik_setMode() drops it (see there), or the
 *                   application ends.
 */
status_t ovik_serviceCommand(const char* service, const char* cmd, const char* opts,
                             void* fnCallback, int* pResp);

#ifdef __cplusplus
}
#endif

#endif
