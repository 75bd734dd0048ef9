#include "Module/BackupLib/MobileBackupTask.h"

#include <dirent.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <future>
#include <set>
#include <sstream>
#include <thread>

#include "Common/std/std_objc.h"
#include "Tests/support/LogRecorder.h"
#include "Tests/support/RecordingCallBack.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/ToolScript.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The path that the library finds its tool under.
std::string ToolPath() {
    const std::filesystem::path program = STD_OBJC_GetCurrentAppPath();
    return (program.parent_path().parent_path() / "Frameworks/HandsetArchiver").string();
}

/// The numbers of "-pipe|7", "-model|0" and the like.
int NumberAfter(const std::string& option, const std::string& argument) {
    const std::size_t at = argument.find(option + "|");
    return at == std::string::npos ? -1 : std::atoi(argument.c_str() + at + option.size() + 1);
}

class RunnerTest : public testing::Test {
 protected:
    RunnerTest() { ForgetLog(); }

    int Backup(bool* cancel = nullptr) {
        CMobileBackupTask task;
        return task.StartFullBackup("/backups", "a-device", &callback, cancel);
    }

    /// The payloads that arrived, "-" for none.
    std::vector<std::string> Payloads() const {
        std::vector<std::string> payloads;
        for (const RecordedEvent& event : callback.Events()) {
            payloads.push_back(event.hasData ? event.text : "-");
        }
        return payloads;
    }

    /// The command line in the log.
    static std::string LoggedCommand() {
        for (const std::string& text : RecordedTexts()) {
            if (text.rfind("ExecTask:\"", 0) != 0) continue;
            if (text.size() > 4 && text.substr(text.size() - 4) == "...\n") {
                return text.substr(9, text.size() - 9 - 4);
            }
        }
        return "no command was logged";
    }

    ToolScript tool;
    RecordingCallBack callback;
};

std::set<int> InheritableDescriptors() {
    std::set<int> found;
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        const int flags = fcntl(descriptor, F_GETFD);
        if (flags != -1 && (flags & FD_CLOEXEC) == 0) found.insert(descriptor);
    }
    return found;
}

std::set<int> Numbers(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<int>(words), std::istream_iterator<int>()};
}

}  // namespace

TEST_F(RunnerTest, ProgressReachesTheCallback) {
    tool.Progress(1, 20, "IMG_1").Progress(20, 20).ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    const std::vector<RecordedEvent> events = callback.Events();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].type, 73);
    EXPECT_EQ(events[0].arg1, 1U);
    EXPECT_EQ(events[0].arg2, 20U);
    EXPECT_EQ(events[0].text, "IMG_1");
    EXPECT_FALSE(events[1].hasData) << "no payload is a null pointer";
    EXPECT_NE(events[0].thread, std::this_thread::get_id());
}

TEST_F(RunnerTest, NegativeNumbersArriveSignExtended) {
    tool.Progress(-1, -2).ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    ASSERT_EQ(callback.Events().size(), 1U);
    EXPECT_EQ(callback.Events()[0].arg1, 0xFFFFFFFFFFFFFFFFULL);
    EXPECT_EQ(callback.Events()[0].arg2, 0xFFFFFFFFFFFFFFFEULL);
}

TEST_F(RunnerTest, TheToolsCodeIsTheResult) {
    tool.ExitMessage(-3).End(5);
    EXPECT_EQ(Backup(), -3);
}

TEST_F(RunnerTest, TheToolsExitStatusPlaysNoPart) {
    tool.ExitMessage(0).End(5);
    EXPECT_EQ(Backup(), 0);
}

TEST_F(RunnerTest, WithoutExitMessageTheResultIs107AfterAWait) {
    tool.Progress(1, 2).End(0);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(Backup(), 107);
    EXPECT_GE(SecondsSince(start), 1.2);
    EXPECT_EQ(callback.Events().size(), 1U);
}

TEST_F(RunnerTest, AfterEveryRunThereIsAPause) {
    tool.ExitMessage(0);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(Backup(), 0);
    EXPECT_GE(SecondsSince(start), 0.2);
}

