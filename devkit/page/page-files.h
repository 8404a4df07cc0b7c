// The files that a browser gets. They are part of the program, and no others are ever given.
#pragma once

#include <glib.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/owned.h"

namespace morvik::devkit {

using GBytesOwned = std::unique_ptr<GBytes, Release<g_bytes_unref>>;

struct PageFile {
  GBytesOwned content;
  const char* type;  // as Content-Type tells it; lives for ever
};

/// The file of that name, such as "index.html"; the empty name means that one too. Nothing when the
/// page has no such file.
std::optional<PageFile> pageFile(std::string_view name);

/// The names of its modules of JavaScript.
std::vector<std::string> pageModules();

}  // namespace morvik::devkit
