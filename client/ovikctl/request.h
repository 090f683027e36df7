#pragma once

#include "client/ovikctl/settings.h"
#include "protocol/command_table.h"

#include <functional>
#include <vector>

/// A request as it is sent, and what is known of it.
struct Request {
    std::string text;
    const Command* command = nullptr; ///< null when the table does not have it

    /// How long its answer may take: a Wi-Fi scan 60 s, a platform that does not answer 25 s.
    Milliseconds bound() const;
};

/// A request in the protocol's own form, sent as it is: "setBuzzerMode;1".
Request rawRequest(const std::string& text);

/// Throws a Failure when the service would understand something else than was meant.
Request requestOf(const Command& command, const std::vector<std::string>& arguments);

/// A line in either form: "setBuzzerMode 1", with quotes as in a shell, or "setBuzzerMode;1".
Request requestOfLine(const std::string& line);

/// True for a line in the protocol's own form: a ";" in its first word.
bool isRaw(const std::string& line);

/// The words of a line, with quotes as in a shell. Throws a Failure when a quote is not closed.
std::vector<std::string> wordsOf(const std::string& line);

/// "setBuzzerMode mode"
std::string formOf(const Command& command);

/// "setBuzzerMode" of "setBuzzerMode;1".
std::string commandWordOf(const std::string& request);

/// "setInterfaceConfigJson;eth0;...": its text up to what may be a secret.
std::string withoutSecrets(const Request& request);

/// True when withoutSecrets() leaves something out.
bool mayHaveSecret(const Request& request);

/// The lines of a file but for the empty ones; "-" is standard input. Throws a Failure that names
/// the line when it has a NUL or @p take refuses it, or when the file cannot be read to its end.
void forEachLine(const std::string& name, const std::function<void(const std::string&)>& take);

/// The requests of a file with one in each line, in either form; lines that begin with "#" are
/// left out.
std::vector<Request> requestsOfFile(const std::string& name);
