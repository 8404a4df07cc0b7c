// Reading of script sources. There is no script exception for a missing source: it is fatal.
#include "host/source.h"

#include <glib.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "host/app-path.h"
#include "host/owned.h"
#include "host/script.h"

namespace morvik {
namespace {

// The script cannot catch this: half an application is worth nothing, and the log has the reason.
[[noreturn]] void dieOf(int error) { g_error("%s", std::strerror(error)); }

}  // namespace

// That there is no such file is told first, then why it cannot be opened.
std::string readSource(const std::string& path) {
  const File file(std::fopen(path.c_str(), "r"));
  const int openError = errno;
  struct stat facts {};
  if (stat(path.c_str(), &facts) != 0) dieOf(errno);
  if (!file) dieOf(openError);
  std::string bytes(static_cast<std::size_t>(facts.st_size), '\0');
  const std::size_t length = std::fread(bytes.data(), 1, bytes.size(), file.get());
  if (std::ferror(file.get()) != 0) dieOf(errno);  // a directory opens and does not read
  bytes.resize(length);
  return bytes;
}

v8::Local<v8::String> loadSource(const MorvikData& instance, const char* file) {
  const std::string path = appPath(instance, file, kStartPathSize);
  g_debug("loading source: %s", path.c_str());
  const std::string bytes = readSource(path);
  return toScript(bytes.c_str());  // a source ends at its first zero byte
}

}  // namespace morvik
