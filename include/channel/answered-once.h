// What waits for one answer.
#pragma once

#include <memory>
#include <utility>

namespace morvik {

/// What the table of awaited replies keeps for a request that hears one answer. It stays there when
/// the answer has come, and a further one finds it empty.
template <typename Record>
class AnsweredOnce {
 public:
  explicit AnsweredOnce(std::unique_ptr<Record> record) : record_(std::move(record)) {}

  /// The record at the first call, null later. What it holds is released with the caller's pointer.
  [[nodiscard]] std::unique_ptr<Record> take() { return std::move(record_); }

 private:
  std::unique_ptr<Record> record_;
};

/// The holder of a record, as the table keeps it.
template <typename Record>
std::shared_ptr<AnsweredOnce<Record>> onceFor(std::unique_ptr<Record> record) {
  return std::make_shared<AnsweredOnce<Record>>(std::move(record));
}

}  // namespace morvik
