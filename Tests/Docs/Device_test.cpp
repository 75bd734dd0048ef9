// What Docs/device.md says is so.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Tests/support/SimulatedDevices.h"
#include "Tools/devicesim/Faults.h"

using testing::HasSubstr;

TEST(DeviceDoc, ItsProgramAsksADevice) {
    SimulatedDevices devices;
    devices.Plug("00008110-00000000000000AA").Start();
    const TemporaryFolder logs;
    Command example({DEVICE_EXAMPLE_PROGRAM, "00008110-00000000000000AA"});
    example.environment = {{"KRUTEIN_LOG_DIR", logs.Path()}};
    const Finished asked = RunToEnd(example);
    EXPECT_EQ(asked.code, 0);
    EXPECT_EQ(asked.output, "Ann's phone\nsystem 17.4.1\n48000000000 of 128000000000 bytes free\n");
    example.words[1] = "another";
    EXPECT_EQ(RunToEnd(example).code, 1);
}

TEST(DeviceDoc, ListsEveryFault) {
    const std::string text = ReadWholeFile(DOCS_FOLDER "/device.md");
    std::istringstream help(devicesim::Faults::Help());
    std::string line;
    std::getline(help, line);  // the heading
    int faults = 0;
    while (std::getline(help, line)) {
        std::istringstream words(line);
        std::string fault;
        words >> fault;
        EXPECT_THAT(text, HasSubstr("| `" + fault + "` |"));
        ++faults;
    }
    EXPECT_GE(faults, 16);
}
