#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>

#include "Common/std/std_sha1.h"
#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/ArchiverTool.h"
#include "Tests/Host/Archiver/BackupReader.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Key;
using testing::Pair;

namespace {

constexpr int kFile = 1;
constexpr int kFolder = 2;
constexpr int kLink = 4;

class Backup : public BothPhonesTest {
 protected:
    std::vector<ListedEntry> Listed(int flags) const {
        std::vector<ListedEntry> entries = ReadCatalogue(BackupPath());
        const auto other = [flags](const ListedEntry& entry) { return entry.flags != flags; };
        entries.erase(std::remove_if(entries.begin(), entries.end(), other), entries.end());
        return entries;
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Phones, Backup, BothPhones(), testing::PrintToStringParamName());

TEST_P(Backup, TellsTheTotalThenEveryFileThenTheExitCode) {
    const ToolRun run = BackUp();
    ASSERT_TRUE(EndedWith(run, kToolDone));
    const std::vector<ToolMessage> progress = run.Progress();
    const int total = static_cast<int>(Listed(kFile).size());
    ASSERT_EQ(static_cast<int>(progress.size()), total + 1);
    std::set<std::string> paths;
    for (int i = 0; i <= total; ++i) {
        const ToolMessage& message = progress[static_cast<std::size_t>(i)];
        EXPECT_EQ(message.first, i);
        EXPECT_EQ(message.second, total);
        if (i > 0) paths.insert(message.text);
    }
    std::set<std::string> listed;
    for (const ListedEntry& entry : Listed(kFile))
        listed.insert(entry.domain + "/" + entry.path);
    EXPECT_EQ(paths, listed);
}

TEST_P(Backup, HasEveryListedFileUnderItsIdWithItsSize) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    std::size_t files = 0;
    for (const ListedEntry& entry : Listed(kFile)) {
        EXPECT_EQ(entry.fileId, STD_FILE_CalcDomainPathSha1A(entry.domain, entry.path));
        const std::string path = BackupPath(PlaceOf(entry.domain, entry.path));
        ASSERT_TRUE(fs::is_regular_file(path)) << entry.path;
        EXPECT_EQ(static_cast<std::int64_t>(fs::file_size(path)), entry.Size()) << entry.path;
        EXPECT_THAT(entry.file, Contains(Pair("RelativePath", entry.path)));
        EXPECT_THAT(entry.file, Contains(Pair("Mode", std::to_string(S_IFREG | 0644))));
        ++files;
    }
    // And nothing else but the descriptions.
    EXPECT_EQ(ReadTree(BackupPath()).size(), files + 4);
    for (const char* const name : {"Info.plist", m_phone.catalogue, "Manifest.plist", "Status.plist"})
        EXPECT_TRUE(fs::is_regular_file(BackupPath(name))) << name;
}

TEST_P(Backup, ListsAllFoldersOnceWithoutAFile) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    std::set<std::string> needed;
    for (const ListedEntry& entry : ReadCatalogue(BackupPath())) {
        needed.insert(entry.domain + "/");
        for (fs::path path = fs::path(entry.path).parent_path(); !path.empty(); path = path.parent_path())
            needed.insert(entry.domain + "/" + path.string());
    }
    std::set<std::string> listed;
    for (const ListedEntry& entry : Listed(kFolder)) {
        listed.insert(entry.domain + "/" + entry.path);
        EXPECT_EQ(entry.fileId, STD_FILE_CalcDomainPathSha1A(entry.domain, entry.path));
        EXPECT_FALSE(fs::exists(BackupPath(PlaceOf(entry.domain, entry.path)))) << entry.path;
        EXPECT_THAT(entry.file, Contains(Pair("Mode", std::to_string(S_IFDIR | 0755))));
    }
    EXPECT_EQ(listed, needed);
}

TEST_P(Backup, ListsLinksWithoutAFile) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    const std::vector<ListedEntry> links = Listed(kLink);
    EXPECT_EQ(links.size(), 2U);
    for (const ListedEntry& link : links) {
        EXPECT_FALSE(fs::exists(BackupPath(PlaceOf(link.domain, link.path))));
        EXPECT_THAT(link.file, Contains(Pair("Mode", std::to_string(S_IFLNK | 0755))));
        EXPECT_THAT(link.file, Contains(Pair("Target", testing::Not(IsEmpty()))));
    }
}

