// Reading zip archives: the end record and central directory are parsed here,
// members are read through their local header and inflated with zlib.
#include "zynfileio_zip.h"

#include <stdlib.h>
#include <string.h>
#include <zlib.h>

#include <algorithm>
#include <string>
#include <vector>

// record signatures and sizes of the zip format
static const DWORD ZIP_END_SIG = 0x06054b50;
static const DWORD ZIP_END64_LOCATOR_SIG = 0x07064b50;
static const DWORD ZIP_CENTRAL_SIG = 0x02014b50;
static const DWORD ZIP_LOCAL_SIG = 0x04034b50;
static const DWORD ZIP_END_SIZE = 22;
static const DWORD ZIP_CENTRAL_SIZE = 46;
static const DWORD ZIP_LOCAL_SIZE = 30;
static const DWORD ZIP_MAX_COMMENT = 65535;
// A member larger than this is refused rather than allocated.
static const DWORD ZIP_MAX_MEMBER = 0x40000000;

struct ZipEntry {
    std::string szName;    // lower case, '/' separators, no trailing '/'
    BOOL bFolder;          // written as "name/"
    WORD wFlags;
    WORD wMethod;
    DWORD dwCrc;
    DWORD dwPacked;
    DWORD dwSize;
    DWORD dwLocal;         // offset of the local header
};

static WORD Get16(const BYTE* p) { return (WORD)(p[0] | (p[1] << 8)); }
static DWORD Get32(const BYTE* p) { return (DWORD)p[0] | ((DWORD)p[1] << 8) | ((DWORD)p[2] << 16) | ((DWORD)p[3] << 24); }

static BOOL ReadAt(HANDLE hFile, DWORD dwOffset, void* pBuffer, DWORD nCount)
{
    if (SetFilePointer(hFile, (LONG)dwOffset, NULL, FILE_BEGIN) == INVALID_SET_FILE_POINTER)
        return FALSE;
    DWORD nRead = 0;
    return ReadFile(hFile, pBuffer, nCount, &nRead, NULL) && nRead == nCount;
}

// Lower case with '/' separators, without separators at either end.
static std::string Normalize(const char* szName, size_t nLength)
{
    std::string s;
    s.reserve(nLength);
    for (size_t i = 0; i < nLength; i++) {
        char c = szName[i];
        if (c == '\\')
            c = '/';
        if (c >= 'A' && c <= 'Z')
            c = (char)(c - 'A' + 'a');
        if (c == '/' && (s.empty() || s.back() == '/'))
            continue;
        s.push_back(c);
    }
    while (!s.empty() && s.back() == '/')
        s.pop_back();
    return s;
}

static BOOL EndsWithZip(const char* szName, size_t nLength)
{
    return nLength > 4 && _strnicmp(szName + nLength - 4, ".zip", 4) == 0;
}

// Finds the first folder of the name that is an existing zip file. The archive's
// path goes into szArchive and *ppMember points behind its separator.
static BOOL SplitName(const char* szName, char* szArchive, size_t nArchive, const char** ppMember)
{
    size_t nLength = strlen(szName);
    for (size_t i = 1; i < nLength; i++) {
        if (szName[i] != '\\' && szName[i] != '/')
            continue;
        if (!EndsWithZip(szName, i) || i >= nArchive)
            continue;
        memcpy(szArchive, szName, i);
        szArchive[i] = 0;
        DWORD dwAttr = GetFileAttributesA(szArchive);
        if (dwAttr != INVALID_FILE_ATTRIBUTES && !(dwAttr & FILE_ATTRIBUTE_DIRECTORY)) {
            *ppMember = szName + i + 1;
            return TRUE;
        }
    }
    return FALSE;
}

