// Splitting, joining and what else cuts texts: joining what was split at one character gives the text again,
// and the wide twins do as the narrow ones.

#include <algorithm>
#include <string>
#include <vector>

#include "Common/std/std_string.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

std::wstring Widen(const std::string& text) {
    std::wstring wide;
    for (const char c : text)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return wide;
}

bool Same(const std::vector<std::string>& narrow, const std::vector<std::wstring>& wide) {
    return std::equal(narrow.begin(), narrow.end(), wide.begin(), wide.end(),
                      [](const std::string& a, const std::wstring& b) { return Widen(a) == b; });
}

void CheckSplitting(const std::string& text, const std::string& delimiters) {
    std::vector<std::string> pieces;
    STD_SplitA(text, delimiters, pieces);
    std::size_t cuts = 0;
    for (const char c : text)
        cuts += delimiters.find(c) == std::string::npos ? 0U : 1U;
    Require(pieces.size() == cuts + 1, "one piece more than there are delimiters");
    for (const std::string& piece : pieces)
        Require(piece.find_first_of(delimiters) == std::string::npos, "no piece holds a delimiter");
    std::vector<std::wstring> wide;
    STD_SplitW(Widen(text), Widen(delimiters), wide);
    Require(Same(pieces, wide), "wide texts are split alike");
    if (delimiters.size() != 1) return;
    Require(STD_FormatVectorA(pieces, delimiters) == text, "joining gives what was split");
    Require(STD_FormatVectorW(wide, Widen(delimiters)) == Widen(text), "joining gives what was split, wide");
}

/// Replaces from left to right, character by character.
std::string Replaced(const std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) return text;
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const bool hit = text.compare(at, from.size(), from) == 0;
        result += hit ? to : text.substr(at, 1);
        at += hit ? from.size() : 1;
    }
    return result;
}

void CheckReplacing(const std::string& text, const std::string& from, const std::string& to) {
    if (text.size() * (to.size() + 1) > 1U << 20U) return;
    std::string narrow = text;
    STD_ReplaceAllA(narrow, from, to);
    Require(narrow == Replaced(text, from, to), "every hit is replaced, from left to right");
    std::wstring wide = Widen(text);
    STD_ReplaceAllW(wide, Widen(from), Widen(to));
    Require(wide == Widen(narrow), "wide texts are replaced in alike");
}

void CheckTrimming(const std::string& text) {
    std::string trimmed = text;
    STD_TrimA(trimmed);
    Require(trimmed.empty() || (trimmed.front() != ' ' && trimmed.back() != ' '), "no blank at either end");
    const std::size_t first = text.find_first_not_of(' ');
    Require(first == std::string::npos ? trimmed.empty() : text.compare(first, trimmed.size(), trimmed) == 0,
            "only blanks are removed");
    std::wstring wide = Widen(text);
    STD_TrimW(wide);
    Require(wide == Widen(trimmed), "wide texts are trimmed alike");
}

void CheckBetween(const std::string& text, const std::string& begin, const std::string& end, int start) {
    const std::string found = STD_GetMidStrA(text, begin, end, start);
    Require(found.empty() || text.find(found) != std::string::npos, "what is found is a part of the text");
    Require(STD_GetMidStrW(Widen(text), Widen(begin), Widen(end), start) == Widen(found),
            "wide texts are looked into alike");
    // A marker that does not occur elsewhere is found where it was put.
    if (begin.empty() || end.empty() || begin == end) return;
    std::string inner = text;
    STD_TrimA(inner);
    const std::string whole = begin + inner + end;
    if (whole.find(end, begin.size()) != begin.size() + inner.size()) return;
    Require(STD_GetMidStrA(whole, begin, end, 0) == inner, "the text between two markers is found");
}

void CheckVersions(const std::string& a, const std::string& b) {
    Require(STD_CompareVerionA(a, a) == 0, "a version equals itself");
    Require(STD_CompareVerionA(a, b) == -STD_CompareVerionA(b, a), "comparing the other way turns the sign");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const int start = static_cast<int>(input.Byte()) - 8;
    const std::string first = input.Line();
    const std::string second = input.Line();
    const std::string text = input.Rest();
    CheckSplitting(text, first);
    CheckSplitting(text, first.substr(0, 1));
    CheckReplacing(text, first, second);
    CheckTrimming(text);
    CheckBetween(text, first, second, start);
    CheckVersions(first, second);
    return 0;
}
