// Console output and log: the state record, the start and stop of the whole
// console, printing into the bounded text buffer, urgent lines, and the log
// file, which is written from the buffer in blocks through a mark byte.
#include "zynconsole/zynconsole_log.h"
#include "zynconsole/zynconsole_alias.h"
#include "zynconsole/zynconsole_builtin.h"
#include "zynconsole/zynconsole_table.h"
#include "zynconsole/zynconsole_view.h"
#include "zynkernel.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define LOG_MARK '\x9C'          // everything in front of it has gone to the log
#define TEXT_MAX 5119            // characters the buffer holds
#define LOG_TRIGGER 0x1200       // unlogged characters that start a block
#define LOG_BLOCK 0x1000         // characters in one block
#define FORMAT_MAX 2048          // formatted text of one call
#define URGENT_FORMAT_MAX 1024

static ZYNCONSOLE_STATE g_Console;       // the record g_pConsole points to
ZYNCONSOLE_STATE* g_pConsole = &g_Console;
int g_bConsoleStarted;
int g_bConsoleShown;
int g_bUrgentActive;
int g_bEcho = 1;
static int g_bVisibleOutput = 1;         // collect text while nobody sees it
static va_list* g_pPrintArgs;            // arguments of zynConsole_UrgentPrint's caller
static char g_szLogCopy[TEXT_MAX + 1];   // a block without its colour escapes

// Writes nLength characters of szText to the log, leaving out colour escapes.
static void WriteLog(const char* szText, int nLength)
{
    ZYNCONSOLE_STATE* p = g_pConsole;
    if (p->szLogName[0] == 0) {
        if (p->hLog != 0 && p->hLog != INVALID_HANDLE_VALUE)
            CloseHandle(p->hLog);
        p->hLog = 0;
        return;
    }
    if (p->hLog == INVALID_HANDLE_VALUE) {
        zynConsole_UrgentPrint("SaveLogFile: Invalid handle value.");
        return;
    }
    int n = 0;
    for (int i = 0; i < nLength && n < TEXT_MAX; i++) {
        if (szText[i] == '~')
            i += 4;
        else
            g_szLogCopy[n++] = szText[i];
    }
    DWORD dwWritten = 0;
    if (p->hLog != 0)
        WriteFile(p->hLog, g_szLogCopy, n, &dwWritten, NULL);
}

void zynConsole_ClearText()
{
    char* szText = g_pConsole->szText;
    char* pMark = strrchr(szText, LOG_MARK);
    if (pMark != NULL)
        WriteLog(pMark + 1, (int)strlen(pMark + 1));
    szText[0] = LOG_MARK;
    szText[1] = 0;
}

// Puts the mark back if the text pushed it out, and writes a block when enough
// text has gathered behind it.
static void FlushLog()
{
    char* szText = g_pConsole->szText;
    char* pMark = strchr(szText, LOG_MARK);
    if (pMark == NULL) {
        if (szText[0] == 0)
            szText[1] = 0;
        szText[0] = LOG_MARK;
        pMark = szText;
    }
    if (strlen(pMark + 1) < LOG_TRIGGER)
        return;
    // The mark moves first, so that a report from the writer finds it moved.
    memmove(pMark, pMark + 1, LOG_BLOCK);
    pMark[LOG_BLOCK] = LOG_MARK;
    WriteLog(pMark, LOG_BLOCK);
}

// Formats szFormat into szOut (FORMAT_MAX bytes, zero-filled), one conversion
// at a time. False on a conversion without a type character.
static bool FormatText(char* szOut, const char* szFormat, va_list* pArgs)
{
    int n = 0;
    for (const char* s = szFormat; *s; s++) {
        if (*s != '%' || s[1] == '%') {
            if (n < FORMAT_MAX - 1)
                szOut[n++] = *s;
            s += (*s == '%');
            continue;
        }
        char szSpec[64];
        int nSpec = 0;
        char chType = 0;
        while (nSpec < 63 && *s) {
            szSpec[nSpec++] = *s;
            if (nSpec > 1 && strchr("CXcdiouxEGefgSsnp", *s)) {
                chType = *s;
                break;
            }
            s++;
        }
        if (chType == 0)
            return false;
        szSpec[nSpec] = 0;
        char szPart[256];
        szPart[0] = 0;
        if (strchr("CXcdioux", chType)) {
            snprintf(szPart, sizeof(szPart), szSpec, va_arg(*pArgs, int));
        } else if (strchr("EGefg", chType)) {
            snprintf(szPart, sizeof(szPart), szSpec, va_arg(*pArgs, double));
        } else if (chType == 'n') {
            int* pCount = va_arg(*pArgs, int*);
            if (pCount != NULL)
                *pCount = n;
        } else if (chType == 'p') {
            snprintf(szPart, sizeof(szPart), szSpec, va_arg(*pArgs, void*));
        } else {
            szSpec[nSpec - 1] = 's';    // the engine's text is narrow throughout
            snprintf(szPart, sizeof(szPart), szSpec, va_arg(*pArgs, const char*));
        }
        for (const char* t = szPart; *t && n < FORMAT_MAX - 1; t++)
            szOut[n++] = *t;
    }
    return true;
}

