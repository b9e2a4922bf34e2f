// The DirectDraw device list, the flat list of device/rasterizer pairs that
// indices point into, and the globals that own them.
#include "zyndevlist.h"

#include <new>
#include <stdio.h>
#include <string.h>

CD3duGlobals* g_pD3DXGlobals;

static char* DupString(const char* sz)
{
    if (!sz)
        return NULL;
    size_t n = strlen(sz) + 1;
    char* p = new char[n];
    memcpy(p, sz, n);
    return p;
}

// --- refresh rates and video modes ---

void CRefreshRateList::AddRate(DWORD nRate)
{
    if (HasRate(nRate))
        return;
    CRefreshRate* p = new CRefreshRate;
    p->m_nRate = nRate;
    AddSorted(p);
}

bool CRefreshRateList::HasRate(DWORD nRate) const
{
    for (CRefreshRate* p = m_pHead; p; p = p->m_pNext)
        if (p->m_nRate == nRate)
            return true;
    return false;
}

CVideoMode::CVideoMode(DWORD nWidth, DWORD nHeight, DWORD nBits)
    : m_pNext(NULL), m_nWidth(nWidth), m_nHeight(nHeight), m_nBits(nBits), m_bProbed(0), m_bHave2D(0),
      m_bHave3D(0), m_bHaveFormats(0), m_bHaveTnL(0), m_bHaveTnLFormats(0), m_pDDCaps(NULL), m_pHALDesc(NULL),
      m_pTnLDesc(NULL)
{
}

CVideoMode::~CVideoMode()
{
    delete m_pDDCaps;
    delete m_pHALDesc;
    delete m_pTnLDesc;
}

bool CVideoModeList::Compare(const CVideoMode* a, const CVideoMode* b)
{
    if (a->m_nWidth != b->m_nWidth)
        return a->m_nWidth < b->m_nWidth;
    if (a->m_nHeight != b->m_nHeight)
        return a->m_nHeight < b->m_nHeight;
    return a->m_nBits < b->m_nBits;
}

CVideoMode* CVideoModeList::Find(DWORD nWidth, DWORD nHeight, DWORD nBits) const
{
    for (CVideoMode* p = m_pHead; p; p = p->m_pNext)
        if (p->m_nWidth == nWidth && p->m_nHeight == nHeight && p->m_nBits == nBits)
            return p;
    return NULL;
}

void CVideoModeList::AddVideoMode(DWORD nWidth, DWORD nHeight, DWORD nBits, DWORD nRefresh)
{
    CVideoMode* pMode = Find(nWidth, nHeight, nBits);
    if (!pMode) {
        pMode = new (std::nothrow) CVideoMode(nWidth, nHeight, nBits);
        if (!pMode)
            D3DX_THROW(D3DXERR_NOMEMORY, "CVideoModeList::AddVideoMode - No memory");
        AddSorted(pMode);
    }
    if (nRefresh)
        pMode->m_Rates.AddRate(nRefresh);
}

// --- one DirectDraw device ---

CDDrawDeviceNode::CDDrawDeviceNode()
    : m_pNext(NULL), m_bDesktop(0), m_pGuid(NULL), m_guidDevice(GUID_NULL), m_hMonitor(NULL), m_pDD(NULL),
      m_pD3D(NULL), m_pPrimary(NULL), m_nPrimaryBackBuffers(0), m_bPrimary3D(0), m_nExclusive(0),
      m_dwCoopFlags(0), m_hwndCoop(NULL), m_hwndCoopFocus(NULL), m_pszDescription(NULL), m_pszTnLName(NULL),
      m_pszHALName(NULL), m_bHAL(0), m_bTnL(0), m_bEnumOK(0)
{
}

CDDrawDeviceNode::~CDDrawDeviceNode()
{
    if (m_pPrimary)
        m_pPrimary->Release();
    if (m_pD3D)
        m_pD3D->Release();
    if (m_pDD)
        m_pDD->Release();
    delete m_pGuid;
    delete[] m_pszDescription;
    delete[] m_pszTnLName;
    delete[] m_pszHALName;
}

