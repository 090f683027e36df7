// No library, or one without the factory. These are separate programs, because a loaded library is
// found again by its name. Both run the same tests with different search paths.

#include "local_ovik/OVIKInterfaceLocal.h"
#include "wrapper_ovik/ovik_c.h"

#include "tests/support/fault_fixture.h"
#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <unistd.h>

namespace
{
using Texts = std::vector<std::string>;

TEST(WithoutLibrary, InitFailsAndNamesWhatIsMissing)
{
    takeWarnings();
    takeDiagnostics();
    OVIKInterfaceLocal backend;
    EXPECT_EQ(dlopen("libOVIK.so", RTLD_LAZY | RTLD_NOLOAD), nullptr);
    EXPECT_FALSE(backend.init());
    EXPECT_FALSE(backend.isValid());
    const Texts warnings = takeWarnings();
#ifdef OVIK_EMPTY_LIBRARY
    EXPECT_NE(dlopen("libOVIK.so", RTLD_LAZY | RTLD_NOLOAD), nullptr) << "it stays loaded";
    EXPECT_EQ(warnings, Texts{"Can't get the getInstance function in so file"});
    EXPECT_EQ(takeDiagnostics(), warnings);
#else
    EXPECT_EQ(warnings,
              Texts{"Failed loading OVIK plugin: libOVIK.so: cannot open shared object file: No "
                    "such file or directory"});
    EXPECT_EQ(takeDiagnostics(), Texts{"Failed loading OVIK plugin: "});
#endif
}

TEST(WithoutLibrary, TriesAgainAndAgainLeaveNothingBehind)
{
    OVIKInterfaceLocal backend;
    const auto tryOften = [&](int times) {
        for (int i = 0; i < times; ++i) {
            ASSERT_FALSE(backend.init());
            takeWarnings();
            takeDiagnostics();
        }
    };
    tryOften(20);
    const Footprint before = footprintOf(getpid());
    tryOften(200);
    expectNothingLeftBehind(getpid(), before, 96);
}

TEST(WithoutLibrary, TheApplicationGoesOnWithoutABackend)
{
    theBus();
    ASSERT_EQ(ovik_init(1), 0);
    int value = 0;
    EXPECT_EQ(ovik_getBrightness(&value), -1);
    EXPECT_EQ(ovik_setMode(1), -6);
    EXPECT_EQ(ovik_shutdown(), 0);
}
} // namespace
