#include "client/ovikctl/connection.h"
#include "client/ovikctl/facilities.h"
#include "client/ovikctl/output.h"
#include "client/ovikctl/verbs.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
/// Prints the findings, one line each with the remedy, and keeps the first exit code.
class Findings
{
public:
    explicit Findings(const Settings& settings) : m_settings(settings) {}

    void good(const std::string& what, const std::string& found) { print(what, found, ""); }

    void bad(ExitCode code, const std::string& what, const std::string& found,
             const std::string& cure)
    {
        if (m_result == allDone)
            m_result = code;
        print(what, found, cure);
    }

    int result() const { return m_result; }

private:
    void print(const std::string& what, const std::string& found, const std::string& cure) const
    {
        const bool isGood = cure.empty();
        if (m_settings.quiet) { // standard output is /dev/null
            if (!isGood)
                complain("BAD  " + what + ": " + found + "; " + cure);
            return;
        }
        if (m_settings.json) {
            JsonObject object;
            object.add("check", what)
                .addJson("good", isGood ? "true" : "false")
                .add("found", found);
            if (!isGood)
                object.add("todo", cure);
            printLine(object.text());
            return;
        }
        const std::string mark = isGood ? paint(Style::Good, "good") : paint(Style::Bad, "BAD ");
        fputs(mark.c_str(), stdout);
        printLine(" " + what + ": " + found + (isGood ? "" : "; " + cure));
    }

    const Settings& m_settings;
    int m_result = allDone;
};

constexpr const char* endedMeanwhile = "it ended meanwhile";
constexpr const char* start = "start the service: systemctl start ovik_server";
constexpr const char* restart =
    "restart the service, whose unit makes the link anew: systemctl restart ovik_server; without "
    "systemd, remove it first";

std::string targetOf(const std::string& link)
{
    std::string target(PATH_MAX, '\0');
    const ssize_t length = readlink(link.c_str(), target.data(), target.size());
    target.resize(length > 0 ? static_cast<size_t>(length) : 0);
    return target;
}

/// False when there is no socket to connect to.
bool socketIsThere(const Settings& settings, Findings& findings)
{
    const std::string& path = settings.socket;
    std::string shown = path;
    struct stat status = {};
    bool isThere = lstat(path.c_str(), &status) == 0;
    if (isThere && S_ISLNK(status.st_mode)) {
        // The owner of a link can replace it at any time.
        if (!isTrusted(status.st_uid, settings)) {
            findings.bad(noService, "socket",
                         path + " is a link of user " + nameOfUser(status.st_uid) + ", not of root",
                         restart);
            return false;
        }
        shown += " -> " + targetOf(path);
        isThere = stat(path.c_str(), &status) == 0;
        if (!isThere && errno == ENOENT) {
            findings.bad(noService, "socket",
                         "the target of " + shown + " does not exist: the service is stopped",
                         start);
            return false;
        }
    }
    if (!isThere) {
        if (errno == EACCES)
            findings.bad(noPermission, "socket", "this user may not enter the folder of " + shown,
                         "be a user that may, as with sudo");
        else
            findings.bad(noService, "socket", "there is no " + shown, start);
        return false;
    }
    if (!S_ISSOCK(status.st_mode)) {
        findings.bad(noService, "socket",
                     shown + " is there, but is no socket; it is of user " +
                         nameOfUser(status.st_uid),
                     restart);
        return false;
    }
    findings.good("socket", shown + " is there");
    return true;
}

/// Empty when the connection failed.
std::optional<Connection> connect(const Settings& settings, const Deadline& deadline,
                                  Findings& findings)
{
    const std::string& path = settings.socket;
    try {
        std::optional<Connection> connection(std::in_place, settings, deadline, true);
        findings.good("permission", "this user may use it");
        findings.good("type", "somebody listens there, in the way of the service");
        if (!connection->stranger().empty())
            findings.bad(noService, "listener",
                         connection->stranger() +
                             ", neither root nor you, listens: it reads what is sent, and its "
                             "answers may be false",
                         "end it and restart the service, systemctl restart ovik_server, or name "
                         "the service's user with --service-user");
        return connection;
    } catch (const Failure& failure) {
        if (failure.code == noPermission)
            findings.bad(noPermission, "permission", "this user may not use " + path,
                         "be the service's user, as with sudo, or let a group in: "
                         "/usr/share/doc/ovik-server/examples/group-access.conf");
        else if (failure.code == timedOut)
            findings.bad(timedOut, "queue", "20 clients wait for the service already",
                         "end those that are not needed");
        else if (failure.systemError == EPROTOTYPE)
            findings.bad(noService, "type", "the socket is of another type: not ovik_server's",
                         "stop who listens there: ss -xlp; then start the service");
        else if (failure.systemError == ECONNREFUSED)
            findings.bad(noService, "service",
                         "nobody listens: the socket is left from a service "
                         "that was killed",
                         start);
        else
            findings.bad(failure.code, "service", "cannot connect", failure.what());
        return std::nullopt;
    }
}

