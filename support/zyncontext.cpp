// The graphics context: creation, buffers, Z buffer choice, device and
// viewport, and the interface's simple accessors. Presenting, resizing,
// restoring and debug text are in zyncontext_frame.cpp.
#include "zyncontext_impl.h"

#include <new>

extern "C" const GUID IID_ID3DXContext = {0x9b74ed7a, 0xbbef, 0x11d2, {0x9f, 0x8e, 0x00, 0xc0, 0x4f, 0x8e, 0x1a, 0x27}};

#define INIT_PREFIX "CD3duContext::_D3duInitialize - "

static bool IsDefaultWindow(HWND hwnd)
{
    ULONG_PTR v = (ULONG_PTR)hwnd;
    return v == 0xFFFFFFFFu || v == (ULONG_PTR)-1;
}

HRESULT WINAPI D3DXCreateContextEx(DWORD nDevice, DWORD dwFlags, HWND hwnd, HWND hwndFocus, DWORD nColorBits,
                                   DWORD nAlphaBits, DWORD nDepthBits, DWORD nStencilBits, DWORD nBackBuffers,
                                   DWORD nWidth, DWORD nHeight, DWORD nRefreshRate, LPD3DXCONTEXT* ppContext)
{
    if (!ppContext)
        return D3DXERR_NULLPOINTER;
    if (!g_pD3DXGlobals)
        return D3DXERR_D3DXNOTSTARTEDYET;
    CD3duContext* pContext = NULL;
    D3DX_ENTRY_BEGIN
        g_pD3DXGlobals->Init();
        *ppContext = NULL;
        pContext = new (std::nothrow) CD3duContext;
        if (!pContext)
            return D3DXERR_NOMEMORY;
        pContext->_D3duInitialize(nDevice, dwFlags, hwnd, hwndFocus, nColorBits, nAlphaBits, nDepthBits,
                                  nStencilBits, nBackBuffers, nWidth, nHeight, nRefreshRate);
        g_pD3DXGlobals->m_pContextList->AddD3duContext(pContext);
        *ppContext = pContext;
        return S_OK;
    }
    catch (const CD3DXException& e) {
        delete pContext;
        e.Report();
        return e.m_hr;
    }
    catch (...) {
        delete pContext;
        return E_FAIL;
    }
}

CD3duContext::CD3duContext()
    : m_nRef(1), m_hwnd(NULL), m_hwndFocus(NULL), m_nMode(0), m_bOwnWindow(0), m_nColorBits(16), m_nAlphaBits(0),
      m_nBackBuffers(1), m_nDepthBits(0), m_nStencilBits(0), m_nWantDepth(0), m_nWantStencil(0),
      m_nRefreshRate(0), m_nHeight(480), m_nWidth(640), m_guidDDraw(GUID_NULL), m_guidD3D(GUID_NULL),
      m_nHWLevel(0), m_nDevice(0), m_dwFlags(0), m_pNode(NULL), m_dwMemory(DDSCAPS_SYSTEMMEMORY),
      m_pD3DDevice(NULL), m_pDD(NULL), m_pD3D(NULL), m_pClipper(NULL), m_pFrontBuffer(NULL),
      m_ppBackBuffers(NULL), m_pRenderBuffer(NULL), m_pZBuffer(NULL), m_dwClearColor(0), m_fClearDepth(1.0f),
      m_dwClearStencil(0), m_bInitialized(0)
{
}

CD3duContext::~CD3duContext()
{
    if (m_pNode && m_nMode == D3DX_CONTEXT_FULLSCREEN) {
        CDDrawDeviceNode* pDDNode = m_pNode->m_pDDNode;
        if (m_pDD)
            m_pDD->RestoreDisplayMode();
        try {
            pDDNode->SetCooperativeLevel(NULL, DDSCL_NORMAL, NULL, 1);
        } catch (const CD3DXException&) {
        }
    }
    if (m_pClipper)
        m_pClipper->Release();
    m_pClipper = NULL;
    if (m_pD3DDevice)
        m_pD3DDevice->Release();
    if (m_pD3D)
        m_pD3D->Release();
    if (m_pDD)
        m_pDD->Release();
    m_pD3DDevice = NULL;
    _DestroyDXBuffers(1);
    m_pD3D = NULL;
    m_pDD = NULL;
    if (m_bOwnWindow && m_hwnd)
        DestroyWindow(m_hwnd);
}

