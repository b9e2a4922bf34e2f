// The console's own commands: their table, the routine that dispatches on
// their IDs, and the command listing of "?".
#include "zynconsole/zynconsole_builtin.h"
#include "zynconsole/zynconsole_alias.h"
#include "zynconsole/zynconsole_interp.h"
#include "zynconsole/zynconsole_log.h"
#include "zynconsole/zynconsole_table.h"
#include "zynconsole/zynconsole_view.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum {
    ID_LIST = 0x1505, ID_COLOR = 0x1506, ID_BGCOLOR = 0x1507, ID_TIME = 0x1508, ID_VISIBLEOUTPUT = 0x1509,
    ID_ENABLECOMMAND = 0x150A, ID_UNREGCOMMAND = 0x150B, ID_HIDE = 0x150C, ID_SETLOGFILE = 0x150D,
    ID_HI = 0x150E, ID_ECHO = 0x150F, ID_EXEC = 0x1510, ID_SHOW = 0x1511, ID_UP = 0x1512, ID_BIND = 0x1513,
    ID_UNBIND = 0x1514, ID_ALIAS = 0x1515, ID_ALIASESLIST = 0x1516, ID_ALIASCALL = 0x1517,
    ID_LOADSCRIPT = 0x1518, ID_RELOADSCRIPT = 0x1519, ID_UNLOADSCRIPT = 0x151A, ID_PRINT = 0x151B,
    ID_URGENTPRINT = 0x151C, ID_CLEAR = 0x151D, ID_MOVE = 0x151E
};

struct BUILTIN {
    const char* szModule;
    const char* szName;
    unsigned long dwID;
    int nArgs, nOptional, bToggle;
};

// in order of registration
static const BUILTIN g_Builtins[] = {
    {"", "..", ID_UP, 0, 0, 0},
    {"", "?", ID_LIST, 1, 1, 0},
    {"console", "Color", ID_COLOR, 3, 3, 0},
    {"console", "BgColor", ID_BGCOLOR, 3, 0, 0},
    {"console", "Time", ID_TIME, 1, 0, 0},
    {"console", "VisibleOutput", ID_VISIBLEOUTPUT, 1, 0, 0},
    {"", "EnableCommand", ID_ENABLECOMMAND, 2, 0, 0},
    {"console", "Show", ID_SHOW, 0, 0, 0},
    {"console", "Hide", ID_HIDE, 0, 0, 0},
    {"console", "SetLogFile", ID_SETLOGFILE, 1, 0, 0},
    {"", "hi", ID_HI, 0, 0, 0},
    {"", "echo", ID_ECHO, 1, 1, 0},
    {"", "Exec", ID_EXEC, 1, 0, 0},
    {"", "Alias", ID_ALIAS, 2, 0, 0},
    {"", "AliasesList", ID_ALIASESLIST, 0, 0, 0},
    {"", "Bind", ID_BIND, 2, 0, 0},
    {"", "Unbind", ID_UNBIND, 1, 0, 0},
    {"", "UnregCommand", ID_UNREGCOMMAND, 1, 0, 0},
    {"", "LoadScript", ID_LOADSCRIPT, 1, 0, 0},
    {"", "ReloadScript", ID_RELOADSCRIPT, 1, 0, 0},
    {"", "UnloadScript", ID_UNLOADSCRIPT, 1, 0, 0},
    {"", "Print", ID_PRINT, 20, 20, 0},
    {"", "UrgentPrint", ID_URGENTPRINT, 1, 0, 0},
    {"", "Clear", ID_CLEAR, 0, 0, 0},
    {"", "Move", ID_MOVE, 0, 0, 1},
};

void zynConsole_RegisterBuiltins()
{
    for (const BUILTIN& b : g_Builtins)
        zynConsole_RegisterCommand(b.szModule, b.szName, b.nArgs, zynConsole_CommandRoutine, b.dwID,
                                   b.nOptional, b.bToggle);
    g_AliasCommand.pfnCallback = zynConsole_CommandRoutine;
    g_AliasCommand.dwID = ID_ALIASCALL;
}

