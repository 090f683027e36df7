// What every backend promises: the same questions to each of them, over the same simulated panel,
// and the same answers. A row says where a backend departs on purpose.

#include "IProxy/IBacklightProxy.h"
#include "IProxy/IBuzzerProxy.h"
#include "IProxy/IMainOsProxy.h"
#include "IProxy/INetworkManagerProxy.h"
#include "IProxy/IOvikProxy.h"
#include "IProxy/ISeepromProxy.h"
#include "IProxy/IStorageManagerProxy.h"
#include "IProxy/ISysStatProxy.h"
#include "IProxy/ISystemInfoProxy.h"
#include "dbus_ovik/OVIKInterfaceDbus.h"
#include "local_ovik/OVIKInterfaceLocal.h"
#include "wrapper_ovik/ovikapplication.h"

#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
struct Proxies {
    IOvikInterface* backend;
    ISystemInfoProxy* systemInfo;
    IBuzzerProxy* buzzer;
    IBacklightProxy* backlight;
    ISeepromProxy* seeprom;
    IOvikProxy* ovik;
    IMainOsProxy* mainOs;
    IStorageManagerProxy* storage;
    ISysStatProxy* sysStat;
    INetworkManagerProxy* network;
};

template <class Backend>
Proxies proxiesOf(Backend& backend)
{
    return {&backend,
            backend.systemInfoProxy(),
            backend.buzzerProxy(),
            backend.backlightProxy(),
            backend.seepromProxy(),
            backend.ovikProxy(),
            backend.mainOsProxy(),
            backend.storageManagerProxy(),
            backend.sysStatProxy(),
            backend.networkManagerProxy()};
}

/// A backend that has been started over a simulated panel of its own.
class Started
{
public:
    virtual ~Started() = default;
    virtual Proxies proxies() = 0;
};

class DbusStarted : public Started
{
public:
    DbusStarted()
    {
        theBus();
        panel = std::make_unique<Process>(std::vector<std::string>{OVIK_PANEL_SIM_PATH});
        EXPECT_TRUE(panel->waitForOutput("ready"));
        EXPECT_TRUE(backend.init());
    }
    Proxies proxies() override { return proxiesOf(backend); }

private:
    std::unique_ptr<Process> panel;
    OVIKInterfaceDbus backend;
};

class LocalStarted : public Started
{
public:
    LocalStarted() { EXPECT_TRUE(backend.init()); }
    Proxies proxies() override { return proxiesOf(backend); }

private:
    OVIKInterfaceLocal backend;
};

struct Backend {
    const char* name;
    std::unique_ptr<Started> (*start)();
};

const Backend backends[] = {
    {"Dbus", []() -> std::unique_ptr<Started> { return std::make_unique<DbusStarted>(); }},
    {"Local", []() -> std::unique_ptr<Started> { return std::make_unique<LocalStarted>(); }},
};

/// An answer as text: the status, and the value if it counts.
std::string told(status_t status, const QString& value)
{
    return QString("%1 %2").arg(status).arg(value).toStdString();
}
/// By reference, as the call that gives the status sets the value.
std::string told(status_t status, const int& value) { return told(status, QString::number(value)); }

int answer;
QString text;
QByteArray bytes;

struct Question {
    const char* what;
    std::string (*ask)(Proxies&);
    std::string expected;
    std::map<std::string, std::string> departures; ///< by backend
};

