// Typed backups with the reference host, tried as a process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>

#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"
#include "Tests/support/ToolScript.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

const std::string kUdid = HostBundle::kUdid;

/// Something of each app, and 50 photos.
constexpr char kPhone[] = R"({
    "photos": {"count": 50, "bytesEach": 1000},
    "messages": {"chats": 2, "count": 20, "attachments": 3, "attachmentBytes": 100},
    "whatsapp": {"chats": 2, "messages": 20},
    "wechat": {"accounts": 1, "chats": 2, "messages": 20},
    "contacts": {"count": 5, "images": 2}})";

class TypedBackupTest : public testing::Test {
 protected:
    TypedBackupTest() { host.HasDeviceWith(kPhone); }

    Command BackUp(const std::string& types, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words = {"--types", types};
        words.insert(words.end(), more.begin(), more.end());
        return host.Backup(words);
    }

    Finished BackedUp(const std::string& types, const std::vector<std::string>& more = {}) const {
        return RunToEnd(BackUp(types, more));
    }

    /// The folders of the jobs of a type.
    std::vector<std::string> Jobs(const std::string& typeFolder) const {
        std::vector<std::string> jobs;
        std::error_code error;
        for (const fs::directory_entry& entry :
             fs::directory_iterator(host.Backups() + "/" + typeFolder, error))
            jobs.push_back(entry.path().string());
        return jobs;
    }

    /// The names of the files of a backup that are file IDs.
    static std::set<std::string> Hashed(const std::string& backup) {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(backup)) {
            const std::string name = entry.path().filename().string();
            if (entry.is_regular_file() && name.size() == 40) names.insert(name);
        }
        return names;
    }

    HostBundle host;
};

}  // namespace

TEST_F(TypedBackupTest, KeepsTheFilesOfItsTypesAndTheirRecord) {
    const Finished backup = BackedUp("messages,contacts", {"--json"});
    ASSERT_EQ(backup.code, 0) << backup.output;
    const Json summary = Objects(backup.output).back();
    EXPECT_EQ(summary["types"], "messages, contacts");
    const std::vector<std::string> jobs = Jobs("Velmora_SMS_Contact_Backup");
    ASSERT_THAT(jobs, SizeIs(1));
    EXPECT_EQ(summary["path"], jobs.front() + "/" + kUdid);
    EXPECT_TRUE(fs::exists(jobs.front() + "/backup_config.ini"));
    const std::set<std::string> kept = Hashed(jobs.front() + "/" + kUdid);
    EXPECT_TRUE(kept.count("3d0d7e5fb2ce288813306e4d4636395e047a3d28")) << "the messages";
    EXPECT_TRUE(kept.count("31bb7ba8914766d4ba40d6dfb6113c8b614be442")) << "the contacts";
    EXPECT_TRUE(kept.count("cd6702cea29fe89cf280a76794405adb17f9a0ee")) << "their pictures";
    EXPECT_FALSE(kept.count("7c7fba66680ef796b916b067077cc246adacf01d")) << "not WhatsApp";
    EXPECT_THAT(kept, SizeIs(3 + 3)) << "these and the attachments";
}

TEST_F(TypedBackupTest, EveryCombinationKeepsItsOwnFilesOnly) {
    ASSERT_EQ(RunToEnd(host.Backup({"--quiet"})).code, 0);
    std::set<std::string> all = Hashed(host.Backups() + "/" + kUdid);
    std::set<std::string> together;
    for (const std::string types : {"messages", "whatsapp", "wechat"}) {
        const Finished backup = BackedUp(types, {"--json"});
        ASSERT_EQ(backup.code, 0) << types;
        for (const std::string& name : Hashed(Objects(backup.output).back()["path"]))
            EXPECT_TRUE(together.insert(name).second) << name << " is kept by two types";
    }
    const Finished backup = BackedUp("wechat,whatsapp,messages", {"--json"});
    ASSERT_EQ(backup.code, 0);
    EXPECT_EQ(Hashed(Objects(backup.output).back()["path"]), together);
    EXPECT_LT(together.size() + 50, all.size()) << "no photos";
}

