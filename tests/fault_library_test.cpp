// The platform's library lacks a facility, is broken, or is started repeatedly. Checks messages,
// answers and leaks. The simulated panel's own environment variables select what its library lacks.

#include "wrapper_ovik/ovik_c.h"

#include "tests/support/fault_fixture.h"
#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <unistd.h>

namespace
{
using Texts = std::vector<std::string>;

/// An object of the library, a function that uses it, and the warning when it is missing.
struct Facility {
    const char* name;
    std::function<status_t()> ask;
    const char* warning;
};

void PrintTo(const Facility& facility, std::ostream* out) { *out << facility.name; }

int anInt = 0;
char aText[10000];
unsigned char aByte = 0;
unsigned short aShort = 0;
uint64_t aSize = 0;

// In the order in which the backend creates them.
const std::vector<Facility> facilities = {
    {"Buzzer", [] { return ovik_getBuzzerMode(&anInt); }, "m_buzzer not valid\n"},
    {"Backlight", [] { return ovik_getBrightness(&anInt); }, "m_backlight not valid\n"},
    {"SystemInfo", [] { return ovik_getSystemInfo(aText, 5, &aByte, &aShort); },
     "m_systemInfo not valid\n"},
    {"I2CSEEPROM", [] { return ovik_seepromRead(0, 1, &aByte); }, "m_systemInfo not valid\n"},
    {"OVIK", [] { return ovik_getSysCounter(&anInt); }, "m_ovikProxy not valid\n"},
    {"MainOSInfo", [] { return ovik_mainOsVersion(aText, sizeof aText); }, "m_mainOs not valid\n"},
    {"StorageMgr", [] { return ovik_getStorageInfoJson("internal", aText, sizeof aText); },
     "m_storageManager not valid\n"},
    {"SysStat", [] { return ovik_getAvailableMemory(&aSize); }, "m_sysStat not valid\n"},
    {"NetworkManager", [] { return ovik_getNetworkConfigJson(aText, sizeof aText); },
     "m_networkManager not valid\n"},
};

Texts everyName()
{
    Texts names;
    for (const Facility& facility : facilities)
        names.emplace_back(facility.name);
    return names;
}

/// The form that the simulated panel's library expects.
std::string listed(const Texts& names)
{
    std::string text;
    for (const std::string& name : names)
        text += name + ',';
    return text;
}

/// Facilities in @p missing return -1, the others 0.
void expectFacilitiesBut(const Texts& missing)
{
    for (const Facility& facility : facilities) {
        const bool isMissing = std::count(missing.begin(), missing.end(), facility.name) != 0;
        EXPECT_EQ(facility.ask(), isMissing ? -1 : 0) << facility.name;
    }
    // The library never has these facilities.
    EXPECT_EQ(ovik_serviceStart("ssh", &anInt), -1);
    EXPECT_EQ(ovik_getHWPluginIOMode(0, 0, &anInt), -10);
}

/// Leaves out Qt's warning about the connection to the missing system information.
Texts takeProductWarnings()
{
    Texts texts;
    for (const std::string& text : takeWarnings()) {
        if (text.find("QObject::connect") == std::string::npos)
            texts.push_back(text);
    }
    return texts;
}

class FaultLibrary : public testing::Test
{
protected:
    /// Discards earlier texts, so that the following ones can be compared exactly.
    static void forgetTexts()
    {
        takeWarnings();
        takeDiagnostics();
    }

    static void repeat(const std::function<void()>& fault)
    {
        constexpr int firstTimes = 20;
        constexpr int measuredTimes = 100;
        constexpr long memorySlack = 96; // KiB: less than one per run
        for (int i = 0; i < firstTimes && !HasFailure(); ++i)
            fault();
        const Footprint before = footprintOf(getpid());
        for (int i = 0; i < measuredTimes && !HasFailure(); ++i)
            fault();
        expectNothingLeftBehind(getpid(), before, memorySlack);
    }

