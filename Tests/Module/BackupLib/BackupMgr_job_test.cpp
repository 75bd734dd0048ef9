#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <future>
#include <stdexcept>
#include <thread>

#include "Module/BackupLib/BackupMgr.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/LogRecorder.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

/// The log without the lines of the runner.
std::vector<std::string> ManagerLog() {
    std::vector<std::string> texts;
    for (const LogLine& line : RecordedLog()) {
        if (line.text.rfind("[Backup]", 0) != 0) continue;
        EXPECT_EQ(line.level, 1);
        EXPECT_EQ(line.sourceFile.rfind("Module/BackupLib/BackupMgr", 0), 0U) << line.sourceFile;
        texts.push_back(line.text);
    }
    return texts;
}

class ManagerTest : public JobTest {
 protected:
    /// Starts a job on a thread of its own, and waits until its tool runs.
    std::future<int> StartInBackground(int type) {
        std::future<int> job = std::async(std::launch::async, [this, type] { return Start(type); });
        EXPECT_TRUE(callback.Await(kCallBackBackup));
        return job;
    }
};

}  // namespace

TEST(Manager, IsOneForTheProcess) {
    EXPECT_EQ(CBackupMgr::GetInstance(), CBackupMgr::GetInstance());
}

TEST(Manager, KnowsTwoFileIDs) {
    EXPECT_EQ(kWhatsappFileID, BackupBuilder::FileID("AppDomainGroup-group.net.whatsapp.WhatsApp.shared",
                                                     "ChatStorage.sqlite"));
    EXPECT_EQ(kSMSFileID, BackupBuilder::FileID("HomeDomain", "Library/SMS/sms.db"));
}

TEST_F(ManagerTest, AFullBackupKeepsEverything) {
    for (const int type : {0, -1}) {
        BackupBuilder backup;
        const PhoneContent phone(backup);
        ToolScript fresh;
        fresh.CopyBackup(backup.Write(Layout::kNew)).Step("progress 1 2").ExitMessage(0);
        const std::set<std::string> before = FilesBelow(backup.Write(Layout::kNew));
        EXPECT_EQ(Start(type), 0);
        EXPECT_EQ(Files(), before);
        EXPECT_TRUE(fs::exists(JobFolder() + "/backup_config.ini"));
        fs::remove_all(destination.Path("Velmora_Full_Backup"));
    }
    EXPECT_EQ(callback.Events(kCallBackBackup).size(), 2U);
}

TEST_F(ManagerTest, LogsOfAGoodJob) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    ToolMakes(backup);
    EXPECT_EQ(Start(8), 0);
    EXPECT_THAT(ManagerLog(), ElementsAre("[Backup] begin ", "[Backup] sms valid", "[Backup] end ret = 0 "));
}

TEST_F(ManagerTest, TheToolIsToldFolderDeviceAndOption) {
    tool.KeepArgument().ExitMessage(0);
    EXPECT_EQ(Start(0, 5), 0);
    EXPECT_EQ(tool.Argument().substr(0, tool.Argument().find("|-pipe")),
              "-backup|-backuppath|" + JobFolder() + "|-target|the-device");
    EXPECT_THAT(tool.Argument(), testing::EndsWith("|-model|5"));
}

TEST_F(ManagerTest, TheDeviceIsAskedInOrder) {
    tool.ExitMessage(0);
    EXPECT_EQ(Start(0), 0);
    EXPECT_THAT(device.asked,
                ElementsAre("id", "version", "major", "id", "name", "version", "serial", "product"));
}

// Refusals.

TEST_F(ManagerTest, ANullDeviceIs1) {
    std::string folder = destination.Path();
    EXPECT_EQ(manager.StartBackupSafe(nullptr, folder, &callback, 0, 0), 1);
    EXPECT_THAT(ManagerLog(), ElementsAre("[Backup] begin ", "[Backup] end ret = 1 "));
    EXPECT_THAT(RecordedTexts(), Contains("global_killAppleBackupExe...").Times(2))
        << "at the start and at the end";
}