TEST_F(TypedBackupTest, OfVersion9KeepsTheSameFiles) {
    for (const std::string types : {"messages", "messages,whatsapp,wechat,contacts"}) {
        host.HasDeviceWith(kPhone);
        const Finished newer = BackedUp(types, {"--json"});
        ASSERT_EQ(newer.code, 0) << newer.output;
        const std::set<std::string> expected = Hashed(Objects(newer.output).back()["path"]);
        fs::remove_all(host.Backups());  // two jobs of one second would have one folder
        host.HasDeviceWith(kPhone, "9.3.5");
        const Finished older = BackedUp(types, {"--json"});
        ASSERT_EQ(older.code, 0) << older.output;
        const std::string path = Objects(older.output).back()["path"];
        EXPECT_EQ(Hashed(path), expected) << types;
        EXPECT_TRUE(fs::exists(path + "/Manifest.mbdb"));
        EXPECT_THAT(ReadWholeFile(path + "/../backup_config.ini"), HasSubstr("hashcache = ")) << types;
        fs::remove_all(host.Backups());
    }
}

TEST_F(TypedBackupTest, FullKeepsEverything) {
    const Finished backup = BackedUp("full", {"--json"});
    ASSERT_EQ(backup.code, 0);
    EXPECT_THAT(Jobs("Velmora_Full_Backup"), SizeIs(1));
    EXPECT_GT(Hashed(Objects(backup.output).back()["path"]).size(), 50U);
}

TEST_F(TypedBackupTest, ContactsAloneAreARecordWithoutFiles) {
    const Finished backup = BackedUp("contacts");
    EXPECT_EQ(backup.code, 0);
    EXPECT_THAT(backup.output, AllOf(HasSubstr("nothing is copied"), HasSubstr("contacts,messages")));
    const std::vector<std::string> jobs = Jobs("Velmora_Contact_Backup");
    ASSERT_THAT(jobs, SizeIs(1));
    EXPECT_THAT(backup.output, HasSubstr("\n  " + jobs.front() + "\n"));
    EXPECT_TRUE(fs::exists(jobs.front() + "/backup_config.ini"));
    EXPECT_THAT(host.Run({"list", host.Backups()}).output, HasSubstr("record only"));
}

TEST_F(TypedBackupTest, ShowsProgressAsAFullBackupDoes) {
    const Finished backup = BackedUp("messages");
    EXPECT_THAT(Lines(backup.output), testing::Contains(StartsWith(" 50%")));
    EXPECT_THAT(backup.output, HasSubstr("finishing\n"));
    EXPECT_THAT(backup.output, HasSubstr("Backed up messages of " + kUdid));
}

TEST_F(TypedBackupTest, WithoutDataItEndsWithItsOwnCodeAndLeavesNothing) {
    host.HasDevice(20);
    for (const std::string types : {"whatsapp", "messages,wechat"}) {
        const Finished backup = BackedUp(types);
        EXPECT_EQ(backup.code, 10) << types;
        EXPECT_THAT(backup.errors, HasSubstr("choose other types, or make a full backup (code 10"));
        EXPECT_FALSE(fs::exists(host.Backups()));
    }
}

TEST_F(TypedBackupTest, AppsWithoutRecordsAreNoData) {
    host.HasDeviceWith(R"({"messages": {"chats": 0, "count": 0, "attachments": 0, "attachmentBytes": 0},
                           "photos": {"count": 5, "bytesEach": 10}})");
    const Finished backup = BackedUp("messages");
    EXPECT_EQ(backup.code, 10) << backup.errors;
    EXPECT_FALSE(fs::exists(host.Backups()));
}

TEST_F(TypedBackupTest, WhatFailedCanBeKept) {
    host.HasDevice(20);
    const Finished backup = BackedUp("whatsapp", {"--keep-failed"});
    EXPECT_EQ(backup.code, 10);
    const std::vector<std::string> jobs = Jobs("Velmora_WhatsApp_Backup");
    ASSERT_THAT(jobs, SizeIs(1));
    EXPECT_THAT(backup.errors, HasSubstr("what there is stays in " + jobs.front()));
    EXPECT_TRUE(fs::exists(jobs.front() + "/" + kUdid + "/Manifest.db"));
}

TEST_F(TypedBackupTest, AFailedJobLeavesEarlierOnes) {
    ASSERT_EQ(BackedUp("messages").code, 0);
    const std::vector<std::string> before = Jobs("Velmora_SMS_Backup");
    host.HasDevice(20);
    EXPECT_EQ(BackedUp("messages").code, 10);
    EXPECT_EQ(Jobs("Velmora_SMS_Backup"), before);
    EXPECT_TRUE(fs::exists(before.front() + "/backup_config.ini"));
}