void CD3duContext::_D3duInitialize(DWORD nDevice, DWORD dwFlags, HWND hwnd, HWND hwndFocus, DWORD nColorBits,
                                   DWORD nAlphaBits, DWORD nDepthBits, DWORD nStencilBits, DWORD nBackBuffers,
                                   DWORD nWidth, DWORD nHeight, DWORD nRefreshRate)
{
    if (!g_pD3DXGlobals)
        D3DX_THROW(D3DXERR_D3DXNOTSTARTEDYET, "CD3duContext::_D3duInitialize - Must initialize D3DX first.");

    // 1. the device
    g_pD3DXGlobals->CheckAndMapD3duHandle(&nDevice);
    m_nDevice = nDevice;
    m_pNode = g_pD3DXGlobals->FindNode(nDevice);
    if (!m_pNode)
        D3DX_THROW(D3DXERR_INVALIDD3DXDEVICEINDEX, "CD3duGlobals::CheckAndMapD3duHandle - D3DX handle is out of range.");
    m_pDD = m_pNode->m_pDD;
    m_pDD->AddRef();
    m_pD3D = m_pNode->m_pD3D;
    m_pD3D->AddRef();

    // 2. flags and windows
    if (dwFlags == D3DX_DEFAULT)
        dwFlags = 0;
    if (IsDefaultWindow(hwnd))
        hwnd = NULL;
    if (IsDefaultWindow(hwndFocus))
        hwndFocus = NULL;
    m_dwFlags = dwFlags;
    m_hwnd = hwnd;
    m_hwndFocus = hwndFocus;
    m_nMode = dwFlags & 3;

    // 3. the windows must fit the mode
    switch (m_nMode) {
    case D3DX_CONTEXT_FULLSCREEN:
        if (!hwnd && !hwndFocus)
            D3DX_THROW(D3DXERR_INVALIDPARAMETER, INIT_PREFIX "In fullscreen mode, A valid device window is required "
                                                             "unless a focus window is specified.");
        break;
    case D3DX_CONTEXT_OFFSCREEN:
        if (hwnd || hwndFocus)
            D3DX_THROW(D3DXERR_INVALIDPARAMETER, INIT_PREFIX "In offscreen mode, device and focus window parameters "
                                                             "must be NULL or D3DX_DEFAULT.");
        break;
    case 0:
        if (!hwnd)
            D3DX_THROW(D3DXERR_INVALIDPARAMETER, INIT_PREFIX "In windowed mode, a valid hwnd is required; NULL and "
                                                             "D3DX_DEFAULT may not be used.");
        if (hwndFocus)
            D3DX_THROW(D3DXERR_INVALIDPARAMETER, INIT_PREFIX "In windowed mode, the focus hwnd must be NULL or D3DX_DEFAULT.");
        break;
    default:
        D3DX_THROW(D3DXERR_INVALIDPARAMETER, INIT_PREFIX "D3DX_CONTEXT_FULLSCREEN and D3DX_CONTEXT_OFFSCREEN cannot "
                                                         "be specified at the same time.");
    }
    if (m_hwnd && !IsWindow(m_hwnd))
        D3DX_THROW(D3DXERR_INVALIDPARAMETER, INIT_PREFIX "In windowed mode, a valid hwnd is required; NULL and "
                                                         "D3DX_DEFAULT may not be used.");

    // 4. colour bits
    if (nColorBits == D3DX_DEFAULT) {
        if (m_nMode == D3DX_CONTEXT_FULLSCREEN) {
            nColorBits = 16;
        } else {
            CVideoMode current(0, 0, 0);
            m_pNode->m_pDDNode->GetCurrentVideoMode(&current);
            nColorBits = current.m_nBits;
        }
    }
    if (nColorBits < 16)
        D3DX_THROW(D3DXERR_COLORDEPTHTOOLOW, INIT_PREFIX "D3DX only supports 16 bit or higher color depths.");
    m_nColorBits = nColorBits;

    // 5. alpha, depth and stencil; D3DX_DEFAULT stays in depth and stencil and means any
    m_nAlphaBits = nAlphaBits == D3DX_DEFAULT ? 0 : nAlphaBits;
    m_nWantDepth = nDepthBits;
    m_nWantStencil = nStencilBits;

    // 6. back buffers
    if (nBackBuffers == D3DX_DEFAULT) {
        nBackBuffers = m_nMode == D3DX_CONTEXT_OFFSCREEN ? 0 : 1;
    } else if (m_nMode == 0 && nBackBuffers != 1) {
        D3DX_THROW(D3DXERR_INVALIDPARAMETER, INIT_PREFIX "In windowed mode, numBackBuffers must be 1 or D3DX_DEFAULT.");
    } else if (m_nMode == D3DX_CONTEXT_OFFSCREEN && nBackBuffers != 0) {
        D3DX_THROW(D3DXERR_INVALIDPARAMETER, INIT_PREFIX "In offscreen mode, numBackBuffers must be 0 or D3DX_DEFAULT.");
    }
    m_nBackBuffers = nBackBuffers;

    // 7. refresh rate, at full screen only
    m_nRefreshRate = (m_nMode == D3DX_CONTEXT_FULLSCREEN && nRefreshRate != D3DX_DEFAULT) ? nRefreshRate : 0;

    // 8. size
    const bool bBothGiven = nWidth != D3DX_DEFAULT && nHeight != D3DX_DEFAULT;
    if (m_nMode == D3DX_CONTEXT_FULLSCREEN) {
        if (bBothGiven) {
            m_nWidth = nWidth;
            m_nHeight = nHeight;
        }
    } else if (m_nMode == D3DX_CONTEXT_OFFSCREEN) {
        if (!bBothGiven)
            D3DX_THROW(D3DXERR_INVALIDPARAMETER, "width and height are required for offscreen contexts.");
        m_nWidth = nWidth;
        m_nHeight = nHeight;
    } else {
        RECT rcClient;
        GetClientRect(m_hwnd, &rcClient);
        if (bBothGiven) {
            m_nWidth = nWidth;
            m_nHeight = nHeight;
            if ((DWORD)rcClient.right != nWidth || (DWORD)rcClient.bottom != nHeight) {
                RECT rcWindow;
                GetWindowRect(m_hwnd, &rcWindow);
                int nExtraX = (rcWindow.right - rcWindow.left) - rcClient.right;
                int nExtraY = (rcWindow.bottom - rcWindow.top) - rcClient.bottom;
                SetWindowPos(m_hwnd, NULL, 0, 0, (int)nWidth + nExtraX, (int)nHeight + nExtraY,
                             SWP_NOMOVE | SWP_NOZORDER);
            }
        } else {
            m_nWidth = rcClient.right;
            m_nHeight = rcClient.bottom;
        }
    }

    // 9. what the device is
    m_guidDDraw = m_pNode->m_guidDDraw;
    m_guidD3D = m_pNode->m_guidD3D;
    m_nHWLevel = m_pNode->m_nHWLevel;
    m_dwMemory = (m_nHWLevel == -5 || m_nHWLevel == -6) ? DDSCAPS_VIDEOMEMORY : DDSCAPS_SYSTEMMEMORY;

    // 10. window, cooperative level, buffers, device, viewport
    if (m_nMode == D3DX_CONTEXT_FULLSCREEN && !m_hwnd)
        _CreateDeviceWindow();
    if (m_nMode == D3DX_CONTEXT_FULLSCREEN)
        m_pNode->m_pDDNode->SetCooperativeLevel(m_hwnd, DDSCL_FULLSCREEN | DDSCL_ALLOWREBOOT | DDSCL_EXCLUSIVE,
                                                m_hwndFocus, 0);
    else
        // Wine presents the primary of a windowless normal level into a hidden
        // window of its own; naming ours makes blits to the primary show.
        m_pNode->m_pDDNode->SetCooperativeLevel(m_hwnd, DDSCL_NORMAL, NULL, 0);
    _CreateDXBuffers();
    _Create3DDevice();
    _SetViewport();
    m_bInitialized = 1;
}

