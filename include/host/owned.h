// Owner types for what C libraries hand out: each is released by the library's own function.
#pragma once

#include <curl/curl.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace morvik {

template <auto release>
struct Release {
  void operator()(auto* p) const { release(p); }
};

using File = std::unique_ptr<std::FILE, Release<std::fclose>>;
using MallocBytes = std::unique_ptr<unsigned char, Release<std::free>>;
using CurlEasy = std::unique_ptr<CURL, Release<curl_easy_cleanup>>;
using CurlList = std::unique_ptr<curl_slist, Release<curl_slist_free_all>>;
using CurlText = std::unique_ptr<char, Release<curl_free>>;
using XmlDocument = std::unique_ptr<xmlDoc, Release<xmlFreeDoc>>;
using XmlQuery = std::unique_ptr<xmlXPathContext, Release<xmlXPathFreeContext>>;
using XmlQueryResult = std::unique_ptr<xmlXPathObject, Release<xmlXPathFreeObject>>;

}  // namespace morvik
