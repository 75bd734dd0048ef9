#include "Common/std/std_string.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdlib>
#include <memory>

using testing::ElementsAre;

namespace {

std::string FormatThroughBuffer(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const std::unique_ptr<char[]> buffer(STD_FormatArgBufferA(format, arguments));
    va_end(arguments);
    return buffer.get();
}

std::unique_ptr<wchar_t[]> WideBuffer(const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::unique_ptr<wchar_t[]> buffer(STD_FormatArgBufferW(format, arguments));
    va_end(arguments);
    return buffer;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    STD_ReplaceAllA(text, from, to);
    return text;
}

std::vector<std::string> Split(const std::string& text, const std::string& delimiters) {
    std::vector<std::string> out{"left from before"};
    STD_SplitA(text, delimiters, out);
    return out;
}

std::string Trimmed(std::string text) {
    STD_TrimA(text);
    return text;
}

}  // namespace

TEST(Format, FillsInValues) {
    EXPECT_EQ(STD_FormatA("%s-%d", "a", 7), "a-7");
}

TEST(Format, NullFormatGivesTheEmptyText) {
    const char* none = nullptr;
    EXPECT_EQ(STD_FormatA(none, 7), "");
    EXPECT_EQ(FormatThroughBuffer(none, 7), "");
}

TEST(Format, KeepsATextThatJustFits) {
    const std::string longest(kFormatMaxChars, 'x');
    EXPECT_EQ(STD_FormatA("%s", longest.c_str()), longest);
    EXPECT_EQ(FormatThroughBuffer("%s", longest.c_str()), longest);
}

TEST(Format, CutsWhatIsLongerThanTheBuffer) {
    const std::string tooLong(kFormatMaxChars + 1, 'x');
    EXPECT_EQ(STD_FormatA("%s", tooLong.c_str()), tooLong.substr(1));
    EXPECT_EQ(FormatThroughBuffer("%s", tooLong.c_str()), tooLong.substr(1));
}

TEST(Format, WideFormFormatsNothing) {
    EXPECT_EQ(STD_FormatW(L"%d", 7), L"");
    const std::unique_ptr<wchar_t[]> buffer = WideBuffer(L"%d", 7);
    for (int i = 0; i <= kFormatMaxChars; ++i)
        ASSERT_EQ(buffer[static_cast<std::size_t>(i)], L'\0');
}

TEST(CompareNoCase, IsBlindToCase) {
    EXPECT_EQ(STD_CompareNoCaseA("abc", "ABC"), 0);
    EXPECT_LT(STD_CompareNoCaseA("ab", "ABC"), 0);
    EXPECT_GT(STD_CompareNoCaseA("abd", "ABC"), 0);
    EXPECT_GT(STD_CompareNoCaseA("abc", ""), 0);
    EXPECT_EQ(STD_CompareNoCaseW(L"abc", L"ABC"), 0);
    EXPECT_LT(STD_CompareNoCaseW(L"ab", L"ABC"), 0);
}

TEST(ReplaceAll, GoesThroughTheTextOnce) {
    EXPECT_EQ(Replaced("///", "//", "/"), "//");
    EXPECT_EQ(Replaced("aaa", "a", "aa"), "aaaaaa");
    EXPECT_EQ(Replaced("a-b-c", "-", ""), "abc");
    EXPECT_EQ(Replaced("abc", "x", "y"), "abc");
    std::wstring wide = L"///";
    STD_ReplaceAllW(wide, L"//", L"/");
    EXPECT_EQ(wide, L"//");
}

TEST(ReplaceAll, LeavesTheTextAloneWhenThereIsNothingToDo) {
    EXPECT_EQ(Replaced("abc", "", "x"), "abc");
    EXPECT_EQ(Replaced("abc", "b", "b"), "abc");
}

TEST(Split, KeepsEmptyPieces) {
    EXPECT_THAT(Split("a,,b", ","), ElementsAre("a", "", "b"));
    EXPECT_THAT(Split(",a", ","), ElementsAre("", "a"));
    EXPECT_THAT(Split("a,", ","), ElementsAre("a", ""));
    EXPECT_THAT(Split(",", ","), ElementsAre("", ""));
}

TEST(Split, TheEmptyTextIsOneEmptyPiece) {
    EXPECT_THAT(Split("", ","), ElementsAre(""));
}

TEST(Split, WithoutDelimitersTheTextStaysWhole) {
    EXPECT_THAT(Split("a,b", ""), ElementsAre("a,b"));
}

