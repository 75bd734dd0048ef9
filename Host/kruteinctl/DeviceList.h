#pragma once

#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Streams.h"

/// Lists the connected devices, with what they tell everybody; with --watch instead tells each device that
/// comes or goes, until a signal ends the process.
/// \throws Failure (no daemon; device silent when the daemon is).
void RunDevicesCommand(const Options& options, const Streams& streams);
