// Each finding of ovikctl doctor: its message, its advice and the exit status.

#include "tests/support/commands.h"
#include "tests/support/ovikctl.h"
#include "tests/support/private_bus.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <pwd.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{
Words badLines(const Ran& result)
{
    Words lines;
    std::istringstream all(result.output);
    for (std::string line; std::getline(all, line);) {
        if (line.compare(0, 5, "BAD  ") == 0)
            lines.push_back(line.substr(5));
    }
    return lines;
}

Ran doctor(const std::string& path, const Words& prefix = {}, const std::string& timeout = "10")
{
    return run({"doctor", "--timeout", timeout, "--socket", path}, prefix);
}

/// For situations in which the doctor waits for the time-out.
Ran impatientDoctor(const std::string& path) { return doctor(path, {}, "0.5"); }

/// A socket without a listener.
void leaveSocket(const std::string& path)
{
    const int fd = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(fd);
}

const std::string startIt = "; start the service: systemctl start ovik_server";
const std::string restartIt =
    "; restart the service, whose unit makes the link anew: systemctl restart ovik_server; without "
    "systemd, remove it first";

std::string thisUser()
{
    return std::string(getpwuid(geteuid())->pw_name) + " (" + std::to_string(geteuid()) + ")";
}

TEST(OvikctlDoctor, FindsThatThereIsNoSocket)
{
    const TempDir dir;
    const Ran result = doctor(dir.path("none"));
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(badLines(result), Words{"socket: there is no " + dir.path("none") + startIt});
}

TEST(OvikctlDoctor, FindsAFileInPlaceOfTheSocket)
{
    const TempDir dir;
    std::ofstream(dir.path("file")) << "x";
    const Ran result = doctor(dir.path("file"));
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(badLines(result),
              Words{"socket: " + dir.path("file") + " is there, but is no socket; it is of user " +
                    thisUser() + restartIt});
}

TEST(OvikctlDoctor, FindsALinkThatLeadsNowhere)
{
    const TempDir dir;
    ASSERT_EQ(symlink("none", dir.path("link").c_str()), 0);
    const Ran result = doctor(dir.path("link"));
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(badLines(result), Words{"socket: the target of " + dir.path("link") +
                                      " -> none does not exist: the service is stopped" + startIt});
}

TEST(OvikctlDoctor, FindsALinkOfAnotherUser)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give a link away";
    const TempDir dir;
    ASSERT_EQ(symlink("none", dir.path("link").c_str()), 0);
    ASSERT_EQ(lchown(dir.path("link").c_str(), otherUser, otherUser), 0);
    const Ran result = doctor(dir.path("link"));
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(badLines(result),
              Words{"socket: " + dir.path("link") +
                    " is a link of user unknown (4242), not of root" + restartIt});
}

TEST(OvikctlDoctor, FindsThatAnotherUserListens)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can listen as another user";
    const auto peer = peerOf(otherUser, [](ScriptedPeer& self) {
        self.accept();
        self.receive();
        self.answer("0");
    });
    const Ran result = doctor(peer->path());
    EXPECT_EQ(result.status, 8);
    ASSERT_EQ(badLines(result).size(), 2u) << "and that it is not the service";
    EXPECT_EQ(badLines(result).front(),
              "listener: process " + std::to_string(getpid()) +
                  " of user unknown (4242), neither root nor you, listens: it reads what is sent, "
                  "and its answers may be false; end it and restart the service, systemctl restart "
                  "ovik_server, or name the service's user with --service-user");
    EXPECT_EQ(result.errors, "");
}

TEST(OvikctlDoctor, FindsASocketThatWasLeftBehind)
{
    const TempDir dir;
    leaveSocket(dir.path("socket"));
    const Ran result = doctor(dir.path("socket"));
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(badLines(result), Words{"service: nobody listens: the socket is left from a service "
                                      "that was killed" +
                                      startIt});
}

TEST(OvikctlDoctor, FindsASocketOfAnotherType)
{
    ScriptedPeer peer([](ScriptedPeer&) {}, SOCK_STREAM);
    const Ran result = doctor(peer.path());
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(badLines(result), Words{"type: the socket is of another type: not ovik_server's; "
                                      "stop who listens there: ss -xlp; then start the service"});
}

