// The reader of tags. It remembers none: a tag may leave that never came.
#include "device/features/features.h"
#include "device/owned.h"
#include "device/stimulation.h"

namespace morvik::devkit {
namespace {

using Kind = Argument::Kind;
using Form = Argument::Form;

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

zeph::RfidCallback tagFrom(Stimulation& stimulation) {
  zeph::RfidCallback tag;
  tag.set_id(stimulation.text("id"));
  if (stimulation.has("direction")) {
    tag.set_direction(stimulation.choice<zeph::RfidCallback::Dir>("direction"));
  }
  if (stimulation.has("app")) tag.set_app(stimulation.number("app"));
  if (stimulation.has("type")) {
    tag.set_type(stimulation.choice<zeph::RfidCallback::Type>("type"));
  }
  if (stimulation.has("pict")) tag.set_pict(stimulation.number("pict"));
  if (stimulation.has("color")) {
    tag.set_color(stimulation.choice<zeph::RfidCallback::Col>("color"));
  }
  if (stimulation.has("content")) tag.set_content(stimulation.text("content"));
  if (stimulation.has("hex")) tag.set_content(bytesFrom(stimulation, stimulation.text("hex")));
  return tag;
}

void showTag(Stimulation& stimulation) {
  zeph::ZephMsg message;
  *message.mutable_rfidcallback() = tagFrom(stimulation);
  if (stimulation.understood()) stimulation.send(message);
}

constexpr Argument kTag[] = {
    {.name = "id", .usage = "ID", .what = "the tag's ID"},
    {.name = "direction",
     .what = "the direction",
     .kind = Kind::kChoice,
     .needed = false,
     .choices = namesOf<zeph::RfidCallback::Dir_descriptor>},
    {.name = "app", .usage = "N", .kind = Kind::kNumber, .form = Form::kNamed, .needed = false},
    {.name = "type",
     .usage = "NAME",
     .what = "the type",
     .kind = Kind::kChoice,
     .form = Form::kNamed,
     .needed = false,
     .choices = namesOf<zeph::RfidCallback::Type_descriptor>},
    {.name = "pict", .usage = "N", .kind = Kind::kNumber, .form = Form::kNamed, .needed = false},
    {.name = "color",
     .usage = "NAME",
     .what = "the colour",
     .kind = Kind::kChoice,
     .form = Form::kNamed,
     .needed = false,
     .choices = namesOf<zeph::RfidCallback::Col_descriptor>},
    {.name = "content", .usage = "TEXT", .form = Form::kNamed, .needed = false},
    {.name = "hex", .usage = "BYTES", .form = Form::kNamed, .needed = false, .insteadOfLast = true},
};

constexpr Stimulus kStimuli[] = {{"rfid", Stimulus::Group::kBody, Stimulus::For::kApplications,
                                  kTag, "bring a tag to the reader, or take it away", showTag}};

}  // namespace

constinit const Feature kRfidFeature = {.stimuli = kStimuli};

}  // namespace morvik::devkit
