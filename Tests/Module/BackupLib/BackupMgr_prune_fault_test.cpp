// Pruning, while somebody puts links and odd names in its way. The functions below stand in front of the
// system's own ones, so that a folder can be swapped at the worst moment.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <dirent.h>
#include <climits>
#include <filesystem>
#include <fstream>
#include <functional>

#include "Common/Export.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/Interpose.h"
#include "Tests/support/LogRecorder.h"

namespace fs = std::filesystem;

namespace {

/// Called with the number of each folder that is closed: 1 for the first.
std::function<void(int)> g_whenClosed;
int g_closed = 0;

const char kLongName[] = "a_name_that_no_type_of_backup_needs_anywhere";

}  // namespace

extern "C" {

KRUTEIN_API int closedir(DIR* folder) {
    static auto* const real = RealFunction<int(DIR*)>("closedir");
    const int result = real(folder);
    if (g_whenClosed) g_whenClosed(++g_closed);
    return result;
}
}

namespace {

/// The backup folder of a job that has run, to be filled and pruned as often as a test likes.
class PruneFaultTest : public JobTest {
 protected:
    PruneFaultTest() {
        BackupBuilder backup;
        const PhoneContent phone(backup);
        ToolMakes(backup);
        EXPECT_EQ(Start(8), 0);
        job = JobFolder();
        folder = DeviceFolder();
        precious = outside.Write(kLongName, "something of the user's");
    }
    ~PruneFaultTest() override { g_whenClosed = nullptr; }

    void Prune(std::set<std::string> need = {}) {
        g_closed = 0;
        manager.DeleteNoNeedFile(need);
    }

    /// A file in the backup that no type needs.
    std::string Add(const std::string& name) const {
        const fs::path path = fs::path(folder) / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path) << "x";
        return path.string();
    }

    std::string job;
    std::string folder;
    TemporaryFolder outside;
    std::string precious;
};

}  // namespace

TEST_F(PruneFaultTest, AFolderThatBecomesALinkBetweenListingAndDeletingIsNotEntered) {
    // outside/x/deep/long name: what a path through the link would lead to.
    outside.Write(std::string("x/deep/") + kLongName);
    outside.Write(std::string("deep/") + kLongName);
    fs::create_directories(outside.Path("x/deep/empty"));
    fs::create_directories(outside.Path("empty"));
    for (int moment = 1; moment <= 12; ++moment) {
        fs::remove_all(folder);
        for (const char* name : {"a", "a/deep", "a/x/deep", "b/x"})
            Add(std::string(name) + "/" + kLongName);
        fs::create_directories(folder + "/a/x/deep/empty");
        fs::create_directories(folder + "/a/empty");
        const std::set<std::string> before = FilesBelow(outside.Path());
        g_whenClosed = [&](int closed) {
            if (closed != moment) return;
            for (const char* name : {"a", "b"}) {
                fs::rename(folder + "/" + name, job + "/was_" + name);
                fs::create_directory_symlink(outside.Path(), folder + "/" + name);
            }
        };
        Prune();
        g_whenClosed = nullptr;
        EXPECT_EQ(FilesBelow(outside.Path()), before) << "swapped at moment " << moment;
        EXPECT_TRUE(fs::exists(outside.Path("x/deep/empty"))) << "swapped at moment " << moment;
        EXPECT_TRUE(fs::exists(outside.Path("empty"))) << "swapped at moment " << moment;
        for (const char* name : {"was_a", "was_b"})
            fs::remove_all(job + "/" + name);
    }
    EXPECT_GE(g_closed, 12) << "there are so many moments";
}

TEST_F(PruneFaultTest, TheBackupFolderMayBecomeALinkMeanwhile) {
    outside.Write(std::string("a/") + kLongName);
    for (int moment = 1; moment <= 4; ++moment) {
        fs::remove_all(folder);
        Add(std::string("a/") + kLongName);
        Add(kLongName);
        g_whenClosed = [&](int closed) {
            if (closed != moment) return;
            fs::rename(folder, job + "/was");
            fs::create_directory_symlink(outside.Path(), folder);
        };
        Prune();
        g_whenClosed = nullptr;
        EXPECT_EQ(ReadWholeFile(precious), "something of the user's");
        EXPECT_TRUE(fs::exists(outside.Path(std::string("a/") + kLongName)));
        fs::remove_all(job + "/was");
    }
}

TEST_F(PruneFaultTest, ABackupFolderThatIsALinkIsNotPruned) {
    fs::remove_all(folder);
    fs::create_directory_symlink(outside.Path(), folder);
    fs::create_directories(outside.Path("empty"));
    Prune();
    EXPECT_EQ(ReadWholeFile(precious), "something of the user's");
    EXPECT_TRUE(fs::exists(outside.Path("empty")));
}

TEST_F(PruneFaultTest, AHardLinkLosesItsNameInTheBackupOnly) {
    fs::create_hard_link(precious, folder + "/" + kLongName);
    Prune();
    EXPECT_FALSE(fs::exists(folder + "/" + kLongName));
    EXPECT_EQ(ReadWholeFile(precious), "something of the user's");
}

TEST_F(PruneFaultTest, NamesThatWouldLeadElsewhereLeadNowhere) {
    fs::create_directories(job + "/an_empty_folder");
    Add("../a_file_of_the_job_that_is_nobodys_business");
    fs::create_directories(folder + "/..\\an_empty_folder");
    fs::create_directories(folder + "/..\\..\\an_empty_folder");
    Add("..\\a_file_of_the_job_that_is_nobodys_business");
    Add("x\\..\\..\\a_file_of_the_job_that_is_nobodys_business");
    const std::string odd = Add("a name\nwith a line end and \x01\xff bytes; rm -rf \"$HOME\" `x`");
    Prune();
    EXPECT_TRUE(fs::exists(job + "/an_empty_folder"));
    EXPECT_TRUE(fs::exists(job + "/a_file_of_the_job_that_is_nobodys_business"));
    EXPECT_FALSE(fs::exists(odd)) << "it is a name like any other";
    EXPECT_TRUE(fs::exists(folder + "/..\\an_empty_folder")) << "left alone, as files of such names are";
}

TEST_F(PruneFaultTest, DeepTreesArePruned) {
    fs::remove_all(folder);
    std::string path = folder;
    fs::create_directories(folder);
    for (int depth = 0; depth < 500; ++depth)
        path += "/d";
    fs::create_directories(path);
    std::ofstream(path + "/" + kLongName) << "x";
    Prune();
    EXPECT_FALSE(fs::exists(path + "/" + kLongName));
    EXPECT_FALSE(fs::exists(path)) << "it was empty then";
}

TEST_F(PruneFaultTest, ATreeDeeperThanAPathIsLeftAlone) {
    fs::remove_all(folder);
    fs::create_directories(folder);
    const int before = open(".", O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(chdir(folder.c_str()), 0);
    const std::string name(200, 'd');
    for (std::size_t length = 0; length < std::size_t{2} * PATH_MAX; length += name.size()) {
        ASSERT_EQ(mkdir(name.c_str(), 0755), 0);
        ASSERT_EQ(chdir(name.c_str()), 0);
    }
    std::ofstream(kLongName) << "x";
    Prune();
    EXPECT_EQ(access(kLongName, F_OK), 0) << "no path leads to it";
    ASSERT_EQ(fchdir(before), 0);
    close(before);
}
