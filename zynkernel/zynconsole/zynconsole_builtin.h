// The console's own commands, registered first of all at start.
#ifndef ZYNCONSOLE_BUILTIN_H
#define ZYNCONSOLE_BUILTIN_H

#include "zynconsole.h"

// Registers the built-in commands and sets up the record of an alias call.
void zynConsole_RegisterBuiltins();

#endif
