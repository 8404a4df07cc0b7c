// The checks before a launch, one function for each file.
#include "run/folder.h"

#include <libxml/parser.h>
#include <zeph-message.pb.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;
namespace zeph = net::quelta::zeph::message;

using Troubles = std::vector<FolderTrouble>;
using XmlParser = std::unique_ptr<xmlParserCtxt, Release<xmlFreeParserCtxt>>;
using XmlDocument = std::unique_ptr<xmlDoc, Release<xmlFreeDoc>>;

// The script engine's heap. A source that is larger cannot become a script's text.
constexpr std::uintmax_t kLargestFile = 10485760;

FolderTrouble inFile(const char* kind, const char* file, std::string text, bool refuses = true) {
  return {.file = file, .text = std::move(text), .refuses = refuses, .kind = kind};
}

FolderTrouble ofFolder(std::string text) { return inFile("no-folder", "", std::move(text)); }

// The file's bytes; what keeps it from being read goes to the troubles.
std::optional<std::string> readFile(const fs::path& folder, const char* name, Troubles& troubles) {
  const fs::path path = folder / name;
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  if (!error && size > kLargestFile) {
    troubles.push_back(inFile("too-large", name,
                              "has " + std::to_string(size) + " bytes, more than the " +
                                  std::to_string(kLargestFile) +
                                  " bytes of an application's memory"));
    return std::nullopt;
  }
  char* bytes = nullptr;
  gsize length = 0;
  GErrorOwned failure;
  if (g_file_get_contents(path.c_str(), &bytes, &length, failure.out()) == FALSE) {
    troubles.push_back(
        inFile("unreadable", name,
               error ? error.message() : "cannot be read: " + std::string(failure.text())));
    return std::nullopt;
  }
  const GText owned(bytes);
  return std::string(bytes, length);
}

bool isThere(const fs::path& path) {
  std::error_code error;
  return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

int lineAt(const std::string& text, std::size_t at) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(at);
  return 1 + static_cast<int>(std::count(text.begin(), end, '\n'));
}

// MorvikVM takes a source for a text that ends at its first zero byte.
void checkMainScript(const fs::path& folder, Troubles& troubles) {
  if (!isThere(folder / "main.js")) {
    troubles.push_back(inFile("missing", "main.js",
                              "is missing: it is the script that an application starts with"));
    return;
  }
  const auto source = readFile(folder, "main.js", troubles);
  const std::size_t zero = source ? source->find('\0') : std::string::npos;
  if (zero == std::string::npos) return;
  auto trouble =
      inFile("zero-byte", "main.js", "holds a zero byte, and nothing behind it is read", false);
  trouble.line = lineAt(*source, zero);
  troubles.push_back(std::move(trouble));
}

// The first error is the author's; those behind it mostly follow from it.
void keepFirstError(void* parser, xmlErrorPtr error) {
  auto& trouble = *static_cast<FolderTrouble*>(static_cast<xmlParserCtxt*>(parser)->_private);
  if (trouble.line > 0 || error->level < XML_ERR_ERROR || error->message == nullptr) return;
  trouble.line = error->line;
  trouble.column = error->int2;
  trouble.text += ": " + std::string(error->message);
  while (trouble.text.ends_with('\n')) trouble.text.pop_back();
}

// Read as MorvikVM reads it: without a schema, and nothing from elsewhere.
bool isWellFormed(const std::string& text, FolderTrouble& trouble) {
  constexpr int kSilent = XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET;
  const XmlParser parser(xmlNewParserCtxt());
  parser->_private = &trouble;
  parser->sax->serror = keepFirstError;
  const XmlDocument document(xmlCtxtReadMemory(parser.get(), text.data(),
                                               static_cast<int>(text.size()), "descriptor.xml",
                                               nullptr, kSilent));
  return document != nullptr;
}

