// Starting and stopping the kernel: both start forms, what the exported data
// holds afterwards, the guards of start and stop, restarts, and the message
// boxes and result codes of a failed start.
#include "zynkernel_fixture.h"

#include <string.h>

#include <iostream>

typedef KernelTest KernelLifecycle;
// Long runs of starts and stops, with a time limit of their own.
typedef KernelTest KernelSoak;

TEST_F(KernelLifecycle, WindowedStartFillsTheInterfacesButNoScreenSurfaces)
{
    ASSERT_HR(StartWindowed(), S_OK);
    EXPECT_TRUE(g_pD3DX != NULL && g_pD3DDev != NULL && g_pD3D != NULL && g_pDD != NULL);
    EXPECT_EQ(zynKernel_GetWindow(), m_window.Handle());
    EXPECT_EQ(g_bFullscreen, 0);
    // The context has a back buffer of its own, but a windowed host sees none.
    EXPECT_EQ(g_nNumBackBuffers, 0);
    EXPECT_TRUE(g_pPrimaryBuffer == NULL) << "primary in a window";
    EXPECT_TRUE(g_pZBuffer == NULL) << "depth surface in a window";
    EXPECT_EQ(g_bZBufferLockEnabled, 0);
    for (int i = 0; i < 32; i++)
        EXPECT_TRUE(g_pBackBuffers[i] == NULL) << "back buffer " << i;
    EXPECT_TRUE(MessageBoxLog().empty()) << "a box came up: " << MessageBoxLog()[0].szText;
}

TEST_F(KernelLifecycle, StartLeavesTheDeviceInItsStartState)
{
    ASSERT_HR(StartWindowed(), S_OK);
    static const struct {
        D3DRENDERSTATETYPE state;
        DWORD dwWant;
    } renderCases[] = {
        {D3DRENDERSTATE_DITHERENABLE, 1},
        {D3DRENDERSTATE_ALPHABLENDENABLE, 1},
        {D3DRENDERSTATE_COLORVERTEX, 0},
        {D3DRENDERSTATE_SPECULARENABLE, 1},
    };
    for (const auto& tc : renderCases) {
        DWORD dwGot = 0xDEAD;
        g_pD3DDev->GetRenderState(tc.state, &dwGot);
        EXPECT_EQ(dwGot, tc.dwWant) << "render state " << tc.state;
    }
    static const struct {
        DWORD dwStage;
        D3DTEXTURESTAGESTATETYPE state;
        DWORD dwWant;
    } stageCases[] = {
        {0, D3DTSS_COLORARG1, D3DTA_TEXTURE}, {0, D3DTSS_COLORARG2, D3DTA_DIFFUSE},
        {0, D3DTSS_COLOROP, D3DTOP_MODULATE}, {1, D3DTSS_COLOROP, D3DTOP_DISABLE},
        {0, D3DTSS_ALPHAARG1, D3DTA_TEXTURE}, {0, D3DTSS_ALPHAARG2, D3DTA_DIFFUSE},
        {0, D3DTSS_ALPHAOP, D3DTOP_MODULATE}, {1, D3DTSS_ALPHAOP, D3DTOP_DISABLE},
        {0, D3DTSS_MINFILTER, D3DTFN_LINEAR}, {7, D3DTSS_MINFILTER, D3DTFN_LINEAR},
        {3, D3DTSS_MAGFILTER, D3DTFG_LINEAR}, {5, D3DTSS_MIPFILTER, D3DTFP_POINT},
    };
    for (const auto& tc : stageCases) {
        DWORD dwGot = 0xDEAD;
        g_pD3DDev->GetTextureStageState(tc.dwStage, tc.state, &dwGot);
        EXPECT_EQ(dwGot, tc.dwWant) << "stage " << tc.dwStage << " state " << tc.state;
    }
}

TEST_F(KernelLifecycle, SecondStartIsRefusedAndLeavesTheRunningContextAlone)
{
    ASSERT_HR(StartWindowed(), S_OK);
    IDirect3DDevice7* pDevice = g_pD3DDev;
    ID3DXContext* pContext = g_pD3DX;
    ZynTestWindow other(120, 90);
    EXPECT_HR(zynKernel_Initialize(other.Handle(), 1, D3DX_DEFAULT, 0, 0, 16, 16, 0, 0), E_FAIL);
    EXPECT_EQ(g_pD3DDev, pDevice);
    EXPECT_EQ(g_pD3DX, pContext);
    EXPECT_EQ(zynKernel_GetWindow(), m_window.Handle()) << "the refused start took the window";
    EXPECT_HR(zynKernel_Render(), S_OK);
}

