// Helpers shared by every test program: result and colour printing, a window to
// draw into, reading pixels back, message boxes that close themselves, and
// counters of handles and heap blocks for leak checks.
//
// Step by step: a test makes a ZynTestWindow, builds its context or kernel on
// it, draws, and compares pixels with ColorNear; HrIs compares result codes and
// prints both as "0x80004005 (E_FAIL)". The test main installs the message box
// guard before any test runs, so no box can block a headless run; MessageBoxLog
// tells which boxes were seen and closed.
#ifndef ZYNTEST_H
#define ZYNTEST_H

#include <windows.h>
#include <ddraw.h>
#include <d3d.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

// results
std::string HrText(HRESULT hr);
::testing::AssertionResult HrIs(const char* szGotExpr, const char* szWantExpr, HRESULT hrGot, HRESULT hrWant);
#define EXPECT_HR(got, want) EXPECT_PRED_FORMAT2(HrIs, got, want)
#define ASSERT_HR(got, want) ASSERT_PRED_FORMAT2(HrIs, got, want)

// colours (0xAARRGGBB); nTolerance is allowed per channel, alpha included when bAlpha
std::string ColorText(DWORD dwColor);
::testing::AssertionResult ColorNear(DWORD dwGot, DWORD dwWant, int nTolerance, bool bAlpha = false);

// a plain visible top-level window with a client area of the given size
class ZynTestWindow {
public:
    ZynTestWindow(int nWidth = 320, int nHeight = 240, DWORD dwStyle = WS_OVERLAPPEDWINDOW);
    ~ZynTestWindow();
    HWND Handle() const { return m_hwnd; }
    void Destroy();
private:
    HWND m_hwnd;
};

// The desktop's size and colour depth, as a full-screen context takes them.
struct ZynScreenMode {
    int nWidth, nHeight, nBits;
};
ZynScreenMode CurrentScreenMode();

// Pumps the thread's messages for about nMilliseconds.
void PumpMessages(DWORD nMilliseconds);

// pixels read back
DWORD ReadSurfacePixel(IDirectDrawSurface7* pSurface, int x, int y);   // through Lock
DWORD ReadWindowPixel(HWND hwnd, int x, int y);                        // through the window's DC (GDI output)
// Pixels of the rectangle, every nStepX-th of a row, that differ from dwBackground by more
// than 32 in a channel: text or drawing on a cleared frame. -1 for a null surface.
int CountInkPixels(IDirectDrawSurface7* pSurface, const RECT& rc, DWORD dwBackground, int nStepX = 1);
// What was presented at client point (x, y) of hwnd, read through the primary
// surface; under Wine this reads the window's drawable, where presented
// frames land and which GDI reads of the window do not see.
DWORD ReadPresentedPixel(IDirectDrawSurface7* pPrimary, HWND hwnd, int x, int y);

// message boxes: every box on the test thread is closed as soon as it is shown
struct ZynMessageBoxRecord {
    std::string szCaption;
    std::string szText;
};
void InstallMessageBoxGuard();
std::vector<ZynMessageBoxRecord>& MessageBoxLog();

// leak counters (Wine answers 0 to the usual process counters)
long CountProcessHandles();
long CountHeapBlocks();

#endif
