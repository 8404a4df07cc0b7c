// The drawer of saved tags: what the user of the page keeps to hold against the device again.
#pragma once

#include <string>

#include "device/json.h"
#include "page/page-source.h"

namespace morvik::devkit {

/// A file in the state folder, written as a whole or not at all. Several tools may use it: the last
/// one that saves wins.
class TagDrawer {
 public:
  /// Where the drawer keeps its file; the folder need not be there yet.
  explicit TagDrawer(const std::string& folder);

  /// The tags that were saved last, an array; empty when there are none. A file that holds anything
  /// else is put aside under another name, and `trouble` then says so.
  Json tags(std::string& trouble) const;

  /// In place of all that were saved.
  Outcome save(const Json& tags) const;

 private:
  std::string folder_;
  std::string file_;
};

}  // namespace morvik::devkit
