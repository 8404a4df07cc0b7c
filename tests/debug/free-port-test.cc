// Ports that are free, and ports that are not.
#include "debug/free-port.h"

#include "device/owned.h"
#include "support/matchers.h"

namespace morvik::test {

using namespace devkit;
namespace {

std::string trouble;

TEST(FreePort, isAnyOneOrTheVeryOne) {
  const auto any = freePort(0, false, trouble);
  ASSERT_TRUE(any) << trouble;
  EXPECT_GT(*any, 0);
  EXPECT_EQ(freePort(*any, false, trouble), any);
}

TEST(FreePort, isTheNextOneOrNoneWhereOneIsTaken) {
  const GOwned<GSocketListener> listener(g_socket_listener_new());
  const auto taken = g_socket_listener_add_any_inet_port(listener.get(), nullptr, nullptr);
  EXPECT_FALSE(freePort(taken, false, trouble));
  EXPECT_THAT(trouble, StartsWith("port " + std::to_string(taken) + ": "));
  EXPECT_GT(freePort(taken, true, trouble), taken);
}

}  // namespace
}  // namespace morvik::test
