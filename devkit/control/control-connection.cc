// Asynchronous reads and writes of one process that controls the tool.
#include "control/control-connection.h"

#include <unistd.h>

#include <utility>

#include <nlohmann/json.hpp>

#include "device/event-json.h"
#include "device/stimuli-json.h"
#include "device/view.h"

namespace morvik::devkit {
namespace {

bool asksToWatch(const std::string& line) {
  if (!line.starts_with('{')) return false;
  const Json request = Json::parse(line, nullptr, /*allow_exceptions=*/false);
  return request.is_object() && request.size() == 1 && request.value("watch", Json()) == true;
}

}  // namespace

ControlConnection::ControlConnection(Owner& owner, GSocketConnection* connection)
    : owner_(&owner),
      connection_(G_SOCKET_CONNECTION(g_object_ref(connection))),
      cancellable_(g_cancellable_new()) {}

ControlConnection::Kept ControlConnection::takeKept(void* kept) {
  const std::unique_ptr<Kept> taken(static_cast<Kept*>(kept));
  return *taken;
}

void ControlConnection::start() {
  say(textOf({{"event", "running"},
              {"version", DeviceView::kVersion},
              {"process", getpid()},
              {"title", owner_->source().title}}));
  read();
}

void ControlConnection::read() {
  g_input_stream_read_async(g_io_stream_get_input_stream(G_IO_STREAM(connection_.get())),
                            input_.data(), input_.size(), G_PRIORITY_DEFAULT, cancellable_.get(),
                            onRead, keep());
}

void ControlConnection::onRead(GObject* stream, GAsyncResult* result, void* kept) {
  const Kept self = takeKept(kept);
  const gssize count = g_input_stream_read_finish(G_INPUT_STREAM(stream), result, nullptr);
  if (self->owner_ == nullptr) return;
  if (count > 0) {
    self->take(static_cast<std::size_t>(count));
  } else {
    self->end();
  }
}

void ControlConnection::take(std::size_t count) {
  unread_.append(input_.data(), count);
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = unread_.find('\n', begin)) != std::string::npos;) {
    obey(unread_.substr(begin, end - begin));
    if (owner_ == nullptr) return;
    begin = end + 1;
  }
  unread_.erase(0, begin);
  if (unread_.size() > kLongestControl) return end();
  read();
}

void ControlConnection::obey(const std::string& line) {
  if (!asksToWatch(line)) return say(owner_->source().answer(line));
  Observer& observer = *this;
  if (!watches_) watches_.emplace(owner_->source().events, observer);
  Json outcome{{"event", "outcome"}};
  outcome.update(toJson(Outcome{.done = true, .text = ""}));
  say(textOf(outcome));
}

void ControlConnection::happened(const Event& event) { say(lineOf(event)); }

void ControlConnection::say(const std::string& line) {
  if (owner_ == nullptr || g_cancellable_is_cancelled(cancellable_.get()) != FALSE) return;
  unsent_ += line + '\n';
  // Whoever is told may be going through all connections, so that this one ends later.
  if (unsent_.size() > kLongestControl) g_cancellable_cancel(cancellable_.get());
  if (writing_.empty()) write();
}

void ControlConnection::write() {
  writing_ = std::exchange(unsent_, "");
  g_output_stream_write_all_async(g_io_stream_get_output_stream(G_IO_STREAM(connection_.get())),
                                  writing_.data(), writing_.size(), G_PRIORITY_DEFAULT,
                                  cancellable_.get(), onWritten, keep());
}

void ControlConnection::onWritten(GObject* stream, GAsyncResult* result, void* kept) {
  const Kept self = takeKept(kept);
  const gboolean written =
      g_output_stream_write_all_finish(G_OUTPUT_STREAM(stream), result, nullptr, nullptr);
  if (self->owner_ == nullptr) return;
  if (written == FALSE) return self->end();
  self->writing_.clear();
  if (!self->unsent_.empty()) self->write();
}

void ControlConnection::end() {
  Owner* owner = owner_;
  close();
  owner->ended(this);
}

void ControlConnection::close() {
  owner_ = nullptr;
  watches_.reset();
  g_socket_shutdown(g_socket_connection_get_socket(connection_.get()), TRUE, TRUE, nullptr);
  g_cancellable_cancel(cancellable_.get());
}

}  // namespace morvik::devkit
