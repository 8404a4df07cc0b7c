// Descriptors made in a test.
#pragma once

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <memory>
#include <sstream>
#include <string>

#include "host/descriptor.h"

namespace morvik::test {

/// A descriptor that lists these access names, which blanks separate.
inline std::unique_ptr<Descriptor> granted(const std::string& names) {
  std::string text = "<descriptor><accesses>";
  std::istringstream words(names);
  for (std::string name; words >> name;) text += "<access>" + name + "</access>";
  text += "</accesses></descriptor>";
  auto descriptor = std::make_unique<Descriptor>();
  descriptor->doc.reset(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "descriptor.xml", nullptr, 0));
  const XmlQuery query(xmlXPathNewContext(descriptor->doc.get()));
  descriptor->accesses.reset(xmlXPathEvalExpression(
      reinterpret_cast<const xmlChar*>("/descriptor/accesses/access"), query.get()));
  return descriptor;
}

}  // namespace morvik::test
