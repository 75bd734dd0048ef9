// files, verify and show, tried as processes on backups that the tests put together. After every run the
// backup must be what it was, down to the times of its folders.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"
#include "Tests/support/BackupBuilder.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;
using Json = nlohmann::json;

namespace {

constexpr char kHome[] = "HomeDomain";
constexpr char kWhatsappDomain[] = "AppDomainGroup-group.net.whatsapp.WhatsApp.shared";
constexpr char kWechatDomain[] = "AppDomain-com.tencent.xin";
constexpr char kMessages[] = "Library/SMS/sms.db";
constexpr char kPicture[] = "Media/DCIM/Überraschung 图片.jpg";

// Bits of a backup's type, as they stand in record files.
constexpr int kWechatBit = 2;
constexpr int kWhatsappBit = 4;
constexpr int kMessagesBit = 8;
constexpr int kContactsBit = 16;

const std::vector<std::string> kMessagesDatabase = {
    "CREATE TABLE message (text TEXT)",
    "INSERT INTO message VALUES ('a'), ('b'), ('c')",
    "CREATE TABLE chat (guid TEXT)",
    "INSERT INTO chat VALUES ('x'), ('y')",
};

/// Everything below a folder with what must not change: kind, size and time of the last change.
std::map<std::string, std::string> StateOf(const std::string& folder) {
    std::map<std::string, std::string> state;
    const auto take = [&](const fs::path& path) {
        struct stat info {};
        lstat(path.c_str(), &info);
        std::error_code leadsNowhere;
        state[path.string()] =
            std::to_string(info.st_mode) + " " + std::to_string(info.st_size) + " " +
            std::to_string(fs::last_write_time(path, leadsNowhere).time_since_epoch().count());
    };
    take(folder);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        take(entry.path());
    return state;
}

std::vector<Json> OfType(const std::vector<Json>& objects, const std::string& type) {
    std::vector<Json> found;
    for (const Json& object : objects) {
        if (object["message_type"] == type) found.push_back(object);
    }
    return found;
}

/// A database in WAL mode, and the log that holds its rows.
struct LiveDatabase {
    explicit LiveDatabase(const std::string& statements) {
        const TemporaryFolder folder;
        sqlite3* handle = nullptr;
        EXPECT_EQ(sqlite3_open(folder.Path("db").c_str(), &handle), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(handle, ("PRAGMA journal_mode = WAL;" + statements).c_str(), nullptr, nullptr,
                               nullptr),
                  SQLITE_OK);
        database = folder.Read("db");
        log = folder.Read("db-wal");
        sqlite3_close(handle);
    }

    std::string database;
    std::string log;
};

class InspectionTest : public testing::TestWithParam<Layout> {
 protected:
    InspectionTest() {
        fs::create_directories(host.Folder().Path("tmp"));
        host.HasConfiguration(
            "[backup_SMS]\nrelativePath = Library/SMS\n[backup_whatsApp]\ndomain = net.whatsapp.WhatsApp\n"
            "[backup_weChat]\ndomain = com.tencent.xin\n[backup_Contact]\nrelativePath = "
            "Library/AddressBook\n");
        builder.AddStray("Status.plist", BackupBuilder::Status("finished"));
        builder.AddDatabase(kHome, kMessages, kMessagesDatabase);
        builder.AddRow(kHome, "Library/SMS");
        builder.AddDatabase(kWhatsappDomain, "ChatStorage.sqlite",
                            {"CREATE TABLE ZWAMESSAGE (x)", "INSERT INTO ZWAMESSAGE VALUES (1)",
                             "CREATE TABLE ZWACHATSESSION (x)"});
        builder.AddDatabase(kWechatDomain, "Documents/ab/DB/MM.sqlite",
                            {"CREATE TABLE Chat_1 (x)", "INSERT INTO Chat_1 VALUES (1), (2)",
                             "CREATE TABLE Chat_2 (x)", "INSERT INTO Chat_2 VALUES (3)"});
        builder.AddDatabase(kHome, "Library/AddressBook/AddressBook.sqlitedb",
                            {"CREATE TABLE ABPerson (x)", "INSERT INTO ABPerson VALUES (1), (2), (3), (4)"});
        builder.Add("CameraRollDomain", kPicture, "a picture");
    }

    static bool IsNew() { return GetParam() == Layout::kNew; }
    static std::string CatalogueName() { return IsNew() ? "Manifest.db" : "Manifest.mbdb"; }

    /// The path of a file in a backup.
    static std::string Place(const std::string& domain, const std::string& path) {
        return "/" + BackupBuilder::PathOf(GetParam(), BackupBuilder::FileID(domain, path));
    }

    std::string Write() {
        std::string path = builder.Write(GetParam());
        path.pop_back();
        return path;
    }

    static void WriteRecord(const std::string& folder, int type, const std::string& device) {
        std::ofstream(folder + "/backup_config.ini")
            << "[backup_info]\ndeviceid = " << device << "\ndevicename = A \"phone\" for tests\n"
            << "iosversion = 17.4.1\nserialnumber = S1\nproducttype = iPhone14,5\nfilesize = 5\n"
            << "backuptype = " << type << "\nbackuptimestr = 2024-03-05T07:08:09Z\nisvalid = 1\n";
    }

