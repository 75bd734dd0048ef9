#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/ArchiverTool.h"
#include "Tests/Host/Archiver/BackupReader.h"

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr char kPhotoPath[] = "Media/DCIM/100APPLE/IMG_0003.JPG";

class Restore : public ArchiverTest {
 protected:
    void SetUp() override {
        nlohmann::json description = Description();
        description["contents"] = {{"photos", {{"count", 5}, {"bytesEach", 300'000}}}};
        Connect(description);
        ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    }

    std::string PhotoPlace() const { return PlaceOf("CameraRollDomain", kPhotoPath); }
    std::string PhotoFile() const { return BackupPath(PhotoPlace()); }

    void Change(const std::string& sql) const { Query(BackupPath("Manifest.db"), sql); }

    /// Expects that the restore finds the backup damaged and says so with this text.
    void ExpectDamaged(const std::string& error) const {
        const ToolRun run = Run(RestoreCommand());
        EXPECT_TRUE(EndedWith(run, kToolBackupDamaged));
        EXPECT_THAT(run.errors, HasSubstr(error));
    }
};

/// A change to the catalogue's row for a photo.
class HostileCatalogue : public Restore, public testing::WithParamInterface<const char*> {};

}  // namespace

TEST_F(Restore, ReadsEveryFileOfTheBackup) {
    const ToolRun run = Run(RestoreCommand());
    ASSERT_TRUE(EndedWith(run, kToolDone));
    const int total =
        std::stoi(QueryOne(BackupPath("Manifest.db"), "SELECT count(*) FROM Files WHERE flags = 1"));
    const std::vector<ToolMessage> progress = run.Progress();
    ASSERT_EQ(static_cast<int>(progress.size()), total + 1);
    for (int i = 0; i <= total; ++i) {
        EXPECT_EQ(progress[static_cast<std::size_t>(i)].first, i);
        EXPECT_EQ(progress[static_cast<std::size_t>(i)].second, total);
    }
    EXPECT_THAT(progress, testing::Contains(testing::Field(&ToolMessage::text,
                                                           std::string("CameraRollDomain/") + kPhotoPath)));
}

TEST_F(Restore, ChangesNothingInTheBackup) {
    const auto before = ReadTree(BackupPath());
    ASSERT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
    ASSERT_TRUE(EndedWith(Run(RestoreSettingsCommand()), kToolDone));
    EXPECT_TRUE(ReadTree(BackupPath()) == before);
}

TEST_F(Restore, OfSettingsReadsOnlyThose) {
    fs::remove(PhotoFile());
    const ToolRun run = Run(RestoreSettingsCommand());
    ASSERT_TRUE(EndedWith(run, kToolDone));
    ASSERT_GT(run.Progress().size(), 10U);
    for (std::size_t i = 1; i < run.Progress().size(); ++i)
        EXPECT_THAT(run.Progress()[i].text, StartsWith("HomeDomain/Library/Preferences/"));
}

TEST_F(Restore, OfSettingsIsFromTheSourcesBackup) {
    nlohmann::json other = Description();
    other["udid"] = "other-device";
    Connect(other);
    const std::string command = "-version||-restore_all_setting|-backuppath|" + Path("backups") +
                                "|-source|" + kUdid + "|-target|other-device|-pipe|PIPE|-model|1";
    EXPECT_TRUE(EndedWith(Run(command), kToolDone));
    Disconnect(kUdid);
    EXPECT_TRUE(EndedWith(Run(command), kToolDone));
    Disconnect("other-device");
    EXPECT_TRUE(EndedWith(Run(command), kToolNoDevice));
}

TEST_F(Restore, OfSettingsNoticesADamagedOne) {
    fs::remove(BackupPath(PlaceOf("HomeDomain", "Library/Preferences/com.apple.camera.plist")));
    const ToolRun run = Run(RestoreSettingsCommand());
    EXPECT_TRUE(EndedWith(run, kToolBackupDamaged));
    EXPECT_THAT(run.errors, HasSubstr("com.apple.camera.plist"));
}

TEST_F(Restore, NeedsABackupOfTheDevice) {
    fs::rename(BackupPath(), Path("backups/other-device"));
    const ToolRun run = Run(RestoreCommand());
    EXPECT_TRUE(EndedWith(run, kToolNoBackup));
    EXPECT_THAT(run.errors, HasSubstr(BackupPath()));
    m_folder.Write("backups/" + std::string(kUdid), "a file");
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolNoBackup));
}

TEST_F(Restore, LooksForTheBackupOnlyInTheFolder) {
    for (const std::string& source :
         {std::string("../backups/") + kUdid, std::string(), std::string("."), std::string("..")}) {
        const ToolRun run = Run("-version||-restore_all_setting|-backuppath|" + Path("backups") +
                                "|-source|" + source + "|-target|" + kUdid + "|-pipe|PIPE|-model|1");
        EXPECT_TRUE(EndedWith(run, kToolNoBackup)) << source;
    }
}

TEST_F(Restore, NeedsAConnectedDevice) {
    Disconnect(kUdid);
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolNoDevice));
}

