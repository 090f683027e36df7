#pragma once

#include "client/ovikctl/settings.h"
#include "protocol/command_table.h"

#include <functional>
#include <vector>

/// A request as sent, and its command.
struct Request {
    std::string text;
    const Command* command = nullptr; ///< null when not in the table

    /// The longest wait for the answer: a Wi-Fi scan takes up to 60 s, a silent platform 25 s.
    Milliseconds bound() const;
};

/// A request in the protocol's own form, sent unchanged: "setBuzzerMode;1".
Request rawRequest(const std::string& text);

/// Throws a Failure when the service would misunderstand the arguments.
Request requestOf(const Command& command, const std::vector<std::string>& arguments);

/// A line in either form: "setBuzzerMode 1", with quotes as in a shell, or "setBuzzerMode;1".
Request requestOfLine(const std::string& line);

/// True for a line in the protocol's own form: a ";" in its first word.
bool isRaw(const std::string& line);

/// The words of a line, with quotes as in a shell. Throws a Failure when a quote is not closed.
std::vector<std::string> wordsOf(const std::string& line);

/// "setBuzzerMode mode"
std::string formOf(const Command& command);

/// "setBuzzerMode" for "setBuzzerMode;1".
std::string commandWordOf(const std::string& request);

/// "setInterfaceConfigJson;eth0;...": the text up to a possible secret.
std::string withoutSecrets(const Request& request);

/// True when withoutSecrets() hides a part.
bool mayHaveSecret(const Request& request);

/// Passes each non-empty line of a file to @p take; "-" is standard input. Throws a Failure when
/// the file cannot be read to its end. When a line has a NUL or @p take refuses it, the Failure
/// names the line.
void forEachLine(const std::string& name, const std::function<void(const std::string&)>& take);

/// The requests of a file, one per line, in either form; lines that begin with "#" are skipped.
std::vector<Request> requestsOfFile(const std::string& name);
