#include "Host/kruteinctl/HostDevice.h"

#include <fmt/format.h>

#include "Host/SampleDevice/SampleDeviceFolder.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"

namespace {

krutein::SampleDevice FactsOf(const std::string& udid) {
    try {
        if (const auto device = krutein::FindSampleDevice(krutein::SampleDevicesFolder(), udid))
            return *device;
    } catch (const krutein::SampleDeviceError& unusable) {
        throw Failure(ExitCode::kNoDevice, Printable(unusable.what()));
    }
    throw Failure(ExitCode::kNoDevice, fmt::format("no such device is connected: {}", udid));
}

}  // namespace

HostDevice::HostDevice(const std::string& udid) : m_facts(FactsOf(udid)) {}
