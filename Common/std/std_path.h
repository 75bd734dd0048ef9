#pragma once

#include <string>
#include <vector>

#include "Common/Export.h"

/// \file
/// Path helpers. '/' is the one separator; every function first normalises its path with STD_PATH_FormatA, so
/// a backslash in a path acts as a separator too. Narrow paths are UTF-8.
///
/// All functions may be called from any thread. None throws on purpose.

/// \{
/// Normalises in place: every backslash becomes '/', then every "//" becomes "/" in one pass ("///" gives
/// "//"). Nothing else changes: relative paths, "." and ".." and a trailing slash stay.
KRUTEIN_API void STD_PATH_FormatA(std::string& path);
KRUTEIN_API void STD_PATH_FormatW(std::wstring& path);
/// \}

/// \{
/// True when something exists at the path (access with F_OK); false also when a parent folder may not be
/// searched. The wide twin is always false.
KRUTEIN_API bool STD_PATH_ExistA(std::string path);
KRUTEIN_API bool STD_PATH_ExistW(std::wstring path);
/// \}

/// \{
/// Normalises and appends '/' unless the path ends in it. The empty path and, after normalising, one of a
/// single character ("/" or "x") are left without.
KRUTEIN_API void STD_PATH_AddSlashA(std::string& path);
KRUTEIN_API void STD_PATH_AddSlashW(std::wstring& path);
/// \}

/// \{
/// Normalises and removes one '/' from the end; "/" alone is kept, the empty path is left alone.
KRUTEIN_API void STD_PATH_RemoveSlashA(std::string& path);
KRUTEIN_API void STD_PATH_RemoveSlashW(std::wstring& path);
/// \}

/// \{
/// The text before the last '/' of the normalised path: "/a/b" for "/a/b/c", "/a/b" for "/a/b/", "" for "/a".
/// \param parent  receives the result; untouched when the result is false.
/// \return false when the path holds no slash.
KRUTEIN_API bool STD_PATH_GetUpFolderA(std::string path, std::string& parent);
KRUTEIN_API bool STD_PATH_GetUpFolderW(std::wstring path, std::wstring& parent);
/// \}

/// \{
/// The text after the last '/': "" when the path ends in one, and "" for a name without any slash.
/// \param withExtension  false cuts the name at its first dot ("a.tar.gz" gives "a", ".hidden" gives "").
KRUTEIN_API std::string STD_PATH_GetNameA(std::string path, bool withExtension);
KRUTEIN_API std::wstring STD_PATH_GetNameW(std::wstring path, bool withExtension);
/// \}

/// \{
/// The folder of the running executable, without a trailing slash; "" when it lies in the root or is unknown.
/// The wide twin is always L"".
KRUTEIN_API std::string STD_PATH_GetExeDirA();
KRUTEIN_API std::wstring STD_PATH_GetExeDirW();
/// \}

/// \{
/// "/" in static storage.
KRUTEIN_API const char* STD_PATH_GetDefaultSeparatorA();
KRUTEIN_API const wchar_t* STD_PATH_GetDefaultSeparatorW();
/// \}

/// \{
/// The path exactly as given.
KRUTEIN_API std::string STD_PATH_InitConfigFileA(std::string path);
KRUTEIN_API std::wstring STD_PATH_InitConfigFileW(std::wstring path);
/// \}

/// \{
/// Entry points for systems with drive letters. Here they do nothing: the outputs are untouched, the results
/// 0.
KRUTEIN_API void STD_PATH_SplitA(const char* path, char* drive, char* folder, char* name, char* extension);
KRUTEIN_API void STD_PATH_SplitW(const wchar_t* path, wchar_t* drive, wchar_t* folder, wchar_t* name,
                                 wchar_t* extension);
KRUTEIN_API int STD_PATH_GetAllDriverPathA(std::vector<std::string>& drives);
KRUTEIN_API int STD_PATH_GetAllDriverPathW(std::vector<std::wstring>& drives);
KRUTEIN_API unsigned long long STD_PATH_GetDriverByteSizeA(std::string drive);
KRUTEIN_API unsigned long long STD_PATH_GetDriverByteSizeW(std::wstring drive);
KRUTEIN_API unsigned long long STD_PATH_GetMaximumFreeSpaceDiskA(std::string& drive);
KRUTEIN_API unsigned long long STD_PATH_GetMaximumFreeSpaceDiskW(std::wstring& drive);
/// \}
