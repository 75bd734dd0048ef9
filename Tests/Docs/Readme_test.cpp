// The run that README shows is what happens.

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

/// What differs from run to run is masked; what a terminal overwrites is left out.
std::string Kept(const std::string& text, const std::string& folder) {
    static const std::regex passing(R"(\[#+-*\] .*|asking the device|backing up|finishing| *\d+%.*)");
    static const std::regex size(R"([0-9.]+ [kMGT]?B)");
    static const std::regex number(R"(\d+)");
    static const std::regex blanks(" +");
    std::istringstream lines(text);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || std::regex_match(line, passing)) continue;
        const std::size_t at = folder.empty() ? std::string::npos : line.find(folder);
        if (at != std::string::npos) line.replace(at, folder.size(), "~/krutein");
        line = std::regex_replace(line, size, "<size>");
        line = std::regex_replace(line, number, "<n>");
        kept += std::regex_replace(line, blanks, " ") + "\n";
    }
    return kept;
}

std::vector<std::string> WordsOf(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

}  // namespace

TEST(Readme, ItsRunIsReal) {
    const std::string text = ReadWholeFile(README_FILE);
    const std::string mark = "```console\n";
    const std::size_t begin = text.find(mark) + mark.size();
    std::istringstream block(text.substr(begin, text.find("```", begin) - begin));
    const TemporaryFolder folder;
    int commands = 0;
    std::string line;
    std::getline(block, line);
    while (line.rfind("$ kruteinctl ", 0) == 0) {
        Command command(WordsOf(line.substr(2)));
        command.words.front() = KRUTEINCTL_PROGRAM;
        command.workingFolder = folder.Path();
        command.environment = {{"KRUTEIN_LOG_DIR", folder.Path("logs")},
                               {"KRUTEIN_SAMPLE_STATE", folder.Path("state")},
                               {"USBMUXD_SOCKET_ADDRESS", "UNIX:" + folder.Path("no-daemon")}};
        const std::string shown = line;
        std::string expected;
        while (std::getline(block, line) && line.rfind("$ ", 0) != 0)
            expected += line + "\n";
        const Finished run = RunToEnd(command);
        EXPECT_EQ(run.code, 0) << shown << "\n" << run.errors;
        EXPECT_EQ(Kept(run.output, folder.Path()), Kept(expected, "")) << shown;
        ++commands;
    }
    EXPECT_EQ(commands, 3);
}
