// What passed between applications and a device, kept in a file; docs/recording.md tells its form.
#pragma once

#include <zeph-message.pb.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "device/work.h"

namespace morvik::devkit {

/// The version of the form that is written, and the highest that is read.
inline constexpr int kRecordingVersion = 1;

/// One thing of a conversation, in the order in which it happened.
struct Recorded {
  enum class Kind {
    kRequest,  ///< a message of the application
    kMessage,  ///< a message to it
    kDrop,     ///< the device ended the connection
  };
  Kind kind;
  int line;                      ///< of the file, from 1
  std::chrono::milliseconds at;  ///< since the recording began
  net::quelta::zeph::message::ZephMsg message = {};
};

/// All that passed over one connection.
struct Conversation {
  AppNumber application;  ///< its number in the recording
  int line;               ///< where it came
  std::chrono::milliseconds came;
  std::vector<Recorded> passed = {};
};

struct Recording {
  std::string file;                         ///< as its reader named it
  std::vector<Conversation> conversations;  ///< in the order in which the applications came
  std::string warning;                      ///< a last line that was cut off, in words, or nothing

  /// Reads a file. Nothing when it is no recording, or a damaged one, with "FILE:LINE: reason" in
  /// `trouble`. A last line without an end is that of a tool that was killed: it is left out, with
  /// a warning, unless it is whole.
  static std::optional<Recording> read(const std::string& file, std::string& trouble);
  /// The same of a text.
  static std::optional<Recording> parse(const std::string& file, const std::string& text,
                                        std::string& trouble);
};

}  // namespace morvik::devkit
