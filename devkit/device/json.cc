// The library's values, filled and written.
#include "device/json.h"

#include <nlohmann/json.hpp>

namespace morvik::devkit {

JsonObject::JsonObject(Json& value) : value_(value) {
  if (!value.is_object()) value = Json::object();
}

JsonObject& JsonObject::text(const char* name, std::string_view value) {
  value_[name] = std::string(value);
  return *this;
}

JsonObject& JsonObject::number(const char* name, std::int64_t value) {
  value_[name] = value;
  return *this;
}

JsonObject& JsonObject::flag(const char* name, bool value) {
  value_[name] = value;
  return *this;
}

JsonObject& JsonObject::texts(const char* name, const std::vector<std::string>& values) {
  value_[name] = values;
  return *this;
}

JsonObject& JsonObject::member(const char* name, Json value) {
  value_[name] = std::move(value);
  return *this;
}

JsonObject JsonObject::object(const char* name) { return JsonObject(value_[name]); }

JsonObject& JsonObject::list(const char* name) {
  if (!value_[name].is_array()) value_[name] = Json::array();
  return *this;
}

JsonObject JsonObject::added(const char* name) {
  list(name);
  return JsonObject(value_[name].emplace_back());
}

std::string textOf(const Json& value, int indent) {
  return value.dump(indent, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace);
}

}  // namespace morvik::devkit