TEST_F(KernelLifecycle, StopIsRefusedWhenNothingIsStarted)
{
    EXPECT_HR(zynKernel_Finalize(), E_FAIL);
    ASSERT_HR(StartWindowed(), S_OK);
    EXPECT_HR(zynKernel_Finalize(), S_OK);
    EXPECT_HR(zynKernel_Finalize(), E_FAIL) << "second stop";
    EXPECT_HR(zynKernel_Render(), E_FAIL) << "frame after the stop";
    // The window is kept after a stop, and a new start works from the top.
    EXPECT_EQ(zynKernel_GetWindow(), m_window.Handle());
    EXPECT_HR(StartWindowed(), S_OK);
}

TEST_F(KernelLifecycle, WindowMakingStartRegistersShowsAndDestroysItsWindow)
{
    ASSERT_HR(StartOwnWindow(300, 200), S_OK);
    HWND hWnd = zynKernel_GetWindow();
    ASSERT_TRUE(IsWindow(hWnd));
    EXPECT_TRUE(IsWindowVisible(hWnd));
    char szClass[64] = "";
    GetClassNameA(hWnd, szClass, sizeof(szClass));
    EXPECT_STREQ(szClass, "zynKernel Application");
    RECT rc;
    GetWindowRect(hWnd, &rc);
    EXPECT_EQ(rc.right - rc.left, 300);
    EXPECT_EQ(rc.bottom - rc.top, 200);
    EXPECT_EQ((DWORD)GetWindowLongA(hWnd, GWL_STYLE) & WS_OVERLAPPEDWINDOW, (DWORD)WS_OVERLAPPEDWINDOW);
    EXPECT_EQ((WNDPROC)GetWindowLongPtrA(hWnd, GWLP_WNDPROC), (WNDPROC)zynKernel_WndProc);

    EXPECT_HR(zynKernel_Finalize(), S_OK);
    EXPECT_FALSE(IsWindow(hWnd)) << "the kernel's window outlived the stop";
    WNDCLASSA wc;
    EXPECT_FALSE(GetClassInfoA(GetModuleHandleA(NULL), "zynKernel Application", &wc)) << "class still registered";
}

TEST_F(KernelLifecycle, ReInitializeStartsAgainAsAWindowedContext)
{
    EXPECT_HR(zynKernel_ReInitialize(), E_FAIL) << "restart with nothing started";
    ASSERT_HR(StartWindowed(), S_OK);
    ASSERT_HR(zynKernel_ReInitialize(), S_OK);
    EXPECT_TRUE(g_pD3DDev != NULL);
    EXPECT_EQ(g_bFullscreen, 0);
    EXPECT_EQ(zynKernel_GetWindow(), m_window.Handle());
    EXPECT_HR(zynKernel_Render(), S_OK);
}

TEST_F(KernelLifecycle, ReInitializeOverItsOwnWindowMakesANewOne)
{
    ASSERT_HR(StartOwnWindow(), S_OK);
    HWND hOld = zynKernel_GetWindow();
    ASSERT_HR(zynKernel_ReInitialize(), S_OK);
    HWND hNew = zynKernel_GetWindow();
    EXPECT_FALSE(IsWindow(hOld));
    ASSERT_TRUE(IsWindow(hNew));
    char szTitle[64] = "";
    GetWindowTextA(hNew, szTitle, sizeof(szTitle));
    EXPECT_STREQ(szTitle, "zyn kernel test");
    EXPECT_HR(zynKernel_Render(), S_OK);
    EXPECT_HR(zynKernel_Finalize(), S_OK);
    EXPECT_FALSE(IsWindow(hNew));
}

