// Aliases and key binds as the interpreter, the built-in commands and the view
// reach them. Both are lines recorded once into slots of resolved commands.
#ifndef ZYNCONSOLE_ALIAS_H
#define ZYNCONSOLE_ALIAS_H

#include "zynconsole.h"

extern int g_bTestBind;   // the open console hands key messages to the binds

void zynConsole_Alias(const char* szName, const char* szCommands);
void zynConsole_Bind(const char* szKey, const char* szCommands);
// "all" in any case removes every bind.
void zynConsole_Unbind(const char* szKey);
void zynConsole_KeyDown(int nKey);
void zynConsole_KeyUp(int nKey);
// Runs the binds of keys that went down or up since the last poll, while the
// kernel's window is active.
void zynConsole_PollBinds();
// Releases every bound key that is down: held toggles end.
void zynConsole_ReleaseKeys();
void zynConsole_RunStored(ZYNCONSOLE_STORED* pStored);
// The alias check of a statement (ppArgs[15] is the word): runs or records the
// alias and returns true, or returns false when the word is no alias.
bool zynConsole_AliasCheck(int nArgs, char** ppArgs);
// Stores a statement in the slot of the alias or bind being recorded. szBuffer
// is the 256-byte statement buffer that ppArgs points into.
void zynConsole_RecordStatement(ZYNCONSOLE_COMMAND* pCommand, int nSign, int nArgs, const char* szBuffer,
                                char** ppArgs);
// Prints every alias name, one a line.
void zynConsole_ListAliases();
// A toggle command ran: the running bind will act on release too.
void zynConsole_MarkBindToggle();
// Empties the slots that call a command about to be freed.
void zynConsole_ForgetCommand(ZYNCONSOLE_COMMAND* pCommand);
// Start: no binds, no key seen down. Stop: every alias deleted.
void zynConsole_ResetBinds();
void zynConsole_DeleteAliases();

#endif
