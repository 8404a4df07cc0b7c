// Who may come in.
#include "page/admission.h"

#include <gtest/gtest.h>

#include <set>

namespace morvik::test {

using namespace devkit;
namespace {

using Verdict = Admission::Verdict;

const std::string kToken = "00112233445566778899aabbccddeeff";

class AdmissionTest : public ::testing::Test {
 protected:
  static Admission::Request request() { return {"GET", path_, "127.0.0.1:8000", std::nullopt}; }

  static inline const std::string path_ = "/" + kToken + "/index.html";
  Admission admission_{kToken, 8000};
};

TEST_F(AdmissionTest, takesWhoKnowsTheAddress) {
  EXPECT_EQ(admission_.address(), "http://127.0.0.1:8000/" + kToken + "/");
  for (const char* method : {"GET", "HEAD"}) {
    for (const char* host : {"127.0.0.1:8000", "localhost:8000"}) {
      Admission::Request asked = request();
      asked.method = method;
      asked.host = host;
      EXPECT_EQ(admission_.forFile(asked), Verdict::kWelcome) << method << host;
    }
  }
}

TEST_F(AdmissionTest, refusesOtherMethods) {
  for (const char* method : {"POST", "PUT", "DELETE", "OPTIONS", "TRACE", "get", ""}) {
    Admission::Request asked = request();
    asked.method = method;
    EXPECT_EQ(admission_.forFile(asked), Verdict::kWrongMethod) << method;
  }
}

TEST_F(AdmissionTest, refusesANameThatWasMadeToPointHere) {
  for (const char* host : {"evil.example:8000", "127.0.0.1", "127.0.0.1:8001", "localhost",
                           "localhost.evil.example:8000", "127.0.0.1:8000.evil.example",
                           "[::1]:8000", "0.0.0.0:8000", ""}) {
    Admission::Request asked = request();
    asked.host = host;
    EXPECT_EQ(admission_.forFile(asked), Verdict::kForeign) << host;
  }
  Admission::Request asked = request();
  asked.host = std::nullopt;
  EXPECT_EQ(admission_.forFile(asked), Verdict::kForeign);
}

TEST_F(AdmissionTest, refusesOtherSites) {
  for (const char* origin : {"http://evil.example", "https://127.0.0.1:8000", "null", "",
                             "http://127.0.0.1:80000", "http://127.0.0.1"}) {
    Admission::Request asked = request();
    asked.origin = origin;
    EXPECT_EQ(admission_.forFile(asked), Verdict::kForeign) << origin;
    EXPECT_EQ(admission_.forSocket(asked), Verdict::kForeign) << origin;
  }
}

TEST_F(AdmissionTest, aSocketTellsWhereItsPageCameFrom) {
  Admission::Request asked = request();
  EXPECT_EQ(admission_.forSocket(asked), Verdict::kForeign);
  for (const char* origin : {"http://127.0.0.1:8000", "http://localhost:8000"}) {
    asked.origin = origin;
    EXPECT_EQ(admission_.forSocket(asked), Verdict::kWelcome);
    EXPECT_EQ(admission_.forFile(asked), Verdict::kWelcome);
  }
  asked.method = "HEAD";
  EXPECT_EQ(admission_.forSocket(asked), Verdict::kWrongMethod);
}

TEST_F(AdmissionTest, findsTheNameBehindTheToken) {
  EXPECT_EQ(admission_.nameIn("/" + kToken + "/"), "");
  EXPECT_EQ(admission_.nameIn("/" + kToken + "/app.js"), "app.js");
  EXPECT_EQ(admission_.nameIn("/" + kToken + "/../x"), "../x") << "no file has that name";
}

TEST_F(AdmissionTest, knowsNobodyWithoutTheToken) {
  std::string other = kToken;
  other.back() = 'e';
  for (const std::string& path :
       {std::string("/"), std::string(), "/" + kToken, kToken + "/index.html", "/" + other + "/",
        "/" + kToken.substr(1) + "/", "/x" + kToken + "/", "//" + kToken + "/",
        "/index.html?token=" + kToken}) {
    Admission::Request asked = request();
    asked.path = path;
    EXPECT_EQ(admission_.forFile(asked), Verdict::kUnknown) << path;
  }
}

TEST(FreshToken, isLongAndNeverTheSame) {
  std::set<std::string> tokens;
  for (int i = 0; i < 100; ++i) tokens.insert(freshToken());
  EXPECT_EQ(tokens.size(), 100U);
  for (const std::string& token : tokens) {
    EXPECT_EQ(token.size(), 32U);
    EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), std::string::npos);
  }
}

}  // namespace
}  // namespace morvik::test
