#pragma once

#include "tests/soak/random.h"

#include <string>
#include <vector>

/// Makes requests of every command, sound and odd ones, and messages that are none.
class Requests
{
public:
    explicit Requests(Random& random) : m_random(random) {}

    /// Throws when the service's table has an argument for which there are no values here.
    static void checkArguments();

    /// The bytes of a message, at most @p longest or so.
    std::string any();
    /// As any(), without service commands: those may wait for each other.
    std::string anyButCommand();
    /// A sound request of the command of that place in the service's table.
    std::string sound(size_t command);

    /// Requests that make the panel's texts as long as they may get, and read them.
    std::vector<std::string> largest() const;

    bool haveCommandsAllCome() const;

private:
    std::string request(size_t command, int percentOdd);
    std::string garbage(size_t command);

    Random& m_random;
    size_t m_next = 0; ///< so that every command comes early on
    int m_number = 0;
};