// Parses the end record and the central directory. A damaged, split or
// 64-bit archive fails as a whole: no member of it is ever seen.
static BOOL ReadDirectory(HANDLE hFile, std::vector<ZipEntry>& entries)
{
    LARGE_INTEGER liSize;
    if (!GetFileSizeEx(hFile, &liSize) || liSize.QuadPart < ZIP_END_SIZE || liSize.QuadPart > 0xFFFFFFFFLL)
        return FALSE;
    DWORD dwSize = (DWORD)liSize.QuadPart;
    DWORD nTail = std::min<DWORD>(dwSize, ZIP_END_SIZE + ZIP_MAX_COMMENT);
    std::vector<BYTE> tail(nTail);
    if (!ReadAt(hFile, dwSize - nTail, tail.data(), nTail))
        return FALSE;

    // the last end record whose comment reaches exactly to the end of the file
    long nEnd = -1;
    for (long i = (long)nTail - (long)ZIP_END_SIZE; i >= 0; i--) {
        if (Get32(&tail[i]) == ZIP_END_SIG && i + ZIP_END_SIZE + Get16(&tail[i + 20]) == nTail) {
            nEnd = i;
            break;
        }
    }
    if (nEnd < 0)
        return FALSE;
    const BYTE* pEnd = &tail[nEnd];
    DWORD dwEndOffset = dwSize - nTail + (DWORD)nEnd;
    WORD nDisk = Get16(pEnd + 4), nDirDisk = Get16(pEnd + 6);
    WORD nOnDisk = Get16(pEnd + 8), nTotal = Get16(pEnd + 10);
    DWORD dwDirSize = Get32(pEnd + 12), dwDirOffset = Get32(pEnd + 16);
    if (nDisk != 0 || nDirDisk != 0 || nOnDisk != nTotal)
        return FALSE;    // split archive
    if (nTotal == 0xFFFF || dwDirSize == 0xFFFFFFFF || dwDirOffset == 0xFFFFFFFF)
        return FALSE;    // 64-bit archive
    if (nEnd >= 20 && Get32(&tail[nEnd - 20]) == ZIP_END64_LOCATOR_SIG)
        return FALSE;
    if (dwDirOffset > dwEndOffset || dwDirSize > dwEndOffset - dwDirOffset)
        return FALSE;

    std::vector<BYTE> dir(dwDirSize + 1);
    if (dwDirSize && !ReadAt(hFile, dwDirOffset, dir.data(), dwDirSize))
        return FALSE;
    DWORD dwPos = 0;
    entries.clear();
    entries.reserve(nTotal);
    for (WORD n = 0; n < nTotal; n++) {
        if (dwDirSize - dwPos < ZIP_CENTRAL_SIZE)
            return FALSE;
        const BYTE* p = &dir[dwPos];
        if (Get32(p) != ZIP_CENTRAL_SIG)
            return FALSE;
        DWORD nName = Get16(p + 28), nExtra = Get16(p + 30), nComment = Get16(p + 32);
        DWORD nRecord = ZIP_CENTRAL_SIZE + nName + nExtra + nComment;
        if (nRecord > dwDirSize - dwPos || nName == 0 || Get16(p + 34) != 0)
            return FALSE;
        const char* szName = (const char*)p + ZIP_CENTRAL_SIZE;
        if (memchr(szName, 0, nName))
            return FALSE;
        ZipEntry e;
        e.bFolder = szName[nName - 1] == '/' || szName[nName - 1] == '\\';
        e.szName = Normalize(szName, nName);
        e.wFlags = Get16(p + 8);
        e.wMethod = Get16(p + 10);
        e.dwCrc = Get32(p + 16);
        e.dwPacked = Get32(p + 20);
        e.dwSize = Get32(p + 24);
        e.dwLocal = Get32(p + 42);
        if (!e.szName.empty())
            entries.push_back(e);
        dwPos += nRecord;
    }
    return TRUE;
}

