// The frame: the host's routine once a frame with the pause flag, the main
// loop and its ways out, the FPS and debug text in the picture, the clear
// colour, the update-need flag and resizing.
#include "zynkernel_fixture.h"

static int s_nCalls;        // calls of the counting routine
static int s_nPausedCalls;  // of which told they were paused
static int s_nBreakAfter;   // the routine breaks the main loop at this call (0: never)

static void CountingRoutine(int bPaused)
{
    s_nCalls++;
    s_nPausedCalls += bPaused != 0;
    if (s_nBreakAfter && s_nCalls == s_nBreakAfter)
        zynKernel_BreakMainLoop();
}

class KernelFrame : public KernelTest {
protected:
    void SetUp() override
    {
        KernelTest::SetUp();
        s_nCalls = s_nPausedCalls = s_nBreakAfter = 0;
    }
};

TEST_F(KernelFrame, RenderRoutineRunsOnceAFrameAndSeesThePause)
{
    ASSERT_HR(StartWindowed(), S_OK);
    ZYNKERNEL_RENDERROUTINE pfn = NULL;
    zynKernel_GetRenderRoutine(&pfn);
    EXPECT_EQ(pfn, zynKernel_DefaultRenderRoutine);
    zynKernel_SetRenderRoutine(CountingRoutine);
    zynKernel_GetRenderRoutine(&pfn);
    EXPECT_EQ(pfn, CountingRoutine);

    for (int i = 0; i < 3; i++)
        EXPECT_HR(zynKernel_Render(), S_OK);
    EXPECT_EQ(s_nCalls, 3);
    EXPECT_EQ(s_nPausedCalls, 0);
    zynKernel_SetPause(1);
    for (int i = 0; i < 2; i++)
        EXPECT_HR(zynKernel_Render(), S_OK);
    EXPECT_EQ(s_nCalls, 5);
    EXPECT_EQ(s_nPausedCalls, 2) << "paused frames";

    zynKernel_SetRenderRoutine(NULL);
    zynKernel_GetRenderRoutine(&pfn);
    EXPECT_EQ(pfn, zynKernel_DefaultRenderRoutine) << "null stands for the default";
}

TEST_F(KernelFrame, PauseOutlivesARestartButTheRoutineDoesNot)
{
    ASSERT_HR(StartWindowed(), S_OK);
    zynKernel_SetRenderRoutine(CountingRoutine);
    zynKernel_SetPause(1);
    ASSERT_HR(zynKernel_Finalize(), S_OK);
    ASSERT_HR(StartWindowed(), S_OK);
    ZYNKERNEL_RENDERROUTINE pfn = NULL;
    zynKernel_GetRenderRoutine(&pfn);
    EXPECT_EQ(pfn, zynKernel_DefaultRenderRoutine);
    zynKernel_SetRenderRoutine(CountingRoutine);
    zynKernel_Render();
    EXPECT_EQ(s_nPausedCalls, 1) << "the pause was reset by the start";
}

TEST_F(KernelFrame, BreakMainLoopEndsTheLoopWithTheLastFramesResult)
{
    ASSERT_HR(StartWindowed(), S_OK);
    zynKernel_SetRenderRoutine(CountingRoutine);
    s_nBreakAfter = 5;
    EXPECT_HR(zynKernel_MainLoop(), S_OK);
    EXPECT_EQ(s_nCalls, 5);
}

TEST_F(KernelFrame, WaitingQuitMessageRunsNoFrame)
{
    ASSERT_HR(StartWindowed(), S_OK);
    zynKernel_SetRenderRoutine(CountingRoutine);
    PostQuitMessage(0);
    EXPECT_HR(zynKernel_MainLoop(), S_OK);
    EXPECT_EQ(s_nCalls, 0);
}

TEST_F(KernelFrame, ClosingTheKernelsWindowEndsTheLoop)
{
    ASSERT_HR(StartOwnWindow(), S_OK);
    zynKernel_SetRenderRoutine(CountingRoutine);
    s_nBreakAfter = 1000;  // a way out if the close never arrives
    PostMessageA(zynKernel_GetWindow(), WM_CLOSE, 0, 0);
    EXPECT_HR(zynKernel_MainLoop(), S_OK);
    EXPECT_LT(s_nCalls, 1000) << "the loop ran on after WM_CLOSE";
}

TEST_F(KernelFrame, FailingFrameInTheLoopReportsStopsAndQuits)
{
    ASSERT_HR(StartWindowed(), S_OK);
    zynKernel_SetRenderRoutine(CountingRoutine);
    // A resize the context refuses leaves it unable to draw.
    EXPECT_TRUE(FAILED(zynKernel_Resize(0x7FFFFFFF, 0x7FFFFFFF)));
    EXPECT_HR(zynKernel_Render(), E_FAIL);
    EXPECT_HR(zynKernel_MainLoop(), E_FAIL);
    ASSERT_EQ(MessageBoxLog().size(), 1u);
    EXPECT_EQ(MessageBoxLog()[0].szCaption, "D3DX Error");
    EXPECT_EQ(MessageBoxLog()[0].szText, "DDERR_GENERIC");  // E_FAIL shares its value
    EXPECT_HR(zynKernel_Finalize(), E_FAIL) << "the loop did not stop the kernel";
}

