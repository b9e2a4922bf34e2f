// The read, write and sample routines of every surface format, to and from the
// common 0xAARRGGBB form. Formats that are plain packed words share one set of
// run templates over a small traits record (Decode / Encode of one raw pixel),
// so a run is one tight loop with no test on the format inside it.
#pragma GCC optimize("O3")
#include "zyndxt.h"
#include "zynpixconv_formats.h"

#include <string.h>

// ---- run templates

template <class F> static DWORD* ReadPacked(int n, DWORD* pBuffer, BltState* pState)
{
    const BYTE* pRow = pState->pSourceRow;
    int u = pState->nU, du = pState->nStepU;
    if (du == 0x10000) {
        const BYTE* p = pRow + (size_t)(u >> 16) * F::BYTES;
        for (int i = 0; i < n; i++)
            pBuffer[i] = F::Decode(LoadRaw<F::BYTES>(p + i * F::BYTES));
        u += n << 16;
    } else {
        for (int i = 0; i < n; i++, u += du)
            pBuffer[i] = F::Decode(LoadRaw<F::BYTES>(pRow + (size_t)(u >> 16) * F::BYTES));
    }
    pState->nU = u;
    return pBuffer;
}

template <class F> static void WritePacked(int n, const DWORD* pRun, BltState* pState)
{
    BYTE* p = pState->pRow + (size_t)pState->nX * F::BYTES;
    for (int i = 0; i < n; i++)
        StoreRaw<F::BYTES>(p + i * F::BYTES, F::Encode(pRun[i]));
}

template <class F> static void SamplePacked(BYTE** ppPixels, DWORD* pOut, BltState* pState)
{
    for (int i = 0; i < 4 && ppPixels[i]; i++)
        if (!(pState->dwSampleMask & (1u << i)))
            pOut[i] = F::Decode(LoadRaw<F::BYTES>(ppPixels[i]));
}

// ---- A8R8G8B8: at a step of 1.0 the run is the source row itself

static DWORD* ReadA8R8G8B8(int n, DWORD* pBuffer, BltState* pState)
{
    const BYTE* pRow = pState->pSourceRow;
    int u = pState->nU, du = pState->nStepU;
    if (du == 0x10000) {
        const BYTE* p = pRow + (size_t)(u >> 16) * 4;
        pState->nU = u + (n << 16);
        if (((UINT_PTR)p & 7) == 0)
            return (DWORD*)p;
        memcpy(pBuffer, p, (size_t)n * 4);
        return pBuffer;
    }
    for (int i = 0; i < n; i++, u += du)
        pBuffer[i] = LoadRaw<4>(pRow + (size_t)(u >> 16) * 4);
    pState->nU = u;
    return pBuffer;
}

static void WriteA8R8G8B8(int n, const DWORD* pRun, BltState* pState)
{
    memcpy(pState->pRow + (size_t)pState->nX * 4, pRun, (size_t)n * 4);
}

// A pixel of 0 takes no part in the filter.
static void SampleA8R8G8B8(BYTE** ppPixels, DWORD* pOut, BltState* pState)
{
    for (int i = 0; i < 4 && ppPixels[i]; i++) {
        if (pState->dwSampleMask & (1u << i))
            continue;
        pOut[i] = LoadRaw<4>(ppPixels[i]);
        if (!pOut[i])
            pState->dwSampleMask |= 1u << i;
    }
}

// ---- formats read by position: palette nibbles, packed YUV pairs, DXT blocks

static DWORD FetchPalette4(int x, int y, BltState* pState)
{
    BYTE b = pState->source.pBits[(size_t)y * pState->source.nPitch + (x >> 1)];
    return pState->source.pPalette[(x & 1) ? (b & 15) : (b >> 4)];
}

static DWORD FetchPalette8(int x, int y, BltState* pState)
{
    return pState->source.pPalette[pState->source.pBits[(size_t)y * pState->source.nPitch + x]];
}

static inline int Clamp255(float f)
{
    int v = (int)f;
    return v < 0 ? 0 : v > 255 ? 255 : v;
}

