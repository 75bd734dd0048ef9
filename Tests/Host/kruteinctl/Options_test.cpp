#include "Host/kruteinctl/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <vector>

#include "Common/Version.h"
#include "Host/ToolCodes.h"
#include "Host/kruteinctl/Failure.h"
#include "Module/BackupLib/MobileBackupTask.h"

using testing::HasSubstr;

namespace {

struct Parsed {
    std::optional<Options> options;
    std::string text;
    std::string error;
};

Parsed Parse(std::vector<const char*> words) {
    words.insert(words.begin(), "kruteinctl");
    Parsed parsed;
    try {
        parsed.options = ParseOptions(static_cast<int>(words.size()), words.data(), parsed.text);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::kUsage);
        parsed.error = failure.what();
    }
    return parsed;
}

}  // namespace

TEST(Options, OfABackup) {
    const Parsed parsed = Parse({"backup", "the-device", "--to", "/b", "--json"});
    ASSERT_TRUE(parsed.options);
    EXPECT_EQ(parsed.options->command, CommandName::kBackup);
    EXPECT_EQ(parsed.options->udid, "the-device");
    EXPECT_EQ(parsed.options->folder, "/b");
    EXPECT_EQ(parsed.options->output, Output::kJson);
}

TEST(Options, OfARestoreAndASize) {
    const Parsed restore = Parse({"restore", "--from", "/b", "the-device", "-q"});
    ASSERT_TRUE(restore.options);
    EXPECT_EQ(restore.options->command, CommandName::kRestore);
    EXPECT_EQ(restore.options->output, Output::kQuiet);
    const Parsed size = Parse({"size", "the-device", "--from=/b"});
    ASSERT_TRUE(size.options);
    EXPECT_EQ(size.options->command, CommandName::kSize);
    EXPECT_EQ(size.options->output, Output::kPeople);
}

TEST(Options, OfTheConnectedDevices) {
    const Parsed devices = Parse({"devices", "--watch", "--timeout", "5"});
    ASSERT_TRUE(devices.options);
    EXPECT_EQ(devices.options->command, CommandName::kDevices);
    EXPECT_TRUE(devices.options->watch);
    EXPECT_EQ(devices.options->timeout, std::chrono::seconds(5));
    const Parsed info = Parse({"info", "the-device", "--json"});
    ASSERT_TRUE(info.options);
    EXPECT_EQ(info.options->command, CommandName::kInfo);
    EXPECT_EQ(info.options->udid, "the-device");
    EXPECT_EQ(info.options->timeout, std::chrono::seconds(30));
}

TEST(Options, MayLeaveOutTheDevice) {
    for (const std::vector<const char*>& words : std::vector<std::vector<const char*>>{
             {"info"}, {"backup", "--to", "/b"}, {"restore", "--from", "/b"}}) {
        const Parsed parsed = Parse(words);
        ASSERT_TRUE(parsed.options) << parsed.error;
        EXPECT_EQ(parsed.options->udid, "");
    }
}

TEST(Options, VersionAndHelpAreTexts) {
    EXPECT_EQ(Parse({"--version"}).text, "kruteinctl " KRUTEIN_VERSION "\n");
    EXPECT_THAT(Parse({"--help"}).text, HasSubstr("backup"));
    EXPECT_THAT(Parse({"backup", "--help"}).text, HasSubstr("Example:"));
}

TEST(Options, HelpListsEveryExitCode) {
    const std::string help = Parse({"--help"}).text;
    for (const ExitCodeRow& row : ExitCodeTable()) {
        EXPECT_THAT(help, HasSubstr(std::to_string(static_cast<int>(row.code)) + " " + row.meaning));
    }
}

TEST(Options, EveryHelpFitsATerminalOf80ColumnsAndHasAnExample) {
    for (const char* command :
         {"", "backup", "restore", "size", "list", "files", "verify", "show", "devices", "info"}) {
        std::vector<const char*> words = {"--help"};
        if (*command != '\0') words.insert(words.begin(), command);
        const std::string help = Parse(words).text;
        std::istringstream lines(help);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 80U) << line;
        EXPECT_THAT(help, HasSubstr("Example"));
        EXPECT_THAT(help, HasSubstr(std::string("\n  kruteinctl ") + command));
    }
}

