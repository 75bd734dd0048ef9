// What the reference host tells of connected devices, tried as a process against simulated ones.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "Host/kruteinctl/ExitCode.h"
#include "Tests/Host/kruteinctl/HostBundle.h"
#include "Tests/Host/kruteinctl/Output.h"
#include "Tests/support/SimulatedDevices.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using Json = nlohmann::json;

namespace {

constexpr char kPhone[] = "00008110-00000000000000AA";
constexpr char kOldPhone[] = "5d41f0a9c2b7e63814d09a5be7c3f2168a90d4e1";

constexpr int kNoDevice = 3;
constexpr int kNoDaemon = 13;
constexpr int kSeveralDevices = 14;
constexpr int kNotPaired = 15;
constexpr int kDeviceLocked = 16;
constexpr int kDeviceGone = 17;
constexpr int kDeviceSilent = 18;

class DeviceCommands : public testing::Test {
 protected:
    DeviceCommands() { PointToNoDaemon(); }

    /// One phone, with these faults.
    void Connect(const std::vector<std::string>& faults = {}) { devices.Plug(kPhone).Start(faults); }

    Finished Info(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> words = {"info"};
        words.insert(words.end(), more.begin(), more.end());
        return host.Run(words);
    }

    HostBundle host;
    SimulatedDevices devices;
};

}  // namespace

TEST_F(DeviceCommands, InfoTellsOfTheOnlyDevice) {
    Connect();
    const Finished info = Info();
    EXPECT_EQ(info.code, 0);
    EXPECT_EQ(info.errors, "");
    EXPECT_EQ(info.output,
              "Ann's phone\n"
              "  Model    iPhone 13 (iPhone14,5)\n"
              "  System   17.4.1\n"
              "  Serial   S1\n"
              "  UDID     00008110-00000000000000AA\n"
              "  Storage  [###############---------]  80.0 GB of 128.0 GB used, 48.0 GB free\n");
}

TEST_F(DeviceCommands, InfoIsAnObjectForPrograms) {
    Connect();
    const std::vector<Json> objects = Objects(Info({"--json"}).output);
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0], Json({{"message_type", "info"},
                                {"udid", kPhone},
                                {"device_name", "Ann's phone"},
                                {"product_type", "iPhone14,5"},
                                {"model", "iPhone 13"},
                                {"system_version", "17.4.1"},
                                {"serial_number", "S1"},
                                {"total_bytes", 128'000'000'000},
                                {"used_bytes", 80'000'000'000},
                                {"available_bytes", 48'000'000'000}}));
    EXPECT_EQ(objects[1], Json({{"message_type", "summary"}, {"command", "info"}, {"udid", kPhone}}));
}

TEST_F(DeviceCommands, InfoTakesTheIdentifierInAnyForm) {
    devices.Plug(kPhone).Plug(kOldPhone, {"Old phone"}).Start();
    EXPECT_THAT(Info({"0000811000000000000000aa"}).output, StartsWith("Ann's phone\n"));
    EXPECT_THAT(Info({kOldPhone}).output, StartsWith("Old phone\n"));
}

TEST_F(DeviceCommands, InfoTellsWhatADeviceKeepsForItself) {
    Connect({"refuse=DeviceName", "refuse=TotalDiskCapacity"});
    const Finished info = Info();
    EXPECT_EQ(info.code, 0);
    EXPECT_THAT(info.output, AllOf(StartsWith("unknown\n"), HasSubstr("Storage  unknown")));
    EXPECT_FALSE(Objects(Info({"--json"}).output)[0].contains("used_bytes"));
}

TEST_F(DeviceCommands, DevicesAreATable) {
    devices.Plug(kPhone).Plug(kOldPhone, {"Old phone", "iPhone5,2", "9.3.5"}).Start();
    EXPECT_EQ(host.Run({"devices"}).output,
              "Device       Model                   System  UDID\n"
              "Ann's phone  iPhone 13 (iPhone14,5)  17.4.1  00008110-00000000000000AA\n"
              "Old phone    iPhone 5 (iPhone5,2)    9.3.5   5d41f0a9c2b7e63814d09a5be7c3f2168a90d4e1\n");
}

TEST_F(DeviceCommands, DevicesAreObjectsForPrograms) {
    Connect();
    const std::vector<Json> objects = Objects(host.Run({"devices", "--json"}).output);
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0], Json({{"message_type", "device"},
                                {"udid", kPhone},
                                {"device_name", "Ann's phone"},
                                {"product_type", "iPhone14,5"},
                                {"model", "iPhone 13"},
                                {"system_version", "17.4.1"}}));
    EXPECT_EQ(objects[1], Json({{"message_type", "summary"}, {"command", "devices"}, {"devices", 1}}));
}

TEST_F(DeviceCommands, DevicesMayBeNone) {
    devices.Start();
    const Finished list = host.Run({"devices"});
    EXPECT_EQ(list.code, 0);
    EXPECT_EQ(list.output, "no devices\n");
}

TEST_F(DeviceCommands, DevicesAreListedWithoutBeingAskedToTrust) {
    Connect({"trust-dialog"});
    EXPECT_THAT(host.Run({"devices"}).output, HasSubstr("Ann's phone"));
}

TEST_F(DeviceCommands, ASilentDeviceDoesNotHideTheOthers) {
    devices.Plug(kPhone).Plug(kOldPhone, {"Old phone"}).Start({std::string(kPhone) + "/silent=GetValue"});
    const Finished list = host.Run({"devices", "--timeout", "1"});
    EXPECT_EQ(list.code, 0);
    EXPECT_THAT(list.output, AllOf(HasSubstr("Old phone"), HasSubstr(std::string("unknown  ") + kPhone)));
}

TEST_F(DeviceCommands, WatchTellsWhatComesAndGoesUntilItIsStopped) {
    Connect();
    ChildProcess watch(host.Kruteinctl({"devices", "--watch"}));
    EXPECT_TRUE(watch.AwaitOutput("connected     00008110-00000000000000AA  Ann's phone, iPhone 13"));
    devices.Plug(kOldPhone);
    EXPECT_TRUE(watch.AwaitOutput(std::string("connected     ") + kOldPhone));
    devices.Unplug(kPhone);
    EXPECT_TRUE(watch.AwaitOutput("disconnected  00008110-00000000000000AA\n"));
    watch.Signal(SIGINT);
    EXPECT_EQ(watch.Wait(), 130);
}

TEST_F(DeviceCommands, WatchIsObjectsForPrograms) {
    Connect();
    ChildProcess watch(host.Kruteinctl({"devices", "--watch", "--json"}));
    EXPECT_TRUE(watch.AwaitOutput("\n"));
    devices.Unplug(kPhone);
    EXPECT_TRUE(watch.AwaitOutput("disconnected"));
    watch.Signal(SIGTERM);
    watch.Wait();
    const std::vector<Json> objects = Objects(watch.Output());
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_EQ(objects[0]["message_type"], "connected");
    EXPECT_EQ(objects[0]["device_name"], "Ann's phone");
    EXPECT_EQ(objects[1], Json({{"message_type", "disconnected"}, {"udid", kPhone}}));
}

// --- what goes wrong

TEST_F(DeviceCommands, NoDaemonHasACodeOfItsOwn) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"devices"}, {"devices", "--watch"}, {"info"}, {"info", kPhone}}) {
        const Finished ended = host.Run(words);
        EXPECT_EQ(ended.code, kNoDaemon);
        EXPECT_THAT(ended.errors, HasSubstr("no device daemon answers"));
    }
}