TEST_F(TypedBackupTest, NothingConfiguredIsSaidToBeSo) {
    host.HasConfiguration("[backup_Contact]\ndomain = x\n");
    const Finished backup = BackedUp("messages");
    EXPECT_EQ(backup.code, 12);
    EXPECT_THAT(backup.errors, HasSubstr("vm_config.ini"));
    EXPECT_FALSE(fs::exists(host.Backups()));
}

TEST_F(TypedBackupTest, AnEncryptedBackupIsSaidToBeSo) {
    host.HasScriptedTool();
    ToolScript tool;
    tool.Shell(
            R"(case "$JOB" in *temp) ;; *) mkdir -p "$BACKUP"; echo encrypted > "$BACKUP/Manifest.db";; esac)")
        .Progress(1, 1, "Total size: 5 bytes")
        .ExitMessage(0);
    const Finished backup = BackedUp("messages");
    EXPECT_EQ(backup.code, 11) << backup.errors;
    EXPECT_THAT(backup.errors, HasSubstr("the backup is encrypted"));
    EXPECT_FALSE(fs::exists(host.Backups()));
}

TEST_F(TypedBackupTest, AFullDiskIsSaidToBeSoAndLeavesNothing) {
    host.HasDevice(5, 500'000);
    Command command = BackUp("messages");
    command.prepare = [] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{300'000, 300'000};
        setrlimit(RLIMIT_FSIZE, &small);
    };
    const Finished backup = RunToEnd(command);
    EXPECT_EQ(backup.code, 7);
    EXPECT_THAT(backup.errors, HasSubstr("backup failed: the disk is full (code 13)"));
    EXPECT_FALSE(fs::exists(host.Backups()));
}

TEST_F(TypedBackupTest, AnUnknownTypeIsRefusedBeforeAnythingStarts) {
    const Finished backup = BackedUp("messages,notes");
    EXPECT_EQ(backup.code, 2);
    EXPECT_THAT(backup.errors, HasSubstr("'notes' is no type"));
    EXPECT_FALSE(fs::exists(host.Backups()));
    EXPECT_EQ(host.Run({"backup", kUdid, "--to", host.Backups(), "--keep-failed"}).code, 2);
}

TEST_F(TypedBackupTest, AnUnknownDeviceIsSaidToBeSo) {
    const Finished backup =
        host.Run({"backup", "00008110-00000000000000FF", "--to", host.Backups(), "--types", "messages"});
    EXPECT_EQ(backup.code, 3);
    EXPECT_FALSE(fs::exists(host.Backups()));
}

TEST_F(TypedBackupTest, IsNotRestoredUnlessForced) {
    const Finished backup = BackedUp("messages", {"--json"});
    ASSERT_EQ(backup.code, 0);
    const std::string path = Objects(backup.output).back()["path"];
    const Finished refused = host.Run({"restore", kUdid, "--from", path});
    EXPECT_EQ(refused.code, 2);
    EXPECT_THAT(refused.errors, AllOf(HasSubstr("holds messages only"), HasSubstr("--force")));
    const Finished forced = host.Run({"restore", kUdid, "--from", path, "--force"});
    EXPECT_EQ(forced.code, 8) << "the tool misses the other files: " << forced.errors;
}

TEST_F(TypedBackupTest, AFullOneIsRestored) {
    const Finished backup = BackedUp("full", {"--json"});
    ASSERT_EQ(backup.code, 0);
    const Finished restore =
        host.Run({"restore", kUdid, "--from", Objects(backup.output).back()["path"].get<std::string>()});
    EXPECT_EQ(restore.code, 0) << restore.errors;
}

