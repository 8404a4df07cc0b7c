// Programs as their users run them, for the tests of this folder.
#pragma once

#include "loop.h"
#include "support/program.h"

namespace morvik::devkit::testing {

using test::Outcome;
using test::Program;
using test::run;

}  // namespace morvik::devkit::testing
