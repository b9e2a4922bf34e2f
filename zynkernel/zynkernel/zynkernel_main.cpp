// Kernel lifecycle: the attach step, the exported data, the start and stop of
// the whole library in their fixed order, and the console font.
//
// A start is guarded by g_bContextOpen, which is set as soon as the context has
// been asked for, whether that worked or not; a stop clears it. Everything a
// start sets anew is set here; what outlives a stop (the window handle, the
// report switch, the host's key routines, the frame's flags and counters) is
// left alone.
#include "zynkernel/zynkernel_local.h"

#include <string.h>

#include "zyn3dapi.h"
#include "zynconsole.h"
#include "zyntexture.h"

// exported data
ID3DXContext* g_pD3DX;
IDirect3DDevice7* g_pD3DDev;
IDirect3D7* g_pD3D;
IDirectDraw7* g_pDD;
IDirectDrawSurface7* g_pPrimaryBuffer;
IDirectDrawSurface7* g_pZBuffer;
IDirectDrawSurface7* g_pBackBuffers[32];
int g_nNumBackBuffers;
int g_bFullscreen;
int g_bZBufferLockEnabled;
DDPIXELFORMAT g_pfZBuffer;

// shared with the other files of the kernel (zynkernel_local.h)
HINSTANCE g_hModule;     // this DLL: the font resource is looked up under it
HWND g_hWnd;             // the render window; kept after a stop
int g_bActive;           // the context can draw
int g_bSystemReport = 1; // start failures show a message box
int g_bDebugOutput = 1;  // the frame shows the FPS line
int g_bDebugTextOff;     // zynKernel_DrawDebugText draws nothing

// private state of the lifecycle
static HINSTANCE g_hAppInstance; // instance the window class was registered under; null over a host's window
static int g_bContextOpen;       // a context was asked for and not yet given back
static int g_bOwnWindow;         // the window was made here and dies with the stop

static const char s_szWindowClass[] = "zynKernel Application";
static const char s_szErrorCaption[] = "zynKernel Error:";

// The device state every frame starts from, set once at start in this order.
struct ZynStartState {
    BOOL bStage;  // a texture stage state rather than a render state
    DWORD dwStage;
    DWORD dwState;
    DWORD dwValue;
};

static const ZynStartState s_StartState[] = {
    {FALSE, 0, D3DRENDERSTATE_DITHERENABLE, TRUE},
    {FALSE, 0, D3DRENDERSTATE_ALPHABLENDENABLE, TRUE},
    {FALSE, 0, D3DRENDERSTATE_COLORVERTEX, FALSE},
    {FALSE, 0, D3DRENDERSTATE_SPECULARENABLE, TRUE},
};

static const ZynStartState s_StartStageState[] = {
    {TRUE, 0, D3DTSS_COLORARG1, D3DTA_TEXTURE},
    {TRUE, 0, D3DTSS_COLORARG2, D3DTA_DIFFUSE},
    {TRUE, 0, D3DTSS_COLOROP, D3DTOP_MODULATE},
    {TRUE, 1, D3DTSS_COLOROP, D3DTOP_DISABLE},
    {TRUE, 0, D3DTSS_ALPHAARG1, D3DTA_TEXTURE},
    {TRUE, 0, D3DTSS_ALPHAARG2, D3DTA_DIFFUSE},
    {TRUE, 0, D3DTSS_ALPHAOP, D3DTOP_MODULATE},
    {TRUE, 1, D3DTSS_ALPHAOP, D3DTOP_DISABLE},
};

BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
    if (dwReason == DLL_PROCESS_ATTACH)
        g_hModule = hInstance;
    return TRUE;
}

void zynKernel_ReportFailure(const char* szText)
{
    if (g_bSystemReport)
        MessageBoxA(GetActiveWindow(), szText, s_szErrorCaption, MB_OK | MB_ICONERROR);
}

void zynKernel_Assert(int bCondition, const char* szWhat)
{
    if (bCondition)
        return;
    char szLine[160];
    wsprintfA(szLine, "zynKernel: assertion failed: %s\n", szWhat);
    OutputDebugStringA(szLine);
}

