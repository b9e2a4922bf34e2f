// Windows Bitmap reader: 4 and 8 bits through the palette, 8-bit run-length,
// 24 and 32 bits. The raw header, palette and data are read first (LoadRaw),
// then converted. Damaged data ends the conversion where it would leave its
// blocks; the pixels not reached stay zero and the load still succeeds.
#include "zynimage_local.h"
#include "zynfileio.h"

#include <string.h>

#include <new>

static const DWORD BMP_FILE_HEADER = 14;
static const DWORD BMP_INFO_HEADER = 40;
static const DWORD BMP_MAX_COLORS = 256;
static const DWORD BMP_INFO_BLOCK = BMP_INFO_HEADER + BMP_MAX_COLORS * 4;

static DWORD InfoField(const BYTE* pInfo, int nOffset)
{
    DWORD v;
    memcpy(&v, pInfo + nOffset, 4);
    return v;
}

zynImageBitmap::zynImageBitmap() : m_nWidth(0), m_nHeight(0), m_pInfo(NULL), m_pData(NULL), m_nData(0)
{
    SetFormat("Windows Bitmap");
}

zynImageBitmap::~zynImageBitmap()
{
    zynImageBitmap::Free();
}

DWORD zynImageBitmap::GetWidth() { return m_pInfo ? InfoField(m_pInfo, 4) : m_nWidth; }
DWORD zynImageBitmap::GetHeight() { return m_pInfo ? InfoField(m_pInfo, 8) : m_nHeight; }

HRESULT zynImageBitmap::Free()
{
    FreePixels();
    ReleaseRaw();
    return S_OK;
}

void zynImageBitmap::ReleaseRaw()
{
    delete[] m_pInfo;
    delete[] m_pData;
    m_pInfo = NULL;
    m_pData = NULL;
    m_nData = 0;
}

HRESULT zynImageBitmap::LoadRaw(const char* pszFile, HANDLE hFile)
{
    Free();
    if (pszFile == NULL && hFile == NULL)
        return E_FAIL;
    hFile = OpenSource(pszFile, hFile, FALSE, FALSE);
    if (hFile == INVALID_HANDLE_VALUE)
        return E_FAIL;
    BYTE fileHeader[BMP_FILE_HEADER];
    if (!zynImage_ReadExact(hFile, fileHeader, sizeof(fileHeader)))
        return LoadError(pszFile, hFile);
    m_pInfo = new BYTE[BMP_INFO_BLOCK]();
    if (!zynImage_ReadExact(hFile, m_pInfo, BMP_INFO_HEADER))
        return LoadError(pszFile, hFile);

    WORD nBits;
    memcpy(&nBits, m_pInfo + 14, 2);
    DWORD nColors = InfoField(m_pInfo, 32);
    if (nColors == 0)
        nColors = nBits == 8 ? 256 : nBits == 4 ? 16 : 0;
    // entries beyond 256 have no room in the info block and are passed over
    DWORD nKept = nColors < BMP_MAX_COLORS ? nColors : BMP_MAX_COLORS;
    if (nKept && !zynImage_ReadExact(hFile, m_pInfo + BMP_INFO_HEADER, nKept * 4))
        return LoadError(pszFile, hFile);
    DWORD dwSize = zynGetFileSize(hFile, NULL);
    DWORD dwPos = zynSetFilePointer(hFile, 0, NULL, FILE_CURRENT);
    if (nColors > nKept) {
        unsigned long long nSkip = (unsigned long long)(nColors - nKept) * 4;
        if (dwPos > dwSize || nSkip > dwSize - dwPos)
            return LoadError(pszFile, hFile);
        dwPos = zynSetFilePointer(hFile, (long)nSkip, NULL, FILE_CURRENT);
    }
    if (dwPos > dwSize)
        return LoadError(pszFile, hFile);
    m_nData = dwSize - dwPos;
    m_pData = new (std::nothrow) BYTE[m_nData + 1];
    if (m_pData == NULL || !zynImage_ReadExact(hFile, m_pData, m_nData))
        return LoadError(pszFile, hFile);
    CloseSource(pszFile, hFile);
    return S_OK;
}

struct BmpConvert {
    const BYTE* pIn;       // source position
    const BYTE* pInEnd;
    DWORD* pOut;           // destination position
    DWORD* pOutEnd;
    const DWORD* pPalette;
    DWORD nWidth;
    DWORD nPad;
};

static void Convert4(BmpConvert& c)
{
    while (c.pOut < c.pOutEnd) {
        DWORD nRow = (c.nWidth + 1) / 2;
        if ((size_t)(c.pInEnd - c.pIn) < nRow || (size_t)(c.pOutEnd - c.pOut) < c.nWidth)
            return;
        for (DWORD x = 0; x < c.nWidth; x++) {
            BYTE b = c.pIn[x / 2];
            *c.pOut++ = c.pPalette[(x & 1) ? (b & 0x0F) : (b >> 4)];
        }
        c.pIn += nRow;
        c.pIn += (size_t)(c.pInEnd - c.pIn) < c.nPad ? (size_t)(c.pInEnd - c.pIn) : c.nPad;
    }
}

