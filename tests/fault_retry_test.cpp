// A backend that is started in vain again and again, each time with a bus connection of its own:
// nothing of it may stay.

#include "dbus_ovik/OVIKInterfaceDbus.h"

#include "tests/support/fault_fixture.h"
#include "tests/support/qt_fixture.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>

#include <sstream>
#include <unistd.h>

namespace
{
using Texts = std::vector<std::string>;

constexpr int firstTries = 50;
constexpr int measuredTries = 300;
/// KiB; less than a third of one for each try.
constexpr long memorySlack = 96;

class FaultRetry : public testing::Test
{
protected:
    /// Tries often, as the application does every second. @p outcome and @p warnings are the texts
    /// of each try.
    void expectTriesLeaveNothingBehind(const std::string& outcome, const Texts& warnings)
    {
        OVIKInterfaceDbus backend;
        const auto tryOften = [&](int count) {
            for (int i = 0; i < count; ++i) {
                ASSERT_FALSE(backend.init());
                settle();
                ASSERT_EQ(takeWarnings(), warnings);
                const Texts texts = takeDiagnostics();
                ASSERT_EQ(texts.size(), 2u);
                ASSERT_EQ(texts[0].rfind("dbus-debug retrying after name ", 0), 0u) << texts[0];
                ASSERT_EQ(texts[1], outcome);
            }
        };
        takeWarnings();
        takeDiagnostics();
        ASSERT_FALSE(backend.init()); // on the connection that the whole process shares
        ASSERT_EQ(takeWarnings(), warnings);
        ASSERT_EQ(takeDiagnostics(), Texts{outcome});
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
        "dbus-debug connection success",
        {"Cannot find dbus node in system bus. Fallback to use session bus"});
}

TEST_F(FaultRetry, WithoutABus)
{
    theBus().stop();
    // The connection that the whole process shares is told of it by Qt's own thread.
    ASSERT_TRUE(waitUntil([] { return !QDBusConnection::systemBus().isConnected(); }));
    expectTriesLeaveNothingBehind("dbus-debug connection failed", {});
    theBus().start();
}
} // namespace
