#include "Host/kruteinctl/ListCommand.h"

#include <fmt/format.h>

#include <filesystem>
#include <vector>

#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Record.h"
#include "Host/kruteinctl/Table.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Types.h"
#include "Module/BackupLib/BackupType.h"

namespace {

using Json = Printer::Json;

/// What a user wants to know first: whether there is something to look into.
std::string StateOf(const Record& record) {
    if (record.type == kBackupTypeContact) return "record only";
    if (!std::filesystem::is_directory(record.BackupPath())) return "missing";
    return record.isValid ? "valid" : "invalid";
}

Colour ColourOf(const std::string& state) {
    if (state == "valid") return Colour::kGood;
    return state == "invalid" || state == "missing" ? Colour::kBad : Colour::kNone;
}

Json ObjectOf(const Record& record) {
    return {{"message_type", "backup"},
            {"path", record.BackupPath()},
            {"udid", record.deviceID},
            {"device_name", record.deviceName},
            {"product_type", record.productType},
            {"system_version", record.version},
            {"serial_number", record.serialNumber},
            {"types", TypeWords(record.type)},
            {"type", record.type},
            {"time", record.timeText},
            {"bytes", record.Bytes()},
            {"state", StateOf(record)}};
}

void PrintRecords(const FoundRecords& found, Printer& printer) {
    Table table({"Device", "System", "Types", "Time", "Size", "State", "Backup"});
    for (const Record& record : found.records) {
        const std::string state = StateOf(record);
        table.Add({record.deviceName,
                   record.version,
                   TypeWords(record.type),
                   HumanRecordTime(record.timeText),
                   HumanBytes(record.Bytes()),
                   {state, ColourOf(state)},
                   record.BackupPath()});
    }
    const std::vector<std::string> rows = table.Rows(printer.LineStyle());
    if (!found.records.empty()) printer.PrintText(rows.front());
    for (std::size_t i = 0; i < found.records.size(); ++i)
        printer.Print([&] { return rows[i + 1]; }, [&] { return ObjectOf(found.records[i]); });
}

/// What has a path and nothing else to say.
void PrintPaths(const std::vector<std::string>& paths, const char* words, const char* messageType,
                Printer& printer) {
    for (const std::string& path : paths) {
        printer.Print([&] { return fmt::format("{}: {}", words, Printable(path)); },
                      [&] {
                          Json object = Printer::Message(messageType);
                          object["path"] = path;
                          return object;
                      });
    }
}

void PrintSum(const FoundRecords& found, Printer& printer) {
    printer.Print(
        [&] {
            return fmt::format("backups: {}, damaged records: {}, without record: {}", found.records.size(),
                               found.damaged.size(), found.unlisted.size());
        },
        [&] {
            Json summary = Printer::Message("summary");
            summary["command"] = NameOf(CommandName::kList);
            summary["backups"] = found.records.size();
            summary["damaged_records"] = found.damaged.size();
            summary["without_record"] = found.unlisted.size();
            return summary;
        });
}

}  // namespace

ExitCode RunListCommand(const Options& options, Printer& printer, const krutein::Interrupt& interrupt) {
    std::error_code error;
    if (!std::filesystem::is_directory(options.folder, error))
        throw Failure(ExitCode::kNoBackup, fmt::format("there is no folder {}", Printable(options.folder)));
    const FoundRecords found = FindRecords(options.folder, interrupt);
    PrintRecords(found, printer);
    PrintPaths(found.damaged, "damaged record", "damaged_record", printer);
    PrintPaths(found.unlisted, "without record", "without_record", printer);
    PrintSum(found, printer);
    return ExitCode::kDone;
}
