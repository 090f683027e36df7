// The in-process backend alone, with the simulated panel's library. That library's environment
// variables select what it lacks.

#include "IProxy/IBacklightProxy.h"
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

#include "panel_sim/platform_services.h"
#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QMetaMethod>
#include <QPointer>

#include <cstring>
#include <dlfcn.h>

namespace
{
using Texts = std::vector<std::string>;

class LocalBackend : public testing::Test
{
protected:
    LocalBackend()
    {
        qRegisterMetaType<systemInfo>("systemInfo"); // the application object normally does this
        takeWarnings();
        takeDiagnostics();
    }

    int argc = 1;
    QCoreApplication application{argc, nullptr};
};

// --- Start-up ------------------------------------------------------------------------------------

TEST_F(LocalBackend, BeforeInitThereIsNothingAndShutdownIsHarmless)
{
    OVIKInterfaceLocal backend;
    EXPECT_FALSE(backend.isValid());
    EXPECT_EQ(backend.buzzerProxy(), nullptr);
    EXPECT_EQ(backend.networkManagerProxy(), nullptr);
    EXPECT_TRUE(backend.shutdown());
    EXPECT_TRUE(backend.shutdown());
    EXPECT_EQ(takeWarnings(), Texts());
    EXPECT_EQ(takeDiagnostics(), Texts());
}

TEST_F(LocalBackend, AWholeLibraryIsValidAndASecondInitCreatesNothing)
{
    OVIKInterfaceLocal backend;
    EXPECT_TRUE(backend.init());
    EXPECT_TRUE(backend.isValid());
    EXPECT_EQ(takeDiagnostics(), Texts{"Local interface loaded"});
    EXPECT_EQ(takeWarnings(), Texts());
    EXPECT_NE(dlsym(RTLD_DEFAULT, "OvikPluginFactory_getInstance"), nullptr)
        << "libraries loaded later can use its symbols";

    IBuzzerProxy* const buzzer = backend.buzzerProxy();
    EXPECT_TRUE(backend.init());
    EXPECT_EQ(backend.buzzerProxy(), buzzer);
    EXPECT_EQ(takeDiagnostics(), Texts());
}

TEST_F(LocalBackend, AfterShutdownItStartsAgain)
{
    OVIKInterfaceLocal backend;
    ASSERT_TRUE(backend.init());
    EXPECT_TRUE(backend.shutdown());
    EXPECT_FALSE(backend.isValid());
    EXPECT_EQ(backend.buzzerProxy(), nullptr);
    EXPECT_TRUE(backend.init());
    EXPECT_TRUE(backend.isValid());
}

TEST_F(LocalBackend, ALibraryWithoutFactoryIsWarnedOf)
{
    const Variable noFactory("OVIK_SIM_NO_FACTORY", "1");
    OVIKInterfaceLocal backend;
    EXPECT_FALSE(backend.init());
    EXPECT_FALSE(backend.isValid());
    EXPECT_EQ(takeWarnings(), Texts{"Can't get the getInstance function in so file"});
    EXPECT_EQ(takeDiagnostics(), Texts{"Can't get the getInstance function in so file"});
}

struct Facility {
    const char* instance;
    const char* warning;
    std::function<QObject*(OVIKInterfaceLocal&)> proxy;
};

// In the order in which the backend creates them.
const std::vector<Facility> facilities = {
    {"Buzzer", "m_buzzer not valid\n", [](auto& b) { return b.buzzerProxy(); }},
    {"Backlight", "m_backlight not valid\n", [](auto& b) { return b.backlightProxy(); }},
    {"SystemInfo", "m_systemInfo not valid\n", [](auto& b) { return b.systemInfoProxy(); }},
    {"I2CSEEPROM", "m_systemInfo not valid\n", [](auto& b) { return b.seepromProxy(); }},
    {"OVIK", "m_ovikProxy not valid\n", [](auto& b) { return b.ovikProxy(); }},
    {"MainOSInfo", "m_mainOs not valid\n", [](auto& b) { return b.mainOsProxy(); }},
    {"StorageMgr", "m_storageManager not valid\n", [](auto& b) { return b.storageManagerProxy(); }},
    {"SysStat", "m_sysStat not valid\n", [](auto& b) { return b.sysStatProxy(); }},
    {"NetworkManager", "m_networkManager not valid\n",
     [](auto& b) { return b.networkManagerProxy(); }},
};

/// The warnings about missing facilities, without Qt's warning about a missing connection.
Texts notValidWarnings()
{
    Texts texts;
    for (const std::string& text : takeWarnings()) {
        if (text.find("not valid") != std::string::npos)
            texts.push_back(text);
    }
    return texts;
}

TEST_F(LocalBackend, AMissingInstanceIsWarnedOfAndTheOthersStart)
{
    for (const Facility& missing : facilities) {
        const Variable variable("OVIK_SIM_MISSING", missing.instance);
        OVIKInterfaceLocal backend;
        EXPECT_TRUE(backend.init());
        EXPECT_FALSE(backend.isValid());
        EXPECT_EQ(notValidWarnings(), Texts{missing.warning});
        for (const Facility& facility : facilities)
            EXPECT_EQ(facility.proxy(backend) == nullptr,
                      strcmp(facility.instance, missing.instance) == 0)
                << facility.instance << " without " << missing.instance;
    }
}

TEST_F(LocalBackend, AnEmptyLibraryStartsAndWarnsOfEverythingInOrder)
{
    std::string all;
    Texts expected;
    for (const Facility& facility : facilities) {
        all += facility.instance + std::string(",");
        expected.push_back(facility.warning);
    }
    const Variable variable("OVIK_SIM_MISSING", all);
    OVIKInterfaceLocal backend;
    EXPECT_TRUE(backend.init());
    EXPECT_FALSE(backend.isValid());
    EXPECT_EQ(notValidWarnings(), expected);
    EXPECT_EQ(takeDiagnostics(), Texts{"Local interface loaded"});
}

TEST_F(LocalBackend, AReplacedProxyLivesUntilTheEventLoopsNextTurn)
{
    OVIKInterfaceLocal backend;
    {
        const Variable variable("OVIK_SIM_MISSING", "SysStat");
        ASSERT_TRUE(backend.init());
    }
    IBacklightProxy* const old = backend.backlightProxy();
    EXPECT_TRUE(backend.init());
    EXPECT_TRUE(backend.isValid());
    EXPECT_NE(backend.backlightProxy(), old);
    const QPointer<QObject> watched(old);
    int brightness = -1;
    EXPECT_EQ(old->getBrightness(brightness), 0);
    settle();
    EXPECT_FALSE(watched);
    EXPECT_EQ(backend.backlightProxy()->getBrightness(brightness), 0);
}

TEST_F(LocalBackend, AFailedRetryLeavesTheEarlierSetInUse)
{
    OVIKInterfaceLocal backend;
    {
        const Variable variable("OVIK_SIM_MISSING", "SysStat");
        ASSERT_TRUE(backend.init());
    }
    IBacklightProxy* const old = backend.backlightProxy();
    const Variable noFactory("OVIK_SIM_NO_FACTORY", "1");
    EXPECT_FALSE(backend.init());
    EXPECT_EQ(backend.backlightProxy(), old);
    int brightness = -1;
    EXPECT_EQ(old->getBrightness(brightness), 0);
}

TEST_F(LocalBackend, TheAccessorsAreSlotsInTheirOrder)
{
    const QMetaObject& meta = OVIKInterfaceLocal::staticMetaObject;
    Texts names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Slot);
        EXPECT_EQ(meta.method(i).access(), QMetaMethod::Public);
        names.push_back(meta.method(i).name().toStdString());
    }
    EXPECT_EQ(names, (Texts{"systemInfoProxy", "buzzerProxy", "backlightProxy", "seepromProxy",
                            "ovikProxy", "mainOsProxy", "storageManagerProxy", "sysStatProxy",
                            "networkManagerProxy"}));
}

