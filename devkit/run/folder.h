// An application's folder as its author has it on disk: what can be said of it before a launch.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace morvik::devkit {

/// Something about a folder that its author should know before the application is launched.
struct FolderTrouble {
  std::string file = {};  ///< relative to the folder; empty when it is about the folder itself
  int line = 0;           ///< from 1; 0 when there is no place within the file
  int column = 0;         ///< from 1; 0 as for the line
  std::string text = {};  ///< what is wrong, in a sentence without a full stop
  bool refuses = true;    ///< a launch would come to nothing; otherwise the author is only told
  std::string kind = {};  ///< which mistake it is, such as "not-granted"
  std::string cure = {};  ///< what to do, in a sentence or two; empty where the text says it
};

/// "descriptor.xml:3:7: text", as far as there is a place.
std::string inWords(const FolderTrouble& trouble);

/// The same, and what to do.
std::string inWordsWithCure(const FolderTrouble& trouble);

/// Looks at a folder and tells what is wrong with it, in the order in which an author would mend
/// it.
using FolderCheck = std::function<std::vector<FolderTrouble>(const std::filesystem::path& folder)>;

/// The largest descriptor.xml that MorvikVM reads, in bytes. The tool stands apart from the host,
/// so this is its own copy; tests hold it against the real one.
inline constexpr std::uintmax_t kLargestDescriptor = 65536;

/// What MorvikVM would stumble over at the start: a folder that is none, main.js, descriptor.xml
/// and config.bin when they cannot be read, a descriptor that is compressed, too large or not
/// well-formed, files larger than an application's memory. Is itself a FolderCheck.
std::vector<FolderTrouble> checkFolder(const std::filesystem::path& folder);

/// Whether a file has tests of the application, which no device runs: test.js and *.test.js.
bool isTestScript(const std::filesystem::path& file);

/// There is a trouble among them that refuses the launch.
bool refusesLaunch(const std::vector<FolderTrouble>& troubles);

}  // namespace morvik::devkit