TEST_P(Backup, HasNamesWithBlanksOtherScriptsAndAnEmptyFile) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    std::map<std::string, std::int64_t> sizes;
    for (const ListedEntry& entry : Listed(kFile))
        sizes[entry.path] = entry.Size();
    EXPECT_THAT(sizes, Contains(Pair("Documents/Notes/001/Note 0001.txt", 0)));
    EXPECT_THAT(sizes, Contains(Pair("Documents/Bücher/001/Straße nach Süden 0001.epub", 700)));
    EXPECT_THAT(sizes, Contains(Pair("Documents/备忘录/001/语音 0001.m4a", 700)));
    EXPECT_THAT(sizes, Contains(Key("Library/Mail/Saved 📎/001/attachment-0001.dat")));
}

TEST_P(Backup, IsTheSameEveryTime) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    ASSERT_TRUE(EndedWith(Run(BackupCommand(Path("second"))), kToolDone));
    auto first = ReadTree(BackupPath());
    auto second = ReadTree(Path(std::string("second/") + kUdid));
    for (const char* const name : {"Info.plist", "Manifest.plist", "Status.plist"}) {
        first.erase(name);
        second.erase(name);
    }
    EXPECT_TRUE(first == second);
}

TEST_P(Backup, DiffersFromThatOfAnotherDevice) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    nlohmann::json other = Description();
    other["udid"] = "other-device";
    Connect(other);
    std::string command = BackupCommand();
    command.replace(command.find(kUdid), sizeof kUdid - 1, "other-device");
    ASSERT_TRUE(EndedWith(Run(command), kToolDone));
    const std::string photo = PlaceOf("CameraRollDomain", "Media/DCIM/100APPLE/IMG_0001.JPG");
    EXPECT_NE(ReadWholeFile(BackupPath(photo)), ReadWholeFile(Path("backups/other-device/" + photo)));
}

TEST_P(Backup, DescribesTheDevice) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    const auto info = ReadPlist(BackupPath("Info.plist"));
    EXPECT_EQ(m_folder.Read("backups/" + std::string(kUdid) + "/Info.plist").substr(0, 5), "<?xml");
    EXPECT_THAT(info,
                AllOf(Contains(Pair("Device Name", "Ännchen's 📱")), Contains(Key("Last Backup Date")),
                      Contains(Pair("Product Type", "iPhone14,5")),
                      Contains(Pair("Product Version", m_phone.systemVersion)),
                      Contains(Pair("Build Version", "21E236")), Contains(Pair("Serial Number", "SAMPLE7")),
                      Contains(Pair("Phone Number", "+1 555 010 0001")),
                      Contains(Pair("Target Identifier", kUdid)), Contains(Pair("Target Type", "Device"))));
    EXPECT_THAT(info, AllOf(Contains(Pair("Unique Identifier", kUdid)), Contains(Key("GUID")),
                            Contains(Pair("Display Name", "Ännchen's 📱"))));

    const auto manifest = ReadPlist(BackupPath("Manifest.plist"));
    EXPECT_EQ(ReadWholeFile(BackupPath("Manifest.plist")).substr(0, 8), "bplist00");
    EXPECT_THAT(manifest,
                AllOf(Contains(Pair("IsEncrypted", "false")), Contains(Pair("WasPasscodeSet", "false")),
                      Contains(Pair("Version", m_phone.isFlat ? "9.1" : "10.0")), Contains(Key("Date")),
                      Contains(Pair("Lockdown/UniqueDeviceID", kUdid)),
                      Contains(Pair("Lockdown/ProductVersion", m_phone.systemVersion)),
                      Contains(Pair("Lockdown/DeviceName", "Ännchen's 📱"))));
    for (const char* const app : {"com.tencent.xin", "net.whatsapp.WhatsApp", "com.example.notes"}) {
        const std::string key = std::string("Applications/") + app + "/CFBundleIdentifier";
        EXPECT_THAT(manifest, Contains(Pair(key, app)));
    }
}

