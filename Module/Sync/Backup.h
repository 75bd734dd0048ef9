#pragma once

/// \file
/// The backup facade; hosts use IBackup.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>

#include "Module/Sync/CallBack.h"
#include "Module/Sync/SyncFactory.h"

/// The backup facade behind IBackup, which documents the operations of the interface.
///
/// Threads: each start or stop has a detached worker thread of its own, each run of the tool a reader thread
/// on which OnStateChange is called.
class KRUTEIN_API CBackup : public IBackup, public CCallBack {
 public:
    /// The one facade, made by the first call; it lives as long as the process. May be called from any
    /// thread.
    static CBackup* GetInstance();

    void StartBackup(const char* udid, const char* folder, CSyncCallBack* callback) override;
    void StopBackup(CSyncCallBack* callback) override;
    void StartRestore(const char* udid, const char* folder, CSyncCallBack* callback) override;
    void StopRestore(CSyncCallBack* callback) override;
    long long GetBackupSize(const char* udid, const char* folder) override;
    ~CBackup() override = default;

    /// Receives the tool's reports and forwards them to the host's callback under the host's event numbers.
    /// \return 0.
    int OnStateChange(CallBackType type, unsigned long long arg1, unsigned long long arg2,
                      void* data) override;

    /// The size in bytes that the tool told last. When it never told one, waits up to 30 seconds for it.
    long long GetTotalSize();

    /// Ends the backup tool and the system's own backup service by their names. \return true.
    bool Stop();

    /// Takes the size from the first line of the text that holds "Total": the number before the line's last
    /// word. A text without such a line, or with fewer than two blanks in it, changes nothing.
    /// \throws std::invalid_argument or std::out_of_range when the word there is no 64-bit number.
    void ParseInfo(const std::string& text);

    /// Moves a finished backup from the temporary folder to its final name and removes the temporary folder,
    /// unless the backup is still in it: then the move has failed, and what is at the final path is not
    /// whole.
    /// \return the final path, whether the move worked or not.
    std::string Rename(const std::string& folder, const std::string& udid, int unused = 0);

 private:
    CBackup() = default;

    void RunBackup(const std::string& udid, const std::string& folder, const std::string& temporary,
                   CSyncCallBack* callback);
    void RunRestore(const std::string& udid, const std::string& folder, CSyncCallBack* callback);
    void RunStop(CSyncCallBack* callback);

    static CBackup* m_pBackup;

    bool m_infoReady = false;  ///< under m_infoMutex; never cleared
    std::atomic<bool> m_stop{false};
    long long m_totalSize = 0;  ///< bytes; under m_infoMutex
    std::atomic<CSyncCallBack*> m_hostCallBack{nullptr};
    std::mutex m_infoMutex;
    std::condition_variable m_infoArrived;
};
