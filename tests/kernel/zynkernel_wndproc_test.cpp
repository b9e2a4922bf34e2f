// The kernel's window procedure, driven by messages posted to the queue of a
// window that the kernel made: the kernel's own keys, the host's key routines,
// the cascade that sees every message, and resizing on WM_SIZE.
#include "zynkernel_fixture.h"

static int s_nKeyDown, s_nKeyUp;  // last key seen by the host's routines
static int s_nCascadeSizes;       // WM_SIZE messages that reached the cascade
static int s_nRoutineCalls, s_nPausedCalls;

static void HostKeyDown(HWND, int nKey) { s_nKeyDown = nKey; }
static void HostKeyUp(HWND, int nKey) { s_nKeyUp = nKey; }
static void CountingRoutine(int bPaused)
{
    s_nRoutineCalls++;
    s_nPausedCalls += bPaused != 0;
}

static LRESULT RecordingCascade(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (uMsg == WM_SIZE)
        s_nCascadeSizes++;
    return DefWindowProcA(hWnd, uMsg, wParam, lParam);
}

// Swallows WM_CLOSE: the window must then survive a close.
static LRESULT KeepOpenCascade(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (uMsg == WM_CLOSE)
        return 0;
    return DefWindowProcA(hWnd, uMsg, wParam, lParam);
}

class KernelMessages : public KernelTest {
protected:
    void SetUp() override
    {
        KernelTest::SetUp();
        s_nKeyDown = s_nKeyUp = s_nCascadeSizes = s_nRoutineCalls = s_nPausedCalls = 0;
        ASSERT_HR(StartOwnWindow(), S_OK);
        m_hWnd = zynKernel_GetWindow();
    }
    void Post(UINT uMsg, WPARAM wParam, LPARAM lParam = 0)
    {
        PostMessageA(m_hWnd, uMsg, wParam, lParam);
        PumpMessages(0);
    }
    HWND m_hWnd = NULL;
};

TEST_F(KernelMessages, KeysReachTheHostsRoutinesAndNullRestoresTheDefault)
{
    zynKernel_SetKeyDownRoutine(HostKeyDown);
    zynKernel_SetKeyUpRoutine(HostKeyUp);
    Post(WM_KEYDOWN, 'W');
    Post(WM_KEYUP, 'Q');
    EXPECT_EQ(s_nKeyDown, 'W');
    EXPECT_EQ(s_nKeyUp, 'Q');

    ZYNKERNEL_KEYROUTINE pfn = NULL;
    zynKernel_GetKeyDownRoutine(&pfn);
    EXPECT_EQ(pfn, HostKeyDown);
    zynKernel_SetKeyDownRoutine(NULL);
    zynKernel_GetKeyDownRoutine(&pfn);
    EXPECT_EQ(pfn, zynKernel_DefaultKeyboardRoutine);
    zynKernel_GetKeyUpRoutine(&pfn);
    EXPECT_EQ(pfn, HostKeyUp);
    Post(WM_KEYDOWN, 'E');
    EXPECT_EQ(s_nKeyDown, 'W') << "the replaced routine still got the key";
}

TEST_F(KernelMessages, PauseKeyTogglesAndSpaceStepsOneFrame)
{
    zynKernel_SetRenderRoutine(CountingRoutine);
    zynKernel_SetKeyDownRoutine(HostKeyDown);
    Post(WM_KEYDOWN, VK_PAUSE);
    EXPECT_EQ(s_nKeyDown, VK_PAUSE) << "the kernel's key still reaches the host";
    zynKernel_Render();
    EXPECT_EQ(s_nPausedCalls, 1) << "after Pause";

    Post(WM_KEYDOWN, VK_SPACE);
    zynKernel_Render();
    zynKernel_Render();
    EXPECT_EQ(s_nRoutineCalls, 3);
    EXPECT_EQ(s_nPausedCalls, 2) << "Space lets exactly one frame through unpaused";

    Post(WM_KEYDOWN, VK_PAUSE);
    zynKernel_Render();
    EXPECT_EQ(s_nPausedCalls, 2) << "second Pause";
}

TEST_F(KernelMessages, SizeOfZeroIsLeftAloneButStillReachesTheCascade)
{
    zynKernel_SetWndProcCascade(RecordingCascade);
    ZYNKERNEL_WNDPROC pfn = NULL;
    zynKernel_GetWndProcCascade(&pfn);
    EXPECT_EQ(pfn, RecordingCascade);
    DWORD dwWidth = 0, dwHeight = 0;
    g_pD3DX->GetBufferSize(&dwWidth, &dwHeight);
    Post(WM_SIZE, SIZE_MINIMIZED, MAKELPARAM(0, 0));
    Post(WM_SIZE, SIZE_RESTORED, MAKELPARAM(200, 0));
    EXPECT_EQ(s_nCascadeSizes, 2);
    DWORD dwWidthAfter = 0, dwHeightAfter = 0;
    g_pD3DX->GetBufferSize(&dwWidthAfter, &dwHeightAfter);
    EXPECT_EQ(dwWidthAfter, dwWidth);
    EXPECT_EQ(dwHeightAfter, dwHeight);
    EXPECT_HR(zynKernel_Render(), S_OK);

    Post(WM_SIZE, SIZE_RESTORED, MAKELPARAM(160, 100));
    g_pD3DX->GetBufferSize(&dwWidthAfter, &dwHeightAfter);
    EXPECT_EQ(dwWidthAfter, 160u);
    EXPECT_EQ(dwHeightAfter, 100u);
}

TEST_F(KernelMessages, CascadeThatKeepsTheWindowStillPostsTheQuit)
{
    zynKernel_SetWndProcCascade(KeepOpenCascade);
    PostMessageA(m_hWnd, WM_CLOSE, 0, 0);
    MSG msg;
    BOOL bQuit = FALSE;
    while (PeekMessageA(&msg, NULL, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT)
            bQuit = TRUE;
        DispatchMessageA(&msg);
    }
    EXPECT_TRUE(bQuit) << "no WM_QUIT after WM_CLOSE";
    EXPECT_TRUE(IsWindow(m_hWnd)) << "the cascade swallowed the close, the window must live";
}

TEST_F(KernelMessages, StartPutsTheDefaultCascadeBack)
{
    zynKernel_SetWndProcCascade(RecordingCascade);
    ASSERT_HR(zynKernel_Finalize(), S_OK);
    ASSERT_HR(StartWindowed(), S_OK);
    ZYNKERNEL_WNDPROC pfn = NULL;
    zynKernel_GetWndProcCascade(&pfn);
    EXPECT_EQ(pfn, zynKernel_DefaultWndProcCascade);
}
