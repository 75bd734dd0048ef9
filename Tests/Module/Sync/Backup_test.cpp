#include "Module/Sync/Backup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <regex>

#include "Common/std/std_process.h"
#include "Tests/support/RecordingCallBack.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/ToolScript.h"

using testing::IsEmpty;
using testing::MatchesRegex;

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

class FacadeTest : public testing::Test {
 protected:
    FacadeTest() : before(ResourceCount::Now()) {}
    ~FacadeTest() override {
        // The workers are detached; the next test must not meet them.
        EXPECT_EQ(AwaitResources(before), before);
    }

    /// A folder text that ends in a slash, so that everything stays in it.
    std::string Folder() const { return folder.Path() + "/"; }

    /// Backs up and waits for the end. \return the final path, or "failed" and the code.
    std::string Backup(const std::string& text) {
        RecordingSyncCallBack fresh;
        facade->StartBackup("the-device", text.c_str(), &fresh);
        for (;;) {
            usleep(5000);
            if (!fresh.Events(3).empty()) return fresh.Events(3)[0].text;
            if (!fresh.Events(4).empty()) return "failed " + std::to_string(fresh.Events(4)[0].arg2);
        }
    }

    ResourceCount before;
    CBackup* facade = CBackup::GetInstance();
    TemporaryFolder folder;
    ToolScript tool;
    RecordingSyncCallBack host;
};

std::string SizeText(const std::string& line) {
    return "Backup of a device\n" + line + "\n";
}

}  // namespace

TEST_F(FacadeTest, AFirstBackupEndsUnderTheNameOfTheDevice) {
    tool.MakeBackup().Progress(1, 2, "a").ExitMessage(0);
    facade->StartBackup("the-device", Folder().c_str(), &host);
    ASSERT_TRUE(host.Await(3));
    ASSERT_EQ(host.Events(2).size(), 1U);
    EXPECT_EQ(host.Events(2)[0].arg1, 1U);
    EXPECT_EQ(host.Events(2)[0].arg2, 2U);
    EXPECT_EQ(host.Events(2)[0].text, "a");
    const RecordedEvent end = host.Events(3)[0];
    EXPECT_EQ(end.arg1, 0U);
    EXPECT_EQ(end.arg2, 0U);
    EXPECT_EQ(end.text, folder.Path("the-device"));
    EXPECT_TRUE(fs::exists(folder.Path("the-device/Manifest.db")));
    EXPECT_FALSE(fs::exists(folder.Path("temp"))) << "removed with all that was left in it";
}

TEST_F(FacadeTest, AFurtherBackupEndsUnderANameWithTheTime) {
    tool.MakeBackup().ExitMessage(0);
    EXPECT_EQ(Backup(Folder()), folder.Path("the-device"));
    const std::string second = Backup(Folder());
    EXPECT_THAT(second, MatchesRegex(folder.Path("the-device") + "-[0-9]{8}-[0-9]{6}"));
    EXPECT_TRUE(fs::exists(second + "/Manifest.db"));
    EXPECT_FALSE(fs::exists(folder.Path("temp")));
}

TEST_F(FacadeTest, BackupsOfOneSecondDoNotEndInsideEachOther) {
    fs::create_directories(folder.Path("the-device"));
    std::set<std::string> paths;
    for (int i = 0; i < 3; ++i) {
        folder.Write("temp/the-device/Manifest.db");
        paths.insert(facade->Rename(Folder(), "the-device", 0));
    }
    EXPECT_EQ(paths.size(), 3U);
    for (const std::string& path : paths)
        EXPECT_TRUE(fs::exists(path + "/Manifest.db")) << path;
}

TEST_F(FacadeTest, WithoutASlashTheNamesAreGluedTogether) {
    tool.MakeBackup().KeepArgument().ExitMessage(0);
    EXPECT_EQ(Backup(folder.Path("phone-")), folder.Path("phone-the-device"));
    EXPECT_THAT(tool.Argument(), testing::HasSubstr("-backuppath|" + folder.Path("phone-temp") + "|"));
    EXPECT_FALSE(fs::exists(folder.Path("phone-temp")));
}

TEST_F(FacadeTest, AFailedBackupTellsItsCodeAndStaysWhereItIs) {
    tool.MakeBackup().ExitMessage(-13);
    facade->StartBackup("the-device", Folder().c_str(), &host);
    ASSERT_TRUE(host.Await(4));
    const RecordedEvent end = host.Events(4)[0];
    EXPECT_EQ(end.arg1, 0U);
    EXPECT_EQ(end.arg2, static_cast<unsigned long long>(-13LL));
    EXPECT_TRUE(end.hasData);
    EXPECT_EQ(end.text, "");
    EXPECT_TRUE(fs::exists(folder.Path("temp/the-device/Manifest.db")));
    EXPECT_THAT(host.Events(3), IsEmpty());
}