    /// A typed backup of messages and WhatsApp as the manager leaves it. \return the folder of the record.
    std::string WriteTyped(int type) {
        const std::string backup = Write();
        const auto drop = [&](int bit, const std::string& domain, const std::string& path) {
            if ((type & bit) == 0) fs::remove(backup + Place(domain, path));
        };
        drop(kMessagesBit, kHome, kMessages);
        drop(kWhatsappBit, kWhatsappDomain, "ChatStorage.sqlite");
        drop(kWechatBit, kWechatDomain, "Documents/ab/DB/MM.sqlite");
        drop(kContactsBit, kHome, "Library/AddressBook/AddressBook.sqlitedb");
        drop(0, "CameraRollDomain", kPicture);
        std::string job = host.Folder().Path("job");
        fs::create_directories(job);
        fs::rename(backup, job + "/the-device");
        WriteRecord(job, type, "the-device");
        return job;
    }

    /// Runs kruteinctl and holds the folder of its second word against what it was before.
    Finished Run(const std::vector<std::string>& words) const {
        const fs::path target = words.at(1);
        const std::string folder = (fs::is_directory(target) ? target : target.parent_path()).string();
        const auto before = StateOf(folder);
        Command command = host.Kruteinctl(words);
        command.environment["TMPDIR"] = host.Folder().Path("tmp");
        Finished finished = RunToEnd(command);
        EXPECT_EQ(StateOf(folder), before) << "the backup has been changed";
        EXPECT_TRUE(fs::is_empty(host.Folder().Path("tmp"))) << "a copy has been left behind";
        return finished;
    }

    /// The kinds of what verify finds wrong, which must show in its exit code and its summary as well.
    std::vector<std::string> Problems(const std::string& backup) const {
        const Finished verify = Run({"verify", backup, "--json"});
        const std::vector<Json> objects = Objects(verify.output);
        std::vector<std::string> kinds;
        for (const Json& problem : OfType(objects, "problem"))
            kinds.push_back(problem["kind"]);
        EXPECT_EQ(verify.code, kinds.empty() ? 0 : 1) << verify.output << verify.errors;
        EXPECT_EQ(objects.back()["message_type"], "summary");
        EXPECT_EQ(objects.back().value("problems", 999U), kinds.size());
        return kinds;
    }

    /// What show says of one app.
    Json App(const std::string& backup, const std::string& app) const {
        for (const Json& object : OfType(Objects(Run({"show", backup, "--json"}).output), "app")) {
            if (object["app"] == app) return object;
        }
        ADD_FAILURE() << "nothing of " << app;
        return {};
    }

    HostBundle host;
    BackupBuilder builder;
};

INSTANTIATE_TEST_SUITE_P(Layouts, InspectionTest, testing::Values(Layout::kNew, Layout::kOld),
                         [](const auto& layout) { return layout.param == Layout::kNew ? "Newer" : "Older"; });

using InspectionNewerTest = InspectionTest;
INSTANTIATE_TEST_SUITE_P(Layouts, InspectionNewerTest, testing::Values(Layout::kNew));

}  // namespace

// files

TEST_P(InspectionTest, FilesListsEveryEntryAsAnObject) {
    const std::string backup = Write();
    fs::remove(backup + Place(kHome, kMessages));
    const Finished files = Run({"files", backup, "--json"});
    EXPECT_EQ(files.code, 0);
    EXPECT_EQ(files.errors, "");
    const std::vector<Json> objects = Objects(files.output);
    ASSERT_EQ(objects.size(), 7U);
    EXPECT_EQ(objects[0]["message_type"], "file");
    EXPECT_EQ(objects[0]["file_id"], BackupBuilder::FileID(kHome, kMessages));
    EXPECT_EQ(objects[0]["domain"], kHome);
    EXPECT_EQ(objects[0]["path"], kMessages);
    EXPECT_EQ(objects[0]["kind"], "file");
    EXPECT_EQ(objects[0]["bytes"], BackupBuilder::DatabaseContent(kMessagesDatabase).size());
    EXPECT_EQ(objects[0]["mode"], 0100644);
    EXPECT_EQ(objects[0]["on_disk"], false);
    EXPECT_EQ(objects[1]["kind"], "folder");
    EXPECT_FALSE(objects[1].contains("on_disk"));
    EXPECT_EQ(objects[5]["path"], kPicture);
    EXPECT_EQ(objects[5]["on_disk"], true);
    const Json& summary = objects[6];
    EXPECT_EQ(summary["message_type"], "summary");
    EXPECT_EQ(summary["command"], "files");
    EXPECT_EQ(summary["path"], backup + "/" + CatalogueName());
    EXPECT_EQ(summary["entries"], 6);
    EXPECT_EQ(summary["files"], 5);
    EXPECT_EQ(summary["missing"], 1);
}

TEST_P(InspectionTest, FilesForPeopleAreLinesWithoutControlCharacters) {
    builder.Add("CameraRollDomain", "evil\x1b[2J\nname");
    const std::string backup = Write();
    const std::vector<std::string> lines = Lines(Run({"files", backup}).output);
    ASSERT_EQ(lines.size(), 9U);
    EXPECT_THAT(lines[0], StartsWith("FILE ID"));
    EXPECT_THAT(lines[1], AllOf(StartsWith(BackupBuilder::FileID(kHome, kMessages) + "  -rw-r--r--"),
                                HasSubstr("  yes   HomeDomain/Library/SMS/sms.db")));
    EXPECT_THAT(lines[2], AllOf(HasSubstr("  drwxr-xr-x"), HasSubstr("  -     HomeDomain/Library/SMS")));
    EXPECT_THAT(lines[6], HasSubstr(kPicture));
    EXPECT_THAT(lines[7], HasSubstr("CameraRollDomain/evil?[2J?name"));
    EXPECT_THAT(lines[8], StartsWith("entries: 7, files: 6 ("));
}

