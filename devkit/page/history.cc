// A queue with two bounds.
#include "page/history.h"

#include <utility>

namespace morvik::devkit {

void History::add(std::string entry) {
  bytes_ += entry.size();
  entries_.push_back(std::move(entry));
  while (!entries_.empty() && (entries_.size() > mostEntries_ || bytes_ > mostBytes_)) {
    bytes_ -= entries_.front().size();
    entries_.pop_front();
    ++forgotten_;
  }
}

std::string History::array() const {
  std::string array = "[";
  array.reserve(bytes_ + entries_.size() + 2);
  for (const std::string& entry : entries_) {
    if (array.size() > 1) array += ',';
    array += entry;
  }
  return array + "]";
}

}  // namespace morvik::devkit