TEST_F(KernelFrame, ClearColourFillsTheFrame)
{
    ASSERT_HR(StartWindowed(), S_OK);
    zynKernel_SetRenderRoutine(CountingRoutine);
    zynKernel_EnableDebugOutput(0);
    static const DWORD colors[] = {0xFF204060, 0xFFFF0000, 0xFF00FF80};
    for (DWORD dwColor : colors) {
        EXPECT_HR(zynKernel_SetBackgroundColor(dwColor), S_OK);
        ASSERT_HR(zynKernel_Render(), S_OK);
        EXPECT_TRUE(ColorNear(BackPixel(100, 75), dwColor, 1)) << "centre, colour " << ColorText(dwColor);
        EXPECT_TRUE(ColorNear(BackPixel(0, 0), dwColor, 1)) << "corner, colour " << ColorText(dwColor);
    }
    ASSERT_HR(zynKernel_Finalize(), S_OK);
    EXPECT_HR(zynKernel_SetBackgroundColor(0xFF000000), E_FAIL) << "while stopped";
}

// The FPS line stands at 0.85 of the width on the top line, the default
// routine's text at 0.01; both are white on the clear colour.
TEST_F(KernelFrame, FpsAndDefaultRoutineTextAppearInThePicture)
{
    ASSERT_HR(StartWindowed(), S_OK);
    const DWORD dwBack = 0xFF000040;
    zynKernel_SetBackgroundColor(dwBack);
    const RECT rcFps = {170, 0, 200, 14}, rcDefault = {2, 0, 60, 14};

    for (DWORD dwStart = GetTickCount(); GetTickCount() - dwStart < 600;)  // past the first renewal of the FPS text
        zynKernel_Render();
    ASSERT_HR(zynKernel_Render(), S_OK);
    EXPECT_GT(BackInk(rcFps, dwBack), 5) << "FPS text missing";
    EXPECT_GT(BackInk(rcDefault, dwBack), 5) << "default routine's text missing";

    zynKernel_SetRenderRoutine(CountingRoutine);
    zynKernel_EnableDebugOutput(0);
    ASSERT_HR(zynKernel_Render(), S_OK);
    EXPECT_EQ(BackInk(rcFps, dwBack), 0) << "FPS text with debug output off";
    EXPECT_EQ(BackInk(rcDefault, dwBack), 0) << "text with the host's own routine";
}

TEST_F(KernelFrame, DebugTextIsRefusedWhileStopped)
{
    EXPECT_HR(zynKernel_DrawDebugText(0.5f, 0.5f, 0xFFFFFFFF, (char*)"x"), E_FAIL);
    ASSERT_HR(StartWindowed(), S_OK);
    EXPECT_HR(zynKernel_DrawDebugText(0.5f, 0.5f, 0xFFFFFFFF, (char*)"x"), S_OK);
}

TEST_F(KernelFrame, UpdateNeedIsReadOnce)
{
    EXPECT_EQ(zynKernel_AreUpdateNeed(), 0);
    zynKernel_UpdateNeed();
    EXPECT_EQ(zynKernel_AreUpdateNeed(), 1);
    EXPECT_EQ(zynKernel_AreUpdateNeed(), 0);
}

TEST_F(KernelFrame, ResizeFollowsTheWindowAndIsIgnoredWhileInactive)
{
    EXPECT_HR(zynKernel_Resize(100, 100), S_OK) << "while stopped";
    ASSERT_HR(StartOwnWindow(320, 240), S_OK);
    HWND hWnd = zynKernel_GetWindow();
    SetWindowPos(hWnd, NULL, 0, 0, 420, 330, SWP_NOMOVE | SWP_NOZORDER);  // WM_SIZE reaches zynKernel_WndProc
    RECT rc;
    GetClientRect(hWnd, &rc);
    DWORD dwWidth = 0, dwHeight = 0;
    g_pD3DX->GetBufferSize(&dwWidth, &dwHeight);
    EXPECT_EQ(dwWidth, (DWORD)rc.right);
    EXPECT_EQ(dwHeight, (DWORD)rc.bottom);
    zynKernel_EnableDebugOutput(0);
    zynKernel_SetRenderRoutine(CountingRoutine);
    zynKernel_SetBackgroundColor(0xFF30A050);
    ASSERT_HR(zynKernel_Render(), S_OK);
    EXPECT_TRUE(ColorNear(BackPixel(rc.right - 1, rc.bottom - 1), 0xFF30A050, 1)) << "far corner after resize";
}
