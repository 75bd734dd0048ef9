#include "Host/kruteinctl/Table.h"

#include <algorithm>
#include <numeric>

#include "Host/kruteinctl/Text.h"

namespace {

constexpr std::size_t kGapColumns = 2;
/// A name that is shortened further says nothing.
constexpr std::size_t kLeastNameColumns = 8;

std::size_t Sum(const std::vector<std::size_t>& widths) {
    return std::accumulate(widths.begin(), widths.end(), kGapColumns * (widths.size() - 1));
}

/// The first cells of a row; as many as there are widths. The last of them is padded when more follows.
std::string Joined(const std::vector<Cell>& row, const std::vector<std::size_t>& widths, const Style& style) {
    std::string line;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        const std::string text = Shortened(row[i].text, widths[i]);
        line += Painted(text, row[i].colour, style);
        if (i + 1 < widths.size()) line.append(widths[i] - Columns(text) + kGapColumns, ' ');
    }
    return line;
}

}  // namespace

Table::Table(std::vector<Cell> headings) {
    Add(std::move(headings));
}

void Table::Add(std::vector<Cell> cells) {
    for (Cell& cell : cells)
        cell.text = Printable(cell.text);
    m_rows.push_back(std::move(cells));
}

std::vector<std::size_t> Table::Widths() const {
    std::vector<std::size_t> widths(m_rows.front().size());
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], Columns(row[i].text));
    }
    return widths;
}

std::vector<std::string> Table::Rows(const Style& style) const {
    std::vector<std::size_t> widths = Widths();
    const bool isBroken = style.columns != 0 && widths.size() > 1 && Sum(widths) > style.columns;
    if (isBroken) {
        widths.pop_back();
        const std::size_t all = Sum(widths);
        const std::size_t excess = all > style.columns ? all - style.columns : 0;
        if (widths[0] > kLeastNameColumns) widths[0] -= std::min(excess, widths[0] - kLeastNameColumns);
    }
    std::vector<std::string> rows;
    for (const auto& row : m_rows) {
        rows.push_back(Joined(row, widths, style));
        if (isBroken) rows.back() += "\n  " + Painted(row.back().text, row.back().colour, style);
    }
    return rows;
}
