#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "Tools/devicesim/Connection.h"
#include "Tools/devicesim/Device.h"
#include "Tools/devicesim/Plist.h"

namespace devicesim {

/// The devices that are connected, and the clients that want to know when that changes. Any thread may use
/// it.
class DeviceHub {
 public:
    /// \param report  told of each device that comes ("attached") or goes ("detached").
    explicit DeviceHub(std::function<void(const Device& device, const char* what)> report = {});

    /// Connects the devices that are not, and pulls out those that are connected but not listed.
    void Update(const std::vector<krutein::SampleDevice>& devices);

    void Detach(const Device& device);

    /// \return null when no such device is connected.
    std::shared_ptr<Device> Find(std::uint64_t number) const;

    /// The answer to ListDevices: one Attached message for each device.
    std::vector<Plist> List() const;

    /// Tells a client of the devices that are there, and of all changes until Forget. A client that does not
    /// read is cut off.
    void Listen(const Connection& listener);
    void Forget(const Connection& listener);

 private:
    void Attach(const krutein::SampleDevice& device);
    void DetachLocked(std::uint64_t number);
    void Notify(const Plist& notice) const;

    const std::function<void(const Device& device, const char* what)> m_report;
    mutable std::mutex m_mutex;
    std::map<std::uint64_t, std::shared_ptr<Device>> m_devices;  ///< by their numbers
    std::set<const Connection*> m_listeners;
    std::uint64_t m_lastNumber = 0;
};

}  // namespace devicesim
