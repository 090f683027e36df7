// The C API: start and stop of the application thread, and the outputs of every function.

#include "wrapper_ovik/ovik_c.h"

#include "tests/support/qt_fixture.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <pthread.h>
#include <string>
#include <vector>

namespace
{
/// Waits for @p text; appends every diagnostic so far to @p kept.
bool waitForDiagnostic(const std::string& text, std::vector<std::string>& kept)
{
    return waitUntil([&] {
        for (std::string& diagnostic : takeDiagnostics())
            kept.push_back(std::move(diagnostic));
        return std::find(kept.begin(), kept.end(), text) != kept.end();
    });
}

int threads()
{
    using std::filesystem::directory_iterator;
    return static_cast<int>(
        std::distance(directory_iterator("/proc/self/task"), directory_iterator()));
}

/// Every request function, called with outputs of its own.
struct Function {
    const char* name;
    std::function<status_t()> call;
};

int anInt = -77;
bool aBool = true;
char aText[100] = "untouched";
unsigned char aByte = 0xEE;
unsigned short aShort = 0xEEEE;
uint64_t aSize = 77;
void* const noCallback = nullptr;

const std::vector<Function> functions = {
    {"getBuzzerMode", [] { return ovik_getBuzzerMode(&anInt); }},
    {"setBuzzerMode", [] { return ovik_setBuzzerMode(1, &anInt); }},
    {"setBuzzerUserControl", [] { return ovik_setBuzzerUserControl(1, &anInt); }},
    {"setBuzzerOnTime", [] { return ovik_setBuzzerOnTime(1, &anInt); }},
    {"setBuzzerOffTime", [] { return ovik_setBuzzerOffTime(1, &anInt); }},
    {"getBrightness", [] { return ovik_getBrightness(&anInt); }},
    {"saveBrightness", [] { return ovik_saveBrightness(1, &anInt); }},
    {"getSystemInfo", [] { return ovik_getSystemInfo(aText, 5, &aByte, &aShort); }},
    {"getSysCounter", [] { return ovik_getSysCounter(&anInt); }},
    {"getBackLightCounter", [] { return ovik_getBackLightCounter(&anInt); }},
    {"getAvailableMemory", [] { return ovik_getAvailableMemory(&aSize); }},
    {"mainOsVersion", [] { return ovik_mainOsVersion(aText, 100); }},
    {"getStorageInfoJson", [] { return ovik_getStorageInfoJson("n", aText, 100); }},
    {"getNetworkConfigJson", [] { return ovik_getNetworkConfigJson(aText, 100); }},
    {"setInterfaceConfigJson", [] { return ovik_setInterfaceConfigJson("i", "c", &anInt); }},
    {"applyNewConfiguration", [] { return ovik_applyNewConfiguration(&anInt); }},
    {"seepromRead", [] { return ovik_seepromRead(0, 1, &aByte); }},
    {"seepromReadSlave", [] { return ovik_seepromReadSlave(0, 0, 1, &aByte); }},
    {"getVolatileParameter", [] { return ovik_getVolatileParameter("k", aText, 100); }},
    {"getSystemParameter", [] { return ovik_getSystemParameter("k", aText, 100); }},
    {"getAllVolatileParametersJson", [] { return ovik_getAllVolatileParametersJson(aText, 100); }},
    {"getAllSystemParametersJson", [] { return ovik_getAllSystemParametersJson(aText, 100); }},
    {"setVolatileParameter", [] { return ovik_setVolatileParameter("k", "v", &anInt); }},
    {"setSystemParameter", [] { return ovik_setSystemParameter("k", "v", &anInt); }},
    {"setSystemParametersJson", [] { return ovik_setSystemParametersJson("k", "j", &anInt); }},
    {"getHWPluginIOMode", [] { return ovik_getHWPluginIOMode(0, 0, &anInt); }},
    {"getHWPluginIO", [] { return ovik_getHWPluginIO(0, 0, &aByte, 1); }},
    {"setHWPluginIO", [] { return ovik_setHWPluginIO(0, 0, &aByte, 1, &anInt); }},
    {"getHWPluginLedMode", [] { return ovik_getHWPluginLedMode(0, 0, &anInt); }},
    {"setHWPluginLedUserControl", [] { return ovik_setHWPluginLedUserControl(0, 0, 1, &anInt); }},
    {"setHWPluginLedValue", [] { return ovik_setHWPluginLedValue(0, 0, 1, &anInt); }},
    {"setHWPluginLedOnTime", [] { return ovik_setHWPluginLedOnTime(0, 0, 1, &anInt); }},
    {"setHWPluginLedOffTime", [] { return ovik_setHWPluginLedOffTime(0, 0, 1, &anInt); }},
    {"setHWPluginLedFlash", [] { return ovik_setHWPluginLedFlash(0, 0, 1, &anInt); }},
    {"setHWPluginLedBlink", [] { return ovik_setHWPluginLedBlink(0, 0, 1, 1, &anInt); }},
    {"serviceStart", [] { return ovik_serviceStart("s", &anInt); }},
    {"serviceStop", [] { return ovik_serviceStop("s", &anInt); }},
    {"serviceRestart", [] { return ovik_serviceRestart("s", &anInt); }},
    {"serviceReload", [] { return ovik_serviceReload("s", &anInt); }},
    {"serviceEnable", [] { return ovik_serviceEnable("s", &anInt); }},
    {"serviceDisable", [] { return ovik_serviceDisable("s", &anInt); }},
    {"serviceEnabled", [] { return ovik_serviceEnabled("s", &aBool); }},
    {"serviceApply", [] { return ovik_serviceApply("s", &anInt); }},
    {"serviceControlled", [] { return ovik_serviceControlled("s", &aBool); }},
    {"serviceState", [] { return ovik_serviceState("s", &anInt); }},
    {"serviceCommand", [] { return ovik_serviceCommand("s", "c", "o", noCallback, &anInt); }},
};

bool isPluginFunction(const Function& function)
{
    return std::string(function.name).find("HWPlugin") != std::string::npos;
}

void expectOutputsUntouched()
{
    EXPECT_EQ(anInt, -77);
    EXPECT_TRUE(aBool);
    EXPECT_STREQ(aText, "untouched");
    EXPECT_EQ(aByte, 0xEE);
    EXPECT_EQ(aShort, 0xEEEE);
    EXPECT_EQ(aSize, 77u);
}

// --- Without an application ----------------------------------------------------------------------

TEST(Stopped, EveryFunctionAnswersMinusThreeAndTouchesNoOutput)
{
    ASSERT_EQ(functions.size(), 46u);
    for (const Function& function : functions)
        EXPECT_EQ(function.call(), -3) << function.name;
    expectOutputsUntouched();
    EXPECT_EQ(ovik_doSomething(), 0);
}

TEST(Stopped, ModeAndShutdownAnswerMinusFive)
{
    EXPECT_EQ(ovik_setMode(0), -5);
    EXPECT_EQ(ovik_setMode(99), -5);
    EXPECT_EQ(ovik_shutdown(), -5);
}

TEST(Stopped, AThreadThatCannotBeCreatedIsMinusTwo)
{
    pthread_attr_t old;
    pthread_attr_t huge;
    ASSERT_EQ(pthread_getattr_default_np(&old), 0);
    ASSERT_EQ(pthread_getattr_default_np(&huge), 0);
    // With 32 bits, half the address space can be allocated, so ask for nearly all of it.
    ASSERT_EQ(pthread_attr_setstacksize(&huge, SIZE_MAX & ~size_t(0xFFFFF)), 0);
    ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
    EXPECT_EQ(ovik_init(0), -2);
    ASSERT_EQ(pthread_setattr_default_np(&old), 0);
    EXPECT_EQ(ovik_getBuzzerMode(&anInt), -3);
    pthread_attr_destroy(&old);
    pthread_attr_destroy(&huge);
}

// --- Start, mode and stop ------------------------------------------------------------------------

class Bridge : public testing::Test
{
protected:
    Bridge() { theBus(); }
    void TearDown() override { ovik_shutdown(); }
};

TEST_F(Bridge, ASecondInitCreatesNoThread)
{
    ASSERT_EQ(ovik_init(0), 0);
    const int before = threads();
    EXPECT_EQ(ovik_init(2), 0);
    EXPECT_EQ(threads(), before);
    EXPECT_EQ(ovik_doSomething(), 0);
}

TEST_F(Bridge, WithoutABackendEveryFunctionAnswersMinusOneAndTouchesNoOutput)
{
    ASSERT_EQ(ovik_init(0), 0);
    for (const Function& function : functions)
        EXPECT_EQ(function.call(), isPluginFunction(function) ? -10 : -1) << function.name;
    expectOutputsUntouched();
}

TEST_F(Bridge, InitCallsShutdownAndInitAgainWorkInOneProcess)
{
    FakePlatform platform;
    platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(ovik_init(2), 0);
        int mode = 0;
        EXPECT_EQ(ovik_getBuzzerMode(&mode), 0);
        EXPECT_EQ(mode, 2);
        EXPECT_EQ(ovik_shutdown(), 0);
        EXPECT_EQ(ovik_shutdown(), -5);
        EXPECT_EQ(ovik_getBuzzerMode(&mode), -3);
    }
}

