// What the script engine says of a source that it does not take.
#pragma once

#include <string>

namespace morvik::devkit {

struct SyntaxError {
  std::string text;  ///< "SyntaxError: Unexpected token ')'"
  int line = 0;      ///< from 1
  int column = 0;    ///< from 1
};

}  // namespace morvik::devkit
