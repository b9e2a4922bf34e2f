// The blitter: conversion tables, the line buffer, locking both sides, and the
// paths a blit can take (plain copy, scaled copy of one format, the generic
// read-a-run / write-a-run path with point or bilinear sampling, and strips of
// four columns for a DXT target).
#include "zynpixconv.h"

#include "zyndxt.h"
#include "zynexception.h"
#include "zynformat.h"

#include <stdlib.h>
#include <string.h>

// ---- registered routine lists: (key, routine), looked up from the last entry back

struct LineEntry {
    DWORD dwKey;
    void* pfn;
};
struct LineList {
    LineEntry* pEntries;
    int nCapacity;
    int nCount;
};
struct ConvertRow {
    LineList* pSample;
    LineList* pRead;
    LineList* pWrite;
};

// copies a run of one format unchanged, point sampled, from pSourceRow at nU to pRow at nX
typedef void (*PFNCOPYLINE)(int n, BltState* pState);

static ConvertRow g_aConvert[D3DX_SF_TEXTUREMAX];   // by format code, row 0 unused
static LineList* g_pCopyLines;                      // by bits a pixel
static LineList* g_pFilterLines;                    // by filter
static int g_nConvertUsers;                         // starts without their stop
static BYTE* g_pLineBuffer;                         // two runs of g_nLineCapacity pixels
static int g_nLineCapacity;
static DWORD g_adwPalette[2][256];                  // palettes of the source and the target

static void RegisterLine(LineList** ppList, DWORD dwKey, void* pfn)
{
    LineList* pList = *ppList;
    if (!pList) {
        pList = (LineList*)calloc(1, sizeof(LineList));
        if (!pList)
            D3DX_THROW(D3DXERR_NOMEMORY, "RegisterLine - out of memory");
        *ppList = pList;
    }
    if (pList->nCount == pList->nCapacity) {
        int nNew = pList->nCapacity ? pList->nCapacity * 2 : 2;
        LineEntry* p = (LineEntry*)realloc(pList->pEntries, nNew * sizeof(LineEntry));
        if (!p)
            D3DX_THROW(D3DXERR_NOMEMORY, "RegisterLine - out of memory");
        pList->pEntries = p;
        pList->nCapacity = nNew;
    }
    pList->pEntries[pList->nCount].dwKey = dwKey;
    pList->pEntries[pList->nCount].pfn = pfn;
    pList->nCount++;
}

static void* FindLine(const LineList* pList, DWORD dwKey)
{
    for (int i = pList ? pList->nCount - 1 : -1; i >= 0; i--)
        if (pList->pEntries[i].dwKey == dwKey)
            return pList->pEntries[i].pfn;
    return NULL;
}

static void FreeList(LineList** ppList)
{
    if (*ppList) {
        free((*ppList)->pEntries);
        free(*ppList);
        *ppList = NULL;
    }
}

static void FreeTables()
{
    for (int i = 0; i < D3DX_SF_TEXTUREMAX; i++) {
        FreeList(&g_aConvert[i].pSample);
        FreeList(&g_aConvert[i].pRead);
        FreeList(&g_aConvert[i].pWrite);
    }
    FreeList(&g_pCopyLines);
    FreeList(&g_pFilterLines);
    free(g_pLineBuffer);
    g_pLineBuffer = NULL;
    g_nLineCapacity = 0;
}

// ---- copy lines of one format, by bits a pixel

template <int BYTES> static void CopyLineBytes(int n, BltState* pState)
{
    const BYTE* pSource = pState->pSourceRow;
    BYTE* pTarget = pState->pRow + (size_t)pState->nX * BYTES;
    int u = pState->nU;
    for (int i = 0; i < n; i++, u += pState->nStepU)
        memcpy(pTarget + i * BYTES, pSource + (size_t)(u >> 16) * BYTES, BYTES);
    pState->nU = u;
}

