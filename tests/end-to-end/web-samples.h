// Which applications in apps/ have their conversations with servers of the web, not with a device.
#ifndef TESTS_END_TO_END_WEB_SAMPLES_H
#define TESTS_END_TO_END_WEB_SAMPLES_H

#include <set>
#include <string>

namespace morvik {

// The folders of those that web-samples-test.cc runs.
std::set<std::string> webSamples();

}  // namespace morvik

#endif
