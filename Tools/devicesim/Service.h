#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <utility>

#include "Tools/devicesim/Connection.h"
#include "Tools/devicesim/Device.h"

namespace devicesim {

/// What answers on one port of every device. Serve is called for each connection, on a thread of its own.
class Service {
 public:
    Service() = default;
    virtual ~Service() = default;
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// Answers until either side ends the connection.
    virtual void Serve(const Connection& connection, Device& device) = 0;
};

/// The services of the devices by their ports. Filled before the first connection.
class ServiceTable {
 public:
    void Add(std::uint16_t port, std::unique_ptr<Service> service) { m_services[port] = std::move(service); }

    /// \return null when nothing answers on the port.
    Service* Find(std::uint16_t port) const {
        const auto found = m_services.find(port);
        return found == m_services.end() ? nullptr : found->second.get();
    }

 private:
    std::map<std::uint16_t, std::unique_ptr<Service>> m_services;
};

}  // namespace devicesim
