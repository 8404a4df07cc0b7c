// What a page is told of an application that a debugger has paused.
#include "debug-fixture.h"

namespace morvik::test {

using namespace devkit;
namespace {

class DebugPage : public DebugTest {
 protected:
  // What the page is told of its one application next, once that is so.
  static Json applicationWhere(PageClient& page, const std::function<bool(const Json&)>& isSo) {
    for (;;) {
      Json frame = page.receive("applications");
      if (frame.is_null()) return frame;
      Json app = frame["applications"][0];
      if (isSo(app)) return app;
    }
  }
};

TEST_F(DebugPage, isToldWhereAnApplicationIsPaused) {
  start({"--page=0", write("app", "setTimeout(1, function () {\n  debugger;\n});"), "--break"});
  const auto client = attach();
  const std::string said = run_->waitFor("The device is on this page: ");
  PageClient page(loop_, run_->waitForLine(said.find("http://")));
  EXPECT_EQ(page.receive("hello")["applications"][0]["paused"],
            "before main.js, until a debugger comes");
  client->call("Runtime.runIfWaitingForDebugger");
  client->waitFor("Debugger.paused");
  client->call("Debugger.resume");
  const Json paused =
      applicationWhere(page, [](const Json& app) { return app["paused"] == "at main.js:2"; });
  EXPECT_EQ(paused["state"], "started");
  EXPECT_TRUE(paused["autokill"].is_null());
  client->waitFor("Debugger.paused");
  client->call("Debugger.resume");
  const Json resumed =
      applicationWhere(page, [](const Json& app) { return app["paused"].is_null(); });
  EXPECT_GT(resumed["autokill"], 8.0);
}

TEST_F(DebugPage, hasTheTerminalsWordsToo) {
  start({write("app", "setTimeout(1, function () {\n  debugger;\n});"), "--break"});
  const auto client = attach();
  run_->say("apps\n");
  run_->waitFor("paused before main.js, until a debugger comes");
}

}  // namespace
}  // namespace morvik::test