static void SetStartState(const ZynStartState* pTable, int nCount)
{
    for (int i = 0; i < nCount; i++) {
        if (pTable[i].bStage)
            g_pD3DDev->SetTextureStageState(pTable[i].dwStage, (D3DTEXTURESTAGESTATETYPE)pTable[i].dwState,
                                            pTable[i].dwValue);
        else
            g_pD3DDev->SetRenderState((D3DRENDERSTATETYPE)pTable[i].dwState, pTable[i].dwValue);
    }
}

static void SetDeviceStartState()
{
    SetStartState(s_StartState, sizeof(s_StartState) / sizeof(s_StartState[0]));
    for (DWORD dwStage = 0; dwStage < 8; dwStage++) {
        g_pD3DDev->SetTextureStageState(dwStage, D3DTSS_MINFILTER, D3DTFN_LINEAR);
        g_pD3DDev->SetTextureStageState(dwStage, D3DTSS_MAGFILTER, D3DTFG_LINEAR);
        g_pD3DDev->SetTextureStageState(dwStage, D3DTSS_MIPFILTER, D3DTFP_POINT);
    }
    SetStartState(s_StartStageState, sizeof(s_StartStageState) / sizeof(s_StartStageState[0]));
}

// Full screen: the primary, the depth surface and the flip chain's back
// buffers, and whether the depth surface can be read without waiting.
static void FetchFullscreenSurfaces()
{
    g_pZBuffer = g_pD3DX->GetZBuffer();
    g_pPrimaryBuffer = g_pD3DX->GetPrimary();
    g_nNumBackBuffers = (int)g_pD3DX->GetNumBackBuffers();
    if (g_nNumBackBuffers > 32)
        g_nNumBackBuffers = 32;
    memset(g_pBackBuffers, 0, sizeof(g_pBackBuffers));
    for (int i = 0; i < g_nNumBackBuffers; i++)
        g_pBackBuffers[i] = g_pD3DX->GetBackBuffer((DWORD)i);

    g_bZBufferLockEnabled = 0;
    if (!g_pZBuffer)
        return;
    DDSURFACEDESC2 ddsd;
    memset(&ddsd, 0, sizeof(ddsd));
    ddsd.dwSize = sizeof(ddsd);
    if (SUCCEEDED(g_pZBuffer->Lock(NULL, &ddsd, DDLOCK_READONLY, NULL))) {
        g_pZBuffer->Unlock(NULL);
        memcpy(&g_pfZBuffer, &ddsd.ddpfPixelFormat, sizeof(g_pfZBuffer));
        g_bZBufferLockEnabled = 1;
    }
}

static void ClearWindowedSurfaces()
{
    g_pZBuffer = NULL;
    g_pPrimaryBuffer = NULL;
    g_nNumBackBuffers = 0;
    g_bZBufferLockEnabled = 0;
    memset(g_pBackBuffers, 0, sizeof(g_pBackBuffers));
}

// The console font: a DDS file (magic, 124-byte description, pixels) carried
// as resource "zynFont" 101. Returns FALSE when a step failed; the start then
// ends at once with success, and the console goes without a font.
static BOOL LoadConsoleFont()
{
    HRSRC hRes = FindResourceA(g_hModule, MAKEINTRESOURCEA(101), "zynFont");
    zynKernel_Assert(hRes != NULL, "console font resource not found");
    if (!hRes)
        return FALSE;
    HGLOBAL hData = LoadResource(g_hModule, hRes);
    const BYTE* pFile = (const BYTE*)LockResource(hData);
    zynKernel_Assert(pFile != NULL, "console font resource cannot be locked");
    if (!pFile)
        return FALSE;

    DDSURFACEDESC2 ddsd;
    memcpy(&ddsd, pFile + 4, sizeof(ddsd));
    DWORD dwWidth = ddsd.dwWidth, dwHeight = ddsd.dwHeight;
    D3DX_SURFACEFORMAT format = D3DX_SF_A8R8G8B8;
    IDirectDrawSurface7* pFont = NULL;
    D3DXCreateTexture(g_pD3DDev, NULL, &dwWidth, &dwHeight, &format, NULL, &pFont, NULL);
    zynKernel_Assert(pFont != NULL, "console font texture cannot be made");
    if (!pFont) {
        FreeResource(hData);
        return FALSE;
    }
    D3DXLoadTextureFromMemory(g_pD3DDev, pFont, 0, (void*)(pFile + 4 + sizeof(ddsd)), NULL, format,
                              (DWORD)ddsd.lPitch, NULL, D3DX_FT_POINT);
    FreeResource(hData);
    zyn3DAPI_DestroyMipMaps((void**)&pFont);
    zynConsole_SetFont(pFont);  // the console owns it from here on
    return TRUE;
}

