// Scripts that want what they may not have: other files, what the descriptor does not grant,
// tokens, somebody else's time or log. Each fails at its aim, its application goes on or ends
// alone, and what is open on purpose stands here as it is.
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

using HostileScriptsTest = DeviceTest;

// --- Out of the folder

// Written as an application's own name would be, and as whoever knows the host's ways would.
const std::vector<std::string> kClimbs{
    "'../secret.txt'",
    "'..'",
    "'../'",
    "'a/../../secret.txt'",
    "'./../secret.txt'",
    "'.../secret.txt'",
    "'a/..'",
    "'/../secret.txt'",
    "'..\\\\secret.txt'",
    "'%2e%2e/secret.txt'",
    "'..%2fsecret.txt'",
    "'~/secret.txt'",
    "'$HOME'",
    "'a b'",
    "'a;b'",
    "'a\\nb'",
    "'*'",
    "'a\\0../secret.txt'",
    // What becomes of a letter is its low byte, and what is tested is what is used.
    "'\\u012e\\u012e/secret.txt'",
    "'\\u022e\\u032e\\u012fsecret.txt'",
    "'.\\u012e/secret.txt'",
    "'\\uff0e\\uff0e/secret.txt'",
    "'\\u2025/secret.txt'",
    // The descriptor, and what only looks like it.
    "'descriptor.xml'",
    "'./descriptor.xml'",
    "'//descriptor.xml'",
    "'descriptor.xml/'",
    "'descriptor.xmlx'",
    "'a/descriptor.xml'",
    "'\\u0164escriptor.xml'",
    "'descriptor\\u012exml'",
    "'descriptor.xml' + '/'.repeat(1000)",
    "'/'.repeat(1000) + 'descriptor.xml'",
};

std::string calls(const std::string& before, const std::string& behind) {
  std::string all = "[";
  for (const std::string& name : kClimbs) all += before + name + behind + ", ";
  return all + "]";
}

// What the elements of an array of functions throw, each with how often.
constexpr char kTally[] =
    ".reduce(function(all, f) { var how; try { f(); how = 'no exception'; }"
    " catch (e) { how = typeof e + ' ' + String(e).split(':')[0]; }"
    " all[how] = (all[how] || 0) + 1; return all; }, {})";

TEST_F(HostileScriptsTest, noNameLeadsOutOfTheFolder) {
  const std::string all = "{\"string access denied\":" + std::to_string(kClimbs.size()) + "}";
  expectLogged({
      {"JSON.stringify(" + calls("() => file.read(", ").text") + kTally + ")", all},
      {"JSON.stringify(" + calls("() => file.write(", ", 'x')") + kTally + ")", all},
      {"JSON.stringify(" + calls("() => include(", ")") + kTally + ")", all},
  });
}

// A name from the root is one in the folder, and a name is a string or none.
TEST_F(HostileScriptsTest, whatPassesTheFilterStaysInTheFolder) {
  expectLogged({
      {"caught(() => file.read('/etc/passwd').text).split(':').slice(0, 2).join()",
       "string, cannot open resource"},
      {"caught(() => file.read('//etc//passwd').text).split(':')[1]", " cannot open resource"},
      {"caught(() => file.read('/proc/self/environ').text).split(':')[1]", " cannot open resource"},
      {"caught(() => file.read('DESCRIPTOR.XML').text).split(':')[1]", " cannot open resource"},
      {"caught(() => file.read('a/.'.repeat(300)).text).split(':')[1]", " cannot open resource"},
      {"caught(() => file.read(['../secret.txt']))", "string: Signature error function"},
      {"caught(() => file.read(new String('../secret.txt')))", "string: Signature error function"},
      {"caught(() => file.read({toString() { return 'main.js'; }}))",
       "string: Signature error function"},
  });
}

// A link in the folder leads where it points: whoever installs an application decides about that,
// and no script can make one.
TEST_F(HostileScriptsTest, aLinkInTheFolderIsPartOfIt) {
  apps.file("neighbour", "data.txt", "of the neighbour");
  apps.file("app1", "main.js", "");
  const std::filesystem::path folder = std::filesystem::path(apps.path()) / "app1";
  std::filesystem::create_symlink("../neighbour/data.txt", folder / "link");
  std::filesystem::create_symlink("nowhere", folder / "dangling");
  std::filesystem::create_symlink("link2", folder / "link2");
  std::filesystem::create_directory_symlink("../neighbour", folder / "dir");
  expectLogged({
      {"file.read('link').text", "of the neighbour"},
      {"file.read('dir/data.txt').text", "of the neighbour"},
      {"caught(() => file.read('dir/../link').text)", "string: access denied: dir/../link"},
      {"caught(() => file.read('dir/descriptor.xml').text)",
       "string: access denied: dir/descriptor.xml"},
      {"caught(() => file.read('link2').text).split(':')[1]", " cannot open resource"},
      {"caught(() => file.read('dangling').text).split(':')[1]", " cannot open resource"},
      {"caught(() => file.write('dangling', 'made')) + file.read('nowhere').text", "nothingmade"},
  });
}

