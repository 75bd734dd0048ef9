// The device object on the real client library, against a simulated device daemon in a process of its own.

#include "Module/Sync/DeviceInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libimobiledevice/libimobiledevice.h>
#include <libimobiledevice/lockdown.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "Module/Sync/SyncFactory.h"
#include "Tests/support/LogRecorder.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/SimulatedDevices.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kPhone[] = "5d41f0a9c2b7e63814d09a5be7c3f2168a90d4e1";
constexpr char kNewPhone[] = "00008110-001A2C5E3F80401E";

constexpr char kNoUdid[] = "The input uuid is nullptr\n";
constexpr char kNoDevice[] = "[Init] idevice_new failed";
constexpr char kNoHandshake[] = "[Init] lockdownd_client_new_with_handshake failed";
constexpr char kNotConnected[] = "Invalid lockdownd client\n";
constexpr char kNoSize[] = "Cannot fetch the TotalDataAvailable from device\n";

/// Longer than any question that fails at once takes, and shorter than the client library's time-outs.
constexpr std::chrono::seconds kAtOnce{9};

using TextQuestion = void (IDeviceInfo::*)(std::function<void(const char*)>);

class DeviceInfo : public testing::Test {
 protected:
    DeviceInfo() { PointToNoDaemon(); }
    ~DeviceInfo() override { m_info.ReleaseLockdownd(); }

    /// A phone with these faults, and the object bound to it.
    void Connect(const std::vector<std::string>& faults = {}) {
        m_devices.Plug(kPhone).Start(faults);
        ASSERT_TRUE(m_info.Init(kPhone));
        ForgetLog();
    }

    /// What the result function was called with.
    std::vector<std::string> Answers(TextQuestion question) {
        std::vector<std::string> answers;
        (m_info.*question)([&](const char* text) { answers.emplace_back(text == nullptr ? "null" : text); });
        return answers;
    }

    std::string Name() {
        const std::vector<std::string> answers = Answers(&IDeviceInfo::GetDeviceName);
        EXPECT_EQ(answers.size(), 1U);
        return answers.empty() ? "no answer" : answers[0];
    }

    SimulatedDevices m_devices;
    CDeviceInfo& m_info = *CDeviceInfo::GetInstance();
};

/// Cannot be asked, and says so with these log lines.
using UnboundDevice = DeviceInfo;

/// A device that goes wrong in the middle of things.
class FaultyDevice : public DeviceInfo {
 protected:
    ~FaultyDevice() override { EXPECT_LT(std::chrono::steady_clock::now() - m_start, kAtOnce); }

    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

}  // namespace

TEST_F(DeviceInfo, TellsWhatTheDeviceSays) {
    m_devices.Plug(kPhone, {"Anna's \xF0\x9F\x93\xB1", "iPhone5,2", "9.3.5", 13'478'051'840, 6'442'450'944});
    m_devices.Start();
    ASSERT_TRUE(m_info.Init(kPhone));
    EXPECT_EQ(m_info.GetDiskSize(), 13'478'051'840U);
    EXPECT_EQ(m_info.GetAvailableSize(), 6'442'450'944U);
    EXPECT_EQ(m_info.GetUsedSize(), 7'035'600'896U);
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceName), ElementsAre("Anna's \xF0\x9F\x93\xB1"));
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceType), ElementsAre("iPhone5,2"));
    EXPECT_THAT(Answers(&IDeviceInfo::GetIOSVersion), ElementsAre("9.3.5"));
}

TEST_F(DeviceInfo, LogsNothingWhenAllGoesWell) {
    ForgetLog();
    m_devices.Plug(kPhone).Start();
    ASSERT_TRUE(m_info.Init(kPhone));
    m_info.GetUsedSize();
    Name();
    m_info.ReleaseLockdownd();
    EXPECT_THAT(RecordedTexts(), IsEmpty());
}

