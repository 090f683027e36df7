// The simulated panel as a caller sees it on the bus. The caller uses sd-bus, so it shares no code
// with the panel.

#include "tests/support/fake_platform.h"
#include "tests/support/introspection.h"
#include "tests/support/private_bus.h"
#include "tests/support/process.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <memory>
#include <set>
#include <sstream>

namespace
{
const char* const busName = "com.wenu.OVIK";

using Words = std::vector<std::string>;

struct Object {
    std::string path;
    std::string interface;
};

/// The tests' names for the objects.
const std::map<std::string, Object> objects = {
    {"OVIK", {"/", "com.wenu.OVIK"}},
    {"Backlight", {"/Backlight", "com.wenu.OVIK.Backlight"}},
    {"Buzzer", {"/Buzzer", "com.wenu.OVIK.Buzzer"}},
    {"EEPROM", {"/I2CSEEPROM", "com.wenu.OVIK.I2CSEEPROM"}},
    {"MainOS", {"/MainOSInfo", "com.wenu.OVIK.PartitionInfo"}},
    {"SysStat", {"/SysStat", "com.wenu.OVIK.SysStat"}},
    {"SystemInfo", {"/SystemInfo", "com.wenu.OVIK.SystemInfo"}},
    {"Storage", {"/StorageMgr", "com.wenu.OVIK.StorageMgr"}},
    {"Network", {"/NetworkManager", "com.wenu.OVIK.NetworkManager"}},
    {"Services", {"/ServiceManager", "com.wenu.OVIK.ServiceManager"}},
    {"Splash", {"/SplashImageInfo", "com.wenu.OVIK.SplashImageInfo"}},
    {"Time", {"/TimeMgr", "com.wenu.OVIK.TimeMgr"}},
    {"NFC", {"/NFCReader", "com.wenu.OVIK.NFCReader"}},
    {"HWPlugin", {"/HWPlugin/0", "com.wenu.OVIK.HWPlugin"}},
    {"Module", {"/HWPlugin/2", "com.wenu.OVIK.HWPluginInstance"}},
    {"Leds", {"/HWPlugin/0/Leds", "com.wenu.OVIK.Leds"}},
    {"Leds2", {"/HWPlugin/2/Leds", "com.wenu.OVIK.Leds"}},
    {"Sensors", {"/HWPlugin/0/Sensors", "com.wenu.OVIK.Sensors"}},
};

const Interface& declared(const Object& object)
{
    static std::map<std::string, Interface> files;
    if (files.count(object.interface) == 0)
        files[object.interface] = introspectedFile(object.interface)[object.interface];
    return files[object.interface];
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

struct Reply {
    std::string types;
    std::string values;
};

class Client
{
public:
    Client()
    {
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_open_system(&bus), 0);
        m_bus.reset(bus);
        sd_bus_set_method_call_timeout(bus, std::chrono::microseconds(patience).count());
    }

    sd_bus* bus() { return m_bus.get(); }

    /// Calls "Object.method value...", with byte arrays as "[00 ff]" and default values for missing
    /// ones. The result has the reply's values in the same form, or the name of the error.
    Reply call(const std::string& text)
    {
        std::istringstream words(text);
        std::string name;
        std::string method;
        std::getline(words, name, '.');
        words >> method;
        const Object& object = objects.at(name);
        const std::string types = declared(object).methods.at(method);
        sd_bus_message* request = newCall(object, method);
        append(request, types.substr(0, types.find('>')), words);
        return send(request);
    }

    std::string introspect(const std::string& path)
    {
        return send(newCall({path, "org.freedesktop.DBus.Introspectable"}, "Introspect")).values;
    }

    bool waitFor(const std::function<bool()>& condition)
    {
        return waitUntil([&] {
            while (sd_bus_process(bus(), nullptr) > 0) {
            }
            return condition();
        });
    }

private:
    sd_bus_message* newCall(const Object& object, const std::string& method)
    {
        sd_bus_message* request = nullptr;
        sd_bus_message_new_method_call(bus(), &request, busName, object.path.c_str(),
                                       object.interface.c_str(), method.c_str());
        return request;
    }

    Reply send(sd_bus_message* request)
    {
        sd_bus_error error = SD_BUS_ERROR_NULL;
        sd_bus_message* reply = nullptr;
        sd_bus_call(bus(), request, 0, &error, &reply);
        Reply result{"error", error.name ? error.name : ""};
        if (reply) {
            result.types = sd_bus_message_get_signature(reply, true);
            result.values = valuesOf(reply);
            result.values.erase(0, 1); // the leading blank
        }
        sd_bus_message_unref(reply);
        sd_bus_message_unref(request);
        sd_bus_error_free(&error);
        return result;
    }

    static void append(sd_bus_message* request, const std::string& types, std::istream& values)
    {
        for (size_t i = 0; i < types.size(); ++i) {
            if (types[i] == '(') {
                const std::string fields = types.substr(i + 1, types.find(')', i) - i - 1);
                sd_bus_message_open_container(request, 'r', fields.c_str());
                append(request, fields, values);
                sd_bus_message_close_container(request);
                i += fields.size() + 1;
            } else if (types[i] == 'a') {
                ++i; // always an array of bytes
                std::string list;
                std::getline(values.ignore(2, '['), list, ']');
                std::istringstream digits(list);
                std::vector<uint8_t> bytes;
                for (unsigned byte = 0; digits >> std::hex >> byte;)
                    bytes.push_back(static_cast<uint8_t>(byte));
                sd_bus_message_append_array(request, 'y', bytes.data(), bytes.size());
            } else if (types[i] == 's') {
                std::string text;
                values >> std::quoted(text);
                sd_bus_message_append(request, "s", text.c_str());
            } else {
                int64_t number = 0;
                values >> number;
                sd_bus_message_append(request, types.substr(i, 1).c_str(),
                                      static_cast<int>(number));
            }
        }
    }

    std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)> m_bus{nullptr, sd_bus_flush_close_unref};
};

