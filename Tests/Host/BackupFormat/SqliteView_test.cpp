#include "Host/BackupFormat/SqliteView.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "Tests/support/BackupBuilder.h"

using krutein::BackupDamage;
using krutein::Interrupt;
using krutein::SqliteFiles;
using krutein::SqliteRows;
using krutein::SqliteView;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

/// While it lives, temporary files go to a folder of the test's.
class OwnTemporaries {
 public:
    OwnTemporaries() { setenv("TMPDIR", m_folder.Path().c_str(), 1); }
    ~OwnTemporaries() { unsetenv("TMPDIR"); }
    OwnTemporaries(const OwnTemporaries&) = delete;
    OwnTemporaries& operator=(const OwnTemporaries&) = delete;

    std::set<std::string> Files() const { return FilesBelow(m_folder.Path()); }
    bool IsEmpty() const { return fs::is_empty(m_folder.Path()); }

 private:
    TemporaryFolder m_folder;
};

class SqliteViewTest : public testing::Test {
 protected:
    /// A database whose last rows stand in the log beside it.
    void WriteWithWal(const std::string& name) {
        sqlite3* handle = nullptr;
        ASSERT_EQ(sqlite3_open(folder.Path("live").c_str(), &handle), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(handle,
                               "PRAGMA journal_mode = WAL; CREATE TABLE t (x); INSERT INTO t VALUES (1);"
                               "PRAGMA wal_checkpoint(TRUNCATE); INSERT INTO t VALUES (2)",
                               nullptr, nullptr, nullptr),
                  SQLITE_OK);
        fs::copy_file(folder.Path("live"), folder.Path(name));
        fs::copy_file(folder.Path("live-wal"), folder.Path(name + "-wal"));
        sqlite3_close(handle);
        fs::remove(folder.Path("live"));
    }

    std::int64_t CountIn(const SqliteFiles& files) const {
        return SqliteView(files, never).Number("SELECT count(*) FROM t");
    }

    TemporaryFolder folder;
    Interrupt never;
};

}  // namespace

TEST_F(SqliteViewTest, GivesRows) {
    const std::string path = folder.Write(
        "db", BackupBuilder::DatabaseContent({"CREATE TABLE T (a, b)", "INSERT INTO T VALUES ('ä', x'00FF')",
                                              "INSERT INTO T VALUES (NULL, 7)"}));
    const SqliteView view(SqliteFiles::At(path), never);
    EXPECT_TRUE(view.HasTable("t"));
    EXPECT_FALSE(view.HasTable("u"));
    SqliteRows rows = view.Select("SELECT a, b FROM t");
    ASSERT_TRUE(rows.Next());
    EXPECT_EQ(rows.Text(0), "ä");
    EXPECT_EQ(rows.Bytes(0), "") << "a text is no blob";
    EXPECT_EQ(rows.Bytes(1), std::string_view("\0\xFF", 2));
    ASSERT_TRUE(rows.Next());
    EXPECT_EQ(rows.Text(0), "");
    EXPECT_EQ(rows.Number(1), 7);
    EXPECT_FALSE(rows.Next());
}

