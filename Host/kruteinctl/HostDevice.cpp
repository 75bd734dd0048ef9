#include "Host/kruteinctl/HostDevice.h"

#include <fmt/format.h>

#include "Common/std/std_string.h"
#include "Host/SampleDevice/SampleDeviceFolder.h"
#include "Host/kruteinctl/ConnectedDevices.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"

namespace {

constexpr std::chrono::seconds kPatience{30};

DeviceFacts FactsOfDescription(const krutein::SampleDevice& device) {
    DeviceFacts facts;
    facts.udid = device.udid;
    facts.name = device.name;
    facts.productType = device.productType;
    facts.systemVersion = device.systemVersion;
    facts.serialNumber = device.serialNumber;
    return facts;
}

DeviceFacts FactsOfSample(const std::string& udid) {
    try {
        if (const auto device = krutein::FindSampleDevice(krutein::SampleDevicesFolder(), udid))
            return FactsOfDescription(*device);
    } catch (const krutein::SampleDeviceError& unusable) {
        throw Failure(ExitCode::kNoDevice, Printable(unusable.what()));
    }
    throw Failure(ExitCode::kNoDevice, fmt::format("no such device is connected: {}", udid));
}

DeviceFacts FactsOf(const std::string& udid) {
    const auto deadline = Question::Clock::now() + kPatience;
    return IsConnected(udid, deadline) ? AskFacts(udid, deadline) : FactsOfSample(udid);
}

DeviceFacts AwaitFacts(Session& session, const std::string& udid) {
    const QuestionFor<DeviceFacts> question([udid] { return FactsOf(udid); });
    std::optional<DeviceFacts> facts;
    // The session looks at it with each tick.
    const auto answered = [&] { return (facts = question.AwaitUntil(Question::Clock::now())).has_value(); };
    if (!session.AwaitOrStop(answered)) throw Failure(ExitCode::kStopped, "stopped");
    return *facts;
}

}  // namespace

HostDevice::HostDevice(Session& session, const std::string& udid) : m_facts(AwaitFacts(session, udid)) {}

int HostDevice::GetMajorVersion() {
    return STD_GetNumA(m_facts.systemVersion);
}
