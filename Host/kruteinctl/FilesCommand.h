#pragma once

#include "Host/BackupFormat/Interrupt.h"
#include "Host/kruteinctl/ExitCode.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Printer.h"

/// Prints what a backup's catalogue lists, an entry at a time.
/// \throws Failure; krutein::BackupDamage after the entries that can be read; krutein::Interrupt::Raised.
ExitCode RunFilesCommand(const Options& options, Printer& printer, const krutein::Interrupt& interrupt);
