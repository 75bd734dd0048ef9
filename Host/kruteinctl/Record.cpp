#include "Host/kruteinctl/Record.h"

#include <algorithm>
#include <filesystem>

#include "Common/ini/IniObj.h"
#include "Common/ini/iniparser.h"
#include "Host/kruteinctl/Backups.h"

namespace fs = std::filesystem;

namespace {

constexpr char kSection[] = "backup_info";

/// Damaged records are told by their paths; the reader's own messages would only be in the way.
class NoReaderMessages {
 public:
    NoReaderMessages() { iniparser_set_error_callback(&Drop); }
    ~NoReaderMessages() { iniparser_set_error_callback(nullptr); }
    NoReaderMessages(const NoReaderMessages&) = delete;
    NoReaderMessages& operator=(const NoReaderMessages&) = delete;

 private:
    static int Drop(const char* /*format*/, ...) {
        return 0;
    }  // NOLINT(cert-dcl50-cpp): as the reader wants it
};

/// A link is none: what it leads to may be anything.
bool IsFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(fs::symlink_status(path, error));
}

void Look(const fs::path& folder, FoundRecords& found, const krutein::Interrupt& interrupt) {
    interrupt.Check();
    const bool hasRecord = IsFile(folder / kRecordFile);
    if (hasRecord) {
        if (const std::optional<Record> record = ReadRecord(folder.string())) {
            found.records.push_back(*record);
        } else {
            found.damaged.push_back((folder / kRecordFile).string());
        }
    }
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (!entry.is_directory(error) || entry.is_symlink(error)) continue;
        if (!IsBackup(entry.path().string())) {
            Look(entry.path(), found, interrupt);
        } else if (!hasRecord) {
            found.unlisted.push_back(entry.path().string());
        }
    }
}

}  // namespace

std::string HumanRecordTime(const std::string& timeText) {
    std::string text = timeText;
    // The Z at the end would say another time zone than the one that it is.
    if (!text.empty() && text.back() == 'Z') text.pop_back();
    std::replace(text.begin(), text.end(), 'T', ' ');
    return text;
}

std::optional<Record> ReadRecord(const std::string& folder) {
    const std::string path = folder + "/" + kRecordFile;
    if (!IsFile(path)) return std::nullopt;  // loading would make one
    const NoReaderMessages quiet;
    CIniObj ini;
    if (!ini.load(path)) return std::nullopt;
    Record record;
    record.folder = folder;
    record.deviceID = ini.getIni_string(kSection, "deviceID", "");
    if (record.deviceID.empty() || ini.getIni_string(kSection, "backupType", "").empty()) return std::nullopt;
    record.deviceName = ini.getIni_string(kSection, "deviceName", "");
    record.version = ini.getIni_string(kSection, "iOSVersion", "");
    record.serialNumber = ini.getIni_string(kSection, "serialNumber", "");
    record.productType = ini.getIni_string(kSection, "productType", "");
    record.timeText = ini.getIni_string(kSection, "backupTimeStr", "");
    record.kib = ini.getIni_int(kSection, "fileSize", 0);
    record.type = ini.getIni_int(kSection, "backupType", 0);
    record.isValid = ini.getIni_int(kSection, "isValid", 0) == 1;
    return record;
}

std::optional<Record> RecordOf(const std::string& backup) {
    if (std::optional<Record> record = ReadRecord(backup)) return record;
    const fs::path path(backup);
    std::optional<Record> record = ReadRecord(path.parent_path().string());
    if (record && record->deviceID != path.filename().string()) record.reset();
    return record;
}

FoundRecords FindRecords(const std::string& folder, const krutein::Interrupt& interrupt) {
    FoundRecords found;
    Look(folder, found, interrupt);
    std::sort(found.records.begin(), found.records.end(), [](const Record& a, const Record& b) {
        return a.timeText != b.timeText ? a.timeText > b.timeText : a.folder < b.folder;
    });
    std::sort(found.damaged.begin(), found.damaged.end());
    std::sort(found.unlisted.begin(), found.unlisted.end());
    return found;
}
