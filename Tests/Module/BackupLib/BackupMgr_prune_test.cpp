#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "Common/std/std_file.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/LogRecorder.h"

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

namespace {

constexpr int kWeChat = 2;
constexpr int kWhatsApp = 4;
constexpr int kSms = 8;
constexpr int kContact = 16;

/// Each test runs with both layouts.
class PruneTest : public JobTest, public testing::WithParamInterface<Layout> {
 protected:
    PruneTest() { Use(GetParam()); }

    bool Has(const std::string& fileID) const {
        return Files().count(BackupBuilder::PathOf(layout, fileID)) == 1;
    }

    /// What is always kept.
    std::set<std::string> OwnFiles() const {
        return {"Info.plist", layout == Layout::kNew ? "Manifest.db" : "Manifest.mbdb"};
    }

    std::set<std::string> Expected(const std::vector<std::string>& fileIDs) const {
        std::set<std::string> files = OwnFiles();
        for (const std::string& fileID : fileIDs)
            files.insert(BackupBuilder::PathOf(layout, fileID));
        return files;
    }

    BackupBuilder backup;
};

std::string NameOf(const testing::TestParamInfo<Layout>& info) {
    return info.param == Layout::kNew ? "NewLayout" : "OldLayout";
}

INSTANTIATE_TEST_SUITE_P(Both, PruneTest, testing::Values(Layout::kNew, Layout::kOld), NameOf);

class NewLayoutTest : public PruneTest {};
INSTANTIATE_TEST_SUITE_P(New, NewLayoutTest, testing::Values(Layout::kNew), NameOf);

class OldLayoutTest : public PruneTest {};
INSTANTIATE_TEST_SUITE_P(Old, OldLayoutTest, testing::Values(Layout::kOld), NameOf);

}  // namespace

TEST_P(PruneTest, EveryCombinationOfTypesKeepsItsFilesAndNoOthers) {
    const PhoneContent phone(backup);
    const std::map<int, std::vector<std::string>> byType = {
        {kWeChat, {phone.wechat, phone.wechatMedia}},
        {kWhatsApp, {phone.whatsapp, phone.whatsappMedia}},
        {kSms, {phone.messages, phone.attachment}},
        {kContact, {phone.contacts, phone.contactImages}},
    };
    ToolMakes(backup);
    for (int type = 2; type <= 30; type += 2) {
        if (type == kContact) continue;  // runs no tool
        std::vector<std::string> expected;
        for (const auto& [bit, files] : byType) {
            if ((type & bit) != 0) expected.insert(expected.end(), files.begin(), files.end());
        }
        EXPECT_EQ(Start(type), 0) << type;
        EXPECT_EQ(Files(), Expected(expected)) << type;
        fs::remove_all(fs::path(JobFolder()).parent_path());
    }
}

TEST_P(PruneTest, ContactsKeepTheFixedFileAlsoWhenTheCatalogueDoesNotListIt) {
    const PhoneContent phone(backup);
    const std::string fixedID = "cd6702cea29fe89cf280a76794405adb17f9a0ee";
    EXPECT_EQ(phone.contactImages, fixedID);
    BackupBuilder without;
    without.AddDatabase("HomeDomain", "Library/SMS/sms.db",
                        {"CREATE TABLE message (a)", "INSERT INTO message VALUES (1)",
                         "CREATE TABLE chat_message_join (a)", "INSERT INTO chat_message_join VALUES (1)"});
    without.AddStray(BackupBuilder::PathOf(layout, fixedID));
    ToolMakes(without);
    EXPECT_EQ(Start(kSms | kContact), 0);
    EXPECT_TRUE(Has(fixedID));
    fs::remove_all(fs::path(JobFolder()).parent_path());
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_FALSE(Has(fixedID));
}

