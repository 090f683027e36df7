// The client library against servers that misbehave or answer late.

#include "client/ovik_client.h"
#include "tests/support/scripted_peer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <sys/fsuid.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{
using Clock = std::chrono::steady_clock;

/// The time-out of calls that should succeed.
constexpr int longEnough = static_cast<int>(patience.count());
/// The time-out of calls that should time out. A loaded machine may end them much later.
constexpr int shortTime = 200;

struct Client {
    explicit Client(const std::string& path, int timeout = longEnough)
        : error(ovik_client_open(&client, path.c_str(), timeout))
    {
    }
    ~Client() { ovik_client_close(client); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    ovik_client_error request(const std::string& text, int timeout = longEnough)
    {
        return ovik_client_request(client, text.c_str(), timeout, &answer);
    }

    ovik_client* client = nullptr;
    ovik_client_error error;
    ovik_client_answer answer = {77, "old", 77};
};

/// A batch, and its answers in order of arrival.
struct Batch {
    std::vector<std::string> requests;
    std::vector<std::string> answers;
    ovik_client_progress progress = {99, 99};

    ovik_client_error run(Client& client, int timeout = longEnough)
    {
        std::vector<const char*> texts;
        for (const std::string& request : requests)
            texts.push_back(request.c_str());
        const auto keep = [](void* self, size_t index, const ovik_client_answer* answer) {
            auto& kept = static_cast<Batch*>(self)->answers;
            EXPECT_EQ(index, kept.size());
            EXPECT_EQ(strlen(answer->text), answer->length);
            kept.emplace_back(answer->text);
        };
        return ovik_client_batch(client.client, texts.data(), texts.size(), timeout, keep, this,
                                 &progress);
    }
};

std::vector<std::string> numbered(int count)
{
    std::vector<std::string> requests;
    for (int i = 0; i < count; ++i)
        requests.push_back("r" + std::to_string(i));
    return requests;
}

/// Answers every request with "0 " and its own text until the client disconnects.
void echo(ScriptedPeer& peer)
{
    for (std::string request; !(request = peer.receive()).empty();)
        peer.send("0 " + request);
}

void expectEnded(ovik_client* client)
{
    ovik_client_answer answer = {77, "old", 77};
    ovik_client_progress progress = {99, 99};
    const char* const request = "x";
    EXPECT_EQ(ovik_client_request(client, request, longEnough, &answer), OVIK_CLIENT_NOT_CONNECTED);
    EXPECT_EQ(answer.status, 77);
    EXPECT_EQ(ovik_client_batch(client, &request, 1, longEnough, nullptr, nullptr, &progress),
              OVIK_CLIENT_NOT_CONNECTED);
    EXPECT_EQ(progress.sent + progress.answered, 0u);
}

/// Checks that a call times out, and not before its deadline.
template <class Call>
void expectLate(Call call, int timeout = shortTime)
{
    const auto start = Clock::now();
    EXPECT_EQ(call(), OVIK_CLIENT_TIMED_OUT);
    EXPECT_GE(millisecondsSince(start), timeout);
    EXPECT_LT(millisecondsSince(start), longEnough / 2);
}

/// Interrupts the blocking calls of this thread every few milliseconds.
class Interruptions
{
public:
    Interruptions()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) { ++count; }; // without SA_RESTART, so calls fail with EINTR
        sigaction(SIGALRM, &action, nullptr);
        count = 0;
        set(3000);
    }
    ~Interruptions()
    {
        set(0);
        signal(SIGALRM, SIG_IGN); // a signal may still be pending
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

    static std::atomic<int> count;

private:
    static void set(suseconds_t period)
    {
        const itimerval timer = {{0, period}, {0, period}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
};
std::atomic<int> Interruptions::count{0};

// --- Opening -------------------------------------------------------------------------------------

struct Place {
    TempDir dir;
    const std::string path = dir.path("socket");

    ovik_client_error open(const std::string& name) const
    {
        Client client(name, 0);
        EXPECT_EQ(client.client, nullptr);
        return client.error;
    }
};

TEST(ClientOpen, WhereNothingListensThereIsNoService)
{
    const Place place;
    EXPECT_EQ(place.open(place.path), OVIK_CLIENT_NO_SERVICE);
    EXPECT_EQ(place.open(""), OVIK_CLIENT_NO_SERVICE);
    std::ofstream(place.path) << "a file";
    EXPECT_EQ(place.open(place.path), OVIK_CLIENT_NO_SERVICE);
    EXPECT_EQ(place.open(place.path + "/socket"), OVIK_CLIENT_NO_SERVICE);
}

TEST(ClientOpen, ASocketThatNobodyHoldsAnyMoreIsNoService)
{
    const Place place;
    std::string path;
    {
        const ScriptedPeer peer([](ScriptedPeer&) {});
        path = peer.path();
        std::filesystem::create_hard_link(path, place.path);
    }
    EXPECT_EQ(place.open(place.path), OVIK_CLIENT_NO_SERVICE);
}

TEST(ClientOpen, ASocketOfAnotherTypeIsNoService)
{
    const ScriptedPeer peer([](ScriptedPeer&) {}, SOCK_STREAM);
    EXPECT_EQ(Place().open(peer.path()), OVIK_CLIENT_NO_SERVICE);
}

TEST(ClientOpen, APathTooLongIsAnErrorOfTheSystem)
{
    const Place place;
    const std::string fits = place.dir.path(std::string(107 - place.dir.path("").size(), 'x'));
    EXPECT_EQ(place.open(fits), OVIK_CLIENT_NO_SERVICE);
    EXPECT_EQ(place.open(fits + "x"), OVIK_CLIENT_SYSTEM);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(place.open(std::string(100000, 'x')), OVIK_CLIENT_SYSTEM);
}

TEST(ClientOpen, ASocketOfOthersIsNotPermitted)
{
    const ScriptedPeer peer([](ScriptedPeer&) {});
    ASSERT_EQ(chmod(peer.path().c_str(), 0), 0);
    // Root may use any socket, so act as nobody here. For other users this changes nothing.
    const int self = setfsuid(65534);
    EXPECT_EQ(Place().open(peer.path()), OVIK_CLIENT_NO_PERMISSION);
    setfsuid(static_cast<uid_t>(self));
}

TEST(ClientOpen, WithoutADescriptorItIsAnErrorOfTheSystem)
{
    const Place place;
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none = {0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const ovik_client_error error = place.open(place.path);
    const int reason = errno;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(error, OVIK_CLIENT_SYSTEM);
    EXPECT_EQ(reason, EMFILE);
}

TEST(ClientOpen, AProgramThatIsStartedDoesNotInheritTheConnection)
{
    ScriptedPeer peer([](ScriptedPeer&) {}); // accepting would use a descriptor
    const std::string before = std::to_string(dup(STDERR_FILENO)); // the lowest free one
    close(std::stoi(before));
    const Client client(peer.path());
    ASSERT_EQ(client.error, OVIK_CLIENT_OK);
    EXPECT_EQ(fcntl(std::stoi(before), F_GETFD), FD_CLOEXEC);
}

/// Clients that fill the queue of a server which accepts nobody.
struct FullQueue {
    std::promise<void> served;
    ScriptedPeer peer{[this](ScriptedPeer& self) {
                          served.get_future().wait();
                          self.accept();
                      },
                      SOCK_SEQPACKET, 0};
    Client waiting{peer.path()};

    FullQueue() { EXPECT_EQ(waiting.error, OVIK_CLIENT_OK); }
    void serve() { served.set_value(); }
};

TEST(ClientOpen, AFullQueueIsWaitedForUntilTheDeadline)
{
    FullQueue queue;
    expectLate([&] { return Client(queue.peer.path(), shortTime).error; });
    expectLate([&] { return Client(queue.peer.path(), 0).error; }, 0);
    queue.serve();
}

TEST(ClientOpen, SignalsDoNotPutTheDeadlineOff)
{
    FullQueue queue;
    const Interruptions interruptions;
    expectLate([&] { return Client(queue.peer.path(), shortTime).error; });
    EXPECT_GT(Interruptions::count, 0); // under starvation there may be only one
    queue.serve();
}

TEST(ClientOpen, AClientConnectsWhenThereIsRoomAgain)
{
    for (const int timeout : {longEnough, -1}) {
        FullQueue queue;
        const Interruptions interruptions;
        auto later = std::async(std::launch::async, [&] {
            // By now the client has usually tried several times.
            waitUntil([] { return Interruptions::count > 5; });
            queue.serve();
        });
        EXPECT_EQ(Client(queue.peer.path(), timeout).error, OVIK_CLIENT_OK) << timeout;
    }
}

TEST(ClientClose, LeavesErrnoAndTakesNull)
{
    ScriptedPeer peer([](ScriptedPeer& self) { self.accept(); });
    ovik_client* client = nullptr;
    ASSERT_EQ(ovik_client_open(&client, peer.path().c_str(), longEnough), OVIK_CLIENT_OK);
    errno = ENOTTY;
    ovik_client_close(client);
    ovik_client_close(nullptr);
    EXPECT_EQ(errno, ENOTTY);
    expectEnded(nullptr);
}

// --- Requests and answers ------------------------------------------------------------------------

struct AnswerRow {
    std::string bytes;
    ovik_client_error error;
    status_t status = 77;
    std::string text = "old";
};

const std::string nul(1, '\0');
constexpr auto ok = OVIK_CLIENT_OK;
constexpr auto bad = OVIK_CLIENT_BAD_ANSWER;
constexpr size_t longest = 16383;

const AnswerRow answerRows[] = {
    {"0" + nul, ok, 0, ""},
    {"0 75" + nul, ok, 0, "75"},
    {"0 " + nul, ok, 0, ""},
    {"0  a b " + nul, ok, 0, " a b "},
    {"-12" + nul, ok, -12, ""},
    {"-4 why" + nul, ok, -4, "why"},
    {"2147483647" + nul, ok, INT_MAX, ""},
    {"-2147483648 x" + nul, ok, INT_MIN, "x"},
    {"2147483648" + nul, bad},
    {"-2147483649" + nul, bad},
    {"4294967296 1" + nul, bad},
    {std::string(10000, '9') + nul, bad},
    {nul, bad},
    {"0", bad},
    {"0 75", bad},
    {"0 7" + nul + "5", bad},
    {"0" + nul + "0" + nul, bad},
    {"0 75" + nul + nul, bad},
    {" 0" + nul, bad},
    {" " + nul, bad},
    {"-" + nul, bad},
    {"- 1" + nul, bad},
    {"+0" + nul, bad},
    {"00" + nul, bad},
    {"-0" + nul, bad},
    {"0x" + nul, bad},
    {"0;75" + nul, bad},
    {"0\t75" + nul, bad},
    {"sum = 1" + nul, bad},
    {"\xff\xfe" + nul, bad},
    {"0 " + std::string(longest - 2, 'x') + nul, ok, 0, std::string(longest - 2, 'x')},
    {"0 " + std::string(longest - 1, 'x') + nul, bad},
    {"0 " + std::string(100000, 'x') + nul, bad},
    {"0 " + std::string(longest - 2, 'x') + nul + "x" + nul, bad}, // received without its end
};

TEST(ClientRequest, AnAnswerIsAStatusAndATextOrNone)
{
    for (const AnswerRow& row : answerRows) {
        ScriptedPeer peer([&](ScriptedPeer& self) {
            self.accept();
            EXPECT_EQ(self.receive(), "getIt" + nul);
            EXPECT_TRUE(self.send(row.bytes));
            EXPECT_EQ(self.receive(), ""); // closed by the error or by the destructor
        });
        Client client(peer.path());
        const std::string start = row.bytes.substr(0, 20);
        EXPECT_EQ(client.request("getIt"), row.error) << start;
        EXPECT_EQ(client.answer.status, row.status) << start;
        EXPECT_EQ(client.answer.text, row.text);
        EXPECT_EQ(client.answer.length, row.error == ok ? row.text.size() : 77);
        if (row.error != ok)
            expectEnded(client.client);
    }
}

TEST(ClientRequest, GoesWithItsNulAndUpToTheLongestThatTheServiceTakes)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        echo(self);
    });
    Client client(peer.path());
    for (const std::string& text : {std::string("setBuzzerMode;1"), std::string(),
                                    std::string(OVIK_CLIENT_REQUEST_MAX, 'x')}) {
        EXPECT_EQ(client.request(text), OVIK_CLIENT_OK);
        EXPECT_EQ(client.answer.text, text);
    }
    // A longer request is not sent at all, and the client remains usable.
    EXPECT_EQ(client.request(std::string(OVIK_CLIENT_REQUEST_MAX + 1, 'x')),
              OVIK_CLIENT_BAD_REQUEST);
    Batch batch = {{"a", std::string(OVIK_CLIENT_REQUEST_MAX + 1, 'x')}, {}};
    EXPECT_EQ(batch.run(client), OVIK_CLIENT_BAD_REQUEST);
    EXPECT_EQ(batch.progress.sent + batch.progress.answered, 0u);
    EXPECT_TRUE(batch.answers.empty());
    EXPECT_EQ(client.request("b", -1), OVIK_CLIENT_OK);
    EXPECT_STREQ(client.answer.text, "b");
}