/// Collects the signals of one name, each as the text of its values.
class Signals
{
public:
    Signals(Client& client, const std::string& object, const char* name) : m_client(client)
    {
        const auto& [path, interface] = objects.at(object);
        sd_bus_slot* match = nullptr;
        sd_bus_match_signal(client.bus(), &match, busName, path.c_str(), interface.c_str(), name,
                            received, this);
        m_match.reset(match);
    }

    /// The next signal; an empty text on time-out.
    std::string next()
    {
        EXPECT_TRUE(m_client.waitFor([this] { return m_received.size() > m_taken; }));
        return m_received.size() > m_taken ? m_received[m_taken++] : "";
    }

    bool none() const { return m_received.empty(); }

private:
    static int received(sd_bus_message* message, void* self, sd_bus_error*)
    {
        static_cast<Signals*>(self)->m_received.push_back(valuesOf(message).substr(1));
        return 0;
    }

    Client& m_client;
    std::unique_ptr<sd_bus_slot, sd_bus_slot* (*)(sd_bus_slot*)> m_match{nullptr,
                                                                         sd_bus_slot_unref};
    Words m_received;
    size_t m_taken = 0;
};

Words simCommand(const Words& options) { return commandOf(OVIK_PANEL_SIM_PATH, options); }

class PanelSim : public testing::Test
{
protected:
    void startSim(const Words& options = {})
    {
        sim = std::make_unique<Process>(simCommand(options));
        ASSERT_TRUE(sim->waitForOutput("ovik_panel_sim: ready\n")) << sim->errors();
        client = std::make_unique<Client>();
    }

    std::string ask(const std::string& request) { return client->call(request).values; }
    int askNumber(const std::string& request) { return std::stoi(ask(request)); }

    /// Each exchange is "request -> reply".
    void expect(const Words& exchanges)
    {
        for (const std::string& exchange : exchanges) {
            const size_t arrow = exchange.find(" -> ");
            EXPECT_EQ(ask(exchange.substr(0, arrow)), exchange.substr(arrow + 4)) << exchange;
        }
    }

    PrivateBus bus;
    std::unique_ptr<Process> sim;
    std::unique_ptr<Client> client;
};

class RunningPanelSim : public PanelSim
{
protected:
    void SetUp() override { startSim(); }
};