TEST(Split, EveryCharacterOfTheSetSplits) {
    EXPECT_THAT(Split("a;b,c", ";,"), ElementsAre("a", "b", "c"));
    std::vector<std::wstring> wide;
    STD_SplitW(L"a;b,c", L";,", wide);
    EXPECT_THAT(wide, ElementsAre(L"a", L"b", L"c"));
}

TEST(FormatVector, PutsTheSeparatorBetween) {
    EXPECT_EQ(STD_FormatVectorA({"a", "b", "c"}, ", "), "a, b, c");
    EXPECT_EQ(STD_FormatVectorA({"a"}, ", "), "a");
    EXPECT_EQ(STD_FormatVectorA({}, ", "), "");
    EXPECT_EQ(STD_FormatVectorW({L"a", L"b"}, L"-"), L"a-b");
}

TEST(Trim, TakesBlanksOnly) {
    EXPECT_EQ(Trimmed("  a b  "), "a b");
    EXPECT_EQ(Trimmed("    "), "");
    EXPECT_EQ(Trimmed(""), "");
    EXPECT_EQ(Trimmed("\ta\t"), "\ta\t");
    EXPECT_EQ(Trimmed(" a\n"), "a\n");
    std::wstring wide = L"  a ";
    STD_TrimW(wide);
    EXPECT_EQ(wide, L"a");
}

TEST(GetMidStr, TakesTheTextBetweenTheMarkersAndTrimsIt) {
    EXPECT_EQ(STD_GetMidStrA("<a> x </a>", "<a>", "</a>", 0), "x");
    EXPECT_EQ(STD_GetMidStrA("<a> x </a><a>y</a>", "<a>", "</a>", 1), "y");
    EXPECT_EQ(STD_GetMidStrW(L"<a> x </a>", L"<a>", L"</a>", 0), L"x");
}

TEST(GetMidStr, IsEmptyWhenThereIsNoSuchText) {
    EXPECT_EQ(STD_GetMidStrA("<a> x </a>", "<a>", "</a>", 1), "");
    EXPECT_EQ(STD_GetMidStrA("<a> x </a>", "<a>", "</a>", -1), "");
    EXPECT_EQ(STD_GetMidStrA("<a> x </a>", "<a>", "</a>", 100), "");
    EXPECT_EQ(STD_GetMidStrA("<a> x </a>", "", "</a>", 0), "");
    EXPECT_EQ(STD_GetMidStrA("<a> x </a>", "<a>", "", 0), "");
    EXPECT_EQ(STD_GetMidStrA("</a> <a>", "<a>", "</a>", 0), "");
    EXPECT_EQ(STD_GetMidStrA("<a>", "<a>", "</a>", 0), "");
}

TEST(LastChar, IsRemovedIfItIsThere) {
    std::string text = "/x//";
    STD_RemoveLastCharIfExistA(text, '/');
    EXPECT_EQ(text, "/x/");
    STD_RemoveLastCharIfExistA(text, 'y');
    EXPECT_EQ(text, "/x/");
    std::string none;
    STD_RemoveLastCharIfExistA(none, '/');
    EXPECT_EQ(none, "");
}

TEST(LastChar, WideFormComparesWithTheSignedNarrowCharacter) {
    std::wstring text = L"a/";
    STD_RemoveLastCharIfExistW(text, '/');
    EXPECT_EQ(text, L"a");
    std::wstring above = {L'a', static_cast<wchar_t>(0xE9)};
    STD_RemoveLastCharIfExistW(above, '\xE9');
    EXPECT_EQ(above.size(), 2U) << "0xE9 as a signed char is negative and equals no such character";
    std::wstring negative = {L'a', static_cast<wchar_t>(-23)};
    STD_RemoveLastCharIfExistW(negative, '\xE9');
    EXPECT_EQ(negative, L"a");
}

TEST(LastChar, IsAppendedUnlessItIsThere) {
    std::string text;
    STD_EnsureLastCharExistA(text, '/');
    EXPECT_EQ(text, "/");
    text = "/x/";
    STD_EnsureLastCharExistA(text, '/');
    EXPECT_EQ(text, "/x/");
    text = "/x";
    STD_EnsureLastCharExistA(text, '/');
    EXPECT_EQ(text, "/x/");
    std::wstring wide = L"x";
    STD_EnsureLastCharExistW(wide, L'/');
    EXPECT_EQ(wide, L"x/");
}

TEST(IsNum, TakesAsciiDigitsOnly) {
    EXPECT_TRUE(STD_IsNumA("0123456789"));
    for (const char* text : {"", "-1", "1.0", " 1", "1 ", "a", "1\xB2"})
        EXPECT_FALSE(STD_IsNumA(text)) << text;
}