TEST_P(InspectionTest, FilesInATerminalOf80ColumnsHaveTheirNamesBelow) {
    Command command = host.Kruteinctl({"files", Write(), "--path", "sms.db"});
    command.terminal = true;
    command.columns = 80;
    const std::vector<std::string> lines = Lines(RunToEnd(command).output);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_THAT(lines[2], StartsWith(BackupBuilder::FileID(kHome, kMessages)));
    EXPECT_LE(lines[2].size(), 80U);
    EXPECT_THAT(lines[3], StartsWith("  HomeDomain/Library/SMS/sms.db"));
    command.columns = 120;
    EXPECT_EQ(Lines(RunToEnd(command).output).size(), 3U);
}

TEST_P(InspectionTest, FilesAreFilteredByPartsOfDomainAndPathInAnyCase) {
    const std::string backup = Write();
    const auto count = [&](const std::vector<std::string>& filter) {
        std::vector<std::string> words = {"files", backup, "--json"};
        words.insert(words.end(), filter.begin(), filter.end());
        const Finished files = Run(words);
        EXPECT_EQ(files.code, 0);
        return OfType(Objects(files.output), "file").size();
    };
    EXPECT_EQ(count({"--domain", "homedomain"}), 3U);
    EXPECT_EQ(count({"--domain", "WHATSAPP"}), 1U);
    EXPECT_EQ(count({"--path", "library/"}), 3U);
    EXPECT_EQ(count({"--path", "图片"}), 1U);
    EXPECT_EQ(count({"--domain", "Home", "--path", "sms.db"}), 1U);
    EXPECT_EQ(count({"--domain", "Camera", "--path", "sms.db"}), 0U);
    EXPECT_EQ(count({"--domain", "", "--path", ""}), 6U);
    EXPECT_EQ(count({"--path", "%"}), 0U) << "no pattern";
}

TEST_P(InspectionTest, FilesOfACatalogueByItsPath) {
    const std::string backup = Write();
    const std::vector<Json> objects =
        Objects(Run({"files", backup + "/" + CatalogueName(), "--json"}).output);
    ASSERT_EQ(objects.size(), 7U);
    EXPECT_EQ(objects[0]["on_disk"], true);
    const std::string alone = host.Folder().Path("alone");
    fs::create_directory(alone);
    fs::copy_file(backup + "/" + CatalogueName(), alone + "/copy" + (IsNew() ? ".db" : ".mbdb"));
    const Finished files = Run({"files", alone + "/copy" + (IsNew() ? ".db" : ".mbdb"), "--json"});
    EXPECT_EQ(files.code, 0);
    EXPECT_EQ(Objects(files.output).back()["missing"], 5);
}

TEST_P(InspectionTest, FilesOfATypedBackup) {
    const std::string job = WriteTyped(kMessagesBit);
    for (const std::string& named : {job, job + "/the-device", job + "/the-device/"}) {
        const Finished files = Run({"files", named, "--json"});
        EXPECT_EQ(files.code, 0) << named;
        EXPECT_EQ(Objects(files.output).back()["missing"], 4) << named;
    }
}

TEST_P(InspectionTest, FilesEndsQuietlyWhenNobodyReadsOn) {
    for (int i = 0; i < 3000; ++i)
        builder.AddRow("CameraRollDomain", "Media/a folder with a long name " + std::to_string(i));
    Command command = host.Kruteinctl({"files", Write()});
    command.words = {"/bin/sh",
                     "-c",
                     "{ \"$0\" files \"$2\"; echo $? >&2; } | head -n 1",
                     command.words[0],
                     command.words[1],
                     command.words[2]};
    const Finished files = RunToEnd(command);
    EXPECT_THAT(files.output, StartsWith("FILE ID"));
    EXPECT_EQ(files.errors, "0\n");
}

TEST_P(InspectionTest, AnOutputThatIsFullIsAFailure) {
    Command command = host.Kruteinctl({"files", Write()});
    command.words = {"/bin/sh", "-c", "\"$0\" files \"$1\" >/dev/full", command.words[0], command.words[2]};
    const Finished files = RunToEnd(command);
    EXPECT_EQ(files.code, 1);
    EXPECT_THAT(files.errors, HasSubstr("cannot write the output"));
}

TEST_P(InspectionTest, NamesThatAreNoTextStillMakeObjects) {
    builder.Add("CameraRollDomain", "broken \xFF\xC3 name");
    const std::vector<Json> objects = Objects(Run({"files", Write(), "--json", "--path", "broken"}).output);
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0]["path"], "broken \uFFFD\uFFFD name");
    EXPECT_EQ(objects[0]["on_disk"], true);
}

// Catalogues that are damaged or not there

TEST_P(InspectionTest, ADamagedCatalogueIsToldWithItsPath) {
    for (int i = 0; i < 200; ++i)
        builder.AddRow("CameraRollDomain", "Media/" + std::to_string(i));
    const std::string backup = Write();
    const std::string catalogue = backup + "/" + CatalogueName();
    const std::uintmax_t bytes = fs::file_size(catalogue);
    for (const std::uintmax_t length : {bytes - 1, bytes / 2 + 1, std::uintmax_t{1001}, std::uintmax_t{0}}) {
        fs::resize_file(catalogue, length);
        for (const std::string command : {"files", "verify", "show"}) {
            const Finished finished = Run({command, backup, "--json"});
            EXPECT_EQ(finished.code, 8) << command << " of " << length << " bytes: " << finished.output;
            const Json error = Objects(finished.output).back();
            EXPECT_EQ(error["message_type"], "error");
            EXPECT_EQ(error["command"], command);
            EXPECT_EQ(error["cause"], "backup_damaged");
            EXPECT_THAT(error["message"], HasSubstr(catalogue));
        }
    }
}