TEST_F(DeviceInfo, AnswersOnTheCallingThreadBeforeItReturns) {
    Connect();
    std::thread::id thread;
    m_info.GetDeviceName([&](const char*) { thread = std::this_thread::get_id(); });
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(DeviceInfo, FindsTheNewKindOfIdentifier) {
    m_devices.Plug(kNewPhone).Start();
    EXPECT_TRUE(m_info.Init(kNewPhone));
    EXPECT_EQ(Name(), "Ann's phone");
}

TEST_F(DeviceInfo, IsOneObject) {
    EXPECT_EQ(CDeviceInfo::GetInstance(), &m_info);
}

TEST_F(DeviceInfo, AsksNothingWithoutAResultFunction) {
    Connect();
    m_info.GetDeviceName({});
    m_info.GetDeviceType(nullptr);
    m_info.GetIOSVersion({});
    EXPECT_THAT(RecordedTexts(), IsEmpty());
    EXPECT_EQ(Name(), "Ann's phone");
}

TEST_F(DeviceInfo, PairsWithADeviceThatIsNotPairedYet) {
    m_devices.Plug(kPhone).Start({"unpaired"});
    EXPECT_TRUE(m_info.Init(kPhone));
    EXPECT_EQ(Name(), "Ann's phone");
    // The second time the record is there.
    EXPECT_TRUE(m_info.Init(kPhone));
    EXPECT_EQ(Name(), "Ann's phone");
}

// --- binding

TEST_F(UnboundDevice, AnswersNothingAndLogsEachSize) {
    ForgetLog();
    EXPECT_EQ(m_info.GetAvailableSize(), 0U);
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNotConnected));
    EXPECT_EQ(m_info.GetDiskSize(), 0U);
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNotConnected, kNotConnected));
    ForgetLog();
    EXPECT_EQ(m_info.GetUsedSize(), 0U);
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNotConnected, kNotConnected));
    EXPECT_EQ(RecordedLog()[0].level, 1);
}

TEST_F(UnboundDevice, NeverCallsTheResultFunction) {
    ForgetLog();
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceName), IsEmpty());
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceType), IsEmpty());
    EXPECT_THAT(Answers(&IDeviceInfo::GetIOSVersion), IsEmpty());
    EXPECT_THAT(RecordedTexts(), IsEmpty());
}

TEST_F(UnboundDevice, StaysUnboundWithoutADaemon) {
    ForgetLog();
    EXPECT_FALSE(m_info.Init(kPhone));
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoDevice));
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceName), IsEmpty());
}

TEST_F(UnboundDevice, StaysUnboundForAnAbsentDevice) {
    m_devices.Plug(kPhone).Start();
    ForgetLog();
    EXPECT_FALSE(m_info.Init(kNewPhone));
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoDevice));
    EXPECT_EQ(RecordedLog()[0].level, 1);
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceName), IsEmpty());
}

TEST_F(UnboundDevice, ComparesIdentifiersExactly) {
    m_devices.Plug(kNewPhone).Start();
    EXPECT_FALSE(m_info.Init("00008110-001a2c5e3f80401e"));
    EXPECT_FALSE(m_info.Init("00008110001A2C5E3F80401E"));
}

TEST_F(DeviceInfo, KeepsItsDeviceWhenBoundToNull) {
    Connect();
    EXPECT_FALSE(m_info.Init(nullptr));
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoUdid));
    EXPECT_EQ(RecordedLog()[0].level, 1);
    EXPECT_EQ(Name(), "Ann's phone");
}

TEST_F(DeviceInfo, LosesItsDeviceWhenBoundToAnAbsentOne) {
    Connect();
    EXPECT_FALSE(m_info.Init(kNewPhone));
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceName), IsEmpty());
}

TEST_F(DeviceInfo, IsUnboundAfterARelease) {
    Connect();
    m_info.ReleaseLockdownd();
    EXPECT_EQ(m_info.GetDiskSize(), 0U);
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNotConnected));
    m_info.ReleaseLockdownd();
    EXPECT_TRUE(m_info.Init(kPhone));
    EXPECT_EQ(Name(), "Ann's phone");
}

