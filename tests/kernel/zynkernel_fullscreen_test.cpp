// The kernel at full screen: the flip chain the host sees, and the recovery of
// lost surfaces when the application is deactivated and comes back.
#include "zynkernel_fixture.h"

class KernelFullscreen : public KernelTest {
protected:
    void SetUp() override
    {
        KernelTest::SetUp();
        ZynScreenMode mode = CurrentScreenMode();
        m_nWidth = mode.nWidth;
        m_nHeight = mode.nHeight;
        m_nBits = mode.nBits;
        m_pPopup = new ZynTestWindow(m_nWidth, m_nHeight, WS_POPUP);
        SetWindowPos(m_pPopup->Handle(), NULL, 0, 0, m_nWidth, m_nHeight, SWP_NOZORDER);
    }
    void TearDown() override
    {
        KernelTest::TearDown();
        delete m_pPopup;
    }
    HRESULT StartFullscreen(int bTripleBuffer = 0)
    {
        return zynKernel_Initialize(m_pPopup->Handle(), 0, D3DX_DEFAULT, 0, 0, m_nBits >= 24 ? 32 : m_nBits,
                                    D3DX_DEFAULT, 0, bTripleBuffer);
    }
    DWORD FrontPixel(int x, int y) { return ReadSurfacePixel(g_pPrimaryBuffer, x, y); }
    int m_nWidth = 0, m_nHeight = 0, m_nBits = 0;
    ZynTestWindow* m_pPopup = NULL;
};

TEST_F(KernelFullscreen, HostSeesTheFlipChainAndTheDepthSurface)
{
    ASSERT_HR(StartFullscreen(1), S_OK);
    EXPECT_EQ(g_bFullscreen, 1);
    EXPECT_EQ(g_nNumBackBuffers, 2) << "triple buffering";
    EXPECT_TRUE(g_pPrimaryBuffer != NULL && g_pBackBuffers[0] != NULL && g_pBackBuffers[1] != NULL);
    EXPECT_TRUE(g_pBackBuffers[2] == NULL);
    ASSERT_TRUE(g_pZBuffer != NULL);
    if (g_bZBufferLockEnabled) {
        EXPECT_NE(g_pfZBuffer.dwZBufferBitDepth, 0u) << "depth format copied from the lock";
    }
    DWORD dwWidth = 0, dwHeight = 0;
    g_pD3DX->GetBufferSize(&dwWidth, &dwHeight);
    EXPECT_EQ(dwWidth, (DWORD)m_nWidth) << "full screen takes the window's size";
    EXPECT_EQ(dwHeight, (DWORD)m_nHeight);

    zynKernel_SetRenderRoutine([](int) {});
    zynKernel_EnableDebugOutput(0);
    zynKernel_SetBackgroundColor(0xFF40C020);
    for (int i = 0; i < 3; i++)
        ASSERT_HR(zynKernel_Render(), S_OK);
    EXPECT_TRUE(ColorNear(FrontPixel(m_nWidth / 2, m_nHeight / 2), 0xFF40C020, 1));
}

// Deactivated, the frame's present finds its surfaces lost and the recovery
// fails while another application would hold the screen: the kernel stops
// drawing. Brought back first, the same recovery restores the surfaces.
TEST_F(KernelFullscreen, LostSurfacesComeBackAfterReactivationAndAFailedRecoveryStopsDrawing)
{
    ASSERT_HR(StartFullscreen(), S_OK);
    zynKernel_SetRenderRoutine([](int) {});
    zynKernel_EnableDebugOutput(0);
    ASSERT_HR(zynKernel_Render(), S_OK);

    HWND hWnd = m_pPopup->Handle();
    SendMessageA(hWnd, WM_ACTIVATEAPP, FALSE, 0);
    PumpMessages(50);
    SendMessageA(hWnd, WM_ACTIVATEAPP, TRUE, 0);
    PumpMessages(50);
    zynKernel_SetBackgroundColor(0xFF2060A0);
    HRESULT hr = zynKernel_Render();
    EXPECT_TRUE(SUCCEEDED(hr)) << "recovery after reactivation gave " << HrText(hr);
    EXPECT_HR(zynKernel_Render(), S_OK) << "the frame after the recovery";
    EXPECT_HR(zynKernel_Render(), S_OK);
    EXPECT_TRUE(ColorNear(FrontPixel(5, 5), 0xFF2060A0, 1)) << "frames draw again";

    SendMessageA(hWnd, WM_ACTIVATEAPP, FALSE, 0);
    PumpMessages(50);
    hr = zynKernel_Render();
    EXPECT_TRUE(FAILED(hr)) << "a frame while deactivated gave " << HrText(hr);
    EXPECT_HR(zynKernel_Render(), E_FAIL) << "the failed recovery must clear the active flag";
    SendMessageA(hWnd, WM_ACTIVATEAPP, TRUE, 0);
    PumpMessages(50);
    EXPECT_HR(zynKernel_Render(), E_FAIL) << "nothing draws again without a restart";
    // The system minimised the window when it lost the screen; restored, a
    // restart over it draws windowed.
    EXPECT_TRUE(IsIconic(hWnd)) << "the full-screen window after losing the screen";
    ShowWindow(hWnd, SW_RESTORE);
    PumpMessages(50);
    EXPECT_HR(zynKernel_ReInitialize(), S_OK);
    EXPECT_EQ(g_bFullscreen, 0) << "the restart is windowed";
    EXPECT_HR(zynKernel_Render(), S_OK);
}

TEST_F(KernelFullscreen, ReInitializeFromFullScreenStartsWindowed)
{
    ASSERT_HR(StartFullscreen(), S_OK);
    ASSERT_HR(zynKernel_Render(), S_OK);
    EXPECT_HR(zynKernel_ReInitialize(), S_OK);
    EXPECT_EQ(g_bFullscreen, 0);
    EXPECT_HR(zynKernel_Render(), S_OK);
}

TEST_F(KernelFullscreen, WindowSizeWithNoDisplayModeFailsWithTheContextsCode)
{
    zynKernel_EnableSystemReport(0);
    SetWindowPos(m_pPopup->Handle(), NULL, 0, 0, 123, 77, SWP_NOZORDER);
    EXPECT_HR(StartFullscreen(), D3DXERR_INVALIDMODE);
    EXPECT_HR(zynKernel_Finalize(), E_FAIL);
    EXPECT_TRUE(MessageBoxLog().empty());
}
