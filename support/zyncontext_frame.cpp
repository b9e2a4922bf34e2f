// The context's frame calls: clearing, presenting, restoring lost surfaces,
// resizing the buffers of a windowed context, and debug text through GDI.
#include "zyncontext_impl.h"

HRESULT CD3duContext::Clear(DWORD dwClearFlags)
{
    if (!m_pD3DDevice)
        return D3DXERR_NOTINITIALIZED;
    HRESULT hr = m_pD3DDevice->Clear(0, NULL, dwClearFlags, m_dwClearColor, m_fClearDepth, m_dwClearStencil);
    // "CD3duContext::Clear - Failed to clear viewport."
    return hr;
}

HRESULT CD3duContext::RestoreSurfaces()
{
    if (!m_bInitialized)
        return S_OK;
    if (m_pFrontBuffer && m_pFrontBuffer->IsLost() != DD_OK)
        m_pFrontBuffer->Restore();
    if (m_nMode == 0 && m_ppBackBuffers && m_ppBackBuffers[0] && m_ppBackBuffers[0]->IsLost() != DD_OK)
        m_ppBackBuffers[0]->Restore();
    if (m_pZBuffer && m_pZBuffer->IsLost() != DD_OK)
        m_pZBuffer->Restore();
    return S_OK;
}

HRESULT CD3duContext::UpdateFrame(DWORD dwFlags)
{
    D3DX_ENTRY_BEGIN
        _UpdateFrame(dwFlags);
        return S_OK;
    D3DX_ENTRY_END
}

void CD3duContext::_UpdateFrame(DWORD dwFlags)
{
    if (!m_bInitialized || !m_nBackBuffers || !m_ppBackBuffers)
        return;
    if (m_nMode == D3DX_CONTEXT_FULLSCREEN) {
        DWORD dwFlip = DDFLIP_WAIT;
        bool bBlit = false;
        if (dwFlags & D3DX_UPDATE_NOVSYNC) {
            if (m_pNode->m_ddCaps.dwCaps2 & DDCAPS2_FLIPNOVSYNC)
                dwFlip |= DDFLIP_NOVSYNC;
            else if (m_nBackBuffers == 1)
                bBlit = true;
        }
        if (bBlit)
            D3DX_CHECK(m_pFrontBuffer->Blt(NULL, m_ppBackBuffers[0], NULL, DDBLT_WAIT, NULL),
                       "CD3duContext::UpdateFrame - Blt failed.");
        else
            D3DX_CHECK(m_pFrontBuffer->Flip(NULL, dwFlip), "CD3duContext::UpdateFrame - Flip failed.");
        return;
    }

    RECT rc;
    if (!GetClientRect(m_hwnd, &rc) || IsRectEmpty(&rc))
        return;  // minimised: nothing to show
    if (m_pNode->m_bDesktop) {
        POINT ptTopLeft = {rc.left, rc.top}, ptBottomRight = {rc.right, rc.bottom};
        ClientToScreen(m_hwnd, &ptTopLeft);
        ClientToScreen(m_hwnd, &ptBottomRight);
        RECT rcScreen = {ptTopLeft.x, ptTopLeft.y, ptBottomRight.x, ptBottomRight.y};
        D3DX_CHECK(m_pFrontBuffer->Blt(&rcScreen, m_ppBackBuffers[0], NULL, DDBLT_WAIT, NULL),
                   "CD3duContext::UpdateFrame - Blt failed.");
        return;
    }
    // A device off the desktop cannot blit to the screen: go through GDI.
    HDC hdcWindow = GetDC(m_hwnd);
    if (!hdcWindow)
        D3DX_THROW(D3DXERR_GETDCFAILED, "CD3duContext::UpdateFrame - Failed to get device handle.");
    HDC hdcBuffer = NULL;
    HRESULT hr = m_ppBackBuffers[0]->GetDC(&hdcBuffer);
    if (FAILED(hr)) {
        ReleaseDC(m_hwnd, hdcWindow);
        D3DX_THROW(hr, "CD3duContext::UpdateFrame - Failed to get device handle.");
    }
    BOOL bBlitted = StretchBlt(hdcWindow, 0, 0, rc.right, rc.bottom, hdcBuffer, 0, 0, (int)m_nWidth,
                               (int)m_nHeight, SRCCOPY);
    m_ppBackBuffers[0]->ReleaseDC(hdcBuffer);
    ReleaseDC(m_hwnd, hdcWindow);
    if (!bBlitted)
        D3DX_THROW(D3DXERR_BITBLTFAILED, "CD3duContext::UpdateFrame - StretchBlt failed.");
}

HRESULT CD3duContext::DrawDebugText(float x, float y, D3DCOLOR dwColor, const char* szText)
{
    D3DX_ENTRY_BEGIN
        _DrawDebugText(x, y, dwColor, szText);
        return S_OK;
    D3DX_ENTRY_END
}