TEST_P(PruneTest, NothingNeededIs1000AndDeletesNothing) {
    backup.Add("CameraRollDomain", "Media/DCIM/100APPLE/IMG_0001.JPG");
    ToolMakes(backup);
    const std::set<std::string> all = FilesBelow(backup.Write(layout));
    EXPECT_EQ(Start(kSms), 1000);
    EXPECT_EQ(Files(), all);
    EXPECT_EQ(Start(kSms | kContact), 1000) << "the fixed file is added only afterwards";
}

TEST_P(PruneTest, ShortNamesAreKept) {
    const PhoneContent phone(backup);
    backup.AddStray("nineteen_characters");
    backup.AddStray("twenty_characters___");
    backup.AddStray("Status.plist");
    ToolMakes(backup);
    EXPECT_EQ(Start(kSms), 0);
    std::set<std::string> expected = Expected({phone.messages, phone.attachment});
    expected.insert({"nineteen_characters", "Status.plist"});
    EXPECT_EQ(Files(), expected);
}

TEST_P(PruneTest, OfTwoFilesOfANeededNameOneIsKept) {
    const PhoneContent phone(backup);
    backup.AddStray("another/" + phone.messages, "copy");
    ToolMakes(backup);
    Start(kSms);
    const std::set<std::string> files = Files();
    EXPECT_EQ(
        files.count(BackupBuilder::PathOf(layout, phone.messages)) + files.count("another/" + phone.messages),
        1U);
}

TEST_P(PruneTest, FilesInUpperCaseAreFound) {
    const PhoneContent phone(backup);
    std::string upper = phone.attachment;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return std::toupper(c); });
    tool.CopyBackup(backup.Write(layout))
        .Shell("mv $BACKUP/" + BackupBuilder::PathOf(layout, phone.attachment) + " $BACKUP/" + upper)
        .ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_EQ(Files().count(upper), 1U);
}

TEST_P(PruneTest, LinksAreNotFollowed) {
    const PhoneContent phone(backup);
    const TemporaryFolder elsewhere;
    elsewhere.Write("a_precious_file_of_the_users", "kept");
    tool.CopyBackup(backup.Write(layout))
        .Shell("ln -s " + elsewhere.Path() + " $BACKUP/a_link_to_a_folder_elsewhere")
        .Shell("ln -s " + elsewhere.Path("a_precious_file_of_the_users") +
               " $BACKUP/a_link_to_a_file_elsewhere")
        .ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_EQ(elsewhere.Read("a_precious_file_of_the_users"), "kept");
    EXPECT_EQ(Files(), Expected({phone.messages, phone.attachment})) << "the links themselves go";
}

TEST_P(PruneTest, PathsOfAnyKindAreTaken) {
    const PhoneContent phone(backup);
    const std::vector<std::string> more = {
        backup.Add("HomeDomain", "Library/SMS/Ünïcödé 中文 🎉"),
        backup.Add("HomeDomain", "LIBRARY/sms/in upper case"),
        backup.Add("SomeDomain", "deep/Library/SMS/inside"),
        backup.Add("HomeDomain", "Library/SMS/" + std::string(500, 'x')),
        backup.Add("HomeDomain", "Library/SMS/with 'quotes' and \"quotes\""),
    };
    ToolMakes(backup);
    EXPECT_EQ(Start(kSms), 0);
    std::vector<std::string> expected = more;
    expected.insert(expected.end(), {phone.messages, phone.attachment});
    EXPECT_EQ(Files(), Expected(expected));
}

TEST_P(PruneTest, RowsWithoutFilesAndFilesWithoutRowsAreSurvived) {
    const PhoneContent phone(backup);
    for (int i = 0; i < 3000; ++i)
        backup.AddRow("HomeDomain", "Library/SMS/folder" + std::to_string(i));
    backup.AddStray("0123456789012345678901234567890123456789");
    ToolMakes(backup);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_EQ(Files(), Expected({phone.messages, phone.attachment}));
}

