// Stands in front of the C library and GLib in a morvikvm under test: its applications have the
// time that the runner of the tests tells them, and wait for that to go on as soon as there is
// nothing to do for them. So ten seconds pass in a moment, and never overtake what is under way.
//
// A clock stands still while the application works. One that works for a good while, or waits for
// somebody else, such as a server on the web, gets the time that really passes from then on, so
// that a script that waits for a later hour comes to its end.
#include <dlfcn.h>
#include <glib.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "test/clock-messages.h"

namespace {

using morvik::devkit::ClockOrder;
using morvik::devkit::ClockReport;
using morvik::devkit::kNever;

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kMicrosecond = 1000;
constexpr std::int64_t kPatience = kSecond / 5;  // of real time, until the clock goes on by itself
constexpr std::int64_t kBetweenReports = kSecond / 100;

// Past the library, whose functions are the ones below.
std::int64_t realTime(clockid_t clock) {
  timespec time{};
  syscall(SYS_clock_gettime, clock, &time);
  return time.tv_sec * kSecond + time.tv_nsec;
}

std::int64_t ticks() { return realTime(CLOCK_MONOTONIC); }

// A timer that was given to GLib, which does not tell when it is due.
struct Timer {
  guint interval;
  GSourceFunc function;
  gpointer data;
  GDestroyNotify notify;
  std::int64_t due;  // microseconds, by GLib's clock
};

// What the application's process has; in the launcher, which waits for lines alone, it does
// nothing.
struct Clock {
  int socket = -1;
  ClockOrder order{};
  std::int64_t flowsFrom = 0;   // in real ticks
  std::int64_t ticksAhead = 0;  // what makes monotonic time of the time of day
  std::int64_t reportedAt = 0;  // in real ticks, that it works
  std::vector<Timer*> timers;
};

// For the life of the process: the library's functions are called to its very end.
Clock& clockOfProcess() {
  static Clock& keptForLife = *new Clock;
  return keptForLife;
}

std::int64_t timeOfDay() {
  const Clock& clock = clockOfProcess();
  if (clock.socket < 0) return realTime(CLOCK_REALTIME);
  return clock.order.time + std::max<std::int64_t>(0, ticks() - clock.flowsFrom);
}

std::int64_t monotonicTime() {
  const Clock& clock = clockOfProcess();
  return clock.socket < 0 ? ticks() : timeOfDay() + clock.ticksAhead;
}

// Whoever gives the time has gone: so does what was under test.
[[noreturn]] void endWithRunner() { _exit(1); }

void tell(bool atRest, std::int64_t next) {
  Clock& clock = clockOfProcess();
  const ClockReport report{clock.order.number, timeOfDay(), next, atRest ? 1U : 0U};
  if (send(clock.socket, &report, sizeof report, MSG_NOSIGNAL) < 0) endWithRunner();
}

// A clock never goes back.
void hearOrder() {
  Clock& clock = clockOfProcess();
  ClockOrder order{};
  if (recv(clock.socket, &order, sizeof order, 0) != sizeof order) endWithRunner();
  order.time = std::max(order.time, timeOfDay());
  clock.order = order;
  clock.flowsFrom = std::max(clock.flowsFrom, ticks());
}

std::int64_t nextTimer() {
  const Clock& clock = clockOfProcess();
  std::int64_t next = kNever;
  for (const Timer* timer : clock.timers) {
    next = std::min(next, timer->due * kMicrosecond - clock.ticksAhead);
  }
  return next;
}

// Both sides wait for acknowledgements before they believe that all has arrived, and the system
// puts them off.
void acknowledge(const std::vector<pollfd>& descriptors) {
  const int yes = 1;
  for (const pollfd& one : descriptors) {
    setsockopt(one.fd, IPPROTO_TCP, TCP_QUICKACK, &yes, sizeof yes);
  }
}

// What the runner has not yet got may change what it wants.
bool isSending(const std::vector<pollfd>& descriptors) {
  return std::ranges::any_of(descriptors, [](const pollfd& one) {
    int unsent = 0;
    return ioctl(one.fd, SIOCOUTQ, &unsent) == 0 && unsent > 0;
  });
}

int look(std::vector<pollfd>& descriptors, int milliseconds) {
  return poll(descriptors.data(), descriptors.size(), milliseconds);
}

// Works without a pause, as a timer of no time does: then the real time counts.
void tellOfWork() {
  Clock& clock = clockOfProcess();
  pollfd orders{clock.socket, POLLIN, 0};
  if (poll(&orders, 1, 0) > 0) return hearOrder();
  const std::int64_t now = ticks();
  if (now < clock.flowsFrom || now - clock.reportedAt < kBetweenReports) return;
  clock.reportedAt = now;
  tell(/*atRest=*/false, timeOfDay());
}

// What can be read at once goes to the application before it is asked to believe in a later time.
// Gives as poll does; 0 when it is later than before.
int rest(std::vector<pollfd>& descriptors, std::int64_t latest) {
  constexpr int kMoment = 1;
  acknowledge(descriptors);
  int ready = look(descriptors, 0);
  while (ready == 0 && isSending(descriptors)) ready = look(descriptors, kMoment);
  const std::int64_t next = std::min(latest, nextTimer());
  if (ready != 0 || next <= timeOfDay()) {
    tellOfWork();
    return ready;
  }
  tell(/*atRest=*/true, next);
  descriptors.push_back({clockOfProcess().socket, POLLIN, 0});
  look(descriptors, -1);
  const bool isLater = descriptors.back().revents != 0;
  descriptors.pop_back();
  clockOfProcess().flowsFrom = ticks() + kPatience;
  if (isLater) hearOrder();
  return static_cast<int>(
      std::ranges::count_if(descriptors, [](const pollfd& one) { return one.revents != 0; }));
}

// GLib waits here, in an application that is not connected. One that is looks for messages in each
// turn, and here only in passing.
gint restInLoop(GPollFD* descriptors, guint count, gint timeout) {
  if (timeout == 0) {
    tellOfWork();
    return g_poll(descriptors, count, 0);
  }
  std::vector<pollfd> all;
  for (guint i = 0; i < count; ++i) {
    all.push_back({descriptors[i].fd, static_cast<short>(descriptors[i].events), 0});
  }
  constexpr std::int64_t kMillisecond = 1'000'000;
  const std::int64_t latest = timeout < 0 ? kNever : timeOfDay() + timeout * kMillisecond;
  const int ready = rest(all, latest);
  for (guint i = 0; i < count; ++i) descriptors[i].revents = static_cast<gushort>(all[i].revents);
  return ready;
}

int connectToRunner(const char* path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
  const int socket = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    endWithRunner();
  }
  return socket;
}

