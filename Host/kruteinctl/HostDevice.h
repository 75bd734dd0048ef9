#pragma once

#include "Host/kruteinctl/DeviceFacts.h"
#include "Host/kruteinctl/Session.h"
#include "Module/BackupLib/BaseDevice.h"

/// The device of a typed backup. Its facts are those that the device itself tells when it is connected, else
/// those of a sample device's description.
class HostDevice : public IBaseDevice {
 public:
    /// Asks the device, for half a minute at most.
    /// \throws Failure: no device when there is no such device, or its description cannot be used; not
    ///         paired, locked, gone or silent when a connected device does not tell; stopped.
    HostDevice(Session& session, const std::string& udid);

    std::string GetName() override { return m_facts.name; }
    std::string GetSerialNumber() override { return m_facts.serialNumber; }
    std::string GetVersionString() override { return m_facts.systemVersion; }
    int GetMajorVersion() override;
    std::string GetProductType() override { return m_facts.productType; }
    std::string GetDeviceID() override { return m_facts.udid; }

 private:
    DeviceFacts m_facts;
};
