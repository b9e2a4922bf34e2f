// Capabilities in the device list: the software rasterizers' caps and formats,
// and each hardware device's caps and formats at a display mode, probed the
// first time they are needed and kept in the mode's record.
#include "zyndevlist.h"
#include "zynformat.h"

#include <new>
#include <stdio.h>

// --- surface format lists ---

static DWORD CountBits(DWORD dw)
{
    DWORD n = 0;
    for (; dw; dw &= dw - 1)
        n++;
    return n;
}

DWORD D3duDepthBits(const DDPIXELFORMAT& ddpf) { return CountBits(ddpf.dwZBitMask); }

DWORD D3duStencilBits(const DDPIXELFORMAT& ddpf)
{
    return (ddpf.dwFlags & DDPF_STENCILBUFFER) ? ddpf.dwStencilBitDepth : 0;
}

// What the format can be used for, without the render-target test.
static DWORD FormatUsage(D3DX_SURFACEFORMAT format, const DDPIXELFORMAT& ddpf)
{
    const DWORD n = (DWORD)format;
    DWORD dwUsage = 0;
    if (n != 0) {
        if (n >= 0x100 && n <= 0x105)
            dwUsage |= D3DU_FORMAT_DEPTH;
        if (n >= 0x102 && n <= 0x105)
            dwUsage |= D3DU_FORMAT_STENCIL;
        if (n == 1 || n == 2 || (n >= 4 && n <= 10) || (n >= 0x12 && n <= 0x15))
            dwUsage |= D3DU_FORMAT_COLOR;
        if (n >= 0x0D && n <= 0x0F)
            dwUsage |= D3DU_FORMAT_BUMP;
        if (n == 0x0B || n == 0x0E || n == 0x0F)
            dwUsage |= D3DU_FORMAT_LUMINANCE;
        return dwUsage;
    }
    const DWORD dwDepthFlags = DDPF_ZBUFFER | DDPF_ZPIXELS | DDPF_STENCILBUFFER;
    if ((ddpf.dwFlags & (DDPF_ZBUFFER | DDPF_ZPIXELS)) && D3duDepthBits(ddpf))
        dwUsage |= D3DU_FORMAT_DEPTH;
    if ((ddpf.dwFlags & DDPF_STENCILBUFFER) && ddpf.dwStencilBitDepth)
        dwUsage |= D3DU_FORMAT_STENCIL;
    if (!(ddpf.dwFlags & dwDepthFlags))
        dwUsage |= D3DU_FORMAT_COLOR;
    if (ddpf.dwFlags & (DDPF_BUMPLUMINANCE | DDPF_BUMPDUDV))
        dwUsage |= D3DU_FORMAT_BUMP;
    if (ddpf.dwFlags & (DDPF_LUMINANCE | DDPF_BUMPLUMINANCE))
        dwUsage |= D3DU_FORMAT_LUMINANCE;
    return dwUsage;
}

static bool TriedAsRenderTarget(D3DX_SURFACEFORMAT format, int nLevel)
{
    const DWORD n = (DWORD)format;
    if (n == 7 || n == 0x15)
        return nLevel != -2 && nLevel != -3;
    return (n >= 1 && n <= 5) || (n >= 8 && n <= 10);
}

// Whether a device of the rasterizer can be made on a 64 x 64 surface of the format.
static bool CanRenderTo(IDirectDraw7* pDD, IDirect3D7* pD3D, const GUID& guid, const DDPIXELFORMAT& ddpf, DWORD dwMemory)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    ddsd.dwWidth = ddsd.dwHeight = 64;
    ddsd.ddsCaps.dwCaps = DDSCAPS_3DDEVICE | DDSCAPS_TEXTURE | dwMemory;
    ddsd.ddpfPixelFormat = ddpf;
    IDirectDrawSurface7* pSurface = NULL;
    if (FAILED(pDD->CreateSurface(&ddsd, &pSurface, NULL)))
        return false;
    IDirect3DDevice7* pDevice = NULL;
    bool bOK = SUCCEEDED(pD3D->CreateDevice(guid, pSurface, &pDevice));
    if (pDevice)
        pDevice->Release();
    pSurface->Release();
    return bOK;
}

struct FormatEnumContext {
    CSurfaceFormatList* pList;
    bool bOutOfMemory;
};

