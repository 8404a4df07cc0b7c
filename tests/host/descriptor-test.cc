// descriptor.xml: where it is looked for, which names it grants, and the gate of a single function.
#include "host/descriptor.h"

#include <cstring>

#include "host/app-files.h"
#include "support/unit/log-texts.h"
#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

void answerWithData(const Args& args) { args.GetReturnValue().Set(args.Data()); }

class DescriptorTest : public ScriptTest {
 protected:
  DescriptorTest() { options.app_folder = files.root(); }

  std::unique_ptr<Descriptor> load(const std::string& xml) {
    files.write("descriptor.xml", xml);
    return loadDescriptor(instance);
  }
  // `inner` inside the element that holds the names.
  std::unique_ptr<Descriptor> loadAccesses(const std::string& inner) {
    return load("<descriptor><accesses>" + inner + "</accesses></descriptor>");
  }
  // Makes the global object `gated`, whose function asks for an access where `led` is granted.
  void exposeGated(const char* access, const char* function) {
    const v8::Context::Scope entered(context());
    const auto shape = v8::ObjectTemplate::New(isolate());
    bindGated(*loadAccesses("<access>led</access>"), shape, access, function, answerWithData,
              toScript("its data"));
    setGlobal("gated", shape->NewInstance(context()).ToLocalChecked());
  }

  AppFiles files;
};

TEST_F(DescriptorTest, isLookedForInOnePlace) {
  load("<descriptor/>");
  EXPECT_THAT(log.lines(), ElementsAre(LogLine{G_LOG_LEVEL_DEBUG, "searching descriptor: " +
                                                                      files.path("descriptor.xml")},
                                       LogLine{G_LOG_LEVEL_DEBUG, "loading descriptor"}));
}

TEST_F(DescriptorTest, keepsTheDocumentAndItsRoot) {
  const auto descriptor = loadAccesses("<access>led</access>");
  EXPECT_EQ(descriptor->root, xmlDocGetRootElement(descriptor->doc.get()));
  EXPECT_STREQ(accessName(*descriptor, 0), "led");
}

TEST_F(DescriptorTest, grantsExactlyTheListedNames) {
  const struct {
    const char* inner;
    int count;
    bool led;
    bool ears;
  } rows[] = {
      {"", 0, false, false},
      {"<access>led</access>", 1, true, false},
      {"<access>ears</access><access>led</access>", 2, true, true},
      {"<access>led</access><access>led</access>", 2, true, false},
      {"<access>LED</access>", 1, false, false},
      {"<access>Led</access>", 1, false, false},
      {"<access> led</access>", 1, false, false},
      {"<access>led </access>", 1, false, false},
      {"<access>led\n</access>", 1, false, false},
      {"<access>\nled</access>", 1, false, false},
      {"<access>ledx</access>", 1, false, false},
      {"<access>le</access>", 1, false, false},
      {"<access>led,ears</access>", 1, false, false},
      {"<access>unknown</access><access>ears</access>", 2, false, true},
      {"<access x='ears'>led</access>", 1, true, false},
      {"<access><![CDATA[led]]></access>", 1, true, false},
      {"<access>l&#101;d</access>", 1, true, false},
      {"<access>led<b/></access>", 1, true, false},  // the first child alone counts
      {"<access><b>led</b></access>", 1, false, false},
      {"<Access>led</Access><other>led</other>", 0, false, false},
      {"<group><access>led</access></group>", 0, false, false},
      {"led", 0, false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.inner);
    const auto descriptor = loadAccesses(row.inner);
    EXPECT_EQ(accessCount(*descriptor), row.count);
    EXPECT_EQ(hasAccess(*descriptor, "led"), row.led);
    EXPECT_EQ(hasAccess(*descriptor, "ears"), row.ears);
  }
}

TEST_F(DescriptorTest, aFileWithOtherContentGrantsNothing) {
  for (const char* xml :
       {"<descriptor/>", "<accesses><access>led</access></accesses>", "<x/>",
        "<app><descriptor><accesses><access>led</access></accesses></descriptor></app>",
        "<descriptor><access>led</access></descriptor>"}) {
    SCOPED_TRACE(xml);
    const auto descriptor = load(xml);
    EXPECT_EQ(accessCount(*descriptor), 0);
    EXPECT_FALSE(hasAccess(*descriptor, "led"));
  }
}

