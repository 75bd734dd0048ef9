#pragma once

#include <optional>
#include <string>

#include "Tools/devicesim/Device.h"
#include "Tools/devicesim/Plist.h"

namespace devicesim {

/// What a device's lockdown service tells of a domain, as a dictionary; nothing when it has no such domain.
/// \param domain  "" for the global one.
std::optional<Plist> ValuesOf(const Device& device, const std::string& domain);

}  // namespace devicesim