// --- What is not granted

const char* const kForeignGlobal =
    "(function() { return {}.constructor.constructor('return this')(); })()";

TEST_F(HostileScriptsTest, whatIsNotGrantedIsNowhere) {
  expectLogged(
      {
          {"typeof morvik.ears + typeof morvik.tts + typeof http", "undefinedundefinedundefined"},
          {std::string("typeof ") + kForeignGlobal + ".http", "undefined"},
          {"typeof (0, eval)('this').http", "undefined"},
          {"typeof new Function('return this')().morvik.ears", "undefined"},
          {"typeof Object.getPrototypeOf(morvik).ears", "undefined"},
          {"typeof morvik.constructor", "function"},
          {"typeof new morvik.constructor().ears", "undefined"},
          {"typeof Reflect.construct(morvik.constructor, [], Object).ears", "undefined"},
          {"typeof morvik.led.constructor.constructor('return morvik.ears')()", "undefined"},
          {"Reflect.ownKeys(morvik).sort().join()", "connect,info,led,ping,random,start,stop"},
          {"caught(() => process)", "object: ReferenceError: process is not defined"},
          {"caught(() => require('fs'))", "object: ReferenceError: require is not defined"},
          {"typeof Deno + typeof quit + typeof load + typeof read + typeof print + typeof gc",
           "undefinedundefinedundefinedundefinedundefinedundefined"},
          {"typeof WebAssembly + typeof Worker + typeof setInterval",
           "undefinedundefinedundefined"},
          {"caught(() => eval('%DebugPrint(1)')).split(':')[1]", " SyntaxError"},
          {"Object.getOwnPropertySymbols(globalThis).length + "
           "Object.getOwnPropertySymbols(morvik).length",
           "0"},
      },
      {"led"});
}

// An object of an event comes from a context of its own. The engine lets no code be made in it, and
// what the application's functions are given from there is a value like any other.
TEST_F(HostileScriptsTest, theContextOfAnEventCannotBeEntered) {
  connect(
      "morvik.rfid.addListener(function(tag) {"
      "  const Foreign = tag.constructor;"
      "  log(caught(() => Foreign.constructor('return this')()));"
      "  log(Foreign === Object);"
      "  log(caught(() => Foreign.defineProperty(globalThis, 'ears', {value: 1})));"
      "  log(typeof morvik.ears);"
      "  log(typeof Foreign.getPrototypeOf(morvik).ears);"
      "  log(caught(() => Foreign.setPrototypeOf(morvik.led, tag)));"
      "  log(caught(() => morvik.led.light(tag)));"
      "});",
      {"rfid", "led"});
  zeph::ZephMsg message = newMessage();
  message.mutable_rfidcallback()->set_id("tag");
  device.send(message);
  EXPECT_EQ(app.logged(), "object: TypeError: no access");
  EXPECT_THAT(app.logged(6),
              ElementsAre("false", "object: TypeError: no access", "undefined", "undefined",
                          "nothing", "string: Must be in interactive mode"));
}

// What a script changes is its own: the host looks at none of it.
TEST_F(HostileScriptsTest, theHostDoesNotRelyOnWhatAScriptCanChange) {
  expectLogged(
      {
          {"(appName = '..', cmdline = 'x', caught(() => file.read('secret.txt').text))"
           ".includes('/app1/secret.txt')",
           "true"},
          {"(String.prototype.includes = Array.prototype.join = () => 'x',"
           " caught(() => file.read('../x')))",
           "string: access denied: ../x"},
          {"(Object.prototype.__defineGetter__('text', () => 'mine'), file.read('none').constructor"
           " === Object)",
           "false"},
          {"(Object.defineProperty(Object.prototype, 'led', {value: 5}), typeof morvik.led.light)",
           "function"},
          {"(Function.prototype.call = Function.prototype.apply = null, typeof uuid())", "string"},
          {"(Object.freeze(globalThis), morvik.random() >= 0)", "true"},
      },
      {"led"});
}

// --- Tokens

