// The reference host, tried as a process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"
#include "Tests/support/ToolScript.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

const std::string kUdid = HostBundle::kUdid;

class HostTest : public testing::Test {
 protected:
    HostTest() { host.HasDevice(50); }

    void AwaitNoTool() const {
        for (int i = 0; i < 1000 && ToolRuns(); ++i)
            usleep(10000);
        EXPECT_FALSE(ToolRuns());
    }

    HostBundle host;
};

}  // namespace

TEST_F(HostTest, BackupTellsEachTenthAndWhereTheBackupIs) {
    const Finished backup = RunToEnd(host.Backup());
    EXPECT_EQ(backup.code, 0);
    EXPECT_EQ(backup.errors, "");
    const std::vector<std::string> lines = Lines(backup.output);
    std::vector<std::string> tenths;
    for (const std::string& line : lines) {
        if (line.find("% ") < 6) tenths.push_back(line.substr(0, 4));
    }
    EXPECT_THAT(tenths,
                ElementsAre(" 10%", " 20%", " 30%", " 40%", " 50%", " 60%", " 70%", " 80%", " 90%", "100%"));
    EXPECT_EQ(lines.front(), "asking the device");
    EXPECT_EQ(lines.back(), "  " + host.Backups() + "/" + kUdid);
    EXPECT_TRUE(fs::exists(host.Backups() + "/" + kUdid + "/Manifest.db"));
    EXPECT_THAT(host.BackupNames(), ElementsAre(kUdid)) << "nothing temporary stays";
}

TEST_F(HostTest, NothingOfTheLibrarysOwnPrintingIsSeen) {
    const Finished backup = RunToEnd(host.Backup());
    EXPECT_THAT(backup.output, AllOf(Not(HasSubstr("ExecTask")), Not(HasSubstr("ReadPipe"))));
}

TEST_F(HostTest, SpaceNeededAndSpaceFreeAreTold) {
    EXPECT_TRUE(std::regex_search(
        RunToEnd(host.Backup()).output,
        std::regex("the backup takes .* \\([0-9]+ bytes\\); .* has .* \\([0-9]+ bytes\\) free")));
}

TEST_F(HostTest, AFurtherBackupLeavesTheEarlierOnes) {
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    const std::vector<std::string> names = host.BackupNames();
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(names[0], kUdid);
    EXPECT_TRUE(std::regex_match(names[1], std::regex(kUdid + "-[0-9]{8}-[0-9]{6}")));
}

