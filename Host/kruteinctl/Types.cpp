#include "Host/kruteinctl/Types.h"

#include <fmt/format.h>

#include <vector>

#include "Common/std/std_string.h"
#include "Host/kruteinctl/Apps.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/Text.h"
#include "Module/BackupLib/ConfigMgr.h"

namespace {

constexpr char kFull[] = "full";

int BitOf(const std::string& word) {
    std::string known;
    for (const App& app : Apps()) {
        if (word == app.word) return app.bit;
        known += std::string(app.word) + ", ";
    }
    throw Failure(ExitCode::kUsage,
                  fmt::format("'{}' is no type: there are {}and full alone", Printable(word), known));
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
    for (const App& app : Apps()) {
        if ((type & app.bit) != 0) words.emplace_back(app.word);
    }
    return words.empty() ? std::to_string(type) : STD_FormatVectorA(words, ", ");
}

bool IsTyped(int type) {
    return !CConfigMgr::GetInstance()->IsFullBackup(type);
}