TEST_P(InspectionTest, AMissingCatalogueIsToldWithItsPath) {
    const std::string backup = Write();
    fs::remove(backup + "/" + CatalogueName());
    for (const char* command : {"files", "verify", "show"}) {
        const Finished finished = Run({command, backup});
        EXPECT_EQ(finished.code, 8) << command;
        EXPECT_THAT(finished.errors, HasSubstr(backup + "/Manifest.db or Manifest.mbdb is missing"));
    }
    const Finished files = Run({"files", backup + "/" + CatalogueName()});
    EXPECT_EQ(files.code, 8);
    EXPECT_THAT(files.errors, HasSubstr(backup + "/" + CatalogueName() + " is missing"));
}

TEST_P(InspectionTest, ACatalogueBehindALinkIsDamage) {
    const std::string backup = Write();
    const std::string catalogue = backup + "/" + CatalogueName();
    fs::rename(catalogue, host.Folder().Path("elsewhere"));
    fs::create_symlink(host.Folder().Path("elsewhere"), catalogue);
    for (const char* command : {"files", "verify", "show"})
        EXPECT_EQ(Run({command, backup}).code, 8) << command;
}

TEST_P(InspectionTest, WhereThereIsNoBackupThatIsSaid) {
    const std::string empty = host.Folder().Path("empty");
    fs::create_directories(empty);
    const std::string text = host.Folder().Write("some/text", "text");
    for (const std::string command : {"files", "verify", "show"}) {
        EXPECT_EQ(Run({command, empty}).code, 9);
        EXPECT_EQ(host.Run({command, host.Folder().Path("none")}).code, 9);
        const Finished ofFile = Run({command, text});
        EXPECT_EQ(ofFile.code, 9);
        EXPECT_THAT(ofFile.errors, HasSubstr("there is no backup at " + text));
    }
}

TEST_P(InspectionTest, WrongWordsAreRefused) {
    const std::string backup = Write();
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"files"},
             {"verify"},
             {"show"},
             {"files", backup, backup},
             {"files", backup, "--domain"},
             {"files", backup, "--quiet"},
             {"verify", backup, "--domain", "x"},
             {"verify", backup, "--json", "--quiet"},
             {"show", backup, "--types", "full"},
         }) {
        EXPECT_EQ(host.Run(words).code, 2) << words[0];
    }
}

TEST_P(InspectionNewerTest, IdsThatAreNoneAreDamageAndNoPaths) {
    const std::string secret = host.Folder().Write("secret", "four");
    const std::string outside = std::string(60, '.') + "/../../../../../../.." + secret;
    for (const std::string& id :
         {outside, std::string("../Status.plist"), std::string("3d"), std::string()}) {
        BackupBuilder hostile;
        hostile.AddStray("Status.plist", BackupBuilder::Status("finished"));
        hostile.ChangeManifest("INSERT INTO Files VALUES ('" + id + "', 'd', 'p', 1, NULL)");
        const std::string backup = hostile.Write(Layout::kNew);
        const Finished files = Run({"files", backup, "--json"});
        EXPECT_EQ(files.code, 8);
        const std::vector<Json> objects = Objects(files.output);
        ASSERT_EQ(objects.size(), 2U);
        EXPECT_EQ(objects[0]["file_id"], id);
        EXPECT_EQ(objects[0]["on_disk"], false);
        EXPECT_THAT(objects[1]["message"], HasSubstr("Manifest.db lists 1 entries whose file ID is none"));
        EXPECT_THAT(Problems(backup), ElementsAre("bad_file_id"));
        EXPECT_EQ(Run({"show", backup}).code, 0);
    }
}

// verify

TEST_P(InspectionTest, VerifyPassesAWholeBackup) {
    const std::string backup = Write();
    const Finished verify = Run({"verify", backup});
    EXPECT_EQ(verify.code, 0) << verify.output;
    EXPECT_EQ(verify.errors, "");
    EXPECT_THAT(verify.output, HasSubstr("full: 5 files, "));
    EXPECT_THAT(verify.output, HasSubstr("4 app databases; nothing is wrong"));
    const Json summary = Objects(Run({"verify", backup, "--json"}).output).back();
    EXPECT_EQ(summary["command"], "verify");
    EXPECT_EQ(summary["path"], backup);
    EXPECT_EQ(summary["types"], "full");
    EXPECT_EQ(summary["files"], 5);
    EXPECT_EQ(summary["databases"], 4);
    EXPECT_EQ(summary["problems"], 0);
}

TEST_P(InspectionTest, VerifyTellsWhatIsWrongWithAFile) {
    const std::string backup = Write();
    const std::string place = backup + Place("CameraRollDomain", kPicture);
    fs::resize_file(place, 3);
    const Json problem = OfType(Objects(Run({"verify", backup, "--json"}).output), "problem").at(0);
    EXPECT_EQ(problem["kind"], "wrong_size");
    EXPECT_EQ(problem["domain"], "CameraRollDomain");
    EXPECT_EQ(problem["path"], kPicture);
    EXPECT_EQ(problem["file_id"], BackupBuilder::FileID("CameraRollDomain", kPicture));
    EXPECT_THAT(problem["message"], HasSubstr("it has 3 bytes instead of 9"));
    fs::remove(place);
    EXPECT_THAT(Problems(backup), ElementsAre("missing"));
    fs::create_directory(place);
    EXPECT_THAT(Problems(backup), ElementsAre("no_file"));
    const Finished verify = Run({"verify", backup});
    EXPECT_EQ(verify.code, 1);
    EXPECT_THAT(verify.output,
                AllOf(HasSubstr(kPicture), HasSubstr("a folder is in its place"), HasSubstr("problems: 1")));
}

