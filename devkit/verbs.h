// The verbs of morvik-dev, one file each. A verb gets its own part of the command line, its name
// first, and gives the exit status of the process.
#pragma once

namespace morvik::devkit {

/// The exit status of every verb for a command line that makes no sense.
inline constexpr int kUsageError = 2;

int runDevice(int argc, char** argv);
int runLog(int argc, char** argv);
int runWhy(int argc, char** argv);
int runRun(int argc, char** argv);
int runDebug(int argc, char** argv);
int runCheck(int argc, char** argv);
int runTest(int argc, char** argv);
int runTypes(int argc, char** argv);
int runNew(int argc, char** argv);
int runComplete(int argc, char** argv);
int runSim(int argc, char** argv);
int runConfig(int argc, char** argv);
int runApi(int argc, char** argv);

}  // namespace morvik::devkit