TEST_F(HostTest, JsonIsOneObjectALine) {
    const Finished backup = RunToEnd(host.Backup({"--json"}));
    EXPECT_EQ(backup.code, 0);
    const std::vector<Json> objects = Objects(backup.output);
    double percent = 0;
    for (Json object : objects) {
        EXPECT_EQ(object["message_type"], object == objects.back() ? "summary" : "status");
        if (!object.contains("percent_done")) continue;
        EXPECT_GE(object["percent_done"].get<double>(), percent);
        percent = object["percent_done"];
        EXPECT_LE(object["files_done"], object["total_files"]);
    }
    EXPECT_EQ(percent, 1.0);
    Json summary = objects.back();
    EXPECT_EQ(summary["command"], "backup");
    EXPECT_EQ(summary["udid"], kUdid);
    EXPECT_EQ(summary["path"], host.Backups() + "/" + kUdid);
    EXPECT_GE(summary["files"], 50);
    EXPECT_GE(summary["bytes"], 50'000);
}

TEST_F(HostTest, QuietPrintsNothing) {
    const Finished backup = RunToEnd(host.Backup({"--quiet"}));
    EXPECT_EQ(backup.code, 0);
    EXPECT_EQ(backup.output + backup.errors, "");
}

TEST_F(HostTest, QuietStillPrintsErrors) {
    const Finished backup = host.Run({"backup", "00008110-00000000000000FF", "--to", host.Backups(), "-q"});
    EXPECT_EQ(backup.code, 3);
    EXPECT_EQ(backup.output, "");
    EXPECT_THAT(backup.errors, HasSubstr("kruteinctl: "));
}

TEST_F(HostTest, ATerminalShowsABarThatNeverRunsBackwards) {
    host.HasDevice(400);
    Command command = host.Backup();
    command.terminal = true;
    command.columns = 80;
    command.environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "300";
    const Finished backup = RunToEnd(command);
    EXPECT_EQ(backup.code, 0);
    const std::regex bar("\\[(#*)(-*)\\] +([0-9]+)%  ([0-9]+)/([0-9]+) files  0:0[0-9]");
    int percent = 0;
    int bars = 0;
    for (std::sregex_iterator found(backup.output.begin(), backup.output.end(), bar);
         found != std::sregex_iterator(); ++found, ++bars) {
        EXPECT_GE(std::stoi((*found)[3]), percent);
        percent = std::stoi((*found)[3]);
    }
    EXPECT_EQ(percent, 100);
    EXPECT_GE(bars, 5);
    EXPECT_THAT(backup.output, HasSubstr("left"));
    EXPECT_THAT(backup.output, HasSubstr("asking the device … 0:00"));
    const std::string afterBar = backup.output.substr(backup.output.rfind("\r\x1b[K") + 4);
    EXPECT_THAT(afterBar, StartsWith("Backed up " + kUdid)) << "the bar is gone at the end";
}

TEST_F(HostTest, ATerminalThatCannotDrawGetsLines) {
    Command command = host.Backup();
    command.terminal = true;
    command.environment["TERM"] = "dumb";
    const Finished backup = RunToEnd(command);
    EXPECT_EQ(backup.code, 0);
    EXPECT_EQ(backup.output.find('\x1b'), std::string::npos) << backup.output;
    EXPECT_THAT(backup.output, HasSubstr("100%  "));
}

TEST_F(HostTest, TheUdidIsHandedOnInItsCanonicalForm) {
    const Finished backup = host.Run({"backup", "0000811000000000000000aa", "--to", host.Backups()});
    EXPECT_EQ(backup.code, 0);
    EXPECT_THAT(host.BackupNames(), ElementsAre(kUdid));
}

TEST_F(HostTest, RestoreTakesTheNewestBackup) {
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    const Finished restore = host.Run({"restore", kUdid, "--from", host.Backups()});
    EXPECT_EQ(restore.code, 0);
    EXPECT_EQ(Lines(restore.output).back(), "  " + host.Backups() + "/" + host.BackupNames()[1]);
    EXPECT_THAT(restore.output, HasSubstr("100%"));
}

TEST_F(HostTest, RestoreTakesOneBackupByItsPath) {
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    fs::rename(host.Backups() + "/" + kUdid, host.Backups() + "/kept for later");
    const Finished restore =
        host.Run({"restore", kUdid, "--from", host.Backups() + "/kept for later", "--json"});
    EXPECT_EQ(restore.code, 0);
    EXPECT_EQ(Objects(restore.output).back()["path"], host.Backups() + "/kept for later");
}

TEST_F(HostTest, SizeIsThatOfTheFiles) {
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    std::uintmax_t bytes = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(host.Backups())) {
        if (entry.is_regular_file()) bytes += entry.file_size();
    }
    const Finished size = host.Run({"size", kUdid, "--from", host.Backups(), "--json"});
    EXPECT_EQ(size.code, 0);
    EXPECT_EQ(Objects(size.output).back()["bytes"], bytes);
    EXPECT_THAT(host.Run({"size", kUdid, "--from", host.Backups()}).output,
                HasSubstr("(" + std::to_string(bytes) + " bytes)"));
}

TEST_F(HostTest, ADeviceOfVersion9IsBackedUpAndRestored) {
    const std::string udid = "5d41f0a9c2b7e63814d09a5be7c3f2168a90d4e1";
    fs::copy(HOST_RESOURCES "/SampleDevices/" + udid + ".json", host.Folder().Path("devices"));
    const Finished backup = host.Run({"backup", udid, "--to", host.Backups(), "--json"});
    ASSERT_EQ(backup.code, 0) << backup.output;
    std::uintmax_t bytes = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(host.Backups() + "/" + udid)) {
        EXPECT_TRUE(entry.is_regular_file())
            << entry.path() << " is in the older layout, which has no folders";
        bytes += entry.file_size();
    }
    EXPECT_EQ(Objects(backup.output).back()["bytes"], bytes);
    EXPECT_TRUE(fs::exists(host.Backups() + "/" + udid + "/Manifest.mbdb"));
    const Finished restore = host.Run({"restore", udid, "--from", host.Backups()});
    EXPECT_EQ(restore.code, 0) << restore.errors;
    EXPECT_THAT(restore.output, HasSubstr("100%"));

    fs::remove(host.Backups() + "/" + udid + "/3d0d7e5fb2ce288813306e4d4636395e047a3d28");
    EXPECT_EQ(host.Run({"restore", udid, "--from", host.Backups()}).code, 8);
}

