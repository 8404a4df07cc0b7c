// Waiting with a deadline: the patience of all system tests, values that grow while a test watches
// them, and readers that take a program's output in the background, so that it never has to wait
// for the test.
#pragma once

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace morvik::test {

using Clock = std::chrono::steady_clock;

// How long a test waits for what must come. A passing test never waits that long, and on a busy
// machine under sanitizers a start may take its time.
constexpr std::chrono::seconds kPatience{60};

// Waits until the descriptor is ready for the poll events; false when patience ends.
[[nodiscard]] bool becomesReady(int descriptor, short events);

// Waits for a condition that nothing announces, such as a state of the kernel; throws with the
// text when patience ends.
void waitUntil(std::string_view what, const std::function<bool()>& condition);

// Owns a file descriptor.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { close(); }

  [[nodiscard]] int get() const { return number_; }
  void close() {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }

 private:
  int number_ = -1;
};

// A value that one thread adds to while others wait for something in it.
template <class Value>
class Growing {
 public:
  void change(const std::function<void(Value&)>& change) {
    const std::lock_guard lock(mutex_);
    change(value_);
    changed_.notify_all();
  }

  [[nodiscard]] Value snapshot() const {
    const std::lock_guard lock(mutex_);
    return value_;
  }

  // What `find` finds in the value, now or after a change; nothing when patience ends.
  template <class Found>
  [[nodiscard]] std::optional<Found> await(
      const std::function<std::optional<Found>(const Value&)>& find) const {
    std::unique_lock lock(mutex_);
    std::optional<Found> found;
    changed_.wait_until(lock, Clock::now() + kPatience, [&] {
      found = find(value_);
      return found.has_value();
    });
    return found;
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  Value value_;
};

// Reads a descriptor in a thread of its own until its end, or until the reader dies. Each read's
// bytes go to `take`, in that thread; an empty text tells the end.
class BackgroundReader {
 public:
  BackgroundReader(Descriptor source, std::function<void(std::string_view)> take);
  ~BackgroundReader();

 private:
  void readAll(const std::function<void(std::string_view)>& take);

  Descriptor source_;
  Descriptor stop_;
  std::thread thread_;
};

// All that a stream has brought so far.
class Stream {
 public:
  explicit Stream(Descriptor source);

  // Waits for the text; throws when it does not come. Gives all that has come till then.
  std::string await(std::string_view text) const;
  // Waits until all that has come is as asked; false when patience ends.
  [[nodiscard]] bool awaitThat(const std::function<bool(const std::string&)>& asked) const;
  // Waits for the stream's end; throws when it does not come. Gives everything.
  std::string awaitEnd() const;
  [[nodiscard]] std::string soFar() const { return received_.snapshot().text; }

 private:
  struct Received {
    std::string text;
    bool ended = false;
  };
  Growing<Received> received_;
  BackgroundReader reader_;
};

}  // namespace morvik::test
