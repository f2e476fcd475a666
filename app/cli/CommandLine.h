#pragma once

#include "Program.h"

/// Reads the arguments. Returns false when the program shall end with `status`: help was shown, or
/// a wrong option was named on standard error.
bool ParseCommandLine(int argc, char** argv, SProgram& program, int& status);
