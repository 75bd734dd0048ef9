#pragma once

#include "Host/BackupFormat/Interrupt.h"
#include "Host/kruteinctl/ExitCode.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Printer.h"

/// Lists the backups below a folder by their records.
/// \throws Failure (no backup) when there is no such folder; krutein::Interrupt::Raised.
ExitCode RunListCommand(const Options& options, Printer& printer, const krutein::Interrupt& interrupt);
