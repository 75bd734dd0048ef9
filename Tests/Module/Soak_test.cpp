// What one process holds after very many operations. Not part of the usual run: Docs/testing.md says how.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>

#include "Module/BackupLib/mbdb/mbdb.h"
#include "Module/Sync/Backup.h"
#include "Module/Sync/SyncFactory.h"
#include "Tests/Module/BackupLib/JobFixture.h"
#include "Tests/support/LogRecorder.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/SimulatedDevices.h"

namespace fs = std::filesystem;

namespace {

/// Memory that an allocator may keep or take without anybody leaking: it does not grow with the operations.
constexpr long kSlackKib = 4096;

long ResidentKib() {
    std::ifstream file("/proc/self/statm");
    long pages = 0;
    file >> pages >> pages;
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

class SoakTest : public JobTest {
 protected:
    /// Does the operation `count` times; a tenth of them first, to warm up.
    template <typename Operation>
    void Soak(const std::string& what, int count, Operation operation) {
        for (int i = 0; i < count / 10; ++i)
            operation(i);
        ForgetLog();
        const ResourceCount before = ResourceCount::Now();
        const long residentBefore = ResidentKib();
        for (int i = 0; i < count; ++i) {
            operation(i);
            if (i % 10 == 0) ForgetLog();
        }
        const ResourceCount after = AwaitResources(before);
        const long residentAfter = ResidentKib();
        EXPECT_EQ(after, before);
        EXPECT_LE(residentAfter, residentBefore + kSlackKib);
        std::cout << count << " " << what << ": before " << before << ", " << residentBefore
                  << " KiB; afterwards " << after << ", " << residentAfter << " KiB\n";
    }
};

}  // namespace

TEST_F(SoakTest, BackupRuns) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    tool.For("typed").CopyBackup(backup.Write(Layout::kNew)).Many(20).ExitMessage(0);
    tool.For("whole").MakeBackup().Many(20).ExitMessage(0);
    device.id = "typed";
    RecordingCallBack ignored;
    Soak("backup runs, one in five of them typed", 500, [&](int i) {
        if (i % 5 == 0) {
            std::string folder = destination.Path();
            EXPECT_EQ(manager.StartBackupSafe(&device, folder, nullptr, 8, 0), 0);
        } else {
            RecordingSyncCallBack host;
            CBackup::GetInstance()->StartBackup("whole", destination.Path("x/").c_str(), &host);
            ASSERT_TRUE(host.Await(3));
        }
        fs::remove_all(destination.Path("Velmora_SMS_Backup"));
        fs::remove_all(destination.Path("x"));
    });
}

TEST_F(SoakTest, RebindsOfADevice) {
    SimulatedDevices devices;
    devices.Plug("device-1").Plug("device-2").Start();
    Soak("rebinds of a device", 2000, [](int i) {
        const char* const udids[] = {"device-1", "device-2", "an absent one"};
        IDeviceInfo* const info = GetSyncFactory()->GetDeviceInfo(udids[i % 3]);
        ASSERT_EQ(info == nullptr, i % 3 == 2);
        if (info != nullptr) {
            EXPECT_GT(info->GetDiskSize(), 0U);
        }
    });
    GetSyncFactory()->GetDeviceInfo("");  // lets go of the last one
}

TEST_F(SoakTest, CatalogueOpens) {
    BackupBuilder backup;
    const PhoneContent phone(backup);
    for (int i = 0; i < 200; ++i)
        backup.AddRow("HomeDomain", "Library/some/path/" + std::to_string(i));
    const std::string older = backup.Write(Layout::kOld) + "/Manifest.mbdb";
    const std::string newer = backup.Write(Layout::kNew) + "/Manifest.db";
    Soak("opens of each kind of catalogue", 10'000, [&](int) {
        mbdb_t* const catalogue = mbdb_open(older.c_str());
        ASSERT_NE(catalogue, nullptr);
        mbdb_free(catalogue);
        EXPECT_TRUE(manager.IsExistRecordInDataBase(newer, "select count(*) from Files"));
    });
}
