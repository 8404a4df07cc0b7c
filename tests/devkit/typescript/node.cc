// Node.js out of the library that the host's engine comes from, to run the TypeScript compiler
// with: so the tests need no other one.
#include <node.h>

int main(int argc, char** argv) { return node::Start(argc, argv); }
