// Texture loading: finding a level of a chain, filling a level from memory or
// from a surface through the blitter, and building the lower levels.
#include "zyntexture_local.h"

#include "zynexception.h"
#include "zynpixconv.h"

#include <stdio.h>
#include <string.h>

bool GetTextureRecord(IDirectDrawSurface7* pSurface, TextureRecord* pRecord)
{
    DWORD nSize = sizeof(*pRecord);
    return SUCCEEDED(pSurface->GetPrivateData(g_guidTextureRecord, pRecord, &nSize)) && nSize == sizeof(*pRecord);
}

static bool GetDesc(IDirectDrawSurface7* pSurface, DDSURFACEDESC2* pDesc)
{
    memset(pDesc, 0, sizeof(*pDesc));
    pDesc->dwSize = sizeof(*pDesc);
    return SUCCEEDED(pSurface->GetSurfaceDesc(pDesc));
}

DWORD GetMipCount(IDirectDrawSurface7* pSurface)
{
    DDSURFACEDESC2 ddsd;
    if (!GetDesc(pSurface, &ddsd))
        return 1;
    return (ddsd.dwFlags & DDSD_MIPMAPCOUNT) ? ddsd.dwMipMapCount : 1;
}

// The next level down, or null at the end of the chain.
static IDirectDrawSurface7* NextLevel(IDirectDrawSurface7* pSurface)
{
    DDSCAPS2 caps = {DDSCAPS_TEXTURE | DDSCAPS_MIPMAP, 0, 0, {0}};
    IDirectDrawSurface7* pNext = NULL;
    if (FAILED(pSurface->GetAttachedSurface(&caps, &pNext)))
        return NULL;
    return pNext;
}

HRESULT WINAPI D3DXGetNthMipmap(DWORD dwLevel, IDirectDrawSurface7* pTexture, IDirectDrawSurface7** ppLevel)
{
    if (!ppLevel)
        return D3DXERR_NULLPOINTER;
    *ppLevel = NULL;
    if (!pTexture)
        return D3DXERR_NULLPOINTER;
    pTexture->AddRef();
    if (dwLevel == 0 || dwLevel == D3DX_DEFAULT) {
        *ppLevel = pTexture;
        return S_OK;
    }
    DWORD nCount = GetMipCount(pTexture);
    if (dwLevel >= nCount) {
        // not an error: the last level serves
        char szDiagnostic[96];
        snprintf(szDiagnostic, sizeof(szDiagnostic),
                 "D3DXGetNthMipmap: (%d, %d) No such mip-map level found for this texture", (int)dwLevel, (int)nCount);
        OutputDebugStringA(szDiagnostic);
        dwLevel = nCount - 1;
    }
    IDirectDrawSurface7* pLevel = pTexture;
    for (DWORD i = 0; i < dwLevel; i++) {
        IDirectDrawSurface7* pNext = NextLevel(pLevel);
        pLevel->Release();
        if (!pNext)
            return D3DXERR_MIPLEVELABSENT;
        pLevel = pNext;
    }
    *ppLevel = pLevel;
    return S_OK;
}

// Blits each level into the next; a failure ends the walk quietly.
static void GenerateMipLevels(IDirectDrawSurface7* pSurface, DWORD dwFilter)
{
    DDSURFACEDESC2 ddsd;
    if (!GetDesc(pSurface, &ddsd) || !(ddsd.dwFlags & DDSD_MIPMAPCOUNT))
        return;
    pSurface->AddRef();
    IDirectDrawSurface7* pLevel = pSurface;
    for (DWORD i = 0; i + 1 < ddsd.dwMipMapCount; i++) {
        IDirectDrawSurface7* pNext = NextLevel(pLevel);
        bool bOk = pNext && SUCCEEDED(_d3dxBltSurface(pLevel, pNext, NULL, NULL, dwFilter));
        pLevel->Release();
        pLevel = pNext;
        if (!bOk)
            break;
    }
    if (pLevel)
        pLevel->Release();
}

// A rectangle in the caller's terms (the size asked for) onto the surface's own size.
static void ScaleRect(const RECT* pIn, RECT* pOut, const DDSURFACEDESC2& ddsd, DWORD nWidth, DWORD nHeight)
{
    nWidth = nWidth ? nWidth : 1;
    nHeight = nHeight ? nHeight : 1;
    pOut->left = (LONG)((long long)pIn->left * ddsd.dwWidth / nWidth);
    pOut->right = (LONG)((long long)pIn->right * ddsd.dwWidth / nWidth);
    pOut->top = (LONG)((long long)pIn->top * ddsd.dwHeight / nHeight);
    pOut->bottom = (LONG)((long long)pIn->bottom * ddsd.dwHeight / nHeight);
}

static inline DWORD AtLevel(DWORD n, DWORD dwLevel)
{
    if (dwLevel == 0 || dwLevel == D3DX_DEFAULT)
        return n;
    n = dwLevel < 32 ? n >> dwLevel : 0;
    return n ? n : 1;
}

// Builds the lower levels after a good fill of the top, or of the last level the record counts.
static void FinishLevels(HRESULT hr, IDirectDrawSurface7* pLevel, DWORD dwLevel, bool bRecord,
                         const TextureRecord& record, DWORD dwFilter)
{
    if (SUCCEEDED(hr) && (dwLevel == D3DX_DEFAULT || (bRecord && record.dwMipCount == dwLevel + 1)))
        GenerateMipLevels(pLevel, dwFilter);
}

