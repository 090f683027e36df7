// The simulated panel as a program that knows nothing of it sees it on the bus: sd-bus talks to it,
// so that no code is shared with the panel's side of the bus.

#include "tests/support/introspection.h"
#include "tests/support/private_bus.h"
#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

const char* const busName = "com.wenu.OVIK";
const char* const readyLine = "ovik_panel_sim: ready\n";

using Bytes = std::vector<uint8_t>;
using Words = std::vector<std::string>;

struct Offer {
    const char* path;
    const char* name;
    Interface interface;
};

void PrintTo(const Offer& offer, std::ostream* out) { *out << offer.name << " at " << offer.path; }

const Interface plugin{{{"seepromRead", "yyu>iay"},
                        {"seepromWrite", "yyay>i"},
                        {"signature", ">(ayyyyyay)"},
                        {"signatureFunctArea", ">ay"},
                        {"signatureHCode", ">y"},
                        {"signatureHSubCode", ">y"},
                        {"signatureName", ">ay"},
                        {"signatureXCode", ">y"},
                        {"signatureXSubCode", ">y"}},
                       {{"error", "s"}}};

const Offer offers[] = {
    {"/",
     "com.wenu.OVIK",
     {{{"getSysCounter", ">i"},
       {"getBlightCounter", ">i"},
       {"getVolatileParameter", "s>s"},
       {"getSystemParameter", "s>s"},
       {"getAllVolatileParametersJSON", ">s"},
       {"getAllSystemParametersJSON", ">s"},
       {"setVolatileParameter", "ss>i"},
       {"setSystemParameter", "ss>i"},
       {"setSystemParametersJSON", "ss>i"},
       {"clearTimeCounters", "i>i"},
       {"downloadImage", "sssb>o"},
       {"restartSystem", ">i"},
       {"restartSystemWithImage", "i>i"},
       {"setScreenOrientation", "i>i"},
       {"uploadImage", "ssb>o"},
       {"uploadRawImage", "ssb>o"}},
      {{"error", "s"}, {"systemParameterChanged", "ss"}, {"volatileParameterChanged", "ss"}}}},
    {"/Backlight",
     "com.wenu.OVIK.Backlight",
     {{{"getBrightness", ">i"},
       {"saveBrightness", "i>i"},
       {"backlightTimeout", "s>i"},
       {"offBrightness", ">i"},
       {"setBacklightTimeout", "si>i"},
       {"setBrightness", "i>i"},
       {"syncBrightness", ">i"}},
      {{"error", "s"}}}},
    {"/Buzzer",
     "com.wenu.OVIK.Buzzer",
     {{{"GetBuzzerMode", ">i"},
       {"SetBuzzerMode", "i>i"},
       {"SetBuzzerUserControl", "i>i"},
       {"SetBuzzerOnTime", "i>i"},
       {"SetBuzzerOffTime", "i>i"},
       {"GetBuzzerFrequency", ">i"},
       {"GetBuzzerOffTime", ">i"},
       {"GetBuzzerOnTime", ">i"},
       {"GetBuzzerUserControl", ">i"},
       {"SetBuzzerFrequency", "i>i"},
       {"beep", "ii>i"}},
      {{"error", "s"}}}},
    {"/I2CSEEPROM",
     "com.wenu.OVIK.I2CSEEPROM",
     {{{"read", "yu>iay"},
       {"readSlvAddr", "yyu>iay"},
       {"bitInSWModuleFlagArea", "u>b"},
       {"write", "yay>i"},
       {"writeSlvAddr", "yyay>i"}},
      {{"error", "s"}}}},
    {"/MainOSInfo",
     "com.wenu.OVIK.PartitionInfo",
     {{{"version", ">ay"}, {"day", ">y"}, {"month", ">y"}, {"year", ">y"}, {"info", ">(yyyyay)"}},
      {{"error", "s"}}}},
    {"/SysStat", "com.wenu.OVIK.SysStat", {{{"getAvailableMemory", ">t"}}, {{"error", "s"}}}},
    {"/SystemInfo",
     "com.wenu.OVIK.SystemInfo",
     {{{"info", ">(yyyayayyyayy)"},
       {"day", ">y"},
       {"month", ">y"},
       {"year", ">y"},
       {"hwCode", ">y"},
       {"hwSubCode", ">y"},
       {"hwDispID", ">y"},
       {"manufactureCode", ">ay"},
       {"moduleName", ">ay"},
       {"serialNo", ">ay"},
       {"infoJSON", ">s"}},
      {}}},
    {"/StorageMgr",
     "com.wenu.OVIK.StorageMgr",
     {{{"getStorageInfo", "s>(ayittu)"},
       {"getStorageInfoJSON", "s>s"},
       {"isAppRunning", "s>i"},
       {"getSecurityMarginInOSForFlash", ">i"},
       {"getHMIInstallationFolder", ">s"},
       {"getSDCardMountPoint", ">s"},
       {"getUSBMountPoint", ">s"},
       {"getUserSpaceMountPoint", ">s"},
       {"getStorageDeviceList", ">s"},
       {"getDynamicStorageDeviceList", ">s"},
       {"getShareInfo", "si>(ayittu)"}},
      {{"error", "s"}}}},
    {"/NetworkManager",
     "com.wenu.OVIK.NetworkManager",
     {{{"getConfigJSON", ">s"},
       {"setInterfaceConfigJSON", "ss>i"},
       {"applyNewConfiguration", ">i"},
       {"getInterfaceConfig", "s>s"},
       {"setConfigJSON", "s>i"}},
      {{"error", "s"}}}},
    {"/ServiceManager",
     "com.wenu.OVIK.ServiceManager",
     {{{"start", "s>i"},
       {"stop", "s>i"},
       {"restart", "s>i"},
       {"reload", "s>i"},
       {"enable", "s>i"},
       {"disable", "s>i"},
       {"apply", "s>i"},
       {"state", "s>i"},
       {"enabled", "s>b"},
       {"controlled", "s>b"},
       {"command", "sss>i"}},
      {{"commandResult", "sss"}}}},
    {"/SplashImageInfo",
     "com.wenu.OVIK.SplashImageInfo",
     {{{"info", ">(uu)"}, {"x", ">u"}, {"y", ">u"}}, {{"error", "s"}}}},
    {"/TimeMgr",
     "com.wenu.OVIK.TimeMgr",
     {{{"getTimeZoneInfo", ">(yyyyynyyyyyny)"},
       {"setTimeZoneInfo", "(yyyyynyyyyyny)>i"},
       {"updateTimeZoneInfo", ">i"},
       {"getTZENVFile", ">s"}},
      {{"error", "s"}}}},
    {"/NFCReader",
     "com.wenu.OVIK.NFCReader",
     {{{"start", ">ay"},
       {"stop", ">ay"},
       {"read", "uu>ay"},
       {"write", "ayu>i"},
       {"readJSON", ">is"},
       {"writeJSON", "s>i"}},
      {{"error", "s"}, {"dataChanged", "ay"}, {"notifyJSON", "s"}}}},
    {"/HWPlugin/0", "com.wenu.OVIK.HWPlugin", plugin},
    {"/HWPlugin/2", "com.wenu.OVIK.HWPluginInstance", plugin},
    {"/HWPlugin/0/Leds",
     "com.wenu.OVIK.Leds",
     {{{"GetLedMode", "u>i"},
       {"SetLedUserControl", "ui>i"},
       {"SetLedOnTime", "ui>i"},
       {"SetLedOffTime", "ui>i"},
       {"SetLedValue", "uu>i"},
       {"flash", "uui>i"},
       {"blink", "uuii>i"},
       {"maxLeds", ">i"},
       {"SetLedMode", "ui>i"},
       {"GetLedUserControl", "u>i"},
       {"GetLedOnTime", "u>i"},
       {"GetLedOffTime", "u>i"},
       {"GetLedValue", "u>u"}},
      {{"error", "s"}, {"dataChanged", "ay"}}}},
    {"/HWPlugin/2/Sensors",
     "com.wenu.OVIK.Sensors",
     {{{"getIoMode", "u>i"},
       {"readIo", "uu>ay"},
       {"writeIo", "uay>i"},
       {"battery", ">i"},
       {"absorbedCurrent", ">i"},
       {"pressure", ">i"},
       {"humidity", ">i"},
       {"temperature", ">i"},
       {"illuminance", ">i"},
       {"maxIos", ">i"},
       {"workingVoltage", "i>i"},
       {"accelerometerAxis", ">(ddd)"},
       {"accelerometerAngle", ">(ddd)"},
       {"readGenericSensor", "s>ay"},
       {"setIoMode", "ui>i"}},
      {{"error", "s"}}}},
};