void CDDrawDeviceNode::SetCooperativeLevel(HWND hwnd, DWORD dwFlags, HWND hwndFocus, int bRelease)
{
    if (!(dwFlags & DDSCL_EXCLUSIVE)) {
        if (bRelease && m_nExclusive > 0)
            m_nExclusive--;
        if (m_nExclusive != 0)
            return;  // another context holds the device at full screen
    } else if (!bRelease) {
        m_nExclusive++;
    }
    // Every system this runs on takes a separate focus window (NT 5 and later).
    if (hwndFocus) {
        if (FAILED(m_pDD->SetCooperativeLevel(hwndFocus, DDSCL_SETFOCUSWINDOW)))
            D3DX_THROW(E_FAIL, "CDDrawDeviceNode - SetCooperativeLevel failed to set focus window.");
        if (hwnd)
            dwFlags |= DDSCL_SETDEVICEWINDOW;
    }
    D3DX_CHECK(m_pDD->SetCooperativeLevel(hwnd, dwFlags), "CDDrawDeviceNode - SetCooperativeLevel failed");
    m_dwCoopFlags = dwFlags;
    m_hwndCoop = hwnd;
    m_hwndCoopFocus = hwndFocus;
}

void CDDrawDeviceNode::SetDisplayMode(DWORD nWidth, DWORD nHeight, DWORD nBits, DWORD nRefresh, DWORD dwFlags)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    if (SUCCEEDED(m_pDD->GetDisplayMode(&ddsd)) && ddsd.dwWidth == nWidth && ddsd.dwHeight == nHeight &&
        ddsd.ddpfPixelFormat.dwRGBBitCount == nBits && (!nRefresh || ddsd.dwRefreshRate == nRefresh))
        return;
    D3DX_CHECK(m_pDD->SetDisplayMode(nWidth, nHeight, nBits, nRefresh, dwFlags),
               "CDDrawDeviceNode::SetDisplayMode - Failed!");
}

void CDDrawDeviceNode::CreatePrimary(int bFullscreen, DWORD nBackBuffers)
{
    const int bWant3D = bFullscreen || nBackBuffers == 0;
    if (m_pPrimary) {
        if (!bFullscreen) {
            if (m_bPrimary3D != bWant3D)
                D3DX_THROW(E_FAIL, "CreatePrimary - 3D capabilities mismatch for the primary");
            return;
        }
        ReleasePrimary();
    }
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS;
    ddsd.ddsCaps.dwCaps = DDSCAPS_PRIMARYSURFACE;
    if (bWant3D)
        ddsd.ddsCaps.dwCaps |= DDSCAPS_3DDEVICE;
    // A windowed request names its one back buffer only to say the primary
    // needs no 3D; the buffer itself is a plain surface of the context.
    if (nBackBuffers && bFullscreen) {
        ddsd.dwFlags |= DDSD_BACKBUFFERCOUNT;
        ddsd.ddsCaps.dwCaps |= DDSCAPS_COMPLEX | DDSCAPS_FLIP;
        ddsd.dwBackBufferCount = nBackBuffers;
    }
    D3DX_CHECK(m_pDD->CreateSurface(&ddsd, &m_pPrimary, NULL), "CDDrawDeviceNode::CreatePrimary - Failed CreateSurface.");
    m_bPrimary3D = bWant3D;
    m_nPrimaryBackBuffers = bFullscreen ? nBackBuffers : 0;
}

IDirectDrawSurface7* CDDrawDeviceNode::GetPrimary()
{
    if (m_pPrimary)
        m_pPrimary->AddRef();
    return m_pPrimary;
}

void CDDrawDeviceNode::ReleasePrimary()
{
    if (m_pPrimary)
        m_pPrimary->Release();
    m_pPrimary = NULL;
    m_nPrimaryBackBuffers = 0;
    m_bPrimary3D = 0;
}

void CDDrawDeviceNode::GetCurrentVideoMode(CVideoMode* pMode)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    D3DX_CHECK(m_pDD->GetDisplayMode(&ddsd), "CDDrawDeviceNode::GetCurrentVideoMode - Could not get current video mode.");
    pMode->m_nWidth = ddsd.dwWidth;
    pMode->m_nHeight = ddsd.dwHeight;
    pMode->m_nBits = ddsd.ddpfPixelFormat.dwRGBBitCount;
}

// --- enumeration of the DirectDraw devices ---

struct EnumeratedDevice {
    GUID guid;
    int bNullGuid;
    char szDescription[256];
    HMONITOR hMonitor;
};

struct DeviceEnumContext {
    EnumeratedDevice devices[16];
    int nDevices;
};

