// The socket server alone: the tests call each poll step themselves.

#include "ovik_server/domain_server.h"

#include "tests/support/client.h"
#include "tests/support/process.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace
{
/// Records the handler's arguments and answers "ok".
class RecordingServer : public DomainServer
{
public:
    bool handleReq(const char* req, int len) override
    {
        requests.emplace_back(req, static_cast<size_t>(len));
        text = req;
        return sendResp("ok", 3);
    }

    std::vector<std::string> requests;
    std::string text; ///< the latest request as a C string
};

bool exists(const std::string& path)
{
    struct stat ignored;
    return lstat(path.c_str(), &ignored) == 0;
}

int openDescriptors()
{
    int count = 0;
    DIR* const dir = opendir("/proc/self/fd");
    while (readdir(dir))
        ++count;
    closedir(dir);
    return count;
}

class SocketServer : public testing::Test
{
protected:
    /// Polls until a request has been answered.
    template <class AnyServer>
    bool serve(AnyServer& any)
    {
        return waitUntil([&] { return any.process(); });
    }

    TempDir dir;
    const std::string path = dir.path("socket");
    RecordingServer server;
};

TEST_F(SocketServer, TheDemonstrationHandlerAddsUp)
{
    DomainServer demo;
    ASSERT_TRUE(demo.start(path.c_str()));
    Client client(path);
    for (const auto& [request, response] : {std::pair{"5", "sum = 5"},
                                            {"7", "sum = 12"},
                                            {"seven", "sum = 12"},
                                            {"-20x", "sum = -8"}}) {
        client.send(request);
        ASSERT_TRUE(serve(demo));
        EXPECT_EQ(client.receiveBytes(), std::string(response) + '\0');
    }
}

TEST_F(SocketServer, ASumBeyondTheRangeOfIntGoesRound)
{
    DomainServer demo;
    ASSERT_TRUE(demo.start(path.c_str()));
    Client client(path);
    for (const auto& [request, response] :
         {std::pair{"2147483647", "sum = 2147483647"}, {"1", "sum = -2147483648"}}) {
        client.send(request);
        ASSERT_TRUE(serve(demo));
        EXPECT_EQ(client.receive(), response);
    }
    client.send("999999999999999999999999999999");
    ASSERT_TRUE(serve(demo));
    EXPECT_EQ(client.receive().substr(0, 6), "sum = ");
}

TEST_F(SocketServer, WithoutAClientAPollStepReturnsAtOnceAndSaysNothing)
{
    ASSERT_TRUE(server.start(path.c_str()));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(server.process());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(SocketServer, TheListeningSocketDoesNotBlock)
{
    const int next = open("/dev/null", O_RDONLY);
    close(next);
    ASSERT_TRUE(server.start(path.c_str()));
    int listens = 0;
    socklen_t size = sizeof listens;
    ASSERT_EQ(getsockopt(next, SOL_SOCKET, SO_ACCEPTCONN, &listens, &size), 0);
    EXPECT_TRUE(listens);
    EXPECT_TRUE(fcntl(next, F_GETFL) & O_NONBLOCK);
}

TEST_F(SocketServer, AClientThatSaysNothingDoesNotBlock)
{
    ASSERT_TRUE(server.start(path.c_str()));
    Client client(path);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(server.process());
    EXPECT_FALSE(server.process());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(SocketServer, OnePollStepTakesOneMessage)
{
    ASSERT_TRUE(server.start(path.c_str()));
    Client client(path);
    client.send("one");
    client.send("two");
    EXPECT_TRUE(server.process());
    EXPECT_EQ(server.requests, std::vector{std::string("one\0", 4)});
    EXPECT_TRUE(server.process());
    EXPECT_EQ(server.text, "two");
    EXPECT_FALSE(server.process());
}

TEST_F(SocketServer, TheLastByteOf5000BecomesANul)
{
    ASSERT_TRUE(server.start(path.c_str()));
    Client client(path);
    for (const size_t size : {4999u, 5000u, 5001u, 100000u}) {
        client.sendBytes(std::string(size, 'x'));
        ASSERT_TRUE(serve(server));
        const size_t received = std::min<size_t>(size, 5000);
        EXPECT_EQ(server.requests.back().size(), received) << size;
        EXPECT_EQ(server.text, std::string(4999, 'x')) << size;
    }
    // The server drops the part of a message that does not fit.
    client.send("next");
    ASSERT_TRUE(serve(server));
    EXPECT_EQ(server.text, "next");
}

TEST_F(SocketServer, AFirstRequestWithoutNulReadsNothingUndefined)
{
    // Memory of other bytes reveals members that the constructor leaves uninitialised.
    alignas(RecordingServer) static char memory[sizeof(RecordingServer)];
    memset(memory, 'z', sizeof memory);
    auto* const inMemory = new (memory) RecordingServer;
    ASSERT_TRUE(inMemory->start(path.c_str()));
    Client client(path);
    client.sendBytes("first");
    ASSERT_TRUE(serve(*inMemory));
    EXPECT_EQ(inMemory->text, "first");
    inMemory->~RecordingServer();
}

TEST_F(SocketServer, ALaterRequestWithoutNulRunsOnIntoOlderBytes)
{
    ASSERT_TRUE(server.start(path.c_str()));
    Client client(path);
    client.send("a longer one");
    ASSERT_TRUE(serve(server));
    client.sendBytes("short");
    ASSERT_TRUE(serve(server));
    EXPECT_EQ(server.text, "shortger one");
    EXPECT_EQ(server.requests.back(), "short");
}

TEST_F(SocketServer, AClientThatLeavesIsForgottenInOneStepAndTheNextServedInAnother)
{
    ASSERT_TRUE(server.start(path.c_str()));
    auto leaving = std::make_unique<Client>(path);
    EXPECT_FALSE(server.process());
    Client next(path);
    next.send("hello");
    leaving.reset();
    EXPECT_FALSE(server.process());
    EXPECT_TRUE(server.process());
    EXPECT_EQ(server.text, "hello");
}

TEST_F(SocketServer, AReceiveThatFailsIsReportedAndTheClientKept)
{
    ASSERT_TRUE(server.start(path.c_str()));
    {
        Client leaving(path);
        leaving.send("hello");
        ASSERT_TRUE(serve(server));
    } // the unread answer resets the connection
    Client next(path);
    next.send("next");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(server.process());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "OVIK_SERVER: read: Connection reset by peer\n");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(server.process()) << "the end of the connection";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(server.process());
    EXPECT_EQ(server.text, "next");
}

TEST_F(SocketServer, ASecondClientWaitsUntilTheFirstHasGone)
{
    ASSERT_TRUE(server.start(path.c_str()));
    auto first = std::make_unique<Client>(path);
    first->send("first");
    ASSERT_TRUE(server.process());
    Client second(path);
    second.send("second");
    EXPECT_FALSE(server.process());
    first->send("first again");
    ASSERT_TRUE(server.process());
    EXPECT_EQ(server.text, "first again");

    first.reset();
    ASSERT_TRUE(serve(server));
    EXPECT_EQ(server.text, "second");
}

TEST_F(SocketServer, TwentyWaitingClientsAreServedInTurn)
{
    ASSERT_TRUE(server.start(path.c_str()));
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 20; ++i) {
        clients.push_back(std::make_unique<Client>(path));
        clients.back()->send(std::to_string(i));
    }
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(serve(server));
        EXPECT_EQ(server.text, std::to_string(i));
        EXPECT_EQ(clients[size_t(i)]->receive(), "ok");
        clients[size_t(i)].reset();
    }
}

