#pragma once

#include "Host/kruteinctl/DeviceFacts.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Streams.h"

/// Tells what a connected device says of itself; without a UDID in the options, the only one.
/// \throws Failure (no daemon, no device, several devices, not paired, locked, gone, silent).
void RunInfoCommand(const Options& options, const Streams& streams);

/// The facts for people, some lines.
std::string FactsText(const DeviceFacts& facts);
