#pragma once

/// \file
/// The device object; hosts use IDeviceInfo.

#include <functional>
#include <string>

#include "Module/Sync/SyncFactory.h"

// The handles of libimobiledevice, so that hosts need none of its headers.
struct idevice_private;
struct lockdownd_client_private;

/// The device object behind IDeviceInfo, which documents the operations of the interface: facts from the
/// lockdown service of one device at a time.
///
/// Threads: none of its own and no locks; it is for one thread of the host. Every question waits for the
/// device. When the device is silent the client library gives up after half a minute, or never: ask on a
/// thread that can be left behind. Failures are logged and never thrown.
class KRUTEIN_API CDeviceInfo : public IDeviceInfo {
 public:
    /// The one device object, made unbound by the first call; it lives until Dispose.
    static CDeviceInfo* GetInstance();

    /// Connects to a device, in the place of the one that this object was bound to. A device that does not
    /// know this computer yet is asked to trust it, which its owner then sees.
    /// \param udid  exactly as the device itself gives it; null is refused and leaves the object as it was.
    /// \return true when the device's lockdown service can be asked.
    bool Init(const char* udid);

    unsigned long long GetAvailableSize() override;
    unsigned long long GetUsedSize() override;
    unsigned long long GetDiskSize() override;
    void GetDeviceName(std::function<void(const char*)> result) override;
    void GetDeviceType(std::function<void(const char*)> result) override;
    void GetIOSVersion(std::function<void(const char*)> result) override;
    /// Ends the connection.
    ~CDeviceInfo() override;

    /// Reads one text of the device's global domain.
    /// \param client  an open lockdown connection, which stays the caller's.
    /// \param key     the value's name.
    /// \param value   receives the text; untouched when client or key is null, when the device does not tell,
    ///                and when what it tells is no text.
    static void GetLockdowndValue(lockdownd_client_private* client, char* key, std::string& value);

    /// Ends the connection: the object is unbound afterwards, and can be bound again.
    void ReleaseLockdownd();

    /// Destroys the object. It is the last use of it: GetInstance does not make another one.
    void Dispose();

 private:
    CDeviceInfo() = default;

    unsigned long long DiskUsage(const char* key) const;
    void Tell(const char* key, const std::function<void(const char*)>& result) const;

    static CDeviceInfo* m_pInstance;

    idevice_private* m_device = nullptr;           ///< set from the first step of Init on
    lockdownd_client_private* m_client = nullptr;  ///< set while bound
};
