// Looking up a service's object by its name, whatever the script has put there.
#include "web/social-account.h"

#include "support/unit/script-test.h"
#include "web/hidden-value.h"

namespace morvik::test {
namespace {

class SocialAccountTest : public ScriptTest {
 protected:
  // The secret of the account "svc", or what looking that up threw.
  std::string read() {
    const v8::Context::Scope entered(context());
    v8::TryCatch tryCatch(isolate());
    v8::Local<v8::Object> account;
    const bool found = socialAccount(isolate(), "svc").ToLocal(&account);
    const auto told = found ? hidden(account, "token") : tryCatch.Exception();
    return (found ? "" : "throws: ") + std::string(*v8::String::Utf8Value(isolate(), told));
  }
};

TEST_F(SocialAccountTest, isLookedUpByNameEachTime) {
  run("globalThis.social = {svc: {}}; globalThis.first = social.svc;");
  EXPECT_EQ(read(), "undefined");
  {
    const v8::Context::Scope entered(context());
    setHidden(object("social.svc"), "token", toScript("secret"));
  }
  EXPECT_EQ(read(), "secret");
  run("social.svc = {token: 'mine'}");
  EXPECT_EQ(read(), "undefined");
  run("social = {svc: first}");
  EXPECT_EQ(read(), "secret");
  run("social = {svc: 5}");
  EXPECT_EQ(read(), "undefined");
}

TEST_F(SocialAccountTest, whatTheLookUpThrowsIsTheScripts) {
  for (const char* social : {"{}", "null", "5", "{svc: null}"}) {
    SCOPED_TRACE(social);
    run(std::string("social = ") + social);
    EXPECT_EQ(read(), "throws: TypeError: Cannot convert undefined or null to object");
  }
  run("social = {get svc() { throw 'mine'; }}");
  EXPECT_EQ(read(), "throws: mine");
  run("delete globalThis.social");
  EXPECT_THAT(read(), testing::StartsWith("throws: TypeError"));
}

}  // namespace
}  // namespace morvik::test
