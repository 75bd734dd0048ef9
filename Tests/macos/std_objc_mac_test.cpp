// What only the macOS sources have: Foundation, its exceptions and pools, and the kernel's process table.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/sysctl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <thread>

#include "Common/std/std_objc.h"
#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

constexpr char kNoUtf8[] = "\xFF\xFE";

/// Puts the process table back in order at the end of a test.
struct ProcessTable : testing::Test {
    ProcessTable() { g_processTableFaults = {}; }
    ~ProcessTable() override { g_processTableFaults = {}; }

    static std::string ThisProgram() {
        return fs::path(STD_OBJC_GetCurrentAppPath()).filename().string().substr(0, 16);
    }
};

}  // namespace

TEST_F(ProcessTable, HoldsThisProgram) {
    EXPECT_TRUE(STD_OBJC_ProcessExist(ThisProgram()));
    EXPECT_EQ(g_processTableFaults.reads, 1);
}

TEST_F(ProcessTable, IsReadAgainWhenItHasGrown) {
    g_processTableFaults.refused = 3;
    EXPECT_TRUE(STD_OBJC_ProcessExist(ThisProgram()));
    EXPECT_EQ(g_processTableFaults.reads, 4);
}

TEST_F(ProcessTable, IsGivenUpWhenTheKernelRefuses) {
    g_processTableFaults.error = EPERM;
    EXPECT_FALSE(STD_OBJC_ProcessExist(ThisProgram()));
    EXPECT_EQ(g_processTableFaults.reads, 1);
}

TEST_F(ProcessTable, OfAnotherShapeIsNotRead) {
    g_processTableFaults.excess = 1;
    EXPECT_FALSE(STD_OBJC_ProcessExist(ThisProgram()));
}

TEST(MacCreateProcess, StartsAProgramWithOneArgument) {
    const TemporaryFolder folder;
    EXPECT_TRUE(STD_OBJC_CreateProcess("/usr/bin/touch", folder.Path("a b; c")));
    for (int i = 0; i < 1000 && !fs::exists(folder.Path("a b; c")); ++i)
        usleep(10000);
    EXPECT_TRUE(fs::exists(folder.Path("a b; c")));
}

TEST(MacCreateProcess, NoExceptionLeavesIt) {
    const TemporaryFolder folder;
    EXPECT_FALSE(STD_OBJC_CreateProcess(folder.Path("none"), "x"));
    EXPECT_FALSE(STD_OBJC_CreateProcess(folder.Write("no program"), "x"));
    EXPECT_FALSE(STD_OBJC_CreateProcess(kNoUtf8, "x"));
    EXPECT_FALSE(STD_OBJC_CreateProcess("/bin/true", kNoUtf8));
}

TEST(MacFileCopy, APathThatIsNoTextIsRefused) {
    const TemporaryFolder folder;
    folder.Write("a", "kept");
    EXPECT_FALSE(STD_OBJC_FILE_CopyFile(folder.Path(kNoUtf8).c_str(), folder.Path("a").c_str()));
    EXPECT_FALSE(STD_OBJC_FILE_CopyFile(folder.Path("a").c_str(), folder.Path(kNoUtf8).c_str()));
    EXPECT_EQ(folder.Read("a"), "kept");
}

TEST(MacSystemVersion, IsTheSystemsTextAndName) {
    utsname system{};
    uname(&system);
    EXPECT_EQ(GetOSXVersion(), std::string(system.release) + "GSGNULinuxOperatingSystem")
        << "what GNUstep says";
}

TEST(MacFoundation, EveryCallHasItsPool) {
    const TemporaryFolder folder;
    folder.Write("a");
    testing::internal::CaptureStderr();
    std::thread([&folder] {  // a thread of the host, that Foundation does not know
        STD_OBJC_GetCurrentAppPath();
        STD_OBJC_CreateProcess("/bin/true", "x");
        STD_OBJC_CreateProcess(folder.Path("none"), "x");
        STD_OBJC_FILE_CopyFile(folder.Path("a").c_str(), folder.Path("b").c_str());
        GetOSXVersion();
    })
        .join();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::Not(HasSubstr("pool"))) << "nothing leaks";
}
