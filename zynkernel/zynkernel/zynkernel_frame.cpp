// The frame loop: the message pump, one frame from clear to present, the FPS
// count, pause and single step, the update-need flag, and the recovery of lost
// surfaces.
//
// A frame never stops halfway: a failed BeginScene skips the scene but the
// frame is still counted and presented, and only the present's result (after
// recovery) comes back to the caller. Messages go before frames: the loop
// draws only when the queue is empty.
#include "zynkernel/zynkernel_local.h"

#include <stdio.h>

#include "zynconsole.h"

int g_bPause;                 // the render routine is told it is paused; a start keeps it
int g_bStepFrame;             // one frame runs unpaused; cleared at the end of each frame

static int g_bRunning;        // the main loop goes on while set
static int g_bUpdateNeed;     // something changed the picture; the host polls it
static ZYNKERNEL_RENDERROUTINE g_pfnRenderRoutine = zynKernel_DefaultRenderRoutine;
static DWORD g_dwFPSTick;     // tick count at the last renewal of the FPS text
static int g_nFPSFrames;      // frames counted since then
static char g_szFPS[100];     // the FPS line; empty until the first renewal

HRESULT zynKernel_MainLoop()
{
    HRESULT hr = S_OK;
    MSG msg;
    g_bRunning = 1;
    PeekMessageA(&msg, NULL, 0, 0, PM_NOREMOVE);
    while (msg.message != WM_QUIT && g_bRunning) {
        if (PeekMessageA(&msg, NULL, 0, 0, PM_REMOVE)) {
            TranslateMessage(&msg);
            DispatchMessageA(&msg);
            continue;
        }
        hr = zynKernel_Render();
        if (FAILED(hr)) {
            zynKernel_InterpreteError(hr);
            zynKernel_Finalize();
            PostQuitMessage(0);
        }
    }
    return hr;
}

HRESULT zynKernel_BreakMainLoop()
{
    g_bRunning = 0;
    return S_OK;
}

// The text is renewed twice a second; the frame that renews it is not counted.
static void CountFrame()
{
    DWORD dwNow = GetTickCount();
    DWORD dwElapsed = dwNow - g_dwFPSTick;
    if (dwElapsed > 500) {
        double fFPS = (double)g_nFPSFrames * 1000.0 / (double)dwElapsed;
        snprintf(g_szFPS, sizeof(g_szFPS), "FPS=%.1f", fFPS);
        g_dwFPSTick = dwNow;
        g_nFPSFrames = 0;
    } else {
        g_nFPSFrames++;
    }
}

HRESULT zynKernel_Render()
{
    if (!g_bActive)
        return E_FAIL;

    if (SUCCEEDED(g_pD3DDev->BeginScene())) {
        g_pD3DX->Clear(D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
        // The host's routine starts unlit, untextured on stage 0, alpha-blended and writing depth.
        g_pD3DDev->SetTexture(0, NULL);
        g_pD3DDev->SetRenderState(D3DRENDERSTATE_LIGHTING, FALSE);
        g_pD3DDev->SetRenderState(D3DRENDERSTATE_SRCBLEND, D3DBLEND_SRCALPHA);
        g_pD3DDev->SetRenderState(D3DRENDERSTATE_DESTBLEND, D3DBLEND_INVSRCALPHA);
        g_pD3DDev->SetRenderState(D3DRENDERSTATE_ZWRITEENABLE, TRUE);
        // camera: zynKernel_DrawGuides() draws the grid, the axes and the scale text.
        g_pfnRenderRoutine(g_bPause && !g_bStepFrame);
        // streams: zyn3DStream_Render() steps the streams' clock and statistics.
        zynConsole_Render();  // the console over everything; polls the binds while closed
        g_pD3DDev->EndScene();
    }
    g_bStepFrame = 0;

    CountFrame();
    // After EndScene: the context writes the line onto the finished buffer.
    if (g_bDebugOutput)
        zynKernel_DrawDebugText(0.85f, 0.0f, 0xFFFFFFFF, g_szFPS);

    HRESULT hr = g_pD3DX->UpdateFrame(0);
    if (hr == DDERR_SURFACELOST || hr == DDERR_SURFACEBUSY) {
        hr = zynKernel_WindowedModeChanged();
        g_bActive = SUCCEEDED(hr) ? 1 : 0;
    }
    return hr;
}

void zynKernel_SetPause(int bPause) { g_bPause = bPause; }

void zynKernel_UpdateNeed() { g_bUpdateNeed = 1; }

int zynKernel_AreUpdateNeed()
{
    int bNeed = g_bUpdateNeed;
    g_bUpdateNeed = 0;
    return bNeed;
}

HRESULT zynKernel_EnableDebugOutput(int bEnable)
{
    g_bDebugOutput = bEnable;
    return S_OK;
}

HRESULT zynKernel_DrawDebugText(float x, float y, DWORD dwColor, char* szText)
{
    if (!g_bActive)
        return E_FAIL;
    if (g_bDebugTextOff)
        return S_OK;
    g_pD3DX->DrawDebugText(x, y, dwColor, szText);
    return S_OK;
}

HRESULT zynKernel_SetBackgroundColor(DWORD dwColor)
{
    if (!g_bActive)
        return E_FAIL;
    g_pD3DX->SetClearColor(dwColor);
    return S_OK;
}

void zynKernel_SetRenderRoutine(ZYNKERNEL_RENDERROUTINE pfnRoutine)
{
    g_pfnRenderRoutine = pfnRoutine ? pfnRoutine : zynKernel_DefaultRenderRoutine;
}

void zynKernel_GetRenderRoutine(ZYNKERNEL_RENDERROUTINE* ppfnRoutine) { *ppfnRoutine = g_pfnRenderRoutine; }

void zynKernel_DefaultRenderRoutine(int)
{
    zynKernel_DrawDebugText(0.01f, 0.0f, 0xFFFFFFFF, (char*)"zynKernel_DefaultRenderRoutine()");
}

HRESULT zynKernel_Resize(DWORD dwWidth, DWORD dwHeight)
{
    if (!g_bActive)
        return S_OK;
    g_pD3D->EvictManagedTextures();
    HRESULT hr = g_pD3DX->Resize(dwWidth, dwHeight);
    g_bActive = SUCCEEDED(hr) ? 1 : 0;
    // camera: zynKernel_CorrectAspect() follows the new size, also after a failure.
    return hr;
}

// Three outcomes: the surfaces come back; the display mode changed and the
// whole library restarts windowed; or another program holds the screen and
// the thread waits until it lets go.
HRESULT zynKernel_WindowedModeChanged()
{
    HRESULT hr = g_pDD->TestCooperativeLevel();
    while (hr == DDERR_EXCLUSIVEMODEALREADYSET) {
        Sleep(500);
        hr = g_pDD->TestCooperativeLevel();
    }
    if (SUCCEEDED(hr)) {
        HRESULT hrRestore = g_pDD->RestoreAllSurfaces();
        return FAILED(hrRestore) ? hrRestore : hr;
    }
    if (hr == DDERR_WRONGMODE)
        return zynKernel_ReInitialize();
    return hr;
}

void zynKernel_InterpreteError(HRESULT hr)
{
    char szText[100];
    D3DXGetErrorString(hr, sizeof(szText), szText);
    MessageBoxA(NULL, szText, "D3DX Error", MB_OK);
}
