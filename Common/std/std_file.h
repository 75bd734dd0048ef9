#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "Common/Export.h"

/// \file
/// File and directory helpers. Narrow paths (`A`) are UTF-8 and carry all the work; the wide twins (`W`) are
/// entry points that report failure. Paths are normalised (STD_PATH_FormatA) unless a comment says otherwise.
///
/// All functions may be called from any thread. None logs, none throws on purpose: each reports by its
/// result.

/// \{
/// fopen. The path is used as given; the caller closes the stream. The wide twin returns null.
KRUTEIN_API FILE* STD_FILE_OpenA(std::string path, std::string mode);
KRUTEIN_API FILE* STD_FILE_OpenW(std::wstring path, std::wstring mode);
/// \}

/// \{
/// Creates the folder and its missing parents, with mode 0755 less the umask.
/// \return true when something exists at the path afterwards; false for the empty path. The wide twin creates
///         nothing.
KRUTEIN_API bool STD_FILE_EnsureDirExistA(std::string path);
KRUTEIN_API bool STD_FILE_EnsureDirExistW(std::wstring path);
/// \}

/// \{
/// Size of a file in bytes modulo 2^32; 0 when it cannot be opened or is a folder. GetFileSize uses the path
/// as given, CalcSize normalises it. The wide twins are always 0.
KRUTEIN_API unsigned int STD_FILE_GetFileSizeA(std::string path);
KRUTEIN_API unsigned int STD_FILE_GetFileSizeW(std::wstring path);
KRUTEIN_API unsigned int STD_FILE_CalcSizeA(std::string path);
KRUTEIN_API unsigned int STD_FILE_CalcSizeW(std::wstring path);
/// \}

/// \{
/// Lists a folder: full paths, in the order in which the system yields them, a folder before its contents.
/// Links are not followed: they count as files of their own size. Block devices and sockets count as folders.
/// \param files      files are appended.
/// \param dirs       folders are appended.
/// \param total      the sizes of the files in bytes are added.
/// \param recursive  also the contents of the folders, all the way down.
/// \return true when the folder existed and could be opened. The wide twin lists nothing.
KRUTEIN_API bool STD_FILE_GetDirInfoA(std::string dir, std::vector<std::string>& files,
                                      std::vector<std::string>& dirs, long long& total, bool recursive);
KRUTEIN_API bool STD_FILE_GetDirInfoW(std::wstring dir, std::vector<std::wstring>& files,
                                      std::vector<std::wstring>& dirs, long long& total, bool recursive);
/// \}

/// \{
/// Size in bytes of all files below the folder, links by their own size; 0 when the folder is missing. The
/// wide twin is always 0.
KRUTEIN_API long long STD_FILE_GetDirSizeA(std::string dir);
KRUTEIN_API long long STD_FILE_GetDirSizeW(std::wstring dir);
/// \}

/// \{
/// STD_FILE_GetDirInfoA without the folders and the size.
KRUTEIN_API bool STD_FILE_GetDirFileListA(std::string dir, std::vector<std::string>& files, bool recursive);
KRUTEIN_API bool STD_FILE_GetDirFileListW(std::wstring dir, std::vector<std::wstring>& files, bool recursive);
/// \}

/// \{
/// True when the folder holds nothing, is missing or cannot be read. The wide twin is always true.
KRUTEIN_API bool STD_FILE_IsDirEmptyA(std::string dir);
KRUTEIN_API bool STD_FILE_IsDirEmptyW(std::wstring dir);
/// \}

/// \{
/// Reads a whole file.
/// \param size  receives the number of bytes; may be null; untouched when the result is null.
/// \return a buffer of size + 1 bytes, the last of which is 0; the caller releases it with free. Null for a
///         file that cannot be read or is empty, for a folder, for a file of 2 GiB or more, and in the wide
///         twin.
KRUTEIN_API char* STD_FILE_ReadBufA(std::string path, int* size);
KRUTEIN_API char* STD_FILE_ReadBufW(std::wstring path, int* size);
/// \}

