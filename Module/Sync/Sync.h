#pragma once

/// \file
/// The factory; hosts use ISyncFactory and GetSyncFactory.

#include "Module/Sync/SyncFactory.h"

/// The factory behind GetSyncFactory.
class KRUTEIN_API CSync : public ISyncFactory {
 public:
    /// The one factory, made by the first call; each call opens the log. May be called from any thread. It
    /// lives as long as the process.
    static CSync* GetInstance();

    IDeviceInfo* GetDeviceInfo(const char* udid) override;
    IBackup* GetBackup() override;

 private:
    CSync() = default;

    static CSync* m_pSync;
};