TEST_F(DeviceInfo, HoldsNothingAfterFiveHundredRebinds) {
    m_devices.Plug(kPhone).Plug(kNewPhone, {"Other"}).Start();
    ASSERT_TRUE(m_info.Init(kPhone));
    const ResourceCount bound = ResourceCount::Now();
    for (int i = 0; i < 500; ++i)
        ASSERT_TRUE(m_info.Init(i % 2 == 0 ? kNewPhone : kPhone)) << i;
    EXPECT_EQ(AwaitResources(bound), bound);
    EXPECT_EQ(Name(), "Ann's phone");
    m_info.ReleaseLockdownd();
    EXPECT_EQ(ResourceCount::Now().descriptors, bound.descriptors - 1);
}

TEST_F(DeviceInfo, HoldsNothingAfterBindsThatFailed) {
    m_devices.Plug(kPhone).Start({"locked"});
    EXPECT_FALSE(m_info.Init(kPhone));
    m_info.ReleaseLockdownd();
    const ResourceCount unbound = ResourceCount::Now();
    for (int i = 0; i < 50; ++i) {
        EXPECT_FALSE(m_info.Init(kPhone));
        EXPECT_FALSE(m_info.Init(kNewPhone));
    }
    EXPECT_EQ(AwaitResources(unbound), unbound);
}

// --- the factory

TEST_F(DeviceInfo, ComesFromTheFactory) {
    m_devices.Plug(kPhone).Plug(kNewPhone, {"Other"}).Start();
    IDeviceInfo* const first = GetSyncFactory()->GetDeviceInfo(kPhone);
    ASSERT_EQ(first, &m_info);
    EXPECT_EQ(Name(), "Ann's phone");
    EXPECT_EQ(GetSyncFactory()->GetDeviceInfo(kNewPhone), first);
    EXPECT_EQ(Name(), "Other");
}

TEST_F(UnboundDevice, IsNullFromTheFactory) {
    m_devices.Plug(kPhone).Start();
    EXPECT_EQ(GetSyncFactory()->GetDeviceInfo(kNewPhone), nullptr);
}

TEST_F(UnboundDevice, IsNullFromTheFactoryForNullWhichCountsAsEmpty) {
    m_devices.Start();
    ForgetLog();
    EXPECT_EQ(GetSyncFactory()->GetDeviceInfo(nullptr), nullptr);
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoDevice));
}

// --- single values

TEST_F(DeviceInfo, ReadsSingleValuesOfAGivenClient) {
    m_devices.Plug(kPhone).Start();
    idevice_t device = nullptr;
    lockdownd_client_t client = nullptr;
    ASSERT_EQ(idevice_new(&device, kPhone), IDEVICE_E_SUCCESS);
    ASSERT_EQ(lockdownd_client_new_with_handshake(device, &client, nullptr), LOCKDOWN_E_SUCCESS);
    std::string key = "SerialNumber";
    std::string value = "untouched";
    CDeviceInfo::GetLockdowndValue(nullptr, key.data(), value);
    CDeviceInfo::GetLockdowndValue(client, nullptr, value);
    std::string unknown = "NoSuchKey";
    CDeviceInfo::GetLockdowndValue(client, unknown.data(), value);
    std::string noText = "HostAttached";
    CDeviceInfo::GetLockdowndValue(client, noText.data(), value);
    EXPECT_EQ(value, "untouched");
    CDeviceInfo::GetLockdowndValue(client, key.data(), value);
    EXPECT_EQ(value, "S1");
    lockdownd_client_free(client);
    idevice_free(device);
}

// --- devices that go wrong

TEST_F(FaultyDevice, RefusesAText) {
    Connect({"refuse=DeviceName"});
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceName), ElementsAre(""));
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceType), ElementsAre("iPhone14,5"));
    EXPECT_THAT(RecordedTexts(), IsEmpty());
}

TEST_F(FaultyDevice, RefusesItsSystemVersion) {
    Connect({"refuse=ProductVersion"});
    EXPECT_THAT(Answers(&IDeviceInfo::GetIOSVersion), ElementsAre(""));
}

TEST_F(FaultyDevice, RefusesASize) {
    Connect({"refuse=TotalDataAvailable"});
    EXPECT_EQ(m_info.GetAvailableSize(), 0U);
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoSize));
    EXPECT_EQ(m_info.GetUsedSize(), 128'000'000'000U);
}

