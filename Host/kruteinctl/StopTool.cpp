#include "Host/kruteinctl/StopTool.h"

#include "Common/std/std_process.h"
#include "Module/Sync/SyncFactory.h"

namespace {

constexpr int kRounds = 10;
/// A tool that is just being started does not bear its name yet: one look is not enough.
constexpr int kLooksNeeded = 2;
constexpr std::chrono::seconds kStopDeadline{30};

class StopCallBack : public CSyncCallBack {
 public:
    explicit StopCallBack(Session& session) : m_session(session) {}

    int OnStateChange(int event, unsigned long long /*arg1*/, unsigned long long /*arg2*/,
                      void* /*data*/) override {
        if (event == kSyncEventOther) m_session.Change([this] { ++m_done; });
        return 0;
    }

    void StopOnce() {
        const int before = m_done;
        GetSyncFactory()->GetBackup()->StopBackup(this);
        m_session.Await([&] { return m_done > before; }, kStopDeadline);
    }

 private:
    Session& m_session;
    int m_done = 0;  ///< stops carried out; written under the session's lock
};

}  // namespace

void StopTool(Session& session) {
    static auto* const callback = new StopCallBack(session);  // the library keeps it for as long as it likes
    session.Enter("stopping");
    int absent = 0;
    for (int round = 0; round < kRounds && absent < kLooksNeeded; ++round) {
        callback->StopOnce();
        absent = ps_ExistProcess("HandsetArchiver") ? 0 : absent + 1;
    }
    if (absent < kLooksNeeded)
        throw Failure(ExitCode::kStopped, "stopped, but a backup tool goes on running");
}
