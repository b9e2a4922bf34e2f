// The view's state: opening and closing, the window procedure taken over while
// open, the timing of urgent lines while closed, and the font's cell size.
#include "zynconsole_fixture.h"
#include "zynkernel.h"

typedef ConsoleTest ConsoleView;

TEST_F(ConsoleView, ShowAndHideFollowTheirStates)
{
    int bShow = 7;
    EXPECT_HR(zynConsole_IsShow(bShow), S_OK);
    EXPECT_EQ(bShow, 0);
    EXPECT_HR(zynConsole_Hide(), E_FAIL) << "not shown";
    EXPECT_HR(zynConsole_Show(), S_OK);
    EXPECT_HR(zynConsole_Show(), E_FAIL) << "shown already";
    EXPECT_EQ(zynConsole_IsVisible(), 1);
    EXPECT_HR(zynConsole_SetAnimationTime(300), S_OK);
    EXPECT_HR(zynConsole_Hide(), S_OK);
    zynConsole_Render();
    EXPECT_HR(zynConsole_IsShow(bShow), S_OK);
    EXPECT_EQ(bShow, 1) << "closing still counts as shown";
    EXPECT_HR(zynConsole_Show(), E_FAIL) << "no opening while closing";
    Sleep(350);
    zynConsole_Render();
    EXPECT_EQ(zynConsole_IsVisible(), 0) << "the close animation has run out";
    EXPECT_HR(zynConsole_Show(), S_OK);
    zynConsole_Finalize();
    EXPECT_HR(zynConsole_IsShow(bShow), E_FAIL);
    EXPECT_EQ(bShow, 0);
    EXPECT_EQ(zynConsole_IsVisible(), 0) << "the stop closes the console";
    EXPECT_HR(zynConsole_Show(), E_FAIL);
    EXPECT_HR(zynConsole_SetBackgroundColor(0), E_FAIL);
    EXPECT_HR(zynConsole_SetAnimationTime(0), E_FAIL);
    EXPECT_HR(zynConsole_SetFont(NULL), E_FAIL);
}

// Hidden output gets through only while urgent lines are on show, one line
// for 2000 ms each: that makes the urgent state visible from outside.
TEST_F(ConsoleView, UrgentLinesStayTwoSecondsEach)
{
    zynConsole_UrgentPrint("one");
    zynConsole_UrgentPrint("two");
    zynConsole_EnableInvisibleOutput(0);
    DWORD dwStart = GetTickCount();
    auto PrintGetsThrough = [&](const char* szWhen) {
        zynConsole_ExecuteCommand("Clear");
        zynConsole_Print("x");
        std::string szText = Flush();
        return szText == "x" ? std::string("through") : std::string("dropped ") + szWhen;
    };
    while (GetTickCount() - dwStart < 3500) {
        zynConsole_Render();
        Sleep(20);
    }
    EXPECT_EQ(PrintGetsThrough("at 3.5 s"), "through") << "the second line is on show";
    while (GetTickCount() - dwStart < 4600) {
        zynConsole_Render();
        Sleep(20);
    }
    EXPECT_NE(PrintGetsThrough("at 4.6 s"), "through") << "both lines have had their time";
    zynConsole_UrgentPrint("three");
    EXPECT_HR(zynConsole_Show(), S_OK);
    EXPECT_NE(PrintGetsThrough("after Show"), "dropped after Show") << "shown, all text gets through";
    zynConsole_EnableInvisibleOutput(1);
}

TEST_F(ConsoleView, FontGivesTheCellSizeAndBelongsToTheConsole)
{
    IDirectDraw7* pDD = NULL;
    ASSERT_HR(DirectDrawCreateEx(NULL, (void**)&pDD, IID_IDirectDraw7, NULL), S_OK);
    ASSERT_HR(pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL), S_OK);
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    ddsd.dwWidth = 512;
    ddsd.dwHeight = 64;
    ddsd.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN | DDSCAPS_SYSTEMMEMORY;
    IDirectDrawSurface7* pFont = NULL;
    ASSERT_HR(pDD->CreateSurface(&ddsd, &pFont, NULL), S_OK);
    pFont->AddRef();
    EXPECT_HR(zynConsole_SetFont(pFont), S_OK);
    EXPECT_HR(zynConsole_Finalize(), S_OK);
    EXPECT_EQ(pFont->Release(), 0u) << "the stop released the console's reference";
    EXPECT_EQ(pDD->Release(), 0u);
    Restart();
}
