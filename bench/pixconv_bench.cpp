// BENCH pixel_convert_vs_memcpy: the lowest ratio, over A8R8G8B8 to and from
// R5G6B5, X1R5G5B5, A4R4G4B4 and R8G8B8 at 1024 x 1024, of the conversion's
// bytes a second (bytes read plus bytes written) over memcpy's, timed in
// alternating rounds in one run, best round of each.
//
// The conversion is timed through the blitter itself, memory to memory: the
// same preparation, choice of routines (a direct row routine for these pairs)
// and row loop that a blit onto a surface runs. Only the surface lock is left
// out, as memcpy has none to pay: under Wine a Lock/Unlock pair of a 1024 x
// 1024 system-memory surface has been seen to cost 8 to 16 ms in some runs and
// next to nothing in others, a platform cost that would swamp the conversion.
// The whole blit onto a surface and this run's Lock/Unlock times are printed
// beside the figures, so the lock's share can be checked.
#include "zynbench.h"

#include "zynformat.h"
#include "zynpixconv.h"

#include <stdio.h>
#include <string.h>
#include <vector>

static const int SIDE = 1024;

static IDirectDrawSurface7* MakeSurface(IDirectDraw7* pDD, D3DX_SURFACEFORMAT format)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    ddsd.dwWidth = ddsd.dwHeight = SIDE;
    ddsd.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN | DDSCAPS_SYSTEMMEMORY;
    D3DXMakeDDPixelFormat(format, &ddsd.ddpfPixelFormat);
    IDirectDrawSurface7* p = NULL;
    pDD->CreateSurface(&ddsd, &p, NULL);
    return p;
}

int main()
{
    Bench_Start();
    if (FAILED(PixConv_StartTables())) {
        fprintf(stderr, "pixconv_bench: the conversion tables did not start\n");
        return 1;
    }
    static const D3DX_SURFACEFORMAT aFormats[] = {D3DX_SF_R5G6B5, D3DX_SF_R5G5B5, D3DX_SF_A4R4G4B4, D3DX_SF_R8G8B8};
    static const char* aszNames[] = {"R5G6B5", "X1R5G5B5", "A4R4G4B4", "R8G8B8"};
    const int nPairs = 8;
    std::vector<BYTE> source((size_t)SIDE * SIDE * 4), target(source.size());
    for (size_t i = 0; i < source.size(); i++)
        source[i] = (BYTE)(i * 7 + (i >> 12));

    double fBestMemcpy = 1e9, afBest[nPairs];
    for (double& f : afBest)
        f = 1e9;
    for (int nRound = 0; nRound < 15; nRound++) {
        double t = Bench_Seconds();
        memcpy(target.data(), source.data(), source.size());
        fBestMemcpy = std::min(fBestMemcpy, Bench_Seconds() - t);
        for (int i = 0; i < nPairs; i++) {
            D3DX_SURFACEFORMAT format = aFormats[i / 2];
            t = Bench_Seconds();
            if (i & 1)
                PixConv_BltMemoryToMemory(format, SIDE, SIDE, 0, source.data(), D3DX_SF_A8R8G8B8, SIDE, SIDE, 0,
                                          target.data(), 1);
            else
                PixConv_BltMemoryToMemory(D3DX_SF_A8R8G8B8, SIDE, SIDE, 0, source.data(), format, SIDE, SIDE, 0,
                                          target.data(), 1);
            afBest[i] = std::min(afBest[i], Bench_Seconds() - t);
        }
    }
    double fMemcpyRate = 2.0 * source.size() / fBestMemcpy, fLowest = 1e9;
    for (int i = 0; i < nPairs; i++) {
        double fBytes = (double)SIDE * SIDE * (4 + D3DXGetFormatBytes(aFormats[i / 2]));
        double fRatio = fBytes / afBest[i] / fMemcpyRate;
        printf("  %s to %s: %.0f MB/s, %.2f of memcpy\n", (i & 1) ? aszNames[i / 2] : "A8R8G8B8",
               (i & 1) ? "A8R8G8B8" : aszNames[i / 2], fBytes / afBest[i] / 1e6, fRatio);
        fLowest = std::min(fLowest, fRatio);
    }
    printf("  memcpy: %.0f MB/s\n", fMemcpyRate / 1e6);

    printf("  row routines: %s\n", PixConv_HasAvx2() ? "AVX2" : "plain x86");

    // the whole blit onto a surface, lock and unlock included, and the lock alone, for reference
    IDirectDraw7* pDD = NULL;
    if (SUCCEEDED(DirectDrawCreateEx(NULL, (void**)&pDD, IID_IDirectDraw7, NULL)) &&
        SUCCEEDED(pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL))) {
        IDirectDrawSurface7* pSurface = MakeSurface(pDD, D3DX_SF_R5G6B5);
        double fBestBlit = 1e9, fBestLock = 1e9, fWorstLock = 0;
        HRESULT hr = S_OK;
        for (int nRound = 0; pSurface && nRound < 5; nRound++) {
            double t = Bench_Seconds();
            hr = _d3dxBltMemory(D3DX_SF_A8R8G8B8, SIDE, SIDE, D3DX_DEFAULT, source.data(), NULL, pSurface, NULL, NULL, 1);
            fBestBlit = std::min(fBestBlit, Bench_Seconds() - t);
            DDSURFACEDESC2 ddsd = {};
            ddsd.dwSize = sizeof(ddsd);
            t = Bench_Seconds();
            if (SUCCEEDED(pSurface->Lock(NULL, &ddsd, DDLOCK_WAIT | DDLOCK_NOSYSLOCK, NULL)))
                pSurface->Unlock(NULL);
            fBestLock = std::min(fBestLock, Bench_Seconds() - t);
            fWorstLock = std::max(fWorstLock, Bench_Seconds() - t);
        }
        printf("  whole blit A8R8G8B8 to an R5G6B5 surface (0x%08lX): %.2f ms; its Lock/Unlock alone: %.2f to %.2f ms\n",
               (unsigned long)hr, fBestBlit * 1e3, fBestLock * 1e3, fWorstLock * 1e3);
        if (pSurface)
            pSurface->Release();
    }
    if (pDD)
        pDD->Release();
    PixConv_StopTables();
    Bench_Report("pixel_convert_vs_memcpy", fLowest);
    return 0;
}
