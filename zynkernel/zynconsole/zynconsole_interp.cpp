// The interpreter: splits a line into statements, each into a sign, a module
// prefix, a name and quoted or plain arguments, checks the arguments against
// the command's record and calls it, or records it for an alias or a bind.
#include "zynconsole/zynconsole_interp.h"
#include "zynconsole/zynconsole_alias.h"
#include "zynconsole/zynconsole_log.h"
#include "zynconsole/zynconsole_table.h"
#include "zynconsole/zynconsole_view.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#define LINE_MAX 255
#define MAX_ARGS 14      // entry 14 stays an empty string, entry 15 holds the name

int g_nRecordTarget = -1;
int g_nStatementIndex;
int g_bKeyRelease;
ZYNCONSOLE_COMMAND g_AliasCommand;

static bool IsBlank(char ch) { return ch == ' ' || ch == '\t'; }

// The release rule: while a key's release runs, only toggles, alias calls and
// Exec get through.
static bool PassesRelease(const ZYNCONSOLE_COMMAND* pCommand)
{
    return !g_bKeyRelease || pCommand->bToggle || pCommand == &g_AliasCommand ||
           pCommand->dwID == ZYNCONSOLE_ID_EXEC;
}

// Cuts szText into the name and arguments in place. Returns the number of
// arguments found; only the first MAX_ARGS + 1 are stored in ppArgs.
static int SplitArguments(char* szText, char** ppArgs)
{
    int n = (int)strlen(szText);
    int nArgs = 0;
    bool bInWord = true, bInQuotes = false;
    for (int i = 0; i < n; i++) {
        if (szText[i] == '"') {
            if (!bInQuotes) {
                if (szText[i + 1] == '"')
                    szText[i] = 0;       // "" is an empty argument
                else
                    i++;                 // over the opening quote
            } else {
                szText[i] = (i == n - 1) ? 0 : ' ';
            }
            bInQuotes = !bInQuotes;
        }
        if (bInWord && szText[i] == ' ' && !bInQuotes)
            bInWord = false;
        if (!bInWord && (szText[i] != ' ' || bInQuotes)) {
            bInWord = true;
            if (nArgs <= MAX_ARGS)
                ppArgs[nArgs] = szText + i;
            nArgs++;
        }
        if (szText[i] == ' ' && !bInQuotes)
            szText[i] = 0;
    }
    for (int i = nArgs; i < 15; i++)
        ppArgs[i] = szText + n;
    ppArgs[15] = szText;
    return nArgs;
}

// The end of a module prefix: the first ':' outside quotes in front of the
// first blank, or null.
static char* FindPrefixEnd(char* szText)
{
    bool bInQuotes = false;
    for (char* p = szText; *p && *p != ' '; p++) {
        if (*p == '"')
            bInQuotes = !bInQuotes;
        else if (*p == ':' && !bInQuotes)
            return p;
    }
    return NULL;
}

static void CallOrRecord(ZYNCONSOLE_COMMAND* pCommand, int nSign, int nArgs, const char* szBuffer, char** ppArgs)
{
    if (g_nRecordTarget != -1) {
        zynConsole_RecordStatement(pCommand, nSign, nArgs, szBuffer, ppArgs);
    } else if (pCommand->bToggle) {
        zynConsole_CallCommand(pCommand, g_bKeyRelease ? !nSign : nSign, NULL);
    } else if (PassesRelease(pCommand)) {
        zynConsole_CallCommand(pCommand, nArgs, ppArgs);
    }
}

