// DDS files: the branch of the format choice that keeps a file's own format
// and top level as stored, and zynImageDDSurface, which brings plain 16, 24 and
// 32-bit files and DXT1 to DXT5 files to 32-bit pixels. The block formats are
// decompressed by DirectDraw: the top level goes into a surface of the file's
// format, and a blit to an A8R8G8B8 surface does the rest.
#include "zynimage_local.h"
#include "zynfileio.h"

#include <stdio.h>
#include <string.h>

#include <new>

static const DWORD DDS_RECORD = 124;
static const DWORD DXT_FIRST = MAKEFOURCC('D', 'X', 'T', '1');
static const DWORD DXT_LAST = MAKEFOURCC('D', 'X', 'T', '5');
static const double F5 = 8.225806451612904;    // 255 / 31
static const double F6 = 255.0 / 63.0;

static BOOL IsDxt(DWORD dwFourCC) { return dwFourCC >= DXT_FIRST && dwFourCC <= DXT_LAST; }

// Byte count of the top level as the record gives it: the linear size, or tight rows.
static unsigned long long TopLevelBytes(const DDSURFACEDESC2& desc)
{
    if (desc.dwFlags & DDSD_LINEARSIZE)
        return desc.dwLinearSize;
    unsigned long long nPitch = (unsigned long long)desc.dwWidth * desc.ddpfPixelFormat.dwRGBBitCount / 8;
    return nPitch * desc.dwHeight;
}

static DWORD RecordWord(const BYTE* pRecord, DWORD nOffset)
{
    DWORD v;
    memcpy(&v, pRecord + nOffset, 4);
    return v;
}

// Reads the magic and the file's 124-byte record (the 32-bit layout) into a
// description of this build's layout, whose lpSurface is 8 bytes wide on x64.
// dwSize becomes this build's own size; lpSurface is null.
static BOOL ReadRecord(HANDLE hFile, DDSURFACEDESC2* pDesc)
{
    BYTE file[4 + DDS_RECORD];
    memset(pDesc, 0, sizeof(*pDesc));
    if (!zynImage_ReadExact(hFile, file, sizeof(file)))
        return FALSE;
    const BYTE* r = file + 4;
    pDesc->dwSize = sizeof(*pDesc);
    pDesc->dwFlags = RecordWord(r, 4);
    pDesc->dwHeight = RecordWord(r, 8);
    pDesc->dwWidth = RecordWord(r, 12);
    pDesc->dwLinearSize = RecordWord(r, 16);
    pDesc->dwBackBufferCount = RecordWord(r, 20);
    pDesc->dwMipMapCount = RecordWord(r, 24);
    pDesc->dwAlphaBitDepth = RecordWord(r, 28);
    pDesc->dwReserved = RecordWord(r, 32);
    memcpy(&pDesc->ddckCKDestOverlay, r + 40, 32);
    memcpy(&pDesc->ddpfPixelFormat, r + 72, 32);
    memcpy(&pDesc->ddsCaps, r + 104, 16);
    pDesc->dwTextureStage = RecordWord(r, 120);
    return TRUE;
}

HRESULT zynImage_ReadDDSurface(HANDLE hFile, DDSURFACEDESC2* pDesc)
{
    if (!ReadRecord(hFile, pDesc)) {
        zynCloseHandle(hFile);
        return E_FAIL;
    }
    unsigned long long nBytes = TopLevelBytes(*pDesc);
    DWORD dwLeft = zynGetFileSize(hFile, NULL) - (4 + DDS_RECORD);
    // more than the file holds would come up short: fail before allocating it
    BYTE* pBlock = nBytes <= dwLeft ? new (std::nothrow) BYTE[(size_t)nBytes + 1] : NULL;
    if (pBlock == NULL || !zynImage_ReadExact(hFile, pBlock, (DWORD)nBytes)) {
        delete[] pBlock;
        zynCloseHandle(hFile);
        return E_FAIL;
    }
    pDesc->lpSurface = pBlock;
    return S_OK;
}

zynImageDDSurface::zynImageDDSurface() : m_nWidth(0), m_nHeight(0), m_bHasAlpha(FALSE), m_pDirectDraw(NULL)
{
    SetFormat("DD Surface");
}

DWORD zynImageDDSurface::GetWidth() { return m_nWidth; }
DWORD zynImageDDSurface::GetHeight() { return m_nHeight; }
BOOL zynImageDDSurface::HasAlpha() { return m_bHasAlpha; }

