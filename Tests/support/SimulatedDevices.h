#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "Tests/support/ChildProcess.h"
#include "Tests/support/TemporaryFolder.h"

/// A device daemon with devices behind it, as a process of its own: devices.Plug("abc-1").Start().
class SimulatedDevices {
 public:
    /// What a device says of itself; the rest is the same for all.
    struct Facts {
        std::string name = "Ann's phone";
        std::string productType = "iPhone14,5";
        std::string systemVersion = "17.4.1";
        unsigned long long totalBytes = 128'000'000'000;
        unsigned long long availableBytes = 48'000'000'000;
    };

    SimulatedDevices() = default;
    /// Ends the daemon; the test fails when that does not go well.
    ~SimulatedDevices();
    SimulatedDevices(const SimulatedDevices&) = delete;
    SimulatedDevices& operator=(const SimulatedDevices&) = delete;

    /// A device that is connected from the start, or from now on when the daemon runs.
    SimulatedDevices& Plug(const std::string& udid, const Facts& facts);
    SimulatedDevices& Plug(const std::string& udid) { return Plug(udid, Facts()); }
    void Unplug(const std::string& udid);

    /// Starts the daemon, with these faults, and lets this process and its children find it.
    void Start(const std::vector<std::string>& faults = {});

    std::string Socket() const { return m_folder.Path("s"); }
    /// For USBMUXD_SOCKET_ADDRESS.
    std::string Address() const { return "UNIX:" + Socket(); }
    ChildProcess& Process() { return *m_process; }

 private:
    void LookAgain(const std::string& change);

    TemporaryFolder m_folder;
    std::unique_ptr<ChildProcess> m_process;
};

/// Lets the client library look for a daemon where there is none, as on a computer without one.
void PointToNoDaemon();
