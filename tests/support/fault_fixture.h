#pragma once

#include "tests/support/fake_platform.h"
#include "tests/support/footprint.h"
#include "tests/support/private_bus.h"
#include "tests/support/server.h"

#include <gtest/gtest.h>

inline const char* const goodRequest = "getBrightness";
inline const char* const goodAnswer = "0 75";

/// KiB that a server may keep: two threads have a heap each, and the allocator keeps up to 128 KiB
/// of what is freed at the top of a heap.
constexpr long memorySlack = 2 * 128;

/**
 * A server with a whole panel behind it, to which a test does something bad. After every test a new
 * client must be served, and the server must hold what it held before.
 *
 * The server has few descriptors, so that those of its clients are used up and freed again in the
 * middle of things. The platform answers goodRequest, 7 to "setVolatileParameter", and what it is
 * given to "setBuzzerMode".
 */
class Fault : public testing::Test
{
protected:
    static constexpr int descriptorLimit = 64;

    Fault();
    void SetUp() override;
    void TearDown() override;

    /// Takes what the server holds now as what it must be back at; call it when all is well.
    void remember();
    /// Serves so many clients in turn that the server has closed the descriptors of earlier ones.
    void useUpDescriptors();

    /// Prints a measured value, and records it.
    static void figure(const std::string& what, const std::string& value);

    PrivateBus bus;
    FakePlatform platform;
    Server server{{"prlimit", "--nofile=" + std::to_string(descriptorLimit)}};

private:
    Footprint m_before;
};
