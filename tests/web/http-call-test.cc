// One transfer: libcurl's options in their order, and what becomes of the response.
#include "web/http-call.h"

#include <sys/mman.h>

#include "support/unit/library-spy.h"
#include "support/unit/web-test.h"

namespace morvik::test {
namespace {

class HttpCallTest : public WebTest {
 protected:
  // The result as JSON: an object's or a text.
  std::string call(const HttpBody& body, bool wantObject = true, curl_slist* headers = nullptr) {
    const v8::Context::Scope entered(context());
    v8::Local<v8::Value> result;
    if (!httpCall(isolate(), web.url(), headers, body, wantObject).ToLocal(&result)) return "threw";
    const auto json = v8::JSON::Stringify(context(), result).ToLocalChecked();
    return *v8::String::Utf8Value(isolate(), json);
  }

  // The options of one call.
  std::vector<CURLoption> optionsOf(const HttpBody& body) {
    LibrarySpy spy;
    call(body);
    std::vector<CURLoption> set;
    for (const CurlOption& entry : spy.options) set.push_back(entry.option);
    return set;
  }
};

std::vector<CURLoption> always(std::initializer_list<CURLoption> more = {}) {
  std::vector<CURLoption> options = {
      CURLOPT_SSL_VERIFYPEER, CURLOPT_WRITEFUNCTION, CURLOPT_WRITEDATA, CURLOPT_HEADERFUNCTION,
      CURLOPT_HEADERDATA,     CURLOPT_URL,           CURLOPT_HEADER,    CURLOPT_HTTPHEADER};
  options.insert(options.end(), more);
  return options;
}

HttpBody file(const std::string& bytes) {
  return Datapost{bytes, static_cast<std::int32_t>(bytes.size())};
}

TEST_F(HttpCallTest, setsTheseOptionsAndNoOthers) {
  // The old name of the form's option is what this program uses.
  constexpr auto kForm = static_cast<CURLoption>(CURLOPTTYPE_OBJECTPOINT + 24);
  CurlForm form;
  form.addText("a", "b");
  EXPECT_EQ(optionsOf(HttpBody()), always());
  EXPECT_EQ(optionsOf(Datapost{"a=b"}), always({CURLOPT_POSTFIELDS, CURLOPT_POSTFIELDSIZE}));
  EXPECT_EQ(optionsOf(file("bytes")), always({CURLOPT_POSTFIELDS, CURLOPT_POSTFIELDSIZE}));
  EXPECT_EQ(optionsOf(file("")), always({CURLOPT_POSTFIELDS}));
  EXPECT_EQ(optionsOf(std::move(form)), always({kForm}));
}

TEST_F(HttpCallTest, givesTheOptionsTheirValues) {
  LibrarySpy spy;
  call(Datapost{"a=b"});
  call(file("bytes"));
  for (const CurlOption& entry : spy.options) {
    if (entry.option == CURLOPT_SSL_VERIFYPEER || entry.option == CURLOPT_HEADER) {
      EXPECT_EQ(entry.number, 0);
    }
    if (entry.option == CURLOPT_HTTPHEADER) {
      EXPECT_EQ(entry.pointer, nullptr);
    }
  }
  EXPECT_EQ(spy.options.at(9).number, -1);
  EXPECT_EQ(spy.options.at(19).number, 5);
}

TEST_F(HttpCallTest, leavesTheSetUpOfLibcurlToIt) {
  LibrarySpy spy;
  call(HttpBody());
  EXPECT_EQ(spy.globalInits, 0);
  curl_global_init(CURL_GLOBAL_DEFAULT);
  EXPECT_EQ(spy.globalInits, 1) << "the spy sees a call";
}

TEST_F(HttpCallTest, withoutAHandleItIsATransferFailure) {
  LibrarySpy spy;
  spy.curlInitFails = true;
  EXPECT_EQ(call(HttpBody()), R"({"header":"","content":"curl error"})");
  EXPECT_THAT(logLines(),
              ElementsAre("WARNING curl error code: 2", "DEBUG curl error : curl error"));
  EXPECT_THAT(spy.options, testing::IsEmpty());
}

TEST_F(HttpCallTest, givesTheContentAloneWhenNoObjectIsWanted) {
  web.answerWith(response("the body"));
  EXPECT_EQ(call(HttpBody(), false), "\"the body\"");
}

TEST_F(HttpCallTest, logsAUrlencodedBody) {
  call(Datapost{"a=b"});
  EXPECT_THAT(log.texts(), testing::Contains("datapost != NULL"));
  EXPECT_THAT(logLines(),
              ElementsAre("DEBUG datapost != NULL", "DEBUG httpCall isForm = false : a=b",
                          "DEBUG httpCall datapost.len : -1", "DEBUG encoding not in data",
                          "DEBUG encoding not in header"));
  log.clear();
  call(file(std::string("a\0b", 3)));
  EXPECT_EQ(logLines().at(1), "DEBUG httpCall isForm = false : a");
  EXPECT_EQ(logLines().at(2), "DEBUG httpCall datapost.len : 3");
}

TEST_F(HttpCallTest, logsAFormWithoutItsContent) {
  CurlForm form;
  form.addText("a", "b");
  call(std::move(form));
  EXPECT_THAT(logLines(), ElementsAre("DEBUG datapost != NULL", "DEBUG encoding not in data",
                                      "DEBUG encoding not in header"));
}

TEST_F(HttpCallTest, aTextBeyondTheEnginesLimitIsAnException) {
  const std::size_t size = std::size_t{v8::String::kMaxLength} + 1;
  void* zeros = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(zeros, MAP_FAILED);
  const v8::Context::Scope entered(context());
  v8::TryCatch tryCatch(isolate());
  EXPECT_TRUE(responseText(isolate(), {static_cast<const char*>(zeros), size}).IsEmpty());
  EXPECT_STREQ(*v8::String::Utf8Value(isolate(), tryCatch.Exception()),
               "RangeError: Invalid string length");
  munmap(zeros, size);
}

}  // namespace
}  // namespace morvik::test
