#include "support/system/log-socket.h"

#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "support/machine.h"

namespace morvik::test {
namespace {

constexpr const char* kNodes[] = {"null", "zero", "full", "random", "urandom", "tty"};
constexpr std::string_view kMarkIdent = "mark";

sockaddr_un addressOf(const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.native().size() >= sizeof address.sun_path) throw std::runtime_error("path too long");
  std::strcpy(address.sun_path, path.c_str());
  return address;
}

Descriptor datagramSocket() {
  Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (socket.get() < 0) throw std::system_error(errno, std::generic_category(), "socket");
  return socket;
}

Descriptor boundTo(const std::filesystem::path& path) {
  Descriptor socket = datagramSocket();
  const sockaddr_un address = addressOf(path);
  if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    throw std::system_error(errno, std::generic_category(), path);
  return socket;
}

// "<PRI>Mmm dd hh:mm:ss ident[pid]: text"
LogRecord parseRecord(const std::string& datagram) {
  LogRecord record;
  record.arrival = Clock::now();
  const int code = std::stoi(datagram.substr(1));
  record.facility = code & LOG_FACMASK;
  record.priority = LOG_PRI(code);
  const std::size_t date = datagram.find('>') + 1;
  const std::size_t ident = date + std::strlen("Mmm dd hh:mm:ss ");
  const std::size_t pid = datagram.find('[', ident);
  const std::size_t end = datagram.find("]: ", pid);
  if (end == std::string::npos) throw std::runtime_error("not a log record: " + datagram);
  record.ident = datagram.substr(ident, pid - ident);
  record.pid = std::stoi(datagram.substr(pid + 1));
  record.text = datagram.substr(end + std::strlen("]: "));
  return record;
}

bool isNews(std::string_view datagram) {
  constexpr std::string_view kNews[] = {
      "]: JSLOG: ", "]: running app: ", "]: end process: ", "AUTOKILL", " mark["};
  return std::ranges::any_of(
      kNews, [&](std::string_view news) { return datagram.find(news) != std::string_view::npos; });
}

}  // namespace

LogSocket::LogSocket(const std::filesystem::path& folder, bool onlyNews)
    : folder_(folder), devices_(folder / "dev"), onlyNews_(onlyNews) {
  for (const std::string node : kNodes) nodes_.emplace_back("/dev/" + node, devices_ / node);
  prepareNodes();
  reader_ = std::make_unique<BackgroundReader>(boundTo(folder_ / "log"),
                                               [this](std::string_view bytes) { take(bytes); });
}

void LogSocket::prepareNodes() const {
  std::filesystem::create_directories(devices_ / "shm");
  for (const auto& node : nodes_) std::ofstream(node.second).flush();
  std::filesystem::create_symlink(folder_ / "log", devices_ / "log");
  std::filesystem::create_symlink("/proc/self/fd", devices_ / "fd");
}

const char* LogSocket::enterNamespace() const {
  const char* failed = enterMountNamespace();
  if (failed != nullptr) return failed;
  for (const auto& [from, to] : nodes_)
    if (mount(from.c_str(), to.c_str(), nullptr, MS_BIND, nullptr) != 0) return from.c_str();
  if (mount(devices_.c_str(), "/dev", nullptr, MS_BIND | MS_REC, nullptr) != 0) return "/dev";
  return nullptr;
}

void LogSocket::take(std::string_view datagram) {
  if (datagram.empty() || (onlyNews_ && !isNews(datagram))) return;
  records_.change([record = parseRecord(std::string(datagram))](std::vector<LogRecord>& records) {
    records.push_back(record);
  });
}

LogRecord LogSocket::await(std::string_view what, const LogMatcher& matches) const {
  std::size_t seen = 0;
  return awaitFrom(seen, what, matches);
}

LogRecord LogSocket::awaitFrom(std::size_t& seen, std::string_view what,
                               const LogMatcher& matches) const {
  const auto record = records_.await<LogRecord>([&](const std::vector<LogRecord>& records) {
    while (seen < records.size()) {
      const LogRecord& next = records[seen++];  // each record is looked at once
      if (matches(next)) return std::optional(next);
    }
    return std::optional<LogRecord>();
  });
  if (!record) throw std::runtime_error("never logged: " + std::string(what));
  return *record;
}

// Datagrams keep their order, so when a mark of our own has arrived, so has all before it.
std::vector<LogRecord> LogSocket::records() const {
  const std::string mark = std::to_string(++marks_);
  const std::string datagram = "<0>Jan  1 00:00:00 " + std::string(kMarkIdent) + "[0]: " + mark;
  const Descriptor sender = datagramSocket();
  const sockaddr_un address = addressOf(folder_ / "log");
  if (sendto(sender.get(), datagram.data(), datagram.size(), 0,
             reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0)
    throw std::system_error(errno, std::generic_category(), "log socket");
  await("mark " + mark,
        [&](const LogRecord& record) { return record.ident == kMarkIdent && record.text == mark; });
  std::vector<LogRecord> records = records_.snapshot();
  std::erase_if(records, [](const LogRecord& record) { return record.ident == kMarkIdent; });
  return records;
}

std::string describe(const std::vector<LogRecord>& records) {
  std::ostringstream lines;
  for (const LogRecord& record : records)
    lines << record.pid << " <" << record.priority << "> " << record.text << '\n';
  return lines.str();
}

}  // namespace morvik::test
