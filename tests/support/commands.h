#pragma once

#include "tests/support/fake_platform.h"

#include <ostream>

/// Why a command does not reach the platform.
enum class Obstacle {
    NotFound, ///< the service has not found the platform yet
    Lacking,  ///< the command's object was missing when the service found the platform
    Failing   ///< the call fails because the platform or the object has gone
};

/// One command of the protocol, with an example of its use.
struct CommandRow {
    const char* word;
    std::string arguments;          ///< each preceded by ";"
    std::string member;             ///< for FakePlatform::answer()
    Reply reply;                    ///< from the platform
    std::vector<std::string> calls; ///< the exact calls on the bus
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
    /// The response when the platform cannot be reached. A plug-in command takes a failed call for
    /// the result 0, and so it skips a guarded write.
    std::string responseTo(Obstacle obstacle) const;
    std::string errorLine(int status) const;
};

void PrintTo(const CommandRow& row, std::ostream* out);

/// Every command but "quit". The plug-in rows name place 1: the second module found, in slot 2.
const std::vector<CommandRow>& commandRows();

/// Configures a reply for every example; the plug-in points may be set.
void answerCommands(FakePlatform& platform);
