#include "Common/std/std_path.h"

#include <unistd.h>

#include <algorithm>

#include "Common/std/std_objc.h"
#include "Common/std/std_string.h"
#include "Common/std/text.h"

namespace {

using krutein::text::Ascii;

template <typename Text>
void Format(Text& path) {
    using Char = typename Text::value_type;
    std::replace(path.begin(), path.end(), static_cast<Char>('\\'), static_cast<Char>('/'));
    krutein::text::ReplaceAll(path, Ascii<Text>("//"), Ascii<Text>("/"));
}

template <typename Text>
void AddSlash(Text& path) {
    Format(path);
    if (path.size() >= 2) krutein::text::EnsureLast(path, '/');
}

template <typename Text>
void RemoveSlash(Text& path) {
    Format(path);
    if (path.size() >= 2) krutein::text::DropLast(path, '/');
}

template <typename Text>
bool UpFolder(Text path, Text& parent) {
    Format(path);
    const std::size_t slash = path.rfind('/');
    if (slash == Text::npos) return false;
    parent = path.substr(0, slash);
    return true;
}

template <typename Text>
Text Name(Text path, bool withExtension) {
    Format(path);
    const std::size_t slash = path.rfind('/');
    if (slash == Text::npos) return {};
    Text name = path.substr(slash + 1);
    if (withExtension) return name;
    std::vector<Text> pieces;
    krutein::text::Split(name, Ascii<Text>("."), pieces);
    return pieces.front();
}

}  // namespace

void STD_PATH_FormatA(std::string& path) {
    Format(path);
}

void STD_PATH_FormatW(std::wstring& path) {
    Format(path);
}

bool STD_PATH_ExistA(std::string path) {
    Format(path);
    return access(path.c_str(), F_OK) == 0;
}

bool STD_PATH_ExistW(std::wstring /*path*/) {
    return false;
}

void STD_PATH_AddSlashA(std::string& path) {
    AddSlash(path);
}

void STD_PATH_AddSlashW(std::wstring& path) {
    AddSlash(path);
}

void STD_PATH_RemoveSlashA(std::string& path) {
    RemoveSlash(path);
}

void STD_PATH_RemoveSlashW(std::wstring& path) {
    RemoveSlash(path);
}

bool STD_PATH_GetUpFolderA(std::string path, std::string& parent) {
    return UpFolder(std::move(path), parent);
}

bool STD_PATH_GetUpFolderW(std::wstring path, std::wstring& parent) {
    return UpFolder(std::move(path), parent);
}

std::string STD_PATH_GetNameA(std::string path, bool withExtension) {
    return Name(std::move(path), withExtension);
}

std::wstring STD_PATH_GetNameW(std::wstring path, bool withExtension) {
    return Name(std::move(path), withExtension);
}

std::string STD_PATH_GetExeDirA() {
    std::string folder;
    STD_PATH_GetUpFolderA(STD_OBJC_GetCurrentAppPath(), folder);
    STD_PATH_FormatA(folder);
    return folder;
}

std::wstring STD_PATH_GetExeDirW() {
    return {};
}

const char* STD_PATH_GetDefaultSeparatorA() {
    return "/";
}

const wchar_t* STD_PATH_GetDefaultSeparatorW() {
    return L"/";
}

std::string STD_PATH_InitConfigFileA(std::string path) {
    return path;
}

std::wstring STD_PATH_InitConfigFileW(std::wstring path) {
    return path;
}

void STD_PATH_SplitA(const char* /*path*/, char* /*drive*/, char* /*folder*/, char* /*name*/,
                     char* /*extension*/) {}

void STD_PATH_SplitW(const wchar_t* /*path*/, wchar_t* /*drive*/, wchar_t* /*folder*/, wchar_t* /*name*/,
                     wchar_t* /*extension*/) {}

int STD_PATH_GetAllDriverPathA(std::vector<std::string>& /*drives*/) {
    return 0;
}

int STD_PATH_GetAllDriverPathW(std::vector<std::wstring>& /*drives*/) {
    return 0;
}

unsigned long long STD_PATH_GetDriverByteSizeA(std::string /*drive*/) {
    return 0;
}

unsigned long long STD_PATH_GetDriverByteSizeW(std::wstring /*drive*/) {
    return 0;
}

unsigned long long STD_PATH_GetMaximumFreeSpaceDiskA(std::string& /*drive*/) {
    return 0;
}

unsigned long long STD_PATH_GetMaximumFreeSpaceDiskW(std::wstring& /*drive*/) {
    return 0;
}