// Y in bits 16 to 23, U in 8 to 15, V in 0 to 7, to RGB when the blit converts.
static inline DWORD YuvToCommon(DWORD y, DWORD u, DWORD v, bool bConvert)
{
    if (!bConvert)
        return 0xFF000000u | (y << 16) | (u << 8) | v;
    float l = (float)((int)y - 16), p = (float)((int)u - 128), q = (float)((int)v - 128);
    int r = Clamp255(1.164f * l + 1.596f * q);
    int g = Clamp255(1.164f * l - 0.813f * q - 0.391f * p);
    int b = Clamp255(1.164f * l + 2.018f * p);
    return 0xFF000000u | (r << 16) | (g << 8) | b;
}

// byte offsets of Y0, U, Y1, V within a pair
template <int Y0, int U, int Y1, int V> static DWORD FetchYuv(int x, int y, BltState* pState)
{
    const BYTE* p = pState->source.pBits + (size_t)y * pState->source.nPitch + (size_t)(x >> 1) * 4;
    return YuvToCommon(p[(x & 1) ? Y1 : Y0], p[U], p[V], pState->bConvertYUV);
}

static DWORD FetchDxt(int x, int y, BltState* pState) { return *BlockPixel(x, y, &pState->source); }

template <DWORD (*FETCH)(int, int, BltState*)> static DWORD* ReadAt(int n, DWORD* pBuffer, BltState* pState)
{
    int u = pState->nU, du = pState->nStepU, y = pState->nV >> 16;
    for (int i = 0; i < n; i++, u += du)
        pBuffer[i] = FETCH(u >> 16, y, pState);
    pState->nU = u;
    return pBuffer;
}

// The addresses mean nothing below a byte or inside a block: the four samples
// are worked out from the running position instead.
template <DWORD (*FETCH)(int, int, BltState*), bool ZERO_IS_MASKED>
static void SampleAt(BYTE** ppPixels, DWORD* pOut, BltState* pState)
{
    int x0 = pState->nU >> 16, y0 = pState->nV >> 16;
    for (int i = 0; i < 4 && ppPixels[i]; i++) {
        if (pState->dwSampleMask & (1u << i))
            continue;
        pOut[i] = FETCH(x0 + (i & 1), y0 + (i >> 1), pState);
        if (ZERO_IS_MASKED && !pOut[i])
            pState->dwSampleMask |= 1u << i;
    }
}

// ---- writers of the palette, YUV and DXT forms

// Nearest entry by the sum of channel differences; the first at the least
// distance wins and an exact match ends the search.
static DWORD NearestEntry(DWORD c, const DWORD* pPalette, int nEntries)
{
    int nBest = 1020;
    DWORD dwBest = 0;
    for (int i = 0; i < nEntries; i++) {
        DWORD e = pPalette[i];
        int d = abs((int)((c >> 16) & 0xFF) - (int)((e >> 16) & 0xFF)) +
                abs((int)((c >> 8) & 0xFF) - (int)((e >> 8) & 0xFF)) + abs((int)(c & 0xFF) - (int)(e & 0xFF));
        if (d < nBest) {
            nBest = d;
            dwBest = i;
            if (d == 0)
                break;
        }
    }
    return dwBest;
}

static inline DWORD CachedNearest(DWORD c, BltState* pState, int nEntries)
{
    if (!pState->bLastValid || pState->adwLastIn != c) {
        pState->adwLastIn = c;
        pState->adwLastOut = NearestEntry(c, pState->target.pPalette, nEntries);
        pState->bLastValid = true;
    }
    return pState->adwLastOut;
}

static void WritePalette8(int n, const DWORD* pRun, BltState* pState)
{
    BYTE* p = pState->pRow + pState->nX;
    for (int i = 0; i < n; i++)
        p[i] = (BYTE)CachedNearest(pRun[i], pState, 255);
}

static void WritePalette4(int n, const DWORD* pRun, BltState* pState)
{
    for (int i = 0; i < n; i++) {
        int x = pState->nX + i;
        BYTE* p = pState->pRow + (x >> 1);
        DWORD e = CachedNearest(pRun[i], pState, 15);
        *p = (x & 1) ? (BYTE)((*p & 0xF0) | e) : (BYTE)((*p & 0x0F) | (e << 4));
    }
}

static DWORD CommonToYuv(DWORD c)
{
    float r = (float)((c >> 16) & 0xFF), g = (float)((c >> 8) & 0xFF), b = (float)(c & 0xFF);
    int y = Clamp255(0.257f * r + 0.504f * g + 0.098f * b + 16);
    int u = Clamp255(-0.148f * r - 0.291f * g + 0.439f * b + 128);
    int v = Clamp255(0.439f * r - 0.368f * g - 0.071f * b + 128);
    return (y << 16) | (u << 8) | v;
}