// An argument, or "" where a direct call left it out.
static const char* Arg(char** ppArgs, int i) { return ppArgs[i] ? ppArgs[i] : ""; }

static unsigned long ColorArgs(char** ppArgs)
{
    return (unsigned long)(atoi(Arg(ppArgs, 0)) & 0xFF) << 16 | (atoi(Arg(ppArgs, 1)) & 0xFF) << 8 |
           (atoi(Arg(ppArgs, 2)) & 0xFF);
}

// Prints the names of one module's commands in columns.
static void ListModule(const char* szModule, int nPerRow, int nPerPage, int* pnRows, bool bPaging)
{
    zynConsole_SetFontColor(0xFFFFFFFF);
    zynConsole_Print("%s:\n", szModule);
    zynConsole_SetFontColor(0xFF1FFF1F);
    (*pnRows)++;
    int nColumn = 0;
    // the table may change during a wait for a key: it is read by index
    for (int i = 0; i < zynConsole_CountCommands(); i++) {
        ZYNCONSOLE_COMMAND* p = zynConsole_CommandAt(i);
        if (_stricmp(p->szModule, szModule) != 0)
            continue;
        zynConsole_Print("%s", p->szName);
        size_t n = strlen(p->szName);
        if (nColumn < nPerRow) {
            zynConsole_Print(n >= 8 && n < 16 ? "\t" : "\t\t");
            nColumn += (n >= 16);
        } else {
            nColumn = 0;
            zynConsole_Print("\n");
            if (++*pnRows >= nPerPage) {
                *pnRows = 0;
                if (bPaging) {
                    zynConsole_Print("Press any Key.");
                    zynConsole_WaitKey(0);
                    zynConsole_Print("\n");
                }
            }
        }
        nColumn++;
    }
    if (nPerRow != 0 && (nColumn - 1) % nPerRow != 0)
        zynConsole_Print("\n");
}

static void ListCommands(const char* szArg)
{
    ZYNCONSOLE_STATE* p = g_pConsole;
    bool bPaging = _stricmp(szArg, "/p") == 0;
    zynConsole_ReadView();
    long nWidth = p->rcView.right - p->rcView.left, nHeight = p->rcView.bottom - p->rcView.top;
    int nPerRow = 0;
    if (p->nCellWidth > 5)
        nPerRow = (int)((nWidth / (long)(p->nCellWidth - 5)) / 16 - 1);
    if (nPerRow < 0)
        nPerRow = 0;
    int nPerPage = (int)(nHeight / (long)(p->nCellHeight + 3) - 2);
    if (nPerPage < 1)
        nPerPage = 1;
    char szModules[ZYNCONSOLE_MAXMODULES][32];
    int nModules = 1;
    if (p->szModule[0] != 0)
        memcpy(szModules[0], p->szModule, 32);
    else
        zynConsole_CollectModules(szModules, &nModules);
    unsigned long dwColor = p->dwFontColor;
    int nRows = 0;
    for (int i = 0; i < nModules; i++) {
        ListModule(szModules[i], nPerRow, nPerPage, &nRows, bPaging);
        zynConsole_SetFontColor(dwColor);
    }
}

// The messages of the script commands.
static void LoadScriptCommand(const char* szFile)
{
    HRESULT hr = zynConsole_LoadScript(szFile);
    if (hr == E_HANDLE)
        zynConsole_Print("Can't find script %s.\n", szFile);
    else if (hr == E_ABORT)
        zynConsole_Print("Script %s is existing. Loading was skipped.\n", szFile);
}

static void PrintCommand(int nArgs, char** ppArgs)
{
    char szLine[512];
    size_t n = 0;
    for (int i = 0; i < nArgs && i < 15 && n < sizeof(szLine) - 1; i++) {
        int k = snprintf(szLine + n, sizeof(szLine) - n, "%s ", Arg(ppArgs, i));
        n = (k < 0) ? n : (n + k < sizeof(szLine) ? n + k : sizeof(szLine) - 1);
    }
    szLine[n] = 0;
    zynConsole_Print("%s\n", szLine);
}