/// \{
/// Creates or replaces a file.
/// \return true when the file could be opened; a short write is not noticed. False for a negative length
///         (with nothing touched) and in the wide twin.
KRUTEIN_API bool STD_FILE_WriteBufA(std::string path, const void* data, int length);
KRUTEIN_API bool STD_FILE_WriteBufW(std::wstring path, const void* data, int length);
/// \}

/// \{
/// Removes a file, a link or an empty folder. \return true when it was removed; the wide twin is always
/// false.
KRUTEIN_API bool STD_FILE_DeleteFileA(std::string path);
KRUTEIN_API bool STD_FILE_DeleteFileW(std::wstring path);
/// \}

/// \{
/// Copies a file's bytes. The destination is created or emptied first, whatever `overwrite` says and also
/// when the source cannot be opened. \return always true; the wide twin always false.
KRUTEIN_API bool STD_FILE_CopyFileA(std::string source, std::string destination, bool overwrite);
KRUTEIN_API bool STD_FILE_CopyFileW(std::wstring source, std::wstring destination, bool overwrite);
/// \}

/// \{
/// Does nothing here. \return 0.
KRUTEIN_API int STD_FILE_SHFileOperationA(int operation, const char* source, const char* destination);
KRUTEIN_API int STD_FILE_SHFileOperationW(int operation, const wchar_t* source, const wchar_t* destination);
/// \}

// The next three hand a command to the shell with the paths in double quotes. A path that holds a character
// which the shell interprets there (" ` $) breaks the command: check paths that come from outside. A command
// longer than kFormatMaxChars is not run, and the result is false.

/// \{
/// Removes a folder (or file) with everything in it. \return true when it is gone; the wide twin always
/// false.
KRUTEIN_API bool STD_FILE_DeleteDirA(std::string dir);
KRUTEIN_API bool STD_FILE_DeleteDirW(std::wstring dir);
/// \}

/// \{
/// Copies a folder with everything in it and waits for the copy. Into a destination that exists already the
/// source goes as a folder of its own; a missing destination becomes the copy.
/// \param pid  receives the id of the copying process; may be null.
/// \return true when the destination exists afterwards; the wide twin always false.
KRUTEIN_API bool STD_FILE_CopyDirA(std::string source, std::string destination, int* pid);
KRUTEIN_API bool STD_FILE_CopyDirW(std::wstring source, std::wstring destination, int* pid);
/// \}

/// \{
/// Renames or moves a folder or file, also to another file system.
/// \return true when the new path exists afterwards; the wide twin always false.
KRUTEIN_API bool STD_FILE_RenameDirA(std::string oldPath, std::string newPath);
KRUTEIN_API bool STD_FILE_RenameDirW(std::wstring oldPath, std::wstring newPath);
/// \}

/// \{
/// Removes a folder if it is empty.
/// \return true when the folder is gone, also when it never was. The wide twin removes nothing.
KRUTEIN_API bool STD_FILE_DeleteEmptyDirA(std::string dir);
KRUTEIN_API bool STD_FILE_DeleteEmptyDirW(std::wstring dir);
/// \}

/// \{
/// Loads a text file and fills its placeholders: "$$1" stands for the first text, "$$2" for the second and so
/// on, each as often as it occurs. They are filled in this order over the whole text, so a text that holds
/// "$$3" is filled in later, and "$$10" becomes the first text and a "0". Placeholders beyond `count` stay.
/// \param folder    with or without a '/' at its end.
/// \param fileName  read as bytes up to the first zero byte.
/// \param count     number of the further arguments, all of them const char*, UTF-8; less than 1 for none.
/// \return the filled text; "" for a file that is missing, empty or cannot be read. The wide twin, whose
///         further arguments are const wchar_t*, reads nothing: always L"".
KRUTEIN_API std::string STD_FILE_LoadTextTempleteA(std::string folder, std::string fileName, int count, ...);
KRUTEIN_API std::wstring STD_FILE_LoadTextTempleteW(std::wstring folder, std::wstring fileName, int count,
                                                    ...);
/// \}
