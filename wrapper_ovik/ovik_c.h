/*
 * The flat C interface to the panel's hardware and system facilities.
 *
 * ovik_init() starts a thread of its own with the application object; every other function runs one
 * request there and blocks its caller until it is done.
 *
 * Common to all request functions:
 *
 * - Order: ovik_init() first, then any number of requests, then ovik_shutdown(). Both of these from
 *   one and the same thread, with no request under way.
 * - End: the platform's library or a result callback can end the application's event loop by
 *   QCoreApplication::quit(). Requests that still wait return OVIK_NOT_RUN, later ones
 *   OVIK_NO_APPLICATION. ovik_init() then starts a new application.
 * - Threads: any thread may call, except the application thread itself (a result callback runs
 *   there): such a call would wait for itself and is refused with OVIK_NOT_RUN (-8).
 * - Time: calls are served one after the other. With the D-Bus backend, a request that the platform
 *   does not answer takes 25 s. Initialising that backend asks which of the platform's objects are
 *   present, for 5 s at most; a bus that is itself mute can block it for longer. The in-process
 *   backend takes as long as its library does.
 * - Result: OVIK_OK (0), or
 *     OVIK_NO_PLATFORM (-1)     no backend is in use, or it lacks the facility;
 *     OVIK_NO_APPLICATION (-3)  not initialised, or the event loop has ended;
 *     OVIK_REPLY_ERROR (-4)     the platform's reply is an error or did not come (D-Bus backend);
 *     OVIK_NOT_RUN (-8)         called on the application thread, not served before the event loop
 *                               ended, or not supported by the backend in use, where a function
 *                               says so.
 *   The plug-in functions have statuses of their own, see there.
 * - Outputs are written on OVIK_OK only, and must not be null. An output named pResp that is an int
 *   is the platform's own answer: the value asked for, or the platform's result code of an action,
 *   which is commonly 0 for done. A D-Bus reply of an unexpected type counts as 0, false or empty.
 * - Texts passed in are NUL-terminated UTF-8; null counts as empty.
 * - Texts handed out are copied as strncpy() does with the caller's size in bytes: a shorter text
 *   is followed by NUL bytes up to the end, a text of that many bytes or more is cut and NOT
 *   terminated. A caller that needs a C string terminates the buffer itself. A negative size counts
 *   as 0.
 * - Modes, controls, levels, times, counters, the size of memory and result codes have the
 *   platform's meaning and units. Nothing is range-checked on the way.
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
 * Which backend serves; an int to the functions that take it.
 *
 * The two for ovik_init() only try D-Bus every second, without limit, until it is in use: after
 * ovik_setMode() with OVIK_MODE_NONE or OVIK_MODE_LOCAL it still takes over. With
 * OVIK_MODE_DBUS_AS_IT_IS the tries end, whatever is behind it.
 */
enum ovik_mode {
    /** None: all but the plug-in functions answer OVIK_NO_PLATFORM. */
    OVIK_MODE_NONE = 0,
    /** In-process. It has no services and no plug-in modules: those of D-Bus stay if in use. */
    OVIK_MODE_LOCAL = 1,
    /** D-Bus. */
    OVIK_MODE_DBUS = 2,
    /** D-Bus as it stands, not initialised: with nothing behind it if it never was. */
    OVIK_MODE_DBUS_AS_IT_IS = 3,
    /** For ovik_init() only: in-process; from about 10 s on D-Bus, as soon as it comes up. */
    OVIK_MODE_LOCAL_THEN_DBUS = 4,
    /** D-Bus, or none if that fails. */
    OVIK_MODE_DBUS_OR_NONE = 5,
    /** For ovik_init() only: none; D-Bus as soon as it comes up. */
    OVIK_MODE_NONE_THEN_DBUS = 6
};

