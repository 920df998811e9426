#ifndef DEVHOST_PROGRAM_PROGRAM_H
#define DEVHOST_PROGRAM_PROGRAM_H

namespace devhost {

// The program: reads the arguments, does what they ask for with standard input, output and error, and returns the exit
// status. Never throws.
int RunProgram(int argc, const char* const* argv);

}  // namespace devhost

#endif
