#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// What TAB does behind a piece of a line.
struct Tab {
    std::string insertion;         ///< to be typed
    std::vector<std::string> list; ///< to be shown: what could come here
    std::string hint;              ///< to be shown: which argument comes here
};

Tab tabBehind(const std::string& line, const CLI::App& program);
