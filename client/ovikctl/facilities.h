#pragma once

#include <array>

/// A facility that the platform may lack, and a request that only reads from it.
struct Facility {
    const char* name;
    const char* object; ///< the platform's D-Bus object
    const char* request;
    const char* anyName = nullptr; ///< a name in the request that this panel may not know
};

/// The plug-in modules come last: the service does not report their errors.
inline constexpr std::array<Facility, 11> facilities = {{
    {"counters and parameters", "/", "getSysCounter"},
    {"backlight", "/Backlight", "getBrightness"},
    {"buzzer", "/Buzzer", "getBuzzerMode"},
    {"system information", "/SystemInfo", "getSystemInfo"},
    {"memory", "/SysStat", "getAvailableMemory"},
    {"storage", "/StorageMgr", "getStorageInfoJson;internal", "internal"},
    {"network", "/NetworkManager", "getNetworkConfigJson"},
    {"main system", "/MainOSInfo", "mainOsVersion"},
    {"serial EEPROM", "/I2CSEEPROM", "seepromRead;0;1"},
    {"services", "/ServiceManager", "serviceState;ssh", "ssh"},
    {"plug-in modules", "/HWPlugin", "getHWPluginLedMode;0;0"},
}};

/// An unknown word: answered -8 without asking the platform.
inline constexpr const char* noCommand = "?";