static HRESULT WINAPI CollectFormat(LPDDPIXELFORMAT pddpf, LPVOID pContext)
{
    FormatEnumContext* pCtx = (FormatEnumContext*)pContext;
    CSurfaceFormat* pFormat = new (std::nothrow) CSurfaceFormat;
    if (!pFormat) {
        pCtx->bOutOfMemory = true;
        return D3DENUMRET_CANCEL;
    }
    pFormat->m_ddpf = *pddpf;
    pFormat->m_Format = D3DXMakeSurfaceFormat(pddpf);
    pFormat->m_dwUsage = FormatUsage(pFormat->m_Format, *pddpf);
    pCtx->pList->AddSorted(pFormat);  // Compare is false: kept in the order offered
    return D3DENUMRET_OK;
}

// Fills pList with the Z buffer and texture formats of a rasterizer, through a
// device made on pSurface; then marks the formats it can render to.
static void GenerateSurfaceFormatList(IDirectDraw7* pDD, IDirect3D7* pD3D, IDirectDrawSurface7* pSurface,
                                      const GUID& guid, int nLevel, DWORD dwMemory, CSurfaceFormatList* pList,
                                      const char* szFailure)
{
    IDirect3DDevice7* pDevice = NULL;
    D3DX_CHECK(pD3D->CreateDevice(guid, pSurface, &pDevice), szFailure);
    FormatEnumContext ctx = {pList, false};
    pD3D->EnumZBufferFormats(guid, CollectFormat, &ctx);
    pDevice->EnumTextureFormats(CollectFormat, &ctx);
    pDevice->Release();
    if (ctx.bOutOfMemory)
        D3DX_THROW(D3DXERR_NOMEMORY, "CD3duDeviceNode::GetSurfaceFormatList - Ran out of memory.");
    if (pList->m_nCount == 0)
        D3DX_THROW(D3DXERR_ENUMFORMATSFAILED, "CHelInfo::GenerateSurfaceFormatList - ZBuffer format enumeration failed.");
    for (CSurfaceFormat* p = pList->m_pHead; p; p = p->m_pNext)
        if (TriedAsRenderTarget(p->m_Format, nLevel) && CanRenderTo(pDD, pD3D, guid, p->m_ddpf, dwMemory))
            p->m_dwUsage |= D3DU_FORMAT_RENDERTARGET;
}

static IDirectDrawSurface7* MakeProbeSurface(IDirectDraw7* pDD, DWORD dwCaps, const DDPIXELFORMAT* pddpf)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    ddsd.dwWidth = ddsd.dwHeight = 64;
    ddsd.ddsCaps.dwCaps = dwCaps;
    if (pddpf) {
        ddsd.dwFlags |= DDSD_PIXELFORMAT;
        ddsd.ddpfPixelFormat = *pddpf;
    }
    IDirectDrawSurface7* pSurface = NULL;
    if (FAILED(pDD->CreateSurface(&ddsd, &pSurface, NULL)))
        return NULL;
    return pSurface;
}

// --- software rasterizers ---

CHelInfo::CHelInfo() : m_bRGB(0), m_bRef(0), m_bNull(0), m_pRGB(NULL), m_pRef(NULL), m_pNull(NULL)
{
    memset(&m_ddHelCaps, 0, sizeof(m_ddHelCaps));
}

CHelInfo::~CHelInfo()
{
    delete m_pRGB;
    delete m_pRef;
    delete m_pNull;
}

CHelInfoDevice* CHelInfo::ForLevel(int nLevel)
{
    switch (nLevel) {
    case -2: return m_bNull ? m_pNull : NULL;
    case -3: return m_bRef ? m_pRef : NULL;
    case -4: return m_bRGB ? m_pRGB : NULL;
    default: return NULL;
    }
}

struct HelRasterizer {
    int CHelInfo::*pbExists;
    CHelInfoDevice* CHelInfo::*ppDevice;
    const GUID* pGuid;
    int nLevel;
    const char* szDefaultName;
};

static const HelRasterizer s_HelRasterizers[] = {
    {&CHelInfo::m_bRGB, &CHelInfo::m_pRGB, &IID_IDirect3DRGBDevice, -4, "Microsoft Direct3D RGB Software Emulation"},
    {&CHelInfo::m_bRef, &CHelInfo::m_pRef, &IID_IDirect3DRefDevice, -3, "Microsoft Direct3D Reference Rasterizer"},
    {&CHelInfo::m_bNull, &CHelInfo::m_pNull, &IID_IDirect3DNullDevice, -2, "Microsoft Direct3D Null Rasterizer"},
};