TEST_F(RunnerTest, AnUnknownTypeIsConsumed) {
    tool.Header(7, 1, 2, 5).Fill(5).Header(0, 0, 0, 0).Progress(1, 2).ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    EXPECT_EQ(callback.Events().size(), 1U);
}

TEST_F(RunnerTest, ANegativeLengthMeansNoPayload) {
    tool.Header(1, 1, 2, -5).Progress(2, 2).ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    EXPECT_THAT(Payloads(), ElementsAre("-", "-"));
}

TEST_F(RunnerTest, AnExitMessageMayCarryAPayload) {
    tool.Header(2, 0, 4, 6).Fill(6).Progress(1, 1, "after").Step("end 0");
    EXPECT_EQ(Backup(), 4);
    EXPECT_THAT(Payloads(), ElementsAre("after")) << "the exit message does not end the reading";
}

TEST_F(RunnerTest, TheLastOfSeveralExitMessagesCounts) {
    tool.ExitMessage(4).ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
}

TEST_F(RunnerTest, MessagesThatComeInPiecesArePutTogether) {
    tool.Step("single-bytes").Progress(1, 2, "in pieces").ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    EXPECT_THAT(Payloads(), ElementsAre("in pieces"));
}

TEST_F(RunnerTest, APayloadMayBeLargerThanThePipeHolds) {
    const int bytes = 3 * 1024 * 1024 + 17;
    tool.Header(1, 1, 1, bytes).Fill(bytes).Progress(1, 1, "next").ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    ASSERT_EQ(callback.Events().size(), 2U);
    EXPECT_EQ(callback.Events()[0].text, std::string(static_cast<std::size_t>(bytes), 'x'))
        << "whole, and not read past its end though it has no NUL of its own";
    EXPECT_EQ(callback.Events()[1].text, "next");
}

TEST_F(RunnerTest, TheLastMessagesOfAQuickToolAreNotLost) {
    tool.Many(3000).Progress(1, 1, "the last").ExitMessage(9).End(0);
    for (int i = 0; i < 10; ++i) {
        RecordingCallBack fresh;
        CMobileBackupTask task;
        ASSERT_EQ(task.StartFullBackup("/b", "d", &fresh, nullptr), 9);
        ASSERT_EQ(fresh.Events().size(), 3001U);
        ASSERT_EQ(fresh.Events().back().text, "the last");
    }
}

TEST_F(RunnerTest, ALongCallbackIsNotCancelledWhenTheToolEnds) {
    tool.Progress(1, 3).Progress(2, 3).Progress(3, 3).ExitMessage(0).End(0);
    std::atomic<int> finished{0};
    callback.onEvent = [&](const RecordedEvent&) {
        usleep(400000);  // a cancellation point, reached while the runner ends the reader
        ++finished;
    };
    EXPECT_EQ(Backup(), 0);
    EXPECT_EQ(finished, 3);
}

TEST_F(RunnerTest, NoCallbackRunsAfterTheRunHasReturned) {
    tool.Many(200).ExitMessage(0);
    std::atomic<bool> returned{false};
    std::atomic<bool> late{false};
    callback.onEvent = [&](const RecordedEvent&) { late = late || returned; };
    EXPECT_EQ(Backup(), 0);
    returned = true;
    usleep(100000);
    EXPECT_FALSE(late);
}

TEST_F(RunnerTest, HalfAHeaderIsNoMessage) {
    tool.Progress(1, 2).Step("bytes 0100000001");
    EXPECT_EQ(Backup(), 107);
    EXPECT_EQ(callback.Events().size(), 1U);
}

TEST_F(RunnerTest, HalfAPayloadIsNoMessage) {
    tool.Progress(1, 2).Header(1, 2, 2, 100).Fill(50);
    EXPECT_EQ(Backup(), 107);
    EXPECT_EQ(callback.Events().size(), 1U);
}

TEST_F(RunnerTest, AWrongLengthCostsNoMemory) {
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    tool.Header(1, 1, 1, 0x7FFFFFFF).Fill(1000);
    EXPECT_EQ(Backup(), 107);
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 200 * 1024) << "KiB more than before";
}

