// The facade with tools that go wrong, and with a disk that does: what the host is told, and what stays.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "Module/Sync/Backup.h"
#include "Tests/support/BackupBuilder.h"
#include "Tests/support/FullDisk.h"
#include "Tests/support/RecordingCallBack.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/ToolScript.h"

namespace fs = std::filesystem;

namespace {

/// A tool that goes wrong in one way.
struct ToolFault {
    const char* device;              ///< names the fault
    std::vector<std::string> steps;  ///< of ScriptedTool.cpp
    int code;                        ///< what the host is told; 0 for a backup that is done
};

const std::vector<ToolFault>& ToolFaults() {
    static const std::vector<ToolFault> faults = {
        {"killed-at-its-start", {"sh kill -9 $PPID"}, 107},
        {"killed-in-the-middle", {"make-backup", "progress 1 2 a", "sh kill -9 $PPID"}, 107},
        {"killed-after-its-exit-message", {"make-backup", "exit-message 0", "sh kill -9 $PPID"}, 0},
        {"killed-after-saying-that-it-failed", {"make-backup", "exit-message 13", "sh kill -9 $PPID"}, 13},
        {"crashed", {"make-backup", "progress 1 2 a", "sh kill -SEGV $PPID"}, 107},
        {"without-exit-message", {"make-backup", "progress 1 2 a", "end 0"}, 107},
        {"closing-the-pipe", {"make-backup", "close-pipe", "sleep 100"}, 107},
        {"half-a-header", {"make-backup", "bytes 0200000000"}, 107},
        {"half-a-payload", {"make-backup", "header 1 1 2 100", "fill 50"}, 107},
        {"length-of-2-gib", {"make-backup", "header 2 0 0 2147483647", "fill 100000"}, 107},
        {"negative-length", {"make-backup", "header 1 1 2 -2147483648", "exit-message 0"}, 0},
        {"unknown-types",
         {"make-backup", "header 3 1 2 4", "fill 4", "header 4294967295 0 0 0", "exit-message 0"},
         0},
        {"flood", {"make-backup", "many 100000", "exit-message 0"}, 0},
    };
    return faults;
}

std::map<std::string, std::string> ContentsOf(const std::string& folder) {
    std::map<std::string, std::string> contents;
    for (const std::string& name : FilesBelow(folder))
        contents[name] = ReadWholeFile(fs::path(folder) / name);
    return contents;
}

/// A folder on another file system than the given one.
std::string ParentOnAnotherFileSystem(const std::string& folder) {
    struct stat here {};
    stat(folder.c_str(), &here);
    for (const char* parent : {"/dev/shm", "/tmp", "/var/tmp", "/run", "/mnt", "."}) {
        struct stat there {};
        if (stat(parent, &there) == 0 && there.st_dev != here.st_dev && access(parent, W_OK) == 0) {
            return fs::absolute(parent).string();
        }
    }
    return {};
}

class FacadeFaultTest : public testing::Test {
 protected:
    ~FacadeFaultTest() override { EXPECT_EQ(AwaitResources(before), before); }