TEST_F(Restore, NeedsAFinishedBackup) {
    m_environment["KRUTEIN_SAMPLE_FILES_PER_SECOND"] = "100";
    const auto tool = Start(BackupCommand());
    tool->AwaitMessages(5);
    tool->Signal(SIGTERM);
    tool->Wait();
    ExpectDamaged("no finished backup");
    fs::remove(BackupPath("Status.plist"));
    ExpectDamaged("no finished backup");
}

TEST_F(Restore, NoticesAMissingFile) {
    fs::remove(PhotoFile());
    ExpectDamaged(PhotoPlace() + " (CameraRollDomain/" + kPhotoPath + ") cannot be opened");
}

TEST_F(Restore, NoticesAMissingFolder) {
    fs::remove_all(fs::path(PhotoFile()).parent_path());
    ExpectDamaged("cannot be opened");
}

TEST_F(Restore, NoticesAShortFile) {
    fs::resize_file(PhotoFile(), 299'999);
    ExpectDamaged(std::string(kPhotoPath) + ") has 299999 bytes instead of 300000");
}

TEST_F(Restore, NoticesALongFile) {
    fs::resize_file(PhotoFile(), 300'001);
    ExpectDamaged(std::string(kPhotoPath) + ") has 300001 bytes instead of 300000");
}

TEST_F(Restore, DoesNotWaitForAPipeInPlaceOfAFile) {
    fs::remove(PhotoFile());
    ASSERT_EQ(mkfifo(PhotoFile().c_str(), 0644), 0);
    ExpectDamaged(std::string(kPhotoPath) + ") is no file");
}

TEST_F(Restore, DoesNotReadAFolderInPlaceOfAFile) {
    fs::remove(PhotoFile());
    fs::create_directory(PhotoFile());
    ExpectDamaged(std::string(kPhotoPath) + ") is no file");
}

TEST_F(Restore, DoesNotFollowALinkInPlaceOfAFile) {
    fs::rename(PhotoFile(), Path("elsewhere"));
    fs::create_symlink(Path("elsewhere"), PhotoFile());
    ExpectDamaged(kPhotoPath);
}

TEST_F(Restore, DoesNotFollowALinkInPlaceOfAFolder) {
    const fs::path folder = fs::path(PhotoFile()).parent_path();
    fs::rename(folder, Path("elsewhere"));
    fs::create_directory_symlink(Path("elsewhere"), folder);
    ExpectDamaged("cannot be opened");
}

TEST_F(Restore, NoticesAMissingCatalogue) {
    fs::remove(BackupPath("Manifest.db"));
    ExpectDamaged("Manifest.db is missing");
}

TEST_F(Restore, DoesNotFollowALinkInPlaceOfTheCatalogue) {
    fs::rename(BackupPath("Manifest.db"), Path("elsewhere"));
    fs::create_symlink(Path("elsewhere"), BackupPath("Manifest.db"));
    ExpectDamaged("Manifest.db is missing");
}

TEST_F(Restore, NoticesACutCatalogue) {
    const auto size = static_cast<std::int64_t>(fs::file_size(BackupPath("Manifest.db")));
    for (const std::int64_t left : {size - 1, size - 4096, size / 2, std::int64_t{5000}, std::int64_t{4096},
                                    std::int64_t{100}, std::int64_t{10}, std::int64_t{0}}) {
        fs::resize_file(BackupPath("Manifest.db"), static_cast<std::uintmax_t>(left));
        ExpectDamaged("Manifest.db");
    }
}

TEST_F(Restore, NoticesACatalogueThatIsNoDatabase) {
    m_folder.Write("backups/" + std::string(kUdid) + "/Manifest.db", std::string(20'000, 'x'));
    ExpectDamaged("Manifest.db");
}

TEST_F(Restore, NoticesACatalogueWithoutTheTable) {
    Change("DROP TABLE Files");
    ExpectDamaged("Manifest.db");
}

TEST_F(Restore, NoticesBytesThatWereOverwrittenInTheCatalogue) {
    const std::string good = ReadWholeFile(BackupPath("Manifest.db"));
    // The header of each page in turn. Pages of indexes that are not read may go unnoticed.
    int noticed = 0;
    for (std::size_t page = 0; page < good.size(); page += 4096) {
        std::string bad = good;
        bad.replace(page, 64, std::string(64, '\xA5'));
        m_folder.Write("backups/" + std::string(kUdid) + "/Manifest.db", bad);
        const ToolRun run = Run(RestoreCommand());
        if (EndedWith(run, kToolBackupDamaged)) {
            ++noticed;
        } else {
            EXPECT_TRUE(EndedWith(run, kToolDone));
        }
    }
    EXPECT_GT(noticed, 5);
}

TEST_F(Restore, LeavesNoTraceOfACatalogueInAnotherJournalMode) {
    Change("PRAGMA journal_mode = WAL");
    const auto before = ReadTree(BackupPath());
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
    EXPECT_TRUE(ReadTree(BackupPath()) == before);
}

TEST_F(Restore, FindsTheCatalogueWhateverTheFolderIsCalled) {
    const std::string odd = Path("a?b#c%41 ü");
    fs::rename(Path("backups"), odd);
    std::string command = RestoreCommand();
    EXPECT_TRUE(EndedWith(Run(command.replace(command.find(Path("backups")), Path("backups").size(), odd)),
                          kToolDone));
    command = RestoreCommand();
    command.replace(command.find(Path("backups")), Path("backups").size(), "/" + odd);
    EXPECT_TRUE(EndedWith(Run(command), kToolDone));
}

TEST_F(Restore, TakesAnEmptyCatalogue) {
    Change("DELETE FROM Files");
    const ToolRun run = Run(RestoreCommand());
    EXPECT_TRUE(EndedWith(run, kToolDone));
    EXPECT_EQ(run.Progress().size(), 1U);
}

TEST_P(HostileCatalogue, IsDamaged) {
    Change(std::string(GetParam()) + " WHERE relativePath = '" + kPhotoPath + "'");
    ExpectDamaged("Manifest.db");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, HostileCatalogue,
    testing::Values("UPDATE Files SET fileID = '../../elsewhere'", "UPDATE Files SET fileID = ''",
                    "UPDATE Files SET fileID = NULL", "UPDATE Files SET fileID = '/etc/passwd'",
                    "UPDATE Files SET fileID = substr(fileID, 2)", "UPDATE Files SET fileID = fileID || '0'",
                    "UPDATE Files SET fileID = upper(substr(fileID, 1, 39)) || 'A'",
                    "UPDATE Files SET fileID = '00/' || substr(fileID, 4)",
                    "UPDATE Files SET fileID = substr(fileID, 1, 39) || char(0)",
                    "UPDATE Files SET fileID = CAST(fileID AS BLOB)", "UPDATE Files SET file = NULL",
                    "UPDATE Files SET file = x''", "UPDATE Files SET file = 'text'",
                    "UPDATE Files SET file = 5", "UPDATE Files SET file = zeroblob(2000000)",
                    "UPDATE Files SET file = CAST('bplist00' AS BLOB)",
                    "UPDATE Files SET file = substr(file, 1, 300)",
                    "UPDATE Files SET file = substr(file, 1, length(file) - 1)",
                    "UPDATE Files SET file = CAST('<plist version=\"1.0\"><dict/></plist>' AS BLOB)",
                    "UPDATE Files SET flags = 8", "UPDATE Files SET flags = NULL",
                    "UPDATE Files SET flags = 'file'"));

TEST_F(Restore, DoesNotReadWhatAForeignIdLeadsTo) {
    m_folder.Write("backups/elsewhere", std::string(300'000, 'x'));
    Change(std::string("UPDATE Files SET fileID = '../elsewhere' WHERE relativePath = '") + kPhotoPath + "'");
    ExpectDamaged("'../elsewhere' is no file ID");
}

TEST_F(Restore, MayHaveNoDomainOrPath) {
    Change(std::string("UPDATE Files SET domain = NULL, relativePath = NULL WHERE relativePath = '") +
           kPhotoPath + "'");
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
}

TEST_F(Restore, StopsAnEndlessCatalogueOnRequest) {
    Change("ALTER TABLE Files RENAME TO Hidden");
    Change(
        "CREATE VIEW Files AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
        "SELECT fileID, domain, relativePath, flags, file FROM Hidden, n");
    const auto tool = Start(RestoreCommand());
    usleep(200'000);
    tool->Signal(SIGTERM);
    EXPECT_EQ(tool->Wait(), 128 + SIGTERM);
    EXPECT_THAT(tool->Messages(), IsEmpty());
}
