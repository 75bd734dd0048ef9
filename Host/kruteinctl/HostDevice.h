#pragma once

#include "Host/SampleDevice/SampleDevice.h"
#include "Module/BackupLib/BaseDevice.h"

/// The device of a typed backup, with the facts of a sample device's description.
class HostDevice : public IBaseDevice {
 public:
    /// \throws Failure (no device) when there is no such device, or its description cannot be used.
    explicit HostDevice(const std::string& udid);

    std::string GetName() override { return m_facts.name; }
    std::string GetSerialNumber() override { return m_facts.serialNumber; }
    std::string GetVersionString() override { return m_facts.systemVersion; }
    int GetMajorVersion() override { return m_facts.MajorVersion(); }
    std::string GetProductType() override { return m_facts.productType; }
    std::string GetDeviceID() override { return m_facts.udid; }

 private:
    krutein::SampleDevice m_facts;
};
