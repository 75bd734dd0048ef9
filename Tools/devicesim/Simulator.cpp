#include "Tools/devicesim/Simulator.h"

#include <fmt/format.h>

#include <utility>

#include "Host/SampleDevice/SampleDeviceFolder.h"
#include "Tools/devicesim/LockdownService.h"

namespace devicesim {
namespace {

void PrintChange(const Device& device, const char* what) {
    fmt::print("{} {} ({})\n", what, device.Udid(), device.Number());
}

/// The services that every device has.
ServiceTable MakeServices(DeviceHub& hub, Pairings& pairings, const Faults& faults) {
    ServiceTable services;
    services.Add(kLockdownPort, std::make_unique<LockdownService>(hub, pairings, faults));
    return services;
}

}  // namespace

Simulator::Simulator(Settings settings)
    : m_settings(std::move(settings)),
      m_hub(&PrintChange),
      m_services(MakeServices(m_hub, m_pairings, m_settings.faults)),
      m_state{m_hub, m_pairings, m_settings.faults, m_services} {}

void Simulator::Listen() {
    m_server.emplace(m_settings.socket,
                     [this](const Connection& connection) { DaemonSession(connection, m_state).Run(); });
}

std::vector<std::string> Simulator::LookForDevices() {
    const krutein::SampleDeviceList list = krutein::ListSampleDevices(m_settings.devices);
    for (const krutein::SampleDevice& device : list.devices) {
        if (IsPaired(device.udid)) m_pairings.PairAsBefore(device.udid);
    }
    m_hub.Update(list.devices);
    return list.problems;
}

bool Simulator::IsPaired(const std::string& udid) const {
    for (const FaultKind kind : {FaultKind::kUnpaired, FaultKind::kTrustDialog, FaultKind::kNoTrust}) {
        if (m_settings.faults.Has(udid, kind)) return false;
    }
    return true;
}

}  // namespace devicesim
