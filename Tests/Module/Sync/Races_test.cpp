// Operations that meet in one process. Built with ThreadSanitizer this shows data races; everywhere it shows
// that each operation comes to an end, with a result that is allowed, and that finished backups stay.
//
// KRUTEIN_RACE_STEPS is the number of moments of the sweeps; the few of a usual run are spread over the same
// time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <thread>

#include "Module/BackupLib/BackupMgr.h"
#include "Module/Sync/Backup.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/ResourceCount.h"

namespace fs = std::filesystem;

namespace {

constexpr int kUsualSteps = 4;

int Steps() {
    const char* const given = std::getenv("KRUTEIN_RACE_STEPS");
    return given == nullptr ? kUsualSteps : std::max(2, std::atoi(given));
}

/// The moments of a sweep, evenly from the beginning to the end of so many milliseconds.
std::vector<std::chrono::microseconds> Moments(int milliseconds) {
    std::vector<std::chrono::microseconds> moments;
    moments.reserve(static_cast<std::size_t>(Steps()));
    for (int i = 0; i < Steps(); ++i)
        moments.emplace_back(1000LL * milliseconds * i / (Steps() - 1));
    return moments;
}

class RaceTest : public JobTest {
 protected:
    RaceTest() { destination.Write("Earlier/the-device/Manifest.db", "an earlier one"); }
    ~RaceTest() override {
        EXPECT_EQ(AwaitResources(before), before);
        EXPECT_EQ(destination.Read("Earlier/the-device/Manifest.db"), "an earlier one");
    }

    std::string Folder(const std::string& name) const { return destination.Path(name) + "/"; }

    /// 3 or 4, whichever end came.
    static int AwaitEnd(const RecordingSyncCallBack& host) {
        for (int i = 0; i < 12'000; ++i) {
            for (const int event : {3, 4}) {
                if (!host.Events(event).empty()) return event;
            }
            usleep(5000);
        }
        return 0;
    }

    ResourceCount before = ResourceCount::Now();
    CBackup* facade = CBackup::GetInstance();
};

/// Calls a function in several threads at once.
template <typename Function>
void InThreads(int count, Function function) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    std::atomic<int> waiting{count};
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            function();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace

TEST_F(RaceTest, StopsFromManyThreadsAtEveryStepOfAJobEndItInOneOfTwoWays) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    const std::set<std::string> whole = FilesBelow(backup.Write(Layout::kNew));
    tool.CopyBackup(backup.Write(Layout::kNew)).Many(100).Sleep(30).ExitMessage(0);
    for (const std::chrono::microseconds moment : Moments(900)) {
        SCOPED_TRACE(moment.count());
        std::future<int> job = std::async(std::launch::async, [this] { return Start(8); });
        std::this_thread::sleep_for(moment);
        InThreads(4, [this] {
            manager.StopBackup();
            manager.IsCancle();
        });
        const int code = job.get();
        EXPECT_TRUE(code == 0 || code == 1018) << code;
        EXPECT_FALSE(manager.IsCancle());
        if (code == 0) {
            EXPECT_EQ(Files().size(), 4U) << "pruned to its end";
        } else if (fs::exists(DeviceFolder())) {
            for (const std::string& name : Files())
                EXPECT_EQ(whole.count(name), 1U) << name;
        }
        fs::remove_all(destination.Path("Velmora_SMS_Backup"));
    }
}

TEST_F(RaceTest, StopsOfTheFacadeAtEveryStepEndItsRun) {
    tool.MakeBackup().Many(100).Sleep(30).ExitMessage(0);
    for (const std::chrono::microseconds moment : Moments(350)) {
        SCOPED_TRACE(moment.count());
        RecordingSyncCallBack host;
        RecordingSyncCallBack stopped;
        facade->StartBackup("the-device", Folder("now").c_str(), &host);
        std::this_thread::sleep_for(moment);
        InThreads(3, [&] { facade->StopBackup(&stopped); });
        EXPECT_EQ(AwaitResources(before), before);
        EXPECT_EQ(stopped.Events(0).size(), 3U);
        EXPECT_LE(host.Events(3).size() + host.Events(4).size(), 1U);
        fs::remove_all(destination.Path("now"));
    }
}

