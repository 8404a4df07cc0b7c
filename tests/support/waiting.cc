#include "support/waiting.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <array>
#include <stdexcept>

namespace morvik::test {
namespace {

// Large enough for any log record that fits into a datagram.
constexpr std::size_t kReadSize = 1 << 18;

}  // namespace

bool becomesReady(int descriptor, short events) {
  pollfd watched{descriptor, events, 0};
  const auto patience = std::chrono::duration_cast<std::chrono::milliseconds>(kPatience);
  int result = -1;
  do {
    result = poll(&watched, 1, static_cast<int>(patience.count()));
  } while (result < 0 && errno == EINTR);
  return result > 0;
}

void waitUntil(std::string_view what, const std::function<bool()>& condition) {
  const auto deadline = Clock::now() + kPatience;
  while (!condition()) {
    if (Clock::now() > deadline) throw std::runtime_error("waited in vain: " + std::string(what));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

BackgroundReader::BackgroundReader(Descriptor source, std::function<void(std::string_view)> take)
    : source_(std::move(source)), stop_(eventfd(0, EFD_CLOEXEC)) {
  thread_ = std::thread([this, take = std::move(take)] { readAll(take); });
}

BackgroundReader::~BackgroundReader() {
  eventfd_write(stop_.get(), 1);
  thread_.join();
}

void BackgroundReader::readAll(const std::function<void(std::string_view)>& take) {
  std::string buffer(kReadSize, '\0');
  std::array<pollfd, 2> watched{{{source_.get(), POLLIN, 0}, {stop_.get(), POLLIN, 0}}};
  while (poll(watched.data(), watched.size(), -1) >= 0 && watched[1].revents == 0) {
    const ssize_t size = read(source_.get(), buffer.data(), buffer.size());
    if (size <= 0) return take({});
    take({buffer.data(), static_cast<std::size_t>(size)});
  }
}

Stream::Stream(Descriptor source)
    : reader_(std::move(source), [this](std::string_view bytes) {
        received_.change([&](Received& received) {
          received.text += bytes;
          received.ended = bytes.empty();
        });
      }) {}

std::string Stream::await(std::string_view text) const {
  const auto found = received_.await<std::string>([&](const Received& received) {
    const bool there = received.text.find(text) != std::string::npos;
    return there ? std::optional(received.text) : std::nullopt;
  });
  if (!found) throw std::runtime_error("never printed: " + std::string(text));
  return *found;
}

bool Stream::awaitThat(const std::function<bool(const std::string&)>& asked) const {
  const auto found = received_.await<bool>([&](const Received& received) {
    return asked(received.text) ? std::optional(true) : std::nullopt;
  });
  return found.has_value();
}

std::string Stream::awaitEnd() const {
  const auto all = received_.await<std::string>([](const Received& received) {
    return received.ended ? std::optional(received.text) : std::nullopt;
  });
  if (!all) throw std::runtime_error("the stream did not end");
  return *all;
}

}  // namespace morvik::test
