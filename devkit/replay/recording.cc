// Lines of JSON to conversations.
#include "replay/recording.h"

#include <map>
#include <string_view>

#include <nlohmann/json.hpp>

#include "device/json.h"
#include "device/message-json.h"
#include "device/owned.h"
#include "device/text.h"

namespace morvik::devkit {
namespace {

namespace zeph = net::quelta::zeph::message;
using std::chrono::milliseconds;

// What is nested deeper than any message would be written back by a recursion without an end.
Json parseShallow(std::string_view line) {
  constexpr int kDeepest = 100;
  bool isTooDeep = false;
  const auto look = [&isTooDeep](int depth, Json::parse_event_t /*event*/, Json& /*value*/) {
    isTooDeep = isTooDeep || depth > kDeepest;
    return depth <= kDeepest;
  };
  Json json = Json::parse(line, look, /*allow_exceptions=*/false);
  return isTooDeep ? Json() : json;
}

// Reads line after line; the first trouble ends it.
class RecordingReader {
 public:
  explicit RecordingReader(Recording& recording) : recording_(recording) {}

  bool take(std::string_view line) {
    ++line_;
    const Json json = parseShallow(line);
    if (!json.is_object()) return refuse("is no JSON object");
    if (line_ == 1) return takeHeader(json);
    if (!json.contains("at") || !json["at"].is_number_integer())
      return refuse("has no time \"at\"");
    if (!json.contains("event") || !json["event"].is_string()) return refuse("names no \"event\"");
    const milliseconds at(json["at"].get<std::int64_t>());
    if (at < last_) return refuse("happened before the line above");
    last_ = at;
    return takeEvent(json["event"].get<std::string>(), json);
  }

  bool hasHeader() const { return line_ > 0; }
  int line() const { return line_; }
  const std::string& trouble() const { return trouble_; }

 private:
  struct Moment {
    int line;
    milliseconds at;
  };

  bool takeHeader(const Json& json) {
    if (json.value("recording", Json()) != "morvik-dev") {
      return refuse("does not begin a recording: run --record or device --record makes one");
    }
    const Json version = json.value("version", Json());
    if (!version.is_number_integer() || version < 1) return refuse("tells no version");
    if (version > kRecordingVersion) {
      return refuse("is of version " + version.dump() + ", and this program knows " +
                    std::to_string(kRecordingVersion));
    }
    isReal_ = json.value("device", Json()) == "real";
    return true;
  }

  bool takeEvent(const std::string& event, const Json& json) {
    if (event == "came") return takeCame(json);
    if (event == "left") return takeLeft(json);
    if (event == "received") return takeMessage(Recorded::Kind::kRequest, json);
    if (event == "sent") return takeMessage(Recorded::Kind::kMessage, json);
    if (event == "stimulus" && json.value("name", Json()) == "drop") takeDrop(json);
    if (event == "trouble") troubles_[numberIn(json)] = {line_, last_};
    return true;  // what is not replayed
  }

  static AppNumber numberIn(const Json& json) {
    const auto found = json.find("application");
    return found != json.end() && found->is_number_unsigned() ? found->get<AppNumber>() : 0;
  }

  bool takeCame(const Json& json) {
    const AppNumber number = numberIn(json);
    if (number == 0) return refuse("names no application");
    if (present_.contains(number)) return refuse("has " + appName(number) + " come again");
    present_[number] = recording_.conversations.size();
    recording_.conversations.push_back({.application = number, .line = line_, .came = last_});
    return true;
  }

  // Behind a relay, trouble right before the end of a connection tells that the device ended it.
  bool takeLeft(const Json& json) {
    const auto found = present_.find(numberIn(json));
    if (found == present_.end()) return refuse("names an application that is not there");
    const auto trouble = troubles_.find(found->first);
    if (isReal_ && trouble != troubles_.end()) addDrop(found->second, trouble->second);
    troubles_.erase(found->first);
    present_.erase(found);
    return true;
  }

  bool takeMessage(Recorded::Kind kind, const Json& json) {
    const auto found = present_.find(numberIn(json));
    if (found == present_.end()) return refuse("names an application that is not there");
    if (!json.contains("message") || !json["message"].is_object()) return refuse("has no message");
    Recorded recorded{.kind = kind, .line = line_, .at = last_};
    if (const auto trouble = readJson(json["message"].dump(), recorded.message)) {
      return refuse("holds no message: " + printable(*trouble));
    }
    if (!recorded.message.IsInitialized()) {
      return refuse("holds a message without " + recorded.message.InitializationErrorString());
    }
    troubles_.erase(found->first);
    recording_.conversations[found->second].passed.push_back(std::move(recorded));
    return true;
  }

  // For one application, or for all.
  void takeDrop(const Json& json) {
    const AppNumber only = numberIn(json);
    for (const auto& [number, index] : present_) {
      if (only != 0 && only != number) continue;
      addDrop(index, {line_, last_});
    }
  }

  void addDrop(std::size_t index, const Moment& moment) {
    recording_.conversations[index].passed.push_back(
        {.kind = Recorded::Kind::kDrop, .line = moment.line, .at = moment.at});
  }

  bool refuse(const std::string& why) {
    trouble_ = recording_.file + ':' + std::to_string(line_) + ": the line " + why;
    return false;
  }

  Recording& recording_;
  int line_ = 0;
  milliseconds last_{0};
  bool isReal_ = false;
  std::map<AppNumber, std::size_t> present_;
  std::map<AppNumber, Moment> troubles_;  // nothing has passed since
  std::string trouble_;
};

}  // namespace

std::optional<Recording> Recording::read(const std::string& file, std::string& trouble) {
  char* bytes = nullptr;
  gsize length = 0;
  GErrorOwned error;
  if (g_file_get_contents(file.c_str(), &bytes, &length, error.out()) == FALSE) {
    trouble = error.text();
    return std::nullopt;
  }
  const GText owned(bytes);
  return parse(file, std::string(bytes, length), trouble);
}

std::optional<Recording> Recording::parse(const std::string& file, const std::string& text,
                                          std::string& trouble) {
  Recording recording{.file = file, .conversations = {}, .warning = ""};
  RecordingReader reader(recording);
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    if (!reader.take(std::string_view(text).substr(begin, end - begin))) {
      trouble = reader.trouble();
      if (end < text.size() || reader.line() == 1) return std::nullopt;
      recording.warning =
          file + ':' + std::to_string(reader.line()) + ": the line is cut off and left out";
    }
    begin = end + 1;
  }
  if (reader.hasHeader()) return recording;
  trouble = file + ":1: the file is empty";
  return std::nullopt;
}

}  // namespace morvik::devkit