TEST_P(Backup, HasAnUpperCaseUniqueIdentifier) {
    nlohmann::json description = Description();
    description["udid"] = "abcdef";
    Connect(description);
    std::string command = BackupCommand();
    command.replace(command.find(kUdid), sizeof kUdid - 1, "abcdef");
    ASSERT_TRUE(EndedWith(Run(command), kToolDone));
    const auto info = ReadPlist(Path("backups/abcdef/Info.plist"));
    EXPECT_THAT(info, Contains(Pair("Unique Identifier", "ABCDEF")));
    EXPECT_THAT(info, Contains(Pair("Target Identifier", "abcdef")));
}

TEST_P(Backup, CountsAsFinishedAtTheEndAndNotBefore) {
    m_environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "20";
    const auto tool = Start(BackupCommand());
    tool->AwaitMessages(3);
    EXPECT_THAT(ReadPlist(BackupPath("Status.plist")), Contains(Pair("SnapshotState", "uploading")));
    tool->Signal(SIGTERM);
    tool->Wait();
    EXPECT_THAT(ReadPlist(BackupPath("Status.plist")), Contains(Pair("SnapshotState", "uploading")));

    m_environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "";
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    EXPECT_THAT(ReadPlist(BackupPath("Status.plist")),
                AllOf(Contains(Pair("SnapshotState", "finished")), Contains(Pair("BackupState", "new")),
                      Contains(Pair("IsFullBackup", "true")),
                      Contains(Pair("Version", m_phone.isFlat ? "2.4" : "3.3")), Contains(Key("UUID")),
                      Contains(Key("Date"))));
}

TEST_P(Backup, GoesNoFasterThanItsPace) {
    nlohmann::json description = Description();
    description.erase("contents");
    Connect(description);
    m_environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "40";
    const auto start = std::chrono::steady_clock::now();
    const ToolRun run = BackUp();
    const auto took = std::chrono::steady_clock::now() - start;
    ASSERT_TRUE(EndedWith(run, kToolDone));
    EXPECT_GE(took, std::chrono::milliseconds(25) * (run.Progress().size() - 1));
}

TEST_P(Backup, FailsWithAPaceThatIsNoNumber) {
    for (const char* const pace : {"fast", "0", "-1", "10 ", "99999999999999999999"}) {
        m_environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = pace;
        const ToolRun run = BackUp();
        EXPECT_TRUE(EndedWith(run, kToolFailed)) << pace;
        EXPECT_THAT(run.errors, HasSubstr("KRUTEIN_SAMPLE_FILES_PER_SECOND"));
    }
}

TEST_P(Backup, HoldsTheSettingsOfADeviceWithoutContents) {
    nlohmann::json description = Description();
    description.erase("contents");
    Connect(description);
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    for (const ListedEntry& entry : Listed(kFile)) {
        EXPECT_EQ(entry.domain, "HomeDomain");
        EXPECT_THAT(entry.path, testing::StartsWith("Library/Preferences/"));
    }
}

TEST_P(Backup, LeavesNoDatabaseJournals) {
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    for (const auto& file : ReadTree(BackupPath())) {
        for (const char* const ending : {"-journal", "-wal", "-shm"})
            EXPECT_THAT(file.first, testing::Not(testing::EndsWith(ending)));
    }
}

TEST_P(Backup, CreatesTheFolderAndThoseAboveIt) {
    ASSERT_TRUE(EndedWith(Run(BackupCommand(Path("a/b b/ç"))), kToolDone));
    ASSERT_TRUE(fs::is_regular_file(Path(std::string("a/b b/ç/") + kUdid + "/" + m_phone.catalogue)));
    EXPECT_EQ(fs::status(Path("a")).permissions() & fs::perms(0700), fs::perms(0700));
}

TEST_P(Backup, NeedsAConnectedDevice) {
    Disconnect(kUdid);
    const ToolRun run = BackUp();
    EXPECT_TRUE(EndedWith(run, kToolNoDevice));
    EXPECT_THAT(run.errors, HasSubstr(kUdid));
    EXPECT_THAT(run.Progress(), IsEmpty());
    EXPECT_FALSE(fs::exists(Path("backups")));
}

TEST_P(Backup, TellsOfABrokenDescription) {
    const std::string path = m_folder.Write("devices/" + std::string(kUdid) + ".json", "{}");
    const ToolRun run = BackUp();
    EXPECT_TRUE(EndedWith(run, kToolFailed));
    EXPECT_THAT(run.errors, HasSubstr(path + ": udid: is missing"));
}
