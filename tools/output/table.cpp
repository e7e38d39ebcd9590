#include "tools/output/table.h"

#include <algorithm>
#include <cstddef>

#include "polling/text.h"

namespace fieldline::tool {
namespace {

constexpr std::size_t kGap = 2;  // between columns

// Width of a UTF-8 text in columns: the number of bytes that begin a character.
std::size_t Columns(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::vector<std::size_t> Widths(const std::vector<TableRow>& rows) {
  std::vector<std::size_t> widths;
  for (const TableRow& row : rows) {
    widths.resize(row.size());
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], Columns(ForTerminal(row[i])));
  }
  return widths;
}

}  // namespace

void FitTable(std::vector<TableRow>& rows, int columns, const std::vector<std::string>& expendable) {
  for (const std::string& heading : expendable) {
    const std::vector<std::size_t> widths = Widths(rows);
    std::size_t width = 0;
    for (const std::size_t column : widths) width += column + kGap;
    if (width <= static_cast<std::size_t>(columns) + kGap) return;
    const auto found = std::ranges::find(rows.front(), heading);
    if (found == rows.front().end()) continue;
    const auto index = found - rows.front().begin();
    for (TableRow& row : rows) row.erase(row.begin() + index);
  }
}

void PrintTable(std::ostream& out, const std::vector<TableRow>& rows) {
  const std::vector<std::size_t> widths = Widths(rows);
  for (const TableRow& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string cell = ForTerminal(row[i]);
      line += cell + std::string(widths[i] - Columns(cell) + kGap, ' ');
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
