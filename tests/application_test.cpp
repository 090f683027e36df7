// The application object: its modes, and which backend's proxies are used after each switch.

#include "dbus_ovik/HWPluginInstanceProxyDbus.h"
#include "wrapper_ovik/ovikapplication.h"

#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <QMetaMethod>

#include <algorithm>
#include <cmath>

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
    ~Application() override { settle(); }

    void answerAll(FakePlatform& platform)
    {
        platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
        platform.answer("Leds.GetLedMode", replyWith("i", 1));
        platform.answer("ServiceManager.state", replyWith("i", 3));
    }

    status_t buzzer() { return app.getBuzzerMode().status; }
    status_t module() { return app.getHWPluginLedMode(0, 0).status; }
    status_t services() { return app.serviceState("s").status; }

    struct Opened : OvikApplication {
        using OvikApplication::m_HWPluginInstances;
        using OvikApplication::OvikApplication;
    };
    int argc = 1;
    Opened app{argc, nullptr};
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

TEST_F(Application, WithoutABackendTextsAndBytesAreEmpty)
{
    EXPECT_EQ(app.getVolatileParameter("k").value, QString(""));
    EXPECT_EQ(app.getStorageInfoJson("n").value, QByteArray(""));
    EXPECT_EQ(app.seepromRead(0, 1).value, QByteArray(""));
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

TEST_F(Application, ModeThreeAdoptsTheBusBackendAsItStands)
{
    // No backend was initialised before, so there is none to adopt.
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
            objects.erase("/SysStat"); // incomplete, so mode 2 initialises the backend again
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
        settle(); // deletes the replaced proxies
        EXPECT_EQ(buzzer(), 0);
        EXPECT_EQ(services(), 0);
        // Each adoption appends the two modules found.
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

TEST_F(Application, AFailingProxysStatusComesWithAnEmptyText)
{
    FakePlatform platform;
    platform.answer("OVIK.getVolatileParameter", replyError("com.wenu.OVIK.Failed"));
    ASSERT_EQ(app.setMode(2), 0);
    const StatusStringResp resp = app.getVolatileParameter("k");
    EXPECT_EQ(resp.status, -4);
    EXPECT_EQ(resp.value, "");
}

TEST_F(Application, AnInstanceWithoutChildrenAnswersMinusOneAndAnEmptyPlaceMinusTen)
{
    QDBusConnection bus = QDBusConnection::systemBus();
    HWPluginInstanceProxyDbus withoutChildren(bus, 1); // because there is no platform
    app.m_HWPluginInstances = {&withoutChildren, nullptr};
    EXPECT_EQ(app.getHWPluginIOMode(0, 0).status, -1);
    EXPECT_EQ(app.getHWPluginLedMode(0, 0).status, -1);
    EXPECT_EQ(app.getHWPluginIOMode(1, 0).status, -10);

    testing::internal::CaptureStdout();
    EXPECT_EQ(app.getHWPluginIO(0, 0, 1).status, -1);
    EXPECT_EQ(app.getHWPluginIO(1, 0, 1).status, -10);
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "OAPP: getHWPluginInput error -1\n");
}

TEST_F(Application, CheckDbusInDbusModeOnlySaysSo)
{
    FakePlatform platform;
    ASSERT_EQ(app.setMode(2), 0);
    takeDiagnostics();
    app.checkDbus();
    EXPECT_EQ(takeDiagnostics(), Texts{"try init DBUS now"});
}

TEST_F(Application, CheckDbusTriesAgainUntilItWorks)
{
    app.checkDbus();
    EXPECT_EQ(takeDiagnostics(), (Texts{"try init DBUS now", "try init DBUS not in DBUS mode",
                                        "dbus-debug connection success", "retry init DBUS later"}));
    FakePlatform platform;
    EXPECT_TRUE(spinUntil([&] { return app.getMode() == 2; }));
    EXPECT_EQ(takeDiagnostics(), (Texts{"try init DBUS now", "try init DBUS not in DBUS mode",
                                        "dbus-debug retrying after name qt_default_system_bus",
                                        "dbus-debug connection success", "init DBUS OK",
                                        "OVIK set mode from 0 to 3"}));
}

TEST_F(Application, CheckDbusWaitsForASecondAndNotMuchLonger)
{
    const auto start = std::chrono::steady_clock::now();
    app.checkDbus();
    // A busy machine can delay any single try, so use the quickest of a few.
    int tries = 0;
    double quickest = HUGE_VAL;
    while (tries < 5 && quickest >= 1500) {
        takeDiagnostics();
        const auto last = std::chrono::steady_clock::now();
        ASSERT_TRUE(spinUntil([] { return !takeDiagnostics().empty(); }));
        quickest = std::min(quickest, millisecondsSince(last));
        ++tries;
    }
    EXPECT_GE(millisecondsSince(start), 1000 * tries); // Qt's precise timers never fire early
    EXPECT_LT(quickest, 1500);
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

// --- Every switch after every other --------------------------------------------------------------

/// The backend that answers for a facility.
enum Source { None, Local, Dbus };

/// The expected state of the application after the switches so far.
struct Expected {
    bool busThere;
    bool libraryThere;
    int mode = 0;
    Source buzzer = None;
    Source services = None;
    Source modules = None;
    bool busInitialised = false;

    int switchTo(int to)
    {
        switch (to) {
        case 0:
            return none();
        case 1:
            if (!libraryThere)
                return -6;
            mode = 1;
            buzzer = Local; // the service manager and modules remain
            return 0;
        case 2:
            busInitialised |= busThere;
            return busThere ? bus() : -6;
        case 3:
            return bus();
        case 5:
            busInitialised |= busThere;
            return busThere ? bus() : none();
        default:
            return -7;
        }
    }

private:
    int none()
    {
        mode = 0;
        buzzer = services = None; // the modules remain
        return 0;
    }
    int bus()
    {
        mode = 2;
        buzzer = services = modules = busInitialised ? Dbus : None;
        return 0;
    }
};

class Switches : public testing::TestWithParam<std::tuple<bool, bool>>
{
protected:
    Switches()
    {
        theBus();
        if (!std::get<1>(GetParam()))
            noFactory = std::make_unique<Variable>("OVIK_SIM_NO_FACTORY", "1");
    }

    std::unique_ptr<Variable> noFactory;

    /// How many of the facilities common to both backends are present.
    static int served(OvikApplication& app)
    {
        const status_t statuses[] = {
            app.getBuzzerMode().status,        app.getBrightness().status,
            app.getSystemInfo().status,        app.seepromRead(0, 1).status,
            app.getSysCounter().status,        app.mainOsVersion().status,
            app.getStorageInfoJson("").status, app.getAvailableMemory().status,
            app.getNetworkConfigJson().status,
        };
        return int(std::count_if(std::begin(statuses), std::end(statuses),
                                 [](status_t status) { return status != OVIK_NO_PLATFORM; }));
    }

    /// On the bus, the buzzer has a mode that the library's buzzer never has.
    static Source source(const StatusIntResp& resp)
    {
        if (resp.status != 0)
            return None;
        return resp.value == 42 ? Dbus : Local;
    }
};

INSTANTIATE_TEST_SUITE_P(Platforms, Switches, testing::Combine(testing::Bool(), testing::Bool()),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param) ? "Bus" : "NoBus") +
                                    (std::get<1>(row.param) ? "Library" : "NoLibrary");
                         });

