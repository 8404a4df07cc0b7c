// Objects that stand for a file.
#include "host/data-object.h"

#include "support/unit/script-test.h"

namespace morvik::test {
namespace {

class DataObjectTest : public ScriptTest {
 protected:
  // The path that a script value stands for, or "none".
  std::string pathOf(const std::string& expression) {
    expose("pathOf", [](const Args& args) {
      const auto path = dataPath(args[0]);
      args.GetReturnValue().Set(path ? *path : toScript("none"));
    });
    expose("file", [](const Args& args) {
      args.GetReturnValue().Set(
          newFileObject(args.GetIsolate()->GetCurrentContext(), "/tmp/picture.jpg"));
    });
    return run("pathOf(" + expression + ")");
  }
};

TEST_F(DataObjectTest, onlyFileObjectsStandForAPath) {
  const struct {
    const char* expression;
    const char* path;
  } rows[] = {
      {"file()", "/tmp/picture.jpg"},
      {"", "none"},
      {"null", "none"},
      {"1", "none"},
      {"'/etc/passwd'", "none"},
      {"{}", "none"},
      {"{path: '/etc/passwd', 1: '/etc/passwd'}", "none"},
      {"function() {}", "none"},
      {"[1, '/etc/passwd']", "none"},
      {"new ArrayBuffer(8)", "none"},
      {"new Uint8Array(8)", "none"},
      {"new DataView(new ArrayBuffer(8))", "none"},
      {"Promise.resolve('/etc/passwd')", "none"},
      {"globalThis", "none"},
      {"morvik", "none"},
      {"new Proxy(file(), {})", "none"},
      {"Object.create(file())", "none"},
      {"Object.assign({}, file())", "none"},
      {"Symbol()", "none"},
      {"new (file().constructor)()", "none"},
      {"new (file().constructor)('/etc/passwd', '/etc/passwd')", "none"},
      {"Reflect.construct(file().constructor, [], Array)", "none"},
      {"new (class extends file().constructor {})()", "none"},
      {"Object.setPrototypeOf(new (file().constructor)(), file())", "none"},
      {"file().constructor.prototype", "none"},
      {"{...file()}", "none"},
      {"new (globalThis.constructor)()", "none"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.expression);
    EXPECT_EQ(pathOf(row.expression), row.path);
  }
}

TEST_F(DataObjectTest, aScriptSeesNothingOfIt) {
  pathOf("null");
  EXPECT_EQ(run("JSON.stringify(Reflect.ownKeys(file()))"), "[]");
  EXPECT_EQ(run("var f = file(); f.path = 'x'; f[1] = 'y'; pathOf(f)"), "/tmp/picture.jpg");
}

}  // namespace
}  // namespace morvik::test