// Nibbles: the even pixel in the high nibble; the target byte's other nibble stays.
static void CopyLineNibbles(int n, BltState* pState)
{
    int u = pState->nU;
    for (int i = 0; i < n; i++, u += pState->nStepU) {
        int xs = u >> 16, xt = pState->nX + i;
        BYTE b = pState->pSourceRow[xs >> 1];
        BYTE v = (xs & 1) ? (b & 15) : (b >> 4);
        BYTE* p = pState->pRow + (xt >> 1);
        *p = (xt & 1) ? (BYTE)((*p & 0xF0) | v) : (BYTE)((*p & 0x0F) | (v << 4));
    }
    pState->nU = u;
}

// ---- the bilinear row, for any format, through the source's sample routine

static DWORD* ReadBilinear(int n, DWORD* pBuffer, BltState* pState)
{
    const BltSide& src = pState->source;
    int u = pState->nU - 32767;
    pState->nV -= 32767;
    int y0 = pState->nV >> 16;
    DWORD fv = pState->nV & 0xFFFF, dwRowMask = 0;
    if (y0 < pState->rcSource.top) {
        dwRowMask = 3;
        fv = 65535;
        if (y0 + 1 < pState->rcSource.top)
            dwRowMask = 15;
    }
    if (y0 + 1 >= pState->rcSource.bottom) {
        dwRowMask |= 12;
        fv = 0;
        if (y0 >= pState->rcSource.bottom)
            dwRowMask = 15;
    }
    if (dwRowMask == 15)
        return pBuffer;
    BYTE* pRow0 = src.pBits + (ptrdiff_t)y0 * src.nPitch;
    BYTE* pRow1 = pRow0 + src.nPitch;
    for (int i = 0; i < n; i++, u += pState->nStepU) {
        int x0 = u >> 16;
        DWORD fu = u & 0xFFFF, dwMask = dwRowMask;
        if (x0 < pState->rcSource.left) {
            dwMask |= 5;
            fu = 65535;
            if (x0 + 1 < pState->rcSource.left) {
                pBuffer[i] = 0;
                continue;
            }
        }
        if (x0 + 1 >= pState->rcSource.right) {
            dwMask |= 10;
            fu = 0;
            if (x0 >= pState->rcSource.right) {
                pBuffer[i] = 0;
                continue;
            }
        }
        ptrdiff_t o0 = ((ptrdiff_t)x0 * src.nBits) >> 3, o1 = ((ptrdiff_t)(x0 + 1) * src.nBits) >> 3;
        BYTE* apPixels[5] = {pRow0 + o0, pRow0 + o1, pRow1 + o0, pRow1 + o1, NULL};
        DWORD adwSample[4] = {0, 0, 0, 0};
        pState->dwSampleMask = dwMask;
        pState->nU = u;
        pState->pfnSample(apPixels, adwSample, pState);
        dwMask = pState->dwSampleMask;
        if (dwMask == 15) {
            pBuffer[i] = 0;
            continue;
        }
        DWORD w = (fu * fv) >> 16;
        DWORD adwWeight[4] = {(65536 - fv - (fu - w)) >> 8, (fu - w) >> 8, (fv - w) >> 8, w >> 8};
        DWORD dwRB = 0, dwAG = 0;
        for (int k = 0; k < 4; k++) {
            if (dwMask & (1u << k))
                continue;
            dwRB += (adwSample[k] & 0xFF00FF) * adwWeight[k];
            dwAG += ((adwSample[k] >> 8) & 0xFF00FF) * adwWeight[k];
        }
        pBuffer[i] = ((dwRB >> 8) & 0xFF00FF) | (dwAG & 0xFF00FF00);
    }
    pState->nU = u;
    return pBuffer;
}

// ---- start and stop

