#pragma once

#include <cstdarg>
#include <string>
#include <vector>

#include "Common/Export.h"

/// \file
/// Formatting and text helpers. Narrow texts (`A`) are UTF-8 and carry all real work; several wide twins
/// (`W`) are entry points with a fixed answer, as each comment says.
///
/// All functions may be called from any thread. None throws on purpose; like all of the standard library they
/// let std::bad_alloc through.

/// The longest text that the formatting helpers make, in characters, without the closing NUL.
constexpr int kFormatMaxChars = 2048;

/// Formats into a new array of kFormatMaxChars + 1 bytes; a longer text is cut. The array is always
/// NUL-terminated. A null format gives an empty text.
/// \return the array; the caller releases it with delete[].
KRUTEIN_API char* STD_FormatArgBufferA(const char* format, std::va_list arguments) KRUTEIN_PRINTF(1, 0);

/// The wide twin formats nothing: it returns a zeroed array of kFormatMaxChars + 1 wide characters, which the
/// caller releases with delete[].
KRUTEIN_API wchar_t* STD_FormatArgBufferW(const wchar_t* format, std::va_list arguments);

/// The formatted text, cut at kFormatMaxChars bytes; "" for a null format.
KRUTEIN_API std::string STD_FormatA(const char* format, ...) KRUTEIN_PRINTF(1, 2);

/// The wide twin formats nothing: always L"".
KRUTEIN_API std::wstring STD_FormatW(const wchar_t* format, ...);

/// \{
/// Compares without regard to case (toupper of each character).
/// \return negative, 0 or positive, as a sorts before, equal to or after b.
KRUTEIN_API int STD_CompareNoCaseA(std::string a, std::string b);
KRUTEIN_API int STD_CompareNoCaseW(std::wstring a, std::wstring b);
/// \}

/// \{
/// Replaces every occurrence of `from` by `to` in one pass from left to right: what was inserted is not
/// searched again. Nothing happens when `from` is empty or equals `to`.
KRUTEIN_API void STD_ReplaceAllA(std::string& text, std::string from, std::string to);
KRUTEIN_API void STD_ReplaceAllW(std::wstring& text, std::wstring from, std::wstring to);
/// \}

/// \{
/// Splits at every character of the set `delimiters`. Empty pieces are kept, so "a,,b" gives three pieces and
/// the empty text one.
/// \param out  emptied first; holds at least one piece afterwards.
KRUTEIN_API void STD_SplitA(std::string text, std::string delimiters, std::vector<std::string>& out);
KRUTEIN_API void STD_SplitW(std::wstring text, std::wstring delimiters, std::vector<std::wstring>& out);
/// \}

/// \{
/// The items with the separator between them; "" for no items.
KRUTEIN_API std::string STD_FormatVectorA(const std::vector<std::string>& items, std::string separator);
KRUTEIN_API std::wstring STD_FormatVectorW(const std::vector<std::wstring>& items, std::wstring separator);
/// \}

/// \{
/// Removes blanks (' ' only, not tabs or line ends) from both ends.
KRUTEIN_API void STD_TrimA(std::string& text);
KRUTEIN_API void STD_TrimW(std::wstring& text);
/// \}

/// \{
/// The trimmed text between the first `begin` at or after index `start` and the next `end` behind it.
/// \return "" when a marker is empty or not there, or when `start` is negative or beyond the source.
KRUTEIN_API std::string STD_GetMidStrA(std::string source, std::string begin, std::string end, int start);
KRUTEIN_API std::wstring STD_GetMidStrW(std::wstring source, std::wstring begin, std::wstring end, int start);
/// \}

/// \{
/// Drops the last character if it is `c`. The wide twin compares with `c` taken as a signed char.
KRUTEIN_API void STD_RemoveLastCharIfExistA(std::string& text, char c);
KRUTEIN_API void STD_RemoveLastCharIfExistW(std::wstring& text, char c);
/// \}

/// \{
/// Appends `c` unless the text ends in it already; the empty text becomes `c`.
KRUTEIN_API void STD_EnsureLastCharExistA(std::string& text, char c);
KRUTEIN_API void STD_EnsureLastCharExistW(std::wstring& text, wchar_t c);
/// \}

/// \{
/// True when the text is not empty and holds ASCII digits only. The wide twin is true for every text that is
/// not empty.
KRUTEIN_API bool STD_IsNumA(std::string text);
KRUTEIN_API bool STD_IsNumW(std::wstring text);
/// \}

/// \{
/// The number that the text begins with, as atoi reads it; 0 when there is none. The wide twin is always 0.
KRUTEIN_API int STD_GetNumA(std::string text);
KRUTEIN_API int STD_GetNumW(std::wstring text);
/// \}

/// \{
/// True when every byte is printable in the current locale; true for the empty text. The wide twin is always
/// true.
KRUTEIN_API bool STD_IsAllPrintCharInStrA(std::string text);
KRUTEIN_API bool STD_IsAllPrintCharInStrW(std::wstring text);
/// \}

/// Decodes %XX; '+' stays. A character that is no hexadecimal digit, or that is missing at the end of the
/// text, counts as the digit 255, and the low 8 bits of the sum are taken.
KRUTEIN_API std::string STD_UrlDecodingA(std::string text);

/// Compares two version texts of up to four parts ("9.3.1"), each taken modulo 256; missing parts are 0.
/// \return a's part minus b's at the first part that differs, 0 when all four are equal.
KRUTEIN_API int STD_CompareVerionA(std::string a, std::string b);

/// malloc with every byte set to `fill`.
/// \param size  bytes; a negative size fails.
/// \return null when there is no memory; the caller releases it with free.
KRUTEIN_API void* STD_Malloc(int size, unsigned char fill);

/// \{
/// Narrow texts are UTF-8 already: both return the text unchanged.
KRUTEIN_API std::string STD_ToUtf8A(std::string text);
KRUTEIN_API std::string STD_Utf8ToStringA(std::string text);
/// \}

/// \{
/// Conversions between narrow and wide are not supported: always an empty text.
KRUTEIN_API std::wstring STD_CA2W(std::string text);
KRUTEIN_API std::wstring STD_Utf8ToStringW(std::string text);
KRUTEIN_API std::string STD_CW2A(std::wstring text);
KRUTEIN_API std::string STD_ToUtf8W(std::wstring text);
/// \}

/// A parsed version text.
class KRUTEIN_API CVerSringCompare {
 public:
    /// Takes the first four parts of the text, each as atoi reads it and cut to 8 bits; further parts are
    /// ignored, missing ones are 0.
    explicit CVerSringCompare(std::string version);

    std::string m_version;       ///< the text as given
    unsigned char m_major = 0;   ///< first part
    unsigned char m_minor = 0;   ///< second part
    unsigned char m_third = 0;   ///< third part
    unsigned char m_fourth = 0;  ///< fourth part
};
