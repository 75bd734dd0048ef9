// Backups and restores of the connected device, tried as a process against simulated devices.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>

#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"
#include "Tests/support/SimulatedDevices.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char kOther[] = "5d41f0a9c2b7e63814d09a5be7c3f2168a90d4e1";

/// The backup tool plays the device kUdid, with "A phone for tests" as its name.
class OnlyDevice : public testing::Test {
 protected:
    OnlyDevice() {
        PointToNoDaemon();
        host.HasDevice(20);
    }

    Finished Backup(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words = {"backup", "--to", host.Backups()};
        words.insert(words.end(), more.begin(), more.end());
        return host.Run(words);
    }

    HostBundle host;
    SimulatedDevices devices;
};

}  // namespace

TEST_F(OnlyDevice, IsBackedUpAndRestoredWithoutBeingNamed) {
    devices.Plug(HostBundle::kUdid).Start();
    const Finished backup = Backup();
    EXPECT_EQ(backup.code, 0) << backup.errors;
    EXPECT_THAT(host.BackupNames(), ElementsAre(HostBundle::kUdid));
    const Finished restore = host.Run({"restore", "--from", host.Backups()});
    EXPECT_EQ(restore.code, 0) << restore.errors;
    EXPECT_THAT(restore.output, HasSubstr(std::string("Restored ") + HostBundle::kUdid));
}

TEST_F(OnlyDevice, MustBeNamedWhenThereAreSeveral) {
    devices.Plug(HostBundle::kUdid).Plug(kOther).Start();
    EXPECT_EQ(Backup().code, 14);
    EXPECT_EQ(host.Run({"restore", "--from", host.Backups()}).code, 14);
    EXPECT_FALSE(std::filesystem::exists(host.Backups()));
    EXPECT_EQ(Backup({HostBundle::kUdid}).code, 0);
}

TEST_F(OnlyDevice, MustBeThere) {
    devices.Start();
    EXPECT_EQ(Backup().code, 3);
}

TEST_F(OnlyDevice, MustBeNamedWithoutADaemon) {
    const Finished backup = Backup();
    EXPECT_EQ(backup.code, 13);
    EXPECT_THAT(backup.errors, HasSubstr("when the device is named"));
    EXPECT_EQ(Backup({HostBundle::kUdid}).code, 0);
}

TEST_F(OnlyDevice, SaysForTheRecordWhatItIs) {
    host.HasDeviceWith(R"({"messages": {"chats": 1, "count": 5, "attachments": 0, "attachmentBytes": 0}})");
    devices.Plug(HostBundle::kUdid, {"Renamed since", "iPhone14,5", "17.5"}).Start();
    EXPECT_EQ(Backup({"--types", "messages"}).code, 0);
    EXPECT_THAT(host.Run({"list", host.Backups()}).output, HasSubstr("Renamed since  17.5"));
}

TEST_F(OnlyDevice, IsDescribedByTheSampleWithoutADaemon) {
    host.HasDeviceWith(R"({"messages": {"chats": 1, "count": 5, "attachments": 0, "attachmentBytes": 0}})");
    EXPECT_EQ(Backup({HostBundle::kUdid, "--types", "messages"}).code, 0);
    EXPECT_THAT(host.Run({"list", host.Backups()}).output, HasSubstr("A phone for tests  17.4.1"));
}

TEST_F(OnlyDevice, MustBeUnlockedForATypedBackup) {
    host.HasDeviceWith(R"({"messages": {"chats": 1, "count": 5, "attachments": 0, "attachmentBytes": 0}})");
    devices.Plug(HostBundle::kUdid).Start({"locked"});
    EXPECT_EQ(Backup({"--types", "messages"}).code, 16);
}

TEST_F(OnlyDevice, CanBeLeftAloneWhenItIsSilent) {
    host.HasDeviceWith(R"({"messages": {"chats": 1, "count": 5, "attachments": 0, "attachmentBytes": 0}})");
    devices.Plug(HostBundle::kUdid).Start({"silent=GetValue"});
    ChildProcess backup(host.Backup({"--types", "messages"}));
    EXPECT_TRUE(backup.AwaitOutput("the backup takes"));
    const auto start = std::chrono::steady_clock::now();
    backup.Signal(SIGINT);
    EXPECT_EQ(backup.Wait(), 130);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(9));
    EXPECT_FALSE(std::filesystem::exists(host.Backups()));
}