HRESULT _d3dxInitConvert()
{
    if (g_nConvertUsers) {
        g_nConvertUsers++;
        return S_OK;
    }
    RegisterLine(&g_pFilterLines, 2, (void*)ReadBilinear);
    RegisterLine(&g_pCopyLines, 4, (void*)CopyLineNibbles);
    RegisterLine(&g_pCopyLines, 8, (void*)CopyLineBytes<1>);
    RegisterLine(&g_pCopyLines, 16, (void*)CopyLineBytes<2>);
    RegisterLine(&g_pCopyLines, 24, (void*)CopyLineBytes<3>);
    RegisterLine(&g_pCopyLines, 32, (void*)CopyLineBytes<4>);
    for (const FormatRoutines* p = g_aFormatRoutines; p->nFormat; p++) {
        ConvertRow& row = g_aConvert[p->nFormat];
        RegisterLine(&row.pRead, 0, (void*)p->pfnRead);
        RegisterLine(&row.pWrite, 0, (void*)p->pfnWrite);
        RegisterLine(&row.pSample, 0, (void*)p->pfnSample);
    }
    g_nConvertUsers++;
    return S_OK;
}

void _d3dxUninitConvert()
{
    if (g_nConvertUsers && --g_nConvertUsers == 0)
        FreeTables();
}

HRESULT PixConv_StartTables()
{
    try {
        return _d3dxInitConvert();
    } catch (const CD3DXException& e) {
        FreeTables();
        return e.m_hr;
    }
}

void PixConv_StopTables() { _d3dxUninitConvert(); }

bool PixConv_IsStarted() { return g_nConvertUsers > 0; }

// ---- one side of a blit, locked for as long as the object stands

static int FormatBits(D3DX_SURFACEFORMAT nFormat)
{
    switch (nFormat) {
    case D3DX_SF_PALETTE4:
    case D3DX_SF_DXT1: return 4;
    case D3DX_SF_UYVY:
    case D3DX_SF_YUY2: return 16;
    case D3DX_SF_DXT3:
    case D3DX_SF_DXT5: return 8;
    default: return (int)D3DXGetFormatBytes(nFormat) * 8;
    }
}

static DWORD FourCCOf(D3DX_SURFACEFORMAT nFormat)
{
    return nFormat == D3DX_SF_DXT1 ? ZYN_FOURCC_DXT1
         : nFormat == D3DX_SF_DXT3 ? ZYN_FOURCC_DXT3
         : nFormat == D3DX_SF_DXT5 ? ZYN_FOURCC_DXT5 : 0;
}

class CSurfaceLock {
public:
    CSurfaceLock(IDirectDrawSurface7* pSurface)
        : m_pSurface(pSurface), m_nFormat(D3DX_SF_UNKNOWN), m_pPalette(NULL), m_pMemoryPalette(NULL), m_hr(E_NOTIMPL)
    {
        memset(&m_ddsd, 0, sizeof(m_ddsd));
        m_ddsd.dwSize = sizeof(m_ddsd);
        if (!pSurface)
            return;
        m_hr = pSurface->Lock(NULL, &m_ddsd, DDLOCK_WAIT | DDLOCK_NOSYSLOCK, NULL);
        if (FAILED(m_hr)) {
            m_pSurface = NULL;
            m_ddsd.lpSurface = NULL;
            return;
        }
        m_nFormat = D3DXMakeSurfaceFormat(&m_ddsd.ddpfPixelFormat);
        if (m_nFormat == D3DX_SF_PALETTE4 || m_nFormat == D3DX_SF_PALETTE8)
            pSurface->GetPalette(&m_pPalette);
    }
    CSurfaceLock(D3DX_SURFACEFORMAT nFormat, DWORD nWidth, DWORD nHeight, DWORD nPitch, const void* pBits,
                 const PALETTEENTRY* pPalette)
        : m_pSurface(NULL), m_nFormat(nFormat), m_pPalette(NULL), m_pMemoryPalette(pPalette), m_hr(E_FAIL)
    {
        memset(&m_ddsd, 0, sizeof(m_ddsd));
        m_ddsd.dwSize = sizeof(m_ddsd);
        if (!pBits || FAILED(D3DXMakeDDPixelFormat(nFormat, &m_ddsd.ddpfPixelFormat)))
            return;
        m_ddsd.dwWidth = nWidth;
        m_ddsd.dwHeight = nHeight;
        if (nPitch == 0 || nPitch == D3DX_DEFAULT)
            nPitch = (nWidth * FormatBits(nFormat) + 7) / 8;
        m_ddsd.lPitch = (LONG)nPitch;
        m_ddsd.lpSurface = (void*)pBits;
        m_hr = S_OK;
    }
    ~CSurfaceLock()
    {
        if (m_pPalette)
            m_pPalette->Release();
        if (m_pSurface)
            m_pSurface->Unlock(NULL);
    }
    bool Usable() const { return m_ddsd.lpSurface && m_hr == S_OK && m_nFormat > 0 && m_nFormat < D3DX_SF_TEXTUREMAX; }

