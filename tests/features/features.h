// All features with tables of rows, and the names that a descriptor can grant.
#pragma once

#include <vector>

#include "features/feature.h"

namespace morvik::test {

Feature ledFeature();
Feature earsFeature();
Feature ttsFeature();
Feature webcamFeature();
Feature asrFeature();
Feature multimediaFeature();
Feature buttonFeature();
Feature rfidFeature();
Feature m2mFeature();
Feature messageFeature();
Feature contactFeature();
Feature serialFeature();
Feature dockFeature();

/// In the order in which the host adds their objects.
const std::vector<Feature>& features();

/// The features whose table has rows.
template <class Table>
std::vector<Feature> featuresWith(Table Feature::*table) {
  std::vector<Feature> with;
  for (const Feature& feature : features())
    if (!(feature.*table).empty()) with.push_back(feature);
  return with;
}

/// Every name that grants something.
std::vector<std::string> accessNames();

}  // namespace morvik::test
