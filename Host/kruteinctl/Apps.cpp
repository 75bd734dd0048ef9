#include "Host/kruteinctl/Apps.h"

#include "Module/BackupLib/BackupType.h"

const std::vector<App>& Apps() {
    static const std::vector<App> apps = {{kBackupTypeSms, "messages", "backup_SMS"},
                                          {kBackupTypeWhatsApp, "whatsapp", "backup_whatsApp"},
                                          {kBackupTypeWeChat, "wechat", "backup_weChat"},
                                          {kBackupTypeContact, "contacts", "backup_Contact"}};
    return apps;
}

std::vector<std::string> SectionsOf(int type) {
    std::vector<std::string> sections;
    for (const App& app : Apps()) {
        if ((type & app.bit) != 0) sections.emplace_back(app.section);
    }
    return sections;
}