    // Fills a side; false for a palette form without palette.
    bool Fill(BltSide* pSide, bool bIsTarget, DWORD* pPaletteStore)
    {
        pSide->bIsTarget = bIsTarget;
        pSide->nFormat = m_nFormat;
        pSide->dwFourCC = FourCCOf(m_nFormat);
        pSide->nBits = FormatBits(m_nFormat);
        pSide->nWidth = (int)m_ddsd.dwWidth;
        pSide->nHeight = (int)m_ddsd.dwHeight;
        pSide->nPitch = pSide->dwFourCC ? (pSide->nWidth + 3) / 4 : (int)m_ddsd.lPitch;
        pSide->pBits = (BYTE*)m_ddsd.lpSurface;
        pSide->pBlocks = NULL;
        pSide->pPalette = NULL;
        if (m_nFormat != D3DX_SF_PALETTE4 && m_nFormat != D3DX_SF_PALETTE8)
            return true;
        memset(pPaletteStore, 0, 256 * sizeof(DWORD));
        PALETTEENTRY aEntries[256];
        int nEntries = m_nFormat == D3DX_SF_PALETTE8 ? 256 : 16;
        if (m_pPalette) {
            DWORD dwCaps = 0;
            m_pPalette->GetCaps(&dwCaps);
            nEntries = (dwCaps & DDPCAPS_8BIT) ? 256 : (dwCaps & DDPCAPS_4BIT) ? 16 : (dwCaps & 0x200) ? 4 : 2;
            if (FAILED(m_pPalette->GetEntries(0, 0, nEntries, aEntries)))
                return false;
        } else if (m_pMemoryPalette) {
            memcpy(aEntries, m_pMemoryPalette, nEntries * sizeof(PALETTEENTRY));
        } else {
            return false;
        }
        for (int i = 0; i < nEntries; i++)
            pPaletteStore[i] = 0xFF000000u | (aEntries[i].peRed << 16) | (aEntries[i].peGreen << 8) | aEntries[i].peBlue;
        pSide->pPalette = pPaletteStore;
        pSide->nPaletteEntries = nEntries;
        return true;
    }

private:
    IDirectDrawSurface7* m_pSurface;
    DDSURFACEDESC2 m_ddsd;
    D3DX_SURFACEFORMAT m_nFormat;
    IDirectDrawPalette* m_pPalette;
    const PALETTEENTRY* m_pMemoryPalette;
    HRESULT m_hr;
};

// ---- the paths

static bool TakeRect(const RECT* pRect, const BltSide& side, RECT* pOut)
{
    if (!pRect) {
        SetRect(pOut, 0, 0, side.nWidth, side.nHeight);
        return side.nWidth > 0 && side.nHeight > 0;
    }
    *pOut = *pRect;
    return pOut->left >= 0 && pOut->top >= 0 && pOut->left < pOut->right && pOut->top < pOut->bottom &&
           pOut->right <= side.nWidth && pOut->bottom <= side.nHeight;
}

