#include "tests/support/fault_fixture.h"

#include <iostream>
#include <sstream>

FaultPanel::FaultPanel(const std::vector<std::string>& prefix) : server(prefix)
{
    startPlatform();
    if (!server.waitForPlatform())
        throw std::runtime_error("the server does not find its platform");
}

void FaultPanel::startPlatform()
{
    platform = std::make_unique<FakePlatform>();
    answerCommands(*platform);
}

std::vector<std::string> answersTo(Client& client, const std::vector<std::string>& requests)
{
    for (const std::string& request : requests)
        EXPECT_TRUE(client.send(request)) << request;
    std::vector<std::string> answers;
    for (size_t i = 0; i < requests.size(); ++i)
        answers.push_back(client.receive());
    return answers;
}

void expectEveryCommandWorks(Client& client)
{
    std::vector<std::string> requests;
    for (const CommandRow& row : commandRows())
        requests.push_back(row.request());
    const std::vector<std::string> answers = answersTo(client, requests);
    for (size_t i = 0; i < answers.size(); ++i)
        EXPECT_EQ(answers[i], commandRows()[i].response) << requests[i];
}

void figure(const std::string& text)
{
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::cout << "[figure] " << test->test_suite_name() << '.' << test->name() << ": " << text
              << std::endl;
}

void expectNothingLeftBehind(pid_t pid, const Footprint& before, long memorySlack)
{
    Footprint now;
    const bool isBack = waitUntil(
        [&] {
            now = footprintOf(pid);
            return isBackAt(before, now, memorySlack);
        },
        patienceFactor * 5s);
    EXPECT_TRUE(isBack) << "before: " << before << "\nnow: " << now;

    std::ostringstream text;
    text << std::showpos << now.descriptors - before.descriptors << " descriptors, "
         << now.threads - before.threads << " threads, " << now.memory - before.memory << " KiB";
    figure(text.str());
}

void expectGoodEnd(Server& server)
{
    EXPECT_EQ(Client(serverSocket).request("quit"), "0");
    EXPECT_EQ(server.process().wait(), 0) << server.process().errors();
}

std::unique_ptr<FaultPanel> FaultTest::panel;

void FaultTest::SetUpTestSuite()
{
    panel = std::make_unique<FaultPanel>();
    Client client(serverSocket);
    for (int i = 0; i < 20; ++i)
        expectEveryCommandWorks(client);
}

void FaultTest::TearDownTestSuite()
{
    if (panel)
        expectGoodEnd(panel->server);
    panel.reset();
}

void FaultTest::SetUp()
{
    client = std::make_unique<Client>(serverSocket);
    expectEveryCommandWorks(*client);
    panel->platform->takeCalls();
    newLog();
    m_before = footprintOf(panel->server.process().pid());
}

void FaultTest::TearDown()
{
    ASSERT_TRUE(panel->server.process().running());
    answerCommands(*panel->platform);
    expectEveryCommandWorks(*client);
    expectNothingLeftBehind(panel->server.process().pid(), m_before, memorySlack);
}

void FaultTest::repeat(int times, const std::function<void()>& fault)
{
    fault();
    m_before = footprintOf(panel->server.process().pid());
    for (int i = 1; i < times && !HasFailure(); ++i)
        fault();
}
