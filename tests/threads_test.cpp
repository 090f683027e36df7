// The two places where the threads of the process meet, many times over: the application object
// that one publishes for the others, and the outcome of a service command. Made for ThreadSanitizer
// (see threads.supp); worth little without it.

#include "ovik_server/service_command.h"
#include "wrapper_ovik/ovik_c.h"

#include "tests/support/fake_platform.h"
#include "tests/support/private_bus.h"
#include "tests/support/process.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <future>
#include <thread>
#include <unistd.h>
#include <vector>

/// In place of the system's: the product's sleeps take a hundredth, so that the threads meet more
/// often.
extern "C" int usleep(useconds_t microseconds)
{
    const timespec time = {0, static_cast<long>(microseconds) * 10};
    return nanosleep(&time, nullptr);
}

namespace
{
/// One for the whole program, as Qt keeps the first connection to the system bus.
PrivateBus& theBus()
{
    static PrivateBus bus;
    return bus;
}

/// With such sleeps it gives up soon; called again, it waits on for the same thread.
status_t start(int mode)
{
    status_t status = OVIK_NO_APPLICATION;
    waitUntil([&] { return (status = ovik_init(mode)) != OVIK_NO_APPLICATION; });
    return status;
}

TEST(Threads, TheApplicationIsPublishedAskedAndTakenBack)
{
    theBus();
    for (int round = 0; round < 200; ++round) {
        ASSERT_EQ(start(round % 2 == 0 ? 0 : 6), 0); // 6 looks for a platform meanwhile
        int value = 0;
        EXPECT_EQ(ovik_getBuzzerMode(&value), -1);
        EXPECT_EQ(ovik_setVolatileParameter("key", "value", &value), -1);
        char text[16];
        EXPECT_EQ(ovik_mainOsVersion(text, sizeof text), -1);
        unsigned char byte = 0;
        EXPECT_EQ(ovik_seepromRead(0, 1, &byte), -1);
        EXPECT_EQ(ovik_doSomething(), 0);
        ASSERT_EQ(ovik_shutdown(), 0);
    }
}

/// Asks until there is no application; false when anything is answered that may not be.
bool askUntilItHasEnded()
{
    for (;;) {
        int value = 0;
        const status_t status = ovik_setVolatileParameter("key", "value", &value);
        if (status == OVIK_NO_APPLICATION)
            return true;
        if (status != OVIK_NO_PLATFORM && status != OVIK_NOT_RUN)
            return false;
    }
}

TEST(Threads, TheLoopEndsWhileSeveralThreadsAsk)
{
    theBus();
    for (int round = 0; round < 200; ++round) {
        ASSERT_EQ(start(0), 0);
        std::vector<std::future<bool>> callers;
        for (int caller = 0; caller < 3; ++caller)
            callers.push_back(std::async(std::launch::async, askUntilItHasEnded));
        int value = 0;
        EXPECT_EQ(ovik_getBuzzerMode(&value), -1);
        QMetaObject::invokeMethod(QCoreApplication::instance(), "quit", Qt::QueuedConnection);
        // At once, or not until the callers have met the end, or not at all before the next start.
        if (round % 3 == 0) {
            const status_t status = ovik_shutdown();
            EXPECT_TRUE(status == OVIK_OK || status == OVIK_NOT_STARTED) << status;
        }
        for (std::future<bool>& caller : callers)
            EXPECT_TRUE(caller.get());
        if (round % 3 == 1) {
            EXPECT_EQ(ovik_shutdown(), OVIK_NOT_STARTED);
        }
    }
    ovik_shutdown();
}

/// Outcomes without end, each with its number in all three texts. Slower than they can be taken, as
/// they would otherwise pile up in front of the replies.
class Storm
{
public:
    explicit Storm(FakePlatform& platform)
        : m_thread([this, &platform] {
              for (int number = 0; !m_stop; ++number) {
                  const std::string text = std::to_string(number);
                  platform.emitCommandResult(text, text, text);
                  std::this_thread::sleep_for(200us);
              }
          })
    {
    }
    ~Storm()
    {
        m_stop = true;
        m_thread.join();
    }

private:
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

/// The number that the texts of an outcome carry, or -1 when they are not of one.
int numberOf(const QByteArray& outcome)
{
    const QList<QByteArray> fields = outcome.split(';');
    if (fields.size() != 4 || fields[1] != fields[2] || fields[2] != fields[3])
        return -1;
    bool isNumber = false;
    const int number = fields[1].toInt(&isNumber);
    return isNumber ? number : -1;
}

TEST(Threads, AnOutcomeIsReadWholeWhileOthersPourIn)
{
    theBus();
    FakePlatform platform;
    platform.answer("ServiceManager.command", replyWith("i", 4));
    ASSERT_EQ(start(2), 0);
    {
        const Storm storm(platform);
        const Fields scan("serviceCommand;wifi;scan;{}");
        int last = -1;
        for (int round = 0; round < 500; ++round) {
            answer::Outcome outcome;
            const status_t status = serviceCommand(scan, outcome).status;
            if (status == OVIK_TIMEOUT) // after a hundredth of a minute
                continue;
            ASSERT_EQ(status, OVIK_OK);
            ASSERT_EQ(outcome.result, 4);
            const int number = numberOf(outcome.details);
            ASSERT_GT(number, last) << outcome.details.constData();
            last = number;
        }
        EXPECT_GE(last, 0) << "no outcome at all";
    }
    EXPECT_EQ(ovik_shutdown(), 0);
}
} // namespace
