// The console's view state: the font, colours and animation time, opening and
// closing with the keyboard taken over through the window procedure, the
// timing of urgent lines, the poll of the key binds while closed, and the wait
// for a key. The panel's drawing and the line editor build on this.
#include "zynconsole/zynconsole_view.h"
#include "zynconsole/zynconsole_alias.h"
#include "zynconsole/zynconsole_log.h"
#include "zynkernel.h"

#include <stdlib.h>
#include <string.h>

#define URGENT_LINE_TIME 2000   // milliseconds each urgent line is on show
#define CURSOR_BLINK_TIME 200
#define WAIT_KEY_LIMIT 30000    // a wait for a key gives up after this long
#define VK_CONSOLE 0xC0

static int g_bInputOn = 1;              // 0 while a wait for a key runs
static char g_chWaitKey;                // the key that ends the wait; 0 any
static WNDPROC g_pfnSavedWndProc;       // the window's procedure while the console is open

static LRESULT CALLBACK zynConsole_WndProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

void zynConsole_RebuildText()
{
    // the panel's text geometry is filled in by the view
}

void zynConsole_RefreshPrompt()
{
    // the prompt line's geometry is filled in by the view
}

void zynConsole_ReadView()
{
    RECT* pView = &g_pConsole->rcView;
    if (g_pConsole->hWnd == NULL || !GetClientRect(g_pConsole->hWnd, pView))
        SetRectEmpty(pView);
    pView->bottom = (pView->top + pView->bottom) / 2;
}

void zynConsole_ResetView() { g_bInputOn = 1; }

void zynConsole_ReleaseView()
{
    if (g_pConsole->pFont != NULL)
        g_pConsole->pFont->Release();
    g_pConsole->pFont = NULL;
}

HRESULT zynConsole_SetFont(void* pFont)
{
    if (!g_bConsoleStarted)
        return E_FAIL;
    ZYNCONSOLE_STATE* p = g_pConsole;
    if (p->pFont != NULL && p->pFont != pFont)
        p->pFont->Release();
    p->pFont = (LPDIRECTDRAWSURFACE7)pFont;
    p->nCellWidth = p->nCellHeight = 0;
    if (p->pFont != NULL) {
        DDSURFACEDESC2 ddsd = {};
        ddsd.dwSize = sizeof(ddsd);
        if (SUCCEEDED(p->pFont->GetSurfaceDesc(&ddsd))) {
            p->nCellWidth = ddsd.dwWidth >> 5;
            p->nCellHeight = ddsd.dwHeight >> 2;
        }
    }
    zynConsole_RebuildText();
    zynConsole_RefreshPrompt();
    return S_OK;
}

// Stores one setting of the view; the background also needs new geometry.
static HRESULT StoreSetting(unsigned long* pdwField, unsigned long dwValue, bool bRebuild)
{
    if (!g_bConsoleStarted)
        return E_FAIL;
    *pdwField = dwValue;
    if (bRebuild)
        zynConsole_RebuildText();
    return S_OK;
}

HRESULT zynConsole_SetBackgroundColor(unsigned long dwColor)
{
    return StoreSetting(&g_pConsole->dwBackColor, dwColor, true);
}

HRESULT zynConsole_SetAnimationTime(unsigned long dwTime)
{
    return StoreSetting(&g_pConsole->dwAnimTime, dwTime, false);
}

HRESULT zynConsole_Show()
{
    if (!g_bConsoleStarted || g_bConsoleShown)
        return E_FAIL;
    ZYNCONSOLE_STATE* p = g_pConsole;
    g_bConsoleShown = 1;
    g_bUrgentActive = 0;
    zynConsole_ReleaseKeys();
    // pending urgent lines stand in the text anyway
    free(p->pUrgent);
    p->pUrgent = NULL;
    p->pUrgentLine = NULL;
    p->hWnd = zynKernel_GetWindow();
    if (p->hWnd != NULL) {
        g_pfnSavedWndProc = (WNDPROC)GetWindowLongPtrA(p->hWnd, GWLP_WNDPROC);
        SetWindowLongPtrA(p->hWnd, GWLP_WNDPROC, (LONG_PTR)zynConsole_WndProc);
    }
    p->bOpening = 1;
    p->dwAnimStart = GetTickCount();
    zynConsole_RebuildText();
    zynConsole_RefreshPrompt();
    return S_OK;
}

