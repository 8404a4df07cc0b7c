// The device's page in every look, at rest and while much goes on, and with little motion.
#include "device-page-fixture.h"
#include "looks.h"

namespace morvik::test {
namespace {

using nlohmann::json;
using ::testing::Gt;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class PageForEveryone : public DevicePageTest {
 protected:
  // A word that has no place to be broken at.
  const std::string longWord_ = std::string(120, 'w');

  // Works that go on until they are ended, and texts that are too long.
  void keepBusy(AppClient& app) {
    command(app, "led { pulse { color: 'lime' period: 900 pulse: 600 } }");
    command(app, "dock { move { cmd: LEFT time: 60000 } }");
    command(app, "tts { action: START text: '" + longWord_ + " and more' lang: 'en' }");
    command(app, "multimedia { record { url: '" + longWord_ + "' } }");
    command(app, "asr { dictionary: '" + longWord_ + "|yes' lang: 'en' }");
    command(app, "webcam { photo: '" + longWord_ + "' }");
    command(app, "serial { open { port: '" + longWord_ + "' baud: 9600 } }");
    device_.say("call INCOMING " + longWord_ + "\n" + "message anna " + longWord_ + "\n" + "rfid " +
                longWord_ + " IN\nrefuse BUSY ears ALWAYS\n");
    expectThere("#device[data-speaks][data-listens][data-record][data-call=ringing]");
    expectThere("#tag[data-on]");
  }

  void expectFine(const std::string& selector = "html") {
    EXPECT_THAT(seriousFindings(driver_, selector), IsEmpty()) << selector;
    EXPECT_EQ(pixelsBeside(driver_), 0) << selector;
  }

  void expectEveryPanelFine() {
    const auto tabs = driver_.run(
        "return [...document.querySelectorAll('[role=tab]')].map((tab) => tab.id.slice(4))");
    ASSERT_THAT(tabs, SizeIs(Gt(5U)));
    for (const std::string tab : tabs) {
      driver_.run("document.getElementById('tab-" + tab + "').click()");
      expectFine("#panel-" + tab);
    }
  }
};

class PageInALook : public PageForEveryone, public ::testing::WithParamInterface<Look> {
 protected:
  PageInALook() {
    GetParam().show(browser_);
    openPage();
  }
};

TEST_P(PageInALook, hasNothingSerious) {
  EXPECT_EQ(driver_.run("return innerWidth"), GetParam().width);
  expectThere("#applications .empty");
  expectFine();
  const auto app = application();
  keepBusy(*app);
  expectFine();
  expectEveryPanelFine();
}

INSTANTIATE_TEST_SUITE_P(Looks, PageInALook, ::testing::ValuesIn(kLooks));

TEST_F(PageForEveryone, aFaultWouldBeFoundOut) {
  browser_.show(360, 900, false);
  openPage();
  expectFine();
  driver_.run(
      "const box = document.createElement('div');"
      "box.append(document.createElement('button'));"
      "box.style.width = '400px';"
      "document.querySelector('main').append(box)");
  const json found = seriousFindings(driver_);
  ASSERT_THAT(found, SizeIs(1)) << found.dump(2);
  EXPECT_EQ(found[0]["id"], "button-name");
  EXPECT_GT(pixelsBeside(driver_), 0);
}

// Names what moves by an animation or would by a transition, in elements and beside them.
constexpr const char* kMoving = R"js(
  return [...document.querySelectorAll('*')].flatMap((element) =>
    [null, '::before', '::after'].flatMap((part) => {
      const { animationName, transitionDuration } = getComputedStyle(element, part);
      const moves = animationName !== 'none' || /[1-9]/.test(transitionDuration);
      return moves ? [`${element.id || element.getAttribute('class')}${part ?? ''}`] : [];
    }));
)js";

class PageInMotion : public PageForEveryone, public ::testing::WithParamInterface<bool> {};

TEST_P(PageInMotion, standsStillWhereThatIsWished) {
  browser_.show(1280, 900, false, /*wantsLittleMotion=*/GetParam());
  openPage();
  const auto app = application();
  keepBusy(*app);
  const json moving = driver_.run(kMoving);
  if (GetParam()) {
    EXPECT_THAT(moving, IsEmpty());
  } else {
    EXPECT_THAT(moving, SizeIs(Gt(10U)));
  }
}

// What the modules draw themselves.
TEST_P(PageInMotion, drawsWhatMovesAtItsEndWhereThatIsWished) {
  browser_.show(1280, 900, false, /*wantsLittleMotion=*/GetParam());
  openPage();
  const auto app = application();
  watch(attributeOf("#turn-left", "transform") +
        " + document.getElementById('halo').style.opacity");
  command(*app, "led { pulse { color: 'lime' period: 100 pulse: 5 } }");
  command(*app, "ears { left: 5 }");
  expectAttribute("#turn-left", "transform", "rotate(-58.00)");
  expect("document.querySelector('#seen [data-show=led] dd').textContent === 'lime'");
  const std::size_t drawn = watched().size();
  if (GetParam()) {
    EXPECT_LE(drawn, 4U);
  } else {
    EXPECT_GT(drawn, 12U);
  }
}

INSTANTIATE_TEST_SUITE_P(LittleMotion, PageInMotion, ::testing::Bool());

}  // namespace
}  // namespace morvik::test