TEST(ClientRequest, TheDeadlineIsKeptWhenNoAnswerComes)
{
    for (const int timeout : {shortTime, 0}) {
        ScriptedPeer peer([](ScriptedPeer& self) {
            self.accept();
            EXPECT_EQ(self.receive(), "a" + nul);
            EXPECT_EQ(self.receive(), "");
        });
        Client client(peer.path());
        expectLate([&] { return client.request("a", timeout); }, timeout);
        expectEnded(client.client);
    }
}

TEST(ClientRequest, SignalsDoNotPutTheDeadlineOff)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        while (!self.receive().empty()) {
        }
    });
    Client client(peer.path());
    const Interruptions interruptions;
    expectLate([&] { return client.request("a", shortTime); });
    EXPECT_GT(Interruptions::count, 0); // under starvation there may be only one
}

TEST(ClientRequest, SignalsDoNotEndTheWaitForAnAnswer)
{
    for (const int timeout : {longEnough, -1}) {
        ScriptedPeer peer([](ScriptedPeer& self) {
            self.accept();
            self.receive();
            waitUntil([] { return Interruptions::count > 5; });
            self.answer("0 1");
        });
        Client client(peer.path());
        const Interruptions interruptions;
        EXPECT_EQ(client.request("a", timeout), OVIK_CLIENT_OK);
        EXPECT_STREQ(client.answer.text, "1");
    }
}

