// SPDX-License-Identifier: MIT
// Tables of numbers.
#include "io/table.h"

#include <algorithm>
#include <numeric>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

using Fields = std::vector<std::string_view>;

char foundDelimiter(std::string_view line) {
  for (const char c : {';', '\t', ','}) {
    if (line.find(c) != std::string_view::npos) return c;
  }
  return ' ';
}

// The field at the front of `line`, which is then cut off together with the delimiter behind it.
std::string_view takeField(std::string_view& line, char delimiter, bool& more) {
  std::size_t from = 0;
  const std::string_view start = trimmed(line);
  if (!start.empty() && start.front() == '"') {  // delimiters inside quotes belong to the field
    const auto open = static_cast<std::size_t>(start.data() - line.data());
    const std::size_t close = line.find('"', open + 1);
    from = close == std::string_view::npos ? open + 1 : close;
  }
  const std::size_t end = line.find(delimiter, from);
  more = end != std::string_view::npos;
  std::string_view field = trimmed(line.substr(0, end));
  line.remove_prefix(more ? end + 1 : line.size());
  if (field.size() >= 2 && field.front() == '"' && field.back() == '"') {
    field = trimmed(field.substr(1, field.size() - 2));
  }
  return field;
}

void splitBlanks(std::string_view line, Fields& fields) {
  constexpr std::string_view kBlank = " \t";
  for (std::size_t at = line.find_first_not_of(kBlank); at != std::string_view::npos;) {
    const std::size_t end = std::min(line.find_first_of(kBlank, at), line.size());
    fields.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(kBlank, end);
  }
}

void split(std::string_view line, char delimiter, Fields& fields) {
  fields.clear();
  if (delimiter == ' ') return splitBlanks(trimmed(line), fields);
  for (bool more = true; more;) fields.push_back(takeField(line, delimiter, more));
}

bool isHead(const Fields& fields) {
  double ignored;
  return std::none_of(fields.begin(), fields.end(), [&](std::string_view f) {
    return parseNumber(f, ignored) != NumberFault::kNotANumber || f.empty();
  });
}

double fieldValue(const ByteSource& source, const Fields& fields, std::size_t column) {
  double value = 0;
  switch (parseNumber(fields[column], value)) {
    case NumberFault::kNone:
      return value;
    case NumberFault::kOutOfRange:
      source.fail(cat("column ", column + 1, " is out of range: ", inQuotes(fields[column])),
                  "use --columns, or remove the row");
    case NumberFault::kNotANumber:
      break;
  }
  source.fail(cat("column ", column + 1, " is not a number: ", inQuotes(fields[column])),
              "use --columns, or remove the row");
}

std::string valuesText(std::size_t n) { return cat(n, n == 1 ? " value" : " values"); }

}  // namespace

Table readTable(ByteSource& source, const TableOptions& options, const ColumnChoice& choose) {
  Table table;
  Fields fields;
  std::string_view line;
  std::vector<std::size_t> chosen;
  char delimiter = options.delimiter;
  std::size_t read = 0, firstLine = 0;
  bool blankBefore = false;
  const auto begin = [&](std::size_t width) {
    table.width = width;
    firstLine = source.lineNumber();
    chosen = choose(table.names, width);
    table.columns = chosen.size();
  };
  while (source.nextLine(line)) {
    if (source.lineNumber() <= options.skip) continue;
    const std::string_view text = trimmed(line);
    if (text.empty()) {
      blankBefore = read > 0;
      continue;
    }
    if (text.front() == '#') continue;
    if (delimiter == 0) delimiter = foundDelimiter(text);
    split(delimiter == '\t' ? line : text, delimiter, fields);
    if (table.width == 0 && isHead(fields)) {
      table.names.assign(fields.begin(), fields.end());
      begin(fields.size());
      continue;
    }
    if (table.width == 0) begin(fields.size());
    if (fields.size() != table.width && options.grid) {
      throw Fault(kInput, cat("grid: row ", read + 1, " has ", valuesText(fields.size()),
                              ", row 1 has ", table.width));
    }
    if (fields.size() != table.width) {
      source.fail(cat(valuesText(fields.size()), ", line ", firstLine, " has ", table.width),
                  "make all rows equally wide, or remove the row");
    }
    if (blankBefore) table.breaks.push_back(table.rows);
    blankBefore = false;
    const bool kept = read++ % options.thin == 0;
    for (const std::size_t column : chosen) {
      const double value = fieldValue(source, fields, column);
      if (kept) table.values.push_back(value);
    }
    if (kept) ++table.rows;
    if (table.values.size() > kMostNumbers) {
      source.fail(cat("more than ", kMostNumbers, " numbers"), "take fewer points with --thin N");
    }
  }
  if (read == 0) throw Fault(kInput, cat(source.name(), ": holds no points (one point a line)"));
  return table;
}

std::size_t findColumn(const std::string& wanted, const std::vector<std::string>& names,
                       std::size_t width) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (lowered(names[i]) == lowered(wanted)) return i;
  }
  long long number = 0;
  if (parseInteger(wanted, number) && number >= 1 && number <= static_cast<long long>(width)) {
    return static_cast<std::size_t>(number - 1);
  }
  std::string known = cat("columns are 1 to ", width);
  for (std::size_t i = 0; i < names.size() && i < 20; ++i) known += (i ? ", " : ": ") + names[i];
  throw Fault(kUsage, cat("no column ", inQuotes(wanted), " (", known, ")"));
}

std::vector<std::string> commaList(const std::string& text) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(',', at), text.size());
    parts.emplace_back(trimmed(std::string_view(text).substr(at, end - at)));
    at = end + 1;
  }
  return parts;
}

}  // namespace knotfit