    PrivateBus& bus = theBus(); // some parts of the application look for a bus
};

class WithoutFacility : public FaultLibrary, public testing::WithParamInterface<Facility>
{
};

INSTANTIATE_TEST_SUITE_P(Each, WithoutFacility, testing::ValuesIn(facilities),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(WithoutFacility, TheOthersServeAndItIsMinusOneUntilItIsThere)
{
    const Facility& missing = GetParam();
    ASSERT_EQ(ovik_init(0), 0);
    {
        const Variable variable("OVIK_SIM_MISSING", missing.name);
        repeat([&] {
            forgetTexts();
            EXPECT_EQ(ovik_setMode(1), 0);
            EXPECT_EQ(takeProductWarnings(), Texts{missing.warning});
            EXPECT_EQ(takeDiagnostics(),
                      (Texts{"OVIK set mode from 0 to 1", "Local interface loaded"}));
            expectFacilitiesBut({missing.name});
            EXPECT_EQ(ovik_setMode(0), 0);
            expectFacilitiesBut(everyName());
        });
    }
    forgetTexts();
    EXPECT_EQ(ovik_setMode(1), 0);
    EXPECT_EQ(takeProductWarnings(), Texts());
    expectFacilitiesBut({});
    EXPECT_EQ(ovik_shutdown(), 0);
}

TEST_F(FaultLibrary, WithoutAnyFacilityItIsInUseAndEverythingMinusOne)
{
    Texts warnings;
    for (const Facility& facility : facilities)
        warnings.emplace_back(facility.warning);
    const Variable variable("OVIK_SIM_MISSING", listed(everyName()));
    ASSERT_EQ(ovik_init(0), 0);
    repeat([&] {
        forgetTexts();
        EXPECT_EQ(ovik_setMode(1), 0);
        EXPECT_EQ(takeProductWarnings(), warnings);
        expectFacilitiesBut(everyName());
        EXPECT_EQ(ovik_setMode(0), 0);
    });
    EXPECT_EQ(ovik_shutdown(), 0);
}

TEST_F(FaultLibrary, WithoutItsFactoryTheModeIsRefusedUntilItIsThere)
{
    ASSERT_EQ(ovik_init(0), 0);
    {
        const Variable variable("OVIK_SIM_NO_FACTORY", "1");
        repeat([&] {
            forgetTexts();
            EXPECT_EQ(ovik_setMode(1), -6);
            EXPECT_EQ(takeProductWarnings(),
                      Texts{"Can't get the getInstance function in so file"});
            EXPECT_EQ(takeDiagnostics(), (Texts{"OVIK set mode from 0 to 1",
                                                "Can't get the getInstance function in so file"}));
            expectFacilitiesBut(everyName());
        });
    }
    EXPECT_EQ(ovik_setMode(1), 0);
    expectFacilitiesBut({});
    EXPECT_EQ(ovik_shutdown(), 0);
}

TEST_F(FaultLibrary, AFactoryThatGoesLaterIsNotMissedUntilTheNextStart)
{
    ASSERT_EQ(ovik_init(1), 0);
    const Variable variable("OVIK_SIM_NO_FACTORY", "1");
    EXPECT_EQ(ovik_setMode(1), 0);
    expectFacilitiesBut({});
    EXPECT_EQ(ovik_shutdown(), 0);
    ASSERT_EQ(ovik_init(1), 0);
    expectFacilitiesBut(everyName());
    EXPECT_EQ(ovik_shutdown(), 0);
}

TEST_F(FaultLibrary, StartedAndStoppedAgainAndAgainItServesEachTime)
{
    repeat([] {
        ASSERT_EQ(ovik_init(1), 0);
        expectFacilitiesBut({});
        ASSERT_EQ(ovik_shutdown(), 0);
        forgetTexts();
    });
}

TEST_F(FaultLibrary, StartedInVainAgainAndAgainItLeavesAnApplicationWithoutABackendEachTime)
{
    const Variable variable("OVIK_SIM_NO_FACTORY", "1");
    repeat([] {
        ASSERT_EQ(ovik_init(1), 0);
        EXPECT_EQ(ovik_getBrightness(&anInt), -1);
        EXPECT_EQ(ovik_getHWPluginLedMode(0, 0, &anInt), -10);
        ASSERT_EQ(ovik_shutdown(), 0);
        EXPECT_EQ(ovik_getBrightness(&anInt), -3);
        forgetTexts();
    });
}

// --- In a process of its own ---------------------------------------------------------------------

const std::string notLoaded =
    "libOVIK.so was not loaded; the lines above say why. Is its folder in LD_LIBRARY_PATH?";

struct BrokenFile {
    const char* name;
    std::function<void(const std::string& path)> make;
    const char* reason; ///< the dynamic linker's message
};

void PrintTo(const BrokenFile& file, std::ostream* out) { *out << file.name; }

class BrokenLibrary : public testing::TestWithParam<BrokenFile>
{
};

INSTANTIATE_TEST_SUITE_P(
    Files, BrokenLibrary,
    testing::Values(
        BrokenFile{"None", [](const std::string&) {},
                   "libOVIK.so: cannot open shared object file: No such file or directory"},
        BrokenFile{"Empty", [](const std::string& path) { std::ofstream{path}; }, "file too short"},
        BrokenFile{"Text",
                   [](const std::string& path) { std::ofstream(path) << std::string(5000, 'x'); },
                   "invalid ELF header"},
        BrokenFile{"Folder",
                   [](const std::string& path) { std::filesystem::create_directory(path); },
                   "cannot read file data: Is a directory"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_P(BrokenLibrary, IsRefusedWithTheReason)
{
    const TempDir dir;
    GetParam().make(dir.path("libOVIK.so"));
    Process program(commandOf(OVIK_TRY_LIBRARY_PATH), {"LD_LIBRARY_PATH=" + dir.path("")});
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.errors().rfind("Failed loading OVIK plugin: ", 0), 0u) << program.errors();
    EXPECT_NE(program.errors().find(GetParam().reason), std::string::npos) << program.errors();
    EXPECT_EQ(program.output(), "  (OVIK set mode from 0 to 0)\n"
                                "  (OVIK set mode from 0 to 1)\n"
                                "  (Failed loading OVIK plugin: )\n" +
                                    notLoaded + "\n  (OVIK set mode from 0 to 0)\n");
}

TEST_F(FaultLibrary, WithoutItsFactoryItIsRefusedWithTheReason)
{
    Process program(commandOf(OVIK_TRY_LIBRARY_PATH),
                    {"LD_LIBRARY_PATH=" OVIK_PANEL_LIBRARY_DIR, "OVIK_SIM_NO_FACTORY=1"});
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.errors(), "Can't get the getInstance function in so file\n");
    EXPECT_EQ(program.output(), "  (OVIK set mode from 0 to 0)\n"
                                "  (OVIK set mode from 0 to 1)\n"
                                "  (Can't get the getInstance function in so file)\n" +
                                    notLoaded + "\n  (OVIK set mode from 0 to 0)\n");
}
} // namespace
