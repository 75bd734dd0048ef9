// The reference host while disks, files and the host itself give way: what it says, and that earlier backups
// are as they were.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"
#include "Tests/support/BackupBuilder.h"
#include "Tests/support/FullDisk.h"
#include "Tests/support/ToolScript.h"

using testing::HasSubstr;

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

const std::string kUdid = HostBundle::kUdid;

constexpr char kSmallPhone[] = R"({
    "photos": {"count": 10, "bytesEach": 1000},
    "messages": {"chats": 2, "count": 20, "attachments": 3, "attachmentBytes": 100}})";

std::map<std::string, std::string> ContentsOf(const std::string& folder) {
    std::map<std::string, std::string> contents;
    for (const std::string& name : FilesBelow(folder))
        contents[name] = ReadWholeFile((fs::path(folder) / name).string());
    return contents;
}

class HostFaultTest : public testing::Test {
 protected:
    HostFaultTest() { host.HasDeviceWith(kSmallPhone); }

    Command Typed(const std::string& types) const { return host.Backup({"--types", types, "--json"}); }

    /// A typed backup and a full one of before, which must stay as they are.
    void HasEarlierBackups() {
        for (const Command& command : {Typed("messages"), host.Backup({"--json"})}) {
            const Finished backup = RunToEnd(command);
            ASSERT_EQ(backup.code, 0) << backup.output;
            earlier.push_back(Objects(backup.output).back()["path"]);
        }
        Remember(fs::path(earlier[0]).parent_path());
        Remember(earlier[1]);
    }

    /// The record of an earlier backup and a catalogue, where nobody looks into them.
    std::string HasEarlierRecord() {
        const std::string job = "backups/Velmora_SMS_Backup/2001_01_01__01_01_01";
        host.Folder().Write(job + "/" + kUdid + "/Manifest.db");
        host.Folder().Write(job + "/backup_config.ini",
                            "[backup_info]\ndeviceid = " + kUdid + "\nbackuptype = 8\nisvalid = 1\n");
        Remember(host.Folder().Path(job));
        return host.Folder().Path(job);
    }

    void EarlierBackupsAreWhole() const {
        for (const auto& [folder, content] : contents)
            EXPECT_EQ(ContentsOf(folder), content) << folder;
    }

    /// The same, said by kruteinctl.
    void EarlierBackupsPass() const {
        std::string listed;
        for (const Json& each : Objects(host.Run({"list", host.Backups(), "--json"}).output)) {
            if (each["message_type"] == "backup" && each["state"] == "valid")
                listed += std::string(each["path"]) + "\n";
            if (each["message_type"] == "without_record") listed += std::string(each["path"]) + "\n";
        }
        for (const std::string& path : earlier) {
            EXPECT_THAT(listed, HasSubstr(path + "\n"));
            const Finished verify = host.Run({"verify", path});
            EXPECT_EQ(verify.code, 0) << verify.output;
        }
    }

    HostBundle host;
    std::vector<std::string> earlier;

 private:
    void Remember(const std::string& folder) { contents[folder] = ContentsOf(folder); }

    std::map<std::string, std::map<std::string, std::string>> contents;
};

/// Waits until what a killed host has left behind has ended too.
void AwaitNoTool() {
    for (int i = 0; i < 2000 && ToolRuns(); ++i)
        usleep(5000);
    EXPECT_FALSE(ToolRuns());
}

unsigned Seed() {
    const char* const given = std::getenv("KRUTEIN_TEST_SEED");
    return given == nullptr ? std::random_device{}() : static_cast<unsigned>(std::strtoul(given, nullptr, 0));
}

}  // namespace

