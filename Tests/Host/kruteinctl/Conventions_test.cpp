// What people expect of any command line, tried as a process, without the backup tool.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "Host/kruteinctl/Text.h"
#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

struct Mistake {
    std::vector<std::string> words;
    int code;
    const char* cause;
};

class ConventionsTest : public testing::Test {
 protected:
    ConventionsTest() {
        const std::string record = host.Folder().Write(
            "backups/Velmora_SMS_Backup/1/backup_config.ini",
            "[backup_info]\ndeviceid = the-device\ndevicename = Änne的手机 📱 and a name that is long\n"
            "iosversion = 17.4.1\nserialnumber = S1\nproducttype = iPhone14,5\n"
            "backuptimestr = 2024-03-05T07:08:09Z\nfilesize = 2048\nbackuptype = 8\nisvalid = 1\n");
        fs::create_directories(fs::path(record).parent_path() / "the-device");
    }

    /// The list on a terminal.
    std::string Listed(const std::map<std::string, std::string>& environment, int columns = 80) const {
        Command command = host.Kruteinctl({"list", host.Backups()});
        command.terminal = true;
        command.columns = columns;
        for (const auto& [name, value] : environment)
            command.environment[name] = value;
        const Finished list = RunToEnd(command);
        EXPECT_EQ(list.code, 0);
        return list.output;
    }

    /// One for each command; none of them gets as far as starting the tool.
    std::vector<Mistake> Mistakes() const {
        const std::string nowhere = host.Folder().Path("nowhere");
        return {
            {{}, 2, "usage"},
            {{"bakup"}, 2, "usage"},
            {{"list", "--nonsense"}, 2, "usage"},
            {{"backup", "no-device", "--to", nowhere}, 2, "usage"},
            {{"backup", HostBundle::kUdid, "--to", nowhere, "--types", "nonsense"}, 2, "usage"},
            {{"backup", HostBundle::kUdid, "--types", "messages", "--dry-run", "--from", nowhere},
             9,
             "no_backup"},
            {{"backup", "--to", nowhere}, 13, "no_daemon"},
            {{"restore", HostBundle::kUdid, "--from", nowhere}, 9, "no_backup"},
            {{"size", HostBundle::kUdid, "--from", nowhere}, 9, "no_backup"},
            {{"list", nowhere}, 9, "no_backup"},
            {{"files", nowhere}, 9, "no_backup"},
            {{"verify", nowhere}, 9, "no_backup"},
            {{"show", nowhere}, 9, "no_backup"},
            {{"devices"}, 13, "no_daemon"},
            {{"devices", "--watch"}, 13, "no_daemon"},
            {{"info"}, 13, "no_daemon"},
        };
    }

    Finished Run(std::vector<std::string> words, bool json) const {
        if (json) words.emplace_back("--json");
        Command command = host.Kruteinctl(words);
        command.environment["USBMUXD_SOCKET_ADDRESS"] = "UNIX:" + host.Folder().Path("no-daemon");
        return RunToEnd(command);
    }

    HostBundle host;
};

std::string Line(const std::vector<std::string>& words) {
    std::string line = "kruteinctl";
    for (const std::string& word : words)
        line += " " + word;
    return line;
}

constexpr char kEscape = '\x1b';

}  // namespace

TEST_F(ConventionsTest, ErrorsOfEveryCommandGoToStandardErrorOnly) {
    for (const Mistake& mistake : Mistakes()) {
        const Finished run = Run(mistake.words, false);
        EXPECT_EQ(run.code, mistake.code) << Line(mistake.words);
        EXPECT_EQ(run.output, "") << Line(mistake.words);
        EXPECT_THAT(run.errors, StartsWith("kruteinctl: ")) << Line(mistake.words);
        EXPECT_EQ(Lines(run.errors).size(), 1U) << run.errors;
    }
}

TEST_F(ConventionsTest, ErrorsOfEveryCommandAreObjectsWithJson) {
    for (const Mistake& mistake : Mistakes()) {
        const Finished run = Run(mistake.words, true);
        EXPECT_EQ(run.code, mistake.code) << Line(mistake.words);
        EXPECT_EQ(run.errors, "") << Line(mistake.words);
        const std::vector<Json> objects = Objects(run.output);
        ASSERT_FALSE(objects.empty()) << Line(mistake.words);
        EXPECT_EQ(objects.back()["message_type"], "error");
        EXPECT_EQ(objects.back()["exit_code"], mistake.code);
        EXPECT_EQ(objects.back()["cause"], mistake.cause) << Line(mistake.words);
        EXPECT_NE(objects.back()["message"], "");
    }
}

TEST_F(ConventionsTest, HelpAndVersionGoToStandardOutputOnly) {
    for (const char* word : {"--help", "--version", "-h"}) {
        const Finished run = host.Run({word});
        EXPECT_EQ(run.code, 0);
        EXPECT_EQ(run.errors, "");
        EXPECT_THAT(run.output, StartsWith("kruteinctl"));
    }
}

TEST_F(ConventionsTest, ColoursAreForTerminals) {
    EXPECT_THAT(Listed({}), HasSubstr("\x1b[32mvalid\x1b[0m"));
    EXPECT_EQ(host.Run({"list", host.Backups()}).output.find(kEscape), std::string::npos);
    EXPECT_EQ(host.Run({"list", "/nowhere"}).errors.find(kEscape), std::string::npos);
    Command wrong = host.Kruteinctl({"list", "/nowhere"});
    wrong.terminal = true;
    EXPECT_THAT(RunToEnd(wrong).output, StartsWith("\x1b[1;31mkruteinctl:\x1b[0m there is no folder"));
}

TEST_F(ConventionsTest, ColoursCanBeTurnedOff) {
    for (const std::map<std::string, std::string>& environment :
         std::vector<std::map<std::string, std::string>>{
             {{"NO_COLOR", "1"}}, {{"TERM", "dumb"}}, {{"TERM", ""}}})
        EXPECT_EQ(Listed(environment).find(kEscape), std::string::npos);
    EXPECT_THAT(Listed({{"NO_COLOR", ""}}), HasSubstr("\x1b["));
}

TEST_F(ConventionsTest, ATerminalOf80ColumnsShowsTheListWithThePathsBelow) {
    const std::string output = std::regex_replace(Listed({{"NO_COLOR", "1"}}), std::regex("\r"), "");
    const std::vector<std::string> lines = Lines(output);
    ASSERT_EQ(lines.size(), 5U) << output;
    for (const std::size_t i : {0, 1, 2, 4})
        EXPECT_LE(Columns(lines[i]), 80U) << lines[i];
    EXPECT_THAT(lines[0], StartsWith("Device "));
    EXPECT_EQ(lines[1], "  Backup");
    EXPECT_THAT(lines[2], StartsWith("Änne的"));
    EXPECT_EQ(Columns(lines[0].substr(0, lines[0].find("State"))),
              Columns(lines[2].substr(0, lines[2].find("valid"))));
    EXPECT_EQ(lines[3], "  " + host.Backups() + "/Velmora_SMS_Backup/1/the-device");
    EXPECT_EQ(Lines(Listed({}, 400)).size(), 3U) << "a wide one has room for all in a row";
}