HRESULT zynImageDDSurface::Load(const char* pszFile, HANDLE hFile)
{
    Free();
    if (pszFile == NULL && hFile == NULL)
        return E_FAIL;
    hFile = OpenSource(pszFile, hFile, TRUE, TRUE);
    if (hFile == INVALID_HANDLE_VALUE)
        return E_FAIL;
    DDSURFACEDESC2 desc;
    if (!ReadRecord(hFile, &desc))
        return LoadError(pszFile, hFile);
    if (desc.ddpfPixelFormat.dwFlags & DDPF_ALPHAPIXELS)
        m_bHasAlpha = TRUE;
    if (desc.ddpfPixelFormat.dwFlags & DDPF_FOURCC)
        return LoadCompressed(pszFile, hFile, desc);
    return LoadPlain(pszFile, hFile, desc);
}

// One row of 16-bit pixels by the record's masks; FALSE for masks no case takes.
static BOOL Convert16(BYTE* pOut, const BYTE* pIn, DWORD nWidth, const DDPIXELFORMAT& pf)
{
    BOOL b555 = pf.dwRGBAlphaBitMask == 0 && pf.dwGBitMask == 0x3E0;
    BOOL b565 = pf.dwRGBAlphaBitMask == 0 && pf.dwGBitMask == 0x7E0;
    BOOL b1555 = pf.dwRGBAlphaBitMask == 0x8000;
    BOOL b4444 = pf.dwRGBAlphaBitMask == 0xF000;
    if (!b555 && !b565 && !b1555 && !b4444)
        return FALSE;
    for (DWORD x = 0; x < nWidth; x++, pOut += 4, pIn += 2) {
        DWORD v = (DWORD)pIn[0] | (DWORD)pIn[1] << 8;
        if (b4444) {
            pOut[0] = (BYTE)((v & 0xF) * 17.0);
            pOut[1] = (BYTE)(((v & 0xF0) >> 4) * 17.0);
            pOut[2] = (BYTE)(((v & 0xF00) >> 8) * 17.0);
            pOut[3] = (BYTE)(((v & 0xF000) >> 12) * 17.0);
        } else if (b565) {
            pOut[0] = (BYTE)((v & 0x1F) * F5);
            pOut[1] = (BYTE)(((v & 0x7E0) >> 5) * F6);
            pOut[2] = (BYTE)(((v & 0xF800) >> 11) * F5);
        } else {
            pOut[0] = (BYTE)((v & 0x1F) * F5);
            pOut[1] = (BYTE)(((v & 0x3E0) >> 5) * F5);
            pOut[2] = (BYTE)(((v & 0x7C00) >> 10) * F5);
            if (b1555)
                pOut[3] = (v & 0x8000) ? 255 : 0;
        }
    }
    return TRUE;
}

static const char* NameOf16(const DDPIXELFORMAT& pf)
{
    if (pf.dwRGBAlphaBitMask == 0 && pf.dwGBitMask == 0x3E0)
        return "DDS0555 %dmips";
    if (pf.dwRGBAlphaBitMask == 0 && pf.dwGBitMask == 0x7E0)
        return "DDS0565 %dmips";
    if (pf.dwRGBAlphaBitMask == 0x8000)
        return "DDS1555 %dmips";
    if (pf.dwRGBAlphaBitMask == 0xF000)
        return "DDS4444 %dmips";
    return NULL;
}