TEST(IsNum, WideFormOnlyLooksForAnyText) {
    EXPECT_TRUE(STD_IsNumW(L"abc"));
    EXPECT_FALSE(STD_IsNumW(L""));
}

TEST(GetNum, ReadsTheNumberAtTheBeginning) {
    EXPECT_EQ(STD_GetNumA("42"), 42);
    EXPECT_EQ(STD_GetNumA(" -7 apples"), -7);
    EXPECT_EQ(STD_GetNumA("apples"), 0);
    EXPECT_EQ(STD_GetNumW(L"42"), 0);
}

TEST(IsAllPrintChar, AcceptsPrintableCharacters) {
    EXPECT_TRUE(STD_IsAllPrintCharInStrA(""));
    EXPECT_TRUE(STD_IsAllPrintCharInStrA("a b~"));
    EXPECT_FALSE(STD_IsAllPrintCharInStrA("a\tb"));
    EXPECT_FALSE(STD_IsAllPrintCharInStrA("a\x80"));
    EXPECT_TRUE(STD_IsAllPrintCharInStrW(L"\x01")) << "the wide form tests nothing";
}

TEST(UrlDecoding, DecodesPercentOnly) {
    EXPECT_EQ(STD_UrlDecodingA("a%20b+c"), "a b+c");
    EXPECT_EQ(STD_UrlDecodingA("%e4%B8%ad"), "\xE4\xB8\xAD");
    EXPECT_EQ(STD_UrlDecodingA("%00x"), std::string("\0x", 2));
    EXPECT_EQ(STD_UrlDecodingA(""), "");
}

TEST(UrlDecoding, OtherCharactersCountAs255) {
    EXPECT_EQ(STD_UrlDecodingA("%g0"), std::string(1, static_cast<char>((255 * 16) & 0xFF)));
    EXPECT_EQ(STD_UrlDecodingA("%1g"), std::string(1, static_cast<char>((16 + 255) & 0xFF)));
}

TEST(UrlDecoding, NeverReadsPastTheText) {
    EXPECT_EQ(STD_UrlDecodingA("%"), "\xEF");
    EXPECT_EQ(STD_UrlDecodingA("a%4"), std::string("a") + static_cast<char>((4 * 16 + 255) & 0xFF));
}

TEST(CompareVersion, ComparesPartByPart) {
    EXPECT_EQ(STD_CompareVerionA("10.0", "9.3.1"), 1);
    EXPECT_EQ(STD_CompareVerionA("1.2", "1.2.0.0"), 0);
    EXPECT_EQ(STD_CompareVerionA("1.2.3.4.9", "1.2.3.4"), 0);
    EXPECT_EQ(STD_CompareVerionA("1.2.3.4", "1.2.3.9"), -5);
    EXPECT_EQ(STD_CompareVerionA("0", "255"), -255);
    EXPECT_EQ(STD_CompareVerionA("", "0"), 0);
}

TEST(CompareVersion, KeepsTheTextAndFourPartsOfEightBits) {
    const CVerSringCompare version("1.2.256.4.5");
    EXPECT_EQ(version.m_version, "1.2.256.4.5");
    EXPECT_EQ(version.m_major, 1);
    EXPECT_EQ(version.m_minor, 2);
    EXPECT_EQ(version.m_third, 0);
    EXPECT_EQ(version.m_fourth, 4);
    const CVerSringCompare shorter("x.7");
    EXPECT_EQ(shorter.m_major, 0);
    EXPECT_EQ(shorter.m_minor, 7);
    EXPECT_EQ(shorter.m_third, 0);
}

TEST(Malloc, FillsTheMemory) {
    const std::unique_ptr<void, void (*)(void*)> memory(STD_Malloc(3, 0xAB), std::free);
    const auto* bytes = static_cast<const unsigned char*>(memory.get());
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(bytes[i], 0xAB);
    EXPECT_EQ(STD_Malloc(-1, 0), nullptr);
}

TEST(Conversions, NarrowTextsAreUtf8Already) {
    EXPECT_EQ(STD_ToUtf8A("\xC3\xA9"), "\xC3\xA9");
    EXPECT_EQ(STD_Utf8ToStringA("\xC3\xA9"), "\xC3\xA9");
}

TEST(Conversions, BetweenNarrowAndWideGiveNothing) {
    EXPECT_EQ(STD_CA2W("a"), L"");
    EXPECT_EQ(STD_Utf8ToStringW("a"), L"");
    EXPECT_EQ(STD_CW2A(L"a"), "");
    EXPECT_EQ(STD_ToUtf8W(L"a"), "");
}