// Removes each backspace of the text from pAppended on, with the character in
// front of it, which may belong to the older text.
static void ApplyBackspaces(char* szText, char* pAppended)
{
    char* p;
    while ((p = strchr(pAppended, '\b')) != NULL) {
        char* pFrom = (p > szText) ? p - 1 : p;
        memmove(pFrom, p + 1, strlen(p + 1) + 1);
        if (pFrom < pAppended)
            pAppended = pFrom;
    }
}

HRESULT zynConsole_Print(const char* szFormat, ...)
{
    if (!g_bConsoleStarted)
        return E_FAIL;
    if (!g_bUrgentActive && !g_bVisibleOutput && !g_bConsoleShown)
        return S_OK;
    if (szFormat == NULL)
        return E_FAIL;
    g_pConsole->nScrollPage = 0;
    va_list args;
    va_start(args, szFormat);
    va_list* pArgs = g_pPrintArgs ? g_pPrintArgs : &args;
    char szOut[FORMAT_MAX] = {0};
    bool bDone = FormatText(szOut, szFormat, pArgs);
    va_end(args);
    g_pPrintArgs = NULL;
    if (!bDone)
        return E_FAIL;

    char* szText = g_pConsole->szText;
    int n = (int)strlen(szOut);
    int nLength = (int)strlen(szText);
    if (nLength + n > TEXT_MAX) {
        int nKeep = TEXT_MAX - n;
        memmove(szText, szText + nLength - nKeep, nKeep);
        nLength = nKeep;
    }
    memcpy(szText + nLength, szOut, n + 1);
    ApplyBackspaces(szText, szText + nLength);
    if (g_bConsoleShown)
        zynConsole_RebuildText();
    FlushLog();
    return S_OK;
}

// Appends szLine to the queue of urgent lines.
static void QueueUrgent(const char* szLine)
{
    ZYNCONSOLE_STATE* p = g_pConsole;
    size_t nNew = strlen(szLine);
    if (p->pUrgent == NULL) {
        p->pUrgent = (char*)malloc(nNew + 1);
        if (p->pUrgent == NULL)
            return;
        memcpy(p->pUrgent, szLine, nNew + 1);
        p->pUrgentLine = p->pUrgent;
        p->dwUrgentTime = GetTickCount();
    } else {
        size_t nPassed = p->pUrgentLine - p->pUrgent;
        size_t nRest = strlen(p->pUrgentLine);
        if (nPassed >= nNew) {
            memmove(p->pUrgent, p->pUrgentLine, nRest + 1);
        } else {
            char* pBlock = (char*)malloc(nRest + nNew + 1);
            if (pBlock == NULL)
                return;
            memcpy(pBlock, p->pUrgentLine, nRest + 1);
            free(p->pUrgent);
            p->pUrgent = pBlock;
        }
        memcpy(p->pUrgent + nRest, szLine, nNew + 1);
        p->pUrgentLine = p->pUrgent;
    }
    g_bUrgentActive = 1;
}

HRESULT zynConsole_UrgentPrint(const char* szFormat, ...)
{
    if (!g_bConsoleStarted || szFormat == NULL)
        return S_OK;
    // the line in the urgent colour, then back to the colour of the text
    char szWrapped[URGENT_FORMAT_MAX];
    size_t nFormat = strlen(szFormat);
    if (nFormat > 0 && szFormat[nFormat - 1] == '\n')
        nFormat--;
    if (nFormat > URGENT_FORMAT_MAX - 12)
        nFormat = URGENT_FORMAT_MAX - 12;
    memcpy(szWrapped, "~\x01\xFF\xFF\xFF", 5);
    memcpy(szWrapped + 5, szFormat, nFormat);
    char* pClose = szWrapped + 5 + nFormat;
    memcpy(pClose, "~\xFF\xFF\xFF\xFF\n", 7);
    char* szText = g_pConsole->szText;
    const char* pLastColor = strrchr(szText, '~');
    if (pLastColor != NULL && strlen(pLastColor) >= 5)
        memcpy(pClose + 1, pLastColor + 1, 4);

    size_t nLength = strlen(szText);
    if (nLength > 0 && szText[nLength - 1] != '\n')
        zynConsole_Print("\n");
    nLength = strlen(szText);
    char chLast = 0;
    if (nLength > 0) {
        chLast = szText[nLength - 1];
        szText[nLength - 1] = LOG_MARK;
    }
    va_list args;
    va_start(args, szFormat);
    g_pPrintArgs = &args;
    zynConsole_Print(szWrapped);
    g_pPrintArgs = NULL;
    va_end(args);

    const char* szLine = "";
    char* pTemporary = strrchr(szText, LOG_MARK);
    if (pTemporary != NULL && chLast != 0) {
        *pTemporary = chLast;
        szLine = pTemporary + 1;
    }
    if (!g_bConsoleShown)
        QueueUrgent(szLine);
    zynConsole_RebuildText();
    return S_OK;
}

