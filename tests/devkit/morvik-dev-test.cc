// morvik-dev as its users meet it.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "app-client.h"
#include "program.h"
#include "support/temporary-folder.h"

namespace morvik::devkit::testing {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::StartsWith;

Outcome morvikDev(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), MORVIK_DEV);
  return run(arguments);
}

TEST(MorvikDev, tellsItsVerbs) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"help"}, {"--help"}, {"-h"}}) {
    const Outcome outcome = morvikDev(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, ContainsRegex("  device +run a virtual device"));
    EXPECT_THAT(outcome.output, ContainsRegex("  log +stand in for the system log"));
  }
}

TEST(MorvikDev, everyVerbTellsItsOptions) {
  const Outcome device = morvikDev({"device", "--help"});
  EXPECT_EQ(device.status, 0);
  EXPECT_THAT(device.output, HasSubstr("--port=N"));
  EXPECT_THAT(device.output, HasSubstr("--state=FOLDER"));
  const Outcome log = morvikDev({"log", "-h"});
  EXPECT_EQ(log.status, 0);
  EXPECT_THAT(log.output, HasSubstr("--quiet"));
}

TEST(MorvikDev, helpTellsTheOptionsOfAVerb) {
  for (const char* verb : {"device", "log"}) {
    const Outcome outcome = morvikDev({"help", verb});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, morvikDev({verb, "--help"}).output);
    EXPECT_EQ(outcome.output, morvikDev({"--help", verb}).output);
  }
  EXPECT_EQ(morvikDev({"help", "help"}).output, morvikDev({"help"}).output);
  EXPECT_EQ(morvikDev({"help", "--help"}).output, morvikDev({"help"}).output);
}

TEST(MorvikDev, refusesWhatMakesNoSense) {
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"fly"}, "morvik-dev: there is no verb fly"},
      {{"help", "fly"}, "morvik-dev: there is no verb fly"},
      {{"device", "--wings"}, "morvik-dev device: Unknown option --wings"},
      {{"device", "7410"}, "morvik-dev device: takes no argument: 7410"},
      {{"device", "--port=many"}, "morvik-dev device: Cannot parse integer value"},
      {{"device", "--port=65536"}, "morvik-dev device: a port is a number from 0 to 65535"},
      {{"device", "--port=-1"}, "morvik-dev device: a port is a number from 0 to 65535"},
      {{"log", "--loud"}, "morvik-dev log: Unknown option --loud"},
  };
  for (const auto& [arguments, words] : cases) {
    const Outcome outcome = morvikDev(arguments);
    EXPECT_EQ(outcome.status, 2) << words;
    EXPECT_THAT(outcome.output, StartsWith(words));
  }
}

class DeviceVerb : public ::testing::Test {
 protected:
  // Its first line names the port.
  std::uint16_t portOf(Program& device) {
    const std::string start = "listening on 127.0.0.1:";
    const std::string said = device.waitFor("\n");
    EXPECT_THAT(said, StartsWith(start));
    return said.starts_with(start)
               ? static_cast<std::uint16_t>(std::stoi(said.substr(start.size())))
               : std::uint16_t{0};
  }

  std::vector<std::string> command() const {
    return {MORVIK_DEV, "device", "--port=0", "--state=" + folder_.path().string()};
  }

  Loop loop_;
  test::TemporaryFolder folder_;
  Program device_{command()};
};

TEST_F(DeviceVerb, showsAConversation) {
  AppClient client(loop_, portOf(device_));
  EXPECT_EQ(client.ask(startRequest("mine")).response().code(), zeph::OK);
  EXPECT_EQ(client.ask(lightRequest("mine", "red")).response().code(), zeph::OK);
  client.disconnect();
  const std::string said = device_.waitFor("gone");
  EXPECT_THAT(said, ContainsRegex("app 1 --  connected\n"
                                  ".* app 1 ->  interactive mode START mine  #.*\n"
                                  ".* app 1 <-  response OK  #.*\n"
                                  ".* app 1 ->  led light red  #.*\n"
                                  ".* app 1 <-  response OK  #.*\n"
                                  ".* app 1 --  gone\n"));
  EXPECT_THAT(said, Not(HasSubstr("\033"))) << "colours in a pipe";
}

TEST_F(DeviceVerb, takesCommandsOnItsInput) {
  AppClient client(loop_, portOf(device_));
  EXPECT_EQ(client.ask(startRequest("mine")).response().code(), zeph::OK);
  device_.say("help button\nfly\nbutton LONG");
  device_.waitFor("  button SIMPLE|");
  device_.waitFor("there is no stimulus fly. help lists them.\n");
  device_.say("_STOP\r\nrfid 04a1");
  EXPECT_EQ(client.receive().buttoncallback().type(), zeph::ButtonCallback::LONG_STOP);
  device_.waitFor(" app 1 <-  buttonCallback { type: LONG_STOP }\n");
  device_.endInput();
  EXPECT_EQ(client.receive().rfidcallback().id(), "04a1") << "a last line without an end";
  EXPECT_EQ(client.ask(pingRequest("mine")).response().code(), zeph::OK) << "still there";
}