static BOOL WINAPI CollectDevice(GUID* pGuid, LPSTR szDescription, LPSTR, LPVOID pContext, HMONITOR hMonitor)
{
    DeviceEnumContext* pCtx = (DeviceEnumContext*)pContext;
    if (pCtx->nDevices >= 16)
        return FALSE;
    EnumeratedDevice& d = pCtx->devices[pCtx->nDevices++];
    d.bNullGuid = pGuid == NULL;
    d.guid = pGuid ? *pGuid : GUID_NULL;
    snprintf(d.szDescription, sizeof(d.szDescription), "%s", szDescription ? szDescription : "");
    d.hMonitor = hMonitor;
    return TRUE;
}

static HRESULT WINAPI CollectRasterizer(LPSTR szDescription, LPSTR szName, LPD3DDEVICEDESC7 pDesc, LPVOID pContext)
{
    (void)szDescription;
    CDDrawDeviceNode* pNode = (CDDrawDeviceNode*)pContext;
    CHelInfo* pHel = g_pD3DXGlobals->m_pHelInfo;
    const GUID& guid = pDesc->deviceGUID;
    if (guid == IID_IDirect3DHALDevice) {
        pNode->m_bHAL = 1;
        delete[] pNode->m_pszHALName;
        pNode->m_pszHALName = DupString(szName);
    } else if (guid == IID_IDirect3DTnLHalDevice) {
        pNode->m_bTnL = 1;
        delete[] pNode->m_pszTnLName;
        pNode->m_pszTnLName = DupString(szName);
    } else if (guid == IID_IDirect3DRGBDevice) {
        pHel->m_bRGB = 1;
    } else if (guid == IID_IDirect3DRefDevice) {
        pHel->m_bRef = 1;
    } else if (guid == IID_IDirect3DNullDevice) {
        pHel->m_bNull = 1;
    }
    return D3DENUMRET_OK;
}

static HRESULT WINAPI CollectMode(LPDDSURFACEDESC2 pDesc, LPVOID pContext)
{
    CVideoModeList* pModes = (CVideoModeList*)pContext;
    pModes->AddVideoMode(pDesc->dwWidth, pDesc->dwHeight, pDesc->ddpfPixelFormat.dwRGBBitCount,
                         pDesc->dwRefreshRate);
    return DDENUMRET_OK;
}

// Creates the node of a newly seen card: its modes and its rasterizers.
static CDDrawDeviceNode* MakeDDrawNode(const EnumeratedDevice& dev, IDirectDraw7* pDD, const GUID& guidDevice)
{
    CDDrawDeviceNode* pNode = new (std::nothrow) CDDrawDeviceNode;
    if (!pNode) {
        pDD->Release();
        D3DX_THROW(D3DXERR_NOMEMORY, "CD3duDeviceList::AddD3duDeviceNode - Ran out of memory.");
    }
    pNode->m_pDD = pDD;
    pNode->m_guidDevice = guidDevice;
    pNode->m_hMonitor = dev.hMonitor;
    if (!dev.bNullGuid)
        pNode->m_pGuid = new GUID(dev.guid);
    try {
        pDD->EnumDisplayModes(DDEDM_REFRESHRATES, NULL, &pNode->m_Modes, CollectMode);
    } catch (...) {
        delete pNode;
        throw;
    }
    pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL);
    if (SUCCEEDED(pDD->QueryInterface(IID_IDirect3D7, (void**)&pNode->m_pD3D))) {
        pNode->m_pD3D->EnumDevices(CollectRasterizer, pNode);
        pNode->m_bEnumOK = 1;
    }
    pNode->m_bDesktop = dev.bNullGuid;
    pNode->m_pszDescription = DupString(dev.szDescription);
    return pNode;
}

