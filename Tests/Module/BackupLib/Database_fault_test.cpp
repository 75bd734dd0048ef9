// App databases that are meant to do harm, and other files of a job, without one.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "Module/BackupLib/BackupMgr.h"
#include "Tests/support/BackupBuilder.h"
#include "Tests/support/FullDisk.h"

namespace {

const char kCount[] = "select count(*) from message";

class AppDatabase : public testing::Test {
 protected:
    bool HasRecords(const std::vector<std::string>& statements) const {
        return ContentHasRecords(BackupBuilder::DatabaseContent(statements));
    }

    /// Whether a database of this content has records; it must be the same afterwards.
    bool ContentHasRecords(const std::string& content) const {
        folder.Write("db", content);
        const bool result = manager.CheckDataBaseHasRecord(folder.Path("db"), kCount);
        EXPECT_EQ(folder.Read("db"), content);
        EXPECT_EQ(FilesBelow(folder.Path()), std::set<std::string>{"db"});
        return result;
    }

    CBackupMgr& manager = *CBackupMgr::GetInstance();
    TemporaryFolder folder;
};

}  // namespace

TEST_F(AppDatabase, MayHaveAViewInPlaceOfATable) {
    EXPECT_TRUE(HasRecords({"CREATE VIEW message AS SELECT 1"}));
    EXPECT_FALSE(HasRecords({"CREATE VIEW message AS SELECT 1 WHERE 0"}));
    EXPECT_FALSE(HasRecords({"CREATE VIEW message AS SELECT * FROM message"})) << "it is its own source";
    EXPECT_FALSE(HasRecords({"CREATE VIEW message AS SELECT load_extension('evil')"}));
}

TEST_F(AppDatabase, MayHaveTriggersWhichNeverRun) {
    EXPECT_TRUE(HasRecords({"CREATE TABLE message (a)", "INSERT INTO message VALUES (1)",
                            "CREATE TRIGGER t AFTER UPDATE ON message BEGIN DELETE FROM message; END"}));
}

TEST_F(AppDatabase, ThatCannotBeReadHoldsNothing) {
    for (const std::string& content : {std::string(), std::string("no database"), std::string(5000, '\x9A')})
        EXPECT_FALSE(ContentHasRecords(content)) << content.substr(0, 20);
    EXPECT_FALSE(HasRecords({"CREATE TABLE other (a)"})) << "it lacks the table";
}

TEST_F(AppDatabase, WithoutEndHoldsNothing) {
    EXPECT_FALSE(HasRecords(
        {"CREATE VIEW message AS WITH RECURSIVE row(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM row) "
         "SELECT n FROM row"}));
}

TEST_F(AppDatabase, OfManyRowsIsReadToItsEndHoweverMuchThereIsToDo) {
    const std::string path = folder.Write(
        "db", BackupBuilder::DatabaseContent(
                  {"CREATE TABLE message (a)",
                   "WITH RECURSIVE row(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM row WHERE n < 100000) "
                   "INSERT INTO message SELECT n || ' and a text of the usual length for a path' FROM row"}));
    std::string condition = "a = ''";
    for (int i = 0; i < 300; ++i)
        condition += " or a = '" + std::to_string(i) + "'";
    // More than a hundred million steps; the last row alone is found.
    EXPECT_TRUE(manager.CheckDataBaseHasRecord(
        path, "select count(*) from message where " + condition + " or a like '100000 %'"));
}

TEST_F(AppDatabase, IsFoundByPathsOfAnyKind) {
    const std::string content =
        BackupBuilder::DatabaseContent({"CREATE TABLE message (a)", "INSERT INTO message VALUES (1)"});
    for (const char* name : {"db", "a %41 b", "a%", "ä b", "question?mode=memory", "number#sign"}) {
        const std::string path = folder.Write(name, content);
        EXPECT_TRUE(manager.CheckDataBaseHasRecord(path, kCount)) << path;
        EXPECT_TRUE(manager.CheckDataBaseHasRecord("/" + path, kCount)) << "with two slashes: " << path;
    }
}

TEST_F(AppDatabase, ThatIsAPipeHoldsNothing) {
    ASSERT_EQ(mkfifo(folder.Path("db").c_str(), 0600), 0);
    EXPECT_FALSE(manager.CheckDataBaseHasRecord(folder.Path("db"), kCount));
}

TEST_F(AppDatabase, CutAnywhereHoldsWhatCanBeReadOrNothing) {
    const std::string whole =
        BackupBuilder::DatabaseContent({"CREATE TABLE message (a)", "INSERT INTO message VALUES (1)"});
    for (std::size_t length = 0; length < whole.size(); length += 64) {
        const bool secondPageBegan = length > 4096;
        EXPECT_EQ(ContentHasRecords(whole.substr(0, length)), secondPageBegan) << length;
    }
}

TEST_F(AppDatabase, WhoseLogCannotBeCopiedHoldsNothing) {
    folder.Write(
        "db", BackupBuilder::DatabaseContent({"CREATE TABLE message (a)", "INSERT INTO message VALUES (1)"}));
    folder.Write("db-wal", "a log of some kind");
    setenv("TMPDIR", "/nonexistent", 1);
    EXPECT_FALSE(manager.CheckDataBaseHasRecord(folder.Path("db"), kCount));
    unsetenv("TMPDIR");
}

TEST(HashCacheFault, AFullDiskCutsTheFileAndIsNotNoticed) {
    const TemporaryFolder folder;
    std::map<std::string, ST_DB_FILE_INFO> entries = {{"a", {"a", "HomeDomain", "Library/SMS/sms.db", 0}}};
    {
        const FullDisk full(10);
        EXPECT_TRUE(CBackupMgr::GetInstance()->SaveIOS9HashCache(folder.Path("cache"), entries));
    }
    EXPECT_EQ(folder.Read("cache").size(), 10U) << "without its end mark";
}
