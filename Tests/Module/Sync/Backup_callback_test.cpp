// Callbacks that block, that call back into the library, that are too slow for the tool, and that throw.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <csignal>
#include <filesystem>
#include <future>
#include <stdexcept>

#include "Common/std/std_process.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/MobileBackupTask.h"
#include "Module/Sync/Backup.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/ResourceCount.h"

namespace fs = std::filesystem;

namespace {

class CallBackTest : public JobTest {
 protected:
    ~CallBackTest() override { EXPECT_EQ(AwaitResources(before), before); }

    ResourceCount before = ResourceCount::Now();
    CBackup* facade = CBackup::GetInstance();
    RecordingSyncCallBack host;
};

/// A door that a test opens.
class Door {
 public:
    void Open() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_opened.notify_all();
    }
    void Pass() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_opened.wait(lock, [this] { return m_open; });
    }

 private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    bool m_open = false;
};

long PeakKib() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    return used.ru_maxrss;
}

/// \return how the process ended in which a run of the tool has a callback that throws.
int EndOfAThrowingHost() {
    const pid_t host = fork();
    if (host == 0) {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        RecordingCallBack thrower;
        thrower.onEvent = [](const RecordedEvent&) { throw std::runtime_error("the host's own"); };
        CMobileBackupTask task;
        task.StartFullBackup("/b", "d", &thrower, nullptr);
        _exit(0);
    }
    int status = 0;
    waitpid(host, &status, 0);
    return status;
}

}  // namespace

TEST_F(CallBackTest, AFloodWaitsForASlowCallback) {
    constexpr unsigned kMessages = 100'000;
    tool.Many(kMessages).ExitMessage(0);
    unsigned seen = 0;
    bool inOrder = true;
    struct Slow : CCallBack {
        std::function<void(unsigned long long)> onMessage;
        int OnStateChange(CallBackType, unsigned long long arg1, unsigned long long, void*) override {
            onMessage(arg1);
            return 0;
        }
    } slow;
    slow.onMessage = [&](unsigned long long number) {
        inOrder = inOrder && number == ++seen;
        if (seen <= 100) usleep(2000);
    };
    const long peak = PeakKib();
    CMobileBackupTask task;
    EXPECT_EQ(task.StartFullBackup("/b", "d", &slow, nullptr), 0);
    EXPECT_EQ(seen, kMessages) << "none is lost";
    EXPECT_TRUE(inOrder);
    EXPECT_LT(PeakKib() - peak, 20 * 1024) << "KiB: the tool waits, nothing is piled up";
}

TEST_F(CallBackTest, OneThatBlocksHoldsItsRunAndNotTheStop) {
    tool.MakeBackup().Progress(1, 2).Sleep(60'000);
    Door door;
    host.onEvent = [&](const RecordedEvent& event) {
        if (event.type == 2) door.Pass();
    };
    std::promise<void> blocked;
    RecordingSyncCallBack stopped;
    facade->StartBackup("the-device", (destination.Path() + "/").c_str(), &host);
    while (!fs::exists(destination.Path("temp/the-device/Manifest.db")) ||
           !ps_ExistProcess("HandsetArchiver"))
        usleep(5000);
    facade->StopBackup(&stopped);
    EXPECT_TRUE(stopped.Await(0)) << "while the callback of the run still blocks";
    door.Open();
    EXPECT_EQ(AwaitResources(before), before) << "then the run ends too";
    EXPECT_EQ(host.Events(4).size(), 0U);
    EXPECT_TRUE(fs::exists(destination.Path("temp/the-device/Manifest.db")));
}

TEST_F(CallBackTest, OneMayCallTheFacade) {
    tool.For("the-device").MakeBackup().Progress(1, 2).ExitMessage(0);
    tool.For("another").Progress(1, 1, "Total size: 77 bytes").ExitMessage(0);
    RecordingSyncCallBack restore;
    long long size = 0;
    host.onEvent = [&](const RecordedEvent& event) {
        if (event.type == 2) size = facade->GetBackupSize("another", "/some/folder");
        if (event.type == 3) facade->StartRestore("another", "/some/folder", &restore);
    };
    facade->StartBackup("the-device", (destination.Path() + "/").c_str(), &host);
    ASSERT_TRUE(host.Await(3));
    ASSERT_TRUE(restore.Await(7));
    EXPECT_EQ(size, 77);
    EXPECT_TRUE(fs::exists(destination.Path("the-device/Manifest.db")));
}

TEST_F(CallBackTest, OneMayStopItsOwnRun) {
    tool.MakeBackup().Progress(1, 2).Sleep(60'000);
    host.onEvent = [&](const RecordedEvent& event) {
        if (event.type == 2) facade->StopBackup(&host);
    };
    facade->StartBackup("the-device", (destination.Path() + "/").c_str(), &host);
    ASSERT_TRUE(host.Await(0));
    EXPECT_EQ(AwaitResources(before), before);
    EXPECT_EQ(host.Events(3).size() + host.Events(4).size(), 0U);
}

TEST_F(CallBackTest, OneOfAJobMayStopItAndIsRefusedASecondOne) {
    tool.MakeBackup().Progress(1, 2).Sleep(60'000);
    int second = 0;
    callback.onEvent = [&](const RecordedEvent&) {
        second = Start(8);
        manager.StopBackup();
    };
    EXPECT_EQ(Start(8), 1018);
    EXPECT_EQ(second, 1022);
    EXPECT_TRUE(fs::exists(DeviceFolder() + "/Manifest.db")) << "nothing was deleted";
}

TEST_F(CallBackTest, OneThatThrowsEndsTheProcessAndTheToolSoonAfter) {
    tool.Progress(1, 2).Sleep(200).Many(100'000);
    const int status = EndOfAThrowingHost();
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGABRT) << "as an exception that nobody catches does everywhere";
    for (int i = 0; i < 1000 && ps_ExistProcess("HandsetArchiver"); ++i)
        usleep(10'000);
    EXPECT_FALSE(ps_ExistProcess("HandsetArchiver")) << "the pipe was closed: its next message ends it";
    // Nothing is left that the next run would meet.
    ToolScript fresh;
    fresh.Progress(1, 2).ExitMessage(0);
    CMobileBackupTask task;
    EXPECT_EQ(task.StartFullBackup("/b", "d", &callback, nullptr), 0);
}
