#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// The effect of TAB after the beginning of a line.
struct Tab {
    std::string insertion;         ///< inserted at the cursor
    std::vector<std::string> list; ///< shown: the possible words
    std::string hint;              ///< shown: the next argument
};

Tab tabBehind(const std::string& line, const CLI::App& program);
