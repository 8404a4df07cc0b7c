// A shell around the host's script engine, to run the TypeScript compiler in: the first argument is
// a script, the others are its `words`. It finds `load(file)`, which runs another script,
// `read(file)`, which gives a text or nothing, and `print(text)`.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "check/engine.h"

namespace {

using morvik::devkit::engineText;
using morvik::devkit::utf8Of;
using Args = v8::FunctionCallbackInfo<v8::Value>;

std::optional<std::string> contentOf(const std::string& file) {
  std::ifstream input(file, std::ios::binary);
  if (!input || input.peek() == std::ifstream::traits_type::eof()) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(input), {});
}

[[noreturn]] void refuse(const std::string& text) {
  std::fprintf(stderr, "%s\n", text.c_str());
  std::exit(EXIT_FAILURE);
}

void runFile(v8::Isolate* isolate, const std::string& file) {
  const v8::HandleScope handles(isolate);
  const auto context = isolate->GetCurrentContext();
  const v8::TryCatch caught(isolate);
  const auto source = contentOf(file);
  if (!source) refuse(file + " cannot be read");
  v8::ScriptOrigin origin(isolate, engineText(isolate, file));
  v8::Local<v8::Script> script;
  if (!v8::Script::Compile(context, engineText(isolate, *source), &origin).ToLocal(&script) ||
      script->Run(context).IsEmpty()) {
    const auto error = morvik::devkit::syntaxErrorOf(isolate, context, caught);
    refuse(file + ':' + std::to_string(error.line) + ": " + error.text);
  }
}

void load(const Args& args) { runFile(args.GetIsolate(), utf8Of(args.GetIsolate(), args[0])); }

void read(const Args& args) {
  const auto content = contentOf(utf8Of(args.GetIsolate(), args[0]));
  if (content) args.GetReturnValue().Set(engineText(args.GetIsolate(), *content));
}

void print(const Args& args) { std::puts(utf8Of(args.GetIsolate(), args[0]).c_str()); }

void give(v8::Local<v8::Context> context, const char* name, v8::Local<v8::Value> value) {
  context->Global()->Set(context, engineText(context->GetIsolate(), name), value).Check();
}

v8::Local<v8::Array> wordsOf(v8::Local<v8::Context> context, int count, char** words) {
  const auto list = v8::Array::New(context->GetIsolate());
  for (int at = 0; at < count; ++at) {
    const auto word = engineText(context->GetIsolate(), words[at]);
    list->Set(context, static_cast<std::uint32_t>(at), word).Check();
  }
  return list;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) refuse("which script?");
  const morvik::devkit::EngineIsolate owned;
  v8::Isolate* isolate = owned.get();
  const v8::Isolate::Scope isolateScope(isolate);
  const v8::HandleScope handles(isolate);
  const auto context = v8::Context::New(isolate);
  const v8::Context::Scope entered(context);
  give(context, "load", v8::Function::New(context, load).ToLocalChecked());
  give(context, "read", v8::Function::New(context, read).ToLocalChecked());
  give(context, "print", v8::Function::New(context, print).ToLocalChecked());
  give(context, "words", wordsOf(context, argc - 2, argv + 2));
  runFile(isolate, argv[1]);
  return EXIT_SUCCESS;
}