/// An answer from the bus, read value by value.
class Reply
{
public:
    Reply(sd_bus_message* message, const sd_bus_error& error)
        : m_message(message, sd_bus_message_unref), m_error(error.name ? error.name : "")
    {
    }

    const std::string& error() const { return m_error; }
    std::string types() const
    {
        return m_message ? sd_bus_message_get_signature(m_message.get(), true) : "";
    }

    int number() { return basic<int32_t>('i'); }
    unsigned natural() { return basic<uint32_t>('u'); }
    uint8_t byte() { return basic<uint8_t>('y'); }
    int16_t small() { return basic<int16_t>('n'); }
    uint64_t large() { return basic<uint64_t>('t'); }
    bool flag() { return basic<int>('b') != 0; }
    std::string text()
    {
        const char* value = basic<const char*>('s');
        return value ? value : "no text";
    }
    Bytes bytes()
    {
        const void* data = nullptr;
        size_t size = 0;
        if (!m_message || sd_bus_message_read_array(m_message.get(), 'y', &data, &size) < 0)
            ADD_FAILURE() << "no bytes: " << m_error;
        const auto* first = static_cast<const uint8_t*>(data);
        return Bytes(first, first + size);
    }
    void enterStruct(const char* contents)
    {
        ASSERT_GT(sd_bus_message_enter_container(m_message.get(), 'r', contents), 0);
    }

private:
    template <class Value>
    Value basic(char type)
    {
        Value value{};
        if (!m_message || sd_bus_message_read_basic(m_message.get(), type, &value) <= 0)
            ADD_FAILURE() << "no value of type " << type << ": " << m_error;
        return value;
    }

    std::shared_ptr<sd_bus_message> m_message;
    std::string m_error;
};

struct Object {
    const char* path;
    const char* interface;
};

