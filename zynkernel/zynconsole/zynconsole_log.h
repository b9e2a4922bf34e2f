// What the console's files share of the state record and the output: the
// started and shown flags, and the log writer behind the command "Clear".
#ifndef ZYNCONSOLE_LOG_H
#define ZYNCONSOLE_LOG_H

#include "zynconsole.h"

extern ZYNCONSOLE_STATE* g_pConsole; // the one state record
extern int g_bConsoleStarted;        // between zynConsole_Initialize and zynConsole_Finalize
extern int g_bConsoleShown;          // opening, open or closing
extern int g_bUrgentActive;          // urgent lines are on show while closed
extern int g_bEcho;                  // the line editor copies entered lines into the text

// Hands everything behind the log mark to the log and leaves only the mark.
void zynConsole_ClearText();

#endif
