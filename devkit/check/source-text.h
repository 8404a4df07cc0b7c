// The bytes of an application's files, and what can be said of them before they are understood.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run/folder.h"

namespace morvik::devkit {

/// A file's bytes; nothing when it cannot be read or is larger than an application's memory.
std::optional<std::string> bytesOf(const std::filesystem::path& path);

/// A line of a text, counted from 1, without its end.
std::string lineOf(std::string_view text, int line);

/// Tells of a byte-order mark in front of a file.
void checkByteOrderMark(const std::string& file, const std::string& bytes,
                        std::vector<FolderTrouble>& findings);

/// Tells of a script's mark, of its first zero byte, unless that is told already, and of bytes that
/// are no UTF-8.
void checkSourceBytes(const std::string& file, const std::string& bytes,
                      std::vector<FolderTrouble>& findings);

/// Tells of what a script does not expect in a file that it reads as a text: Windows line ends, and
/// a zero byte.
void checkTextFile(const std::string& file, const std::string& bytes,
                   std::vector<FolderTrouble>& findings);

/// What the host takes of a script: without a mark, and up to the first zero byte.
std::string sourceIn(const std::string& bytes);

}  // namespace morvik::devkit
