// What an application may use: the access names in its descriptor.xml.
#pragma once

#include <v8.h>

#include <cstddef>
#include <memory>
#include <string>

#include "host/owned-xml.h"

namespace morvik {

class MorvikData;

/// An application's descriptor.xml. The names stay in the document's nodes.
struct Descriptor {
  XmlDocument doc;
  xmlNode* root = nullptr;  ///< the document's root element, kept and not used
  XmlQueryResult accesses;  ///< the /descriptor/accesses/access elements; released before doc
};

/// The largest descriptor.xml, in bytes. One that grants everything has a hundredth of it; the XML
/// library, which compares every attribute of an element with all before it, reads the worst that
/// fits in less than a second.
inline constexpr std::size_t kMaxDescriptor = 65536;

/// Reads a descriptor. Null for a file that cannot be read, is not well-formed, is larger than
/// kMaxDescriptor, or is compressed; standard error has the reason.
std::unique_ptr<Descriptor> readDescriptor(const std::string& path);

/// Reads descriptor.xml from the application's folder. One for which readDescriptor has none
/// ends the process with status 0.
std::unique_ptr<Descriptor> loadDescriptor(const MorvikData& instance);

/// The access elements of a descriptor's document.
XmlQueryResult findAccesses(xmlDoc* doc);

/// Number of access elements.
int accessCount(const Descriptor& descriptor);

/// The text of the access element at `index`, as it stands in the file. An element without any
/// content ends the process through a fatal log.
const char* accessName(const Descriptor& descriptor, int index);

/// True when `name` is listed: an exact comparison, first match ends the walk.
bool hasAccess(const Descriptor& descriptor, const char* name);

/// A gate for a single function, held ready: sets `target[functionName]` to `callback` with `data`
/// when `access` is listed, else to a function that ends the process with status 1 when called.
void bindGated(const Descriptor& descriptor, v8::Local<v8::ObjectTemplate> target,
               const char* access, const char* functionName, v8::FunctionCallback callback,
               v8::Local<v8::Value> data);

}  // namespace morvik
