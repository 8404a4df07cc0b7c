// What everything that hears messages derives from.
#pragma once

namespace net::quelta::zeph::message {
class ZephMsg;
}

namespace morvik {

namespace zeph = net::quelta::zeph::message;

class ZephMsgListener {
 public:
  /// Lets a list of listeners release what a listener holds; scripts cannot see it.
  virtual ~ZephMsgListener() = default;

  /// Hears one message, which lives only for this call. True: stay registered; false: remove and
  /// release this listener.
  virtual bool onMessage(const zeph::ZephMsg& message) = 0;

 protected:
  ZephMsgListener() = default;
  ZephMsgListener(const ZephMsgListener&) = default;
  ZephMsgListener& operator=(const ZephMsgListener&) = default;
};

}  // namespace morvik
