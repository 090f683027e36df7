/*
 * The flat C interface to the panel's hardware and system facilities.
 *
 * ovik_init() starts a thread of its own with the application object; every other function runs one
 * request there and blocks its caller until it is done.
 *
 * Common to all request functions, and not repeated at each:
 *
 * - Order: ovik_init() first, then any number of requests, then ovik_shutdown(). Both of these from
 *   one and the same thread, with no request under way.
 * - Threads: any thread may call, except the application thread itself (a result callback runs
 *   there): such a call would wait for itself and is refused with OVIK_NOT_RUN (-8).
 * - Result: OVIK_OK (0), or
 *     OVIK_NO_PLATFORM (-1)     no backend is in use, or it lacks the facility;
 *     OVIK_NO_APPLICATION (-3)  not initialised;
 *     OVIK_REPLY_ERROR (-4)     the platform's reply is an error or did not come;
 *     OVIK_NOT_RUN (-8)         the request was not run, or the backend does not support it;
 *   and for the plug-in functions also OVIK_EMPTY_SLOT (-10).
 * - Outputs are written on OVIK_OK only, and must not be null. An output named pResp is the
 *   platform's own answer: the value asked for, or the platform's result code of an action.
 * - Texts passed in are NUL-terminated UTF-8; null counts as empty.
 * - Texts handed out are copied with strncpy and the caller's size: a shorter text is followed by
 *   NUL bytes up to the end, a text of that many bytes or more is cut and NOT terminated. A caller
 *   that needs a C string terminates the buffer itself.
 * - The meaning of values, modes, times and result codes is the platform's. Nothing is
 *   range-checked on the way.
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
 * Starts the application thread; returns when it is ready or after about 10 s.
 *
 * @param mode 0 no backend; 1 in-process backend; 2 D-Bus backend; 5 D-Bus backend, or none if it
 *             fails; 4 in-process backend at first, and from 10 s on the D-Bus backend as soon as
 *             it comes up; 6 no backend at first, and the D-Bus backend as soon as it comes up,
 *             tried every second. A backend that fails to initialise, or an unknown mode, leaves
 *             no backend in use and does not make this fail.
 * @return OVIK_OK, at once when already initialised; OVIK_NO_THREAD (-2);
 *         OVIK_NO_APPLICATION (-3) when the application did not appear in time. It may still appear
 *         later: call again to go on waiting for it.
 */
status_t ovik_init(int mode);

/**
 * Switches the backend: modes 0, 1, 2, 5 as for ovik_init(), 3 the D-Bus backend as it stands.
 *
 * @return OVIK_OK; OVIK_NOT_STARTED (-5) when not initialised; OVIK_BACKEND_FAILED (-6) or
 *         OVIK_ILLEGAL_MODE (-7), both with nothing changed; OVIK_NOT_RUN (-8).
 */
status_t ovik_setMode(int mode);

/**
 * Ends the application thread and releases the backends. ovik_init() may follow.
 *
 * @return OVIK_OK; OVIK_NOT_STARTED (-5) when not initialised; OVIK_NOT_RUN (-8).
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

status_t ovik_getBuzzerMode(int* pMode);
status_t ovik_setBuzzerMode(int mode, int* pResp);
status_t ovik_setBuzzerUserControl(int control, int* pResp);
status_t ovik_setBuzzerOnTime(int time, int* pResp);
status_t ovik_setBuzzerOffTime(int time, int* pResp);
status_t ovik_getBrightness(int* pResp);
/** Sets the brightness and keeps it over a restart. */
status_t ovik_saveBrightness(int value, int* pResp);

/* --- System information, counters, memory, storage --- */

/**
 * The panel's identity.
 *
 * @param moduleName      gets the module name, at most 5 bytes and at most @p maxLen
 * @param maxLen          size of @p moduleName in bytes
 * @param hwCode          gets the hardware code
 * @param manufactureCode gets the two bytes of the manufacturer code as one little-endian number
 */
status_t ovik_getSystemInfo(char* moduleName, int maxLen, unsigned char* hwCode,
                            unsigned short* manufactureCode);
status_t ovik_getSysCounter(int* pResp);
status_t ovik_getBackLightCounter(int* pResp);
status_t ovik_getAvailableMemory(uint64_t* pSize);
/** @param maxLen size of @p version in bytes; the platform keeps 20. */
status_t ovik_mainOsVersion(char* version, int maxLen);
/** @param maxLen size of @p pJson in bytes. The document comes as Latin-1. */
status_t ovik_getStorageInfoJson(const char* name, char* pJson, int maxLen);

