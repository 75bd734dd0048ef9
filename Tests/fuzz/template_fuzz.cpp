// Text templates: the placeholders of a file are replaced one after the other by what the caller gives.

#include <string>
#include <vector>

#include "Common/std/std_file.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

/// Texts that insert each other grow without end.
constexpr std::size_t kMaxBytes = std::size_t{1} << 18U;

/// Replaces from left to right, character by character. \return false when it grows too large.
bool Replace(std::string& text, const std::string& from, const std::string& to) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        if (text.compare(at, from.size(), from) == 0) {
            result += to;
            at += from.size();
        } else {
            result += text[at++];
        }
        if (result.size() > kMaxBytes) return false;
    }
    text = result;
    return true;
}

std::string Load(const ScratchFile& file, const std::vector<std::string>& a, std::size_t count) {
    const std::string& folder = file.Folder();
    switch (count) {
        case 0:
            return STD_FILE_LoadTextTempleteA(folder, "template.txt", 0);
        case 1:
            return STD_FILE_LoadTextTempleteA(folder, "template.txt", 1, a[0].c_str());
        case 2:
            return STD_FILE_LoadTextTempleteA(folder, "template.txt", 2, a[0].c_str(),
                                              static_cast<const char*>(nullptr));
        default:
            return STD_FILE_LoadTextTempleteA(folder, "template.txt", 11, a[0].c_str(), a[1].c_str(),
                                              a[2].c_str(), a[3].c_str(), a[4].c_str(), a[5].c_str(),
                                              a[6].c_str(), a[7].c_str(), a[8].c_str(), a[9].c_str(),
                                              a[10].c_str());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFile file("template.txt");
    FuzzInput input(data, size);
    const std::size_t counts[] = {0, 1, 2, 11};
    const std::size_t count = counts[input.Byte() % 4];
    std::vector<std::string> arguments;
    for (std::size_t i = 0; i < 11; ++i)
        arguments.emplace_back(i < count && !(count == 2 && i == 1) ? input.TextLine() : "");
    const std::string content = input.Rest();

    std::string expected = content.substr(0, content.find('\0'));
    for (std::size_t i = 0; i < count; ++i) {
        if (!Replace(expected, "$$" + std::to_string(i + 1), arguments[i])) return 0;
    }
    file.Write(content);
    Require(Load(file, arguments, count) == expected, "each placeholder is replaced by its text");
    return 0;
}
