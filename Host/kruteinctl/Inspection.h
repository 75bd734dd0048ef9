#pragma once

#include "Host/kruteinctl/ExitCode.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/StopSignals.h"
#include "Host/kruteinctl/Streams.h"

/// True for what only looks into backups: it starts no tool and changes nothing.
bool IsInspection(const Options& options);

/// Runs one of them from its start to its end.
ExitCode RunInspection(const Options& options, const Streams& streams, StopSignals& signals);
