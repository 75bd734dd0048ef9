#include "Tools/devicesim/DeviceValues.h"

#include <gtest/gtest.h>

using namespace devicesim;

namespace {

krutein::SampleDevice Facts() {
    krutein::SampleDevice facts;
    facts.udid = "abc-1";
    facts.name = "Ann's phone";
    facts.productType = "iPad13,1";
    facts.systemVersion = "17.4.1";
    facts.buildVersion = "21E236";
    facts.serialNumber = "S1";
    facts.disk.totalBytes = 64'000'000'000;
    facts.disk.availableBytes = 1'000'000'000;
    return facts;
}

}  // namespace

TEST(DeviceValues, HoldTheDescription) {
    const Device device(Facts(), 3);
    const std::optional<Plist> values = ValuesOf(device, "");
    ASSERT_TRUE(values);
    EXPECT_EQ(values->Text("DeviceName"), "Ann's phone");
    EXPECT_EQ(values->Text("ProductType"), "iPad13,1");
    EXPECT_EQ(values->Text("DeviceClass"), "iPad");
    EXPECT_EQ(values->Text("ProductVersion"), "17.4.1");
    EXPECT_EQ(values->Text("BuildVersion"), "21E236");
    EXPECT_EQ(values->Text("SerialNumber"), "S1");
    EXPECT_EQ(values->Text("UniqueDeviceID"), "abc-1");
    EXPECT_FALSE(values->Has("PhoneNumber"));
}

TEST(DeviceValues, HoldThePhoneNumberOfADeviceThatHasOne) {
    krutein::SampleDevice facts = Facts();
    facts.phoneNumber = "+1 555 010 0001";
    EXPECT_EQ(ValuesOf(Device(facts, 1), "")->Text("PhoneNumber"), "+1 555 010 0001");
}

TEST(DeviceValues, HoldTheStorage) {
    const std::optional<Plist> usage = ValuesOf(Device(Facts(), 1), "com.apple.disk_usage");
    ASSERT_TRUE(usage);
    EXPECT_EQ(usage->Number("TotalDiskCapacity"), 64'000'000'000U);
    EXPECT_EQ(usage->Number("TotalDataAvailable"), 1'000'000'000U);
    EXPECT_EQ(*usage->Number("TotalDataCapacity") + *usage->Number("TotalSystemCapacity"), 64'000'000'000U);
}

TEST(DeviceValues, AddUpOnADeviceThatIsAlmostEmpty) {
    krutein::SampleDevice facts = Facts();
    facts.disk.availableBytes = facts.disk.totalBytes - 1;
    const std::optional<Plist> usage = ValuesOf(Device(facts, 1), "com.apple.disk_usage");
    EXPECT_EQ(usage->Number("TotalSystemCapacity"), 1U);
    EXPECT_EQ(usage->Number("TotalDataCapacity"), 63'999'999'999U);
}

TEST(DeviceValues, KnowSomeOtherDomains) {
    const Device device(Facts(), 1);
    EXPECT_TRUE(ValuesOf(device, "com.apple.mobile.battery")->Number("BatteryCurrentCapacity"));
    EXPECT_EQ(ValuesOf(device, "com.apple.international")->Text("Language"), "en");
    EXPECT_FALSE(ValuesOf(device, "com.apple.unknown"));
}