void CDDrawDeviceList::Build()
{
    DeviceEnumContext ctx;
    ctx.nDevices = 0;
    HRESULT hr = DirectDrawEnumerateExA(CollectDevice, &ctx, DDENUM_ATTACHEDSECONDARYDEVICES |
                                                                 DDENUM_DETACHEDSECONDARYDEVICES |
                                                                 DDENUM_NONDISPLAYDEVICES);
    if (FAILED(hr) || ctx.nDevices == 0)
        D3DX_THROW(D3DXERR_INITFAILED, "CDDrawDeviceList::CDDrawDeviceList() - Could not generate list of devices.");

    for (int i = 0; i < ctx.nDevices; i++) {
        const EnumeratedDevice& dev = ctx.devices[i];
        IDirectDraw7* pDD = NULL;
        if (FAILED(DirectDrawCreateEx(dev.bNullGuid ? NULL : (GUID*)&dev.guid, (void**)&pDD, IID_IDirectDraw7, NULL)))
            continue;
        DDDEVICEIDENTIFIER2 ident = {};
        if (FAILED(pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL)) || FAILED(pDD->GetDeviceIdentifier(&ident, 0))) {
            pDD->Release();
            continue;
        }

        CDDrawDeviceNode* pSame = NULL;
        for (CDDrawDeviceNode* p = m_pHead; p; p = p->m_pNext)
            if (p->m_guidDevice == ident.guidDeviceIdentifier && !p->m_hMonitor)
                pSame = p;
        if (pSame) {
            // a second view of hardware already listed
            if (!pSame->m_pGuid) {
                pSame->m_pGuid = new GUID(dev.guid);
                delete[] pSame->m_pszDescription;
                pSame->m_pszDescription = DupString(dev.szDescription);
                pDD->Release();
            } else {
                pSame->m_bDesktop = 1;
                pSame->m_pDD->Release();
                pSame->m_pDD = pDD;
            }
            if (dev.hMonitor)
                pSame->m_hMonitor = dev.hMonitor;
            continue;
        }
        AddHead(MakeDDrawNode(dev, pDD, ident.guidDeviceIdentifier));
    }
    if (m_nCount == 0)
        D3DX_THROW(D3DXERR_INITFAILED, "CDDrawDeviceList::CDDrawDeviceList() - Could not generate list of devices.");
}

// --- the flat list of device/rasterizer pairs ---

CD3duDeviceNode::CD3duDeviceNode()
    : m_pNext(NULL), m_pDDNode(NULL), m_pDD(NULL), m_pD3D(NULL), m_nIndex(0), m_nHWLevel(0),
      m_guidDDraw(GUID_NULL), m_guidD3D(GUID_NULL), m_hMonitor(NULL), m_bDesktop(0)
{
    memset(&m_ddCaps, 0, sizeof(m_ddCaps));
    memset(&m_ddHelCaps, 0, sizeof(m_ddHelCaps));
    memset(&m_Desc, 0, sizeof(m_Desc));
    m_szDescription[0] = 0;
}

CD3duDeviceNode::~CD3duDeviceNode()
{
    if (m_pD3D)
        m_pD3D->Release();
    if (m_pDD)
        m_pDD->Release();
}

struct RasterizerKind {
    int nLevel;
    const GUID* pGuid;
};

// The order in which each DirectDraw device offers its rasterizers; every
// node is added at the head, so the last of these gets the highest index.
static const RasterizerKind s_Rasterizers[] = {
    {-2, &IID_IDirect3DNullDevice},
    {-3, &IID_IDirect3DRefDevice},
    {-4, &IID_IDirect3DRGBDevice},
    {-5, &IID_IDirect3DHALDevice},
    {-6, &IID_IDirect3DTnLHalDevice},
};

static const char* RasterizerName(CDDrawDeviceNode* pDD, CHelInfo* pHel, int nLevel)
{
    switch (nLevel) {
    case -5: return pDD->m_bHAL ? (pDD->m_pszHALName ? pDD->m_pszHALName : "") : NULL;
    case -6: return pDD->m_bTnL ? (pDD->m_pszTnLName ? pDD->m_pszTnLName : "") : NULL;
    default: {
        CHelInfoDevice* pDev = pHel->ForLevel(nLevel);
        return pDev ? pDev->m_szName : NULL;
    }
    }
}

void CD3duDeviceList::Build(CDDrawDeviceList* pDDrawList, CHelInfo* pHel)
{
    DWORD nNextIndex = 0;
    for (CDDrawDeviceNode* pDD = pDDrawList->m_pHead; pDD; pDD = pDD->m_pNext) {
        if (!pDD->m_pD3D)
            continue;
        for (const RasterizerKind& r : s_Rasterizers) {
            const char* szName = RasterizerName(pDD, pHel, r.nLevel);
            if (!szName)
                continue;
            CD3duDeviceNode* pNode = new (std::nothrow) CD3duDeviceNode;
            if (!pNode)
                D3DX_THROW(D3DXERR_NOMEMORY, "CD3duDeviceList::AddD3duDeviceNode - Ran out of memory.");
            pNode->m_pDDNode = pDD;
            pNode->m_pDD = pDD->m_pDD;
            pNode->m_pDD->AddRef();
            pNode->m_pD3D = pDD->m_pD3D;
            pNode->m_pD3D->AddRef();
            pNode->m_nIndex = nNextIndex++;
            pNode->m_nHWLevel = r.nLevel;
            pNode->m_guidDDraw = pDD->m_pGuid ? *pDD->m_pGuid : GUID_NULL;
            pNode->m_guidD3D = *r.pGuid;
            snprintf(pNode->m_szDescription, sizeof(pNode->m_szDescription), "%s%s%s",
                     pDD->m_pszDescription ? pDD->m_pszDescription : "", " \\ ", szName);
            pNode->m_hMonitor = pDD->m_hMonitor;
            pNode->m_bDesktop = pDD->m_bDesktop;
            AddHead(pNode);
        }
    }
}

