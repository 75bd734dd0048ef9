#pragma once

#include <string>
#include <vector>

/// Columns for people. Cells may hold anything; they are printed as far as they are printable.
class Table {
 public:
    explicit Table(std::vector<std::string> headings);

    /// \param cells  as many as there are headings.
    void Add(std::vector<std::string> cells);

    /// All rows, the headings first, without line ends. The last column is not padded.
    std::vector<std::string> Lines() const;

 private:
    std::vector<std::vector<std::string>> m_rows;
};
