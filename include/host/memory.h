// An application's memory: its limit, and the words with which an application ends that reaches it.
#pragma once

#include <cstddef>
#include <new>

namespace morvik {

/// What one application may have beside what it shares with others, in bytes: the script engine's
/// heap and everything that the libraries take next to it.
inline constexpr std::size_t kMaxData = 268435456;

/// In a child, before its application: limits its memory to kMaxData, unless the process was given
/// a limit of its own, which then holds. From here on, a lack of memory ends the process through
/// endForWantOfMemory, wherever it shows.
void limitMemory();

/// Ends the process as g_error does, with the fatal text "script engine out of memory: " and
/// `reason`, which must be short. Takes no memory for it.
[[noreturn]] void endForWantOfMemory(const char* reason);

/// While it lives, `new` fails as the language has it. For the few places that end in words of
/// their own when memory is missing.
class NewMayFail {
 public:
  NewMayFail() : given_(std::set_new_handler(nullptr)) {}
  ~NewMayFail() { std::set_new_handler(given_); }
  NewMayFail(const NewMayFail&) = delete;
  NewMayFail& operator=(const NewMayFail&) = delete;

 private:
  std::new_handler given_;
};

}  // namespace morvik
