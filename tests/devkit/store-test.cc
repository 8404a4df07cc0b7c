// What the device keeps beyond its end, and what it does with a file that it cannot use.
#include "device/store.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "support/file-content.h"
#include "support/matchers.h"
#include "support/temporary-folder.h"

namespace morvik::test {

using namespace devkit;
namespace {

Store::Ids idsOf(std::initializer_list<std::string> ids) { return {ids.begin(), ids.end()}; }

std::vector<std::string> textsOf(const std::optional<Store::Messages>& messages) {
  if (!messages) return {"(failed)"};
  std::vector<std::string> texts;
  for (const auto& message : *messages) texts.push_back(message.content().content());
  return texts;
}

std::vector<std::string> namesOf(const std::optional<Store::Contacts>& contacts) {
  if (!contacts) return {"(failed)"};
  std::vector<std::string> names;
  for (const auto& contact : *contacts) names.push_back(contact.uuid() + ' ' + contact.alias());
  return names;
}

zeph::MorvikMessage messageOf(const std::string& text) {
  zeph::MorvikMessage message;
  message.mutable_header()->mutable_to()->set_uuid("u");
  message.mutable_content()->set_type(zeph::MorvikMessageContent::TEXT);
  message.mutable_content()->set_content(text);
  return message;
}

zeph::Contact contactOf(const std::string& uuid, const std::string& alias) {
  zeph::Contact contact;
  contact.set_uuid(uuid);
  contact.set_alias(alias);
  return contact;
}

std::string idOf(const std::optional<zeph::MorvikMessage>& message) {
  return message ? message->header().id() : "(failed)";
}

class StoreTest : public ::testing::Test {
 protected:
  std::string file() const { return folder() + "/device.sqlite"; }
  std::string folder() const { return folder_ / "state"; }  // the store makes it

  std::unique_ptr<Store> open() {
    std::string trouble;
    auto store = Store::open(folder(), trouble);
    EXPECT_TRUE(store) << trouble;
    return store;
  }

  std::string bytes() const { return test::contentOf(file()); }

  void writeFile(const std::string& bytes) const {
    std::filesystem::create_directories(folder());
    std::ofstream(file(), std::ios::binary) << bytes;
  }

  // The store is refused with words that name the file, which stays as it is.
  void expectRefused(const std::string& why) const {
    const std::string before = bytes();
    std::string trouble;
    EXPECT_EQ(Store::open(folder(), trouble), nullptr);
    EXPECT_EQ(trouble, file() + ": " + why);
    EXPECT_EQ(bytes(), before);
  }

  // SQL of somebody else on the same file.
  void meddle(const char* sql) const {
    Database database;
    ASSERT_TRUE(database.open(file())) << database.trouble();
    ASSERT_TRUE(database.does(sql)) << database.trouble();
  }

