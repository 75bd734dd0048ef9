#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

#include "Module/BackupLib/BackupMgr.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/LogRecorder.h"

using testing::Contains;
using testing::ElementsAre;

namespace fs = std::filesystem;

namespace {

constexpr int kWeChat = 2;
constexpr int kWhatsApp = 4;
constexpr int kSms = 8;
constexpr int kContact = 16;

const char* const kXin = "AppDomain-com.tencent.xin";

/// Each test runs with both layouts.
class CheckTest : public JobTest, public testing::WithParamInterface<Layout> {
 protected:
    CheckTest() { Use(GetParam()); }

    void AddMessages(bool messages, bool joins) {
        std::vector<std::string> statements = {"CREATE TABLE message (a)",
                                               "CREATE TABLE chat_message_join (a)"};
        if (messages) statements.emplace_back("INSERT INTO message VALUES (1)");
        if (joins) statements.emplace_back("INSERT INTO chat_message_join VALUES (1)");
        backup.AddDatabase("HomeDomain", "Library/SMS/sms.db", statements);
    }

    void AddWhatsapp(bool messages, bool chats) {
        std::vector<std::string> statements = {"CREATE TABLE ZWAMESSAGE (a)",
                                               "CREATE TABLE ZWACHATSESSION (a)"};
        if (messages) statements.emplace_back("INSERT INTO ZWAMESSAGE VALUES (1)");
        if (chats) statements.emplace_back("INSERT INTO ZWACHATSESSION VALUES (1)");
        backup.AddDatabase("AppDomainGroup-group.net.whatsapp.WhatsApp.shared", "ChatStorage.sqlite",
                           statements);
    }

    void AddWechat(const std::string& path, const std::string& statement) {
        backup.AddDatabase(kXin, path, {statement});
    }

    /// \return the job's result.
    int Check(int type) {
        ToolMakes(backup);
        return Start(type);
    }

    static std::vector<std::string> ValidLines() {
        std::vector<std::string> lines;
        for (const std::string& text : RecordedTexts()) {
            if (text.find(" valid") != std::string::npos) lines.push_back(text);
        }
        return lines;
    }

    BackupBuilder backup;
};

std::string NameOf(const testing::TestParamInfo<Layout>& info) {
    return info.param == Layout::kNew ? "NewLayout" : "OldLayout";
}

INSTANTIATE_TEST_SUITE_P(Both, CheckTest, testing::Values(Layout::kNew, Layout::kOld), NameOf);

}  // namespace

TEST_P(CheckTest, MessagesNeedBothTables) {
    AddMessages(true, true);
    EXPECT_EQ(Check(kSms), 0);
    EXPECT_THAT(ValidLines(), ElementsAre("[Backup] sms valid"));
}

TEST_P(CheckTest, MessagesWithoutJoinsAreNotValid) {
    AddMessages(true, false);
    EXPECT_EQ(Check(kSms), 1014);
    EXPECT_THAT(ValidLines(), ElementsAre());
    EXPECT_FALSE(fs::exists(JobFolder() + "/backup_config.ini"));
}

TEST_P(CheckTest, JoinsWithoutMessagesAreNotValid) {
    AddMessages(false, true);
    EXPECT_EQ(Check(kSms), 1014);
}

TEST_P(CheckTest, WhatsappNeedsBothTables) {
    AddWhatsapp(true, true);
    EXPECT_EQ(Check(kWhatsApp), 0);
    EXPECT_THAT(ValidLines(), ElementsAre("[Backup] whatsapp valid"));
}

TEST_P(CheckTest, WhatsappWithoutChatsIsNotValid) {
    AddWhatsapp(true, false);
    EXPECT_EQ(Check(kWhatsApp), 1014);
}

TEST_P(CheckTest, OneWechatAccountWithChatsIsEnough) {
    AddWechat("Documents/a/DB/MM.sqlite", "CREATE TABLE Friend (a)");
    AddWechat("Documents/b/DB/MM.sqlite", "CREATE TABLE Chat_1 (a)");
    AddWechat("Documents/c/DB/MM.sqlite", "CREATE TABLE Chat_2 (a)");
    EXPECT_EQ(Check(kWeChat), 0);
    EXPECT_THAT(ValidLines(), ElementsAre("[Backup] wechat valid"));
}

