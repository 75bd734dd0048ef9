#pragma once

#include <string>

#include "Tests/Host/Archiver/ArchiverTool.h"

/// A device with some photos, and its backup.
class RestoreTest : public ArchiverTest {
 protected:
    static constexpr char kPhotoPath[] = "Media/DCIM/100APPLE/IMG_0003.JPG";

    explicit RestoreTest(const Phone& phone) : ArchiverTest(phone) {}
    void SetUp() override;

    std::string PhotoPlace() const { return PlaceOf("CameraRollDomain", kPhotoPath); }
    std::string PhotoFile() const { return BackupPath(PhotoPlace()); }

    /// Expects that the restore finds the backup damaged and says so with this text.
    void ExpectDamaged(const std::string& error) const;
};