const Object ovik{"/", "com.wenu.OVIK"};
const Object backlight{"/Backlight", "com.wenu.OVIK.Backlight"};
const Object buzzer{"/Buzzer", "com.wenu.OVIK.Buzzer"};
const Object eeprom{"/I2CSEEPROM", "com.wenu.OVIK.I2CSEEPROM"};
const Object mainOs{"/MainOSInfo", "com.wenu.OVIK.PartitionInfo"};
const Object sysStat{"/SysStat", "com.wenu.OVIK.SysStat"};
const Object systemInfo{"/SystemInfo", "com.wenu.OVIK.SystemInfo"};
const Object storage{"/StorageMgr", "com.wenu.OVIK.StorageMgr"};
const Object network{"/NetworkManager", "com.wenu.OVIK.NetworkManager"};
const Object services{"/ServiceManager", "com.wenu.OVIK.ServiceManager"};
const Object timeMgr{"/TimeMgr", "com.wenu.OVIK.TimeMgr"};
const Object nfcReader{"/NFCReader", "com.wenu.OVIK.NFCReader"};
const Object module{"/HWPlugin/2", "com.wenu.OVIK.HWPluginInstance"};
const Object leds{"/HWPlugin/0/Leds", "com.wenu.OVIK.Leds"};
const Object otherLeds{"/HWPlugin/2/Leds", "com.wenu.OVIK.Leds"};
const Object sensors{"/HWPlugin/0/Sensors", "com.wenu.OVIK.Sensors"};

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// A connection to the bus.
class Client
{
public:
    Client()
    {
        sd_bus* bus = nullptr;
        if (sd_bus_open_system(&bus) < 0)
            throw std::runtime_error("no bus");
        m_bus.reset(bus);
        sd_bus_set_method_call_timeout(bus, std::chrono::microseconds(patience).count());
    }

    sd_bus* bus() { return m_bus.get(); }

    template <class... Values>
    Reply call(const Object& object, const char* method, const char* types = "", Values... values)
    {
        sd_bus_error error = SD_BUS_ERROR_NULL;
        sd_bus_message* reply = nullptr;
        sd_bus_call_method(bus(), busName, object.path, object.interface, method, &error, &reply,
                           types, values...);
        return finished(reply, error);
    }

    /// For a method whose last argument is a byte array.
    template <class... Values>
    Reply callWithBytes(const Object& object, const char* method, const Bytes& bytes,
                        const char* types, Values... values)
    {
        sd_bus_message* request = newCall(object, method);
        sd_bus_message_append(request, types, values...);
        sd_bus_message_append_array(request, 'y', bytes.data(), bytes.size());
        return send(request);
    }

    /// Calls a method with zeros and empty values of the types @p types.
    Reply callWithNothing(const Object& object, const char* method, const std::string& types)
    {
        sd_bus_message* request = newCall(object, method);
        appendNothing(request, types);
        return send(request);
    }

    /// Empty when there is no such object.
    std::string introspect(const char* path)
    {
        Reply reply = call({path, "org.freedesktop.DBus.Introspectable"}, "Introspect");
        return reply.error().empty() ? reply.text() : "";
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
    sd_bus_message* newCall(const Object& object, const char* method)
    {
        sd_bus_message* request = nullptr;
        sd_bus_message_new_method_call(bus(), &request, busName, object.path, object.interface,
                                       method);
        return request;
    }

    Reply send(sd_bus_message* request)
    {
        sd_bus_error error = SD_BUS_ERROR_NULL;
        sd_bus_message* reply = nullptr;
        sd_bus_call(bus(), request, 0, &error, &reply);
        sd_bus_message_unref(request);
        return finished(reply, error);
    }

    static Reply finished(sd_bus_message* reply, sd_bus_error& error)
    {
        Reply result(reply, error);
        sd_bus_error_free(&error);
        return result;
    }

    static void appendNothing(sd_bus_message* request, const std::string& types)
    {
        static const uint64_t zero = 0;
        for (size_t i = 0; i < types.size(); ++i) {
            if (types[i] == 'a') {
                sd_bus_message_append_array(request, types[++i], nullptr, 0);
            } else if (types[i] == '(') {
                const std::string fields = types.substr(i + 1, types.find(')', i) - i - 1);
                sd_bus_message_open_container(request, 'r', fields.c_str());
                appendNothing(request, fields);
                sd_bus_message_close_container(request);
                i += fields.size() + 1;
            } else {
                sd_bus_message_append_basic(request, types[i],
                                            types[i] == 's' ? static_cast<const void*>("") : &zero);
            }
        }
    }

    std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)> m_bus{nullptr, sd_bus_flush_close_unref};
};

/// The signals of one name that reach a client, each as its argument texts (a byte array is one
/// text too).
class Signals
{
public:
    Signals(Client& client, const Object& object, const char* name) : m_client(client)
    {
        sd_bus_slot* match = nullptr;
        sd_bus_match_signal(client.bus(), &match, busName, object.path, object.interface, name,
                            received, this);
        m_match.reset(match);
    }

    /// The next signal; an empty text where it says nothing.
    Words next()
    {
        EXPECT_TRUE(m_client.waitFor([this] { return m_received.size() > m_taken; }));
        return m_received.size() > m_taken ? m_received[m_taken++] : Words(3);
    }

    bool none() const { return m_received.empty(); }

private:
    static int received(sd_bus_message* message, void* self, sd_bus_error*)
    {
        Words words;
        Reply reply(sd_bus_message_ref(message), SD_BUS_ERROR_NULL);
        for (const char* type = sd_bus_message_get_signature(message, true); *type; ++type) {
            if (*type == 's') {
                words.push_back(reply.text());
            } else {
                const Bytes bytes = reply.bytes();
                words.emplace_back(bytes.begin(), bytes.end());
                ++type;
            }
        }
        static_cast<Signals*>(self)->m_received.push_back(words);
        return 0;
    }

    Client& m_client;
    std::unique_ptr<sd_bus_slot, sd_bus_slot* (*)(sd_bus_slot*)> m_match{nullptr,
                                                                         sd_bus_slot_unref};
    std::vector<Words> m_received;
    size_t m_taken = 0;
};

Words simCommand(const Words& options) { return commandOf(OVIK_PANEL_SIM_PATH, options); }

class PanelSim : public testing::Test
{
protected:
    void startSim(const Words& options = {})
    {
        sim = std::make_unique<Process>(simCommand(options));
        ASSERT_TRUE(sim->waitForOutput(readyLine)) << sim->errors();
        client = std::make_unique<Client>();
    }

