// How a run ends that does not end by itself.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <tuple>

#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/ArchiverTool.h"
#include "Tests/Host/Archiver/BackupReader.h"

namespace fs = std::filesystem;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

namespace {

using Clock = std::chrono::steady_clock;

class StopTest : public ArchiverTest {
 protected:
    using ArchiverTest::ArchiverTest;

    void SetPace(int filesPerSecond) {
        m_environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = std::to_string(filesPerSecond);
    }

    /// Signals the tool and waits for its end, which must come soon.
    static int StopWith(int signal, RunningTool& tool) {
        const auto start = Clock::now();
        tool.Signal(signal);
        const int code = tool.Wait();
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(2));
        return code;
    }

    static bool HasExitMessage(RunningTool& tool) {
        const auto messages = tool.Messages();
        return !messages.empty() && messages.back().type == krutein::kPipeExit;
    }

    /// Nothing that was begun and not finished is left behind.
    void ExpectCleanRemains() const {
        EXPECT_THAT(ReadPlist(BackupPath("Status.plist")), Contains(Pair("SnapshotState", "uploading")));
        EXPECT_FALSE(fs::exists(CataloguePath()));
        for (const auto& [place, bytes] : ReadTree(BackupPath())) {
            EXPECT_THAT(place, Not(testing::HasSubstr("-journal")));
            EXPECT_THAT(place, Not(testing::HasSubstr("-wal")));
            if (bytes.compare(0, 15, "SQLite format 3") == 0) {
                EXPECT_EQ(QueryOne(BackupPath(place), "PRAGMA integrity_check"), "ok");
            }
        }
    }

    /// A device whose messages take long to write into their database.
    void ConnectDeviceWithManyMessages() const {
        nlohmann::json description = Description();
        description["contents"] = {
            {"messages", {{"chats", 5}, {"count", 5'000'000}, {"attachments", 0}, {"attachmentBytes", 0}}}};
        Connect(description);
    }

    static bool AwaitFile(const std::string& path) {
        const auto deadline = Clock::now() + std::chrono::seconds(30);
        while (Clock::now() < deadline) {
            if (fs::exists(path)) return true;
            usleep(2000);
        }
        return false;
    }
};

class Stop : public StopTest, public testing::WithParamInterface<Phone> {
 protected:
    Stop() : StopTest(GetParam()) {}
};

class StopSignal : public StopTest, public testing::WithParamInterface<std::tuple<Phone, int>> {
 protected:
    StopSignal() : StopTest(std::get<Phone>(GetParam())) {}
};

}  // namespace

TEST_P(StopSignal, EndsABackupWithoutAnExitMessage) {
    SetPace(50);
    const int signal = std::get<int>(GetParam());
    const auto tool = Start(BackupCommand());
    tool->AwaitMessages(20);
    EXPECT_EQ(StopWith(signal, *tool), 128 + signal);
    EXPECT_FALSE(HasExitMessage(*tool));
    EXPECT_GE(tool->Messages().size(), 20U);
    EXPECT_EQ(tool->Errors(), "");
    ExpectCleanRemains();
}

INSTANTIATE_TEST_SUITE_P(Numbers, StopSignal,
                         testing::Combine(BothPhones(), testing::Values(SIGTERM, SIGINT, SIGHUP)));

INSTANTIATE_TEST_SUITE_P(Phones, Stop, BothPhones(), testing::PrintToStringParamName());

