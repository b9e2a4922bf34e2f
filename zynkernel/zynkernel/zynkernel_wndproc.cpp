// The render window's procedure: the one road by which keys and the mouse
// reach the kernel. Input goes, in this order, to the kernel's own keys, the
// camera, the host's key routines, and at last to the cascade routine, which
// sees every message: the kernel consumes none.
#include "zynkernel/zynkernel_local.h"
#include "zynconsole.h"

static ZYNKERNEL_WNDPROC g_pfnWndProcCascade = zynKernel_DefaultWndProcCascade;      // last stop of every message
static ZYNKERNEL_KEYROUTINE g_pfnKeyDownRoutine = zynKernel_DefaultKeyboardRoutine;  // host's key-down routine
static ZYNKERNEL_KEYROUTINE g_pfnKeyUpRoutine = zynKernel_DefaultKeyboardRoutine;    // host's key-up routine

LRESULT CALLBACK zynKernel_WndProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    switch (uMsg) {
    case WM_SIZE: {
        // A minimised window has a size of 0 and is left alone.
        DWORD dwWidth = LOWORD(lParam), dwHeight = HIWORD(lParam);
        if (dwWidth > 0 && dwHeight > 0) {
            HRESULT hr = zynKernel_Resize(dwWidth, dwHeight);
            if (FAILED(hr)) {
                zynKernel_InterpreteError(hr);
                zynKernel_Finalize();
                PostQuitMessage(0);
            }
        }
        break;
    }
    case WM_CLOSE:
        PostQuitMessage(0);
        break;
    case WM_KEYDOWN:
        zynKernel_KeyDown(hWnd, (int)wParam);
        break;
    case WM_KEYUP:
        zynKernel_KeyUp(hWnd, (int)wParam);
        break;
    }
    // camera: zynKernelCam_Message(hWnd, uMsg, wParam, lParam) sees every message.
    return g_pfnWndProcCascade(hWnd, uMsg, wParam, lParam);
}

// Auto-repeats come through here too: a held Pause key toggles on each one.
void zynKernel_KeyDown(HWND hWnd, int nKey)
{
    switch (nKey) {
    case VK_PAUSE:
        g_bPause = !g_bPause;
        break;
    case VK_SPACE:
        g_bStepFrame = 1;
        break;
    case VK_OEM_3:
        zynConsole_Show();
        break;
    }
    // camera: zynKernelCam_KeyDown(nKey).
    g_pfnKeyDownRoutine(hWnd, nKey);
}

void zynKernel_KeyUp(HWND hWnd, int nKey) { g_pfnKeyUpRoutine(hWnd, nKey); }

void zynKernel_SetWndProcCascade(ZYNKERNEL_WNDPROC pfnCascade) { g_pfnWndProcCascade = pfnCascade; }

void zynKernel_GetWndProcCascade(ZYNKERNEL_WNDPROC* ppfnCascade) { *ppfnCascade = g_pfnWndProcCascade; }

LRESULT zynKernel_DefaultWndProcCascade(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    return DefWindowProcA(hWnd, uMsg, wParam, lParam);
}

void zynKernel_SetKeyDownRoutine(ZYNKERNEL_KEYROUTINE pfnRoutine)
{
    g_pfnKeyDownRoutine = pfnRoutine ? pfnRoutine : zynKernel_DefaultKeyboardRoutine;
}

void zynKernel_SetKeyUpRoutine(ZYNKERNEL_KEYROUTINE pfnRoutine)
{
    g_pfnKeyUpRoutine = pfnRoutine ? pfnRoutine : zynKernel_DefaultKeyboardRoutine;
}

void zynKernel_GetKeyDownRoutine(ZYNKERNEL_KEYROUTINE* ppfnRoutine) { *ppfnRoutine = g_pfnKeyDownRoutine; }

void zynKernel_GetKeyUpRoutine(ZYNKERNEL_KEYROUTINE* ppfnRoutine) { *ppfnRoutine = g_pfnKeyUpRoutine; }

void zynKernel_DefaultKeyboardRoutine(HWND, int) {}
