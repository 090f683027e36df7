#pragma once

#include <map>
#include <string>

/// The service's responses to the table's examples, by request.
using Examples = std::map<std::string, std::string>;

/// A file generated from the table: its writer receives the current text and returns the new one.
struct Product {
    const char* path;
    std::string (*write)(const std::string& current, const Examples& examples);
};

std::string writeMarkdown(const std::string& current, const Examples& examples);
std::string writeManual(const std::string& current, const Examples& examples);

struct Command;
/// The example of a command: "setBuzzerMode;1".
std::string exampleOf(const Command& command);

/// Replaces everything between the lines @p begin and @p end of @p document by @p text. Throws if
/// @p document lacks one of these lines.
std::string replaced(const std::string& document, const std::string& begin, const std::string& end,
                     const std::string& text);
