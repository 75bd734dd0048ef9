// The program as a whole.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "Tests/Tools/devicesim/SocketPair.h"
#include "Tests/support/SimulatedDevices.h"
#include "Tools/devicesim/Frames.h"

using testing::HasSubstr;

TEST(Devicesim, StopsAtEitherSignalAndRemovesItsSocket) {
    for (const int number : {SIGTERM, SIGINT}) {
        SimulatedDevices devices;
        devices.Plug("abc-1").Start({"silent=ListDevices"});
        // One client is silent, one is not answered.
        const auto silent = ConnectTo(devices.Socket());
        const auto waiting = ConnectTo(devices.Socket());
        const std::string request = Request("MessageType", "ListDevices").ToXml();
        waiting->Write(devicesim::DaemonHeader(static_cast<std::uint32_t>(request.size()), 1) + request);
        devices.Process().Signal(number);
        EXPECT_EQ(devices.Process().Wait(), 0);
        EXPECT_FALSE(std::filesystem::exists(devices.Socket()));
        EXPECT_EQ(ReadToEnd(*silent), "");
    }
}

#if __has_include(<sys/prctl.h>)
TEST(Devicesim, EndsWithTheTestThatIsKilled) {
    const TemporaryFolder folder;
    const pid_t test = fork();
    if (test == 0) {
        SimulatedDevices devices;
        devices.Plug("abc-1").Start();
        folder.Write("socket", devices.Socket());
        kill(getpid(), SIGKILL);
    }
    int status = 0;
    waitpid(test, &status, 0);
    ASSERT_EQ(WTERMSIG(status), SIGKILL);
    const std::string socket = folder.Read("socket");
    for (int i = 0; i < 1000 && std::filesystem::exists(socket); ++i)
        usleep(10000);
    EXPECT_FALSE(std::filesystem::exists(socket)) << "it would take it away at its end";
    std::filesystem::remove_all(std::filesystem::path(socket).parent_path());
}
#endif

TEST(Devicesim, LooksAgainWhenItIsTold) {
    SimulatedDevices devices;
    devices.Plug("abc-1").Start();
    const auto listener = ConnectTo(devices.Socket());
    ASSERT_TRUE(AskDaemon(*listener, Request("MessageType", "Listen")));
    ASSERT_TRUE(ReadNotice(*listener));
    devices.Plug("abc-2");
    EXPECT_EQ(ReadNotice(*listener)->Text("MessageType"), "Attached");
    devices.Unplug("abc-1");
    EXPECT_EQ(ReadNotice(*listener)->Text("MessageType"), "Detached");
}

TEST(Devicesim, SurvivesAClientThatGoesWithoutReading) {
    SimulatedDevices devices;
    devices.Plug("abc-1").Start({"late=ListDevices:50"});
    for (int i = 0; i < 20; ++i) {
        const std::string request = Request("MessageType", "ListDevices").ToXml();
        const auto size = static_cast<std::uint32_t>(request.size());
        ConnectTo(devices.Socket())->Write(devicesim::DaemonHeader(size, 1) + request);
    }
    const auto client = ConnectTo(devices.Socket());
    EXPECT_TRUE(AskDaemon(*client, Request("MessageType", "ListDevices")));
}

TEST(Devicesim, SaysWhatIsWrong) {
    const TemporaryFolder folder;
    const Finished usage = RunToEnd(Command({DEVICESIM_PROGRAM}));
    EXPECT_EQ(usage.code, 2);
    EXPECT_THAT(usage.errors, HasSubstr("--socket"));
    const Finished failed =
        RunToEnd(Command({DEVICESIM_PROGRAM, "--socket", folder.Path("no/s"), "--devices", folder.Path()}));
    EXPECT_EQ(failed.code, 1);
    EXPECT_THAT(failed.errors, HasSubstr("No such file"));
    const Finished help = RunToEnd(Command({DEVICESIM_PROGRAM, "--help"}));
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.output, HasSubstr("trust-dialog"));
}