TEST_F(SocketServer, TheDescriptorsOfTheLastSixteenClientsThatEndedStayOpen)
{
    ASSERT_TRUE(server.start(path.c_str()));
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 18; ++i) {
        clients.push_back(std::make_unique<Client>(path));
        shutdown(clients.back()->fd(), SHUT_WR);
        EXPECT_FALSE(server.process());
    }
    for (size_t i = 0; i < clients.size(); ++i)
        EXPECT_EQ(clients[i]->receive(0ms), i < 2 ? "(connection closed)" : "(no response)") << i;
}

TEST_F(SocketServer, AClientThatEndedLeavesNothingUnreadAndCanSendNoMore)
{
    ASSERT_TRUE(server.start(path.c_str()));
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    Client client(path);
    client.send("request");
    ASSERT_TRUE(serve(server));
    client.sendBytes(""); // looks like the end of a connection
    client.sendBytes("");
    for (const char* unread : {"", "text"})
        ASSERT_TRUE(client.sendBytes(unread, {ends[1]}));
    close(ends[1]);

    EXPECT_FALSE(server.process());
    char byte;
    EXPECT_EQ(read(ends[0], &byte, 1), 0) << "an unread message still holds the other end";
    close(ends[0]);
    EXPECT_FALSE(client.send("later"));
    EXPECT_EQ(errno, EPIPE);
    EXPECT_EQ(client.receive(), "ok") << "what was answered before can be read";
    EXPECT_EQ(server.requests.size(), 1u);
}

