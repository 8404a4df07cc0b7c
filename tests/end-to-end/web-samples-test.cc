// The applications in apps/ that talk to the web, run by the real morvikvm against servers on the
// loopback interface.
#include "end-to-end/web-samples.h"

#include <glib.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <array>
#include <filesystem>
#include <regex>

#include "support/file-content.h"
#include "support/system/system-test.h"
#include "support/text-message.h"
#include "support/web/nginx.h"
#include "support/web/recording-server.h"

namespace morvik::test {
namespace {

class WebSamplesTest : public SystemTest {
 protected:
  // Runs a sample from a copy.
  App launchSample(const std::string& name, const std::string& instance) {
    std::filesystem::copy(SOURCE_DIR "/apps/" + name, apps.path() + "/" + name,
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
    return launch(name + " demo " + instance);
  }
};

// --- weather

constexpr char kReport[] =
    R"({"place": "Home", "now": {"sky": "rain", "temperature": 11.4},)"
    R"( "days": [{"name": "Tomorrow", "sky": "sun", "low": 8, "high": 18.7}]})";

TEST_F(WebSamplesTest, weatherTellsWhatTheServerSays) {
  const Nginx web("");
  web.file("weather.json", kReport);
  App sample = launchSample(kWeather, web.url("/files/weather.json"));
  EXPECT_THAT(sample.logged(2), testing::ElementsAre("Home: rain, 11 degrees",
                                                     "Tomorrow: sun, from 8 to 19 degrees"));
  sample.waitUntilEnded();

  apps.config(
      kWeather,
      messageFrom<zeph::ConfigApp>(
          "apiKey: 'k' version: '1' name: 'weather' deployment: 'd' configInstance { name: 'home' "
          "params { key: 'url' value: '" +
          web.tlsUrl("/files/weather.json") + "' } }"));
  EXPECT_EQ(launchSample(kWeather, "home").logged(), "Home: rain, 11 degrees");
}

TEST_F(WebSamplesTest, weatherTellsWhatIsWrong) {
  const Nginx web("");
  web.file("weather.json", "no JSON");
  EXPECT_EQ(launchSample(kWeather, web.url("/files/missing")).logged(),
            "no weather today: the server says 404");
  EXPECT_EQ(launchSample(kWeather, web.url("/files/weather.json")).logged(),
            "no weather today: SyntaxError: Unexpected token o in JSON at position 1");
  const std::string dead = RecordingServer().url();
  EXPECT_EQ(launchSample(kWeather, dead).logged(), "no weather today: no answer from " + dead);
}

// --- photo-upload

TEST_F(WebSamplesTest, photoUploadSendsItsPicture) {
  const Nginx web("");
  App sample = launchSample(kPhotoUpload, web.url("/bodies"));
  EXPECT_THAT(sample.logged(2),
              testing::ElementsAre("the server says: HTTP/1.1 200 OK", "and: taken"));
  sample.waitUntilEnded();
  ASSERT_EQ(web.bodies().size(), 1U);
  const std::string body = web.bodies()[0];
  const std::string bytes = contentOf(SOURCE_DIR "/apps/photo-upload/picture.svg");
  EXPECT_THAT(body, HasSubstr("name=\"title\"\r\n\r\nFrom photo-upload\r\n"));
  EXPECT_THAT(body, HasSubstr("name=\"photo\"; filename=\"picture.svg\""));
  EXPECT_THAT(body, HasSubstr("\r\n\r\n" + bytes + "\r\n--"));
}

TEST_F(WebSamplesTest, photoUploadTellsWhenNothingGetsThrough) {
  const std::string dead = RecordingServer().url("/upload");
  EXPECT_EQ(launchSample(kPhotoUpload, dead).logged(),
            "the picture did not get through to " + dead);
}

// --- signed-request

std::string escaped(const std::string& text) {
  gchar* escape = g_uri_escape_string(text.c_str(), nullptr, FALSE);
  std::string copy = escape;
  g_free(escape);
  return copy;
}

std::string unescaped(const std::string& text) {
  gchar* plain = g_uri_unescape_string(text.c_str(), nullptr);
  std::string copy = plain == nullptr ? "" : plain;
  g_free(plain);
  return copy;
}

// As another implementation signs.
std::string signatureOf(const std::string& text, const std::string& key) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned size = 0;
  HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()),
       reinterpret_cast<const unsigned char*>(text.data()), text.size(), digest.data(), &size);
  std::array<unsigned char, std::size_t{2} * EVP_MAX_MD_SIZE> encoded{};
  const int length = EVP_EncodeBlock(encoded.data(), digest.data(), static_cast<int>(size));
  return {reinterpret_cast<const char*>(encoded.data()), static_cast<std::size_t>(length)};
}

// A value of the request's Authorization header.
std::string oauth(const std::string& request, const std::string& name) {
  const std::string start = name + "=\"";
  const std::size_t at = request.find(start) + start.size();
  return unescaped(request.substr(at, request.find('"', at) - at));
}

TEST_F(WebSamplesTest, signedRequestCarriesTheSignatureOfWhatItAsks) {
  RecordingServer web;
  web.answerWith(response("here you are"));
  App sample = launchSample(kSignedRequest, web.url("/photos"));
  EXPECT_EQ(sample.logged(), "the server says: here you are");
  sample.waitUntilEnded();
  const std::string request = web.takeRequest();
  const std::string query = "file=vacation%20%281%29.jpg&";
  EXPECT_THAT(request, testing::StartsWith("GET /photos?" + query + "size=original%21 HTTP/1.1"));
  EXPECT_THAT(request, HasSubstr("\r\nAuthorization: OAuth oauth_consumer_key="));
  EXPECT_TRUE(std::regex_match(oauth(request, "oauth_nonce"), std::regex(kUuid)));
  const std::string parameters =
      query + "oauth_consumer_key=dpf43f3p2l4k3l03&oauth_nonce=" + oauth(request, "oauth_nonce") +
      "&oauth_signature_method=HMAC-SHA1&oauth_timestamp=" + oauth(request, "oauth_timestamp") +
      "&oauth_token=nnch734d00sl2jdk&oauth_version=1.0&size=original%21";
  EXPECT_EQ(oauth(request, "oauth_signature"),
            signatureOf("GET&" + escaped(web.url("/photos")) + "&" + escaped(parameters),
                        "kd94hf93k423kf44&pfkkdhi9sl3r4s00"));
}

}  // namespace

}  // namespace morvik::test