  const test::TemporaryFolder folder_;
};

TEST_F(StoreTest, aNewOneIsEmpty) {
  const auto store = open();
  EXPECT_EQ(store->credentials()->ByteSizeLong(), 0U);
  EXPECT_THAT(textsOf(store->messages()), IsEmpty());
  EXPECT_THAT(namesOf(store->contacts()), IsEmpty());
}

TEST_F(StoreTest, everythingOutlivesIt) {
  zeph::Social credentials;
  credentials.set_facebooktoken("secret");
  zeph::MorvikMessage odd = messageOf(std::string("a\0b\xff", 4));
  odd.mutable_content()->set_header("h");
  {
    const auto store = open();
    EXPECT_TRUE(store->keepCredentials(credentials));
    odd = *store->addMessage(odd);
    EXPECT_TRUE(store->keepContact(contactOf("u", "you")));
  }
  const auto store = open();
  EXPECT_EQ(store->credentials()->SerializeAsString(), credentials.SerializeAsString());
  ASSERT_THAT(*store->messages(), ::testing::SizeIs(1));
  EXPECT_EQ(store->messages()->front().SerializeAsString(), odd.SerializeAsString());
  EXPECT_THAT(namesOf(store->contacts()), ElementsAre("u you"));
}

TEST_F(StoreTest, inMemoryNothingIsShared) {
  const auto one = Store::inMemory();
  const auto other = Store::inMemory();
  ASSERT_TRUE(one->addMessage(messageOf("mine")));
  EXPECT_THAT(textsOf(one->messages()), ElementsAre("mine"));
  EXPECT_THAT(textsOf(other->messages()), IsEmpty());
}

TEST_F(StoreTest, isForItsOwnerAlone) {
  const auto store = open();
  for (const auto& [path, mode] : {std::pair{folder(), 0700U}, {file(), 0600U}}) {
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, mode) << path;
  }
}

TEST_F(StoreTest, newCredentialsReplaceTheOld) {
  const auto store = open();
  zeph::Social credentials;
  credentials.set_facebooktoken("one");
  ASSERT_TRUE(store->keepCredentials(credentials));
  credentials.clear_facebooktoken();
  credentials.set_soundcloudtoken("two");
  ASSERT_TRUE(store->keepCredentials(credentials));
  EXPECT_EQ(store->credentials()->SerializeAsString(), credentials.SerializeAsString());
}

TEST_F(StoreTest, messagesAreFoundByTheirIds) {
  const auto store = open();
  const std::string a = idOf(store->addMessage(messageOf("a")));
  const std::string b = idOf(store->addMessage(messageOf("b")));
  EXPECT_NE(a, b);
  EXPECT_THAT(textsOf(store->messages()), ElementsAre("a", "b"));
  EXPECT_THAT(textsOf(store->messages(idsOf({b, "none", a, b}))), ElementsAre("b", "a", "b"));
  EXPECT_THAT(textsOf(store->messages(idsOf({}))), IsEmpty());
  EXPECT_THAT(textsOf(store->messages(idsOf({"' OR 1 --"}))), IsEmpty());
}

TEST_F(StoreTest, whatIsReadStaysRead) {
  const auto store = open();
  const std::string a = idOf(store->addMessage(messageOf("a")));
  ASSERT_TRUE(store->addMessage(messageOf("b")));
  const auto marked = store->markAsRead(idsOf({a, "none"}));
  ASSERT_THAT(textsOf(marked), ElementsAre("a"));
  EXPECT_EQ(marked->front().header().status(), zeph::MorvikMessageHeader::READ);
  EXPECT_EQ(store->messages()->at(0).header().status(), zeph::MorvikMessageHeader::READ);
  EXPECT_FALSE(store->messages()->at(1).header().has_status());
}

TEST_F(StoreTest, whatIsRemovedIsGone) {
  const auto store = open();
  const std::string a = idOf(store->addMessage(messageOf("a")));
  ASSERT_TRUE(store->addMessage(messageOf("b")));
  EXPECT_THAT(textsOf(store->removeMessages(idsOf({a, a, "none"}))), ElementsAre("a"));
  EXPECT_THAT(textsOf(store->messages()), ElementsAre("b"));
}

TEST_F(StoreTest, aContactKeepsItsPlace) {
  const auto store = open();
  for (const char* uuid : {"1", "2", "3"}) ASSERT_TRUE(store->keepContact(contactOf(uuid, "old")));
  ASSERT_TRUE(store->keepContact(contactOf("2", "new")));
  EXPECT_THAT(namesOf(store->contacts()), ElementsAre("1 old", "2 new", "3 old"));
}

TEST_F(StoreTest, twoDevicesMayShareIt) {
  const auto one = open();
  const auto other = open();
  ASSERT_TRUE(one->addMessage(messageOf("a")));
  ASSERT_TRUE(other->addMessage(messageOf("b")));
  EXPECT_THAT(textsOf(one->messages()), ElementsAre("a", "b"));
}

TEST_F(StoreTest, refusesAFileThatIsNoDatabase) {
  writeFile(std::string(4096, 'x'));
  expectRefused("file is not a database");
}

TEST_F(StoreTest, refusesADamagedFile) {
  {
    const auto store = open();
    ASSERT_TRUE(store->addMessage(messageOf(std::string(100000, 'x'))));
  }
  std::string damaged = bytes();
  ASSERT_GT(damaged.size(), 40000U);
  damaged.replace(4096, 8192, 8192, '\xee');
  writeFile(damaged);
  expectRefused("the file is damaged");
}

TEST_F(StoreTest, refusesATruncatedFile) {
  {
    const auto store = open();
    ASSERT_TRUE(store->addMessage(messageOf(std::string(100000, 'x'))));
  }
  writeFile(bytes().substr(0, 20000));
  expectRefused("database disk image is malformed");
}

TEST_F(StoreTest, refusesTheDatabaseOfAnotherProgram) {
  std::filesystem::create_directories(folder());
  meddle("CREATE TABLE messages (id TEXT, message BLOB)");
  expectRefused("belongs to another program");
}

TEST_F(StoreTest, refusesAnotherVersion) {
  open().reset();
  meddle("PRAGMA user_version = 2");
  expectRefused("is of another version");
}

TEST_F(StoreTest, refusesWhatItCannotMake) {
  std::string trouble;
  const std::string deeper = folder() + "/deeper";
  std::ofstream(folder()) << "a file where a folder should be";
  EXPECT_EQ(Store::open(deeper, trouble), nullptr);
  EXPECT_EQ(trouble, deeper + ": Not a directory");
  std::filesystem::remove(folder());
  std::filesystem::create_directories(file());
  EXPECT_EQ(Store::open(folder(), trouble), nullptr);
  EXPECT_EQ(trouble, file() + ": Is a directory");
}

class FailingStoreTest : public StoreTest {
 protected:
  FailingStoreTest() {
    a_ = idOf(store_->addMessage(messageOf("a")));
    b_ = idOf(store_->addMessage(messageOf("b")));
    EXPECT_TRUE(store_->keepContact(contactOf("u", "old")));
    for (const char* sql :
         {"CREATE TRIGGER m1 BEFORE INSERT ON messages BEGIN SELECT RAISE(FAIL, 'full'); END",
          "CREATE TRIGGER c1 BEFORE UPDATE ON contacts BEGIN SELECT RAISE(FAIL, 'full'); END",
          "CREATE TRIGGER s1 BEFORE INSERT ON credentials BEGIN SELECT RAISE(FAIL, 'full'); END"}) {
      meddle(sql);
    }
    // The second of two messages is the one that cannot be changed.
    meddle(("CREATE TRIGGER m2 BEFORE UPDATE ON messages WHEN OLD.id = '" + b_ +
            "' BEGIN SELECT RAISE(FAIL, 'full'); END")
               .c_str());
    meddle(("CREATE TRIGGER m3 BEFORE DELETE ON messages WHEN OLD.id = '" + b_ +
            "' BEGIN SELECT RAISE(FAIL, 'full'); END")
               .c_str());
  }

