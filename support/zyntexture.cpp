// Texture creation: the preference table of formats, the choice of a format a
// device offers, the size rules of the device, and the making of empty
// textures and cube maps with their record.
#include "zyntexture_local.h"

#include "zynexception.h"
#include "zynformat.h"
#include "zynpixconv.h"

#include <string.h>

// {684B06F3-EBAE-11D2-81F4-00C04F68F299}
const GUID g_guidTextureRecord = {0x684B06F3, 0xEBAE, 0x11D2, {0x81, 0xF4, 0x00, 0xC0, 0x4F, 0x68, 0xF2, 0x99}};

// What to take, best first, when the device lacks the wanted format; 0 ends a row.
enum {
    RGB8 = D3DX_SF_R8G8B8, ARGB8 = D3DX_SF_A8R8G8B8, XRGB8 = D3DX_SF_X8R8G8B8, R565 = D3DX_SF_R5G6B5,
    X555 = D3DX_SF_R5G5B5, PAL4 = D3DX_SF_PALETTE4, PAL8 = D3DX_SF_PALETTE8, A1555 = D3DX_SF_A1R5G5B5,
    X444 = D3DX_SF_X4R4G4B4, A444 = D3DX_SF_A4R4G4B4, L8 = D3DX_SF_L8, A8L8 = D3DX_SF_A8L8, U8V8 = D3DX_SF_U8V8,
    U5V5L6 = D3DX_SF_U5V5L6, U8V8L8 = D3DX_SF_U8V8L8, UYVY = D3DX_SF_UYVY, YUY2 = D3DX_SF_YUY2,
    DXT1 = D3DX_SF_DXT1, DXT3 = D3DX_SF_DXT3, DXT5 = D3DX_SF_DXT5, R332 = D3DX_SF_R3G3B2, A8 = D3DX_SF_A8
};
static const BYTE g_aPreference[D3DX_SF_TEXTUREMAX][D3DX_SF_TEXTUREMAX] = {
    {0},
    {RGB8, XRGB8, ARGB8, R565, X555, A1555, X444, A444, UYVY, YUY2, DXT1, DXT3, DXT5, R332},
    {ARGB8, DXT5, A444, DXT3, A1555, RGB8, XRGB8, R565, X555, X444, UYVY, YUY2, DXT1, R332},
    {XRGB8, RGB8, ARGB8, R565, X555, A1555, X444, A444, UYVY, YUY2, DXT1, DXT3, DXT5, R332},
    {R565, X555, A1555, RGB8, XRGB8, ARGB8, X444, A444, UYVY, YUY2, DXT1, DXT3, DXT5, R332},
    {X555, R565, A1555, RGB8, XRGB8, ARGB8, X444, A444, UYVY, YUY2, DXT1, DXT3, DXT5, R332},
    {PAL4, PAL8, R565, X555, A1555, RGB8, XRGB8, ARGB8, X444, A444, UYVY, YUY2, DXT1, DXT3, DXT5, R332},
    {PAL8, R565, X555, A1555, RGB8, XRGB8, ARGB8, X444, A444, UYVY, YUY2, DXT1, DXT3, DXT5, R332},
    {A1555, A444, DXT3, DXT5, ARGB8, RGB8, XRGB8, R565, X555, X444, UYVY, YUY2, DXT1, R332},
    {X444, A444, R565, X555, A1555, UYVY, YUY2, DXT1, DXT3, DXT5, RGB8, XRGB8, ARGB8, R332},
    {A444, ARGB8, A1555, DXT3, DXT5, R565, X555, X444, UYVY, YUY2, DXT1, RGB8, XRGB8, R332},
    {L8, A8L8},
    {A8L8, L8},
    {U8V8, U8V8L8, U5V5L6},
    {U5V5L6, U8V8L8, U8V8},
    {U8V8L8, U5V5L6, U8V8},
    {UYVY, YUY2, DXT1, R565, X555, A1555, RGB8, XRGB8, ARGB8, DXT3, DXT5, X444, A444, R332},
    {UYVY, YUY2, DXT1, R565, X555, A1555, RGB8, XRGB8, ARGB8, DXT3, DXT5, X444, A444, R332},
    {DXT1, DXT3, DXT5, UYVY, YUY2, R565, X555, A1555, X444, A444, RGB8, XRGB8, ARGB8, R332},
    {DXT3, DXT5, A444, ARGB8, A1555, DXT1, UYVY, YUY2, RGB8, XRGB8, R565, X555, X444, R332},
    {DXT5, DXT3, A444, ARGB8, A1555, DXT1, UYVY, YUY2, RGB8, XRGB8, R565, X555, X444, R332},
    {R332, X444, A444, A1555, UYVY, YUY2, DXT1, R565, X555, RGB8, XRGB8, ARGB8, DXT3, DXT5},
    {A8, ARGB8, A444, A1555, DXT5, DXT3},
};