TEST_F(ManagerTest, ADeviceWithoutIdentifierIs1021) {
    device.id = "";
    EXPECT_EQ(Start(0), 1021);
    EXPECT_TRUE(fs::is_empty(destination.Path())) << "no folder is made";
}

TEST_F(ManagerTest, ATypeWithoutKnownBitsIs1019) {
    for (const int type : {1, 32, 193})
        EXPECT_EQ(Start(type), 1019) << type;
    EXPECT_TRUE(fs::is_empty(destination.Path()));
}

TEST_F(ManagerTest, AFolderThatCannotBeMadeIs1013) {
    std::string folder = destination.Write("file");
    EXPECT_EQ(manager.StartBackupSafe(&device, folder, &callback, 0, 0), 1013);
}

TEST_F(ManagerTest, AnUnknownVersionIs1026) {
    device.majorVersion = -1;
    EXPECT_EQ(Start(0), 1026);
}

TEST_F(ManagerTest, ARecordThatCannotBeWrittenIs1009) {
    tool.Shell("mkdir -p $JOB; echo junk > $JOB/backup_config.ini").ExitMessage(0);
    EXPECT_EQ(Start(0), 1009);
    EXPECT_THAT(ManagerLog(),
                Contains("[Backup] save backukp ini fail![" + JobFolder() + "\\backup_config.ini] "));
}

TEST_F(ManagerTest, TheToolsCodeIsPassedThrough) {
    for (const int code : {-3, 107}) {
        ToolScript fresh;
        if (code != 107) fresh.ExitMessage(code);
        ForgetLog();
        EXPECT_EQ(Start(0), code);
        const std::string number = std::to_string(code);
        EXPECT_THAT(ManagerLog(), ElementsAre("[Backup] begin ", "[Backup] backup fail ret=" + number + "!",
                                              "[Backup] end ret = " + number + " "));
        EXPECT_THAT(RecordedTexts(), Contains("global_killAppleBackupExe...").Times(2));
    }
}

TEST_F(ManagerTest, AFailedJobLeavesItsFolderToTheHost) {
    tool.MakeBackup().ExitMessage(13);
    EXPECT_EQ(Start(8), 13);
    EXPECT_TRUE(fs::exists(DeviceFolder() + "/Manifest.db"));
    EXPECT_FALSE(fs::exists(JobFolder() + "/backup_config.ini"));
    const std::string folder = JobFolder();
    EXPECT_TRUE(manager.DeleteFailBackupFiles());
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_TRUE(manager.DeleteFailBackupFiles()) << "whatever happened";
}

// Types.

TEST_F(ManagerTest, AJobForContactsAloneNeverRunsTheTool) {
    tool.KeepArgument().ExitMessage(0);
    EXPECT_EQ(Start(16), 0);
    EXPECT_TRUE(fs::exists(JobFolder() + "/backup_config.ini"));
    EXPECT_FALSE(fs::exists(DeviceFolder()));
    EXPECT_THAT(ManagerLog(), ElementsAre("[Backup] begin ", "[Backup] end ret = 0 "));
}

TEST_F(ManagerTest, OlderVersionsHaveTheOtherCatalogue) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    for (const auto& [version, found] :
         {std::pair(9, Layout::kOld), std::pair(10, Layout::kNew), std::pair(0, Layout::kOld)}) {
        ToolScript fresh;
        fresh.CopyBackup(backup.Write(found)).ExitMessage(0);
        device.majorVersion = version;
        EXPECT_EQ(Start(8), 0) << version;
        fs::remove_all(destination.Path("Velmora_SMS_Backup"));
    }
}

