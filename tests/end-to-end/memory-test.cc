// The limit on an application's memory: whatever a script fills it with, its application ends with
// words for it or goes on, and nobody else is harmed.
#ifndef MORVIK_PROGRAMS_ARE_SANITIZED  // there the limit does not hold: the shadow is data too
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <syslog.h>

#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

constexpr rlim_t kMebibyte = 1 << 20;

// The limit is one of 256 MiB on data. What a process also has in memory of shared libraries, and
// of its stack, stands beside it.
constexpr long kMostMebibytes = 300;

// Whether the limit ends the application or the script goes on, with or without an exception.
enum class Then { kEnds, kGoesOn };

struct Hostile {
  std::string name;
  std::string script;
  Then then = Then::kEnds;
};

void PrintTo(const Hostile& row, std::ostream* stream) { *stream << row.name; }

// One entity of 100 KB, named ten thousand times.
const std::string kEntityBomb =
    "launchType.rawSemantic = '<!DOCTYPE a [<!ENTITY b \"' + 'x'.repeat(1e5) + '\">]><a>' +"
    " '&b;'.repeat(1e4) + '</a>'; launchType.semantic";

// Each of them takes memory on a road of its own.
const std::vector<Hostile> kHostile{
    // Beside the heap in the engine: its parsers, its compilers, its internationalisation.
    {"deepJson", "JSON.parse('['.repeat(1e8))"},
    {"flatEval", "eval('1;'.repeat(1e8))"},
    {"longSum", "eval('a+'.repeat(1e7) + 'a')"},
    {"alternatives", "new RegExp('a|'.repeat(1e7)).test('b')"},
    {"dateFormats", "var all = []; for (;;) all.push(new Intl.DateTimeFormat())"},
    {"numberFormats", "var all = []; for (;;) all.push(new Intl.NumberFormat())"},
    {"segmenters", "var all = []; for (;;) all.push(new Intl.Segmenter())"},
    {"relativeTimes", "var all = []; for (;;) all.push(new Intl.RelativeTimeFormat())"},
    {"normalForm", "'\\u00e9'.repeat(1e8).normalize('NFD')"},
    {"escapedText", "encodeURIComponent('\\u1234'.repeat(5e7))"},
    // On its way to the host, and in the host.
    {"signedText", "signHMACSHA1('x'.repeat(1e8), 'k')"},
    {"longestSignedText", "signHMACSHA1('x'.repeat(5e8), 'k')"},
    {"writtenText", "file.write('a', 'x'.repeat(1e8))"},
    {"longestWrittenText", "file.write('a', 'x'.repeat(5e8))"},
    {"loggedText", "log('x'.repeat(1e8))"},
    {"longestLoggedText", "log('x'.repeat(5e8))"},
    {"readText", "file.write('b', 'a'.repeat(8e7)); file.read('b').text; file.read('b').text"},
    {"included", "file.write('b', 'a+'.repeat(2e7)); include('b')"},
    // In the libraries.
    {"spokenText", "morvik.tts.start('x'.repeat(5e7))"},
    {"playedSound", "morvik.multimedia.play('./' + 'x'.repeat(1e8))"},
    {"longUrl", "http.get('http://127.0.0.1:1/' + 'x'.repeat(7e7))"},
    {"longBody", "http.post('http://127.0.0.1:1/', {a: '%'.repeat(5e7)})"},
    {"entityBomb", kEntityBomb, Then::kGoesOn},
    // Within the heap, for comparison.
    {"sortedArray", "new Array(3e7).fill(1).sort()"},
    {"rejections", "for (;;) Promise.reject(1)"},
    {"thrownText", "throw 'x'.repeat(2e8)", Then::kGoesOn},
    {"longBuffer", "new ArrayBuffer(5e8)", Then::kGoesOn},
};

class MemoryTest : public DeviceTest {
 protected:
  // An application that runs the script when it is granted interactive mode.
  Guest guestThat(const std::string& script) {
    apps.app("hostile", {"tts", "http", "multimedia"},
             prelude() + "morvik.connect(HOST, PORT); morvik.start(function() { try { " + script +
                 "; } catch (e) {} log('goes on'); exit(); }, {});");
    Guest guest{launch("hostile ASR;hello;text"), server.accept(), {}};
    guest.start = guest.device.receive();
    return guest;
  }