// --- contexts ---

void CD3duContextList::AddD3duContext(CD3duContext* pContext)
{
    CD3duContextNode* pNode = new (std::nothrow) CD3duContextNode;
    if (!pNode)
        D3DX_THROW(D3DXERR_NOMEMORY, "CD3duContextList::AddD3duContext - out of memory");
    pNode->m_pContext = pContext;
    AddHead(pNode);
}

void CD3duContextList::RemoveD3duContext(CD3duContext* pContext)
{
    for (CD3duContextNode* p = m_pHead; p; p = p->m_pNext) {
        if (p->m_pContext == pContext) {
            Remove(p);
            delete p;
            return;
        }
    }
}

// --- globals ---

CD3duGlobals::CD3duGlobals()
    : m_bInitialized(0), m_pHelInfo(NULL), m_pDDrawList(NULL), m_pDeviceList(NULL), m_pContextList(NULL)
{
}

CD3duGlobals::~CD3duGlobals()
{
    delete m_pContextList;
    delete m_pHelInfo;
    delete m_pDeviceList;  // its nodes hold references on the DirectDraw nodes' interfaces
    delete m_pDDrawList;
}

void CD3duGlobals::Init()
{
    if (m_bInitialized)
        return;
    m_pHelInfo = new CHelInfo;
    m_pDDrawList = new CDDrawDeviceList;
    m_pDDrawList->Build();
    m_pHelInfo->Initialize();
    m_pDeviceList = new CD3duDeviceList;
    m_pDeviceList->Build(m_pDDrawList, m_pHelInfo);
    m_pContextList = new CD3duContextList;
    m_bInitialized = 1;
}

void CD3duGlobals::CheckAndMapD3duHandle(DWORD* pIndex)
{
    if (*pIndex < m_pDeviceList->m_nCount)
        return;
    if (*pIndex >= 0xFFFFFFFAu) {
        FindBestMatchForHWLevel(*pIndex, pIndex);
        return;
    }
    D3DX_THROW(D3DXERR_INVALIDD3DXDEVICEINDEX, "CD3duGlobals::CheckAndMapD3duHandle - D3DX handle is out of range.");
}

void CD3duGlobals::FindBestMatchForHWLevel(DWORD dwLevel, DWORD* pIndex)
{
    const int nWanted = (int)dwLevel;
    CD3duDeviceNode* pKept[7] = {};  // by -level, 2 to 6
    for (CD3duDeviceNode* p = m_pDeviceList->m_pHead; p; p = p->m_pNext) {
        int nSlot = -p->m_nHWLevel;
        if (nSlot < 2 || nSlot > 6)
            continue;
        if (p->m_bDesktop && p->m_nHWLevel == nWanted) {
            *pIndex = p->m_nIndex;
            return;
        }
        if (!pKept[nSlot] || !pKept[nSlot]->m_bDesktop)
            pKept[nSlot] = p;
    }
    if (nWanted <= -2 && nWanted >= -6) {
        if (!pKept[-nWanted])
            D3DX_THROW(D3DXERR_INVALIDD3DXDEVICEINDEX, "CD3duGlobals::FindBestMatchForHWLevel - There is no D3DX handle "
                                                       "matching the requested level of hardware acceleration.");
        *pIndex = pKept[-nWanted]->m_nIndex;
        return;
    }
    for (int nSlot = 6; nSlot >= 2; nSlot--) {
        if (pKept[nSlot] && pKept[nSlot]->m_bDesktop) {
            *pIndex = pKept[nSlot]->m_nIndex;
            return;
        }
    }
    D3DX_THROW(D3DXERR_INVALIDD3DXDEVICEINDEX,
               "CD3duGlobals::FindBestMatchForHWLevel - D3DX_DEFAULT was passed, but no D3DX handles are available.");
}

CD3duDeviceNode* CD3duGlobals::FindNode(DWORD nIndex)
{
    for (CD3duDeviceNode* p = m_pDeviceList->m_pHead; p; p = p->m_pNext)
        if (p->m_nIndex == nIndex)
            return p;
    return NULL;
}