TEST(Options, AMistypedWordIsAnsweredWithTheOneThatWasMeant) {
    const auto asked = [](const std::vector<const char*>& words) {
        const std::string error = Parse(words).error;
        const std::size_t begin = error.find("did you mean '");
        return begin == std::string::npos ? "" : error.substr(begin + 14, error.find('?') - begin - 15);
    };
    EXPECT_EQ(asked({"bakup", "--to", "/b"}), "backup");
    EXPECT_EQ(asked({"dev"}), "devices");
    EXPECT_EQ(asked({"lsit", "/b"}), "list");
    EXPECT_EQ(asked({"nonsense"}), "");
    EXPECT_EQ(asked({"--verison"}), "--version");
    EXPECT_EQ(asked({"backup", "--to", "/b", "--tpyes=messages"}), "--types");
    EXPECT_EQ(asked({"backup", "--to", "/b", "--dryrun"}), "--dry-run");
    EXPECT_EQ(asked({"size", "the-device", "--form", "/b"}), "--from") << "not: --from is required";
    EXPECT_EQ(asked({"verify", "/b", "--watch"}), "") << "no option of this command is near";
    EXPECT_EQ(asked({"verify", "/b", "/c"}), "") << "no option at all";
}

TEST(Options, WrongUsageIsSaidOnOneLine) {
    for (const std::vector<const char*>& words : std::vector<std::vector<const char*>>{
             {},
             {"bakup"},
             {"backup"},
             {"backup", "the-device"},
             {"size", "--from", "/b"},
             {"info", "--timeout", "0"},
             {"info", "--timeout", "soon"},
             {"devices", "the-device"},
             {"info", "--watch"},
             {"backup", "the-device", "--to", "/b", "--from", "/c"},
             {"backup", "the-device", "another", "--to", "/b"},
             {"backup", "the-device", "--to", "/b", "--json", "--quiet"},
             {"backup", "the-device", "--to", "/b", "--keep-failed"},
             {"backup", "the-device", "--to", "/b", "--types", "messages", "--dry-run"},
             {"backup", "the-device", "--types", "messages", "--dry-run"},
             {"backup", "the-device", "--types", "messages", "--from", "/b"},
             {"backup", "the-device", "--dry-run", "--from", "/b"},
             {"list"},
             {"--nonsense"},
         }) {
        const Parsed parsed = Parse(words);
        EXPECT_FALSE(parsed.options);
        EXPECT_FALSE(parsed.error.empty());
        EXPECT_EQ(parsed.error.find('\n'), std::string::npos) << parsed.error;
    }
}

TEST(ExitCodes, AreDistinct) {
    std::set<int> codes;
    std::set<std::string> causes;
    for (const ExitCodeRow& row : ExitCodeTable()) {
        EXPECT_TRUE(codes.insert(static_cast<int>(row.code)).second);
        EXPECT_TRUE(causes.insert(row.cause).second);
        EXPECT_STREQ(CauseOf(row.code), row.cause);
    }
}

TEST(ExitCodes, EveryReturnCodeOfARunHasOne) {
    EXPECT_EQ(ExitCodeOfRun(kRunnerOk), ExitCode::kDone);
    EXPECT_EQ(ExitCodeOfRun(kRunnerNoExitMessage), ExitCode::kToolNoResult);
    EXPECT_EQ(ExitCodeOfRun(kRunnerPipeFailed), ExitCode::kFailed);
    EXPECT_EQ(ExitCodeOfRun(kRunnerStartFailed), ExitCode::kToolNotStarted);
    EXPECT_EQ(ExitCodeOfRun(kToolNoDevice), ExitCode::kNoDevice);
    EXPECT_EQ(ExitCodeOfRun(kToolNotWritable), ExitCode::kNotWritable);
    EXPECT_EQ(ExitCodeOfRun(kToolDiskFull), ExitCode::kDiskFull);
    EXPECT_EQ(ExitCodeOfRun(kToolBackupDamaged), ExitCode::kBackupDamaged);
    EXPECT_EQ(ExitCodeOfRun(kToolNoBackup), ExitCode::kNoBackup);
    EXPECT_EQ(ExitCodeOfRun(4711), ExitCode::kFailed);
    EXPECT_EQ(ExitCodeOfRun(-3), ExitCode::kFailed);
}

TEST(ExitCodes, RunsAreSaidInWordsAndAsANumber) {
    EXPECT_EQ(WordsForRun(11), "no such device is connected (code 11)");
    EXPECT_EQ(WordsForRun(-3), "the backup tool failed (code -3)");
}
