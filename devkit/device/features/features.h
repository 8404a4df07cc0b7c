// The list of features. To teach the device a new one: a file like led.cc, a line here, and its row
// in features.cc.
#pragma once

#include "device/feature.h"

namespace morvik::devkit {

extern const Feature kAsrFeature;
extern const Feature kButtonFeature;
extern const Feature kContactsFeature;
extern const Feature kDockFeature;
extern const Feature kEarsFeature;
extern const Feature kFaultsFeature;
extern const Feature kInfoFeature;
extern const Feature kInteractiveModeFeature;
extern const Feature kLedFeature;
extern const Feature kM2mFeature;
extern const Feature kMessageBoxFeature;
extern const Feature kMultimediaFeature;
extern const Feature kRfidFeature;
extern const Feature kSerialFeature;
extern const Feature kSocialFeature;
extern const Feature kTtsFeature;
extern const Feature kWebcamFeature;

/// All of them. Commands are asked and named in this order.
std::span<const Feature* const> features();

}  // namespace morvik::devkit
