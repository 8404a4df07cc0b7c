// Hidden values: kept on every kind of object, and out of every script's reach.
#include "web/hidden-value.h"

#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class HiddenValueTest : public ScriptTest {
 protected:
  void set(v8::Local<v8::Object> target, const char* name, const char* value) {
    const v8::Context::Scope entered(context());
    setHidden(target, name, toScript(value));
  }
  std::string get(v8::Local<v8::Object> target, const char* name) {
    const v8::Context::Scope entered(context());
    return *v8::String::Utf8Value(isolate(), hidden(target, name));
  }
};

TEST_F(HiddenValueTest, isKeptByNameOnEveryKindOfObject) {
  const char* const objects[] = {
      "{}",
      "[1]",
      "function() {}",
      "Object.create(null)",
      "Object.freeze({})",
      "Object.freeze([1, 2])",
      "Object.seal({a: 1})",
      "Object.preventExtensions({})",
      "new Proxy({}, {})",
      "new Proxy({}, new Proxy({}, {get(t, name) { throw 'trap ' + name; }}))",
      "(() => { const r = Proxy.revocable({}, {}); r.revoke(); return r.proxy; })()",
      "new Uint8Array(3)",
      "new ArrayBuffer(3)",
      "Object('text')",
      "Promise.resolve()",
      "globalThis",
      "morvik",
      "Object.prototype",
      "{set token(value) { throw 'setter'; }, get token() { throw 'getter'; }}",
      "(function() { return arguments; })(1)",
      "Math",
      "new Date",
      "/x/",
  };
  for (const char* expression : objects) {
    SCOPED_TRACE(expression);
    const auto target = object(expression);
    EXPECT_EQ(get(target, "token"), "undefined");
    set(target, "token", "one");
    set(target, "other", "two");
    EXPECT_EQ(get(target, "token"), "one");
    set(target, "token", "three");
    EXPECT_EQ(get(target, "token"), "three");
    EXPECT_EQ(get(target, "other"), "two");
  }
}

TEST_F(HiddenValueTest, noScriptFindsIt) {
  const auto target = object("globalThis.kept = {plain: 1}");
  set(target, "token", "secret");
  const char* const rows[][2] = {
      {"kept.token", "undefined"},
      {"'token' in kept", "false"},
      {"Reflect.ownKeys(kept).map(String).join()", "plain"},
      {"Object.getOwnPropertySymbols(kept).length", "0"},
      {"JSON.stringify(kept)", "{\"plain\":1}"},
      {"JSON.stringify(Object.getOwnPropertyDescriptors(kept)).includes('secret')", "false"},
      {"var names = ''; for (var name in kept) names += name; names", "plain"},
      {"kept[Symbol.for('token')]", "undefined"},
      {"var traps = []; var seen = new Proxy(kept, {get(t, n) { traps.push(n); return t[n]; }});"
       "seen.token + traps",
       "undefinedtoken"},
  };
  for (const auto& row : rows) EXPECT_EQ(run(row[0]), row[1]) << row[0];
}

TEST_F(HiddenValueTest, noScriptTakesItAlongOrAway) {
  const auto target = object("globalThis.kept = {plain: 1}");
  set(target, "token", "secret");
  for (const char* copy : {"{...kept}", "Object.assign({}, kept)", "Object.create(kept)",
                           "new Proxy(kept, {})", "Object.setPrototypeOf({}, kept)",
                           "Object.defineProperties({}, Object.getOwnPropertyDescriptors(kept))",
                           "(() => { const {...rest} = kept; return rest; })()"}) {
    EXPECT_EQ(get(object(copy), "token"), "undefined") << copy;
  }
  run("kept.token = 'mine'; delete kept.token; delete kept.plain; Object.freeze(kept);");
  EXPECT_EQ(get(target, "token"), "secret");
}

TEST_F(HiddenValueTest, aNativeCloneCarriesItAlong) {
  const auto target = object("{a: 1}");
  set(target, "token", "secret");
  EXPECT_EQ(get(target->Clone(), "token"), "secret");
}

}  // namespace
}  // namespace morvik::test