TEST_F(Bridge, StartModeOneServesFromTheLibraryAlsoAfterARestart)
{
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(ovik_init(1), 0);
        int brightness = -1;
        EXPECT_EQ(ovik_getBrightness(&brightness), 0);
        EXPECT_GE(brightness, 0);
        char name[6] = {};
        unsigned char hwCode = 0;
        unsigned short code = 0;
        EXPECT_EQ(ovik_getSystemInfo(name, 5, &hwCode, &code), 0);
        EXPECT_STREQ(name, "PANEL");
        int value = 0;
        EXPECT_EQ(ovik_serviceState("ssh", &value), -1);
        EXPECT_EQ(ovik_getHWPluginLedMode(0, 0, &value), -10);
        EXPECT_EQ(ovik_shutdown(), 0);
    }
}

TEST_F(Bridge, AnObjectWhoseThreadHasEndedIsNotWaitedFor)
{
    // The library creates its object on the first application thread; the second one uses it.
    const Variable inCaller("OVIK_SIM_SYSTEMINFO_IN_CALLER", "1");
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(ovik_init(1), 0);
        char name[6] = "empty";
        unsigned char hwCode = 0;
        unsigned short code = 0;
        EXPECT_EQ(ovik_getSystemInfo(name, 5, &hwCode, &code), 0);
        EXPECT_STREQ(name, "");
        EXPECT_EQ(ovik_shutdown(), 0);
    }
}

