// Jobs whose catalogue, disk or folder is not what it should be: what they end with, and what they leave
// alone.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <future>

#include "Module/BackupLib/BackupMgr.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/FullDisk.h"
#include "Tests/support/LogRecorder.h"
#include "Tests/support/ResourceCount.h"

namespace fs = std::filesystem;

namespace {

constexpr int kWeChat = 2;
constexpr int kSms = 8;

/// Replaces the table of a Manifest.db by a view of endless rows.
std::vector<std::string> EndlessFiles(const std::string& fileID, const std::string& path) {
    return {
        "DROP TABLE Files",
        "CREATE VIEW Files AS WITH RECURSIVE row(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM row) SELECT " +
            fileID + " AS fileID, 'HomeDomain' AS domain, " + path + " AS relativePath FROM row"};
}

/// Another process that holds a database for itself.
class LockedDatabase {
 public:
    explicit LockedDatabase(const std::string& path) {
        int ready[2] = {-1, -1};
        EXPECT_EQ(pipe(ready), 0);
        m_holder = fork();
        if (m_holder == 0) {
            sqlite3* database = nullptr;
            sqlite3_open(path.c_str(), &database);
            const int locked = sqlite3_exec(database, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
            const char answer = locked == SQLITE_OK ? 'y' : 'n';
            if (write(ready[1], &answer, 1) == 1) pause();
            _exit(0);
        }
        close(ready[1]);
        char answer = 0;
        EXPECT_EQ(read(ready[0], &answer, 1), 1);
        EXPECT_EQ(answer, 'y');
        close(ready[0]);
    }
    ~LockedDatabase() {
        kill(m_holder, SIGKILL);
        waitpid(m_holder, nullptr, 0);
    }
    LockedDatabase(const LockedDatabase&) = delete;
    LockedDatabase& operator=(const LockedDatabase&) = delete;

 private:
    pid_t m_holder;
};

/// Beside each job lies an earlier one, which must be as it was afterwards.
class ManagerFaultTest : public JobTest {
 protected:
    ManagerFaultTest() {
        for (const char* name : {"backup_config.ini", "the-device/Manifest.db", "the-device/3d/3d0d7e5f"})
            destination.Write(std::string(kEarlier) + "/" + name, std::string("content of ") + name);
        earlier = Contents();
    }
    ~ManagerFaultTest() override {
        EXPECT_EQ(Contents(), earlier) << "an earlier backup has been changed";
        EXPECT_EQ(AwaitResources(before), before);
    }

    int StartJob(BackupBuilder& backup, int type) {
        all = FilesBelow(backup.Write(layout));
        ToolScript fresh;
        fresh.CopyBackup(backup.Write(layout)).ExitMessage(0);
        return Start(type);
    }

    ResourceCount before = ResourceCount::Now();
    static constexpr const char* kEarlier = "Velmora_SMS_Backup/2001_01_01__01_01_01";

    std::set<std::string> all;  ///< files of the backup that the tool made

 private:
    std::map<std::string, std::string> Contents() const {
        std::map<std::string, std::string> contents;
        for (const std::string& name : FilesBelow(destination.Path(kEarlier)))
            contents[name] = destination.Read(std::string(kEarlier) + "/" + name);
        return contents;
    }

    std::map<std::string, std::string> earlier;
};

}  // namespace

// The catalogue.

TEST_F(ManagerFaultTest, ACatalogueWithoutEndIs1008AndDeletesNothing) {
    const std::vector<std::pair<std::string, std::string>> catalogues = {
        {"hex(zeroblob(50000000))", "'Library/SMS/x'"},  // ever more memory
        {"'0123456789'", "'nothing ' || n"}};            // ever more time
    for (const auto& [fileID, path] : catalogues) {
        BackupBuilder backup;
        const PhoneContent phone(backup);
        for (const std::string& statement : EndlessFiles(fileID, path))
            backup.ChangeManifest(statement);
        EXPECT_EQ(StartJob(backup, kSms), 1008) << fileID;
        EXPECT_EQ(Files(), all) << fileID;
        fs::remove_all(JobFolder());
    }
}

TEST_F(ManagerFaultTest, AStopEndsAQueryWithoutEndAndNothingIsDeleted) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    for (const std::string& statement : EndlessFiles("'0123456789'", "'nothing ' || n"))
        backup.ChangeManifest(statement);
    std::future<int> job = std::async(std::launch::async, [&] { return StartJob(backup, kSms); });
    const auto toolHasEnded = [] {
        const std::vector<std::string> texts = RecordedTexts();
        return std::count(texts.begin(), texts.end(), "StartFullBackup:ret=0\n") > 0;
    };
    while (!toolHasEnded())
        usleep(5000);
    manager.StopBackup();
    EXPECT_EQ(job.get(), 1018);
    EXPECT_EQ(Files(), all);
}

TEST_F(ManagerFaultTest, AViewInPlaceOfTheTableIsAsGoodAsTheTable) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    backup.ChangeManifest("ALTER TABLE Files RENAME TO RealFiles");
    backup.ChangeManifest("CREATE VIEW Files AS SELECT * FROM RealFiles");
    backup.ChangeManifest("CREATE TRIGGER evil INSTEAD OF DELETE ON Files BEGIN DELETE FROM RealFiles; END");
    EXPECT_EQ(StartJob(backup, kSms), 0);
    EXPECT_EQ(Files().size(), 4U) << "catalogue, Info.plist, the messages, an attachment";
}

