// The console inside a running kernel: the listing laid out with the kernel's
// font, and the console key on a window that the kernel made, whose procedure
// the open console takes over.
#include "zynconsole_fixture.h"
#include "zynkernel.h"

typedef ConsoleTest ConsoleInKernel;

static int s_nPausedFrames;
static void RecordPause(int bPaused) { s_nPausedFrames += bPaused != 0; }

// 16-pixel cells on 640 x 480: (640 / 11) / 16 - 1 = 2 names a row.
TEST_F(ConsoleInKernel, ListingOfAModuleUsesTheFontsColumns)
{
    EXPECT_EQ(Run({"Kernel:", "?", ".."}), "Kernel:\nPause\t\tBgColor\t\tMemory\nEvict\t\tDebugOutput\n");
}

TEST_F(ConsoleInKernel, ConsoleKeyOpensAndClosesOverTheKernelsOwnWindow)
{
    ASSERT_HR(zynKernel_Finalize(), S_OK);
    ASSERT_HR(zynKernel_Initialize((char*)"console key", GetModuleHandleA(NULL), 1, D3DX_DEFAULT, 640, 480, 16, 16, 0,
                                   0),
              S_OK);
    HWND hWnd = zynKernel_GetWindow();
    zynKernel_SetRenderRoutine(RecordPause);
    s_nPausedFrames = 0;
    int bShow = -1;

    PostMessageA(hWnd, WM_KEYDOWN, VK_OEM_3, 0);
    PumpMessages(0);
    zynConsole_IsShow(bShow);
    EXPECT_EQ(bShow, 1) << "after the console key";
    EXPECT_NE((WNDPROC)GetWindowLongPtrA(hWnd, GWLP_WNDPROC), (WNDPROC)zynKernel_WndProc)
        << "the open console takes the window's keys";

    PostMessageA(hWnd, WM_KEYDOWN, VK_PAUSE, 0);
    PumpMessages(0);
    zynKernel_Render();
    EXPECT_EQ(s_nPausedFrames, 0) << "Pause reached the kernel while the console was open";

    PostMessageA(hWnd, WM_KEYDOWN, VK_OEM_3, 0);
    PumpMessages(0);
    zynKernel_RenderFor(600);  // the closing animation runs its 400 ms
    zynConsole_IsShow(bShow);
    EXPECT_EQ(bShow, 0) << "after the second console key";
    EXPECT_EQ((WNDPROC)GetWindowLongPtrA(hWnd, GWLP_WNDPROC), (WNDPROC)zynKernel_WndProc)
        << "the kernel's procedure is back";
    PostMessageA(hWnd, WM_KEYDOWN, VK_PAUSE, 0);
    PumpMessages(0);
    zynKernel_Render();
    EXPECT_EQ(s_nPausedFrames, 1) << "Pause after the console closed";
    zynKernel_SetPause(0);
}