TEST_F(ManagerTest, AMissingCatalogueIsLoggedAndThenFails) {
    tool.MakeBackup().Shell("rm $BACKUP/Manifest.db").ExitMessage(0);
    EXPECT_EQ(Start(8), 1000);
    EXPECT_THAT(ManagerLog(), Contains("[Backup] manifestDB Can NOT Find!"));
    EXPECT_FALSE(fs::exists(DeviceFolder() + "/Manifest.db")) << "nor is it made by looking for it";
    EXPECT_EQ(Start(0), 0) << "a full backup does not need it";
}

TEST(ManagerTypes, AppendNamesInTheOrderOfTheBits) {
    CBackupMgr& manager = *CBackupMgr::GetInstance();
    for (const int type : {0, -1, 2, 4, 8, 16, 30, 10, 2 | 1, 16 | 64})
        EXPECT_TRUE(manager.CheckBackupType(type));
}

TEST_F(ManagerTest, UnknownBitsBesidesKnownOnesAreIgnored) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    ToolMakes(backup);
    EXPECT_EQ(Start(8 | 1 | 32 | 64), 0);
}

TEST_F(ManagerTest, TheCacheFolderIsThatOfThePseudoType) {
    const char* const given = std::getenv("HOME");
    const std::string home = given == nullptr ? "" : given;
    setenv("HOME", destination.Path().c_str(), 1);
    const std::string folder = manager.GenerateCacheDir();
    setenv("HOME", home.c_str(), 1);
    EXPECT_THAT(folder, testing::StartsWith(destination.Path("VelMora_backup_cache/UNKNOWN_128/")));
    EXPECT_TRUE(fs::is_directory(folder));
}

TEST(ManagerThreadEntry, KillsAndReturnsNull) {
    ForgetLog();
    EXPECT_EQ(cProc(nullptr), nullptr);
    EXPECT_THAT(RecordedTexts(), ElementsAre("global_killAppleBackupExe..."));
}

// Stopping, and one job at a time.

TEST_F(ManagerTest, StopWhileIdleOnlyLogs) {
    manager.StopBackup();
    EXPECT_THAT(RecordedTexts(), ElementsAre("[Backup] don't need cancle"));
    EXPECT_FALSE(manager.IsCancle());
}

TEST_F(ManagerTest, StopEndsTheToolAndTheJobIs1018) {
    tool.MakeBackup().Progress(1, 2).Sleep(60000);
    std::future<int> job = StartInBackground(8);
    manager.StopBackup();
    EXPECT_EQ(job.get(), 1018);
    EXPECT_THAT(ManagerLog(),
                ElementsAre("[Backup] begin ", "[Backup] StopBackup* backup cancle...",
                            "[Backup] backup fail ret=107!", "[Backup] current task had been cancled",
                            "[Backup] end ret = 1018 "));
    EXPECT_FALSE(manager.IsCancle()) << "cleared for the next job";
    EXPECT_TRUE(fs::exists(DeviceFolder() + "/Manifest.db")) << "nothing was pruned";
}

TEST_F(ManagerTest, ProgressIsDroppedWhileStopping) {
    tool.Step("ignore-signals").Progress(1, 2).Await("go on").Many(100).ExitMessage(0);
    std::future<int> job = StartInBackground(8);
    manager.StopBackup();
    EXPECT_TRUE(manager.IsCancle());
    tool.Make("go on");
    EXPECT_EQ(job.get(), 1018);
    EXPECT_EQ(callback.Events().size(), 1U);
}

TEST_F(ManagerTest, AStopAfterTheToolHasEndedPrunesNothing) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    const std::set<std::string> all = FilesBelow(backup.Write(Layout::kNew));
    tool.CopyBackup(backup.Write(Layout::kNew)).Progress(1, 1).ExitMessage(0);
    std::future<void> stopped;
    callback.onEvent = [&](const RecordedEvent&) {
        // The flag is set while the tool's last words are read.
        stopped = std::async(std::launch::async, [this] { manager.StopBackup(); });
        while (!manager.IsCancle())
            usleep(1000);
    };
    EXPECT_EQ(Start(8), 1018);
    stopped.get();
    EXPECT_EQ(Files(), all);
}

