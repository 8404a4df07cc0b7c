// Which applications in apps/ have their conversations with servers of the web, not with a device.
#pragma once

#include <set>
#include <string>

namespace morvik::test {

// The folders of those that web-samples-test.cc runs.
std::set<std::string> webSamples();

}  // namespace morvik::test