TEST_F(DeviceVerb, endsWhenItIsInterruptedOrTerminated) {
  for (const int number : {SIGINT, SIGTERM}) {
    Program device(command());
    AppClient client(loop_, portOf(device));
    device.waitFor("connected");
    device.signal(number);
    EXPECT_EQ(device.waitForEnd(), 0);
    EXPECT_TRUE(client.sawEnd());
  }
}

TEST_F(DeviceVerb, saysWhatToDoWhenThePortIsBusy) {
  const std::string port = std::to_string(portOf(device_));
  const Outcome second =
      morvikDev({"device", "--port=" + port, "--state=" + folder_.path().string()});
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.output, StartsWith("morvik-dev device: port " + port + " is in use"));
  EXPECT_THAT(second.output, HasSubstr("--port=0 takes any free one"));
}

TEST_F(DeviceVerb, keepsNothingInAFolderThatItCannotUse) {
  const test::TemporaryFolder broken;
  std::ofstream(broken / "device.sqlite") << std::string(4096, 'x');
  const Outcome outcome = morvikDev({"device", "--port=0", "--state=" + broken.path().string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.output, "morvik-dev device: cannot keep anything in " +
                                (broken / "device.sqlite") +
                                ": file is not a database\n"
                                "Nothing was changed. Choose another folder: --state=FOLDER.\n");
}

TEST_F(DeviceVerb, keepsItsStateWhereTheUsersProgramsDo) {
  const test::TemporaryFolder home;
  Program device(
      {"/usr/bin/env", "XDG_STATE_HOME=" + home.path().string(), MORVIK_DEV, "device", "--port=0"});
  device.waitFor("listening on");
  EXPECT_TRUE(std::filesystem::exists(home / "morvik-dev/device.sqlite"));
}

class LogVerb : public ::testing::Test {
 protected:
  std::string path() const { return folder_ / "log"; }
  std::vector<std::string> command() const { return {MORVIK_DEV, "log", "--socket=" + path()}; }

  sockaddr_un address() const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path().copy(address.sun_path, sizeof(address.sun_path) - 1);
    return address;
  }

  void send(const std::string& record) const {
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un to = address();
    EXPECT_EQ(sendto(sender, record.data(), record.size(), 0,
                     reinterpret_cast<const sockaddr*>(&to), sizeof(to)),
              static_cast<ssize_t>(record.size()));
    close(sender);
  }

  // As a program leaves its socket that is killed.
  void leaveStaleSocket() const {
    const int stale = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un at = address();
    EXPECT_EQ(bind(stale, reinterpret_cast<const sockaddr*>(&at), sizeof(at)), 0);
    close(stale);
  }

  test::TemporaryFolder folder_;
};

TEST_F(LogVerb, showsRecordsWithTheirLevels) {
  Program log(command());
  log.waitFor("listening on " + path() + "\n");
  send("<143>Jan  1 12:00:00 MorvikVM[12]: Sending MSG\nid: \"a\"\n");
  send("<140>Jan  1 12:00:00 MorvikVM[12]: a bell \a");
  send("no record");
  send("<999999999999>no record");
  log.waitFor(
      "DEBUG: MorvikVM[12]: Sending MSG\nid: \"a\"\n"
      "WARNING: MorvikVM[12]: a bell ?\n"
      "no record\n"
      "<999999999999>no record\n");
}

TEST_F(LogVerb, showsNothingWhenItIsToBeQuiet) {
  std::vector<std::string> quiet = command();
  quiet.emplace_back("--quiet");
  Program log(quiet);
  log.waitFor("\n");
  send("<143>Jan  1 12:00:00 MorvikVM[12]: text");
  log.signal(SIGTERM);
  EXPECT_EQ(log.waitForEnd(), 0);
  EXPECT_EQ(log.output(), "listening on " + path() + "\n");
}

TEST_F(LogVerb, removesItsSocketAtTheEnd) {
  Program log(command());
  log.waitFor("\n");
  EXPECT_TRUE(std::filesystem::is_socket(path()));
  log.signal(SIGINT);
  EXPECT_EQ(log.waitForEnd(), 0);
  EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(LogVerb, leavesASocketAloneThatSomebodyListensOn) {
  Program log(command());
  log.waitFor("\n");
  const Outcome second = run(command());
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.output, HasSubstr("somebody else listens there already"));
  send("<143>Jan  1 12:00:00 MorvikVM[12]: still heard");
  log.waitFor("still heard");
}

TEST_F(LogVerb, takesThePlaceOfASocketThatNobodyListensOn) {
  leaveStaleSocket();
  Program log(command());
  log.waitFor("listening");
  send("<143>Jan  1 12:00:00 MorvikVM[12]: heard");
  log.waitFor("heard");
}

TEST_F(LogVerb, doesNotReplaceWhatIsNoSocket) {
  std::filesystem::create_directory(path());
  const Outcome outcome = run(command());
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, StartsWith("morvik-dev log: cannot listen on " + path()));
  EXPECT_TRUE(std::filesystem::is_directory(path()));
}

}  // namespace
}  // namespace morvik::devkit::testing