TEST_F(RunnerTest, AToolThatClosesThePipeIsWaitedFor) {
    tool.ExitMessage(3).Step("close-pipe").Sleep(300);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(Backup(), 3);
    EXPECT_GE(SecondsSince(start), 0.5);
}

TEST_F(RunnerTest, AProcessLeftBehindDoesNotHoldTheRun) {
    tool.Linger(60000).ExitMessage(6).End(0);
    EXPECT_EQ(Backup(), 6);
    KillAppleBackupExe();
}

TEST_F(RunnerTest, AProcessLeftBehindThatFloodsThePipeDoesNotHoldTheRun) {
    tool.LingerFlooding(60000).Sleep(50).ExitMessage(6).End(0);
    EXPECT_EQ(Backup(), 6);
    KillAppleBackupExe();
}

TEST_F(RunnerTest, ACancelFlagThatIsSetStopsTheForwarding) {
    tool.Progress(1, 2).ExitMessage(0).Sleep(300);
    bool cancel = true;
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(Backup(&cancel), 107) << "the exit message is not looked at either";
    EXPECT_GE(SecondsSince(start), 0.3) << "the run still waits for the tool";
    EXPECT_THAT(callback.Events(), IsEmpty());
    EXPECT_THAT(RecordedTexts(), Contains("CMobileBackupTask:cancle task!"));
    EXPECT_THAT(RecordedTexts(), Contains("CMobileBackupTask::ReadPipThreadProc exit!\n"));
}

TEST_F(RunnerTest, ACancelledToolMayGoOnWriting) {
    tool.Progress(1, 2).Header(1, 1, 1, 1000000).Fill(1000000).Many(20000).End(0);
    bool cancel = false;
    callback.onEvent = [&](const RecordedEvent&) { __atomic_store_n(&cancel, true, __ATOMIC_RELAXED); };
    EXPECT_EQ(Backup(&cancel), 107) << "it does not hang on a full pipe";
    EXPECT_EQ(callback.Events().size(), 1U);
}

TEST_F(RunnerTest, ACancelFlagThatIsClearChangesNothing) {
    tool.Progress(1, 2).ExitMessage(0);
    bool cancel = false;
    EXPECT_EQ(Backup(&cancel), 0);
    EXPECT_EQ(callback.Events().size(), 1U);
}

TEST_F(RunnerTest, ANullCallbackIsSilent) {
    tool.Progress(1, 2, "text").ExitMessage(0);
    CMobileBackupTask task;
    EXPECT_EQ(task.StartFullBackup("/b", "d", nullptr, nullptr), 0);
}

TEST_F(RunnerTest, TheReturnCodeStaysForASecondRunOfTheSameObject) {
    CMobileBackupTask task;
    tool.ExitMessage(5);
    EXPECT_EQ(task.StartFullBackup("/b", "d", &callback, nullptr), 5);
    const ToolScript silent;
    EXPECT_EQ(task.StartFullBackup("/b", "d", &callback, nullptr), 5);
}

// The command lines.

TEST_F(RunnerTest, FullBackupCommandLine) {
    tool.KeepArgument().ExitMessage(0);
    CMobileBackupTask task;
    task.m_model = 3;
    EXPECT_EQ(task.StartFullBackup("/a path/b", "the-device", &callback, nullptr), 0);
    const std::string pipe = std::to_string(NumberAfter("-pipe", tool.Argument()));
    const std::string argument =
        "-backup|-backuppath|/a path/b|-target|the-device|-pipe|" + pipe + "|-model|3";
    EXPECT_EQ(tool.Argument(), argument);
    EXPECT_EQ(LoggedCommand(), "\"" + ToolPath() + "\"  \"" + argument + "\" ");
}

TEST_F(RunnerTest, SourceRestoreCommandLine) {
    tool.KeepArgument().Progress(1, 2).ExitMessage(0);
    CMobileBackupTask task;
    EXPECT_EQ(task.StartSourceRestore("/b", "the-device", &callback, nullptr), 0);
    const std::string pipe = std::to_string(NumberAfter("-pipe", tool.Argument()));
    EXPECT_EQ(tool.Argument(), "-restore|-backuppath|/b|-target|the-device|-pipe|" + pipe + "|-model|0");
    EXPECT_EQ(callback.Events()[0].type, 75);
}

