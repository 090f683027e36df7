/* A plain C11 program that calls every function of the C API against the simulated panel. */

#include "ovik_c.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

#define EXPECT(condition)                                                                          \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            printf("line %d: not so: %s\n", __LINE__, #condition);                                 \
            ++failures;                                                                            \
        }                                                                                          \
    } while (0)

static void onResult(const char* service, const char* command, const char* json)
{
    (void)service;
    (void)command;
    (void)json;
}

int main(void)
{
    int value = 0;
    bool flag = false;
    uint64_t size = 0;
    char text[1000];
    unsigned char bytes[16];
    unsigned char hwCode = 0;
    unsigned short manufactureCode = 0;
    void (*callback)(const char*, const char*, const char*) = onResult;
    void* callbackPointer = NULL;
    memcpy(&callbackPointer, &callback, sizeof callbackPointer);

    EXPECT(ovik_shutdown() == OVIK_NOT_STARTED);
    EXPECT(ovik_getBrightness(&value) == OVIK_NO_APPLICATION);
    EXPECT(ovik_init(2) == OVIK_OK);
    EXPECT(ovik_doSomething() == 0);
    EXPECT(ovik_setMode(4) == OVIK_ILLEGAL_MODE);
    EXPECT(ovik_setMode(2) == OVIK_OK);

    EXPECT(ovik_setBuzzerMode(1, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_getBuzzerMode(&value) == OVIK_OK && value == 1);
    EXPECT(ovik_setBuzzerUserControl(1, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_setBuzzerOnTime(300, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_setBuzzerOffTime(200, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_saveBrightness(40, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_getBrightness(&value) == OVIK_OK && value == 40);

    EXPECT(ovik_getSystemInfo(text, sizeof text, &hwCode, &manufactureCode) == OVIK_OK);
    EXPECT(strlen(text) > 0 && strlen(text) <= 5);
    EXPECT(ovik_getSysCounter(&value) == OVIK_OK && value > 0);
    EXPECT(ovik_getBackLightCounter(&value) == OVIK_OK && value > 0);
    EXPECT(ovik_getAvailableMemory(&size) == OVIK_OK && size > 0);
    EXPECT(ovik_mainOsVersion(text, sizeof text) == OVIK_OK && strlen(text) > 0);
    EXPECT(ovik_getStorageInfoJson("internal", text, sizeof text) == OVIK_OK && text[0] == '{');

    EXPECT(ovik_getNetworkConfigJson(text, sizeof text) == OVIK_OK && text[0] == '{');
    EXPECT(ovik_setInterfaceConfigJson("eth0", "{\"dhcp\":true}", &value) == OVIK_OK);
    EXPECT(value == 0);
    EXPECT(ovik_applyNewConfiguration(&value) == OVIK_OK && value == 0);

    EXPECT(ovik_seepromRead(0, 16, bytes) == OVIK_OK);
    EXPECT(ovik_seepromReadSlave(0x50, 0, 16, bytes) == OVIK_OK);

    EXPECT(ovik_setVolatileParameter("k", "v", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_getVolatileParameter("k", text, sizeof text) == OVIK_OK && !strcmp(text, "v"));
    EXPECT(ovik_setSystemParameter("k", "w", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_getSystemParameter("k", text, sizeof text) == OVIK_OK && !strcmp(text, "w"));
    EXPECT(ovik_setSystemParametersJson("", "{\"k\":\"x\"}", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_getSystemParameter("k", text, sizeof text) == OVIK_OK && !strcmp(text, "x"));
    EXPECT(ovik_getAllVolatileParametersJson(text, sizeof text) == OVIK_OK && text[0] == '{');
    EXPECT(ovik_getAllSystemParametersJson(text, sizeof text) == OVIK_OK && text[0] == '{');

    EXPECT(ovik_getHWPluginIOMode(0, 1, &value) == OVIK_OK && value == 2);
    EXPECT(ovik_setHWPluginIO(0, 1, (unsigned char*)"1", 1, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_getHWPluginIO(0, 1, bytes, 1) == OVIK_OK && bytes[0] == '1');
    EXPECT(ovik_getHWPluginLedMode(1, 1, &value) == OVIK_OK && value == 2);
    EXPECT(ovik_setHWPluginLedUserControl(1, 1, 1, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_setHWPluginLedValue(1, 1, 1, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_setHWPluginLedOnTime(1, 1, 100, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_setHWPluginLedOffTime(1, 1, 100, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_setHWPluginLedFlash(1, 1, 100, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_setHWPluginLedBlink(1, 1, 100, 100, &value) == OVIK_OK && value == 0);
    EXPECT(ovik_getHWPluginLedMode(2, 1, &value) == OVIK_EMPTY_SLOT);

    EXPECT(ovik_serviceStart("ssh", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_serviceStop("ssh", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_serviceRestart("ssh", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_serviceReload("ssh", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_serviceEnable("ssh", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_serviceEnabled("ssh", &flag) == OVIK_OK && flag);
    EXPECT(ovik_serviceDisable("ssh", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_serviceEnabled("ssh", &flag) == OVIK_OK && !flag);
    EXPECT(ovik_serviceApply("ssh", &value) == OVIK_OK && value == 0);
    EXPECT(ovik_serviceControlled("ssh", &flag) == OVIK_OK && flag);
    EXPECT(ovik_serviceState("ssh", &value) == OVIK_OK && value == 0); /* disabled and applied */
    EXPECT(ovik_serviceCommand("wifi", "scan", "{}", callbackPointer, &value) == OVIK_OK);

    EXPECT(ovik_shutdown() == OVIK_OK);
    EXPECT(ovik_getBrightness(&value) == OVIK_NO_APPLICATION);
    return failures ? 1 : 0;
}
