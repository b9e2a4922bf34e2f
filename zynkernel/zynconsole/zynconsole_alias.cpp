// Aliases and key binds: a line is run once in recording mode, which resolves
// each statement to its command and stores it in a slot; an alias call or a
// key walks the slots. A running record is taken out of its table entry, so
// that it can neither find itself nor be deleted under its own feet.
#include "zynconsole/zynconsole_alias.h"
#include "zynconsole/zynconsole_interp.h"
#include "zynconsole/zynconsole_log.h"
#include "zynconsole/zynconsole_table.h"
#include "zynkernel.h"

#include <stdlib.h>
#include <string.h>

#define MAX_ALIAS_NAME 15
#define BIND_TARGET(nKey) (-10 - (nKey))

// a record taken out of its table while its slots run, linked on the stack
struct RUNNING {
    ZYNCONSOLE_ALIAS* pRecord;
    RUNNING* pOuter;
};

static ZYNCONSOLE_ALIAS** g_ppAliases;   // grows by ten; an entry is null while its alias runs
static int g_nAliases;
static ZYNCONSOLE_ALIAS* g_pBinds[256];  // by virtual-key code
static unsigned char g_byKeyState[256];  // last seen high byte of each bound key
static int g_nRunningAlias = -1;         // index of the alias that runs
static int g_bBindHasToggle;             // a toggle ran since the key went down
static RUNNING* g_pRunning;              // innermost running record
int g_bTestBind;

// key names for binds, by virtual-key code; the list ends at code -1
struct KEYNAME {
    char szName[16];
    int nCode;
};
static const KEYNAME g_KeyNames[104] = {
    {"LBUTTON", 0x01}, {"RBUTTON", 0x02}, {"MBUTTON", 0x04}, {"BACK", 0x08}, {"TAB", 0x09}, {"CLEAR", 0x0C},
    {"RETURN", 0x0D}, {"SHIFT", 0x10}, {"CONTROL", 0x11}, {"MENU", 0x12}, {"PAUSE", 0x13}, {"CAPITAL", 0x14},
    {"KANA", 0x15}, {"HANGEUL", 0x15}, {"HANGUL", 0x15}, {"JUNJA", 0x17}, {"FINAL", 0x18}, {"HANJA", 0x19},
    {"KANJI", 0x19}, {"ESCAPE", 0x1B}, {"CONVERT", 0x1C}, {"NONCONVERT", 0x1D}, {"ACCEPT", 0x1E},
    {"MODECHANGE", 0x1F}, {"SPACE", 0x20}, {"PRIOR", 0x21}, {"PGUP", 0x21}, {"NEXT", 0x22}, {"PGDN", 0x22},
    {"END", 0x23}, {"HOME", 0x24}, {"LEFT", 0x25}, {"UP", 0x26}, {"RIGHT", 0x27}, {"DOWN", 0x28},
    {"SELECT", 0x29}, {"PRINT", 0x2A}, {"EXECUTE", 0x2B}, {"SNAPSHOT", 0x2C}, {"INSERT", 0x2D},
    {"DELETE", 0x2E}, {"HELP", 0x2F}, {"LWIN", 0x5B}, {"RWIN", 0x5C}, {"APPS", 0x5D}, {"NUMPAD0", 0x60},
    {"NUMPAD1", 0x61}, {"NUMPAD2", 0x62}, {"NUMPAD3", 0x63}, {"NUMPAD4", 0x64}, {"NUMPAD5", 0x65},
    {"NUMPAD6", 0x66}, {"NUMPAD7", 0x67}, {"NUMPAD8", 0x68}, {"NUMPAD9", 0x69}, {"MULTIPLY", 0x6A},
    {"ADD", 0x6B}, {"SEPARATOR", 0x6C}, {"SUBTRACT", 0x6D}, {"DECIMAL", 0x6E}, {"DIVIDE", 0x6F}, {"F1", 0x70},
    {"F2", 0x71}, {"F3", 0x72}, {"F4", 0x73}, {"F5", 0x74}, {"F6", 0x75}, {"F7", 0x76}, {"F8", 0x77},
    {"F9", 0x78}, {"F10", 0x79}, {"F11", 0x7A}, {"F12", 0x7B}, {"F13", 0x7C}, {"F14", 0x7D}, {"F15", 0x7E},
    {"F16", 0x7F}, {"F17", 0x80}, {"F18", 0x81}, {"F19", 0x82}, {"F20", 0x83}, {"F21", 0x84}, {"F22", 0x85},
    {"F23", 0x86}, {"F24", 0x87}, {"NUMLOCK", 0x90}, {"SCROLL", 0x91}, {"LSHIFT", 0xA0}, {"RSHIFT", 0xA1},
    {"LCONTROL", 0xA2}, {"RCONTROL", 0xA3}, {"LMENU", 0xA4}, {"RMENU", 0xA5}, {"PROCESSKEY", 0xE5},
    {"ATTN", 0xF6}, {"CRSEL", 0xF7}, {"EXSEL", 0xF8}, {"EREOF", 0xF9}, {"PLAY", 0xFA}, {"ZOOM", 0xFB},
    {"NONAME", 0xFC}, {"PA1", 0xFD}, {"OEM_CLEAR", 0xFE},
    {"DontDelete", -1}};