TEST(ClientRequest, AnAnswerThatComesLateIsNeverTheNextOnes)
{
    std::promise<void> late;
    ScriptedPeer peer([&](ScriptedPeer& self) {
        self.accept();
        self.receive();
        late.get_future().wait();
        self.answer("0 late");
        self.accept();
        echo(self);
    });
    Client client(peer.path());
    EXPECT_EQ(client.request("a", 1), OVIK_CLIENT_TIMED_OUT);
    late.set_value();
    expectEnded(client.client);
    Client next(peer.path());
    EXPECT_EQ(next.request("b"), OVIK_CLIENT_OK);
    EXPECT_STREQ(next.answer.text, "b");
    expectEnded(client.client);
}

TEST(ClientRequest, AnAnswerIsReadWhateverErrnoWasBefore)
{
    std::promise<void> answered;
    ScriptedPeer peer([&](ScriptedPeer& self) {
        self.accept();
        self.answer("0 early"); // before the client's first receive
        answered.set_value();
        self.receive();
    });
    Client client(peer.path());
    answered.get_future().wait();
    errno = ECONNRESET;
    EXPECT_EQ(client.request("a"), OVIK_CLIENT_OK);
    EXPECT_STREQ(client.answer.text, "early");
}

TEST(ClientRequest, AServiceThatClosesIsTold)
{
    signal(SIGPIPE, SIG_DFL); // the parent may ignore the signal
    const std::function<void(ScriptedPeer&)> scripts[] = {
        [](ScriptedPeer& self) { self.accept(), self.receive(), self.disconnect(); },
        [](ScriptedPeer& self) { self.accept(), self.receive(), self.send(""); }};
    for (const auto& script : scripts) {
        auto peer = std::make_unique<ScriptedPeer>(script);
        Client client(peer->path());
        auto end = std::async(std::launch::async, [&] { peer.reset(); });
        EXPECT_EQ(client.request("a"), OVIK_CLIENT_CLOSED);
        expectEnded(client.client);
    }
}

