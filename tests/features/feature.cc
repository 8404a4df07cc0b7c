// Rows that many features have.
#include "features/feature.h"

namespace morvik::test {
namespace {

std::vector<RefusedRow> rowsOf(const std::vector<std::string>& calls, const RefusedRow& shape) {
  std::vector<RefusedRow> rows(calls.size(), shape);
  for (std::size_t i = 0; i < calls.size(); ++i) rows[i].call = calls[i];
  return rows;
}

}  // namespace

std::vector<RefusedRow> wrong(const std::vector<std::string>& calls, const Lines& lines) {
  return rowsOf(calls, {.call = {}, .lines = lines});
}

std::vector<RefusedRow> needMode(const std::vector<std::string>& calls, const Lines& lines) {
  return rowsOf(calls, {.call = {}, .outside = kMode, .inside = {}, .lines = lines});
}

std::vector<RefusedRow> throwing(const std::vector<std::string>& calls, const Lines& lines) {
  return rowsOf(calls, {.call = {}, .outside = {}, .inside = kNoText, .lines = lines});
}

std::vector<RefusedRow> wrongListeners() {
  return wrong({"addListener()", "addListener(5)", "addListener({})", "addListener(null)",
                "addListener('f')", "addListener(f, f)", "addListener(f, 1)"},
               {});
}

std::vector<AnsweredRow> hearsCodes(const std::string& call, const std::string& label) {
  const std::string opening = "DEBUG Event: " + label;
  return {{call,
           "response { code: OK }",
           {opening, "DEBUG calling response function", "MESSAGE JSLOG: string OK"}},
          {"",
           "event { code: TERMINATED }",
           {opening, "DEBUG calling event function", "MESSAGE JSLOG: string TERMINATED"}}};
}

std::vector<AnsweredRow> nobodyWaits(const std::vector<std::string>& calls) {
  std::vector<AnsweredRow> rows;
  for (const std::string& call : calls)
    rows.push_back({call, "response { code: OK }", {"WARNING NO CORRELATION FOUND"}});
  return rows;
}

}  // namespace morvik::test