struct StartMode {
    int mode;
    bool platformThere;
    status_t status; ///< of the buzzer
    int buzzer;      ///< 0 in the library, 2 on the bus
    int modeAfter;
};

const StartMode startModes[] = {
    {0, true, -1, 0, 0}, {1, true, 0, 0, 1},   {2, true, 0, 2, 2},   {3, true, -1, 0, 2},
    {5, true, 0, 2, 2},  {2, false, -1, 0, 0}, {5, false, -1, 0, 0},
};

TEST_F(Bridge, AnyStartModeButTheDelayedOnesIsASwitchToIt)
{
    for (const StartMode& row : startModes) {
        const std::string mode = std::to_string(row.mode);
        FakePlatform platform(FakePlatform::wholePanel(), row.platformThere);
        platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
        takeDiagnostics();
        ASSERT_EQ(ovik_init(row.mode), 0) << mode;
        int buzzer = 0;
        EXPECT_EQ(ovik_getBuzzerMode(&buzzer), row.status) << mode;
        EXPECT_EQ(buzzer, row.buzzer) << mode;
        ASSERT_EQ(ovik_shutdown(), 0) << mode;
        const auto texts = takeDiagnostics();
        ASSERT_FALSE(texts.empty()) << mode;
        EXPECT_EQ(texts.front(), "OVIK set mode from 0 to " + mode);
        EXPECT_EQ(texts.back(), "OVIK set mode from " + std::to_string(row.modeAfter) + " to 0")
            << mode;
    }
}