TEST_F(FaultyDevice, LogsTheOtherSizeWithTheSameWords) {
    Connect({"missing=TotalDiskCapacity"});
    EXPECT_EQ(m_info.GetDiskSize(), 0U);
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoSize));
}

TEST_F(FaultyDevice, WrapsAroundWhenOnlyItsTotalIsUnknown) {
    Connect({"missing=TotalDiskCapacity"});
    EXPECT_EQ(m_info.GetUsedSize(), 0ULL - 48'000'000'000ULL);
}

TEST_F(FaultyDevice, AnswersWithWrongTypes) {
    Connect({"wrong-type=DeviceName", "wrong-type=TotalDataAvailable"});
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceName), ElementsAre(""));
    EXPECT_EQ(m_info.GetAvailableSize(), 0U);
}

TEST_F(FaultyDevice, AnswersLate) {
    Connect({"late=GetValue.DeviceName:700"});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Name(), "Ann's phone");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(700));
}

TEST_F(FaultyDevice, DropsItsConnectionAfterSomeAnswers) {
    // QueryType, a value of the handshake and StartSession; then one question.
    Connect({"drop-after=4"});
    EXPECT_EQ(Name(), "Ann's phone");
    EXPECT_EQ(Name(), "");
    EXPECT_EQ(m_info.GetDiskSize(), 0U);
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoSize));
}

TEST_F(FaultyDevice, SendsHalfAFrame) {
    Connect({"half=GetValue.DeviceName"});
    EXPECT_EQ(Name(), "");
}

TEST_F(FaultyDevice, AnnouncesFourGigabytes) {
    Connect({"huge=GetValue.DeviceName"});
    EXPECT_EQ(Name(), "");
}

TEST_F(FaultyDevice, AnswersWithNoPropertyListAndThenWell) {
    Connect({"garbage=GetValue.DeviceName"});
    EXPECT_EQ(Name(), "");
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceType), ElementsAre("iPhone14,5"));
}

TEST_F(FaultyDevice, IsPulledOutInMidQuestion) {
    Connect({"detach=GetValue.DeviceName"});
    EXPECT_EQ(Name(), "");
    EXPECT_EQ(m_info.GetAvailableSize(), 0U);
    EXPECT_FALSE(m_info.Init(kPhone));
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoSize, kNoDevice));
}

TEST_F(FaultyDevice, IsPulledOutBetweenQuestions) {
    Connect();
    m_devices.Unplug(kPhone);
    EXPECT_EQ(Name(), "");
    m_devices.Plug(kPhone);
    EXPECT_TRUE(m_info.Init(kPhone));
    EXPECT_EQ(Name(), "Ann's phone");
}

TEST_F(FaultyDevice, LeavesTheOthersAlone) {
    m_devices.Plug(kPhone).Plug(kNewPhone, {"Other"}).Start({std::string(kPhone) + "/locked"});
    EXPECT_FALSE(m_info.Init(kPhone));
    EXPECT_TRUE(m_info.Init(kNewPhone));
    EXPECT_EQ(Name(), "Other");
}

namespace {

/// A fault because of which the handshake fails.
class DeviceWithoutHandshake : public FaultyDevice, public testing::WithParamInterface<const char*> {};

}  // namespace

TEST_P(DeviceWithoutHandshake, FailsTheBindAtItsSecondStep) {
    m_devices.Plug(kPhone).Start({GetParam()});
    ForgetLog();
    EXPECT_FALSE(m_info.Init(kPhone));
    EXPECT_THAT(RecordedTexts(), ElementsAre(kNoHandshake));
    EXPECT_EQ(m_info.GetDiskSize(), 0U);
    EXPECT_THAT(Answers(&IDeviceInfo::GetDeviceName), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Faults, DeviceWithoutHandshake,
                         testing::Values("locked", "trust-dialog", "no-trust", "forgotten", "drop-after=0",
                                         "drop-after=1", "half=QueryType", "garbage=QueryType",
                                         "garbage=StartSession", "half=StartSession", "detach=StartSession",
                                         "half=Connect"));
