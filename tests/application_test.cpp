// The application object: its modes, and which backend's proxies serve after each switch.

#include "wrapper_ovik/ovikapplication.h"

#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <QMetaMethod>

namespace
{
using Texts = std::vector<std::string>;

class Application : public testing::Test
{
protected:
    Application()
    {
        theBus();
        takeWarnings();
        takeDiagnostics();
    }

    /// A panel whose getters answer by name.
    void answerAll(FakePlatform& platform)
    {
        platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
        platform.answer("Leds.GetLedMode", replyWith("i", 1));
        platform.answer("ServiceManager.state", replyWith("i", 3));
    }

    status_t buzzer() { return app.getBuzzerMode().status; }
    status_t module() { return app.getHWPluginLedMode(0, 0).status; }
    status_t services() { return app.serviceState("s").status; }

    int argc = 1;
    OvikApplication app{argc, nullptr};
};

TEST_F(Application, StartsWithoutABackend)
{
    EXPECT_EQ(app.getMode(), 0);
    EXPECT_EQ(app.doSomething(), 0);
    EXPECT_EQ(buzzer(), -1);
    EXPECT_EQ(module(), -10);
    EXPECT_EQ(services(), -1);
    EXPECT_EQ(takeDiagnostics(), Texts()) << "no bus is asked";
}

TEST_F(Application, TheRecordsAreMetatypesOfTheirNames)
{
    EXPECT_NE(QMetaType::type("systemInfo"), QMetaType::UnknownType);
    EXPECT_NE(QMetaType::type("partitionInfo"), QMetaType::UnknownType);
    EXPECT_NE(QMetaType::type("ovikStorageInfo"), QMetaType::UnknownType);
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<StatusIntResp>()), "StatusIntResp");
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<StatusBoolResp>()), "StatusBoolResp");
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<StatusByteArrayResp>()), "StatusByteArrayResp");
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<StatusStringResp>()), "StatusStringResp");
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<StatusUint64Resp>()), "StatusUint64Resp");
    EXPECT_STREQ(QMetaType::typeName(qMetaTypeId<SystemInfoResp>()), "SystemInfoResp");
}

TEST_F(Application, TheSlotsStandInTheirOrder)
{
    const QMetaObject& meta = OvikApplication::staticMetaObject;
    Texts names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names.push_back(meta.method(i).name().toStdString());
    EXPECT_EQ(names, (Texts{"checkDbus",
                            "setMode",
                            "getMode",
                            "doSomething",
                            "getBuzzerMode",
                            "setBuzzerMode",
                            "setBuzzerUserControl",
                            "setBuzzerOnTime",
                            "setBuzzerOffTime",
                            "getBrightness",
                            "saveBrightness",
                            "getSystemInfo",
                            "seepromRead",
                            "seepromReadSlave",
                            "getSysCounter",
                            "getBackLightCounter",
                            "getVolatileParameter",
                            "getAllVolatileParametersJson",
                            "getSystemParameter",
                            "getAllSystemParametersJson",
                            "setVolatileParameter",
                            "setSystemParameter",
                            "setSystemParametersJson",
                            "mainOsVersion",
                            "getStorageInfoJson",
                            "getAvailableMemory",
                            "getNetworkConfigJson",
                            "setInterfaceConfigJson",
                            "applyNewConfiguration",
                            "getHWPluginIOMode",
                            "getHWPluginIO",
                            "setHWPluginIO",
                            "getHWPluginLedMode",
                            "setHWPluginLedUserControl",
                            "setHWPluginLedValue",
                            "setHWPluginLedOnTime",
                            "setHWPluginLedOffTime",
                            "setHWPluginLedFlash",
                            "setHWPluginLedBlink",
                            "serviceStart",
                            "serviceStop",
                            "serviceRestart",
                            "serviceReload",
                            "serviceEnable",
                            "serviceDisable",
                            "serviceEnabled",
                            "serviceApply",
                            "serviceControlled",
                            "serviceState",
                            "serviceCommand"}));
}

TEST_F(Application, DbusModeServesFromTheBus)
{
    FakePlatform platform;
    answerAll(platform);
    EXPECT_EQ(app.setMode(2), 0);
    EXPECT_EQ(app.getMode(), 2);
    EXPECT_EQ(app.getBuzzerMode().value, 2);
    EXPECT_EQ(app.getHWPluginLedMode(0, 0).value, 1);
    EXPECT_EQ(app.serviceState("s").value, 3);
    EXPECT_EQ(takeDiagnostics(),
              (Texts{"OVIK set mode from 0 to 2", "dbus-debug connection success"}));
}

TEST_F(Application, NoBackendClearsAllButTheModules)
{
    FakePlatform platform;
    answerAll(platform);
    ASSERT_EQ(app.setMode(2), 0);
    EXPECT_EQ(app.setMode(0), 0);
    EXPECT_EQ(app.getMode(), 0);
    EXPECT_EQ(buzzer(), -1);
    EXPECT_EQ(services(), -1);
    EXPECT_EQ(module(), 0);
    EXPECT_EQ(app.getHWPluginLedMode(0, 0).value, 1);
}

