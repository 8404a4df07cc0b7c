// A script cannot tell a context that was furnished from one that the engine made from the
// template.
#include "host/app-context.h"

#include "host/globals.h"
#include "host/object-tree.h"
#include "support/unit/granted.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

// All that can be reached from the global object, in the order in which it is found: each object's
// prototype, its own names and symbols, their descriptors, and what functions say of themselves.
// Names that a loop over them meets come first: some of the engine's own that none meets, such as
// Atomics, it puts behind the template's.
constexpr const char* kInventory = R"((function() {
  var numbers = new Map(), waiting = [], lines = [];
  function told(value) {
    if (Object(value) !== value) return typeof value + ' ' + String(value);
    if (!numbers.has(value)) { numbers.set(value, numbers.size); waiting.push(value); }
    return typeof value + ' #' + numbers.get(value);
  }
  function describe(object) {
    lines.push('#' + numbers.get(object) + ' ' + Object.prototype.toString.call(object) +
               ' extensible ' + Object.isExtensible(object) +
               ' prototype ' + told(Object.getPrototypeOf(object)));
    if (typeof object === 'function') lines.push(Function.prototype.toString.call(object));
    function isMet(key) { return Object.prototype.propertyIsEnumerable.call(object, key); }
    var keys = Reflect.ownKeys(object);
    var rest = keys.filter(function(key) { return !isMet(key); });
    keys.filter(isMet).concat(rest).forEach(function(key) {
      var property = Object.getOwnPropertyDescriptor(object, key);
      lines.push('  ' + String(key) + ': ' + Object.keys(property).map(function(part) {
        return part + ' ' + told(property[part]);
      }).join(', '));
    });
  }
  told(globalThis);
  while (waiting.length > 0) describe(waiting.shift());
  return lines.join('\n');
})())";

class AppContextTest : public ScriptTest {
 protected:
  v8::Local<v8::ObjectTemplate> globals(const std::vector<std::string>& accesses) {
    const auto global = buildGlobalTemplate();
    const auto morvik = v8::ObjectTemplate::New(isolate());
    addMorvikFunctions(morvik);
    buildDeviceTree(global, morvik, *granted(accesses));
    instance.launchType = "ASR;lampe an;<lamp>on</lamp>";
    addGlobals(global, morvik, instance);
    return global;
  }

  std::string inventoryOf(v8::Local<v8::Context> context) {
    const v8::Context::Scope entered(context);
    const auto script = v8::Script::Compile(context, toScript(kInventory)).ToLocalChecked();
    return *v8::String::Utf8Value(isolate(), script->Run(context).ToLocalChecked());
  }

  std::string fromTemplate(const std::vector<std::string>& accesses) {
    return inventoryOf(v8::Context::New(isolate(), nullptr, globals(accesses)));
  }

  std::string furnished(const std::vector<std::string>& accesses) {
    return inventoryOf(newAppContext(globals(accesses)));
  }
};

TEST_F(AppContextTest, holdsWhatTheEngineWouldMakeOfTheTemplate) {
  for (const auto& accesses : {gatedNames(), std::vector<std::string>{}, {"led", "http"}}) {
    const std::string expected = fromTemplate(accesses);
    EXPECT_THAT(expected, HasSubstr("\n  signHMACSHA1: value function"));
    EXPECT_EQ(furnished(accesses), expected);
  }
}

TEST_F(AppContextTest, theInventorySeesWhatIsGranted) {
  EXPECT_THAT(furnished({"led"}), HasSubstr("\n  led: value object"));
  EXPECT_THAT(furnished({}), Not(HasSubstr("\n  led:")));
  EXPECT_THAT(furnished({"http"}), HasSubstr("\n  http: value object"));
}

TEST_F(AppContextTest, hasTheFieldOfItsApplication) {
  EXPECT_EQ(newBareContext()->Global()->InternalFieldCount(), 1);
  EXPECT_EQ(newAppContext(globals({}))->Global()->InternalFieldCount(), 1);
}

TEST_F(AppContextTest, eachIsAContextOfItsOwn) {
  const auto first = newAppContext(globals({}));
  const auto second = newAppContext(globals({}));
  EXPECT_NE(first, second);
  EXPECT_FALSE(first->Global()->StrictEquals(second->Global()));
}

}  // namespace
}  // namespace morvik::test