// A device index past the list makes the context fail. The start hands back
// the context's own code, after a box when reports are on, and is fully stopped.
TEST_F(KernelLifecycle, FailedContextShowsItsBoxAndLeavesAStoppedKernel)
{
    const HRESULT hrDirect = D3DXERR_INVALIDD3DXDEVICEINDEX;  // what the context answers to index 99
    EXPECT_HR(zynKernel_Initialize(m_window.Handle(), 1, 99, 0, 0, 16, 16, 0, 0), hrDirect);
    ASSERT_EQ(MessageBoxLog().size(), 1u);
    EXPECT_EQ(MessageBoxLog()[0].szCaption, "zynKernel Error:");
    EXPECT_EQ(MessageBoxLog()[0].szText, "D3DXCreateContextEx() failed");
    EXPECT_TRUE(g_pD3DX == NULL);
    EXPECT_HR(zynKernel_Finalize(), E_FAIL) << "the failed start left something open";

    MessageBoxLog().clear();
    zynKernel_EnableSystemReport(0);
    EXPECT_HR(zynKernel_Initialize(m_window.Handle(), 1, 99, 0, 0, 16, 16, 0, 0), hrDirect);
    EXPECT_TRUE(MessageBoxLog().empty()) << "a box with reports off: " << MessageBoxLog()[0].szText;
    EXPECT_HR(StartWindowed(), S_OK) << "start after the failures";
}

TEST_F(KernelLifecycle, BadWindowsAndDepthsFailWithoutACrash)
{
    zynKernel_EnableSystemReport(0);
    HWND hDead = CreateWindowExA(0, "STATIC", "dead", WS_POPUP, 0, 0, 10, 10, NULL, NULL, NULL, NULL);
    DestroyWindow(hDead);
    const struct {
        const char* szCase;
        HWND hWnd;
        DWORD dwDevice;
        DWORD dwDepthBits;
    } cases[] = {
        {"null window", NULL, D3DX_DEFAULT, 16},
        {"destroyed window", hDead, D3DX_DEFAULT, 16},
        {"99 depth bits", m_window.Handle(), D3DX_DEFAULT, 99},
        {"device index 0x7FFFFFFF", m_window.Handle(), 0x7FFFFFFF, 16},
    };
    for (const auto& tc : cases) {
        SCOPED_TRACE(tc.szCase);
        HRESULT hr = zynKernel_Initialize(tc.hWnd, 1, tc.dwDevice, 0, 0, 16, tc.dwDepthBits, 0, 0);
        EXPECT_TRUE(FAILED(hr)) << "got " << HrText(hr);
        EXPECT_HR(zynKernel_Finalize(), E_FAIL) << "left open";
    }
    EXPECT_TRUE(MessageBoxLog().empty());
}

TEST_F(KernelLifecycle, RegisterClassFailureShowsItsBox)
{
    WNDCLASSA wc = {};
    wc.lpfnWndProc = DefWindowProcA;
    wc.hInstance = GetModuleHandleA(NULL);
    wc.lpszClassName = "zynKernel Application";
    ASSERT_TRUE(RegisterClassA(&wc));
    EXPECT_HR(StartOwnWindow(), E_FAIL);
    UnregisterClassA("zynKernel Application", GetModuleHandleA(NULL));
    ASSERT_EQ(MessageBoxLog().size(), 1u);
    EXPECT_EQ(MessageBoxLog()[0].szCaption, "zynKernel Error:");
    EXPECT_EQ(MessageBoxLog()[0].szText, "RegisterClass() failed");
    EXPECT_HR(zynKernel_Finalize(), E_FAIL);
}

static BOOL WINAPI CountDriver(GUID*, char*, char*, void* pCount, HMONITOR)
{
    ++*(int*)pCount;
    return TRUE;
}

static HRESULT WINAPI CountMode(DDSURFACEDESC2*, void* pCount)
{
    ++*(int*)pCount;
    return DDENUMRET_OK;
}

static HRESULT WINAPI TakeDepth16(DDPIXELFORMAT* pddpf, void* pOut)
{
    if (pddpf->dwZBufferBitDepth != 16 || pddpf->dwStencilBitDepth != 0)
        return D3DENUMRET_OK;
    *(DDPIXELFORMAT*)pOut = *pddpf;
    return D3DENUMRET_CANCEL;
}