// The introspection text is separate from the code, so every method is called as well.
TEST_F(RunningPanelSim, OffersAndAnswersTheInterfaceFiles)
{
    std::set<std::string> offered;
    for (const auto& [name, object] : objects) {
        offered.insert(object.interface);
        auto served = introspected(client->introspect(object.path));
        EXPECT_EQ(served[object.interface].methods, declared(object).methods) << name;
        EXPECT_EQ(served[object.interface].events, declared(object).events) << name;
        for (const auto& [method, types] : declared(object).methods) {
            const Reply reply = client->call(name + '.' + method);
            EXPECT_EQ(reply.types, types.substr(types.find('>') + 1))
                << name << '.' << method << ": " << reply.values;
        }
    }
    const Words files = interfaceNames();
    EXPECT_EQ(offered, std::set<std::string>(files.begin(), files.end()));
}

// Every integer setting is stored; a negative value is rejected and changes nothing.
TEST_F(RunningPanelSim, KeepsItsSettings)
{
    const std::pair<std::string, std::string> settings[] = {
        {"Buzzer.SetBuzzerMode", "Buzzer.GetBuzzerMode"},
        {"Buzzer.SetBuzzerUserControl", "Buzzer.GetBuzzerUserControl"},
        {"Buzzer.SetBuzzerOnTime", "Buzzer.GetBuzzerOnTime"},
        {"Buzzer.SetBuzzerOffTime", "Buzzer.GetBuzzerOffTime"},
        {"Buzzer.SetBuzzerFrequency", "Buzzer.GetBuzzerFrequency"},
        {"Backlight.saveBrightness", "Backlight.getBrightness"},
        {"Backlight.setBacklightTimeout one", "Backlight.backlightTimeout one"},
        {"Leds.SetLedUserControl 1", "Leds.GetLedUserControl 1"},
        {"Leds.SetLedOnTime 1", "Leds.GetLedOnTime 1"},
        {"Leds.SetLedOffTime 1", "Leds.GetLedOffTime 1"},
    };
    int value = 10; // distinct values, so no two settings can share a variable
    for (const auto& [set, get] : settings)
        expect({set + ' ' + std::to_string(++value) + " -> 0", set + " -1 -> -1"});
    value = 10;
    for (const auto& [set, get] : settings)
        expect({get + " -> " + std::to_string(++value)});
    expect({"Backlight.backlightTimeout two -> 0"});
}

TEST_F(RunningPanelSim, ShowsTheSavedBrightnessAgain)
{
    expect({"Backlight.saveBrightness 120 -> 0", "Backlight.setBrightness 90 -> 0",
            "Backlight.getBrightness -> 90", "Backlight.offBrightness -> 0",
            "Backlight.getBrightness -> 0", "Backlight.syncBrightness -> 0",
            "Backlight.saveBrightness 256 -> -1", "Backlight.setBrightness -1 -> -1",
            "Backlight.getBrightness -> 120"});
}

TEST_F(RunningPanelSim, CountsTheSecondsAndClearsTheCountersOfTheBits)
{
    for (const char* counter : {"OVIK.getSysCounter", "OVIK.getBlightCounter"}) {
        const int before = askNumber(counter);
        EXPECT_GT(before, 0);
        EXPECT_TRUE(waitUntil([&] { return askNumber(counter) > before; })) << counter;
    }
    const int backlightCounter = askNumber("OVIK.getBlightCounter");
    expect({"OVIK.clearTimeCounters 1 -> 0", "OVIK.clearTimeCounters 4 -> -1"});
    EXPECT_LT(askNumber("OVIK.getSysCounter"), backlightCounter);
    EXPECT_GE(askNumber("OVIK.getBlightCounter"), backlightCounter);
}

// System and volatile parameters are separate: a name in one set is not in the other.
TEST_F(RunningPanelSim, KeepsParametersAndSignalsTheirChange)
{
    Signals systemChanged(*client, "OVIK", "systemParameterChanged");
    Signals volatileChanged(*client, "OVIK", "volatileParameterChanged");
    expect({"OVIK.setSystemParameter name one -> 0", R"(OVIK.getVolatileParameter name -> "")",
            "OVIK.setVolatileParameter name two -> 0", R"(OVIK.getSystemParameter name -> "one")",
            R"(OVIK.getVolatileParameter name -> "two")",
            R"(OVIK.getAllVolatileParametersJSON -> "{"name":"two"}")"});
    EXPECT_TRUE(contains(ask("OVIK.getAllSystemParametersJSON"), R"("name":"one")"));
    EXPECT_EQ(systemChanged.next(), R"("name" "one")");
    EXPECT_EQ(volatileChanged.next(), R"("name" "two")");
}

