// How long a service command waits for an outcome, counted in simulated sleeps. The real platform
// and socket are part of service_command_test.

#include "ovik_server/service_command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <unistd.h>

namespace
{
constexpr int never = -1;
constexpr int halfASecond = 500000;

struct {
    status_t status = OVIK_OK;       ///< of the call
    int outcomeAfter = never;        ///< number of sleeps
    std::function<void()> outcome;   ///< replaces the usual outcome
    int sleeps = 0;                  ///< of the command under test
    int shortestSleep = halfASecond; ///< in microseconds
    int longestSleep = halfASecond;
} standIn;

void bringOutcome() { standIn.outcome ? standIn.outcome() : onCommandResult("wifi", "scan", "[]"); }

class OutcomeWait : public testing::Test
{
protected:
    void SetUp() override { standIn = {}; }
    /// Clears the flag for the next test.
    void TearDown() override { onCommandResult("", "", ""); }

    status_t command(const char* request, int outcomeAfter)
    {
        standIn.outcomeAfter = outcomeAfter;
        standIn.sleeps = 0;
        result = {};
        const CallStatus ended = serviceCommand(Fields(request), result);
        EXPECT_STREQ(ended.logText, ended.status == OVIK_TIMEOUT ? "timeout" : nullptr);
        return ended.status;
    }

    answer::Outcome result;
};
} // namespace

/// Replaces the system's usleep().
extern "C" int usleep(useconds_t microseconds)
{
    standIn.shortestSleep = std::min(standIn.shortestSleep, static_cast<int>(microseconds));
    standIn.longestSleep = std::max(standIn.longestSleep, static_cast<int>(microseconds));
    if (++standIn.sleeps == standIn.outcomeAfter)
        bringOutcome();
    return 0;
}

/// Replaces the bridge's function.
status_t ovik_serviceCommand(const char*, const char*, const char*, void* fnCallback, int* pResp)
{
    EXPECT_EQ(fnCallback, reinterpret_cast<void*>(onCommandResult));
    if (standIn.outcomeAfter == 0)
        bringOutcome();
    if (standIn.status == OVIK_OK)
        *pResp = 4;
    return standIn.status;
}

TEST_F(OutcomeWait, AScanSleepsUntilItsOutcomeHasComeButNoMoreThan120Times)
{
    const struct {
        int outcomeAfter;
        status_t status;
        int sleeps;
    } rows[] = {
        {0, OVIK_OK, 0}, // before the call returned
        {1, OVIK_OK, 1},
        {3, OVIK_OK, 3},
        {119, OVIK_OK, 119},
        {120, OVIK_TIMEOUT, 120}, // no check follows the last sleep
        {never, OVIK_TIMEOUT, 120},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.outcomeAfter);
        EXPECT_EQ(command("serviceCommand;wifi;scan;{}", row.outcomeAfter), row.status);
        EXPECT_EQ(standIn.sleeps, row.sleeps);
        EXPECT_EQ(result.details, row.status == OVIK_OK ? ";wifi;scan;[]" : "");
    }
    EXPECT_EQ(standIn.shortestSleep, halfASecond);
    EXPECT_EQ(standIn.longestSleep, halfASecond);
}

TEST_F(OutcomeWait, AnOutcomeThatComesDuringTheLastSleepIsNotWaitedForByTheNextCommand)
{
    ASSERT_EQ(command("serviceCommand;wifi;scan;{}", 120), OVIK_TIMEOUT);
    EXPECT_EQ(command("serviceCommand;wifi;connect;{}", never), OVIK_OK);
    EXPECT_EQ(standIn.sleeps, 0);
}

TEST_F(OutcomeWait, AnyCommandWaitsForTheOutcomeThatAScanDidNotGet)
{
    ASSERT_EQ(command("serviceCommand;wifi;scan;{}", never), OVIK_TIMEOUT);
    EXPECT_EQ(command("serviceCommand;x;y;z", never), OVIK_TIMEOUT);
    EXPECT_EQ(standIn.sleeps, 120);
    EXPECT_EQ(command("serviceCommand;x;y;z", 2), OVIK_OK);
    EXPECT_EQ(standIn.sleeps, 2);
    EXPECT_EQ(result.details, "") << "only a scan tells of it";
    EXPECT_EQ(command("serviceCommand;x;y;z", never), OVIK_OK);
    EXPECT_EQ(standIn.sleeps, 0);
}

TEST_F(OutcomeWait, AScanWhoseCallFailedDoesNotWaitButTheNextCommandDoes)
{
    standIn.status = OVIK_REPLY_ERROR;
    EXPECT_EQ(command("serviceCommand;wifi;scan;{}", never), OVIK_REPLY_ERROR);
    EXPECT_EQ(standIn.sleeps, 0);
    standIn.status = OVIK_OK;
    EXPECT_EQ(command("serviceCommand;x;y;z", 5), OVIK_OK);
    EXPECT_EQ(standIn.sleeps, 5);
}

TEST_F(OutcomeWait, AnOutcomesNullTextCountsAsEmpty)
{
    const struct {
        const char* texts[3];
        const char* outcome;
    } rows[] = {
        {{nullptr, nullptr, nullptr}, ";;;"},
        {{nullptr, "scan", nullptr}, ";;scan;"},
        {{"wifi", nullptr, "[]"}, ";wifi;;[]"},
    };
    for (const auto& row : rows) {
        standIn.outcome = [&] { onCommandResult(row.texts[0], row.texts[1], row.texts[2]); };
        EXPECT_EQ(command("serviceCommand;wifi;scan;{}", 1), OVIK_OK);
        EXPECT_EQ(result.details, row.outcome);
    }
}
