// morvik.multimedia: objects that can be played, and what is kept of a query.
#include "support/text-message.h"
#include "support/unit/feature-test.h"

namespace morvik::test {
namespace {

class MultimediaTest : public FeatureTest {};

std::string playing(const std::string& url) {
  return "multimedia { play { url: \"" + url + "\" } }";
}

Lines unchanged(const std::string& source) {
  return {"MESSAGE MULTIMEDIA: play[" + source + "]",
          "MESSAGE MULTIMEDIA: *ascii play[" + source + "]"};
}

Lines local(const std::string& file, const std::string& path) {
  return {"MESSAGE MULTIMEDIA: play[./" + file + "]", "MESSAGE MULTIMEDIA: tmpStr[" + file + "]",
          "MESSAGE MULTIMEDIA: buffer play[" + path + "]"};
}

TEST_F(MultimediaTest, playTakesTheRecordingOfARecordEvent) {
  becomeInteractive("granted");
  run("var recording; morvik.multimedia.record(function(e) { recording = e.data; })");
  answer(*sent(), zephMsg("event { code: TERMINATED }"));
  log.clear();
  run("morvik.multimedia.play(recording)");
  EXPECT_EQ(ownLines(), unchanged("/tmp/record.flac"));
  expectOneMessage(playing("/tmp/record.flac"));
}

// A script object with as many internal fields as the first argument says, each a text.
void newWithFields(const Args& args) {
  v8::Isolate* isolate = args.GetIsolate();
  const auto context = isolate->GetCurrentContext();
  const int count = args[0]->Int32Value(context).FromJust();
  const auto shape = v8::ObjectTemplate::New(isolate);
  shape->SetInternalFieldCount(count);
  const auto object = shape->NewInstance(context).ToLocalChecked();
  for (int i = 0; i < count; ++i) {
    object->SetInternalField(i, toScript("./field" + std::to_string(i)));
  }
  args.GetReturnValue().Set(object);
}

TEST_F(MultimediaTest, playTakesFieldOneOfObjectsWithMoreThanOneField) {
  expose("newWithFields", newWithFields);
  const std::string path = "/usr/morvik/apps/app/field1";
  expectSends({
      {"morvik.multimedia.play(newWithFields(2))", playing(path), local("field1", path)},
      {"morvik.multimedia.play(newWithFields(3), f)", playing(path), local("field1", path)},
  });
  expectRefuses(wrong(
      {"morvik.multimedia.play(newWithFields(0))", "morvik.multimedia.play(newWithFields(1))"}));
}

TEST_F(MultimediaTest, entriesAreUtf8) {
  becomeInteractive();
  run("var length; morvik.multimedia.song(function(entry) { length = entry.length; })");
  answer(*sent(), zephMsg("multimedia { songlist: 'h\\303\\251' }"));
  EXPECT_EQ(run("length"), "2");
}

TEST_F(MultimediaTest, nothingOfAnAnsweredQueryIsKept) {
  expectForgets("morvik.multimedia.artist(kept)", "multimedia { artistlist: 'a' }");
}

TEST_F(MultimediaTest, aQueryCanBeAskedFromItsAnswer) {
  becomeInteractive("granted");
  run("morvik.multimedia.artist(function(entry) { log(entry); morvik.multimedia.song(tell); })");
  answer(*sent(), zephMsg("multimedia { artistlist: 'a' }"));
  const auto second = sent();
  ASSERT_TRUE(second);
  answer(*second, zephMsg("multimedia { songlist: 's' }"));
  EXPECT_THAT(logged(), ElementsAre("a", "string s"));
}

}  // namespace
}  // namespace morvik::test
