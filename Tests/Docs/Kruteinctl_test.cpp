// The manual page and the completions of kruteinctl say what --help says.

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "Host/kruteinctl/ExitCode.h"
#include "Host/kruteinctl/Options.h"
#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

using testing::Contains;
using testing::HasSubstr;

namespace {

std::string Help(const std::vector<const char*>& words) {
    std::vector<const char*> all = {"kruteinctl"};
    all.insert(all.end(), words.begin(), words.end());
    all.push_back("--help");
    std::string text;
    EXPECT_FALSE(ParseOptions(static_cast<int>(all.size()), all.data(), text));
    return text;
}

std::set<std::string> Matches(const std::string& text, const std::string& pattern) {
    const std::regex expression(pattern);
    std::set<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), expression), end; at != end; ++at)
        found.insert((*at)[1]);
    return found;
}

std::set<std::string> Commands() {
    const std::string help = Help({});
    const std::size_t begin = help.find("\nCommands:\n");
    const std::size_t end = help.find("\n\n", begin);
    return Matches(help.substr(begin, end - begin), "\n  ([a-z]+) ");
}

/// "-q", "--quiet" and so on of a command, or of kruteinctl itself.
std::set<std::string> OptionsOf(const std::string& help) {
    std::set<std::string> options = Matches(help, "\n  (?:-[a-z],)?(--[a-z-]+)");
    const std::set<std::string> letters = Matches(help, "\n  (-[a-z]),");
    options.insert(letters.begin(), letters.end());
    return options;
}

/// A part of the manual page as plain text: without the fonts, and with '-' for "\-".
std::string ManualSection(const std::string& begin, const std::string& end) {
    const std::string page = ReadWholeFile(MANUAL);
    const std::size_t from = page.find(begin);
    EXPECT_NE(from, std::string::npos) << begin;
    std::string text = page.substr(from, page.find(end, from + 1) - from);
    text = std::regex_replace(text, std::regex("\\\\-"), "-");
    return std::regex_replace(text, std::regex("\n\\.(B|BR|BI|I|IR|RB|RI) "), "\n");
}

/// What bash offers for the last of the words.
std::vector<std::string> Completed(const std::vector<std::string>& words) {
    std::string line = "source '" COMPLETIONS "/kruteinctl.bash'\nCOMP_WORDS=(kruteinctl";
    for (const std::string& word : words)
        line += " '" + word + "'";
    line +=
        fmt::format(")\nCOMP_CWORD={}\n_kruteinctl\nprintf '%s\\n' \"${{COMPREPLY[@]}}\"\n", words.size());
    Command command({BASH, "--norc", "-c", line});
    command.workingFolder = COMPLETIONS "/..";
    const Finished bash = RunToEnd(command);
    EXPECT_EQ(bash.code, 0) << bash.errors;
    std::istringstream lines(bash.output);
    std::vector<std::string> offers;
    for (std::string offer; std::getline(lines, offer);)
        offers.push_back(offer);
    return offers;
}

std::string Completions(const char* name) {
    return ReadWholeFile(std::string(COMPLETIONS "/") + name);
}

}  // namespace

TEST(ManualPage, HasEveryCommandWithItsOptions) {
    ASSERT_GE(Commands().size(), 9U);
    for (const std::string& command : Commands()) {
        const std::string section = ManualSection("\n.SS \"" + command, "\n.S");
        for (const std::string& option : OptionsOf(Help({command.c_str()}))) {
            if (option == "-h" || option == "--help" || option == "--json") continue;  // of all commands
            EXPECT_TRUE(std::regex_search(section, std::regex("\n\\.TP\n[^\n]*" + option + "[ \n\"]")))
                << command << " " << option << "\n"
                << section;
        }
        const std::set<std::string> known = OptionsOf(Help({command.c_str()}));
        for (const std::string& option : Matches(section, "\n\\.TP\n(?:-[a-z] \", \" )?(--[a-z-]+)"))
            EXPECT_THAT(known, Contains(option)) << command;
    }
    const std::string description = ManualSection("\n.SH DESCRIPTION", "\n.SH");
    for (const char* option : {"-h", "--help", "--json", "--version"})
        EXPECT_THAT(description, HasSubstr(option));
}

TEST(ManualPage, ListsEveryExitCode) {
    std::string table = "\n.SH \"EXIT STATUS\"";
    for (const ExitCodeRow& row : ExitCodeTable())
        table += fmt::format("\n.TP\n{}\n{}", static_cast<int>(row.code), row.meaning);
    EXPECT_EQ(ManualSection("\n.SH \"EXIT STATUS\"", "\n.SH"), table) << "neither more nor fewer";
}

TEST(Completion, OfBashOffersEveryCommandAndOption) {
    const std::vector<std::string> offered = Completed({""});
    const std::set<std::string> first(offered.begin(), offered.end());
    std::set<std::string> expected = Commands();
    expected.insert({"--help", "--version"});
    EXPECT_EQ(first, expected);
    for (const std::string& command : Commands()) {
        const std::vector<std::string> options = Completed({command, "--"});
        std::set<std::string> known = OptionsOf(Help({command.c_str()}));
        known.erase("-h");
        known.erase("-q");
        EXPECT_EQ(std::set<std::string>(options.begin(), options.end()), known) << command;
    }
}

TEST(Completion, OfBashOffersValues) {
    EXPECT_THAT(Completed({"ver"}), testing::ElementsAre("verify"));
    EXPECT_THAT(Completed({"backup", "--types", "mess"}), testing::ElementsAre("messages"));
    EXPECT_THAT(Completed({"backup", "--types", "messages,whats"}),
                testing::ElementsAre("messages,whatsapp"));
    EXPECT_THAT(Completed({"backup", "--to", "compl"}), testing::ElementsAre("completions"));
    EXPECT_THAT(Completed({"show", "compl"}), testing::ElementsAre("completions"));
}

TEST(Completion, OfZshAndFishNamesEveryCommandAndOption) {
    const std::string zsh = Completions("_kruteinctl");
    const std::string fish = Completions("kruteinctl.fish");
    for (const std::string& command : Commands()) {
        EXPECT_TRUE(std::regex_search(zsh, std::regex("\n    ['\"]" + command + ":"))) << command;
        EXPECT_THAT(zsh, HasSubstr("\n    " + command + ")")) << command;
        EXPECT_THAT(fish, HasSubstr(" -a " + command + " -d ")) << command;
        for (const std::string& option : OptionsOf(Help({command.c_str()}))) {
            EXPECT_TRUE(std::regex_search(zsh, std::regex(option + "[\\[',}]"))) << command << " " << option;
            const std::string flag = option[1] == '-' ? " -l " + option.substr(2) : " -s " + option.substr(1);
            const bool isOfAll = option == "-h" || option == "--help" || option == "--json";
            std::string line = isOfAll ? "" : "after [^'\\n]*\\b";
            if (!isOfAll) line.append(command).append("\\b[^\\n]*");
            line.append(flag).append(" ");
            EXPECT_TRUE(std::regex_search(fish, std::regex(line))) << command << " " << option;
        }
    }
    EXPECT_THAT(zsh, HasSubstr("--version["));
    EXPECT_THAT(fish, HasSubstr(" -l version "));
}