TEST(OvikctlDoctor, FindsThatThisUserMayNotUseIt)
{
    ScriptedPeer peer([](ScriptedPeer&) {});
    chmod(peer.path().c_str(), 0);
    const Ran result = doctor(peer.path(), withoutPrivilege());
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(badLines(result), Words{"permission: this user may not use " + peer.path() +
                                      "; be the service's user, as with sudo, or let a group in: "
                                      "/usr/share/doc/ovik-server/examples/group-access.conf"});
}

TEST(OvikctlDoctor, FindsThatThisUserMayNotEnterTheFolder)
{
    const TempDir dir;
    mkdir(dir.path("closed").c_str(), 0);
    const Ran result = doctor(dir.path("closed/socket"), withoutPrivilege());
    chmod(dir.path("closed").c_str(), 0700);
    EXPECT_EQ(result.status, 4);
    EXPECT_EQ(badLines(result),
              Words{"socket: this user may not enter the folder of " + dir.path("closed/socket") +
                    "; be a user that may, as with sudo"});
}

TEST(OvikctlDoctor, FindsThatTheQueueIsFull)
{
    ScriptedPeer peer([](ScriptedPeer&) {}, SOCK_SEQPACKET, 0);
    const Client first(peer.path()); // fills a queue of that length
    const Ran result = impatientDoctor(peer.path());
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(badLines(result), Words{"queue: 20 clients wait for the service already; end those "
                                      "that are not needed"});
}

TEST(OvikctlDoctor, FindsWhoDoesNotSpeakTheProtocol)
{
    for (const std::string answer : {"hello", "0 75"}) {
        ScriptedPeer peer([&](ScriptedPeer& self) {
            self.accept();
            self.receive();
            self.answer(answer);
        });
        const Ran result = doctor(peer.path());
        EXPECT_EQ(result.status, 8);
        EXPECT_EQ(badLines(result), Words{"service: who answers does not speak the protocol; stop "
                                          "who listens there: ss -xlp; then start the service"});
    }
}

TEST(OvikctlDoctor, FindsAServiceThatEndsMeanwhile)
{
    for (const int answers : {0, 1}) {
        SCOPED_TRACE(answers);
        ScriptedPeer peer([&](ScriptedPeer& self) {
            self.accept();
            for (int i = 0; i < answers; ++i) {
                self.receive();
                self.answer("-8");
            }
            self.receive();
            self.disconnect();
        });
        const Ran result = doctor(peer.path());
        EXPECT_EQ(result.status, 8);
        ASSERT_EQ(badLines(result).size(), 1u);
        EXPECT_EQ(badLines(result).front().substr(0, 27), "service: it ended meanwhile");
    }
}

// --- With the real service -----------------------------------------------------------------------

TEST(OvikctlDoctor, FindsThatAllIsWellAndChangesNothing)
{
    PrivateBus bus;
    FakePlatform platform;
    answerCommands(platform);
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    platform.takeCalls();
    const TempDir dir;
    const std::string link = dir.path("link");
    ASSERT_EQ(symlink(serverSocket, link.c_str()), 0);
    const Ran result = doctor(link);
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_NE(result.output.find("good socket: " + link + " -> " + serverSocket + " is there\n"),
              std::string::npos);
    EXPECT_TRUE(badLines(result).empty());
    EXPECT_NE(result.output.find("good platform: adopted\n"), std::string::npos);

    const Words reading = {
        "/ com.wenu.OVIK.getSysCounter()",
        "/Backlight com.wenu.OVIK.Backlight.getBrightness()",
        "/Buzzer com.wenu.OVIK.Buzzer.GetBuzzerMode()",
        "/SystemInfo com.wenu.OVIK.SystemInfo.info()",
        "/SysStat com.wenu.OVIK.SysStat.getAvailableMemory()",
        "/StorageMgr com.wenu.OVIK.StorageMgr.getStorageInfoJSON(s) \"internal\"",
        "/NetworkManager com.wenu.OVIK.NetworkManager.getConfigJSON()",
        "/MainOSInfo com.wenu.OVIK.PartitionInfo.version()",
        "/I2CSEEPROM com.wenu.OVIK.I2CSEEPROM.read(yu) 0 1",
        "/ServiceManager com.wenu.OVIK.ServiceManager.state(s) \"ssh\"",
        "/HWPlugin/0/Leds com.wenu.OVIK.Leds.GetLedMode(u) 0",
    };
    EXPECT_EQ(platform.takeCalls(), reading);
}