TEST_P(Switches, LeaveThePointersThatTheyShould)
{
    const auto [busThere, libraryThere] = GetParam();
    FakePlatform platform(FakePlatform::wholePanel(), busThere);
    for (const char* member : {"Buzzer.GetBuzzerMode", "ServiceManager.state", "Leds.GetLedMode"})
        platform.answer(member, replyWith("i", 42));

    testing::internal::CaptureStdout(); // discards the lines about illegal modes
    for (int first = -1; first <= 7; ++first) {
        for (int second = -1; second <= 7; ++second) {
            int argc = 1;
            OvikApplication app(argc, nullptr);
            Expected expected{busThere, libraryThere};
            for (const int mode : {first, second}) {
                const int status = expected.switchTo(mode);
                EXPECT_EQ(app.setMode(mode), status) << first << ' ' << second;
                EXPECT_EQ(app.getMode(), expected.mode) << first << ' ' << second;
                EXPECT_EQ(source(app.getBuzzerMode()), expected.buzzer) << first << ' ' << second;
                EXPECT_EQ(served(app), expected.buzzer == None ? 0 : 9) << first << ' ' << second;
                EXPECT_EQ(source(app.serviceState("s")), expected.services)
                    << first << ' ' << second;
                EXPECT_EQ(source(app.getHWPluginLedMode(0, 0)), expected.modules)
                    << first << ' ' << second;
            }
            settle();
        }
    }
    testing::internal::GetCapturedStdout();
}

TEST_F(Application, CheckDbusFromTheInProcessModeChangesOver)
{
    FakePlatform platform;
    platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 42));
    ASSERT_EQ(app.setMode(1), 0);
    EXPECT_EQ(app.getBuzzerMode().value, 0);
    EXPECT_EQ(services(), -1);
    app.checkDbus();
    EXPECT_EQ(app.getMode(), 2);
    EXPECT_EQ(app.getBuzzerMode().value, 42);
}

TEST_F(Application, ASecondAdoptionOfAPartialLibraryServesAndDanglesNowhere)
{
    auto missing = std::make_unique<Variable>("OVIK_SIM_MISSING", "SysStat");
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(app.setMode(1), 0);
        settle(); // deletes the replaced proxies
        EXPECT_EQ(buzzer(), 0);
        EXPECT_EQ(app.getAvailableMemory().status, -1);
    }
    // A switch fails half-way because the library has no factory.
    {
        const Variable noFactory("OVIK_SIM_NO_FACTORY", "1");
        EXPECT_EQ(app.setMode(1), -6);
        EXPECT_EQ(app.getMode(), 1);
        EXPECT_EQ(buzzer(), 0);
    }
    missing.reset();
    ASSERT_EQ(app.setMode(1), 0);
    EXPECT_EQ(app.getAvailableMemory().status, 0);
}
} // namespace
