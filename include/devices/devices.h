// The device features' script functions, one line for each feature: ledFunctions() stands in
// led.cc, and so on. A feature has a header of its own only for what others use of it besides.
#pragma once

#include <span>

#include "host/script.h"

namespace morvik {

std::span<const Binding> ledFunctions();
std::span<const Binding> earsFunctions();
std::span<const Binding> ttsFunctions();
std::span<const Binding> webcamFunctions();
std::span<const Binding> asrFunctions();
std::span<const Binding> multimediaFunctions();
std::span<const Binding> buttonFunctions();
std::span<const Binding> rfidFunctions();
std::span<const Binding> m2mFunctions();
std::span<const Binding> serialFunctions();
std::span<const Binding> dockFunctions();

}  // namespace morvik
