#include "Host/kruteinctl/ConnectedDevices.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <libimobiledevice/libimobiledevice.h>

#include <algorithm>

#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"

namespace {

constexpr char kNoDaemon[] =
    "no device daemon answers: start usbmuxd or, for simulated devices, devicesim (see Docs/device.md). "
    "Backups and restores of sample devices work without one when the device is named";

std::vector<std::string> AskDaemon() {
    char** udids = nullptr;
    int count = 0;
    // A daemon without devices answers with an empty list.
    if (idevice_get_device_list(&udids, &count) != IDEVICE_E_SUCCESS)
        throw Failure(ExitCode::kNoDaemon, kNoDaemon);
    std::vector<std::string> found(udids, udids + count);
    idevice_device_list_free(udids);
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

}  // namespace

std::vector<std::string> ConnectedUdids(Question::Clock::time_point deadline) {
    const QuestionFor<std::vector<std::string>> question(&AskDaemon);
    std::optional<std::vector<std::string>> udids = question.AwaitUntil(deadline);
    if (!udids) throw Failure(ExitCode::kDeviceSilent, "the device daemon did not answer in time");
    return std::move(*udids);
}

std::string OnlyConnectedUdid(Question::Clock::time_point deadline) {
    const std::vector<std::string> udids = ConnectedUdids(deadline);
    if (udids.empty()) throw Failure(ExitCode::kNoDevice, "no device is connected");
    if (udids.size() > 1) {
        throw Failure(ExitCode::kSeveralDevices,
                      fmt::format("{} devices are connected, say which one is meant: {}", udids.size(),
                                  Printable(fmt::format("{}", fmt::join(udids, ", ")))));
    }
    return udids.front();
}

bool IsConnected(const std::string& udid, Question::Clock::time_point deadline) {
    try {
        const std::vector<std::string> udids = ConnectedUdids(deadline);
        return std::find(udids.begin(), udids.end(), udid) != udids.end();
    } catch (const Failure& failure) {
        if (failure.Code() == ExitCode::kNoDaemon) return false;
        throw;
    }
}