// An application is a fork of its launcher.
void beginInApplication() {
  Clock& clock = clockOfProcess();
  const char* path = std::getenv(morvik::devkit::kClockVariable);
  if (path == nullptr) endWithRunner();
  const int socket = connectToRunner(path);
  ClockOrder order{};
  if (recv(socket, &order, sizeof order, 0) != sizeof order) endWithRunner();
  // In whole microseconds, which GLib counts: what it rounds down would be due too early.
  clock.ticksAhead = (ticks() - order.time) / kMicrosecond * kMicrosecond;
  clock.order = order;
  clock.flowsFrom = ticks() + kPatience;
  clock.socket = socket;
  g_main_context_set_poll_func(nullptr, restInLoop);
}

[[gnu::constructor]] void begin() {
  if (std::getenv(morvik::devkit::kClockVariable) != nullptr) {
    pthread_atfork(nullptr, nullptr, beginInApplication);
  }
}

gboolean fire(gpointer data) {
  auto* timer = static_cast<Timer*>(data);
  const gboolean stays = timer->function(timer->data);
  timer->due = g_source_get_time(g_main_current_source()) + timer->interval * kMicrosecond;
  return stays;
}

void forget(gpointer data) {
  auto* timer = static_cast<Timer*>(data);
  std::erase(clockOfProcess().timers, timer);
  if (timer->notify != nullptr) timer->notify(timer->data);
  delete timer;
}

timespec inParts(std::int64_t time) { return {time / kSecond, time % kSecond}; }

// The host waits so for its next message.
bool isWaitForMessage(int count, const fd_set* reading, const fd_set* writing,
                      const timeval* timeout) {
  constexpr suseconds_t kHostsPatience = 1000;
  return clockOfProcess().socket >= 0 && reading != nullptr && writing == nullptr && count > 0 &&
         timeout != nullptr && timeout->tv_sec == 0 && timeout->tv_usec == kHostsPatience;
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const bool isTimeOfDay = clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
  const bool isMonotonic = clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_RAW ||
                           clock == CLOCK_MONOTONIC_COARSE || clock == CLOCK_BOOTTIME;
  if (!isTimeOfDay && !isMonotonic) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  }
  *time = inParts(isTimeOfDay ? timeOfDay() : monotonicTime());
  return 0;
}

int gettimeofday(timeval* time, void* /*zone*/) noexcept {
  const timespec parts = inParts(timeOfDay());
  *time = {parts.tv_sec, parts.tv_nsec / kMicrosecond};
  return 0;
}

time_t time(time_t* where) noexcept {
  const time_t now = timeOfDay() / kSecond;
  if (where != nullptr) *where = now;
  return now;
}

int select(int count, fd_set* reading, fd_set* writing, fd_set* failing, timeval* timeout) {
  if (!isWaitForMessage(count, reading, writing, timeout)) {
    static auto* const real = next<decltype(select)>("select");
    return real(count, reading, writing, failing, timeout);
  }
  std::vector<pollfd> descriptors;
  for (int fd = 0; fd < count; ++fd) {
    if (FD_ISSET(fd, reading)) descriptors.push_back({fd, POLLIN, 0});
  }
  const int ready = rest(descriptors, kNever);
  for (const pollfd& one : descriptors) {
    if (one.revents == 0) FD_CLR(one.fd, reading);
  }
  return ready;
}

guint g_timeout_add_full(gint priority, guint interval, GSourceFunc function, gpointer data,
                         GDestroyNotify notify) {
  static auto* const real = next<decltype(g_timeout_add_full)>("g_timeout_add_full");
  auto* timer =
      new Timer{interval, function, data, notify, g_get_monotonic_time() + interval * kMicrosecond};
  clockOfProcess().timers.push_back(timer);
  return real(priority, interval, fire, timer, forget);
}

guint g_timeout_add(guint interval, GSourceFunc function, gpointer data) {
  return g_timeout_add_full(G_PRIORITY_DEFAULT, interval, function, data, nullptr);
}

// The lines come by standard error; nobody's system log is to hear of tests.
void syslog(int /*priority*/, const char* /*format*/, ...) {}
void __syslog_chk(int /*priority*/, int /*flag*/, const char* /*format*/, ...) {}
int sendmmsg(int /*socket*/, mmsghdr* /*records*/, unsigned count, int /*flags*/) {
  return static_cast<int>(count);
}
}
