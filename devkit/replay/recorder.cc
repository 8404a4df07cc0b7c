// Events as lines of a file.
#include "replay/recorder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <nlohmann/json.hpp>

#include "device/event-json.h"
#include "replay/recording.h"

namespace morvik::devkit {

std::unique_ptr<Recorder> Recorder::begin(const std::string& file, const About& about,
                                          Events& events, std::string& trouble) {
  const int descriptor =
      open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor < 0) {
    trouble = file + (errno == EEXIST ? " is there already, and stays as it is: choose another name"
                                      : ": " + std::string(std::strerror(errno)));
    return nullptr;
  }
  return std::unique_ptr<Recorder>(new Recorder(fdopen(descriptor, "w"), about, events));
}

Recorder::Recorder(FILE* file, const About& about, Events& events)
    : file_(file), began_(about.began), events_(events) {
  write(textOf({{"recording", "morvik-dev"},
                {"version", kRecordingVersion},
                {"time", began_.count()},
                {"device", about.isReal ? "real" : "virtual"}}));
  Observer& observer = *this;
  hears_.emplace(events, observer);
}

Recorder::~Recorder() {
  hears_.reset();
  if (file_ != nullptr) std::fclose(file_);
}

// The time comes first, and the device's own number of the event is left out.
void Recorder::happened(const Event& event) {
  Json line{{"at", std::max<std::int64_t>((event.time - began_).count(), 0)}};
  const Json told = toJson(event);
  for (const auto& [name, value] : told.items()) {
    if (name != "number" && name != "time") line[name] = value;
  }
  write(textOf(line));
}

void Recorder::write(const std::string& line) {
  if (file_ == nullptr) return;
  const bool written = std::fwrite(line.data(), 1, line.size(), file_) == line.size() &&
                       std::fputc('\n', file_) != EOF && std::fflush(file_) == 0;
  if (written) return;
  const std::string why = std::strerror(errno);
  std::fclose(std::exchange(file_, nullptr));
  events_.raise(Noted{"the recording ends here: " + why});
}

}  // namespace morvik::devkit