static LRESULT CALLBACK DeviceWindowProc(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    switch (uMsg) {
    case WM_SETFOCUS: {
        HWND hwndParent = GetParent(hwnd);
        if (hwndParent)
            SetFocus(hwndParent);
        break;
    }
    case WM_SETCURSOR:
        SetCursor(NULL);
        break;
    }
    return DefWindowProcA(hwnd, uMsg, wParam, lParam);
}

void CD3duContext::_CreateDeviceWindow()
{
    HINSTANCE hInstance = GetModuleHandleA(NULL);
    WNDCLASSA wcExisting;
    if (!GetClassInfoA(hInstance, "D3DX", &wcExisting)) {
        WNDCLASSA wc = {};
        wc.style = CS_DBLCLKS;
        wc.lpfnWndProc = DeviceWindowProc;
        wc.hInstance = hInstance;
        wc.hbrBackground = (HBRUSH)GetStockObject(BLACK_BRUSH);
        wc.lpszClassName = "D3DX";
        if (!RegisterClassA(&wc))
            D3DX_THROW(D3DXERR_INVALIDPARAMETER, "CD3duContext::_D3duInitialize - RegisterClass failed.");
    }
    int x = 0, y = 0;
    if (GetSystemMetrics(SM_CMONITORS) > 1 && m_pNode->m_hMonitor) {
        MONITORINFO mi = {};
        mi.cbSize = sizeof(mi);
        if (GetMonitorInfoA(m_pNode->m_hMonitor, &mi)) {
            x = mi.rcMonitor.left;
            y = mi.rcMonitor.top;
        }
    }
    m_hwnd = CreateWindowExA(0, "D3DX", "D3DX", WS_POPUP | WS_VISIBLE, x, y, (int)m_nWidth, (int)m_nHeight,
                             m_hwndFocus, NULL, hInstance, NULL);
    if (!m_hwnd)
        D3DX_THROW(D3DXERR_INVALIDPARAMETER, "CD3duContext::_D3duInitialize - Unable to create the device window.");
    m_bOwnWindow = 1;
}

