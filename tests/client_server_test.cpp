// The client library with the real server.

#include "client/ovik_client.h"
#include "tests/support/commands.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"
#include "wrapper_ovik/ovik_c.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <future>

namespace
{
using Clock = std::chrono::steady_clock;

constexpr int longEnough = static_cast<int>(patience.count());

/// A connection to the server's default socket.
struct Caller {
    Caller() : error(ovik_client_open(&client, nullptr, longEnough)) {}
    ~Caller() { ovik_client_close(client); }
    Caller(const Caller&) = delete;
    Caller& operator=(const Caller&) = delete;

    ovik_client_error request(const std::string& text, int timeout = longEnough)
    {
        return ovik_client_request(client, text.c_str(), timeout, &answer);
    }

    /// The answers as sent, including failures.
    std::vector<std::string> batch(const std::vector<std::string>& requests)
    {
        std::vector<const char*> texts;
        for (const std::string& text : requests)
            texts.push_back(text.c_str());
        std::vector<std::string> answers;
        const auto keep = [](void* kept, size_t, const ovik_client_answer* got) {
            static_cast<std::vector<std::string>*>(kept)->push_back(asSent(*got));
        };
        error = ovik_client_batch(client, texts.data(), texts.size(), longEnough, keep, &answers,
                                  &progress);
        return answers;
    }

    static std::string asSent(const ovik_client_answer& answer)
    {
        const std::string status = std::to_string(answer.status);
        return answer.status == OVIK_OK ? status + ' ' + answer.text : status;
    }

    ovik_client* client = nullptr;
    ovik_client_error error;
    ovik_client_answer answer = {};
    ovik_client_progress progress = {};
};

class ClientServer : public testing::Test
{
protected:
    void SetUp() override
    {
        answerCommands(platform);
        ASSERT_TRUE(server.waitForPlatform());
    }

