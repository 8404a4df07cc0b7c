// Lines for a reader.
#include "terminal/display.h"

#include "device/describe.h"
#include "device/owned.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

constexpr std::size_t kMarkLength = 4;

std::string timeOfDay() {
  const GDate now(g_date_time_new_now_local());
  const GText second(g_date_time_format(now.get(), "%H:%M:%S"));
  const GText whole(
      g_strdup_printf("%s.%03d", second.get(), g_date_time_get_microsecond(now.get()) / 1000));
  return whole.get();
}

std::string markOf(const std::string& requestId) {
  return requestId.empty() ? "" : "  #" + printable(requestId.substr(0, kMarkLength));
}

}  // namespace

void Display::happened(const Event& event) {
  std::visit([this](const auto& what) { show(what); }, event.what);
}

void Display::show(const Came& came) const {
  line(appName(came.application), Look::kFaint, "--", "connected");
}

void Display::show(const Left& left) const {
  line(appName(left.application), Look::kFaint, "--", "gone");
}

void Display::show(const Received& received) const {
  const zeph::ZephMsg& message = *received.message;
  line(appName(received.application), Look::kIn, "->", describe(message) + markOf(message.id()));
}

void Display::show(const Sent& sent) const {
  if (isRepeated(sent)) return;
  const zeph::ZephMsg& message = *sent.message;
  line(sent.together.empty() ? appName(sent.application) : "all", Look::kOut, "<-",
       describe(message) + markOf(message.correlationid()));
}

void Display::show(const Doubted& doubted) const {
  line(appName(doubted.application), Look::kDoubtful, "??", printable(doubted.doubt.text));
}

void Display::show(const Noted& noted) const {
  line("device", Look::kFaint, "--", shortened(noted.text));
}

void Display::show(const Trouble& trouble) const {
  line(trouble.application ? appName(*trouble.application) : "device", Look::kBad, "!!",
       printable(trouble.text));
}

void Display::line(const std::string& whom, Look look, const char* direction,
                   const std::string& what) const {
  sink_(painted(Look::kFaint, timeOfDay()) + ' ' + whom + ' ' +
        painted(look, std::string(direction) + "  " + what));
}

std::string Display::painted(Look look, const std::string& text) const {
  if (colors_ == Colors::kOff) return text;
  const char* code = look == Look::kIn         ? "36"
                     : look == Look::kOut      ? "32"
                     : look == Look::kDoubtful ? "33"
                     : look == Look::kBad      ? "1;31"
                                               : "2";
  return "\033[" + std::string(code) + 'm' + text + "\033[0m";
}

}  // namespace morvik::devkit