TEST_F(SqliteViewTest, LeavesNothingBehind) {
    const OwnTemporaries temporaries;
    const std::string path = folder.Write("db", BackupBuilder::DatabaseContent({"CREATE TABLE t (x)"}));
    fs::permissions(folder.Path(), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(CountIn(SqliteFiles::At(path)), 0);
    fs::permissions(folder.Path(), fs::perms::owner_all);
    EXPECT_THAT(FilesBelow(folder.Path()), testing::ElementsAre("db"));
    EXPECT_TRUE(temporaries.IsEmpty());
}

TEST_F(SqliteViewTest, SeesWhatALogBesideItHolds) {
    const OwnTemporaries temporaries;
    WriteWithWal("db");
    const std::string before = folder.Read("db") + folder.Read("db-wal");
    EXPECT_EQ(CountIn(SqliteFiles::At(folder.Path("db"))), 2);
    EXPECT_EQ(CountIn({folder.Path("db"), "", ""}), 1) << "the log makes the difference";
    EXPECT_EQ(folder.Read("db") + folder.Read("db-wal"), before);
    EXPECT_THAT(FilesBelow(folder.Path()), testing::ElementsAre("db", "db-wal"));
    EXPECT_TRUE(temporaries.IsEmpty());
}

TEST_F(SqliteViewTest, SeesALogOfAnyName) {
    WriteWithWal("db");
    fs::rename(folder.Path("db-wal"), folder.Path("something else"));
    EXPECT_EQ(CountIn({folder.Path("db"), folder.Path("something else"), ""}), 2);
}

TEST_F(SqliteViewTest, ALogThatIsALinkIsDamage) {
    WriteWithWal("db");
    fs::rename(folder.Path("db-wal"), folder.Path("elsewhere"));
    fs::create_symlink(folder.Path("elsewhere"), folder.Path("db-wal"));
    EXPECT_THROW(SqliteFiles::At(folder.Path("db")), BackupDamage);
}

TEST_F(SqliteViewTest, AnEmptyLogIsNone) {
    const OwnTemporaries temporaries;
    const std::string path = folder.Write("db", BackupBuilder::DatabaseContent({"CREATE TABLE t (x)"}));
    folder.Write("db-wal");
    EXPECT_EQ(SqliteFiles::At(path).wal, "");
    const SqliteView view(SqliteFiles::At(path), never);
    EXPECT_THAT(temporaries.Files(), IsEmpty());
}

TEST_F(SqliteViewTest, AJournalThatNamesAnotherIsNotFinished) {
    const std::string path = folder.Write("db", BackupBuilder::DatabaseContent({"CREATE TABLE t (x)"}));
    folder.Write("db-journal", std::string(512, 'x') + "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7");
    EXPECT_THROW(CountIn(SqliteFiles::At(path)), BackupDamage);
}

TEST_F(SqliteViewTest, WhatIsNoDatabaseIsDamage) {
    EXPECT_THROW(CountIn(SqliteFiles::At(folder.Path("none"))), BackupDamage);
    EXPECT_THROW(CountIn(SqliteFiles::At(folder.Path())), BackupDamage);
    EXPECT_THROW(CountIn(SqliteFiles::At(folder.Write("text", std::string(5000, 'x')))), BackupDamage);
    EXPECT_THROW(CountIn(SqliteFiles::At(folder.Write("empty"))), BackupDamage) << "it has no table";
}

TEST_F(SqliteViewTest, ACutDatabaseIsDamage) {
    const std::string path = folder.Write("db", BackupBuilder::DatabaseContent({"CREATE TABLE t (x)"}));
    fs::resize_file(path, fs::file_size(path) - 1);
    EXPECT_THROW(CountIn(SqliteFiles::At(path)), BackupDamage);
}

TEST_F(SqliteViewTest, LinksInThePathAreNotFollowed) {
    folder.Write("real/db", BackupBuilder::DatabaseContent({"CREATE TABLE t (x)"}));
    fs::create_directory_symlink(folder.Path("real"), folder.Path("link"));
    fs::create_symlink(folder.Path("real/db"), folder.Path("db"));
    EXPECT_EQ(CountIn(SqliteFiles::At(folder.Path("real/db"))), 0);
    EXPECT_ANY_THROW(CountIn(SqliteFiles::At(folder.Path("link/db"))));
    EXPECT_THROW(CountIn(SqliteFiles::At(folder.Path("db"))), BackupDamage);
}

TEST_F(SqliteViewTest, AnInterruptEndsAQueryWithoutEnd) {
    const std::string path = folder.Write("db", BackupBuilder::DatabaseContent({"CREATE TABLE t (x)"}));
    Interrupt interrupt;
    const SqliteView view(SqliteFiles::At(path), interrupt);
    std::thread user([&interrupt] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        interrupt.Raise();
    });
    EXPECT_THROW(
        view.Number(
            "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT count(*) FROM n"),
        Interrupt::Raised);
    user.join();
}