constexpr char kToken[] = "TOKEN-OF-THE-USER";

// Everything that shows an object from inside; what it gives is logged.
constexpr char kSearch[] = R"(
  function search(account) {
    const seen = [];
    const look = f => { try { seen.push(String(f())); } catch (e) { seen.push(String(e), e && e.stack); } };
    const all = o => Reflect.ownKeys(o).map(k => String(k) + '=' + String(o[k])).join();
    look(() => JSON.stringify(account));
    look(() => all(account));
    look(() => all(Object.getPrototypeOf(account)));
    look(() => JSON.stringify(Object.getOwnPropertyDescriptors(account)));
    look(() => all(Object.assign({}, account)));
    look(() => all({...account}));
    look(() => { const log = []; new Proxy(account, {get: (o, k) => log.push(k)}).token; return log; });
    look(() => { Object.prototype.__defineSetter__('token', v => seen.push(v));
                 Object.prototype.__defineSetter__('access_token', v => seen.push(v)); });
    look(() => account.get('http://127.0.0.1:1/'));
    look(() => account.get('https://a.facebook.com.example.org/'));
    look(() => account.post('https://127.0.0.1:1/', {}));
    look(() => account.post('https://127.0.0.1:1/', new Proxy({}, {
        get: (o, k) => { seen.push(String(k)); }, set: (o, k, v) => { seen.push(v); return true; },
        ownKeys: () => ['access_token'], defineProperty: (o, k, d) => { seen.push(d.value); },
        getOwnPropertyDescriptor: () => ({value: 1, enumerable: true, configurable: true})})));
    Error.prepareStackTrace = (e, frames) => frames.map(f => [f.getThis(), f.getFunction(),
        f.getTypeName(), f.getEvalOrigin(), f.getFileName()].map(String).join()).join();
    look(() => account.get({toString() { throw new Error('where'); }}));
    look(() => { throw new Error('where'); });
    (async () => { await null; look(() => account.get.caller); look(() => new Error('later').stack); })();
    look(() => account.get.toString() + account.get.arguments);
    look(() => signHMACSHA1('x', account));
    look(() => account + '' + Symbol.for('token').description);
    look(() => new account.constructor(account).token);
    look(() => Object.create(account).token + account.__proto__.token);
    return seen.join('\n');
  }
)";

TEST_F(HostileScriptsTest, noTokenShowsToItsScript) {
  connect(std::string(kSearch) +
              "social.init(function() { const found = search(social.facebook);"
              " const part = [...'RESU-EHT-FO'].reverse().join('');"  // not as it is: sources are
                                                                      // searched too
              " setTimeout(0, () => log('found: ' + found.includes(part))); }); log('asked');",
          {"facebook"});
  zeph::ZephMsg reply = replyTo(device.receive());
  reply.mutable_social()->set_facebooktoken(kToken);
  device.send(reply);
  EXPECT_THAT(app.logged(2), ElementsAre("asked", "found: false"));
  for (const std::string& text : app.texts()) EXPECT_THAT(text, Not(HasSubstr(kToken)));
}

// --- Time and memory

// No limit on running time, and none on what a promise goes on with: such a script stands still
// alone.
TEST_F(HostileScriptsTest, aScriptThatNeverReturnsStandsStillAlone) {
  const std::vector<std::string> spins{
      "for (;;);",
      "/^(a+)+$/.test('a'.repeat(50) + 'b');",
      "(function again() { Promise.resolve().then(again); })();",
      "Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0);",
      "const a = []; a.length = 2 ** 32 - 1; a.indexOf(1);",
  };
  Guest neighbour = invite("ping(log);");
  neighbour.grant();
  neighbour.device.receive();
  for (const std::string& spin : spins) {
    SCOPED_TRACE(spin);
    App spinner = run("log('begins'); " + spin);
    EXPECT_EQ(spinner.logged(), "begins");
    const App other = run("setTimeout(0, exit);");
    waitUntilReaped(other, 2);
    EXPECT_TRUE(spinner.alive());
    kill(spinner.pid(), SIGKILL);
    waitUntilReaped(spinner, 1);
  }
}

