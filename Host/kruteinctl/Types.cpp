#include "Host/kruteinctl/Types.h"

#include <fmt/format.h>

#include <vector>

#include "Common/std/std_string.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"
#include "Module/BackupLib/ConfigMgr.h"

namespace {

constexpr char kFull[] = "full";

struct Word {
    int bit;
    const char* text;
};

constexpr Word kWords[] = {{kBackupTypeSms, "messages"},
                           {kBackupTypeWhatsApp, "whatsapp"},
                           {kBackupTypeWeChat, "wechat"},
                           {kBackupTypeContact, "contacts"}};

int BitOf(const std::string& word) {
    for (const Word& known : kWords) {
        if (word == known.text) return known.bit;
    }
    throw Failure(
        ExitCode::kUsage,
        fmt::format("'{}' is no type: there are messages, whatsapp, wechat, contacts, and full alone",
                    Printable(word)));
}

}  // namespace

int ParseTypes(const std::string& words) {
    if (words == kFull) return kBackupTypeFull;
    std::vector<std::string> list;
    STD_SplitA(words, ",", list);
    int type = 0;
    for (const std::string& word : list)
        type |= BitOf(word);
    return type;
}

std::string TypeWords(int type) {
    if (!IsTyped(type)) return kFull;
    std::vector<std::string> words;
    for (const Word& word : kWords) {
        if ((type & word.bit) != 0) words.emplace_back(word.text);
    }
    return words.empty() ? std::to_string(type) : STD_FormatVectorA(words, ", ");
}

bool IsTyped(int type) {
    return !CConfigMgr::GetInstance()->IsFullBackup(type);
}
