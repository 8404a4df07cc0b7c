// Semantic XML to script objects, by libxml2: <a><b>x</b></a> becomes {a: {b: 'x'}}.
#include "devices/semantic.h"

#include <glib.h>
#include <libxml/parser.h>

#include "host/owned-xml.h"
#include "host/script.h"
#include "host/system-log.h"

namespace morvik {
namespace {

const char* chars(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

// The text of an element without child elements; an empty element gives an empty text.
void setContent(xmlNode* element, v8::Local<v8::Object> object) {
  const XmlText content(xmlNodeGetContent(element));
  if (!content) {
    g_message("node type: Element, children, content: null\n");
    return;
  }
  g_message("node type: Element, content: %s\n", chars(content.get()));
  setOwn(object, chars(element->name), toScript(chars(content.get())));
}

// Makes properties of elements; the name is that of its line in the log, from which operators know
// it. Objects within objects are reached through it again.
void print_element_names(xmlNode* first,
                         v8::Local<v8::Object> object);  // NOLINT(misc-no-recursion)

void setElement(xmlNode* element, v8::Local<v8::Object> object) {
  g_message("node type: Element, name: %s\n", chars(element->name));
  // With child elements, the text between them is lost.
  if (xmlChildElementCount(element) == 0) return setContent(element, object);
  const auto inner = v8::Object::New(v8::Isolate::GetCurrent());
  print_element_names(element->children, inner);
  setOwn(object, chars(element->name), inner);
}

void print_element_names(xmlNode* first, v8::Local<v8::Object> object) {
  g_message("node type: print_element_names");
  for (xmlNode* node = first; node != nullptr; node = node->next) {
    if (node->type == XML_ELEMENT_NODE) setElement(node, object);
  }
}

}  // namespace

void parseSemantic(const std::string& text, v8::Local<v8::Object> object) {
  g_message("ASR: parseSemantic: size:%d", static_cast<int>(text.size()));
  sendHeldRecords();  // the library tells standard error what it finds wrong
  const XmlDocument document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "noname.xml", nullptr, 0));
  if (!document) {
    g_message("ASR: parseSemantic: Failed to parse document");
    return;
  }
  g_message("ASR: parseSemantic: succeed parse document");
  print_element_names(xmlDocGetRootElement(document.get()), object);
}

}  // namespace morvik