TEST_F(RaceTest, AJobAndABackupOfTheFacadeAtTheSameInstantBothEnd) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    tool.CopyBackup(backup.Write(Layout::kNew)).Many(50).ExitMessage(0);
    RecordingSyncCallBack host;
    facade->StartBackup("the-device", Folder("now").c_str(), &host);
    EXPECT_EQ(Start(8), 0) << "a job ends all other tools at its start, and then runs its own";
    const int end = AwaitEnd(host);
    EXPECT_TRUE(end == 3 || end == 4) << end;
}

TEST_F(RaceTest, JobsOfTwoHostsAtTheSameInstantDoNotMix) {
    tool.Progress(1, 1).Sleep(100).ExitMessage(0);
    std::atomic<int> ran{0};
    std::atomic<int> refused{0};
    RecordingCallBack sinks[2];
    FakeDevice devices[2];
    std::atomic<int> next{0};
    InThreads(2, [&] {
        const int mine = next++;
        devices[mine].id = "device-" + std::to_string(mine);
        std::string folder = Folder("host-" + std::to_string(mine));
        const int code = manager.StartBackupSafe(&devices[mine], folder, &sinks[mine], 0, 0);
        if (code == 0) ++ran;
        if (code == 1022) ++refused;
        EXPECT_EQ(sinks[mine].Events().size(), code == 0 ? 1U : 0U);
    });
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(refused, 1);
}

TEST_F(RaceTest, StartsDuringStartsEachEnd) {
    tool.MakeBackup().Many(50).ExitMessage(0);
    std::vector<RecordingSyncCallBack> hosts(6);
    std::atomic<std::size_t> next{0};
    InThreads(6, [&] {
        const std::size_t mine = next++;
        const std::string udid = "device-" + std::to_string(mine);
        facade->StartBackup(udid.c_str(), Folder(udid).c_str(), &hosts[mine]);
    });
    for (std::size_t i = 0; i < hosts.size(); ++i) {
        EXPECT_EQ(AwaitEnd(hosts[i]), 3);
        const std::string udid = "device-" + std::to_string(i);
        EXPECT_TRUE(fs::exists(Folder(udid) + udid + "/Manifest.db"));
    }
}

TEST_F(RaceTest, TwoStartsIntoOneFolderLeaveWhatWasThere) {
    tool.MakeBackup().Many(50).ExitMessage(0);
    RecordingSyncCallBack first;
    RecordingSyncCallBack second;
    facade->StartBackup("the-device", Folder("Earlier").c_str(), &first);
    facade->StartBackup("the-device", Folder("Earlier").c_str(), &second);
    EXPECT_NE(AwaitEnd(first), 0);
    EXPECT_NE(AwaitEnd(second), 0);
    int finished = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(Folder("Earlier"))) {
        if (entry.path().filename().string().rfind("the-device-", 0) == 0) ++finished;
    }
    EXPECT_GE(finished, 1) << "they share one temporary folder: at least one backup arrives";
}

TEST_F(RaceTest, TheSizeMayBeAskedForDuringABackup) {
    tool.For("the-device").MakeBackup().Many(200).Sleep(100).ExitMessage(0);
    tool.For("another").Progress(1, 1, "Total size: 77 bytes").ExitMessage(0);
    RecordingSyncCallBack host;
    facade->StartBackup("the-device", Folder("now").c_str(), &host);
    InThreads(3, [this] { EXPECT_EQ(facade->GetBackupSize("another", "/some/folder"), 77); });
    EXPECT_EQ(AwaitEnd(host), 3);
    EXPECT_TRUE(fs::exists(Folder("now") + "the-device/Manifest.db"));
}