TEST_F(SocketServer, WhenDescriptorsRunOutTheForgottenOnesAreClosed)
{
    ASSERT_TRUE(server.start(path.c_str()));
    rlimit old;
    getrlimit(RLIMIT_NOFILE, &old);
    const rlimit small = {static_cast<rlim_t>(openDescriptors() + 8), old.rlim_max};
    setrlimit(RLIMIT_NOFILE, &small);
    for (int i = 0; i < 100; ++i) {
        Client client(path);
        client.send(std::to_string(i));
        ASSERT_TRUE(serve(server)) << i;
        EXPECT_EQ(server.text, std::to_string(i));
        EXPECT_EQ(client.receive(), "ok");
    }
    setrlimit(RLIMIT_NOFILE, &old);
}

TEST_F(SocketServer, AResponseToAClientThatIsGoneIsReported)
{
    ASSERT_TRUE(server.start(path.c_str()));
    signal(SIGPIPE, SIG_IGN);
    Client client(path);
    client.send("question");
    shutdown(client.fd(), SHUT_RD);
    client.disconnect();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(serve(server)); // independent of the handler's result
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "OVIK_SERVER: write: Broken pipe\n");
}

TEST_F(SocketServer, AnExistingFileMakesTheStartFailAndStays)
{
    close(open(path.c_str(), O_CREAT | O_WRONLY, 0600));
    testing::internal::CaptureStderr();
    {
        DomainServer second;
        EXPECT_FALSE(second.start(path.c_str()));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "OVIK_SERVER: bind: Address already in use\n");
    EXPECT_TRUE(exists(path));
}

TEST_F(SocketServer, AStartThatFailedMayBeTriedAgain)
{
    close(open(path.c_str(), O_CREAT | O_WRONLY, 0600));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(server.start(path.c_str()));
    testing::internal::GetCapturedStderr();
    unlink(path.c_str());
    ASSERT_TRUE(server.start(path.c_str()));
    Client client(path);
    client.send("x");
    EXPECT_TRUE(serve(server));
}

/// Makes a system call fail in this thread; false where seccomp is unavailable, as under an
/// emulator.
bool refuse(unsigned int systemCall)
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, systemCall, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EMFILE),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {std::size(filter), filter};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

#ifdef SYS_fcntl64
constexpr unsigned int fcntlCall = SYS_fcntl64;
#else
constexpr unsigned int fcntlCall = SYS_fcntl;
#endif

TEST_F(SocketServer, EveryStepOfTheStartThatFailsIsReported)
{
    const std::pair<unsigned int, std::string> steps[] = {
        {SYS_socket, "socket"}, {fcntlCall, "set non block"}, {SYS_listen, "listen"}};
    for (const auto& [systemCall, step] : steps) {
        const int before = openDescriptors();
        bool isRefused = false;
        testing::internal::CaptureStderr();
        std::thread([&, call = systemCall] {
            isRefused = refuse(call);
            EXPECT_FALSE(isRefused && server.start(path.c_str()));
        }).join();
        const std::string errors = testing::internal::GetCapturedStderr();
        if (!isRefused)
            GTEST_SKIP() << "no system call can be refused here";
        EXPECT_EQ(errors, "OVIK_SERVER: " + step + ": Too many open files\n");
        EXPECT_FALSE(server.process());
        EXPECT_EQ(openDescriptors(), before);
    }
}

TEST_F(SocketServer, TheSocketFileGoesWithTheServer)
{
    {
        DomainServer shortLived;
        ASSERT_TRUE(shortLived.start(path.c_str()));
        EXPECT_TRUE(exists(path));
    }
    EXPECT_FALSE(exists(path));
}

TEST_F(SocketServer, APathOf108CharactersIsCutInTheAddressButNotForTheRemoval)
{
    const std::string longPath = dir.path(std::string(108 - dir.path("").size(), 'p'));
    const std::string cutPath = longPath.substr(0, 107);
    ASSERT_EQ(longPath.size(), 108u);
    close(open(longPath.c_str(), O_CREAT | O_WRONLY, 0600));
    {
        DomainServer longNamed;
        ASSERT_TRUE(longNamed.start(longPath.c_str()));
        EXPECT_TRUE(isListening(cutPath));
    }
    EXPECT_TRUE(exists(cutPath));
    EXPECT_FALSE(exists(longPath));
}
} // namespace
