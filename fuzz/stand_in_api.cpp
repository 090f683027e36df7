#include "fuzz/stand_in_api.h"

#include "fuzz/draw.h"
#include "wrapper_ovik/ovik_c.h"

#include <algorithm>
#include <cstring>
#include <unistd.h>

StandIn standIn;

namespace
{
using Callback = void (*)(const char*, const char*, const char*);
Callback outcomeCallback;
int sleepsBeforeOutcome;

// As documented in ovik_c.h, outputs are written on OVIK_OK only.

bool succeeds()
{
    ++standIn.calls;
    standIn.status = drawStatus(*standIn.input);
    return standIn.status == OVIK_OK;
}

status_t answer(int* out)
{
    if (succeeds())
        *out = drawNumber(*standIn.input);
    return standIn.status;
}

status_t answer(bool* out)
{
    if (succeeds())
        *out = standIn.input->ConsumeBool();
    return standIn.status;
}

/// Like strncpy(): a text that fills its buffer is not terminated.
status_t answer(char* out, int size)
{
    if (succeeds()) {
        const std::string text = drawBytes(*standIn.input, static_cast<size_t>(size), false);
        memset(out, 0, static_cast<size_t>(size));
        memcpy(out, text.data(), text.size());
    }
    return standIn.status;
}

/// Exactly @p count bytes, padded with zero bytes.
status_t answer(unsigned char* out, size_t count)
{
    if (succeeds()) {
        const std::string bytes = drawBytes(*standIn.input, count, true);
        memset(out, 0, count);
        memcpy(out, bytes.data(), bytes.size());
    }
    return standIn.status;
}

/// Calls back with three texts, each possibly null.
void deliverOutcome()
{
    std::string texts[3];
    const char* pointers[3];
    for (int i = 0; i < 3; ++i) {
        texts[i] = drawBytes(*standIn.input, 12000, false);
        pointers[i] = standIn.input->ConsumeIntegralInRange(0, 7) == 7 ? nullptr : texts[i].c_str();
    }
    outcomeCallback(pointers[0], pointers[1], pointers[2]);
}
} // namespace

/// Replaces the system's usleep(): the outcome arrives after a number of sleeps from the input.
extern "C" int usleep(useconds_t)
{
    if (++standIn.sleeps == sleepsBeforeOutcome)
        deliverOutcome();
    return 0;
}

status_t ovik_serviceCommand(const char*, const char*, const char*, void* fnCallback, int* pResp)
{
    standIn.sleeps = 0;
    outcomeCallback = reinterpret_cast<Callback>(fnCallback);
    sleepsBeforeOutcome = standIn.input->ConsumeIntegralInRange(0, 130);
    if (sleepsBeforeOutcome == 0)
        deliverOutcome();
    return answer(pResp);
}

status_t ovik_getSystemInfo(char* moduleName, int maxLen, unsigned char* hwCode,
                            unsigned short* manufactureCode)
{
    // At most five bytes, whatever the buffer size.
    if (answer(moduleName, std::min(maxLen, 5)) == OVIK_OK) {
        *hwCode = standIn.input->ConsumeIntegral<unsigned char>();
        *manufactureCode = standIn.input->ConsumeIntegral<unsigned short>();
    }
    return standIn.status;
}

status_t ovik_getAvailableMemory(uint64_t* pSize)
{
    if (succeeds())
        *pSize = standIn.input->ConsumeIntegral<uint64_t>();
    return standIn.status;
}

status_t ovik_seepromRead(int, int len, unsigned char* pData)
{
    return answer(pData, static_cast<size_t>(len));
}

status_t ovik_seepromReadSlave(int, int, int len, unsigned char* pData)
{
    return answer(pData, static_cast<size_t>(len));
}

status_t ovik_getHWPluginIO(unsigned int, unsigned int, unsigned char* input, unsigned int count)
{
    return answer(input, count);
}

status_t ovik_setHWPluginIO(unsigned int, unsigned int, unsigned char*, unsigned int, int* pResp)
{
    return answer(pResp);
}

