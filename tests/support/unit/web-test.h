// A fixture for what reaches the web: an application, and a server on the loopback interface.
// Scripts find the globals `url`, the server's root, and `picture` and `missing`, objects that
// stand for a file and for one that is not there.
#pragma once

#include <string>
#include <vector>

#include "support/temporary-folder.h"
#include "support/unit/script-test.h"
#include "support/web/recording-server.h"

namespace morvik::test {

class WebTest : public ScriptTest {
 protected:
  WebTest();

  /// Gives `picture` these bytes.
  void writePicture(const std::string& bytes);
  [[nodiscard]] std::string pictureFile() const { return folder_ / "picture"; }

  /// The body of the oldest request that was not taken yet.
  std::string takeBody();

  /// The log's lines with their levels, as in "DEBUG isForm 0".
  [[nodiscard]] std::vector<std::string> logLines() const;

  RecordingServer web;

 private:
  TemporaryFolder folder_;
};

/// What follows the headers of a request.
std::string bodyOf(const std::string& request);

/// One part of a multipart body.
struct Part {
  std::string head;  ///< its header lines
  std::string content;
  bool operator==(const Part&) const = default;
};
void PrintTo(const Part& part, std::ostream* stream);

/// The parts of a whole request with a multipart body. Fails the test when it has none.
std::vector<Part> partsOf(const std::string& request);

}  // namespace morvik::test
