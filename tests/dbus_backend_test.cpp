// The D-Bus backend alone: its start-up, presence of objects, its proxies and the records.

#include "IProxy/IMainOsProxy.h"
#include "dbus_ovik/BacklightProxyDbus.h"
#include "dbus_ovik/BuzzerProxyDbus.h"
#include "dbus_ovik/HWPluginInstanceProxyDbus.h"
#include "dbus_ovik/MainOsProxyDbus.h"
#include "dbus_ovik/NetworkManagerProxyDbus.h"
#include "dbus_ovik/OVIKInterfaceDbus.h"
#include "dbus_ovik/OvikProxyDbus.h"
#include "dbus_ovik/SeepromProxyDbus.h"
#include "dbus_ovik/ServiceManagerProxyDbus.h"
#include "dbus_ovik/StorageManagerProxyDbus.h"
#include "dbus_ovik/SysStatProxyDbus.h"
#include "dbus_ovik/SystemInfoProxyDbus.h"

#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusMetaType>
#include <QPointer>

#include <csignal>
#include <cstring>
#include <iterator>
#include <thread>

namespace
{
using Texts = std::vector<std::string>;

const Texts notFound = {"Cannot find dbus node in system bus. Fallback to use session bus"};

class DbusBackend : public testing::Test
{
protected:
    DbusBackend()
    {
        theBus();
        qDBusRegisterMetaType<ovikStorageInfo>(); // the application object normally does this
        // Qt delivers signals of a new connection from the next turn of the loop on. This
        // application could end before that turn, so run it now.
        QDBusConnection::systemBus();
        QCoreApplication::processEvents();
        takeWarnings();
        takeDiagnostics();
    }
    ~DbusBackend() override { settle(); }

    int argc = 1;
    QCoreApplication application{argc, nullptr};
};

/// A backend on a platform that lacks the objects in @p missing.
struct Adopted {
    explicit Adopted(const std::vector<std::string>& missing = {})
    {
        auto objects = FakePlatform::wholePanel();
        for (const std::string& path : missing)
            objects.erase(path);
        platform = std::make_unique<FakePlatform>(objects);
        EXPECT_TRUE(backend.init());
        platform->takeCalls();
    }

