// morvik-dev as its users meet it.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "app-client.h"
#include "device/json.h"
#include "loop.h"
#include "support/matchers.h"
#include "support/program.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

ProgramResult morvikDev(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), MORVIK_DEV);
  return run(arguments);
}

TEST(MorvikDev, tellsItsVerbs) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{}, {"help"}, {"--help"}, {"-h"}}) {
    const ProgramResult outcome = morvikDev(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, ContainsRegex("  device +run a virtual device"));
    EXPECT_THAT(outcome.output, ContainsRegex("  log +stand in for the system log"));
  }
}

TEST(MorvikDev, everyVerbTellsItsOptions) {
  const ProgramResult device = morvikDev({"device", "--help"});
  EXPECT_EQ(device.status, 0);
  EXPECT_THAT(device.output, HasSubstr("--port=N"));
  EXPECT_THAT(device.output, HasSubstr("--state=FOLDER"));
  const ProgramResult log = morvikDev({"log", "-h"});
  EXPECT_EQ(log.status, 0);
  EXPECT_THAT(log.output, HasSubstr("--quiet"));
}

TEST(MorvikDev, helpTellsTheOptionsOfAVerb) {
  for (const char* verb : {"device", "log"}) {
    const ProgramResult outcome = morvikDev({"help", verb});
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
      {{"device", "--events=xml"}, "morvik-dev device: events are shown as text or as json"},
      {{"log", "--loud"}, "morvik-dev log: Unknown option --loud"},
  };
  for (const auto& [arguments, words] : cases) {
    const ProgramResult outcome = morvikDev(arguments);
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
  const ProgramResult second =
      morvikDev({"device", "--port=" + port, "--state=" + folder_.path().string()});
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.output, StartsWith("morvik-dev device: port " + port + " is in use"));
  EXPECT_THAT(second.output, HasSubstr("--port=0 takes any free one"));
}

TEST_F(DeviceVerb, keepsNothingInAFolderThatItCannotUse) {
  const test::TemporaryFolder broken;
  std::ofstream(broken / "device.sqlite") << std::string(4096, 'x');
  const ProgramResult outcome =
      morvikDev({"device", "--port=0", "--state=" + broken.path().string()});
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

// The device as programs use it: every line in and out is JSON.
class EventsForm : public ::testing::Test {
 protected:
  EventsForm() {
    const Json first = next();
    EXPECT_EQ(first["event"], "listening");
    EXPECT_EQ(first["version"], 1);
    EXPECT_EQ(first["host"], "127.0.0.1");
    client_ = std::make_unique<AppClient>(loop_, first["port"].get<std::uint16_t>());
  }

  std::vector<std::string> command() const {
    return {MORVIK_DEV, "device", "--port=0", "--events=json",
            "--state=" + folder_.path().string()};
  }

  // The next line that it prints.
  Json next() {
    const std::string line = program_.waitForLine(read_);
    read_ += line.size() + 1;
    Json json = Json::parse(line, nullptr, false);
    EXPECT_TRUE(json.is_object()) << line;
    return json;
  }

  // The next line without what differs from run to run, and without the words for people.
  std::string told() {
    Json json = next();
    EXPECT_TRUE(json["time"].is_number()) << json;
    for (const char* member : {"time", "number", "begun", "words"}) json.erase(member);
    if (json.contains("message")) {
      json["message"].erase("id");
      json["message"].erase("correlationId");
    }
    return json.dump();
  }

  void expectTold(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) EXPECT_EQ(told(), line);
  }

  void start() {
    EXPECT_EQ(client_->ask(startRequest("mine")).response().code(), zeph::OK);
    expectTold({R"({"event":"came","application":1})",
                R"({"event":"changed","part":"applications"})",
                R"({"event":"received","application":1,"message":{"interactiveMode":)"
                R"({"action":"START","interactiveId":"mine"}}})",
                R"({"event":"changed","part":"applications"})",
                R"({"event":"sent","application":1,"message":{"response":{"code":"OK"}}})"});
  }

  Loop loop_;
  test::TemporaryFolder folder_;
  Program program_{command()};
  std::size_t read_ = 0;
  std::unique_ptr<AppClient> client_;
};

TEST_F(EventsForm, tellsAConversationLineByLine) {
  start();
  zeph::ZephMsg fade = fadeRequest("mine", "blue", 5);
  fade.set_id("3f2a");
  client_->send(fade);
  expectTold({R"({"event":"received","application":1,"message":{"interactiveId":"mine",)"
              R"("led":{"fade":{"color":"blue","period":5}}}})",
              R"({"event":"changed","part":"led"})",
              R"({"event":"began","work":"led","application":1,"request":"3f2a","length":5})",
              R"({"event":"sent","application":1,"message":{"response":{"code":"OK"}}})",
              R"({"event":"ended","work":"led","application":1,"request":"3f2a","length":5,)"
              R"("code":"TERMINATED"})",
              R"({"event":"sent","application":1,"message":{"event":{"code":"TERMINATED"}}})"});
  client_->sendBytes("\xff\xff\xff\xff");
  expectTold(
      {R"({"event":"changed","part":"applications"})",
       R"({"event":"trouble","application":1,"text":"announced a frame of 4294967295 bytes, )"
       R"(more than 67108864"})",
       R"({"event":"left","application":1})"});
}