TEST(OvikctlDoctor, FindsThatAnotherClientIsServed)
{
    PrivateBus bus;
    Server server;
    Client other(serverSocket);
    EXPECT_EQ(other.request("getBrightness"), "-1");
    const Ran result = impatientDoctor(serverSocket);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(badLines(result),
              Words{"service: no answer: it serves another client, one at a time, or waits for the "
                    "platform; end the other client, or ask again when it is done"});
}

TEST(OvikctlDoctor, FindsThatThereIsNoPlatformYet)
{
    PrivateBus bus;
    Server server;
    const Ran result = doctor(serverSocket);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(badLines(result),
              Words{"platform: there is none yet; see whether it is on the service's bus: busctl "
                    "--system status com.wenu.OVIK; the service looks for it every second"});
}

TEST(OvikctlDoctor, FindsThatThePlatformHasGone)
{
    PrivateBus bus;
    auto platform = std::make_unique<FakePlatform>();
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    platform.reset();
    const Ran result = doctor(serverSocket);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        badLines(result),
        Words{"platform: it was adopted, but answers with an error or not at all; see whether "
              "it still runs: busctl --system status com.wenu.OVIK"});
}

TEST(OvikctlDoctor, FindsWhatThePlatformLacksAndWhatAnswersWithAnError)
{
    PrivateBus bus;
    auto objects = FakePlatform::wholePanel();
    for (auto object = objects.begin(); object != objects.end();) {
        const std::string& path = object->first;
        const bool isMissing = path == "/Buzzer" || path.compare(0, 9, "/HWPlugin") == 0;
        object = isMissing ? objects.erase(object) : std::next(object);
    }
    FakePlatform platform(objects);
    answerCommands(platform);
    platform.answer("I2CSEEPROM.read", replyError("com.wenu.OVIK.Failed"));
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    const Ran result = doctor(serverSocket);
    EXPECT_EQ(result.status, 1);
    const Words expected = {
        "buzzer: the platform lacks it; see whether the platform should have /Buzzer: busctl "
        "--system tree com.wenu.OVIK",
        "serial EEPROM: the platform answered with an error or not at all; see the platform's own "
        "log, or its calls with busctl monitor com.wenu.OVIK"};
    EXPECT_EQ(badLines(result), expected);
    EXPECT_NE(result.output.find("good plug-in modules: none is there\n"), std::string::npos);

    const Ran quiet = run({"-q", "doctor"});
    EXPECT_EQ(quiet.status, 1);
    EXPECT_EQ(quiet.output, "");
    EXPECT_EQ(quiet.errors, "BAD  " + expected[0] + "\nBAD  " + expected[1] + "\n");

    std::istringstream objectsOfJson(run({"doctor", "--json"}).output);
    size_t bad = 0;
    for (std::string line; std::getline(objectsOfJson, line);) {
        const auto object = nlohmann::json::parse(line);
        bad += object["good"] == false ? 1 : 0;
        EXPECT_EQ(object["good"] == false, object.contains("todo")) << line;
    }
    EXPECT_EQ(bad, expected.size());
}

TEST(OvikctlDoctor, FindsNothingBadInAPlatformThatDoesNotKnowTheNamesItIsAskedFor)
{
    PrivateBus bus;
    FakePlatform platform;
    answerCommands(platform);
    platform.answer("StorageMgr.getStorageInfoJSON", replyError("com.wenu.OVIK.Failed"));
    platform.answer("ServiceManager.state", replyError("com.wenu.OVIK.Failed"));
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    const Ran result = doctor(serverSocket);
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(badLines(result).empty()) << result.output;
    for (const std::string line : {"storage: answers; it does not know internal\n",
                                   "services: answers; it does not know ssh\n"})
        EXPECT_NE(result.output.find("good " + line), std::string::npos) << result.output;
}

TEST(OvikctlDoctor, FindsThatThePlatformDoesNotAnswer)
{
    PrivateBus bus;
    FakePlatform platform;
    answerCommands(platform);
    Server server;
    ASSERT_TRUE(server.waitForPlatform());
    platform.answer("Buzzer.GetBuzzerMode", silence());
    const Ran result = doctor(serverSocket);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(badLines(result),
              Words{"platform: it does not answer what is asked of its buzzer; restart the "
                    "platform's service; the service waits 25 s for each answer"});
}
} // namespace
