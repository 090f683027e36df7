#pragma once

#include "tests/support/fake_platform.h"
#include "tests/support/fault_fixture.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

inline const char* const goodRequest = "getBrightness";
inline const char* const goodAnswer = "0 75";

/**
 * A server with a whole panel. After every test, a new client must be served and the server must
 * use no more resources than before.
 *
 * The server may open few descriptors, so it fails when it leaks some. The platform replies to
 * goodRequest, returns 7 for "setVolatileParameter", and echoes the argument of "setBuzzerMode".
 */
class ClientFault : public testing::Test
{
protected:
    ClientFault();
    void SetUp() override;
    void TearDown() override;

    /// Records the server's resource use as the reference; call it when all is well.
    void remember();
    /// Connects so many clients in turn that the server has closed the descriptors of earlier ones.
    void forgetSixteenMore();

    PrivateBus bus;
    FakePlatform platform;
    Server server{{"prlimit", "--nofile=64"}};

private:
    Footprint m_before;
};