TEST_F(RunnerTest, InformationCommandLineNamesTheDeviceTwice) {
    tool.KeepArgument().Progress(0, 0, "Total size: 5 bytes").ExitMessage(0);
    CMobileBackupTask task;
    EXPECT_EQ(task.StartGetBackupInfo("/b", "the-device", &callback, nullptr), 0);
    const std::string pipe = std::to_string(NumberAfter("-pipe", tool.Argument()));
    EXPECT_EQ(tool.Argument(),
              "-version|16.0|-info|-backuppath|/b|-source|the-device|-target|the-device|-pipe|" + pipe +
                  "|-model|0");
    EXPECT_EQ(callback.Events()[0].type, 30);
}

TEST_F(RunnerTest, PasswordCommandLine) {
    tool.KeepArgument().Progress(1, 2).ExitMessage(0);
    CMobileBackupTask task;
    EXPECT_EQ(task.ChangeBackupPasswd("the-device", "old one", "new one", &callback, nullptr), 0);
    const std::string pipe = std::to_string(NumberAfter("-pipe", tool.Argument()));
    EXPECT_EQ(tool.Argument(),
              "-changepasswd|-target|the-device|-old|old one|-new|new one|-pipe|" + pipe + "|-model|0");
    EXPECT_EQ(callback.Events()[0].type, 2001);
}

TEST_F(RunnerTest, RestoreAllSettingsCommandLine) {
    tool.KeepArgument().Progress(1, 2).ExitMessage(0);
    CMobileBackupTask task;
    EXPECT_EQ(task.StartRestoreAllSetting("17.4", "/b", "the-source", "the-device", &callback, nullptr), 0);
    const std::string pipe = std::to_string(NumberAfter("-pipe", tool.Argument()));
    EXPECT_EQ(
        tool.Argument(),
        "-version|17.4|-restore_all_setting|-backuppath|/b|-source|the-source|-target|the-device|-pipe|" +
            pipe + "|-model|0");
    EXPECT_EQ(callback.Events()[0].type, 75);
}

TEST_F(RunnerTest, FullRestoreCommandLineKeepsItsShiftedValues) {
    tool.KeepArgument();
    CMobileBackupTask task;
    task.m_model = 44;
    EXPECT_EQ(
        task.StartFullRestore("/b", "the-device", "a third text, too long to be kept inside of a string",
                              &callback, nullptr, enRestoreOption(77)),
        107)
        << "the tool is told no pipe that it could report on";
    const std::string argument = tool.Argument();
    EXPECT_THAT(argument, StartsWith("-restore|-backuppath|/b|-target|the-device|-pipe|"));
    EXPECT_GE(NumberAfter("-model", argument), 3) << "the pipe's descriptor";
    EXPECT_EQ(NumberAfter("-restore_option", argument), 44) << "the model";
    EXPECT_THAT(argument, Not(HasSubstr("third"))) << "the option and the third text are not used";
}

TEST_F(RunnerTest, ACommandLineThatWouldNotFitIsNotRun) {
    tool.KeepArgument().ExitMessage(0);
    CMobileBackupTask task;
    EXPECT_EQ(task.StartFullBackup(std::string(2048, 'x'), "d", &callback, nullptr), 201);
    EXPECT_EQ(task.ChangeBackupPasswd("d", std::string(2048, 'x'), "", &callback, nullptr), 201);
    EXPECT_THAT(RecordedTexts(), Contains(StartsWith("err: createProcess[")).Times(2));
    EXPECT_THAT(RecordedTexts(), Contains("StartFullBackup:ret=201\n"));
}

// Log lines and standard output.

