// A form that there is no memory for. What a form sends is in http-body-test.cc.
#include "web/curl-form.h"

#include <csignal>

#include "support/matchers.h"
#include "support/unit/exhausted.h"

#ifndef __SANITIZE_ADDRESS__  // its allocator never says no
namespace morvik::test {
namespace {

constexpr const char* kEnd = ": script engine out of memory: a part of a form does not fit\n";

TEST(CurlFormTest, leavesNoPartOutForWantOfMemory) {
  const std::string name = "a";
  const std::string content = "short";
  const auto add = [&](void (CurlForm::*part)(const std::string&, const std::string&)) {
    exhaustAnd([&, part] { (CurlForm().*part)(name, content); });
  };
  EXPECT_EXIT(add(&CurlForm::addText), testing::KilledBySignal(SIGTRAP), kEnd);
  EXPECT_EXIT(add(&CurlForm::addFile), testing::KilledBySignal(SIGTRAP), kEnd);
}

}  // namespace
}  // namespace morvik::test
#endif
