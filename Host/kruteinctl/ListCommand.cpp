#include "Host/kruteinctl/ListCommand.h"

#include <fmt/format.h>

#include <filesystem>
#include <vector>

#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/JsonLine.h"
#include "Host/kruteinctl/Record.h"
#include "Host/kruteinctl/Table.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Types.h"
#include "Module/BackupLib/BackupType.h"

namespace {

/// What a user wants to know first: whether there is something to look into.
std::string StateOf(const Record& record) {
    if (record.type == kBackupTypeContact) return "record only";
    if (!std::filesystem::is_directory(record.BackupPath())) return "missing";
    return record.isValid ? "valid" : "invalid";
}

void PrintTable(FILE* out, const FoundRecords& found) {
    Table table({"Device", "System", "Types", "Time", "Size", "State", "Backup"});
    for (const Record& record : found.records) {
        table.Add({record.deviceName, record.version, TypeWords(record.type),
                   HumanRecordTime(record.timeText), HumanBytes(record.Bytes()), StateOf(record),
                   record.BackupPath()});
    }
    if (!found.records.empty()) fmt::print(out, "{}", table.Text());
    for (const std::string& path : found.damaged)
        fmt::print(out, "damaged record: {}\n", Printable(path));
    for (const std::string& path : found.unlisted)
        fmt::print(out, "without record: {}\n", Printable(path));
    if (found.records.empty() && found.damaged.empty() && found.unlisted.empty())
        fmt::print(out, "no backups\n");
}

nlohmann::ordered_json ObjectOf(const Record& record) {
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

void PrintObjects(FILE* out, const FoundRecords& found) {
    for (const Record& record : found.records)
        fmt::print(out, "{}", JsonLine(ObjectOf(record)));
    for (const std::string& path : found.damaged)
        fmt::print(out, "{}", JsonLine({{"message_type", "damaged_record"}, {"path", path}}));
    for (const std::string& path : found.unlisted)
        fmt::print(out, "{}", JsonLine({{"message_type", "without_record"}, {"path", path}}));
    fmt::print(out, "{}",
               JsonLine({{"message_type", "summary"},
                         {"command", NameOf(CommandName::kList)},
                         {"backups", found.records.size()},
                         {"damaged_records", found.damaged.size()},
                         {"without_record", found.unlisted.size()}}));
}

}  // namespace

void RunListCommand(const Options& options, const Streams& streams) {
    std::error_code error;
    if (!std::filesystem::is_directory(options.folder, error))
        throw Failure(ExitCode::kNoBackup, fmt::format("there is no folder {}", Printable(options.folder)));
    const FoundRecords found = FindRecords(options.folder);
    options.output == Output::kJson ? PrintObjects(streams.Out(), found) : PrintTable(streams.Out(), found);
}
