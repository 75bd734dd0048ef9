#include "Tools/devicesim/DaemonSession.h"

#include <utility>

#include "Tools/devicesim/Delivery.h"
#include "Tools/devicesim/Frames.h"

namespace devicesim {
namespace {

// Wire numbers: never change.
constexpr std::uint64_t kOk = 0;
constexpr std::uint64_t kBadCommand = 1;
constexpr std::uint64_t kBadDevice = 2;
constexpr std::uint64_t kRefused = 3;
constexpr std::uint64_t kBadVersion = 6;

Plist ResultOf(std::uint64_t number) {
    Plist result;
    result.Set("MessageType", "Result").Set("Number", number);
    return result;
}

/// The port in the host's byte order; clients send it in the network's.
std::uint16_t PortOf(const Plist& request) {
    const std::uint64_t number = request.Number("PortNumber").value_or(0);
    return static_cast<std::uint16_t>((number & 0xFFU) << 8 | (number >> 8 & 0xFFU));
}

}  // namespace

void DaemonSession::Run() {
    DaemonFrame frame;
    while (ReadDaemonFrame(m_connection, frame)) {
        m_tag = frame.tag;
        if (frame.version != kDaemonVersion || frame.message != kDaemonPlistMessage) {
            AnswerResult({}, kBadVersion);
            return;
        }
        const std::optional<Plist> request = Plist::Parse(frame.payload);
        if (!request) {
            AnswerResult({}, kBadCommand);
            return;
        }
        if (!Handle(*request)) return;
    }
}

bool DaemonSession::Handle(const Plist& request) {
    const std::string name = request.Text("MessageType");
    if (name == "ListDevices") return Answer(request, ListDevices());
    if (name == "ReadPairRecord") return Answer(request, ReadPairRecord(request));
    if (name == "SavePairRecord") return Answer(request, SavePairRecord(request));
    if (name == "ReadBUID") {
        return Answer(request, Plist().Set("BUID", m_state.pairings.SystemBuid()));
    }
    if (name == "DeletePairRecord") {
        m_state.pairings.RemoveRecord(request.Text("PairRecordID"));
        return AnswerResult(request, kOk);
    }
    if (name == "Listen") {
        if (AnswerResult(request, kOk)) Listen();
        return false;
    }
    if (name == "Connect") {
        Connect(request);
        return false;
    }
    return AnswerResult(request, kBadCommand);
}

void DaemonSession::Listen() {
    m_state.hub.Listen(m_connection);
    // Whatever the client still says is of no interest, only that it is there.
    std::string unread;
    while (m_connection.Read(unread, 1)) {
    }
    m_state.hub.Forget(m_connection);
}

void DaemonSession::Connect(const Plist& request) {
    const std::shared_ptr<Device> device = m_state.hub.Find(request.Number("DeviceID").value_or(0));
    if (device == nullptr) {
        AnswerResult(request, kBadDevice);
        return;
    }
    Service* const service = m_state.services.Find(PortOf(request));
    if (service == nullptr) {
        AnswerResult(request, kRefused);
        return;
    }
    const Device::Line line(*device, m_connection);
    if (AnswerResult(request, kOk)) service->Serve(m_connection, *device);
}

Plist DaemonSession::ReadPairRecord(const Plist& request) const {
    const std::string record = m_state.pairings.Record(request.Text("PairRecordID"));
    if (record.empty()) return ResultOf(kBadDevice);
    return std::move(Plist().SetData("PairRecordData", record));
}

Plist DaemonSession::SavePairRecord(const Plist& request) const {
    const std::string udid = request.Text("PairRecordID");
    const std::string record = request.Data("PairRecordData");
    if (udid.empty() || record.empty()) return ResultOf(kBadCommand);
    m_state.pairings.SaveRecord(udid, record);
    return ResultOf(kOk);
}

Plist DaemonSession::ListDevices() const {
    return std::move(Plist().SetList("DeviceList", m_state.hub.List()));
}

bool DaemonSession::AnswerResult(const Plist& request, std::uint64_t number) const {
    return Answer(request, ResultOf(number));
}

bool DaemonSession::Answer(const Plist& request, const Plist& answer) const {
    const HeaderOf header = [this](std::uint32_t bytes) { return DaemonHeader(bytes, m_tag); };
    return Deliver(m_connection, header, answer.ToXml(),
                   m_state.faults.OnAnswer("", {request.Text("MessageType"), ""}), [] {});
}

}  // namespace devicesim
