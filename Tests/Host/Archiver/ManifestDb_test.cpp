// The catalogue of devices from version 10 on, when somebody has tampered with it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>

#include "Host/ToolCodes.h"
#include "Tests/Host/Archiver/BackupReader.h"
#include "Tests/Host/Archiver/RestoreTest.h"
#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using testing::IsEmpty;

namespace {

class ManifestDb : public RestoreTest {
 protected:
    ManifestDb() : RestoreTest(kNewPhone) {}

    void Change(const std::string& sql) const { Query(CataloguePath(), sql); }
};

/// A change to the catalogue's row for a photo.
class HostileManifestDb : public ManifestDb, public testing::WithParamInterface<const char*> {};

}  // namespace

TEST_F(ManifestDb, NeedsTheFoldersOfFiles) {
    fs::remove_all(fs::path(PhotoFile()).parent_path());
    ExpectDamaged("cannot be opened");
}

TEST_F(ManifestDb, DoesNotHaveLinksFollowedInPlaceOfFolders) {
    const fs::path folder = fs::path(PhotoFile()).parent_path();
    fs::rename(folder, Path("elsewhere"));
    fs::create_directory_symlink(Path("elsewhere"), folder);
    ExpectDamaged("cannot be opened");
}

TEST_F(ManifestDb, NoticesACutCatalogue) {
    const auto size = static_cast<std::int64_t>(fs::file_size(CataloguePath()));
    for (const std::int64_t left : {size - 1, size - 4096, size / 2, std::int64_t{5000}, std::int64_t{4096},
                                    std::int64_t{100}, std::int64_t{10}, std::int64_t{0}}) {
        fs::resize_file(CataloguePath(), static_cast<std::uintmax_t>(left));
        ExpectDamaged("Manifest.db");
    }
}

TEST_F(ManifestDb, NoticesACatalogueWithoutTheTable) {
    Change("DROP TABLE Files");
    ExpectDamaged("Manifest.db");
}

TEST_F(ManifestDb, NoticesBytesThatWereOverwrittenInTheCatalogue) {
    const std::string good = ReadWholeFile(CataloguePath());
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

TEST_F(ManifestDb, LeavesNoTraceOfACatalogueInAnotherJournalMode) {
    Change("PRAGMA journal_mode = WAL");
    const auto before = ReadTree(BackupPath());
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
    EXPECT_TRUE(ReadTree(BackupPath()) == before);
}

TEST_F(ManifestDb, TakesAnEmptyCatalogue) {
    Change("DELETE FROM Files");
    const ToolRun run = Run(RestoreCommand());
    EXPECT_TRUE(EndedWith(run, kToolDone));
    EXPECT_EQ(run.Progress().size(), 1U);
}

TEST_P(HostileManifestDb, IsDamaged) {
    Change(std::string(GetParam()) + " WHERE relativePath = '" + kPhotoPath + "'");
    ExpectDamaged("Manifest.db");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, HostileManifestDb,
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

TEST_F(ManifestDb, DoesNotReadWhatAForeignIdLeadsTo) {
    m_folder.Write("backups/elsewhere", std::string(300'000, 'x'));
    Change(std::string("UPDATE Files SET fileID = '../elsewhere' WHERE relativePath = '") + kPhotoPath + "'");
    ExpectDamaged("'../elsewhere' is no file ID");
}

TEST_F(ManifestDb, MayHaveNoDomainOrPath) {
    Change(std::string("UPDATE Files SET domain = NULL, relativePath = NULL WHERE relativePath = '") +
           kPhotoPath + "'");
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
}

TEST_F(ManifestDb, StopsAnEndlessCatalogueOnRequest) {
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
