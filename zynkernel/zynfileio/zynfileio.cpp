// The file layer: loose files pass straight to Win32; a member of a zip archive
// is read whole into memory when it is opened, and its handle is the address of
// those bytes. A small header in front of them keeps the size and position.
#include "zynfileio.h"
#include "zynfileio_zip.h"

#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

struct ZipMember {
    DWORD dwSize;
    DWORD dwPos;
    BYTE* pData;    // the handle: the first byte of the contents
};

// Open members, looked up by handle. A plain handle is never dereferenced, so
// telling the two kinds apart must not read memory at the handle's address.
static std::vector<ZipMember*> g_OpenMembers;

static ZipMember* FindMember(void* hFile)
{
    if (hFile == NULL || hFile == INVALID_HANDLE_VALUE)
        return NULL;
    for (ZipMember* pMember : g_OpenMembers) {
        if (pMember->pData == hFile)
            return pMember;
    }
    return NULL;
}

void* zynCreateFile(const char* szName, DWORD dwAccess, DWORD dwShare, SECURITY_ATTRIBUTES* pSecurity,
                    DWORD dwCreation, DWORD dwFlags, void* hTemplate)
{
    if (szName == NULL || *szName == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    if (GetFileAttributesA(szName) != INVALID_FILE_ATTRIBUTES || ZipLookUp(szName) != ZYNZIP_FILE)
        return CreateFileA(szName, dwAccess, dwShare, pSecurity, dwCreation, dwFlags, hTemplate);
    // archives are read-only, and their members exist already
    if ((dwAccess & ~(GENERIC_READ | FILE_READ_DATA | FILE_READ_ATTRIBUTES)) ||
        (dwCreation != OPEN_EXISTING && dwCreation != OPEN_ALWAYS)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    BYTE* pBlock = NULL;
    DWORD dwSize = 0;
    if (!ZipReadMember(szName, sizeof(ZipMember), &pBlock, &dwSize)) {
        SetLastError(ERROR_FILE_CORRUPT);
        return INVALID_HANDLE_VALUE;
    }
    ZipMember* pMember = (ZipMember*)pBlock;
    pMember->dwSize = dwSize;
    pMember->dwPos = 0;
    pMember->pData = pBlock + sizeof(ZipMember);
    g_OpenMembers.push_back(pMember);
    return pMember->pData;
}

BOOL zynReadFile(void* hFile, void* pBuffer, DWORD nCount, DWORD* pRead, OVERLAPPED* pOverlapped)
{
    ZipMember* pMember = FindMember(hFile);
    if (pMember == NULL) {
        if (pRead)
            *pRead = 0;
        if (hFile == NULL || hFile == INVALID_HANDLE_VALUE) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        return ReadFile(hFile, pBuffer, nCount, pRead, pOverlapped);
    }
    DWORD nLeft = pMember->dwPos < pMember->dwSize ? pMember->dwSize - pMember->dwPos : 0;
    DWORD nCopy = nCount < nLeft ? nCount : nLeft;
    if (nCopy)
        memcpy(pBuffer, pMember->pData + pMember->dwPos, nCopy);
    pMember->dwPos += nCopy;
    if (pRead)
        *pRead = nCopy;
    return TRUE;
}

BOOL zynCloseHandle(void* hFile)
{
    for (size_t i = 0; i < g_OpenMembers.size(); i++) {
        if (g_OpenMembers[i]->pData == hFile) {
            free(g_OpenMembers[i]);
            g_OpenMembers.erase(g_OpenMembers.begin() + i);
            return TRUE;
        }
    }
    if (hFile == NULL || hFile == INVALID_HANDLE_VALUE) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return CloseHandle(hFile);
}

DWORD zynGetFileSize(void* hFile, DWORD* pHigh)
{
    ZipMember* pMember = FindMember(hFile);
    if (pMember == NULL)
        return GetFileSize(hFile, pHigh);
    if (pHigh)
        *pHigh = 0;
    return pMember->dwSize;
}

DWORD zynSetFilePointer(void* hFile, long nDistance, long* pHigh, DWORD dwMethod)
{
    ZipMember* pMember = FindMember(hFile);
    if (pMember == NULL)
        return SetFilePointer(hFile, nDistance, pHigh, dwMethod);
    long long nMove = pHigh ? ((long long)*pHigh << 32) | (DWORD)nDistance : nDistance;
    long long nBase = dwMethod == FILE_BEGIN ? 0 : dwMethod == FILE_CURRENT ? pMember->dwPos : pMember->dwSize;
    if (dwMethod > FILE_END) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_SET_FILE_POINTER;
    }
    long long nPos = nBase + nMove;
    if (nPos < 0 || nPos > 0xFFFFFFFELL) {
        SetLastError(ERROR_NEGATIVE_SEEK);
        return INVALID_SET_FILE_POINTER;
    }
    pMember->dwPos = (DWORD)nPos;
    if (pHigh)
        *pHigh = 0;
    return pMember->dwPos;
}

int zynFileIO_IsZip(void* hFile)
{
    return FindMember(hFile) != NULL;
}

DWORD zynGetFileAttributes(const char* szName)
{
    if (szName == NULL || *szName == 0)
        return INVALID_FILE_ATTRIBUTES;
    DWORD dwAttr = GetFileAttributesA(szName);
    if (dwAttr != INVALID_FILE_ATTRIBUTES)
        return dwAttr;
    switch (ZipLookUp(szName)) {
    case ZYNZIP_FILE:
        return FILE_ATTRIBUTE_READONLY;
    case ZYNZIP_FOLDER:
        return FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY;
    default:
        return INVALID_FILE_ATTRIBUTES;
    }
}

// The name as searched: the extension is added when the last part of the
// name has no '.' of its own.
static std::string WithExtension(const char* szFile, const char* szExtension)
{
    std::string szName = szFile;
    size_t nSlash = szName.find_last_of("\\/");
    size_t nDot = szName.find('.', nSlash == std::string::npos ? 0 : nSlash + 1);
    if (szExtension && nDot == std::string::npos)
        szName += szExtension;
    return szName;
}

static BOOL IsAbsolute(const char* szName)
{
    return szName[0] == '\\' || szName[0] == '/' || (szName[0] && szName[1] == ':');
}

struct SearchResult {
    const std::string* pName;
    std::string szFound;
};

static BOOL ExistsIn(const char* szFolder, void* pContext)
{
    SearchResult* pSearch = (SearchResult*)pContext;
    std::string szCandidate = szFolder;
    if (!szCandidate.empty() && szCandidate.back() != '\\' && szCandidate.back() != '/')
        szCandidate += '\\';
    szCandidate += *pSearch->pName;
    if (zynGetFileAttributes(szCandidate.c_str()) == INVALID_FILE_ATTRIBUTES)
        return FALSE;
    pSearch->szFound = szCandidate;
    return TRUE;
}

DWORD zynSearchPath(const char* szPath, const char* szFile, const char* szExtension, DWORD nBufferLength,
                    char* szBuffer, char** pFilePart)
{
    if (pFilePart)
        *pFilePart = NULL;
    if (szFile == NULL || *szFile == 0 || szBuffer == NULL || nBufferLength == 0)
        return 0;
    std::string szName = WithExtension(szFile, szExtension);
    SearchResult search = {&szName, std::string()};
    BOOL bFound = FALSE;
    if (szPath == NULL || IsAbsolute(szName.c_str())) {
        bFound = ExistsIn("", &search);
    } else {
        // each folder as it stands, then the archives lying in it
        const char* p = szPath;
        while (!bFound && *p) {
            const char* pEnd = strchr(p, ';');
            std::string szFolder(p, pEnd ? (size_t)(pEnd - p) : strlen(p));
            if (!szFolder.empty())
                bFound = ExistsIn(szFolder.c_str(), &search) || ZipVisitArchives(szFolder.c_str(), ExistsIn, &search);
            p = pEnd ? pEnd + 1 : p + szFolder.size();
        }
    }
    if (!bFound)
        return 0;
    char* pPart = NULL;
    DWORD nLength = GetFullPathNameA(search.szFound.c_str(), nBufferLength, szBuffer, &pPart);
    // a name that does not fit counts as not found, so no caller takes a stale buffer
    if (nLength == 0 || nLength >= nBufferLength)
        return 0;
    if (pFilePart)
        *pFilePart = pPart;
    return nLength;
}
