// morvik.contact: the query, and what a contact becomes in script.
#include "features/features.h"

namespace morvik::test {
namespace {

Lines heard(const std::string& contacts) {
  return {"DEBUG getContactCallbackFunction", "MESSAGE JSLOG: object " + contacts};
}

AnsweredRow contacts(const std::string& wire, const std::string& json) {
  return {"get(tell)", "contactList { " + wire + " }", heard(json)};
}

AnsweredRow objects(const std::string& wire, const std::string& json) {
  return contacts("contacts { " + wire + " }", "[{\"objects\":[" + json + "]}]");
}

std::vector<AnsweredRow> textsThatArePresentInOrder() {
  return {
      contacts("contacts { objects { idDB: 'o' } uuid: 'u' alias: 'a' lastname: 'l' "
               "firstname: 'f' }",
               R"([{"firstname":"f","lastname":"l","alias":"a","uuid":"u",)"
               R"("objects":[{"id":"o"}]}])"),
      contacts("contacts { uuid: 'u' }", R"([{"uuid":"u","objects":[]}])"),
      contacts("contacts { firstname: '' }", R"([{"firstname":"","objects":[]}])"),
      contacts("contacts { }", R"([{"objects":[]}])"),
      contacts("contacts { alias: 'b' } contacts { alias: 'a' } contacts { alias: 'c' }",
               R"([{"alias":"b","objects":[]},{"alias":"a","objects":[]},)"
               R"({"alias":"c","objects":[]}])"),
      contacts("contacts { alias: 'caf\303\251' }", "[{\"alias\":\"caf\xe9\",\"objects\":[]}]"),
      contacts("contacts { alias: 'before\\000behind' }", R"([{"alias":"before","objects":[]}])"),
      contacts("contacts { uuid: '\\000' }", R"([{"uuid":"","objects":[]}])"),
  };
}

std::vector<AnsweredRow> theFirstObjectDecidesWhetherAllHaveNames() {
  return {
      objects("objects { idDB: '1' name: 'n' } objects { idDB: '2' }",
              R"({"id":"1","name":"n"},{"id":"2","name":""})"),
      objects("objects { idDB: '1' } objects { idDB: '2' name: 'n' }", R"({"id":"1"},{"id":"2"})"),
      objects("objects { idDB: '1' name: '' } objects { idDB: '2' name: 'n' }",
              R"({"id":"1","name":""},{"id":"2","name":"n"})"),
      objects("objects { } objects { }", R"({"id":""},{"id":""})"),
      objects("objects { idDB: 'a\\000b' name: 'c\\000d' }", R"({"id":"a","name":"c"})"),
  };
}

std::vector<AnsweredRow> everyFirstAnswerIsHeard() {
  return {
      contacts("", "[]"),
      {"", "contactList { contacts { uuid: 'late' } }", {"DEBUG getContactCallbackFunction"}},
      {"get(tell)", "response { code: OK }", heard("[]")},
      {"", "response { code: OK }", {"DEBUG getContactCallbackFunction"}},
      {"get(tell)", "response { code: ERROR }", heard("[]")},
      {"get(tell)", "response { code: OK } event { }", heard("[]")},
      {"get(tell)", "", heard("[]")},
  };
}

}  // namespace

Feature contactFeature() {
  return {
      .name = "contact",
      .functions = "get",
      .sends = {{"get(f)", "getcontactList { }"}},
      .refuses =
          wrong({"get()", "get(5)", "get({})", "get('f')", "get(null)", "get(f, f)", "get(f, 1)"}) +
          needMode({"get(f)"}),
      .answers = textsThatArePresentInOrder() + theFirstObjectDecidesWhetherAllHaveNames() +
                 everyFirstAnswerIsHeard(),
  };
}

}  // namespace morvik::test
