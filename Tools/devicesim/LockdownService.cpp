#include "Tools/devicesim/LockdownService.h"

#include <utility>

#include "Tools/devicesim/Delivery.h"
#include "Tools/devicesim/DeviceValues.h"
#include "Tools/devicesim/Frames.h"

namespace devicesim {
namespace {

constexpr char kType[] = "com.apple.mobile.lockdown";

Plist WithError(Plist answer, const char* error) {
    answer.Set("Error", error);
    return answer;
}

/// A value of the type that nobody expects there.
Plist WrongTypeFor(const Plist& value) {
    return value.IsText() ? Plist::OfNumber(7) : Plist::OfText("no number");
}

}  // namespace

void LockdownService::Serve(const Connection& connection, Device& device) {
    const std::optional<int> most = m_faults.AnswersBeforeDrop(device.Udid());
    std::string payload;
    for (int answered = 0; answered != most && ReadServiceFrame(connection, payload); ++answered) {
        const std::optional<Plist> request = Plist::Parse(payload);
        if (!request) return;
        const Plist answer = Answer(*request, device);
        if (!Send(connection, device, *request, answer)) return;
        const bool goesSilent =
            answer.Has("SessionID") && m_faults.Has(device.Udid(), FaultKind::kTlsSilence);
        if (goesSilent) return connection.AwaitEnd();
        if (request->Text("Request") == "Goodbye") return;
    }
}

Plist LockdownService::Answer(const Plist& request, const Device& device) {
    const std::string name = request.Text("Request");
    Plist answer;
    answer.Set("Request", name);
    if (name == "QueryType") return std::move(answer.Set("Type", kType));
    if (name == "GetValue") return GetValue(request, device);
    if (name == "Pair" || name == "ValidatePair") return Pair(request, device, std::move(answer));
    if (name == "StartSession") return StartSession(request, device, std::move(answer));
    if (name == "StopSession" || name == "Goodbye") return answer;
    if (name == "Unpair") {
        const std::optional<Plist> record = request.Member("PairRecord");
        if (record) m_pairings.Distrust(device.Udid(), record->Text("HostID"));
        return answer;
    }
    return WithError(std::move(answer), "InvalidRequest");
}

Plist LockdownService::GetValue(const Plist& request, const Device& device) const {
    Plist answer;
    answer.Set("Request", "GetValue");
    for (const char* name : {"Domain", "Key"}) {
        if (request.Has(name)) answer.Set(name, request.Text(name));
    }
    return Value(request, device, std::move(answer));
}

Plist LockdownService::Value(const Plist& request, const Device& device, Plist answer) const {
    const std::string key = request.Text("Key");
    const auto isFaulty = [&](FaultKind kind) {
        return !key.empty() && m_faults.HasAt(device.Udid(), kind, key);
    };
    if (isFaulty(FaultKind::kRefuse)) return WithError(std::move(answer), "GetProhibited");

    std::optional<Plist> values = ValuesOf(device, request.Text("Domain"));
    if (values && key.empty()) {
        answer.Set("Value", std::move(*values));
        return answer;
    }
    std::optional<Plist> value = values ? values->Member(key) : std::nullopt;
    if (!value || isFaulty(FaultKind::kMissing)) return WithError(std::move(answer), "MissingValue");
    answer.Set("Value", isFaulty(FaultKind::kWrongType) ? WrongTypeFor(*value) : std::move(*value));
    return answer;
}

Plist LockdownService::Pair(const Plist& request, const Device& device, Plist answer) {
    const auto is = [&](FaultKind kind) { return m_faults.Has(device.Udid(), kind); };
    if (is(FaultKind::kLocked)) return WithError(std::move(answer), "PasswordProtected");
    if (is(FaultKind::kTrustDialog)) return WithError(std::move(answer), "PairingDialogResponsePending");
    if (is(FaultKind::kNoTrust)) return WithError(std::move(answer), "UserDeniedPairing");
    const std::optional<Plist> record = request.Member("PairRecord");
    const std::string hostId = record ? record->Text("HostID") : "";
    if (hostId.empty()) return WithError(std::move(answer), "InvalidPairRecord");
    if (request.Text("Request") == "Pair") m_pairings.Trust(device.Udid(), hostId);
    if (!m_pairings.Trusts(device.Udid(), hostId)) return WithError(std::move(answer), "InvalidHostID");
    return answer;
}

Plist LockdownService::StartSession(const Plist& request, const Device& device, Plist answer) const {
    const auto is = [&](FaultKind kind) { return m_faults.Has(device.Udid(), kind); };
    if (is(FaultKind::kForgotten) || !m_pairings.Trusts(device.Udid(), request.Text("HostID"))) {
        return WithError(std::move(answer), "InvalidHostID");
    }
    if (is(FaultKind::kLocked)) return WithError(std::move(answer), "PasswordProtected");
    answer.Set("SessionID", NewUuid()).Set("EnableSessionSSL", is(FaultKind::kTlsSilence));
    return answer;
}

bool LockdownService::Send(const Connection& connection, Device& device, const Plist& request,
                           const Plist& answer) const {
    const Place place{request.Text("Request"), request.Text("Key")};
    return Deliver(connection, &ServiceHeader, answer.ToXml(), m_faults.OnAnswer(device.Udid(), place),
                   [&] { m_hub.Detach(device); });
}

}  // namespace devicesim