    PrivateBus bus;
    FakePlatform platform;
    Server server;
};

/// The fields of a request, joined by the library.
std::string joined(const std::string& request)
{
    std::vector<std::string> fields(1);
    for (const char byte : request) {
        if (byte == ';')
            fields.emplace_back();
        else
            fields.back() += byte;
    }
    std::vector<const char*> texts;
    for (const std::string& field : fields)
        texts.push_back(field.c_str());
    char buffer[OVIK_CLIENT_REQUEST_MAX + 1];
    EXPECT_EQ(ovik_client_join(texts.data(), texts.size(), buffer, sizeof buffer), OVIK_CLIENT_OK);
    return buffer;
}

TEST_F(ClientServer, EveryCommandIsAnsweredSinglyAndInABatch)
{
    Caller caller;
    ASSERT_EQ(caller.error, OVIK_CLIENT_OK);
    std::vector<std::string> requests;
    std::vector<std::string> answers;
    for (const CommandRow& row : commandRows()) {
        // Commands that make the same platform call have equal replies in their examples.
        EXPECT_EQ(caller.request(joined(row.request())), OVIK_CLIENT_OK) << row.word;
        requests.push_back(row.request());
        answers.push_back(Caller::asSent(caller.answer));
    }
    EXPECT_EQ(caller.batch(requests), answers);
    EXPECT_EQ(caller.error, OVIK_CLIENT_OK);

    std::vector<std::string> expected;
    for (const CommandRow& row : commandRows())
        expected.push_back(row.member == "Leds.GetLedMode" || row.member == "Sensors.getIoMode"
                               ? "0 2"
                               : row.response);
    EXPECT_EQ(answers, expected);
}

TEST_F(ClientServer, EveryShapeOfAnAnswerIsRead)
{
    Caller caller;
    unsigned int number = 0;
    ASSERT_EQ(caller.request("setBuzzerMode;1"), OVIK_CLIENT_OK);
    EXPECT_EQ(ovik_client_unsigned(&caller.answer, &number), OVIK_CLIENT_OK);
    EXPECT_EQ(number, 4294967293u);

    int signedNumber = 0;
    ASSERT_EQ(caller.request("serviceStop;ssh"), OVIK_CLIENT_OK);
    EXPECT_EQ(ovik_client_signed(&caller.answer, &signedNumber), OVIK_CLIENT_OK);
    EXPECT_EQ(signedNumber, -2);

    for (const uint64_t size :
         {uint64_t(5000000000), uint64_t(0), UINT64_MAX, UINT64_MAX / 2 + 1}) {
        uint64_t got = 1;
        platform.answer("SysStat.getAvailableMemory", replyWith("t", size));
        ASSERT_EQ(caller.request("getAvailableMemory"), OVIK_CLIENT_OK);
        EXPECT_EQ(ovik_client_size(&caller.answer, &got), OVIK_CLIENT_OK);
        EXPECT_EQ(got, size);
    }

    const char* text = nullptr;
    ASSERT_EQ(caller.request("mainOsVersion"), OVIK_CLIENT_OK);
    EXPECT_EQ(ovik_client_text(&caller.answer, &text), OVIK_CLIENT_OK);
    EXPECT_STREQ(text, "1.2.3");

    ovik_client_system_info info;
    ASSERT_EQ(caller.request("getSystemInfo"), OVIK_CLIENT_OK);
    EXPECT_EQ(ovik_client_system_information(&caller.answer, &info), OVIK_CLIENT_OK);
    EXPECT_STREQ(info.moduleName, "PANEL");
    EXPECT_EQ(info.hwCode, 17u);
    EXPECT_EQ(info.manufactureCode, 513u);

    unsigned char bytes[3332];
    size_t count = 0;
    platform.answer("I2CSEEPROM.read", replyResultAndBytes(0, std::string(65535, '\xAB')));
    for (const size_t length : {0u, 1u, 3u, 3332u}) {
        ASSERT_EQ(caller.request("seepromRead;0;" + std::to_string(length)), OVIK_CLIENT_OK);
        EXPECT_EQ(ovik_client_bytes(&caller.answer, bytes, sizeof bytes, &count), OVIK_CLIENT_OK);
        EXPECT_EQ(count, length);
        EXPECT_EQ(std::count(bytes, bytes + count, 0xAB), static_cast<long>(length));
    }

    ovik_client_outcome outcome;
    ASSERT_EQ(caller.request("serviceCommand;ntp;sync;{}"), OVIK_CLIENT_OK);
    EXPECT_EQ(ovik_client_service_outcome(&caller.answer, &outcome), OVIK_CLIENT_OK);
    EXPECT_EQ(outcome.result, 4);
    EXPECT_STREQ(outcome.details, "");
    auto scan = std::async(std::launch::async,
                           [&] { return caller.request("serviceCommand;wifi;scan;{}"); });
    EXPECT_TRUE(platform.waitForCall("\"wifi\" \"scan\""));
    platform.emitCommandResult("wifi", "scan", "[\";\"]");
    ASSERT_EQ(scan.get(), OVIK_CLIENT_OK);
    EXPECT_EQ(ovik_client_service_outcome(&caller.answer, &outcome), OVIK_CLIENT_OK);
    EXPECT_EQ(outcome.result, 4);
    EXPECT_STREQ(outcome.details, "wifi;scan;[\";\"]");

    ASSERT_EQ(caller.request("noSuchCommand"), OVIK_CLIENT_OK);
    EXPECT_EQ(caller.answer.status, OVIK_NOT_RUN);
    EXPECT_EQ(ovik_client_text(&caller.answer, &text), OVIK_CLIENT_REFUSED);
}

TEST_F(ClientServer, TheLongestAnswersInALargeBatchBlockNobody)
{
    platform.answer("OVIK.getAllSystemParametersJSON", replyText(std::string(20000, 'x')));
    Caller caller;
    const std::vector<std::string> requests(1000, "getAllSystemParametersJson");
    EXPECT_EQ(caller.batch(requests), std::vector(1000, "0 " + std::string(9997, 'x')));
}

TEST_F(ClientServer, WhileAnotherIsServedAClientTimesOutAndALaterOneIsServedAfterThat)
{
    {
        Caller served;
        ASSERT_EQ(served.request("getBrightness"), OVIK_CLIENT_OK);
        Caller waiting;
        ASSERT_EQ(waiting.error, OVIK_CLIENT_OK); // in the queue
        EXPECT_EQ(waiting.request("getBrightness", 100), OVIK_CLIENT_TIMED_OUT);
        EXPECT_EQ(waiting.request("getBrightness"), OVIK_CLIENT_NOT_CONNECTED);
    }
    Caller later;
    EXPECT_EQ(later.request("getBrightness"), OVIK_CLIENT_OK);
    EXPECT_STREQ(later.answer.text, "75");
}

TEST_F(ClientServer, BehindAQuitNothingIsAnsweredAndTheCallerKnows)
{
    for (int round = 0; round < 10; ++round) {
        Caller caller;
        const auto answers = caller.batch({"getBrightness", "quit", "getBuzzerMode", "unknown"});
        EXPECT_EQ(answers, std::vector<std::string>({"0 75", "0 "}));
        EXPECT_EQ(caller.error, OVIK_CLIENT_CLOSED);
        EXPECT_EQ(caller.progress.answered, 2u);
        EXPECT_GE(caller.progress.sent, 2u);
        EXPECT_EQ(server.process().wait(), 0);
        server.start();
    }
}

TEST_F(ClientServer, AServerThatIsKilledIsGoneUntilItIsBack)
{
    Caller caller;
    ASSERT_EQ(caller.request("getBrightness"), OVIK_CLIENT_OK);
    server.process().signal(SIGKILL);
    EXPECT_EQ(server.process().wait(), 128 + SIGKILL);
    EXPECT_EQ(caller.request("getBrightness"), OVIK_CLIENT_CLOSED);
    EXPECT_EQ(Caller().error, OVIK_CLIENT_NO_SERVICE);

    server.start();
    EXPECT_EQ(caller.request("getBrightness"), OVIK_CLIENT_NOT_CONNECTED);
    EXPECT_EQ(Caller().request("getBrightness"), OVIK_CLIENT_OK);
}

// --- Times ---------------------------------------------------------------------------------------

/// True while the server's main thread sleeps between two polls.
bool isAsleep(pid_t pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string stat;
    std::getline(file, stat);
    const size_t name = stat.rfind(") ");
    return name != std::string::npos && stat[name + 2] == 'S';
}

double median(int rounds, const std::function<double()>& time)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i)
        times.push_back(time());
    const auto middle = times.begin() + rounds / 2;
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

