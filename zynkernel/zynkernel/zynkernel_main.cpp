// Kernel lifecycle: the attach step, the exported data and the start and stop
// of the whole library.
#include "zynkernel/zynkernel_local.h"

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

BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
    if (dwReason == DLL_PROCESS_ATTACH)
        g_hModule = hInstance;
    return TRUE;
}

void zynKernel_EnableSystemReport(int bEnable) { g_bSystemReport = bEnable; }

HWND zynKernel_GetWindow() { return g_hWnd; }