TEST_F(FacadeTest, WithoutACallbackTheBackupStaysInTheTemporaryFolder) {
    tool.MakeBackup().ExitMessage(0);
    facade->StartBackup("the-device", Folder().c_str(), nullptr);
    EXPECT_EQ(AwaitResources(before), before);
    while (!fs::exists(folder.Path("temp/the-device/Manifest.db")))
        usleep(5000);
    EXPECT_EQ(AwaitResources(before), before);
    EXPECT_TRUE(fs::exists(folder.Path("temp/the-device/Manifest.db")));
    EXPECT_FALSE(fs::exists(folder.Path("the-device")));
}

TEST_F(FacadeTest, NullTextsStartNothingButKeepTheCallback) {
    tool.KeepArgument().ExitMessage(0);
    facade->StartBackup(nullptr, Folder().c_str(), &host);
    facade->StartBackup("the-device", nullptr, &host);
    facade->StartRestore(nullptr, Folder().c_str(), &host);
    facade->StartRestore("the-device", nullptr, &host);
    EXPECT_EQ(ResourceCount::Now(), before);
    EXPECT_THAT(host.Events(), IsEmpty());
    facade->OnStateChange(kCallBackBackup, 1, 2, nullptr);
    EXPECT_EQ(host.Events(2).size(), 1U) << "the callback was stored";
}

TEST_F(FacadeTest, ARestoreTellsProgressAndItsEnd) {
    tool.KeepArgument().Progress(1, 2, "a").ExitMessage(0);
    facade->StartRestore("the-device", "/some/folder", &host);
    ASSERT_TRUE(host.Await(7));
    EXPECT_THAT(tool.Argument(),
                testing::StartsWith("-restore|-backuppath|/some/folder|-target|the-device|"));
    EXPECT_EQ(host.Events(6).size(), 1U);
    EXPECT_EQ(host.Events(7)[0].arg2, 0U);
    EXPECT_FALSE(host.Events(7)[0].hasData);
}

TEST_F(FacadeTest, AFailedRestoreTellsItsCode) {
    tool.ExitMessage(14);
    facade->StartRestore("the-device", "/some/folder", &host);
    ASSERT_TRUE(host.Await(8));
    EXPECT_EQ(host.Events(8)[0].arg2, 14U);
    EXPECT_FALSE(host.Events(8)[0].hasData);
}

TEST_F(FacadeTest, StopEndsTheToolAndSilencesTheEndOfTheBackup) {
    tool.MakeBackup().Progress(1, 2).Sleep(60000);
    facade->StartBackup("the-device", Folder().c_str(), &host);
    ASSERT_TRUE(host.Await(2));
    RecordingSyncCallBack stopped;
    const Clock::time_point start = Clock::now();
    facade->StopBackup(&stopped);
    ASSERT_TRUE(stopped.Await(0));
    EXPECT_GE(SecondsSince(start), 0.3);
    EXPECT_EQ(stopped.Events()[0].arg1, 0U);
    EXPECT_EQ(stopped.Events()[0].arg2, 0U);
    EXPECT_FALSE(stopped.Events()[0].hasData);
    EXPECT_EQ(AwaitResources(before), before);
    EXPECT_THAT(host.Events(3), IsEmpty());
    EXPECT_THAT(host.Events(4), IsEmpty());
    EXPECT_TRUE(fs::exists(folder.Path("temp/the-device"))) << "it is not moved";
}

TEST_F(FacadeTest, StopRestoreDoesTheSame) {
    tool.Progress(1, 2).Sleep(60000);
    facade->StartRestore("the-device", Folder().c_str(), &host);
    ASSERT_TRUE(host.Await(6));
    facade->StopRestore(&host);
    ASSERT_TRUE(host.Await(0));
    EXPECT_EQ(AwaitResources(before), before);
    EXPECT_THAT(host.Events(7), IsEmpty());
    EXPECT_THAT(host.Events(8), IsEmpty());
}

TEST_F(FacadeTest, StopMayHaveNoCallbackAndNothingToStop) {
    facade->StopBackup(nullptr);
    EXPECT_EQ(AwaitResources(before), before);
    EXPECT_TRUE(facade->Stop());
}

TEST_F(FacadeTest, ABackupAfterAStopTellsItsEndAgain) {
    facade->StopBackup(&host);
    ASSERT_TRUE(host.Await(0));
    tool.MakeBackup().ExitMessage(0);
    EXPECT_EQ(Backup(Folder()), folder.Path("the-device"));
}

TEST_F(FacadeTest, ManyStopsAtOnceAreHarmless) {
    tool.MakeBackup().Progress(1, 2).Sleep(60000);
    facade->StartBackup("the-device", Folder().c_str(), &host);
    ASSERT_TRUE(host.Await(2));
    for (int i = 0; i < 4; ++i)
        facade->StopBackup(&host);
    EXPECT_EQ(AwaitResources(before), before);
    EXPECT_EQ(host.Events(0).size(), 4U);
    EXPECT_THAT(host.Events(4), IsEmpty());
}

