// Full-screen contexts: a flip chain at the screen's size, presenting by flip,
// the device window the context makes itself, and losing and restoring the
// surfaces when the application is deactivated.
#include "zyncontext_fixture.h"

class FullscreenContextTest : public ContextTest {
protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        ZynScreenMode mode = CurrentScreenMode();
        m_nScreenWidth = mode.nWidth;
        m_nScreenHeight = mode.nHeight;
        m_nScreenBits = mode.nBits;
    }
    HRESULT MakeFullscreen(HWND hwnd, HWND hwndFocus, DWORD nWidth, DWORD nHeight, DWORD nBackBuffers = 1)
    {
        return D3DXCreateContextEx(D3DX_DEFAULT, D3DX_CONTEXT_FULLSCREEN, hwnd, hwndFocus, m_nScreenBits,
                                   D3DX_DEFAULT, D3DX_DEFAULT, 0, nBackBuffers, nWidth, nHeight, D3DX_DEFAULT,
                                   &m_pContext);
    }
    DWORD FrontPixel(int x, int y)
    {
        IDirectDrawSurface7* pFront = m_pContext->GetPrimary();
        DWORD dw = ReadSurfacePixel(pFront, x, y);
        pFront->Release();
        return dw;
    }
    DWORD m_nScreenWidth = 0, m_nScreenHeight = 0, m_nScreenBits = 0;
};

TEST_F(FullscreenContextTest, FlipChainAtTheScreenSizePresentsByFlipping)
{
    ASSERT_HR(MakeFullscreen(m_window.Handle(), NULL, m_nScreenWidth, m_nScreenHeight), S_OK);
    DWORD nWidth = 0, nHeight = 0;
    m_pContext->GetBufferSize(&nWidth, &nHeight);
    EXPECT_EQ(nWidth, m_nScreenWidth);
    EXPECT_EQ(nHeight, m_nScreenHeight);

    IDirectDrawSurface7* pBack = m_pContext->GetBackBuffer(0);
    ASSERT_TRUE(pBack != NULL);
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    pBack->GetSurfaceDesc(&ddsd);
    EXPECT_TRUE(ddsd.ddsCaps.dwCaps & DDSCAPS_BACKBUFFER) << "caps 0x" << std::hex << ddsd.ddsCaps.dwCaps;
    pBack->Release();

    static const D3DCOLOR colors[] = {0xFF0000FF, 0xFFFFFF00};
    for (D3DCOLOR c : colors) {
        SCOPED_TRACE(ColorText(c));
        ClearAndPresent(c);
        EXPECT_TRUE(ColorNear(FrontPixel(0, 0), c, 1));
        EXPECT_TRUE(ColorNear(FrontPixel((int)m_nScreenWidth - 1, (int)m_nScreenHeight - 1), c, 1));
    }
    m_pContext->SetClearColor(0xFF102030);
    m_pContext->Clear(D3DCLEAR_TARGET);
    EXPECT_HR(m_pContext->UpdateFrame(D3DX_UPDATE_NOVSYNC), S_OK);
    EXPECT_TRUE(ColorNear(FrontPixel(5, 5), 0xFF102030, 1)) << "no-vsync present";
    EXPECT_HR(m_pContext->Resize(640, 480), D3DXERR_CANNOTRESIZEFULLSCREEN);
}

TEST_F(FullscreenContextTest, WithOnlyAFocusWindowTheContextMakesAPopupOfTheBufferSize)
{
    ASSERT_HR(MakeFullscreen(NULL, m_window.Handle(), m_nScreenWidth, m_nScreenHeight), S_OK);
    HWND hwnd = m_pContext->GetWindow();
    ASSERT_TRUE(hwnd != NULL);
    EXPECT_NE(hwnd, m_window.Handle());
    EXPECT_EQ(m_pContext->GetFocusWindow(), m_window.Handle());
    char szClass[32] = "";
    GetClassNameA(hwnd, szClass, sizeof(szClass));
    EXPECT_STREQ(szClass, "D3DX");
    EXPECT_TRUE(GetWindowLongA(hwnd, GWL_STYLE) & WS_POPUP);
    RECT rc;
    GetWindowRect(hwnd, &rc);
    EXPECT_EQ((DWORD)(rc.right - rc.left), m_nScreenWidth);
    EXPECT_EQ((DWORD)(rc.bottom - rc.top), m_nScreenHeight);
    // the window goes with the context
    m_pContext->Release();
    m_pContext = NULL;
    EXPECT_FALSE(IsWindow(hwnd));
}

TEST_F(FullscreenContextTest, DefaultWidthMeans640By480EvenWithAHeight)
{
    HRESULT hr = MakeFullscreen(m_window.Handle(), NULL, D3DX_DEFAULT, m_nScreenHeight);
    if (hr == D3DXERR_INVALIDMODE)
        GTEST_SKIP() << "no 640 x 480 mode on this display";
    ASSERT_HR(hr, S_OK);
    DWORD nWidth = 0, nHeight = 0;
    m_pContext->GetBufferSize(&nWidth, &nHeight);
    EXPECT_EQ(nWidth, 640u);
    EXPECT_EQ(nHeight, 480u);
}

TEST_F(FullscreenContextTest, ModesTheDeviceDoesNotListAreRefused)
{
    EXPECT_HR(MakeFullscreen(m_window.Handle(), NULL, 1234, 567), D3DXERR_INVALIDMODE);
    EXPECT_TRUE(m_pContext == NULL);
    EXPECT_HR(D3DXCreateContextEx(D3DX_DEFAULT, D3DX_CONTEXT_FULLSCREEN, m_window.Handle(), NULL, 24, D3DX_DEFAULT, 0, 0,
                                  1, m_nScreenWidth, m_nScreenHeight, 1, &m_pContext),
              D3DXERR_INVALIDMODE)
        << "a refresh rate of 1 Hz";
    // after the refusals a good request still works
    EXPECT_HR(MakeFullscreen(m_window.Handle(), NULL, m_nScreenWidth, m_nScreenHeight), S_OK);
}

TEST_F(FullscreenContextTest, DeactivationLosesTheSurfacesAndRestoreBringsFramesBack)
{
    ASSERT_HR(MakeFullscreen(m_window.Handle(), NULL, m_nScreenWidth, m_nScreenHeight), S_OK);
    ClearAndPresent(0xFF00FF00);

    SendMessageA(m_window.Handle(), WM_ACTIVATEAPP, FALSE, 0);
    PumpMessages(50);
    IDirectDrawSurface7* pFront = m_pContext->GetPrimary();
    HRESULT hrLost = pFront->IsLost();
    EXPECT_HR(hrLost, DDERR_SURFACELOST);
    m_pContext->SetClearColor(0xFFFF0000);
    m_pContext->Clear(D3DCLEAR_TARGET);
    HRESULT hrPresent = m_pContext->UpdateFrame(0);
    EXPECT_TRUE(FAILED(hrPresent)) << "present while lost gave " << HrText(hrPresent);

    SendMessageA(m_window.Handle(), WM_ACTIVATEAPP, TRUE, 0);
    PumpMessages(50);
    EXPECT_HR(m_pContext->RestoreSurfaces(), S_OK);
    EXPECT_HR(pFront->IsLost(), DD_OK);
    pFront->Release();
    ClearAndPresent(0xFF0080FF);
    EXPECT_TRUE(ColorNear(FrontPixel(3, 3), 0xFF0080FF, 1)) << "frames draw again";
}
