#pragma once

#include <string>

/// True when the Status.plist in a backup's folder says that the backup was finished. A link in its place is
/// not followed.
bool IsFinished(const std::string& backup);
