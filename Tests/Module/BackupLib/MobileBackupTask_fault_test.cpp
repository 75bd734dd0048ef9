// The runner while the system fails. The functions below stand in front of the system's own ones.

// The headers' checked functions are inline: Clang refuses a second one of such a name.
#undef _FORTIFY_SOURCE

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "Common/Export.h"
#include "Module/BackupLib/MobileBackupTask.h"
#include "Tests/Module/BackupLib/RefusedMemory.h"
#include "Tests/support/Interpose.h"
#include "Tests/support/LogRecorder.h"
#include "Tests/support/RecordingCallBack.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/ToolScript.h"

using testing::ElementsAre;
using testing::StartsWith;

namespace {

std::atomic<bool> g_noProcess{false};
std::atomic<bool> g_noThread{false};
std::atomic<bool> g_noPipe{false};
std::atomic<int> g_interruptedReads{0};  ///< how many reads still fail with EINTR
std::atomic<bool> g_shortReads{false};   ///< reads give one byte at a time
std::atomic<int> g_interruptedWaits{0};

bool Take(std::atomic<int>& counter) {
    int left = counter.load();
    while (left > 0 && !counter.compare_exchange_weak(left, left - 1)) {
    }
    return left > 0;
}

}  // namespace

extern "C" {

KRUTEIN_API pid_t fork() {
    static auto* const real = RealFunction<pid_t()>("fork");
    if (!g_noProcess) return real();
    errno = EAGAIN;
    return -1;
}

KRUTEIN_API int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*function)(void*),
                               void* argument) {
    static auto* const real =
        RealFunction<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    return g_noThread ? EAGAIN : real(thread, attributes, function, argument);
}

KRUTEIN_API int pipe2(int* ends, int flags) {
    static auto* const real = RealFunction<int(int*, int)>("pipe2");
    if (!g_noPipe) return real(ends, flags);
    errno = EMFILE;
    return -1;
}

KRUTEIN_API ssize_t read(int descriptor, void* to, size_t bytes) {
    static auto* const real = RealFunction<ssize_t(int, void*, size_t)>("read");
    if (Take(g_interruptedReads)) {
        errno = EINTR;
        return -1;
    }
    return real(descriptor, to, g_shortReads && bytes > 1 ? 1 : bytes);
}

KRUTEIN_API pid_t waitpid(pid_t child, int* status, int options) {
    static auto* const real = RealFunction<pid_t(pid_t, int*, int)>("waitpid");
    if (Take(g_interruptedWaits)) {
        errno = EINTR;
        return -1;
    }
    return real(child, status, options);
}
}

namespace {

class RunnerFaultTest : public testing::Test {
 protected:
    RunnerFaultTest() { ForgetLog(); }
    ~RunnerFaultTest() override {
        g_noProcess = g_noThread = g_noPipe = g_shortReads = false;
        g_interruptedReads = g_interruptedWaits = 0;
        g_refusedBytes = 0;
    }

    int Backup() {
        CMobileBackupTask task;
        return task.StartFullBackup("/b", "d", &callback, nullptr);
    }

    ToolScript tool;
    RecordingCallBack callback;
};

}  // namespace

TEST_F(RunnerFaultTest, NoPipeIs200AndStartsNothing) {
    g_noPipe = true;
    EXPECT_EQ(Backup(), 200);
    EXPECT_THAT(RecordedTexts(), ElementsAre("init pipe...", "pipe init fail!!"));
    EXPECT_THAT(callback.Events(), testing::IsEmpty());
}

TEST_F(RunnerFaultTest, NoProcessIs201) {
    const ResourceCount before = ResourceCount::Now();
    g_noProcess = true;
    EXPECT_EQ(Backup(), 201);
    EXPECT_EQ(ResourceCount::Now(), before) << "the reader has been ended, the pipe closed";
    const std::vector<std::string> texts = RecordedTexts();
    ASSERT_GE(texts.size(), 2U);
    EXPECT_THAT(texts[texts.size() - 2], StartsWith("err: createProcess[\""));
    EXPECT_THAT(texts[texts.size() - 2], testing::EndsWith("] fail! pid = 0,nRet = -2\n"));
    EXPECT_EQ(texts.back(), "StartFullBackup:ret=201\n");
}

TEST_F(RunnerFaultTest, NoReaderIs201AndTheToolIsNotStarted) {
    const ResourceCount before = ResourceCount::Now();
    tool.KeepArgument().ExitMessage(0);
    g_noThread = true;
    EXPECT_EQ(Backup(), 201);
    EXPECT_EQ(ResourceCount::Now(), before);
}

TEST_F(RunnerFaultTest, InterruptedReadsAreRepeated) {
    g_interruptedReads = 20;
    tool.Progress(1, 2, "text").ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    EXPECT_EQ(g_interruptedReads, 0);
    ASSERT_EQ(callback.Events().size(), 1U);
}

TEST_F(RunnerFaultTest, ShortReadsArePutTogether) {
    tool.Progress(1, 2, "text").Many(50).ExitMessage(0);
    g_shortReads = true;
    EXPECT_EQ(Backup(), 0);
    g_shortReads = false;
    ASSERT_EQ(callback.Events().size(), 51U);
    EXPECT_EQ(callback.Events()[0].text, "text");
}

TEST_F(RunnerFaultTest, AMessageWithoutMemoryForItIsDroppedAndThoseBehindItCome) {
    const std::string large(12345, 'x');
    g_refusedBytes = large.size() + 1;  // with its NUL
    tool.Progress(1, 9, large).Progress(2, 9, "small").ExitMessage(0);
    EXPECT_EQ(Backup(), 0);
    ASSERT_EQ(callback.Events().size(), 1U);
    EXPECT_EQ(callback.Events()[0].text, "small");
}

TEST_F(RunnerFaultTest, NoMemoryForThePipesBufferIs200) {
    g_refusedBytes = 65536;
    EXPECT_EQ(Backup(), 200);
}

TEST_F(RunnerFaultTest, AnInterruptedWaitIsRepeated) {
    g_interruptedWaits = 5;
    tool.Sleep(200).ExitMessage(4);
    EXPECT_EQ(Backup(), 4);
    EXPECT_EQ(g_interruptedWaits, 0);
}
