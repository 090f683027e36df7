#include "client/ovikctl/connection.h"
#include "client/ovikctl/facilities.h"
#include "client/ovikctl/verbs.h"

#include <algorithm>
#include <thread>

namespace
{
/// Without a platform, every facility fails, with -1 or -10. With one, hardly any fails.
void requirePlatform(Connection& connection, const Deadline& deadline)
{
    const auto answers = [&](const Facility& facility) {
        return connection.ask(rawRequest(facility.request), deadline).status == OVIK_OK;
    };
    if (!std::any_of(facilities.begin(), facilities.end(), answers))
        throw Failure(refused, "the service is there, but no platform yet: see whether it is on "
                               "the bus, busctl --system status com.wenu.OVIK");
}
} // namespace

int runWait(const Settings& settings, bool forPlatform)
{
    constexpr Milliseconds pause = 100ms;
    const Deadline deadline(settings.bound(30s));
    std::optional<Failure> last;
    while (!last || !deadline.isOver()) {
        const bool isCutShort = deadline.left() < 1000;
        try {
            Connection connection(settings, deadline);
            connection.ask(rawRequest(noCommand), deadline);
            if (forPlatform)
                requirePlatform(connection, deadline);
            return allDone;
        } catch (const Failure& failure) {
            // A time-out of a shortened last try is not evidence; keep the earlier failure.
            if (!last || !isCutShort || failure.code != timedOut)
                last = failure;
        }
        std::this_thread::sleep_for(std::min<Milliseconds>(pause, Milliseconds(deadline.left())));
    }
    throw Failure(*last);
}
