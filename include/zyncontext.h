// The graphics context: the one object through which the kernel gets a
// drawing surface. From a device, a window and a few numbers it makes the
// DirectDraw surfaces, picks a Z buffer, creates the Direct3D device and its
// viewport, and then presents, clears, resizes and restores.
//
// Step by step: D3DXInitialize; D3DXCreateContextEx; each frame Clear, draw on
// GetD3DDevice(), UpdateFrame(0) to present; after a lost surface,
// RestoreSurfaces; Release when done; D3DXUninitialize.
//
// Results: S_OK, a DirectDraw/Direct3D code of the failed call, or a D3DXERR_
// code (zynsupport.h). A context is made complete or not at all: after a
// failure *ppContext is null and nothing is left behind.
//
// Ownership: the Get* calls for interfaces and surfaces add a reference that
// the caller releases. A context lives until its reference count reaches 0.
// Windowed contexts have exactly one back buffer (a plain surface, presented by
// a blit); full-screen ones a flip chain; off-screen ones only a front buffer.
#ifndef ZYNCONTEXT_H
#define ZYNCONTEXT_H

#include "zynsupport.h"

// flags of D3DXCreateContextEx (the low two bits give the mode)
#define D3DX_CONTEXT_FULLSCREEN 0x00000001
#define D3DX_CONTEXT_OFFSCREEN  0x00000002

// bit 0 of UpdateFrame's flags: don't wait for the vertical blank
#define D3DX_UPDATE_NOVSYNC 0x00000001

extern "C" const GUID IID_ID3DXContext;

struct ID3DXContext : public IUnknown {
    // interfaces, each with a reference added (null when there is none)
    virtual LPDIRECTDRAW7 STDMETHODCALLTYPE GetDD() = 0;
    virtual LPDIRECT3D7 STDMETHODCALLTYPE GetD3D() = 0;
    virtual LPDIRECT3DDEVICE7 STDMETHODCALLTYPE GetD3DDevice() = 0;
    virtual LPDIRECTDRAWSURFACE7 STDMETHODCALLTYPE GetPrimary() = 0;
    virtual LPDIRECTDRAWSURFACE7 STDMETHODCALLTYPE GetZBuffer() = 0;
    virtual LPDIRECTDRAWSURFACE7 STDMETHODCALLTYPE GetBackBuffer(DWORD nIndex) = 0;
    // what the context was made with
    virtual HWND STDMETHODCALLTYPE GetWindow() = 0;
    virtual HWND STDMETHODCALLTYPE GetFocusWindow() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDeviceIndex(DWORD* pIndex, DWORD* pHWLevel) = 0;
    virtual DWORD STDMETHODCALLTYPE GetNumBackBuffers() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNumBits(DWORD* pColor, DWORD* pDepth, DWORD* pAlpha, DWORD* pStencil) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBufferSize(DWORD* pWidth, DWORD* pHeight) = 0;
    virtual DWORD STDMETHODCALLTYPE GetCreationFlags() = 0;
    virtual DWORD STDMETHODCALLTYPE GetRefreshRate() = 0;
    // frame
    virtual HRESULT STDMETHODCALLTYPE RestoreSurfaces() = 0;
    virtual HRESULT STDMETHODCALLTYPE Resize(DWORD nWidth, DWORD nHeight) = 0;
    virtual HRESULT STDMETHODCALLTYPE UpdateFrame(DWORD dwFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE DrawDebugText(float x, float y, D3DCOLOR dwColor, const char* szText) = 0;
    virtual HRESULT STDMETHODCALLTYPE Clear(DWORD dwClearFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetClearColor(D3DCOLOR dwColor) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetClearDepth(float fZ) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetClearStencil(DWORD dwStencil) = 0;
};
typedef ID3DXContext* LPD3DXCONTEXT;

// Makes a context. D3DX_DEFAULT is taken for every number, for dwFlags and for
// both windows. nDevice is an index of the device list or a D3DX_HWLEVEL_ value.
HRESULT WINAPI D3DXCreateContextEx(DWORD nDevice, DWORD dwFlags, HWND hwnd, HWND hwndFocus, DWORD nColorBits,
                                   DWORD nAlphaBits, DWORD nDepthBits, DWORD nStencilBits, DWORD nBackBuffers,
                                   DWORD nWidth, DWORD nHeight, DWORD nRefreshRate, LPD3DXCONTEXT* ppContext);

#endif
