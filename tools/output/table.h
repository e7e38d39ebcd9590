#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace fieldline::tool {

using TableRow = std::vector<std::string>;

// Prints left-aligned columns, two spaces apart. The first row has the headings; all rows have the same length. Control
// characters in cells are escaped.
void PrintTable(std::ostream& out, const std::vector<TableRow>& rows);

// Removes columns until each line has at most `columns` characters. Only columns whose headings are in `expendable` are
// removed, in that order.
void FitTable(std::vector<TableRow>& rows, int columns, const std::vector<std::string>& expendable);

// Prints the same as a Markdown table.
void PrintMarkdownTable(std::ostream& out, const std::vector<TableRow>& rows);

// The first `columns` characters of a UTF-8 text.
std::string Clipped(const std::string& text, int columns);

}  // namespace fieldline::tool
