// The kernel: the one window, graphics context and set of device interfaces
// that the whole library shares, the start and stop of every module, and the
// frame loop that calls the host's render routine.
//
// Step by step: zynKernel_Initialize (over a window of the host's, or making
// one); zynKernel_SetRenderRoutine and the key routines; zynKernel_MainLoop,
// or zynKernel_Render from a loop of the host's own; zynKernel_Finalize.
// Inside the render routine the host draws with plain Direct3D 7 calls on
// g_pD3DDev: each frame starts cleared, unlit, untextured on stage 0,
// alpha-blended and writing depth.
//
// Results: 0 (S_OK), 0x80004005 (E_FAIL) for a refused call, or the failing
// call's own code passed on. Start failures also show a message box
// ("zynKernel Error:") unless zynKernel_EnableSystemReport(0) silenced them.
//
// Ownership: the kernel owns the window it makes, the context and the
// interfaces below; each exported pointer holds one reference of its own. A
// host that wants to keep one past zynKernel_Finalize adds its own reference.
// There is one kernel in a process, and everything runs on the window's thread.
#ifndef ZYNKERNEL_H
#define ZYNKERNEL_H

#include <windows.h>
#include <ddraw.h>
#include <d3d.h>

#include "zynapi.h"
#include "zyncontext.h"