static IDirectDrawSurface7* MakeSurface(IDirectDraw7* pDD, DWORD dwCaps, const DDPIXELFORMAT* pddpf)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | (pddpf ? DDSD_PIXELFORMAT : 0);
    ddsd.dwWidth = ddsd.dwHeight = 64;
    ddsd.ddsCaps.dwCaps = dwCaps;
    if (pddpf)
        ddsd.ddpfPixelFormat = *pddpf;
    IDirectDrawSurface7* pSurface = NULL;
    pDD->CreateSurface(&ddsd, &pSurface, NULL);
    return pSurface;
}

// What the platform itself leaves behind for one start of a bare Direct3D 7
// program that lists the drivers and modes, probes the software rasterizer on
// a 16-bit system-memory texture (as the device list does at every start),
// clears a target with a depth buffer and presents it, makes a managed texture
// and writes a line of text through GDI. Wine keeps a few handles and heap
// blocks of each such start (two blocks of them for the first depth clear of
// a device); this measures them here, with no code of ours.
static void BareProgramStart(HWND hWnd)
{
    int nCount = 0;
    DirectDrawEnumerateExA(CountDriver, &nCount, DDENUM_ATTACHEDSECONDARYDEVICES);
    IDirectDraw7* pDD = NULL;
    if (FAILED(DirectDrawCreateEx(NULL, (void**)&pDD, IID_IDirectDraw7, NULL)))
        return;
    pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL);
    pDD->EnumDisplayModes(0, NULL, &nCount, CountMode);
    IDirect3D7* pD3D = NULL;
    pDD->QueryInterface(IID_IDirect3D7, (void**)&pD3D);

    DDPIXELFORMAT pf1555 = {sizeof(DDPIXELFORMAT), DDPF_RGB | DDPF_ALPHAPIXELS, 0, {16}, {0x7C00}, {0x3E0}, {0x1F},
                            {0x8000}};
    IDirectDrawSurface7* pTexture = MakeSurface(pDD, DDSCAPS_TEXTURE | DDSCAPS_SYSTEMMEMORY | DDSCAPS_3DDEVICE, &pf1555);
    IDirectDrawSurface7* pTarget = MakeSurface(pDD, DDSCAPS_OFFSCREENPLAIN | DDSCAPS_VIDEOMEMORY | DDSCAPS_3DDEVICE, NULL);
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS;
    ddsd.ddsCaps.dwCaps = DDSCAPS_PRIMARYSURFACE;
    IDirectDrawSurface7* pPrimary = NULL;
    pDD->CreateSurface(&ddsd, &pPrimary, NULL);
    IDirectDrawClipper* pClipper = NULL;
    pDD->CreateClipper(0, &pClipper, NULL);
    DDPIXELFORMAT pfDepth = {};
    IDirectDrawSurface7* pDepth = NULL;
    if (pD3D && SUCCEEDED(pD3D->EnumZBufferFormats(IID_IDirect3DHALDevice, TakeDepth16, &pfDepth)) && pfDepth.dwSize)
        pDepth = MakeSurface(pDD, DDSCAPS_ZBUFFER | DDSCAPS_VIDEOMEMORY, &pfDepth);
    if (pDepth && pTarget)
        pTarget->AddAttachedSurface(pDepth);
    IDirect3DDevice7* pDevice = NULL;
    if (pD3D && pTexture && pD3D->CreateDevice(IID_IDirect3DRGBDevice, pTexture, &pDevice) == D3D_OK)
        pDevice->Release();
    pDevice = NULL;
    if (pD3D && pTarget && pPrimary && pClipper &&
        pD3D->CreateDevice(IID_IDirect3DHALDevice, pTarget, &pDevice) == D3D_OK) {
        pClipper->SetHWnd(0, hWnd);
        pPrimary->SetClipper(pClipper);
        pDevice->BeginScene();
        pDevice->Clear(0, NULL, D3DCLEAR_TARGET | (pDepth ? D3DCLEAR_ZBUFFER : 0), 0xFF000000, 1.0f, 0);
        pDevice->EndScene();
        RECT rc = {0, 0, 64, 64};
        MapWindowPoints(hWnd, NULL, (POINT*)&rc, 2);
        pPrimary->Blt(&rc, pTarget, NULL, DDBLT_WAIT, NULL);
        // a managed texture for the first time on this device, and a line of text through GDI
        DDPIXELFORMAT pf8888 = {sizeof(DDPIXELFORMAT), DDPF_RGB | DDPF_ALPHAPIXELS, 0, {32}, {0xFF0000}, {0xFF00},
                                {0xFF}, {0xFF000000}};
        DDSURFACEDESC2 ddsdTexture = {};
        ddsdTexture.dwSize = sizeof(ddsdTexture);
        ddsdTexture.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
        ddsdTexture.dwWidth = 512;
        ddsdTexture.dwHeight = 64;
        ddsdTexture.ddsCaps.dwCaps = DDSCAPS_TEXTURE;
        ddsdTexture.ddsCaps.dwCaps2 = DDSCAPS2_TEXTUREMANAGE;
        ddsdTexture.ddpfPixelFormat = pf8888;
        IDirectDrawSurface7* pManaged = NULL;
        if (SUCCEEDED(pDD->CreateSurface(&ddsdTexture, &pManaged, NULL))) {
            pDevice->SetTexture(0, pManaged);
            pDevice->SetTexture(0, NULL);
            pManaged->Release();
        }
        HDC hdc = NULL;
        if (SUCCEEDED(pTarget->GetDC(&hdc))) {
            TextOutA(hdc, 0, 0, "FPS=0.0", 7);
            pTarget->ReleaseDC(hdc);
        }
        pDevice->Release();
    }
    if (pDepth && pTarget)
        pTarget->DeleteAttachedSurface(0, pDepth);
    for (IUnknown* p : {(IUnknown*)pClipper, (IUnknown*)pPrimary, (IUnknown*)pDepth, (IUnknown*)pTarget,
                        (IUnknown*)pTexture, (IUnknown*)pD3D})
        if (p)
            p->Release();
    pDD->Release();
}

