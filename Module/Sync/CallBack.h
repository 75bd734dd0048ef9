#pragma once

#include "Common/Export.h"

/// \file
/// The callback contract: how news travels from the library to its callers.
///
/// There are two numberings on purpose. The backup tool runner reports the operation it runs (CallBackType);
/// the backup facade translates that for the host into events and adds the events that end an operation.
///
/// Callback objects belong to the caller. The library keeps the plain pointer for the length of one run and
/// never deletes it: keep the object alive until the run's end event has come. Callbacks come from threads of
/// the library, one at a time for each run. An exception must not leave a callback: it would end the process.

/// The operation that a progress report belongs to. The values are part of the binary interface: never
/// change.
enum CallBackType : int {
    kCallBackBackupInfo = 30,       ///< query of a backup's size; data is a NUL-terminated text
    kCallBackBackup = 73,           ///< full backup
    kCallBackRestore = 75,          ///< any restore
    kCallBackChangePassword = 2001  ///< change of the backup password
};

/// The events that a host receives. The values are part of the binary interface: never change.
enum SyncEvent : int {
    kSyncEventOther = 0,            ///< a stop has been carried out; also news of any other operation
    kSyncEventBackupProgress = 2,   ///< arg1, arg2 and data as the backup tool gave them
    kSyncEventBackupDone = 3,       ///< data: path of the finished backup, NUL-terminated
    kSyncEventBackupFailed = 4,     ///< arg2: the run's return code; data: an empty text
    kSyncEventRestoreProgress = 6,  ///< arg1, arg2 and data as the backup tool gave them
    kSyncEventRestoreDone = 7,      ///< data: null
    kSyncEventRestoreFailed = 8     ///< arg2: the run's return code; data: null
};

/// Receives what the backup tool reports while it runs.
class KRUTEIN_API CCallBack {
 public:
    /// Called on the reader thread of the run.
    /// \param arg1, arg2  the tool's numbers; negative ones arrive sign-extended to 64 bits.
    /// \param data        the message's payload, or null; valid during the call only.
    /// \return            not looked at.
    virtual int OnStateChange(CallBackType type, unsigned long long arg1, unsigned long long arg2,
                              void* data) = 0;

 protected:
    ~CCallBack() = default;
};

/// Receives the events of the backup facade. Implemented by the host.
class KRUTEIN_API CSyncCallBack {
 public:
    /// Called on threads of the library: progress on the run's reader thread, the end of an operation on its
    /// worker thread.
    /// \param event       one of SyncEvent.
    /// \param arg1, arg2  see the event.
    /// \param data        see the event; valid during the call only.
    /// \return            not looked at.
    virtual int OnStateChange(int event, unsigned long long arg1, unsigned long long arg2, void* data) = 0;

 protected:
    ~CSyncCallBack() = default;
};

/// Calls the callback's OnStateChange with the other four arguments; does nothing when it is null. Lets
/// through what the callback throws.
KRUTEIN_API void SendCallBackSafe(CCallBack* callback, CallBackType type, unsigned long long arg1,
                                  unsigned long long arg2, void* data);
