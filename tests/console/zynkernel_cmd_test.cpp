// The kernel's console commands through the interpreter, with the kernel
// started on a real window: colours in the cleared frame, the memory line,
// the debug-text switch and the interpreter's refusals.
#include "zynconsole_fixture.h"
#include "zynkernel.h"

typedef ConsoleTest KernelCommands;

TEST_F(KernelCommands, BgColorKeepsTheLowEightBits)
{
    EXPECT_EQ(Run({"Kernel:BgColor 300 0 0"}), "");
    ASSERT_HR(zynKernel_Render(), S_OK);
    IDirectDrawSurface7* pBack = NULL;
    g_pD3DDev->GetRenderTarget(&pBack);
    ASSERT_TRUE(pBack != NULL);
    DWORD dwPixel = ReadSurfacePixel(pBack, 5, 5);
    pBack->Release();
    EXPECT_TRUE(ColorNear(dwPixel & 0xFFFFFF, 0x2C0000, 1)) << "BgColor 300 0 0";
    EXPECT_EQ(Run({"Kernel:BgColor 1 2 3 4"}), "Error: Command 'BgColor' has 3 Argument(s).\n");
}

TEST_F(KernelCommands, MemoryPrintsWholeMegabytes)
{
    DWORD dwLocalFree = 1, dwLocalTotal = 1, dwAllFree = 1, dwAllTotal = 1;
    ASSERT_HR(zynKernel_Memory(&dwLocalFree, &dwLocalTotal, &dwAllFree, &dwAllTotal), S_OK);
    char szExpected[128];
    snprintf(szExpected, sizeof(szExpected), "Local: %lu/%lu; AGP: %lu/%lu\n", dwLocalFree >> 20,
             dwLocalTotal >> 20, dwAllFree >> 20, dwAllTotal >> 20);
    std::string szText = Run({"Kernel:Memory"});
    EXPECT_EQ(szText, std::string("\n") + szExpected);
    EXPECT_GT(dwLocalTotal, 0u);
}

TEST_F(KernelCommands, InterpreterRefusesWrongArgumentCounts)
{
    EXPECT_EQ(Run({"Kernel:Pause 1", "Kernel:DebugOutput"}),
              "Error: Command 'Pause' has 0 Argument(s).\nError: Command 'DebugOutput' has 1 Argument(s).\n");
    EXPECT_EQ(Run({"Kernel:DebugOutput 0", "Kernel:DebugOutput 1", "Kernel:Evict", "Kernel:Pause", "Kernel:Pause"}),
              "");
}

static int s_nTestFrames;
static void CountFrames(int) { s_nTestFrames++; }

// "Test" prints with frames running in between; its percentage is rewritten
// in place by backspaces, so the log sees only the last figure. The table's
// numbers come from rand(), whose state the DLL and the test share.
TEST_F(KernelCommands, TestPrintsItsDemonstrationWhileFramesRun)
{
    zynKernel_SetRenderRoutine(CountFrames);
    s_nTestFrames = 0;
    srand(7);
    DWORD dwStart = GetTickCount();
    std::string szGot = Run({"Test"});
    DWORD dwElapsed = GetTickCount() - dwStart;
    srand(7);
    std::string szWant = "Console test\nDemonstrates\tstandart console behaviour...\nHeavy\t\tcalculations...\n"
                         "Performing" + std::string(20, '.') +
                         "\nDone.\nAnother test...\nPerforming: 100%\nDone0xfe.\nTable:E\n"
                         "\tCol1\tCol2\tCol3\tCol4\tCol5";
    for (int nLine = 1; nLine <= 5; nLine++) {
        szWant += "\nLine" + std::to_string(nLine);
        for (int k = 0; k < 5; k++)
            szWant += "\t" + std::to_string(rand());
    }
    szWant += "\nDone.\nPress any key....";
    EXPECT_EQ(szGot, szWant);
    EXPECT_GE(dwElapsed, 1400u) << "20 x 20 ms and 101 x 10 ms of frames";
    EXPECT_GT(s_nTestFrames, 20) << "frames drawn during the command";
}

// With "/p" the listing stops after each page of 10 rows (16-pixel cells on a
// 640 x 480 window) until a key comes; keys waiting in the queue end the waits.
TEST_F(KernelCommands, PagedListingWaitsForAKeyAtEachPage)
{
    std::string szAll = Run({"?"});
    int nRows = 0;
    for (char c : szAll)
        nRows += c == '\n';
    ASSERT_GT(nRows, 10) << "the whole listing fits one page; nothing to page";
    for (int i = 0; i < 8; i++)
        PostMessageA(m_pWindow->Handle(), WM_CHAR, 'x', 0);
    DWORD dwStart = GetTickCount();
    std::string szPaged = Run({"? /p"});
    EXPECT_LT(GetTickCount() - dwStart, 10000u) << "a wait did not end on its key";
    size_t nPages = 0;
    for (size_t at = szPaged.find("Press any Key.\n"); at != std::string::npos;
         at = szPaged.find("Press any Key.\n", at + 1))
        nPages++;
    EXPECT_EQ(nPages, (size_t)(nRows - 1) / 10) << szPaged;
    std::string szStripped = szPaged;
    for (size_t at; (at = szStripped.find("Press any Key.\n")) != std::string::npos;)
        szStripped.erase(at, 15);
    EXPECT_EQ(szStripped, szAll) << "paging adds its prompts and changes nothing else";
}

// Pixels of the frame's top right corner, where the FPS line stands (x from
// 0.85 of the width), that differ from the clear colour.
static int FpsInk(DWORD dwBackground)
{
    IDirectDrawSurface7* pBack = g_pD3DX->GetBackBuffer(0);
    const RECT rc = {548, 0, 640, 14};
    int nInk = CountInkPixels(pBack, rc, dwBackground, 2);
    if (pBack)
        pBack->Release();
    return nInk;
}

TEST_F(KernelCommands, DebugOutputZeroRemovesTheFpsLineAtOnce)
{
    zynKernel_SetRenderRoutine(CountFrames);
    zynKernel_SetBackgroundColor(0xFF000040);
    zynKernel_RenderFor(600);  // the FPS text is renewed after 500 ms
    ASSERT_HR(zynKernel_Render(), S_OK);
    EXPECT_GT(FpsInk(0xFF000040), 5) << "FPS line before the command";
    EXPECT_EQ(Run({"Kernel:DebugOutput 0"}), "");
    ASSERT_HR(zynKernel_Render(), S_OK);
    EXPECT_EQ(FpsInk(0xFF000040), 0) << "FPS line after DebugOutput 0";
    s_nTestFrames = 0;
    zynKernel_RenderFor(100);
    EXPECT_GT(s_nTestFrames, 0) << "frames go on";
    EXPECT_EQ(Run({"Kernel:DebugOutput 7"}), "");
    ASSERT_HR(zynKernel_Render(), S_OK);
    EXPECT_GT(FpsInk(0xFF000040), 5) << "FPS line after DebugOutput 7";
}
