#pragma once

#include "tests/support/process.h"
#include "tests/support/scripted_peer.h"

#include <memory>
#include <string>
#include <vector>

using Words = std::vector<std::string>;

/// What a run of ovikctl leaves behind.
struct Ran {
    int status;
    std::string output;
    std::string errors;
};

/// The words that start it.
Words ovikctl(const Words& arguments);
/// Runs it until its end.
Ran run(const Words& arguments, const Words& prefix = {});
/// Runs it with that text as its standard input.
Ran runWithInput(const std::string& input, const Words& arguments);

/// What to run a program under so that it may not use what a mode forbids, even as root.
Words withoutPrivilege();

/// A user that nobody here is. Only root can use it.
inline constexpr uid_t otherUser = 4242;
/// What to run a program under as that user; it may still read what a mode forbids.
Words asOtherUser();
/// A peer that this process made as that user: the kernel says so to its clients.
std::unique_ptr<ScriptedPeer> peerOf(uid_t user, std::function<void(ScriptedPeer&)> script);