struct ClosestSearch {
    const BYTE* pRow;
    int nBestPlace;
    D3DX_SURFACEFORMAT nBest;
    bool bFound;
};

static HRESULT CALLBACK RankFormat(DDPIXELFORMAT* pddpf, void* pContext)
{
    ClosestSearch* pSearch = (ClosestSearch*)pContext;
    if (pddpf->dwFlags & 0x1838)   // palette-indexed
        return D3DENUMRET_OK;
    D3DX_SURFACEFORMAT nCode = D3DXMakeSurfaceFormat(pddpf);
    int nPlace = D3DX_SF_TEXTUREMAX;
    for (int i = 0; i < D3DX_SF_TEXTUREMAX; i++) {
        if (pSearch->pRow[i] == (BYTE)nCode) {
            nPlace = i;
            break;
        }
    }
    if (!pSearch->bFound || nPlace < pSearch->nBestPlace) {
        pSearch->bFound = true;
        pSearch->nBestPlace = nPlace;
        pSearch->nBest = nCode;
    }
    return D3DENUMRET_OK;
}

static HRESULT FindClosestFormat(IDirect3DDevice7* pDevice, D3DX_SURFACEFORMAT nWanted, D3DX_SURFACEFORMAT* pResult)
{
    ClosestSearch search = {g_aPreference[(unsigned)nWanted < D3DX_SF_TEXTUREMAX ? nWanted : 0], 0,
                            D3DX_SF_UNKNOWN, false};
    HRESULT hr = pDevice->EnumTextureFormats(RankFormat, &search);
    if (FAILED(hr))
        return hr;
    if (!search.bFound)
        return D3DXERR_NOMATCHFOUND;
    *pResult = search.nBest;
    return S_OK;
}

// The DirectDraw object behind a device, with a reference for the caller.
static IDirectDraw7* GetDirectDraw(IDirect3DDevice7* pDevice)
{
    IDirect3D7* pD3D = NULL;
    if (FAILED(pDevice->GetDirect3D(&pD3D)))
        D3DX_THROW(D3DXERR_NODIRECT3DAVAILABLE, "no Direct3D behind the device");
    IDirectDraw7* pDD = NULL;
    HRESULT hr = pD3D->QueryInterface(IID_IDirectDraw7, (void**)&pDD);
    pD3D->Release();
    if (FAILED(hr))
        D3DX_THROW(hr, "no DirectDraw behind the device");
    return pDD;
}

// Releases a COM reference when it leaves the scope, also when an exception passes.
template <class T> struct ComHolder {
    T* p;
    explicit ComHolder(T* pInit = NULL) : p(pInit) {}
    ~ComHolder()
    {
        if (p)
            p->Release();
    }
};

enum DeviceKind { DEVICE_UNKNOWN, DEVICE_SOFTWARE, DEVICE_HARDWARE };