TEST_P(CheckTest, WechatChatTablesHaveAnUnderscore) {
    AddWechat("Documents/a/DB/MM.sqlite", "CREATE TABLE ChatRoom (a)");
    EXPECT_EQ(Check(kWeChat), 1014);
}

TEST_P(CheckTest, WechatWithoutAnyDatabaseIsNotValid) {
    backup.Add(kXin, "Documents/a/Img/1.pic");
    EXPECT_EQ(Check(kWeChat), 1014);
}

TEST_P(CheckTest, TheMixedSpellingIsFoundInTheNewerCatalogueOnly) {
    AddWechat("Documents/a/DB/Mm.sqlite", "CREATE TABLE Chat_1 (a)");
    EXPECT_EQ(Check(kWeChat), layout == Layout::kNew ? 0 : 1014);
}

TEST_P(CheckTest, ANameThatOnlyEndsAlikeIsFoundInTheNewerCatalogueOnly) {
    AddWechat("Documents/a/DB/oldMM.sqlite", "CREATE TABLE Chat_1 (a)");
    EXPECT_EQ(Check(kWeChat), layout == Layout::kNew ? 0 : 1014);
}

TEST_P(CheckTest, BothExactSpellingsAreFound) {
    AddWechat("Documents/a/DB/mm.sqlite", "CREATE TABLE Chat_1 (a)");
    EXPECT_EQ(Check(kWeChat), 0);
}

TEST_P(CheckTest, AnyAppWithRecordsIsEnough) {
    AddMessages(true, false);
    AddWechat("Documents/a/DB/MM.sqlite", "CREATE TABLE Friend (a)");
    AddWhatsapp(true, true);
    EXPECT_EQ(Check(kSms | kWeChat | kWhatsApp), 0);
    EXPECT_THAT(ValidLines(), ElementsAre("[Backup] whatsapp valid"));
}

TEST_P(CheckTest, TheFirstAppWithRecordsEndsIt) {
    AddMessages(true, true);
    AddWhatsapp(true, true);
    EXPECT_EQ(Check(kSms | kWhatsApp), 0);
    EXPECT_THAT(ValidLines(), ElementsAre("[Backup] sms valid"));
}

TEST_P(CheckTest, OnlyTheWantedAppsCount) {
    AddMessages(true, true);
    AddWhatsapp(true, false);
    EXPECT_EQ(Check(kWhatsApp), 1014) << "the messages are not asked for";
}

TEST_P(CheckTest, ContactsAreNeverChecked) {
    backup.Add("HomeDomain", "Library/AddressBook/AddressBook.sqlitedb", "no database");
    EXPECT_EQ(Check(kContact | 1), 1014) << "nothing that could be valid";
}

TEST_P(CheckTest, AMissingDatabaseIsLogged) {
    backup.Add("HomeDomain", "Library/SMS/other.file");
    EXPECT_EQ(Check(kSms), 1014);
    const std::string path = DeviceFolder() + "/" + BackupBuilder::PathOf(layout, kSMSFileID);
    EXPECT_THAT(RecordedTexts(),
                Contains("[Backup] CheckDataBaseHasRecord db[" + path + "] not exist").Times(2))
        << "both queries are always run";
}

TEST_P(CheckTest, ADatabaseThatCannotBeReadHoldsNothing) {
    backup.Add("HomeDomain", "Library/SMS/sms.db", "no database");
    EXPECT_EQ(Check(kSms), 1014);
}

TEST_P(CheckTest, ALockedDatabaseIsReadAllTheSame) {
    AddMessages(true, true);
    EXPECT_EQ(Check(kSms), 0);
    const std::string path = DeviceFolder() + "/" + BackupBuilder::PathOf(layout, kSMSFileID);
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_TRUE(manager.CheckDataBaseHasRecord(path, "select count(*) from message"));
    sqlite3_close(other);
}

