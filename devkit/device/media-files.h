// What the camera and the microphone leave behind. Applications know the paths, and read the files
// through them.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "device/state.h"

namespace morvik::devkit {

/// One kind of file.
struct MediaKind {
  const char* path;                      ///< where it is left
  const char* format;                    ///< "JPEG"
  std::string_view begin;                ///< of every file of that format
  std::span<const unsigned char> usual;  ///< a small valid file
};

extern const MediaKind kPicture;
extern const MediaKind kRecording;

/// A file of the user's may have so many bytes: it is kept in memory.
inline constexpr std::size_t kLargestMediaFile = std::size_t{16} * 1024 * 1024;

/// Reads a file of the user's, which then may change or go. "~/" in front is the user's own folder.
/// Nothing when there is none of that kind, with the reason in `trouble`.
std::optional<ChosenFile> readMedia(const MediaKind& kind, const std::string& path,
                                    std::string& trouble);

/// Puts the chosen file in place, or the usual one when none is chosen. Gives the reason when it
/// cannot.
[[nodiscard]] std::optional<std::string> writeMedia(const MediaKind& kind,
                                                    const ChosenFile& chosen);

}  // namespace morvik::devkit