TEST_P(PruneTest, AFileThatCannotBeDeletedIsLoggedAndTheOthersGo) {
    const PhoneContent phone(backup);
    // A name that turns into another path when it is normalised cannot be deleted under it.
    tool.CopyBackup(backup.Write(layout))
        .Shell("touch $BACKUP/'a_name_with_a\\backslash_in_it_that_is_long'")
        .ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_THAT(RecordedTexts(), Contains("[Backup] DeleteNoNeedFile fail file=" + DeviceFolder() +
                                          "/a_name_with_a\\backslash_in_it_that_is_long!"));
    EXPECT_FALSE(Has(phone.photo));
}

TEST_P(PruneTest, OfThousandsOfFilesTheNeededOnesStayAndTheRestGoes) {
    const PhoneContent phone(backup);
    std::vector<std::string> needed = {phone.messages, phone.attachment};
    for (int i = 0; i < 60; ++i)
        needed.push_back(backup.Add("MediaDomain", "Library/SMS/Attachments/" + std::to_string(i)));
    // In some folders of many files and many of few.
    for (int i = 0; i < 2500; ++i) {
        const std::string name = "a_file_that_nobody_needs_" + std::to_string(i);
        backup.AddStray(i % 2 == 0 ? name : "folder" + std::to_string(i % 100) + "/" + name);
    }
    ToolMakes(backup);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_EQ(Files(), Expected(needed));
    EXPECT_THAT(RecordedTexts(), Not(Contains(HasSubstr("DeleteNoNeedFile fail"))));
}

TEST_P(PruneTest, FilesThatCannotBeDeletedAreLoggedInTheOrderOfTheListing) {
    const PhoneContent phone(backup);
    const fs::path made = backup.Write(layout);
    for (const char* folder : {"one", ".", "two"}) {
        fs::create_directories(made / folder);
        for (int i = 0; i < 1500; ++i)
            std::ofstream(made / folder / ("a_name_with\\a_backslash_" + std::to_string(i)));
    }
    tool.CopyBackup(made.string()).ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    std::vector<std::string> files;
    std::vector<std::string> dirs;
    long long bytes = 0;
    ASSERT_TRUE(STD_FILE_GetDirInfoA(DeviceFolder(), files, dirs, bytes, true));
    std::vector<std::string> expected;
    for (const std::string& file : files) {
        if (file.find('\\') != std::string::npos)
            expected.push_back("[Backup] DeleteNoNeedFile fail file=" + file + "!");
    }
    std::vector<std::string> logged = RecordedTexts();
    logged.erase(std::remove_if(logged.begin(), logged.end(),
                                [](const std::string& text) {
                                    return text.find("DeleteNoNeedFile") == std::string::npos;
                                }),
                 logged.end());
    EXPECT_EQ(expected.size(), 4500U);
    EXPECT_EQ(logged, expected);
}

TEST_P(PruneTest, NamesWithBackslashesReachNoOtherFile) {
    const PhoneContent phone(backup);
    tool.CopyBackup(backup.Write(layout))
        .Shell("touch $JOB/a_file_outside_of_the_backup $BACKUP/'..\\a_file_outside_of_the_backup'")
        .Shell("touch $BACKUP/'" + phone.messages.substr(0, 2) + "\\" + phone.messages + "'")
        .Shell("touch $BACKUP/'x\\" + phone.messages + "'")
        .ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_TRUE(fs::exists(JobFolder() + "/a_file_outside_of_the_backup"));
    EXPECT_TRUE(Has(phone.messages));
}

TEST_P(PruneTest, LinksAreDeletedAndNotFollowed) {
    const PhoneContent phone(backup);
    tool.CopyBackup(backup.Write(layout))
        .Shell("mkdir $JOB/outside && touch $JOB/outside/a_file_outside_of_the_backup")
        .Shell("ln -s ../outside $BACKUP/a_link_to_a_folder_outside")
        .Shell("ln -s ../outside/a_file_outside_of_the_backup $BACKUP/a_link_to_a_file_outside")
        .ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_TRUE(fs::exists(JobFolder() + "/outside/a_file_outside_of_the_backup"));
    EXPECT_FALSE(fs::is_symlink(DeviceFolder() + "/a_link_to_a_folder_outside"));
    EXPECT_FALSE(fs::is_symlink(DeviceFolder() + "/a_link_to_a_file_outside"));
}

