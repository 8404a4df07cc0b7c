// The wrappers have the libraries' own names, so that the linker takes them first.
#include "support/unit/library-spy.h"

#include <dlfcn.h>
#include <iconv.h>
#include <regex.h>

#include <cstdarg>

namespace morvik::test {
namespace {

LibrarySpy* spy = nullptr;

template <typename Function>
Function real(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

CURLcode setNumber(CURL* curl, CURLoption option, long number) {
  if (spy != nullptr) spy->options.push_back({option, number, nullptr});
  static const auto next = real<CURLcode (*)(CURL*, CURLoption, ...)>("curl_easy_setopt");
  return next(curl, option, number);
}

CURLcode setPointer(CURL* curl, CURLoption option, void* pointer) {
  if (spy != nullptr) spy->options.push_back({option, 0, pointer});
  static const auto next = real<CURLcode (*)(CURL*, CURLoption, ...)>("curl_easy_setopt");
  return next(curl, option, pointer);
}

}  // namespace

LibrarySpy::LibrarySpy() { spy = this; }
LibrarySpy::~LibrarySpy() { spy = nullptr; }

}  // namespace morvik::test

#undef curl_easy_setopt  // a macro that only counts arguments

extern "C" CURL* curl_easy_init() {
  using morvik::test::spy;
  if (spy != nullptr && spy->curlInitFails) return nullptr;
  static const auto next = morvik::test::real<CURL* (*)()>("curl_easy_init");
  return next();
}

extern "C" CURLcode curl_easy_setopt(CURL* curl, CURLoption option, ...) {
  std::va_list values;
  va_start(values, option);
  const bool isNumber = option < CURLOPTTYPE_OBJECTPOINT;
  const CURLcode code = isNumber ? morvik::test::setNumber(curl, option, va_arg(values, long))
                                 : morvik::test::setPointer(curl, option, va_arg(values, void*));
  va_end(values);
  return code;
}

extern "C" curl_slist* curl_slist_append(curl_slist* list, const char* line) {
  using morvik::test::spy;
  if (spy != nullptr && spy->curlListFails) return nullptr;
  static const auto next =
      morvik::test::real<curl_slist* (*)(curl_slist*, const char*)>("curl_slist_append");
  return next(list, line);
}

extern "C" int iconv_close(iconv_t converter) {
  static const auto next = morvik::test::real<int (*)(iconv_t)>("iconv_close");
  const int result = next(converter);
  using morvik::test::spy;
  return spy != nullptr && spy->iconvCloseFails ? -1 : result;
}

extern "C" int regcomp(regex_t* expression, const char* pattern, int flags) {
  using morvik::test::spy;
  if (spy != nullptr && spy->brokenPattern == pattern) return REG_BADPAT;
  static const auto next = morvik::test::real<int (*)(regex_t*, const char*, int)>("regcomp");
  return next(expression, pattern, flags);
}

extern "C" CURLcode curl_global_init(long flags) {
  using morvik::test::spy;
  if (spy != nullptr) ++spy->globalInits;
  static const auto next = morvik::test::real<CURLcode (*)(long)>("curl_global_init");
  return next(flags);
}
