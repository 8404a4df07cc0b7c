// A multipart body, as libcurl builds and sends it.
#pragma once

#include <string>

struct curl_httppost;

namespace morvik {

/// A multipart body, as libcurl's form list.
class CurlForm {
 public:
  CurlForm();
  ~CurlForm();
  CurlForm(CurlForm&& other) noexcept;
  CurlForm& operator=(CurlForm&& other) noexcept;

  /// A lack of memory ends the process through endForWantOfMemory.
  void addText(const std::string& name, const std::string& text);
  /// The same. The file is read during the transfer.
  void addFile(const std::string& name, const std::string& path);
  [[nodiscard]] bool empty() const { return first_ == nullptr; }
  /// Makes it the body of the handle's request. Must outlive the transfer.
  void attachTo(void* curl) const;

 private:
  curl_httppost* first_ = nullptr;
  curl_httppost* last_ = nullptr;
};

}  // namespace morvik