// Runs or records one statement. True if it is a comment, which ends the line.
static bool ProcessStatement(const char* szStatement)
{
    while (IsBlank(*szStatement))
        szStatement++;
    int nSign = 1;
    if (*szStatement == '+' || *szStatement == '-')
        nSign = (*szStatement++ == '+');
    char szBuffer[LINE_MAX + 1];
    snprintf(szBuffer, sizeof(szBuffer), "%s", szStatement);
    if (szBuffer[0] == '/' && szBuffer[1] == '/')
        return true;
    size_t n = strlen(szBuffer);
    while (n > 0 && IsBlank(szBuffer[n - 1]))
        szBuffer[--n] = 0;

    ZYNCONSOLE_STATE* pState = g_pConsole;
    char szModule[32];
    snprintf(szModule, sizeof(szModule), "%s", pState->szModule);
    char* szText = szBuffer;
    char* pColon = FindPrefixEnd(szBuffer);
    if (pColon != NULL) {
        *pColon = 0;
        if (!zynConsole_HasModule(szBuffer)) {
            unsigned long dwColor = pState->dwFontColor;
            zynConsole_SetFontColor(0xFFFF0000);
            zynConsole_Print("No functions has been presented in module %s.", szBuffer);
            zynConsole_SetFontColor(dwColor);
            zynConsole_Print("\n");
            return false;
        }
        snprintf(szModule, sizeof(szModule), "%s", szBuffer);
        szText = pColon + 1;
        while (*szText == ' ')
            szText++;
        if (*szText == '+' || *szText == '-')
            nSign = (*szText++ == '+');
        if (*szText == 0) {
            if (g_nRecordTarget == -1)
                memcpy(pState->szModule, szModule, sizeof(szModule));
            else
                zynConsole_Print("You can't set module in alias or bind command.\n");
            return false;
        }
    }
    if (*szText == 0)
        return false;

    char* ppArgs[16];
    int nArgs = SplitArguments(szText, ppArgs);
    if (nArgs > MAX_ARGS)
        return false;
    if (zynConsole_AliasCheck(nArgs, ppArgs))
        return false;
    const char* szName = ppArgs[15];
    ZYNCONSOLE_COMMAND* pCommand = zynConsole_FindCommand(szModule, szName);
    if (pCommand == NULL) {
        zynConsole_Print("Unknown command: '%s'\n", szName);
        return false;
    }
    if (nArgs < pCommand->nArgs - pCommand->nOptional || nArgs > pCommand->nArgs) {
        zynConsole_Print("Error: Command '%s' has %d Argument(s).\n", szName, pCommand->nArgs);
        return false;
    }
    if (!pCommand->bEnabled) {
        zynConsole_Print("Command '%s' unable.\n", szName);
        return false;
    }
    // the named module is the current one while the statement runs
    char szSaved[32];
    memcpy(szSaved, pState->szModule, sizeof(szSaved));
    memcpy(pState->szModule, szModule, sizeof(szModule));
    CallOrRecord(pCommand, nSign, nArgs, szBuffer, ppArgs);
    if (pColon != NULL)
        memcpy(pState->szModule, szSaved, sizeof(szSaved));
    return false;
}

HRESULT zynConsole_ExecuteString(const char* szLine)
{
    if (!g_bConsoleStarted || szLine == NULL)
        return E_FAIL;
    if (strnlen(szLine, LINE_MAX + 1) > LINE_MAX) {
        zynConsole_Print("\n%s\nThis command has more then 255 simbols\n", szLine);
        return E_FAIL;
    }
    char szWork[LINE_MAX + 1];
    snprintf(szWork, sizeof(szWork), "%s", szLine);
    char* p = szWork;
    for (int nIndex = 0; *p && g_bConsoleStarted; nIndex++) {
        char* pStatement = p;
        bool bInQuotes = false;
        while (*p && (*p != ';' || bInQuotes)) {
            if (*p == '"')
                bInQuotes = !bInQuotes;
            p++;
        }
        if (*p == ';')
            *p++ = 0;
        g_nStatementIndex = nIndex;
        if (ProcessStatement(pStatement))
            break;
    }
    zynConsole_RefreshPrompt();
    return S_OK;
}

HRESULT zynConsole_ExecuteStrings(char** ppLines, int nCount)
{
    if (!g_bConsoleStarted || (ppLines == NULL && nCount > 0))
        return E_FAIL;
    for (int i = 0; i < nCount; i++) {
        if (ppLines[i] != NULL)
            zynConsole_ExecuteString(ppLines[i]);
    }
    return S_OK;
}

HRESULT zynConsole_ExecuteCommand(const char* szCommand, ...)
{
    if (!g_bConsoleStarted)
        return E_FAIL;
    if (szCommand == NULL)
        return S_OK;
    if (szCommand[0] == '+' || szCommand[0] == '-') {
        zynConsole_ExecuteString(szCommand);
        return S_OK;
    }
    char szModule[32] = "";
    const char* szName = szCommand;
    const char* pColon = strchr(szCommand, ':');
    if (pColon != NULL) {
        snprintf(szModule, sizeof(szModule), "%.*s", (int)(pColon - szCommand), szCommand);
        szName = pColon + 1;
        if (*szName == 0) {
            memcpy(g_pConsole->szModule, szModule, sizeof(szModule));
            return S_OK;
        }
    }
    ZYNCONSOLE_COMMAND* pCommand = zynConsole_FindCommand(szModule, szName);
    if (pCommand == NULL || pCommand->nArgs > 16)
        return S_OK;
    char* ppArgs[16] = {0};
    va_list args;
    va_start(args, szCommand);
    for (int i = 0; i < pCommand->nArgs; i++)
        ppArgs[i] = va_arg(args, char*);
    va_end(args);
    zynConsole_CallCommand(pCommand, pCommand->nArgs, ppArgs);
    return S_OK;
}
