// What the semantic text of a recognition becomes in script.
#pragma once

#include <string>
#include <vector>

namespace morvik::test {

struct Meaning {
  std::string semantic;
  std::string properties;  ///< of the result, as JSON with a comma behind each
};

inline const std::vector<Meaning> kMeanings{
    {"<a>x</a>", R"("a":"x",)"},
    {"<a><b>x</b></a>", R"("a":{"b":"x"},)"},
    {"<a/>", R"("a":"",)"},
    {"<a><b/><c>1</c><d><e>2</e></d></a>", R"("a":{"b":"","c":"1","d":{"e":"2"}},)"},
    {"<a><b>1</b><b>2</b></a>", R"("a":{"b":"2"},)"},
    {"<a id='1'>lost<b>x</b>lost</a>", R"("a":{"b":"x"},)"},
    {"<a><!-- c --><b>x</b></a>", R"("a":{"b":"x"},)"},
    {"<a>one &amp; two</a>", R"("a":"one & two",)"},
    {"<a><![CDATA[<b>]]></a>", R"("a":"<b>",)"},
    {"<text>meant</text>", ""},  // what was heard wins over its meaning
    {"<a><b>x</b>", ""},
    {"x", ""},
    {"", ""},
    {"<a/><b/>", ""},
};

}  // namespace morvik::test
