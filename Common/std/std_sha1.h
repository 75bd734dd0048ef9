#pragma once

#include <string>

#include "Common/Export.h"

/// \file
/// SHA-1 digests and the names of files inside a device backup. Hex forms are 40 lower-case characters. All
/// functions may be called from any thread.

/// \{
/// Hashes `length` bytes; a length below 1 or null data counts as no bytes.
/// \param digest        receives a new array of 20 bytes, which the caller releases with delete[] (as
///                      unsigned char*); may be null.
/// \param digestLength  receives 20, but only together with `digest`; may be null.
/// \return the hex form; the wide twin fills the outputs alike and returns L"".
KRUTEIN_API std::string STD_FILE_CalcSha1A(const void* data, int length, void** digest = nullptr,
                                           int* digestLength = nullptr);
KRUTEIN_API std::wstring STD_FILE_CalcSha1W(const void* data, int length, void** digest = nullptr,
                                            int* digestLength = nullptr);
/// \}

/// The hex form of the text's bytes.
KRUTEIN_API std::string STD_FILE_CalcStringSha1A(const std::string& text);

/// The file ID of a file in a backup: the hex form of domain, "-" and relative path, as they are.
KRUTEIN_API std::string STD_FILE_CalcDomainPathSha1A(std::string domain, const std::string& relativePath);

/// \{
/// Hashes a whole file, which is held in memory meanwhile.
/// \param digest        receives a new array of 20 bytes, released with delete[] (as unsigned char*).
/// \param digestLength  receives 20.
/// \return false, with both outputs untouched, for a file that cannot be read or is empty, for one of 2 GiB
///         or more, and in the wide twin.
KRUTEIN_API bool STD_FILE_CalcFileSha1A(std::string path, void*& digest, int& digestLength);
KRUTEIN_API bool STD_FILE_CalcFileSha1W(std::wstring path, void*& digest, int& digestLength);
/// \}
