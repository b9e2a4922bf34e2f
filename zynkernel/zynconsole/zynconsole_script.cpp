// Scripts: .cfg files of command lines, read through zynFileIO (loose or from
// zip archives), kept in a table by file name, and executed line by line.
#include "zynconsole/zynconsole_log.h"
#include "zynconsole/zynconsole_table.h"
#include "zynfileio.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define MAX_KEY 31
#define MAX_PATH_TEXT 780
#define MAX_EXEC_DEPTH 5

static ZYNCONSOLE_SCRIPT** g_ppScripts;   // in order of loading; grows by ten
static int g_nScripts;
static int g_nExecDepth;                  // nested executions

// Makes the key of a path (the name behind the last backslash, ".cfg" added
// when it has no dot) and returns the script's index, or -1.
static int FindScript(const char* szPath, char szKey[MAX_KEY + 1])
{
    const char* szBare = strrchr(szPath, '\\');
    szBare = szBare ? szBare + 1 : szPath;
    snprintf(szKey, MAX_KEY + 1, "%s%s", szBare, strchr(szBare, '.') ? "" : ".cfg");
    for (int i = 0; i < g_nScripts; i++) {
        if (strcmp(g_ppScripts[i]->pszName, szKey) == 0)
            return i;
    }
    return -1;
}

static void DeleteScript(int nIndex)
{
    free(g_ppScripts[nIndex]->pszName);
    free(g_ppScripts[nIndex]->pText);
    free(g_ppScripts[nIndex]);
    memmove(g_ppScripts + nIndex, g_ppScripts + nIndex + 1, (g_nScripts - nIndex - 1) * sizeof(void*));
    g_nScripts--;
}

// Looks for szFile in the program's folder, its BASE and BASE\Scripts.
static bool SearchProgramFolders(const char* szFile, char* szFound)
{
    const char* szBare = strrchr(szFile, '\\');
    szBare = szBare ? szBare + 1 : szFile;
    char szProgram[MAX_PATH] = "";
    GetModuleFileNameA(NULL, szProgram, sizeof(szProgram) - 1);
    char* pSlash = strrchr(szProgram, '\\');
    if (pSlash != NULL)
        *pSlash = 0;
    char szList[3 * MAX_PATH + 32];
    snprintf(szList, sizeof(szList), "%s;%s\\BASE;%s\\BASE\\Scripts", szProgram, szProgram, szProgram);
    szFound[0] = 0;
    DWORD n = zynSearchPath(szList, szBare, strchr(szBare, '.') ? NULL : ".cfg", MAX_PATH_TEXT, szFound, NULL);
    return n > 0 && n < MAX_PATH_TEXT && zynGetFileAttributes(szFound) != 0xFFFFFFFF;
}

// Adds a record for the key; null when memory is out.
static ZYNCONSOLE_SCRIPT* AddScript(const char* szKey)
{
    if (!zynConsole_GrowTable((void***)&g_ppScripts, g_nScripts))
        return NULL;
    ZYNCONSOLE_SCRIPT* pScript = (ZYNCONSOLE_SCRIPT*)calloc(1, sizeof(ZYNCONSOLE_SCRIPT));
    char* pszName = (char*)malloc(strlen(szKey) + 1);
    if (pScript == NULL || pszName == NULL) {
        free(pScript);
        free(pszName);
        return NULL;
    }
    memcpy(pszName, szKey, strlen(szKey) + 1);
    pScript->pszName = pszName;
    g_ppScripts[g_nScripts++] = pScript;
    return pScript;
}

HRESULT zynConsole_LoadScript(const char* szFile)
{
    if (!g_bConsoleStarted || szFile == NULL)
        return E_FAIL;
    char szKey[MAX_KEY + 1];
    if (FindScript(szFile, szKey) >= 0)
        return E_ABORT;
    char szName[MAX_PATH_TEXT];
    snprintf(szName, sizeof(szName), "%s%s", szFile, strchr(szFile, '.') ? "" : ".cfg");
    if (zynGetFileAttributes(szName) == 0xFFFFFFFF && !SearchProgramFolders(szFile, szName))
        return E_HANDLE;
    void* hFile = zynCreateFile(szName, GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    if (hFile == INVALID_HANDLE_VALUE)
        return E_HANDLE;
    ZYNCONSOLE_SCRIPT* pScript = AddScript(szKey);
    if (pScript == NULL) {
        zynCloseHandle(hFile);
        return E_FAIL;
    }
    DWORD dwSize = zynGetFileSize(hFile, NULL);
    HRESULT hr = S_OK;
    if (dwSize != 0) {
        char* pText = (dwSize != 0xFFFFFFFF) ? (char*)malloc(dwSize + 1) : NULL;
        DWORD dwRead = 0;
        if (pText == NULL || !zynReadFile(hFile, pText, dwSize, &dwRead, NULL) || dwRead != dwSize) {
            free(pText);
            hr = E_FAIL;   // the record stays, without text
        } else {
            pText[dwSize] = 0;
            pScript->pText = pText;
        }
    }
    zynCloseHandle(hFile);
    return hr;
}

HRESULT zynConsole_UnloadScript(const char* szFile)
{
    if (!g_bConsoleStarted || szFile == NULL)
        return E_FAIL;
    if (_stricmp(szFile, "all") == 0) {
        while (g_nScripts > 0)
            DeleteScript(g_nScripts - 1);
        free(g_ppScripts);
        g_ppScripts = NULL;
        return S_OK;
    }
    char szKey[MAX_KEY + 1];
    int i = FindScript(szFile, szKey);
    if (i < 0)
        return E_FAIL;
    DeleteScript(i);
    return S_OK;
}

HRESULT zynConsole_ExecuteFile(const char* szFile)
{
    if (!g_bConsoleStarted || szFile == NULL)
        return E_FAIL;
    if (g_nExecDepth >= MAX_EXEC_DEPTH) {
        zynConsole_UrgentPrint("Too many execs in one time.");
        return E_FAIL;
    }
    g_nExecDepth++;
    char szKey[MAX_KEY + 1];
    int i = FindScript(szFile, szKey);
    bool bTemporary = false;
    if (i < 0) {
        zynConsole_LoadScript(szFile);
        i = FindScript(szFile, szKey);
        bTemporary = true;
    }
    if (i < 0) {
        g_nExecDepth--;
        return E_HANDLE;
    }
    // The lines may unload or reload this very script: they run from a copy.
    const char* pSource = g_ppScripts[i]->pText ? g_ppScripts[i]->pText : "";
    size_t nSize = strlen(pSource);
    char* pText = (char*)malloc(nSize + 1);
    if (pText != NULL) {
        memcpy(pText, pSource, nSize + 1);
        char* pLine = pText;
        char* p = pText;
        for (; *p; p++) {
            if (*p != '\r')
                continue;
            *p = 0;
            zynConsole_ExecuteString(pLine);
            if (p[1] != 0)
                p++;       // the byte behind the carriage return, whatever it is
            pLine = p + 1;
        }
        zynConsole_ExecuteString(pLine);
        free(pText);
    }
    if (bTemporary)
        zynConsole_UnloadScript(szFile);
    g_nExecDepth--;
    return S_OK;
}