TEST_F(RunningPanelSim, MergesParametersFromJson)
{
    const std::string set = "OVIK.setSystemParametersJSON ";
    const std::string json = R"({"text":"x","number":5,"flag":true,"list":[1,2],"tree":{"a":"b"}})";
    expect({"OVIK.setSystemParameter kept yes -> 0", set + R"("" )" + json + " -> 0",
            set + "group " + json + " -> 0", R"(OVIK.getSystemParameter kept -> "yes")",
            R"(OVIK.getSystemParameter text -> "x")", R"(OVIK.getSystemParameter number -> "5")",
            R"(OVIK.getSystemParameter flag -> "true")",
            R"(OVIK.getSystemParameter list -> "[1,2]")",
            R"(OVIK.getSystemParameter tree -> "{"a":"b"}")",
            R"(OVIK.getSystemParameter group.text -> "x")"});

    const std::string before = ask("OVIK.getAllSystemParametersJSON");
    for (const char* notAnObject : {"", "nonsense", "[1]", "{\"a\":1"})
        expect({set + R"("" )" + notAnObject + " -> -1"});
    EXPECT_EQ(ask("OVIK.getAllSystemParametersJSON"), before);
}

TEST_F(RunningPanelSim, KeepsWhatIsWrittenToEachEeprom)
{
    expect({"EEPROM.write 100 [00 ff 07] -> 0", "EEPROM.read 99 5 -> 0 [63 00 ff 07 67]",
            "EEPROM.writeSlvAddr 80 10 [01 02] -> 0", "EEPROM.readSlvAddr 80 10 2 -> 0 [01 02]",
            "EEPROM.readSlvAddr 81 10 2 -> 0 [5b 5c]", "EEPROM.read 20 2 -> 0 [14 15]",
            "EEPROM.write 254 [01 02 03] -> -1", "EEPROM.read 254 10 -> 0 [fe ff]"});
    const std::string whole = ask("EEPROM.read 0 4294967295");
    EXPECT_EQ(whole.size(), std::string("0 []").size() + 256 * 3 - 1) << whole;
    expect({"EEPROM.readSlvAddr 17 0 4 -> -1 []", "EEPROM.writeSlvAddr 17 0 [01] -> -1"});
}

TEST_F(RunningPanelSim, ReadsTheBitsOfTheFlagArea)
{
    expect({"EEPROM.write 224 [05 80] -> 0", "EEPROM.bitInSWModuleFlagArea 0 -> 1",
            "EEPROM.bitInSWModuleFlagArea 1 -> 0", "EEPROM.bitInSWModuleFlagArea 2 -> 1",
            "EEPROM.bitInSWModuleFlagArea 14 -> 0", "EEPROM.bitInSWModuleFlagArea 15 -> 1",
            "EEPROM.bitInSWModuleFlagArea 256 -> 0"});
}

/// @p text as a byte field of @p size bytes.
std::string field(const std::string& text, size_t size)
{
    std::ostringstream out;
    for (size_t i = 0; i < size; ++i)
        out << (i ? " " : "[") << std::hex << std::setw(2) << std::setfill('0')
            << (i < text.size() ? +text[i] : 0);
    return out.str() + ']';
}

// Byte fields are sent completely.
TEST_F(RunningPanelSim, SendsItsRecordsWhole)
{
    expect({"SystemInfo.info -> ( 14 3 24 [01 23 45] [50 41 4e 45 4c] 7 2 [57 4e] 10 )",
            "SystemInfo.day -> 14", "SystemInfo.month -> 3", "SystemInfo.year -> 24",
            "SystemInfo.serialNo -> [01 23 45]", "SystemInfo.moduleName -> [50 41 4e 45 4c]",
            "SystemInfo.hwCode -> 7", "SystemInfo.hwSubCode -> 2",
            "SystemInfo.manufactureCode -> [57 4e]", "SystemInfo.hwDispID -> 10",
            "MainOS.version -> " + field("1.4.2", 20), "Storage.getUSBMountPoint -> \"/mnt/usb\"",
            "Storage.getStorageInfo floppy -> ( " + field("", 200) + " 0 0 0 0 )",
            "Storage.getStorageInfoJSON floppy -> \"\""});
    EXPECT_EQ(ask("Storage.getStorageInfo usb").find("( " + field("/mnt/usb", 200) + " 2 "), 0u);
    EXPECT_TRUE(contains(ask("Storage.getStorageInfoJSON usb"), "/mnt/usb"));
    EXPECT_TRUE(contains(ask("SystemInfo.infoJSON"), R"("moduleName":"PANEL")"));
    EXPECT_GT(askNumber("SysStat.getAvailableMemory"), 0);
}

