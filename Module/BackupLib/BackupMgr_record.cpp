// The backup manager writes the record file of a backup.

#include <sys/stat.h>

#include <algorithm>
#include <ctime>

#include "Common/ini/IniObj.h"
#include "Common/log/Log.h"
#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Common/std/std_string.h"
#include "Module/BackupLib/BackupMgr.h"

namespace {

constexpr char kRecordFile[] = "backup_config.ini";
constexpr char kSection[] = "backup_info";
constexpr char kMaker[] = "VelMora";

/// Local time; the Z at its end is part of the form that hosts know.
std::string TimeText(std::time_t time) {
    std::tm local{};
    localtime_r(&time, &local);
    return STD_FormatA("%04d-%02d-%02dT%02d:%02d:%02dZ", local.tm_year + 1900, local.tm_mon + 1,
                       local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
}

/// KiB, rounded down but never 0.
int SizeInKib(long long bytes) {
    if (static_cast<unsigned long long>(bytes) + 1023 < 2047) return 1;
    return static_cast<int>(bytes / 1024);
}

/// A text from the device as the value of one line: a line end in it would make the file unreadable.
std::string OneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return text;
}

/// False for a link, which leads to a file elsewhere, and for a pipe, which would be waited for.
bool CanBeWritten(std::string path) {
    STD_PATH_FormatA(path);
    struct stat info {};
    return lstat(path.c_str(), &info) != 0 || S_ISREG(info.st_mode) || S_ISDIR(info.st_mode);
}

void SetText(CIniObj& record, const char* key, const std::string& value) {
    record.setIni_string(kSection, key, value);
}

void SetNumber(CIniObj& record, const char* key, int value) {
    record.setIni_int(kSection, key, value);
}

void SetDevice(CIniObj& record, IBaseDevice& device) {
    SetText(record, "deviceID", OneLine(device.GetDeviceID()));
    SetText(record, "deviceName", OneLine(device.GetName()));
    SetText(record, "iOSVersion", OneLine(device.GetVersionString()));
    SetText(record, "serialNumber", OneLine(device.GetSerialNumber()));
    SetText(record, "productType", OneLine(device.GetProductType()));
}

}  // namespace

bool CBackupMgr::SaveBackup() {
    const long long bytes = STD_FILE_GetDirSizeA(m_backupFolder);
    const std::time_t now = std::time(nullptr);
    const std::string path = m_backupDir + "\\" + kRecordFile;
    CIniObj record;
    if (!CanBeWritten(path) || !record.load(path)) {
        KRUTEIN_LOG("[Backup] save backukp ini fail![%s] ", path.c_str());
        return false;
    }
    if (!m_manifestEntries.empty()) {
        std::string cache = m_backupDir + STD_FormatA("/%x", static_cast<unsigned>(now));
        STD_PATH_FormatA(cache);
        if (!CanBeWritten(cache) || !SaveIOS9HashCache(cache, m_manifestEntries)) {
            KRUTEIN_LOG("[Backup] SaveIOS9HashCache fail! ");
            return false;
        }
        SetText(record, "hashCache", cache);
    }
    if (m_device != nullptr) {
        SetDevice(record, *m_device);
        std::string folder = m_backupDir + "\\" + m_deviceID;
        STD_PATH_FormatA(folder);
        SetText(record, "backupPath", folder);
    }
    SetNumber(record, "fileSize", SizeInKib(bytes));
    SetNumber(record, "backupType", m_type);
    SetNumber(record, "backupTime", static_cast<int>(now));
    SetText(record, "backupTimeStr", TimeText(now));
    SetNumber(record, "isValid", 1);
    SetText(record, "backupTypeDesc", m_typeDesc);
    SetText(record, "makeBy", kMaker);
    SetNumber(record, "protocolAppNum", static_cast<int>(m_protocolApps.size()));
    for (const auto& [number, name] : m_protocolApps)
        record.setIni_string(STD_FormatA("protocolApp_%d", number), "name", name);
    record.save();
    return true;
}