TEST_P(NewLayoutTest, EmptyFoldersGo) {
    const PhoneContent phone(backup);
    tool.CopyBackup(backup.Write(layout)).Shell("mkdir -p $BACKUP/empty $BACKUP/outer/inner").ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_FALSE(fs::exists(DeviceFolder() + "/" + phone.photo.substr(0, 2)));
    EXPECT_FALSE(fs::exists(DeviceFolder() + "/empty"));
    EXPECT_FALSE(fs::exists(DeviceFolder() + "/outer/inner"));
    EXPECT_TRUE(fs::exists(DeviceFolder() + "/outer")) << "it was tried before what was in it";
}

TEST_P(OldLayoutTest, EmptyFoldersStay) {
    const PhoneContent phone(backup);
    tool.CopyBackup(backup.Write(layout)).Shell("mkdir $BACKUP/empty").ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_TRUE(fs::exists(DeviceFolder() + "/empty"));
}

TEST_P(NewLayoutTest, IDsInUpperCaseInTheCatalogueAreFound) {
    const PhoneContent phone(backup);
    backup.ChangeManifest("UPDATE Files SET fileID = upper(fileID)");
    ToolMakes(backup);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_EQ(Files(), Expected({phone.messages, phone.attachment}));
}

TEST_P(NewLayoutTest, NullsAndOtherKindsInTheCatalogueAreSurvived) {
    const PhoneContent phone(backup);
    backup.ChangeManifest("INSERT INTO Files VALUES (NULL, 'HomeDomain', 'Library/SMS/null', 1, NULL)");
    backup.ChangeManifest("INSERT INTO Files VALUES (x'00ff00', 'HomeDomain', 'Library/SMS/blob', 1, x'00')");
    backup.ChangeManifest("INSERT INTO Files VALUES ('../../outside', NULL, 'Library/SMS/hostile', 1, NULL)");
    backup.ChangeManifest("INSERT INTO Files VALUES (42, 'HomeDomain', 'Library/SMS/number', 1, NULL)");
    ToolMakes(backup);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_EQ(Files(), Expected({phone.messages, phone.attachment}));
}

TEST_P(NewLayoutTest, ACatalogueThatIsAFolderIs1008) {
    const PhoneContent phone(backup);
    tool.CopyBackup(backup.Write(layout))
        .Shell("rm $BACKUP/Manifest.db; mkdir $BACKUP/Manifest.db")
        .ExitMessage(0);
    const std::set<std::string> all = FilesBelow(backup.Write(layout));
    EXPECT_EQ(Start(kSms), 1008);
    EXPECT_EQ(Files().size(), all.size() - 1);
    EXPECT_THAT(RecordedTexts(), Contains("[Backup] GetNeedFilesIOS9 fail ret =1008!\n"));
}

TEST_P(NewLayoutTest, ACatalogueThatIsNoDatabaseNeedsNothing) {
    for (const char* content : {"", "this is no database, whatever it says", "SQLite format 3"}) {
        const TemporaryFolder made;
        made.Write("backup/Manifest.db", content);
        made.Write("backup/3d/3d0d7e5fb2ce288813306e4d4636395e047a3d28", "kept");
        ToolScript fresh;
        fresh.CopyBackup(made.Path("backup")).ExitMessage(0);
        EXPECT_EQ(Start(kSms), 1000) << content;
        EXPECT_EQ(Files().size(), 2U);
        fs::remove_all(fs::path(JobFolder()).parent_path());
    }
}

TEST_P(NewLayoutTest, LookingLeavesNoExtraFile) {
    const PhoneContent phone(backup);
    backup.ChangeManifest("PRAGMA journal_mode=WAL");
    ToolMakes(backup);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_EQ(Files(), Expected({phone.messages, phone.attachment})) << "no -wal, no -shm, no -journal";
}

