// The example program with which a firmware engineer tests a platform library.

#include "tests/support/process.h"

#include <gtest/gtest.h>

namespace
{
const std::string path = "LD_LIBRARY_PATH=" OVIK_PANEL_LIBRARY_DIR;

TEST(TryLibrary, PrintsWhatEveryFacilityAnswers)
{
    Process program(commandOf(OVIK_TRY_LIBRARY_PATH), {path});
    EXPECT_EQ(program.wait(), 0);
    EXPECT_NE(program.output().find("Backlight        brightness"), std::string::npos);
    EXPECT_NE(program.output().find("SystemInfo       PANEL, hardware code"), std::string::npos);
    EXPECT_NE(program.output().find("MainOSInfo       version 1.4.2\n"), std::string::npos);
}

TEST(TryLibrary, SaysWhichFacilityIsMissing)
{
    Process program(commandOf(OVIK_TRY_LIBRARY_PATH), {path, "OVIK_SIM_MISSING=SysStat"});
    EXPECT_EQ(program.wait(), 1);
    EXPECT_NE(program.output().find("SysStat          status -1: the library has no such object"),
              std::string::npos);
}

TEST(TryLibrary, SaysWhyTheLibraryWasNotLoaded)
{
    Process program(commandOf(OVIK_TRY_LIBRARY_PATH), {"LD_LIBRARY_PATH=/nonexistent"});
    EXPECT_EQ(program.wait(), 1);
    EXPECT_NE(program.output().find("libOVIK.so was not loaded"), std::string::npos);
    EXPECT_NE(program.errors().find("cannot open shared object file"), std::string::npos);
}
} // namespace