static bool GrowLineBuffer(int nPixels)
{
    if (nPixels <= g_nLineCapacity)
        return true;
    int nCapacity = (nPixels + 1) & ~1;
    BYTE* p = (BYTE*)realloc(g_pLineBuffer, (size_t)nCapacity * 2 * sizeof(DWORD));
    if (!p)
        return false;
    g_pLineBuffer = p;
    g_nLineCapacity = nCapacity;
    return true;
}

static inline void StartRow(BltState* pState, int y)
{
    pState->nU = pState->nRowU;
    pState->nV = pState->nRowV;
    pState->pSourceRow = pState->source.pBits + (ptrdiff_t)(pState->nV >> 16) * pState->source.nPitch;
    pState->nY = y;
    pState->pRow = pState->target.pBits + (ptrdiff_t)y * pState->target.nPitch;
}

static inline void StartColumns(BltState* pState, int x)
{
    pState->nX = x;
    pState->nRowU = (int)((long long)(x - pState->ptOrigin.x) * pState->nStepU + pState->nStartU);
    pState->nRowV = (int)((long long)(pState->rcTarget.top - pState->ptOrigin.y) * pState->nStepV + pState->nStartV);
}

// A pair with a direct row routine, unscaled and point sampled: one call a row,
// with the same result as reading and writing through the common form.
static bool DirectPath(BltState* pState, int x0, int x1)
{
    PFNCONVERTROW pfnRow = PixConv_DirectRow(pState->source.nFormat, pState->target.nFormat, PixConv_HasAvx2());
    if (!pfnRow)
        return false;
    int nSourceBytes = pState->source.nBits / 8, nTargetBytes = pState->target.nBits / 8;
    StartColumns(pState, x0);
    for (int y = pState->rcTarget.top; y < pState->rcTarget.bottom; y++) {
        StartRow(pState, y);
        pfnRow(x1 - x0, pState->pSourceRow + (ptrdiff_t)(pState->nU >> 16) * nSourceBytes,
               pState->pRow + (ptrdiff_t)x0 * nTargetBytes);
        pState->nRowV += pState->nStepV;
    }
    return true;
}

// Read a run, write a run, for target columns [x0, x1).
static bool GenericPath(BltState* pState, int x0, int x1)
{
    PFNWRITELINE pfnWrite = (PFNWRITELINE)FindLine(g_aConvert[pState->target.nFormat].pWrite, 0);
    PFNREADLINE pfnRead;
    if (pState->nFilter == 1) {
        pfnRead = (PFNREADLINE)FindLine(g_aConvert[pState->source.nFormat].pRead, 0);
    } else {
        pState->pfnSample = (PFNSAMPLE)FindLine(g_aConvert[pState->source.nFormat].pSample, 0);
        pfnRead = pState->pfnSample ? (PFNREADLINE)FindLine(g_pFilterLines, pState->nFilter) : NULL;
    }
    if (!pfnWrite || !pfnRead)
        return false;
    if (pState->nFilter == 1 && !pState->bScaled && DirectPath(pState, x0, x1))
        return true;
    DWORD* pBuffer = (DWORD*)g_pLineBuffer;
    pState->pScratch = pBuffer + g_nLineCapacity;
    // The common form is the A8R8G8B8 layout: such a target row can take the run itself.
    D3DX_SURFACEFORMAT nTarget = pState->target.nFormat;
    bool bDirect = nTarget == D3DX_SF_A8R8G8B8 || nTarget == D3DX_SF_X8R8G8B8;
    StartColumns(pState, x0);
    for (int y = pState->rcTarget.top; y < pState->rcTarget.bottom; y++) {
        StartRow(pState, y);
        pState->nX = x0;
        DWORD* pTargetRun = bDirect ? (DWORD*)pState->pRow + x0 : pBuffer;
        DWORD* pRun = pfnRead(x1 - x0, pTargetRun, pState);
        if (pRun != pTargetRun || !bDirect)
            pfnWrite(x1 - x0, pRun, pState);
        pState->nRowV += pState->nStepV;
    }
    return true;
}

