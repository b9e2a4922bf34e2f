// The graphics context on the real DirectDraw/Direct3D of the platform:
// windowed, full screen and off screen, presenting, restoring, resizing, and
// the result codes of bad requests.
#include "zyntest.h"
#include "zyncontext_fixture.h"

TEST_F(ContextTest, WindowedContextClearsAndPresentsToTheWindow)
{
    ASSERT_HR(MakeWindowed(), S_OK);
    DWORD nWidth = 0, nHeight = 0;
    m_pContext->GetBufferSize(&nWidth, &nHeight);
    EXPECT_EQ(nWidth, 200u);
    EXPECT_EQ(nHeight, 150u);
    EXPECT_EQ(m_pContext->GetNumBackBuffers(), 1u);

    static const D3DCOLOR colors[] = {0xFFFF0000, 0xFF00FF00, 0xFF2040C0};
    for (D3DCOLOR c : colors) {
        SCOPED_TRACE(ColorText(c));
        ClearAndPresent(c);
        EXPECT_TRUE(ColorNear(BackBufferPixel(10, 10), c, 1));
        IDirectDrawSurface7* pPrimary = m_pContext->GetPrimary();
        EXPECT_TRUE(ColorNear(ReadPresentedPixel(pPrimary, m_window.Handle(), 0, 0), c, 1));
        EXPECT_TRUE(ColorNear(ReadPresentedPixel(pPrimary, m_window.Handle(), 199, 149), c, 1));
        pPrimary->Release();
    }
}

TEST_F(ContextTest, WindowedBackBufferIsAPlainSurfaceNotAFlipChain)
{
    ASSERT_HR(MakeWindowed(), S_OK);
    IDirectDrawSurface7* pBack = m_pContext->GetBackBuffer(0);
    ASSERT_TRUE(pBack != NULL);
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    pBack->GetSurfaceDesc(&ddsd);
    EXPECT_TRUE(ddsd.ddsCaps.dwCaps & DDSCAPS_OFFSCREENPLAIN) << "caps 0x" << std::hex << ddsd.ddsCaps.dwCaps;
    EXPECT_FALSE(ddsd.ddsCaps.dwCaps & DDSCAPS_FLIP) << "caps 0x" << std::hex << ddsd.ddsCaps.dwCaps;
    pBack->Release();
    EXPECT_TRUE(m_pContext->GetBackBuffer(1) == NULL) << "index past the count";
}

TEST_F(ContextTest, WindowedSizeGivenResizesTheClientArea)
{
    ASSERT_HR(D3DXCreateContextEx(D3DX_DEFAULT, 0, m_window.Handle(), NULL, D3DX_DEFAULT, D3DX_DEFAULT, 0, 0, 1, 320,
                                  200, D3DX_DEFAULT, &m_pContext),
              S_OK);
    RECT rc;
    GetClientRect(m_window.Handle(), &rc);
    EXPECT_EQ(rc.right, 320);
    EXPECT_EQ(rc.bottom, 200);
}

TEST_F(ContextTest, OffscreenContextRendersWithoutAWindow)
{
    ASSERT_HR(D3DXCreateContextEx(D3DX_DEFAULT, D3DX_CONTEXT_OFFSCREEN, NULL, NULL, D3DX_DEFAULT, D3DX_DEFAULT, 0, 0,
                                  D3DX_DEFAULT, 64, 32, D3DX_DEFAULT, &m_pContext),
              S_OK);
    EXPECT_EQ(m_pContext->GetNumBackBuffers(), 0u);
    m_pContext->SetClearColor(0xFF00FFFF);
    EXPECT_HR(m_pContext->Clear(D3DCLEAR_TARGET), S_OK);
    EXPECT_HR(m_pContext->UpdateFrame(0), S_OK) << "nothing to present";
    IDirectDrawSurface7* pFront = m_pContext->GetPrimary();
    ASSERT_TRUE(pFront != NULL);
    EXPECT_TRUE(ColorNear(ReadSurfacePixel(pFront, 63, 31), 0xFF00FFFF, 1));
    pFront->Release();
    // its front buffer stays, so the buffers cannot be made again
    EXPECT_HR(m_pContext->Resize(32, 32), D3DXERR_FRONTBUFFERALREADYEXISTS);
}

TEST_F(ContextTest, ResizeRebuildsTheWindowedBuffers)
{
    ASSERT_HR(MakeWindowed(D3DX_DEFAULT, D3DX_DEFAULT, 0), S_OK);
    IDirectDrawSurface7* pOld = m_pContext->GetBackBuffer(0);
    EXPECT_HR(m_pContext->Resize(200, 150), S_OK);
    IDirectDrawSurface7* pSame = m_pContext->GetBackBuffer(0);
    EXPECT_EQ(pSame, pOld) << "same size does nothing";
    pSame->Release();
    pOld->Release();

    SetWindowPos(m_window.Handle(), NULL, 0, 0, 300, 260, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_HR(m_pContext->Resize(240, 180), S_OK);
    DWORD nWidth = 0, nHeight = 0;
    m_pContext->GetBufferSize(&nWidth, &nHeight);
    EXPECT_EQ(nWidth, 240u);
    EXPECT_EQ(nHeight, 180u);
    IDirectDrawSurface7* pZ = m_pContext->GetZBuffer();
    ASSERT_TRUE(pZ != NULL) << "the Z buffer is made again";
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    pZ->GetSurfaceDesc(&ddsd);
    EXPECT_EQ(ddsd.dwWidth, 240u);
    pZ->Release();
    ClearAndPresent(0xFF804020);
    EXPECT_TRUE(ColorNear(BackBufferPixel(239, 179), 0xFF804020, 1));

    EXPECT_HR(m_pContext->Resize(0, 100), D3DXERR_INVALIDPARAMETER);
    EXPECT_HR(m_pContext->Resize(100, 0), D3DXERR_INVALIDPARAMETER);
}

TEST_F(ContextTest, UpdateFrameOfAMinimisedWindowDrawsNothingAndSucceeds)
{
    ASSERT_HR(MakeWindowed(), S_OK);
    ShowWindow(m_window.Handle(), SW_MINIMIZE);
    PumpMessages(20);
    m_pContext->SetClearColor(0xFFFFFFFF);
    EXPECT_HR(m_pContext->Clear(D3DCLEAR_TARGET), S_OK);
    EXPECT_HR(m_pContext->UpdateFrame(0), S_OK);
}

TEST_F(ContextTest, DebugTextDrawsIntoTheRenderBuffer)
{
    ASSERT_HR(MakeWindowed(), S_OK);
    m_pContext->SetClearColor(0xFF000000);
    m_pContext->Clear(D3DCLEAR_TARGET);
    EXPECT_HR(m_pContext->DrawDebugText(0.0f, 0.0f, 0xFFFFFF00, NULL), D3DXERR_NULLPOINTER);
    EXPECT_HR(m_pContext->DrawDebugText(0.1f, 0.2f, 0xFFFFFF00, "WWWW"), S_OK);
    // yellow text from (20, 30) on: some pixels there turn yellow, none above
    int nLit = 0;
    for (int y = 30; y < 50; y++)
        for (int x = 20; x < 60; x++)
            if (ColorNear(BackBufferPixel(x, y), 0xFFFFFF00, 40))
                nLit++;
    EXPECT_GT(nLit, 10) << "yellow pixels in the text's box";
    EXPECT_TRUE(ColorNear(BackBufferPixel(25, 10), 0xFF000000, 0)) << "above the text";
}
