#include "zynconsole_fixture.h"
#include "zynkernel.h"

// Binds through real key input: the test window must be the kernel's active
// window, and the frame's poll reads the keys.
class ConsoleBindFocus : public ConsoleTest {
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        HWND hWnd = m_pWindow->Handle();
        SetForegroundWindow(hWnd);
        SetActiveWindow(hWnd);
        SetFocus(hWnd);
        PumpMessages(300);   // Wine refreshes the key state after an activation
    }
    void Key(WORD wKey, bool bDown)
    {
        INPUT in = {};
        in.type = INPUT_KEYBOARD;
        in.ki.wVk = wKey;
        in.ki.dwFlags = bDown ? 0 : KEYEVENTF_KEYUP;
        SendInput(1, &in, sizeof(in));
        // the key reaches GetAsyncKeyState through the queue
        for (int i = 0; i < 10; i++) {
            PumpMessages(10);
            if (((GetAsyncKeyState(wKey) & 0x8000) != 0) == bDown)
                break;
        }
        zynKernel_Render();   // the frame polls the binds while the console is closed
    }
};

// A toggle prints its state as urgent text, and binds rest while urgent text
// is on show (2000 ms a line), so the test lets frames run that long.
TEST_F(ConsoleBindFocus, BindFiresOnPressAndToggleOnRelease)
{
    if (GetActiveWindow() != m_pWindow->Handle())
        GTEST_SKIP() << "the test window did not become active";
    Run({"Bind F7 \"Print pressed; +Move\"", "Bind f8 \"Print plain\""});
    Key(VK_F7, true);
    Key(VK_F7, true);
    EXPECT_EQ(Flush(), "pressed \nStop\n") << "held down, the bind acts once";
    zynKernel_RenderFor(2100);
    Key(VK_F7, false);
    // Flush left only the log mark, so the urgent line first ends the (empty) line.
    EXPECT_EQ(Flush(), "\nMove\n") << "the release runs only the toggle, turned round";
    zynKernel_RenderFor(2100);
    Key(VK_F8, true);
    Key(VK_F8, false);
    EXPECT_EQ(Flush(), "plain \n") << "a bind without a toggle does nothing on release";
}

TEST_F(ConsoleBindFocus, BindsRestWhileUrgentTextIsOnShow)
{
    if (GetActiveWindow() != m_pWindow->Handle())
        GTEST_SKIP() << "the test window did not become active";
    Run({"Bind F9 \"Print nine\"", "UrgentPrint hello"});
    Flush();
    Key(VK_F9, true);
    Key(VK_F9, false);
    EXPECT_EQ(Flush(), "") << "a key while urgent text is on show";
    zynKernel_RenderFor(2100);
    Key(VK_F9, true);
    Key(VK_F9, false);
    EXPECT_EQ(Flush(), "nine \n") << "the same key after the urgent line went";
}