HRESULT zynImageDDSurface::LoadPlain(const char* pszFile, HANDLE hFile, const DDSURFACEDESC2& desc)
{
    if (desc.dwFlags & DDSD_LINEARSIZE) {
        SetError("Linear Size!.");
        CloseSource(pszFile, hFile);
        return E_FAIL;
    }
    DWORD nBits = desc.ddpfPixelFormat.dwRGBBitCount;
    unsigned long long nRow = (unsigned long long)desc.dwWidth * nBits / 8;
    DWORD dwLeft = zynGetFileSize(hFile, NULL) - zynSetFilePointer(hFile, 0, NULL, FILE_CURRENT);
    BOOL bReads = nBits == 16 || nBits == 24 || nBits == 32;
    // rows the file cannot hold fail here, before the blocks are allocated
    if (bReads && desc.dwHeight && nRow * desc.dwHeight > dwLeft)
        return LoadError(pszFile, hFile);
    m_pPixels = zynImage_NewPixels(desc.dwWidth, desc.dwHeight, 4);
    if (m_pPixels == NULL)
        return LoadError(pszFile, hFile);
    memset(m_pPixels, 0, (size_t)desc.dwWidth * desc.dwHeight * 4);
    m_nWidth = desc.dwWidth;
    m_nHeight = desc.dwHeight;
    BYTE* pRow = new BYTE[(size_t)nRow + 1];
    const DDPIXELFORMAT& pf = desc.ddpfPixelFormat;
    const char* szName = nBits == 16 ? NameOf16(pf) : nBits == 32 ? (m_bHasAlpha ? "DDS8888 %dmips" : "DDS0888 %dmips") : NULL;
    if (szName)
        snprintf(m_szFormat, sizeof(m_szFormat), szName, (int)desc.dwMipMapCount);
    BOOL bOk = TRUE;
    if (nBits == 32) {
        bOk = zynImage_ReadExact(hFile, m_pPixels, (DWORD)(nRow * desc.dwHeight));
    } else if (nBits == 16 || nBits == 24) {
        for (DWORD y = 0; y < desc.dwHeight && bOk; y++) {
            bOk = zynImage_ReadExact(hFile, pRow, (DWORD)nRow);
            BYTE* pOut = m_pPixels + (size_t)y * desc.dwWidth * 4;
            if (bOk && nBits == 16) {
                Convert16(pOut, pRow, desc.dwWidth, pf);
            } else if (bOk) {
                // a 24-bit DDS file holds red first
                for (DWORD x = 0; x < desc.dwWidth; x++, pOut += 4) {
                    pOut[2] = pRow[x * 3];
                    pOut[1] = pRow[x * 3 + 1];
                    pOut[0] = pRow[x * 3 + 2];
                }
            }
        }
    }
    delete[] pRow;
    if (!bOk)
        return LoadError(pszFile, hFile);
    CloseSource(pszFile, hFile);
    Flip();
    return S_OK;
}

// Size of a DXT top level, in bytes.
static DWORD DxtBytes(DWORD dwFourCC, DWORD nWidth, DWORD nHeight)
{
    unsigned long long nBlocks = (unsigned long long)((nWidth + 3) / 4 ? (nWidth + 3) / 4 : 1) *
                                 ((nHeight + 3) / 4 ? (nHeight + 3) / 4 : 1);
    unsigned long long nBytes = nBlocks * (dwFourCC == DXT_FIRST ? 8 : 16);
    return nBytes > 0xFFFFFFF0ULL ? 0xFFFFFFF0 : (DWORD)nBytes;
}

// DirectDraw objects of one compressed load, released together on every path.
struct DxtSurfaces {
    IDirectDraw7* pDD;
    BOOL bOwnDD;
    IDirectDrawSurface7* pSource;
    IDirectDrawSurface7* pDest;
    IDirectDrawSurface7* pMiddle;
    ~DxtSurfaces()
    {
        if (pMiddle) pMiddle->Release();
        if (pDest) pDest->Release();
        if (pSource) pSource->Release();
        if (pDD && bOwnDD) pDD->Release();
    }
};