// The virtual-key code of a key name: one character stands for its own key
// (letters in upper case), a longer name is looked up. -1 and a message for
// an unknown key.
static int KeyCode(const char* szKey)
{
    if (szKey == NULL)
        return -1;
    if (szKey[0] != 0 && szKey[1] == 0 && (unsigned char)szKey[0] < 128) {
        char ch = szKey[0];
        return (ch >= 'a' && ch <= 'z') ? ch - 'a' + 'A' : ch;
    }
    if (strlen(szKey) > 1) {
        for (int i = 0; g_KeyNames[i].nCode != -1; i++) {
            if (_stricmp(g_KeyNames[i].szName, szKey) == 0)
                return g_KeyNames[i].nCode;
        }
    }
    zynConsole_Print("Unknown key: %s", szKey);
    return -1;
}

static int& BindHasToggle(ZYNCONSOLE_ALIAS* pBind) { return *(int*)pBind->szName; }

static void DeleteRecord(ZYNCONSOLE_ALIAS* pRecord)
{
    if (pRecord != NULL) {
        free(pRecord->pStored);
        free(pRecord);
    }
}

// A zeroed record with one slot for each statement that szCommands can hold.
static ZYNCONSOLE_ALIAS* NewRecord(const char* szCommands)
{
    int nStored = 1;
    for (const char* p = szCommands; *p; p++)
        nStored += (*p == ';');
    ZYNCONSOLE_ALIAS* pRecord = (ZYNCONSOLE_ALIAS*)calloc(1, sizeof(ZYNCONSOLE_ALIAS));
    if (pRecord == NULL)
        return NULL;
    pRecord->pStored = (ZYNCONSOLE_STORED*)calloc(nStored, sizeof(ZYNCONSOLE_STORED));
    if (pRecord->pStored == NULL) {
        free(pRecord);
        return NULL;
    }
    pRecord->nStored = nStored;
    return pRecord;
}

static ZYNCONSOLE_STORED* RecordSlot()
{
    ZYNCONSOLE_ALIAS* pRecord = NULL;
    if (g_nRecordTarget >= 0 && g_nRecordTarget < g_nAliases)
        pRecord = g_ppAliases[g_nRecordTarget];
    else if (g_nRecordTarget <= BIND_TARGET(0) && g_nRecordTarget >= BIND_TARGET(255))
        pRecord = g_pBinds[BIND_TARGET(0) - g_nRecordTarget];
    if (pRecord == NULL || g_nStatementIndex < 0 || g_nStatementIndex >= pRecord->nStored)
        return NULL;
    return &pRecord->pStored[g_nStatementIndex];
}

// Runs every slot of a record that its caller took out of the table.
static void RunRecord(ZYNCONSOLE_ALIAS* pRecord, int nArgs, char** ppArgs)
{
    RUNNING running = {pRecord, g_pRunning};
    g_pRunning = &running;
    for (int i = 0; i < pRecord->nStored && g_bConsoleStarted; i++) {
        ZYNCONSOLE_STORED* pSlot = &pRecord->pStored[i];
        if (nArgs == 0 || pSlot->nArgs < 1) {
            zynConsole_RunStored(pSlot);
            continue;
        }
        // %1, %2 ... stand for the arguments of the call
        char* ppCall[16];
        for (int k = 0; k < 16; k++) {
            char* szArg = pSlot->ppArgs[k];
            ppCall[k] = szArg;
            if (k < pSlot->nArgs && szArg[0] == '%') {
                int n = atoi(szArg + 1);
                ppCall[k] = (n >= 1 && n <= nArgs) ? ppArgs[n - 1] : ppArgs[14];
            }
        }
        ZYNCONSOLE_COMMAND* pCommand = pSlot->pCommand;
        if (pCommand != NULL && (!g_bKeyRelease || pCommand->bToggle || pCommand == &g_AliasCommand ||
                                 pCommand->dwID == ZYNCONSOLE_ID_EXEC))
            zynConsole_CallCommand(pCommand, pSlot->nArgs, ppCall);
    }
    g_pRunning = running.pOuter;
}

