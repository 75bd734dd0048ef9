#pragma once

#include <string>

#include "Host/kruteinctl/Session.h"
#include "Module/Sync/SyncFactory.h"

/// A backup or restore through the library's facade, from its start to its end. It receives the library's
/// events.
class FacadeRun : public CSyncCallBack {
 public:
    /// The run is never destroyed: after a stop nobody says when the library has let go of its callback.
    static FacadeRun& Make(Session& session);

    /// \param folder  text that the library puts "temp" and the identifier behind.
    /// \return        path of the finished backup.
    /// \throws Failure when it fails or is stopped; in both cases no tool runs any more.
    std::string Backup(const std::string& udid, const std::string& folder);

    /// \param folder  the folder that holds the backup under the device's identifier.
    /// \throws Failure when it fails or is stopped; in both cases no tool runs any more.
    void Restore(const std::string& udid, const std::string& folder);

    int OnStateChange(int event, unsigned long long arg1, unsigned long long arg2, void* data) override;

 private:
    explicit FacadeRun(Session& session) : m_session(session) {}

    void AwaitEnd(const std::string& failed, const std::string& stopped);

    Session& m_session;
    bool m_ended = false;
    int m_code = 0;
    std::string m_path;
};