// The device's caps, and whether it is a HAL or T&L HAL device (DEVICE_UNKNOWN when GetCaps fails).
static DeviceKind GetDeviceKind(IDirect3DDevice7* pDevice, D3DDEVICEDESC7* pDesc)
{
    memset(pDesc, 0, sizeof(*pDesc));
    if (FAILED(pDevice->GetCaps(pDesc)))
        return DEVICE_UNKNOWN;
    bool bHardware = pDesc->deviceGUID == IID_IDirect3DHALDevice || pDesc->deviceGUID == IID_IDirect3DTnLHalDevice;
    return bHardware ? DEVICE_HARDWARE : DEVICE_SOFTWARE;
}

// Smallest power of two that holds nWanted, or the largest within nMax.
static DWORD PowerOfTwo(DWORD nWanted, DWORD nMax)
{
    DWORD n = 1;
    while (n * 2 <= nMax && n < nWanted)
        n *= 2;
    return n;
}

static void CheckRequirements(IDirect3DDevice7* pDevice, DWORD* pFlags, DWORD* pWidth, DWORD* pHeight,
                              D3DX_SURFACEFORMAT* pFormat)
{
    if (!pDevice)
        D3DX_THROW(D3DXERR_NULLPOINTER, "no device");
    ComHolder<IDirectDraw7> dd(GetDirectDraw(pDevice));
    DWORD dwFlags = pFlags ? *pFlags : 0, nWidth = pWidth ? *pWidth : D3DX_DEFAULT;
    DWORD nHeight = pHeight ? *pHeight : D3DX_DEFAULT;
    D3DX_SURFACEFORMAT nFormat = pFormat ? *pFormat : D3DX_SF_UNKNOWN;
    if (nWidth == 0 || nHeight == 0)
        D3DX_THROW(D3DXERR_INVALIDPARAMETER, "zero texture size");
    if ((DWORD)nFormat == D3DX_DEFAULT)
        nFormat = D3DX_SF_UNKNOWN;
    D3DX_CHECK(FindClosestFormat(pDevice, nFormat, &nFormat), "no texture format");

    DWORD nMaxWidth = 1024, nMaxHeight = 1024, nMinWidth = 1, nMinHeight = 1;
    bool bPow2 = true, bSquare = false;
    D3DDEVICEDESC7 desc;
    if (GetDeviceKind(pDevice, &desc) == DEVICE_HARDWARE) {
        DDCAPS caps;
        memset(&caps, 0, sizeof(caps));
        caps.dwSize = sizeof(caps);
        bool bNonLocal = true;
        if (SUCCEEDED(dd.p->GetCaps(&caps, NULL))) {
            if (!(dwFlags & D3DX_TEXTURE_NOMIPMAP) && !(caps.ddsCaps.dwCaps & DDSCAPS_MIPMAP))
                dwFlags |= D3DX_TEXTURE_NOMIPMAP;
            bNonLocal = (caps.dwCaps2 & DDCAPS2_NONLOCALVIDMEM) != 0;
        }
        DWORD dwTexCaps = desc.dpcTriCaps.dwTextureCaps;
        if (!(dwTexCaps & (D3DPTEXTURECAPS_POW2 | D3DPTEXTURECAPS_NONPOW2CONDITIONAL)) &&
            (dwFlags & D3DX_TEXTURE_NOMIPMAP))
            bPow2 = false;
        bSquare = (dwTexCaps & D3DPTEXTURECAPS_SQUAREONLY) != 0;
        nMaxWidth = nMaxHeight = 256;
        nMinWidth = desc.dwMinTextureWidth ? desc.dwMinTextureWidth : nMinWidth;
        nMinHeight = desc.dwMinTextureHeight ? desc.dwMinTextureHeight : nMinHeight;
        nMaxWidth = desc.dwMaxTextureWidth ? desc.dwMaxTextureWidth : nMaxWidth;
        nMaxHeight = desc.dwMaxTextureHeight ? desc.dwMaxTextureHeight : nMaxHeight;
        DDSURFACEDESC2 mode;
        memset(&mode, 0, sizeof(mode));
        mode.dwSize = sizeof(mode);
        if (!bNonLocal && SUCCEEDED(dd.p->GetDisplayMode(&mode))) {
            nMaxWidth = mode.dwWidth < nMaxWidth ? mode.dwWidth : nMaxWidth;
            if (bSquare)
                nMaxHeight = mode.dwWidth < nMaxHeight ? mode.dwWidth : nMaxHeight;
        }
    }
    if (bPow2) {
        nWidth = PowerOfTwo(nWidth, nMaxWidth);
        nHeight = PowerOfTwo(nHeight, nMaxHeight);
    }
    if (bSquare)
        nWidth = nHeight = nWidth > nHeight ? nWidth : nHeight;
    nWidth = nWidth > nMaxWidth ? nMaxWidth : nWidth;
    nHeight = nHeight > nMaxHeight ? nMaxHeight : nHeight;
    nWidth = nWidth < nMinWidth ? nMinWidth : nWidth;
    nHeight = nHeight < nMinHeight ? nMinHeight : nHeight;
    if (pWidth)
        *pWidth = nWidth;
    if (pHeight)
        *pHeight = nHeight;
    if (pFlags)
        *pFlags = dwFlags;
    if (pFormat)
        *pFormat = nFormat;
}