typedef void (*ZYNKERNEL_RENDERROUTINE)(int bPaused);
typedef void (*ZYNKERNEL_KEYROUTINE)(HWND hWnd, int nKey);
typedef LRESULT (*ZYNKERNEL_WNDPROC)(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

// exported data: null, 0 or empty while no context is open
extern ZYN_API ID3DXContext* g_pD3DX;
extern ZYN_API IDirect3DDevice7* g_pD3DDev;
extern ZYN_API IDirect3D7* g_pD3D;
extern ZYN_API IDirectDraw7* g_pDD;
extern ZYN_API IDirectDrawSurface7* g_pPrimaryBuffer;   // full screen only
extern ZYN_API IDirectDrawSurface7* g_pZBuffer;         // full screen only
extern ZYN_API IDirectDrawSurface7* g_pBackBuffers[32]; // full screen only
extern ZYN_API int g_nNumBackBuffers;                   // 0 in a window
extern ZYN_API int g_bFullscreen;
extern ZYN_API int g_bZBufferLockEnabled;               // the depth surface could be locked at start
extern ZYN_API DDPIXELFORMAT g_pfZBuffer;               // valid while g_bZBufferLockEnabled is 1

// lifecycle
// Starts everything over the host's window. dwWidth and dwHeight are not read:
// a windowed context takes the window's client area, a full-screen one the
// window's rectangle. dwDevice is a device index or 0xFFFFFFFF for the default.
// E_FAIL if a context is open already; else the failing call's code.
ZYN_API HRESULT zynKernel_Initialize(HWND hWnd, int bWindowed, DWORD dwDevice, DWORD dwWidth, DWORD dwHeight,
                                     DWORD dwColorBits, DWORD dwDepthBits, DWORD dwStencilBits, int bTripleBuffer);
// Registers the class "zynKernel Application", makes and shows a window of
// dwWidth by dwHeight with zynKernel_WndProc, and starts over it. The window
// dies with zynKernel_Finalize.
ZYN_API HRESULT zynKernel_Initialize(char* szTitle, HINSTANCE hInstance, int bWindowed, DWORD dwDevice,
                                     DWORD dwWidth, DWORD dwHeight, DWORD dwColorBits, DWORD dwDepthBits,
                                     DWORD dwStencilBits, int bTripleBuffer);
// Stops everything and starts again as a plain windowed context on the default
// device. A window the kernel made is made anew.
ZYN_API HRESULT zynKernel_ReInitialize();
// Stops everything. E_FAIL if nothing is started; else the result of D3DXUninitialize.
ZYN_API HRESULT zynKernel_Finalize();
// 0 silences the message boxes of a failed start.
ZYN_API void zynKernel_EnableSystemReport(int bEnable);
ZYN_API HWND zynKernel_GetWindow();

// frame loop
// Pumps messages and draws a frame whenever the queue is empty, until WM_QUIT
// or zynKernel_BreakMainLoop. Returns the last frame's result, or 0.
ZYN_API HRESULT zynKernel_MainLoop();
ZYN_API HRESULT zynKernel_BreakMainLoop();
// Draws and presents one frame. E_FAIL while the context cannot draw.
ZYN_API HRESULT zynKernel_Render();
// Calls zynKernel_Render over and over for dwMilliseconds.
ZYN_API void zynKernel_RenderFor(DWORD dwMilliseconds);
ZYN_API void zynKernel_SetPause(int bPause);
ZYN_API void zynKernel_UpdateNeed();
// Returns the update-need flag and clears it.
ZYN_API int zynKernel_AreUpdateNeed();
// Shows or hides the FPS line.
ZYN_API HRESULT zynKernel_EnableDebugOutput(int bEnable);
// Text at fractions x, y (0 to 1) of the target. E_FAIL while inactive.
ZYN_API HRESULT zynKernel_DrawDebugText(float x, float y, DWORD dwColor, char* szText);
ZYN_API HRESULT zynKernel_SetBackgroundColor(DWORD dwColor);
// Null installs zynKernel_DefaultRenderRoutine.
ZYN_API void zynKernel_SetRenderRoutine(ZYNKERNEL_RENDERROUTINE pfnRoutine);
ZYN_API void zynKernel_GetRenderRoutine(ZYNKERNEL_RENDERROUTINE* ppfnRoutine);
ZYN_API void zynKernel_DefaultRenderRoutine(int bPaused);
// Resizes the context; 0 and nothing done while inactive.
ZYN_API HRESULT zynKernel_Resize(DWORD dwWidth, DWORD dwHeight);
// Brings lost surfaces back, or restarts when the display mode changed.
ZYN_API HRESULT zynKernel_WindowedModeChanged();
// Shows the name of a result code in a message box "D3DX Error".
ZYN_API void zynKernel_InterpreteError(HRESULT hr);

// window messages and keys
ZYN_API LRESULT CALLBACK zynKernel_WndProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
// The last stop of every message; must not be null.
ZYN_API void zynKernel_SetWndProcCascade(ZYNKERNEL_WNDPROC pfnCascade);
ZYN_API void zynKernel_GetWndProcCascade(ZYNKERNEL_WNDPROC* ppfnCascade);
ZYN_API LRESULT zynKernel_DefaultWndProcCascade(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
// Null installs zynKernel_DefaultKeyboardRoutine.
ZYN_API void zynKernel_SetKeyDownRoutine(ZYNKERNEL_KEYROUTINE pfnRoutine);
ZYN_API void zynKernel_SetKeyUpRoutine(ZYNKERNEL_KEYROUTINE pfnRoutine);
ZYN_API void zynKernel_GetKeyDownRoutine(ZYNKERNEL_KEYROUTINE* ppfnRoutine);
ZYN_API void zynKernel_GetKeyUpRoutine(ZYNKERNEL_KEYROUTINE* ppfnRoutine);
ZYN_API void zynKernel_DefaultKeyboardRoutine(HWND hWnd, int nKey);

// kernel commands and reports
// The callback of the console commands "Pause", "Test", "BgColor", "Memory",
// "Evict" and "DebugOutput".
ZYN_API void zynKernel_CommandRoutine(unsigned long dwID, int nArgs, char** ppArgs);
// Free and total texture memory in bytes, local video memory and all kinds.
// E_FAIL while inactive, and nothing is written.
ZYN_API HRESULT zynKernel_Memory(DWORD* pLocalFree, DWORD* pLocalTotal, DWORD* pAllFree, DWORD* pAllTotal);

#endif
