#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Module/Sync/CallBack.h"

/// One call of a callback, with a copy of its text.
struct RecordedEvent {
    int type = 0;
    unsigned long long arg1 = 0;
    unsigned long long arg2 = 0;
    bool hasData = false;
    std::string text;  ///< data up to its NUL
    std::thread::id thread;
};

/// Remembers the events of either callback interface.
template <typename Interface, typename Type>
class RecordingSink : public Interface {
 public:
    int OnStateChange(Type type, unsigned long long arg1, unsigned long long arg2, void* data) override {
        RecordedEvent event{static_cast<int>(type), arg1, arg2,
                            data != nullptr,        "",   std::this_thread::get_id()};
        if (data != nullptr) event.text = static_cast<const char*>(data);
        if (onEvent) onEvent(event);
        // Under the lock: who waits for the last event may destroy this object at once.
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back(event);
        m_arrived.notify_all();
        return 0;
    }

    std::vector<RecordedEvent> Events() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_events;
    }

    /// The events of one type.
    std::vector<RecordedEvent> Events(int type) const {
        std::vector<RecordedEvent> wanted;
        for (const RecordedEvent& event : Events()) {
            if (event.type == type) wanted.push_back(event);
        }
        return wanted;
    }

    /// Waits up to a minute for an event of this type. \return whether one has come.
    bool Await(int type) const {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_arrived.wait_for(lock, std::chrono::minutes(1), [&] {
            for (const RecordedEvent& event : m_events) {
                if (event.type == type) return true;
            }
            return false;
        });
    }

    /// Called with each event, on the library's thread.
    std::function<void(const RecordedEvent&)> onEvent;

 private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_arrived;
    std::vector<RecordedEvent> m_events;
};

using RecordingCallBack = RecordingSink<CCallBack, CallBackType>;
using RecordingSyncCallBack = RecordingSink<CSyncCallBack, int>;