HRESULT WINAPI D3DXCheckTextureRequirements(IDirect3DDevice7* pDevice, DWORD* pFlags, DWORD* pWidth,
                                            DWORD* pHeight, D3DX_SURFACEFORMAT* pFormat)
{
    D3DX_ENTRY_BEGIN
    CheckRequirements(pDevice, pFlags, pWidth, pHeight, pFormat);
    return S_OK;
    D3DX_ENTRY_END
}

// Levels of a chain from this size: halving the smaller side down to zero.
static DWORD LevelsOf(DWORD nWidth, DWORD nHeight)
{
    DWORD n = 0;
    for (DWORD nSide = nWidth < nHeight ? nWidth : nHeight; nSide; nSide >>= 1)
        n++;
    return n;
}

// The common body of D3DXCreateTexture and D3DXCreateCubeMapTexture; dwFaces 0 for a flat texture.
static HRESULT CreateTextureSurface(IDirect3DDevice7* pDevice, DWORD* pFlags, DWORD dwFaces, DWORD dwColorEmptyFaces,
                                    DWORD* pWidth, DWORD* pHeight, D3DX_SURFACEFORMAT* pFormat,
                                    IDirectDrawSurface7** ppTexture, DWORD* pNumMipMaps)
{
    if (!PixConv_IsStarted())
        return D3DXERR_D3DXNOTSTARTEDYET;
    if (!pFormat || !pDevice)
        return D3DXERR_NULLPOINTER;
    ComHolder<IDirectDraw7> dd(GetDirectDraw(pDevice));
    DWORD dwLocalFlags = 0;
    if (!pFlags)
        pFlags = &dwLocalFlags;
    if (pNumMipMaps)
        *pNumMipMaps = 0;
    if (ppTexture)
        *ppTexture = NULL;
    if (!ppTexture || !pWidth || !pHeight)
        return D3DXERR_NULLPOINTER;
    if (*pWidth == 0 || *pHeight == 0 || *pWidth == D3DX_DEFAULT || *pHeight == D3DX_DEFAULT)
        return D3DXERR_INVALIDPARAMETER;
    TextureRecord record = {sizeof(TextureRecord), *pFlags, *pWidth, *pHeight, LevelsOf(*pWidth, *pHeight)};

    CheckRequirements(pDevice, pFlags, pWidth, pHeight, pFormat);

    DDSURFACEDESC2 ddsd;
    memset(&ddsd, 0, sizeof(ddsd));
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH | DDSD_PIXELFORMAT | DDSD_TEXTURESTAGE;
    ddsd.dwWidth = *pWidth;
    ddsd.dwHeight = *pHeight;
    ddsd.dwTextureStage = *pFlags & 7;
    ddsd.ddsCaps.dwCaps = DDSCAPS_TEXTURE;
    D3DX_CHECK(D3DXMakeDDPixelFormat(*pFormat, &ddsd.ddpfPixelFormat), "no pixel format for the code");
    D3DDEVICEDESC7 desc;
    DeviceKind nKind = GetDeviceKind(pDevice, &desc);
    if (dwFaces) {
        if (!(desc.dpcTriCaps.dwTextureCaps & D3DPTEXTURECAPS_CUBEMAP))
            return D3DERR_TEXTURE_NO_SUPPORT;
        ddsd.ddsCaps.dwCaps |= DDSCAPS_COMPLEX;
        ddsd.ddsCaps.dwCaps2 = dwFaces | DDSCAPS2_CUBEMAP;
        ddsd.ddckCKDestOverlay.dwColorSpaceLowValue = dwColorEmptyFaces;
    }
    if (nKind == DEVICE_HARDWARE)
        ddsd.ddsCaps.dwCaps2 |= DDSCAPS2_TEXTUREMANAGE;
    else if (nKind == DEVICE_SOFTWARE)
        ddsd.ddsCaps.dwCaps |= DDSCAPS_SYSTEMMEMORY;
    if (!(*pFlags & D3DX_TEXTURE_NOMIPMAP))
        ddsd.ddsCaps.dwCaps |= DDSCAPS_MIPMAP | DDSCAPS_COMPLEX;
    IDirectDrawSurface7* pSurface = NULL;
    D3DX_CHECK(dd.p->CreateSurface(&ddsd, &pSurface, NULL), "CreateSurface of the texture");
    if (*pFlags & D3DX_TEXTURE_NOMIPMAP)
        record.dwMipCount = 0;
    HRESULT hr = pSurface->SetPrivateData(g_guidTextureRecord, &record, sizeof(record), 0);
    if (FAILED(hr)) {
        pSurface->Release();
        return hr;
    }
    *ppTexture = pSurface;
    return S_OK;
}