static void ProbeHelRasterizers(CHelInfo* pHel, IDirectDraw7* pDD, IDirect3D7* pD3D)
{
    DDPIXELFORMAT ddpf;
    D3DXMakeDDPixelFormat(D3DX_SF_A8R8G8B8, &ddpf);
    IDirectDrawSurface7* pSurface =
        MakeProbeSurface(pDD, DDSCAPS_OFFSCREENPLAIN | DDSCAPS_SYSTEMMEMORY | DDSCAPS_3DDEVICE, &ddpf);
    if (!pSurface)
        D3DX_THROW(E_FAIL, "CHelInfo::Initialize - Could not get software rasterizer info.");
    pHel->m_ddHelCaps.dwSize = sizeof(DDCAPS);
    pDD->GetCaps(NULL, &pHel->m_ddHelCaps);

    try {
        for (const HelRasterizer& r : s_HelRasterizers) {
            if (!(pHel->*r.pbExists) || pHel->*r.ppDevice)
                continue;
            IDirect3DDevice7* pDevice = NULL;
            if (FAILED(pD3D->CreateDevice(*r.pGuid, pSurface, &pDevice))) {
                pHel->*r.pbExists = 0;
                continue;
            }
            CHelInfoDevice* pRecord = new (std::nothrow) CHelInfoDevice;
            if (!pRecord) {
                pDevice->Release();
                D3DX_THROW(D3DXERR_NOMEMORY, "CHelInfo::Initialize - Out of memory");
            }
            pRecord->m_szName[0] = 0;
            pRecord->m_bFormats = 0;
            memset(&pRecord->m_Desc, 0, sizeof(pRecord->m_Desc));
            pHel->*r.ppDevice = pRecord;
            pDevice->GetCaps(&pRecord->m_Desc);
            pDevice->Release();
            GenerateSurfaceFormatList(pDD, pD3D, pSurface, *r.pGuid, r.nLevel, DDSCAPS_SYSTEMMEMORY,
                                      &pRecord->m_Formats,
                                      "CHelInfo::GenerateSurfaceFormatList - Could not get software rasterizer info.");
            pRecord->m_bFormats = 1;
        }
    } catch (...) {
        pSurface->Release();
        throw;
    }
    pSurface->Release();
}

void CHelInfo::Initialize()
{
    IDirectDraw7* pDD = NULL;
    IDirect3D7* pD3D = NULL;
    HRESULT hr = DirectDrawCreateEx(NULL, (void**)&pDD, IID_IDirectDraw7, NULL);
    if (FAILED(hr))
        D3DX_THROW(hr, "CHelInfo::Initialize - Could not get software rasterizer info.");
    try {
        D3DX_CHECK(pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL), "CHelInfo::Initialize - Could not get software rasterizer info.");
        D3DX_CHECK(pDD->QueryInterface(IID_IDirect3D7, (void**)&pD3D),
                   "CHelInfo::Initialize - Could not get software rasterizer info.");
        ProbeHelRasterizers(this, pDD, pD3D);
    } catch (...) {
        if (pD3D)
            pD3D->Release();
        pDD->Release();
        throw;
    }
    pD3D->Release();
    pDD->Release();
    for (const HelRasterizer& r : s_HelRasterizers) {
        CHelInfoDevice* pRecord = this->*r.ppDevice;
        if (pRecord && !pRecord->m_szName[0])
            snprintf(pRecord->m_szName, sizeof(pRecord->m_szName), "%s", r.szDefaultName);
    }
}

// --- hardware caps at a display mode ---