TEST_F(Bridge, AnUnknownStartModeLeavesNoBackend)
{
    testing::internal::CaptureStdout();
    ASSERT_EQ(ovik_init(99), 0);
    EXPECT_EQ(ovik_getBuzzerMode(&anInt), -1);
    fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Illegal OvikApplication mode\n");
}

TEST_F(Bridge, TheDelayedStartModesAreIllegalForASwitch)
{
    ASSERT_EQ(ovik_init(0), 0);
    takeDiagnostics();
    testing::internal::CaptureStdout();
    for (const int mode : {4, 6, 7, -1, 2147483647})
        EXPECT_EQ(ovik_setMode(mode), -7) << mode;
    fflush(stdout);
    std::string expected;
    for (int i = 0; i < 5; ++i)
        expected += "Illegal OvikApplication mode\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
    EXPECT_EQ(takeDiagnostics().at(0), "OVIK set mode from 0 to 4");
}

TEST_F(Bridge, ABackendThatFailsIsMinusSixAndChangesNothing)
{
    ASSERT_EQ(ovik_init(0), 0);
    EXPECT_EQ(ovik_setMode(2), -6);
    EXPECT_EQ(ovik_getBuzzerMode(&anInt), -1);
    EXPECT_EQ(ovik_setMode(5), 0) << "falls back to none";
    EXPECT_EQ(ovik_getBuzzerMode(&anInt), -1);
}

TEST_F(Bridge, StartModeSixTriesEverySecondUntilThePlatformIsThere)
{
    takeDiagnostics();
    ASSERT_EQ(ovik_init(6), 0);
    EXPECT_EQ(ovik_getBuzzerMode(&anInt), -1);
    std::vector<std::string> texts;
    ASSERT_TRUE(waitForDiagnostic("retry init DBUS later", texts));
    FakePlatform platform;
    platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
    int mode = 0;
    ASSERT_TRUE(waitUntil([&] { return ovik_getBuzzerMode(&mode) == 0; }));
    EXPECT_EQ(mode, 2);

    ASSERT_TRUE(waitForDiagnostic("OVIK set mode from 0 to 3", texts));
    EXPECT_EQ(texts.at(0), "OVIK set mode from 0 to 0");
    EXPECT_EQ(texts.at(1), "try init DBUS now");
    EXPECT_EQ(texts.at(2), "try init DBUS not in DBUS mode");
    EXPECT_EQ(texts.at(3), "dbus-debug connection success");
    EXPECT_EQ(texts.at(4), "retry init DBUS later");
    EXPECT_EQ(texts.at(7), "dbus-debug retrying after name qt_default_system_bus");
    EXPECT_EQ(texts.end()[-2], "init DBUS OK");
    EXPECT_EQ(texts.end()[-1], "OVIK set mode from 0 to 3");
}

