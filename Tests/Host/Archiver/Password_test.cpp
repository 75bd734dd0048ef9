#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/ArchiverTool.h"
#include "Tests/Host/Archiver/BackupReader.h"

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

namespace {

class Password : public ArchiverTest {
 protected:
    ToolRun Change(const std::string& before, const std::string& after) const {
        return Run(PasswordCommand(before, after));
    }
    std::string StatePath() const { return Path("state/" + std::string(kUdid) + ".json"); }
};

}  // namespace

TEST_F(Password, IsEmptyAtFirstAndKeptBetweenRuns) {
    EXPECT_TRUE(EndedWith(Change("", "secret"), kToolDone));
    EXPECT_TRUE(EndedWith(Change("secret", "-new"), kToolDone));
    EXPECT_TRUE(EndedWith(Change("-new", "Über 密码 '\"$`\\"), kToolDone));
    EXPECT_TRUE(EndedWith(Change("Über 密码 '\"$`\\", ""), kToolDone));
    EXPECT_TRUE(EndedWith(Change("", "again"), kToolDone));
}

TEST_F(Password, StaysWhenTheOldOneIsWrong) {
    EXPECT_TRUE(EndedWith(Change("guess", "mine"), kToolWrongPassword));
    EXPECT_FALSE(fs::exists(StatePath()));
    ASSERT_TRUE(EndedWith(Change("", "secret"), kToolDone));
    const std::string state = ReadWholeFile(StatePath());
    for (const char* const wrong : {"", "Secret", "secret ", "secre", "mine"})
        EXPECT_TRUE(EndedWith(Change(wrong, "mine"), kToolWrongPassword)) << wrong;
    EXPECT_EQ(ReadWholeFile(StatePath()), state);
    EXPECT_TRUE(EndedWith(Change("secret", "other"), kToolDone));
}

TEST_F(Password, IsNotSaidOrStored) {
    const ToolRun run = Change("wrong-guess", "my-secret");
    EXPECT_THAT(run.errors, Not(HasSubstr("wrong-guess")));
    ASSERT_TRUE(EndedWith(Change("", "my-secret"), kToolDone));
    EXPECT_THAT(ReadWholeFile(StatePath()), Not(HasSubstr("my-secret")));
    // Two of the same differ by their salts.
    const std::string first = ReadWholeFile(StatePath());
    ASSERT_TRUE(EndedWith(Change("my-secret", "my-secret"), kToolDone));
    EXPECT_NE(ReadWholeFile(StatePath()), first);
}

TEST_F(Password, IsForItsOwnerOnlyAndLeavesNoOtherFiles) {
    ASSERT_TRUE(EndedWith(Change("", "secret"), kToolDone));
    struct stat info {};
    ASSERT_EQ(stat(StatePath().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0600U);
    EXPECT_EQ(ReadTree(Path("state")).size(), 1U);
}

TEST_F(Password, IsEachDevicesOwn) {
    nlohmann::json other = Description();
    other["udid"] = "other-device";
    Connect(other);
    ASSERT_TRUE(EndedWith(Change("", "secret"), kToolDone));
    EXPECT_TRUE(
        EndedWith(Run("-changepasswd|-target|other-device|-old||-new|x|-pipe|PIPE|-model|1"), kToolDone));
}

TEST_F(Password, NeedsAConnectedDevice) {
    Disconnect(kUdid);
    EXPECT_TRUE(EndedWith(Change("", "secret"), kToolNoDevice));
    EXPECT_TRUE(
        EndedWith(Run("-changepasswd|-target|../state|-old||-new|x|-pipe|PIPE|-model|1"), kToolNoDevice));
    EXPECT_FALSE(fs::exists(Path("state")));
}

TEST_F(Password, IsNotGuessedFromADamagedFile) {
    for (const char* const state : {"", "{", "[]", "{}", R"({"salt": "00", "iterations": "1", "hash": "00"})",
                                    R"({"salt": "00", "iterations": 0, "hash": "00"})",
                                    R"({"salt": "00", "iterations": 2000000000, "hash": "00"})",
                                    R"({"salt": 1, "iterations": 1, "hash": 1})"}) {
        m_folder.Write("state/" + std::string(kUdid) + ".json", state);
        const ToolRun run = Change("", "secret");
        EXPECT_TRUE(EndedWith(run, kToolFailed)) << state;
        EXPECT_THAT(run.errors, HasSubstr(StatePath()));
        EXPECT_EQ(ReadWholeFile(StatePath()), state);
    }
}

TEST_F(Password, IsNotChangedWhereNothingCanBeWritten) {
    m_folder.Write("file");
    m_environment["KRUTEIN_SAMPLE_STATE"] = Path("file/below");
    const ToolRun run = Change("", "secret");
    EXPECT_TRUE(EndedWith(run, kToolNotWritable));
    EXPECT_THAT(run.errors, HasSubstr(Path("file")));
}

TEST_F(Password, IsKeptInTheUsersStateFolder) {
    m_environment["KRUTEIN_SAMPLE_STATE"] = "";
    m_environment["HOME"] = Path("home");
    m_environment["XDG_STATE_HOME"] = Path("xdg");
    ASSERT_TRUE(EndedWith(Change("", "a"), kToolDone));
    EXPECT_TRUE(fs::exists(Path("xdg/krutein/sample-devices/" + std::string(kUdid) + ".json")));
    for (const char* const unusable : {"", "relative"}) {
        m_environment["XDG_STATE_HOME"] = unusable;
        fs::remove_all(Path("home"));
        ASSERT_TRUE(EndedWith(Change("", "b"), kToolDone));
        EXPECT_TRUE(
            fs::exists(Path("home/.local/state/krutein/sample-devices/" + std::string(kUdid) + ".json")));
    }
}