  struct End {
    Exit exit;
    long mostMebibytes;
  };

  // The end of an application that the launcher has left behind.
  static End endOf(const App& app) {
    HostProcess::waitUntilEnded(app.pid());
    int status = 0;
    rusage usage{};
    EXPECT_EQ(wait4(app.pid(), &status, WNOHANG, &usage), app.pid());
    return {WIFSIGNALED(status) ? killedBy(WTERMSIG(status)) : exited(WEXITSTATUS(status)),
            usage.ru_maxrss / 1024};
  }

  static void expectEndedForMemory(const App& app, const Exit& exit) {
    EXPECT_EQ(exit, killedBy(SIGTRAP));
    const LogRecord last = app.records().back();
    EXPECT_EQ(last.priority, LOG_DEBUG);
    EXPECT_THAT(last.text,
                AnyOf(HasSubstr("script engine out of memory: "), HasSubstr("failed to allocate")));
  }

  static rlimit limitOf(pid_t process) {
    rlimit limit{};
    prlimit(process, RLIMIT_DATA, nullptr, &limit);
    return limit;
  }

  // Gives the launcher a limit, as whoever starts it may do.
  void limitHost(rlim_t bytes) {
    const rlimit limit{bytes, RLIM_INFINITY};
    ASSERT_EQ(prlimit(host().pid(), RLIMIT_DATA, &limit, nullptr), 0);
  }
};

class HostileScriptTest : public MemoryTest, public testing::WithParamInterface<Hostile> {};

TEST_P(HostileScriptTest, staysWithinItsMemory) {
  Guest guest = guestThat(GetParam().script);
  host().leaveApps();
  guest.grant();
  const End end = endOf(guest.app);
  EXPECT_LT(end.mostMebibytes, kMostMebibytes);
  RecordProperty("peak_mebibytes", static_cast<int>(end.mostMebibytes));
  EXPECT_EQ(host().output().awaitEnd(), "");
  if (GetParam().then == Then::kEnds) return expectEndedForMemory(guest.app, end.exit);
  EXPECT_EQ(end.exit, exited(0));
  EXPECT_EQ(guest.app.loggedUntil("goes on"), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Memory, HostileScriptTest, testing::ValuesIn(kHostile),
                         [](const auto& row) { return row.param.name; });

TEST_F(MemoryTest, anEndForWantOfMemoryHarmsNobodyElse) {
  Guest neighbour = invite("log('alive');");
  Guest guest = guestThat("JSON.parse('['.repeat(1e8))");
  guest.grant();
  waitUntilReaped(guest.app, 1);
  neighbour.grant();
  EXPECT_EQ(neighbour.app.logged(), "alive");
  EXPECT_EQ(run("log('started');").logged(), "started");
  host().killAll();
  EXPECT_EQ(host().output().awaitEnd(), "");
}

// A smaller limit, so that it is reached sooner: every timer leaves a line in the log.
TEST_F(MemoryTest, timersWithoutEndMeetTheLimit) {
  host();
  limitHost(48 * kMebibyte);
  Guest guest = guestThat("for (;;) setTimeout(1e6, log)");
  host().leaveApps();
  guest.grant();
  const End end = endOf(guest.app);
  EXPECT_LT(end.mostMebibytes, 48 + kMostMebibytes - 256);
  expectEndedForMemory(guest.app, end.exit);
}

TEST_F(MemoryTest, applicationsHaveALimitAndTheLauncherHasNone) {
  const rlimit given = limitOf(host().pid());
  ASSERT_EQ(given.rlim_cur, RLIM_INFINITY) << "the tests themselves run within a limit";
  const rlimit limit = limitOf(run("log('here');").pid());
  EXPECT_EQ(limit.rlim_cur, 256 * kMebibyte);
  EXPECT_EQ(limit.rlim_max, given.rlim_max);
}

TEST_F(MemoryTest, aLimitThatTheLauncherWasGivenHolds) {
  for (const rlim_t bytes : {100 * kMebibyte, 1000 * kMebibyte}) {
    host();
    limitHost(bytes);
    EXPECT_EQ(limitOf(run("log('here');").pid()).rlim_cur, bytes);
  }
}

}  // namespace
}  // namespace morvik::test
#endif
