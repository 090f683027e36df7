#pragma once

#include <histedit.h>
#include <string>

/// The lines of the prompt, and a file that saves those without secrets for the next session.
class LineHistory
{
public:
    LineHistory();
    ~LineHistory();
    LineHistory(const LineHistory&) = delete;
    LineHistory& operator=(const LineHistory&) = delete;

    /// For the editor.
    History* lines() { return m_lines; }

    /// Adds a line to this session's history. Also saves it to the file when @p forFile is true and
    /// no command in the line has a secret.
    void add(const std::string& line, bool forFile);

private:
    History* m_lines;
    std::string m_path; ///< empty when no folder is available
};