// In this order, as later questions build on what earlier ones have set.
// clang-format off
const std::vector<Question> questions = {
    {"a valid backend", [](Proxies& p) { return told(0, p.backend->isValid()); }, "0 1", {}},
    {"getBuzzerMode at first", [](Proxies& p) { return told(p.buzzer->getBuzzerMode(answer), answer); }, "0 0", {}},
    {"setBuzzerMode", [](Proxies& p) { return told(p.buzzer->setBuzzerMode(2, answer), answer); }, "0 0", {}},
    {"setBuzzerMode refused by the platform", [](Proxies& p) { return told(p.buzzer->setBuzzerMode(-1, answer), answer); }, "0 -1", {}},
    {"getBuzzerMode", [](Proxies& p) { return told(p.buzzer->getBuzzerMode(answer), answer); }, "0 2", {}},
    {"setBuzzerUserControl", [](Proxies& p) { return told(p.buzzer->setBuzzerUserControl(1, answer), answer); }, "0 0", {}},
    {"setBuzzerOnTime", [](Proxies& p) { return told(p.buzzer->setBuzzerOnTime(300, answer), answer); }, "0 0", {}},
    {"setBuzzerOffTime", [](Proxies& p) { return told(p.buzzer->setBuzzerOffTime(200, answer), answer); }, "0 0", {}},
    {"saveBrightness", [](Proxies& p) { return told(p.backlight->saveBrightness(40, answer), answer); }, "0 0", {}},
    {"getBrightness", [](Proxies& p) { return told(p.backlight->getBrightness(answer), answer); }, "0 40", {}},
    {"getSystemInfo", [](Proxies& p) { systemInfo info = {}; const status_t s = p.systemInfo->getSystemInfo(info); return told(s, QString(QByteArray(reinterpret_cast<char*>(&info), sizeof info).toHex())); }, "0 0e031801234550414e454c0702574e0a", {}},
    {"read", [](Proxies& p) { const status_t s = p.seeprom->read(0x20, 3, bytes, answer); return told(s, QString::number(answer) + ' ' + bytes.toHex()); }, "0 0 202122", {}},
    {"readSlave", [](Proxies& p) { const status_t s = p.seeprom->readSlave(0x51, 0x10, 3, bytes, answer); return told(s, QString::number(answer) + ' ' + bytes.toHex()); }, "0 0 616263", {}},
    {"readSlave refused by the platform", [](Proxies& p) { const status_t s = p.seeprom->readSlave(0x10, 0, 3, bytes, answer); return told(s, QString::number(answer) + ' ' + bytes.toHex()); }, "0 -1 ", {}},
    {"getSysCounter", [](Proxies& p) { const status_t s = p.ovik->getSysCounter(answer); return told(s, answer >= 3600000); }, "0 1", {}},
    {"getBackLightCounter", [](Proxies& p) { const status_t s = p.ovik->getBackLightCounter(answer); return told(s, answer >= 2520000); }, "0 1", {}},
    {"setVolatileParameter", [](Proxies& p) { return told(p.ovik->setVolatileParameter("k", "v\u00fc", answer), answer); }, "0 0", {}},
    {"getVolatileParameter", [](Proxies& p) { const status_t s = p.ovik->getVolatileParameter("k", text); return told(s, text); }, "0 v\u00fc", {}},
    {"setSystemParameter", [](Proxies& p) { return told(p.ovik->setSystemParameter("k", "w", answer), answer); }, "0 0", {}},
    {"getSystemParameter", [](Proxies& p) { const status_t s = p.ovik->getSystemParameter("k", text); return told(s, text); }, "0 w", {}},
    {"getSystemParameter unknown", [](Proxies& p) { const status_t s = p.ovik->getSystemParameter("none", text); return told(s, text); }, "0 ", {}},
    {"getAllVolatileParametersJson", [](Proxies& p) { text = "x"; const status_t s = p.ovik->getAllVolatileParametersJson(text); return told(s, text); }, "0 {\"k\":\"v\u00fc\"}", {{"Local", "-8 "}}},
    {"getAllSystemParametersJson", [](Proxies& p) { text = "x"; const status_t s = p.ovik->getAllSystemParametersJson(text); return told(s, text.left(1)); }, "0 {", {{"Local", "-8 "}}},
    {"setSystemParametersJSON", [](Proxies& p) { answer = 77; return told(p.ovik->setSystemParametersJSON("", "{\"k\":\"z\"}", answer), answer); }, "0 0", {{"Local", "-8 0"}}},
    {"getSystemParameter after it", [](Proxies& p) { const status_t s = p.ovik->getSystemParameter("k", text); return told(s, text); }, "0 z", {{"Local", "0 w"}}},
    {"version", [](Proxies& p) { const status_t s = p.mainOs->version(bytes); return told(s, QString::number(bytes.size()) + ' ' + bytes.constData()); }, "0 20 1.4.2", {}},
    {"getStorageInfo", [](Proxies& p) { ovikStorageInfo info; const status_t s = p.storage->getStorageInfo("usb", info); return told(s, info.mountPoint); }, "0 /mnt/usb", {}},
    {"getStorageInfoJson", [](Proxies& p) { const status_t s = p.storage->getStorageInfoJson("usb", text); return told(s, text.contains("/mnt/usb") ? "usb" : text.contains("/mnt/data") ? "data" : text); }, "0 usb", {{"Local", "0 data"}}},
    {"availableMemory", [](Proxies& p) { qulonglong size = 0; const status_t s = p.sysStat->availableMemory(size); return told(s, QString::number(size)); }, "0 201326592", {}},
    {"setInterfaceConfigJson", [](Proxies& p) { return told(p.network->setInterfaceConfigJson("eth0", "{\"name\":\"contract\"}", answer), answer); }, "0 0", {}},
    {"setInterfaceConfigJson refused by the platform", [](Proxies& p) { return told(p.network->setInterfaceConfigJson("eth0", "no JSON", answer), answer); }, "0 -1", {}},
    {"getConfigJson before applying", [](Proxies& p) { const status_t s = p.network->getConfigJson(text); return told(s, text.contains("contract")); }, "0 0", {}},
    {"applyNewConfiguration", [](Proxies& p) { return told(p.network->applyNewConfiguration(answer), answer); }, "0 0", {}},
    {"getConfigJson", [](Proxies& p) { const status_t s = p.network->getConfigJson(text); return told(s, text.contains("contract")); }, "0 1", {}},
};
// clang-format on

class Contract : public testing::TestWithParam<Backend>
{
protected:
    int argc = 1;
    OvikApplication application{argc, nullptr}; // registers the records
};

TEST_P(Contract, EveryQuestionHasItsAnswer)
{
    const auto started = GetParam().start();
    Proxies proxies = started->proxies();
    for (const Question& question : questions) {
        const auto departure = question.departures.find(GetParam().name);
        const std::string& expected =
            departure == question.departures.end() ? question.expected : departure->second;
        EXPECT_EQ(question.ask(proxies), expected) << question.what;
    }
}

INSTANTIATE_TEST_SUITE_P(Backends, Contract, testing::ValuesIn(backends),
                         [](const auto& row) { return std::string(row.param.name); });
} // namespace
