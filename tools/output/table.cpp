#include "tools/output/table.h"

#include <algorithm>
#include <cstddef>

#include "polling/text.h"

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
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Columns(ForTerminal(row[i])));
  }
  for (const TableRow& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string cell = ForTerminal(row[i]);
      line += cell + std::string(widths[i] - Columns(cell) + 2, ' ');
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

std::string Clipped(const std::string& text, int columns) {
  std::size_t end = 0;
  for (; end < text.size(); ++end) {
    const bool begins_character = (text[end] & 0xC0) != 0x80;
    if (begins_character && columns-- == 0) break;
  }
  return text.substr(0, end);
}

}  // namespace fieldline::tool