// Offsets are signed on the wire.
TEST_F(RunningPanelSim, KeepsTheTimeZone)
{
    expect({"Time.setTimeZoneInfo 1 2 3 4 5 -300 6 7 8 9 10 -240 1 -> 0",
            "Time.getTimeZoneInfo -> ( 1 2 3 4 5 -300 6 7 8 9 10 -240 1 )"});
}

TEST_F(RunningPanelSim, WritesTheNearFieldTag)
{
    Signals data(*client, "NFC", "dataChanged");
    Signals json(*client, "NFC", "notifyJSON");
    expect({"NFC.write [41 42] 4 -> 0", "NFC.read 2 4 -> [41 42]", "NFC.write [41 42] 255 -> -1",
            R"(NFC.writeJSON {"id":1} -> 0)", R"(NFC.readJSON -> 0 "{"id":1}")"});
    EXPECT_EQ(data.next().substr(1 + 4 * 3, 5), "41 42");
    EXPECT_EQ(json.next(), R"("{"id":1}")");
}

TEST_F(RunningPanelSim, AppliesTheNetworkConfigurationOnRequest)
{
    const std::string before = ask("Network.getConfigJSON");
    expect({R"(Network.setInterfaceConfigJSON eth1 {"mode":"static","address":"192.0.2.77"} -> 0)",
            R"(Network.setConfigJSON {"hostname":"other"} -> 0)",
            "Network.setInterfaceConfigJSON eth0 nonsense -> -1",
            "Network.setInterfaceConfigJSON eth9 {} -> -1", "Network.setConfigJSON [] -> -1",
            "Network.getConfigJSON -> " + before, "Network.applyNewConfiguration -> 0"});
    const std::string after = ask("Network.getConfigJSON");
    for (const char* part : {R"("eth1":{"address":"192.0.2.77","mode":"static"})",
                             R"("hostname":"other")", R"("eth0":{"address")"})
        EXPECT_TRUE(contains(after, part)) << after;
    expect({R"(Network.getInterfaceConfig eth1 -> "{"address":"192.0.2.77","mode":"static"}")"});
}

// The Wi-Fi service is enabled and running at first.
TEST_F(RunningPanelSim, ChangesTheStateOfAService)
{
    // Command, result, state and whether the service is enabled afterwards.
    const Words steps[] = {
        {"stop", "0", "0", "1"},   {"reload", "-1", "0", "1"}, {"restart", "0", "1", "1"},
        {"reload", "0", "1", "1"}, {"disable", "0", "1", "0"}, {"apply", "0", "0", "0"},
        {"start", "0", "1", "0"},  {"stop", "0", "0", "0"},    {"enable", "0", "0", "1"},
        {"apply", "0", "1", "1"},
    };
    for (const Words& step : steps)
        expect({"Services." + step[0] + " wifi -> " + step[1], "Services.state wifi -> " + step[2],
                "Services.enabled wifi -> " + step[3]});
}

TEST_F(RunningPanelSim, RefusesServicesThatItDoesNotKnowOrControl)
{
    for (const std::string service : {" unknown", " logger"}) {
        for (const std::string operation :
             {"start", "stop", "restart", "reload", "enable", "disable", "apply"})
            expect({"Services." + operation + service + " -> -1"});
        expect({"Services.controlled" + service + " -> 0",
                "Services.command" + service + " scan -> -1"});
    }
    expect({"Services.state unknown -> -1", "Services.enabled unknown -> 0",
            "Services.state logger -> 1", "Services.controlled ssh -> 1"});
}