HRESULT zynConsole_Hide()
{
    if (!g_bConsoleShown)
        return E_FAIL;
    ZYNCONSOLE_STATE* p = g_pConsole;
    if (g_pfnSavedWndProc != NULL && p->hWnd != NULL)
        SetWindowLongPtrA(p->hWnd, GWLP_WNDPROC, (LONG_PTR)g_pfnSavedWndProc);
    g_pfnSavedWndProc = NULL;
    p->bOpening = 0;
    p->dwAnimStart = GetTickCount();
    return S_OK;
}

HRESULT zynConsole_IsShow(int& bShow)
{
    bShow = 0;
    if (!g_bConsoleStarted)
        return E_FAIL;
    bShow = g_bConsoleShown ? 1 : 0;
    return S_OK;
}

int zynConsole_IsVisible() { return g_bConsoleShown; }

// Moves the urgent queue on to its next line when the present one has had its
// time, and ends the urgent state after the last.
static void AdvanceUrgent(DWORD dwNow)
{
    ZYNCONSOLE_STATE* p = g_pConsole;
    if (dwNow - p->dwUrgentTime <= URGENT_LINE_TIME)
        return;
    const char* pNewline = p->pUrgentLine ? strchr(p->pUrgentLine, '\n') : NULL;
    if (pNewline == NULL || pNewline[1] == 0) {
        g_bUrgentActive = 0;
        free(p->pUrgent);
        p->pUrgent = NULL;
        p->pUrgentLine = NULL;
        return;
    }
    p->dwUrgentTime = dwNow;
    p->pUrgentLine = (char*)pNewline + 1;
    zynConsole_RebuildText();
}

HRESULT zynConsole_Render()
{
    if (!g_bConsoleStarted)
        return S_OK;
    if (!g_bConsoleShown && !g_bUrgentActive) {
        zynConsole_PollBinds();
        return S_OK;
    }
    ZYNCONSOLE_STATE* p = g_pConsole;
    DWORD dwNow = GetTickCount();
    if (g_bUrgentActive)
        AdvanceUrgent(dwNow);
    if (g_bConsoleShown) {
        if (dwNow - p->dwCursorTime > CURSOR_BLINK_TIME) {
            p->dwCursorTime = dwNow;
            p->bCursorOn = !p->bCursorOn;
        }
        if (dwNow - p->dwAnimStart >= p->dwAnimTime && !p->bOpening)
            g_bConsoleShown = 0;   // the close animation has run out
    }
    return S_OK;
}

void zynConsole_WaitKey(char chKey)
{
    g_chWaitKey = chKey;
    g_bInputOn = 0;
    DWORD dwStart = GetTickCount();
    while (!g_bInputOn && GetTickCount() - dwStart < WAIT_KEY_LIMIT) {
        MSG msg;
        if (!PeekMessageA(&msg, NULL, 0, 0, PM_REMOVE)) {
            zynKernel_Render();   // frames go on while the console waits
            continue;
        }
        if (msg.message == WM_QUIT) {
            PostQuitMessage((int)msg.wParam);   // the main loop ends as well
            break;
        }
        // a closed console has no procedure of its own to see the key
        if (msg.message == WM_CHAR && (chKey == 0 || (char)msg.wParam == chKey))
            break;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    g_bInputOn = 1;
}

static LRESULT CALLBACK zynConsole_WndProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    switch (uMsg) {
    case WM_SIZE:
        zynConsole_RebuildText();
        zynConsole_RefreshPrompt();
        break;
    case WM_CLOSE:
        if (!g_bInputOn) {
            g_bInputOn = 1;
            return 1;
        }
        break;
    case WM_KEYDOWN:
        if (!g_bInputOn)
            return 1;
        if (wParam == VK_CONSOLE || wParam == VK_ESCAPE)
            zynConsole_Hide();
        else if (g_bTestBind)
            zynConsole_KeyDown((int)wParam);
        return 1;
    case WM_KEYUP:
        if (g_bTestBind)
            zynConsole_KeyUp((int)wParam);
        return 1;
    case WM_CHAR:
        if (!g_bInputOn && (g_chWaitKey == 0 || (char)wParam == g_chWaitKey))
            g_bInputOn = 1;
        return 1;
    default:
        break;
    }
    if (g_pfnSavedWndProc == NULL)
        return DefWindowProcA(hWnd, uMsg, wParam, lParam);
    if (g_pfnSavedWndProc == zynConsole_WndProc)
        return 0;
    return CallWindowProcA(g_pfnSavedWndProc, hWnd, uMsg, wParam, lParam);
}
