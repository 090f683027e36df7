#pragma once

#include "tests/support/fake_platform.h"

#include <ostream>

/// What keeps a command from reaching the platform.
enum class Obstacle {
    NotFound, ///< the service has not found the platform yet
    Lacking,  ///< the command's object was missing when the service found the platform
    Failing   ///< the call fails: the platform has gone, or the object
};

/// One command of the protocol, with an example of its use.
struct CommandRow {
    const char* word;
    std::string arguments;          ///< behind the word, each with its ";"
    std::string member;             ///< as FakePlatform::answer() takes it
    Reply reply;                    ///< of the platform
    std::vector<std::string> calls; ///< exactly these, as they were on the bus
    std::string response;
    std::string logName; ///< in the error line

    std::string request() const { return word + arguments; }
    bool isEeprom() const { return member.rfind("I2CSEEPROM.", 0) == 0; }
    bool isPlugin() const
    {
        return member.rfind("Leds.", 0) == 0 || member.rfind("Sensors.", 0) == 0;
    }
    /// A write to a plug-in point, which asks for the point's mode first.
    bool isGuarded() const { return calls.size() == 2; }
    /// The response when the platform cannot be reached: a plug-in command takes a failed call for
    /// the platform's answer 0, and a guarded write is then not made.
    std::string responseTo(Obstacle obstacle) const;
    /// The server's log line of a failure.
    std::string errorLine(int status) const;
};

void PrintTo(const CommandRow& row, std::ostream* out);

/// Every command but "quit". The plug-in rows name place 1: the second module found, in slot 2.
const std::vector<CommandRow>& commandRows();

/// Makes every example work, with plug-in points that may be set.
void answerCommands(FakePlatform& platform);
