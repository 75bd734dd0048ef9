#pragma once

#include "Host/BackupFormat/Interrupt.h"
#include "Host/kruteinctl/ExitCode.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Printer.h"

/// Prints a backup's record and what it keeps of each app. Databases that cannot be read are told as such.
/// \throws Failure (no backup); krutein::BackupDamage after the record when the catalogue cannot be read;
///         krutein::Interrupt::Raised.
ExitCode RunShowCommand(const Options& options, Printer& printer, const krutein::Interrupt& interrupt);
