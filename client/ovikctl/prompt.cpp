#include "client/ovikctl/command_line.h"
#include "client/ovikctl/history.h"
#include "client/ovikctl/output.h"
#include "client/ovikctl/tab.h"
#include "client/ovikctl/verbs.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace
{
// --- Signals -------------------------------------------------------------------------------------
//
// The editor's own handlers would send each signal to the whole process group. Signals are blocked
// except while the prompt waits for a key or for a line's process, so that none is missed.

volatile sig_atomic_t ending = 0; ///< the signal that ends the prompt
volatile sig_atomic_t resized = 0;
volatile sig_atomic_t interrupted = 0;
volatile sig_atomic_t lineProcess = 0; ///< the process that runs the current line, or 0
sigset_t waitingMask;                  ///< signals that are blocked while waiting

/// Forwards a signal to the line's process, which may have started too late or not receive it.
void passOn(int number)
{
    if (lineProcess > 0)
        kill(lineProcess, number);
}

void onEnding(int number)
{
    ending = number;
    passOn(SIGTERM);
}
void onInterrupt(int)
{
    interrupted = 1;
    passOn(SIGINT);
}
void onContinue(int) { interrupted = 1; } // the terminal must be set up again
void onResize(int) { resized = 1; }

constexpr std::pair<int, void (*)(int)> handlers[] = {{SIGINT, onInterrupt},
                                                      {SIGCONT, onContinue},
                                                      {SIGTERM, onEnding},
                                                      {SIGHUP, onEnding},
                                                      {SIGWINCH, onResize}};

void handleSignals()
{
    sigset_t ours;
    sigemptyset(&ours);
    for (const auto& [number, handler] : handlers) {
        struct sigaction action = {};
        action.sa_handler = handler;
        sigaction(number, &action, nullptr);
        sigaddset(&ours, number);
    }
    sigprocmask(SIG_BLOCK, &ours, &waitingMask);
}

void handleNoSignals()
{
    for (const auto& handler : handlers)
        signal(handler.first, SIG_DFL);
    sigprocmask(SIG_SETMASK, &waitingMask, nullptr);
}

// --- Running a line ------------------------------------------------------------------------------

int noVerb(const Settings&)
{
    throw Failure(wrongUsage, "a command is missing: help tells the commands");
}

std::vector<std::string> commandLineOf(const std::string& line)
{
    if (isRaw(line))
        return {"raw", line};
    return wordsOf(line);
}

[[noreturn]] void runInChild(const Settings& settings, const std::string& line)
{
    handleNoSignals();
    int result = wrongUsage;
    try {
        result = CommandLine(settings, noVerb).run(commandLineOf(line));
    } catch (const Failure& failure) {
        complain(failure.what());
    }
    fflush(stdout);
    _exit(result);
}

/// Runs the line in a child process, so that Ctrl-C ends a waiting request, but not the prompt.
int runLine(const Settings& settings, const std::string& line)
{
    fflush(stdout);
    const pid_t child = fork();
    if (child == 0)
        runInChild(settings, line);
    lineProcess = child;
    sigset_t blocked;
    sigprocmask(SIG_SETMASK, &waitingMask, &blocked);
    int status = 0;
    while (waitpid(child, &status, 0) == -1 && errno == EINTR) {
    }
    sigprocmask(SIG_SETMASK, &blocked, nullptr);
    lineProcess = 0;
    if (WIFSIGNALED(status))
        putchar('\n');
    return WIFEXITED(status) ? WEXITSTATUS(status) : wrongUsage;
}

std::string trimmed(const std::string& line)
{
    const size_t begin = line.find_first_not_of(" \t\n");
    const size_t end = line.find_last_not_of(" \t\n");
    return begin == std::string::npos ? "" : line.substr(begin, end - begin + 1);
}

/// False for an unknown word with arguments: a mistyped command may have a secret among them.
bool isUnderstood(const std::string& line)
{
    const std::string word = commandWordOf(line);
    return word == line || findCommand(word);
}

bool isQuit(const std::string& line) { return line == "quit" || line.compare(0, 5, "quit;") == 0; }

// --- The editor ----------------------------------------------------------------------------------

char* promptText(EditLine*)
{
    static char text[] = "ovikctl> ";
    return text;
}

void printInColumns(const std::vector<std::string>& words)
{
    winsize size = {};
    ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
    size_t width = 2;
    for (const std::string& word : words)
        width = std::max(width, word.size() + 2);
    const size_t columns = std::max<size_t>(1, (size.ws_col ? size.ws_col : 80u) / width);
    for (size_t i = 0; i < words.size(); ++i) {
        const bool isLast = i % columns == columns - 1 || i + 1 == words.size();
        printf("%-*s%s", static_cast<int>(isLast ? 0 : width), words[i].c_str(),
               isLast ? "\n" : "");
    }
}

unsigned char onTab(EditLine* editor, int)
{
    const CommandLine names({}, noVerb);
    const LineInfo* const info = el_line(editor);
    const Tab tab = tabBehind({info->buffer, info->cursor}, names.program());
    if (!tab.insertion.empty())
        return el_insertstr(editor, tab.insertion.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    if (tab.list.empty() && tab.hint.empty())
        return CC_ERROR;
    putchar('\n');
    printInColumns(tab.list);
    if (!tab.hint.empty())
        puts(tab.hint.c_str());
    fflush(stdout);
    return CC_REDISPLAY;
}

/// False when a signal came first.
bool waitForKey(EditLine* editor)
{
    pollfd key = {STDIN_FILENO, POLLIN, 0};
    while (key.revents == 0) {
        ppoll(&key, 1, nullptr, &waitingMask);
        // Handle a signal before keys that arrived together with it.
        sigset_t blocked;
        sigprocmask(SIG_SETMASK, &waitingMask, &blocked);
        sigprocmask(SIG_SETMASK, &blocked, nullptr);
        if (resized)
            el_resize(editor);
        resized = 0;
        if (ending || interrupted) {
            errno = EINTR;
            return false;
        }
    }
    return true;
}

/// For the editor. Skips invalid bytes. @return 1, 0 at the end of input, -1 for an error
int readCharacter(EditLine* editor, wchar_t* character)
{
    mbstate_t state = {};
    char byte = 0;
    while (waitForKey(editor)) {
        const ssize_t got = read(STDIN_FILENO, &byte, 1);
        if (got != 1)
            return static_cast<int>(got);
        const size_t length = mbrtowc(character, &byte, 1, &state);
        if (length <= 1)
            return 1;
        if (length == static_cast<size_t>(-1))
            state = {};
    }
    return -1;
}

class Editor
{
public:
    explicit Editor(LineHistory& lines) : m_editor(el_init("ovikctl", stdin, stdout, stderr))
    {
        el_set(m_editor, EL_PROMPT, promptText);
        el_set(m_editor, EL_GETCFN, readCharacter);
        el_set(m_editor, EL_EDITOR, "emacs");
        el_set(m_editor, EL_HIST, history, lines.lines());
        // el_set() leaks copies of narrow strings; el_wset() does not.
        el_wset(m_editor, EL_ADDFN, L"ovikctl-tab", L"Complete what is typed", onTab);
        el_set(m_editor, EL_BIND, "^I", "ovikctl-tab", nullptr);
        el_set(m_editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
        el_source(m_editor, nullptr);
    }
    ~Editor() { el_end(m_editor); }
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    /// Reads the next line; false at the end of input. A signal clears the current line.
    bool read(std::string& line)
    {
        while (!ending) {
            interrupted = 0;
            // Set before the prompt appears: changing the mode later would drop an early Ctrl-D.
            el_set(m_editor, EL_PREP_TERM, 1);
            int length = 0;
            const char* const text = el_gets(m_editor, &length);
            if (text && length > 0) {
                line = trimmed({text, static_cast<size_t>(length)});
                return true;
            }
            putchar('\n');
            if (length == 0 || errno != EINTR)
                return false;
            el_reset(m_editor);
        }
        return false;
    }

private:
    EditLine* m_editor;
};
} // namespace

int runPrompt(const Settings& settings)
{
    puts("TAB completes, help tells, exit or Ctrl-D leaves; quit ends the service");
    handleSignals();
    {
        LineHistory lines;
        Editor editor(lines);
        std::string line;
        while (editor.read(line) && line != "exit") {
            if (line.empty())
                continue;
            const int result = runLine(settings, line);
            lines.add(line, result != wrongUsage && isUnderstood(line));
            if (isQuit(line) && result == allDone)
                break;
        }
    }
    handleNoSignals();
    if (ending)
        raise(ending);
    return allDone;
}