static void Report(HRESULT hr)
{
    if (FAILED(hr))
        zynConsole_Print("Command failed.");
}

void zynConsole_CommandRoutine(unsigned long dwID, int nArgs, char** ppArgs)
{
    if (nArgs > 14 || !g_bConsoleStarted)
        return;
    if (dwID == ID_MOVE) {
        zynConsole_UrgentPrint(nArgs ? "Stop" : "Move");
        return;
    }
    if (ppArgs == NULL)
        return;
    ZYNCONSOLE_STATE* p = g_pConsole;
    switch (dwID) {
    case ID_UP: p->szModule[0] = 0; zynConsole_RefreshPrompt(); break;
    case ID_LIST: ListCommands(Arg(ppArgs, 0)); break;
    case ID_COLOR: zynConsole_SetFontColor(0xFF000000 | ColorArgs(ppArgs)); break;
    case ID_BGCOLOR: zynConsole_SetBackgroundColor((p->dwBackColor & 0xFF000000) | ColorArgs(ppArgs)); break;
    case ID_TIME: zynConsole_SetAnimationTime(atoi(Arg(ppArgs, 0))); break;
    case ID_VISIBLEOUTPUT: zynConsole_EnableInvisibleOutput(atoi(Arg(ppArgs, 0))); break;
    case ID_ENABLECOMMAND:
        Report(zynConsole_EnableCommand(p->szModule, Arg(ppArgs, 0), atoi(Arg(ppArgs, 1))));
        break;
    case ID_SHOW: zynConsole_Show(); break;
    case ID_HIDE: zynConsole_Hide(); break;
    case ID_SETLOGFILE: Report(zynConsole_EnableLog(Arg(ppArgs, 0))); break;
    case ID_HI:
        g_bTestBind = !g_bTestBind;
        zynConsole_UrgentPrint(g_bTestBind ? "Test Bind on" : "Test Bind off");
        break;
    case ID_ECHO: zynConsole_Echo(_stricmp(Arg(ppArgs, 0), "off") != 0); break;
    case ID_EXEC:
        if (zynConsole_ExecuteFile(Arg(ppArgs, 0)) == E_HANDLE)
            zynConsole_Print("Can't find file: %s\n", Arg(ppArgs, 0));
        break;
    case ID_ALIAS: zynConsole_Alias(Arg(ppArgs, 0), Arg(ppArgs, 1)); break;
    case ID_ALIASCALL: zynConsole_AliasCheck(nArgs, ppArgs); break;
    case ID_ALIASESLIST: zynConsole_ListAliases(); break;
    case ID_BIND: zynConsole_Bind(Arg(ppArgs, 0), Arg(ppArgs, 1)); break;
    case ID_UNBIND: zynConsole_Unbind(Arg(ppArgs, 0)); break;
    case ID_UNREGCOMMAND: Report(zynConsole_UnregisterCommand(p->szModule, Arg(ppArgs, 0))); break;
    case ID_RELOADSCRIPT: zynConsole_UnloadScript(Arg(ppArgs, 0)); LoadScriptCommand(Arg(ppArgs, 0)); break;
    case ID_LOADSCRIPT: LoadScriptCommand(Arg(ppArgs, 0)); break;
    case ID_UNLOADSCRIPT:
        if (FAILED(zynConsole_UnloadScript(Arg(ppArgs, 0))))
            zynConsole_Print("Script %s hadn't been loaded.", Arg(ppArgs, 0));
        break;
    case ID_PRINT: PrintCommand(nArgs, ppArgs); break;
    case ID_URGENTPRINT: zynConsole_UrgentPrint("%s", Arg(ppArgs, 0)); break;
    case ID_CLEAR: zynConsole_ClearText(); zynConsole_SetFontColor(0xFFFFFFFF); break;
    default: break;
    }
}
