#include "Common/std/std_objc.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <filesystem>
#include <mutex>
#include <thread>

#include "Tests/support/ChildProcess.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;

namespace {

/// Runs a command line to its end. \return the raw wait status.
int StatusOf(const std::string& command) {
    int status = -1;
    EXPECT_EQ(STD_OBJC_System(command.c_str(), nullptr, true, &status), 0);
    return status;
}

bool AwaitFile(const std::string& path) {
    for (int i = 0; i < 1000 && !fs::exists(path); ++i)
        usleep(10000);
    return fs::exists(path);
}

}  // namespace

TEST(CurrentAppPath, IsThisProgram) {
    EXPECT_TRUE(fs::equivalent(STD_OBJC_GetCurrentAppPath(), "/proc/self/exe"));
}

TEST(System, GivesTheRawStatus) {
    const int status = StatusOf("exit 3");
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(WEXITSTATUS(StatusOf("/no/such/program 2>/dev/null")), 127);
    EXPECT_TRUE(WIFSIGNALED(StatusOf("kill -9 $$")));
}

TEST(System, RefusesANullCommandAndTouchesNothing) {
    int pid = 5;
    int status = 6;
    EXPECT_EQ(STD_OBJC_System(nullptr, &pid, true, &status), -1);
    EXPECT_EQ(pid, 5);
    EXPECT_EQ(status, 6);
}

TEST(System, ReturnsAtOnceWithoutWaiting) {
    int pid = 0;
    int status = 6;
    EXPECT_EQ(STD_OBJC_System("exec sleep 600", &pid, false, &status), 0);
    EXPECT_GT(pid, 0);
    EXPECT_EQ(status, 0);
    kill(pid, SIGKILL);
    EXPECT_EQ(waitpid(pid, nullptr, 0), pid);
}

TEST(System, OutputsMayBeLeftOut) {
    EXPECT_EQ(STD_OBJC_System("true", nullptr, true, nullptr), 0);
}

TEST(System, SaysWhenNoProcessCanBeMade) {
    // As another user, since root may make as many as it likes.
    Command options({"/bin/true"});
    options.prepare = [] {
        rlimit none{0, 0};
        setrlimit(RLIMIT_NPROC, &none);
        if (getuid() == 0 && setuid(65534) != 0) _exit(90);
        int pid = 5;
        int status = 6;
        const int code = STD_OBJC_System("true", &pid, true, &status);
        _exit(code == -2 && pid == 5 && status == 6 ? 42 : 43);
    };
    EXPECT_EQ(RunToEnd(options).code, 42);
}

TEST(System, GivesTheChildNoBlockedSignals) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int status = StatusOf("kill -TERM $$; exit 0");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_TRUE(WIFSIGNALED(status));
}

TEST(System, GivesTheChildTheDefaultStopSignal) {
    void (*const before)(int) = std::signal(SIGTERM, SIG_IGN);
    const int status = StatusOf("kill -TERM $$; exit 0");
    std::signal(SIGTERM, before);
    EXPECT_TRUE(WIFSIGNALED(status));
}

TEST(System, WorksWhileOtherThreadsAllocate) {
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&done] {
            while (!done)
                std::make_unique<std::string>(1000, 'x');
        });
    }
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(StatusOf("exit 0"), 0);
    done = true;
    for (std::thread& thread : threads)
        thread.join();
}

TEST(CreateProcess, StartsAProgramWithOneArgument) {
    const TemporaryFolder folder;
    const ResourceCount before = ResourceCount::Now();
    EXPECT_TRUE(STD_OBJC_CreateProcess("/usr/bin/touch", folder.Path("a b; c")));
    EXPECT_TRUE(AwaitFile(folder.Path("a b; c")));
    EXPECT_EQ(AwaitResources(before), before) << "no zombie stays behind";
}

TEST(CreateProcess, FailsForWhatIsNoProgram) {
    const TemporaryFolder folder;
    EXPECT_FALSE(STD_OBJC_CreateProcess(folder.Path("none"), "x"));
    EXPECT_FALSE(STD_OBJC_CreateProcess("true", "x")) << "a launch path is not looked up";
}

