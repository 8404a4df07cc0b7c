// The rooms of the devkit: each uses those below it and none above, and no two sources use each
// other.
#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <sstream>

#include "support/file-content.h"

namespace morvik::devkit::testing {
namespace {

// Each source by its path without an extension, and those that it includes.
using Graph = std::map<std::string, std::set<std::string>>;

std::string stemOf(const std::filesystem::path& path) {
  return (path.parent_path() / path.stem()).string();
}

void addIncludes(const std::string& file, std::set<std::string>& included) {
  std::istringstream lines(test::contentOf(file));
  const std::string start = "#include \"";
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(start)) {
      included.insert(stemOf(line.substr(start.size(), line.rfind('"') - start.size())));
    }
  }
}

Graph devkitGraph() {
  const std::filesystem::path root = SOURCE_DIR "/devkit";
  Graph graph;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const auto extension = entry.path().extension();
    if (extension != ".cc" && extension != ".h") continue;
    const std::string stem = stemOf(std::filesystem::relative(entry.path(), root));
    addIncludes(entry.path(), graph[stem]);
    graph[stem].erase(stem);
  }
  return graph;
}

// Verbs stand at the top, without a folder.
std::string roomOf(const std::string& stem) {
  const std::size_t slash = stem.find('/');
  return slash != std::string::npos ? stem.substr(0, slash) : "";
}

int levelOf(const std::string& room) {
  static const std::map<std::string, int> levels{{"device", 0}, {"server", 1}, {"terminal", 1},
                                                 {"run", 2},    {"page", 2},   {"", 3}};
  const auto found = levels.find(room);
  EXPECT_NE(found, levels.end()) << "no level for the room " << room;
  return found != levels.end() ? found->second : 0;
}

TEST(Rooms, useThoseBelowThemAndNoneAbove) {
  const Graph graph = devkitGraph();
  ASSERT_GT(graph.size(), 40U);
  for (const auto& [stem, included] : graph) {
    for (const std::string& other : included) {
      const std::string from = roomOf(stem);
      const std::string to = roomOf(other);
      EXPECT_TRUE(from == to || levelOf(to) < levelOf(from)) << stem << " uses " << other;
    }
  }
}

TEST(Rooms, areWithoutCircles) {
  const Graph graph = devkitGraph();
  std::set<std::string> done;
  std::set<std::string> open;
  const std::function<void(const std::string&)> visit = [&](const std::string& stem) {
    if (done.contains(stem) || !graph.contains(stem)) return;
    EXPECT_TRUE(open.insert(stem).second) << "a circle through " << stem;
    if (::testing::Test::HasFailure()) return;
    for (const std::string& other : graph.at(stem)) visit(other);
    open.erase(stem);
    done.insert(stem);
  };
  for (const auto& [stem, included] : graph) visit(stem);
}

}  // namespace
}  // namespace morvik::devkit::testing
