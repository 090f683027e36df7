// A backend that is started in vain again and again, each time with a bus connection of its own:
// nothing of it may stay.

#include "dbus_ovik/OVIKInterfaceDbus.h"

#include "tests/support/fault_fixture.h"
#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <sstream>
#include <unistd.h>

namespace
{
constexpr int firstTries = 50;
constexpr int measuredTries = 300;
/// KiB; less than a third of one for each try.
constexpr long memorySlack = 96;

class FaultRetry : public testing::Test
{
protected:
    /// Tries often, as the application does every second.
    void expectTriesLeaveNothingBehind(const std::string& warning)
    {
        OVIKInterfaceDbus backend;
        const auto tryOften = [&](int count) {
            for (int i = 0; i < count; ++i) {
                ASSERT_FALSE(backend.init());
                settle();
                const auto warnings = takeWarnings();
                ASSERT_EQ(warnings.empty(), warning.empty());
                ASSERT_TRUE(warning.empty() || warnings.at(0) == warning);
                takeDiagnostics();
            }
        };
        ASSERT_FALSE(backend.init()); // on the connection that the whole process shares
        takeWarnings();
        tryOften(firstTries);
        const Footprint before = footprintOf(getpid());
        tryOften(measuredTries);
        Footprint now;
        EXPECT_TRUE(waitUntil([&] {
            settle();
            return isBackAt(before, now = footprintOf(getpid()), memorySlack);
        })) << "before: "
            << before << "\nnow: " << now;
        std::ostringstream text;
        text << measuredTries << " tries: " << before << " -> " << now;
        figure(text.str());
    }

    int argc = 1;
    QCoreApplication application{argc, nullptr};
};

TEST_F(FaultRetry, OnABusWithoutTheService)
{
    theBus();
    expectTriesLeaveNothingBehind(
        "Cannot find dbus node in system bus. Fallback to use session bus");
}

TEST_F(FaultRetry, WithoutABus)
{
    theBus().stop();
    expectTriesLeaveNothingBehind("");
    theBus().start();
}
} // namespace