TEST(ClientRequest, AServiceThatHasClosedBeforeIsTold)
{
    signal(SIGPIPE, SIG_DFL);
    const std::function<void(ScriptedPeer&)> scripts[] = {
        [](ScriptedPeer&) {}, // not even accepted
        [](ScriptedPeer& self) { self.accept(), self.disconnect(); }};
    for (const auto& script : scripts) {
        auto peer = std::make_unique<ScriptedPeer>(script);
        Client client(peer->path());
        peer.reset();
        EXPECT_EQ(client.request("a"), OVIK_CLIENT_CLOSED);
        expectEnded(client.client);
    }
}

// --- Batches -------------------------------------------------------------------------------------

TEST(ClientBatch, AnswersComeInTheOrderOfTheRequests)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        echo(self);
    });
    Client client(peer.path());
    Batch batch = {numbered(300), {}};
    EXPECT_EQ(batch.run(client), OVIK_CLIENT_OK);
    EXPECT_EQ(batch.answers, batch.requests);
    EXPECT_EQ(batch.progress.sent, 300u);
    EXPECT_EQ(batch.progress.answered, 300u);
    EXPECT_EQ(client.request("after"), OVIK_CLIENT_OK);
    EXPECT_STREQ(client.answer.text, "after");
}

TEST(ClientBatch, NoRequestsAreDoneAtOnce)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        EXPECT_EQ(self.receive(), "");
    });
    Client client(peer.path());
    Batch batch;
    EXPECT_EQ(batch.run(client, 0), OVIK_CLIENT_OK);
    EXPECT_EQ(batch.progress.sent + batch.progress.answered, 0u);
    EXPECT_EQ(ovik_client_batch(client.client, nullptr, 0, 0, nullptr, nullptr, nullptr),
              OVIK_CLIENT_OK);
}

