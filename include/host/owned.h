// Owner types for what C libraries hand out: each is released by the library's own function. Those
// of one library stand beside this file, in one of their own.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace morvik {

template <auto release>
struct Release {
  void operator()(auto* p) const { release(p); }
};

using File = std::unique_ptr<std::FILE, Release<std::fclose>>;
using MallocBytes = std::unique_ptr<unsigned char, Release<std::free>>;

}  // namespace morvik
