// The command table: one flat array of records in order of registration, the
// registration calls, and the look-ups of the interpreter and the aliases.
// Module and command names compare without regard to case.
#include "zynconsole/zynconsole_table.h"
#include "zynconsole/zynconsole_alias.h"
#include "zynconsole/zynconsole_log.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MAX_COMMANDS 2048
#define FIRST_EXPLICIT_ID 2048   // IDs below are given out automatically

static ZYNCONSOLE_COMMAND** g_ppCommands;   // grows by ten entries
static int g_nCommands;

bool zynConsole_GrowTable(void*** pppTable, int nCount)
{
    if (nCount % 10 != 0)
        return true;
    void** ppNew = (void**)malloc((nCount + 10) * sizeof(void*));
    if (ppNew == NULL)
        return false;
    if (*pppTable != NULL) {
        memcpy(ppNew, *pppTable, nCount * sizeof(void*));
        free(*pppTable);
    }
    *pppTable = ppNew;
    return true;
}

static bool SameName(const char* a, const char* b) { return _stricmp(a, b) == 0; }

static int FindExact(const char* szModule, const char* szName)
{
    for (int i = 0; i < g_nCommands; i++) {
        if (SameName(g_ppCommands[i]->szModule, szModule) && SameName(g_ppCommands[i]->szName, szName))
            return i;
    }
    return -1;
}

static ZYNCONSOLE_COMMAND* Search(const char* szModule, const char* szName, bool bPrefix)
{
    size_t nPrefix = strlen(szName);
    for (int pass = 0; pass < 2; pass++) {
        for (int i = 0; i < g_nCommands; i++) {
            ZYNCONSOLE_COMMAND* p = g_ppCommands[i];
            if (!SameName(p->szModule, szModule))
                continue;
            if (bPrefix ? _strnicmp(p->szName, szName, nPrefix) == 0 : SameName(p->szName, szName))
                return p;
        }
        if (szModule[0] == 0)
            break;
        szModule = "";
    }
    return NULL;
}

ZYNCONSOLE_COMMAND* zynConsole_FindCommand(const char* szModule, const char* szName)
{
    return Search(szModule, szName, false);
}

ZYNCONSOLE_COMMAND* zynConsole_FindCommandPrefix(const char* szModule, const char* szPrefix)
{
    return Search(szModule, szPrefix, true);
}

const char* zynConsole_FindModulePrefix(const char* szPrefix)
{
    size_t n = strlen(szPrefix);
    for (int i = 0; i < g_nCommands; i++) {
        if (_strnicmp(g_ppCommands[i]->szModule, szPrefix, n) == 0)
            return g_ppCommands[i]->szModule;
    }
    return NULL;
}

bool zynConsole_HasModule(const char* szModule)
{
    for (int i = 0; i < g_nCommands; i++) {
        if (SameName(g_ppCommands[i]->szModule, szModule))
            return true;
    }
    return false;
}

void zynConsole_CollectModules(char szNames[ZYNCONSOLE_MAXMODULES][32], int* pnCount)
{
    int n = 0;
    for (int i = 0; i < g_nCommands && n < ZYNCONSOLE_MAXMODULES; i++) {
        int k = 0;
        while (k < n && !SameName(szNames[k], g_ppCommands[i]->szModule))
            k++;
        if (k == n)
            memcpy(szNames[n++], g_ppCommands[i]->szModule, 32);
    }
    *pnCount = n;
}

int zynConsole_CountCommands() { return g_nCommands; }

ZYNCONSOLE_COMMAND* zynConsole_CommandAt(int nIndex)
{
    return (nIndex >= 0 && nIndex < g_nCommands) ? g_ppCommands[nIndex] : NULL;
}

void zynConsole_CallCommand(ZYNCONSOLE_COMMAND* pCommand, int nArgs, char** ppArgs)
{
    // read before the call: the routine may unregister its own command
    int bToggle = pCommand->bToggle;
    pCommand->pfnCallback(pCommand->dwID, nArgs, ppArgs);
    if (bToggle)
        zynConsole_MarkBindToggle();
}

