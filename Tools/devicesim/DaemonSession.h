#pragma once

#include <cstdint>
#include <string>

#include "Tools/devicesim/Connection.h"
#include "Tools/devicesim/DeviceHub.h"
#include "Tools/devicesim/Faults.h"
#include "Tools/devicesim/Pairings.h"
#include "Tools/devicesim/Plist.h"
#include "Tools/devicesim/Service.h"

namespace devicesim {

/// What all clients of the daemon share.
struct DaemonState {
    DeviceHub& hub;
    Pairings& pairings;
    const Faults& faults;
    const ServiceTable& services;
};

/// The conversation of one client with the daemon, until it ends, listens for devices, or is connected with
/// one of a device's services.
class DaemonSession {
 public:
    DaemonSession(const Connection& connection, const DaemonState& state)
        : m_connection(connection), m_state(state) {}

    /// Answers until either side ends the connection.
    void Run();

 private:
    bool Handle(const Plist& request);
    void Listen();
    void Connect(const Plist& request);
    Plist ReadPairRecord(const Plist& request) const;
    Plist SavePairRecord(const Plist& request) const;
    Plist ListDevices() const;
    bool Answer(const Plist& request, const Plist& answer) const;
    bool AnswerResult(const Plist& request, std::uint64_t number) const;

    const Connection& m_connection;
    const DaemonState& m_state;
    std::uint32_t m_tag = 0;  ///< of the request at hand; its answer repeats it
};

}  // namespace devicesim
