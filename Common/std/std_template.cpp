#include <cstdarg>
#include <cstdlib>
#include <memory>

#include "Common/std/std_file.h"
#include "Common/std/std_path.h"
#include "Common/std/std_string.h"

namespace {

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

/// The file's text up to its first zero byte; "" when there is none.
std::string TextOf(std::string path) {
    STD_PATH_FormatA(path);
    if (!STD_PATH_ExistA(path)) return {};
    const std::unique_ptr<char, FreeMemory> content(STD_FILE_ReadBufA(path, nullptr));
    return content == nullptr ? std::string() : std::string(content.get());
}

}  // namespace

std::string STD_FILE_LoadTextTempleteA(std::string folder, std::string fileName, int count, ...) {
    std::string text = TextOf(folder + STD_PATH_GetDefaultSeparatorA() + fileName);
    if (text.empty()) return text;
    std::va_list arguments;
    va_start(arguments, count);
    for (int i = 1; i <= count; ++i) {
        const char* const argument = va_arg(arguments, const char*);
        STD_ReplaceAllA(text, STD_FormatA("$$%d", i), argument == nullptr ? "" : argument);
    }
    va_end(arguments);
    return text;
}

std::wstring STD_FILE_LoadTextTempleteW(std::wstring /*folder*/, std::wstring /*fileName*/, int /*count*/,
                                        ...) {
    return {};
}
