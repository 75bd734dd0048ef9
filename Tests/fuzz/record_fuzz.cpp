// backup_config.ini: any bytes are read without a crash, and what is told of a backup is what the file says.

#include <string>

#include "Common/ini/IniObj.h"
#include "Common/ini/iniparser.h"
#include "Host/kruteinctl/Record.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

int Quiet(const char* /*format*/, ...) {
    return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file(kRecordFile);
    file.Write(FuzzInput(data, size).Rest());
    const auto record = ReadRecord(file.Folder());
    HumanRecordTime(record ? record->timeText : "");
    iniparser_set_error_callback(Quiet);
    CIniObj ini;
    const bool loaded = ini.load(file.Path());
    Require(loaded || !record, "a record is an INI file");
    if (!loaded) return 0;
    const std::string device = ini.getIni_string("backup_info", "deviceID", "");
    const std::string type = ini.getIni_string("BACKUP_INFO", "BACKUPTYPE", "");
    Require(record.has_value() == (!device.empty() && !type.empty()), "a record tells a device and a type");
    if (!record) return 0;
    Require(record->deviceID == device && record->type == ini.getIni_int("backup_info", "backuptype", 0),
            "a record tells what the file says");
    Require(record->isValid == (ini.getIni_int("backup_info", "isValid", 0) == 1), "valid is what says 1");
    record->Bytes();
    return 0;
}
