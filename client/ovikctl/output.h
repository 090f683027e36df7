#pragma once

#include "client/ovikctl/failure.h"
#include "client/ovikctl/request.h"

#include <string_view>
#include <utility>
#include <vector>

/// Builds a JSON object in one line, field by field.
class JsonObject
{
public:
    JsonObject& add(const char* name, std::string_view text);
    JsonObject& add(const char* name, long long number);
    /// Adds a value that is already JSON.
    JsonObject& addJson(const char* name, const std::string& value);
    std::string text() const { return m_fields + "}"; }

private:
    std::string m_fields = "{";
};

/// The object for an answer: {"command":"getBrightness","status":0,"value":75}.
std::string jsonOf(const Request& request, const ovik_client_answer& answer);

/// The object for a request without an answer; @p error is the reason.
std::string jsonOf(const Request& request, const std::string& error);

/// "setBuzzerMode;1 -> 0 0", as sent by the service; secrets are hidden on a terminal.
std::string lineOf(const Request& request, const ovik_client_answer& answer);

/// Writes a line to standard output and flushes it, as other programs may wait for it. On a
/// terminal, control characters become blanks and continuation lines are indented.
void printLine(const std::string& line);

/// The same for standard error.
void complain(const std::string& text);

/// Replaces control characters, which a terminal might obey, by blanks.
std::string withoutControls(std::string text, std::string_view kept = "");

enum class Style { Bold, Good, Bad };
/// Adds colour, unless standard output is not a terminal or NO_COLOR is set.
std::string paint(Style style, const std::string& text);
