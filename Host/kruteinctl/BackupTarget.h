#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Host/BackupFormat/BackupCatalogue.h"
#include "Host/kruteinctl/Record.h"

/// The backup that a user wants to look into. Paths have no links in them.
struct BackupTarget {
    std::string folder;     ///< of the device's backup; "" when there is a record only
    std::string catalogue;  ///< path of its Manifest.db or Manifest.mbdb, which need not exist
    krutein::BackupLayout layout = krutein::BackupLayout::kNewer;
    std::optional<Record> record;
    std::string damagedRecord;  ///< path of a record file that cannot be read; "" when there is none

    /// True when only the files of its types are in it.
    bool IsTyped() const;

    /// \throws Failure (no backup) when there is a record only.
    void RequireFolder() const;

    /// \throws Failure (encrypted); what krutein::BackupCatalogue::Open throws.
    std::unique_ptr<krutein::BackupCatalogue> OpenCatalogue(const krutein::Interrupt& interrupt) const;
};

/// \param named  the folder of a device's backup, or the one around it, in which its record lies.
/// \throws Failure (no backup; backup damaged when there is one that cannot be found through its record).
BackupTarget FindTarget(const std::string& named);

/// The same; a catalogue's own path stands for a backup without a record too.
/// \throws krutein::BackupDamage when there is no such catalogue.
BackupTarget FindTargetOrCatalogue(const std::string& named);