TEST_F(DescriptorTest, withoutAQueryResultNothingIsGranted) {
  EXPECT_EQ(accessCount(Descriptor()), 0);
  EXPECT_FALSE(hasAccess(Descriptor(), "led"));
}

TEST_F(DescriptorTest, severalAccessesElementsCountInTheirOrder) {
  const auto descriptor = load(
      "<descriptor><accesses><access>a</access></accesses>"
      "<accesses><access>b</access></accesses></descriptor>");
  ASSERT_EQ(accessCount(*descriptor), 2);
  EXPECT_STREQ(accessName(*descriptor, 0), "a");
  EXPECT_STREQ(accessName(*descriptor, 1), "b");
}

TEST_F(DescriptorTest, aNameBeforeAnEmptyElementIsStillFound) {
  EXPECT_TRUE(hasAccess(*loadAccesses("<access>led</access><access/>"), "led"));
}

TEST_F(DescriptorTest, theWalkDiesAtAnEmptyElement) {
  EXPECT_EXIT(hasAccess(*loadAccesses("<access>led</access><access/>"), "ears"),
              testing::KilledBySignal(SIGTRAP), "fatal: descriptor.xml: access element 2 is empty");
}

void loadLogging(const MorvikData& instance) {
  printLog();
  const auto descriptor = loadDescriptor(instance);
}

// No word of the host's own behind the two debug lines.
TEST_F(DescriptorTest, oneThatCannotBeReadEndsTheProcessAsIfNothingWereWrong) {
  EXPECT_EXIT(loadLogging(instance), ExitedWithCode(0),
              "DEBUG searching descriptor: .*/app/descriptor.xml\nDEBUG loading descriptor\n");
  files.write("descriptor.xml", "<descriptor><accesses>");
  EXPECT_EXIT(loadLogging(instance), ExitedWithCode(0), "DEBUG loading descriptor\n");
}

// "<descriptor/>", as gzip packs it. What is packed may be gigabytes when it is unpacked.
TEST_F(DescriptorTest, oneThatIsCompressedIsNotUnpacked) {
  constexpr char kPacked[] =
      "\x1f\x8b\x08\0\0\0\0\0\x02\x03\xb3\x49\x49\x2d\x4e\x2e\xca\x2c\x28\xc9\x2f\xd2\xb7\x03"
      "\0\x19\x56\x96\xf0\x0d\0\0";
  files.write("descriptor.xml", {kPacked, sizeof kPacked});
  EXPECT_EQ(readDescriptor(files.path("descriptor.xml")), nullptr);
}

TEST_F(DescriptorTest, oneThatIsTooLargeIsNotRead) {
  constexpr std::string_view kRoot = "<descriptor/>";
  const std::string path = files.path("descriptor.xml");
  files.write("descriptor.xml",
              std::string(kRoot) + std::string(kMaxDescriptor - kRoot.size(), ' '));
  EXPECT_NE(readDescriptor(path), nullptr);
  files.write("descriptor.xml",
              std::string(kRoot) + std::string(kMaxDescriptor - kRoot.size() + 1, ' '));
  testing::internal::CaptureStderr();
  EXPECT_EQ(readDescriptor(path), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), path + ": larger than 65536 bytes\n");
}

TEST_F(DescriptorTest, aPathThatIsTooLongIsCut) {
  instance.appName = std::string(300, 'n');
  EXPECT_EXIT(loadLogging(instance), ExitedWithCode(0),
              "DEBUG searching descriptor: /[^\n]{253}\n");
}

TEST_F(DescriptorTest, aGatedFunctionIsThereWhenItsNameIsListed) {
  exposeGated("led", "light");
  EXPECT_EQ(run("gated.light()"), "its data");
}

TEST_F(DescriptorTest, aDeniedFunctionIsThereAndHarmlessUntilItIsCalled) {
  exposeGated("ears", "move");
  EXPECT_EQ(run("typeof gated.move"), "function");
  const auto call = [this] {
    printLog();
    run("try { gated.move(); } catch (e) {}");
  };
  EXPECT_EXIT(call(), ExitedWithCode(1), "DEBUG ERROR ACCESS: ears\n");
}

}  // namespace
}  // namespace morvik::test
