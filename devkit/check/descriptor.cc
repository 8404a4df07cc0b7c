// The descriptor's elements, against what the host looks for: exact names at one place.
#include "check/descriptor.h"

#include <glib.h>
#include <libxml/parser.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "api/table.h"
#include "check/source-text.h"
#include "device/nearest.h"
#include "device/owned.h"

namespace morvik::devkit {
namespace {

using Document = std::unique_ptr<xmlDoc, Release<xmlFreeDoc>>;

constexpr const char* kDescriptorFile = "descriptor.xml";
constexpr const char* kAccessPlace = "/descriptor/accesses/access";

std::string textOf(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : "";
}

std::string trimmed(const std::string& text) {
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

std::string inSmallLetters(const std::string& text) {
  return GText(g_ascii_strdown(text.c_str(), -1)).get();
}

std::string pathOf(const xmlNode* node) {
  std::string path;
  for (; node != nullptr && node->type == XML_ELEMENT_NODE; node = node->parent) {
    path.insert(0, '/' + textOf(node->name));
  }
  return path;
}

// Walks through the elements and judges each.
class Accesses {
 public:
  Accesses(const std::string& text, Grants& grants, std::vector<FolderTrouble>& findings)
      : text_(text), grants_(grants), findings_(findings) {}

  void look(const xmlNode* node) {
    for (; node != nullptr; node = node->next) {
      if (node->type != XML_ELEMENT_NODE) continue;
      if (inSmallLetters(textOf(node->name)) == "access") lookAtAccess(node);
      look(node->children);
    }
  }

 private:
  // The parser knows the line of an element alone.
  Place placeOf(const xmlNode* node) {
    const int line = static_cast<int>(xmlGetLineNo(node));
    const std::string source = lineOf(text_, line);
    if (line != line_) from_ = 0;
    line_ = line;
    const std::size_t at = source.find('<' + textOf(node->name), from_);
    if (at == std::string::npos) return {line, 0};
    from_ = at + 1;
    return {line, static_cast<int>(at) + 1};
  }

  void tell(Place place, const char* kind, std::string text, std::string cure) {
    findings_.push_back({.file = kDescriptorFile,
                         .line = place.line,
                         .column = place.column,
                         .text = std::move(text),
                         .refuses = false,
                         .kind = kind,
                         .cure = std::move(cure)});
  }

  void lookAtAccess(const xmlNode* node) {
    const Place place = placeOf(node);
    const std::string path = pathOf(node);
    if (node->ns != nullptr) {
      tell(place, "access-misplaced", "an element in a namespace grants nothing",
           "Leave xmlns out.");
    } else if (path != kAccessPlace) {
      tell(place, "access-misplaced", "grants nothing at " + path,
           "It belongs at /descriptor/accesses/access.");
    } else if (node->children == nullptr) {
      tell(place, "access-empty", "an empty access ends the application at its start",
           "Name an access, or remove the element.");
      return;
    } else {
      lookAtContent(node->children, place);
      return;
    }
    intend(trimmed(textOf(node->children != nullptr ? node->children->content : nullptr)));
  }

  void lookAtContent(const xmlNode* content, Place place) {
    const bool isText = content->type == XML_TEXT_NODE || content->type == XML_CDATA_SECTION_NODE;
    if (!isText || content->next != nullptr) {
      for (const xmlNode* part = content; part != nullptr; part = part->next)
        intend(trimmed(textOf(part->content)));
      tell(place, "access-misplaced", "holds something else than a name",
           "Write <access>led</access>, with nothing else in it.");
      return;
    }
    lookAtName(textOf(content->content), place);
  }

  void lookAtName(const std::string& name, Place place) {
    if (accessNames().contains(name)) {
      grants_.granted.emplace(name, place);
      return;
    }
    const std::string plain = trimmed(name);
    if (accessNames().contains(plain)) {
      tell(place, "access-blanks", "blanks around " + plain + " keep it from being granted",
           "Write <access>" + plain + "</access>.");
    } else if (accessNames().contains(inSmallLetters(plain))) {
      tell(place, "access-case", plain + " grants nothing: names are in small letters",
           "Write <access>" + inSmallLetters(plain) + "</access>.");
    } else {
      tellUnknown(plain, place);
    }
    intend(inSmallLetters(plain));
  }

  void tellUnknown(const std::string& name, Place place) {
    const std::vector<std::string> names(accessNames().begin(), accessNames().end());
    const auto near = nearest(inSmallLetters(name), names);
    tell(place, "access-unknown", "there is no access \"" + name + '"',
         near ? "Is " + *near + " meant?" : "There are " + joined(names) + '.');
    if (near) intend(*near);
  }

  static std::string joined(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
  }

  void intend(const std::string& name) {
    if (accessNames().contains(name)) grants_.meant.push_back(name);
  }

  const std::string& text_;
  Grants& grants_;
  std::vector<FolderTrouble>& findings_;
  int line_ = 0;          // of the element before
  std::size_t from_ = 0;  // and where that begins in its line
};

void checkRoot(const xmlNode* root, std::vector<FolderTrouble>& findings) {
  if (root == nullptr || textOf(root->name) == "descriptor") return;
  findings.push_back({.file = kDescriptorFile,
                      .line = static_cast<int>(xmlGetLineNo(root)),
                      .text = "begins with <" + textOf(root->name) + ">, so it grants nothing",
                      .refuses = false,
                      .kind = "access-misplaced",
                      .cure = "The outermost element is <descriptor>."});
}

}  // namespace

Grants checkGrants(const std::filesystem::path& folder, std::vector<FolderTrouble>& findings) {
  Grants grants;
  const auto text = bytesOf(folder / kDescriptorFile);
  if (!text || text->size() > kLargestDescriptor) return grants;
  checkByteOrderMark(kDescriptorFile, *text, findings);
  constexpr int kSilent = XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET;
  const Document document(xmlReadMemory(text->data(), static_cast<int>(text->size()),
                                        kDescriptorFile, nullptr, kSilent));
  if (!document) return grants;
  grants.known = true;
  const xmlNode* root = xmlDocGetRootElement(document.get());
  checkRoot(root, findings);
  Accesses(*text, grants, findings).look(root);
  return grants;
}

}  // namespace morvik::devkit
