#include <algorithm>
#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>
#include <string>

#include "Host/Archiver/BackupRun.h"
#include "Host/Archiver/Connection.h"
#include "Host/Archiver/FolderTree.h"
#include "Host/Archiver/Layout.h"
#include "Host/Archiver/StoredBackup.h"
#include "Host/Archiver/ToolError.h"
#include "Host/Archiver/jobs/Jobs.h"

namespace krutein {
namespace {

/// The host looks for the one line with this word.
constexpr char kTotal[] = "Total";

struct Info {
    std::string text;
    std::int64_t files = 0;
};

/// A line "name: value". The value comes from outside; it is kept from looking like another line.
std::string Line(const std::string& name, std::string value) {
    value = OneLine(value);
    for (std::size_t at = value.find(kTotal); at != std::string::npos; at = value.find(kTotal, at))
        value[at] = 't';
    return name + ": " + value + "\n";
}

std::string TotalLine(std::int64_t bytes) {
    return std::string(kTotal) + " size: " + std::to_string(bytes) + " bytes\n";
}

/// \return nothing when there is no finished backup.
std::optional<Info> BackupInfo(const std::string& path) {
    BackupFacts facts;
    try {
        const StoredBackup backup(path);
        if (!backup.IsFinished()) return std::nullopt;
        facts = backup.Facts();
    } catch (const ToolError&) {
        return std::nullopt;
    }
    const TreeSize size = MeasureTree(path);
    return Info{Line("Backup of", facts.deviceName) + Line("Product type", facts.productType) +
                    Line("System version", facts.systemVersion) + Line("Made", facts.date) +
                    Line("Files in the backup", std::to_string(size.files)) + TotalLine(size.bytes),
                size.files};
}

Info DeviceInfo(const SampleDevice& device) {
    NoStore nowhere;
    std::int64_t files = 0;
    BackupRun run(device, nowhere, std::time(nullptr), [&](const std::string& /*file*/) { ++files; });
    const std::int64_t bytes = run.Write();
    return {Line("Device", device.name) + Line("Product type", device.productType) +
                Line("System version", device.systemVersion) +
                Line("Files on the device", std::to_string(files)) + TotalLine(bytes),
            files};
}

}  // namespace

void TellInfo(const CommandLine& command, MessageWriter& messages) {
    const auto path = BackupFolderPath(command.backupPath, command.source);
    std::optional<Info> info = path ? BackupInfo(*path) : std::nullopt;
    if (!info) info = DeviceInfo(Connect(command.target));
    const auto files = static_cast<int>(std::min<std::int64_t>(info->files, std::numeric_limits<int>::max()));
    messages.Progress(files, files, info->text);
}

}  // namespace krutein
