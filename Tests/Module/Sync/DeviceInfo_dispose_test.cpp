// The last use of the device object, in a program of its own.

#include <gtest/gtest.h>

#include "Module/Sync/DeviceInfo.h"
#include "Tests/support/ResourceCount.h"
#include "Tests/support/SimulatedDevices.h"

TEST(DisposedDeviceInfo, HasEndedItsConnection) {
    SimulatedDevices devices;
    devices.Plug("abc-1").Start();
    CDeviceInfo* const info = CDeviceInfo::GetInstance();
    ASSERT_TRUE(info->Init("abc-1"));
    const int bound = ResourceCount::Now().descriptors;
    info->Dispose();
    EXPECT_EQ(ResourceCount::Now().descriptors, bound - 1);
}
