// Stands between the code under test and calls into libcurl and the C library: hands every call on,
// keeps account of the options of transfers, and can make a call fail.
#pragma once

#include <curl/curl.h>

#include <string>
#include <vector>

namespace morvik::test {

/// One curl_easy_setopt.
struct CurlOption {
  CURLoption option;
  long number;          ///< the value of an option that takes a number
  const void* pointer;  ///< the value of an option that takes an object
};

/// Watches for as long as it lives; one at a time.
class LibrarySpy {
 public:
  LibrarySpy();
  ~LibrarySpy();
  LibrarySpy(const LibrarySpy&) = delete;
  LibrarySpy& operator=(const LibrarySpy&) = delete;

  bool curlInitFails = false;    ///< curl_easy_init gives nothing
  bool curlListFails = false;    ///< curl_slist_append gives nothing
  bool iconvCloseFails = false;  ///< iconv_close closes, and says -1
  std::string brokenPattern;     ///< regcomp takes this text for no expression
  std::vector<CurlOption> options;
  int globalInits = 0;  ///< calls of curl_global_init that are not libcurl's own
};

}  // namespace morvik::test
