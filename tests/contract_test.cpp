// The common contract of all backends: each gets the same questions over the same simulated panel
// and must give the same answers. A row lists the intended differences.

#include "IProxy/IBacklightProxy.h"
#include "IProxy/IBuzzerProxy.h"
#include "IProxy/IMainOsProxy.h"
#include "IProxy/INetworkManagerProxy.h"
#include "IProxy/IOvikProxy.h"
#include "IProxy/ISeepromProxy.h"
#include "IProxy/IServiceManagerProxy.h"
#include "IProxy/IStorageManagerProxy.h"
#include "IProxy/ISysStatProxy.h"
#include "IProxy/ISystemInfoProxy.h"
#include "dbus_ovik/BacklightProxyDbus.h"
#include "dbus_ovik/BuzzerProxyDbus.h"
#include "dbus_ovik/MainOsProxyDbus.h"
#include "dbus_ovik/NetworkManagerProxyDbus.h"
#include "dbus_ovik/OVIKInterfaceDbus.h"
#include "dbus_ovik/OvikProxyDbus.h"
#include "dbus_ovik/SeepromProxyDbus.h"
#include "dbus_ovik/StorageManagerProxyDbus.h"
#include "dbus_ovik/SysStatProxyDbus.h"
#include "dbus_ovik/SystemInfoProxyDbus.h"
#include "local_ovik/BacklightProxyLocal.h"
#include "local_ovik/BuzzerProxyLocal.h"
#include "local_ovik/MainOsProxyLocal.h"
#include "local_ovik/NetworkManagerProxyLocal.h"
#include "local_ovik/OVIKInterfaceLocal.h"
#include "local_ovik/OvikProxyLocal.h"
#include "local_ovik/SeepromProxyLocal.h"
#include "local_ovik/StorageManagerProxyLocal.h"
#include "local_ovik/SysStatProxyLocal.h"
#include "local_ovik/SystemInfoProxyLocal.h"
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

/// A started backend with its own simulated panel, or proxies without the platform's objects.
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
        panel = std::make_unique<Process>(commandOf(OVIK_PANEL_SIM_PATH));
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

class DbusAbsent : public Started
{
public:
    Proxies proxies() override
    {
        return {nullptr, &systemInfo, &buzzer,  &backlight, &seeprom,
                &ovik,   &mainOs,     &storage, &sysStat,   &network};
    }

private:
    QDBusConnection bus = (theBus(), QDBusConnection::systemBus());
    FakePlatform platform{std::map<std::string, std::string>()};
    SystemInfoProxyDbus systemInfo{bus};
    BuzzerProxyDbus buzzer{bus};
    BacklightProxyDbus backlight{bus};
    SeepromProxyDbus seeprom{bus};
    OvikProxyDbus ovik{bus};
    MainOsProxyDbus mainOs{bus};
    StorageManagerProxyDbus storage{bus};
    SysStatProxyDbus sysStat{bus};
    NetworkManagerProxyDbus network{bus};
};

class LocalAbsent : public Started
{
public:
    Proxies proxies() override
    {
        return {nullptr, &systemInfo, &buzzer,  &backlight, &seeprom,
                &ovik,   &mainOs,     &storage, &sysStat,   &network};
    }

private:
    static QObject* nothing(const char*) { return nullptr; }

    SystemInfoProxyLocal systemInfo{nothing};
    BuzzerProxyLocal buzzer{nothing};
    BacklightProxyLocal backlight{nothing};
    SeepromProxyLocal seeprom{nothing};
    OvikProxyLocal ovik{nothing};
    MainOsProxyLocal mainOs{nothing};
    StorageManagerProxyLocal storage{nothing};
    SysStatProxyLocal sysStat{nothing};
    NetworkManagerProxyLocal network{nothing};
};

struct Backend {
    const char* name;
    std::unique_ptr<Started> (*start)();
    std::unique_ptr<Started> (*absent)();
};

template <class Kind>
std::unique_ptr<Started> make()
{
    return std::make_unique<Kind>();
}

const Backend backends[] = {
    {"Dbus", make<DbusStarted>, make<DbusAbsent>},
    {"Local", make<LocalStarted>, make<LocalAbsent>},
};

