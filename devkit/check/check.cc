// The parts of the check in their order, and what a finding looks like.
#include "check/check.h"

#include <algorithm>
#include <cctype>
#include <tuple>

#include <nlohmann/json.hpp>

#include "check/config.h"
#include "check/descriptor.h"
#include "check/scripts.h"
#include "device/json.h"

namespace morvik::devkit {
namespace {

namespace fs = std::filesystem;
using Findings = std::vector<FolderTrouble>;

// The name that the folder has on the device, also for "." and "my-app/".
std::string nameOf(const fs::path& folder) {
  std::error_code error;
  const fs::path whole = fs::weakly_canonical(folder, error);
  return (error ? folder : whole).filename();
}

void checkName(const std::string& name, Findings& findings) {
  if (name.find_first_of(" \t") == std::string::npos) return;
  findings.push_back({.text = "the name of the folder, \"" + name +
                              "\", holds a blank, where a launch line would be split",
                      .refuses = false,
                      .kind = "folder-name",
                      .cure = "Use letters, digits, - and _."});
}

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char letter) { return std::tolower(letter); });
  return text;
}

// A file of the same name but for its capitals: a device tells them apart.
std::string inOtherCase(const fs::path& folder, const std::string& name) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    std::string other = entry.path().filename();
    if (other != name && lowerCase(other) == lowerCase(name)) return other;
  }
  return "";
}

void addCure(const fs::path& folder, FolderTrouble& trouble) {
  const std::string other = trouble.kind == "missing" ? inOtherCase(folder, trouble.file) : "";
  if (!other.empty()) {
    trouble.kind = "other-case";
    trouble.cure = "Rename " + other + ": capitals count.";
  } else if (trouble.kind == "missing") {
    trouble.cure = "morvik-dev new NAME makes a folder with all that is needed.";
  } else if (trouble.kind == "not-xml") {
    trouble.cure = "Every element that is opened is closed, and & is written &amp;.";
  } else if (trouble.kind == "compressed") {
    trouble.cure = "Unpack it: gunzip or xz -d.";
  } else if (trouble.kind == "too-large" && trouble.file == "descriptor.xml") {
    trouble.cure = "Keep the access elements; what else it holds nobody here reads.";
  } else if (trouble.kind == "zero-byte") {
    trouble.cure = "Save it as text, in UTF-8.";
  } else if (trouble.kind == "config-damaged") {
    trouble.cure = "Write it anew, or remove it.";
  }
}

int rankOf(const std::string& file) {
  if (file.empty()) return 0;
  if (file == "descriptor.xml") return 1;
  if (file == "config.bin") return 2;
  return file == "main.js" ? 3 : 4;
}

void sort(Findings& findings) {
  std::ranges::stable_sort(findings, {}, [](const FolderTrouble& one) {
    return std::tuple(rankOf(one.file), one.file, one.line, one.column);
  });
}

}  // namespace

Findings checkApplication(const fs::path& folder) {
  Findings findings = checkFolder(folder);
  if (std::ranges::any_of(findings, [](const auto& one) { return one.file.empty(); }))
    return findings;
  for (FolderTrouble& trouble : findings) addCure(folder, trouble);
  const std::string name = nameOf(folder);
  checkName(name, findings);
  const Grants grants = checkGrants(folder, findings);
  checkConfig(folder, findings);
  checkScripts(folder, name, grants, findings);
  sort(findings);
  return findings;
}

std::string asText(const fs::path& folder, const FolderTrouble& finding) {
  std::string place =
      finding.file.empty() ? folder.string() : (folder / finding.file).lexically_normal().string();
  if (finding.line > 0) place += ':' + std::to_string(finding.line);
  if (finding.line > 0 && finding.column > 0) place += ':' + std::to_string(finding.column);
  return place + ": " + finding.text + " [" + finding.kind + "]\n" +
         (finding.cure.empty() ? "" : "  " + finding.cure + '\n');
}

std::string asJson(const fs::path& folder, const Findings& findings) {
  Json list = Json::array();
  for (const FolderTrouble& finding : findings) {
    list.push_back({{"file", finding.file},
                    {"line", finding.line},
                    {"column", finding.column},
                    {"kind", finding.kind},
                    {"message", finding.text},
                    {"cure", finding.cure}});
  }
  return textOf(Json{{"folder", folder.string()}, {"findings", std::move(list)}});
}

}  // namespace morvik::devkit
