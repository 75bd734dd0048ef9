#pragma once

#include <functional>

#include "Common/Export.h"
#include "Module/Sync/CallBack.h"

/// \file
/// The interfaces that a host holds, and the one function that hands them out. Hosts are compiled against the
/// order of the virtual functions: never change it, never put one in between.
///
/// All objects live as long as the process and belong to the library: never delete them.

/// Backups and restores of whole devices. The four start and stop operations return at once; what becomes of
/// them is told to the callback, on threads of the library. Run one operation at a time: the tool is stopped
/// by its name, so a stop ends every run on this computer.
///
/// Folder texts end up in a command for the shell, between double quotes. Before the call, a host refuses
/// texts that hold a double quote, a backquote, a dollar sign, a backslash, a vertical bar or a line end.
class KRUTEIN_API IBackup {
 public:
    /// Makes a full backup of a device.
    ///
    /// The tool writes into the folder whose name is `folder` with "temp" appended; the finished backup is
    /// moved to `folder` with `udid` appended (and the local time, "-YYYYMMDD-HHMMSS", when something is
    /// there already), and the temporary folder is removed. End `folder` with '/' to get folders inside of
    /// it. Without a callback the backup stays in the temporary folder. When it cannot be moved, as on a full
    /// disk, event 3 comes all the same and the backup stays in the temporary folder: look whether it is
    /// gone.
    ///
    /// Events: 2 for progress, then 3 or 4; none of these two once a stop has been carried out.
    ///
    /// \param udid      the device's identifier. When it or `folder` is null, nothing starts and no event
    ///                  comes.
    /// \param folder    UTF-8 text that the names above are made of.
    /// \param callback  receives the events of this and, until the next start, of all operations; may be
    ///                  null.
    /// \throws std::system_error ("thread constructor failed") when the system refuses a thread.
    virtual void StartBackup(const char* udid, const char* folder, CSyncCallBack* callback) = 0;

    /// Stops the running backup or restore: its tool is asked to end, and its end event is not sent.
    /// \param callback  receives event 0 when that is done, after 0.3 seconds or more; may be null.
    /// \throws std::system_error ("thread constructor failed") when the system refuses a thread.
    virtual void StopBackup(CSyncCallBack* callback) = 0;

    /// Restores a device from the backup `folder`/`udid`. Events: 6 for progress, then 7 or 8; none of these
    /// two once a stop has been carried out.
    /// \param udid      the device's identifier. When it or `folder` is null, nothing starts and no event
    ///                  comes.
    /// \param folder    UTF-8 path of the folder that holds the backup.
    /// \param callback  receives the events of this and, until the next start, of all operations; may be
    ///                  null.
    /// \throws std::system_error ("thread constructor failed") when the system refuses a thread.
    virtual void StartRestore(const char* udid, const char* folder, CSyncCallBack* callback) = 0;

    /// The same as StopBackup.
    virtual void StopRestore(CSyncCallBack* callback) = 0;

    /// Asks the tool for the size of a backup, on the calling thread.
    ///
    /// The text that the tool answers with is also forwarded to the host's callback of the last start, as
    /// event 0. When no answer has ever come, the call waits up to 30 seconds for one.
    ///
    /// \param udid    the device's identifier; when it or `folder` is null no question is asked.
    /// \param folder  UTF-8 path of the folder that holds the backup.
    /// \return        bytes: the size last told by the tool, 0 when it never told one.
    virtual long long GetBackupSize(const char* udid, const char* folder) = 0;

    virtual ~IBackup() = default;
};

/// Facts about one connected device, from its lockdown service. For one thread at a time. Every question
/// waits for the device; of a silent one the client library has enough after half a minute or more.
class KRUTEIN_API IDeviceInfo {
 public:
    /// Free bytes on the device; 0 when it does not tell.
    virtual unsigned long long GetAvailableSize() = 0;
    /// Used bytes: the total less the free ones, in unsigned arithmetic.
    virtual unsigned long long GetUsedSize() = 0;
    /// Bytes of storage in all; 0 when the device does not tell.
    virtual unsigned long long GetDiskSize() = 0;

    /// \{
    /// Hand the device's name, model ("iPhone12,1") or system version ("13.3") to `result`, before they
    /// return and on the calling thread; "" when the device does not tell. Nothing is called when `result` is
    /// empty.
    virtual void GetDeviceName(std::function<void(const char*)> result) = 0;
    virtual void GetDeviceType(std::function<void(const char*)> result) = 0;
    virtual void GetIOSVersion(std::function<void(const char*)> result) = 0;
    /// \}

    virtual ~IDeviceInfo() = default;
};

/// Hands out the other interfaces.
class KRUTEIN_API ISyncFactory {
 public:
    /// Connects to a device. One that does not know this computer yet is asked to trust it.
    /// \param udid  the device's identifier, as the device itself gives it; null counts as "".
    /// \return      the one device object, now bound to this device; null, and the object unbound, when there
    ///              is no such device or it does not let itself be asked. The log tells which.
    virtual IDeviceInfo* GetDeviceInfo(const char* udid) = 0;

    /// The one backup facade.
    virtual IBackup* GetBackup() = 0;

    virtual ~ISyncFactory() = default;
};

/// The one factory. Each call also opens the log file "Sync.log" (see Common/log/LogHandler.h). May be called
/// from any thread; a host that loads the library at run time finds it with dlsym.
extern "C" KRUTEIN_API ISyncFactory* GetSyncFactory();
