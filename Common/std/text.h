#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What the narrow and the wide text helpers share. Internal.
namespace krutein::text {

/// One pass with a growing copy, so that the cost is linear in the text however many places are replaced.
template <typename Text>
void ReplaceAll(Text& text, const Text& from, const Text& to) {
    if (from.empty() || from == to) return;
    std::size_t hit = text.find(from);
    if (hit == Text::npos) return;
    Text result;
    result.reserve(text.size());
    std::size_t begin = 0;
    for (; hit != Text::npos; hit = text.find(from, begin)) {
        result.append(text, begin, hit - begin).append(to);
        begin = hit + from.size();
    }
    result.append(text, begin, Text::npos);
    text.swap(result);
}

/// ASCII letters only, whatever the locale.
inline void ToLowerCase(std::string& text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
}

inline std::string LowerCase(std::string text) {
    ToLowerCase(text);
    return text;
}

template <typename Text>
void Split(const Text& text, const Text& delimiters, std::vector<Text>& out) {
    out.clear();
    std::size_t begin = 0;
    std::size_t hit = text.find_first_of(delimiters);
    while (hit != Text::npos) {
        out.push_back(text.substr(begin, hit - begin));
        begin = hit + 1;
        hit = text.find_first_of(delimiters, begin);
    }
    out.push_back(text.substr(begin));
}

template <typename Text>
Text Join(const std::vector<Text>& items, const Text& separator) {
    Text result;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) result += separator;
        result += items[i];
    }
    return result;
}

template <typename Text>
void Trim(Text& text) {
    const typename Text::value_type blank = ' ';
    const std::size_t last = text.find_last_not_of(blank);
    text.erase(last == Text::npos ? 0 : last + 1);
    text.erase(0, text.find_first_not_of(blank));
}

template <typename Text>
Text Between(const Text& source, const Text& begin, const Text& end, int start) {
    if (start < 0 || begin.empty() || end.empty()) return {};
    const std::size_t opening = source.find(begin, static_cast<std::size_t>(start));
    if (opening == Text::npos) return {};
    const std::size_t first = opening + begin.size();
    const std::size_t closing = source.find(end, first);
    if (closing == Text::npos) return {};
    Text result = source.substr(first, closing - first);
    Trim(result);
    return result;
}

template <typename Text>
void DropLast(Text& text, typename Text::value_type c) {
    if (!text.empty() && text.back() == c) text.pop_back();
}

template <typename Text>
void EnsureLast(Text& text, typename Text::value_type c) {
    if (text.empty() || text.back() != c) text.push_back(c);
}

/// The text as a literal of the wanted character type, for the few ASCII constants that both twins need.
template <typename Text>
Text Ascii(const char* ascii) {
    return Text(ascii, ascii + std::char_traits<char>::length(ascii));
}

}  // namespace krutein::text
