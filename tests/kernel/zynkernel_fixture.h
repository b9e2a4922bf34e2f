// The kernel tests' fixture: a fresh window for each test, the kernel stopped
// at the end with every exported interface given back, and the frame's flags
// that outlive a stop put back for the next test.
#ifndef ZYNKERNEL_FIXTURE_H
#define ZYNKERNEL_FIXTURE_H

#include "zyntest.h"
#include "zynkernel.h"

class KernelTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        zynKernel_EnableSystemReport(1);
        MessageBoxLog().clear();
    }
    void TearDown() override
    {
        zynKernel_Finalize();
        EXPECT_TRUE(g_pD3DX == NULL && g_pD3DDev == NULL && g_pD3D == NULL && g_pDD == NULL)
            << "interfaces left after the stop";
        zynKernel_SetPause(0);
        zynKernel_SetKeyDownRoutine(NULL);
        zynKernel_SetKeyUpRoutine(NULL);
        zynKernel_EnableSystemReport(1);
        PumpMessages(0);
    }
    // A windowed start over the test's own window, with 16 colour and 16 depth bits, as a restart makes it.
    HRESULT StartWindowed()
    {
        return zynKernel_Initialize(m_window.Handle(), 1, D3DX_DEFAULT, 0, 0, 16, 16, 0, 0);
    }
    // A start that makes its own window (class "zynKernel Application", zynKernel_WndProc).
    HRESULT StartOwnWindow(DWORD dwWidth = 320, DWORD dwHeight = 240)
    {
        return zynKernel_Initialize((char*)"zyn kernel test", GetModuleHandleA(NULL), 1, D3DX_DEFAULT, dwWidth,
                                    dwHeight, 16, 16, 0, 0);
    }
    // A pixel of the windowed context's back buffer, which holds the last frame after its present.
    DWORD BackPixel(int x, int y)
    {
        IDirectDrawSurface7* pBack = g_pD3DX->GetBackBuffer(0);
        if (!pBack)
            return 0xDEADBEEF;
        DWORD dw = ReadSurfacePixel(pBack, x, y);
        pBack->Release();
        return dw;
    }
    // How many pixels of the back buffer's rectangle differ from dwBackground by more than 32 a channel.
    int BackInk(const RECT& rc, DWORD dwBackground)
    {
        IDirectDrawSurface7* pBack = g_pD3DX->GetBackBuffer(0);
        int nInk = CountInkPixels(pBack, rc, dwBackground);
        if (pBack)
            pBack->Release();
        return nInk;
    }

    ZynTestWindow m_window{200, 150};
};

#endif