void CD3duContext::_CreateDXBuffers()
{
    switch (m_nMode) {
    case D3DX_CONTEXT_FULLSCREEN: _CreateFullscreenBuffers(); break;
    case D3DX_CONTEXT_OFFSCREEN: _CreateOffScreenBuffers(); break;
    default: _CreateWindowedBuffers(); break;
    }
    if (!m_bInitialized)
        m_pNode->RefreshCaps();
    if (m_nWantDepth || m_nWantStencil) {
        if (!m_bInitialized)
            _ChooseZBuffer(m_nWantDepth, m_nWantStencil);
        _CreateZBuffer();
    }
}

void CD3duContext::_CreateFullscreenBuffers()
{
    if (m_pFrontBuffer)
        D3DX_THROW(D3DXERR_FRONTBUFFERALREADYEXISTS, "_CreateFullscreenBuffers - Front buffer is already there");
    CDDrawDeviceNode* pDDNode = m_pNode->m_pDDNode;
    CVideoMode* pMode = pDDNode->m_Modes.Find(m_nWidth, m_nHeight, m_nColorBits);
    if (!pMode || (m_nRefreshRate && !pMode->m_Rates.HasRate(m_nRefreshRate)))
        D3DX_THROW(D3DXERR_INVALIDMODE, "CD3duContext::_CreateFullscreenBuffers - Requested display mode is not valid.");
    pDDNode->SetDisplayMode(m_nWidth, m_nHeight, m_nColorBits, m_nRefreshRate, 0);
    pDDNode->CreatePrimary(1, m_nBackBuffers);
    m_pFrontBuffer = pDDNode->GetPrimary();
    if (m_nBackBuffers) {
        _EnumBackBuffers(m_pFrontBuffer, 0);
        m_pRenderBuffer = m_ppBackBuffers[0];
    } else {
        m_pRenderBuffer = m_pFrontBuffer;
    }
}

