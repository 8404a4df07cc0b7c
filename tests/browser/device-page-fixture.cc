// The device as a program, and what its applications say to it.
#include "device-page-fixture.h"

#include <google/protobuf/text_format.h>

#include "support/browser/said.h"

namespace morvik::test {

DevicePageTest::DevicePageTest()
    : device_({MORVIK_DEV, "device", "--port=0", "--page", "--state=" + folder_.path().string()}),
      address_(saidBehind("page: ", device_)),
      port_(static_cast<std::uint16_t>(std::stoi(saidBehind("listening on 127.0.0.1:", device_)))) {
}

void DevicePageTest::openAnotherPage() {
  driver_.openWindow();
  openPage();
}

std::unique_ptr<AppClient> DevicePageTest::application() {
  auto app = std::make_unique<AppClient>(loop_, port_);
  EXPECT_EQ(app->ask(startRequest("granted")).response().code(), zeph::OK);
  return app;
}

std::string DevicePageTest::send(AppClient& app, const std::string& payload) {
  zeph::ZephMsg message = freshMessage();
  const std::string head = "id: '" + message.id() + "' interactiveId: 'granted' ";
  EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(head + payload, &message)) << payload;
  app.send(message);
  return message.id();
}

std::string DevicePageTest::command(AppClient& app, const std::string& payload) {
  std::string id = send(app, payload);
  zeph::ZephMsg answer = app.receive();
  while (answer.has_id() && answer.correlationid() != id) answer = app.receive();
  EXPECT_EQ(answer.correlationid(), id) << payload;
  const auto code = answer.has_response() ? answer.response().code() : zeph::OK;
  EXPECT_EQ(code, zeph::OK) << payload;
  return id;
}

zeph::ZephMsg DevicePageTest::next(AppClient& app, const std::string& field) {
  const auto* wanted = zeph::ZephMsg::descriptor()->FindFieldByName(field);
  zeph::ZephMsg message = app.receive();
  while (message.has_id() && !message.GetReflection()->HasField(message, wanted)) {
    message = app.receive();
  }
  return message;
}

}  // namespace morvik::test
