// Descriptors made in a test.
#pragma once

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "host/descriptor.h"

namespace morvik::test {

/// A descriptor that lists these access names.
inline std::unique_ptr<morvik::Descriptor> granted(const std::vector<std::string>& names) {
  std::string text = "<descriptor><accesses>";
  for (const std::string& name : names) text += "<access>" + name + "</access>";
  text += "</accesses></descriptor>";
  auto descriptor = std::make_unique<morvik::Descriptor>();
  descriptor->doc.reset(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "descriptor.xml", nullptr, 0));
  const XmlQuery query(xmlXPathNewContext(descriptor->doc.get()));
  descriptor->accesses.reset(xmlXPathEvalExpression(
      reinterpret_cast<const xmlChar*>("/descriptor/accesses/access"), query.get()));
  return descriptor;
}

/// The same, of names between blanks.
inline std::unique_ptr<morvik::Descriptor> granted(const std::string& names) {
  std::istringstream words(names);
  return granted(std::vector<std::string>{std::istream_iterator<std::string>(words), {}});
}

}  // namespace morvik::test