  std::unique_ptr<Store> store_ = open();
  std::string a_;
  std::string b_;
};

TEST_F(FailingStoreTest, tellsWhyAndChangesNothing) {
  EXPECT_FALSE(store_->addMessage(messageOf("c")));
  EXPECT_EQ(store_->trouble(), "full");
  EXPECT_FALSE(store_->markAsRead(idsOf({a_, b_})));
  EXPECT_FALSE(store_->removeMessages(idsOf({a_, b_})));
  EXPECT_FALSE(store_->keepContact(contactOf("u", "new")));
  EXPECT_FALSE(store_->keepCredentials({}));
  EXPECT_EQ(store_->trouble(), "full");
  EXPECT_THAT(textsOf(store_->messages()), ElementsAre("a", "b"));
  EXPECT_FALSE(store_->messages()->front().header().has_status());
  EXPECT_THAT(namesOf(store_->contacts()), ElementsAre("u old"));
}

TEST_F(FailingStoreTest, goesOnAfterwards) {
  EXPECT_FALSE(store_->removeMessages(idsOf({a_, b_})));
  EXPECT_THAT(textsOf(store_->removeMessages(idsOf({a_}))), ElementsAre("a"));
  EXPECT_THAT(textsOf(store_->messages()), ElementsAre("b"));
}

TEST_F(FailingStoreTest, tellsOfADamagedEntry) {
  meddle("UPDATE messages SET message = x'ff' WHERE rowid = 1");
  EXPECT_FALSE(store_->messages());
  EXPECT_EQ(store_->trouble(), "damaged entry");
}

}  // namespace
}  // namespace morvik::test
