#pragma once

#include <string>

#include "Host/SampleDevice/SampleDevice.h"

namespace krutein {

/// The device that is asked for.
/// \throws ToolError with kToolNoDevice when it is not connected
SampleDevice Connect(const std::string& udid);

}  // namespace krutein
