// The blocks of JSON in a page of the documents.
#pragma once

#include <string>
#include <vector>

#include "support/file-content.h"

namespace morvik::test {

inline std::vector<std::string> jsonBlocks(const std::string& page) {
  constexpr std::string_view kStart = "```json\n";
  const std::string text = test::contentOf(page);
  std::vector<std::string> blocks;
  for (std::size_t at = text.find(kStart); at != std::string::npos; at = text.find(kStart, at)) {
    at += kStart.size();
    blocks.push_back(text.substr(at, text.find("```", at) - at));
  }
  return blocks;
}

}  // namespace morvik::test