bool serviceAnswers(Connection& connection, const Deadline& deadline, Findings& findings)
{
    try {
        if (connection.ask(rawRequest(noCommand), deadline).status == OVIK_NOT_RUN) {
            findings.good("service", "it answers");
            return true;
        }
    } catch (const Failure& failure) {
        if (failure.code == timedOut) {
            findings.bad(timedOut, "service",
                         "no answer: it serves another client, one at a time, or waits for the "
                         "platform",
                         "end the other client, or ask again when it is done");
            return false;
        }
        if (failure.error != OVIK_CLIENT_BAD_ANSWER) {
            findings.bad(failure.code, "service", endedMeanwhile, failure.what());
            return false;
        }
    }
    findings.bad(noService, "service", "who answers does not speak the protocol",
                 "stop who listens there: ss -xlp; then start the service");
    return false;
}

bool isMissing(status_t status) { return status == OVIK_NO_PLATFORM || status == OVIK_EMPTY_SLOT; }

/// True when the platform has ended: all facilities fail except the modules, which then read as 0.
bool isGone(const std::vector<status_t>& statuses)
{
    return std::all_of(statuses.begin(), statuses.end() - 1,
                       [](status_t status) { return status == OVIK_REPLY_ERROR; });
}

void judge(const Facility& facility, status_t status, Findings& findings)
{
    if (status == OVIK_OK)
        findings.good(facility.name, "answers");
    else if (status == OVIK_EMPTY_SLOT)
        findings.good(facility.name, "none is there");
    else if (status == OVIK_REPLY_ERROR && facility.anyName)
        findings.good(facility.name, std::string("answers; it does not know ") + facility.anyName);
    else if (status == OVIK_NO_PLATFORM)
        findings.bad(refused, facility.name, "the platform lacks it",
                     std::string("see whether the platform should have ") + facility.object +
                         ": busctl --system tree com.wenu.OVIK");
    else
        findings.bad(refused, facility.name, ovik_client_status_text(status), cureOf(status));
}

void examinePlatform(Connection& connection, Milliseconds bound, Findings& findings)
{
    std::vector<status_t> statuses;
    try {
        for (const Facility& facility : facilities)
            statuses.push_back(
                connection.ask(rawRequest(facility.request), Deadline(bound)).status);
    } catch (const Failure& failure) {
        const Facility& asked = facilities[statuses.size()];
        if (failure.code == timedOut)
            findings.bad(timedOut, "platform",
                         std::string("it does not answer what is asked of its ") + asked.name,
                         "restart the platform's service; the service waits 25 s for each answer");
        else
            findings.bad(failure.code, "service", endedMeanwhile, failure.what());
        return;
    }
    if (std::all_of(statuses.begin(), statuses.end(), isMissing)) {
        findings.bad(refused, "platform", "there is none yet",
                     "see whether it is on the service's bus: busctl --system status "
                     "com.wenu.OVIK; the service looks for it every second");
        return;
    }
    if (isGone(statuses)) {
        findings.bad(refused, "platform", "it was adopted, but answers with an error or not at all",
                     "see whether it still runs: busctl --system status com.wenu.OVIK");
        return;
    }
    findings.good("platform", "adopted");
    for (size_t i = 0; i < statuses.size(); ++i)
        judge(facilities[i], statuses[i], findings);
}
} // namespace

int runDoctor(const Settings& settings)
{
    const Milliseconds bound = settings.bound(5s);
    Findings findings(settings);
    if (!socketIsThere(settings, findings))
        return findings.result();
    auto connection = connect(settings, Deadline(bound), findings);
    if (connection && serviceAnswers(*connection, Deadline(bound), findings))
        examinePlatform(*connection, bound, findings);
    return findings.result();
}