TEST_F(HostFaultTest, KilledAtAnyMomentItLeavesEarlierBackupsWhole) {
    constexpr int kMoments = 50;
    const unsigned seed = Seed();
    std::cout << "seed " << seed << " (to repeat: KRUTEIN_TEST_SEED=" << seed << ")\n";
    HasEarlierBackups();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(RunToEnd(Typed("messages")).code, 0);
    const auto length =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    std::mt19937 random(seed);
    std::uniform_int_distribution<useconds_t> moment(0, static_cast<useconds_t>(length.count()));
    int killed = 0;
    for (int i = 0; i < kMoments; ++i) {
        ChildProcess kruteinctl(Typed("messages"));
        usleep(moment(random));
        kruteinctl.Signal(SIGKILL);
        const int code = kruteinctl.Wait();
        EXPECT_TRUE(code == 128 + SIGKILL || code == 0) << code;
        if (code != 0) ++killed;
        AwaitNoTool();
        EarlierBackupsAreWhole();
    }
    EXPECT_GE(killed, kMoments / 2);
    EXPECT_EQ(RunToEnd(Typed("messages")).code, 0) << "the next job";
    EarlierBackupsAreWhole();
    EarlierBackupsPass();
}

TEST_F(HostFaultTest, ARecordThatFindsNoRoomIsNoSuccess) {
    HasEarlierRecord();
    host.HasScriptedTool();
    ToolScript tool;
    tool.Shell(R"(case "$JOB" in *temp) ;; *) mkdir -p "$BACKUP"; echo x > "$BACKUP/Manifest.db";; esac)")
        .Progress(1, 1, "Total size: 5 bytes")
        .ExitMessage(0);
    Command command = Typed("full");
    command.prepare = [] { new FullDisk(200); };
    const Finished backup = RunToEnd(command);
    EXPECT_EQ(backup.code, 6);
    EXPECT_THAT(backup.output, HasSubstr("(code 1009)"));
    EXPECT_FALSE(fs::exists(host.Backups() + "/Velmora_Full_Backup"));
    EarlierBackupsAreWhole();
}

TEST_F(HostFaultTest, AFullBackupWhoseDestinationVanishesIsNoSuccess) {
    host.HasScriptedTool();
    ToolScript tool;
    tool.Shell("rm -rf $JOB").Progress(1, 1, "Total size: 5 bytes").ExitMessage(0);
    const Finished backup = RunToEnd(host.Backup());
    EXPECT_EQ(backup.code, 6) << backup.errors;
    EXPECT_THAT(backup.errors, HasSubstr("could not be moved"));
}

TEST_F(HostFaultTest, AConfigurationThatCannotBeReadIsToldAndDeletesNothing) {
    HasEarlierRecord();
    host.HasConfiguration("this is no configuration");
    EXPECT_EQ(RunToEnd(Typed("messages")).code, 12);
    host.HasConfiguration("[backup_SMS]\nrelativePath = x'; DROP TABLE Files; --\n");
    EXPECT_EQ(RunToEnd(Typed("messages")).code, 10) << "the quote makes it no query";
    fs::remove(host.Folder().Path(HostBundle::kConfiguration));
    fs::create_directory(host.Folder().Path(HostBundle::kConfiguration));
    EXPECT_EQ(RunToEnd(Typed("messages")).code, 12);
    EarlierBackupsAreWhole();
}

TEST_F(HostFaultTest, AHugeConfigurationIsRead) {
    std::string ini = ReadWholeFile(HOST_RESOURCES "/Config/vm_config.ini");
    for (int i = 0; i < 4000; ++i)
        ini += "[section_" + std::to_string(i) + "]\nrelativePath = " + std::string(400, 'x') + "\n";
    host.HasConfiguration(ini);
    EXPECT_EQ(RunToEnd(Typed("messages")).code, 0);
}

TEST_F(HostFaultTest, ARecordThatIsALinkIsNotRead) {
    const std::string job = HasEarlierRecord();
    fs::rename(job + "/backup_config.ini", host.Folder().Path("elsewhere.ini"));
    fs::create_symlink(host.Folder().Path("elsewhere.ini"), job + "/backup_config.ini");
    const Finished list = host.Run({"list", host.Backups(), "--json"});
    for (const Json& each : Objects(list.output))
        EXPECT_NE(each["message_type"], "backup") << each;
}
