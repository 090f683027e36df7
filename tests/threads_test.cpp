// The two places where the process's threads interact, many times: publishing the application
// object, and delivering the outcome of a service command. Written for ThreadSanitizer (see
// threads.supp); of little use without it.

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

/// Replaces the system's usleep(): sleeps take a hundredth of the time, for more interaction.
extern "C" int usleep(useconds_t microseconds)
{
    const timespec time = {0, static_cast<long>(microseconds) * 10};
    return nanosleep(&time, nullptr);
}

namespace
{
/// One bus for the whole program, since Qt never drops its first system bus connection.
PrivateBus& theBus()
{
    static PrivateBus bus;
    return bus;
}

/// With short sleeps ovik_init() times out early; a repeated call waits for the same thread.
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
        ASSERT_EQ(start(round % 2 == 0 ? 0 : 6), 0); // mode 6 looks for a platform meanwhile
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

/// Asks until the application has ended; false after any unexpected answer.
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
        // Shut down at once, after the callers have seen the end, or not before the next start.
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

/// Endless outcomes, each with its number in all three texts. A faster storm would fill the queues
/// ahead of the replies.
class Storm
{
public:
    explicit Storm(FakePlatform& platform)
        : m_thread([this, &platform] {
              for (int number = 0; !m_stop; ++number) {
                  const std::string text = std::to_string(number);
                  platform.emitCommandResult(text, text, text);
                  std::this_thread::sleep_for(1ms);
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

/// The number in the texts of an outcome; -1 when the texts are inconsistent.
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
            if (status == OVIK_TIMEOUT) // a hundredth of a minute has passed
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
