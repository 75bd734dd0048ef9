#include "Common/std/std_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>

#include "Common/std/std_objc.h"
#include "Tests/support/ChildProcess.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// A program file of this name in a folder, a copy of the system's sleep.
std::string Sleeper(const TemporaryFolder& folder, const std::string& name) {
    std::string path = folder.Path(name);
    std::filesystem::copy_file("/bin/sleep", path);
    return path;
}

bool AwaitProcess(const std::string& name) {
    for (int i = 0; i < 500; ++i) {
        if (STD_OBJC_ProcessExist(name)) return true;
        usleep(10000);
    }
    return false;
}

}  // namespace

TEST(Sleep, TakesAtLeastItsTime) {
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(ps_sleep(50), 0);
    EXPECT_GE(MillisecondsSince(start), 50);
    EXPECT_EQ(ps_sleep(0), 0);
    EXPECT_EQ(ps_sleep(-5), 0);
}

TEST(Sleep, IsNotCutShortByASignal) {
    struct sigaction ignoring {};
    struct sigaction before {};
    ignoring.sa_handler = [](int) {};
    sigaction(SIGALRM, &ignoring, &before);
    itimerval often{{0, 20000}, {0, 20000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(ps_sleep(200), 0);
    EXPECT_GE(MillisecondsSince(start), 200);
    often = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    sigaction(SIGALRM, &before, nullptr);
}

TEST(KillAll, RefusesNoName) {
    EXPECT_FALSE(ps_killAllProcess(nullptr));
    EXPECT_FALSE(ps_killAllProcess(""));
}

TEST(KillAll, IsTrueWhetherThereIsSuchAProcessOrNot) {
    EXPECT_TRUE(ps_killAllProcess("krut-none-such"));
}

TEST(KillAll, EndsEveryProcessOfTheName) {
    const TemporaryFolder folder;
    const std::string program = Sleeper(folder, "krut-victim");
    ChildProcess first(Command({program, "600"}));
    ChildProcess second(Command({program, "600"}));
    ASSERT_TRUE(AwaitProcess("krut-victim"));
    usleep(100000);  // until both have become the program
    EXPECT_TRUE(ps_killAllProcess("krut-victim"));
    EXPECT_EQ(first.Wait(), 128 + SIGTERM);
    EXPECT_EQ(second.Wait(), 128 + SIGTERM);
}

TEST(KillOne, EndsThatProcessAtOnce) {
    ChildProcess victim(Command({"/bin/sleep", "600"}));
    EXPECT_TRUE(ps_killProcess(victim.Pid()));
    EXPECT_EQ(victim.Wait(), 128 + SIGKILL);
}

TEST(KillOne, LeavesNoZombieBehind) {
    const ResourceCount before = ResourceCount::Now();
    {
        ChildProcess victim(Command({"/bin/sleep", "600"}));
        EXPECT_TRUE(ps_killProcess(victim.Pid()));
        victim.Wait();
    }
    EXPECT_EQ(AwaitResources(before), before);
}

TEST(KillOne, RefusesIdsThatMeanWholeGroups) {
    EXPECT_FALSE(ps_killProcess(0));
    EXPECT_FALSE(ps_killProcess(-1));
}

TEST(CreateProcess, WaitsWhenAsked) {
    const TemporaryFolder folder;
    int pid = 0;
    EXPECT_TRUE(ps_createProcess("sleep 0.1; echo x > '" + folder.Path("done") + "'", &pid, true));
    EXPECT_GT(pid, 0);
    EXPECT_EQ(folder.Read("done"), "x\n");
}

TEST(CreateProcess, ReturnsAtOnceOtherwise) {
    int pid = 0;
    ASSERT_TRUE(ps_createProcess("exec sleep 600", &pid, false));
    EXPECT_EQ(kill(pid, SIGKILL), 0);
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(ps_createProcess("exit 3", nullptr, true)) << "how the command ends does not matter";
}

TEST(ExistProcess, RefusesNoName) {
    EXPECT_FALSE(ps_ExistProcess(nullptr));
    EXPECT_FALSE(ps_ExistProcess(""));
    EXPECT_FALSE(ps_ExistProcess("krut-none-such"));
}

TEST(ExistProcess, ComparesSixteenCharacters) {
    const TemporaryFolder folder;
    ChildProcess sixteen(Command({Sleeper(folder, "krut-16-letters."), "600"}));
    EXPECT_TRUE(AwaitProcess("krut-16-letters."));
    EXPECT_TRUE(ps_ExistProcess("krut-16-letters."));
    EXPECT_FALSE(ps_ExistProcess("krut-16-letters")) << "the whole name is compared";
    sixteen.Signal(SIGKILL);
    sixteen.Wait();
    EXPECT_FALSE(ps_ExistProcess("krut-16-letters."));
}

TEST(ExistProcess, NeverFindsALongerName) {
    const TemporaryFolder folder;
    const ChildProcess seventeen(Command({Sleeper(folder, "krut-17-letters.."), "600"}));
    EXPECT_TRUE(AwaitProcess("krut-17-letters.")) << "kept cut to sixteen characters";
    EXPECT_FALSE(ps_ExistProcess("krut-17-letters.."));
}

TEST(ExistProcess, GoesByTheProgramFileEvenWhenThatIsGone) {
    const TemporaryFolder folder;
    const std::string program = Sleeper(folder, "krut-removed");
    const ChildProcess child(Command({program, "600"}));
    ASSERT_TRUE(AwaitProcess("krut-removed"));
    std::filesystem::remove(program);
    EXPECT_TRUE(ps_ExistProcess("krut-removed"));
}

TEST(Placeholders, KeepTheirAnswers) {
    std::vector<int> ids{1, 2};
    EXPECT_TRUE(ps_getAllProcessID(ids));
    EXPECT_TRUE(ids.empty());
    std::string text = "kept";
    EXPECT_FALSE(ps_getProcessNameByID(getpid(), text));
    EXPECT_EQ(ps_loadLibrary("libc.so.6"), nullptr);
    EXPECT_EQ(ps_getProcAddress(static_cast<void*>(nullptr), "malloc"), nullptr);
    EXPECT_EQ(ps_getProcAddress("malloc", 0), nullptr);
    EXPECT_FALSE(ps_getEnv("HOME", text));
    EXPECT_FALSE(ps_addEnv("KRUTEIN_NEW", "x"));
    EXPECT_EQ(getenv("KRUTEIN_NEW"), nullptr);
    EXPECT_EQ(text, "kept");
    std::vector<std::string> paths{"kept"};
    std::vector<std::string> folders{"kept"};
    EXPECT_FALSE(ps_killProcessWhenPathInFolder(paths, folders));
    EXPECT_THAT(paths, testing::ElementsAre("kept"));
    EXPECT_THAT(folders, testing::ElementsAre("kept"));
}