TEST_F(FacadeTest, OverlappingOperationsEachTellTheirEnd) {
    tool.MakeBackup().Many(500).ExitMessage(0);
    RecordingSyncCallBack other;
    facade->StartBackup("the-device", Folder().c_str(), &host);
    facade->StartRestore("the-device", "/some/folder", &other);
    EXPECT_TRUE(host.Await(3));
    EXPECT_TRUE(other.Await(7));
    EXPECT_EQ(other.Events(2).size() + other.Events(6).size() + host.Events(2).size() + host.Events(6).size(),
              1000U);
}

// Sizes.

TEST_F(FacadeTest, GetBackupSizeAsksTheTool) {
    tool.KeepArgument().Progress(5, 6, "Backup of a device, Total size: 54321 bytes").ExitMessage(0);
    EXPECT_EQ(facade->GetBackupSize("the-device", "/some/folder"), 54321);
    EXPECT_THAT(tool.Argument(), testing::HasSubstr("-info|-backuppath|/some/folder|-source|the-device|"));
    EXPECT_EQ(facade->GetTotalSize(), 54321);
    EXPECT_EQ(facade->GetBackupSize(nullptr, "/some/folder"), 54321) << "no question, the last answer";
    EXPECT_EQ(facade->GetBackupSize("the-device", nullptr), 54321);
}

TEST_F(FacadeTest, ParseInfoTakesTheSecondToLastWordOfTheFirstTotalLine) {
    facade->OnStateChange(kCallBackBackupInfo, 0, 0, SizeText("Total size: 12345 bytes").data());
    EXPECT_EQ(facade->GetTotalSize(), 12345);
    facade->ParseInfo("Total size: 1 bytes\nTotal size: 2 bytes\n");
    EXPECT_EQ(facade->GetTotalSize(), 1);
    facade->ParseInfo("a Total -7 x");
    EXPECT_EQ(facade->GetTotalSize(), -7);
    facade->ParseInfo("Total 9223372036854775807 bytes");
    EXPECT_EQ(facade->GetTotalSize(), 9223372036854775807LL);
}

TEST_F(FacadeTest, ParseInfoLeavesTheSizeWhenThereIsNone) {
    facade->OnStateChange(kCallBackBackupInfo, 0, 0, SizeText("Total size: 12345 bytes").data());
    for (const char* text :
         {"", "no such line", "Total 999", "Total", "first\nTotal 12345\nTotal size: 5 bytes"}) {
        facade->ParseInfo(text);
        EXPECT_EQ(facade->GetTotalSize(), 12345) << text;
    }
}

TEST_F(FacadeTest, ParseInfoThrowsForAWordThatIsNoNumber) {
    EXPECT_THROW(facade->ParseInfo("Total size: many bytes"), std::invalid_argument);
    EXPECT_THROW(facade->ParseInfo("Total size:  bytes"), std::invalid_argument);
    EXPECT_THROW(facade->ParseInfo("Total 92233720368547758070 bytes"), std::out_of_range);
}

// Translation.

TEST_F(FacadeTest, EventsAreTranslatedForTheHost) {
    facade->StartBackup(nullptr, nullptr, &host);
    char text[] = "Total size: 7 bytes";
    EXPECT_EQ(facade->OnStateChange(kCallBackBackup, 1, 2, text), 0);
    EXPECT_EQ(facade->OnStateChange(kCallBackRestore, 3, 4, nullptr), 0);
    EXPECT_EQ(facade->OnStateChange(kCallBackBackupInfo, 5, 6, text), 0);
    EXPECT_EQ(facade->OnStateChange(kCallBackBackupInfo, 7, 8, nullptr), 0);
    EXPECT_EQ(facade->OnStateChange(kCallBackChangePassword, 9, 10, text), 0);
    EXPECT_EQ(facade->OnStateChange(static_cast<CallBackType>(4711), 11, 12, nullptr), 0);
    std::vector<int> types;
    for (const RecordedEvent& event : host.Events())
        types.push_back(event.type);
    EXPECT_THAT(types, testing::ElementsAre(2, 6, 0, 0, 0, 0));
    EXPECT_EQ(host.Events()[4].arg1, 9U);
    EXPECT_EQ(host.Events()[4].arg2, 10U);
    EXPECT_EQ(host.Events()[4].text, text);
}

TEST_F(FacadeTest, TheCallbackSideRunsTheSameCode) {
    facade->StartBackup(nullptr, nullptr, &host);
    CCallBack* const side = facade;
    EXPECT_EQ(side->OnStateChange(kCallBackRestore, 3, 4, nullptr), 0);
    ASSERT_EQ(host.Events(6).size(), 1U);
    EXPECT_EQ(host.Events(6)[0].arg2, 4U);
}

TEST_F(FacadeTest, WithoutAHostCallbackEventsVanish) {
    facade->StartBackup(nullptr, nullptr, nullptr);
    EXPECT_EQ(facade->OnStateChange(kCallBackBackup, 1, 2, nullptr), 0);
}
