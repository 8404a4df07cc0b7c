// What the camera and the microphone leave behind. Applications know the paths, and read the files
// through them.
#pragma once

#include <optional>
#include <string>

namespace morvik::devkit {

inline constexpr const char* kPicturePath = "/tmp/picture.jpg";
inline constexpr const char* kRecordingPath = "/tmp/record.flac";

/// Puts a small valid JPEG or FLAC in place. Gives the reason when it cannot.
[[nodiscard]] std::optional<std::string> writePicture();
[[nodiscard]] std::optional<std::string> writeRecording();

}  // namespace morvik::devkit