// Probes a mode of the node's device: its DirectDraw caps, and the caps and
// formats of the hardware rasterizers. A mode other than the current one is
// switched to for the probe on a window of our own, and switched back.
static void ObtainCapsAtDisplayMode(CD3duDeviceNode* pNode, CVideoMode* pWanted)
{
    CDDrawDeviceNode* pDDNode = pNode->m_pDDNode;
    IDirectDraw7* pDD = pDDNode->m_pDD;
    CVideoMode current(0, 0, 0);
    pDDNode->GetCurrentVideoMode(&current);
    const bool bSwitch = pWanted->m_nWidth != current.m_nWidth || pWanted->m_nHeight != current.m_nHeight ||
                         pWanted->m_nBits != current.m_nBits;
    CVideoMode* pMode = pDDNode->m_Modes.Find(pWanted->m_nWidth, pWanted->m_nHeight, pWanted->m_nBits);
    if (!pMode || pMode->m_bProbed)
        return;
    pMode->m_bProbed = 1;

    HWND hwndDummy = NULL;
    bool bTookExclusive = false;
    if (bSwitch) {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = DefWindowProcA;
        wc.hInstance = GetModuleHandleA(NULL);
        wc.lpszClassName = "D3DX Dummy";
        if (!RegisterClassA(&wc) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS)
            D3DX_THROW(D3DXERR_FAILEDGETCAPS, "CD3duGlobals::ObtainCapsAtDisplayMode - Error while trying to obtain caps.");
        hwndDummy = CreateWindowExA(0, "D3DX Dummy", "D3DX Dummy", WS_OVERLAPPEDWINDOW, 0, 0, 64, 64, NULL, NULL,
                                    wc.hInstance, NULL);
        if (!hwndDummy) {
            UnregisterClassA("D3DX Dummy", wc.hInstance);
            D3DX_THROW(D3DXERR_FAILEDGETCAPS, "CD3duGlobals::ObtainCapsAtDisplayMode - Error while trying to obtain caps.");
        }
        if (SUCCEEDED(pDD->SetCooperativeLevel(hwndDummy, DDSCL_EXCLUSIVE | DDSCL_FULLSCREEN | DDSCL_ALLOWMODEX)))
            bTookExclusive = true;
        pDD->SetDisplayMode(pMode->m_nWidth, pMode->m_nHeight, pMode->m_nBits, 0, 0);
    } else if (!pDDNode->m_dwCoopFlags) {
        pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL);
    }

    if (!pMode->m_pDDCaps)
        pMode->m_pDDCaps = new (std::nothrow) DDCAPS;
    if (pMode->m_pDDCaps) {
        memset(pMode->m_pDDCaps, 0, sizeof(DDCAPS));
        pMode->m_pDDCaps->dwSize = sizeof(DDCAPS);
        if (SUCCEEDED(pDD->GetCaps(pMode->m_pDDCaps, NULL)))
            pMode->m_bHave2D = 1;
    }

    IDirectDrawSurface7* pSurface =
        MakeProbeSurface(pDD, DDSCAPS_OFFSCREENPLAIN | DDSCAPS_VIDEOMEMORY | DDSCAPS_3DDEVICE, NULL);
    if (!pSurface)
        pSurface = MakeProbeSurface(pDD, DDSCAPS_VIDEOMEMORY | DDSCAPS_3DDEVICE, NULL);
    if (pSurface) {
        struct {
            int bHas;
            const GUID* pGuid;
            int nLevel;
            D3DDEVICEDESC7** ppDesc;
            CSurfaceFormatList* pFormats;
            int* pbHaveDesc;
            int* pbHaveFormats;
        } kinds[] = {
            {pDDNode->m_bHAL, &IID_IDirect3DHALDevice, -5, &pMode->m_pHALDesc, &pMode->m_HALFormats,
             &pMode->m_bHave3D, &pMode->m_bHaveFormats},
            {pDDNode->m_bTnL, &IID_IDirect3DTnLHalDevice, -6, &pMode->m_pTnLDesc, &pMode->m_TnLFormats,
             &pMode->m_bHaveTnL, &pMode->m_bHaveTnLFormats},
        };
        for (auto& k : kinds) {
            if (!k.bHas)
                continue;
            IDirect3DDevice7* pDevice = NULL;
            if (FAILED(pDDNode->m_pD3D->CreateDevice(*k.pGuid, pSurface, &pDevice)))
                continue;  // this rasterizer stays unknown at this mode
            D3DDEVICEDESC7* pDesc = new (std::nothrow) D3DDEVICEDESC7;
            if (pDesc && SUCCEEDED(pDevice->GetCaps(pDesc))) {
                *k.ppDesc = pDesc;
                *k.pbHaveDesc = 1;
            } else {
                delete pDesc;
            }
            pDevice->Release();
            try {
                GenerateSurfaceFormatList(pDD, pDDNode->m_pD3D, pSurface, *k.pGuid, k.nLevel, DDSCAPS_VIDEOMEMORY,
                                          k.pFormats, "CD3duDeviceNode::GetSurfaceFormatList - Ran out of memory.");
                *k.pbHaveFormats = 1;
            } catch (const CD3DXException&) {
                k.pFormats->Clear();
            }
        }
        pSurface->Release();
    }

    if (bSwitch) {
        pDD->RestoreDisplayMode();
        if (bTookExclusive)
            pDD->SetCooperativeLevel(hwndDummy, DDSCL_NORMAL);
        DestroyWindow(hwndDummy);
        UnregisterClassA("D3DX Dummy", GetModuleHandleA(NULL));
    }
}