TEST_P(CheckTest, DatabasesInWalModeGetNoFilesBesideThem) {
    backup.AddDatabase(
        "HomeDomain", "Library/SMS/sms.db",
        {"PRAGMA journal_mode=WAL", "CREATE TABLE message (a)", "INSERT INTO message VALUES (1)",
         "CREATE TABLE chat_message_join (a)", "INSERT INTO chat_message_join VALUES (1)"});
    EXPECT_EQ(Check(kSms), 0);
    EXPECT_EQ(Files().size(), 3U);
}

TEST_P(CheckTest, PathsFollowTheLayout) {
    AddMessages(true, true);
    EXPECT_EQ(Check(kSms), 0);
    EXPECT_EQ(manager.GetDataBasePath("abcdef"),
              DeviceFolder() + (layout == Layout::kNew ? "/ab/abcdef" : "/abcdef"));
    std::vector<std::string> ids = {"before"};
    manager.GetWechatFileIDs(ids);
    EXPECT_THAT(ids, ElementsAre("before"));
}

TEST_P(CheckTest, WithoutACatalogueThereAreNoWechatDatabases) {
    AddMessages(true, true);
    EXPECT_EQ(Check(kSms), 0);
    const std::string manifest =
        DeviceFolder() + (layout == Layout::kNew ? "/Manifest.db" : "/Manifest.mbdb");
    fs::remove(manifest);
    std::vector<std::string> ids;
    manager.GetWechatFileIDs(ids);
    EXPECT_TRUE(ids.empty());
    EXPECT_FALSE(fs::exists(manifest));
    if (layout == Layout::kOld) {
        EXPECT_THAT(RecordedTexts(), Contains("[Backup] open mbdb fail!!![" + manifest + "] "));
    }
}

namespace {

std::string BigEndian(std::uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(number >> shift));
    return bytes;
}

/// A rollback journal without pages, of a change of several databases that the named file tells of.
std::string JournalThatNames(const std::string& path) {
    const std::string magic = "\xD9\xD5\x05\xF9\x20\xA1\x63\xD7";
    std::string journal =
        magic + BigEndian(0) + BigEndian(0) + BigEndian(2) + BigEndian(512) + BigEndian(4096);
    journal.resize(512);
    std::uint32_t sum = 0;
    for (const char c : path)
        sum += static_cast<std::uint32_t>(c);
    return journal + BigEndian(0x40000000 / 4096 + 1) + path +
           BigEndian(static_cast<std::uint32_t>(path.size())) + BigEndian(sum) + magic;
}

}  // namespace

TEST(RecordCheck, AJournalCannotHaveAFileDeleted) {
    const TemporaryFolder folder;
    folder.Write("db", BackupBuilder::DatabaseContent({"CREATE TABLE t (a)", "INSERT INTO t VALUES (1)"}));
    folder.Write("db-journal", JournalThatNames(folder.Write("victim", "something of the user's")));
    EXPECT_TRUE(CBackupMgr::GetInstance()->IsExistRecordInDataBase(folder.Path("db"), "select a from t"));
    EXPECT_TRUE(fs::exists(folder.Path("victim")));
}

TEST(RecordCheck, TakesTheFirstColumnOfTheFirstRow) {
    const TemporaryFolder folder;
    folder.Write("db",
                 BackupBuilder::DatabaseContent({"CREATE TABLE t (a)", "INSERT INTO t VALUES (0), (5)"}));
    CBackupMgr& manager = *CBackupMgr::GetInstance();
    EXPECT_TRUE(manager.IsExistRecordInDataBase(folder.Path("db"), "select count(*) from t"));
    EXPECT_FALSE(manager.IsExistRecordInDataBase(folder.Path("db"), "select a from t"));
    EXPECT_FALSE(manager.IsExistRecordInDataBase(folder.Path("db"), "select a from t where a > 9"));
    EXPECT_FALSE(manager.IsExistRecordInDataBase(folder.Path("db"), "no query"));
    EXPECT_FALSE(manager.IsExistRecordInDataBase(folder.Path("none"), "select 1"));
    EXPECT_FALSE(manager.IsExistRecordInDataBase(folder.Path(), "select 1"));
    EXPECT_FALSE(fs::exists(folder.Path("none"))) << "looking makes no file";
}
