// One row for each feature.
#include "device/features/features.h"

namespace morvik::devkit {
namespace {

constexpr const Feature* kFeatures[] = {
    &kInteractiveModeFeature,
    &kInfoFeature,
    &kLedFeature,
    &kButtonFeature,
    &kRfidFeature,
    &kEarsFeature,
    &kDockFeature,
    &kTtsFeature,
    &kAsrFeature,
    &kMultimediaFeature,
    &kWebcamFeature,
    &kM2mFeature,
    &kSerialFeature,
    &kMessageBoxFeature,
    &kContactsFeature,
    &kSocialFeature,
    &kFaultsFeature,
};

}  // namespace

std::span<const Feature* const> features() { return kFeatures; }

}  // namespace morvik::devkit
