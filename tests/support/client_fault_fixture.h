#pragma once

#include "tests/support/fake_platform.h"
#include "tests/support/fault_fixture.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

inline const char* const goodRequest = "getBrightness";
inline const char* const goodAnswer = "0 75";

/**
 * A server with a whole panel behind it, to which a test does something bad. After every test a new
 * client must be served, and the server must hold what it held before.
 *
 * The server has few descriptors, so that it fails when it keeps some. The platform answers
 * goodRequest, 7 to "setVolatileParameter", and what it is given to "setBuzzerMode".
 */
class ClientFault : public testing::Test
{
protected:
    ClientFault();
    void SetUp() override;
    void TearDown() override;

    /// Takes what the server holds now as what it must be back at; call it when all is well.
    void remember();
    /// Serves so many clients in turn that the server has closed the descriptors of earlier ones.
    void forgetSixteenMore();

    PrivateBus bus;
    FakePlatform platform;
    Server server{{"prlimit", "--nofile=64"}};

private:
    Footprint m_before;
};
