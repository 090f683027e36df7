#pragma once

#include "tests/support/process.h"
#include "tests/support/scripted_peer.h"

#include <memory>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

struct Ran {
    int status;
    std::string output;
    std::string errors;
};

/// The command line of ovikctl, under the emulator where one is needed.
Words ovikctl(const Words& arguments);
/// Runs ovikctl and waits for its end.
Ran run(const Words& arguments, const Words& prefix = {});
Ran runWithInput(const std::string& input, const Words& arguments);

/// Prefix that drops root's right to ignore file modes.
Words withoutPrivilege();

/// A user id without an account. Only root can switch to it.
inline constexpr uid_t otherUser = 4242;
/// Prefix that runs a program as otherUser; the program may still ignore file modes.
Words asOtherUser();
/// A peer whose socket belongs to @p user: its clients see that user in SO_PEERCRED.
std::unique_ptr<ScriptedPeer> peerOf(uid_t user, std::function<void(ScriptedPeer&)> script);