TEST_F(DeviceCommands, NoDeviceIsTheUsualCode) {
    devices.Start();
    EXPECT_EQ(Info().code, kNoDevice);
    const Finished named = Info({kPhone});
    EXPECT_EQ(named.code, kNoDevice);
    EXPECT_THAT(named.errors, HasSubstr(kPhone));
}

TEST_F(DeviceCommands, SeveralDevicesAreNamed) {
    devices.Plug(kPhone).Plug(kOldPhone).Start();
    const Finished info = Info();
    EXPECT_EQ(info.code, kSeveralDevices);
    EXPECT_THAT(info.errors, AllOf(HasSubstr(kPhone), HasSubstr(kOldPhone)));
    const Json error = Objects(Info({"--json"}).output).back();
    EXPECT_EQ(error["cause"], "several_devices");
    EXPECT_EQ(error["exit_code"], kSeveralDevices);
}

namespace {

struct FaultRow {
    const char* fault;
    int code;
    const char* words;
};

class FaultyDeviceCommands : public DeviceCommands, public testing::WithParamInterface<FaultRow> {};

}  // namespace

TEST_P(FaultyDeviceCommands, HaveTheirCodesAndWords) {
    Connect({GetParam().fault});
    // Only of a silent device is the end of the wait awaited; making a pair record takes a loaded machine
    // seconds.
    const bool isSilent = GetParam().code == static_cast<int>(ExitCode::kDeviceSilent);
    const auto start = std::chrono::steady_clock::now();
    const Finished info = Info({"--timeout", isSilent ? "2" : "30"});
    if (isSilent) {
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(9));
    }
    EXPECT_EQ(info.code, GetParam().code) << info.errors;
    EXPECT_THAT(info.errors, AllOf(StartsWith("kruteinctl: "), HasSubstr(GetParam().words)));
    EXPECT_EQ(info.output, "");
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultyDeviceCommands,
                         testing::Values(FaultRow{"trust-dialog", kNotPaired, "tap Trust"},
                                         FaultRow{"no-trust", kNotPaired, "refused"},
                                         FaultRow{"forgotten", kNotPaired, "does not know this computer"},
                                         FaultRow{"locked", kDeviceLocked, "unlock it"},
                                         FaultRow{"detach=StartSession", kDeviceGone, "disconnected"},
                                         FaultRow{"detach=GetValue.DeviceName", kDeviceGone, "disconnected"},
                                         FaultRow{"detach=GetValue.TotalDataAvailable", kDeviceGone,
                                                  "disconnected"},
                                         FaultRow{"silent=GetValue", kDeviceSilent, "in time"},
                                         FaultRow{"tls-silence", kDeviceSilent, "in time"},
                                         FaultRow{"silent=QueryType", kDeviceSilent, "in time"},
                                         FaultRow{"silent=ListDevices", kDeviceSilent, "in time"},
                                         FaultRow{"half=QueryType", 1, "does not answer as it should"},
                                         FaultRow{"garbage=GetValue", 1, "does not answer as it should"}));

TEST_F(DeviceCommands, ALateAnswerIsWaitedFor) {
    Connect({"late=GetValue.DeviceName:700"});
    EXPECT_THAT(Info({"--timeout", "20"}).output, StartsWith("Ann's phone\n"));
}

TEST_F(DeviceCommands, ASignalEndsAQuestion) {
    Connect({"silent=GetValue.DeviceName"});
    ChildProcess info(host.Kruteinctl({"info"}));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    info.Signal(SIGINT);
    EXPECT_EQ(info.Wait(), 130);
}
