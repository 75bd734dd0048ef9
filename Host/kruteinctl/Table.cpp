#include "Host/kruteinctl/Table.h"

#include <algorithm>

#include "Host/kruteinctl/Text.h"

Table::Table(std::vector<std::string> headings) {
    Add(std::move(headings));
}

void Table::Add(std::vector<std::string> cells) {
    for (std::string& cell : cells)
        cell = Printable(cell);
    m_rows.push_back(std::move(cells));
}

std::vector<std::string> Table::Lines() const {
    std::vector<std::size_t> widths(m_rows.front().size());
    for (const auto& row : m_rows) {
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], Columns(row[i]));
    }
    std::vector<std::string> lines;
    for (const auto& row : m_rows) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            line += row[i];
            if (i + 1 < widths.size()) line.append(widths[i] - Columns(row[i]) + 2, ' ');
        }
        lines.push_back(std::move(line));
    }
    return lines;
}