TEST(Times, ABatchOf20ReadsTakesOneIdleSleepAnd20PlatformCalls)
{
    PrivateBus bus;
    FakePlatform platform;
    platform.answer("Backlight.getBrightness", replyWith("i", 75));
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    // This process calls the platform in the same way as the server.
    ASSERT_EQ(ovik_init(2), OVIK_OK);
    int brightness = 0;
    ASSERT_TRUE(waitUntil([&] { return ovik_getBrightness(&brightness) == OVIK_OK; }));

    Caller caller;
    constexpr int reads = 20;
    const std::vector<std::string> requests(reads, "getBrightness");
    constexpr double idleSleep = 10;
    constexpr double ownWork = 2; // of the server and of this program, including wake-ups
    // A request before the server falls asleep again would not wait.
    const auto timeFromIdle = [&](const std::function<void()>& work) {
        EXPECT_TRUE(waitUntil([&] { return isAsleep(server.process().pid()); }));
        const auto start = Clock::now();
        work();
        return millisecondsSince(start);
    };
    bool good = false;
    // A loaded machine can delay any single measurement, so the best of a few counts.
    for (int i = 0; i < 20 && !good; ++i) {
        const double calls = median(21, [&] {
            const auto start = Clock::now();
            for (int j = 0; j < reads; ++j)
                EXPECT_EQ(ovik_getBrightness(&brightness), OVIK_OK);
            return millisecondsSince(start);
        });
        const double singles = median(3, [&] {
            double sum = 0;
            for (int j = 0; j < reads; ++j)
                sum += timeFromIdle(
                    [&] { EXPECT_EQ(caller.request(requests.front()), OVIK_CLIENT_OK); });
            return sum;
        });
        const double batch = median(21, [&] {
            return timeFromIdle([&] {
                EXPECT_EQ(caller.batch(requests), std::vector<std::string>(reads, "0 75"));
            });
        });
        printf("20 calls %.2f ms, 20 requests %.2f ms, a batch of 20 %.2f ms, ratio %.1f\n", calls,
               singles, batch, singles / batch);
        // The platform's time is subtracted: under load it exceeds all the sleeps.
        good = singles - calls > 8 * (batch - calls) && batch <= idleSleep + calls + ownWork;
    }
    EXPECT_TRUE(good);
    ovik_shutdown();
}
} // namespace