    std::unique_ptr<FakePlatform> platform;
    OVIKInterfaceDbus backend;
};

// --- Start-up ------------------------------------------------------------------------------------

TEST_F(DbusBackend, BeforeInitThereIsNothingAndShutdownIsHarmless)
{
    OVIKInterfaceDbus backend;
    EXPECT_FALSE(backend.isValid());
    EXPECT_EQ(backend.buzzerProxy(), nullptr);
    EXPECT_EQ(backend.serviceManagerProxy(), nullptr);
    EXPECT_TRUE(backend.HWPluginInstanceProxy().isEmpty());
    EXPECT_TRUE(backend.shutdown());
    EXPECT_TRUE(backend.shutdown());
    EXPECT_EQ(takeDiagnostics(), Texts());
    EXPECT_EQ(takeWarnings(), Texts());
}

TEST_F(DbusBackend, AWholePanelIsValidWithItsModulesInSlotOrder)
{
    Adopted adopted;
    OVIKInterfaceDbus& backend = adopted.backend;
    EXPECT_TRUE(backend.isValid());
    EXPECT_TRUE(backend.systemInfoProxy()->isValid());
    EXPECT_TRUE(backend.buzzerProxy()->isValid());
    EXPECT_TRUE(backend.backlightProxy()->isValid());
    EXPECT_TRUE(backend.seepromProxy()->isValid());
    EXPECT_TRUE(backend.ovikProxy()->isValid());
    EXPECT_TRUE(backend.mainOsProxy()->isValid());
    EXPECT_TRUE(backend.storageManagerProxy()->isValid());
    EXPECT_TRUE(backend.sysStatProxy()->isValid());
    EXPECT_TRUE(backend.networkManagerProxy()->isValid());
    EXPECT_TRUE(backend.serviceManagerProxy()->isValid());

    const auto modules = backend.HWPluginInstanceProxy();
    ASSERT_EQ(modules.size(), 2);
    EXPECT_EQ(modules[0]->getSlot(), 0);
    EXPECT_EQ(modules[1]->getSlot(), 2);
    EXPECT_TRUE(modules[1]->isValid());
    EXPECT_EQ(takeDiagnostics(), Texts{"dbus-debug connection success"});
    EXPECT_EQ(takeWarnings(),
              (Texts{"HWPluginInstance not valid\n", "HWPluginInstance not valid\n"}));
}

TEST_F(DbusBackend, InitOfAValidBackendDoesNotTouchTheBus)
{
    Adopted adopted;
    IBuzzerProxy* const buzzer = adopted.backend.buzzerProxy();
    const int introspections = adopted.platform->introspections();
    takeDiagnostics();
    theBus().signal(SIGSTOP); // a call would time out
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(adopted.backend.init());
    EXPECT_LT(std::chrono::steady_clock::now() - start, patienceFactor * 4s);
    theBus().signal(SIGCONT);
    EXPECT_EQ(adopted.platform->introspections(), introspections);
    EXPECT_EQ(adopted.backend.buzzerProxy(), buzzer);
    EXPECT_EQ(takeDiagnostics(), Texts());
}

TEST_F(DbusBackend, WithoutTheServiceEveryTryAfterTheFirstOpensAConnectionOfItsOwn)
{
    OVIKInterfaceDbus backend;
    EXPECT_FALSE(backend.init());
    EXPECT_EQ(takeWarnings(), notFound);
    EXPECT_EQ(takeDiagnostics(), Texts{"dbus-debug connection success"});

    EXPECT_FALSE(backend.init());
    EXPECT_EQ(takeWarnings(), notFound);
    EXPECT_EQ(takeDiagnostics(), (Texts{"dbus-debug retrying after name qt_default_system_bus",
                                        "dbus-debug connection success"}));

    const auto now = static_cast<long>(time(nullptr));
    EXPECT_FALSE(backend.init());
    const std::string line = takeDiagnostics().at(0);
    const std::string start = "dbus-debug retrying after name ovik_";
    ASSERT_EQ(line.substr(0, start.size()), start);
    EXPECT_NEAR(static_cast<double>(std::stol(line.substr(start.size()))), static_cast<double>(now),
                5);

    FakePlatform platform;
    EXPECT_TRUE(backend.init());
    EXPECT_TRUE(backend.isValid());
}

TEST_F(DbusBackend, AfterShutdownItIsLikeNewAndStartsAgain)
{
    Adopted adopted;
    EXPECT_TRUE(adopted.backend.shutdown());
    EXPECT_FALSE(adopted.backend.isValid());
    EXPECT_EQ(adopted.backend.buzzerProxy(), nullptr);
    EXPECT_TRUE(adopted.backend.HWPluginInstanceProxy().isEmpty());
    EXPECT_TRUE(adopted.backend.init());
    EXPECT_TRUE(adopted.backend.isValid());
    EXPECT_EQ(adopted.backend.HWPluginInstanceProxy().size(), 2);
}

struct Facility {
    const char* path;
    const char* warning;
    std::function<QObject*(OVIKInterfaceDbus&)> proxy;
};

// In the order in which the backend creates them.
const std::vector<Facility> facilities = {
    {"/Buzzer", "m_buzzer not valid\n", [](auto& b) { return b.buzzerProxy(); }},
    {"/Backlight", "m_backlight not valid\n", [](auto& b) { return b.backlightProxy(); }},
    {"/SystemInfo", "m_systemInfo not valid\n", [](auto& b) { return b.systemInfoProxy(); }},
    {"/I2CSEEPROM", "m_seeprom not valid\n", [](auto& b) { return b.seepromProxy(); }},
    {"/", "m_ovikProxy not valid\n", [](auto& b) { return b.ovikProxy(); }},
    {"/MainOSInfo", "m_mainOs not valid\n", [](auto& b) { return b.mainOsProxy(); }},
    {"/StorageMgr", "m_storageManager not valid\n",
     [](auto& b) { return b.storageManagerProxy(); }},
    {"/SysStat", "m_sysStat not valid\n", [](auto& b) { return b.sysStatProxy(); }},
    {"/NetworkManager", "m_networkManager not valid\n",
     [](auto& b) { return b.networkManagerProxy(); }},
    {"/ServiceManager", "m_serviceManager not valid\n",
     [](auto& b) { return b.serviceManagerProxy(); }},
};

TEST_F(DbusBackend, ShutdownDeletesTheProxiesInAFixedOrder)
{
    Adopted adopted;
    Texts deleted;
    const auto watch = [&](QObject* proxy, const std::string& name) {
        QObject::connect(proxy, &QObject::destroyed, [&, name] { deleted.push_back(name); });
    };
    for (auto* module : adopted.backend.HWPluginInstanceProxy())
        watch(module, "/HWPlugin/" + std::to_string(module->getSlot()));
    for (const Facility& facility : facilities)
        watch(facility.proxy(adopted.backend), facility.path);
    adopted.backend.shutdown();
    EXPECT_EQ(deleted, (Texts{"/HWPlugin/0", "/HWPlugin/2", "/", "/MainOSInfo", "/StorageMgr",
                              "/NetworkManager", "/SysStat", "/I2CSEEPROM", "/SystemInfo",
                              "/Backlight", "/Buzzer", "/ServiceManager"}));
}

const std::vector<std::string> noModules = {"/HWPlugin/0",         "/HWPlugin/0/Leds",
                                            "/HWPlugin/0/Sensors", "/HWPlugin/2",
                                            "/HWPlugin/2/Leds",    "/HWPlugin/2/Sensors"};

TEST_F(DbusBackend, AMissingFacilityIsWarnedOfAndTheOthersStart)
{
    for (const Facility& missing : facilities) {
        Adopted adopted({missing.path});
        EXPECT_FALSE(adopted.backend.isValid()) << missing.path;
        for (const Facility& facility : facilities)
            EXPECT_EQ(facility.proxy(adopted.backend) == nullptr, facility.path == missing.path)
                << facility.path << " without " << missing.path;
        const Texts warnings = takeWarnings();
        EXPECT_EQ(std::count(warnings.begin(), warnings.end(), missing.warning), 1);
        EXPECT_EQ(warnings.size(), 3u) << "this one, and the two empty slots";
    }
}

TEST_F(DbusBackend, AnEmptyServiceStartsAndWarnsOfEverythingInOrder)
{
    FakePlatform platform{std::map<std::string, std::string>()};
    OVIKInterfaceDbus backend;
    EXPECT_TRUE(backend.init());
    EXPECT_FALSE(backend.isValid());
    Texts expected;
    for (const Facility& facility : facilities)
        expected.push_back(facility.warning);
    expected.insert(expected.begin() + 2, 4, "HWPluginInstance not valid\n");
    EXPECT_EQ(takeWarnings(), expected);
}

TEST_F(DbusBackend, AnEmptyListOfModulesIsValid)
{
    Adopted adopted(noModules);
    EXPECT_TRUE(adopted.backend.isValid());
    EXPECT_TRUE(adopted.backend.HWPluginInstanceProxy().isEmpty());
}

// --- Presence of objects -------------------------------------------------------------------------

/// An introspection document of @p size bytes without interfaces.
std::string documentOf(size_t size)
{
    const std::string begin = "<node>";
    const std::string end = "</node>";
    return begin + std::string(size - begin.size() - end.size(), ' ') + end;
}

/// A document whose first tag has @p size bytes.
std::string documentWithTagOf(size_t size)
{
    const std::string begin = "<node name='>";
    const std::string end = "'/>";
    return begin + std::string(size - begin.size() - end.size(), 'x') + end;
}

TEST_F(DbusBackend, OnlyADenialOfTheServiceMakesAnObjectMissing)
{
    const std::string buzzer = "com.wenu.OVIK.Buzzer";
    const struct {
        const char* situation;
        Reply reply;
        bool there;
    } cases[] = {
        {"the interface is listed", replyText("<node><interface name=\"" + buzzer + "\"/></node>"),
         true},
        {"among others",
         replyText("<?xml version=\"1.0\"?><!-- x --><node name=\"/Buzzer\"><interface "
                   "name=\"x.y\"><method name=\"" +
                   buzzer + "\"/></interface><interface name=\"" + buzzer +
                   "\"><method name=\"z\"/></interface></node>"),
         true},
        {"other interfaces only", replyText("<node><interface name=\"" + buzzer + "2\"/></node>"),
         false},
        {"at a child only",
         replyText("<node><node name=\"x\"><interface name=\"" + buzzer + "\"/></node></node>"),
         false},
        {"as a method's name", replyText("<node><method name=\"" + buzzer + "\"/></node>"), false},
        {"a document of 64 KiB without it", replyText(documentOf(64 * 1024)), false},
        {"a larger one", replyText(documentOf(64 * 1024 + 1)), true},
        {"a tag of 8 KiB", replyText(documentWithTagOf(8 * 1024)), false},
        {"a longer one", replyText(documentWithTagOf(8 * 1024 + 1)), true},
        {"a quote in a comment", replyText("<node><!-- don't -->" + documentOf(9000) + "</node>"),
         false},
        {"a long tag that a comment hides from a careless reader",
         replyText("<!--><a '-->" + documentWithTagOf(9000)), true},
        {"declarations of its own",
         replyText("<!DOCTYPE node [<!ATTLIST node a CDATA 'x'>]><node/>"), true},
        {"an undeclared prefix before it",
         replyText("<node><x:y/><interface name=\"" + buzzer + "\"/></node>"), true},
        {"an empty text", replyText(""), true},
        {"no XML", replyText(buzzer), true},
        {"another type", replyWith("i", 1), true},
        {"bytes", replyBytes("<node/>"), true},
        {"nothing", replyWith(""), true},
        {"no such object", replyError("org.freedesktop.DBus.Error.UnknownObject"), false},
        {"not introspectable", replyError("org.freedesktop.DBus.Error.UnknownInterface"), true},
        {"cannot be introspected", replyError("org.freedesktop.DBus.Error.UnknownMethod"), true},
        {"may not be introspected", replyError("org.freedesktop.DBus.Error.AccessDenied"), true},
        {"an error of its own", replyError("com.wenu.OVIK.Failed"), true},
    };
    for (const auto& [situation, reply, there] : cases) {
        FakePlatform platform;
        platform.answerIntrospection("/Buzzer", reply);
        OVIKInterfaceDbus backend;
        EXPECT_TRUE(backend.init()) << situation;
        EXPECT_EQ(backend.buzzerProxy() != nullptr, there) << situation;
    }
}

TEST_F(DbusBackend, DocumentsThatAreSlowToReadAreNotRead)
{
    // Reading all of it would take many seconds: a tag takes quadratic time in its attributes.
    std::string attributes;
    for (int i = 0; attributes.size() < 60 * 1024; ++i)
        attributes += " a" + std::to_string(i) + "='>'";
    FakePlatform platform;
    for (const auto& [path, interface] : FakePlatform::wholePanel())
        platform.answerIntrospection(path, replyText("<node" + attributes + "/>"));
    OVIKInterfaceDbus backend;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(backend.init());
    EXPECT_TRUE(backend.isValid());
    EXPECT_LT(std::chrono::steady_clock::now() - start, patienceFactor * 2s);
}

// --- A platform that is slow, frozen or replaced during the adoption -----------------------------

TEST_F(DbusBackend, ALateDenialOfAnEmptySlotLeavesEveryModuleAtItsPlace)
{
    FakePlatform platform;
    platform.answerIntrospection("/HWPlugin/1", [](sd_bus_message* call) {
        std::this_thread::sleep_for(1500ms);
        return replyError("org.freedesktop.DBus.Error.UnknownObject")(call);
    });
    OVIKInterfaceDbus backend;
    EXPECT_TRUE(backend.init());
    const auto modules = backend.HWPluginInstanceProxy();
    ASSERT_EQ(modules.size(), 2);
    EXPECT_EQ(modules[1]->getSlot(), 2);
}

TEST_F(DbusBackend, APlatformThatIsTooSlowForAllAnswersIsAdoptedOnceItIsNot)
{
    FakePlatform platform;
    std::atomic<bool> isSlow{true};
    // Three objects that the panel lacks, so that a module moves when a denial comes too late.
    for (const char* path : {"/HWPlugin/1", "/HWPlugin/1/Leds", "/HWPlugin/3"})
        platform.answerIntrospection(path, [&](sd_bus_message* call) {
            std::this_thread::sleep_for(isSlow ? 2s : 0s);
            return replyError("org.freedesktop.DBus.Error.UnknownObject")(call);
        });
    OVIKInterfaceDbus backend;
    EXPECT_FALSE(backend.init()) << "its late answers say which slots are empty";
    isSlow = false;
    EXPECT_TRUE(backend.init());
    const auto modules = backend.HWPluginInstanceProxy();
    ASSERT_EQ(modules.size(), 2);
    EXPECT_EQ(modules[1]->getSlot(), 2);
}

TEST_F(DbusBackend, SilentObjectsCountAsThereAfterOneDeadlineForAll)
{
    FakePlatform platform;
    platform.answerIntrospection("/Buzzer", silence());
    platform.answerIntrospection("/HWPlugin/1", silence());
    OVIKInterfaceDbus backend;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(backend.init());
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GT(took, 4500ms);
    EXPECT_LT(took, patienceFactor * 9s);
    EXPECT_TRUE(backend.isValid());
    EXPECT_EQ(backend.HWPluginInstanceProxy().size(), 3);
}

TEST_F(DbusBackend, AServiceThatDoesNotAnswerForItsBaseObjectIsNotAdoptedUntilItDoes)
{
    FakePlatform platform;
    platform.answerIntrospection("/", silence());
    OVIKInterfaceDbus backend;
    EXPECT_FALSE(backend.init());
    EXPECT_EQ(takeWarnings(), notFound);
    EXPECT_FALSE(backend.isValid());

    platform.answerIntrospection("/",
                                 replyText("<node><interface name=\"com.wenu.OVIK\"/></node>"));
    EXPECT_TRUE(backend.init());
    EXPECT_TRUE(backend.isValid());
    EXPECT_EQ(backend.HWPluginInstanceProxy().size(), 2);
}

TEST_F(DbusBackend, APlatformThatChangesWhileItIsAdoptedIsAdoptedByTheNextTry)
{
    for (const bool isReplaced : {false, true}) {
        auto first = std::make_unique<FakePlatform>();
        FakePlatform second(FakePlatform::wholePanel(), false);
        first->answerIntrospection("/Backlight", [&](sd_bus_message* call) {
            sd_bus_release_name(sd_bus_message_get_bus(call), "com.wenu.OVIK");
            if (isReplaced)
                second.ownName();
            return replyText("<node/>")(call);
        });
        OVIKInterfaceDbus backend;
        EXPECT_FALSE(backend.init());
        EXPECT_EQ(takeWarnings(), notFound);
        if (!isReplaced)
            second.ownName();
        EXPECT_TRUE(backend.init());
        EXPECT_TRUE(backend.isValid());
        takeWarnings();
    }
}

TEST_F(DbusBackend, NoProxyIsMissingBecauseThePlatformVanishedJustThen)
{
    FakePlatform platform;
    int adoptions = 0;
    for (int i = 0; i < 60; ++i) {
        // The last reply before the proxies are made: the platform vanishes during that time.
        platform.answerIntrospection("/", [&](sd_bus_message* call) {
            replyText("<node><interface name=\"com.wenu.OVIK\"/></node>")(call);
            sd_bus_flush(sd_bus_message_get_bus(call));
            std::this_thread::sleep_for(i * i * 10us); // up to 36 ms
            return sd_bus_release_name(sd_bus_message_get_bus(call), "com.wenu.OVIK");
        });
        OVIKInterfaceDbus backend;
        const bool isAdopted = backend.init();
        adoptions += isAdopted;
        EXPECT_EQ(backend.isValid(), isAdopted);
        EXPECT_EQ(backend.HWPluginInstanceProxy().size(), isAdopted ? 2 : 0);
        platform.ownName();
    }
    EXPECT_GT(adoptions, 0) << "always vanished too early";
}

TEST_F(DbusBackend, TheServiceItselfOnlyHasToBeOnTheBus)
{
    Adopted adopted({"/"});
    EXPECT_EQ(adopted.backend.ovikProxy(), nullptr);
    EXPECT_NE(adopted.backend.buzzerProxy(), nullptr);
}

// --- Starting again with facilities missing ------------------------------------------------------

TEST_F(DbusBackend, AReplacedProxyLivesUntilTheEventLoopsNextTurn)
{
    Adopted adopted({"/SysStat"});
    adopted.platform->answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
    IBuzzerProxy* const old = adopted.backend.buzzerProxy();

    EXPECT_TRUE(adopted.backend.init());
    EXPECT_NE(adopted.backend.buzzerProxy(), old);
    const QPointer<QObject> watched(old);
    int mode = 0;
    EXPECT_EQ(old->getBuzzerMode(mode), 0);
    EXPECT_EQ(mode, 2);
    settle();
    EXPECT_FALSE(watched);
    EXPECT_EQ(adopted.backend.buzzerProxy()->getBuzzerMode(mode), 0);
}

TEST_F(DbusBackend, AFailedSecondInitReplacesNothing)
{
    Adopted adopted({"/SysStat"});
    adopted.platform->answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
    IBuzzerProxy* const old = adopted.backend.buzzerProxy();
    const auto modules = adopted.backend.HWPluginInstanceProxy();

    adopted.platform->releaseName();
    EXPECT_FALSE(adopted.backend.init());
    EXPECT_EQ(adopted.backend.buzzerProxy(), old);
    EXPECT_EQ(adopted.backend.HWPluginInstanceProxy(), modules);

    adopted.platform->ownName();
    int mode = 0;
    EXPECT_TRUE(spinUntil([&] { return old->getBuzzerMode(mode) == 0; }));
    EXPECT_EQ(mode, 2);
}

TEST_F(DbusBackend, ModulesFoundAgainAreListedBehindTheEarlierOnes)
{
    Adopted adopted({"/SysStat"});
    const auto first = adopted.backend.HWPluginInstanceProxy();
    takeDiagnostics();
    EXPECT_TRUE(adopted.backend.init());
    EXPECT_EQ(takeDiagnostics(), (Texts{"dbus-debug retrying after name qt_default_system_bus",
                                        "dbus-debug connection success"}));
    settle();
    const auto both = adopted.backend.HWPluginInstanceProxy();
    ASSERT_EQ(both.size(), 4);
    EXPECT_EQ(both.mid(0, 2), first);
    EXPECT_EQ(both[2]->getSlot(), 0);
    EXPECT_EQ(both[3]->getSlot(), 2);
    adopted.platform->answer("Leds.GetLedMode", replyWith("i", 1));
    for (auto* module : both)
        EXPECT_EQ(module->getLeds()->GetLedMode(0), 1);
}

// --- Proxies -------------------------------------------------------------------------------------

TEST_F(DbusBackend, AServiceManagerWithoutItsObjectAnswersMinusOneAndTouchesNothing)
{
    FakePlatform platform{std::map<std::string, std::string>()};
    QDBusConnection bus = QDBusConnection::systemBus();
    int i = -77;
    bool b = true;
    ServiceManagerProxyDbus services(bus);
    EXPECT_FALSE(services.isValid());
    EXPECT_EQ(services.start("s", i), -1);
    EXPECT_EQ(services.stop("s", i), -1);
    EXPECT_EQ(services.restart("s", i), -1);
    EXPECT_EQ(services.reload("s", i), -1);
    EXPECT_EQ(services.enable("s", i), -1);
    EXPECT_EQ(services.disable("s", i), -1);
    EXPECT_EQ(services.enabled("s", b), -1);
    EXPECT_EQ(services.apply("s", i), -1);
    EXPECT_EQ(services.controlled("s", b), -1);
    EXPECT_EQ(services.state("s", i), -1);

    EXPECT_EQ(i, -77);
    EXPECT_TRUE(b);
    EXPECT_TRUE(platform.takeCalls().empty());
}

TEST_F(DbusBackend, AStorageRecordIsReadWholeWhateverItsLengthOnTheWire)
{
    Adopted adopted;
    for (const size_t size : {0u, 4u, 199u, 200u, 201u, 5000u}) {
        const std::string sent(size, 'm');
        adopted.platform->answer("StorageMgr.getStorageInfo", replyStorageInfo(sent));
        ovikStorageInfo info;
        memset(&info, 0xEE, sizeof info);
        EXPECT_EQ(adopted.backend.storageManagerProxy()->getStorageInfo("usb", info), 0);
        std::string expected = sent.substr(0, 200);
        expected.resize(200, '\0');
        EXPECT_EQ(std::string(info.mountPoint, 200), expected) << size;
        EXPECT_EQ(info.deviceType, -2);
        EXPECT_EQ(info.totalSpace, quint64(1) << 40);
        EXPECT_EQ(info.freeSpace, 5u);
        EXPECT_EQ(info.accessFlag, 7u);
    }
    EXPECT_EQ(adopted.platform->takeCalls().at(0),
              "/StorageMgr com.wenu.OVIK.StorageMgr.getStorageInfo(s) \"usb\"");
}

TEST_F(DbusBackend, SystemInfoFieldsAreCutOrClearedBehindWhatArrived)
{
    Adopted adopted;
    const struct {
        std::string serialNo, moduleName, code;
        std::string readSerialNo, readModuleName, readCode;
    } cases[] = {
        {"ABC", "PANEL", "\x01\x02", "ABC", "PANEL", "\x01\x02"},
        {"", "", "", std::string(3, '\0'), std::string(5, '\0'), std::string(2, '\0')},
        {"A", "PA", "\x01", std::string("A\0\0", 3), std::string("PA\0\0\0", 5),
         std::string("\x01\0", 2)},
        {"ABCDEFG", "PANEL-LONG", "\x01\x02\x03", "ABC", "PANEL", "\x01\x02"},
    };
    for (const auto& row : cases) {
        adopted.platform->answer("SystemInfo.info",
                                 replySystemInfo(row.serialNo, row.moduleName, row.code));
        systemInfo info;
        memset(&info, 0xEE, sizeof info);
        EXPECT_EQ(adopted.backend.systemInfoProxy()->getSystemInfo(info), 0);
        const auto bytes = [](const auto& field) {
            return std::string(std::begin(field), std::end(field));
        };
        EXPECT_EQ(bytes(info.serialNo), row.readSerialNo);
        EXPECT_EQ(bytes(info.moduleName), row.readModuleName);
        EXPECT_EQ(bytes(info.manufactureCode), row.readCode);
        EXPECT_EQ(info.day, 1);
        EXPECT_EQ(info.month, 2);
        EXPECT_EQ(info.year, 26);
        EXPECT_EQ(info.hwCode, 17);
        EXPECT_EQ(info.hwSubCode, 3);
        EXPECT_EQ(info.hwDispID, 9);
    }
}

TEST_F(DbusBackend, AReplyOfAnotherTypeGivesTheDefaultValue)
{
    Adopted adopted;
    int i = -77;
    bool b = true;
    qulonglong u = 77;
    QString s = "untouched";
    QByteArray y = "untouched";
    ovikStorageInfo storage;
    memset(&storage, 0xEE, sizeof storage);
    auto& [platform, backend] = adopted;
    for (const char* member :
         {"Buzzer.GetBuzzerMode", "ServiceManager.enabled", "SysStat.getAvailableMemory",
          "OVIK.getSystemParameter", "PartitionInfo.version", "StorageMgr.getStorageInfo",
          "I2CSEEPROM.readSlvAddr", "Leds.GetLedMode", "Sensors.readIo"})
        platform->answer(member, replyWith("d", 1.5));
    EXPECT_EQ(backend.buzzerProxy()->getBuzzerMode(i), 0);
    EXPECT_EQ(i, 0);
    EXPECT_EQ(backend.serviceManagerProxy()->enabled("s", b), 0);
    EXPECT_FALSE(b);
    EXPECT_EQ(backend.sysStatProxy()->availableMemory(u), 0);
    EXPECT_EQ(u, 0u);
    EXPECT_EQ(backend.ovikProxy()->getSystemParameter("k", s), 0);
    EXPECT_EQ(s, "");
    EXPECT_EQ(backend.mainOsProxy()->version(y), 0);
    EXPECT_EQ(y, "");
    EXPECT_EQ(backend.storageManagerProxy()->getStorageInfo("n", storage), 0);
    EXPECT_EQ(storage.mountPoint[0], 0);
    EXPECT_EQ(storage.totalSpace, 0u);
    i = -77;
    y = "untouched";
    EXPECT_EQ(backend.seepromProxy()->readSlave(1, 2, 3, y, i), 0);
    EXPECT_EQ(i, 0);
    EXPECT_EQ(y, "");
    EXPECT_EQ(backend.HWPluginInstanceProxy()[0]->getLeds()->GetLedMode(0), 0);
    EXPECT_EQ(backend.HWPluginInstanceProxy()[0]->getSensors()->readIo(0, 1), "");
}

TEST_F(DbusBackend, AnEepromReadHandsOverTheResultAndTheBytes)
{
    Adopted adopted;
    adopted.platform->answer("I2CSEEPROM.readSlvAddr", replyResultAndBytes(-5, "0123456789abcdef"));
    QByteArray data;
    int result = 0;
    EXPECT_EQ(adopted.backend.seepromProxy()->readSlave(0x50, 0, 16, data, result), 0);
    EXPECT_EQ(result, -5);
    EXPECT_EQ(data, "0123456789abcdef");
    EXPECT_EQ(adopted.platform->takeCalls(),
              Texts{"/I2CSEEPROM com.wenu.OVIK.I2CSEEPROM.readSlvAddr(yyu) 80 0 16"});
}

// --- Service manager -----------------------------------------------------------------------------

std::vector<Texts> firstResults;
std::vector<Texts> secondResults;
void first(const char* service, const char* command, const char* json)
{
    firstResults.push_back({service, command, json});
}
void second(const char* service, const char* command, const char* json)
{
    secondResults.push_back({service, command, json});
}
void* pointer(void (*callback)(const char*, const char*, const char*))
{
    return reinterpret_cast<void*>(callback);
}

TEST_F(DbusBackend, ResultsGoToTheLatestCommandsCallbackOnly)
{
    firstResults.clear();
    secondResults.clear();
    Adopted adopted;
    FakePlatform& platform = *adopted.platform;
    IServiceManagerProxy& services = *adopted.backend.serviceManagerProxy();
    platform.answer("ServiceManager.command", replyWith("i", 4));

    // Before any command, results are dropped.
    platform.emitCommandResult("wifi", "scan", "early");
    int answer = 0;
    services.state("wifi", answer); // the bus delivers its reply after the signal
    QCoreApplication::processEvents();
    EXPECT_EQ(services.command("wifi", "scan", "{}", pointer(first), answer), 0);
    EXPECT_EQ(answer, 4);

    EXPECT_EQ(services.command("ntp", "sync", "{}", pointer(second), answer), 0);
    platform.emitCommandResult("wifi", "scan", "1");
    platform.emitCommandResult("ntp", "sync", "\u00fc\u20ac");
    EXPECT_TRUE(spinUntil([] { return secondResults.size() == 2; }));
    EXPECT_EQ(secondResults, (std::vector<Texts>{{"wifi", "scan", "1"}, {"ntp", "sync", "\xfc?"}}));
    EXPECT_TRUE(firstResults.empty());

    // A failed command replaces the callback as well.
    platform.answer("ServiceManager.command", replyError("com.wenu.OVIK.Failed"));
    EXPECT_EQ(services.command("wifi", "scan", "{}", pointer(first), answer), -4);
    services.onCommandResult("wifi", "scan", "2");
    EXPECT_EQ(firstResults, std::vector<Texts>{(Texts{"wifi", "scan", "2"})});
    platform.answer("ServiceManager.command", replyWith("i", 4));

    // So does a null callback: results are dropped again.
    EXPECT_EQ(services.command("ntp", "sync", "{}", nullptr, answer), 0);
    services.onCommandResult("ntp", "sync", "x");
    EXPECT_EQ(firstResults.size(), 1u);
    EXPECT_EQ(secondResults.size(), 2u);
}

TEST_F(DbusBackend, ACommandThatCannotBeSentKeepsNoCallback)
{
    firstResults.clear();
    FakePlatform platform{std::map<std::string, std::string>()};
    QDBusConnection bus = QDBusConnection::systemBus();
    ServiceManagerProxyDbus services(bus);
    int answer = -77;
    EXPECT_EQ(services.command("wifi", "scan", "{}", pointer(first), answer), -1);
    EXPECT_EQ(answer, -77);
    services.onCommandResult("wifi", "scan", "x");
    EXPECT_TRUE(firstResults.empty());
}

// --- Plug-in modules -----------------------------------------------------------------------------

TEST_F(DbusBackend, ASlotWithoutObjectGivesAnInstanceWithoutChildren)
{
    FakePlatform platform;
    QDBusConnection bus = QDBusConnection::systemBus();
    HWPluginInstanceProxyDbus empty(bus, 1);
    EXPECT_FALSE(empty.isValid());
    EXPECT_EQ(empty.getSlot(), -1);
    EXPECT_EQ(empty.getLeds(), nullptr);
    EXPECT_EQ(empty.getSensors(), nullptr);
}

TEST_F(DbusBackend, AModuleWithoutLedsOrSensorsAnswersMinusOneThere)
{
    Adopted adopted({"/HWPlugin/0/Leds", "/HWPlugin/2/Sensors"});
    const auto modules = adopted.backend.HWPluginInstanceProxy();
    ASSERT_EQ(modules.size(), 2);
    PluginLedsProxyDbus* const leds = modules[0]->getLeds();
    ASSERT_NE(leds, nullptr);
    EXPECT_FALSE(leds->isValid());
    EXPECT_TRUE(modules[0]->getSensors()->isValid());
    EXPECT_EQ(leds->GetLedMode(0), -1);
    EXPECT_EQ(leds->SetLedUserControl(0, 1), -1);
    EXPECT_EQ(leds->SetLedValue(0, 1), -1);
    EXPECT_EQ(leds->SetLedOnTime(0, 1), -1);
    EXPECT_EQ(leds->SetLedOffTime(0, 1), -1);
    EXPECT_EQ(leds->flash(0, 1, 1), -1);
    EXPECT_EQ(leds->blink(0, 1, 1, 1), -1);
    PluginSensorsProxyDbus* const sensors = modules[1]->getSensors();
    ASSERT_NE(sensors, nullptr);
    EXPECT_FALSE(sensors->isValid());
    EXPECT_EQ(sensors->getIoMode(0), -1);
    EXPECT_EQ(sensors->readIo(0, 1), QByteArray());
    EXPECT_EQ(sensors->writeIo(0, "1"), -1);
    EXPECT_TRUE(adopted.platform->takeCalls().empty());
}

TEST_F(DbusBackend, FlashSendsThreeValuesOfTheirTypes)
{
    Adopted adopted;
    adopted.platform->answer("Leds.flash", replyWith("i", 0));
    EXPECT_EQ(adopted.backend.HWPluginInstanceProxy()[0]->getLeds()->flash(1, 255, 500), 0);
    EXPECT_EQ(adopted.platform->takeCalls(),
              Texts{"/HWPlugin/0/Leds com.wenu.OVIK.Leds.flash(uui) 1 255 500"});
}

TEST_F(DbusBackend, WithThePlatformGoneModulesAnswerZeroAndNoBytes)
{
    Adopted adopted;
    const auto modules = adopted.backend.HWPluginInstanceProxy();
    adopted.platform->releaseName();
    EXPECT_EQ(modules[0]->getLeds()->SetLedValue(0, 1), 0);
    EXPECT_EQ(modules[0]->getSensors()->readIo(0, 4), QByteArray());
    EXPECT_EQ(modules[0]->getSensors()->writeIo(0, "1"), 0);
}

// --- Records on the wire -------------------------------------------------------------------------

/// Sends a record and returns its values as seen on the bus.
template <class Record>
std::string onTheWire(const Record& record)
{
    FakePlatform platform;
    qDBusRegisterMetaType<Record>();
    QDBusMessage call =
        QDBusMessage::createMethodCall("com.wenu.OVIK", "/", "com.wenu.OVIK.Test", "take");
    call << QVariant::fromValue(record);
    QDBusConnection::systemBus().call(call);
    return platform.takeCalls().at(0).substr(strlen("/ com.wenu.OVIK.Test.take"));
}

std::string zeros(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += " 00";
    return text;
}

TEST_F(DbusBackend, ARecordIsSentAsItsFieldsWithByteFieldsWhole)
{
    systemInfo info = {1, 2, 26, {'A', 'B', 'C'}, {'P', 0, 'x', 0, 0}, 17, 3, {1, 2}, 9};
    EXPECT_EQ(onTheWire(info),
              "((yyyayayyyayy)) ( 1 2 26 [41 42 43] [50 00 78 00 00] 17 3 [01 02] 9 )");

    partitionInfo partition = {4, 3, 2, 1, {'1', '.', '2'}};
    EXPECT_EQ(onTheWire(partition), "((yyyyay)) ( 4 3 2 1 [31 2e 32" + zeros(17) + "] )");

    ovikStorageInfo storage = {};
    strcpy(storage.mountPoint, "/m");
    storage.mountPoint[199] = 'z'; // after the NUL, but still sent
    storage.deviceType = -2;
    storage.totalSpace = quint64(1) << 40;
    storage.freeSpace = 5;
    storage.accessFlag = 7;
    EXPECT_EQ(onTheWire(storage),
              "((ayittu)) ( [2f 6d" + zeros(197) + " 7a] -2 1099511627776 5 7 )");

    timeZoneInfo zone = {10, 5, 0, 3, 0, -60, 3, 5, 0, 2, 0, -120, 1};
    EXPECT_EQ(onTheWire(zone), "((yyyyynyyyyyny)) ( 10 5 0 3 0 -60 3 5 0 2 0 -120 1 )");

    EXPECT_EQ(onTheWire(accelerometerAxisData{0.5, -1, 2}), "((ddd)) ( 0.5 -1 2 )");
    EXPECT_EQ(onTheWire(accelerometerAngleData{1, 2, -0.25}), "((ddd)) ( 1 2 -0.25 )");
}

/// Sends a record over the bus and reads it back.
template <class Record>
Record thereAndBack(const Record& record)
{
    FakePlatform platform;
    platform.answer("Test.take", replyEcho());
    qDBusRegisterMetaType<Record>();
    QDBusMessage call =
        QDBusMessage::createMethodCall("com.wenu.OVIK", "/", "com.wenu.OVIK.Test", "take");
    call << QVariant::fromValue(record);
    const QDBusMessage reply = QDBusConnection::systemBus().call(call);
    Record received;
    memset(&received, 0xEE, sizeof received);
    reply.arguments().value(0).value<QDBusArgument>() >> received;
    return received;
}

TEST_F(DbusBackend, ARecordIsReadAsItWasSent)
{
    const partitionInfo partition = thereAndBack(partitionInfo{4, 3, 2, 1, {'1', '.', '2'}});
    EXPECT_EQ(partition.type, 4);
    EXPECT_EQ(partition.day, 3);
    EXPECT_EQ(partition.month, 2);
    EXPECT_EQ(partition.year, 1);
    EXPECT_EQ(std::string(std::begin(partition.version), std::end(partition.version)),
              "1.2" + std::string(17, '\0'));

    ovikStorageInfo sent = {};
    strcpy(sent.mountPoint, "/mnt/usb");
    memset(sent.mountPoint + 100, 'z', 100); // after the NUL, but still read
    const ovikStorageInfo storage = thereAndBack(sent);
    EXPECT_EQ(std::string(storage.mountPoint, 200), std::string(sent.mountPoint, 200));

    const timeZoneInfo zone =
        thereAndBack(timeZoneInfo{10, 5, 0, 3, 1, -60, 3, 4, 6, 2, 30, -120, 1});
    EXPECT_EQ(zone.stdMonth, 10);
    EXPECT_EQ(zone.stdWeek, 5);
    EXPECT_EQ(zone.stdDay, 0);
    EXPECT_EQ(zone.stdHour, 3);
    EXPECT_EQ(zone.stdMinute, 1);
    EXPECT_EQ(zone.stdOffset, -60);
    EXPECT_EQ(zone.dlsMonth, 3);
    EXPECT_EQ(zone.dlsWeek, 4);
    EXPECT_EQ(zone.dlsDay, 6);
    EXPECT_EQ(zone.dlsHour, 2);
    EXPECT_EQ(zone.dlsMinute, 30);
    EXPECT_EQ(zone.dlsOffset, -120);
    EXPECT_EQ(zone.mode, 1);

    const accelerometerAxisData axes = thereAndBack(accelerometerAxisData{0.5, -1, 2});
    EXPECT_EQ(axes.accel_x, 0.5);
    EXPECT_EQ(axes.accel_y, -1);
    EXPECT_EQ(axes.accel_z, 2);
    const accelerometerAngleData angles = thereAndBack(accelerometerAngleData{1, 2, -0.25});
    EXPECT_EQ(angles.angle_xy, 1);
    EXPECT_EQ(angles.angle_xz, 2);
    EXPECT_EQ(angles.angle_yz, -0.25);
}
} // namespace