// Failures: each cause has its code.

TEST_F(HostTest, NoSuchDevice) {
    const Finished backup =
        host.Run({"backup", "00008110-00000000000000FF", "--to", host.Backups(), "--json"});
    EXPECT_EQ(backup.code, 3);
    Json error = Objects(backup.output).back();
    EXPECT_EQ(error["message_type"], "error");
    EXPECT_EQ(error["exit_code"], 3);
    EXPECT_EQ(error["cause"], "no_device");
    EXPECT_EQ(error["tool_code"], 11);
    EXPECT_THAT(error["message"], HasSubstr("no such device is connected (code 11)"));
    EXPECT_FALSE(fs::exists(host.Backups())) << "no empty folder is left for a device that is not there";
}

TEST_F(HostTest, WrongUsageStartsNothing) {
    EXPECT_EQ(host.Run({}).code, 2);
    EXPECT_EQ(host.Run({"bakup", kUdid}).code, 2);
    EXPECT_EQ(host.Run({"backup", "no-device", "--to", host.Backups()}).code, 2);
    for (const char* name : {"a\"b", "a`b", "a$b", "a\\b", "a\nb", "a|b"}) {
        const Finished backup = host.Run({"backup", kUdid, "--to", host.Folder().Path(name)});
        EXPECT_EQ(backup.code, 2) << name;
        EXPECT_THAT(backup.errors, HasSubstr("cannot be handed to the backup tool")) << name;
        EXPECT_FALSE(fs::exists(host.Folder().Path(name)));
    }
    EXPECT_FALSE(fs::exists(host.Folder().Path("logs"))) << "the library has not been called";
}

TEST_F(HostTest, AMissingTool) {
    host.HasNoTool();
    const Finished backup = RunToEnd(host.Backup());
    EXPECT_EQ(backup.code, 4);
    EXPECT_THAT(backup.errors, HasSubstr(host.ToolPath()));
    EXPECT_FALSE(fs::exists(host.Backups()));
}

TEST_F(HostTest, AToolThatIsNoProgram) {
    host.HasNoTool();
    host.Folder().Write("Krutein.app/Contents/Frameworks/HandsetArchiver", "no program");
    EXPECT_EQ(RunToEnd(host.Backup()).code, 4);
}