// What the bytes begin with. The XML library would unpack both by itself, in a program that leaves
// the reading of the file to it.
const char* compressionOf(const std::string& bytes) {
  if (bytes.starts_with("\x1f\x8b")) return "gzip";
  return bytes.starts_with(
             "\xfd"
             "7zXZ")
             ? "xz"
             : nullptr;
}

// What MorvikVM refuses before it looks at an element.
std::optional<FolderTrouble> unreadDescriptor(const std::string& bytes) {
  if (const char* compression = compressionOf(bytes)) {
    auto trouble = inFile(
        "compressed", "descriptor.xml",
        std::string("is compressed with ") + compression + ", which MorvikVM does not unpack");
    trouble.line = 1;
    return trouble;
  }
  if (bytes.size() <= kLargestDescriptor) return std::nullopt;
  auto trouble = inFile("too-large", "descriptor.xml",
                        "has " + std::to_string(bytes.size()) + " bytes, and MorvikVM reads no " +
                            "descriptor of more than " + std::to_string(kLargestDescriptor));
  trouble.line = lineAt(bytes, kLargestDescriptor);
  return trouble;
}

void checkDescriptor(const fs::path& folder, Troubles& troubles) {
  if (!isThere(folder / "descriptor.xml")) {
    troubles.push_back(
        inFile("missing", "descriptor.xml", "is missing: it lists what the application may use"));
    return;
  }
  const auto text = readFile(folder, "descriptor.xml", troubles);
  if (auto unread = text ? unreadDescriptor(*text) : std::nullopt) {
    troubles.push_back(std::move(*unread));
    return;
  }
  auto trouble = inFile("not-xml", "descriptor.xml", "is not well-formed XML");
  if (text && !isWellFormed(*text, trouble)) troubles.push_back(std::move(trouble));
}

// MorvikVM takes of a damaged one what it can get.
void checkParameters(const fs::path& folder, Troubles& troubles) {
  if (!isThere(folder / "config.bin")) return;
  const auto bytes = readFile(folder, "config.bin", troubles);
  if (!bytes) return;
  zeph::ConfigApp config;
  if (!config.ParsePartialFromString(*bytes)) {
    troubles.push_back(inFile("config-damaged", "config.bin",
                              "is damaged: `params` has only what stands before the damage",
                              false));
  }
}

std::optional<FolderTrouble> checkPlace(const fs::path& folder) {
  std::error_code error;
  const fs::file_status status = fs::status(folder, error);
  if (!fs::exists(status)) return ofFolder("there is no such folder");
  if (!fs::is_directory(status)) return ofFolder("this is no folder");
  const fs::directory_iterator entries(folder, error);
  if (error) return ofFolder("cannot be read: " + error.message());
  return std::nullopt;
}

}  // namespace

std::string inWords(const FolderTrouble& trouble) {
  std::string words = trouble.file;
  if (trouble.line > 0) words += ":" + std::to_string(trouble.line);
  if (trouble.line > 0 && trouble.column > 0) words += ":" + std::to_string(trouble.column);
  return words.empty() ? trouble.text : words + ": " + trouble.text;
}

std::string inWordsWithCure(const FolderTrouble& trouble) {
  return trouble.cure.empty() ? inWords(trouble) : inWords(trouble) + ". " + trouble.cure;
}

std::vector<FolderTrouble> checkFolder(const fs::path& folder) {
  if (auto trouble = checkPlace(folder)) return {std::move(*trouble)};
  Troubles troubles;
  checkMainScript(folder, troubles);
  checkDescriptor(folder, troubles);
  checkParameters(folder, troubles);
  return troubles;
}

bool isTestScript(const std::filesystem::path& file) {
  const std::string name = file.filename();
  return name == "test.js" || name.ends_with(".test.js");
}

bool refusesLaunch(const std::vector<FolderTrouble>& troubles) {
  return std::any_of(troubles.begin(), troubles.end(),
                     [](const FolderTrouble& trouble) { return trouble.refuses; });
}

}  // namespace morvik::devkit