void zynConsole_RunStored(ZYNCONSOLE_STORED* pStored)
{
    ZYNCONSOLE_COMMAND* pCommand = pStored->pCommand;
    if (pCommand == NULL)
        return;
    if (pCommand->bToggle)
        zynConsole_CallCommand(pCommand, g_bKeyRelease ? !pStored->nArgs : pStored->nArgs, NULL);
    else if (!g_bKeyRelease || pCommand == &g_AliasCommand || pCommand->dwID == ZYNCONSOLE_ID_EXEC)
        zynConsole_CallCommand(pCommand, pStored->nArgs, pStored->ppArgs);
}

bool zynConsole_AliasCheck(int nArgs, char** ppArgs)
{
    const char* szWord = ppArgs[15];
    int i = 0;
    while (i < g_nAliases && (g_ppAliases[i] == NULL || _stricmp(g_ppAliases[i]->szName, szWord) != 0))
        i++;
    if (i == g_nAliases)
        return false;
    if (g_nRecordTarget != -1) {
        // recorded as a call by name, looked up afresh when it runs
        ZYNCONSOLE_STORED* pSlot = RecordSlot();
        if (pSlot == NULL)
            return true;
        pSlot->pCommand = &g_AliasCommand;
        pSlot->nArgs = nArgs;
        int nPos = 0;
        for (int k = 0; k < 16; k++) {
            pSlot->ppArgs[k] = pSlot->szText + nPos;
            size_t n = strnlen(ppArgs[k], 254 - nPos);
            memcpy(pSlot->szText + nPos, ppArgs[k], n);
            nPos += (int)n;
            bool bShared = (n == 0 && k < 15 && ppArgs[k + 1][0] == 0);
            pSlot->szText[nPos] = 0;
            if (!bShared && nPos < 254)
                nPos++;
        }
        pSlot->szText[255] = 0;
        return true;
    }
    ZYNCONSOLE_ALIAS* pRecord = g_ppAliases[i];
    g_ppAliases[i] = NULL;
    int nOuter = g_nRunningAlias;
    g_nRunningAlias = i;
    RunRecord(pRecord, nArgs, ppArgs);
    g_nRunningAlias = nOuter;
    if (g_bConsoleStarted && i < g_nAliases && g_ppAliases[i] == NULL)
        g_ppAliases[i] = pRecord;
    else
        DeleteRecord(pRecord);   // redefined from inside, or the console stopped
    return true;
}

void zynConsole_RecordStatement(ZYNCONSOLE_COMMAND* pCommand, int nSign, int nArgs, const char* szBuffer,
                                char** ppArgs)
{
    ZYNCONSOLE_STORED* pSlot = RecordSlot();
    if (pSlot == NULL)
        return;
    pSlot->pCommand = pCommand;
    pSlot->nArgs = pCommand->bToggle ? nSign : nArgs;
    memcpy(pSlot->szText, szBuffer, sizeof(pSlot->szText));
    for (int k = 0; k < 16; k++)
        pSlot->ppArgs[k] = pSlot->szText + (ppArgs[k] - szBuffer);
    // the script stands in memory when the slot runs
    if (pCommand->dwID == ZYNCONSOLE_ID_EXEC)
        zynConsole_LoadScript(pSlot->ppArgs[0]);
}

void zynConsole_Alias(const char* szName, const char* szCommands)
{
    if (!g_bConsoleStarted || szName == NULL)
        return;
    if (szCommands == NULL)
        szCommands = "";
    if (strlen(szName) > MAX_ALIAS_NAME) {
        zynConsole_Print("Error: %s\nFor Aliases use less then 16 symbols.\n", szName);
        return;
    }
    if (zynConsole_FindCommand("", szName) != NULL) {
        zynConsole_Print("Error: The name '%s' was registered for command name.\n", szName);
        return;
    }
    int nTarget = g_nRecordTarget;
    int i = 0;
    for (; i < g_nAliases; i++) {
        if (g_ppAliases[i] == NULL ? i == g_nRunningAlias : _stricmp(g_ppAliases[i]->szName, szName) == 0)
            break;
    }
    if (i == g_nAliases) {
        if (!zynConsole_GrowTable((void***)&g_ppAliases, g_nAliases))
            return;
        g_ppAliases[g_nAliases++] = NULL;
    }
    ZYNCONSOLE_ALIAS* pRecord = NewRecord(szCommands);
    if (pRecord == NULL)
        return;
    DeleteRecord(g_ppAliases[i]);
    g_ppAliases[i] = pRecord;
    memcpy(pRecord->szName, szName, strlen(szName) + 1);
    g_nRecordTarget = i;
    zynConsole_ExecuteString(szCommands);
    g_nRecordTarget = nTarget;
}

