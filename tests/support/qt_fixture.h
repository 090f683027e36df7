#pragma once

#include "tests/support/fake_platform.h"
#include "tests/support/private_bus.h"

#include <QString>

#include <string>
#include <vector>

/// One bus for the whole program, since Qt never drops its first system bus connection.
PrivateBus& theBus();

/// Qt's warnings since the previous call.
std::vector<std::string> takeWarnings();

/// The texts passed to logOVIKErrors() since the previous call.
std::vector<std::string> takeDiagnostics();

/// Runs the event loop of the calling thread until @p condition is met.
bool spinUntil(const std::function<bool()>& condition);

/// Call this before an application ends. Qt frees some memory of a new connection in the next turn
/// of the loop, so without that turn it leaks.
void settle();
