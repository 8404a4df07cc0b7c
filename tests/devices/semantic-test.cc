// Semantic XML becomes script objects, and the log tells each step.
#include "devices/semantic.h"

#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class SemanticTest : public ScriptTest {
 protected:
  // What the text makes of an object that holds {"kept":"1"}, as JSON.
  std::string parsed(const std::string& text) {
    const v8::Context::Scope entered(context());
    const auto object = v8::Object::New(isolate());
    setOwn(object, "kept", toScript("1"));
    parseSemantic(text, object);
    setGlobal("result", object);
    return run("JSON.stringify(result)");
  }
};

TEST_F(SemanticTest, elementsBecomeProperties) {
  const struct {
    const char* text;
    const char* object;
  } rows[] = {
      {"<a>x</a>", R"({"kept":"1","a":"x"})"},
      {"<a/>", R"({"kept":"1","a":""})"},
      {"<a></a>", R"({"kept":"1","a":""})"},
      {"<a> x </a>", R"({"kept":"1","a":" x "})"},
      {"<a><b>x</b></a>", R"({"kept":"1","a":{"b":"x"}})"},
      {"<a><b>x</b><c><d>y</d></c></a>", R"({"kept":"1","a":{"b":"x","c":{"d":"y"}}})"},
      {"<a>\n  <b>x</b>\n</a>", R"({"kept":"1","a":{"b":"x"}})"},
      {"<a>before<b>x</b>behind</a>", R"({"kept":"1","a":{"b":"x"}})"},
      {"<a n='1'><b n='2'>x</b></a>", R"({"kept":"1","a":{"b":"x"}})"},
      {"<a><b>1</b><b>2</b></a>", R"({"kept":"1","a":{"b":"2"}})"},
      {"<a><b>1</b><c>2</c><b><d>3</d></b></a>", R"({"kept":"1","a":{"b":{"d":"3"},"c":"2"}})"},
      {"<a>&lt;&amp;&#233;</a>", "{\"kept\":\"1\",\"a\":\"<&\xc3\xa9\"}"},
      {"<a><![CDATA[<b>]]></a>", R"({"kept":"1","a":"<b>"})"},
      {"<a>x<!-- no -->y</a>", R"({"kept":"1","a":"xy"})"},
      {"<!-- c --><a>x</a><?pi?>", R"({"kept":"1","a":"x"})"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>",
       "{\"kept\":\"1\",\"a\":\"\xc3\xa9\"}"},
      {"<caf\xc3\xa9>x</caf\xc3\xa9>", "{\"kept\":\"1\",\"caf\xc3\xa9\":\"x\"}"},
      {"<kept>2</kept>", R"({"kept":"2"})"},
      {"<__proto__><x>1</x></__proto__>", R"({"kept":"1","__proto__":{"x":"1"}})"},
      // Not well-formed: the object stays as it was.
      {"", R"({"kept":"1"})"},
      {"text", R"({"kept":"1"})"},
      {"<a>", R"({"kept":"1"})"},
      {"<a></b>", R"({"kept":"1"})"},
      {"<a/><b/>", R"({"kept":"1"})"},
      {"<a>\xff</a>", R"({"kept":"1"})"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(parsed(row.text), row.object);
  }
}

TEST_F(SemanticTest, eachStepIsLogged) {
  const struct {
    const char* text;
    std::vector<std::string> lines;
  } rows[] = {
      {"", {"ASR: parseSemantic: size:0", "ASR: parseSemantic: Failed to parse document"}},
      {"<a>", {"ASR: parseSemantic: size:3", "ASR: parseSemantic: Failed to parse document"}},
      {"<a>x</a>",
       {"ASR: parseSemantic: size:8", "ASR: parseSemantic: succeed parse document",
        "node type: print_element_names", "node type: Element, name: a\n",
        "node type: Element, content: x\n"}},
      {"<a/>",
       {"ASR: parseSemantic: size:4", "ASR: parseSemantic: succeed parse document",
        "node type: print_element_names", "node type: Element, name: a\n",
        "node type: Element, content: \n"}},
      {"<a>t<b>x</b><c/></a>",
       {"ASR: parseSemantic: size:20", "ASR: parseSemantic: succeed parse document",
        "node type: print_element_names", "node type: Element, name: a\n",
        "node type: print_element_names", "node type: Element, name: b\n",
        "node type: Element, content: x\n", "node type: Element, name: c\n",
        "node type: Element, content: \n"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    log.clear();
    parsed(row.text);
    EXPECT_THAT(log.texts(G_LOG_LEVEL_MESSAGE), ElementsAreArray(row.lines));
    EXPECT_EQ(log.lines().size(), row.lines.size());
  }
}

// Elements are walked one inside the other; the parser bounds how deep that goes.
TEST_F(SemanticTest, nestingHasABound) {
  std::string deep;
  for (int i = 0; i < 5000; ++i) deep += "<a>";
  for (int i = 0; i < 5000; ++i) deep += "</a>";
  EXPECT_EQ(parsed(deep), R"({"kept":"1"})");
}

}  // namespace
}  // namespace morvik::test