static IDirectDrawSurface7* CreatePlainSurface(IDirectDraw7* pDD, DWORD nWidth, DWORD nHeight, DWORD dwMemory,
                                               const char* szFailure)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH;
    ddsd.dwWidth = nWidth;
    ddsd.dwHeight = nHeight;
    ddsd.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN | DDSCAPS_3DDEVICE | dwMemory;
    IDirectDrawSurface7* pSurface = NULL;
    D3DX_CHECK(pDD->CreateSurface(&ddsd, &pSurface, NULL), szFailure);
    return pSurface;
}

void CD3duContext::_CreateWindowedBuffers()
{
    if (!m_pFrontBuffer) {
        CDDrawDeviceNode* pDDNode = m_pNode->m_pDDNode;
        pDDNode->CreatePrimary(0, m_nBackBuffers);
        m_pFrontBuffer = pDDNode->GetPrimary();
        D3DX_CHECK(m_pDD->CreateClipper(0, &m_pClipper, NULL), "CD3duContext::_CreateWindowedBuffers - Could not create clipper.");
        D3DX_CHECK(m_pClipper->SetHWnd(0, m_hwnd), "CD3duContext::_CreateWindowedBuffers - Could not attach clipper.");
        D3DX_CHECK(m_pFrontBuffer->SetClipper(m_pClipper), "CD3duContext::_CreateWindowedBuffers - Could not attach clipper.");
    }
    IDirectDrawSurface7* pBack = CreatePlainSurface(m_pDD, m_nWidth, m_nHeight, m_dwMemory,
                                                    "CD3duContext::_CreateWindowedBuffers - Could not create back buffer(s).");
    try {
        _EnumBackBuffers(pBack, 1);
    } catch (...) {
        pBack->Release();
        throw;
    }
    m_ppBackBuffers[0] = pBack;
    m_pRenderBuffer = pBack;
}

void CD3duContext::_CreateOffScreenBuffers()
{
    if (m_pFrontBuffer)
        D3DX_THROW(D3DXERR_FRONTBUFFERALREADYEXISTS, "_CreateOffScreenBuffers - Front buffer is already there");
    m_pFrontBuffer = CreatePlainSurface(m_pDD, m_nWidth, m_nHeight, m_dwMemory,
                                        "CD3duContext::_CreateOffScreenBuffers - Could not create front buffer.");
    m_pRenderBuffer = m_pFrontBuffer;
}

static HRESULT WINAPI TakeFirstAttached(LPDIRECTDRAWSURFACE7 pSurface, LPDDSURFACEDESC2 pDesc, LPVOID pContext)
{
    IDirectDrawSurface7** ppOut = (IDirectDrawSurface7**)pContext;
    if (!*ppOut && !(pDesc->ddsCaps.dwCaps & DDSCAPS_ZBUFFER)) {
        *ppOut = pSurface;  // keeps the reference the enumeration gave
        return DDENUMRET_CANCEL;
    }
    pSurface->Release();
    return DDENUMRET_OK;
}

