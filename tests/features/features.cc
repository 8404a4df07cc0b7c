// The one list of features and access names of the tests.
#include "features/features.h"

namespace morvik::test {

const std::vector<Feature>& features() {
  static const std::vector<Feature> all{
      ledFeature(),        earsFeature(),   ttsFeature(),  webcamFeature(), asrFeature(),
      multimediaFeature(), buttonFeature(), rfidFeature(), m2mFeature(),    messageFeature(),
      contactFeature(),    serialFeature(), dockFeature()};
  return all;
}

std::vector<std::string> accessNames() {
  std::vector<std::string> names{"http", "twitter", "facebook", "soundcloud"};
  for (const Feature& feature : features()) names.push_back(feature.name);
  return names;
}

}  // namespace morvik::test