    template <class... Arguments>
    Reply call(const Arguments&... arguments)
    {
        return client->call(arguments...);
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

class PanelSimContract : public RunningPanelSim, public testing::WithParamInterface<Offer>
{
};

TEST_P(PanelSimContract, IsWhatThePanelSaysOfItself)
{
    const auto served = introspected(client->introspect(GetParam().path));
    ASSERT_EQ(served.count(GetParam().name), 1u);
    const Interface& interface = served.at(GetParam().name);
    EXPECT_EQ(interface.methods, GetParam().interface.methods);
    EXPECT_EQ(interface.events, GetParam().interface.events);
}

TEST_P(PanelSimContract, IsWhatTheInterfaceFileSays)
{
    const auto declared = introspectedFile(GetParam().name);
    ASSERT_EQ(declared.size(), 1u);
    ASSERT_EQ(declared.count(GetParam().name), 1u);
    EXPECT_EQ(declared.at(GetParam().name).methods, GetParam().interface.methods);
    EXPECT_EQ(declared.at(GetParam().name).events, GetParam().interface.events);
}

// The introspection is a text beside the code, so every method is called as well.
TEST_P(PanelSimContract, IsWhatEveryMethodAnswers)
{
    for (const auto& [method, types] : GetParam().interface.methods) {
        const size_t split = types.find('>');
        const Reply reply = client->callWithNothing({GetParam().path, GetParam().name},
                                                    method.c_str(), types.substr(0, split));
        EXPECT_EQ(reply.error(), "") << method;
        EXPECT_EQ(reply.types(), types.substr(split + 1)) << method;
    }
}

INSTANTIATE_TEST_SUITE_P(Offers, PanelSimContract, testing::ValuesIn(offers), [](const auto& test) {
    const std::string name = test.param.name;
    return name.substr(name.rfind('.') + 1);
});

struct Setting {
    Object object;
    const char* set;
    const char* get;
};

// Every setting of a whole number is kept, and a negative value is refused and changes nothing.
TEST_F(RunningPanelSim, KeepsItsSettings)
{
    const Setting settings[] = {
        {buzzer, "SetBuzzerMode", "GetBuzzerMode"},
        {buzzer, "SetBuzzerUserControl", "GetBuzzerUserControl"},
        {buzzer, "SetBuzzerOnTime", "GetBuzzerOnTime"},
        {buzzer, "SetBuzzerOffTime", "GetBuzzerOffTime"},
        {buzzer, "SetBuzzerFrequency", "GetBuzzerFrequency"},
        {backlight, "setBrightness", "getBrightness"},
        {backlight, "saveBrightness", "getBrightness"},
    };
    int value = 10; // another one for each, so that no two settings can be one
    for (const Setting& setting : settings) {
        EXPECT_EQ(call(setting.object, setting.set, "i", ++value).number(), 0) << setting.set;
        EXPECT_EQ(call(setting.object, setting.set, "i", -1).number(), -1) << setting.set;
    }
    value = 10;
    for (const Setting& setting : settings) {
        ++value;
        if (setting.set != std::string("setBrightness")) { // saved over since
            EXPECT_EQ(call(setting.object, setting.get).number(), value) << setting.get;
        }
    }
}

TEST_F(RunningPanelSim, ShowsTheSavedBrightnessAgain)
{
    call(backlight, "saveBrightness", "i", 120);
    EXPECT_EQ(call(backlight, "offBrightness").number(), 0);
    EXPECT_EQ(call(backlight, "getBrightness").number(), 0);
    EXPECT_EQ(call(backlight, "syncBrightness").number(), 0);
    EXPECT_EQ(call(backlight, "getBrightness").number(), 120);
    EXPECT_EQ(call(backlight, "saveBrightness", "i", 256).number(), -1);
    EXPECT_EQ(call(backlight, "getBrightness").number(), 120);
}

TEST_F(RunningPanelSim, KeepsABacklightTimeoutForEachDisplay)
{
    EXPECT_EQ(call(backlight, "setBacklightTimeout", "si", "one", 60).number(), 0);
    EXPECT_EQ(call(backlight, "backlightTimeout", "s", "one").number(), 60);
    EXPECT_EQ(call(backlight, "backlightTimeout", "s", "two").number(), 0);
}

TEST_F(RunningPanelSim, CountsTheSeconds)
{
    for (const char* counter : {"getSysCounter", "getBlightCounter"}) {
        const int before = call(ovik, counter).number();
        EXPECT_GT(before, 0);
        EXPECT_TRUE(waitUntil([&] { return call(ovik, counter).number() > before; })) << counter;
    }
}

TEST_F(RunningPanelSim, ClearsTheCountersOfTheBitsOnly)
{
    const int backlightCounter = call(ovik, "getBlightCounter").number();
    EXPECT_EQ(call(ovik, "clearTimeCounters", "i", 1).number(), 0);
    EXPECT_LT(call(ovik, "getSysCounter").number(), backlightCounter);
    EXPECT_GE(call(ovik, "getBlightCounter").number(), backlightCounter);
    EXPECT_EQ(call(ovik, "clearTimeCounters", "i", 4).number(), -1);
}

struct ParameterKind {
    const char* set;
    const char* get;
    const char* all;
    const char* changed;
};

// System and volatile parameters are two sets: a name in one of them is not in the other.
TEST_F(RunningPanelSim, KeepsParametersAndTellsOfThem)
{
    const ParameterKind kinds[] = {
        {"setSystemParameter", "getSystemParameter", "getAllSystemParametersJSON",
         "systemParameterChanged"},
        {"setVolatileParameter", "getVolatileParameter", "getAllVolatileParametersJSON",
         "volatileParameterChanged"},
    };
    for (const ParameterKind& kind : kinds) {
        Signals changed(*client, ovik, kind.changed);
        EXPECT_EQ(call(ovik, kind.get, "s", "name").text(), "");
        EXPECT_EQ(call(ovik, kind.set, "ss", "name", kind.set).number(), 0);
        EXPECT_EQ(call(ovik, kind.get, "s", "name").text(), kind.set);
        EXPECT_TRUE(
            contains(call(ovik, kind.all).text(), "\"name\":\"" + std::string(kind.set) + "\""));
        EXPECT_EQ(changed.next(), (Words{"name", kind.set}));
    }
}

TEST_F(RunningPanelSim, MergesParametersFromJson)
{
    call(ovik, "setSystemParameter", "ss", "kept", "yes");
    const char* json = R"({"text":"x","number":5,"flag":true,"list":[1,2],"tree":{"a":"b"}})";
    EXPECT_EQ(call(ovik, "setSystemParametersJSON", "ss", "", json).number(), 0);
    EXPECT_EQ(call(ovik, "getSystemParameter", "s", "kept").text(), "yes");
    EXPECT_EQ(call(ovik, "getSystemParameter", "s", "text").text(), "x");
    EXPECT_EQ(call(ovik, "getSystemParameter", "s", "number").text(), "5");
    EXPECT_EQ(call(ovik, "getSystemParameter", "s", "flag").text(), "true");
    EXPECT_EQ(call(ovik, "getSystemParameter", "s", "list").text(), "[1,2]");
    EXPECT_EQ(call(ovik, "getSystemParameter", "s", "tree").text(), R"({"a":"b"})");

    EXPECT_EQ(call(ovik, "setSystemParametersJSON", "ss", "group", json).number(), 0);
    EXPECT_EQ(call(ovik, "getSystemParameter", "s", "group.text").text(), "x");
}

TEST_F(RunningPanelSim, RefusesParametersThatAreNoJsonObject)
{
    const std::string before = call(ovik, "getAllSystemParametersJSON").text();
    for (const char* json : {"", "nonsense", "[1]", "{\"a\":1"})
        EXPECT_EQ(call(ovik, "setSystemParametersJSON", "ss", "", json).number(), -1) << json;
    EXPECT_EQ(call(ovik, "getAllSystemParametersJSON").text(), before);
}

struct Read {
    int result;
    Bytes data;

    bool operator==(const Read& other) const
    {
        return result == other.result && data == other.data;
    }
};

void PrintTo(const Read& read, std::ostream* out)
{
    *out << read.result << " " << testing::PrintToString(read.data);
}

Read readOf(Reply reply)
{
    const int result = reply.number();
    return {result, reply.bytes()};
}

TEST_F(RunningPanelSim, ReadsBackWhatIsWrittenToTheEeprom)
{
    EXPECT_EQ(client->callWithBytes(eeprom, "write", {0, 255, 7}, "y", 100).number(), 0);
    EXPECT_EQ(readOf(call(eeprom, "read", "yu", 99, 5)), (Read{0, {99, 0, 255, 7, 103}}));
}

TEST_F(RunningPanelSim, KeepsEverySlaveApart)
{
    EXPECT_EQ(client->callWithBytes(eeprom, "writeSlvAddr", {1, 2}, "yy", 0x50, 10).number(), 0);
    EXPECT_EQ(readOf(call(eeprom, "readSlvAddr", "yyu", 0x50, 10, 2)), (Read{0, {1, 2}}));
    EXPECT_EQ(readOf(call(eeprom, "readSlvAddr", "yyu", 0x51, 10, 2)), (Read{0, {0x5B, 0x5C}}));
    EXPECT_EQ(readOf(call(eeprom, "read", "yu", 20, 2)), (Read{0, {20, 21}}));
}

TEST_F(RunningPanelSim, RefusesASlaveThatIsNotThere)
{
    EXPECT_EQ(readOf(call(eeprom, "readSlvAddr", "yyu", 0x11, 0, 4)), (Read{-1, {}}));
    EXPECT_EQ(client->callWithBytes(eeprom, "writeSlvAddr", {1}, "yy", 0x11, 0).number(), -1);
}

TEST_F(RunningPanelSim, EndsTheEepromAt256Bytes)
{
    EXPECT_EQ(readOf(call(eeprom, "read", "yu", 0, 0xFFFFFFFFu)).data.size(), 256u);
    EXPECT_EQ(readOf(call(eeprom, "read", "yu", 254, 10)), (Read{0, {254, 255}}));
    EXPECT_EQ(client->callWithBytes(eeprom, "write", {1, 2, 3}, "y", 254).number(), -1);
    EXPECT_EQ(readOf(call(eeprom, "read", "yu", 254, 10)), (Read{0, {254, 255}}));
}

TEST_F(RunningPanelSim, TellsTheBitsOfTheFlagArea)
{
    client->callWithBytes(eeprom, "write", {0x05, 0x80}, "y", 0xE0);
    for (unsigned bit : {0u, 2u, 15u})
        EXPECT_TRUE(call(eeprom, "bitInSWModuleFlagArea", "u", bit).flag()) << bit;
    for (unsigned bit : {1u, 3u, 14u, 256u})
        EXPECT_FALSE(call(eeprom, "bitInSWModuleFlagArea", "u", bit).flag()) << bit;
}

TEST_F(RunningPanelSim, SendsTheSystemInfoFieldsWhole)
{
    Reply reply = call(systemInfo, "info");
    reply.enterStruct("yyyayayyyayy");
    EXPECT_EQ(reply.byte(), call(systemInfo, "day").byte());
    EXPECT_EQ(reply.byte(), call(systemInfo, "month").byte());
    EXPECT_EQ(reply.byte(), call(systemInfo, "year").byte());
    EXPECT_EQ(reply.bytes(), (Bytes{0x01, 0x23, 0x45}));
    EXPECT_EQ(reply.bytes(), bytesOf("PANEL"));
    EXPECT_EQ(reply.byte(), call(systemInfo, "hwCode").byte());
    EXPECT_EQ(reply.byte(), call(systemInfo, "hwSubCode").byte());
    EXPECT_EQ(reply.bytes().size(), 2u);
    EXPECT_EQ(reply.byte(), call(systemInfo, "hwDispID").byte());
    EXPECT_TRUE(contains(call(systemInfo, "infoJSON").text(), R"("moduleName":"PANEL")"));
}

TEST_F(RunningPanelSim, SendsTheVersionAs20Bytes)
{
    Bytes version = bytesOf("1.4.2");
    version.resize(20);
    EXPECT_EQ(call(mainOs, "version").bytes(), version);
}

TEST_F(RunningPanelSim, SendsTheMountPointAs200Bytes)
{
    Reply reply = call(storage, "getStorageInfo", "s", "usb");
    reply.enterStruct("ayittu");
    Bytes mountPoint = bytesOf(call(storage, "getUSBMountPoint").text());
    mountPoint.resize(200);
    EXPECT_EQ(reply.bytes(), mountPoint);
    EXPECT_EQ(reply.number(), 2);
    EXPECT_GT(reply.large(), 0u);
    EXPECT_GT(reply.large(), 0u);
    EXPECT_TRUE(contains(call(storage, "getStorageInfoJSON", "s", "usb").text(), "/mnt/usb"));
}

TEST_F(RunningPanelSim, HasNothingToTellOfAnUnknownStorage)
{
    Reply reply = call(storage, "getStorageInfo", "s", "floppy");
    reply.enterStruct("ayittu");
    EXPECT_EQ(reply.bytes(), Bytes(200));
    EXPECT_EQ(reply.number(), 0);
    EXPECT_EQ(call(storage, "getStorageInfoJSON", "s", "floppy").text(), "");
}

TEST_F(RunningPanelSim, HasMemory) { EXPECT_GT(call(sysStat, "getAvailableMemory").large(), 0u); }

// Offsets are signed on the wire.
TEST_F(RunningPanelSim, KeepsTheTimeZone)
{
    const char* types = "(yyyyynyyyyyny)";
    EXPECT_EQ(call(timeMgr, "setTimeZoneInfo", types, 1, 2, 3, 4, 5, -300, 6, 7, 8, 9, 10, -240, 1)
                  .number(),
              0);
    Reply reply = call(timeMgr, "getTimeZoneInfo");
    reply.enterStruct("yyyyynyyyyyny");
    for (uint8_t field = 1; field <= 5; ++field)
        EXPECT_EQ(reply.byte(), field);
    EXPECT_EQ(reply.small(), -300);
    for (uint8_t field = 6; field <= 10; ++field)
        EXPECT_EQ(reply.byte(), field);
    EXPECT_EQ(reply.small(), -240);
    EXPECT_EQ(reply.byte(), 1);
}

TEST_F(RunningPanelSim, WritesTheNearFieldTag)
{
    Signals data(*client, nfcReader, "dataChanged");
    Signals json(*client, nfcReader, "notifyJSON");
    EXPECT_EQ(call(nfcReader, "write", "ayu", 2, 65, 66, 4).number(), 0);
    EXPECT_EQ(call(nfcReader, "read", "uu", 2, 4).bytes(), bytesOf("AB"));
    EXPECT_EQ(data.next()[0].substr(4, 2), "AB");
    EXPECT_EQ(call(nfcReader, "write", "ayu", 2, 65, 66, 255).number(), -1);

    EXPECT_EQ(call(nfcReader, "writeJSON", "s", R"({"id":1})").number(), 0);
    Reply read = call(nfcReader, "readJSON");
    EXPECT_EQ(read.number(), 0);
    EXPECT_EQ(read.text(), R"({"id":1})");
    EXPECT_EQ(json.next()[0], R"({"id":1})");
}

TEST_F(RunningPanelSim, AppliesTheNetworkConfigurationWhenTold)
{
    const char* config = R"({"mode":"static","address":"192.0.2.77"})";
    const std::string before = call(network, "getConfigJSON").text();
    EXPECT_EQ(call(network, "setInterfaceConfigJSON", "ss", "eth1", config).number(), 0);
    EXPECT_EQ(call(network, "setConfigJSON", "s", R"({"hostname":"other"})").number(), 0);
    EXPECT_EQ(call(network, "getConfigJSON").text(), before);

    EXPECT_EQ(call(network, "applyNewConfiguration").number(), 0);
    const std::string after = call(network, "getConfigJSON").text();
    EXPECT_TRUE(contains(after, "192.0.2.77")) << after;
    EXPECT_TRUE(contains(after, R"("hostname":"other")")) << after;
    EXPECT_TRUE(contains(after, R"("eth0")")) << after;
    EXPECT_EQ(call(network, "getInterfaceConfig", "s", "eth1").text(),
              R"({"address":"192.0.2.77","mode":"static"})");
}

TEST_F(RunningPanelSim, RefusesANetworkConfigurationItCannotUse)
{
    const std::string before = call(network, "getConfigJSON").text();
    EXPECT_EQ(call(network, "setInterfaceConfigJSON", "ss", "eth0", "nonsense").number(), -1);
    EXPECT_EQ(call(network, "setInterfaceConfigJSON", "ss", "eth9", "{}").number(), -1);
    EXPECT_EQ(call(network, "setConfigJSON", "s", "[]").number(), -1);
    call(network, "applyNewConfiguration");
    EXPECT_EQ(call(network, "getConfigJSON").text(), before);
}

struct Step {
    const char* operation;
    int result;
    int stateAfter;
    bool enabledAfter;
};

// The Wi-Fi service starts out enabled and running.
TEST_F(RunningPanelSim, ChangesTheStateOfAService)
{
    const Step steps[] = {
        {"stop", 0, 0, true},   {"reload", -1, 0, true},  {"restart", 0, 1, true},
        {"reload", 0, 1, true}, {"disable", 0, 1, false}, {"apply", 0, 0, false},
        {"start", 0, 1, false}, {"stop", 0, 0, false},    {"enable", 0, 0, true},
        {"apply", 0, 1, true},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.operation);
        EXPECT_EQ(call(services, step.operation, "s", "wifi").number(), step.result);
        EXPECT_EQ(call(services, "state", "s", "wifi").number(), step.stateAfter);
        EXPECT_EQ(call(services, "enabled", "s", "wifi").flag(), step.enabledAfter);
    }
}

TEST_F(RunningPanelSim, RefusesServicesThatItDoesNotKnowOrControl)
{
    for (const char* service : {"unknown", "logger"}) {
        SCOPED_TRACE(service);
        for (const char* operation :
             {"start", "stop", "restart", "reload", "enable", "disable", "apply"})
            EXPECT_EQ(call(services, operation, "s", service).number(), -1) << operation;
        EXPECT_FALSE(call(services, "controlled", "s", service).flag());
        EXPECT_EQ(call(services, "command", "sss", service, "scan", "").number(), -1);
    }
    EXPECT_EQ(call(services, "state", "s", "unknown").number(), -1);
    EXPECT_FALSE(call(services, "enabled", "s", "unknown").flag());
    EXPECT_EQ(call(services, "state", "s", "logger").number(), 1);
    EXPECT_TRUE(call(services, "controlled", "s", "ssh").flag());
}

TEST_F(PanelSim, TellsTheResultOfAScanAfterTheDelay)
{
    constexpr auto delay = 250ms;
    startSim({"--scan-delay", std::to_string(delay.count())});
    Signals results(*client, services, "commandResult");

    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(call(services, "command", "sss", "wifi", "scan", "{}").number(), 0);
    const Words result = results.next();
    EXPECT_GE(std::chrono::steady_clock::now() - start, delay);

    EXPECT_EQ(result[0], "wifi");
    EXPECT_EQ(result[1], "scan");
    EXPECT_TRUE(contains(result[2], R"("networks":[{)")) << result[2];
}

// With a delay longer than any wait, the answer of the command itself still comes.
TEST_F(PanelSim, AnswersACommandBeforeItsResult)
{
    startSim({"--scan-delay", "3600000"});
    Signals results(*client, services, "commandResult");
    EXPECT_EQ(call(services, "command", "sss", "wifi", "scan", "").number(), 0);
    EXPECT_TRUE(client->waitFor([] { return true; }));
    EXPECT_TRUE(results.none());
}

TEST_F(PanelSim, TellsTheResultOfEveryCommand)
{
    startSim({"--scan-delay", "0"});
    Signals results(*client, services, "commandResult");
    for (const char* command : {"connect", "disconnect", "scan"}) {
        EXPECT_EQ(call(services, "command", "sss", "wifi", command, "options").number(), 0);
        const Words result = results.next();
        EXPECT_EQ(result[1], command);
        EXPECT_TRUE(contains(result[2], R"("result":0)")) << result[2];
    }
}

TEST_F(RunningPanelSim, HasFixedAndSettablePointsInTurn)
{
    EXPECT_EQ(call(leds, "maxLeds").number(), 8);
    EXPECT_EQ(call(sensors, "maxIos").number(), 8);
    for (unsigned id = 0; id < 8; ++id) {
        const int mode = id % 2 == 0 ? 1 : 2;
        EXPECT_EQ(call(leds, "GetLedMode", "u", id).number(), mode) << id;
        EXPECT_EQ(call(sensors, "getIoMode", "u", id).number(), mode) << id;
    }
    EXPECT_EQ(call(leds, "GetLedMode", "u", 8u).number(), -1);
    EXPECT_EQ(call(sensors, "getIoMode", "u", 8u).number(), -1);
}

TEST_F(RunningPanelSim, SetsWhatMayBeSetOfALed)
{
    const Setting settings[] = {{leds, "SetLedUserControl", "GetLedUserControl"},
                                {leds, "SetLedOnTime", "GetLedOnTime"},
                                {leds, "SetLedOffTime", "GetLedOffTime"}};
    int value = 100;
    for (const Setting& setting : settings) {
        EXPECT_EQ(call(leds, setting.set, "ui", 1u, ++value).number(), 0) << setting.set;
        EXPECT_EQ(call(leds, setting.get, "u", 1u).number(), value) << setting.get;
        EXPECT_EQ(call(leds, setting.set, "ui", 0u, value).number(), -1) << setting.set;
        EXPECT_EQ(call(leds, setting.get, "u", 0u).number(), 0) << setting.get;
    }
    EXPECT_EQ(call(leds, "SetLedValue", "uu", 0u, 1u).number(), -1);
    EXPECT_EQ(call(leds, "SetLedMode", "ui", 0u, 2).number(), 0);
    EXPECT_EQ(call(leds, "SetLedValue", "uu", 0u, 1u).number(), 0);
    EXPECT_EQ(call(leds, "GetLedValue", "u", 0u).natural(), 1u);
}

TEST_F(RunningPanelSim, TellsOfTheLedsOfEachSlotApart)
{
    Signals first(*client, leds, "dataChanged");
    Signals second(*client, otherLeds, "dataChanged");
    EXPECT_EQ(call(leds, "SetLedValue", "uu", 3u, 1u).number(), 0);
    EXPECT_EQ(first.next()[0], std::string("\0\0\0\1\0\0\0\0", 8));
    EXPECT_EQ(call(otherLeds, "GetLedValue", "u", 3u).natural(), 0u);
    EXPECT_TRUE(second.none());
}

TEST_F(RunningPanelSim, FlashesAndBlinks)
{
    Signals changes(*client, leds, "dataChanged");
    EXPECT_EQ(call(leds, "flash", "uui", 1u, 1u, 1).number(), 0);
    EXPECT_EQ(changes.next()[0][1], 1);
    EXPECT_EQ(changes.next()[0][1], 0);

    EXPECT_EQ(call(leds, "blink", "uuii", 1u, 1u, 200, 300).number(), 0);
    EXPECT_EQ(call(leds, "GetLedValue", "u", 1u).natural(), 1u);
    EXPECT_EQ(call(leds, "GetLedOnTime", "u", 1u).number(), 200);
    EXPECT_EQ(call(leds, "GetLedOffTime", "u", 1u).number(), 300);

    EXPECT_EQ(call(leds, "flash", "uui", 0u, 1u, 1).number(), -1);
    EXPECT_EQ(call(leds, "blink", "uuii", 0u, 1u, 1, 1).number(), -1);
}

TEST_F(RunningPanelSim, WritesSettablePoints)
{
    const auto write = [this](unsigned id, const std::string& values) {
        return client->callWithBytes(sensors, "writeIo", bytesOf(values), "u", id).number();
    };
    EXPECT_EQ(write(1, "1"), 0);
    EXPECT_EQ(call(sensors, "readIo", "uu", 0u, 3u).bytes(), bytesOf("010"));
    EXPECT_EQ(call(sensors, "readIo", "uu", 6u, 100u).bytes(), bytesOf("00"));
    EXPECT_EQ(call(sensors, "readIo", "uu", 8u, 1u).bytes(), Bytes());

    EXPECT_EQ(write(0, "1"), -1);
    EXPECT_EQ(write(3, "11"), -1); // the second one may not be set
    EXPECT_EQ(write(1, "2"), -1);
    EXPECT_EQ(write(1, ""), -1);
    EXPECT_EQ(write(7, "00"), -1);
    EXPECT_EQ(write(0xFFFFFFFFu, "11"), -1);
    EXPECT_EQ(call(sensors, "readIo", "uu", 0u, 8u).bytes(), bytesOf("01000000"));

    EXPECT_EQ(call(sensors, "setIoMode", "ui", 4u, 2).number(), 0);
    EXPECT_EQ(write(3, "111"), 0);
    EXPECT_EQ(call(sensors, "readIo", "uu", 0u, 8u).bytes(), bytesOf("01011100"));
}

// The EEPROM of a module starts with its signature, and answers to the number of its slot only.
TEST_F(RunningPanelSim, KeepsTheSignatureInTheModule)
{
    const Bytes name = call(module, "signatureName").bytes();
    EXPECT_EQ(name.size(), 16u);
    EXPECT_EQ(readOf(call(module, "seepromRead", "yyu", 2, 0, 16)), (Read{0, name}));
    EXPECT_EQ(readOf(call(module, "seepromRead", "yyu", 0, 0, 16)), (Read{-1, {}}));

    EXPECT_EQ(client->callWithBytes(module, "seepromWrite", {9, 8}, "yy", 2, 16).number(), 0);
    Reply signature = call(module, "signature");
    signature.enterStruct("ayyyyyay");
    EXPECT_EQ(signature.bytes(), name);
    EXPECT_EQ(signature.byte(), 9);
    EXPECT_EQ(signature.byte(), 8);
}

struct Choice {
    Words options;
    Words there;
    Words notThere;
};

TEST_F(PanelSim, OffersWhatTheCommandLineSays)
{
    const Choice choices[] = {
        {{}, {"/HWPlugin/0/Leds", "/HWPlugin/2/Sensors"}, {"/HWPlugin/1", "/HWPlugin/3"}},
        {{"--slots", "3"}, {"/HWPlugin/3", "/HWPlugin/3/Leds"}, {"/HWPlugin/0"}},
        {{"--slots", ""}, {"/"}, {"/HWPlugin/0", "/HWPlugin/2/Leds"}},
        {{"--missing", "Buzzer,SystemInfo"}, {"/", "/Backlight"}, {"/Buzzer", "/SystemInfo"}},
        {{"--missing", "OVIK"}, {"/Buzzer"}, {"/"}},
        {{"--missing", "Leds"}, {"/HWPlugin/0", "/HWPlugin/2/Sensors"}, {"/HWPlugin/0/Leds"}},
    };
    const auto isThere = [this](const std::string& path) {
        return contains(client->introspect(path.c_str()), busName);
    };
    for (const Choice& choice : choices) {
        SCOPED_TRACE(testing::PrintToString(choice.options));
        startSim(choice.options);
        for (const std::string& path : choice.there)
            EXPECT_TRUE(isThere(path)) << path;
        for (const std::string& path : choice.notThere)
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

TEST_F(PanelSim, TellsHowItIsUsed)
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
    EXPECT_EQ(call(backlight, "getBrightness").error(), "");
}

TEST_F(PanelSim, NeedsABus)
{
    bus.stop();
    Process process(simCommand({}));
    EXPECT_EQ(process.wait(), 1);
    EXPECT_TRUE(contains(process.errors(), "no system bus")) << process.errors();
}

TEST_F(RunningPanelSim, EndsWithTheBus)
{
    bus.stop();
    EXPECT_EQ(sim->wait(), 0);
}

} // namespace
