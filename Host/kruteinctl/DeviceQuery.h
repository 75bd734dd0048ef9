#pragma once

#include <cstdint>
#include <string>

#include "Host/kruteinctl/Session.h"

/// Asks the backup tool how many bytes the backup of a device in `folder` has; without one there, how many a
/// backup of the device takes.
/// \throws Failure when the tool does not tell or the user stops it; in both cases no tool runs any more.
std::uint64_t QueryBackupSize(Session& session, const std::string& udid, const std::string& folder);

/// The size in the tool's text: the number in its line "Total size: N bytes".
/// \throws Failure when there is no such line.
std::uint64_t SizeIn(const std::string& text);