status_t ovik_getBuzzerMode(int* pMode) { return answer(pMode); }
status_t ovik_setBuzzerMode(int, int* pResp) { return answer(pResp); }
status_t ovik_setBuzzerUserControl(int, int* pResp) { return answer(pResp); }
status_t ovik_setBuzzerOnTime(int, int* pResp) { return answer(pResp); }
status_t ovik_setBuzzerOffTime(int, int* pResp) { return answer(pResp); }
status_t ovik_getBrightness(int* pResp) { return answer(pResp); }
status_t ovik_saveBrightness(int, int* pResp) { return answer(pResp); }
status_t ovik_getSysCounter(int* pResp) { return answer(pResp); }
status_t ovik_getBackLightCounter(int* pResp) { return answer(pResp); }
status_t ovik_mainOsVersion(char* version, int maxLen) { return answer(version, maxLen); }
status_t ovik_getStorageInfoJson(const char*, char* pJson, int maxLen)
{
    return answer(pJson, maxLen);
}
status_t ovik_getNetworkConfigJson(char* json, int maxLen) { return answer(json, maxLen); }
status_t ovik_setInterfaceConfigJson(const char*, const char*, int* pResp) { return answer(pResp); }
status_t ovik_applyNewConfiguration(int* pResp) { return answer(pResp); }
status_t ovik_getVolatileParameter(const char*, char* pResp, int maxLength)
{
    return answer(pResp, maxLength);
}
status_t ovik_getSystemParameter(const char*, char* pResp, int maxLength)
{
    return answer(pResp, maxLength);
}
status_t ovik_getAllVolatileParametersJson(char* pResp, int maxLength)
{
    return answer(pResp, maxLength);
}
status_t ovik_getAllSystemParametersJson(char* pResp, int maxLength)
{
    return answer(pResp, maxLength);
}
status_t ovik_setVolatileParameter(const char*, const char*, int* pResp) { return answer(pResp); }
status_t ovik_setSystemParameter(const char*, const char*, int* pResp) { return answer(pResp); }
status_t ovik_setSystemParametersJson(const char*, const char*, int* pResp)
{
    return answer(pResp);
}
status_t ovik_getHWPluginIOMode(unsigned int, unsigned int, int* mode) { return answer(mode); }
status_t ovik_getHWPluginLedMode(unsigned int, unsigned int, int* mode) { return answer(mode); }
status_t ovik_setHWPluginLedUserControl(unsigned int, unsigned int, int, int* pResp)
{
    return answer(pResp);
}
status_t ovik_setHWPluginLedValue(unsigned int, unsigned int, unsigned int, int* pResp)
{
    return answer(pResp);
}
status_t ovik_setHWPluginLedOnTime(unsigned int, unsigned int, int, int* pResp)
{
    return answer(pResp);
}
status_t ovik_setHWPluginLedOffTime(unsigned int, unsigned int, int, int* pResp)
{
    return answer(pResp);
}
status_t ovik_setHWPluginLedFlash(unsigned int, unsigned int, int, int* pResp)
{
    return answer(pResp);
}
status_t ovik_setHWPluginLedBlink(unsigned int, unsigned int, int, int, int* pResp)
{
    return answer(pResp);
}
status_t ovik_serviceStart(const char*, int* pResp) { return answer(pResp); }
status_t ovik_serviceStop(const char*, int* pResp) { return answer(pResp); }
status_t ovik_serviceRestart(const char*, int* pResp) { return answer(pResp); }
status_t ovik_serviceReload(const char*, int* pResp) { return answer(pResp); }
status_t ovik_serviceEnable(const char*, int* pResp) { return answer(pResp); }
status_t ovik_serviceDisable(const char*, int* pResp) { return answer(pResp); }
status_t ovik_serviceEnabled(const char*, bool* pResp) { return answer(pResp); }
status_t ovik_serviceApply(const char*, int* pResp) { return answer(pResp); }
status_t ovik_serviceControlled(const char*, bool* pResp) { return answer(pResp); }
status_t ovik_serviceState(const char*, int* pResp) { return answer(pResp); }