// --- Proxies -------------------------------------------------------------------------------------

/// Records its calls; implements only what the proxies use.
class RecordingStorage : public IStorageManager
{
public:
    QString getUserSpaceMountPoint() override { return {}; }
    QString getUSBMountPoint() override { return {}; }
    QString getSDCardMountPoint() override { return {}; }
    QString getHMIInstallationFolder() override { return {}; }
    QString getStorageDeviceList() override { return {}; }
    QString getDynamicStorageDeviceList() override { return {}; }
    int isAppRunning(QString) override { return 0; }
    int getSecurityMarginInOSForFlash() override { return 0; }
    ovikStorageInfo getStorageInfo(QString storageName) override
    {
        name = storageName;
        ovikStorageInfo info;
        memset(&info, 0x5A, sizeof info);
        return info;
    }
    QString getStorageInfoJSON(QString storageName) override
    {
        name = storageName;
        return "{\"json\": true}";
    }
    ovikStorageInfo getShareInfo(QString, int) override { return {}; }

    QString name;
};
RecordingStorage* storageObject = nullptr;
QObject* storageFactory(const char* name)
{
    return strcmp(name, "StorageMgr") == 0 ? storageObject : nullptr;
}

TEST_F(LocalBackend, StorageIsAskedByACStringAndItsJsonForTheDataPartition)
{
    RecordingStorage object;
    storageObject = &object;
    StorageManagerProxyLocal proxy(storageFactory);
    ovikStorageInfo info;
    memset(&info, 0, sizeof info);
    EXPECT_EQ(proxy.getStorageInfo(QString::fromUtf8("\u00fc\0b", 4), info), 0);
    EXPECT_EQ(object.name, "\u00fc");
    ovikStorageInfo expected;
    memset(&expected, 0x5A, sizeof expected);
    EXPECT_EQ(memcmp(&info, &expected, sizeof info), 0) << "the whole record";

    QString json;
    EXPECT_EQ(proxy.getStorageInfoJson("usb", json), 0);
    EXPECT_EQ(object.name, "/mnt/data");
    EXPECT_EQ(json, "{\"json\": true}");
}