void CD3duContext::_EnumBackBuffers(IDirectDrawSurface7* pSurface, DWORD nFirst)
{
    m_ppBackBuffers = new (std::nothrow) IDirectDrawSurface7*[m_nBackBuffers ? m_nBackBuffers : 1]();
    if (!m_ppBackBuffers)
        D3DX_THROW(D3DXERR_NOMEMORY, "CD3duContext::_EnumBackBuffers - Could not allocate memory.");
    IDirectDrawSurface7* pPrevious = pSurface;
    for (DWORD i = nFirst; i < m_nBackBuffers; i++) {
        IDirectDrawSurface7* pNext = NULL;
        pPrevious->EnumAttachedSurfaces(&pNext, TakeFirstAttached);
        if (!pNext)
            D3DX_THROW(D3DXERR_NOBACKBUFFERAVAILABLE, "CD3duContext::_CreateFullscreenBuffers - Could not enumerate back buffers.");
        m_ppBackBuffers[i] = pNext;
        pPrevious = pNext;
    }
}

void CD3duContext::_ChooseZBuffer(DWORD nDepth, DWORD nStencil)
{
    if (nDepth == 0 && nStencil == 0) {
        m_nDepthBits = m_nStencilBits = 0;
        return;
    }
    DWORD nDepthLow = 0, nDepthHigh = 0xFFFFFFFF, nStencilLow = 0, nStencilHigh = 0xFFFFFFFF;
    bool bAllowed = true;
    if (m_nHWLevel == -5 || m_nHWLevel == -6) {
        DDDEVICEIDENTIFIER2 ident = {};
        if (SUCCEEDED(m_pDD->GetDeviceIdentifier(&ident, 0)) && (ident.dwVendorId == 0x12D2 || ident.dwVendorId == 0x10DE)) {
            if (m_nColorBits == 16) {
                nDepthLow = nDepthHigh = 16;
                nStencilLow = nStencilHigh = 0;
            } else if (m_nColorBits == 32) {
                nDepthLow = nDepthHigh = 24;
                nStencilHigh = 8;
            } else {
                bAllowed = false;
            }
        }
    }
    if (nDepth != D3DX_DEFAULT) {
        if (nDepth < nDepthLow || nDepth > nDepthHigh)
            bAllowed = false;
        nDepthLow = nDepthHigh = nDepth;
    }
    if (nStencil != D3DX_DEFAULT) {
        if (nStencil > nStencilHigh)
            bAllowed = false;
        nStencilLow = nStencilHigh = nStencil;
    }
    const CSurfaceFormat* pTaken = NULL;
    DWORD nTakenDepth = 0, nTakenStencil = 0;
    for (const CSurfaceFormat* p = bAllowed ? m_pNode->m_Formats.m_pHead : NULL; p; p = p->m_pNext) {
        if (!(p->m_dwUsage & D3DU_FORMAT_DEPTH))
            continue;
        DWORD nD = D3duDepthBits(p->m_ddpf), nS = D3duStencilBits(p->m_ddpf);
        if (nD < nDepthLow || nD > nDepthHigh || nS < nStencilLow || nS > nStencilHigh)
            continue;
        if (!pTaken || nS > nTakenStencil || (nS == nTakenStencil && nD > nTakenDepth)) {
            pTaken = p;
            nTakenDepth = nD;
            nTakenStencil = nS;
        }
        if (nD == nDepthHigh && nS == nStencilHigh)
            break;
    }
    if (!pTaken)
        D3DX_THROW(D3DXERR_NOZBUFFERAVAILABLE, "_ChooseZBuffer - No suitable depth/stencil buffer found");
    m_nDepthBits = nTakenDepth;
    m_nStencilBits = nTakenStencil;
}