TEST_P(Stop, LetsTheNextRunReplaceWhatIsThere) {
    SetPace(100);
    const auto tool = Start(BackupCommand());
    tool->AwaitMessages(10);
    StopWith(SIGTERM, *tool);
    SetPace(100'000);
    EXPECT_TRUE(EndedWith(BackUp(), kToolDone));
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
}

TEST_P(Stop, EndsALongWaitAtOnce) {
    SetPace(1);
    const auto tool = Start(BackupCommand());
    tool->AwaitMessages(2);
    const auto start = Clock::now();
    EXPECT_EQ(StopWith(SIGTERM, *tool), 128 + SIGTERM);
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
}

TEST_P(Stop, EndsADatabaseInTheMiddleAndRemovesIt) {
    ConnectDeviceWithManyMessages();
    const auto tool = Start(BackupCommand());
    const std::string database = BackupPath(PlaceOf("3d0d7e5fb2ce288813306e4d4636395e047a3d28"));
    ASSERT_TRUE(AwaitFile(database));
    EXPECT_EQ(StopWith(SIGTERM, *tool), 128 + SIGTERM);
    EXPECT_FALSE(fs::exists(database));
    ExpectCleanRemains();
}

TEST_P(Stop, EndsALargeFileInTheMiddleAndRemovesIt) {
    nlohmann::json description = Description();
    description["contents"] = {{"photos", {{"count", 50}, {"bytesEach", 1'000'000'000}}}};
    Connect(description);
    const auto tool = Start(BackupCommand());
    const std::string photo = BackupPath(PlaceOf("CameraRollDomain", "Media/DCIM/100APPLE/IMG_0001.JPG"));
    ASSERT_TRUE(AwaitFile(photo));
    EXPECT_EQ(StopWith(SIGTERM, *tool), 128 + SIGTERM);
    EXPECT_FALSE(fs::exists(photo));
    ExpectCleanRemains();
}

TEST_P(Stop, EndsARestore) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    SetPace(50);
    const auto tool = Start(RestoreCommand());
    tool->AwaitMessages(5);
    EXPECT_EQ(StopWith(SIGTERM, *tool), 128 + SIGTERM);
    EXPECT_FALSE(HasExitMessage(*tool));
}

TEST_P(Stop, EndsAnInformationQuery) {
    ConnectDeviceWithManyMessages();
    const auto tool = Start(InfoCommand());
    usleep(200'000);
    EXPECT_EQ(StopWith(SIGTERM, *tool), 128 + SIGTERM);
    EXPECT_THAT(tool->Messages(), IsEmpty());
}

TEST_P(Stop, EndsARunWhoseMessagesNobodyReads) {
    nlohmann::json description = Description();
    description["contents"]["other"]["count"] = 3000;
    Connect(description);
    const auto tool = Start(BackupCommand(), false);
    tool->AwaitFullPipe();
    EXPECT_EQ(StopWith(SIGTERM, *tool), 128 + SIGTERM);
    ExpectCleanRemains();
}

TEST_P(Stop, ComesByItselfWhenTheReaderIsGone) {
    const auto tool = Start(BackupCommand(), false);
    tool->Abandon();
    EXPECT_EQ(tool->Wait(), kToolFailed);
}

TEST_P(Stop, ComesByItselfWhenTheReaderGoesLater) {
    SetPace(100);
    const auto tool = Start(BackupCommand(), false);
    ASSERT_TRUE(AwaitFile(BackupPath(PlaceOf("31bb7ba8914766d4ba40d6dfb6113c8b614be442"))));
    tool->Abandon();
    EXPECT_EQ(tool->Wait(), kToolFailed);
    ExpectCleanRemains();
}

TEST_P(Stop, DoesNotLoseMessagesToASlowReader) {
    nlohmann::json description = Description();
    description["contents"]["other"]["count"] = 2000;
    Connect(description);
    const auto tool = Start(BackupCommand(), false);
    tool->AwaitFullPipe();
    tool->StartReading();
    EXPECT_EQ(tool->Wait(), kToolDone);
    EXPECT_TRUE(HasExitMessage(*tool));
    EXPECT_GT(tool->Messages().size(), 2000U);
}

TEST_P(Stop, IsNotForASignalThatWasIgnoredFromTheStart) {
    m_prepare = [] { std::signal(SIGHUP, SIG_IGN); };
    SetPace(100);
    const auto tool = Start(BackupCommand());
    tool->AwaitMessages(5);
    tool->Signal(SIGHUP);
    tool->AwaitMessages(15);
    EXPECT_GE(tool->Messages().size(), 15U);
    EXPECT_EQ(StopWith(SIGTERM, *tool), 128 + SIGTERM);
}

TEST_P(Stop, ByTerminationIsPossibleAlsoWhenTheHostIgnoresIt) {
    m_prepare = [] { std::signal(SIGTERM, SIG_IGN); };
    SetPace(50);
    const auto tool = Start(BackupCommand());
    tool->AwaitMessages(5);
    EXPECT_EQ(StopWith(SIGTERM, *tool), 128 + SIGTERM);
}