class RecordingNetwork : public INetworkManager
{
public:
    QString getConfigJSON(const QString& key) override
    {
        keyWasNull = key.isNull();
        return "{}";
    }
    QString getInterfaceConfig(const QString&) override { return {}; }
    int setInterfaceConfigJSON(const QString& interface, const QString& config) override
    {
        stored = interface + "=" + config;
        return -3;
    }
    int setConfigJSON(const QString&, const QString&, bool) override { return 0; }
    int resetConfiguration() override { return 0; }
    int applyNewConfiguration(bool async) override { return async ? 1 : 2; }
    int updateInterfaces(bool) override { return 0; }
    void interfaceStateNotification(const QString&, int) override {}

    bool keyWasNull = false;
    QString stored;
};
RecordingNetwork* networkObject = nullptr;
QObject* networkFactory(const char* name)
{
    return strcmp(name, "NetworkManager") == 0 ? networkObject : nullptr;
}

TEST_F(LocalBackend, TheNetworkIsAskedForTheWholeConfigurationAndAppliedSynchronously)
{
    RecordingNetwork object;
    networkObject = &object;
    NetworkManagerProxyLocal proxy(networkFactory);
    QString json;
    int answer = 0;
    EXPECT_EQ(proxy.getConfigJson(json), 0);
    EXPECT_EQ(json, "{}");
    EXPECT_TRUE(object.keyWasNull);
    EXPECT_EQ(proxy.setInterfaceConfigJson("eth0", "{}", answer), 0);
    EXPECT_EQ(answer, -3) << "the platform's own code is passed on";
    EXPECT_EQ(object.stored, "eth0={}");
    EXPECT_EQ(proxy.applyNewConfiguration(answer), 0);
    EXPECT_EQ(answer, 2);
}

/// Records its calls; returns values unlike any real panel.
class RecordingOvik : public SimOvik
{
public:
    using SimOvik::SimOvik;
    int setSystemParameter(const QString&, const QString&, bool doSync) override
    {
        synced = doSync;
        return -3;
    }
    int setSystemParametersJSON(const QString&, const QString&) override { return ++wholeSets; }
    QString getAllSystemParametersJSON() override { return ++wholeSets, "{}"; }
    QString getAllVolatileParametersJSON() override { return ++wholeSets, "{}"; }

    bool synced = false;
    int wholeSets = 0;
};
RecordingOvik* ovikObject = nullptr;
QObject* ovikFactory(const char* name) { return strcmp(name, "OVIK") == 0 ? ovikObject : nullptr; }

TEST_F(LocalBackend, ASystemParameterIsSetInSyncAndWholeSetsAreNotSupported)
{
    sim::Panel panel({}, 0);
    RecordingOvik object(panel);
    ovikObject = &object;
    OvikProxyLocal proxy(ovikFactory);
    int answer = 0;
    EXPECT_EQ(proxy.setSystemParameter("k", "v", answer), 0);
    EXPECT_EQ(answer, -3);
    EXPECT_TRUE(object.synced);

    QString json = "untouched";
    EXPECT_EQ(proxy.getAllSystemParametersJson(json), -8);
    EXPECT_EQ(json, "");
    json = "untouched";
    EXPECT_EQ(proxy.getAllVolatileParametersJson(json), -8);
    EXPECT_EQ(json, "");
    EXPECT_EQ(proxy.setSystemParametersJSON("k", "{}", answer), -8);
    EXPECT_EQ(answer, 0);
    EXPECT_EQ(object.wholeSets, 0) << "the platform is not asked";
}

// --- System information, in a thread of its own --------------------------------------------------

TEST_F(LocalBackend, SystemInformationComesFromItsThread)
{
    OVIKInterfaceLocal backend;
    ASSERT_TRUE(backend.init());
    systemInfo info;
    memset(&info, 0xEE, sizeof info);
    EXPECT_EQ(backend.systemInfoProxy()->getSystemInfo(info), 0);
    EXPECT_NE(info.day, 0xEE);
}

TEST_F(LocalBackend, AnObjectInTheCallersThreadIsNotAskedAndDoesNotHang)
{
    const Variable inCaller("OVIK_SIM_SYSTEMINFO_IN_CALLER", "1");
    OVIKInterfaceLocal backend;
    ASSERT_TRUE(backend.init());
    systemInfo info;
    memset(&info, 0xEE, sizeof info);
    EXPECT_EQ(backend.systemInfoProxy()->getSystemInfo(info), 0);
    EXPECT_EQ(info.day, 0xEE);
    EXPECT_EQ(info.hwDispID, 0xEE);
}

TEST_F(LocalBackend, TheSignalOfTheSystemInformationReachesTheObjectDirectly)
{
    const Variable inCaller("OVIK_SIM_SYSTEMINFO_IN_CALLER", "1");
    OVIKInterfaceLocal backend;
    ASSERT_TRUE(backend.init());
    auto* const proxy = qobject_cast<SystemInfoProxyLocal*>(backend.systemInfoProxy());
    ASSERT_NE(proxy, nullptr);
    // A caller that emits the signal gets the connected slot's result.
    EXPECT_NE(proxy->_getSystemInfo().day, 0);
}
} // namespace