TEST_F(ManagerTest, AStopBeforeTheToolIsStartedStartsNone) {
    tool.KeepArgument().ExitMessage(0);
    std::future<void> stopped;
    device.whenAskedForId = [&] {
        stopped = std::async(std::launch::async, [this] { manager.StopBackup(); });
        while (!manager.IsCancle())
            usleep(1000);
        device.whenAskedForId = nullptr;
    };
    EXPECT_EQ(Start(8), 1018);
    stopped.get();
    EXPECT_FALSE(fs::exists(DeviceFolder()));
}

TEST_F(ManagerTest, AJobThatIsDoneAllTheSameKeepsItsResult) {
    std::future<void> stopped;
    device.whenAskedForId = [&] {
        if (device.asked.size() < 4) return;  // while the record is written
        stopped = std::async(std::launch::async, [this] { manager.StopBackup(); });
        while (!manager.IsCancle())
            usleep(1000);
    };
    tool.ExitMessage(0);
    EXPECT_EQ(Start(0), 0);
    stopped.get();
    EXPECT_FALSE(manager.IsCancle());
}

TEST_F(ManagerTest, ASecondJobIsRefusedAndTheFirstGoesOn) {
    tool.Progress(1, 2).Await("go on").ExitMessage(0);
    std::future<int> job = StartInBackground(0);
    ForgetLog();
    FakeDevice other;
    std::string folder = destination.Path("other");
    EXPECT_EQ(manager.StartBackupSafe(&other, folder, nullptr, 0, 0), 1022);
    EXPECT_THAT(RecordedTexts(), ElementsAre("[Backup] begin ")) << "nothing is killed";
    EXPECT_THAT(other.asked, IsEmpty());
    tool.Make("go on");
    EXPECT_EQ(job.get(), 0);
}

TEST_F(ManagerTest, AJobThatADeviceThrowsOutOfIsOver) {
    device.whenAskedForId = [] { throw std::runtime_error("unplugged"); };
    EXPECT_THROW(Start(kBackupTypeContact), std::runtime_error);
    device.whenAskedForId = nullptr;
    EXPECT_EQ(Start(kBackupTypeContact), 0) << "and not 1022";
}

TEST_F(ManagerTest, OfJobsStartedAtTheSameInstantOneRuns) {
    tool.Progress(1, 1).Sleep(300).ExitMessage(0);
    std::vector<FakeDevice> devices(8);
    std::vector<std::future<int>> jobs;
    jobs.reserve(devices.size());
    std::atomic<int> waiting{8};
    for (FakeDevice& each : devices) {
        jobs.push_back(std::async(std::launch::async, [&] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            std::string folder = destination.Path();
            return manager.StartBackupSafe(&each, folder, nullptr, 0, 0);
        }));
    }
    int ran = 0;
    for (std::future<int>& job : jobs) {
        const int code = job.get();
        EXPECT_TRUE(code == 0 || code == 1022) << code;
        if (code == 0) ++ran;
    }
    EXPECT_EQ(ran, 1);
}

TEST_F(ManagerTest, StopsFromManyThreadsAreHarmless) {
    tool.Progress(1, 2).Sleep(60000);
    std::future<int> job = StartInBackground(0);
    std::vector<std::future<void>> stops;
    stops.reserve(4);
    for (int i = 0; i < 4; ++i)
        stops.push_back(std::async(std::launch::async, [this] { manager.StopBackup(); }));
    EXPECT_EQ(job.get(), 1018);
    for (std::future<void>& stop : stops)
        stop.get();
    // A stop that came late must not end the next job.
    ToolScript fresh;
    fresh.ExitMessage(0);
    EXPECT_EQ(Start(0), 0);
}
