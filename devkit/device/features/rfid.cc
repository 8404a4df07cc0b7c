// The reader of tags. It remembers none: a tag may leave that never came.
#include "device/handlers.h"
#include "device/owned.h"

namespace morvik::devkit {
namespace {

// Content may be any bytes, which a line of text gives in pairs of digits.
std::string bytesFrom(Stimulation& stimulation, const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const int high = g_ascii_xdigit_value(digits[i]);
    const int low = i + 1 < digits.size() ? g_ascii_xdigit_value(digits[i + 1]) : -1;
    if (high < 0 || low < 0) {
      stimulation.refuse(digits + " is no row of bytes in hexadecimal digits");
      return "";
    }
    bytes += static_cast<char>(high * 16 + low);
  }
  return bytes;
}

void readFields(Stimulation& stimulation, zeph::RfidCallback& tag) {
  if (const auto app = stimulation.named("app")) {
    tag.set_app(stimulation.numberFrom(*app));
  }
  if (const auto type = stimulation.named("type")) {
    tag.set_type(stimulation.choiceFrom<zeph::RfidCallback::Type>(*type));
  }
  if (const auto pict = stimulation.named("pict")) {
    tag.set_pict(stimulation.numberFrom(*pict));
  }
  if (const auto color = stimulation.named("color")) {
    tag.set_color(stimulation.choiceFrom<zeph::RfidCallback::Col>(*color));
  }
  if (const auto content = stimulation.named("content")) tag.set_content(*content);
  if (const auto digits = stimulation.named("hex")) {
    tag.set_content(bytesFrom(stimulation, *digits));
  }
}

}  // namespace

void showTag(Stimulation& stimulation) {
  zeph::ZephMsg message;
  zeph::RfidCallback& tag = *message.mutable_rfidcallback();
  readFields(stimulation, tag);
  tag.set_id(stimulation.text("the tag's ID"));
  if (stimulation.hasMore()) {
    tag.set_direction(stimulation.choice<zeph::RfidCallback::Dir>("the direction"));
  }
  if (stimulation.understood()) stimulation.send(message);
}

}  // namespace morvik::devkit
