// A host that links the library, and uses something of each of its parts.

#include <cstdio>

#include "Common/Version.h"
#include "Common/ini/IniObj.h"
#include "Common/std/std_sha1.h"
#include "Module/BackupLib/BackupMgr.h"
#include "Module/BackupLib/mbdb/mbdb.h"
#include "Module/Sync/SyncFactory.h"

int main() {
    if (GetSyncFactory()->GetBackup() == nullptr) return 1;
    if (CBackupMgr::GetInstance() == nullptr) return 2;
    mbdb_t* const catalogue = mbdb_create();
    if (catalogue == nullptr) return 3;
    mbdb_free(catalogue);
    dictionary* const entries = dictionary_new(0);
    if (entries == nullptr) return 4;
    dictionary_del(entries);
    std::printf("%s %s\n", KRUTEIN_VERSION,
                STD_FILE_CalcDomainPathSha1A("HomeDomain", "Library/SMS/sms.db").c_str());
    return 0;
}
