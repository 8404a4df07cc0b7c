// A queue with two bounds, and entries that give way before others.
#include "page/history.h"

#include <algorithm>
#include <utility>

namespace morvik::devkit {

void History::add(std::string entry, bool isFaint) {
  bytes_ += entry.size();
  faint_ += isFaint ? 1 : 0;
  entries_.push_back({std::move(entry), isFaint});
  while (!entries_.empty() && (entries_.size() > mostEntries_ || bytes_ > mostBytes_)) forgetOne();
}

void History::forgetOne() {
  const auto gone =
      faint_ > 0 ? std::ranges::find(entries_, true, &Entry::isFaint) : entries_.begin();
  bytes_ -= gone->text.size();
  faint_ -= gone->isFaint ? 1 : 0;
  entries_.erase(gone);
  ++forgotten_;
}

std::string History::array() const {
  std::string array = "[";
  array.reserve(bytes_ + entries_.size() + 2);
  for (const Entry& entry : entries_) {
    if (array.size() > 1) array += ',';
    array += entry.text;
  }
  return array + "]";
}

}  // namespace morvik::devkit