TEST_F(RunnerTest, LogsOfAFullBackup) {
    tool.ExitMessage(7);
    EXPECT_EQ(Backup(), 7);
    const std::string command = LoggedCommand();
    std::vector<std::string> texts = RecordedTexts();
    // Whether the reader leaves by itself or is cancelled depends on where the end of the tool finds it.
    texts.erase(std::remove(texts.begin(), texts.end(), "CMobileBackupTask::ReadPipThreadProc exit!\n"),
                texts.end());
    EXPECT_THAT(texts,
                ElementsAre("init pipe...", "ExecTask:" + command + "\n", "ExecTask:" + command + "...\n",
                            "ExecTask:end! ret = 0\n", "StartFullBackup:ret=7\n"));
    for (const LogLine& line : RecordedLog()) {
        EXPECT_EQ(line.level, 1);
        EXPECT_EQ(line.sourceFile, "Module/BackupLib/MobileBackupTask.cpp");
    }
}

TEST_F(RunnerTest, TheRawShellStatusIsLogged) {
    tool.ExitMessage(7).End(5);
    EXPECT_EQ(Backup(), 7);
    EXPECT_THAT(RecordedTexts(), Contains("ExecTask:end! ret = 1280\n"));
}

TEST_F(RunnerTest, LogsOfTheOtherOperations) {
    tool.ExitMessage(0);
    CMobileBackupTask task;
    task.StartSourceRestore("/b", "d", nullptr, nullptr);
    EXPECT_EQ(RecordedTexts().back(), "StartRestoreAllSetting:ret=0\n");
    ForgetLog();
    task.StartGetBackupInfo("/b", "d", nullptr, nullptr);
    EXPECT_EQ(RecordedTexts().back(), "StartRestoreAllSetting:ret=0\n");
    ForgetLog();
    task.StartRestoreAllSetting("1", "/b", "s", "d", nullptr, nullptr);
    EXPECT_EQ(RecordedTexts().back(), "StartRestoreAllSetting:ret=0\n");
    ForgetLog();
    task.ChangeBackupPasswd("d", "o", "n", nullptr, nullptr);
    EXPECT_EQ(RecordedTexts().back(), "ChangeBackupPasswd:ret=0\n");
    EXPECT_EQ(RecordedTexts().front(), "init pipe...");
    ForgetLog();
    task.StartFullRestore("/b", "d", "s", nullptr, nullptr, enRestoreOption(0));
    EXPECT_EQ(RecordedTexts().back(), "StartFullRestore:ret=0\n");
}

TEST_F(RunnerTest, StandardOutputTexts) {
    tool.ExitMessage(7).End(5);
    testing::internal::CaptureStdout();
    EXPECT_EQ(Backup(), 7);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "ReadPipe线程已自动退出!(进程返回值:7)ExecTask:end! ret = 7\n");
}

// Descriptors, threads, processes.

TEST_F(RunnerTest, NothingStaysBehind) {
    tool.Progress(1, 2, "text").ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    const ResourceCount before = ResourceCount::Now();
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(Backup(), 0);
    EXPECT_EQ(ResourceCount::Now(), before);
}

TEST_F(RunnerTest, TheToolInheritsTheWriteEndOnly) {
    tool.KeepArgument().KeepDescriptors().ExitMessage(0);
    std::set<int> expected = InheritableDescriptors();
    EXPECT_EQ(Backup(), 0);
    expected.insert(NumberAfter("-pipe", tool.Argument()));
    EXPECT_EQ(Numbers(tool.Descriptors()), expected);
}

TEST_F(RunnerTest, OtherChildrenDoNotInheritThePipe) {
    tool.Progress(1, 2).Await("go on").ExitMessage(0);
    const std::set<int> expected = InheritableDescriptors();
    std::atomic<bool> started{false};
    callback.onEvent = [&](const RecordedEvent&) { started = true; };
    std::future<int> run = std::async(std::launch::async, [this] { return Backup(); });
    while (!started)
        usleep(1000);
    ToolScript other;
    other.KeepDescriptors();
    EXPECT_EQ(STD_OBJC_System(("\"" + ToolPath() + "\" x").c_str(), nullptr, true, nullptr), 0);
    tool.Make("go on");
    EXPECT_EQ(run.get(), 0);
    EXPECT_EQ(Numbers(other.Descriptors()), expected);
}