// Wine answers 0 to the usual process counters, so handles are counted from
// the system's handle table and memory as busy blocks of every heap. A cycle
// may hold what a bare program's start holds: the same handles exactly, and
// at most two heap blocks more. Those are Wine's: the first Clear of a fresh
// context keeps a 96-byte block that the bare start does not reproduce, and
// the bare start's own count wanders by a few blocks over 50 cycles. A leaked
// surface, texture or window costs several blocks a cycle, and mostly a
// handle; the console's records are held to zero by its own test.
TEST_F(KernelSoak, FiftyStartStopCyclesLeaveNothingOfOursBehind)
{
    const int nCycles = 50;
    for (int i = 0; i < 2; i++) {
        BareProgramStart(m_window.Handle());
        ASSERT_HR(StartOwnWindow(), S_OK);
        zynKernel_Render();
        ASSERT_HR(zynKernel_Finalize(), S_OK);
    }
    PumpMessages(0);
    long nHandles = CountProcessHandles(), nBlocks = CountHeapBlocks();
    for (int i = 0; i < nCycles; i++)
        BareProgramStart(m_window.Handle());
    PumpMessages(0);
    const long nPlatformHandles = CountProcessHandles() - nHandles, nPlatformBlocks = CountHeapBlocks() - nBlocks;

    nHandles = CountProcessHandles();
    nBlocks = CountHeapBlocks();
    for (int i = 0; i < nCycles; i++) {
        ASSERT_HR(i % 2 ? StartOwnWindow() : StartWindowed(), S_OK) << "cycle " << i;
        zynKernel_Render();
        ASSERT_HR(zynKernel_Finalize(), S_OK) << "cycle " << i;
    }
    PumpMessages(0);
    const long nKernelHandles = CountProcessHandles() - nHandles, nKernelBlocks = CountHeapBlocks() - nBlocks;
    EXPECT_LE(nKernelHandles, nPlatformHandles) << "handles after " << nCycles << " cycles; a bare program alone: "
                                                << nPlatformHandles;
    EXPECT_LE(nKernelBlocks, nPlatformBlocks + 2 * nCycles) << "heap blocks after " << nCycles << " cycles; a bare program alone: "
                                              << nPlatformBlocks;
    std::cout << "growth over " << nCycles << " cycles: kernel " << nKernelHandles << " handles, " << nKernelBlocks
              << " blocks; bare program " << nPlatformHandles << " handles, " << nPlatformBlocks << " blocks\n";
}
