// SPDX-License-Identifier: MIT
// Tables of numbers, as instruments and spreadsheets write them: with title lines and a line of
// names at the top, a delimiter behind the last field, decimal commas where the delimiter leaves
// them free. The first lines are looked at together. Those with a number in them vote for the
// delimiter and the width of the table, so that neither a title nor a footer decides; what stands
// above the first row of numbers is its head line or a title. From there on nothing is guessed: a
// row that differs ends with its line and column.
#include "io/table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

#include "base/fault.h"
#include "base/text.h"

namespace knotfit {
namespace {

using Fields = std::vector<std::string_view>;

// How far ahead titles are looked for: a screenful, and no more memory than that.
constexpr std::size_t kLinesAhead = 64, kBytesAhead = std::size_t{1} << 16;

void splitBlanks(std::string_view line, Fields& fields) {
  constexpr std::string_view kBlank = " \t";
  for (std::size_t at = line.find_first_not_of(kBlank); at != std::string_view::npos;) {
    const std::size_t end = std::min(line.find_first_of(kBlank, at), line.size());
    fields.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(kBlank, end);
  }
}

// "1,5 2,5": numbers between blanks, with one comma at most and digits on both sides of it. As a
// delimiter the comma would leave "5 2", which is no number.
bool hasDecimalCommas(std::string_view line) {
  if (line.find_first_not_of("0123456789+-.eE, ") != std::string_view::npos) return false;
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  Fields fields;
  splitBlanks(line, fields);
  return fields.size() > 1 && std::all_of(fields.begin(), fields.end(), [&](std::string_view f) {
           const std::size_t comma = f.find(',');
           if (comma == f.npos) return true;
           const bool between = comma > 0 && comma + 1 < f.size();
           return between && isDigit(f[comma - 1]) && isDigit(f[comma + 1]) &&
                  f.find(',', comma + 1) == f.npos;
         });
}

char foundDelimiter(std::string_view line) {
  for (const char c : {';', '\t', ','}) {
    if (line.find(c) == std::string_view::npos) continue;
    return c == ',' && hasDecimalCommas(line) ? ' ' : c;
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

void split(std::string_view line, char delimiter, Fields& fields) {
  fields.clear();
  if (delimiter == ' ') return splitBlanks(trimmed(line), fields);
  // A tab at the front stands before a field that is empty; blanks at the ends mean nothing.
  if (delimiter != '\t') line = trimmed(line);
  for (bool more = true; more;) fields.push_back(takeField(line, delimiter, more));
}

// Spreadsheets end rows with as many delimiters as the widest row has: empty fields at the end are
// none, beyond `least` of them.
void dropEmptyEnd(Fields& fields, std::size_t least) {
  while (fields.size() > least && fields.back().empty()) fields.pop_back();
}

// Numbers of one file, in which the decimal mark is the same throughout.
class NumberReader {
 public:
  NumberFault read(std::string_view field, char delimiter, double& value) {
    if (delimiter == ',') return parseNumber(field, value);
    const std::size_t comma = field.find(',');
    mark_ = '\0';
    if (field.find('.') != field.npos) mark_ = '.';
    if (comma != field.npos) mark_ = ',';
    if (mark_ != ',') return parseNumber(field, value);
    if (comma + 1 == field.size() || field.find('.') != field.npos) return NumberFault::kNotANumber;
    text_ = field;
    text_[comma] = '.';
    return parseNumber(text_, value);
  }
  // Decimal mark of the number read last: '.', ',' or 0 where there is none or no choice.
  char mark() const { return mark_; }

 private:
  std::string text_;
  char mark_ = 0;
};

// A row of plain numbers: what nearly all rows are, read in one pass. Whatever is not plain at
// first sight (quotes, signs, decimal commas, empty fields, faults) is left to the reader of
// fields.
class PlainRow {
 public:
  // @param chosen  columns in any order, each once.
  PlainRow(char delimiter, std::size_t width, const std::vector<std::size_t>& chosen)
      : delimiter_(delimiter), places_(width, kNone) {
    for (std::size_t i = 0; i < chosen.size(); ++i) places_[chosen[i]] = i;
  }

  // Reads the chosen columns to `values`. @return whether the row is plain; if not, some are
  // written.
  bool read(std::string_view line, double* values) const {
    const char* at = line.data();
    const char* const end = at + line.size();
    for (std::size_t column = 0; column < places_.size(); ++column) {
      if (column > 0 && !passDelimiter(at, end)) return false;
      while (at < end && *at == ' ') ++at;
      if (places_[column] != kNone) {
        double& value = values[places_[column]];
        const auto [stop, error] = std::from_chars(at, end, value);
        if (error != std::errc() || !std::isfinite(value)) return false;
        at = stop;
      } else if (!passText(at, end)) {
        return false;
      }
    }
    while (at < end && (*at == ' ' || *at == delimiter_)) ++at;  // empty fields at the end
    return at == end;
  }

 private:
  static constexpr std::size_t kNone = ~std::size_t{0};

  bool passDelimiter(const char*& at, const char* end) const {
    const char* const before = at;
    while (at < end && *at == ' ') ++at;
    if (delimiter_ == ' ') return at > before;
    return at < end && *at++ == delimiter_;
  }

  bool passText(const char*& at, const char* end) const {
    const char* const before = at;
    while (at < end && *at != delimiter_ && *at != '"' && *at != '\t') ++at;
    return at > before && (at == end || *at == delimiter_);
  }

  char delimiter_;
  std::vector<std::size_t> places_;  // of each column's number in the row
};

std::string valuesText(std::size_t n) { return cat(n, n == 1 ? " value" : " values"); }

class TableReader {
 public:
  TableReader(ByteSource& source, const TableOptions& options)
      : source_(source),
        options_(options),
        stage_(options.watcher, "rows read"),
        delimiter_(options.delimiter) {}

  Table read(const ColumnChoice& choose) {
    lookAhead();
    if (!ahead_.empty() && trimmed(ahead_.front().text).starts_with('{')) {
      source_.failAt(ahead_.front().number, "is no table but JSON",
                     "points of a fit: knotfit eval FIT -o points.csv");
    }
    vote();
    findFirstRow();
    std::optional<PlainRow> plain;
    for (std::string_view line; nextRow(line);) {
      if (plain && isMarkKnown(line) && takePlain(*plain, line)) continue;
      split(line, delimiter_, fields_);
      if (table_.width == 0) begin(choose);
      dropEmptyEnd(fields_, table_.width);
      checkWidth();
      addRow();
      if (!plain) plain.emplace(delimiter_, table_.width, chosen_);
    }
    if (read_ == 0)
      throw Fault(kInput, cat(source_.name(), ": holds no points (one point a line)"));
    return std::move(table_);
  }

 private:
  struct Line {
    std::string text;
    std::size_t number;
    bool blankBefore;
  };

  // The next line that is neither blank nor a comment nor skipped.
  bool nextLine(std::string_view& line) {
    while (source_.nextLine(line)) {
      if (source_.lineNumber() <= options_.skip) continue;
      if (!line.empty() && (line.front() == '-' || (line.front() >= '0' && line.front() <= '9'))) {
        number_ = source_.lineNumber();
        return true;
      }
      const std::string_view text = trimmed(line);
      blankBefore_ = blankBefore_ || text.empty();
      if (text.empty() || text.front() == '#') continue;
      number_ = source_.lineNumber();
      return true;
    }
    return false;
  }

  bool takeBlank() { return std::exchange(blankBefore_, false); }

  void lookAhead() {
    std::size_t bytes = 0;
    for (std::string_view line; ahead_.size() < kLinesAhead && bytes < kBytesAhead;) {
      if (!nextLine(line)) break;
      bytes += line.size();
      ahead_.push_back({std::string(line), number_, takeBlank()});
    }
  }

  std::size_t numbersIn(const Fields& fields, char delimiter) {
    double ignored;
    return static_cast<std::size_t>(
        std::count_if(fields.begin(), fields.end(), [&](std::string_view f) {
          return numbers_.read(f, delimiter, ignored) != NumberFault::kNotANumber;
        }));
  }

  // The delimiter and the width that most lines with numbers agree on, the earlier of equals.
  void vote() {
    std::map<std::pair<char, std::size_t>, std::size_t> votes;
    std::size_t most = 0;
    const char asked = delimiter_;
    for (auto line = ahead_.rbegin(); line != ahead_.rend(); ++line) {
      const char c = asked ? asked : foundDelimiter(trimmed(line->text));
      split(line->text, c, fields_);
      dropEmptyEnd(fields_, 0);
      if (numbersIn(fields_, c) == 0) continue;
      std::size_t& count = votes[{c, fields_.size()}];
      if (++count >= most) {
        most = count;
        delimiter_ = c;
        width_ = fields_.size();
      }
    }
  }

  // Sets first_ to the first line of numbers: all its fields are, or it is as wide as the table.
  void findFirstRow() {
    for (first_ = 0; first_ < ahead_.size(); ++first_) {
      split(ahead_[first_].text, delimiter_, fields_);
      dropEmptyEnd(fields_, 0);
      const std::size_t numbers = numbersIn(fields_, delimiter_);
      if (numbers > 0 && (fields_.size() == width_ || fields_.size() == numbers)) return;
    }
    if (ahead_.size() == kLinesAhead) {
      source_.failAt(ahead_.back().number, "no row of numbers so far",
                     cat("leave out the lines above them with --skip N"));
    }
  }

  bool nextRow(std::string_view& line) {
    if (first_ + taken_ < ahead_.size()) {
      const Line& next = ahead_[first_ + taken_++];
      line = next.text;
      number_ = next.number;
      breakBefore_ = read_ > 0 && next.blankBefore;
      return true;
    }
    const bool more = nextLine(line);
    breakBefore_ = takeBlank() && read_ > 0;
    return more;
  }

  // Fixes width and names by the first row, in fields_, and the line above it.
  void begin(const ColumnChoice& choose) {
    const std::size_t all = fields_.size();
    dropEmptyEnd(fields_, 0);
    table_.width = fields_.size();
    widthLine_ = firstRow_ = number_;
    if (first_ > 0) {
      Fields head;
      split(ahead_[first_ - 1].text, delimiter_, head);
      dropEmptyEnd(head, 0);
      const bool fits =
          head.size() == fields_.size() || (head.size() > fields_.size() && head.size() <= all);
      // Names that do not fit their rows are a fault of the file, a sentence above them is none.
      const bool names = head.size() > 1 && delimiter_ != ' ';
      if ((fits || names) && numbersIn(head, delimiter_) == 0) {
        table_.names.assign(head.begin(), head.end());
        table_.width = head.size();
        widthLine_ = ahead_[first_ - 1].number;
      }
    }
    fields_.resize(std::max(fields_.size(), std::min(all, table_.width)));
    chosen_ = choose({table_.names, table_.width, firstRow_});
    table_.columns = chosen_.size();
  }

  void checkWidth() const {
    if (fields_.size() == table_.width) return;
    if (options_.grid) {
      source_.failAt(number_,
                     cat("grid: row ", read_ + 1, " has ", valuesText(fields_.size()),
                         ", row 1 has ", table_.width),
                     "make all rows equally wide");
    }
    source_.failAt(number_,
                   cat(valuesText(fields_.size()), ", line ", widthLine_, " has ", table_.width),
                   "make all rows equally wide, or remove the row");
  }

  // Whether the file's decimal mark is the point, or of no account in this line.
  bool isMarkKnown(std::string_view line) const {
    if (delimiter_ == ',' || mark_ == '.') return true;
    return mark_ == 0 && line.find('.') == line.npos && line.find(',') == line.npos;
  }

  bool takePlain(const PlainRow& plain, std::string_view line) {
    row_.resize(chosen_.size());
    if (!plain.read(line, row_.data())) return false;
    if (breakBefore_) table_.breaks.push_back(table_.rows);
    keepRow();
    return true;
  }

  void addRow() {
    if (breakBefore_) table_.breaks.push_back(table_.rows);
    row_.clear();
    for (const std::size_t column : chosen_) row_.push_back(valueOf(column));
    keepRow();
  }

  // Keeps the numbers in row_, unless they are thinned out.
  void keepRow() {
    stage_.at(read_);
    if (read_++ % options_.thin != 0) return;
    table_.values.insert(table_.values.end(), row_.begin(), row_.end());
    ++table_.rows;
    if (table_.values.size() > kMostNumbers) {
      source_.failAt(number_, cat("more than ", kMostNumbers, " numbers"),
                     "take fewer points with --thin N");
    }
  }

  double valueOf(std::size_t column) {
    const std::string_view field = fields_[column];
    double value = 0;
    const NumberFault fault = numbers_.read(field, delimiter_, value);
    if (fault == NumberFault::kNone) {
      checkMark(column);
      return value;
    }
    const char* what = " is not a number: ";
    if (fault == NumberFault::kOutOfRange) what = " is out of range: ";
    if (field.empty()) what = " is empty";
    source_.failAt(
        number_, cat("column ", column + 1, what, field.empty() ? std::string() : inQuotes(field)),
        cat(options_.grid ? "" : "use --columns, ",
            number_ == firstRow_ ? cat("use --skip ", number_, ", ") : std::string(),
            options_.grid ? "mend the value" : "or remove the row"));
  }

  // Where commas mark decimals, a point may group thousands: 1.234 is then one number or another.
  void checkMark(std::size_t column) {
    const char mark = numbers_.mark();
    if (mark == 0) return;
    if (mark_ == 0) {
      mark_ = mark;
      markLine_ = number_;
    }
    if (mark == mark_) return;
    source_.failAt(
        number_,
        cat("column ", column + 1, " has a decimal ", mark == ',' ? "comma" : "point", ", line ",
            markLine_, " a ", mark == ',' ? "point: " : "comma: ", inQuotes(fields_[column])),
        "write one of them throughout");
  }

  ByteSource& source_;
  const TableOptions& options_;
  Stage stage_;
  char delimiter_;
  Table table_;
  NumberReader numbers_;
  Fields fields_;
  std::vector<double> row_;
  std::vector<std::size_t> chosen_;
  std::vector<Line> ahead_;
  bool blankBefore_ = false, breakBefore_ = false;
  std::size_t number_ = 0;               // of the line at hand
  std::size_t width_ = 0;                // that most lines have
  std::size_t first_ = 0, taken_ = 0;    // first row within ahead_, rows taken from it
  std::size_t widthLine_ = 0;            // the line that fixed the width
  std::size_t firstRow_ = 0, read_ = 0;  // line of the first row, rows read
  char mark_ = 0;                        // decimal mark of the file
  std::size_t markLine_ = 0;
};

}  // namespace

Table readTable(ByteSource& source, const TableOptions& options, const ColumnChoice& choose) {
  return TableReader(source, options).read(choose);
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

}  // namespace knotfit
