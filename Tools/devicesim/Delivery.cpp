#include "Tools/devicesim/Delivery.h"

namespace devicesim {
namespace {

constexpr char kNoPlist[] = "this is no property list";
constexpr std::uint32_t kHugeBytes = 0xFFFFFF00;

std::string FrameOf(const HeaderOf& header, const std::string& payload) {
    return header(static_cast<std::uint32_t>(payload.size())) + payload;
}

}  // namespace

bool Deliver(const Connection& connection, const HeaderOf& header, const std::string& payload,
             const std::optional<Fault>& fault, const std::function<void()>& detach) {
    const std::string frame = FrameOf(header, payload);
    if (!fault) return connection.Write(frame);
    switch (fault->kind) {
        case FaultKind::kLate:
            return connection.Pause(fault->delay) && connection.Write(frame);
        case FaultKind::kSilent:
            connection.AwaitEnd();
            return false;
        case FaultKind::kHalf:
            connection.Write(frame.substr(0, frame.size() / 2));
            return false;
        case FaultKind::kGarbage:
            return connection.Write(FrameOf(header, kNoPlist));
        case FaultKind::kHuge:
            connection.Write(header(kHugeBytes));
            return false;
        case FaultKind::kDetach:
            detach();
            return false;
        default:
            return connection.Write(frame);
    }
}

}  // namespace devicesim
