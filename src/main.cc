// morvikvm: hosts small JavaScript applications, one process each.
#include "host/launcher.h"

int main(int argc, char** argv) { return morvik::runLauncher(argc, argv); }
