#include "tests/support/client_fault_fixture.h"

namespace
{
/// Triggers everything that the server does lazily, and everything that grows its heaps.
void warmUp()
{
    {
        Client client(serverSocket);
        const std::string longText(4900, 'x');
        for (const std::string& request :
             {std::string(goodRequest), "setVolatileParameter;k;" + longText,
              std::string("setBuzzerMode;1"), std::string(4999, ';'),
              std::string("a call that fails"), std::string("getSysCounter")})
            client.request(request);
    }
    Client(serverSocket).send(goodRequest); // disconnects before the response
    // The last message empties the server's receive buffer again.
    Client client(serverSocket);
    client.sendBytes(std::string(5000, '\0'));
    client.receive();
}
} // namespace

ClientFault::ClientFault()
{
    platform.answer("Backlight.getBrightness", replyWith("i", 75));
    platform.answer("OVIK.setVolatileParameter", replyWith("i", 7));
    platform.answer("Buzzer.SetBuzzerMode", replyEcho());
}

void ClientFault::SetUp()
{
    ASSERT_TRUE(server.waitForPlatform());
    remember();
}

void ClientFault::TearDown()
{
    ASSERT_TRUE(server.process().running()) << server.process().errors();
    EXPECT_EQ(Client(serverSocket).request(goodRequest), goodAnswer);
    expectNothingLeftBehind(server.process().pid(), m_before);
    expectGoodEnd(server);
}

void ClientFault::remember()
{
    warmUp();
    m_before = footprintOf(server.process().pid());
    platform.takeCalls();
}

void ClientFault::forgetSixteenMore()
{
    for (int i = 0; i < 17; ++i) // the last one is forgotten when the next connects
        ASSERT_EQ(Client(serverSocket).request(goodRequest), goodAnswer) << i;
}
