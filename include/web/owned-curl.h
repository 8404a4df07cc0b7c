// Owner types for libcurl.
#pragma once

#include <curl/curl.h>

#include "host/owned.h"

namespace morvik {

using CurlEasy = std::unique_ptr<CURL, Release<curl_easy_cleanup>>;
using CurlList = std::unique_ptr<curl_slist, Release<curl_slist_free_all>>;
using CurlText = std::unique_ptr<char, Release<curl_free>>;

}  // namespace morvik
