#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Common/Version.h"
#include "Common/std/std_objc.h"
#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/ArchiverTool.h"
#include "Tests/Host/Archiver/BackupReader.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class CommandLine : public ArchiverTest {
 protected:
    static Finished RunWords(std::vector<std::string> words) {
        const std::filesystem::path program = STD_OBJC_GetCurrentAppPath();
        words.insert(words.begin(),
                     (program.parent_path().parent_path() / "Frameworks/HandsetArchiver").string());
        return RunToEnd(Command(words));
    }
};

struct BadCommand {
    const char* argument;
    const char* error;
};

class BadCommandLine : public CommandLine, public testing::WithParamInterface<BadCommand> {};

}  // namespace

TEST_F(CommandLine, OfEachOperationOfTheLibraryIsUnderstood) {
    EXPECT_TRUE(EndedWith(Run(BackupCommand()), kToolDone));
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
    EXPECT_TRUE(EndedWith(Run(RestoreCommand() + "|-restore_option|-1"), kToolDone));
    EXPECT_TRUE(EndedWith(Run(InfoCommand()), kToolDone));
    EXPECT_TRUE(EndedWith(Run(RestoreSettingsCommand()), kToolDone));
    EXPECT_TRUE(EndedWith(Run(PasswordCommand("", "")), kToolDone));
}

TEST_F(CommandLine, MayHaveItsOptionsInAnyOrder) {
    EXPECT_TRUE(EndedWith(Run("-model|2|-pipe|PIPE|-target|" + std::string(kUdid) + "|-backuppath|" +
                              Path("-backup") + "|-backup"),
                          kToolDone));
    EXPECT_TRUE(std::filesystem::exists(Path("-backup")));
}

TEST_F(CommandLine, MustNameAPipe) {
    // Not a descriptor; one that is open for reading only, as the first is made to be.
    m_prepare = [] {
        if (std::freopen("/dev/null", "r", stdin) == nullptr) std::abort();
    };
    for (const char* const pipe : {"-559038737", "-1", "0", "987", "2147483647"}) {
        std::string command = RestoreCommand() + "|-restore_option|1";
        const ToolRun run = Run(command.replace(command.find("PIPE"), 4, pipe));
        EXPECT_EQ(run.code, kToolBadCommand) << pipe;
        EXPECT_THAT(run.errors, HasSubstr(std::string("no pipe ") + pipe));
        EXPECT_THAT(run.messages, IsEmpty());
    }
}

TEST_P(BadCommandLine, IsRefusedWithTheWrongWord) {
    const ToolRun run = Run(GetParam().argument);
    EXPECT_EQ(run.code, kToolBadCommand);
    EXPECT_THAT(run.messages, IsEmpty());
    EXPECT_EQ(run.errors, std::string("HandsetArchiver: ") + GetParam().error + "; see --help\n");
}

INSTANTIATE_TEST_SUITE_P(
    Words, BadCommandLine,
    testing::Values(
        BadCommand{"", "'' is not understood"},  //
        BadCommand{"nonsense", "'nonsense' is not understood"},
        BadCommand{"-Backup", "'-Backup' is not understood"},
        BadCommand{"-help", "'-help' is not understood"},
        BadCommand{"-target|x|-pipe|9|-model|1", "'-target|x|-pipe|9|-model|1' does not say what to do"},
        BadCommand{"-backup|-restore|-target|x", "'-restore' cannot follow -backup"},
        BadCommand{"-backup|-backup|-target|x", "'-backup' cannot follow -backup"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-pipe|PIPE|-model", "'-model' has no value"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-pipe|PIPE|-model|", "'' is no number for -model"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-pipe|1x|-model|1", "'1x' is no number for -pipe"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-pipe| 1|-model|1", "' 1' is no number for -pipe"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-pipe|99999999999|-model|1",
                   "'99999999999' is no number for -pipe"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-pipe|PIPE|-model|1|", "'' is not understood"},
        BadCommand{"-backup|-backuppath|/x|/y|-target|x|-pipe|PIPE|-model|1", "'/y' is not understood"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-target|y|-pipe|PIPE|-model|1",
                   "'-target' is given twice"},
        BadCommand{"-backup|-target|x|-pipe|PIPE|-model|1", "'-backuppath' is missing, which -backup needs"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-model|1", "'-pipe' is missing, which -backup needs"},
        BadCommand{"-backup|-backuppath|/x|-source|x|-target|x|-pipe|PIPE|-model|1",
                   "'-source' is no option of -backup"},
        BadCommand{"-backup|-backuppath|/x|-target|x|-pipe|PIPE|-model|1|-restore_option|1",
                   "'-restore_option' is no option of -backup"},
        BadCommand{"-restore|-backuppath|/x|-pipe|PIPE|-model|1",
                   "'-target' is missing, which -restore needs"},
        BadCommand{"-info|-backuppath|/x|-source|x|-target|x|-pipe|PIPE|-model|1",
                   "'-version' is missing, which -info needs"},
        BadCommand{"-version|1|-restore_all_setting|-backuppath|/x|-target|x|-pipe|PIPE|-model|1",
                   "'-source' is missing, which -restore_all_setting needs"},
        BadCommand{"-changepasswd|-target|x|-old|a|-pipe|PIPE|-model|1",
                   "'-new' is missing, which -changepasswd needs"},
        BadCommand{"-changepasswd|-target|x|-old|a|b|-new|c|-pipe|PIPE|-model|1", "'b' is not understood"}));

TEST_F(CommandLine, HelpShowsAllCommands) {
    const Finished help = RunWords({"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_EQ(help.errors, "");
    for (const char* const verb : {"'-backup|", "'-restore|", "|-restore_option|", "|-info|",
                                   "'-changepasswd|", "|-restore_all_setting|"})
        EXPECT_THAT(help.output, HasSubstr(verb));
}

TEST_F(CommandLine, VersionIsTheLibrarys) {
    const Finished version = RunWords({"--version"});
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.output, "HandsetArchiver " KRUTEIN_VERSION "\n");
}

TEST_F(CommandLine, IsOneArgument) {
    for (const auto& words :
         {std::vector<std::string>{}, {"--help", "--version"}, {"-backup", "-target", "x"}}) {
        const Finished run = RunWords(words);
        EXPECT_EQ(run.code, kToolBadCommand);
        EXPECT_THAT(run.errors, AllOf(HasSubstr("one argument"), HasSubstr("--help")));
    }
}
