// The context tests' fixture: a started library and a fresh window for each
// test, and no context left behind at the end.
#ifndef ZYNCONTEXT_FIXTURE_H
#define ZYNCONTEXT_FIXTURE_H

#include "zyntest.h"
#include "zyncontext.h"

// Every test gets a started library and a fresh window, and must leave no
// context behind.
class ContextTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_HR(D3DXInitialize(), S_OK); }
    void TearDown() override
    {
        if (m_pContext) {
            ULONG nLeft = m_pContext->Release();
            EXPECT_EQ(nLeft, 0u) << "context has references left";
        }
        EXPECT_HR(D3DXUninitialize(), S_OK);
    }
    HRESULT MakeWindowed(DWORD nDevice = D3DX_DEFAULT, DWORD nDepth = D3DX_DEFAULT, DWORD nStencil = 0)
    {
        return D3DXCreateContextEx(nDevice, 0, m_window.Handle(), NULL, D3DX_DEFAULT, D3DX_DEFAULT, nDepth,
                                   nStencil, D3DX_DEFAULT, D3DX_DEFAULT, D3DX_DEFAULT, D3DX_DEFAULT, &m_pContext);
    }
    // Clears the back buffer to dwColor and presents it.
    void ClearAndPresent(D3DCOLOR dwColor)
    {
        m_pContext->SetClearColor(dwColor);
        EXPECT_HR(m_pContext->Clear(D3DCLEAR_TARGET), S_OK);
        EXPECT_HR(m_pContext->UpdateFrame(0), S_OK);
    }
    DWORD BackBufferPixel(int x, int y)
    {
        IDirectDrawSurface7* pBack = m_pContext->GetBackBuffer(0);
        DWORD dw = ReadSurfacePixel(pBack, x, y);
        pBack->Release();
        return dw;
    }

    ZynTestWindow m_window{200, 150};
    ID3DXContext* m_pContext = NULL;
};

#endif
