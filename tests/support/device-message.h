// Messages as a device sends them.
#pragma once

#include <zeph-message.pb.h>

#include <atomic>
#include <string>

namespace morvik::test {

/// A fresh message with an id.
inline net::quelta::zeph::message::ZephMsg newMessage() {
  static std::atomic<int> count = 0;
  net::quelta::zeph::message::ZephMsg message;
  message.set_id("device-" + std::to_string(++count));
  return message;
}

/// The same as a reply: it carries the request's id.
inline net::quelta::zeph::message::ZephMsg replyTo(
    const net::quelta::zeph::message::ZephMsg& request) {
  net::quelta::zeph::message::ZephMsg message = newMessage();
  message.set_correlationid(request.id());
  return message;
}

}  // namespace morvik::test
