// Catalogues on a disk that is full, cut, or no files at all.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Tests/Module/BackupLib/mbdb/CatalogueBuilder.h"
#include "Tests/support/FullDisk.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

std::string ThreeRecords() {
    return MbdbBytes({MbdbRecordBytes(), MbdbRecordBytes::Smallest(), MbdbRecordBytes()});
}

Mbdb OpenMbdb(const std::string& path) {
    testing::internal::CaptureStdout();
    Mbdb mbdb(mbdb_open(path.c_str()), &mbdb_free);
    testing::internal::GetCapturedStdout();
    return mbdb;
}

}  // namespace

TEST(MbdbFault, AFullDiskCutsTheFileAndLeavesTheCatalogueInMemory) {
    const std::string bytes = ThreeRecords();
    const TemporaryFolder folder;
    const Mbdb mbdb = OpenMbdb(folder.Write("Manifest.mbdb", bytes));
    ASSERT_NE(mbdb, nullptr);
    {
        const FullDisk full(50);
        EXPECT_TRUE(mbdb_save(mbdb.get(), folder.Path("new").c_str())) << "a write that fails is not noticed";
    }
    EXPECT_EQ(folder.Read("new"), bytes.substr(0, 50)) << "the size tells";
    EXPECT_EQ(folder.Read("Manifest.mbdb"), bytes) << "for who saves under another name first";
    EXPECT_TRUE(mbdb_save(mbdb.get(), folder.Path("new").c_str()));
    EXPECT_EQ(folder.Read("new"), bytes) << "nothing is lost while it is in memory";
}

TEST(MbdbFault, AFileCutAtAnyByteKeepsTheRecordsBeforeAndIsNotChanged) {
    const std::string bytes = ThreeRecords();
    const TemporaryFolder folder;
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        folder.Write("Manifest.mbdb", bytes.substr(0, length));
        const Mbdb mbdb = OpenMbdb(folder.Path("Manifest.mbdb"));
        ASSERT_EQ(mbdb != nullptr, length >= kMbdbHeader.size()) << length;
        EXPECT_EQ(folder.Read("Manifest.mbdb"), bytes.substr(0, length));
    }
}

TEST(MbdbFault, APipeIsNotWaitedFor) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("Manifest.mbdb").c_str(), 0600), 0);
    EXPECT_EQ(OpenMbdb(folder.Path("Manifest.mbdb")), nullptr);
}
