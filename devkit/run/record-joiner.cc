// Pieces to records.
#include "run/record-joiner.h"

#include <utility>

#include "run/log-line.h"

namespace morvik::devkit {

// A full piece that ends with a newline may be a whole record or the middle of one: what comes next
// tells.
void RecordJoiner::take(pid_t pid, std::string_view piece) {
  Begun& begun = begun_[pid];
  if (begun.mayBeWhole && beginsLikeHostRecord(piece)) emit(pid, begun);
  begun.text += piece;
  const bool ends = piece.ends_with('\n');
  begun.mayBeWhole = ends && piece.size() == kPieceSize;
  if ((ends && !begun.mayBeWhole) || begun.text.size() > kLongestRecord) emit(pid, begun);
}

void RecordJoiner::finish(pid_t pid) {
  const auto found = begun_.find(pid);
  if (found == begun_.end()) return;
  Begun last = std::move(found->second);
  begun_.erase(found);
  if (!last.text.empty()) emit(pid, last);
}

void RecordJoiner::finishAll() {
  while (!begun_.empty()) finish(begun_.begin()->first);
}

void RecordJoiner::emit(pid_t pid, Begun& begun) {
  const Begun whole = std::exchange(begun, {});
  std::string_view record = whole.text;
  if (record.ends_with('\n')) record.remove_suffix(1);
  sink_(pid, record);
}

void LineSplitter::take(pid_t pid, std::string_view bytes) {
  std::string text = std::exchange(begun_[pid], {}).append(bytes);
  std::size_t start = 0;
  for (std::size_t end = 0; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    sink_(pid, std::string_view(text).substr(start, end - start));
  }
  text.erase(0, start);
  if (text.size() > RecordJoiner::kLongestRecord) {
    sink_(pid, text);
    text.clear();
  }
  begun_[pid] = std::move(text);
}

void LineSplitter::finishAll() {
  for (const auto& [pid, rest] : std::exchange(begun_, {})) {
    if (!rest.empty()) sink_(pid, rest);
  }
}

}  // namespace morvik::devkit
