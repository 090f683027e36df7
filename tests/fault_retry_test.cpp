// A backend whose start fails repeatedly, each time with a new bus connection: nothing may leak.

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
/// KiB; less than a third of a KiB per try.
constexpr long memorySlack = 96;

class FaultRetry : public testing::Test
{
protected:
    /// Tries often, as the application does each second. Each try reports @p outcome, @p warnings.
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
        ASSERT_FALSE(backend.init()); // on the process's shared connection
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
    // Qt's own thread notices the end of the shared connection.
    ASSERT_TRUE(waitUntil([] { return !QDBusConnection::systemBus().isConnected(); }));
    expectTriesLeaveNothingBehind("dbus-debug connection failed", {});
    theBus().start();
}
} // namespace
