#include "Host/kruteinctl/DeviceList.h"

#include <fmt/format.h>
#include <libimobiledevice/libimobiledevice.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

#include "Host/kruteinctl/ConnectedDevices.h"
#include "Host/kruteinctl/DeviceFacts.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/JsonLine.h"
#include "Host/kruteinctl/Models.h"
#include "Host/kruteinctl/Table.h"
#include "Host/kruteinctl/Text.h"

namespace {

using Clock = Question::Clock;
using FactsQuestion = QuestionFor<DeviceFacts>;

std::unique_ptr<FactsQuestion> AskInBackground(const std::string& udid) {
    return std::make_unique<FactsQuestion>([udid] { return AskPublicFacts(udid); });
}

/// The identifier alone for a device that has not answered by then.
DeviceFacts FactsOrUdid(const FactsQuestion& question, const std::string& udid, Clock::time_point deadline) {
    if (std::optional<DeviceFacts> facts = question.AwaitUntil(deadline)) return *facts;
    DeviceFacts unknown;
    unknown.udid = udid;
    return unknown;
}

/// All devices are asked at once, so that a silent one does not keep the others waiting.
std::vector<DeviceFacts> FactsOfAll(Clock::time_point deadline) {
    const std::vector<std::string> udids = ConnectedUdids(deadline);
    std::vector<std::unique_ptr<FactsQuestion>> questions;
    questions.reserve(udids.size());
    for (const std::string& udid : udids)
        questions.push_back(AskInBackground(udid));
    std::vector<DeviceFacts> all;
    all.reserve(udids.size());
    for (std::size_t i = 0; i < udids.size(); ++i)
        all.push_back(FactsOrUdid(*questions[i], udids[i], deadline));
    return all;
}

nlohmann::ordered_json ObjectOf(const char* type, const DeviceFacts& facts) {
    return {{"message_type", type},
            {"udid", facts.udid},
            {"device_name", facts.name},
            {"product_type", facts.productType},
            {"model", MarketingName(facts.productType)},
            {"system_version", facts.systemVersion}};
}

void PrintTable(const Streams& streams, const std::vector<DeviceFacts>& devices) {
    FILE* const out = streams.Out();
    if (devices.empty()) {
        fmt::print(out, "no devices\n");
        return;
    }
    const auto known = [](const std::string& text) { return text.empty() ? std::string("unknown") : text; };
    Table table({"Device", "Model", "System", "UDID"});
    for (const DeviceFacts& facts : devices) {
        table.Add({known(facts.name), known(ModelWords(facts.productType)), known(facts.systemVersion),
                   facts.udid});
    }
    for (const std::string& row : table.Rows(streams.OutStyle()))
        fmt::print(out, "{}\n", row);
}

void PrintObjects(FILE* out, const std::vector<DeviceFacts>& devices) {
    for (const DeviceFacts& facts : devices)
        fmt::print(out, "{}", JsonLine(ObjectOf("device", facts)));
    fmt::print(out, "{}",
               JsonLine({{"message_type", "summary"},
                         {"command", NameOf(CommandName::kDevices)},
                         {"devices", devices.size()}}));
}

struct Change {
    bool isAttached = false;
    std::string udid;
};

/// What the client library tells, on a thread of its own, in the order in which it came.
class Changes {
 public:
    void Add(const idevice_event_t& event) {
        if (event.event != IDEVICE_DEVICE_ADD && event.event != IDEVICE_DEVICE_REMOVE) return;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_changes.push_back({event.event == IDEVICE_DEVICE_ADD, event.udid});
        m_arrived.notify_one();
    }

    Change Next() {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_arrived.wait(lock, [this] { return !m_changes.empty(); });
        Change next = std::move(m_changes.front());
        m_changes.pop_front();
        return next;
    }

 private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<Change> m_changes;
};

std::string ChangeText(const Change& change, const DeviceFacts& facts) {
    if (!change.isAttached) return fmt::format("disconnected  {}\n", Printable(change.udid));
    std::string text = fmt::format("connected     {}", Printable(change.udid));
    if (!facts.name.empty()) text += "  " + Printable(facts.name);
    if (!facts.productType.empty()) text += ", " + Printable(ModelWords(facts.productType));
    if (!facts.systemVersion.empty()) text += ", " + Printable(facts.systemVersion);
    return text + "\n";
}

std::string ChangeLine(const Change& change, const DeviceFacts& facts) {
    if (change.isAttached) return JsonLine(ObjectOf("connected", facts));
    return JsonLine({{"message_type", "disconnected"}, {"udid", change.udid}});
}

[[noreturn]] void Watch(const Options& options, const Streams& streams) {
    ConnectedUdids(Clock::now() + options.timeout);  // the subscription would wait for a daemon in silence
    static Changes changes;                          // told to until the process ends
    const auto onEvent = [](const idevice_event_t* event, void* /*unused*/) { changes.Add(*event); };
    if (idevice_event_subscribe(onEvent, nullptr) != IDEVICE_E_SUCCESS)
        throw Failure(ExitCode::kNoDaemon, "the device daemon does not tell of devices");
    for (;;) {
        const Change change = changes.Next();
        DeviceFacts facts;
        if (change.isAttached) {
            const auto question = AskInBackground(change.udid);
            facts = FactsOrUdid(*question, change.udid, Clock::now() + options.timeout);
        }
        fmt::print(streams.Out(), "{}",
                   options.output == Output::kJson ? ChangeLine(change, facts) : ChangeText(change, facts));
        std::fflush(streams.Out());
    }
}

}  // namespace

void RunDevicesCommand(const Options& options, const Streams& streams) {
    if (options.watch) Watch(options, streams);
    const std::vector<DeviceFacts> devices = FactsOfAll(Clock::now() + options.timeout);
    options.output == Output::kJson ? PrintObjects(streams.Out(), devices) : PrintTable(streams, devices);
}
