#include "client/ovikctl/history.h"

#include "protocol/command_table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int maxLines = 1000;

History* makeHistory()
{
    History* const result = history_init();
    HistEvent ignored;
    history(result, &ignored, H_SETSIZE, maxLines);
    history(result, &ignored, H_SETUNIQUE, 1);
    return result;
}

std::filesystem::path folder()
{
    const char* const state = getenv("XDG_STATE_HOME");
    const char* const home = getenv("HOME");
    if (state && *state == '/')
        return std::filesystem::path(state) / "ovikctl";
    if (home && *home == '/')
        return std::filesystem::path(home) / ".local/state/ovikctl";
    return {};
}

/// Searches the whole line: the command may be one of several, or follow an option.
bool mayHaveSecret(std::string line)
{
    const auto isQuote = [](char c) { return c == '"' || c == '\'' || c == '\\'; };
    line.erase(std::remove_if(line.begin(), line.end(), isQuote), line.end());
    return std::any_of(commandTable.begin(), commandTable.end(), [&](const Command& command) {
        return command.hasSecret() && line.find(command.word) != std::string::npos;
    });
}
/// False for a link or a device, such as a link to /dev/null: the user wants no history.
bool mayBeKept(const std::string& path)
{
    struct stat status = {};
    return !path.empty() && (lstat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode));
}

/// Replaces the file atomically, as other sessions may write it meanwhile.
void save(History* lines, const std::string& path)
{
    std::string temporary = path + ".XXXXXX";
    const int fd = mkstemp(temporary.data()); // readable by this user only
    if (fd == -1)
        return;
    FILE* const file = fdopen(fd, "w");
    HistEvent ignored;
    const bool isWritten = history(lines, &ignored, H_SAVE_FP, file) != -1;
    if (fclose(file) != 0 || !isWritten || rename(temporary.c_str(), path.c_str()) != 0)
        unlink(temporary.c_str());
}
} // namespace

LineHistory::LineHistory() : m_lines(makeHistory())
{
    const std::filesystem::path where = folder();
    std::error_code error;
    if (where.empty())
        return;
    const mode_t before = umask(0077);
    std::filesystem::create_directories(where, error);
    umask(before);
    if (error)
        return;
    m_path = where / "history";
    HistEvent ignored;
    if (mayBeKept(m_path))
        history(m_lines, &ignored, H_LOAD, m_path.c_str());
}

LineHistory::~LineHistory() { history_end(m_lines); }

void LineHistory::add(const std::string& line, bool forFile)
{
    HistEvent ignored;
    history(m_lines, &ignored, H_ENTER, line.c_str());
    if (!forFile || mayHaveSecret(line) || !mayBeKept(m_path))
        return;
    // Read the file again, as other sessions write to it, too.
    History* const file = makeHistory();
    history(file, &ignored, H_LOAD, m_path.c_str());
    history(file, &ignored, H_ENTER, line.c_str());
    save(file, m_path);
    history_end(file);
}
