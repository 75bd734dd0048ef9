#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "Tools/devicesim/Connection.h"
#include "Tools/devicesim/Faults.h"

namespace devicesim {

/// Makes the header of a frame with so many bytes behind it.
using HeaderOf = std::function<std::string(std::uint32_t payloadBytes)>;

/// Sends an answer in a frame, with what a fault does to it on the way.
/// \param detach  pulls the device out; called for that fault.
/// \return false when the connection shall end, or has ended.
bool Deliver(const Connection& connection, const HeaderOf& header, const std::string& payload,
             const std::optional<Fault>& fault, const std::function<void()>& detach);

}  // namespace devicesim
