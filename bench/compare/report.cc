#include "compare/report.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include <nlohmann/json.hpp>

#include "compare/targets.h"

namespace morvik::bench {
namespace {

const char* const kNothing = "-";

// Three digits that count, and thousands apart.
std::string numberText(double value) {
  const double size = std::abs(value);
  const int decimals = size >= 100 || size == 0 ? 0 : size >= 10 ? 1 : size >= 1 ? 2 : 3;
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
  std::string number = text.data();
  const std::size_t point = number.find('.');
  const std::size_t first = number.starts_with('-') ? 1 : 0;
  for (std::size_t at = point == std::string::npos ? number.size() : point; at > first + 3;)
    number.insert(at -= 3, 1, ',');
  return number;
}

std::string textOf(const std::optional<double>& value) {
  return value ? numberText(*value) : kNothing;
}

using Cells = std::vector<std::string>;

class Table {
 public:
  explicit Table(Cells head) : rows_{std::move(head)} {}
  void add(Cells row) { rows_.push_back(std::move(row)); }

  // With its columns below each other, so that it need not be rendered.
  void write(std::ostream& out) const {
    const auto widths = widthsOfColumns();
    for (std::size_t row = 0; row < rows_.size(); ++row) {
      writeRow(out, rows_[row], widths);
      if (row == 0) writeRule(out, widths);
    }
    out << '\n';
  }

 private:
  std::vector<std::size_t> widthsOfColumns() const {
    std::vector<std::size_t> widths(rows_.front().size(), 3);
    for (const Cells& row : rows_)
      for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    return widths;
  }

  static void writeRow(std::ostream& out, const Cells& row,
                       const std::vector<std::size_t>& widths) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string space(widths[i] - row[i].size(), ' ');
      out << "| " << (i == 0 ? row[i] + space : space + row[i]) << ' ';
    }
    out << "|\n";
  }

  static void writeRule(std::ostream& out, const std::vector<std::size_t>& widths) {
    for (std::size_t i = 0; i < widths.size(); ++i)
      out << "| " << std::string(widths[i] - 1, '-') << (i == 0 ? "- " : ": ");
    out << "|\n";
  }

  std::vector<Cells> rows_;
};

std::string labelOf(const Row& row) {
  return std::string(row.label) + (*row.unit != '\0' ? std::string(", ") + row.unit : "");
}

Cells headOf(const Report& report, const char* first) {
  Cells head{first};
  for (const Column& column : report.columns) head.push_back(column.label);
  return head;
}

bool measured(const Report& report, const Row& row) {
  for (const Column& column : report.columns)
    if (report.results.value(row.name, column.name)) return true;
  return false;
}

bool measuredForOthers(const Report& report, const Row& row) {
  for (const Column& column : report.columns)
    if (column.name != kHost && report.results.value(row.name, column.name)) return true;
  return false;
}

// A table with a row for each that `wanted` takes, and a cell for each contestant.
template <typename Wanted, typename Cell>
void writeRows(std::ostream& out, const Report& report, const char* first, Wanted wanted,
               Cell cell) {
  Table table(headOf(report, first));
  for (const Row& row : rows()) {
    if (!wanted(row)) continue;
    Cells cells{labelOf(row)};
    for (const Column& column : report.columns) cells.push_back(cell(row, column));
    table.add(std::move(cells));
  }
  table.write(out);
}

std::string withSpread(const std::vector<double>& runs) {
  if (runs.empty()) return kNothing;
  const Summary summary = summaryOf(runs);
  if (runs.size() == 1) return numberText(summary.median);
  return numberText(summary.median) + " (" + numberText(summary.min) + " to " +
         numberText(summary.max) + ")";
}

void writeFigures(std::ostream& out, const Report& report) {
  writeRows(
      out, report, "median (least to most of the runs)",
      [&](const Row& row) { return measuredForOthers(report, row); },
      [&](const Row& row, const Column& column) {
        return withSpread(report.results.runs(row.name, column.name));
      });
}

void writeRatios(std::ostream& out, const Report& report) {
  writeRows(
      out, report, "MorvikVM as a multiple of",
      [&](const Row& row) { return measuredForOthers(report, row); },
      [&](const Row& row, const Column& column) {
        return textOf(report.results.ratio(row.name, kHost, column.name));
      });
}

void writeOurs(std::ostream& out, const Report& report) {
  Table table({"MorvikVM alone", "median", "least", "most"});
  for (const Row& row : rows()) {
    const auto runs = report.results.runs(row.name, kHost);
    if (runs.empty() || measuredForOthers(report, row)) continue;
    const Summary summary = summaryOf(runs);
    table.add({labelOf(row), numberText(summary.median), numberText(summary.min),
               numberText(summary.max)});
  }
  table.write(out);
}

void writeVerdicts(std::ostream& out, const Report& report) {
  Table table({"target", "wanted", "measured", ""});
  for (const Verdict& verdict : verdicts(report.results)) {
    if (!verdict.value) continue;
    table.add({verdict.target,
               (verdict.atMost ? "at most " : "at least ") + numberText(verdict.limit),
               numberText(*verdict.value), verdict.met() ? "met" : "not met"});
  }
  table.write(out);
}

nlohmann::json rowJson(const Report& report, const Row& row) {
  nlohmann::json json{{"name", row.name},
                      {"label", row.label},
                      {"unit", row.unit},
                      {"moreIsBetter", row.moreIsBetter}};
  for (const Column& column : report.columns) {
    const auto runs = report.results.runs(row.name, column.name);
    if (runs.empty()) continue;
    const Summary summary = summaryOf(runs);
    json["contestants"][column.name] = {
        {"median", summary.median}, {"min", summary.min}, {"max", summary.max}, {"runs", runs}};
  }
  return json;
}

nlohmann::json verdictJson(const Verdict& verdict) {
  nlohmann::json json{{"target", verdict.target},
                      {verdict.atMost ? "atMost" : "atLeast", verdict.limit},
                      {"met", verdict.met()}};
  if (verdict.value) json["value"] = *verdict.value;
  return json;
}

}  // namespace

void writeTable(std::ostream& out, const Report& report) {
  for (const Fact& fact : report.machine) out << "- " << fact.name << ": " << fact.value << '\n';
  if (report.quick) out << "- a quick look: smaller numbers of everything\n";
  out << '\n';
  writeFigures(out, report);
  writeRatios(out, report);
  writeOurs(out, report);
  writeVerdicts(out, report);
}

void writeJson(std::ostream& out, const Report& report) {
  nlohmann::json json{{"quick", report.quick}};
  for (const Fact& fact : report.machine) json["machine"][fact.name] = fact.value;
  for (const Row& row : rows())
    if (measured(report, row)) json["rows"].push_back(rowJson(report, row));
  for (const Verdict& verdict : verdicts(report.results))
    if (verdict.value) json["targets"].push_back(verdictJson(verdict));
  out << json.dump(2) << '\n';
}

void writePictureData(std::ostream& out, const Report& report) {
  const char* between = "";  // two empty lines
  for (const Row& row : rows()) {
    if (!row.drawn || !measured(report, row)) continue;
    out << std::exchange(between, "\n\n");
    const std::string title = labelOf(row) + (row.moreIsBetter ? " (long is good)" : "");
    for (std::size_t place = 0; place < report.columns.size(); ++place) {
      const Column& column = report.columns[place];
      const auto value = report.results.value(row.name, column.name);
      if (value)
        out << '"' << column.label << "\" " << place << ' ' << *value << " \"" << numberText(*value)
            << "\" \"" << title << "\"\n";
    }
  }
}

}  // namespace morvik::bench
