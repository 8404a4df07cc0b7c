// One look at the file.
#include "run/config-file.h"

#include <zeph-message.pb.h>

#include <filesystem>
#include <fstream>

namespace morvik::devkit {

bool configIsBroken(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return false;
  std::ifstream file(path, std::ios::binary);
  net::quelta::zeph::message::ConfigApp config;
  return !config.ParseFromIstream(&file);
}

Hint brokenConfigHint(const std::string& app) {
  return {
      HintKind::kBrokenConfig, app, "",
      "config.bin is damaged: params holds what the host could make out, perhaps nothing. Write "
      "it anew, or remove it."};
}

}  // namespace morvik::devkit
