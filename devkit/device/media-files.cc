// A picture and a recording, byte by byte, and those of the user's. Both were made by hand from
// their formats, since a tool's smallest file is larger, and checked with djpeg and `flac -t`.
#include "device/media-files.h"

#include <gio/gio.h>

#include <filesystem>
#include <memory>
#include <utility>

#include "device/owned.h"

namespace morvik::devkit {
namespace {

// A baseline JPEG of 8 x 8 pixels in the same grey: one quantization table, two Huffman tables with
// one code each, and a block of two codes, "no difference" and "end of block".
constexpr unsigned char kGreyPicture[] = {
    0xff, 0xd8, 0xff, 0xe0, 0x00, 0x10, 0x4a, 0x46, 0x49, 0x46, 0x00, 0x01, 0x01, 0x00, 0x00, 0x01,
    0x00, 0x01, 0x00, 0x00, 0xff, 0xdb, 0x00, 0x43, 0x00, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,
    0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,
    0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,
    0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10,
    0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0xff, 0xc0, 0x00, 0x0b, 0x08, 0x00, 0x08,
    0x00, 0x08, 0x01, 0x01, 0x11, 0x00, 0xff, 0xc4, 0x00, 0x14, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xff, 0xc4, 0x00, 0x14,
    0x10, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0xff, 0xda, 0x00, 0x08, 0x01, 0x01, 0x00, 0x00, 0x3f, 0x00, 0x3f, 0xff, 0xd9,
};

// Half a second of silence, 8000 samples a second of 16 bits: the stream's description with the
// checksum of its samples, and one frame that holds the constant 0 4000 times.
constexpr unsigned char kSilence[] = {
    0x66, 0x4c, 0x61, 0x43, 0x80, 0x00, 0x00, 0x22, 0x0f, 0xa0, 0x0f, 0xa0, 0x00, 0x00,
    0x0d, 0x00, 0x00, 0x0d, 0x01, 0xf4, 0x00, 0xf0, 0x00, 0x00, 0x0f, 0xa0, 0x58, 0x10,
    0x12, 0x49, 0xc7, 0x6b, 0x73, 0x5b, 0xd7, 0x4c, 0xe5, 0x30, 0x2b, 0x00, 0x93, 0x17,
    0xff, 0xf8, 0x74, 0x08, 0x00, 0x0f, 0x9f, 0x82, 0x00, 0x00, 0x00, 0x52, 0xe3,
};

namespace fs = std::filesystem;

fs::path wholePath(const std::string& path) {
  if (path.starts_with("~/")) return fs::path(g_get_home_dir()) / path.substr(2);
  std::error_code ignored;
  return fs::absolute(path, ignored);
}

// Before it is opened: a pipe would never end.
std::string troubleWith(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (error && !fs::exists(status)) return error.message();
  if (!fs::is_regular_file(status)) return "is no file";
  const auto size = fs::file_size(path, error);
  if (error) return error.message();
  if (size == 0) return "is empty";
  if (size <= kLargestMediaFile) return "";
  return "has " + std::to_string(size) + " bytes, and " + std::to_string(kLargestMediaFile) +
         " are the most";
}

std::string read(const fs::path& path, std::string& bytes) {
  if (std::string trouble = troubleWith(path); !trouble.empty()) return trouble;
  char* contents = nullptr;
  gsize size = 0;
  GErrorOwned error;
  if (g_file_get_contents(path.c_str(), &contents, &size, error.out()) == FALSE) {
    return error.text();
  }
  const GText owned(contents);
  bytes.assign(contents, size);
  return "";
}

}  // namespace

constinit const MediaKind kPicture{"/tmp/picture.jpg", "JPEG", "\xff\xd8\xff", kGreyPicture};
constinit const MediaKind kRecording{"/tmp/record.flac", "FLAC", "fLaC", kSilence};

std::optional<ChosenFile> readMedia(const MediaKind& kind, const std::string& path,
                                    std::string& trouble) {
  const fs::path whole = wholePath(path);
  std::string bytes;
  trouble = read(whole, bytes);
  if (trouble.empty() && !bytes.starts_with(kind.begin)) {
    trouble = std::string("is no ") + kind.format + " file, and applications expect one";
  }
  if (trouble.empty()) {
    return ChosenFile{whole.string(), std::make_shared<const std::string>(std::move(bytes))};
  }
  trouble.insert(0, whole.string() + ": ");
  return std::nullopt;
}

std::optional<std::string> writeMedia(const MediaKind& kind, const ChosenFile& chosen) {
  const char* bytes =
      chosen.bytes ? chosen.bytes->data() : reinterpret_cast<const char*>(kind.usual.data());
  const std::size_t size = chosen.bytes ? chosen.bytes->size() : kind.usual.size();
  GErrorOwned error;
  // Into a file beside it and then into its place: nobody reads half a file.
  if (g_file_set_contents(kind.path, bytes, static_cast<gssize>(size), error.out()) == FALSE) {
    return error.text();
  }
  return std::nullopt;
}

}  // namespace morvik::devkit