TEST_P(InspectionTest, ALinkInThePlaceOfAFileIsNotFollowed) {
    const std::string backup = Write();
    const std::string place = backup + Place("CameraRollDomain", kPicture);
    const std::string elsewhere = host.Folder().Write("elsewhere", "a picture");
    fs::remove(place);
    fs::create_symlink(elsewhere, place);
    EXPECT_THAT(Problems(backup), ElementsAre("no_file"));
    EXPECT_THAT(Run({"verify", backup}).output, HasSubstr("a link is in its place"));
    EXPECT_EQ(Objects(Run({"files", backup, "--json"}).output).back()["missing"], 1);
}

TEST_P(InspectionNewerTest, ALinkInThePlaceOfAFolderIsNotFollowed) {
    const std::string backup = Write();
    fs::rename(backup + "/3d", host.Folder().Path("3d"));
    fs::create_directory_symlink(host.Folder().Path("3d"), backup + "/3d");
    EXPECT_THAT(Problems(backup), ElementsAre("missing"));
    EXPECT_EQ(App(backup, "messages")["databases"][0]["state"], "missing");
}

TEST_P(InspectionTest, FilesThatNoEntryListsAreTold) {
    const std::string stray = "00" + std::string(38, 'e');
    const std::string place = BackupBuilder::PathOf(GetParam(), stray);
    builder.AddStray(place);
    builder.AddStray("deep/down/" + BackupBuilder::FileID(kHome, kMessages));
    const std::string backup = Write();
    EXPECT_THAT(Problems(backup), ElementsAre("unlisted", "unlisted"));
    const std::vector<Json> problems = OfType(Objects(Run({"verify", backup, "--json"}).output), "problem");
    EXPECT_EQ(problems[0]["file"], place);
    EXPECT_THAT(problems[1]["file"], StartsWith("deep/down/3d0d7e5f"));
}

TEST_P(InspectionTest, AFileOfAFoldersIdIsNotListed) {
    const std::string backup = Write();
    fs::create_directories(fs::path(backup + Place(kHome, "Library/SMS")).parent_path());
    std::ofstream(backup + Place(kHome, "Library/SMS")) << "x";
    EXPECT_THAT(Problems(backup), ElementsAre("unlisted"));
}

TEST_P(InspectionTest, FilesAreFoundInAnySpelling) {
    const std::string backup = Write();
    const fs::path place = backup + Place(kHome, kMessages);
    std::string upper = place.filename();
    for (char& c : upper)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    fs::rename(place, place.parent_path() / upper);
    EXPECT_THAT(Problems(backup), IsEmpty());
    EXPECT_EQ(App(backup, "messages")["databases"][0]["messages"], 3);
    fs::copy_file(place.parent_path() / upper, place);
    EXPECT_THAT(Problems(backup), ElementsAre("unlisted")) << "the second of them";
}

TEST_P(InspectionNewerTest, ListedIdsMayBeInUpperCase) {
    builder.ChangeManifest("UPDATE Files SET fileID = upper(fileID)");
    const std::string backup = Write();
    EXPECT_THAT(Problems(backup), IsEmpty());
    EXPECT_EQ(App(backup, "messages")["databases"][0]["messages"], 3);
    const std::string typed = WriteTyped(kMessagesBit);
    EXPECT_THAT(Problems(typed), IsEmpty());
}

TEST_P(InspectionNewerTest, EntriesThatTellTooLittleAreTold) {
    builder.ChangeManifest("UPDATE Files SET file = NULL WHERE relativePath = 'Library/SMS/sms.db'");
    builder.ChangeManifest("UPDATE Files SET flags = 3 WHERE relativePath = 'ChatStorage.sqlite'");
    EXPECT_THAT(Problems(Write()), UnorderedElementsAre("no_size", "bad_entry", "unlisted"));
}

TEST_P(InspectionTest, AnUnfinishedBackupIsTold) {
    const std::string backup = Write();
    std::ofstream(backup + "/Status.plist") << BackupBuilder::Status("uploading");
    EXPECT_THAT(Problems(backup), ElementsAre("unfinished"));
    EXPECT_EQ(Objects(Run({"show", backup, "--json"}).output).back()["finished"], false);
    fs::remove(backup + "/Status.plist");
    EXPECT_THAT(Problems(backup), ElementsAre("unfinished"));
    fs::create_symlink(host.Folder().Write("status", BackupBuilder::Status("finished")),
                       backup + "/Status.plist");
    EXPECT_THAT(Problems(backup), ElementsAre("unfinished")) << "no link is followed";
}

