// The completion of ovikctl in real shells: they load the installed file at the first TAB.

#include "protocol/command_table.h"
#include "tests/support/ovikctl.h"
#include "tests/support/terminal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace
{
namespace fs = std::filesystem;

/// A folder with a program "ovikctl" for PATH.
class Program
{
public:
    Program()
    {
        std::string words;
        for (const std::string& word : ovikctl({}))
            words += "'" + word + "' ";
        fs::create_directory(m_dir.path("bin"));
        const std::string path = m_dir.path("bin/ovikctl");
        std::ofstream(path) << "#!/bin/sh\nexec " << words << "\"$@\"\n";
        fs::permissions(path, fs::perms::owner_all);
        std::ofstream(m_dir.path("bin/a file.txt"));
    }
    std::string path(const std::string& name) const { return m_dir.path(name); }
    /// Keeps the user's own shell configuration out.
    Words environment() const
    {
        return {"PATH=" + path("bin") + ":" + getenv("PATH"), "HOME=" + path(""), "LC_ALL=C.UTF-8",
                "BASH_COMPLETION_USER_DIR=" + path("bash")};
    }

private:
    TempDir m_dir;
};

const std::string prompt = "ready> ";

std::unique_ptr<Terminal> openBash(const Program& program)
{
    fs::create_directories(program.path("bash/completions"));
    fs::copy_file(OVIKCTL_COMPLETIONS "/ovikctl", program.path("bash/completions/ovikctl"),
                  fs::copy_options::overwrite_existing);
    auto shell =
        std::make_unique<Terminal>(Words{"bash", "--norc", "--noprofile"}, program.environment());
    for (const std::string setting :
         {"show-all-if-ambiguous on", "enable-bracketed-paste off", "completion-query-items 0"})
        shell->type("bind 'set " + setting + "'\n");
    shell->type("cd " + program.path("bin") + "; . /usr/share/bash-completion/bash_completion\n");
    shell->type("PS1='ready''> '\n");
    EXPECT_TRUE(shell->shows(prompt)) << shell->screen();
    return shell;
}

std::unique_ptr<Terminal> openZsh(const Program& program)
{
    auto shell = std::make_unique<Terminal>(Words{"zsh", "-f"}, program.environment());
    shell->type("unsetopt promptcr promptsp; zle_highlight=(none); LISTMAX=1000; "
                "fpath=(" OVIKCTL_COMPLETIONS " $fpath); "
                "autoload -Uz compinit; compinit -u -D; "
                "zstyle ':completion:*' format 'next: %d'\n");
    shell->type("cd " + program.path("bin") + "\n");
    shell->type("PS1='ready''> '\n");
    EXPECT_TRUE(shell->shows(prompt)) << shell->screen();
    return shell;
}

struct Shell {
    const char* name;
    std::unique_ptr<Terminal> (*open)(const Program& program);
};

class Completion : public testing::TestWithParam<Shell>
{
protected:
    void expect(const std::string& typed, const Words& texts)
    {
        const auto shell = GetParam().open(m_program);
        shell->type("ovikctl " + typed);
        EXPECT_TRUE(shell->shows("ovikctl " + typed)) << shell->screen();
        shell->type(keys::tab);
        for (const std::string& text : texts)
            EXPECT_TRUE(shell->shows(text)) << typed << ": " << text << "\n" << shell->screen();
    }
    Program m_program;
};

INSTANTIATE_TEST_SUITE_P(Shells, Completion,
                         testing::Values(Shell{"bash", openBash}, Shell{"zsh", openZsh}),
                         [](const auto& shell) { return shell.param.name; });

TEST_P(Completion, OfACommandThatIsTheOnlyOne) { expect("getBri", {"ghtness "}); }
TEST_P(Completion, OfATool) { expect("doc", {"tor "}); }
TEST_P(Completion, OfAnOption) { expect("--js", {"on "}); }
TEST_P(Completion, OfAnOptionBehindACommand) { expect("getBrightness --js", {"on "}); }
TEST_P(Completion, OfAToolsOwnOption) { expect("watch --int", {"erval "}); }
TEST_P(Completion, OfACommandToWatch) { expect("watch getBuzzerMode getBri", {"ghtness "}); }
TEST_P(Completion, OfACommandBehindOptions)
{
    expect("--json --timeout 5 --socket /x --service-user root getBri", {"ghtness "});
}
TEST_P(Completion, OfAFileOfRequests) { expect("batch a", {"\\ file.txt "}); }
TEST_P(Completion, OfAShellsName) { expect("completion z", {"sh "}); }
TEST_P(Completion, NamesTheArgumentThatComesNext)
{
    expect("setHWPluginIO ", {"slot: place in the list of the modules found, from 0"});
    expect("setHWPluginIO -1 ", {"index: I/O point or LED of the module"});
    expect("--json setHWPluginIO 0 1 ", {"value: the value, one digit"});
}

TEST_P(Completion, OffersEveryCommand)
{
    const auto shell = GetParam().open(m_program);
    shell->type("ovikctl " + keys::tab);
    for (const Command& command : commandTable)
        ASSERT_TRUE(waitUntil([&] {
            return shell->screen().find(command.word) != std::string::npos;
        })) << command.word;
}
} // namespace