HRESULT zynImageDDSurface::LoadCompressed(const char* pszFile, HANDLE hFile, DDSURFACEDESC2& desc)
{
    DWORD dwFourCC = desc.ddpfPixelFormat.dwFourCC;
    if (IsDxt(dwFourCC)) {
        char szName[16] = "DXT1 %dmips";
        szName[3] = (char)('1' + (dwFourCC - DXT_FIRST) / 0x1000000);
        snprintf(m_szFormat, sizeof(m_szFormat), szName, (int)desc.dwMipMapCount);
    }
    m_bHasAlpha = TRUE;
    HRESULT hr = E_FAIL;
    const char* szFailure = NULL;
    DxtSurfaces s = {m_pDirectDraw, FALSE, NULL, NULL, NULL};
    // the file's record may name client memory or an empty mip count; neither is meant here
    desc.dwFlags &= ~(DDSD_LPSURFACE | DDSD_MIPMAPCOUNT);
    desc.ddsCaps.dwCaps &= ~(DDSCAPS_MIPMAP | DDSCAPS_COMPLEX);
    desc.dwSize = sizeof(desc);
    desc.ddpfPixelFormat.dwSize = sizeof(DDPIXELFORMAT);
    if (s.pDD == NULL) {
        s.bOwnDD = TRUE;
        if (FAILED(DirectDrawCreateEx(NULL, (void**)&s.pDD, IID_IDirectDraw7, NULL)))
            szFailure = "Can't create DirectDraw.";
        else if (FAILED(s.pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL)))
            szFailure = "Can't set cooperative level.";
    }
    if (!szFailure && FAILED(s.pDD->CreateSurface(&desc, &s.pSource, NULL)))
        szFailure = "Can't create surface.";
    if (!szFailure) {
        DDSURFACEDESC2 lock;
        memset(&lock, 0, sizeof(lock));
        lock.dwSize = sizeof(lock);
        if (FAILED(s.pSource->Lock(NULL, &lock, DDLOCK_WAIT, NULL))) {
            szFailure = "Can't create surface.";
        } else {
            // never more than the surface's own top level holds
            DWORD nBytes = desc.dwLinearSize;
            DWORD nRoom = DxtBytes(dwFourCC, desc.dwWidth, desc.dwHeight);
            BOOL bRead = nBytes <= nRoom && zynImage_ReadExact(hFile, lock.lpSurface, nBytes);
            s.pSource->Unlock(NULL);
            if (!bRead) {
                SetError("Error Loading File.");
                CloseSource(pszFile, hFile);
                return E_FAIL;
            }
        }
    }
    DDSURFACEDESC2 dest;
    memset(&dest, 0, sizeof(dest));
    dest.dwSize = sizeof(dest);
    dest.dwFlags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH | DDSD_PIXELFORMAT;
    dest.ddsCaps.dwCaps = DDSCAPS_TEXTURE;
    dest.ddsCaps.dwCaps2 = DDSCAPS2_TEXTUREMANAGE;
    dest.dwWidth = desc.dwWidth;
    dest.dwHeight = desc.dwHeight;
    dest.ddpfPixelFormat.dwSize = sizeof(DDPIXELFORMAT);
    dest.ddpfPixelFormat.dwFlags = DDPF_RGB | DDPF_ALPHAPIXELS;
    dest.ddpfPixelFormat.dwRGBBitCount = 32;
    dest.ddpfPixelFormat.dwRBitMask = 0xFF0000;
    dest.ddpfPixelFormat.dwGBitMask = 0xFF00;
    dest.ddpfPixelFormat.dwBBitMask = 0xFF;
    dest.ddpfPixelFormat.dwRGBAlphaBitMask = 0xFF000000;
    if (!szFailure && FAILED(s.pDD->CreateSurface(&dest, &s.pDest, NULL)))
        szFailure = "Can't create surface 2.";
    if (!szFailure && (dwFourCC == MAKEFOURCC('D', 'X', 'T', '2') || dwFourCC == MAKEFOURCC('D', 'X', 'T', '4'))) {
        DDSURFACEDESC2 middle = desc;
        middle.ddpfPixelFormat.dwFourCC = DXT_FIRST;
        if (FAILED(s.pDD->CreateSurface(&middle, &s.pMiddle, NULL)))
            szFailure = "Can't create surface 3.";
        else if (s.pMiddle->Blt(NULL, s.pSource, NULL, DDBLT_WAIT, NULL) != DD_OK)
            szFailure = "Can't Blt 2.";
        else if (s.pDest->Blt(NULL, s.pMiddle, NULL, DDBLT_WAIT, NULL) != DD_OK)
            szFailure = "Can't Blt 3.";
    } else if (!szFailure && s.pDest->Blt(NULL, s.pSource, NULL, DDBLT_WAIT, NULL) != DD_OK) {
        szFailure = "Can't Blt.";
    }
    if (!szFailure) {
        DDSURFACEDESC2 lock;
        memset(&lock, 0, sizeof(lock));
        lock.dwSize = sizeof(lock);
        m_pPixels = zynImage_NewPixels(desc.dwWidth, desc.dwHeight, 4);
        if (m_pPixels == NULL || FAILED(s.pDest->Lock(NULL, &lock, DDLOCK_WAIT, NULL))) {
            szFailure = "Can't create surface 2.";
        } else {
            m_nWidth = lock.dwWidth;
            m_nHeight = lock.dwHeight;
            for (DWORD y = 0; y < m_nHeight; y++)
                memcpy(m_pPixels + (size_t)y * m_nWidth * 4, (BYTE*)lock.lpSurface + (size_t)y * lock.lPitch, (size_t)m_nWidth * 4);
            s.pDest->Unlock(NULL);
            hr = S_OK;
        }
    }
    if (szFailure)
        SetError(szFailure);
    CloseSource(pszFile, hFile);
    if (SUCCEEDED(hr))
        Flip();
    return hr;
}