// nBytes per source pixel: 1 through the palette, 3 or 4 as blue, green, red (, fourth byte)
static void ConvertRows(BmpConvert& c, DWORD nBytes)
{
    while (c.pOut < c.pOutEnd) {
        size_t nRow = (size_t)c.nWidth * nBytes;
        if ((size_t)(c.pInEnd - c.pIn) < nRow || (size_t)(c.pOutEnd - c.pOut) < c.nWidth)
            return;
        const BYTE* s = c.pIn;
        DWORD* d = c.pOut;
        if (nBytes == 1) {
            for (DWORD x = 0; x < c.nWidth; x++)
                d[x] = c.pPalette[s[x]];
        } else if (nBytes == 4) {
            memcpy(d, s, nRow);
        } else {
            zynImage_Expand24(d, s, c.nWidth);
        }
        c.pOut += c.nWidth;
        c.pIn += nRow;
        c.pIn += (size_t)(c.pInEnd - c.pIn) < c.nPad ? (size_t)(c.pInEnd - c.pIn) : c.nPad;
    }
}

// 8-bit run-length data; stops at a delta escape (TRUE), the end of the data or a full block.
static BOOL ConvertRle8(BmpConvert& c)
{
    while (c.pOut < c.pOutEnd && c.pIn < c.pInEnd) {
        DWORD nCount = *c.pIn++;
        if (nCount != 0) {
            if (c.pIn >= c.pInEnd)
                return FALSE;
            DWORD v = c.pPalette[*c.pIn++];
            while (nCount-- && c.pOut < c.pOutEnd)
                *c.pOut++ = v;
            continue;
        }
        if (c.pIn >= c.pInEnd)
            return FALSE;
        DWORD m = *c.pIn++;
        if (m == 2)
            return TRUE;
        if (m < 2)
            continue;
        for (DWORD k = 0; k < m; k++) {
            if (c.pIn >= c.pInEnd || c.pOut >= c.pOutEnd)
                return FALSE;
            *c.pOut++ = c.pPalette[*c.pIn++];
        }
        if ((m & 1) && c.pIn < c.pInEnd)
            c.pIn++;
    }
    return FALSE;
}

HRESULT zynImageBitmap::Load(const char* pszFile, HANDLE hFile)
{
    HRESULT hr = LoadRaw(pszFile, hFile);
    if (FAILED(hr))
        return hr;
    if (m_pPixels || m_pInfo == NULL || m_pData == NULL)
        return E_FAIL;
    LONG nSignedWidth = (LONG)InfoField(m_pInfo, 4), nSignedHeight = (LONG)InfoField(m_pInfo, 8);
    // top-first rows (negative height) are not read, and neither is a negative width
    if (nSignedWidth < 0 || nSignedHeight < 0) {
        SetError("Error Loading File.");
        return E_FAIL;
    }
    m_nWidth = (DWORD)nSignedWidth;
    m_nHeight = (DWORD)nSignedHeight;
    m_pPixels = zynImage_NewPixels(m_nWidth, m_nHeight, 4);
    if (m_pPixels == NULL) {
        SetError("Error Loading File.");
        return E_FAIL;
    }
    WORD nBits;
    memcpy(&nBits, m_pInfo + 14, 2);
    DWORD dwCompression = InfoField(m_pInfo, 16);
    size_t nRowBytes = nBits == 4 ? ((size_t)m_nWidth + 1) / 2 : (size_t)m_nWidth * (nBits / 8);
    BmpConvert c;
    c.pIn = m_pData;
    c.pInEnd = m_pData + m_nData;
    c.pOut = (DWORD*)m_pPixels;
    c.pOutEnd = c.pOut + (size_t)m_nWidth * m_nHeight;
    c.pPalette = (const DWORD*)(m_pInfo + BMP_INFO_HEADER);
    c.nWidth = m_nWidth;
    c.nPad = (DWORD)((4 - nRowBytes % 4) % 4);

    BOOL bDelta = FALSE;
    if (nBits == 4) {
        if (dwCompression != 0) {
            SetError("Wasn't supported 4 bit Bmp with compression.");
            return E_FAIL;
        }
        Convert4(c);
    } else if (nBits == 8 && dwCompression == 0) {
        ConvertRows(c, 1);
    } else if (nBits == 8 && dwCompression == 1) {
        bDelta = ConvertRle8(c);
    } else if (nBits == 8) {
        SetError("Unknown format compression for 8 bit Bmp.");
        return E_FAIL;
    } else if (nBits == 24 || nBits == 32) {
        ConvertRows(c, nBits / 8);
    }
    // what no conversion reached is zero rather than left over from the heap
    memset(c.pOut, 0, (BYTE*)c.pOutEnd - (BYTE*)c.pOut);
    if (!bDelta)
        ReleaseRaw();    // after a delta escape the raw blocks stay until the next Free
    return S_OK;
}