TEST_F(HostTest, AToolThatLiesWhereTheShellWouldInterpretItsPath) {
    const std::string odd = host.Folder().Path("odd$HOME");
    fs::copy(host.Folder().Path("Krutein.app"), odd,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    Command command = host.Backup();
    command.words[0] = odd + "/Contents/MacOS/kruteinctl";
    EXPECT_EQ(RunToEnd(command).code, 4);
}

TEST_F(HostTest, AToolThatEndsWithoutAResult) {
    host.HasScriptedTool();
    ToolScript tool;
    tool.Progress(0, 0, "Total size: 5 bytes").End(1);
    const Finished backup = RunToEnd(host.Backup());
    EXPECT_EQ(backup.code, 5);
    EXPECT_THAT(backup.errors, HasSubstr("(code 107)"));
}

TEST_F(HostTest, AToolsOwnCodeIsSaidAsANumber) {
    host.HasScriptedTool();
    ToolScript tool;
    tool.Step("say what the tool has to say").ExitMessage(4711);
    const Finished backup = RunToEnd(host.Backup());
    EXPECT_EQ(backup.code, 1);
    EXPECT_THAT(backup.errors, HasSubstr("what the tool has to say\n"));
    EXPECT_THAT(backup.errors, HasSubstr("the backup tool failed (code 4711)"));
}

TEST_F(HostTest, AToolThatTellsNoSize) {
    host.HasScriptedTool();
    ToolScript tool;
    tool.Progress(0, 0, "no size here").ExitMessage(0);
    EXPECT_EQ(RunToEnd(host.Backup()).code, 1);
}

TEST_F(HostTest, ADestinationThatCannotBeWritten) {
    const std::string file = host.Folder().Write("file", "kept");
    for (const std::string& folder : {file, file + "/below", std::string("/proc/krutein")}) {
        const Finished backup = host.Run({"backup", kUdid, "--to", folder});
        EXPECT_EQ(backup.code, 6) << folder;
        EXPECT_THAT(backup.errors, HasSubstr("cannot write to " + folder));
    }
    EXPECT_EQ(host.Folder().Read("file"), "kept");
}

TEST_F(HostTest, AFolderOfTheUsersThatIsInTheWay) {
    host.Folder().Write("backups/temp/holiday.jpg", "kept");
    const Finished backup = RunToEnd(host.Backup());
    EXPECT_EQ(backup.code, 6);
    EXPECT_EQ(host.Folder().Read("backups/temp/holiday.jpg"), "kept");
}

TEST_F(HostTest, NotEnoughSpaceIsNoticedBeforeTheBackupStarts) {
    host.HasDevice(16'000, 1'000'000'000);
    const Finished backup = RunToEnd(host.Backup());
    EXPECT_EQ(backup.code, 7);
    EXPECT_TRUE(std::regex_search(
        backup.errors,
        std::regex("not enough space: the backup takes 16\\.0 TB \\([0-9]+ bytes\\); .* has .* free")))
        << backup.errors;
    EXPECT_FALSE(fs::exists(host.Backups()));
}

TEST_F(HostTest, ADiskThatGetsFullInTheMiddle) {
    host.HasDevice(5, 500'000);
    Command command = host.Backup();
    command.prepare = [] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{300'000, 300'000};
        setrlimit(RLIMIT_FSIZE, &small);
    };
    const Finished backup = RunToEnd(command);
    EXPECT_EQ(backup.code, 7);
    EXPECT_THAT(backup.errors, HasSubstr("the disk is full (code 13)"));
    EXPECT_FALSE(fs::exists(host.Backups())) << "nothing half-made stays";
}

TEST_F(HostTest, ADamagedBackup) {
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    fs::path victim;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(host.Backups())) {
        if (entry.path().filename().string().size() == 40) victim = entry.path();
    }
    fs::remove(victim);
    const Finished restore = host.Run({"restore", kUdid, "--from", host.Backups()});
    EXPECT_EQ(restore.code, 8);
    EXPECT_THAT(restore.errors, HasSubstr("the backup is damaged (code 14)"));
}

TEST_F(HostTest, NoBackup) {
    fs::create_directories(host.Backups());
    EXPECT_EQ(host.Run({"restore", kUdid, "--from", host.Backups()}).code, 9);
    EXPECT_EQ(host.Run({"size", kUdid, "--from", host.Backups()}).code, 9);
    EXPECT_EQ(host.Run({"size", kUdid, "--from", host.Folder().Path("none")}).code, 9);
}

// Stopping.

class HostStopTest : public HostTest {
 protected:
    HostStopTest() { host.HasDevice(2000); }

    Command SlowBackup(const std::vector<std::string>& more = {}) const {
        Command command = host.Backup(more);
        command.environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "400";
        return command;
    }
};

TEST_F(HostStopTest, SignalsStopTheRunAndLeaveNothing) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        ChildProcess kruteinctl(SlowBackup());
        ASSERT_TRUE(kruteinctl.AwaitOutput("10%"));
        kruteinctl.Signal(number);
        EXPECT_EQ(kruteinctl.Wait(), 130);
        EXPECT_EQ(kruteinctl.Errors(), "kruteinctl: stopped; no backup was made\n");
        EXPECT_FALSE(ToolRuns());
        EXPECT_FALSE(fs::exists(host.Backups()));
    }
}

