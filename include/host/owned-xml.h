// Owner types for libxml2.
#pragma once

#include <libxml/tree.h>
#include <libxml/xmlmemory.h>
#include <libxml/xpath.h>

#include "host/owned.h"

namespace morvik {

using XmlDocument = std::unique_ptr<xmlDoc, Release<xmlFreeDoc>>;
using XmlQuery = std::unique_ptr<xmlXPathContext, Release<xmlXPathFreeContext>>;
using XmlQueryResult = std::unique_ptr<xmlXPathObject, Release<xmlXPathFreeObject>>;

/// The library's own function for its texts is a variable.
struct FreeXmlText {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, FreeXmlText>;

}  // namespace morvik
