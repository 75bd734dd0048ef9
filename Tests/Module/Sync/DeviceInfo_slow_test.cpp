// What takes as long as the client library's own patience.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>

#include "Module/Sync/DeviceInfo.h"
#include "Tests/support/LogRecorder.h"
#include "Tests/support/SimulatedDevices.h"

TEST(SilentDaemon, IsGivenUpWithoutUsingTheProcessor) {
    SimulatedDevices devices;
    devices.Plug("abc-1").Start({"silent=ListDevices", "silent=Listen"});
    ForgetLog();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(CDeviceInfo::GetInstance()->Init("abc-1"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_THAT(RecordedTexts(), testing::ElementsAre("[Init] idevice_new failed"));
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    EXPECT_LT(used.ru_utime.tv_sec + used.ru_stime.tv_sec, 3);
}
