#include "tools/output/table.h"

#include <algorithm>
#include <cstddef>

namespace fieldline::tool {
namespace {

// Columns that a UTF-8 text takes: its bytes that begin a character.
std::size_t Columns(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

void PrintTable(std::ostream& out, const std::vector<TableRow>& rows) {
  std::vector<std::size_t> widths;
  for (const TableRow& row : rows) {
    widths.resize(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Columns(row[i]));
  }
  for (const TableRow& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - Columns(row[i]) + 2, ' ');
    }
    out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
  }
}

void PrintMarkdownTable(std::ostream& out, const std::vector<TableRow>& rows) {
  bool heading = true;
  for (const TableRow& row : rows) {
    out << '|';
    for (const std::string& cell : row) out << ' ' << cell << (cell.empty() ? "|" : " |");
    out << '\n';
    if (!heading) continue;
    for (std::size_t i = 0; i < row.size(); ++i) out << "|---";
    out << "|\n";
    heading = false;
  }
}

}  // namespace fieldline::tool