/**
 * Starts the application thread; returns when it is ready or after about 10 s.
 *
 * With the modes for D-Bus, a bus that accepts the connection and never answers blocks the
 * application thread for ever, and so every request after OVIK_OK. The program can then not end by
 * exit() or by returning from main(): both wait for that connection. _exit() or a signal ends it.
 *
 * @param mode an ovik_mode. A backend that fails to initialise, or any other mode, leaves no
 *             backend in use and does not make this fail. Ignored when already initialised or
 *             waiting again.
 * @return OVIK_OK, at once when already initialised; OVIK_NO_THREAD (-2);
 *         OVIK_NO_APPLICATION (-3) when the application did not appear in time, as with a bus
 *         that does not answer. It may still appear later: call again to go on waiting;
 *         OVIK_NOT_RUN (-8) on the application thread when its event loop has ended.
 */
status_t ovik_init(int mode);

/**
 * Switches the backend; the one used before stays up.
 *
 * A backend that lacks a facility is initialised anew each time. With D-Bus, the list of plug-in
 * modules then grows by those found again, and the callback of ovik_serviceCommand() is lost.
 *
 * @param mode an ovik_mode, but none for ovik_init() only
 * @return OVIK_OK; OVIK_NOT_STARTED (-5) when not initialised, or the event loop has ended;
 *         OVIK_BACKEND_FAILED (-6) or OVIK_ILLEGAL_MODE (-7), both with nothing changed;
 *         OVIK_NOT_RUN (-8).
 */
status_t ovik_setMode(int mode);

/**
 * Ends the application thread and releases the backends. ovik_init() may follow; Qt then warns on
 * standard error that the application is not in the main thread, which does no harm.
 *
 * On a bus that never answers, see ovik_init(), this blocks for ever, or returns OVIK_NOT_STARTED
 * and leaves the thread when ovik_init() has not returned OVIK_OK.
 *
 * @return OVIK_OK; OVIK_NOT_STARTED (-5) when not initialised, or when the event loop had ended
 *         before, after the thread has been joined; OVIK_NOT_RUN (-8) on the application thread.
 */
status_t ovik_shutdown(void);

/** A sign of life from the application thread: 0, as without one. */
int ovik_doSomething(void);

/**
 * The sink of diagnostic texts; called on the application thread. The library's own discards them;
 * a program that wants to see them defines this function.
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
/** Sets the backlight's brightness and has the platform keep it. */
status_t ovik_saveBrightness(int value, int* pResp);

/* --- System information, counters, memory, storage --- */

/**
 * Reads the panel's identity. In-process backend: an empty name and zeros when the library does not
 * serve its object from a running thread of its own.
 *
 * @param moduleName      gets the module name, at most 5 bytes and at most @p maxLen
 * @param maxLen          size of @p moduleName in bytes
 * @param hwCode          gets the hardware code
 * @param manufactureCode gets the two bytes of the manufacturer code as one little-endian number
 */
status_t ovik_getSystemInfo(char* moduleName, int maxLen, unsigned char* hwCode,
                            unsigned short* manufactureCode);
/** Reads the counter of the panel's operating time. */
status_t ovik_getSysCounter(int* pResp);
/** Reads the counter of the backlight's operating time. */
status_t ovik_getBackLightCounter(int* pResp);
/** Reads how much memory is available. */
status_t ovik_getAvailableMemory(uint64_t* pSize);
/**
 * Reads the version of the main operating system, up to its first NUL.
 *
 * @param maxLen size of @p version in bytes; the platform's text has commonly at most 20
 */
status_t ovik_mainOsVersion(char* version, int maxLen);
/**
 * Reads the JSON document about a storage device, as Latin-1.
 *
 * @param name   the platform's name of the device. In-process backend: ignored, it always asks for
 *               "/mnt/data".
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
/** Stores an interface's JSON configuration; ovik_applyNewConfiguration() puts it in force. */
status_t ovik_setInterfaceConfigJson(const char* interface, const char* config, int* pResp);
/** Puts the stored configuration in force. */
status_t ovik_applyNewConfiguration(int* pResp);

/* --- Serial EEPROMs --- */

/**
 * Reads from the panel's own serial EEPROM.
 *
 * @param offset where to start, in bytes; the low 8 bits count
 * @param len    how many bytes. A negative number asks the platform for more than it can have, and
 *               nothing is written.
 * @param pData  gets exactly @p len bytes: what the platform sent, then zero bytes. Whether the
 *               platform says that its own read failed is not told.
 */
