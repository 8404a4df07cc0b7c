// descriptor.xml and the access names that it lists.
#include "host/descriptor.h"

#include <glib.h>
#include <libxml/parser.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "host/app-path.h"
#include "host/owned.h"
#include "host/script.h"

namespace morvik {
namespace {

constexpr const char* kAccessElements = "/descriptor/accesses/access";

// Hands the library what is left of a text.
int giveBytes(void* text, char* buffer, int length) {
  auto& left = *static_cast<std::string_view*>(text);
  const std::size_t given = left.copy(buffer, static_cast<std::size_t>(length));
  left.remove_prefix(given);
  return static_cast<int>(given);
}

// What the library has to say of a broken file it says on standard error by itself; of one that
// cannot be read too, when it is asked for that.
XmlDocument readByLibrary(const std::string& path) {
  return XmlDocument(xmlReadFile(path.c_str(), nullptr, 0));
}

// The file's bytes as they are. The library's own reading of files would unpack one that is
// compressed, and a few kilobytes become as many gigabytes.
XmlDocument parseDescriptor(std::FILE* file, const std::string& path) {
  std::string bytes(kMaxDescriptor + 1, '\0');
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
  if (std::ferror(file) != 0) return readByLibrary(path);
  if (bytes.size() <= kMaxDescriptor) {
    std::string_view left(bytes);
    return XmlDocument(xmlReadIO(giveBytes, nullptr, &left, path.c_str(), nullptr, 0));
  }
  std::fprintf(stderr, "%s: larger than %zu bytes\n", path.c_str(), kMaxDescriptor);
  return nullptr;
}

XmlDocument documentAt(const std::string& path) {
  const File file(std::fopen(path.c_str(), "r"));
  return file ? parseDescriptor(file.get(), path) : readByLibrary(path);
}

// Stands in the place of a function that the descriptor does not grant. It ends the process, where
// an exception would let the script go on as if it had been granted something.
void deniedStub(const Args& args) {
  const v8::String::Utf8Value access(args.GetIsolate(), args.Data());
  g_debug("ERROR ACCESS: %s", *access);
  std::exit(1);
}

}  // namespace

// In the order of the file. Everything else in it is passed over, so a descriptor may hold what
// other programs want to know of an application.
XmlQueryResult findAccesses(xmlDoc* doc) {
  const XmlQuery query(xmlXPathNewContext(doc));
  return XmlQueryResult(
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(kAccessElements), query.get()));
}

std::unique_ptr<Descriptor> readDescriptor(const std::string& path) {
  auto descriptor = std::make_unique<Descriptor>();
  descriptor->doc = documentAt(path);
  if (!descriptor->doc) return nullptr;
  descriptor->root = xmlDocGetRootElement(descriptor->doc.get());
  descriptor->accesses = findAccesses(descriptor->doc.get());
  return descriptor;
}

std::unique_ptr<Descriptor> loadDescriptor(const MorvikData& instance) {
  const std::string path = appPath(instance, "descriptor.xml", kStartPathSize);
  g_debug("searching descriptor: %s", path.c_str());
  g_debug("loading descriptor");
  auto descriptor = readDescriptor(path);
  if (!descriptor) std::exit(0);  // no word of our own: to the launcher a normal end
  return descriptor;
}

int accessCount(const Descriptor& descriptor) {
  if (!descriptor.accesses || descriptor.accesses->nodesetval == nullptr) return 0;
  return descriptor.accesses->nodesetval->nodeNr;
}

// An element without any content has no text that could be compared. The log tells the descriptor's
// author which one it is.
const char* accessName(const Descriptor& descriptor, int index) {
  const xmlNode* content = descriptor.accesses->nodesetval->nodeTab[index]->children;
  if (content == nullptr) g_error("descriptor.xml: access element %d is empty", index + 1);
  // An element in the place of the text has no text of its own and grants nothing.
  if (content->content == nullptr) return "";
  return reinterpret_cast<const char*>(content->content);
}

// As the names stand in the file: one in upper case or with a blank around it grants nothing, and
// the application meets `undefined` there.
bool hasAccess(const Descriptor& descriptor, const char* name) {
  for (int i = 0; i < accessCount(descriptor); ++i) {
    if (std::strcmp(accessName(descriptor, i), name) == 0) return true;
  }
  return false;
}

void bindGated(const Descriptor& descriptor, v8::Local<v8::ObjectTemplate> target,
               const char* access, const char* functionName, v8::FunctionCallback callback,
               v8::Local<v8::Value> data) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto function = hasAccess(descriptor, access)
                            ? v8::FunctionTemplate::New(isolate, callback, data)
                            : v8::FunctionTemplate::New(isolate, deniedStub, toScript(access));
  target->Set(isolate, functionName, function);
}

}  // namespace morvik
