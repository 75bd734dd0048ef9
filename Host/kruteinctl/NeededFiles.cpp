#include "Host/kruteinctl/NeededFiles.h"

#include <algorithm>

#include "Host/BackupFormat/SqliteView.h"
#include "Host/kruteinctl/Apps.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"
#include "Host/kruteinctl/Types.h"
#include "Module/BackupLib/BackupType.h"
#include "Module/BackupLib/ConfigMgr.h"

using krutein::BackupEntry;
using krutein::FileId;

namespace {

/// The contacts' pictures, which every job for contacts keeps whatever is configured.
constexpr char kContactImages[] = "cd6702cea29fe89cf280a76794405adb17f9a0ee";

[[noreturn]] void NotConfigured(int type) {
    throw Failure(ExitCode::kNotConfigured, "nothing is configured for " + TypeWords(type) +
                                                ": look at Resources/Config/vm_config.ini");
}

/// Configured texts become part of the query as they are, and can make it one that SQLite does not
/// understand.
krutein::SqliteRows RowsOf(const krutein::SqliteView& manifest, const std::string& query, int type) {
    try {
        return manifest.Select(query);
    } catch (const krutein::BackupDamage& refused) {
        throw Failure(ExitCode::kNotConfigured, "what is configured for " + TypeWords(type) +
                                                    " makes no query: " + Printable(refused.what()));
    }
}

/// True when one of the texts, which are in lower case, occurs in the value.
bool OccursIn(const std::string& value, const std::vector<std::string>& texts) {
    if (texts.empty()) return false;
    const std::string lower = LowerCase(value);
    return std::any_of(texts.begin(), texts.end(),
                       [&](const std::string& text) { return lower.find(text) != std::string::npos; });
}

}  // namespace

NeededFiles::NeededFiles(const BackupTarget& backup, int type, const krutein::Interrupt& interrupt) {
    if (backup.layout == krutein::BackupLayout::kNewer) {
        AskManifestDb(backup, type, interrupt);
    } else if (!CConfigMgr::GetInstance()->GetAppDomainAndRelativePath(SectionsOf(type), m_domains,
                                                                       m_paths)) {
        NotConfigured(type);
    }
    if ((type & kBackupTypeContact) != 0) m_ids.push_back(*FileId::Parse(kContactImages));
    std::sort(m_ids.begin(), m_ids.end());
}

bool NeededFiles::Has(const BackupEntry& entry) const {
    return std::binary_search(m_ids.begin(), m_ids.end(), *entry.id) || OccursIn(entry.domain, m_domains) ||
           OccursIn(entry.path, m_paths);
}

void NeededFiles::AskManifestDb(const BackupTarget& backup, int type, const krutein::Interrupt& interrupt) {
    const std::string query = CConfigMgr::GetInstance()->GetSQL(SectionsOf(type));
    if (query.empty()) NotConfigured(type);
    const krutein::SqliteView manifest(krutein::SqliteFiles::At(backup.catalogue), interrupt);
    krutein::SqliteRows rows = RowsOf(manifest, query, type);
    while (rows.Next()) {
        if (const std::optional<FileId> id = FileId::Parse(rows.Text(0))) m_ids.push_back(*id);
    }
}
