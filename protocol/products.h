#pragma once

#include <map>
#include <string>

/// Responses by request, as the service answered the table's examples.
using Examples = std::map<std::string, std::string>;

/// A file that is made from the table: its writer takes the file as it is and returns it as it
/// should be.
struct Product {
    const char* path;
    std::string (*write)(const std::string& current, const Examples& examples);
};

std::string writeMarkdown(const std::string& current, const Examples& examples);
std::string writeManual(const std::string& current, const Examples& examples);

struct Command;
/// The example of a command: "setBuzzerMode;1".
std::string exampleOf(const Command& command);

/// @p document with what is between the lines @p begin and @p end replaced by @p text. Throws if it
/// lacks one of them.
std::string replaced(const std::string& document, const std::string& begin, const std::string& end,
                     const std::string& text);
