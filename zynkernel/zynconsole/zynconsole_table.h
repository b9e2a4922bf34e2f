// The command table's look-ups and the one place from which command routines
// are called, for the interpreter, the aliases and binds, and the view.
#ifndef ZYNCONSOLE_TABLE_H
#define ZYNCONSOLE_TABLE_H

#include "zynconsole.h"

#define ZYNCONSOLE_MAXMODULES 32

// The first command of the module with the name, falling back to the global
// module when szModule is not empty. Null if none.
ZYNCONSOLE_COMMAND* zynConsole_FindCommand(const char* szModule, const char* szName);
// The same, with szPrefix matching the start of the name.
ZYNCONSOLE_COMMAND* zynConsole_FindCommandPrefix(const char* szModule, const char* szPrefix);
// The first module name that begins with szPrefix, or null.
const char* zynConsole_FindModulePrefix(const char* szPrefix);
// Whether any command belongs to exactly this module.
bool zynConsole_HasModule(const char* szModule);
// Up to 32 module names, each once, in order of first appearance.
void zynConsole_CollectModules(char szNames[ZYNCONSOLE_MAXMODULES][32], int* pnCount);
// Number of commands and the one at nIndex (null past the end).
int zynConsole_CountCommands();
ZYNCONSOLE_COMMAND* zynConsole_CommandAt(int nIndex);
// Calls the command's routine; a toggle command then marks the running bind.
void zynConsole_CallCommand(ZYNCONSOLE_COMMAND* pCommand, int nArgs, char** ppArgs);
// Grows a pointer array by ten entries when nCount is a multiple of ten (the
// rule of all the console's tables). False when memory is out.
bool zynConsole_GrowTable(void*** pppTable, int nCount);
// Frees every record and the table.
void zynConsole_FreeCommands();

#endif
