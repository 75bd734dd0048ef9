#pragma once

#include "Host/kruteinctl/Session.h"

/// Ends the backup tool through the library's stop operation, also one that is just being started, and waits
/// until it is gone.
/// \throws Failure (stopped) when it does not end.
void StopTool(Session& session);