TEST_P(InspectionTest, ADamagedAppDatabaseIsTold) {
    const std::string backup = Write();
    for (const auto& [domain, path] : std::vector<std::pair<std::string, std::string>>{
             {kHome, kMessages},
             {kWhatsappDomain, "ChatStorage.sqlite"},
             {kWechatDomain, "Documents/ab/DB/MM.sqlite"},
             {kHome, "Library/AddressBook/AddressBook.sqlitedb"}}) {
        const std::string place = backup + Place(domain, path);
        const std::string whole = ReadWholeFile(place);
        std::string damaged = whole;
        for (std::size_t i = 4096; i < 8192; ++i)  // the second page
            damaged[i] = '\x55';
        std::ofstream(place) << damaged;
        EXPECT_THAT(Problems(backup), ElementsAre("damaged_database")) << path;
        const std::vector<Json> objects = Objects(Run({"verify", backup, "--json"}).output);
        EXPECT_EQ(OfType(objects, "problem")[0]["path"], path);
        std::ofstream(place) << std::string(whole.size(), '\x9E');
        EXPECT_THAT(Problems(backup), ElementsAre("damaged_database")) << path << ", encrypted";
        std::ofstream(place) << whole;
    }
    EXPECT_THAT(Problems(backup), IsEmpty());
}

TEST_P(InspectionTest, QuietVerifyOnlyHasItsExitCode) {
    const std::string backup = Write();
    EXPECT_EQ(Run({"verify", backup, "-q"}).code, 0);
    fs::remove(backup + Place(kHome, kMessages));
    const Finished verify = Run({"verify", backup, "--quiet"});
    EXPECT_EQ(verify.code, 1);
    EXPECT_EQ(verify.output + verify.errors, "");
}

// Typed backups

TEST_P(InspectionTest, VerifyPassesATypedBackupByItsNeeds) {
    for (const int type :
         {kMessagesBit, kWhatsappBit, kWechatBit, kMessagesBit | kWhatsappBit, kContactsBit | kMessagesBit,
          kMessagesBit | kWhatsappBit | kWechatBit | kContactsBit}) {
        fs::remove_all(host.Folder().Path("job"));
        const std::string job = WriteTyped(type);
        EXPECT_THAT(Problems(job), IsEmpty()) << type;
        EXPECT_THAT(Problems(job + "/the-device"), IsEmpty()) << type;
    }
    EXPECT_EQ(Objects(Run({"verify", host.Folder().Path("job"), "--json"}).output).back()["types"],
              "messages, whatsapp, wechat, contacts");
}

TEST_P(InspectionTest, ATypedBackupMustHoldWhatItNeedsAndNothingElse) {
    const std::string job = WriteTyped(kMessagesBit | kWhatsappBit);
    const std::string picture = job + "/the-device" + Place("CameraRollDomain", kPicture);
    fs::create_directories(fs::path(picture).parent_path());
    std::ofstream(picture) << "a picture";
    EXPECT_THAT(Problems(job), ElementsAre("not_needed"));
    EXPECT_THAT(Run({"verify", job}).output, HasSubstr("messages, whatsapp do not need it"));
    fs::remove(picture);
    fs::remove(job + "/the-device" + Place(kHome, kMessages));
    EXPECT_THAT(Problems(job), ElementsAre("missing"));
}

TEST_P(InspectionTest, JobsForContactsKeepTheirPicturesWhateverIsConfigured) {
    builder.AddDatabase(kHome, "Library/AddressBook/AddressBookImages.sqlitedb", {"CREATE TABLE t (x)"});
    host.HasConfiguration("[backup_SMS]\nrelativePath = Library/SMS\n");
    const std::string job = WriteTyped(kMessagesBit | kContactsBit);
    fs::remove(job + "/the-device" + Place(kHome, "Library/AddressBook/AddressBook.sqlitedb"));
    EXPECT_THAT(Problems(job), IsEmpty());
    WriteRecord(job, kMessagesBit, "the-device");
    EXPECT_THAT(Problems(job), ElementsAre("not_needed")) << "without contacts they are not";
}

TEST_P(InspectionTest, ATypeThatIsNotConfiguredCannotBeVerified) {
    const std::string job = WriteTyped(kMessagesBit);
    host.HasConfiguration("");
    const Finished verify = Run({"verify", job});
    EXPECT_EQ(verify.code, 12);
    EXPECT_THAT(verify.errors, HasSubstr("nothing is configured for messages"));
    EXPECT_FALSE(App(job, "messages").contains("files"));
}

TEST_P(InspectionNewerTest, AConfigurationThatMakesNoQueryIsNoDamage) {
    const std::string job = WriteTyped(kMessagesBit);
    host.HasConfiguration("[backup_SMS]\nrelativePath = Library/S'MS\n");
    const Finished verify = Run({"verify", job});
    EXPECT_EQ(verify.code, 12);
    EXPECT_THAT(verify.errors, HasSubstr("what is configured for messages makes no query"));
}

TEST_P(InspectionTest, ADamagedRecordIsToldAndEverythingTakenForNeeded) {
    const std::string job = WriteTyped(kMessagesBit | kWhatsappBit | kWechatBit | kContactsBit);
    std::ofstream(job + "/backup_config.ini") << "no record";
    EXPECT_THAT(Problems(job + "/the-device"), ElementsAre("damaged_record", "missing"));
    EXPECT_EQ(Objects(Run({"show", job + "/the-device", "--json"}).output).back()["record"], "damaged");
    const Finished verify = Run({"verify", job});
    EXPECT_EQ(verify.code, 8);
    EXPECT_THAT(verify.errors, HasSubstr(job + "/backup_config.ini"));
}

