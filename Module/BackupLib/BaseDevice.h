#pragma once

/// \file
/// A device as a host describes it for a typed backup.

#include <string>

#include "Common/Export.h"

/// A device, as the backup manager needs it. Implemented by the host, which owns the object; the manager
/// calls it on the thread of the job only. Texts are UTF-8; "" where the device does not tell. The order of
/// the functions is part of the binary interface: never change it.
class KRUTEIN_API IBaseDevice {
 public:
    /// \{
    /// The device's name, as its user has given it.
    virtual std::string GetName() = 0;
    virtual std::string GetSerialNumber() = 0;
    /// \}
    /// The system's version, "17.4.1".
    virtual std::string GetVersionString() = 0;
    /// The first number of the version; negative when it is unknown.
    virtual int GetMajorVersion() = 0;
    /// The model, "iPhone14,5".
    virtual std::string GetProductType() = 0;
    /// The UDID; "" when there is no usable device. It becomes a word of the tool's command line and the name
    /// of the backup's folder.
    virtual std::string GetDeviceID() = 0;

    virtual ~IBaseDevice() = default;
};
