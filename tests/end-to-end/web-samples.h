// Which applications in apps/ have their conversations with servers of the web, not with a device.
#pragma once

#include <set>
#include <string>

namespace morvik::test {

inline constexpr char kWeather[] = "weather";
inline constexpr char kPhotoUpload[] = "photo-upload";
inline constexpr char kSignedRequest[] = "signed-request";

// The folders of those that web-samples-test.cc runs.
inline std::set<std::string> webSamples() { return {kWeather, kPhotoUpload, kSignedRequest}; }

}  // namespace morvik::test
