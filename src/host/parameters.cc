// config.bin to params.
#include "host/parameters.h"

#include <glib.h>
#include <sys/stat.h>
#include <zeph-message.pb.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <optional>

#include "host/owned.h"
#include "host/script.h"

namespace morvik {

namespace zeph = net::quelta::zeph::message;

namespace {

// An application without this file is an ordinary one; the warning is all that tells a lost one.
std::optional<std::string> readWhole(const std::string& path) {
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) {
    g_warning("no params loaded: %s", std::strerror(errno));
    return std::nullopt;
  }
  const File file(std::fopen(path.c_str(), "r"));
  if (!file) {
    g_warning("%s", std::strerror(errno));
    return std::nullopt;
  }
  // The message library counts in int; what lies beyond is cut off like any damaged end.
  const auto size = std::min(static_cast<std::size_t>(facts.st_size), std::size_t{INT_MAX});
  std::string bytes(size, '\0');
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
  return bytes;
}

// The token and the id are written last, so they win over a key of that name.
v8::Local<v8::Object> instanceObject(const zeph::ConfigInstance& config) {
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  for (const zeph::KeyValue& entry : config.params()) {
    setOwn(object, entry.key(), toScript(entry.value()));
  }
  if (config.has_accesstoken()) setOwn(object, "accessToken", toScript(config.accesstoken()));
  if (config.has_uuid()) setOwn(object, "uuid", toScript(config.uuid()));
  return object;
}

// Written last, so it wins over an instance of that name. The log has every key and value.
void setDescriptor(const zeph::ConfigApp& config, v8::Local<v8::Object> root) {
  g_debug("parameters size : %d", config.parameters_size());
  if (config.parameters_size() == 0) return;
  const auto object = v8::Object::New(v8::Isolate::GetCurrent());
  for (const zeph::KeyValue& entry : config.parameters()) {
    g_debug("create parameters key : %s", entry.key().c_str());
    g_debug("create parameters value : %s", entry.value().c_str());
    setOwn(object, entry.key(), toScript(entry.value()));
  }
  setOwn(root, "descriptor", object);
}

}  // namespace

v8::Local<v8::Object> loadParameters(const std::string& path) {
  const auto root = v8::Object::New(v8::Isolate::GetCurrent());
  const auto bytes = readWhole(path);
  if (!bytes) return root;
  zeph::ConfigApp config;
  // A parse that fails is no failure here: what it got before counts.
  [[maybe_unused]] const bool whole =
      config.ParsePartialFromArray(bytes->data(), static_cast<int>(bytes->size()));
  for (const zeph::ConfigInstance& instance : config.configinstance()) {
    setOwn(root, instance.name(), instanceObject(instance));
  }
  g_debug("create parameters");
  setDescriptor(config, root);
  g_debug("create parameters done");
  return root;
}

}  // namespace morvik
