#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Tools/devicesim/DaemonSession.h"
#include "Tools/devicesim/Server.h"

namespace devicesim {

/// The whole of it: the daemon on its socket, with the devices of a folder behind it.
class Simulator {
 public:
    struct Settings {
        std::string socket;   ///< path of the daemon's socket
        std::string devices;  ///< folder of descriptions
        Faults faults;
    };

    explicit Simulator(Settings settings);

    /// Looks into the folder again: new devices are connected, those that have gone are pulled out.
    /// \return one line for each description that cannot be used.
    std::vector<std::string> LookForDevices();

    /// Opens the socket; clients are served from then on. Called once. \throws ServerError
    void Listen();

    std::size_t DeviceCount() const { return m_hub.List().size(); }

 private:
    bool IsPaired(const std::string& udid) const;

    const Settings m_settings;
    Pairings m_pairings;
    DeviceHub m_hub;
    const ServiceTable m_services;
    const DaemonState m_state;
    std::optional<Server> m_server;  // last: its clients use all of the others
};

}  // namespace devicesim
