#pragma once

#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Streams.h"

/// Lists the backups below a folder by their records.
/// \throws Failure (no backup) when there is no such folder.
void RunListCommand(const Options& options, const Streams& streams);
