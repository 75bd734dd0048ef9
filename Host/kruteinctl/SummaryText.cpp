#include "Host/kruteinctl/SummaryText.h"

#include <fmt/format.h>

#include "Host/kruteinctl/Text.h"

std::string SummaryText(const Summary& summary) {
    const std::string bytes = ExactBytes(summary.bytes.value_or(0));
    if (summary.command == CommandName::kSize) {
        return fmt::format("{}  {}\n", bytes, Printable(summary.path));
    }
    const std::string time = HumanTime(summary.elapsed);
    if (summary.command == CommandName::kRestore) {
        return fmt::format("Restored {} in {} from\n  {}\n", summary.udid, time, Printable(summary.path));
    }
    const std::string what = summary.types.empty() ? summary.udid : summary.types + " of " + summary.udid;
    return fmt::format("Backed up {} in {}: {} files, {}, in\n  {}\n", what, time, summary.files.value_or(0),
                       bytes, Printable(summary.path));
}