HRESULT zynConsole_RegisterCommand(const char* szModule, const char* szName, int nArgs,
                                   ZYNCONSOLE_CALLBACK pfnCallback, unsigned long dwID, int nOptional, int bToggle)
{
    if (!g_bConsoleStarted || g_nCommands >= MAX_COMMANDS || pfnCallback == NULL)
        return E_FAIL;
    if (szModule == NULL || szName == NULL || strlen(szModule) > 31)
        return E_FAIL;
    if (dwID == 0) {
        for (int i = 0; i < g_nCommands; i++) {
            if (g_ppCommands[i]->dwID < FIRST_EXPLICIT_ID && g_ppCommands[i]->dwID > dwID)
                dwID = g_ppCommands[i]->dwID;
        }
        dwID++;
    } else if (dwID < FIRST_EXPLICIT_ID) {
        return E_FAIL;
    }
    for (int i = 0; i < g_nCommands; i++) {
        ZYNCONSOLE_COMMAND* p = g_ppCommands[i];
        if (SameName(p->szModule, szModule) && (SameName(p->szName, szName) || p->dwID == dwID))
            return E_FAIL;
    }
    if (!zynConsole_GrowTable((void***)&g_ppCommands, g_nCommands))
        return E_FAIL;
    ZYNCONSOLE_COMMAND* p = (ZYNCONSOLE_COMMAND*)calloc(1, sizeof(ZYNCONSOLE_COMMAND));
    if (p == NULL)
        return E_FAIL;
    // a name longer than 63 characters is kept cut; the caller's text stays whole
    snprintf(p->szModule, sizeof(p->szModule), "%s", szModule);
    snprintf(p->szName, sizeof(p->szName), "%s", szName);
    p->nArgs = nArgs;
    p->dwID = dwID;
    p->pfnCallback = pfnCallback;
    p->nOptional = nOptional;
    p->bToggle = bToggle;
    p->bEnabled = 1;
    g_ppCommands[g_nCommands++] = p;
    return S_OK;
}

HRESULT zynConsole_RegisterCommand(const char* szName, int nArgs, ZYNCONSOLE_CALLBACK pfnCallback,
                                   unsigned long dwID, int nOptional, int bToggle)
{
    return zynConsole_RegisterCommand("", szName, nArgs, pfnCallback, dwID, nOptional, bToggle);
}

static void RemoveAt(int nIndex)
{
    ZYNCONSOLE_COMMAND* p = g_ppCommands[nIndex];
    zynConsole_ForgetCommand(p);
    free(p);
    memmove(g_ppCommands + nIndex, g_ppCommands + nIndex + 1, (g_nCommands - nIndex - 1) * sizeof(void*));
    g_nCommands--;
}

HRESULT zynConsole_UnregisterCommand(const char* szModule, const char* szName)
{
    if (!g_bConsoleStarted || szModule == NULL || szName == NULL)
        return E_FAIL;
    int i = FindExact(szModule, szName);
    if (i < 0)
        return E_FAIL;
    RemoveAt(i);
    return S_OK;
}

HRESULT zynConsole_UnregisterCommand(const char* szModule)
{
    if (!g_bConsoleStarted || szModule == NULL)
        return E_FAIL;
    for (int i = 0; i < g_nCommands;) {
        if (SameName(g_ppCommands[i]->szModule, szModule))
            RemoveAt(i);
        else
            i++;
    }
    return S_OK;
}

HRESULT zynConsole_GetCommandID(const char* szModule, const char* szName, unsigned long* pdwID)
{
    if (szModule == NULL || szName == NULL || pdwID == NULL)
        return E_FAIL;
    *pdwID = 0xFFFFFFFF;
    if (!g_bConsoleStarted)
        return E_FAIL;
    int i = FindExact(szModule, szName);
    if (i >= 0)
        *pdwID = g_ppCommands[i]->dwID;
    return S_OK;
}

HRESULT zynConsole_EnableCommand(const char* szModule, const char* szName, int bEnable)
{
    if (!g_bConsoleStarted || szModule == NULL || szName == NULL)
        return E_FAIL;
    int i = FindExact(szModule, szName);
    if (i < 0)
        return E_FAIL;
    g_ppCommands[i]->bEnabled = bEnable;
    return S_OK;
}

void zynConsole_FreeCommands()
{
    for (int i = 0; i < g_nCommands; i++) {
        zynConsole_ForgetCommand(g_ppCommands[i]);
        free(g_ppCommands[i]);
    }
    free(g_ppCommands);
    g_ppCommands = NULL;
    g_nCommands = 0;
}
