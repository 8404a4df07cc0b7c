// morvik.webcam: takes a photo. The answer can stand for the picture's file.
#include <glib.h>

#include <string>

#include "channel/request.h"
#include "devices/devices.h"

namespace morvik {
namespace {

// The text is the server's to read. It does not change which file the answer's object stands for.
void photo(const Args& args) {
  Request request(args, "WEBCAM", 1);
  const std::string url = request.ascii(0);
  if (request.refused()) return;
  g_message("WEBCAM: photo url[%s]", url.c_str());
  request.message().mutable_webcam()->set_photo(url);
  request.send(EventCallbackWebcam);
}

constexpr Binding kFunctions[] = {{"photo", photo}};

}  // namespace

std::span<const Binding> webcamFunctions() { return kFunctions; }

}  // namespace morvik