TEST_P(NewLayoutTest, RowsThatAreOnlyInTheLogAreSeen) {
    const PhoneContent phone(backup);
    const std::string made = backup.Write(layout);
    // A connection that stays open leaves its last changes in the log beside the database.
    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open((made + "/Manifest.db").c_str(), &writer), SQLITE_OK);
    sqlite3_exec(writer, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    sqlite3_exec(writer,
                 "UPDATE Files SET relativePath = 'Library/SMS/moved' WHERE domain = 'CameraRollDomain'",
                 nullptr, nullptr, nullptr);
    ASSERT_TRUE(fs::exists(made + "/Manifest.db-wal"));
    tool.CopyBackup(made).ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    sqlite3_close(writer);
    EXPECT_TRUE(Has(phone.photo)) << "by the row in the log it belongs to the messages";
    EXPECT_TRUE(fs::exists(DeviceFolder() + "/Manifest.db-wal")) << "which is left as it was";
}

TEST_P(OldLayoutTest, AMissingCatalogueIs1025) {
    const PhoneContent phone(backup);
    tool.CopyBackup(backup.Write(layout)).Shell("rm $BACKUP/Manifest.mbdb").ExitMessage(0);
    const std::size_t files = FilesBelow(backup.Write(layout)).size() - 1;
    EXPECT_EQ(Start(kSms), 1025);
    EXPECT_EQ(Files().size(), files);
}

TEST_P(OldLayoutTest, ACatalogueWithADamagedEndKeepsWhatComesBefore) {
    const PhoneContent phone(backup);
    tool.CopyBackup(backup.Write(layout)).Shell("echo damaged >> $BACKUP/Manifest.mbdb").ExitMessage(0);
    EXPECT_EQ(Start(kSms), 0);
    EXPECT_TRUE(Has(phone.messages));
}

// The hash cache.

namespace {

std::string Little(unsigned long long value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text.push_back(static_cast<char>(value >> (8 * i)));
    return text;
}

}  // namespace

TEST(HashCache, IsWrittenByteForByte) {
    const TemporaryFolder folder;
    std::map<std::string, ST_DB_FILE_INFO> entries;
    entries["b"] = {"bb", "Domain", "a/path", 7};
    entries["a"] = {"", "", "", 0};
    const std::string longPath(70000, 'p');
    entries["c"] = {"c", "D", longPath, 0};
    EXPECT_TRUE(CBackupMgr::GetInstance()->SaveIOS9HashCache(folder.Path("cache"), entries));
    std::string expected = Little(0xEEEEEEEE, 4) + Little(3, 4);
    expected += Little(0, 4) + Little(0, 2) + Little(0, 2) + Little(0, 2);
    expected += Little(1, 4) + Little(2, 2) + Little(6, 2) + Little(6, 2) + "bbDomaina/path";
    expected += Little(2, 4) + Little(1, 2) + Little(1, 2) + Little(70000 - 65536, 2) + "cD" +
                longPath.substr(0, 70000 - 65536);
    expected += Little(0xFFFFFFFF, 4);
    EXPECT_EQ(folder.Read("cache"), expected);
}

TEST(HashCache, OfNoEntriesIsHeaderAndEnd) {
    const TemporaryFolder folder;
    std::map<std::string, ST_DB_FILE_INFO> none;
    EXPECT_TRUE(CBackupMgr::GetInstance()->SaveIOS9HashCache(folder.Write("cache", "older"), none));
    EXPECT_EQ(folder.Read("cache"), Little(0xEEEEEEEE, 4) + Little(0, 4) + Little(0xFFFFFFFF, 4));
}

TEST(HashCache, FailsWhereNoFileCanBe) {
    const TemporaryFolder folder;
    std::map<std::string, ST_DB_FILE_INFO> none;
    EXPECT_FALSE(CBackupMgr::GetInstance()->SaveIOS9HashCache(folder.Path("no/such"), none));
}
