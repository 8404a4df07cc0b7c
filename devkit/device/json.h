// JSON as the device hands it out: values of the library, whose own header stays in few sources.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace morvik::devkit {

/// Members keep the order in which they were added.
using Json = nlohmann::ordered_json;

/// A JSON object that is being filled, for those who know members and not the library. Refers to a
/// value of somebody else's, which must outlive it. A member that is set again is replaced. Texts
/// may hold any bytes: what is no UTF-8 is replaced when they are written.
class JsonObject {
 public:
  /// `value` becomes an object, unless it is one already.
  explicit JsonObject(Json& value);

  JsonObject& text(const char* name, std::string_view value);
  JsonObject& number(const char* name, std::int64_t value);
  JsonObject& flag(const char* name, bool value);
  JsonObject& texts(const char* name, const std::vector<std::string>& values);
  JsonObject& member(const char* name, Json value);

  /// The object under that name, made when it is not there.
  JsonObject object(const char* name);
  /// The list under that name is there, also when nothing is added to it.
  JsonObject& list(const char* name);
  /// A new object behind the others in the list under that name, which is made when it is not
  /// there. Valid until the next one is added to the same list.
  JsonObject added(const char* name);

 private:
  Json& value_;
};

/// Without line ends, so that it fits on a line; `indent` above 0 spreads it over lines.
std::string textOf(const Json& value, int indent = -1);

}  // namespace morvik::devkit
