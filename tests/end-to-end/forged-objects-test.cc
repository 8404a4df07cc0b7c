// What a script makes by the constructors of the objects that it is given, without any grant: it
// gets an exception or nothing, and its application lives on.

#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/system/system-test.h"
#include "support/text-message.h"

namespace morvik::test {
namespace {

class ForgedObjectsTest : public DeviceTest {
 protected:
  // Does to each object of this array whatever reads the fields of one, in every way of forging it.
  static std::string attack(const std::string& objects) {
    return R"(
      function tryAll(attempts) { attempts.forEach(function(f) { try { f(); } catch (e) {} }); }
      function forgeries(x) {
        var made = [x, Object.create(x), Object.assign({}, x), Object.getPrototypeOf(x),
                    new Proxy(x, {})];
        var Maker = x.constructor;
        tryAll([
          function() { made.push(new Maker()); },
          function() { made.push(new Maker(1, 'main.js')); },
          function() { made.push(Maker.call(x)); },
          function() { made.push(Reflect.construct(Maker, [])); },
          function() { made.push(Reflect.construct(Maker, [], Array)); },
          function() { made.push(Reflect.construct(Object, [], Maker)); },
          function() { made.push(new (class extends Maker {})()); },
          function() { made.push(Object.setPrototypeOf(new Maker(), x)); },
          function() { made.push(Maker.prototype); },
          function() { made.push(new (new Maker().constructor)()); }]);
        return made;
      }
      function use(o) {
        tryAll([
          function() { o.text; },
          function() { o.text = 1; },
          function() { o.semantic; },
          function() { Reflect.get(o, 'text', {}); },
          function() { log(o); },
          function() { file.read(o); },
          function() { http.post('http://127.0.0.1:1/', {file: o}); },
          function() { http.post('http://127.0.0.1:1/', {file: o, more: 1}); },
          function() { http.post2('http://127.0.0.1:1/', {file: o}); },
          function() { morvik.multimedia.play(o); },
          function() { social.twitter = o; social.facebook = o; social.init(o); },
          function() { o.log('x'); },
          function() { o.exit(1); }]);
      }
      )" + objects +
           R"(.forEach(function(x) { forgeries(x).forEach(use); });)";
  }
};

TEST_F(ForgedObjectsTest, objectsOfTheHostDoNoHarm) {
  app = run(attack("[file.read('main.js'), file, morvik, social, launchType, params, globalThis,"
                   " morvik.multimedia, http, new ArrayBuffer(8), new Uint8Array(8),"
                   " Promise.resolve()]") +
                "log('alive');",
            {"http", "multimedia"});
  while (app.logged() != "alive") {
  }
  EXPECT_TRUE(app.alive());
}

TEST_F(ForgedObjectsTest, aDataObjectThatIsNoneHasNoText) {
  expectThrown({"new (file.read('x').constructor)().text",
                "Reflect.construct(file.read('x').constructor, []).text"},
               "string: cannot open resource: ");
}

// An object from an event leads to a context that is no application's.
struct EventObject {
  const char* name;
  const char* access;
  const char* call;     ///< what makes the application hear of it; `seen` is its function
  const char* message;  ///< what brings the object
};

class EventObjectTest : public ForgedObjectsTest,
                        public testing::WithParamInterface<EventObject> {};

constexpr EventObject kEventObjects[] = {
    {"photo", "webcam", "morvik.webcam.photo('http://127.0.0.1:1/', seen)", "event { code: OK }"},
    {"recording", "multimedia", "morvik.multimedia.record(seen)", "event { code: TERMINATED }"},
    {"recordingAnswered", "multimedia", "morvik.multimedia.record(seen)", "response { code: OK }"},
    {"tag", "rfid", "morvik.rfid.addListener(seen)", "rfidCallback { id: 't' direction: IN }"},
    {"call", "m2m", "morvik.m2m.addListener(seen)",
     "m2mCallback { type: INCOMING correspondant: 'bob' }"},
    {"info", "led", "morvik.info(seen)", "morvikinfo_response { infos { key: 'a' value: 'b' } }"},
    {"messages", "message", "morvik.message.list(seen)",
     "response { code: OK } morvikMessageResponse { morvikMessageList { header { id: 'i' } } }"},
    {"contacts", "contact", "morvik.contact.get(seen)",
     "contactList { contacts { uuid: 'u' objects { idDB: 'o' name: 'n' } } }"},
    {"meaning", "asr", "morvik.asr.string('oui|non', 'fr', seen)",
     "response { code: OK } asrCallback { recognition { text: 'oui' semantic: '<a>b</a>' } }"},
};

TEST_P(EventObjectTest, doesNoHarm) {
  const EventObject& row = GetParam();
  interactive(
      "function parts(e) { return [e, e.constructor, e.constructor.prototype].concat("
      "Object.keys(e).map(function(key) { return Object(e[key]); })); }"
      "function seen(e) {"
      " if (typeof e !== 'object') e = Object(e);" +
          attack("parts(e)") +
          " var call = e.constructor.constructor.prototype.call;"
          " call.call(log, null, 'called from elsewhere');"
          " log(typeof call.call(file.read, null, 'main.js'));"
          " log('alive'); return true; }" +
          row.call,
      {row.access, "http", "multimedia"});
  zeph::ZephMsg message = zephMsg(std::string("id: 'answer' ") + row.message);
  if (std::string_view(row.call).find("addListener") == std::string_view::npos)
    message.set_correlationid(device.receive().id());
  device.send(message);
  const std::vector<std::string> texts = app.loggedUntil("alive");
  ASSERT_GE(texts.size(), 2U);
  EXPECT_EQ(texts[texts.size() - 2], "called from elsewhere");
  EXPECT_EQ(texts.back(), "object");
  EXPECT_TRUE(app.alive());
}

INSTANTIATE_TEST_SUITE_P(Of, EventObjectTest, testing::ValuesIn(kEventObjects),
                         [](const auto& row) { return row.param.name; });

TEST_F(ForgedObjectsTest, theLaunchTypeByVoiceDoesNoHarm) {
  apps.app("voice", {}, prelude() + attack("[launchType]") + "log('alive');");
  app = launch("voice ASR;hello;<a>b</a>");
  while (app.logged() != "alive") {
  }
  EXPECT_TRUE(app.alive());
}

}  // namespace
}  // namespace morvik::test
