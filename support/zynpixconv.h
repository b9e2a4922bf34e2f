// Pixel conversion: the one blitter under every texture load, mip level and
// surface copy of the support layer. Pixels go from any surface format to the
// common 0xAARRGGBB form a row at a time and on to the target format, with
// point or bilinear sampling. Each format has a read, a write and a sample
// routine, registered in tables when the library starts; a blit picks its
// routines once and runs them over whole rows.
//
// Step by step: PixConv_StartTables (D3DXInitialize calls it), then any number
// of _d3dxBltSurface / _d3dxBltMemory, then PixConv_StopTables. Starting and
// stopping are counted: the tables live from the first start to the last stop.
//
// Results: S_OK; D3DXERR_D3DXNOTSTARTEDYET before the tables are started;
// E_NOTIMPL (0x80004001) when a side cannot be locked, a rectangle falls
// outside its surface, a palette format has no palette, or no path did the
// work. Both surfaces stay locked for the blit and are unlocked on every way out.
//
// Limits: one blit at a time (the line buffer and the DXT block caches are
// shared); the line buffer only grows.
#ifndef ZYNPIXCONV_H
#define ZYNPIXCONV_H

#include "zynsupport.h"

struct DXTBlock;
struct BltState;

// A run reader fills pBuffer with n pixels of the common form and returns the
// run (the A8R8G8B8 reader may return the source row itself).
typedef DWORD* (*PFNREADLINE)(int n, DWORD* pBuffer, BltState* pState);
// A run writer stores n pixels of the common form at the target position.
typedef void (*PFNWRITELINE)(int n, const DWORD* pRun, BltState* pState);
// A sampler converts the up to four pixels of a null-ended address list whose
// bit in dwSampleMask is clear; it may set bits for pixels that are 0.
typedef void (*PFNSAMPLE)(BYTE** ppPixels, DWORD* pOut, BltState* pState);

struct BltSide {
    bool bIsTarget;
    D3DX_SURFACEFORMAT nFormat;
    DWORD dwFourCC;    // DXT forms only, else 0
    int nBits;         // bits a pixel; 16 for the packed YUV forms
    int nPitch;        // bytes, or block columns for a DXT form
    BYTE* pBits;       // the top-left pixel of the surface
    DWORD* pPalette;   // 0xAARRGGBB entries of a palette form
    DXTBlock* pBlocks; // head of the DXT block cache, most recently used first
    int nWidth, nHeight;
    int nPaletteEntries;
};

struct BltState {
    bool bScaled;
    bool bConvertYUV;
    DWORD nFilter;
    BltSide source;
    BltSide target;
    RECT rcSource;
    RECT rcTarget;
    POINT ptOrigin;
    BYTE* pRow;
    int nX, nY;
    int nStartU, nStartV;
    int nStepU, nStepV;
    int nRowU, nRowV;
    int nU, nV;
    BYTE* pSourceRow;
    DWORD dwSampleMask;
    PFNSAMPLE pfnSample;
    DWORD* pScratch;   // the line buffer's second half, for writers that need room
    DWORD adwLastIn, adwLastOut;   // last pixel and its answer, for costly writers
    bool bLastValid;
};

// The routines of one format, as registered in the conversion table.
struct FormatRoutines {
    D3DX_SURFACEFORMAT nFormat;
    PFNREADLINE pfnRead;
    PFNWRITELINE pfnWrite;
    PFNSAMPLE pfnSample;
};
// The table of all formats' routines (zynpixconv_formats.cpp), ended by a zero format.
extern const FormatRoutines g_aFormatRoutines[];

// A direct row routine: n pixels of one format at pSource to another at
// pTarget, unscaled, with the result of reading and writing through the
// common form.
typedef void (*PFNCONVERTROW)(int n, const BYTE* pSource, BYTE* pTarget);
// The direct routine of a pair around A8R8G8B8, or NULL; bAvx2 asks for the
// build that needs AVX2 (use it only where PixConv_HasAvx2 says so).
PFNCONVERTROW PixConv_DirectRow(D3DX_SURFACEFORMAT nFrom, D3DX_SURFACEFORMAT nTo, bool bAvx2);
bool PixConv_HasAvx2();

// library start and stop (reference counted)
HRESULT _d3dxInitConvert();
void _d3dxUninitConvert();
HRESULT PixConv_StartTables();
void PixConv_StopTables();
// True between the first start and the last stop.
bool PixConv_IsStarted();

// blits; a null rectangle means the whole surface; nFilter 1 point, 2 or D3DX_DEFAULT linear
HRESULT _d3dxBltSurface(IDirectDrawSurface7* pSource, IDirectDrawSurface7* pTarget,
                        const RECT* pSourceRect, const RECT* pTargetRect, DWORD nFilter);
// pPalette, for the palette forms, points at 256 PALETTEENTRY records (16 used for PALETTE4).
HRESULT _d3dxBltMemory(D3DX_SURFACEFORMAT nFormat, DWORD nWidth, DWORD nHeight, DWORD nPitch,
                       const void* pBits, const PALETTEENTRY* pPalette, IDirectDrawSurface7* pTarget,
                       const RECT* pSourceRect, const RECT* pTargetRect, DWORD nFilter);

// Memory to memory, whole pictures, no palettes: the blitter without locks, for
// measuring it and for comparing its paths.
HRESULT PixConv_BltMemoryToMemory(D3DX_SURFACEFORMAT nSourceFormat, DWORD nSourceWidth, DWORD nSourceHeight,
                                  DWORD nSourcePitch, const void* pSourceBits, D3DX_SURFACEFORMAT nTargetFormat,
                                  DWORD nTargetWidth, DWORD nTargetHeight, DWORD nTargetPitch, void* pTargetBits,
                                  DWORD nFilter);

// The luminance of a common-form pixel, as the L8 and A8L8 writers store it.
inline DWORD PixConv_Luminance(DWORD c)
{
    DWORD s = 76 * ((c >> 16) & 0xFF) + 151 * ((c >> 8) & 0xFF) + 28 * (c & 0xFF);
    return (s + (s >> 8)) >> 8;
}

#endif
