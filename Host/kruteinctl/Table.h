#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Host/kruteinctl/Style.h"

/// A text in a table, perhaps in a colour.
struct Cell {
    Cell(std::string words, Colour paint = Colour::kNone) : text(std::move(words)), colour(paint) {}
    Cell(const char* words) : text(words) {}

    std::string text;
    Colour colour = Colour::kNone;
};

/// Columns for people. Cells may hold anything; they are printed as far as they are printable.
class Table {
 public:
    explicit Table(std::vector<Cell> headings);

    /// \param cells  as many as there are headings.
    void Add(std::vector<Cell> cells);

    /// All rows, the headings first, without line ends at their ends. The last column is not padded. Where
    /// rows do not fit the style's columns, the last cell comes whole on a line of its own below the others,
    /// and the first ones are shortened as far as is needed and sensible.
    std::vector<std::string> Rows(const Style& style = {}) const;

 private:
    std::vector<std::size_t> Widths() const;

    std::vector<std::vector<Cell>> m_rows;
};