TEST(AsyncTask, TasksRunSideBySide) {
    struct Meeting {
        std::mutex mutex;
        std::condition_variable changed;
        int present = 0;
        int left = 0;
    } meeting;
    constexpr int kTasks = 8;
    for (int i = 0; i < kTasks; ++i) {
        STD_OBJC_ExcuteAsyncTask(
            [](void* context) {
                auto* const met = static_cast<Meeting*>(context);
                std::unique_lock<std::mutex> lock(met->mutex);
                ++met->present;
                met->changed.notify_all();
                met->changed.wait(lock, [met] { return met->present == kTasks; });
                ++met->left;
                met->changed.notify_all();
            },
            &meeting);
    }
    std::unique_lock<std::mutex> lock(meeting.mutex);
    EXPECT_TRUE(
        meeting.changed.wait_for(lock, std::chrono::seconds(30), [&] { return meeting.left == kTasks; }));
}

TEST(AsyncTask, ANullFunctionIsIgnored) {
    STD_OBJC_ExcuteAsyncTask(nullptr, nullptr);
}

TEST(KillByPid, AsksTheProcessToEnd) {
    ChildProcess victim(Command({"/bin/sleep", "600"}));
    STD_OBJC_KillProcessByPid(victim.Pid());
    EXPECT_EQ(victim.Wait(), 128 + SIGTERM);
}

TEST(KillByPid, IgnoresIdsThatMeanWholeGroups) {
    void (*const before)(int) = std::signal(SIGTERM, SIG_IGN);
    const ResourceCount resources = ResourceCount::Now();
    STD_OBJC_KillProcessByPid(0);
    EXPECT_EQ(ResourceCount::Now(), resources) << "not even a task is started";
    std::signal(SIGTERM, before);
}

TEST(FileCopy, ReplacesTheTarget) {
    const TemporaryFolder folder;
    folder.Write("from", "new");
    folder.Write("to/old/file", "old");
    EXPECT_TRUE(STD_OBJC_FILE_CopyFile(folder.Path("from").c_str(), folder.Path("to").c_str()));
    EXPECT_EQ(folder.Read("to"), "new");
}

TEST(FileCopy, CopiesFoldersWithEverything) {
    const TemporaryFolder folder;
    folder.Write("from/a/b", "x");
    fs::create_symlink("a/b", folder.Path("from/link"));
    EXPECT_TRUE(STD_OBJC_FILE_CopyFile(folder.Path("from").c_str(), folder.Path("to").c_str()));
    EXPECT_EQ(folder.Read("to/a/b"), "x");
    EXPECT_EQ(fs::read_symlink(folder.Path("to/link")), "a/b");
}

TEST(FileCopy, RemovesNothingWhenTheSourceIsMissing) {
    const TemporaryFolder folder;
    folder.Write("to", "kept");
    EXPECT_FALSE(STD_OBJC_FILE_CopyFile(folder.Path("none").c_str(), folder.Path("to").c_str()));
    EXPECT_EQ(folder.Read("to"), "kept");
    EXPECT_FALSE(STD_OBJC_FILE_CopyFile(nullptr, folder.Path("to").c_str()));
    EXPECT_FALSE(STD_OBJC_FILE_CopyFile(folder.Path("to").c_str(), nullptr));
}

TEST(FileCopy, NeverRemovesItsOwnSource) {
    const TemporaryFolder folder;
    folder.Write("a/b", "kept");
    EXPECT_FALSE(STD_OBJC_FILE_CopyFile(folder.Path("a/b").c_str(), folder.Path("a/../a/b").c_str()));
    EXPECT_FALSE(STD_OBJC_FILE_CopyFile(folder.Path("a/b").c_str(), folder.Path("a").c_str()));
    EXPECT_EQ(folder.Read("a/b"), "kept");
}

TEST(SystemVersion, IsVersionAndNameWithoutABlank) {
    utsname system{};
    uname(&system);
    EXPECT_EQ(GetOSXVersion(), std::string(system.release) + system.sysname);
}
