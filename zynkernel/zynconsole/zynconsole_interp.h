// The interpreter's state that the aliases and binds share: whether statements
// run or are recorded, and the record that stands for a call of an alias.
#ifndef ZYNCONSOLE_INTERP_H
#define ZYNCONSOLE_INTERP_H

#include "zynconsole.h"

#define ZYNCONSOLE_ID_EXEC 0x1510
#define ZYNCONSOLE_ID_ALIAS 0x1517

// -1 run; 0 and up: record into that alias; -10 and below: into the bind of key -10 - value
extern int g_nRecordTarget;
extern int g_nStatementIndex;             // the statement's number within its line
extern int g_bKeyRelease;                 // the commands of a released key run
extern ZYNCONSOLE_COMMAND g_AliasCommand; // stands for a call of an alias in a slot

#endif
