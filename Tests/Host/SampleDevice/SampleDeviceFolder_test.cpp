#include "Host/SampleDevice/SampleDeviceFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "Common/std/std_objc.h"
#include "Tests/support/TemporaryFolder.h"

using krutein::FindSampleDevice;
using krutein::ListSampleDevices;
using krutein::SampleDevice;
using krutein::SampleDeviceError;
using krutein::SampleDevicesFolder;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class FolderOfDevices : public testing::Test {
 protected:
    void Connect(const std::string& udid, const std::string& name) const {
        m_folder.Write(udid + ".json", R"({"udid": ")" + udid + R"(", "name": ")" + name +
                                           R"(", "productType": "iPhone14,5", "systemVersion": "17.4.1",
            "buildVersion": "21E236", "serialNumber": "S1", "disk": {"totalBytes": 1, "availableBytes": 0}})");
    }

    TemporaryFolder m_folder;
};

}  // namespace

TEST_F(FolderOfDevices, HasADeviceForEachDescription) {
    Connect("b-2", "Second");
    Connect("a-1", "First");
    const auto device = FindSampleDevice(m_folder.Path(), "b-2");
    ASSERT_TRUE(device.has_value());
    EXPECT_EQ(device->name, "Second");

    const auto list = ListSampleDevices(m_folder.Path());
    EXPECT_THAT(list.problems, IsEmpty());
    EXPECT_THAT(list.devices, ElementsAre(testing::Field(&SampleDevice::udid, "a-1"),
                                          testing::Field(&SampleDevice::udid, "b-2")));
}

TEST_F(FolderOfDevices, KnowsDevicesOnlyByTheirExactUdid) {
    Connect("Ab-1", "First");
    m_folder.Write("sub/c-3.json");
    for (const char* const udid : {"ab-1", "AB-1", "Ab", "Ab-1.json", "", ".", "..", "sub/c-3", "../x", "*"})
        EXPECT_FALSE(FindSampleDevice(m_folder.Path(), udid).has_value()) << udid;
}

TEST_F(FolderOfDevices, PassesOverWhatIsNoDescription) {
    Connect("a-1", "First");
    m_folder.Write("notes.txt", "x");
    m_folder.Write(".json", "x");
    m_folder.Write("._a-1.json", "x");
    const auto list = ListSampleDevices(m_folder.Path());
    EXPECT_THAT(list.problems, IsEmpty());
    EXPECT_EQ(list.devices.size(), 1U);
}

TEST_F(FolderOfDevices, ShowsTheGoodOnesNextToABrokenOne) {
    Connect("a-1", "First");
    const std::string broken = m_folder.Write("b-2.json", "{}");
    const auto list = ListSampleDevices(m_folder.Path());
    EXPECT_EQ(list.devices.size(), 1U);
    EXPECT_THAT(list.problems, ElementsAre(broken + ": udid: is missing"));
    EXPECT_THROW(FindSampleDevice(m_folder.Path(), "b-2"), SampleDeviceError);
}

TEST_F(FolderOfDevices, HasNoDevicesWhenItIsMissing) {
    const std::string missing = m_folder.Path("missing");
    EXPECT_FALSE(FindSampleDevice(missing, "a-1").has_value());
    const auto list = ListSampleDevices(missing);
    EXPECT_THAT(list.devices, IsEmpty());
    EXPECT_THAT(list.problems, ElementsAre(AllOf(StartsWith(missing), HasSubstr("No such file"))));
}

TEST(SampleDevicesFolder, LiesInTheBundleUnlessTheEnvironmentNamesAnother) {
    unsetenv(krutein::kSampleDevicesVariable);
    const std::filesystem::path program = STD_OBJC_GetCurrentAppPath();
    const std::filesystem::path bundle = program.parent_path().parent_path().parent_path();
    EXPECT_EQ(SampleDevicesFolder(), (bundle / "Resources/SampleDevices").string());
    setenv(krutein::kSampleDevicesVariable, "", 1);
    EXPECT_EQ(SampleDevicesFolder(), (bundle / "Resources/SampleDevices").string());
    setenv(krutein::kSampleDevicesVariable, "/elsewhere", 1);
    EXPECT_EQ(SampleDevicesFolder(), "/elsewhere");
    unsetenv(krutein::kSampleDevicesVariable);
}

TEST(ShippedDevices, AreOneOfEachLayout) {
    const auto list = ListSampleDevices(SHIPPED_DEVICES);
    EXPECT_THAT(list.problems, IsEmpty());
    ASSERT_EQ(list.devices.size(), 2U);
    EXPECT_GE(list.devices[0].MajorVersion(), 10);
    EXPECT_EQ(list.devices[0].udid.size(), 25U);
    EXPECT_LT(list.devices[1].MajorVersion(), 10);
    EXPECT_EQ(list.devices[1].udid.size(), 40U);
}