TEST_F(RunnerTest, TwoRunsAtOnceKeepTheirMessagesApart) {
    tool.Many(5000).Sleep(200).ExitMessage(0);
    RecordingCallBack other;
    std::future<int> second = std::async(std::launch::async, [&other] {
        CMobileBackupTask task;
        return task.StartSourceRestore("/b", "d", &other, nullptr);
    });
    EXPECT_EQ(Backup(), 0);
    EXPECT_EQ(second.get(), 0);
    for (const RecordingCallBack* sink : {&callback, &other}) {
        ASSERT_EQ(sink->Events().size(), 5000U);
        for (unsigned i = 0; i < 5000; ++i)
            ASSERT_EQ(sink->Events()[i].arg1, i + 1);
    }
}

TEST_F(RunnerTest, RunsWhileOtherThreadsAllocate) {
    tool.Many(100).ExitMessage(0);
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&done] {
            while (!done)
                std::string(5000, 'x').swap(*std::make_unique<std::string>());
        });
    }
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(Backup(), 0);
    done = true;
    for (std::thread& thread : threads)
        thread.join();
}

// Stopping.

TEST_F(RunnerTest, KillEndsTheToolAndSleeps) {
    tool.Progress(1, 2).Sleep(60000);
    std::atomic<bool> started{false};
    callback.onEvent = [&](const RecordedEvent&) { started = true; };
    std::future<int> run = std::async(std::launch::async, [this] { return Backup(); });
    while (!started)
        usleep(1000);
    ForgetLog();
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(KillAppleBackupExe(), 0);
    EXPECT_GE(SecondsSince(start), 0.3);
    EXPECT_EQ(RecordedTexts().front(), "global_killAppleBackupExe...");
    EXPECT_EQ(run.get(), 107);
}

TEST_F(RunnerTest, AHostThatBlocksSignalsCanStillStopTheTool) {
    tool.Progress(1, 2).Sleep(60000);
    std::atomic<bool> started{false};
    callback.onEvent = [&](const RecordedEvent&) { started = true; };
    std::future<int> run = std::async(std::launch::async, [this] {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, nullptr);
        return Backup();
    });
    while (!started)
        usleep(1000);
    KillAppleBackupExe();
    EXPECT_EQ(run.get(), 107);
}

// The pieces that a run is made of.

TEST(Runner, InitOpensAFreshPipeAndClosesTheEarlierOne) {
    const ResourceCount before = ResourceCount::Now();
    {
        CMobileBackupTask task;
        EXPECT_EQ(task.Init(), 0);
        EXPECT_EQ(task.Init(), 0);
        EXPECT_EQ(ResourceCount::Now().descriptors, before.descriptors + 2);
    }
    EXPECT_EQ(ResourceCount::Now(), before);
}

TEST(Runner, WithoutDescriptorsThePipeFails) {
    ForgetLog();
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    CMobileBackupTask task;
    rlimit none = before;
    none.rlim_cur = 3;
    setrlimit(RLIMIT_NOFILE, &none);
    const int code = task.StartFullBackup("/b", "d", nullptr, nullptr);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(code, 200);
    EXPECT_THAT(RecordedTexts(), ElementsAre("init pipe...", "pipe init fail!!"));
}

TEST(Runner, AnIdleTaskReadsNothing) {
    CMobileBackupTask task;
    EXPECT_FALSE(task.OnReadPipe());
    EXPECT_EQ(task.Init(), 0);
    EXPECT_FALSE(task.OnReadPipe());
    EXPECT_FALSE(task.IsCancle());
}

TEST(Runner, TheReaderThreadOfAnIdleTaskLeavesAtOnce) {
    ForgetLog();
    CMobileBackupTask task;
    EXPECT_EQ(CMobileBackupTask::ReadPipThreadProc(&task), nullptr);
    EXPECT_THAT(RecordedTexts(), ElementsAre("CMobileBackupTask::ReadPipThreadProc exit!\n"));
}

TEST(Runner, ACommandLineOfOnesOwnRunsWithoutAPipe) {
    CMobileBackupTask task;
    EXPECT_EQ(task.ExecTask("exit 0"), 107);
}
