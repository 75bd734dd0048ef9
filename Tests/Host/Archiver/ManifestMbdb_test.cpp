// The catalogue of devices up to version 9: what is in it, and when somebody has tampered with it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Host/ToolCodes.h"
#include "Module/BackupLib/mbdb/mbdb.h"
#include "Tests/Host/Archiver/BackupReader.h"
#include "Tests/Host/Archiver/RestoreTest.h"
#include "Tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::Ge;
using testing::Lt;
using testing::Pair;

namespace {

using Mbdb = std::unique_ptr<mbdb_t, void (*)(mbdb_t*)>;

Mbdb Open(const std::string& path) {
    Mbdb catalogue(mbdb_open(path.c_str()), &mbdb_free);
    EXPECT_NE(catalogue, nullptr) << path;
    return catalogue;
}

std::string ParentOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

/// With a device that has some of everything.
class ManifestMbdb : public ArchiverTest {
 protected:
    ManifestMbdb() : ArchiverTest(kOldPhone) {}
    void SetUp() override { ASSERT_TRUE(EndedWith(BackUp(), kToolDone)); }
};

/// With a change to a photo's record, made with the library's functions.
class TamperedManifestMbdb : public RestoreTest {
 protected:
    TamperedManifestMbdb() : RestoreTest(kOldPhone) {}
    void SetUp() override {
        RestoreTest::SetUp();
        m_listed = ReadCatalogue(BackupPath());
    }

    void Change(const std::function<void(mbdb_record_t*)>& change) const {
        const Mbdb catalogue = Open(CataloguePath());
        const auto photo = std::find_if(
            catalogue->records.begin(), catalogue->records.end(), [](const mbdb_record_t* record) {
                return record->path != nullptr && std::string(record->path) == kPhotoPath;
            });
        ASSERT_NE(photo, catalogue->records.end());
        change(*photo);
        ASSERT_TRUE(mbdb_save(catalogue.get(), CataloguePath().c_str()));
    }

    void Write(const std::string& content) const {
        m_folder.Write("backups/" + std::string(kUdid) + "/Manifest.mbdb", content);
    }

    std::vector<ListedEntry> m_listed;  ///< as the tool wrote it
};

}  // namespace

TEST_F(ManifestMbdb, ComesBackFromTheLibraryByteForByte) {
    ASSERT_TRUE(mbdb_save(Open(CataloguePath()).get(), Path("saved").c_str()));
    EXPECT_TRUE(ReadWholeFile(Path("saved")) == ReadWholeFile(CataloguePath()));
}

TEST_F(ManifestMbdb, HasARecordForTheLibraryForEachEntry) {
    const Mbdb catalogue = Open(CataloguePath());
    const std::vector<ListedEntry> listed = ReadCatalogue(BackupPath());
    ASSERT_EQ(catalogue->records.size(), listed.size());
    for (std::size_t i = 0; i < listed.size(); ++i) {
        const mbdb_record_t& record = *catalogue->records[i];
        EXPECT_EQ(record.domain, listed[i].domain);
        EXPECT_EQ(record.path == nullptr ? "" : record.path, listed[i].path);
        EXPECT_EQ(std::to_string(record.length), listed[i].file.at("Size"));
    }
}

TEST_F(ManifestMbdb, BeginsWithADomainsOwnFolder) {
    // Domain of 10 characters, no path, no link target, hash or further text, then the mode of a folder.
    const std::string begin("mbdb\x05\x00\x00\x0AHomeDomain\x00\x00\xFF\xFF\xFF\xFF\xFF\xFF\x41\xED", 28);
    EXPECT_EQ(ReadWholeFile(CataloguePath()).substr(0, begin.size()), begin);
}

TEST_F(ManifestMbdb, HasFoldersBeforeWhatIsInThem) {
    std::set<std::string> folders;
    for (const ListedEntry& entry : ReadCatalogue(BackupPath())) {
        const std::string name = entry.domain + "/" + entry.path;
        if (!entry.path.empty()) {
            EXPECT_THAT(folders, Contains(entry.domain + "/" + ParentOf(entry.path))) << name;
        }
        if (entry.flags != 2) continue;
        EXPECT_TRUE(folders.insert(name).second) << name << " is listed twice";
    }
    EXPECT_GT(folders.size(), 20U);
}

TEST_F(ManifestMbdb, TellsOfEachEntryWhatADeviceTells) {
    std::set<std::string> inodes;
    for (const ListedEntry& entry : ReadCatalogue(BackupPath())) {
        const bool isFile = entry.flags == 1;
        EXPECT_THAT(entry.file, AllOf(Contains(Pair("UserID", "501")), Contains(Pair("GroupID", "501")),
                                      Contains(Pair("unknown1", "")), Contains(Pair("unknown2", "0")),
                                      Contains(Pair("Digest", "")), Contains(Pair("properties", "0")),
                                      Contains(Pair("ProtectionClass", isFile ? "3" : "0"))));
        EXPECT_EQ(entry.file.at("Target").empty(), entry.flags != 4) << entry.path;
        for (const char* const time : {"LastModified", "Birth", "LastStatusChange"}) {
            // In 2024.
            EXPECT_THAT(std::stoll(entry.file.at(time)), AllOf(Ge(1'704'067'200), Lt(1'735'689'600)));
        }
        EXPECT_TRUE(isFile || entry.Size() == 0) << entry.path;
        inodes.insert(entry.file.at("InodeNumber"));
    }
    EXPECT_GT(inodes.size(), 50U);
}

