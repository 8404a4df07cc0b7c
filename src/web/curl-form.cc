// libcurl's form list: the multipart interface that this program uses, though libcurl
// calls it deprecated. The bytes that a web server sees, boundaries and header lines among them,
// are this interface's; the newer one writes others. Only here.
#include "web/curl-form.h"

#include <curl/curl.h>

#include <utility>

#include "host/memory.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace morvik {
namespace {

// A body without one of its parts would be another body, and nobody would know. A part that libcurl
// refuses for any other reason is missing without a word.
void requireMemory(CURLFORMcode result) {
  if (result == CURL_FORMADD_MEMORY) endForWantOfMemory("a part of a form does not fit");
}

}  // namespace

CurlForm::CurlForm() = default;

CurlForm::~CurlForm() { curl_formfree(first_); }

CurlForm::CurlForm(CurlForm&& other) noexcept
    : first_(std::exchange(other.first_, nullptr)), last_(std::exchange(other.last_, nullptr)) {}

CurlForm& CurlForm::operator=(CurlForm&& other) noexcept {
  std::swap(first_, other.first_);
  std::swap(last_, other.last_);
  return *this;
}

void CurlForm::addText(const std::string& name, const std::string& text) {
  requireMemory(curl_formadd(&first_, &last_, CURLFORM_COPYNAME, name.c_str(),
                             CURLFORM_COPYCONTENTS, text.c_str(), CURLFORM_END));
}

void CurlForm::addFile(const std::string& name, const std::string& path) {
  requireMemory(curl_formadd(&first_, &last_, CURLFORM_COPYNAME, name.c_str(), CURLFORM_FILE,
                             path.c_str(), CURLFORM_END));
}

void CurlForm::attachTo(void* curl) const { curl_easy_setopt(curl, CURLOPT_HTTPPOST, first_); }

}  // namespace morvik

#pragma GCC diagnostic pop
