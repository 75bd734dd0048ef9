#pragma once

#include <optional>
#include <string>

#include "Tools/devicesim/DeviceHub.h"
#include "Tools/devicesim/Faults.h"
#include "Tools/devicesim/Pairings.h"
#include "Tools/devicesim/Plist.h"
#include "Tools/devicesim/Service.h"

namespace devicesim {

/// The port that lockdown answers on, on every device.
constexpr std::uint16_t kLockdownPort = 62078;

/// The service that every conversation with a device begins with: it tells what the device says of itself,
/// pairs it with computers, and opens sessions for those that it trusts.
class LockdownService : public Service {
 public:
    LockdownService(DeviceHub& hub, Pairings& pairings, const Faults& faults)
        : m_hub(hub), m_pairings(pairings), m_faults(faults) {}

    void Serve(const Connection& connection, Device& device) override;

    /// The answer to one request. All that an answer depends on is in the request and the device.
    Plist Answer(const Plist& request, const Device& device);

 private:
    Plist GetValue(const Plist& request, const Device& device) const;
    Plist Value(const Plist& request, const Device& device, Plist answer) const;
    Plist Pair(const Plist& request, const Device& device, Plist answer);
    Plist StartSession(const Plist& request, const Device& device, Plist answer) const;
    bool Send(const Connection& connection, Device& device, const Plist& request, const Plist& answer) const;

    DeviceHub& m_hub;
    Pairings& m_pairings;
    const Faults& m_faults;
};

}  // namespace devicesim
