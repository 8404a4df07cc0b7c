// morvik.rfid: what a listener is told of a tag.
#include "features/features.h"

namespace morvik::test {
namespace {

HeardRow tag(const std::string& id, const std::string& fields, const std::string& object) {
  return {"rfidCallback { " + fields + " }",
          {"MESSAGE RFID: RfidMsgCallback", "MESSAGE RFID: RfidMsgCallback : " + id,
           "MESSAGE JSLOG: object " + object}};
}

HeardRow tagWith(const std::string& field, const std::string& property) {
  return tag("t", "id: 't' " + field, R"({"id":"t",)" + property + "}");
}

// Kinds and colours are told by their names.
std::vector<HeardRow> names() {
  std::vector<HeardRow> rows;
  for (const std::string type : {"NONE_TYPE", "FLAT", "MINIVORT", "VORTAS", "DRESS", "VOLUMZ"})
    rows.push_back(tagWith("type: " + type, R"("type":")" + type + '"'));
  for (const std::string color :
       {"NONE_COL", "RED", "BLUE", "GREEN", "YELLOW", "PINK", "BLACK", "GREY", "ORANGE", "PURPLE",
        "WHITE", "DARK_RED", "DARK_BLUE", "DARK_GREEN", "DARK_YELLOW", "BROWN"})
    rows.push_back(tagWith("color: " + color, R"("color":")" + color + '"'));
  return rows;
}

std::vector<HeardRow> tags() {
  return {
      tag("d0021a", "id: 'd0021a'", R"({"id":"d0021a"})"),
      tag("x", "id: 'x' content: 'abc' direction: IN app: 12 type: FLAT pict: 3 color: RED",
          R"({"id":"x","direction":"IN","app":12,"type":"FLAT","pict":3,)"
          R"("color":"RED","content":"abc"})"),
      tag("x", "id: 'x' direction: OUT app: -1 pict: 0 content: ''",
          R"({"id":"x","direction":"OUT","app":-1,"pict":0,"content":""})"),
      tag("", "", R"({"id":""})"),
      tagWith("direction: OUT", R"("direction":"OUT")"),
      tagWith("app: -1", R"("app":-1)"),
      tagWith("pict: 0", R"("pict":0)"),
      tagWith("content: ''", R"("content":"")"),
      // The content ends at its first zero byte.
      tagWith("content: 'ab\\000cd'", R"("content":"ab")"),
      tagWith("content: '\\000cd'", R"("content":"")"),
      {"buttonCallback { type: SIMPLE }", {}},
      {"response { code: OK }", {}},
  };
}

}  // namespace

Feature rfidFeature() {
  return {.name = "rfid",
          .functions = "addListener",
          .refuses = wrongListeners(),
          .hears = tags() + names(),
          .event = "rfidCallback { id: 't' }"};
}

}  // namespace morvik::test