TEST_F(Application, EverySlotOfAFacilityAnswersMinusOneWithoutABackend)
{
    EXPECT_EQ(app.setBuzzerMode(1).status, -1);
    EXPECT_EQ(app.setBuzzerUserControl(1).status, -1);
    EXPECT_EQ(app.setBuzzerOnTime(1).status, -1);
    EXPECT_EQ(app.setBuzzerOffTime(1).status, -1);
    EXPECT_EQ(app.getBrightness().status, -1);
    EXPECT_EQ(app.saveBrightness(1).status, -1);
    EXPECT_EQ(app.getSystemInfo().status, -1);
    EXPECT_EQ(app.seepromRead(0, 1).status, -1);
    EXPECT_EQ(app.seepromReadSlave(0, 0, 1).status, -1);
    EXPECT_EQ(app.getVolatileParameter("k").status, -1);
    EXPECT_EQ(app.getVolatileParameter("k").value, "");
    EXPECT_EQ(app.mainOsVersion().status, -1);
    EXPECT_EQ(app.getStorageInfoJson("n").status, -1);
    EXPECT_EQ(app.getAvailableMemory().status, -1);
    EXPECT_EQ(app.getNetworkConfigJson().status, -1);
    EXPECT_EQ(app.serviceEnabled("s").status, -1);
    EXPECT_EQ(app.serviceCommand("s", "c", "o", nullptr).status, -1);
}

TEST_F(Application, ModeThreeAdoptsTheBusBackendAsItStands)
{
    // Nothing has initialised it, so there is nothing to adopt.
    EXPECT_EQ(app.setMode(3), 0);
    EXPECT_EQ(app.getMode(), 2);
    EXPECT_EQ(buzzer(), -1);

    FakePlatform platform;
    answerAll(platform);
    ASSERT_EQ(app.setMode(2), 0);
    ASSERT_EQ(app.setMode(0), 0);
    EXPECT_EQ(app.setMode(3), 0);
    EXPECT_EQ(app.getMode(), 2);
    EXPECT_EQ(buzzer(), 0);
}

TEST_F(Application, AFailingDbusModeChangesNothingButModeFiveFallsBackToNone)
{
    {
        FakePlatform platform([] {
            auto objects = FakePlatform::wholePanel();
            objects.erase("/SysStat"); // not valid, so that it is initialised again
            return objects;
        }());
        answerAll(platform);
        ASSERT_EQ(app.setMode(2), 0);
    }
    EXPECT_EQ(app.setMode(2), -6);
    EXPECT_EQ(app.getMode(), 2);
    EXPECT_EQ(buzzer(), -4) << "the proxies stay, and the platform is gone";
    EXPECT_EQ(module(), 0);
    EXPECT_EQ(services(), -4);

    EXPECT_EQ(app.setMode(5), 0);
    EXPECT_EQ(app.getMode(), 0);
    EXPECT_EQ(buzzer(), -1);
    EXPECT_EQ(services(), -1);

    FakePlatform back;
    answerAll(back);
    EXPECT_EQ(app.setMode(5), 0);
    EXPECT_EQ(app.getMode(), 2);
    EXPECT_EQ(buzzer(), 0);
}

TEST_F(Application, ASecondAdoptionOfAPartialPanelServesAndDanglesNowhere)
{
    auto objects = FakePlatform::wholePanel();
    objects.erase("/SysStat");
    FakePlatform platform(objects);
    answerAll(platform);
    for (int i = 1; i <= 3; ++i) {
        ASSERT_EQ(app.setMode(2), 0);
        EXPECT_EQ(buzzer(), 0);
        EXPECT_EQ(services(), 0);
        // The list of modules grows by the two found again.
        for (unsigned int place = 0; place < 2u * unsigned(i); ++place)
            EXPECT_EQ(app.getHWPluginLedMode(place, 0).value, 1);
        EXPECT_EQ(app.getHWPluginLedMode(2u * unsigned(i), 0).status, -10);
        ASSERT_EQ(app.setMode(0), 0);
        EXPECT_EQ(module(), 0);
    }
}

TEST_F(Application, AModuleWithoutSensorsObjectAnswersMinusOneInItsValue)
{
    auto objects = FakePlatform::wholePanel();
    objects.erase("/HWPlugin/0/Sensors");
    FakePlatform platform(objects);
    ASSERT_EQ(app.setMode(2), 0);
    const StatusIntResp mode = app.getHWPluginIOMode(0, 0);
    EXPECT_EQ(mode.status, 0);
    EXPECT_EQ(mode.value, -1);
    EXPECT_EQ(app.getHWPluginIOMode(2, 0).status, -10);
}

TEST_F(Application, CheckDbusInDbusModeOnlySaysSo)
{
    FakePlatform platform;
    ASSERT_EQ(app.setMode(2), 0);
    takeDiagnostics();
    app.checkDbus();
    EXPECT_EQ(takeDiagnostics(), Texts{"try init DBUS now"});
}

TEST_F(Application, CheckDbusTriesAgainAfterASecondUntilItWorks)
{
    app.checkDbus();
    EXPECT_EQ(takeDiagnostics(), (Texts{"try init DBUS now", "try init DBUS not in DBUS mode",
                                        "dbus-debug connection success", "retry init DBUS later"}));
    FakePlatform platform;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(spinUntil([&] { return app.getMode() == 2; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 900ms);
    EXPECT_EQ(takeDiagnostics(), (Texts{"try init DBUS now", "try init DBUS not in DBUS mode",
                                        "dbus-debug retrying after name qt_default_system_bus",
                                        "dbus-debug connection success", "init DBUS OK",
                                        "OVIK set mode from 0 to 3"}));
}

TEST_F(Application, EepromAddressesAreTheirLowByte)
{
    FakePlatform platform;
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, "x"));
    ASSERT_EQ(app.setMode(2), 0);
    platform.takeCalls();
    EXPECT_EQ(app.seepromRead(0x1A5, 1).value, "x");
    EXPECT_EQ(platform.takeCalls(), Texts{"/I2CSEEPROM com.wenu.OVIK.I2CSEEPROM.read(yu) 165 1"});
}
} // namespace