TEST(ClientBatch, AllRequestsAreSentBeforeTheFirstAnswerIsNeeded)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        for (const std::string& request : numbered(20))
            EXPECT_EQ(self.receive(), request + nul);
        for (int i = 0; i < 20; ++i)
            self.answer("0");
    });
    Client client(peer.path());
    const std::vector<std::string> texts = numbered(20);
    std::vector<const char*> requests;
    for (const std::string& text : texts)
        requests.push_back(text.c_str());
    // The callback and the progress are optional.
    EXPECT_EQ(ovik_client_batch(client.client, requests.data(), 20, longEnough, nullptr, nullptr,
                                nullptr),
              OVIK_CLIENT_OK);
}

/// How many requests a connection can buffer with the system's default size.
size_t usualRoom(const std::string& path, const std::string& request)
{
    const int sock = socket(AF_UNIX, SOCK_SEQPACKET, 0);
    sockaddr_un address = {AF_UNIX, {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(connect(sock, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    size_t count = 0;
    while (send(sock, request.c_str(), request.size() + 1, MSG_DONTWAIT) != -1)
        ++count;
    close(sock);
    return count;
}

TEST(ClientBatch, MoreRequestsAreQueuedThanUsual)
{
    std::promise<void> done;
    ScriptedPeer peer([&](ScriptedPeer&) { done.get_future().wait(); }); // receives nothing
    Batch batch{std::vector<std::string>(50000, "unknown"), {}};
    const size_t usual = usualRoom(peer.path(), "unknown");
    Client client(peer.path());
    EXPECT_EQ(batch.run(client, shortTime), OVIK_CLIENT_TIMED_OUT);
    EXPECT_GT(usual, 0u);
    EXPECT_GT(batch.progress.sent, usual);
    done.set_value();
}

TEST(ClientBatch, NeitherSideWaitsForTheOtherForEver)
{
    constexpr int count = 5000;
    const std::string large = "0 " + std::string(9997, 'x');
    ScriptedPeer peer([&](ScriptedPeer& self) {
        self.accept();
        // During each pause the client fills the buffers; every send then blocks.
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(self.receive(), "r" + std::to_string(i) + nul);
            if (i % 500 == 0)
                std::this_thread::sleep_for(20ms);
            ASSERT_TRUE(self.answer(large));
        }
    });
    Client client(peer.path());
    Batch batch = {numbered(count), {}};
    EXPECT_EQ(batch.run(client), OVIK_CLIENT_OK);
    EXPECT_EQ(batch.answers, std::vector(count, large.substr(2)));
}

struct EndRow {
    const char* what;
    int taken;        ///< how many of 20 requests are received
    int answered;     ///< how many are answered correctly
    std::string then; ///< the message sent afterwards
    ovik_client_error error;
};

const EndRow endRows[] = {
    {"it closes with requests unread", 7, 7, "", OVIK_CLIENT_CLOSED},
    {"it closes with requests unread and unanswered", 9, 7, "", OVIK_CLIENT_CLOSED},
    {"it closes with all requests read", 20, 19, "", OVIK_CLIENT_CLOSED},
    {"it closes before any answer", 1, 0, "", OVIK_CLIENT_CLOSED},
    {"it answers nonsense", 20, 3, "hello" + nul, OVIK_CLIENT_BAD_ANSWER},
    {"it forgets a NUL", 20, 0, "0 1", OVIK_CLIENT_BAD_ANSWER},
};

TEST(ClientBatch, TheCallerKnowsWhichWereAnsweredWhen)
{
    for (const EndRow& row : endRows) {
        auto peer = std::make_unique<ScriptedPeer>([&](ScriptedPeer& self) {
            self.accept();
            for (int i = 0; i < row.taken; ++i)
                self.receive();
            for (int i = 0; i < row.answered; ++i)
                self.answer("0 " + std::to_string(i));
            if (!row.then.empty())
                self.send(row.then);
            self.disconnect();
        });
        Client client(peer->path());
        Batch batch = {numbered(20), {}};
        EXPECT_EQ(batch.run(client), row.error) << row.what;
        EXPECT_EQ(batch.progress.answered, static_cast<size_t>(row.answered)) << row.what;
        EXPECT_EQ(batch.answers.size(), static_cast<size_t>(row.answered)) << row.what;
        EXPECT_GE(batch.progress.sent, static_cast<size_t>(row.taken)) << row.what;
        expectEnded(client.client);
    }
}

TEST(ClientBatch, WhatWasSentIsWhatTheServiceCanHaveSeen)
{
    // The server ends after 3 requests, while the client has far more than the buffers can take.
    constexpr size_t count = 50000;
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        for (int i = 0; i < 3; ++i) {
            self.receive();
            self.answer("0");
        }
        self.disconnect();
    });
    Client client(peer.path());
    Batch batch = {numbered(count), {}};
    EXPECT_EQ(batch.run(client), OVIK_CLIENT_CLOSED);
    EXPECT_EQ(batch.progress.answered, 3u);
    EXPECT_GE(batch.progress.sent, 3u);
    EXPECT_LT(batch.progress.sent, count);
}

TEST(ClientBatch, OneDeadlineIsForAllOfIt)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        do
            std::this_thread::sleep_for(5ms); // each single answer is in time
        while (!self.receive().empty() && self.answer("0"));
    });
    Client client(peer.path());
    Batch batch = {numbered(100000), {}};
    constexpr int someTime = 1000 * patienceFactor; // enough for a starved peer to answer something
    expectLate([&] { return batch.run(client, someTime); }, someTime);
    EXPECT_GT(batch.progress.answered, 0u);
    EXPECT_EQ(batch.progress.answered, batch.answers.size());
    EXPECT_GT(batch.progress.sent, batch.progress.answered);
    EXPECT_LT(batch.progress.sent, 100000u);
    expectEnded(client.client);
}

