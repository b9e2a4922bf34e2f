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
