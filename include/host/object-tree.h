// What an application sees: the one table of objects, their access names and their functions.
#pragma once

#include <v8.h>

#include <string>
#include <vector>

#include "host/descriptor.h"

namespace morvik {

/// Adds every gated object whose access name the descriptor lists: the devices onto `morvik`, the
/// web onto `global`. An object is wholly there or wholly absent.
void buildDeviceTree(v8::Local<v8::ObjectTemplate> global, v8::Local<v8::ObjectTemplate> morvik,
                     const Descriptor& descriptor);

/// The access names of these objects, in the order in which the descriptor is asked.
std::vector<std::string> gatedNames();

}  // namespace morvik
