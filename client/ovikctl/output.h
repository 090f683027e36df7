#pragma once

#include "client/ovikctl/failure.h"
#include "client/ovikctl/request.h"

#include <string_view>
#include <utility>
#include <vector>

/// A JSON object in one line, field by field.
class JsonObject
{
public:
    JsonObject& add(const char* name, std::string_view text);
    JsonObject& add(const char* name, long long number);
    /// A value that is JSON itself.
    JsonObject& addJson(const char* name, const std::string& value);
    std::string text() const { return m_fields + "}"; }

private:
    std::string m_fields = "{";
};

/// The object that tells an answer: {"command":"getBrightness","status":0,"value":75}.
std::string jsonOf(const Request& request, const ovik_client_answer& answer);

/// The object that tells why there is no answer.
std::string jsonOf(const Request& request, const std::string& error);

/// "setBuzzerMode;1 -> 0 0", as the service sent it; at a terminal without secrets.
std::string lineOf(const Request& request, const ovik_client_answer& answer);

/// Writes a line to standard output at once, as others may wait for it. At a terminal, control
/// characters become blanks and continuation lines are indented.
void printLine(const std::string& line);

/// The same for standard error.
void complain(const std::string& text);

/// The text with a blank for each control character, which a terminal might obey.
std::string withoutControls(std::string text, std::string_view kept = "");

enum class Style { Bold, Good, Bad };
/// Text for a terminal: without a colour when standard output is none, or NO_COLOR is set.
std::string paint(Style style, const std::string& text);