// Each pair keeps both Y values and the average of its two U and two V; a pair
// cut by the run's edge takes U and V of its one pixel.
template <int Y0, int U, int Y1, int V> static void WriteYuv(int n, const DWORD* pRun, BltState* pState)
{
    const DWORD* pYuv = pRun;
    if (pState->bConvertYUV) {
        for (int i = 0; i < n; i++)
            pState->pScratch[i] = CommonToYuv(pRun[i]);
        pYuv = pState->pScratch;
    }
    for (int i = 0; i < n;) {
        int x = pState->nX + i;
        BYTE* p = pState->pRow + (size_t)(x >> 1) * 4;
        DWORD a = pYuv[i];
        if ((x & 1) == 0 && i + 1 < n) {
            DWORD b = pYuv[i + 1];
            p[Y0] = (BYTE)(a >> 16);
            p[Y1] = (BYTE)(b >> 16);
            p[U] = (BYTE)((((a >> 8) & 0xFF) + ((b >> 8) & 0xFF)) / 2);
            p[V] = (BYTE)(((a & 0xFF) + (b & 0xFF)) / 2);
            i += 2;
        } else {
            p[(x & 1) ? Y1 : Y0] = (BYTE)(a >> 16);
            p[U] = (BYTE)(a >> 8);
            p[V] = (BYTE)a;
            i += 1;
        }
    }
}

static void WriteDxt(int n, const DWORD* pRun, BltState* pState)
{
    for (int i = 0; i < n; i++)
        *BlockPixel(pState->nX + i, pState->nY, &pState->target) = pRun[i];
}

// ---- the table

#define PACKED(code, F) {code, ReadPacked<F>, WritePacked<F>, SamplePacked<F>}
#define BYPOS(code, FETCH, WRITE, ZERO) {code, ReadAt<FETCH>, WRITE, SampleAt<FETCH, ZERO>}

const FormatRoutines g_aFormatRoutines[] = {
    PACKED(D3DX_SF_R8G8B8, FmtR8G8B8),
    {D3DX_SF_A8R8G8B8, ReadA8R8G8B8, WriteA8R8G8B8, SampleA8R8G8B8},
    PACKED(D3DX_SF_X8R8G8B8, FmtX8R8G8B8),
    PACKED(D3DX_SF_R5G6B5, FmtR5G6B5),
    PACKED(D3DX_SF_R5G5B5, FmtR5G5B5),
    BYPOS(D3DX_SF_PALETTE4, FetchPalette4, WritePalette4, false),
    BYPOS(D3DX_SF_PALETTE8, FetchPalette8, WritePalette8, false),
    PACKED(D3DX_SF_A1R5G5B5, FmtA1R5G5B5),
    PACKED(D3DX_SF_X4R4G4B4, FmtX4R4G4B4),
    PACKED(D3DX_SF_A4R4G4B4, FmtA4R4G4B4),
    PACKED(D3DX_SF_L8, FmtL8),
    PACKED(D3DX_SF_A8L8, FmtA8L8),
    PACKED(D3DX_SF_U8V8, FmtU8V8),
    PACKED(D3DX_SF_U5V5L6, FmtU5V5L6),
    PACKED(D3DX_SF_U8V8L8, FmtR8G8B8),
    BYPOS(D3DX_SF_UYVY, (FetchYuv<1, 0, 3, 2>), (WriteYuv<1, 0, 3, 2>), false),
    BYPOS(D3DX_SF_YUY2, (FetchYuv<0, 1, 2, 3>), (WriteYuv<0, 1, 2, 3>), false),
    BYPOS(D3DX_SF_DXT1, FetchDxt, WriteDxt, true),
    BYPOS(D3DX_SF_DXT3, FetchDxt, WriteDxt, true),
    BYPOS(D3DX_SF_DXT5, FetchDxt, WriteDxt, true),
    PACKED(D3DX_SF_R3G3B2, FmtR3G3B2),
    PACKED(D3DX_SF_A8, FmtA8),
    {D3DX_SF_UNKNOWN, NULL, NULL, NULL},
};