TEST_F(Bridge, StartModeFourServesFromTheLibraryAndAfterTenSecondsTriesTheBus)
{
    FakePlatform platform;
    platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(ovik_init(4), 0);
    int mode = -1;
    EXPECT_EQ(ovik_getBuzzerMode(&mode), 0);
    EXPECT_EQ(mode, 0) << "the library's buzzer";
    ASSERT_TRUE(waitUntil([&] { return ovik_getBuzzerMode(&mode) == 0 && mode == 2; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 9500ms); // the timer has a tolerance of 5 %
    EXPECT_LT(std::chrono::steady_clock::now() - start, 14s);
    EXPECT_EQ(mode, 2);
}

// --- A loop that other code ends -----------------------------------------------------------------

struct UnservedCall {
    const char* name;
    std::function<int()> call;
    int answer;
};

const UnservedCall unservedCalls[] = {
    {"request", [] { return ovik_getBuzzerMode(&anInt); }, -8},
    {"setMode", [] { return ovik_setMode(0); }, -8},
    {"doSomething", [] { return ovik_doSomething(); }, 0},
    {"shutdown", [] { return ovik_shutdown(); }, -5},
};

TEST_F(Bridge, ACallThatTheLoopLeavesUnservedReturns)
{
    for (const UnservedCall& row : unservedCalls) {
        const int before = threads();
        ASSERT_EQ(ovik_init(0), 0) << row.name;
        std::atomic<bool> running{false};
        const auto quitWhenCalled = [&running] {
            running = true;
            waitUntil([] { return QAbstractEventDispatcher::instance()->hasPendingEvents(); });
            QCoreApplication::quit();
        };
        // The timer ends the loop before it executes the calls posted meanwhile.
        QObject* const app = QCoreApplication::instance();
        const auto armTimer = [&] { QTimer::singleShot(1, app, quitWhenCalled); };
        QMetaObject::invokeMethod(app, armTimer, Qt::BlockingQueuedConnection);
        ASSERT_TRUE(waitUntil([&running] { return running.load(); })) << row.name;
        EXPECT_EQ(row.call(), row.answer) << row.name;
        EXPECT_EQ(ovik_getBuzzerMode(&anInt), -3) << row.name;
        EXPECT_EQ(ovik_shutdown(), -5) << row.name;
        EXPECT_TRUE(waitUntil([=] { return threads() == before; })) << row.name;
    }
    expectOutputsUntouched();
}

// --- A platform that answers ---------------------------------------------------------------------

class Answered : public Bridge
{
protected:
    void SetUp() override
    {
        platform.answer("Leds.GetLedMode", replyWith("i", 2));
        ASSERT_EQ(ovik_init(2), 0);
        platform.takeCalls();
        takeDiagnostics();
    }

    FakePlatform platform;
};

status_t getVolatile(char* out, int length) { return ovik_getVolatileParameter("k", out, length); }
status_t getSystem(char* out, int length) { return ovik_getSystemParameter("k", out, length); }
status_t getStorage(char* out, int length) { return ovik_getStorageInfoJson("n", out, length); }

const std::map<std::string, status_t (*)(char*, int)> textGetters = {
    {"OVIK.getAllVolatileParametersJSON", ovik_getAllVolatileParametersJson},
    {"OVIK.getAllSystemParametersJSON", ovik_getAllSystemParametersJson},
    {"NetworkManager.getConfigJSON", ovik_getNetworkConfigJson},
    {"OVIK.getVolatileParameter", getVolatile},
    {"OVIK.getSystemParameter", getSystem},
    {"StorageMgr.getStorageInfoJSON", getStorage},
};

TEST_F(Answered, ATextThatFillsTheBufferIsNotTerminated)
{
    for (const size_t size : {0u, 3u, 9u, 10u, 11u, 500u}) {
        const std::string text(size, 'x');
        std::string expected = text.substr(0, 10);
        expected.resize(10, '\0'); // a shorter text is padded with NUL bytes
        expected += "guard";
        for (const auto& [member, get] : textGetters) {
            platform.answer(member, replyText(text));
            std::string buffer = "0123456789guard";
            EXPECT_EQ(get(buffer.data(), 10), 0);
            EXPECT_EQ(buffer, expected) << member << ' ' << size;
        }
    }
}

TEST_F(Answered, AValueOf100CharactersFillsA100ByteBuffer)
{
    platform.answer("OVIK.getVolatileParameter", replyText(std::string(100, 'v')));
    char buffer[101];
    memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(ovik_getVolatileParameter("k", buffer, 100), 0);
    EXPECT_EQ(std::string(buffer, sizeof buffer), std::string(100, 'v') + '#');
}

TEST_F(Answered, ABufferOfNoOrNegativeSizeIsNotTouched)
{
    platform.answer("NetworkManager.getConfigJSON", replyText("text"));
    char buffer[] = "guard";
    EXPECT_EQ(ovik_getNetworkConfigJson(buffer, 0), 0);
    EXPECT_EQ(ovik_getNetworkConfigJson(buffer, -1), 0);
    EXPECT_STREQ(buffer, "guard");
}

TEST_F(Answered, TheVersionIsCopiedUpToItsFirstNul)
{
    platform.answer("PartitionInfo.version", replyBytes(std::string("1.2\0x", 5)));
    char buffer[] = "0123456789";
    EXPECT_EQ(ovik_mainOsVersion(buffer, 10), 0);
    EXPECT_EQ(std::string(buffer, 11), std::string("1.2\0\0\0\0\0\0\0", 10) + '\0');
}

TEST_F(Answered, ByteReadsWriteExactlyTheirLength)
{
    for (const std::string& sent :
         {std::string(), std::string("AB"), std::string(16, 'C'), std::string(300, 'D')}) {
        platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, sent));
        platform.answer("I2CSEEPROM.readSlvAddr", replyResultAndBytes(0, sent));
        platform.answer("Sensors.readIo", replyBytes(sent));
        std::string expected = sent.substr(0, 16);
        expected.resize(16, '\0'); // bytes that the platform did not send
        expected += '#';
        using Read = status_t (*)(unsigned char*);
        for (const Read read :
             {Read([](unsigned char* p) { return ovik_seepromRead(0, 16, p); }),
              Read([](unsigned char* p) { return ovik_seepromReadSlave(0, 0, 16, p); }),
              Read([](unsigned char* p) { return ovik_getHWPluginIO(0, 0, p, 16); })}) {
            std::string buffer(17, '#');
            EXPECT_EQ(read(reinterpret_cast<unsigned char*>(buffer.data())), 0);
            EXPECT_EQ(buffer, expected);
        }
    }
}

