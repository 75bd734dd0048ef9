#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Host/SampleDevice/SampleDevice.h"

/// The folder of descriptions that stands in for the USB ports: a device is connected when there is a
/// file <udid>.json.
namespace krutein {

/// The environment variable that puts another folder in the place of the bundle's.
constexpr char kSampleDevicesVariable[] = "KRUTEIN_SAMPLE_DEVICES";

/// Resources/SampleDevices of the bundle that this program runs in (as Contents/<folder>/<program>), or the
/// folder that KRUTEIN_SAMPLE_DEVICES names.
std::string SampleDevicesFolder();

/// \param udid  compared exactly, also where the file system takes upper and lower case for the same.
/// \return nothing when the folder has no such device or cannot be read.
/// \throws SampleDeviceError when the device's description cannot be used.
std::optional<SampleDevice> FindSampleDevice(const std::string& folder, const std::string& udid);

struct SampleDeviceList {
    std::vector<SampleDevice> devices;  ///< in the order of their UDIDs
    std::vector<std::string> problems;  ///< one line for each description that cannot be used
};

/// All devices of a folder. A broken description does not hide the others.
SampleDeviceList ListSampleDevices(const std::string& folder);

}  // namespace krutein