HRESULT WINAPI D3DXCreateTexture(IDirect3DDevice7* pDevice, DWORD* pFlags, DWORD* pWidth, DWORD* pHeight,
                                 D3DX_SURFACEFORMAT* pFormat, IDirectDrawPalette*, IDirectDrawSurface7** ppTexture,
                                 DWORD* pNumMipMaps)
{
    D3DX_ENTRY_BEGIN
    return CreateTextureSurface(pDevice, pFlags, 0, 0, pWidth, pHeight, pFormat, ppTexture, pNumMipMaps);
    D3DX_ENTRY_END
}

HRESULT WINAPI D3DXCreateCubeMapTexture(IDirect3DDevice7* pDevice, DWORD* pFlags, DWORD dwFaces,
                                        DWORD dwColorEmptyFaces, DWORD* pWidth, DWORD* pHeight,
                                        D3DX_SURFACEFORMAT* pFormat, IDirectDrawPalette*,
                                        IDirectDrawSurface7** ppTexture, DWORD* pNumMipMaps)
{
    D3DX_ENTRY_BEGIN
    if (dwFaces == 0 || dwFaces == D3DX_DEFAULT)
        dwFaces = DDSCAPS2_CUBEMAP_ALLFACES;
    if (dwFaces & ~(DWORD)DDSCAPS2_CUBEMAP_ALLFACES)
        return D3DXERR_INVALIDPARAMETER;
    return CreateTextureSurface(pDevice, pFlags, dwFaces, dwColorEmptyFaces, pWidth, pHeight, pFormat, ppTexture,
                                pNumMipMaps);
    D3DX_ENTRY_END
}
