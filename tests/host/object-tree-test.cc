// What a descriptor grants: each object wholly there or wholly absent.
#include "host/object-tree.h"

#include <libxml/parser.h>

#include "host/app-files.h"
#include "host/globals.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class ObjectTreeTest : public ScriptTest {
 protected:
  // What `expression` is in a context with the tree that these names are granted.
  std::string inTree(const std::string& accesses, const std::string& expression) {
    files.write("descriptor.xml", "<descriptor><accesses>" + accesses + "</accesses></descriptor>");
    options.app_folder = files.root();
    const v8::HandleScope handles(isolate());
    const auto global = v8::ObjectTemplate::New(isolate());
    const auto morvik = v8::ObjectTemplate::New(isolate());
    buildDeviceTree(global, morvik, *loadDescriptor(instance));
    global->Set(isolate(), "morvik", morvik);
    const auto tree = v8::Context::New(isolate(), nullptr, global);
    const v8::Context::Scope entered(tree);
    const auto script = v8::Script::Compile(tree, toScript(expression)).ToLocalChecked();
    return *v8::String::Utf8Value(isolate(), script->Run(tree).ToLocalChecked());
  }

  AppFiles files;
};

constexpr const char* kDevices = "Object.keys(morvik).join()";

std::string granting(const std::string& name) { return "<access>" + name + "</access>"; }

TEST_F(ObjectTreeTest, anObjectHasAllItsFunctionsWhenItsNameIsGranted) {
  const struct {
    const char* name;
    const char* functions;  // sorted
  } rows[] = {
      {"led", "fade,light,pulse"},
      {"ears", "addListener,move,moveRelative,reset,resetLeft,resetRight"},
      {"tts", "start,stop"},
      {"webcam", "photo"},
      {"asr", "file,string"},
      {"multimedia",
       "addListener,artist,folder,genre,next,pause,play,playlist,previous,record,resume,song,stop"},
      {"button", "addListener"},
      {"rfid", "addListener"},
      {"m2m", "account,addListener,answer,call,hangup"},
      {"message", "delete,get,list,markAsRead,new"},
      {"contact", "get"},
      {"serial", "addListener__,open__,write__"},
      {"dock", "fade,light,move,pulse"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string object = std::string("morvik.") + row.name;
    EXPECT_EQ(inTree(granting(row.name), "Object.keys(" + object + ").sort().join()"),
              row.functions);
    EXPECT_EQ(inTree(granting(row.name),
                     "Object.values(" + object + ").every(f => typeof f == 'function')"),
              "true");
    EXPECT_EQ(inTree(granting(row.name), kDevices), row.name);
    EXPECT_EQ(inTree("", "typeof " + object), "undefined");
  }
}

// The web stands on the global object, not under morvik.
TEST_F(ObjectTreeTest, theWebStandsOnTheGlobalObject) {
  EXPECT_EQ(inTree("", "Object.keys(social).join()"), "init");
  EXPECT_EQ(inTree("", "typeof http"), "undefined");
  EXPECT_EQ(inTree(granting("http"), "Object.keys(http).sort().join()"), "get,get2,post,post2");
  EXPECT_EQ(inTree(granting("http") + granting("social"), kDevices), "");
}

TEST_F(ObjectTreeTest, otherNamesGrantNothing) {
  const char* const everything = "Object.keys(globalThis).sort().join() + Object.keys(morvik)";
  for (const char* name :
       {"LED", " led ", "morvik", "light", "twitter", "facebook", "soundcloud", "HTTP"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(inTree(granting(name), everything), "morvik,social");
  }
}

TEST_F(ObjectTreeTest, aNameGrantedTwiceChangesNothing) {
  EXPECT_EQ(inTree(granting("led") + granting("led"), kDevices), "led");
}

TEST_F(ObjectTreeTest, objectsAreAddedInTheOrderInWhichTheDescriptorIsAsked) {
  std::string all;
  for (const char* name : {"dock", "serial", "contact", "message", "m2m", "rfid", "button",
                           "multimedia", "asr", "webcam", "tts", "ears", "led"}) {
    all += granting(name);
  }
  EXPECT_EQ(inTree(all, kDevices),
            "led,ears,tts,webcam,asr,multimedia,button,rfid,m2m,message,contact,serial,dock");
}

TEST_F(ObjectTreeTest, aTouchOfWhatIsNotGrantedIsTheScriptsOwnError) {
  EXPECT_EQ(inTree("", "try { morvik.led.light('red'); } catch (e) { e.name; }"), "TypeError");
}

}  // namespace
}  // namespace morvik::test
