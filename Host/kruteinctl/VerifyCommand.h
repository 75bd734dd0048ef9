#pragma once

#include "Host/BackupFormat/Interrupt.h"
#include "Host/kruteinctl/ExitCode.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Printer.h"

/// Holds a backup's files against its catalogue and has SQLite check its app databases; prints what is wrong.
/// \return failed when something is.
/// \throws Failure (no backup, encrypted, not configured); krutein::BackupDamage when the catalogue cannot be
///         read to its end; krutein::Interrupt::Raised.
ExitCode RunVerifyCommand(const Options& options, Printer& printer, const krutein::Interrupt& interrupt);
