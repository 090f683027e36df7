#pragma once

#include "client/ovikctl/request.h"

#include <string>
#include <vector>

namespace CLI
{
class App;
}

// Each runs a verb and returns what the program ends with, or throws a Failure.

/// One request: prints the value of its answer alone.
int runRequest(const Settings& settings, const Request& request);

/// Requests in the protocol's own form, one after the other; those of standard input when there are
/// none. Prints each with its response.
int runRaw(const Settings& settings, const std::vector<std::string>& texts);

/// The requests of a file, pipelined.
int runBatch(const Settings& settings, const std::string& file);

/// Tells of every command.
int runList(const Settings& settings);

/// Until the service answers, or the platform through it.
int runWait(const Settings& settings, bool forPlatform);

/// Asks the same again and again, until a signal ends it.
int runWatch(const Settings& settings, const std::vector<std::string>& lines, double interval);

/// Finds out what is wrong. Changes nothing.
int runDoctor(const Settings& settings);

/// Prints the completion of a shell, "bash" or "zsh", for the verbs and options of the program.
int runCompletion(const std::string& shell, const CLI::App& program);

/// Reads lines at a terminal and runs each as the words of a command line.
int runPrompt(const Settings& settings);