// Opens the archive of a name and reads its directory; szMember is the
// normalized member name.
static HANDLE OpenArchive(const char* szName, std::vector<ZipEntry>& entries, std::string& szMember)
{
    char szArchive[MAX_PATH];
    const char* pMember = NULL;
    if (!SplitName(szName, szArchive, sizeof(szArchive), &pMember))
        return INVALID_HANDLE_VALUE;
    HANDLE hFile = CreateFileA(szArchive, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    if (hFile == INVALID_HANDLE_VALUE)
        return INVALID_HANDLE_VALUE;
    if (!ReadDirectory(hFile, entries)) {
        CloseHandle(hFile);
        return INVALID_HANDLE_VALUE;
    }
    szMember = Normalize(pMember, strlen(pMember));
    return hFile;
}

static ZYNZIP_KIND KindOf(const std::vector<ZipEntry>& entries, const std::string& szMember, const ZipEntry** ppEntry)
{
    if (szMember.empty())
        return ZYNZIP_FOLDER;
    for (const ZipEntry& e : entries) {
        if (e.szName == szMember) {
            *ppEntry = &e;
            return e.bFolder ? ZYNZIP_FOLDER : ZYNZIP_FILE;
        }
    }
    for (const ZipEntry& e : entries) {
        if (e.szName.size() > szMember.size() && e.szName[szMember.size()] == '/' &&
            e.szName.compare(0, szMember.size(), szMember) == 0)
            return ZYNZIP_FOLDER;
    }
    return ZYNZIP_NONE;
}

ZYNZIP_KIND ZipLookUp(const char* szName)
{
    std::vector<ZipEntry> entries;
    std::string szMember;
    HANDLE hFile = OpenArchive(szName, entries, szMember);
    if (hFile == INVALID_HANDLE_VALUE)
        return ZYNZIP_NONE;
    CloseHandle(hFile);
    const ZipEntry* pEntry = NULL;
    return KindOf(entries, szMember, &pEntry);
}

static BOOL Inflate(const BYTE* pPacked, DWORD dwPacked, BYTE* pOut, DWORD dwSize)
{
    z_stream zs;
    memset(&zs, 0, sizeof(zs));
    if (inflateInit2(&zs, -MAX_WBITS) != Z_OK)
        return FALSE;
    zs.next_in = (Bytef*)pPacked;
    zs.avail_in = dwPacked;
    zs.next_out = pOut;
    zs.avail_out = dwSize;
    int nResult = inflate(&zs, Z_FINISH);
    BOOL bDone = nResult == Z_STREAM_END && zs.total_out == dwSize;
    inflateEnd(&zs);
    return bDone;
}

static BOOL ExtractEntry(HANDLE hFile, const ZipEntry& e, DWORD nHeader, BYTE** ppBlock)
{
    // encrypted (bit 0) and strongly encrypted (bit 6) members are refused
    if ((e.wFlags & 0x41) || (e.wMethod != 0 && e.wMethod != 8))
        return FALSE;
    if (e.dwSize > ZIP_MAX_MEMBER || (e.wMethod == 0 && e.dwPacked != e.dwSize))
        return FALSE;
    DWORD dwArchive = GetFileSize(hFile, NULL);
    BYTE local[ZIP_LOCAL_SIZE];
    if (e.dwLocal > dwArchive || !ReadAt(hFile, e.dwLocal, local, ZIP_LOCAL_SIZE) || Get32(local) != ZIP_LOCAL_SIG)
        return FALSE;
    DWORD dwData = e.dwLocal + ZIP_LOCAL_SIZE + Get16(local + 26) + Get16(local + 28);
    if (dwData > dwArchive || e.dwPacked > dwArchive - dwData)
        return FALSE;

    BYTE* pBlock = (BYTE*)malloc((size_t)nHeader + e.dwSize + 1);
    BYTE* pPacked = e.wMethod == 0 ? pBlock + nHeader : (BYTE*)malloc((size_t)e.dwPacked + 1);
    BOOL bOk = pBlock && pPacked && ReadAt(hFile, dwData, pPacked, e.dwPacked);
    if (bOk && e.wMethod == 8)
        bOk = Inflate(pPacked, e.dwPacked, pBlock + nHeader, e.dwSize);
    if (bOk)
        bOk = crc32(0, pBlock + nHeader, e.dwSize) == e.dwCrc;
    if (pPacked != pBlock + nHeader)
        free(pPacked);
    if (!bOk) {
        free(pBlock);
        return FALSE;
    }
    *ppBlock = pBlock;
    return TRUE;
}

BOOL ZipReadMember(const char* szName, DWORD nHeader, BYTE** ppBlock, DWORD* pSize)
{
    *ppBlock = NULL;
    *pSize = 0;
    std::vector<ZipEntry> entries;
    std::string szMember;
    HANDLE hFile = OpenArchive(szName, entries, szMember);
    if (hFile == INVALID_HANDLE_VALUE)
        return FALSE;
    const ZipEntry* pEntry = NULL;
    BOOL bOk = KindOf(entries, szMember, &pEntry) == ZYNZIP_FILE && ExtractEntry(hFile, *pEntry, nHeader, ppBlock);
    if (bOk)
        *pSize = pEntry->dwSize;
    CloseHandle(hFile);
    return bOk;
}

BOOL ZipVisitArchives(const char* szFolder, BOOL (*pfnVisit)(const char* szArchive, void* pContext), void* pContext)
{
    std::string szBase = szFolder;
    if (!szBase.empty() && szBase.back() != '\\' && szBase.back() != '/')
        szBase += '\\';
    WIN32_FIND_DATAA fd;
    HANDLE hFind = FindFirstFileA((szBase + "*.zip").c_str(), &fd);
    if (hFind == INVALID_HANDLE_VALUE)
        return FALSE;
    std::vector<std::string> names;
    do {
        if (!(fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && EndsWithZip(fd.cFileName, strlen(fd.cFileName)))
            names.push_back(fd.cFileName);
    } while (FindNextFileA(hFind, &fd));
    FindClose(hFind);
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        return _stricmp(a.c_str(), b.c_str()) < 0;
    });
    for (const std::string& szName : names) {
        if (pfnVisit((szBase + szName).c_str(), pContext))
            return TRUE;
    }
    return FALSE;
}
