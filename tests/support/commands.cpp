#include "tests/support/commands.h"

std::string CommandRow::errorLine(int status) const
{
    return "OVIK_SERVER: " + logName + " error " + std::to_string(status) + "\n";
}

std::string CommandRow::responseTo(Obstacle obstacle) const
{
    if (obstacle == Obstacle::NotFound)
        return isPlugin() ? "-10" : "-1";
    if (!isPlugin())
        return obstacle == Obstacle::Lacking ? "-1" : "-4";
    if (isGuarded())
        return "-12";
    if (member == "Sensors.readIo")
        return "0 -48";
    return obstacle == Obstacle::Lacking ? "0 -1" : "0 0";
}

void PrintTo(const CommandRow& row, std::ostream* out) { *out << row.word; }

const std::vector<CommandRow>& commandRows()
{
    const std::string leds = "/HWPlugin/2/Leds com.wenu.OVIK.Leds.";
    const std::string sensors = "/HWPlugin/2/Sensors com.wenu.OVIK.Sensors.";
    const std::string ovik = "/ com.wenu.OVIK.";
    const std::string services = "/ServiceManager com.wenu.OVIK.ServiceManager.";
    const std::string eeprom = "/I2CSEEPROM com.wenu.OVIK.I2CSEEPROM.";
    const std::string network = "/NetworkManager com.wenu.OVIK.NetworkManager.";
    const std::string buzzer = "/Buzzer com.wenu.OVIK.Buzzer.";
    // clang-format off
    static const std::vector<CommandRow> rows = {
        {"getAvailableMemory", "", "SysStat.getAvailableMemory", replyWith("t", uint64_t(5000000000)), {"/SysStat com.wenu.OVIK.SysStat.getAvailableMemory()"}, "0 5000000000", "getAvailableMemory"},
        {"getSysCounter", "", "OVIK.getSysCounter", replyWith("i", 1234), {ovik + "getSysCounter()"}, "0 1234", "getSysCounter"},
        {"getBacklightCounter", "", "OVIK.getBlightCounter", replyWith("i", 99), {ovik + "getBlightCounter()"}, "0 99", "getBacklightCounter"},
        {"getBrightness", "", "Backlight.getBrightness", replyWith("i", 75), {"/Backlight com.wenu.OVIK.Backlight.getBrightness()"}, "0 75", "getBrightness"},
        {"saveBrightness", ";40", "Backlight.saveBrightness", replyWith("i", 0), {"/Backlight com.wenu.OVIK.Backlight.saveBrightness(i) 40"}, "0 0", "saveBrightness"},
        {"getBuzzerMode", "", "Buzzer.GetBuzzerMode", replyWith("i", 2), {buzzer + "GetBuzzerMode()"}, "0 2", "getBuzzerMode"},
        {"setBuzzerMode", ";1", "Buzzer.SetBuzzerMode", replyWith("i", -3), {buzzer + "SetBuzzerMode(i) 1"}, "0 4294967293", "setBuzzerMode"},
        {"setBuzzerUserControl", ";2", "Buzzer.SetBuzzerUserControl", replyWith("i", 0), {buzzer + "SetBuzzerUserControl(i) 2"}, "0 0", "setBuzzerUserControl"},
        {"setBuzzerOnTime", ";300", "Buzzer.SetBuzzerOnTime", replyWith("i", 0), {buzzer + "SetBuzzerOnTime(i) 300"}, "0 0", "setBuzzerOnTime"},
        {"setBuzzerOffTime", ";-5", "Buzzer.SetBuzzerOffTime", replyWith("i", 7), {buzzer + "SetBuzzerOffTime(i) -5"}, "0 7", "setBuzzerOffTime"},
        {"getSystemInfo", "", "SystemInfo.info", replySystemInfo("ABC", "PANEL", "\x01\x02"), {"/SystemInfo com.wenu.OVIK.SystemInfo.info()"}, "0 PANEL,17,513", "getSystemInfo"},
        {"getStorageInfoJson", ";data", "StorageMgr.getStorageInfoJSON", replyText("{\"free\": 1}"), {"/StorageMgr com.wenu.OVIK.StorageMgr.getStorageInfoJSON(s) \"data\""}, "0 {\"free\": 1}", "getStorageInfo"},
        {"getNetworkConfigJson", "", "NetworkManager.getConfigJSON", replyText("{}"), {network + "getConfigJSON()"}, "0 {}", "getNetworkConfigJson"},
        {"setInterfaceConfigJson", ";eth0;{\"a\":1}", "NetworkManager.setInterfaceConfigJSON", replyWith("i", -1), {network + "setInterfaceConfigJSON(ss) \"eth0\" \"{\"a\":1}\""}, "0 -1", "setInterfaceConfigJson"},
        {"applyNewConfiguration", "", "NetworkManager.applyNewConfiguration", replyWith("i", 0), {network + "applyNewConfiguration()"}, "0 0", "applyNewConfiguration"},
        {"mainOsVersion", "", "PartitionInfo.version", replyBytes(std::string("1.2.3\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20)), {"/MainOSInfo com.wenu.OVIK.PartitionInfo.version()"}, "0 1.2.3", "mainOsVersion"},
        {"seepromRead", ";16;3", "I2CSEEPROM.read", replyResultAndBytes(0, std::string("\x01\xAB\x00", 3)), {eeprom + "read(yu) 16 3"}, "0 01,AB,00", "seepromRead"},
        {"seepromReadSlave", ";80;0;2", "I2CSEEPROM.readSlvAddr", replyResultAndBytes(0, "AB"), {eeprom + "readSlvAddr(yyu) 80 0 2"}, "0 41,42", "seepromRead"},
        {"getVolatileParameter", ";key", "OVIK.getVolatileParameter", replyText("v"), {ovik + "getVolatileParameter(s) \"key\""}, "0 v", "getVolatileParameter"},
        {"getSystemParameter", ";key", "OVIK.getSystemParameter", replyText(""), {ovik + "getSystemParameter(s) \"key\""}, "0 ", "getSystemParameter"},
        {"getAllVolatileParametersJson", "", "OVIK.getAllVolatileParametersJSON", replyText("{\"a\":\"\u00fc\"}"), {ovik + "getAllVolatileParametersJSON()"}, "0 {\"a\":\"\u00fc\"}", "getAllVolatileParametersJson"},
        {"getAllSystemParametersJson", "", "OVIK.getAllSystemParametersJSON", replyText("[1]"), {ovik + "getAllSystemParametersJSON()"}, "0 [1]", "getAllSystemParametersJson"},
        {"setVolatileParameter", ";k;\u00fc v", "OVIK.setVolatileParameter", replyWith("i", 0), {ovik + "setVolatileParameter(ss) \"k\" \"\u00fc v\""}, "0 0", "setVolatileParameter"},
        {"setSystemParameter", ";k;", "OVIK.setSystemParameter", replyWith("i", 0), {ovik + "setSystemParameter(ss) \"k\" \"\""}, "0 0", "setSystemParameter"},
        {"setSystemParametersJson", ";k;{}", "OVIK.setSystemParametersJSON", replyWith("i", 5), {ovik + "setSystemParametersJSON(ss) \"k\" \"{}\""}, "0 5", "setSystemParametersJson"},
        {"getHWPluginIoMode", ";1;3", "Sensors.getIoMode", replyWith("i", 2), {sensors + "getIoMode(u) 3"}, "0 2", "getHWPluginIoMode"},
        {"getHWPluginIO", ";1;3", "Sensors.readIo", replyBytes("1"), {sensors + "readIo(uu) 3 1"}, "0 1", "getHWPluginIO"},
        {"setHWPluginIO", ";1;3;1", "Sensors.writeIo", replyWith("i", 0), {sensors + "getIoMode(u) 3", sensors + "writeIo(uay) 3 [31]"}, "0 0", "setHWPluginIO"},
        {"getHWPluginLedMode", ";1;4", "Leds.GetLedMode", replyWith("i", 2), {leds + "GetLedMode(u) 4"}, "0 2", "getHWPluginLedMode"},
        {"setHWPluginLedUserControl", ";1;4;-1", "Leds.SetLedUserControl", replyWith("i", -1), {leds + "GetLedMode(u) 4", leds + "SetLedUserControl(ui) 4 -1"}, "0 -1", "setHWPluginLedUserControl"},
        {"setHWPluginLedValue", ";1;4;255", "Leds.SetLedValue", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "SetLedValue(uu) 4 255"}, "0 0", "setHWPluginLedValue"},
        {"setHWPluginLedOnTime", ";1;4;500", "Leds.SetLedOnTime", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "SetLedOnTime(ui) 4 500"}, "0 0", "setHWPluginLedOnTime"},
        {"setHWPluginLedOffTime", ";1;4;600", "Leds.SetLedOffTime", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "SetLedOffTime(ui) 4 600"}, "0 0", "setHWPluginLedOffTime"},
        {"setHWPluginLedFlash", ";1;4;500", "Leds.flash", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "flash(uui) 4 1 500"}, "0 0", "setHWPluginLedFlash"},
        {"setHWPluginLedBlink", ";1;4;500;250", "Leds.blink", replyWith("i", 0), {leds + "GetLedMode(u) 4", leds + "blink(uuii) 4 1 500 250"}, "0 0", "setHWPluginLedBlink"},
        {"serviceStart", ";ssh", "ServiceManager.start", replyWith("i", 0), {services + "start(s) \"ssh\""}, "0 0", "serviceStart"},
        {"serviceStop", ";ssh", "ServiceManager.stop", replyWith("i", -2), {services + "stop(s) \"ssh\""}, "0 -2", "serviceStop"},
        {"serviceRestart", ";ssh", "ServiceManager.restart", replyWith("i", 0), {services + "restart(s) \"ssh\""}, "0 0", "serviceRestart"},
        {"serviceReload", ";ssh", "ServiceManager.reload", replyWith("i", 0), {services + "reload(s) \"ssh\""}, "0 0", "serviceReload"},
        {"serviceEnable", ";ssh", "ServiceManager.enable", replyWith("i", 0), {services + "enable(s) \"ssh\""}, "0 0", "serviceEnable"},
        {"serviceDisable", ";ssh", "ServiceManager.disable", replyWith("i", 0), {services + "disable(s) \"ssh\""}, "0 0", "serviceDisable"},
        {"serviceEnabled", ";ssh", "ServiceManager.enabled", replyWith("b", 1), {services + "enabled(s) \"ssh\""}, "0 1", "serviceEnabled"},
        {"serviceApply", ";ssh", "ServiceManager.apply", replyWith("i", 0), {services + "apply(s) \"ssh\""}, "0 0", "serviceApply"},
        {"serviceControlled", ";ssh", "ServiceManager.controlled", replyWith("b", 0), {services + "controlled(s) \"ssh\""}, "0 0", "serviceControlled"},
        {"serviceState", ";ssh", "ServiceManager.state", replyWith("i", 3), {services + "state(s) \"ssh\""}, "0 3", "serviceState"},
        {"serviceCommand", ";ntp;sync;{}", "ServiceManager.command", replyWith("i", 4), {services + "command(sss) \"ntp\" \"sync\" \"{}\""}, "0 4", "serviceCommand"},
    };
    // clang-format on
    return rows;
}

void answerCommands(FakePlatform& platform)
{
    for (const CommandRow& row : commandRows())
        platform.answer(row.member, row.reply);
    platform.answer("Leds.GetLedMode", replyWith("i", 2));
    platform.answer("Sensors.getIoMode", replyWith("i", 2));
}