HRESULT zynConsole_SetFontColor(unsigned long dwColor)
{
    if (!g_bConsoleStarted)
        return E_FAIL;
    // no byte of the colour may read as a terminator, backspace or newline
    for (int i = 0; i < 32; i += 8) {
        unsigned long dwByte = (dwColor >> i) & 0xFF;
        if (dwByte == 0 || dwByte == 8 || dwByte == 10)
            dwColor += 1ul << i;
    }
    g_pConsole->dwFontColor = dwColor & 0xFFFFFFFFul;
    g_pConsole->dwFontColorEnd = 0;
    unsigned char byColor[5] = {(unsigned char)dwColor, (unsigned char)(dwColor >> 8),
                                (unsigned char)(dwColor >> 16), (unsigned char)(dwColor >> 24), 0};
    return zynConsole_Print("~%s", (const char*)byColor);
}

HRESULT zynConsole_EnableLog(const char* szName)
{
    if (!g_bConsoleStarted)
        return E_FAIL;
    ZYNCONSOLE_STATE* p = g_pConsole;
    if (p->hLog != 0) {
        if (p->hLog != INVALID_HANDLE_VALUE)
            CloseHandle(p->hLog);
        p->hLog = 0;
    }
    if (szName == NULL || szName[0] == 0) {
        p->szLogName[0] = 0;
        return S_OK;
    }
    snprintf(p->szLogName, sizeof(p->szLogName), "%s", szName);
    p->hLog = CreateFileA(p->szLogName, GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, NULL);
    if (p->hLog == INVALID_HANDLE_VALUE) {
        zynConsole_UrgentPrint("Console EnableLog: Invalid Handle Value");
        return E_FAIL;
    }
    return S_OK;
}

HRESULT zynConsole_EnableInvisibleOutput(int bEnable)
{
    g_bVisibleOutput = bEnable;
    return S_OK;
}

HRESULT zynConsole_Echo(int bEcho)
{
    if (!g_bConsoleStarted)
        return E_FAIL;
    g_bEcho = bEcho;
    return S_OK;
}

HRESULT zynConsole_Initialize()
{
    if (g_bConsoleStarted || g_bConsoleShown)
        return E_FAIL;
    g_bConsoleStarted = 1;
    g_bUrgentActive = 0;
    g_pConsole = &g_Console;
    memset(&g_Console, 0, sizeof(g_Console));
    g_bConsoleShown = 0;
    g_bVisibleOutput = 1;
    g_Console.szText[0] = LOG_MARK;
    g_Console.hWnd = zynKernel_GetWindow();
    zynConsole_ResetView();
    zynConsole_ResetBinds();
    zynConsole_SetFontColor(0xFFFFFFFF);
    zynConsole_SetBackgroundColor(0x6F0000FF);
    zynConsole_SetAnimationTime(400);
    zynConsole_RegisterBuiltins();
    zynConsole_Print("~%s  Console:\n", "\xFF\xFF\xFF\xFF");
    zynConsole_ExecuteFile("console");
    return S_OK;
}

HRESULT zynConsole_Finalize()
{
    if (!g_bConsoleStarted)
        return E_FAIL;
    ZYNCONSOLE_STATE* p = g_pConsole;
    const char* pMark = strrchr(p->szText, LOG_MARK);
    if (pMark != NULL)
        WriteLog(pMark + 1, (int)strlen(pMark + 1));
    zynConsole_Hide();
    zynConsole_Unbind("ALL");
    zynConsole_UnloadScript("ALL");
    zynConsole_DeleteAliases();
    if (p->hLog != 0 && p->hLog != INVALID_HANDLE_VALUE)
        CloseHandle(p->hLog);
    p->hLog = 0;
    free(p->pUrgent);
    p->pUrgent = NULL;
    p->pUrgentLine = NULL;
    zynConsole_FreeCommands();
    zynConsole_ReleaseView();
    g_bUrgentActive = 0;
    g_bConsoleShown = 0;
    g_bConsoleStarted = 0;
    p->hWnd = NULL;
    return S_OK;
}
