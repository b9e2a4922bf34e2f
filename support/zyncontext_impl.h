// CD3duContext, the implementation of ID3DXContext. Private to the support
// layer: the rest of the engine sees only the interface.
#ifndef ZYNCONTEXT_IMPL_H
#define ZYNCONTEXT_IMPL_H

#include "zyncontext.h"
#include "zyndevlist.h"

class CD3duContext : public ID3DXContext {
public:
    CD3duContext();
    virtual ~CD3duContext();

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObj) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    // ID3DXContext
    LPDIRECTDRAW7 STDMETHODCALLTYPE GetDD() override;
    LPDIRECT3D7 STDMETHODCALLTYPE GetD3D() override;
    LPDIRECT3DDEVICE7 STDMETHODCALLTYPE GetD3DDevice() override;
    LPDIRECTDRAWSURFACE7 STDMETHODCALLTYPE GetPrimary() override;
    LPDIRECTDRAWSURFACE7 STDMETHODCALLTYPE GetZBuffer() override;
    LPDIRECTDRAWSURFACE7 STDMETHODCALLTYPE GetBackBuffer(DWORD nIndex) override;
    HWND STDMETHODCALLTYPE GetWindow() override;
    HWND STDMETHODCALLTYPE GetFocusWindow() override;
    HRESULT STDMETHODCALLTYPE GetDeviceIndex(DWORD* pIndex, DWORD* pHWLevel) override;
    DWORD STDMETHODCALLTYPE GetNumBackBuffers() override;
    HRESULT STDMETHODCALLTYPE GetNumBits(DWORD* pColor, DWORD* pDepth, DWORD* pAlpha, DWORD* pStencil) override;
    HRESULT STDMETHODCALLTYPE GetBufferSize(DWORD* pWidth, DWORD* pHeight) override;
    DWORD STDMETHODCALLTYPE GetCreationFlags() override;
    DWORD STDMETHODCALLTYPE GetRefreshRate() override;
    HRESULT STDMETHODCALLTYPE RestoreSurfaces() override;
    HRESULT STDMETHODCALLTYPE Resize(DWORD nWidth, DWORD nHeight) override;
    HRESULT STDMETHODCALLTYPE UpdateFrame(DWORD dwFlags) override;
    HRESULT STDMETHODCALLTYPE DrawDebugText(float x, float y, D3DCOLOR dwColor, const char* szText) override;
    HRESULT STDMETHODCALLTYPE Clear(DWORD dwClearFlags) override;
    HRESULT STDMETHODCALLTYPE SetClearColor(D3DCOLOR dwColor) override;
    HRESULT STDMETHODCALLTYPE SetClearDepth(float fZ) override;
    HRESULT STDMETHODCALLTYPE SetClearStencil(DWORD dwStencil) override;

    void _D3duInitialize(DWORD nDevice, DWORD dwFlags, HWND hwnd, HWND hwndFocus, DWORD nColorBits,
                         DWORD nAlphaBits, DWORD nDepthBits, DWORD nStencilBits, DWORD nBackBuffers, DWORD nWidth,
                         DWORD nHeight, DWORD nRefreshRate);

private:
    void _CreateDeviceWindow();
    void _CreateDXBuffers();
    void _CreateFullscreenBuffers();
    void _CreateWindowedBuffers();
    void _CreateOffScreenBuffers();
    void _EnumBackBuffers(IDirectDrawSurface7* pSurface, DWORD nFirst);
    void _ChooseZBuffer(DWORD nDepth, DWORD nStencil);
    void _CreateZBuffer();
    void _Create3DDevice();
    void _SetViewport();
    void _DestroyDXBuffers(int bAll);
    IDirectDrawSurface7* _MakeTemporary(IDirectDrawSurface7* pLike, const char* szFailure);
    void _Resize(DWORD nWidth, DWORD nHeight);
    void _UpdateFrame(DWORD dwFlags);
    void _DrawDebugText(float x, float y, D3DCOLOR dwColor, const char* szText);

    LONG m_nRef;
    HWND m_hwnd;
    HWND m_hwndFocus;
    DWORD m_nMode;            // 0 windowed, D3DX_CONTEXT_FULLSCREEN, D3DX_CONTEXT_OFFSCREEN
    int m_bOwnWindow;
    DWORD m_nColorBits;
    DWORD m_nAlphaBits;
    DWORD m_nBackBuffers;
    DWORD m_nDepthBits, m_nStencilBits;  // what _ChooseZBuffer settled
    DWORD m_nWantDepth, m_nWantStencil;  // what the caller asked for
    DWORD m_nRefreshRate;
    DWORD m_nHeight, m_nWidth;
    GUID m_guidDDraw, m_guidD3D;
    int m_nHWLevel;
    DWORD m_nDevice;
    DWORD m_dwFlags;
    CD3duDeviceNode* m_pNode;
    DWORD m_dwMemory;
    IDirect3DDevice7* m_pD3DDevice;
    IDirectDraw7* m_pDD;
    IDirect3D7* m_pD3D;
    IDirectDrawClipper* m_pClipper;
    IDirectDrawSurface7* m_pFrontBuffer;
    IDirectDrawSurface7** m_ppBackBuffers;
    IDirectDrawSurface7* m_pRenderBuffer;  // no reference of its own
    IDirectDrawSurface7* m_pZBuffer;
    D3DCOLOR m_dwClearColor;
    float m_fClearDepth;
    DWORD m_dwClearStencil;
    int m_bInitialized;
};

#endif
