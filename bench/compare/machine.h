// What a run was made on.
#pragma once

#include <string>
#include <vector>

namespace morvik::bench {

struct Fact {
  std::string name;
  std::string value;
};

/// Processor, cores, memory, kernel, and the versions of what is compared.
std::vector<Fact> machineFacts();

}  // namespace morvik::bench