TEST_F(Answered, AFailedOrNegativeByteReadWritesNothing)
{
    unsigned char buffer[2] = {'#', '#'};
    platform.answer("I2CSEEPROM.read", replyError("com.wenu.OVIK.Failed"));
    EXPECT_EQ(ovik_seepromRead(0, 2, buffer), -4);
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, "AB"));
    EXPECT_EQ(ovik_seepromRead(0, -1, buffer), 0);
    EXPECT_EQ(ovik_seepromRead(0, 0, buffer), 0);
    EXPECT_EQ(buffer[0], '#');
}

TEST_F(Answered, AFailureLeavesTheOutputsUntouched)
{
    for (const Function& function : functions) {
        if (!isPluginFunction(function)) {
            EXPECT_EQ(function.call(), -4) << function.name;
        }
    }
    expectOutputsUntouched();
}

TEST_F(Answered, AfterASwitchToNoBackendOnlyTheModulesAnswer)
{
    ASSERT_EQ(ovik_setMode(0), 0);
    for (const Function& function : functions) {
        if (!isPluginFunction(function)) {
            EXPECT_EQ(function.call(), -1) << function.name;
        }
    }
    expectOutputsUntouched();
    int mode = 0;
    EXPECT_EQ(ovik_getHWPluginLedMode(0, 0, &mode), 0);
}

TEST_F(Answered, FlagsAreBoolAndStatesInt)
{
    platform.answer("ServiceManager.enabled", replyWith("b", 1));
    platform.answer("ServiceManager.controlled", replyWith("b", 0));
    platform.answer("ServiceManager.state", replyWith("i", 5));
    bool enabled = false;
    bool controlled = true;
    int state = 0;
    EXPECT_EQ(ovik_serviceEnabled("s", &enabled), 0);
    EXPECT_EQ(ovik_serviceControlled("s", &controlled), 0);
    EXPECT_EQ(ovik_serviceState("s", &state), 0);
    EXPECT_TRUE(enabled);
    EXPECT_FALSE(controlled);
    EXPECT_EQ(state, 5);
}