void CD3duContext::_CreateZBuffer()
{
    if (m_nDepthBits == 0 && m_nStencilBits == 0)
        return;
    const CSurfaceFormat* pFormat = NULL;
    for (const CSurfaceFormat* p = m_pNode->m_Formats.m_pHead; p && !pFormat; p = p->m_pNext)
        if ((p->m_dwUsage & D3DU_FORMAT_DEPTH) && D3duDepthBits(p->m_ddpf) == m_nDepthBits &&
            D3duStencilBits(p->m_ddpf) == m_nStencilBits)
            pFormat = p;
    if (!pFormat)
        D3DX_THROW(D3DXERR_NOZBUFFER, "CD3duContext::_CreateZBuffer - Z Buffer format not supported.");
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH | DDSD_PIXELFORMAT;
    ddsd.dwWidth = m_nWidth;
    ddsd.dwHeight = m_nHeight;
    ddsd.ddsCaps.dwCaps = DDSCAPS_ZBUFFER | m_dwMemory;
    ddsd.ddpfPixelFormat = pFormat->m_ddpf;
    D3DX_CHECK(m_pDD->CreateSurface(&ddsd, &m_pZBuffer, NULL), "CD3duContext::_CreateZBuffer - Could not create Z buffer.");
    HRESULT hr = m_pRenderBuffer->AddAttachedSurface(m_pZBuffer);
    if (FAILED(hr)) {
        m_pZBuffer->Release();
        m_pZBuffer = NULL;
        D3DX_THROW(hr, "CD3duContext::_CreateZBuffer - Could not create Z buffer.");
    }
}

void CD3duContext::_Create3DDevice()
{
    D3DX_CHECK(m_pD3D->CreateDevice(m_guidD3D, m_pRenderBuffer, &m_pD3DDevice),
               "CD3duContext::_Create3DDevice - Could not create D3D device.");
    // A placeholder projection until the owner sets its own.
    D3DXMATRIX proj;
    D3DXMatrixPerspectiveFov(&proj, 90.0f, (float)m_nHeight / (float)m_nWidth, 1.0f, 10000.0f);
    D3DX_CHECK(m_pD3DDevice->SetTransform(D3DTRANSFORMSTATE_PROJECTION, &proj),
               "CD3duContext::_InitViewport - Could not set projection transform.");
}

void CD3duContext::_SetViewport()
{
    D3DVIEWPORT7 vp = {0, 0, m_nWidth, m_nHeight, 0.0f, 1.0f};
    D3DX_CHECK(m_pD3DDevice->SetViewport(&vp), "CD3duContext::SetViewport - Failed to set viewport.");
}

void CD3duContext::_DestroyDXBuffers(int bAll)
{
    if (m_pZBuffer) {
        if (m_pRenderBuffer && m_pRenderBuffer->IsLost() == DD_OK)
            m_pRenderBuffer->DeleteAttachedSurface(0, m_pZBuffer);
        m_pZBuffer->Release();
        m_pZBuffer = NULL;
    }
    if (m_ppBackBuffers) {
        // A windowed context made its back buffer; a flip chain's buffers came
        // from the enumeration. Either way each entry holds a reference of ours.
        for (DWORD i = 0; i < m_nBackBuffers; i++)
            if (m_ppBackBuffers[i])
                m_ppBackBuffers[i]->Release();
        delete[] m_ppBackBuffers;
        m_ppBackBuffers = NULL;
    }
    if (bAll || m_pRenderBuffer != m_pFrontBuffer)
        m_pRenderBuffer = NULL;
    if (bAll) {
        if (m_pFrontBuffer)
            m_pFrontBuffer->Release();
        m_pFrontBuffer = NULL;
        if (m_pClipper)
            m_pClipper->Release();
        m_pClipper = NULL;
        if (m_nMode == D3DX_CONTEXT_FULLSCREEN && m_pNode)
            m_pNode->m_pDDNode->ReleasePrimary();
    }
}

// --- IUnknown and accessors ---

