#pragma once

#include <array>

/// What the platform may have or lack, and a request that reads something of it and changes
/// nothing.
struct Facility {
    const char* name;
    const char* object; ///< of the platform on the bus
    const char* request;
    const char* anyName = nullptr; ///< in the request: this panel need not know it
};

/// The plug-in modules, whose errors the service does not tell, come last.
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

/// No command: the service answers it with -8 itself, without the platform.
inline constexpr const char* noCommand = "?";