// What is too deep or too large is an exception to its script, which goes on.
const std::vector<std::string> kDeep{
    "(function f() { f(); })()",
    "(function f() { try { f(); } finally { f; } })()",
    "(() => { var o = {get a() { return this.a; }}; return o.a; })()",
    "(() => { var p = {}; for (let i = 0; i < 1e5; ++i) p = new Proxy(p, {}); return p.x; })()",
    "(() => { var p = function() {}; for (let i = 0; i < 1e5; ++i) p = p.bind(null); return p(); "
    "})()",
    "(() => { var a = []; for (let i = 0; i < 1e5; ++i) a = [a]; return JSON.stringify(a); })()",
    "(() => { var a = []; for (let i = 0; i < 1e5; ++i) a = [a]; return a.flat(Infinity); })()",
    "(() => { var a = []; for (let i = 0; i < 1e5; ++i) a = [a]; return String(a); })()",
    "JSON.parse('['.repeat(1e5) + ']'.repeat(1e5))",
    "eval('('.repeat(1e5) + ')'.repeat(1e5))",
    "eval('['.repeat(1e5) + ']'.repeat(1e5))",
    "eval('{'.repeat(1e5) + '}'.repeat(1e5))",
    "eval('-'.repeat(1e5) + '1')",
    "eval('(' + 'a=>'.repeat(1e5) + '1)')",
    "new Function('`${'.repeat(1e4) + '1' + '}`'.repeat(1e4))",
    "new RegExp('('.repeat(1e5) + ')'.repeat(1e5))",
    "new RegExp('(?:'.repeat(2e4) + 'a' + ')*'.repeat(2e4)).test('a')",
    "/(?:a|ab)(?:c|bcd)(?:d*)\\1\\2/.test('a'.repeat(1e5))",
    "'x'.repeat(2 ** 30)",
    "'x'.padEnd(2 ** 29 - 24 + 1)",
    "new Array(-1)",
    "2n ** (2n ** 40n)",
    "BigInt.asUintN(2 ** 53 - 1, -1n)",
    "new Uint8Array(2 ** 33)",
    "Array.from({length: 2 ** 53})",
    "String.fromCharCode.apply(null, {length: 2 ** 27})",
    "Reflect.apply(Math.max, null, {length: 2 ** 27})",
    "Symbol('x'.repeat(2 ** 28)).toString() + 'x'.repeat(2 ** 29)",
    "log({toString() { return this + ''; }})",
    "file.write({toString() { throw 1; }}, 'x')",
    "morvik.connect({toString() { throw 'no'; }}, 1)",
    "morvik.led.light(Symbol())",
    "launchType.x.y",
    "exit.call(null, exit)",
    "setTimeout(NaN, setTimeout)()",
    "new (class extends log.constructor { constructor() { super('throw 1'); this(); } })()",
};

TEST_F(HostileScriptsTest, whatIsTooDeepOrTooLargeIsAnException) {
  std::string script =
      "function attempt(f) { try { f(); return 'gave something'; }"
      " catch (e) { return 'threw'; } } ";
  for (const std::string& expression : kDeep)
    script += "\nattempt(function() { return " + expression + "; }); log(" +
              std::to_string(&expression - kDeep.data()) + ");";
  app = run(script + "\nlog('goes on');");
  std::vector<std::string> numbers;
  for (std::size_t i = 0; i < kDeep.size(); ++i) numbers.push_back(std::to_string(i));
  EXPECT_EQ(app.loggedUntil("goes on"), numbers);
  EXPECT_TRUE(app.alive());
}

// --- The log

// Standard error shows the text as it is; in the system log it is one record of its application's,
// behind the word that begins all that scripts say.
TEST_F(HostileScriptsTest, aForgedLineIsPartOfItsRecord) {
  const std::vector<std::string> forged{"x\nMESSAGE: nbChild 0",
                                        "\nMorvikVM[1]: MorvikVM started...", "\r\x1b[2KMESSAGE: x",
                                        "<0>Jan  1 00:00:00 MorvikVM[1]: x", "%s%n%p"};
  app =
      run("['x\\nMESSAGE: nbChild 0', '\\nMorvikVM[1]: MorvikVM started...',"
          " '\\r\\x1b[2KMESSAGE: x', '<0>Jan  1 00:00:00 MorvikVM[1]: x', '%s%n%p']"
          ".forEach(text => log(text)); log('end');");
  app.waitForLog("JSLOG: end");
  std::vector<std::string> said;
  for (const LogRecord& record : app.records()) {
    EXPECT_EQ(record.ident, "MorvikVM");
    if (record.text.starts_with("JSLOG: ")) said.push_back(record.text.substr(7));
  }
  said.pop_back();
  EXPECT_EQ(said, forged);
  const auto launchers = host().texts(host().pid());
  EXPECT_EQ(std::ranges::count(launchers, "nbChild 0"), 1);
  EXPECT_EQ(std::ranges::count(launchers, "MorvikVM started..."), 1);
}

}  // namespace
}  // namespace morvik::test
