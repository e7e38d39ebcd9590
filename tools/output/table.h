#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace fieldline::tool {

using TableRow = std::vector<std::string>;

// Left-aligned columns, two spaces apart. The first row holds the headings; all rows are as long. What a cell holds for
// no terminal is escaped.
void PrintTable(std::ostream& out, const std::vector<TableRow>& rows);

// Leaves columns out until the table has at most `columns` characters a line: those whose headings are in `expendable`,
// first to last.
void FitTable(std::vector<TableRow>& rows, int columns, const std::vector<std::string>& expendable);

// The same as a table of a Markdown document.
void PrintMarkdownTable(std::ostream& out, const std::vector<TableRow>& rows);

// The first `columns` characters of a UTF-8 text.
std::string Clipped(const std::string& text, int columns);

}  // namespace fieldline::tool
