// Writes what passes to a file, as it passes.
#pragma once

#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "device/events.h"

namespace morvik::devkit {

/// Credentials are left out: see device/secrets.h. Each line is in the file at once, so that a
/// recording is whole up to the end of a tool that is killed.
class Recorder : private Observer {
 public:
  /// What is recorded, for the first line.
  struct About {
    std::chrono::milliseconds began;  ///< by the clock of the device
    bool isReal = false;              ///< a real device behind the relay
  };

  /// Makes the file, which only its owner can read; one that is there stays as it is. The events
  /// must outlive the recorder. Null with the reason in `trouble`.
  static std::unique_ptr<Recorder> begin(const std::string& file, const About& about,
                                         Events& events, std::string& trouble);
  ~Recorder() override;
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

 private:
  Recorder(FILE* file, const About& about, Events& events);
  void happened(const Event& event) override;
  void write(const std::string& line);

  FILE* file_;  // null once a line could not be written
  const std::chrono::milliseconds began_;
  Events& events_;
  std::optional<Observation> hears_;
};

}  // namespace morvik::devkit