TEST_F(TypedBackupTest, ADryRunTellsWhatWouldBeKept) {
    for (const std::string version : {"17.4.1", "9.3.5"}) {
        host.HasDeviceWith(kPhone, version);
        fs::remove_all(host.Backups());
        ASSERT_EQ(RunToEnd(host.Backup({"-q"})).code, 0);
        const std::set<std::string> all = Hashed(host.Backups() + "/" + kUdid);
        const Finished dry = host.Run({"backup", kUdid, "--types", "contacts,whatsapp", "--dry-run", "--from",
                                       host.Backups(), "--json"});
        ASSERT_EQ(dry.code, 0) << dry.output;
        const std::vector<Json> objects = Objects(dry.output);
        std::set<std::string> told;
        for (const Json& object : objects) {
            if (object["message_type"] == "file") told.insert(object["file_id"]);
        }
        EXPECT_THAT(host.BackupNames(), testing::ElementsAre(kUdid)) << "nothing is made";
        EXPECT_EQ(Hashed(host.Backups() + "/" + kUdid), all) << "nothing is deleted";
        const Finished backup = BackedUp("contacts,whatsapp", {"--json"});
        ASSERT_EQ(backup.code, 0) << backup.output;
        EXPECT_EQ(Hashed(Objects(backup.output).back()["path"]), told);
        EXPECT_EQ(objects.back()["files"], told.size());
        EXPECT_EQ(objects.back()["files_before"], all.size());
    }
}

TEST_F(TypedBackupTest, ADryRunNeedsAFullBackup) {
    const std::vector<std::string> dry = {"backup", kUdid, "--types", "messages", "--dry-run", "--from"};
    const auto from = [&](const std::string& folder) {
        std::vector<std::string> words = dry;
        words.push_back(folder);
        return host.Run(words);
    };
    EXPECT_EQ(from(host.Folder().Path("none")).code, 9);
    const Finished backup = BackedUp("messages", {"--json"});
    ASSERT_EQ(backup.code, 0);
    const Finished typed = from(Objects(backup.output).back()["path"]);
    EXPECT_EQ(typed.code, 2);
    EXPECT_THAT(typed.errors, HasSubstr("holds messages only"));
}

TEST_F(TypedBackupTest, ADryRunOfContactsAloneKeepsNothing) {
    ASSERT_EQ(RunToEnd(host.Backup({"-q"})).code, 0);
    const Finished dry =
        host.Run({"backup", kUdid, "--types", "contacts", "--dry-run", "--from", host.Backups()});
    EXPECT_EQ(dry.code, 0);
    EXPECT_THAT(dry.output, StartsWith("A backup of contacts would keep 0 of "));
}

TEST_F(TypedBackupTest, ASignalStopsItAndLeavesNothing) {
    host.HasDevice(2000);
    for (const int number : {SIGINT, SIGTERM}) {
        Command command = BackUp("messages");
        command.environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "400";
        ChildProcess kruteinctl(command);
        ASSERT_TRUE(kruteinctl.AwaitOutput("10%"));
        kruteinctl.Signal(number);
        EXPECT_EQ(kruteinctl.Wait(), 130);
        EXPECT_EQ(kruteinctl.Errors(), "kruteinctl: stopped; no backup was made (code 1018)\n");
        EXPECT_FALSE(ToolRuns());
        EXPECT_FALSE(fs::exists(host.Backups()));
    }
}

TEST_F(TypedBackupTest, AtAnyMomentASignalLeavesNothing) {
    host.HasDevice(2000);
    for (const int delay : {50, 150, 250, 350, 600}) {
        Command command = BackUp("messages");
        command.environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "400";
        ChildProcess kruteinctl(command);
        usleep(static_cast<useconds_t>(delay) * 1000);
        kruteinctl.Signal(SIGTERM);
        EXPECT_EQ(kruteinctl.Wait(), 130) << "after " << delay;
        for (int i = 0; i < 1000 && ToolRuns(); ++i)
            usleep(10000);
        EXPECT_FALSE(ToolRuns());
        EXPECT_FALSE(fs::exists(host.Backups())) << "after " << delay;
    }
}

TEST_F(TypedBackupTest, DoesNotEndTheToolOfAnotherBackup) {
    host.HasDevice(900);
    Command first = host.Backup();
    first.environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "400";
    ChildProcess running(first);
    ASSERT_TRUE(running.AwaitOutput("10%"));
    const Finished second =
        host.Run({"backup", kUdid, "--to", host.Folder().Path("elsewhere"), "--types", "messages"});
    EXPECT_EQ(second.code, 1);
    EXPECT_THAT(second.errors, HasSubstr("another backup is running on this computer"));
    EXPECT_EQ(running.Wait(), 0);
}