    ResourceCount before = ResourceCount::Now();
    CBackup* facade = CBackup::GetInstance();
    TemporaryFolder folder;
    ToolScript tool;
};

/// The temporary folder of the facade lies on another file system.
class OtherFileSystemTest : public FacadeFaultTest {
 protected:
    OtherFileSystemTest() {
        const std::string parent = ParentOnAnotherFileSystem(folder.Path());
        EXPECT_NE(parent, "") << "no second file system to be had";
        other = parent + "/krutein-test-" + std::to_string(getpid());
        fs::create_directories(other + "/the-device/3d");
        fs::create_directory_symlink(other, folder.Path("temp"));
        std::ofstream(other + "/the-device/3d/file") << std::string(100'000, 'x');
        std::ofstream(other + "/the-device/Manifest.db") << "a catalogue";
        folder.Write("the-device/Manifest.db", "an earlier one");
        made = ContentsOf(other + "/the-device");
    }
    ~OtherFileSystemTest() override { fs::remove_all(other); }

    std::string other;
    std::map<std::string, std::string> made;
};

}  // namespace

TEST_F(FacadeFaultTest, AToolThatGoesWrongIsToldAndTakesNothingWithIt) {
    std::map<std::string, RecordingSyncCallBack> hosts;
    for (const ToolFault& fault : ToolFaults()) {
        const std::string device = fault.device;
        tool.For(device);
        for (const std::string& step : fault.steps)
            tool.Step(step);
        folder.Write(fs::path(device) / device / "Manifest.db", "an earlier one");
        facade->StartBackup(fault.device, (folder.Path(device) + "/").c_str(), &hosts[device]);
    }
    for (const ToolFault& fault : ToolFaults()) {
        const std::string device = fault.device;
        const std::string mine = folder.Path(device) + "/";
        SCOPED_TRACE(device);
        const int event = fault.code == 0 ? 3 : 4;
        ASSERT_TRUE(hosts[device].Await(event));
        const RecordedEvent end = hosts[device].Events(event)[0];
        EXPECT_EQ(static_cast<int>(end.arg2), fault.code);
        EXPECT_EQ(hosts[device].Events(event == 3 ? 4 : 3).size(), 0U);
        EXPECT_EQ(ReadWholeFile(mine + device + "/Manifest.db"), "an earlier one");
        const bool toolMadeOne = fault.steps[0] == "make-backup";
        if (toolMadeOne) {
            const fs::path left = fault.code == 0 ? fs::path(end.text) : fs::path(mine) / "temp" / device;
            EXPECT_EQ(ReadWholeFile(left / "Manifest.db"), "made by a script") << "it stays where it is";
        }
    }
    EXPECT_EQ(AwaitResources(before), before);
    // The next backup is as good as ever.
    tool.For("next").MakeBackup().ExitMessage(0);
    RecordingSyncCallBack host;
    facade->StartBackup("next", folder.Path("next-").c_str(), &host);
    ASSERT_TRUE(host.Await(3));
    EXPECT_EQ(ReadWholeFile(host.Events(3)[0].text + "/Manifest.db"), "made by a script");
}

TEST_F(FacadeFaultTest, ADestinationThatVanishesLeavesTheOthers) {
    folder.Write("other/the-device/Manifest.db", "an earlier one");
    tool.MakeBackup().Shell("rm -rf $(dirname $JOB)").ExitMessage(0);
    RecordingSyncCallBack host;
    facade->StartBackup("the-device", (folder.Path("gone") + "/").c_str(), &host);
    ASSERT_TRUE(host.Await(3));
    EXPECT_FALSE(fs::exists(host.Events(3)[0].text)) << "a host looks whether the backup is there";
    EXPECT_EQ(folder.Read("other/the-device/Manifest.db"), "an earlier one");
}

TEST_F(OtherFileSystemTest, TheBackupIsMovedWhole) {
    const std::string path = facade->Rename(folder.Path() + "/", "the-device", 0);
    EXPECT_THAT(path, testing::StartsWith(folder.Path("the-device-")));
    EXPECT_EQ(ContentsOf(path), made);
    EXPECT_FALSE(fs::exists(fs::symlink_status(folder.Path("temp"))));
    EXPECT_FALSE(fs::exists(other + "/the-device"));
    EXPECT_EQ(folder.Read("the-device/Manifest.db"), "an earlier one");
}

TEST_F(OtherFileSystemTest, ABackupThatCannotBeMovedIsNotRemoved) {
    std::string path;
    {
        const FullDisk full(5000);
        path = facade->Rename(folder.Path() + "/", "the-device", 0);
    }
    EXPECT_NE(ContentsOf(path), made) << "the disk is full";
    EXPECT_EQ(ContentsOf(folder.Path("temp/the-device")), made) << "it is the only one that is whole";
    EXPECT_EQ(folder.Read("the-device/Manifest.db"), "an earlier one");
    // With room on the disk again it is moved by the next try.
    EXPECT_EQ(ContentsOf(facade->Rename(folder.Path() + "/", "the-device", 0)), made);
    EXPECT_FALSE(fs::exists(fs::symlink_status(folder.Path("temp"))));
}
