// Owner types for libxml2.
#pragma once

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include "host/owned.h"

namespace morvik {

using XmlDocument = std::unique_ptr<xmlDoc, Release<xmlFreeDoc>>;
using XmlQuery = std::unique_ptr<xmlXPathContext, Release<xmlXPathFreeContext>>;
using XmlQueryResult = std::unique_ptr<xmlXPathObject, Release<xmlXPathFreeObject>>;

}  // namespace morvik
