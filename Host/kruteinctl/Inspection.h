#pragma once

#include "Host/kruteinctl/ExitCode.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/StopSignals.h"
#include "Host/kruteinctl/Streams.h"

/// True for the commands that look into a backup: they start no tool and change nothing.
bool IsInspection(CommandName command);

/// Runs one of them from its start to its end.
ExitCode RunInspection(const Options& options, const Streams& streams, StopSignals& signals);
