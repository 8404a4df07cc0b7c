// The bodies of posts, made from a script's parameters.
#pragma once

#include <v8.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "web/http-client.h"

struct curl_httppost;

namespace morvik {

/// A urlencoded body, or the raw bytes of a file in its place.
struct Datapost {
  static constexpr std::int32_t kMeasured = -1;

  std::string data;
  std::int32_t len = kMeasured;  ///< a file's size; kMeasured when the text ends at its NUL
};

/// A multipart body, as libcurl's form list.
class CurlForm {
 public:
  CurlForm();
  ~CurlForm();
  CurlForm(CurlForm&& other) noexcept;
  CurlForm& operator=(CurlForm&& other) noexcept;

  void addText(const std::string& name, const std::string& text);
  /// The file is read during the transfer.
  void addFile(const std::string& name, const std::string& path);
  [[nodiscard]] bool empty() const { return first_ == nullptr; }
  /// Makes it the body of the handle's request. Must outlive the transfer.
  void attachTo(void* curl) const;

 private:
  curl_httppost* first_ = nullptr;
  curl_httppost* last_ = nullptr;
};

/// What goes out behind the headers: nothing, fields or a file, or a form.
using HttpBody = std::variant<std::monostate, Datapost, CurlForm>;

/// The parameters as a urlencoded text, or the file when a file is the only parameter. `extra` may
/// be null. Nothing when the script's objects threw; the script then has that exception.
std::optional<Datapost> genCurlPostSimple(v8::Isolate* isolate, v8::Local<v8::Object> params,
                                          const ExtraField* extra = nullptr);

/// The parameters as a form: values, files, and the tokens of social accounts. As above.
std::optional<CurlForm> genCurlPostForm(v8::Isolate* isolate, v8::Local<v8::Object> params,
                                        const ExtraField* extra = nullptr);

}  // namespace morvik