TEST_F(EventsForm, countsItsEventsWithoutAGap) {
  start();
  program_.say("button SIMPLE\n");
  client_->receive();
  const Json stimulus = next();
  EXPECT_EQ(stimulus["number"], 6);
  EXPECT_EQ(next()["number"], 7);
}

TEST_F(EventsForm, takesWordsAndNames) {
  start();
  program_.say("button SIMPLE\n");
  EXPECT_EQ(client_->receive().buttoncallback().type(), zeph::ButtonCallback::SIMPLE);
  program_.say(R"({"stimulus": "button", "app": 1, "arguments": {"type": "DOUBLE"}})"
               "\n");
  EXPECT_EQ(client_->receive().buttoncallback().type(), zeph::ButtonCallback::DOUBLE);
  program_.say("fly\n{\n{\"stimulus\": \"fly\"}\n\n");
  expectTold({R"({"event":"stimulus","name":"button","arguments":{"type":["SIMPLE"]}})",
              R"({"event":"sent","application":1,"message":{"buttonCallback":{"type":"SIMPLE"}}})",
              R"({"event":"outcome","done":true,"text":""})",
              R"({"event":"stimulus","name":"button","application":1,)"
              R"("arguments":{"type":["DOUBLE"]}})",
              R"({"event":"sent","application":1,"message":{"buttonCallback":{"type":"DOUBLE"}}})",
              R"({"event":"outcome","done":true,"text":""})",
              R"({"event":"outcome","done":false,)"
              R"("text":"there is no stimulus fly. help lists them.\n"})",
              R"({"event":"outcome","done":false,"text":"the line is no JSON\n"})",
              R"({"event":"outcome","done":false,)"
              R"("text":"there is no stimulus fly. help lists them.\n"})",
              R"({"event":"outcome","done":true,"text":""})"});
}

TEST_F(EventsForm, givesTheViewAndTheTable) {
  start();
  program_.say("{\"view\": true}\n{\"stimuli\": true}\n{\"view\": false}\n");
  const Json view = next();
  EXPECT_EQ(view["event"], "view");
  EXPECT_EQ(view["view"]["version"], 1);
  EXPECT_EQ(view["view"]["applications"][0]["interactiveId"], "mine");
  const Json table = next();
  EXPECT_EQ(table["event"], "stimuli");
  EXPECT_EQ(table["stimuli"][0]["name"], "button");
  EXPECT_EQ(next()["done"], false);
}

TEST_F(EventsForm, holdsNoSecret) {
  start();
  program_.say("credentials facebookToken=SECRET\ncredentials\n{\"view\": true}\n");
  zeph::ZephMsg query = pingRequest("mine");
  query.clear_ping();
  query.mutable_socialquery();
  EXPECT_EQ(client_->ask(query).social().facebooktoken(), "SECRET") << "the application gets it";
  zeph::ZephMsg account = pingRequest("mine");
  account.clear_ping();
  auto* given = account.mutable_m2m()->mutable_account();
  given->set_sipid("ann");
  given->set_sipdomain("home");
  given->set_sippassword("SECRET");
  given->set_stunserver("s");
  EXPECT_EQ(client_->ask(account).response().code(), zeph::OK);
  program_.say("help\n");
  program_.waitFor("show this");
  EXPECT_THAT(program_.output(), HasSubstr("facebookToken"));
  EXPECT_THAT(program_.output(), HasSubstr("sipPassword"));
  EXPECT_THAT(program_.output(), Not(HasSubstr("SECRET")));
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

  Loop loop_;
  test::TemporaryFolder folder_;
};

TEST_F(LogVerb, showsRecordsWithTheirLevels) {
  Program log(command());
  log.waitFor("listening on " + path() + "\n");
  send("<143>Jan  1 12:00:00 MorvikVM[12]: Sending MSG\nid: \"a\"\n");
  send("<140>Jan  1 12:00:00 MorvikVM[12]: a bell \a");
  send("no record");
  send("<999999999999>no record");
  const std::string said = log.waitFor("<999999999999>no record\n");
  EXPECT_THAT(said, ContainsRegex(" MorvikVM\\[12\\] DEBUG: Sending MSG\n    \\| id: \"a\"\n"
                                  "[0-9:.]+ MorvikVM\\[12\\] WARNING: a bell \\?\n"
                                  "[0-9:.]+ no record\n"
                                  "[0-9:.]+ <999999999999>no record\n"));
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
  const ProgramResult second = run(command());
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
  const ProgramResult outcome = run(command());
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, StartsWith("morvik-dev log: cannot listen on " + path()));
  EXPECT_TRUE(std::filesystem::is_directory(path()));
}

}  // namespace
}  // namespace morvik::test
