// What uses a second thread, while the system has none: everything is done as with one. The function below
// stands in front of the system's own one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

#include "Common/Export.h"
#include "Common/std/std_file.h"
#include "Common/std/std_objc.h"
#include "Common/std/std_sha1.h"
#include "Module/BackupLib/mbdb/mbdb.h"
#include "Module/Sync/Backup.h"
#include "Tests/Module/BackupLib/mbdb/CatalogueBuilder.h"
#include "Tests/support/Interpose.h"
#include "Tests/support/TemporaryFolder.h"

namespace {

std::atomic<bool> g_noThread{false};
std::atomic<int> g_refused{0};

}  // namespace

extern "C" KRUTEIN_API int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                                          void* (*function)(void*), void* argument) {
    static auto* const real =
        RealFunction<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    if (!g_noThread) return real(thread, attributes, function, argument);
    ++g_refused;
    return EAGAIN;
}

namespace {

class NoThread : public testing::Test {
 protected:
    NoThread() {
        g_refused = 0;
        g_noThread = true;
    }
    ~NoThread() override { g_noThread = false; }

    TemporaryFolder folder;
};

std::string HashOf(const std::string& path) {
    void* digest = nullptr;
    int length = 0;
    EXPECT_TRUE(STD_FILE_CalcFileSha1A(path, digest, length));
    std::string hash(static_cast<const char*>(digest), static_cast<std::size_t>(length));
    delete[] static_cast<unsigned char*>(digest);
    return hash;
}

}  // namespace

TEST_F(NoThread, AFileIsHashed) {
    const std::string content(std::size_t{17} * 1024 * 1024, 'x');
    const std::string path = folder.Write("large", content);
    void* digest = nullptr;
    STD_FILE_CalcSha1A(content.data(), static_cast<int>(content.size()), &digest);
    const std::string expected(static_cast<const char*>(digest), 20);
    delete[] static_cast<unsigned char*>(digest);
    EXPECT_EQ(HashOf(path), expected);
    EXPECT_GT(g_refused, 0);
}

TEST_F(NoThread, ACatalogueIsSaved) {
    std::vector<MbdbRecordBytes> records(20'000);
    const std::string image = MbdbBytes(records);
    const Mbdb mbdb = ParseMbdb(image);
    ASSERT_TRUE(mbdb_save(mbdb.get(), folder.Path("saved").c_str()));
    EXPECT_EQ(folder.Read("saved"), image);
    EXPECT_GT(g_refused, 0);
}

TEST_F(NoThread, AFolderIsMeasured) {
    for (int i = 0; i < 600; ++i)
        folder.Write("files/" + std::to_string(i), "abc");
    EXPECT_EQ(STD_FILE_GetDirSizeA(folder.Path("files")), 1800);
}

TEST_F(NoThread, ABackgroundTaskRunsAtOnce) {
    bool done = false;
    STD_OBJC_ExcuteAsyncTask([](void* context) { *static_cast<bool*>(context) = true; }, &done);
    EXPECT_TRUE(done);
    EXPECT_EQ(g_refused, 1);
}

TEST_F(NoThread, ABackupThatCannotBeginThrows) {
    try {
        CBackup::GetInstance()->StartBackup("device", "/folder/", nullptr);
        FAIL() << "nothing was thrown";
    } catch (const std::system_error& refused) {
        EXPECT_EQ(refused.code().value(), EAGAIN);
        EXPECT_THAT(refused.what(), testing::HasSubstr("thread constructor failed"));
    }
}