static void CopyFormatList(CSurfaceFormatList* pTo, const CSurfaceFormatList* pFrom)
{
    pTo->Clear();
    for (CSurfaceFormat* p = pFrom->m_pHead; p; p = p->m_pNext) {
        CSurfaceFormat* pCopy = new (std::nothrow) CSurfaceFormat;
        if (!pCopy)
            D3DX_THROW(D3DXERR_NOMEMORY, "CD3duDeviceNode::RefreshCaps - Ran out of memory.");
        *pCopy = *p;
        pTo->AddSorted(pCopy);
    }
}

void CD3duDeviceNode::GetCapsAtVideoMode(CVideoMode* pMode, D3DDEVICEDESC7** ppDesc, DDCAPS** ppDDCaps,
                                         DDCAPS** ppHelCaps, CSurfaceFormatList** ppFormats)
{
    CVideoMode current(0, 0, 0);
    if (!pMode) {
        m_pDDNode->GetCurrentVideoMode(&current);
        pMode = &current;
    }
    if (pMode->m_nBits < 16 && (ppDesc || ppFormats))
        D3DX_THROW(D3DXERR_COLORDEPTHTOOLOW, "CD3duDeviceNode::RefreshCaps - D3DX only supports 16 bit or higher color depths.");

    CHelInfo* pHel = g_pD3DXGlobals->m_pHelInfo;
    if (ppHelCaps)
        *ppHelCaps = &pHel->m_ddHelCaps;
    if (m_nHWLevel >= -4) {
        CHelInfoDevice* pDev = pHel->ForLevel(m_nHWLevel);
        if (!pDev)
            D3DX_THROW(D3DXERR_CAPSNOTSUPPORTED, "CD3duDeviceNode::GetCapsAtVideoMode - Could not obtain caps at a display mode.");
        if (ppDesc)
            *ppDesc = &pDev->m_Desc;
        if (ppFormats)
            *ppFormats = &pDev->m_Formats;
        if (!ppDDCaps)
            return;
    }

    CVideoMode* pRecord = m_pDDNode->m_Modes.Find(pMode->m_nWidth, pMode->m_nHeight, pMode->m_nBits);
    if (!pRecord)
        D3DX_THROW(D3DXERR_CAPSNOTSUPPORTED, "CD3duDeviceNode::GetCapsAtVideoMode - Couldn't obtain info for this display mode.");
    if (!pRecord->m_bProbed)
        ObtainCapsAtDisplayMode(this, pRecord);
    if (ppDDCaps)
        *ppDDCaps = pRecord->m_bHave2D ? pRecord->m_pDDCaps : NULL;
    if (m_nHWLevel >= -4)
        return;

    const bool bTnL = m_nHWLevel == -6;
    D3DDEVICEDESC7* pDesc = bTnL ? pRecord->m_pTnLDesc : pRecord->m_pHALDesc;
    const int bFormats = bTnL ? pRecord->m_bHaveTnLFormats : pRecord->m_bHaveFormats;
    if (!pDesc || !bFormats)
        D3DX_THROW(D3DXERR_CAPSNOTSUPPORTED, bTnL ? "CD3duDeviceNodet::GetCapsAtVideoMode - Could not obtain caps at a display mode."
                                                  : "CD3duDeviceNode::GetCapsAtVideoMode - Could not obtain caps at a display mode.");
    if (ppDesc)
        *ppDesc = pDesc;
    if (ppFormats)
        *ppFormats = bTnL ? &pRecord->m_TnLFormats : &pRecord->m_HALFormats;
}

void CD3duDeviceNode::RefreshCaps()
{
    D3DDEVICEDESC7* pDesc = NULL;
    DDCAPS* pDDCaps = NULL;
    DDCAPS* pHelCaps = NULL;
    CSurfaceFormatList* pFormats = NULL;
    GetCapsAtVideoMode(NULL, &pDesc, &pDDCaps, &pHelCaps, &pFormats);
    if (pDesc)
        m_Desc = *pDesc;
    if (pDDCaps)
        m_ddCaps = *pDDCaps;
    if (pHelCaps)
        m_ddHelCaps = *pHelCaps;
    if (pFormats)
        CopyFormatList(&m_Formats, pFormats);
}