HRESULT WINAPI D3DXLoadTextureFromMemory(IDirect3DDevice7*, IDirectDrawSurface7* pTexture, DWORD dwLevel,
                                         void* pMemory, PALETTEENTRY* pPalette, D3DX_SURFACEFORMAT format,
                                         DWORD dwPitch, RECT* pDestRect, DWORD dwFilter)
{
    D3DX_ENTRY_BEGIN
    if (!PixConv_IsStarted())
        return D3DXERR_D3DXNOTSTARTEDYET;
    if (!pTexture || !pMemory)
        return D3DXERR_NULLPOINTER;
    IDirectDrawSurface7* pLevel = NULL;
    HRESULT hr = D3DXGetNthMipmap(dwLevel, pTexture, &pLevel);
    if (FAILED(hr))
        return hr;
    TextureRecord record;
    bool bRecord = GetTextureRecord(pTexture, &record);
    DDSURFACEDESC2 ddsd;
    if (!GetDesc(pLevel, &ddsd)) {
        pLevel->Release();
        return D3DXERR_INVALIDPARAMETER;
    }
    DWORD nWidth = ddsd.dwWidth, nHeight = ddsd.dwHeight;
    if (pDestRect) {
        nWidth = (DWORD)(pDestRect->right - pDestRect->left);
        nHeight = (DWORD)(pDestRect->bottom - pDestRect->top);
    } else if (bRecord) {
        nWidth = AtLevel(record.dwWidth, dwLevel);
        nHeight = AtLevel(record.dwHeight, dwLevel);
    }
    RECT rcTarget;
    const RECT* pTarget = pDestRect;
    if (bRecord && pDestRect) {
        ScaleRect(pDestRect, &rcTarget, ddsd, record.dwWidth, record.dwHeight);
        pTarget = &rcTarget;
    }
    hr = _d3dxBltMemory(format, nWidth, nHeight, dwPitch, pMemory, pPalette, pLevel, NULL, pTarget, dwFilter);
    FinishLevels(hr, pLevel, dwLevel, bRecord, record, dwFilter);
    pLevel->Release();
    return hr;
    D3DX_ENTRY_END
}

// Copies a chain onto a chain of the same length, level by level.
static HRESULT CopyChain(IDirectDrawSurface7* pTexture, IDirectDrawSurface7* pSource, DWORD nLevels, DWORD dwFilter)
{
    for (DWORD i = 0; i < nLevels; i++) {
        IDirectDrawSurface7 *pFrom = NULL, *pTo = NULL;
        HRESULT hr = D3DXGetNthMipmap(i, pSource, &pFrom);
        if (SUCCEEDED(hr))
            hr = D3DXGetNthMipmap(i, pTexture, &pTo);
        if (SUCCEEDED(hr))
            hr = _d3dxBltSurface(pFrom, pTo, NULL, NULL, dwFilter);
        if (pFrom)
            pFrom->Release();
        if (pTo)
            pTo->Release();
        if (FAILED(hr))
            return hr;
    }
    return S_OK;
}

HRESULT WINAPI D3DXLoadTextureFromSurface(IDirect3DDevice7*, IDirectDrawSurface7* pTexture, DWORD dwLevel,
                                          IDirectDrawSurface7* pSource, RECT* pSrcRect, RECT* pDestRect,
                                          DWORD dwFilter)
{
    D3DX_ENTRY_BEGIN
    if (!PixConv_IsStarted())
        return D3DXERR_D3DXNOTSTARTEDYET;
    if (!pTexture || !pSource)
        return D3DXERR_NULLPOINTER;
    if (dwLevel == D3DX_DEFAULT && !pSrcRect && !pDestRect) {
        DWORD nLevels = GetMipCount(pSource);
        if (nLevels > 1 && GetMipCount(pTexture) == nLevels)
            return CopyChain(pTexture, pSource, nLevels, dwFilter);
    }
    IDirectDrawSurface7* pLevel = NULL;
    HRESULT hr = D3DXGetNthMipmap(dwLevel, pTexture, &pLevel);
    if (FAILED(hr))
        return hr;
    TextureRecord sourceRecord, record;
    DDSURFACEDESC2 ddsdSource, ddsd;
    RECT rcSource, rcTarget;
    const RECT *pFrom = pSrcRect, *pTo = pDestRect;
    if (pSrcRect && GetTextureRecord(pSource, &sourceRecord) && GetDesc(pSource, &ddsdSource)) {
        ScaleRect(pSrcRect, &rcSource, ddsdSource, sourceRecord.dwWidth, sourceRecord.dwHeight);
        pFrom = &rcSource;
    }
    bool bRecord = GetTextureRecord(pTexture, &record);
    if (pDestRect && bRecord && GetDesc(pLevel, &ddsd)) {
        ScaleRect(pDestRect, &rcTarget, ddsd, AtLevel(record.dwWidth, dwLevel), AtLevel(record.dwHeight, dwLevel));
        pTo = &rcTarget;
    }
    hr = _d3dxBltSurface(pSource, pLevel, pFrom, pTo, dwFilter);
    FinishLevels(hr, pLevel, dwLevel, bRecord, record, dwFilter);
    pLevel->Release();
    return hr;
    D3DX_ENTRY_END
}
