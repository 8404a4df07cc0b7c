// The last things that happened, for pages that open later.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace morvik::devkit {

/// Keeps JSON values in their written form. Bounded in number and in bytes: the oldest of those
/// that are faint give way, and when there is none, the oldest.
class History {
 public:
  History(std::size_t mostEntries, std::size_t mostBytes)
      : mostEntries_(mostEntries), mostBytes_(mostBytes) {}

  void add(std::string entry, bool isFaint = false);

  /// All that is kept, oldest first, as a JSON array.
  std::string array() const;
  /// How many gave way since the beginning.
  std::uint64_t forgotten() const { return forgotten_; }

 private:
  struct Entry {
    std::string text;
    bool isFaint;
  };

  void forgetOne();

  std::size_t mostEntries_;
  std::size_t mostBytes_;
  std::deque<Entry> entries_;
  std::size_t faint_ = 0;  // how many of them are
  std::size_t bytes_ = 0;
  std::uint64_t forgotten_ = 0;
};

}  // namespace morvik::devkit
