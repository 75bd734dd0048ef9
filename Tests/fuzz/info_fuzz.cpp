// The backup tool's information text: the size that the facade takes from any text is the one that a plain
// reading of the rule gives, and nothing else changes.

#include <cctype>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "Module/Sync/Backup.h"
#include "Tests/fuzz/Fuzz.h"

namespace {

enum class Outcome { kUnchanged, kSize, kNoNumber, kTooLarge };

struct Reading {
    Outcome outcome;
    long long size;
};

/// A decimal number at the beginning of a word, after white space, as the standard library converts it.
Reading NumberOf(const std::string& word) {
    std::size_t at = 0;
    while (at < word.size() && std::isspace(static_cast<unsigned char>(word[at])) != 0)
        ++at;
    const bool negative = at < word.size() && word[at] == '-';
    if (at < word.size() && (word[at] == '-' || word[at] == '+')) ++at;
    if (at == word.size() || word[at] < '0' || word[at] > '9') return {Outcome::kNoNumber, 0};
    const std::uint64_t limit = std::uint64_t{INT64_MAX} + (negative ? 1 : 0);
    std::uint64_t value = 0;
    for (; at < word.size() && word[at] >= '0' && word[at] <= '9'; ++at) {
        const auto digit = static_cast<std::uint64_t>(word[at] - '0');
        if (value > (limit - digit) / 10) return {Outcome::kTooLarge, 0};
        value = value * 10 + digit;
    }
    return {Outcome::kSize, static_cast<long long>(negative ? 0 - value : value)};
}

/// The word before the last blank of the first line that holds "Total".
Reading Expected(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string line = text.substr(at, end - at);
        at = end + 1;
        if (line.find("Total") == std::string::npos) continue;
        std::vector<std::size_t> blanks;
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] == ' ') blanks.push_back(i);
        }
        if (blanks.size() < 2) break;
        const std::size_t first = blanks[blanks.size() - 2] + 1;
        return NumberOf(line.substr(first, blanks.back() - first));
    }
    return {Outcome::kUnchanged, 0};
}

/// What the facade does with a text that arrives from the tool. \param before  the size until then.
Reading Told(CBackup& facade, std::string text, long long before) {
    try {
        facade.OnStateChange(kCallBackBackupInfo, 0, 0, text.data());
    } catch (const std::invalid_argument&) {
        return {Outcome::kNoNumber, facade.GetTotalSize()};
    } catch (const std::out_of_range&) {
        return {Outcome::kTooLarge, facade.GetTotalSize()};
    }
    const long long size = facade.GetTotalSize();
    return {size == before ? Outcome::kUnchanged : Outcome::kSize, size};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CBackup& facade = *CBackup::GetInstance();
    // The size is waited for until the first text with a number has come.
    static const Reading first = Told(facade, "Total size: 1 bytes", 0);
    Require(first.size == 1, "the first text tells the size");
    const std::string text = FuzzInput(data, size).TextRest();
    const Reading expected = Expected(text);
    const long long before = facade.GetTotalSize();
    const Reading told = Told(facade, text, before);
    if (expected.outcome == Outcome::kSize) {
        Require(told.size == expected.size, "the size is the number before the last word");
        Require(told.outcome == Outcome::kSize || expected.size == before, "a size is stored");
    } else {
        Require(told.outcome == expected.outcome && told.size == before, "without a number nothing changes");
    }
    return 0;
}
