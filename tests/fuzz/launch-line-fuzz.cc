// Launch lines: the words of one are the line again, whatever it holds, and the path made of them
// is as long as it may be at most.
#include <algorithm>
#include <string>

#include "fuzz/fuzz.h"
#include "host/app-path.h"
#include "host/morvik-data.h"

namespace morvik::test {

void fuzz(std::string_view input) {
  const std::string line(input.substr(0, input.find('\0')));
  LaunchOptions options;
  MorvikData instance;
  instance.options = &options;
  instance.setCmdLine(line.c_str());

  const auto blanks = std::ranges::count(line, ' ');
  std::string words = instance.appName;
  if (blanks > 0) words += " " + instance.launchType;
  if (blanks > 1) words += " " + instance.instanceName;
  require(words == line, "the words are the line");
  require(instance.cmdline == line, "the line is kept");
  require(instance.appName.find(' ') == std::string::npos, "no blank in the name");
  require(instance.launchType.find(' ') == std::string::npos, "no blank in the launch type");
  require(blanks > 0 || instance.launchType.empty(), "one word is a name alone");
  require(blanks > 1 || instance.instanceName.empty(), "two words have no third");
  require(appPath(instance, "main.js", kStartPathSize).size() < kStartPathSize, "a path fits");
}

}  // namespace morvik::test
