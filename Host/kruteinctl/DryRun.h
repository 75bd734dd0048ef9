#pragma once

#include "Host/BackupFormat/Interrupt.h"
#include "Host/kruteinctl/ExitCode.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Printer.h"

/// Tells from a full backup of the device which files, and how many bytes, a typed backup would keep.
/// \throws Failure; krutein::BackupDamage; krutein::Interrupt::Raised.
ExitCode RunDryRun(const Options& options, Printer& printer, const krutein::Interrupt& interrupt);
