// The dock's events, ready for a script name to lead to them.
#include "devices/dock-listener.h"

#include <zeph-message.pb.h>

namespace morvik {

bool DockMsgCallback::onMessage(const zeph::ZephMsg& message) {
  if (!message.has_dock()) return true;
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  return function.call({v8::Integer::New(isolate, message.dock().status()),
                        v8::Integer::New(isolate, message.dock().change())});
}

void addDockListener(const Args& args) { addListener<DockMsgCallback>(args); }

}  // namespace morvik