HRESULT zynKernel_Initialize(HWND hWnd, int bWindowed, DWORD dwDevice, DWORD, DWORD, DWORD dwColorBits,
                             DWORD dwDepthBits, DWORD dwStencilBits, int bTripleBuffer)
{
    if (g_bContextOpen)
        return E_FAIL;
    g_hWnd = hWnd;

    HRESULT hr = D3DXInitialize();
    if (FAILED(hr)) {
        zynKernel_ReportFailure("D3DXInitialize() failed");
        return hr;
    }

    RECT rc = {0, 0, 0, 0};
    GetWindowRect(hWnd, &rc);
    DWORD dwWidth = D3DX_DEFAULT, dwHeight = D3DX_DEFAULT, dwBackBuffers = 1;
    if (!bWindowed) {
        dwWidth = (DWORD)(rc.right - rc.left);
        dwHeight = (DWORD)(rc.bottom - rc.top);
        dwBackBuffers = 1 + (bTripleBuffer != 0);
    }
    hr = D3DXCreateContextEx(dwDevice, bWindowed ? 0 : D3DX_CONTEXT_FULLSCREEN, g_hWnd, bWindowed ? NULL : g_hWnd,
                             dwColorBits, 0, dwDepthBits, dwStencilBits, dwBackBuffers, dwWidth, dwHeight,
                             D3DX_DEFAULT, &g_pD3DX);
    g_bContextOpen = 1;
    if (FAILED(hr)) {
        zynKernel_ReportFailure("D3DXCreateContextEx() failed");
        zynKernel_Finalize();
        return hr;
    }
    g_bActive = 1;

    // A missing device or DirectDraw object leaves the context open for
    // zynKernel_Finalize to clean up.
    g_pD3DDev = g_pD3DX->GetD3DDevice();
    if (!g_pD3DDev)
        return E_FAIL;
    g_pD3D = g_pD3DX->GetD3D();
    g_pDD = g_pD3DX->GetDD();
    if (!g_pDD)
        return E_FAIL;

    g_bFullscreen = bWindowed == 0;
    if (g_bFullscreen)
        FetchFullscreenSurfaces();
    else
        ClearWindowedSurfaces();

    SetDeviceStartState();
    g_pD3DX->Clear(D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
    // camera: zynKernel_ResetMatrices() puts the camera at (0, 0, 10), 45 degrees, planes 0.1 and 100.
    zynKernel_SetRenderRoutine(NULL);
    // camera: zynKernel_SetCameraPosition(-120, 90, -160).
    g_bDebugOutput = 1;
    g_bDebugTextOff = 0;
    zynKernel_SetWndProcCascade(zynKernel_DefaultWndProcCascade);

    // Modules start in this order: the camera registers commands, so it needs
    // the console; the font needs the console and the 3D API.
    zynConsole_Initialize();
    // camera: zynKernelCam_Initialize()
    zyn3DAPI_Initialize();
    // streams: zyn3DStream_Initialize()
    // GLPort: GLPort_Initialize()

    if (!LoadConsoleFont())
        return S_OK;
    zynKernel_RegisterCommands();
    g_bOwnWindow = 0;
    return S_OK;
}

HRESULT zynKernel_Initialize(char* szTitle, HINSTANCE hInstance, int bWindowed, DWORD dwDevice, DWORD dwWidth,
                             DWORD dwHeight, DWORD dwColorBits, DWORD dwDepthBits, DWORD dwStencilBits,
                             int bTripleBuffer)
{
    WNDCLASSA wc;
    memset(&wc, 0, sizeof(wc));
    wc.lpfnWndProc = zynKernel_WndProc;
    wc.hInstance = hInstance;
    wc.hIcon = LoadIconA(NULL, MAKEINTRESOURCEA(0x7F00));
    wc.hCursor = LoadCursorA(NULL, MAKEINTRESOURCEA(0x7F00));
    wc.hbrBackground = (HBRUSH)GetStockObject(BLACK_BRUSH);
    wc.lpszClassName = s_szWindowClass;
    if (!RegisterClassA(&wc)) {
        zynKernel_ReportFailure("RegisterClass() failed");
        return E_FAIL;
    }
    g_hAppInstance = hInstance;

    HWND hWnd = CreateWindowExA(0, s_szWindowClass, szTitle, bWindowed ? WS_OVERLAPPEDWINDOW : WS_POPUP,
                                CW_USEDEFAULT, CW_USEDEFAULT, (int)dwWidth, (int)dwHeight, NULL, NULL, hInstance,
                                NULL);
    if (!hWnd)
        return E_FAIL;
    ShowWindow(hWnd, SW_SHOW);
    UpdateWindow(hWnd);

    HRESULT hr = zynKernel_Initialize(hWnd, bWindowed, dwDevice, dwWidth, dwHeight, dwColorBits, dwDepthBits,
                                      dwStencilBits, bTripleBuffer);
    if (FAILED(hr)) {
        DestroyWindow(hWnd);
        UnregisterClassA(s_szWindowClass, hInstance);
        g_hAppInstance = NULL;
        return hr;
    }
    g_bOwnWindow = 1;
    return S_OK;
}

// A window of the kernel's own dies with the stop, so a restart over it makes
// a new one first, with the old title and size, as the start that made it did.
HRESULT zynKernel_ReInitialize()
{
    char szTitle[256] = "";
    RECT rc = {0, 0, 640, 480};
    BOOL bOwnWindow = g_bOwnWindow;
    HINSTANCE hInstance = g_hAppInstance;
    if (bOwnWindow) {
        GetWindowTextA(g_hWnd, szTitle, sizeof(szTitle));
        GetWindowRect(g_hWnd, &rc);
    }

    HRESULT hr = zynKernel_Finalize();
    if (FAILED(hr))
        return hr;
    if (bOwnWindow)
        hr = zynKernel_Initialize(szTitle, hInstance, 1, D3DX_DEFAULT, (DWORD)(rc.right - rc.left),
                                  (DWORD)(rc.bottom - rc.top), 16, 16, 0, 0);
    else
        hr = zynKernel_Initialize(g_hWnd, 1, D3DX_DEFAULT, 640, 480, 16, 16, 0, 0);
    return FAILED(hr) ? hr : S_OK;
}

template <class T> static void ReleaseAndClear(T*& p)
{
    if (p) {
        p->Release();
        p = NULL;
    }
}

HRESULT zynKernel_Finalize()
{
    if (!g_bContextOpen)
        return E_FAIL;
    g_bActive = 0;
    if (g_bOwnWindow) {
        DestroyWindow(g_hWnd);
        UnregisterClassA(s_szWindowClass, g_hAppInstance);
    }

    // Modules stop in this order, while the device is still there for them.
    // GLPort: GLPort_Finalize()
    // streams: zyn3DStream_Finalize()
    zyn3DAPI_Finalize();
    zynConsole_Finalize();
    // camera: zynKernelCam_Finalize()

    ReleaseAndClear(g_pZBuffer);
    ReleaseAndClear(g_pPrimaryBuffer);
    for (int i = 0; i < g_nNumBackBuffers && i < 32; i++)
        ReleaseAndClear(g_pBackBuffers[i]);
    ReleaseAndClear(g_pDD);
    ReleaseAndClear(g_pD3DDev);
    ReleaseAndClear(g_pD3D);
    ReleaseAndClear(g_pD3DX);

    HRESULT hr = D3DXUninitialize();
    if (g_hAppInstance) {
        UnregisterClassA(s_szWindowClass, g_hAppInstance);
        g_hAppInstance = NULL;
    }
    g_bOwnWindow = 0;
    g_bContextOpen = 0;
    return hr;
}

void zynKernel_EnableSystemReport(int bEnable) { g_bSystemReport = bEnable; }

HWND zynKernel_GetWindow() { return g_hWnd; }
