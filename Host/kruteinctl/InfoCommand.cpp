#include "Host/kruteinctl/InfoCommand.h"

#include <fmt/format.h>

#include "Host/kruteinctl/ConnectedDevices.h"
#include "Host/kruteinctl/JsonLine.h"
#include "Host/kruteinctl/Models.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Udid.h"

namespace {

constexpr std::size_t kBarCells = 24;

std::string Known(const std::string& text) {
    return text.empty() ? "unknown" : Printable(text);
}

/// How full the device is, as a bar and in units.
std::string StorageText(const DeviceFacts& facts) {
    if (!facts.KnowsStorage()) return "unknown";
    const double fraction = static_cast<double>(facts.UsedBytes()) / static_cast<double>(facts.totalBytes);
    const auto filled = static_cast<std::size_t>(fraction * static_cast<double>(kBarCells));
    return fmt::format("[{}{}]  {} of {} used, {} free", std::string(filled, '#'),
                       std::string(kBarCells - filled, '-'), HumanBytes(facts.UsedBytes()),
                       HumanBytes(facts.totalBytes), HumanBytes(facts.availableBytes));
}

nlohmann::ordered_json ObjectOf(const DeviceFacts& facts) {
    nlohmann::ordered_json object = {{"message_type", "info"},
                                     {"udid", facts.udid},
                                     {"device_name", facts.name},
                                     {"product_type", facts.productType},
                                     {"model", MarketingName(facts.productType)},
                                     {"system_version", facts.systemVersion},
                                     {"serial_number", facts.serialNumber}};
    if (facts.KnowsStorage()) {
        object["total_bytes"] = facts.totalBytes;
        object["used_bytes"] = facts.UsedBytes();
        object["available_bytes"] = facts.availableBytes;
    }
    return object;
}

}  // namespace

void RunInfoCommand(const Options& options, const Streams& streams) {
    const auto deadline = Question::Clock::now() + options.timeout;
    const std::string udid = options.udid.empty() ? OnlyConnectedUdid(deadline) : CanonicalUdid(options.udid);
    const DeviceFacts facts = AskFacts(udid, deadline);
    if (options.output != Output::kJson) {
        fmt::print(streams.Out(), "{}", FactsText(facts));
        return;
    }
    fmt::print(
        streams.Out(), "{}{}", JsonLine(ObjectOf(facts)),
        JsonLine(
            {{"message_type", "summary"}, {"command", NameOf(CommandName::kInfo)}, {"udid", facts.udid}}));
}

std::string FactsText(const DeviceFacts& facts) {
    return fmt::format("{}\n  Model    {}\n  System   {}\n  Serial   {}\n  UDID     {}\n  Storage  {}\n",
                       Known(facts.name), Known(ModelWords(facts.productType)), Known(facts.systemVersion),
                       Known(facts.serialNumber), Printable(facts.udid), StorageText(facts));
}
