#pragma once

#include "tests/support/fake_platform.h"
#include "tests/support/private_bus.h"

#include <QString>

#include <string>
#include <vector>

/// One bus for the whole program, as Qt keeps the first connection to the system bus.
PrivateBus& theBus();

/// Qt's warnings since this was last asked.
std::vector<std::string> takeWarnings();

/// The texts given to logOVIKErrors() since this was last asked.
std::vector<std::string> takeDiagnostics();

/// Runs the event loop of the calling thread until @p condition holds.
bool spinUntil(const std::function<bool()>& condition);

/// To be called before an application ends: Qt frees what a new connection waits with in the next
/// turn of the loop, and loses it when there is none.
void settle();