TEST_P(InspectionTest, ARecordLeadsNowhereElse) {
    const std::string job = WriteTyped(kMessagesBit);
    fs::rename(job + "/the-device", host.Folder().Path("elsewhere"));
    for (const char* device : {"../elsewhere", "..", "."}) {
        WriteRecord(job, kMessagesBit, device);
        EXPECT_EQ(Run({"verify", job}).code, 8) << device;
    }
    WriteRecord(job, kMessagesBit, "the-device");
    fs::create_directory_symlink(host.Folder().Path("elsewhere"), job + "/the-device");
    EXPECT_EQ(Run({"verify", job}).code, 8);
}

// Encrypted backups

TEST_P(InspectionTest, AnEncryptedBackupIsSaidToBeSo) {
    const std::string backup = Write();
    std::ofstream(backup + "/Manifest.plist")
        << "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>IsEncrypted</key><true/></dict></plist>";
    const Finished verify = Run({"verify", backup, "--json"});
    EXPECT_EQ(verify.code, 11);
    EXPECT_EQ(Objects(verify.output).back()["cause"], "encrypted");
    const Finished show = Run({"show", backup, "--json"});
    EXPECT_EQ(show.code, 0);
    EXPECT_EQ(Objects(show.output).back()["encrypted"], true);
    EXPECT_THAT(Run({"show", backup}).output, HasSubstr("the backup is encrypted"));
    EXPECT_EQ(Run({"files", backup}).code, 0) << "this catalogue can be read all the same";
}

TEST_P(InspectionNewerTest, ACatalogueThatIsEncryptedItself) {
    const std::string backup = Write();
    std::ofstream(backup + "/Manifest.db") << std::string(8192, '\x9E');
    EXPECT_EQ(Run({"files", backup}).code, 11);
    EXPECT_EQ(Run({"verify", backup}).code, 11);
    EXPECT_EQ(Objects(Run({"show", backup, "--json"}).output).back()["encrypted"], true);
}

TEST_P(InspectionNewerTest, ACatalogueThatIsNoDatabaseIsDamageWhenTheBackupSaysThatItIsNotEncrypted) {
    const std::string backup = Write();
    std::ofstream(backup + "/Manifest.db") << std::string(8192, '\x9E');
    std::ofstream(backup + "/Manifest.plist")
        << "<?xml version=\"1.0\"?><plist "
           "version=\"1.0\"><dict><key>IsEncrypted</key><false/></dict></plist>";
    EXPECT_EQ(Run({"files", backup}).code, 8);
    EXPECT_EQ(Run({"verify", backup}).code, 8);
}

// Databases with logs

TEST_P(InspectionTest, ALogThatTheCatalogueListsBelongsToItsDatabase) {
    const LiveDatabase live(
        "CREATE TABLE message (x); CREATE TABLE chat (x); PRAGMA wal_checkpoint;"
        "INSERT INTO message VALUES (1), (2)");
    BackupBuilder other;
    other.AddStray("Status.plist", BackupBuilder::Status("finished"));
    other.Add(kHome, kMessages, live.database);
    other.Add(kHome, std::string(kMessages) + "-shm", std::string(32768, '\0'));
    other.Add(kHome, std::string(kMessages) + "-wal", live.log);
    std::string backup = other.Write(GetParam());
    EXPECT_THAT(Problems(backup), IsEmpty());
    const Json databases = App(backup, "messages")["databases"];
    ASSERT_EQ(databases.size(), 1U);
    EXPECT_EQ(databases[0]["state"], "ok");
    EXPECT_EQ(databases[0]["messages"], 2);
    EXPECT_EQ(databases[0]["chats"], 0);
    fs::resize_file(backup + Place(kHome, std::string(kMessages) + "-wal"), 0);
    EXPECT_EQ(App(backup, "messages")["databases"][0]["messages"], 0) << "the log made the difference";
}

TEST_P(InspectionNewerTest, ACatalogueWithALogBesideIt) {
    const std::string backup = Write();
    const std::string live = host.Folder().Path("live.db");
    fs::copy_file(backup + "/Manifest.db", live);
    sqlite3* handle = nullptr;
    ASSERT_EQ(sqlite3_open(live.c_str(), &handle), SQLITE_OK);
    ASSERT_EQ(
        sqlite3_exec(handle, "PRAGMA journal_mode = WAL; DELETE FROM Files WHERE domain = 'CameraRollDomain'",
                     nullptr, nullptr, nullptr),
        SQLITE_OK);
    fs::copy_file(live, backup + "/Manifest.db", fs::copy_options::overwrite_existing);
    fs::copy_file(live + "-wal", backup + "/Manifest.db-wal");
    sqlite3_close(handle);
    EXPECT_EQ(Objects(Run({"files", backup, "--json"}).output).back()["entries"], 5);
    EXPECT_THAT(Problems(backup), ElementsAre("unlisted"));
    const std::string typed = host.Folder().Path("typed");
    fs::create_directory(typed);
    fs::rename(backup, typed + "/the-device");
    WriteRecord(typed, kMessagesBit | kWhatsappBit | kWechatBit | kContactsBit, "the-device");
    EXPECT_THAT(Problems(typed), ElementsAre("unlisted"));
}

// show