// A DXT target: columns that end on multiples of four, so each block is done before the next.
static bool StripPath(BltState* pState)
{
    for (int x = pState->rcTarget.left; x < pState->rcTarget.right;) {
        int xEnd = (x & ~3) + 4;
        xEnd = xEnd < pState->rcTarget.right ? xEnd : pState->rcTarget.right;
        if (!GenericPath(pState, x, xEnd))
            return false;
        x = xEnd;
    }
    return true;
}

static bool CopyLinePath(BltState* pState)
{
    PFNCOPYLINE pfnCopy = (PFNCOPYLINE)FindLine(g_pCopyLines, pState->source.nBits);
    if (!pfnCopy)
        return false;
    StartColumns(pState, pState->rcTarget.left);
    for (int y = pState->rcTarget.top; y < pState->rcTarget.bottom; y++) {
        StartRow(pState, y);
        pState->nX = pState->rcTarget.left;
        pfnCopy(pState->rcTarget.right - pState->rcTarget.left, pState);
        pState->nRowV += pState->nStepV;
    }
    return true;
}

// Same format, same size: whole rows of bytes. Nibble rows that do not start
// and end on bytes go pixel by pixel.
static bool PlainCopy(BltState* pState)
{
    int nBits = pState->source.nBits, nWidth = pState->rcTarget.right - pState->rcTarget.left;
    if (nBits < 8 && ((pState->rcSource.left | pState->rcTarget.left | nWidth) & 1))
        return CopyLinePath(pState);
    size_t nBytes = (size_t)nWidth * nBits / 8;
    for (int y = 0; y < pState->rcTarget.bottom - pState->rcTarget.top; y++) {
        const BYTE* pSource = pState->source.pBits + (ptrdiff_t)(pState->rcSource.top + y) * pState->source.nPitch +
                              (ptrdiff_t)pState->rcSource.left * nBits / 8;
        BYTE* pTarget = pState->target.pBits + (ptrdiff_t)(pState->rcTarget.top + y) * pState->target.nPitch +
                        (ptrdiff_t)pState->rcTarget.left * nBits / 8;
        memmove(pTarget, pSource, nBytes);
    }
    return true;
}

