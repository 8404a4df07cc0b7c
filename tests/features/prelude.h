// The globals that the scripts of features find.
#pragma once

namespace morvik::test {

/// f          a function
/// bad        an object that throws 'no text' when it becomes a text or a number
/// tell       a function that logs its arguments with their types and returns `result`
/// read('x')  an argument that adds its name to `order` when it becomes a text or a number
inline constexpr char kPrelude[] = R"(
  var f = function() {};
  var bad = {toString() { throw 'no text'; }};
  var result = true;
  var tell = function() {
    const shown = Array.from(arguments, a =>
        typeof a + ' ' + (typeof a === 'object' ? JSON.stringify(a) : a));
    log(shown.join(', ') + (this === tell ? '' : ' with another this'));
    return result;
  };
  var order = '';
  var read = name => ({toString() { order += name; return '1'; }});
)";

}  // namespace morvik::test