TEST_F(HostStopTest, CtrlCOnATerminalReachesTheToolToo) {
    Command command = SlowBackup();
    command.terminal = true;
    ChildProcess kruteinctl(command);
    ASSERT_TRUE(kruteinctl.AwaitOutput("10%"));
    kill(-kruteinctl.Pid(), SIGINT);  // as a terminal does: to the whole group
    EXPECT_EQ(kruteinctl.Wait(), 130);
    EXPECT_THAT(kruteinctl.Output(), HasSubstr("stopping"));
    EXPECT_THAT(kruteinctl.Output(), Not(HasSubstr("pkill")));
    EXPECT_FALSE(ToolRuns());
    EXPECT_FALSE(fs::exists(host.Backups()));
}

TEST_F(HostStopTest, AnEarlierBackupIsNotTouched) {
    host.HasDevice(20);
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    host.HasDevice(2000);
    ChildProcess kruteinctl(SlowBackup({"--json"}));
    ASSERT_TRUE(kruteinctl.AwaitOutput("\"percent_done\":0.1"));
    kruteinctl.Signal(SIGINT);
    EXPECT_EQ(kruteinctl.Wait(), 130);
    EXPECT_EQ(Objects(kruteinctl.Output()).back()["cause"], "stopped");
    EXPECT_THAT(host.BackupNames(), ElementsAre(kUdid));
    EXPECT_EQ(host.Run({"restore", kUdid, "--from", host.Backups()}).code, 0) << "it is whole";
}

TEST_F(HostStopTest, AtAnyMomentNothingIsLeft) {
    for (const int delay : {0, 30, 100, 200, 300, 600}) {
        ChildProcess kruteinctl(SlowBackup());
        usleep(static_cast<useconds_t>(delay) * 1000);
        kruteinctl.Signal(SIGTERM);
        const int code = kruteinctl.Wait();
        // Before its first line the program has not taken the signals over.
        EXPECT_TRUE(code == 130 || (code == 128 + SIGTERM && delay <= 30)) << code << " after " << delay;
        AwaitNoTool();
        EXPECT_FALSE(fs::exists(host.Backups())) << "after " << delay;
    }
}

TEST_F(HostStopTest, ARestoreCanBeStopped) {
    host.HasDevice(2000);
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    Command command = host.Kruteinctl({"restore", kUdid, "--from", host.Backups()});
    command.environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "400";
    ChildProcess kruteinctl(command);
    ASSERT_TRUE(kruteinctl.AwaitOutput("10%"));
    kruteinctl.Signal(SIGINT);
    EXPECT_EQ(kruteinctl.Wait(), 130);
    EXPECT_THAT(kruteinctl.Errors(), HasSubstr("stopped"));
    EXPECT_FALSE(ToolRuns());
    EXPECT_THAT(host.BackupNames(), ElementsAre(kUdid));
}

TEST_F(HostStopTest, ASecondRunIntoTheFolderIsRefusedAndTheFirstGoesOn) {
    host.HasDevice(600);
    ChildProcess first(SlowBackup());
    ASSERT_TRUE(first.AwaitOutput("10%"));
    const Finished second = RunToEnd(host.Backup());
    EXPECT_EQ(second.code, 1);
    EXPECT_THAT(second.errors, HasSubstr("another backup into " + host.Backups() + " is running"));
    EXPECT_EQ(first.Wait(), 0);
    EXPECT_THAT(host.BackupNames(), ElementsAre(kUdid));
}

TEST_F(HostStopTest, WhatAKilledRunLeavesGoesWithTheNext) {
    {
        ChildProcess kruteinctl(SlowBackup());
        ASSERT_TRUE(kruteinctl.AwaitOutput("10%"));
        kruteinctl.Signal(SIGKILL);
        EXPECT_EQ(kruteinctl.Wait(), 128 + SIGKILL);
    }
    AwaitNoTool();  // its tool notices that nobody listens any more
    EXPECT_THAT(host.BackupNames(), ElementsAre("temp"));
    host.HasDevice(20);
    EXPECT_EQ(RunToEnd(host.Backup()).code, 0);
    EXPECT_THAT(host.BackupNames(), ElementsAre(kUdid));
}