/// An answer as text: the status and the value.
std::string told(status_t status, const QString& value)
{
    return QString("%1 %2").arg(status).arg(value).toStdString();
}
/// A reference, because the call in the first argument sets the value.
std::string told(status_t status, const int& value) { return told(status, QString::number(value)); }

int answer;
QString text;
QByteArray bytes;

struct Question {
    const char* what;
    std::string (*ask)(Proxies&);
    std::string expected;
    std::map<std::string, std::string> departures; ///< other expected answers, by backend
};

// In this order, since later questions depend on values set by earlier ones.
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
    ~Contract() override { settle(); }

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

TEST_P(Contract, AProxyWithoutItsObjectAnswersMinusOneAndTouchesNothing)
{
    const auto absent = GetParam().absent();
    const Proxies p = absent->proxies();
    int i = -77;
    qulonglong u = 77;
    QString s = "untouched";
    QByteArray y = "untouched";
    systemInfo info;
    ovikStorageInfo storage;
    memset(&info, 0xEE, sizeof info);
    memset(&storage, 0xEE, sizeof storage);

    EXPECT_FALSE(p.buzzer->isValid());
    EXPECT_EQ(p.buzzer->setBuzzerMode(1, i), -1);
    EXPECT_EQ(p.buzzer->getBuzzerMode(i), -1);
    EXPECT_EQ(p.buzzer->setBuzzerUserControl(1, i), -1);
    EXPECT_EQ(p.buzzer->setBuzzerOnTime(1, i), -1);
    EXPECT_EQ(p.buzzer->setBuzzerOffTime(1, i), -1);
    EXPECT_FALSE(p.backlight->isValid());
    EXPECT_EQ(p.backlight->getBrightness(i), -1);
    EXPECT_EQ(p.backlight->saveBrightness(1, i), -1);
    EXPECT_FALSE(p.systemInfo->isValid());
    EXPECT_EQ(p.systemInfo->getSystemInfo(info), -1);
    EXPECT_FALSE(p.seeprom->isValid());
    EXPECT_EQ(p.seeprom->read(0, 1, y, i), -1);
    EXPECT_EQ(p.seeprom->readSlave(0, 0, 1, y, i), -1);
    EXPECT_FALSE(p.ovik->isValid());
    EXPECT_EQ(p.ovik->getSysCounter(i), -1);
    EXPECT_EQ(p.ovik->getBackLightCounter(i), -1);
    EXPECT_EQ(p.ovik->getVolatileParameter("k", s), -1);
    EXPECT_EQ(p.ovik->getSystemParameter("k", s), -1);
    EXPECT_EQ(p.ovik->getAllVolatileParametersJson(s), -1);
    EXPECT_EQ(p.ovik->getAllSystemParametersJson(s), -1);
    EXPECT_EQ(p.ovik->setVolatileParameter("k", "v", i), -1);
    EXPECT_EQ(p.ovik->setSystemParameter("k", "v", i), -1);
    EXPECT_EQ(p.ovik->setSystemParametersJSON("k", "j", i), -1);
    EXPECT_FALSE(p.mainOs->isValid());
    EXPECT_EQ(p.mainOs->version(y), -1);
    EXPECT_FALSE(p.storage->isValid());
    EXPECT_EQ(p.storage->getStorageInfo("n", storage), -1);
    EXPECT_EQ(p.storage->getStorageInfoJson("n", s), -1);
    EXPECT_FALSE(p.sysStat->isValid());
    EXPECT_EQ(p.sysStat->availableMemory(u), -1);
    EXPECT_FALSE(p.network->isValid());
    EXPECT_EQ(p.network->getConfigJson(s), -1);
    EXPECT_EQ(p.network->setInterfaceConfigJson("i", "c", i), -1);
    EXPECT_EQ(p.network->applyNewConfiguration(i), -1);

    EXPECT_EQ(i, -77);
    EXPECT_EQ(u, 77u);
    EXPECT_EQ(s, "untouched");
    EXPECT_EQ(y, "untouched");
    EXPECT_EQ(info.day, 0xEE);
    EXPECT_EQ(storage.accessFlag, 0xEEEEEEEEu);
}

INSTANTIATE_TEST_SUITE_P(Backends, Contract, testing::ValuesIn(backends),
                         [](const auto& row) { return std::string(row.param.name); });
} // namespace
