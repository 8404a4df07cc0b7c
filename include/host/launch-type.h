// How an application was launched: the `launchType` object.
#pragma once

#include <v8.h>

#include <string>

namespace morvik {

/// Fills the template from the launch type of the launch line. Fields stand between semicolons;
/// "RFID..." is a launch by tag, "ASR..." one by voice, and any other text is only a name.
void buildLaunchType(v8::Local<v8::ObjectTemplate> launchType, const std::string& text);

}  // namespace morvik