TEST(ClientBatch, ADeadlineThatIsOverTakesWhatIsThere)
{
    ScriptedPeer peer([](ScriptedPeer& self) {
        self.accept();
        while (!self.receive().empty()) {
        }
    });
    Client client(peer.path());
    Batch batch = {numbered(20), {}};
    expectLate([&] { return batch.run(client, 0); }, 0);
    EXPECT_EQ(batch.progress.sent, 20u);
    EXPECT_EQ(batch.progress.answered, 0u);
}

// --- No leaks ------------------------------------------------------------------------------------

size_t openDescriptors()
{
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(all), end(all)));
}

TEST(ClientLeaks, NoFailureLeavesADescriptorBehind)
{
    const Place place;
    const size_t before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        place.open(place.path);
        FullQueue queue;
        Client(queue.peer.path(), 0);
        queue.serve();
        for (const std::string& bytes : {std::string("0" + nul), std::string("x")}) {
            ScriptedPeer peer([&](ScriptedPeer& self) {
                self.accept();
                self.receive();
                self.send(bytes);
            });
            Client client(peer.path());
            client.request("a");
        }
        ScriptedPeer peer([&](ScriptedPeer& self) { self.accept(), self.receive(); });
        Client client(peer.path());
        client.request("a", 0);
    }
    EXPECT_EQ(openDescriptors(), before);
}
} // namespace