void zynConsole_ListAliases()
{
    for (int i = 0; i < g_nAliases; i++) {
        if (g_ppAliases[i] != NULL)
            zynConsole_Print("%s\n", g_ppAliases[i]->szName);
    }
}

void zynConsole_Bind(const char* szKey, const char* szCommands)
{
    int nKey = KeyCode(szKey);
    if (nKey < 0)
        return;
    if (szCommands == NULL)
        szCommands = "";
    ZYNCONSOLE_ALIAS* pRecord = NewRecord(szCommands);
    if (pRecord == NULL)
        return;
    DeleteRecord(g_pBinds[nKey]);
    g_pBinds[nKey] = pRecord;
    int nTarget = g_nRecordTarget;
    g_nRecordTarget = BIND_TARGET(nKey);
    zynConsole_ExecuteString(szCommands);
    g_nRecordTarget = nTarget;
}

void zynConsole_Unbind(const char* szKey)
{
    if (szKey != NULL && _stricmp(szKey, "all") == 0) {
        for (int i = 0; i < 256; i++) {
            DeleteRecord(g_pBinds[i]);
            g_pBinds[i] = NULL;
        }
        return;
    }
    int nKey = KeyCode(szKey);
    if (nKey < 0)
        return;
    DeleteRecord(g_pBinds[nKey]);
    g_pBinds[nKey] = NULL;
}

// Runs a bind taken out of its entry and puts it back, unless the key was
// bound anew from inside.
static void RunBind(int nKey)
{
    ZYNCONSOLE_ALIAS* pRecord = g_pBinds[nKey];
    g_pBinds[nKey] = NULL;
    RunRecord(pRecord, 0, NULL);
    if (g_bConsoleStarted && g_pBinds[nKey] == NULL)
        g_pBinds[nKey] = pRecord;
    else
        DeleteRecord(pRecord);
}

void zynConsole_KeyDown(int nKey)
{
    if (nKey < 0 || nKey > 255 || g_pBinds[nKey] == NULL)
        return;
    g_bBindHasToggle = 0;
    RunBind(nKey);
    if (g_pBinds[nKey] != NULL)
        BindHasToggle(g_pBinds[nKey]) = g_bBindHasToggle;
}

void zynConsole_KeyUp(int nKey)
{
    if (nKey < 0 || nKey > 255)
        return;
    int bOuter = g_bKeyRelease;
    g_bKeyRelease = 1;
    if (g_pBinds[nKey] != NULL && BindHasToggle(g_pBinds[nKey]))
        RunBind(nKey);
    g_bKeyRelease = bOuter;
}

void zynConsole_PollBinds()
{
    HWND hWnd = zynKernel_GetWindow();
    if (hWnd == NULL || GetActiveWindow() != hWnd)
        return;
    for (int nKey = 0; nKey < 256; nKey++) {
        if (g_pBinds[nKey] == NULL)
            continue;
        unsigned char byState = (unsigned char)(((unsigned short)GetAsyncKeyState(nKey)) >> 8);
        if (byState == g_byKeyState[nKey])
            continue;
        if (byState != 0)
            zynConsole_KeyDown(nKey);
        else
            zynConsole_KeyUp(nKey);
        g_byKeyState[nKey] = byState;
    }
}

void zynConsole_ReleaseKeys()
{
    for (int nKey = 0; nKey < 256; nKey++) {
        if (GetAsyncKeyState(nKey) & 0x8000)
            zynConsole_KeyUp(nKey);
    }
}

void zynConsole_MarkBindToggle() { g_bBindHasToggle = 1; }

static void ForgetIn(ZYNCONSOLE_ALIAS* pRecord, ZYNCONSOLE_COMMAND* pCommand)
{
    for (int i = 0; pRecord != NULL && i < pRecord->nStored; i++) {
        if (pRecord->pStored[i].pCommand == pCommand)
            pRecord->pStored[i].pCommand = NULL;
    }
}

void zynConsole_ForgetCommand(ZYNCONSOLE_COMMAND* pCommand)
{
    for (int i = 0; i < g_nAliases; i++)
        ForgetIn(g_ppAliases[i], pCommand);
    for (int i = 0; i < 256; i++)
        ForgetIn(g_pBinds[i], pCommand);
    for (RUNNING* p = g_pRunning; p != NULL; p = p->pOuter)
        ForgetIn(p->pRecord, pCommand);
}

void zynConsole_ResetBinds()
{
    memset(g_pBinds, 0, sizeof(g_pBinds));
    memset(g_byKeyState, 0, sizeof(g_byKeyState));
}

void zynConsole_DeleteAliases()
{
    for (int i = 0; i < g_nAliases; i++)
        DeleteRecord(g_ppAliases[i]);
    free(g_ppAliases);
    g_ppAliases = NULL;
    g_nAliases = 0;
}