/* --- Network --- */

/** @param maxLen size of @p json in bytes. The document comes as Latin-1. */
status_t ovik_getNetworkConfigJson(char* json, int maxLen);
/** Stores the configuration of one interface; ovik_applyNewConfiguration() makes it take effect. */
status_t ovik_setInterfaceConfigJson(const char* interface, const char* config, int* pResp);
status_t ovik_applyNewConfiguration(int* pResp);

/* --- Serial EEPROMs --- */

/**
 * Reads @p len bytes from @p offset, of which the low 8 bits count, into @p pData. Exactly @p len
 * bytes are written: what the platform sent, then zero bytes. A negative @p len writes none.
 */
status_t ovik_seepromRead(int offset, int len, unsigned char* pData);
/** The same from the EEPROM at the bus address @p slaveAddr, of which the low 8 bits count. */
status_t ovik_seepromReadSlave(int slaveAddr, int offset, int len, unsigned char* pData);

/* --- Parameters --- */

/** @param maxLength size of @p pResp in bytes, here and below. */
status_t ovik_getVolatileParameter(const char* key, char* pResp, int maxLength);
status_t ovik_getSystemParameter(const char* key, char* pResp, int maxLength);
status_t ovik_getAllVolatileParametersJson(char* pResp, int maxLength);
status_t ovik_getAllSystemParametersJson(char* pResp, int maxLength);
status_t ovik_setVolatileParameter(const char* key, const char* value, int* pResp);
status_t ovik_setSystemParameter(const char* key, const char* value, int* pResp);
status_t ovik_setSystemParametersJson(const char* key, const char* json, int* pResp);

/* --- Plug-in modules ----------------------------------------------------------------------------
 *
 * @p slot is a place, from 0, in the list of the modules found, in the order of their slots;
 * @p index is the I/O point or LED of the module. A request that fails at the platform gives
 * OVIK_OK and the value 0.
 */

status_t ovik_getHWPluginIOMode(unsigned int slot, unsigned int index, int* mode);
/** Writes exactly @p count bytes to @p input: what the platform sent, then zero bytes. */
status_t ovik_getHWPluginIO(unsigned int slot, unsigned int index, unsigned char* input,
                            unsigned int count);
/** Sends the @p count bytes of @p output. */
status_t ovik_setHWPluginIO(unsigned int slot, unsigned int index, unsigned char* output,
                            unsigned int count, int* pResp);
status_t ovik_getHWPluginLedMode(unsigned int slot, unsigned int index, int* mode);
status_t ovik_setHWPluginLedUserControl(unsigned int slot, unsigned int index, int control,
                                        int* pResp);
status_t ovik_setHWPluginLedValue(unsigned int slot, unsigned int index, unsigned int value,
                                  int* pResp);
status_t ovik_setHWPluginLedOnTime(unsigned int slot, unsigned int index, int onTime, int* pResp);
status_t ovik_setHWPluginLedOffTime(unsigned int slot, unsigned int index, int offTime, int* pResp);
status_t ovik_setHWPluginLedFlash(unsigned int slot, unsigned int index, int time, int* pResp);
status_t ovik_setHWPluginLedBlink(unsigned int slot, unsigned int index, int onTime, int offTime,
                                  int* pResp);

/* --- System services --- */

status_t ovik_serviceStart(const char* service, int* pResp);
status_t ovik_serviceStop(const char* service, int* pResp);
status_t ovik_serviceRestart(const char* service, int* pResp);
status_t ovik_serviceReload(const char* service, int* pResp);
status_t ovik_serviceEnable(const char* service, int* pResp);
status_t ovik_serviceDisable(const char* service, int* pResp);
status_t ovik_serviceEnabled(const char* service, bool* pResp);
status_t ovik_serviceApply(const char* service, int* pResp);
status_t ovik_serviceControlled(const char* service, bool* pResp);
status_t ovik_serviceState(const char* service, int* pResp);
/**
 * Starts a command of a service; returns when the platform has taken it.
 *
 * @param fnCallback null, or a void function taking three const char*: service, command, result
 *                   text, each Latin-1. It is called on the application thread for every result
 *                   that the platform reports from then on, of this and of other commands, until
 *                   another call of this function replaces it or the application ends. The texts
 *                   live for the duration of the call.
 */
status_t ovik_serviceCommand(const char* service, const char* cmd, const char* opts,
                             void* fnCallback, int* pResp);

#ifdef __cplusplus
}
#endif

#endif
