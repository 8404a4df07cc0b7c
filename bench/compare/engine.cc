// What a program beside the host tells of its parts.
#include <sstream>
#include <stdexcept>

#include "compare/measures.h"
#include "support/program.h"

namespace morvik::bench {

void measureEngine(Field& field, Contestant& contestant) {
  const auto [status, output] = test::run({field.places.probe});
  if (status != 0) throw std::runtime_error("the probe failed");
  std::istringstream lines(output);
  std::string row;
  for (double value = 0; lines >> row >> value;) field.results.add(row, contestant.name(), value);
}

}  // namespace morvik::bench