TEST_F(ManifestMbdb, TellsAllOfTheSizeOfALargeFile) {
    nlohmann::json description = Description();
    description["contents"] = {{"photos", {{"count", 1}, {"bytesEach", 5'000'000}}}};
    Connect(description);
    ASSERT_TRUE(EndedWith(BackUp(), kToolDone));
    std::int64_t largest = 0;
    for (const ListedEntry& entry : ReadCatalogue(BackupPath()))
        largest = std::max(largest, entry.Size());
    EXPECT_EQ(largest, 5'000'000);
}

TEST_F(ManifestMbdb, IsOfABackupWithoutFolders) {
    for (const auto& entry : fs::directory_iterator(BackupPath()))
        EXPECT_TRUE(entry.is_regular_file()) << entry.path();
}

TEST_F(TamperedManifestMbdb, IsNoticedWhenItWasCut) {
    const std::string whole = ReadWholeFile(CataloguePath());
    // The last record has more than 50 bytes, so that none of the first cuts comes between two.
    for (const std::size_t left : {whole.size() - 1, whole.size() - 10, whole.size() - 49, std::size_t{7},
                                   std::size_t{5}, std::size_t{1}, std::size_t{0}}) {
        Write(whole.substr(0, left));
        ExpectDamaged("Manifest.mbdb: ");
    }
}

TEST_F(TamperedManifestMbdb, IsNoticedWhenSomethingStandsBehindTheRecords) {
    const std::string whole = ReadWholeFile(CataloguePath());
    Write(whole + "more");
    ExpectDamaged("only " + std::to_string(whole.size()) + " of its " + std::to_string(whole.size() + 4) +
                  " bytes can be read");
}

TEST_F(TamperedManifestMbdb, IsNoticedWhenItWasCutBetweenTwoRecordsAndLostAFile) {
    const std::string whole = ReadWholeFile(CataloguePath());
    const Mbdb catalogue = Open(CataloguePath());
    std::size_t left = whole.size();
    int lost = 0;
    for (auto record = catalogue->records.rbegin(); record != catalogue->records.rend(); ++record) {
        left -= (*record)->record_size;
        Write(whole.substr(0, left));
        if (S_ISREG((*record)->mode)) ++lost;
        if (lost == 0) continue;
        ExpectDamaged("of which its catalogue lists only");
        EXPECT_TRUE(EndedWith(Run(RestoreSettingsCommand()), kToolBackupDamaged));
    }
    EXPECT_EQ(left, 6U);
    EXPECT_GT(lost, 10);
}

TEST_F(TamperedManifestMbdb, MayBeEmptyWhenThereIsNoFile) {
    Write(std::string("mbdb\x05\x00", 6));
    for (const ListedEntry& entry : m_listed)
        fs::remove(BackupPath(entry.fileId));
    const ToolRun run = Run(RestoreCommand());
    EXPECT_TRUE(EndedWith(run, kToolDone));
    EXPECT_EQ(run.Progress().size(), 1U);
}

TEST_F(TamperedManifestMbdb, DoesNotLeadOutOfTheFolder) {
    m_folder.Write("backups/elsewhere", std::string(300'000, 'x'));
    Change([](mbdb_record_t* photo) { mbdb_record_set_path(photo, "../elsewhere"); });
    ExpectDamaged(PlaceOf("CameraRollDomain", "../elsewhere") +
                  " (CameraRollDomain/../elsewhere) cannot be opened");
}

TEST_F(TamperedManifestMbdb, NeedNotNameAnything) {
    Change([](mbdb_record_t* photo) {
        mbdb_record_set_domain(photo, nullptr);
        mbdb_record_set_path(photo, nullptr);
    });
    ExpectDamaged(PlaceOf("", "") + " (/) cannot be opened");
}

TEST_F(TamperedManifestMbdb, MayHaveFurtherTextsAndHashes) {
    Change([](mbdb_record_t* photo) {
        mbdb_record_set_datahash(photo, "0123456789\0abcdefghi", 20);
        mbdb_record_set_unknown1(photo, "key", 3);
    });
    EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
}

TEST_F(TamperedManifestMbdb, HasOnlyFilesFoldersAndLinks) {
    for (const int type : {0, S_IFSOCK, S_IFCHR, S_IFIFO, 0xF000}) {
        Change([type](mbdb_record_t* photo) {
            mbdb_record_set_mode(photo, static_cast<unsigned short>(type | 0644));
        });
        ExpectDamaged(std::string(kPhotoPath) + " is neither file, folder nor link");
    }
}

TEST_F(TamperedManifestMbdb, NeedsNoFileForAFolderOrALink) {
    fs::remove(PhotoFile());
    for (const int type : {S_IFDIR, S_IFLNK}) {
        Change([type](mbdb_record_t* photo) {
            mbdb_record_set_mode(photo, static_cast<unsigned short>(type | 0755));
        });
        EXPECT_TRUE(EndedWith(Run(RestoreCommand()), kToolDone));
    }
}

TEST_F(TamperedManifestMbdb, TellsASizeThatAFileCanHave) {
    for (const std::uint64_t size : {std::uint64_t{1} << 63U, std::numeric_limits<std::uint64_t>::max()}) {
        Change([size](mbdb_record_t* photo) { mbdb_record_set_length(photo, size); });
        ExpectDamaged(std::string("does not tell the size of CameraRollDomain/") + kPhotoPath);
    }
    Change([](mbdb_record_t* photo) {
        mbdb_record_set_length(photo, std::numeric_limits<std::int64_t>::max());
    });
    ExpectDamaged(") has 300000 bytes instead of 9223372036854775807");
}

TEST_F(TamperedManifestMbdb, IsTooLongForTheLibraryFrom4GiBOn) {
    fs::resize_file(CataloguePath(), (std::uintmax_t{1} << 32U) + fs::file_size(CataloguePath()));
    ExpectDamaged("it is too long");
}
