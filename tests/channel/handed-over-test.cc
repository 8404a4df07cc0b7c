// What is left of the objects that scripts are handed when a script keeps them, and when it keeps
// what the documents recommend instead.
#include <functional>

#include "support/text-message.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

constexpr int kTimes = 20;

// How to get an object into the function `hear`, and what a careful script keeps of it.
struct Source {
  const char* call;     // the request or the listener
  const char* message;  // the answer or the event
  const char* copy;
};

const Source kEvents[] = {
    {"morvik.rfid.addListener(hear)", "rfidCallback { id: 'tag' direction: IN content: 'Bob' }",
     "Object.assign({}, o)"},
    {"morvik.m2m.addListener(hear)", "m2mCallback { type: INCOMING correspondant: 'bob' }",
     "Object.assign({}, o)"},
};

const Source kAnswers[] = {
    {"morvik.info(hear)", "morvikinfo_response { infos { key: 'name' value: 'Bob' } }",
     "Object.assign({}, o)"},
    {"morvik.asr.string('yes', 'en', hear)",
     "asrCallback { recognition { text: 'yes' confident: 50 semantic: '<a>yes</a>' } }",
     "Object.assign({}, o)"},
    {"morvik.webcam.photo('p', hear)", "event { code: TERMINATED description: 'd' }",
     "{type: o.type, description: o.description}"},
    {"morvik.multimedia.record(hear)", "event { code: TERMINATED }", "o.type"},
    {"morvik.message.list(hear)",
     "morvikMessageResponse { morvikMessageList { content { type: TEXT content: 'hello' } } }",
     "JSON.parse(JSON.stringify(o))"},
    {"morvik.message.list(hear)",
     "morvikMessageResponse { morvikMessageList { content { type: TEXT content: 'hello' } } }",
     "o[0].content.content"},
    {"morvik.contact.get(hear)", "contactList { contacts { uuid: 'u' objects { idDB: '1' } } }",
     "JSON.parse(JSON.stringify(o))"},
};

class HandedOverTest : public ScriptTest {
 protected:
  HandedOverTest() { becomeInteractive(); }

  // Contexts that are left when all is collected that nobody holds.
  static std::size_t contexts() {
    v8::Isolate::GetCurrent()->LowMemoryNotification();
    v8::HeapStatistics statistics;
    v8::Isolate::GetCurrent()->GetHeapStatistics(&statistics);
    return statistics.number_of_native_contexts();
  }

  // How many contexts more there are after the script has kept so much of each object.
  std::size_t held(const std::string& kept, const std::function<void()>& hearOne) {
    run("var kept = []; var hear = function(o) { kept.push(" + kept + "); return true; };");
    const std::size_t before = contexts();
    hearOne();
    for (int time = 1; time < kTimes; ++time) hearOne();
    EXPECT_EQ(run("kept.length"), std::to_string(kTimes));
    return contexts() - before;
  }

  std::size_t heldOfEvents(const Source& source, const std::string& kept) {
    return held(kept, [&] {
      if (instance.listeners == nullptr) run(source.call);
      deliver(zephMsg(std::string("id: 'e' ") + source.message));
    });
  }

  std::size_t heldOfAnswers(const Source& source, const std::string& kept) {
    return held(kept, [&] {
      run(source.call);
      answer(sent().value(), zephMsg(source.message));
    });
  }
};

TEST_F(HandedOverTest, eachObjectThatIsKeptHoldsAContextAndACopyHoldsNone) {
  for (const Source& source : kEvents) {
    EXPECT_EQ(heldOfEvents(source, "o"), kTimes) << source.call;
    instance.releaseListeners();
    EXPECT_EQ(heldOfEvents(source, source.copy), 0) << source.call;
    instance.releaseListeners();
  }
  for (const Source& source : kAnswers) {
    EXPECT_EQ(heldOfAnswers(source, "o"), kTimes) << source.call;
    EXPECT_EQ(heldOfAnswers(source, source.copy), 0) << source.call;
  }
}

}  // namespace
}  // namespace morvik::test
