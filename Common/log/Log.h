#pragma once

#include "Common/log/LogHandler.h"

/// Writes a line to the host's log, at the one level that the library uses. The build maps __FILE__ to the
/// path from the project's root.
#define KRUTEIN_LOG(...) LogHandlerA(__func__, __FILE__, __LINE__, 1, __VA_ARGS__)
