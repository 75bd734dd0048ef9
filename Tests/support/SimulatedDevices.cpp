#include "Tests/support/SimulatedDevices.h"

#include <gtest/gtest.h>

#if __has_include(<sys/prctl.h>)
#include <sys/prctl.h>
#endif

#include <csignal>
#include <cstdlib>
#include <filesystem>

namespace {

constexpr char kAddressVariable[] = "USBMUXD_SOCKET_ADDRESS";

std::string Description(const std::string& udid, const SimulatedDevices::Facts& facts) {
    return R"({"udid": ")" + udid + R"(", "name": ")" + facts.name + R"(", "productType": ")" +
           facts.productType + R"(", "systemVersion": ")" + facts.systemVersion +
           R"(", "buildVersion": "21E236", "serialNumber": "S1", "disk": {"totalBytes": )" +
           std::to_string(facts.totalBytes) + R"(, "availableBytes": )" +
           std::to_string(facts.availableBytes) + "}}";
}

}  // namespace

SimulatedDevices::~SimulatedDevices() {
    if (m_process == nullptr) return;
    m_process->Signal(SIGTERM);
    EXPECT_EQ(m_process->Wait(), 0) << m_process->Errors();
    EXPECT_EQ(m_process->Errors(), "");
    EXPECT_FALSE(std::filesystem::exists(Socket()));
    PointToNoDaemon();
}

SimulatedDevices& SimulatedDevices::Plug(const std::string& udid, const Facts& facts) {
    m_folder.Write("devices/" + udid + ".json", Description(udid, facts));
    LookAgain("attached " + udid);
    return *this;
}

void SimulatedDevices::Unplug(const std::string& udid) {
    std::filesystem::remove(m_folder.Path("devices/" + udid + ".json"));
    LookAgain("detached " + udid);
}

void SimulatedDevices::Start(const std::vector<std::string>& faults) {
    std::filesystem::create_directories(m_folder.Path("devices"));
    Command command({DEVICESIM, "--socket", Socket(), "--devices", m_folder.Path("devices")});
    for (const std::string& fault : faults)
        command.words.insert(command.words.end(), {"--fault", fault});
#if __has_include(<sys/prctl.h>)
    // A test that is killed must not leave its daemon behind.
    command.prepare = [] { prctl(PR_SET_PDEATHSIG, SIGTERM); };
#endif
    m_process = std::make_unique<ChildProcess>(command);
    EXPECT_TRUE(m_process->AwaitOutput("ready: ")) << m_process->Errors();
    setenv(kAddressVariable, Address().c_str(), 1);
}

void SimulatedDevices::LookAgain(const std::string& change) {
    if (m_process == nullptr) return;
    const std::size_t seen = m_process->Output().size();
    m_process->Signal(SIGHUP);
    EXPECT_TRUE(m_process->AwaitOutput(change, seen)) << m_process->Errors();
}

void PointToNoDaemon() {
    setenv(kAddressVariable, "UNIX:/nonexistent/daemon", 1);
}