TEST_F(Answered, TextsTravelAsUtf8AndANullTextAsAnEmptyOne)
{
    platform.answer("OVIK.setSystemParameter", replyWith("i", 0));
    EXPECT_EQ(ovik_setSystemParameter("\u00fc;\u20ac", nullptr, &anInt), 0);
    EXPECT_EQ(
        platform.takeCalls(),
        std::vector<std::string>{"/ com.wenu.OVIK.setSystemParameter(ss) \"\u00fc;\u20ac\" \"\""});
    anInt = -77;
}

TEST_F(Answered, SeveralOutputBytesTravelTogether)
{
    platform.answer("Sensors.writeIo", replyWith("i", 6));
    unsigned char output[] = {1, 0, 255};
    int answer = 0;
    EXPECT_EQ(ovik_setHWPluginIO(0, 7, output, 3, &answer), 0);
    EXPECT_EQ(answer, 6);
    EXPECT_EQ(platform.takeCalls(),
              std::vector<std::string>{
                  "/HWPlugin/0/Sensors com.wenu.OVIK.Sensors.writeIo(uay) 7 [01 00 ff]"});
}

std::atomic<int> outcomes{0};
std::atomic<status_t> statusInCallback{99};
std::vector<std::string> outcomeTexts;

void onOutcome(const char* service, const char* command, const char* json)
{
    outcomeTexts = {service, command, json};
    int ignored = 0;
    statusInCallback = ovik_getBuzzerMode(&ignored);
    if (ovik_setMode(0) != OVIK_NOT_RUN || ovik_shutdown() != OVIK_NOT_RUN ||
        ovik_doSomething() != 0)
        statusInCallback = 98;
    ++outcomes;
}

TEST_F(Answered, ACallFromTheApplicationThreadIsRefusedAndDoesNotHang)
{
    platform.answer("ServiceManager.command", replyWith("i", 0));
    platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
    outcomes = 0;
    ASSERT_EQ(
        ovik_serviceCommand("wifi", "connect", "{}", reinterpret_cast<void*>(onOutcome), &anInt),
        0);
    anInt = -77;
    platform.emitCommandResult("wifi", "connect", "\u00fc");
    ASSERT_TRUE(waitUntil([] { return outcomes == 1; }));
    EXPECT_EQ(statusInCallback, OVIK_NOT_RUN);
    EXPECT_EQ(outcomeTexts, (std::vector<std::string>{"wifi", "connect", "\xfc"}));
    int mode = 0;
    EXPECT_EQ(ovik_getBuzzerMode(&mode), 0) << "the thread serves on";
    EXPECT_EQ(mode, 2);
}

void quitInCallback(const char*, const char*, const char*) { QCoreApplication::quit(); }

TEST_F(Answered, AfterACallbackHasEndedTheLoopAnotherInitServesAgain)
{
    platform.answer("ServiceManager.command", replyWith("i", 0));
    platform.answer("Buzzer.GetBuzzerMode", replyWith("i", 2));
    const int running = threads();
    int value = 0;
    for (const bool isShutDown : {true, false}) {
        ASSERT_EQ(
            ovik_serviceCommand("s", "c", "o", reinterpret_cast<void*>(quitInCallback), &value), 0);
        platform.emitCommandResult("s", "c", "{}");
        ASSERT_TRUE(waitUntil([&] { return ovik_getBuzzerMode(&value) == -3; }));
        for (const Function& function : functions)
            EXPECT_EQ(function.call(), -3) << function.name;
        expectOutputsUntouched();
        EXPECT_EQ(ovik_doSomething(), 0);
        EXPECT_EQ(ovik_setMode(0), -5);
        if (isShutDown) {
            EXPECT_EQ(ovik_shutdown(), -5);
            EXPECT_TRUE(waitUntil([=] { return threads() == running - 1; }));
        }
        ASSERT_EQ(ovik_init(2), 0);
        EXPECT_TRUE(waitUntil([=] { return threads() == running; }));
        EXPECT_EQ(ovik_getBuzzerMode(&value), 0);
        EXPECT_EQ(value, 2);
    }
}
} // namespace