void CD3duContext::_DrawDebugText(float x, float y, D3DCOLOR dwColor, const char* szText)
{
    if (!szText)
        D3DX_THROW(D3DXERR_NULLPOINTER, "CD3duContext::DrawDebugText - NULL passed for pString.");
    if (!m_pRenderBuffer)
        D3DX_THROW(D3DXERR_FAILEDDRAWTEXT, "CD3duContext::DrawDebugText - There is no render buffer.");
    HDC hdc = NULL;
    D3DX_CHECK(m_pRenderBuffer->GetDC(&hdc), "CD3duContext::DrawDebugText - Could not get device context.");
    // 0x00RRGGBB to a COLORREF, which is 0x00BBGGRR
    SetTextColor(hdc, RGB((dwColor >> 16) & 0xFF, (dwColor >> 8) & 0xFF, dwColor & 0xFF));
    SetBkMode(hdc, TRANSPARENT);
    RECT rc = {(LONG)(x * (float)m_nWidth), (LONG)(y * (float)m_nHeight), (LONG)m_nWidth, (LONG)m_nHeight};
    DrawTextA(hdc, szText, -1, &rc, DT_EXPANDTABS | DT_NOPREFIX | DT_INTERNAL);
    D3DX_CHECK(m_pRenderBuffer->ReleaseDC(hdc), "CD3duContext::DrawDebugText - Could not release device context.");
}

HRESULT CD3duContext::Resize(DWORD nWidth, DWORD nHeight)
{
    D3DX_ENTRY_BEGIN
        _Resize(nWidth, nHeight);
        return S_OK;
    D3DX_ENTRY_END
}

// A 1 x 1 surface like pLike (without the flags of a flip chain), which holds
// the device's render target while the real buffers are rebuilt.
IDirectDrawSurface7* CD3duContext::_MakeTemporary(IDirectDrawSurface7* pLike, const char* szFailure)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    D3DX_CHECK(pLike->GetSurfaceDesc(&ddsd), szFailure);
    ddsd.dwFlags &= ~(DWORD)(DDSD_PITCH | DDSD_LPSURFACE | DDSD_BACKBUFFERCOUNT | DDSD_MIPMAPCOUNT);
    ddsd.ddsCaps.dwCaps &= ~(DWORD)(DDSCAPS_BACKBUFFER | DDSCAPS_COMPLEX | DDSCAPS_FLIP | DDSCAPS_FRONTBUFFER |
                                    DDSCAPS_PRIMARYSURFACE | DDSCAPS_VISIBLE);
    ddsd.dwWidth = ddsd.dwHeight = 1;
    ddsd.lpSurface = NULL;
    IDirectDrawSurface7* pSurface = NULL;
    HRESULT hr = m_pDD->CreateSurface(&ddsd, &pSurface, NULL);
    if (hr == DDERR_OUTOFVIDEOMEMORY)
        D3DX_THROW(hr, "CD3duContext::Resize - Out of video memory.");
    D3DX_CHECK(hr, szFailure);
    return pSurface;
}

void CD3duContext::_Resize(DWORD nWidth, DWORD nHeight)
{
    if (!m_bInitialized)
        return;
    if (m_nMode == D3DX_CONTEXT_FULLSCREEN)
        D3DX_THROW(D3DXERR_CANNOTRESIZEFULLSCREEN, "CD3duContext::Resize - Cannot resize a full screen context.");
    if (nWidth == 0 || nHeight == 0)
        D3DX_THROW(D3DXERR_INVALIDPARAMETER, "CD3duContext::Resize - Width and height must not be 0.");
    if (nWidth == m_nWidth && nHeight == m_nHeight)
        return;

    IDirectDrawSurface7* pTemp = _MakeTemporary(m_pRenderBuffer, "CD3duContext::Resize - Failed to create temporary surface.");
    IDirectDrawSurface7* pTempZ = NULL;
    const DWORD nOldWidth = m_nWidth, nOldHeight = m_nHeight;
    try {
        if (m_pZBuffer) {
            pTempZ = _MakeTemporary(m_pZBuffer, "CD3duContext::Resize - Could not create temporary Z buffer.");
            D3DX_CHECK(pTemp->AddAttachedSurface(pTempZ), "CD3duContext::Resize - Failed to attach temporary Z buffer.");
        }
        D3DX_CHECK(m_pD3DDevice->SetRenderTarget(pTemp, 0),
                   "CD3duContext::Resize - Failed to set render target to temporary surface.");
        _DestroyDXBuffers(0);
        m_nWidth = nWidth;
        m_nHeight = nHeight;
        _CreateDXBuffers();
        D3DX_CHECK(m_pD3DDevice->SetRenderTarget(m_pRenderBuffer, 0),
                   "CD3duContext::Resize - Failed to set render target to new render buffer.");
        _SetViewport();
    } catch (...) {
        // Keep the size the surfaces that remain have.
        m_nWidth = nOldWidth;
        m_nHeight = nOldHeight;
        if (m_pRenderBuffer)
            m_pD3DDevice->SetRenderTarget(m_pRenderBuffer, 0);
        if (pTempZ)
            pTempZ->Release();
        pTemp->Release();
        throw;
    }
    if (pTempZ)
        pTempZ->Release();
    pTemp->Release();
}
