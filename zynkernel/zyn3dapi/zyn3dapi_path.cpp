// The texture search path: one ';'-separated text of folders that only grows,
// and the look-up of a texture name through zynFileIO, which sees loose files
// and zip contents alike. The module does no file search of its own.
#include "zyn3dapi.h"
#include "zyn3dapi_local.h"
#include "zynfileio.h"

#include <stdio.h>
#include <string.h>

static const DWORD PATH_NAME_BUFFER = 256;
static const DWORD PATH_SEARCH_LENGTH = 255;

// module state
static char* g_pszTexturePath;          // locked global block, or null before the first folder
// tried in front of a bare file name
static const char* const g_TextureFolderPrefixes[] = {"maps\\"};
// tried in this order when the caller's own name is not found
static const char g_TextureFileExtensions[6][8] = {".bmp", ".dib", ".tga", ".dds", ".jpg", ".jpeg"};

// Copies szText into a global block of nBytes, zero-filled, moveable and locked.
static char* NewPathBlock(DWORD nBytes)
{
    HGLOBAL hBlock = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, nBytes);
    if (hBlock == NULL)
        return NULL;
    char* pBlock = (char*)GlobalLock(hBlock);
    if (pBlock == NULL)
        GlobalFree(hBlock);
    return pBlock;
}

static void FreePathBlock(char* pBlock)
{
    HGLOBAL hBlock = GlobalHandle(pBlock);
    GlobalUnlock(hBlock);
    GlobalFree(hBlock);
}

HRESULT zyn3DAPI_AddTexturePath(char* szPath)
{
    if (!zyn3DAPI_IsStarted() || szPath == NULL)
        return E_FAIL;
    size_t nNew = strlen(szPath);
    if (g_pszTexturePath == NULL) {
        char* pBlock = NewPathBlock((DWORD)nNew + 1);
        if (pBlock == NULL)
            return E_FAIL;
        memcpy(pBlock, szPath, nNew + 1);
        g_pszTexturePath = pBlock;
        return S_OK;
    }
    // a text that is any piece of the path already is not added again
    if (strstr(g_pszTexturePath, szPath))
        return S_OK;
    size_t nOld = strlen(g_pszTexturePath);
    char* pBlock = NewPathBlock((DWORD)(nOld + nNew + 2));
    if (pBlock == NULL)
        return E_FAIL;
    snprintf(pBlock, nOld + nNew + 2, "%s;%s", g_pszTexturePath, szPath);
    FreePathBlock(g_pszTexturePath);
    g_pszTexturePath = pBlock;
    return S_OK;
}

HRESULT zyn3DAPI_SetTexturePath(char* szPath)
{
    return zyn3DAPI_AddTexturePath(szPath);
}

HRESULT zyn3DAPI_GetTexturePath(char* szBuffer)
{
    if (!zyn3DAPI_IsStarted() || szBuffer == NULL)
        return E_FAIL;
    const char* szPath = g_pszTexturePath ? g_pszTexturePath : "";
    memcpy(szBuffer, szPath, strlen(szPath) + 1);
    return S_OK;
}

// Appends szTail to the working text when the whole of it fits.
static BOOL AppendFolder(char* szText, const char* szTail)
{
    size_t nText = strlen(szText), nTail = strlen(szTail);
    if (nText + nTail >= PATH_NAME_BUFFER)
        return FALSE;
    memcpy(szText + nText, szTail, nTail + 1);
    return TRUE;
}

void zyn3DAPI_AddDefaultTexturePaths()
{
    char szLine[PATH_NAME_BUFFER];
    lstrcpynA(szLine, GetCommandLineA(), sizeof(szLine));
    char* szText = szLine;
    while (*szText == '"')
        szText++;
    char* pSlash = strrchr(szText, '\\');
    if (pSlash)
        pSlash[1] = 0;
    // the results are not looked at: a folder that cannot be added is left out
    zyn3DAPI_AddTexturePath(szText);
    if (AppendFolder(szText, "base\\"))
        zyn3DAPI_AddTexturePath(szText);
    if (AppendFolder(szText, "models\\"))
        zyn3DAPI_AddTexturePath(szText);
}

static BOOL SearchFor(const char* szFile, const char* szExtension, char* szResult)
{
    return zynSearchPath(g_pszTexturePath, szFile, szExtension, PATH_SEARCH_LENGTH, szResult, NULL) != 0;
}

// "%s%s" of two texts, searched with no extension; a text that does not fit is not searched.
static BOOL SearchJoined(const char* szFirst, const char* szSecond, char* szResult)
{
    char szJoined[PATH_NAME_BUFFER];
    if (strlen(szFirst) + strlen(szSecond) >= sizeof(szJoined))
        return FALSE;
    snprintf(szJoined, sizeof(szJoined), "%s%s", szFirst, szSecond);
    return SearchFor(szJoined, NULL, szResult);
}

static void CutAtFirstDot(char* szText)
{
    char* pDot = strchr(szText, '.');
    if (pDot)
        *pDot = 0;
}

HRESULT zyn3DAPI_FindTextureFile(char* szName, char* szResult)
{
    if (!zyn3DAPI_IsStarted() || szName == NULL || szResult == NULL)
        return E_FAIL;
    // names that do not fit the 256-byte buffers are refused, never cut
    if (strlen(szName) >= PATH_NAME_BUFFER)
        return E_FAIL;
    char szLowered[PATH_NAME_BUFFER];
    memcpy(szLowered, szName, strlen(szName) + 1);
    for (char* p = szLowered; *p; p++) {
        if (*p >= 'A' && *p <= 'Z')
            *p = (char)(*p - 'A' + 'a');
    }
    if (zynGetFileAttributes(szLowered) != INVALID_FILE_ATTRIBUTES) {
        memcpy(szResult, szLowered, strlen(szLowered) + 1);
        return S_OK;
    }
    if (SearchFor(szLowered, NULL, szResult))
        return S_OK;
    const char* pBase = strstr(szLowered, "base\\");
    if (pBase && SearchFor(pBase + 5, NULL, szResult))
        return S_OK;
    char* szBare = szLowered;
    char* pSlash = strrchr(szLowered, '\\');
    if (pSlash)
        szBare = pSlash + 1;
    if (SearchFor(szBare, NULL, szResult))
        return S_OK;
    for (const char* szPrefix : g_TextureFolderPrefixes) {
        if (SearchJoined(szPrefix, szBare, szResult))
            return S_OK;
    }
    CutAtFirstDot(szBare);
    char szGiven[PATH_NAME_BUFFER];
    memcpy(szGiven, szName, strlen(szName) + 1);
    CutAtFirstDot(szGiven);
    for (const char* szExtension : g_TextureFileExtensions) {
        if (SearchFor(szBare, szExtension, szResult) || SearchFor(szGiven, szExtension, szResult) ||
            SearchJoined(szBare, szExtension, szResult))
            return S_OK;
    }
    return E_FAIL;
}
