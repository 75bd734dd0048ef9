#include "Host/BackupFormat/HashedFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "Tests/support/TemporaryFolder.h"

using krutein::BackupLayout;
using krutein::FileId;
using krutein::HashedFile;
using krutein::HashedFiles;
using krutein::Interrupt;
using testing::ElementsAre;

namespace fs = std::filesystem;

namespace {

const std::string kName = "3d0d7e5fb2ce288813306e4d4636395e047a3d28";
const std::string kUpper = "3D0D7E5FB2CE288813306E4D4636395E047A3D28";
const FileId kId = *FileId::Parse(kName);

class HashedFilesTest : public testing::Test {
 protected:
    HashedFiles Look(BackupLayout layout = BackupLayout::kNewer,
                     HashedFiles::Where where = HashedFiles::Where::kAnywhere) const {
        return {folder.Path(), layout, where, never};
    }

    TemporaryFolder folder;
    Interrupt never;
};

}  // namespace

TEST_F(HashedFilesTest, AreFoundInTheirPlaceOnly) {
    folder.Write("3d/" + kName, "four");
    const HashedFiles files = Look();
    ASSERT_NE(files.Find(kId), nullptr);
    EXPECT_EQ(files.Find(kId)->bytes, 4U);
    EXPECT_EQ(files.Find(kId)->kind, HashedFile::Kind::kFile);
    EXPECT_EQ(files.PathOf(*files.Find(kId)), "3d/" + kName);
    EXPECT_EQ(files.Find(FileId()), nullptr);
    const HashedFiles older = Look(BackupLayout::kOlder);
    EXPECT_EQ(older.Find(kId), nullptr);
    EXPECT_EQ(older.All().size(), 1U) << "it is seen all the same";
    folder.Write(kName, "five5");
    EXPECT_EQ(Look(BackupLayout::kOlder).Find(kId)->bytes, 5U);
}

TEST_F(HashedFilesTest, AnySpellingIsTheSame) {
    folder.Write("3D/" + kUpper);
    const HashedFiles files = Look();
    ASSERT_NE(files.Find(kId), nullptr);
    EXPECT_EQ(files.PathOf(*files.Find(kId)), "3D/" + kUpper);
    folder.Write(kUpper);
    EXPECT_NE(Look(BackupLayout::kOlder).Find(kId), nullptr);
}

TEST_F(HashedFilesTest, AFileIsFoundBeforeAnythingElseOfItsName) {
    fs::create_directories(folder.Path("3d/" + kName));
    EXPECT_EQ(Look().Find(kId)->kind, HashedFile::Kind::kFolder);
    folder.Write("3D/" + kUpper);
    EXPECT_EQ(Look().Find(kId)->kind, HashedFile::Kind::kFile);
    EXPECT_EQ(Look().All().size(), 2U);
}

TEST_F(HashedFilesTest, LinksAreSeenAndNotFollowed) {
    const TemporaryFolder elsewhere;
    elsewhere.Write(kName, "elsewhere");
    fs::create_directory(folder.Path("3d"));
    fs::create_symlink(elsewhere.Path(kName), folder.Path("3d/" + kName));
    EXPECT_EQ(Look().Find(kId)->kind, HashedFile::Kind::kLink);
    fs::remove_all(folder.Path("3d"));
    fs::create_directory_symlink(elsewhere.Path(), folder.Path("3d"));
    EXPECT_TRUE(Look().All().empty());
}

TEST_F(HashedFilesTest, PipesAreNoFiles) {
    fs::create_directory(folder.Path("3d"));
    ASSERT_EQ(mkfifo(folder.Path("3d/" + kName).c_str(), 0600), 0);
    EXPECT_EQ(Look().Find(kId)->kind, HashedFile::Kind::kOther);
}

TEST_F(HashedFilesTest, OtherNamesAreNotSeen) {
    folder.Write("Manifest.db");
    folder.Write("3d/" + kName + ".tmp");
    folder.Write("3d/" + kName.substr(1));
    EXPECT_TRUE(Look().All().empty());
}

TEST_F(HashedFilesTest, AnywhereMeansAtAnyDepth) {
    folder.Write("Snapshot/3d/" + kName);
    folder.Write("a/b/c/d/" + kUpper);
    EXPECT_EQ(Look().All().size(), 2U);
    EXPECT_TRUE(Look(BackupLayout::kNewer, HashedFiles::Where::kPlaces).All().empty());
    EXPECT_EQ(Look().Find(kId), nullptr);
}

TEST_F(HashedFilesTest, InTheirPlacesMeansNowhereElse) {
    folder.Write("3d/" + kName);
    EXPECT_EQ(Look(BackupLayout::kNewer, HashedFiles::Where::kPlaces).All().size(), 1U);
    EXPECT_TRUE(Look(BackupLayout::kOlder, HashedFiles::Where::kPlaces).All().empty());
}

TEST_F(HashedFilesTest, AFolderThatCannotBeReadIsTold) {
    folder.Write("3d/" + kName);
    // The backup's folder takes the last descriptor that there is.
    const int last = dup(0);
    close(last);
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    rlimit few = before;
    few.rlim_cur = static_cast<rlim_t>(last) + 1;
    setrlimit(RLIMIT_NOFILE, &few);
    const HashedFiles files = Look();
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_THAT(files.Unreadable(), ElementsAre(".: Too many open files"));
    EXPECT_TRUE(files.All().empty());
}

TEST_F(HashedFilesTest, AreCountedByTheThousand) {
    for (int i = 0; i < 3000; ++i) {
        char name[41];
        std::snprintf(name, sizeof name, "%02x%038x", i % 256, i);
        folder.Write(std::string(name, 2) + "/" + name);
    }
    const HashedFiles files = Look();
    EXPECT_EQ(files.All().size(), 3000U);
    for (const HashedFile& file : files.All())
        EXPECT_EQ(files.Find(file.id), &file);
}

TEST_F(HashedFilesTest, AnInterruptEndsTheLook) {
    folder.Write("3d/" + kName);
    never.Raise();
    EXPECT_THROW(Look(), Interrupt::Raised);
}