HRESULT CD3duContext::QueryInterface(REFIID riid, void** ppvObj)
{
    if (!ppvObj)
        return D3DXERR_NULLPOINTER;  // "CD3duContext::QueryInterface - NULL passed for LPVOID ppvObj."
    *ppvObj = NULL;
    if (riid == IID_ID3DXContext || riid == IID_IUnknown) {
        *ppvObj = (ID3DXContext*)this;
        AddRef();
        return S_OK;
    }
    // "CD3duContext::QueryInterface - ID3DXContext and IUnknown are the only interfaces available."
    return E_NOINTERFACE;
}

ULONG CD3duContext::AddRef() { return (ULONG)InterlockedIncrement(&m_nRef); }

ULONG CD3duContext::Release()
{
    LONG n = InterlockedDecrement(&m_nRef);
    if (n == 0) {
        if (g_pD3DXGlobals && g_pD3DXGlobals->m_pContextList)
            g_pD3DXGlobals->m_pContextList->RemoveD3duContext(this);
        delete this;
    }
    return (ULONG)n;
}

template <class T>
static T* WithReference(T* p)
{
    if (p)
        p->AddRef();
    return p;
}

LPDIRECTDRAW7 CD3duContext::GetDD() { return WithReference(m_pDD); }
LPDIRECT3D7 CD3duContext::GetD3D() { return WithReference(m_pD3D); }
LPDIRECT3DDEVICE7 CD3duContext::GetD3DDevice() { return WithReference(m_pD3DDevice); }
LPDIRECTDRAWSURFACE7 CD3duContext::GetPrimary() { return WithReference(m_pFrontBuffer); }
LPDIRECTDRAWSURFACE7 CD3duContext::GetZBuffer() { return WithReference(m_pZBuffer); }

LPDIRECTDRAWSURFACE7 CD3duContext::GetBackBuffer(DWORD nIndex)
{
    if (nIndex >= m_nBackBuffers || !m_ppBackBuffers)
        return NULL;
    return WithReference(m_ppBackBuffers[nIndex]);
}

HWND CD3duContext::GetWindow() { return m_hwnd; }
HWND CD3duContext::GetFocusWindow() { return m_hwndFocus; }

HRESULT CD3duContext::GetDeviceIndex(DWORD* pIndex, DWORD* pHWLevel)
{
    if (pIndex)
        *pIndex = m_nDevice;
    if (pHWLevel)
        *pHWLevel = (DWORD)m_nHWLevel;
    return S_OK;
}

DWORD CD3duContext::GetNumBackBuffers() { return m_nBackBuffers; }

HRESULT CD3duContext::GetNumBits(DWORD* pColor, DWORD* pDepth, DWORD* pAlpha, DWORD* pStencil)
{
    if (pColor)
        *pColor = m_nColorBits;
    if (pDepth)
        *pDepth = m_nDepthBits;
    if (pAlpha)
        *pAlpha = m_nAlphaBits;
    if (pStencil)
        *pStencil = m_nStencilBits;
    return S_OK;
}

HRESULT CD3duContext::GetBufferSize(DWORD* pWidth, DWORD* pHeight)
{
    if (pWidth)
        *pWidth = m_nWidth;
    if (pHeight)
        *pHeight = m_nHeight;
    return S_OK;
}

DWORD CD3duContext::GetCreationFlags() { return m_dwFlags; }

DWORD CD3duContext::GetRefreshRate()
{
    if (m_nRefreshRate)
        return m_nRefreshRate;
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    if (m_pDD && SUCCEEDED(m_pDD->GetDisplayMode(&ddsd)))
        return ddsd.dwRefreshRate;
    return 0;
}

HRESULT CD3duContext::SetClearColor(D3DCOLOR dwColor)
{
    m_dwClearColor = dwColor;
    return S_OK;
}

HRESULT CD3duContext::SetClearDepth(float fZ)
{
    m_fClearDepth = fZ;
    return S_OK;
}

HRESULT CD3duContext::SetClearStencil(DWORD dwStencil)
{
    m_dwClearStencil = dwStencil;
    return S_OK;
}