TEST_F(ManagerFaultTest, AnIdOfTenMegabytesIsSurvived) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    backup.ChangeManifest(
        "INSERT INTO Files VALUES (printf('%010000000d', 1), 'HomeDomain', 'Library/SMS/long', 1, NULL)");
    EXPECT_EQ(StartJob(backup, kSms), 0);
    EXPECT_EQ(Files().size(), 4U);
}

TEST_F(ManagerFaultTest, AnIdThatLeadsElsewhereHasNoDatabaseOpened) {
    const TemporaryFolder elsewhere;
    elsewhere.Write("MM.sqlite", BackupBuilder::DatabaseContent({"CREATE TABLE Chat_1 (a)"}));
    BackupBuilder backup;
    const PhoneContent phone(backup);
    std::string up;
    for (int i = 0; i < 40; ++i)
        up += "../";
    backup.ChangeManifest("UPDATE Files SET fileID = '" + up + elsewhere.Path("MM.sqlite").substr(1) +
                          "' WHERE relativePath LIKE '%MM.sqlite'");
    EXPECT_EQ(StartJob(backup, kWeChat), 1014) << "by the one elsewhere it would be 0";
}

TEST_F(ManagerFaultTest, ACatalogueThatAnotherProcessHasLockedIsRead) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    std::unique_ptr<LockedDatabase> locked;
    callback.onEvent = [&](const RecordedEvent&) {
        locked = std::make_unique<LockedDatabase>(DeviceFolder() + "/Manifest.db");
        tool.Make("locked");
    };
    tool.CopyBackup(backup.Write(layout)).Progress(1, 1).Await("locked").ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_NE(locked, nullptr);
    locked.reset();
    callback.onEvent = nullptr;
    EXPECT_EQ(Files().count("Manifest.db"), 1U);
}

TEST_F(ManagerFaultTest, ACatalogueThatIsAPipeIsNotWaitedFor) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    const std::size_t files = FilesBelow(backup.Write(layout)).size();
    tool.CopyBackup(backup.Write(layout))
        .Shell("rm $BACKUP/Manifest.db && mkfifo $BACKUP/Manifest.db")
        .ExitMessage(0);
    EXPECT_EQ(Start(kSms), 1008);
    EXPECT_EQ(Files().size(), files) << "the pipe counts as one";
}

TEST_F(ManagerFaultTest, ACatalogueWhoseLogCannotBeReadIs1008AndDeletesNothing) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    const std::string made = backup.Write(Layout::kNew);
    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open((made + "/Manifest.db").c_str(), &writer), SQLITE_OK);
    for (const char* statement :
         {"PRAGMA journal_mode=WAL",
          "INSERT INTO Files SELECT '0123456789', 'HomeDomain', 'Library/SMS/more', 1, NULL"})
        ASSERT_EQ(sqlite3_exec(writer, statement, nullptr, nullptr, nullptr), SQLITE_OK) << statement;
    const std::set<std::string> files = FilesBelow(made);
    ASSERT_EQ(files.count("Manifest.db-wal"), 1U);
    tool.CopyBackup(made).Progress(1, 1).ExitMessage(0);
    std::unique_ptr<FullDisk> full;
    callback.onEvent = [&](const RecordedEvent&) { full = std::make_unique<FullDisk>(1000); };
    EXPECT_EQ(Start(kSms), 1008) << "there is no room for the copy";
    full.reset();
    sqlite3_close(writer);
    EXPECT_EQ(Files(), files);
}

// The disk, and the folder.

TEST_F(ManagerFaultTest, ADiskThatIsFullWhenTheRecordIsWrittenLeavesTheBackup) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    std::unique_ptr<FullDisk> full;
    device.whenAskedForId = [&] {
        if (device.asked.size() > 3) full = std::make_unique<FullDisk>(0);  // while the record is made
    };
    EXPECT_EQ(StartJob(backup, kSms), 0) << "a write that fails is not noticed here";
    full.reset();
    EXPECT_EQ(ReadWholeFile(JobFolder() + "/backup_config.ini"), "") << "which is how a host notices";
    EXPECT_EQ(Files().size(), 4U);
}

TEST_F(ManagerFaultTest, AFolderThatVanishesFailsTheJob) {
    for (const auto& [type, result] : {std::pair(kSms, 1000), std::pair(0, 1009)}) {
        ToolScript fresh;
        fresh.MakeBackup().Shell("rm -rf $JOB").ExitMessage(0);
        EXPECT_EQ(Start(type), result) << type;
        EXPECT_THAT(JobFolder(), testing::EndsWith(kEarlier)) << "nothing is made in its place";
    }
}

TEST_F(ManagerFaultTest, ARecordThatIsALinkOrAPipeIs1009) {
    const TemporaryFolder elsewhere;
    elsewhere.Write("settings.ini", "[mine]\nkey = value\n");
    const std::string record = "$JOB/backup_config.ini";
    for (const std::string& command :
         {"ln -s " + elsewhere.Path("settings.ini") + " " + record, "mkfifo " + record}) {
        ToolScript fresh;
        fresh.MakeBackup().Shell(command).ExitMessage(0);
        EXPECT_EQ(Start(0), 1009) << command;
        EXPECT_TRUE(fs::exists(DeviceFolder() + "/Manifest.db"));
        fs::remove_all(destination.Path("Velmora_Full_Backup"));
    }
    EXPECT_EQ(elsewhere.Read("settings.ini"), "[mine]\nkey = value\n");
}
