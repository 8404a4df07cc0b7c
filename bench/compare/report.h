// The results as a table for people, as JSON, and as numbers for the picture.
#pragma once

#include <memory>
#include <ostream>
#include <vector>

#include "compare/contestants.h"
#include "compare/machine.h"
#include "compare/results.h"

namespace morvik::bench {

/// Who is in the table.
struct Column {
  std::string name;
  std::string label;
};

struct Report {
  const Results& results;
  std::vector<Column> columns;
  std::vector<Fact> machine;
  bool quick = false;
};

/// Markdown, which is also easy to read as it stands: medians, least and most of the runs, ratios,
/// targets. Rows that were not measured are left out.
void writeTable(std::ostream& out, const Report& report);
void writeJson(std::ostream& out, const Report& report);
/// The medians for the picture, as picture.gp reads them: a block for each row that is drawn.
void writePictureData(std::ostream& out, const Report& report);

}  // namespace morvik::bench