status_t ovik_seepromRead(int offset, int len, unsigned char* pData);
/** The same from the EEPROM at the bus address @p slaveAddr, of which the low 8 bits count. */
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
/** Sets one system parameter; the in-process backend has it written to its storage at once. */
status_t ovik_setSystemParameter(const char* key, const char* value, int* pResp);
/** Sets the system parameters of a JSON document. In-process backend: OVIK_NOT_RUN. */
status_t ovik_setSystemParametersJson(const char* key, const char* json, int* pResp);

/* --- Plug-in modules ----------------------------------------------------------------------------
 *
 * @p slot is a place, from 0, in the list of the modules found, in the order of their slots: with
 * modules in slots 0 and 2, the second is at place 1. @p index is the I/O point or LED of the
 * module.
 *
 * The only failures are OVIK_EMPTY_SLOT (-10) for a place beyond the list, OVIK_NO_APPLICATION and
 * OVIK_NOT_RUN. Everything else is OVIK_OK, with the value -1 from a module that has no such
 * points, and the value 0 when the platform's reply is an error or does not come; the bytes of
 * ovik_getHWPluginIO() are zero in both cases.
 */

/** Reads an I/O point's mode; 2 is the mode in which it may be set. */
status_t ovik_getHWPluginIOMode(unsigned int slot, unsigned int index, int* mode);
/**
 * Reads @p count bytes of an I/O point. Exactly as many are written to @p input: what the platform
 * sent, then zero bytes.
 */
status_t ovik_getHWPluginIO(unsigned int slot, unsigned int index, unsigned char* input,
                            unsigned int count);
/** Writes the @p count bytes of @p output to an I/O point, at most INT_MAX of them. */
status_t ovik_setHWPluginIO(unsigned int slot, unsigned int index, unsigned char* output,
                            unsigned int count, int* pResp);
/** Reads an LED's mode; 2 is the mode in which it may be set. */
status_t ovik_getHWPluginLedMode(unsigned int slot, unsigned int index, int* mode);
/** Sets an LED's user control. */
status_t ovik_setHWPluginLedUserControl(unsigned int slot, unsigned int index, int control,
                                        int* pResp);
/** Sets an LED's value. */
status_t ovik_setHWPluginLedValue(unsigned int slot, unsigned int index, unsigned int value,
                                  int* pResp);
/** Sets how long an LED is lit when it blinks. */
status_t ovik_setHWPluginLedOnTime(unsigned int slot, unsigned int index, int onTime, int* pResp);
/** Sets how long an LED is dark when it blinks. */
status_t ovik_setHWPluginLedOffTime(unsigned int slot, unsigned int index, int offTime, int* pResp);
/** Lights an LED once, with the value 1, for @p time. */
status_t ovik_setHWPluginLedFlash(unsigned int slot, unsigned int index, int time, int* pResp);
/** Has an LED blink, with the value 1. */
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
/** Has a service read its configuration again. */
status_t ovik_serviceReload(const char* service, int* pResp);
/** Has a service start with the panel. */
status_t ovik_serviceEnable(const char* service, int* pResp);
/** Has a service not start with the panel. */
status_t ovik_serviceDisable(const char* service, int* pResp);
/** Tells whether a service starts with the panel. */
status_t ovik_serviceEnabled(const char* service, bool* pResp);
/** Puts a service's settings in force. */
status_t ovik_serviceApply(const char* service, int* pResp);
/** Tells whether the platform controls the service. */
status_t ovik_serviceControlled(const char* service, bool* pResp);
/** Reads a service's state. */
status_t ovik_serviceState(const char* service, int* pResp);
/**
 * Starts a command of a service; returns when the platform has taken it.
 *
 * @param fnCallback null, or a void function taking three const char*: service, command, result
 *                   text, each Latin-1. It is called on the application thread for every result
 *                   that the platform reports from then on, of this and of other commands, until
 *                   another call that answers OVIK_OK or OVIK_REPLY_ERROR replaces it,
 *                   ovik_setMode() loses it (see there) or the application ends. The texts live for
 *                   the duration of the call.
 */
status_t ovik_serviceCommand(const char* service, const char* cmd, const char* opts,
                             void* fnCallback, int* pResp);

#ifdef __cplusplus
}
#endif

#endif
