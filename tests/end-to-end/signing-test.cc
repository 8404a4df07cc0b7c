// signHMACSHA1 in a script: signatures that others compute too.
#include "support/system/system-test.h"

namespace morvik::test {
namespace {

class SigningTest : public SystemTest {};

// The cases of RFC 2202, their digests in base64.
TEST_F(SigningTest, signsAsOthersDo) {
  expectLogged({
      {"signHMACSHA1('Hi There', '\\x0b'.repeat(20))", "thcxhlUFcmTii8C2+zeMjvFGvgA="},
      {"signHMACSHA1('what do ya want for nothing?', 'Jefe')", "7/zfauXrL6LSdBbV8YTfnCWafHk="},
      {"signHMACSHA1('\\xdd'.repeat(50), '\\xaa'.repeat(20))", "El1zQrmsEc2Ro5r0iqF7T2PxddM="},
      {"signHMACSHA1('\\xcd'.repeat(50), String.fromCharCode.apply(null,"
       " Array.from({length: 25}, function(nothing, i) { return i + 1; })))",
       "TJAH9AJiUMa8hBT5v1DIbC1yNdo="},
      {"signHMACSHA1('Test With Truncation', '\\x0c'.repeat(20))", "TBoDQktV4H/n8nvh1Yu5MkqaWgQ="},
      {"signHMACSHA1('Test Using Larger Than Block-Size Key - Hash Key First',"
       " '\\xaa'.repeat(80))",
       "qkrl4VJy0A6VcFY3zoo7Ve1AIRI="},
      {"signHMACSHA1('Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data',"
       " '\\xaa'.repeat(80))",
       "6OmdD0UjfXhta7qnllx4CLv/GpE="},
  });
}

TEST_F(SigningTest, signsTextsOfAnyLengthAndWhatBecomesAText) {
  expectLogged({{"signHMACSHA1('', '')", "+9sdGxiqbAgyS31ktx+3Y3BpDh0="},
                {"signHMACSHA1('x', 'k'.repeat(64))", "LDHq32jZupca0pM50oznJbA8EfY="},
                {"signHMACSHA1('x', 'k'.repeat(65))", "cgmsp17GgIcXJf0wmqaJdGZ329Q="},
                {"signHMACSHA1('x'.repeat(100000), 'k')", "Pk9XMyAWOSDepPE+P+GFRjJcgYg="},
                {"signHMACSHA1(1, 2)", "u7QYidMec0yvqlql2hxlrXAc9bE="},
                {"signHMACSHA1(undefined, null)", "98LObHNL2P6S5YsGbKq2ehoZRJM="},
                // A zero unit counts as a blank.
                {"signHMACSHA1('a\\0b', 'k\\0k')", "j7Yt1pe7pfmxxNY7fVUD4WoWt8s="}});
}

TEST_F(SigningTest, takesExactlyTwoArguments) {
  expectThrown({"signHMACSHA1()", "signHMACSHA1('text')", "signHMACSHA1('text', 'key', 1)"},
               "string: SignHMACSHA1: Wrong arguments");
  expectThrown({{"signHMACSHA1({toString: function() { throw 'no text'; }}, '')",  //
                 "string: no text"}});
}

}  // namespace
}  // namespace morvik::test
