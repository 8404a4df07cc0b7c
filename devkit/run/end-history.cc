// One JSON file, replaced as a whole under a lock.
#include "run/end-history.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "device/json.h"
#include "device/owned.h"
#include "run/duration.h"
#include "run/file-descriptor.h"

namespace morvik::devkit {
namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr int kFormat = 1;
constexpr int kIndent = 2;
constexpr int kOwnerOnly = 0600;  // a log may hold what is nobody else's business

// Lets one program at a time in. Without a folder to lock in there is nothing to protect.
class FolderLock {
 public:
  explicit FolderLock(const std::string& folder)
      : file_(open((folder + "/ends.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly)) {
    while (file_.valid() && flock(file_.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
  }

 private:
  FileDescriptor file_;
};

Json jsonOf(const End& end) {
  const auto ms = [](TimePoint::duration time) {
    return std::chrono::duration_cast<Milliseconds>(time).count();
  };
  return {{"app", end.app},
          {"kind", nameOf(end.kind)},
          {"pid", end.pid},
          {"launched", isoTime(end.launchedAt)},
          {"ended", isoTime(end.endedAt)},
          {"afterMs", ms(end.endedAt - end.launchedAt)},
          {"state", end.state},
          {"status", end.status},
          {"sentence", end.sentence},
          {"cure", end.cure},
          {"lastLines", end.lastLines}};
}

std::optional<TimePoint> timeOf(const std::string& iso) {
  const GDate date(g_date_time_new_from_iso8601(iso.c_str(), nullptr));
  if (!date) return std::nullopt;
  const Milliseconds sinceSecond(g_date_time_get_microsecond(date.get()) / 1000);
  return TimePoint(std::chrono::seconds(g_date_time_to_unix(date.get())) + sinceSecond);
}

// Throws Json::exception where something is not as it should be.
End endOf(const Json& json) {
  End end;
  end.app = json.at("app").get<std::string>();
  end.kind = endKindOf(json.at("kind").get<std::string>());
  end.pid = json.at("pid").get<pid_t>();
  end.endedAt = timeOf(json.at("ended").get<std::string>()).value_or(TimePoint());
  end.launchedAt = end.endedAt - Milliseconds(json.at("afterMs").get<std::int64_t>());
  end.state = json.at("state").get<std::string>();
  end.status = json.at("status").get<std::string>();
  end.sentence = json.at("sentence").get<std::string>();
  end.cure = json.at("cure").get<std::string>();
  end.lastLines = json.at("lastLines").get<std::vector<std::string>>();
  return end;
}

// Nothing for a text that holds no ends.
std::optional<std::vector<End>> parse(const std::string& text) {
  try {
    const Json all = Json::parse(text);
    std::vector<End> ends;
    for (const Json& each : all.at("ends")) ends.push_back(endOf(each));
    return ends;
  } catch (const Json::exception&) {
    return std::nullopt;
  }
}

// A name beside the file that nothing has yet.
std::string spareName(const std::string& path) {
  std::string name = path + ".damaged";
  for (int number = 2; std::filesystem::exists(name); ++number) {
    name = path + ".damaged-" + std::to_string(number);
  }
  return name;
}

std::string moveAside(const std::string& path) {
  const std::string spare = spareName(path);
  std::error_code error;
  std::filesystem::rename(path, spare, error);
  if (error) return path + " is damaged, and cannot be moved aside: " + error.message();
  return path + " was damaged; it is now " + spare;
}

EndHistory::Content load(const std::string& path) {
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return {};
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!file) return {{}, path + " cannot be read: " + std::strerror(errno)};
  if (auto ends = parse(text)) return {std::move(*ends), ""};
  return {{}, moveAside(path)};
}

std::optional<std::string> store(const std::string& path, const std::string& text) {
  GErrorOwned error;
  const auto flags = static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT |
                                                        G_FILE_SET_CONTENTS_DURABLE);
  if (g_file_set_contents_full(path.c_str(), text.data(), static_cast<gssize>(text.size()), flags,
                               kOwnerOnly, error.out()) != FALSE) {
    return std::nullopt;
  }
  return std::string("this end is not kept: ") + error.text();
}

}  // namespace

std::string toJson(const std::vector<End>& ends) {
  Json all = {{"format", kFormat}, {"ends", Json::array()}};
  for (const End& end : ends) all["ends"].push_back(jsonOf(end));
  return all.dump(kIndent, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string EndHistory::usualFolder() {
  return GText(g_build_filename(g_get_user_state_dir(), "morvik", nullptr)).get();
}

EndHistory::Content EndHistory::read() const {
  const FolderLock lock(folder_);
  return load(path());
}

std::optional<std::string> EndHistory::add(const End& end) const {
  if (g_mkdir_with_parents(folder_.c_str(), S_IRWXU) != 0) {
    return "this end is not kept: " + folder_ + ": " + std::strerror(errno);
  }
  const FolderLock lock(folder_);
  Content content = load(path());
  content.ends.push_back(end);
  if (content.ends.size() > kEndsKept) content.ends.erase(content.ends.begin());
  if (auto trouble = store(path(), toJson(content.ends))) return trouble;
  if (content.trouble.empty()) return std::nullopt;
  return content.trouble;
}

}  // namespace morvik::devkit