TEST_F(PanelSim, SignalsTheResultOfACommandAfterTheDelay)
{
    constexpr auto delay = 100ms;
    startSim({"--scan-delay", std::to_string(delay.count())});
    Signals results(*client, "Services", "commandResult");
    const std::pair<std::string, const char*> outcomes[] = {{"scan", R"("networks":[{)"},
                                                            {"connect", R"("result":0)"},
                                                            {"disconnect", R"("result":0)"}};
    for (const auto& [command, outcome] : outcomes) {
        const auto start = std::chrono::steady_clock::now();
        expect({"Services.command wifi " + command + " options -> 0"});
        const std::string result = results.next();
        EXPECT_GE(std::chrono::steady_clock::now() - start, delay);
        EXPECT_EQ(result.find(R"("wifi" ")" + command + '"'), 0u) << result;
        EXPECT_TRUE(contains(result, outcome)) << result;
    }
}

// The result's delay is longer than any wait, so the reply must come first.
TEST_F(PanelSim, AnswersACommandBeforeItsResult)
{
    startSim({"--scan-delay", "3600000"});
    Signals results(*client, "Services", "commandResult");
    expect({"Services.command wifi scan -> 0"});
    EXPECT_TRUE(client->waitFor([] { return true; }));
    EXPECT_TRUE(results.none());
}

TEST_F(RunningPanelSim, HasFixedAndSettablePointsInTurn)
{
    expect({"Leds.maxLeds -> 8", "Sensors.maxIos -> 8"});
    for (int id = 0; id <= 8; ++id) {
        const char* const mode = id == 8 ? " -> -1" : id % 2 == 0 ? " -> 1" : " -> 2";
        expect({"Leds.GetLedMode " + std::to_string(id) + mode,
                "Sensors.getIoMode " + std::to_string(id) + mode});
    }
}

TEST_F(RunningPanelSim, RefusesToSetAFixedLed)
{
    expect({"Leds.SetLedUserControl 0 1 -> -1", "Leds.SetLedOnTime 0 1 -> -1",
            "Leds.SetLedOffTime 0 1 -> -1", "Leds.SetLedValue 0 1 -> -1", "Leds.flash 0 1 1 -> -1",
            "Leds.blink 0 1 1 1 -> -1", "Leds.GetLedUserControl 0 -> 0", "Leds.GetLedOnTime 0 -> 0",
            "Leds.GetLedOffTime 0 -> 0", "Leds.GetLedValue 0 -> 0", "Leds.SetLedMode 0 2 -> 0",
            "Leds.SetLedValue 0 1 -> 0", "Leds.GetLedValue 0 -> 1"});
}

TEST_F(RunningPanelSim, SignalsTheLedsOfEachSlotApart)
{
    Signals first(*client, "Leds", "dataChanged");
    Signals second(*client, "Leds2", "dataChanged");
    expect({"Leds.SetLedValue 3 1 -> 0", "Leds2.GetLedValue 3 -> 0", "Leds.flash 1 1 1 -> 0"});
    EXPECT_EQ(first.next(), "[00 00 00 01 00 00 00 00]");
    EXPECT_EQ(first.next(), "[00 01 00 01 00 00 00 00]");
    EXPECT_EQ(first.next(), "[00 00 00 01 00 00 00 00]") << "the flash ends";
    EXPECT_TRUE(second.none());
    expect({"Leds.blink 1 1 200 300 -> 0", "Leds.GetLedValue 1 -> 1", "Leds.GetLedOnTime 1 -> 200",
            "Leds.GetLedOffTime 1 -> 300"});
}

// Odd points may be set, even ones may not; 30 and 31 are the characters 0 and 1.
TEST_F(RunningPanelSim, WritesSettablePoints)
{
    expect({"Sensors.writeIo 1 [31] -> 0", "Sensors.readIo 0 3 -> [30 31 30]",
            "Sensors.readIo 6 100 -> [30 30]", "Sensors.readIo 8 1 -> []",
            "Sensors.writeIo 0 [31] -> -1", "Sensors.writeIo 3 [31 31] -> -1",
            "Sensors.writeIo 1 [32] -> -1", "Sensors.writeIo 1 [] -> -1",
            "Sensors.writeIo 7 [30 30] -> -1", "Sensors.writeIo 4294967295 [31 31] -> -1",
            "Sensors.readIo 0 8 -> [30 31 30 30 30 30 30 30]", "Sensors.setIoMode 4 2 -> 0",
            "Sensors.writeIo 3 [31 31 31] -> 0",
            "Sensors.readIo 0 8 -> [30 31 30 31 31 31 30 30]"});
}

// The EEPROM of a module starts with its signature, and responds only to its slot's number.
TEST_F(RunningPanelSim, KeepsTheSignatureInTheModule)
{
    const std::string name = ask("Module.signatureName");
    EXPECT_EQ(name.size(), field("", 16).size());
    expect({"Module.seepromRead 2 0 16 -> 0 " + name, "Module.seepromRead 0 0 16 -> -1 []",
            "Module.seepromWrite 2 16 [09 08] -> 0"});
    EXPECT_EQ(ask("Module.signature").rfind("( " + name + " 9 8 ", 0), 0u);
}

TEST_F(PanelSim, OffersWhatTheCommandLineSays)
{
    // Options, present objects, absent objects.
    const Words choices[][3] = {
        {{}, {"/HWPlugin/0/Leds", "/HWPlugin/2/Sensors"}, {"/HWPlugin/1", "/HWPlugin/3"}},
        {{"--slots", "3"}, {"/HWPlugin/3", "/HWPlugin/3/Leds"}, {"/HWPlugin/0"}},
        {{"--slots", ""}, {"/"}, {"/HWPlugin/0", "/HWPlugin/2/Leds"}},
        {{"--missing", "Buzzer,SystemInfo"}, {"/", "/Backlight"}, {"/Buzzer", "/SystemInfo"}},
        {{"--missing", "OVIK"}, {"/Buzzer"}, {"/"}},
        {{"--missing", "Leds"}, {"/HWPlugin/0", "/HWPlugin/2/Sensors"}, {"/HWPlugin/0/Leds"}},
    };
    const auto isThere = [this](const std::string& path) {
        return contains(client->introspect(path), busName);
    };
    for (const auto& [options, there, notThere] : choices) {
        SCOPED_TRACE(testing::PrintToString(options));
        startSim(options);
        for (const std::string& path : there)
            EXPECT_TRUE(isThere(path)) << path;
        for (const std::string& path : notThere)
            EXPECT_FALSE(isThere(path)) << path;
        sim->stop();
    }
}

TEST_F(PanelSim, RefusesACommandLineItDoesNotUnderstand)
{
    const Words badOptions[] = {
        {"--slots", "4"},       {"--slots", "-1"},      {"--slots", "one"},
        {"--slots", "0,,2"},    {"--scan-delay", "-1"}, {"--scan-delay", "soon"},
        {"--missing", "Radio"}, {"--unknown"},          {"argument"},
    };
    for (const Words& options : badOptions) {
        SCOPED_TRACE(testing::PrintToString(options));
        Process process(simCommand(options));
        EXPECT_EQ(process.wait(), 2);
        EXPECT_TRUE(contains(process.errors(), "ovik_panel_sim: ")) << process.errors();
        EXPECT_EQ(process.output(), "");
    }
}

TEST_F(PanelSim, PrintsItsHelpAndVersion)
{
    Process help(simCommand({"--help"}));
    EXPECT_EQ(help.wait(), 0);
    EXPECT_TRUE(contains(help.output(), "--scan-delay"));
    Process version(simCommand({"--version"}));
    EXPECT_EQ(version.wait(), 0);
    EXPECT_TRUE(contains(version.output(), "ovik_panel_sim "));
}

TEST_F(RunningPanelSim, LeavesATakenNameAlone)
{
    Process second(simCommand({}));
    EXPECT_EQ(second.wait(), 1);
    EXPECT_TRUE(contains(second.errors(), "taken")) << second.errors();
    EXPECT_EQ(second.output(), "");
    expect({"Backlight.getBrightness -> 200"});
}

TEST_F(RunningPanelSim, EndsWithTheBusAndNeedsOne)
{
    bus.stop();
    EXPECT_EQ(sim->wait(), 0);

    Process process(simCommand({}));
    EXPECT_EQ(process.wait(), 1);
    EXPECT_TRUE(contains(process.errors(), "no system bus")) << process.errors();
}

} // namespace