static HRESULT Blt(CSurfaceLock& source, CSurfaceLock& target, const RECT* pSourceRect, const RECT* pTargetRect,
                   DWORD nFilter)
{
    if (!PixConv_IsStarted())
        return D3DXERR_D3DXNOTSTARTEDYET;
    if (!source.Usable() || !target.Usable())
        return E_NOTIMPL;
    BltState state;
    memset(&state, 0, sizeof(state));
    state.nFilter = nFilter == D3DX_DEFAULT ? 2 : nFilter;
    if (!source.Fill(&state.source, false, g_adwPalette[0]) || !target.Fill(&state.target, true, g_adwPalette[1]))
        return E_NOTIMPL;
    if (!TakeRect(pSourceRect, state.source, &state.rcSource) || !TakeRect(pTargetRect, state.target, &state.rcTarget))
        return E_NOTIMPL;
    int nSourceWidth = state.rcSource.right - state.rcSource.left, nSourceHeight = state.rcSource.bottom - state.rcSource.top;
    int nTargetWidth = state.rcTarget.right - state.rcTarget.left, nTargetHeight = state.rcTarget.bottom - state.rcTarget.top;
    state.bScaled = nSourceWidth != nTargetWidth || nSourceHeight != nTargetHeight;
    bool bSourceYUV = state.source.nFormat == D3DX_SF_UYVY || state.source.nFormat == D3DX_SF_YUY2;
    bool bTargetYUV = state.target.nFormat == D3DX_SF_UYVY || state.target.nFormat == D3DX_SF_YUY2;
    state.bConvertYUV = bSourceYUV != bTargetYUV;
    if (!GrowLineBuffer((nSourceWidth > nTargetWidth ? nSourceWidth : nTargetWidth) + 1))
        return D3DXERR_NOMEMORY;
    state.nStepU = nSourceWidth != nTargetWidth ? (int)(((long long)nSourceWidth << 16) / nTargetWidth) : 0x10000;
    state.nStepV = nSourceHeight != nTargetHeight ? (int)(((long long)nSourceHeight << 16) / nTargetHeight) : 0x10000;
    state.nStartU = state.nStepU / 2 + (state.rcSource.left << 16);
    state.nStartV = state.nStepV / 2 + (state.rcSource.top << 16);
    state.ptOrigin.x = state.rcTarget.left;
    state.ptOrigin.y = state.rcTarget.top;
    if (state.source.dwFourCC)
        InitBlockCache(&state.source, state.source.dwFourCC);
    if (state.target.dwFourCC)
        InitBlockCache(&state.target, state.target.dwFourCC);

    bool bDone = false;
    if (state.target.dwFourCC) {
        bDone = StripPath(&state);
    } else {
        if (state.source.nFormat == state.target.nFormat && state.nFilter == 1)
            bDone = state.bScaled ? CopyLinePath(&state) : PlainCopy(&state);
        if (!bDone)
            bDone = GenericPath(&state, state.rcTarget.left, state.rcTarget.right);
    }
    if (state.target.dwFourCC)
        FlushBlocks(&state);
    return bDone ? S_OK : E_NOTIMPL;
}

HRESULT _d3dxBltSurface(IDirectDrawSurface7* pSource, IDirectDrawSurface7* pTarget, const RECT* pSourceRect,
                        const RECT* pTargetRect, DWORD nFilter)
{
    if (!PixConv_IsStarted())
        return D3DXERR_D3DXNOTSTARTEDYET;
    if (pSource == pTarget)
        return E_NOTIMPL;
    CSurfaceLock source(pSource);
    CSurfaceLock target(pTarget);
    return Blt(source, target, pSourceRect, pTargetRect, nFilter);
}

HRESULT PixConv_BltMemoryToMemory(D3DX_SURFACEFORMAT nSourceFormat, DWORD nSourceWidth, DWORD nSourceHeight,
                                  DWORD nSourcePitch, const void* pSourceBits, D3DX_SURFACEFORMAT nTargetFormat,
                                  DWORD nTargetWidth, DWORD nTargetHeight, DWORD nTargetPitch, void* pTargetBits,
                                  DWORD nFilter)
{
    if (!PixConv_IsStarted())
        return D3DXERR_D3DXNOTSTARTEDYET;
    CSurfaceLock source(nSourceFormat, nSourceWidth, nSourceHeight, nSourcePitch, pSourceBits, NULL);
    CSurfaceLock target(nTargetFormat, nTargetWidth, nTargetHeight, nTargetPitch, pTargetBits, NULL);
    return Blt(source, target, NULL, NULL, nFilter);
}

HRESULT _d3dxBltMemory(D3DX_SURFACEFORMAT nFormat, DWORD nWidth, DWORD nHeight, DWORD nPitch, const void* pBits,
                       const PALETTEENTRY* pPalette, IDirectDrawSurface7* pTarget, const RECT* pSourceRect,
                       const RECT* pTargetRect, DWORD nFilter)
{
    if (!PixConv_IsStarted())
        return D3DXERR_D3DXNOTSTARTEDYET;
    CSurfaceLock source(nFormat, nWidth, nHeight, nPitch, pBits, pPalette);
    CSurfaceLock target(pTarget);
    return Blt(source, target, pSourceRect, pTargetRect, nFilter);
}
