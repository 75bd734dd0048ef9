#include "Host/kruteinctl/Suggestion.h"

#include <algorithm>

namespace {

/// Longer words than any that is known are not worth the time.
constexpr std::size_t kMaxChars = 40;

/// How many characters have to be added, left out, replaced, or swapped with their neighbour.
std::size_t Distance(const std::string& from, const std::string& to) {
    std::vector<std::vector<std::size_t>> table(from.size() + 1, std::vector<std::size_t>(to.size() + 1));
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                table[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = table[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            table[i][j] = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, replaced});
            const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
            if (swapped) table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
        }
    }
    return table[from.size()][to.size()];
}

/// As many characters may be wrong as leave most of the word right.
std::size_t Tolerance(const std::string& word) {
    return word.size() < 4 ? 1 : 2;
}

bool IsBeginning(const std::string& word, const std::string& of) {
    return word.size() >= 2 && of.compare(0, word.size(), word) == 0;
}

}  // namespace

std::string ClosestWord(const std::string& word, const std::vector<std::string>& known) {
    if (word.size() > kMaxChars) return "";
    std::string closest;
    std::size_t least = Tolerance(word) + 1;
    for (const std::string& each : known) {
        const std::size_t distance = IsBeginning(word, each) ? 0 : Distance(word, each);
        if (distance >= least) continue;
        least = distance;
        closest = each;
    }
    return closest;
}

std::string Suggestion(const std::string& word, const std::vector<std::string>& known) {
    const std::string closest = ClosestWord(word, known);
    return closest.empty() ? "" : ": did you mean '" + closest + "'?";
}