TEST_P(InspectionTest, ShowTellsTheRecordAndWhatIsKeptOfEachApp) {
    const std::string job = WriteTyped(kMessagesBit | kContactsBit);
    const std::vector<Json> objects = Objects(Run({"show", job, "--json"}).output);
    ASSERT_EQ(objects.size(), 4U);
    EXPECT_EQ(objects[0], Json({{"message_type", "record"},
                                {"udid", "the-device"},
                                {"device_name", "A \"phone\" for tests"},
                                {"product_type", "iPhone14,5"},
                                {"system_version", "17.4.1"},
                                {"serial_number", "S1"},
                                {"types", "messages, contacts"},
                                {"type", kMessagesBit | kContactsBit},
                                {"time", "2024-03-05T07:08:09Z"},
                                {"bytes", 5 * 1024},
                                {"valid", true}}));
    EXPECT_EQ(objects[1]["app"], "messages");
    EXPECT_EQ(objects[1]["files"], 1);
    EXPECT_EQ(objects[1]["bytes"], BackupBuilder::DatabaseContent(kMessagesDatabase).size());
    EXPECT_EQ(objects[1]["databases"], Json::array({{{"file_id", BackupBuilder::FileID(kHome, kMessages)},
                                                     {"domain", kHome},
                                                     {"path", kMessages},
                                                     {"state", "ok"},
                                                     {"messages", 3},
                                                     {"chats", 2}}}));
    EXPECT_EQ(objects[2]["app"], "contacts");
    EXPECT_EQ(objects[2]["databases"][0]["contacts"], 4);
    const Json& summary = objects[3];
    EXPECT_EQ(summary["message_type"], "summary");
    EXPECT_EQ(summary["command"], "show");
    EXPECT_EQ(summary["path"], job + "/the-device");
    EXPECT_EQ(summary["record"], "ok");
    EXPECT_EQ(summary["encrypted"], false);
    EXPECT_EQ(summary["finished"], true);
    EXPECT_EQ(summary["files"], 2);
}

TEST_P(InspectionTest, ShowForPeople) {
    const std::string job = WriteTyped(kMessagesBit | kWechatBit);
    const Finished show = Run({"show", job});
    EXPECT_EQ(show.code, 0);
    EXPECT_THAT(show.output, StartsWith("A \"phone\" for tests (iPhone14,5), version 17.4.1\n"
                                        "  device   the-device\n"
                                        "  serial   S1\n"
                                        "  types    messages, wechat\n"
                                        "  time     2024-03-05 07:08:09\n"
                                        "  size     5.1 kB\n"
                                        "  valid    yes\n"
                                        "messages  1 files, "));
    EXPECT_THAT(show.output, HasSubstr("  HomeDomain/Library/SMS/sms.db: 3 messages, 2 chats\n"));
    EXPECT_THAT(show.output,
                HasSubstr("  AppDomain-com.tencent.xin/Documents/ab/DB/MM.sqlite: 3 messages, 2 chats\n"));
    EXPECT_THAT(show.output, Not(HasSubstr("whatsapp")));
}

TEST_P(InspectionTest, ABackupWithoutARecordIsShownToo) {
    const std::string backup = Write();
    const Finished show = Run({"show", backup});
    EXPECT_EQ(show.code, 0);
    EXPECT_THAT(show.output, StartsWith("no record\n"));
    const std::vector<Json> objects = Objects(Run({"show", backup, "--json"}).output);
    EXPECT_EQ(OfType(objects, "record").size(), 0U);
    EXPECT_EQ(OfType(objects, "app").size(), 4U);
    EXPECT_EQ(objects.back()["record"], "none");
    EXPECT_EQ(App(backup, "whatsapp")["databases"][0]["messages"], 1);
    EXPECT_EQ(App(backup, "whatsapp")["databases"][0]["chats"], 0);
}

TEST_P(InspectionTest, ARecordWithoutABackupIsShown) {
    const std::string job = host.Folder().Path("job");
    fs::create_directory(job);
    WriteRecord(job, kContactsBit, "the-device");
    const Finished show = Run({"show", job});
    EXPECT_EQ(show.code, 0);
    EXPECT_THAT(show.output, AllOf(HasSubstr("types    contacts"), HasSubstr("no files: ")));
    EXPECT_EQ(Objects(Run({"show", job, "--json"}).output).back().contains("path"), false);
    EXPECT_EQ(Run({"verify", job}).code, 9);
    EXPECT_EQ(Run({"files", job}).code, 9);
}

TEST_P(InspectionTest, DatabasesThatCannotBeReadAreToldByApp) {
    const std::string backup = Write();
    const auto state = [&](const std::string& app) { return App(backup, app)["databases"][0]["state"]; };
    const std::string messages = backup + Place(kHome, kMessages);
    std::ofstream(messages) << std::string(8192, '\x9E');
    EXPECT_EQ(state("messages"), "no_database");
    std::ofstream(messages).flush();
    EXPECT_EQ(state("messages"), "empty");
    std::ofstream(messages) << BackupBuilder::DatabaseContent({"CREATE TABLE message (x)"});
    const Json partly = App(backup, "messages")["databases"][0];
    EXPECT_EQ(partly["state"], "ok");
    EXPECT_EQ(partly["messages"], 0);
    EXPECT_FALSE(partly.contains("chats"));
    fs::resize_file(backup + Place(kWhatsappDomain, "ChatStorage.sqlite"), 5000);
    EXPECT_EQ(state("whatsapp"), "damaged");
    fs::remove(backup + Place(kWechatDomain, "Documents/ab/DB/MM.sqlite"));
    EXPECT_EQ(state("wechat"), "missing");
    EXPECT_EQ(state("contacts"), "ok");
    const Finished show = Run({"show", backup});
    EXPECT_EQ(show.code, 0);
    EXPECT_THAT(show.output, AllOf(HasSubstr("ChatStorage.sqlite: damaged: "),
                                   HasSubstr("MM.sqlite: listed but not in the backup")));
}
