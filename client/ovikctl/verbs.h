#pragma once

#include "client/ovikctl/request.h"

#include <string>
#include <vector>

namespace CLI
{
class App;
}

// Each function runs a verb and returns the program's exit code, or throws a Failure.

/// Sends one request; prints only the value of the answer.
int runRequest(const Settings& settings, const Request& request);

/// Sends requests in the protocol's own form, one after the other, and prints each with its
/// response. Reads the requests from standard input when @p texts is empty.
int runRaw(const Settings& settings, const std::vector<std::string>& texts);

/// Sends the requests of a file, pipelined.
int runBatch(const Settings& settings, const std::string& file);

/// Lists every command.
int runList(const Settings& settings);

/// Waits until the service answers, or until the platform answers through the service.
int runWait(const Settings& settings, bool forPlatform);

/// Repeats the requests until a signal ends the program.
int runWatch(const Settings& settings, const std::vector<std::string>& lines, double interval);

/// Diagnoses the service. Changes nothing.
int runDoctor(const Settings& settings);

/// Prints the completion script of a shell, "bash" or "zsh", for the program's verbs and options.
int runCompletion(const std::string& shell, const CLI::App& program);

/// Reads lines at a terminal and runs each as the words of a command line.
int runPrompt(const Settings& settings);
