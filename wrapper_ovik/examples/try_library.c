/*
 * Tries a platform library: loads "libOVIK.so" from the dynamic linker's search path through the C
 * API and reads a value from each facility. Nothing on the panel changes.
 *
 *     LD_LIBRARY_PATH=/where/it/is ovik_try_library
 *
 * Exits with 0 when the library was loaded and every facility answered.
 */

#include "ovik_c.h"

#include <inttypes.h>
#include <stdio.h>

/* Overrides the library's default, which discards these texts. */
void logOVIKErrors(char* err) { printf("  (%s)\n", err); }

static int failures = 0;

/* Prints the facility's name, and the status of a failure; true when the facility answered. */
static int answered(const char* facility, status_t status)
{
    if (status != OVIK_OK) {
        printf("%-16s status %d%s\n", facility, status,
               status == OVIK_NO_PLATFORM ? ": the library has no such object" : "");
        ++failures;
        return 0;
    }
    printf("%-16s ", facility);
    return 1;
}

int main(void)
{
    int value = 0;
    uint64_t size = 0;
    char text[10001] = "";
    unsigned char byte = 0;
    unsigned char hwCode = 0;
    unsigned short manufactureCode = 0;

    if (ovik_init(OVIK_MODE_NONE) != OVIK_OK || ovik_setMode(OVIK_MODE_LOCAL) != OVIK_OK) {
        puts("libOVIK.so was not loaded; the lines above say why. Is its folder in "
             "LD_LIBRARY_PATH?");
        ovik_shutdown();
        return 1;
    }
    if (answered("Buzzer", ovik_getBuzzerMode(&value)))
        printf("mode %d\n", value);
    if (answered("Backlight", ovik_getBrightness(&value)))
        printf("brightness %d\n", value);
    if (answered("SystemInfo", ovik_getSystemInfo(text, 5, &hwCode, &manufactureCode)))
        printf("%.5s, hardware code %d, manufacturer code %d\n", text, hwCode, manufactureCode);
    if (answered("I2CSEEPROM", ovik_seepromRead(0, 1, &byte)))
        printf("first byte %02X\n", byte);
    if (answered("OVIK", ovik_getSysCounter(&value)))
        printf("system counter %d\n", value);
    if (answered("MainOSInfo", ovik_mainOsVersion(text, sizeof text - 1)))
        printf("version %s\n", text);
    if (answered("StorageMgr", ovik_getStorageInfoJson("", text, sizeof text - 1)))
        printf("%s\n", text);
    if (answered("SysStat", ovik_getAvailableMemory(&size)))
        printf("%" PRIu64 " available\n", size);
    if (answered("NetworkManager", ovik_getNetworkConfigJson(text, sizeof text - 1)))
        printf("%s\n", text);
    ovik_shutdown();
    return failures ? 1 : 0;
}
