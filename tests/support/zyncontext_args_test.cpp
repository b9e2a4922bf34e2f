// What a context says to bad requests, the interface rules, the choice of the
// Z buffer, and the names of result codes.
#include "zyncontext_fixture.h"

#include <string>

TEST(ContextLibrary, NothingWorksBeforeTheLibraryStarts)
{
    ID3DXContext* pContext = (ID3DXContext*)1;
    ZynTestWindow window;
    EXPECT_HR(D3DXCreateContextEx(D3DX_DEFAULT, 0, window.Handle(), NULL, D3DX_DEFAULT, D3DX_DEFAULT, 0, 0,
                                  D3DX_DEFAULT, D3DX_DEFAULT, D3DX_DEFAULT, D3DX_DEFAULT, &pContext),
              D3DXERR_D3DXNOTSTARTEDYET);
    EXPECT_HR(D3DXUninitialize(), D3DXERR_D3DXNOTSTARTEDYET);
    EXPECT_HR(D3DXInitialize(), S_OK);
    EXPECT_HR(D3DXInitialize(), S_OK) << "a second start does nothing";
    EXPECT_HR(D3DXUninitialize(), S_OK);
    EXPECT_HR(D3DXUninitialize(), D3DXERR_D3DXNOTSTARTEDYET);
}

TEST_F(ContextTest, BadRequestsGiveTheirCodesAndLeaveNoContext)
{
    HWND hwnd = m_window.Handle();
    ZynTestWindow gone;
    HWND hwndGone = gone.Handle();
    gone.Destroy();
    const HWND hwndDefault = (HWND)(ULONG_PTR)D3DX_DEFAULT;
    const DWORD D = D3DX_DEFAULT;
    static const DWORD OFF = D3DX_CONTEXT_OFFSCREEN, FULL = D3DX_CONTEXT_FULLSCREEN;
    struct Case {
        const char* szWhat;
        DWORD nDevice, dwFlags;
        HWND hwnd, hwndFocus;
        DWORD nColor, nBack, nWidth, nHeight;
        HRESULT hrWant;
    };
    const Case cases[] = {
        {"windowed without a window", D, 0, NULL, NULL, D, D, D, D, D3DXERR_INVALIDPARAMETER},
        {"windowed with D3DX_DEFAULT window", D, 0, hwndDefault, NULL, D, D, D, D, D3DXERR_INVALIDPARAMETER},
        {"windowed with a destroyed window", D, 0, hwndGone, NULL, D, D, D, D, D3DXERR_INVALIDPARAMETER},
        {"windowed with a focus window", D, 0, hwnd, hwnd, D, D, D, D, D3DXERR_INVALIDPARAMETER},
        {"full screen without windows", D, FULL, NULL, NULL, D, D, D, D, D3DXERR_INVALIDPARAMETER},
        {"off screen with a window", D, OFF, hwnd, NULL, D, D, 64, 64, D3DXERR_INVALIDPARAMETER},
        {"off screen without a size", D, OFF, NULL, NULL, D, D, D, 64, D3DXERR_INVALIDPARAMETER},
        {"off screen with a back buffer", D, OFF, NULL, NULL, D, 1, 64, 64, D3DXERR_INVALIDPARAMETER},
        {"full screen and off screen", D, 3, NULL, NULL, D, D, 64, 64, D3DXERR_INVALIDPARAMETER},
        {"8 colour bits", D, 0, hwnd, NULL, 8, D, D, D, D3DXERR_COLORDEPTHTOOLOW},
        {"two back buffers in a window", D, 0, hwnd, NULL, D, 2, D, D, D3DXERR_INVALIDPARAMETER},
        {"device index past the list", 1000, 0, hwnd, NULL, D, D, D, D, D3DXERR_INVALIDD3DXDEVICEINDEX},
        {"index 0xFFFFFFF9", 0xFFFFFFF9, 0, hwnd, NULL, D, D, D, D, D3DXERR_INVALIDD3DXDEVICEINDEX},
        {"an impossible off-screen size", D, OFF, NULL, NULL, D, D, 100000, 100000, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.szWhat);
        ID3DXContext* pContext = (ID3DXContext*)1;
        HRESULT hr = D3DXCreateContextEx(c.nDevice, c.dwFlags, c.hwnd, c.hwndFocus, c.nColor, D, 0, 0, c.nBack,
                                         c.nWidth, c.nHeight, D, &pContext);
        if (c.hrWant == 0)
            EXPECT_TRUE(FAILED(hr)) << "got " << HrText(hr);
        else
            EXPECT_HR(hr, c.hrWant);
        EXPECT_TRUE(pContext == NULL) << "output cleared";
    }
    EXPECT_HR(D3DXCreateContextEx(D, 0, hwnd, NULL, D, D, 0, 0, D, D, D, D, NULL), D3DXERR_NULLPOINTER);
    // and after all that a good request works
    EXPECT_HR(MakeWindowed(), S_OK);
}

TEST_F(ContextTest, OnlyTheContextInterfaceAndIUnknownAreOffered)
{
    ASSERT_HR(MakeWindowed(), S_OK);
    void* p = NULL;
    EXPECT_HR(m_pContext->QueryInterface(IID_IUnknown, &p), S_OK);
    EXPECT_EQ(p, (void*)m_pContext);
    ((IUnknown*)p)->Release();
    EXPECT_HR(m_pContext->QueryInterface(IID_ID3DXContext, &p), S_OK);
    ((IUnknown*)p)->Release();
    EXPECT_HR(m_pContext->QueryInterface(IID_IDirectDraw7, &p), E_NOINTERFACE);
    EXPECT_TRUE(p == NULL);
    EXPECT_HR(m_pContext->QueryInterface(IID_IUnknown, NULL), D3DXERR_NULLPOINTER);

    // the Get calls hand out references of their own
    IDirect3DDevice7* pDevice = m_pContext->GetD3DDevice();
    ASSERT_TRUE(pDevice != NULL);
    pDevice->AddRef();
    EXPECT_GE(pDevice->Release(), 2u) << "the context keeps its own reference";
    pDevice->Release();
    EXPECT_EQ(m_pContext->GetCreationFlags(), 0u);
    DWORD nColor = 0, nDepth = 1, nAlpha = 1, nStencil = 1;
    m_pContext->GetNumBits(&nColor, &nDepth, &nAlpha, &nStencil);
    EXPECT_GE(nColor, 16u);
    EXPECT_GT(nDepth, 0u) << "any depth was asked for";
    EXPECT_EQ(nAlpha, 0u);
    EXPECT_EQ(nStencil, 0u);
    m_pContext->GetNumBits(NULL, NULL, NULL, NULL);
}

// Z buffer choice on the platform's device, by level.
TEST_F(ContextTest, ZBufferChoiceFollowsTheAskedBitsAndTheVendorRule)
{
    struct Case {
        DWORD nDevice, nDepth, nStencil;
        HRESULT hrWant;
        DWORD nDepthWant, nStencilWant;
    };
    // The HAL under Wine reports an NVIDIA vendor: at 32 bits depth 24 and at most 8 stencil bits.
    static const Case cases[] = {
        {D3DX_HWLEVEL_2D, D3DX_DEFAULT, 0, S_OK, 24, 0},
        {D3DX_HWLEVEL_2D, D3DX_DEFAULT, D3DX_DEFAULT, S_OK, 24, 8},
        {D3DX_HWLEVEL_2D, 16, 0, S_OK, 16, 0},
        {D3DX_HWLEVEL_2D, 0, 0, S_OK, 0, 0},
        {D3DX_HWLEVEL_2D, 32, 8, D3DXERR_NOZBUFFERAVAILABLE, 0, 0},
        {D3DX_HWLEVEL_TL, D3DX_DEFAULT, 0, S_OK, 24, 0},
        {D3DX_HWLEVEL_TL, 16, 0, D3DXERR_NOZBUFFERAVAILABLE, 0, 0},
        {D3DX_HWLEVEL_RASTER, 24, D3DX_DEFAULT, S_OK, 24, 8},
    };
    for (size_t i = 0; i < sizeof(cases) / sizeof(cases[0]); i++) {
        const Case& c = cases[i];
        SCOPED_TRACE(::testing::Message() << "case " << i);
        HRESULT hr = MakeWindowed(c.nDevice, c.nDepth, c.nStencil);
        EXPECT_HR(hr, c.hrWant);
        if (FAILED(hr))
            continue;
        DWORD nDepth = 99, nStencil = 99;
        m_pContext->GetNumBits(NULL, &nDepth, NULL, &nStencil);
        EXPECT_EQ(nDepth, c.nDepthWant);
        EXPECT_EQ(nStencil, c.nStencilWant);
        IDirectDrawSurface7* pZ = m_pContext->GetZBuffer();
        EXPECT_EQ(pZ != NULL, c.nDepthWant != 0) << "a Z buffer exactly when bits were chosen";
        if (pZ)
            pZ->Release();
        m_pContext->Release();
        m_pContext = NULL;
    }
}

TEST(ContextErrorString, NamesKnownCodesAndSpellsOutTheRest)
{
    static const struct {
        HRESULT hr;
        const char* szWant;
    } cases[] = {
        {DDERR_SURFACELOST, "DDERR_SURFACELOST"},
        {DDERR_INVALIDMODE, "DDERR_INVALIDMODE"},
        {D3DERR_TEXTURE_NO_SUPPORT, "D3DERR_TEXTURE_NO_SUPPORT"},
        {(HRESULT)0x80004005, "DDERR_GENERIC"},
        {(HRESULT)0x80004001, "DDERR_UNSUPPORTED"},
        {(HRESULT)0x887602D0, "D3DERR_TEXTURE_NO_SUPPORT"},
        {(HRESULT)0xC8770BDC, "Unrecognized error: 0xc8770bdc"},
        {(HRESULT)0x12345678, "Unrecognized error: 0x12345678"},
    };
    for (const auto& c : cases) {
        char szBuf[100];
        D3DXGetErrorString(c.hr, sizeof(szBuf), szBuf);
        EXPECT_STREQ(szBuf, c.szWant) << "code " << HrText(c.hr);
    }
    // the library's own codes, 0xC8770BB8 on in this order
    static const char* s_D3dxNames[] = {
        "D3DXERR_NOMEMORY", "D3DXERR_NULLPOINTER", "D3DXERR_INVALIDD3DXDEVICEINDEX", "D3DXERR_NODIRECTDRAWAVAILABLE",
        "D3DXERR_NODIRECT3DAVAILABLE", "D3DXERR_NODIRECT3DDEVICEAVAILABLE", "D3DXERR_NOPRIMARYAVAILABLE",
        "D3DXERR_NOZBUFFERAVAILABLE", "D3DXERR_NOBACKBUFFERAVAILABLE", "D3DXERR_COULDNTUPDATECAPS",
        "D3DXERR_NOZBUFFER", "D3DXERR_INVALIDMODE", "D3DXERR_INVALIDPARAMETER", "D3DXERR_INITFAILED",
        "D3DXERR_STARTUPFAILED", "D3DXERR_D3DXNOTSTARTEDYET", "D3DXERR_NOTINITIALIZED", "D3DXERR_FAILEDDRAWTEXT",
        "D3DXERR_BADD3DXCONTEXT", "D3DXERR_CAPSNOTSUPPORTED", "D3DXERR_UNSUPPORTEDFILEFORMAT", "D3DXERR_IFLERROR",
        "D3DXERR_FAILEDGETCAPS", "D3DXERR_CANNOTRESIZEFULLSCREEN", "D3DXERR_CANNOTRESIZENONWINDOWED",
        "D3DXERR_FRONTBUFFERALREADYEXISTS", "D3DXERR_FULLSCREENPRIMARYEXISTS", "D3DXERR_GETDCFAILED",
        "D3DXERR_BITBLTFAILED", "D3DXERR_NOTEXTURE", "D3DXERR_MIPLEVELABSENT", "D3DXERR_SURFACENOTPALETTED",
        "D3DXERR_ENUMFORMATSFAILED", "D3DXERR_COLORDEPTHTOOLOW", "D3DXERR_INVALIDFILEFORMAT", "D3DXERR_NOMATCHFOUND",
    };
    for (size_t i = 0; i < sizeof(s_D3dxNames) / sizeof(s_D3dxNames[0]); i++) {
        char szBuf[100];
        HRESULT hr = (HRESULT)(0xC8770BB8u + i);
        D3DXGetErrorString(hr, sizeof(szBuf), szBuf);
        EXPECT_STREQ(szBuf, s_D3dxNames[i]) << "code " << HrText(hr);
    }
    // the device's codes that the context and the texture layer pass on
    static const struct {
        HRESULT hr;
        const char* szWant;
    } s_Device[] = {
        {(HRESULT)0x887601C2, "DDERR_SURFACELOST"},        {(HRESULT)0x887600E1, "DDERR_NOEXCLUSIVEMODE"},
        {(HRESULT)0x8876017C, "DDERR_OUTOFVIDEOMEMORY"},   {(HRESULT)0x80070057, "DDERR_INVALIDPARAMS"},
        {(HRESULT)0x8007000E, "DDERR_OUTOFMEMORY"},        {(HRESULT)0x88760091, "DDERR_INVALIDPIXELFORMAT"},
        {(HRESULT)0x88760234, "DDERR_PRIMARYSURFACEALREADYEXISTS"},
        {(HRESULT)0x887602C1, "D3DERR_INVALID_DEVICE"},    {(HRESULT)0x887602C2, "D3DERR_INITFAILED"},
        {(HRESULT)0x887602D5, "D3DERR_TEXTURE_LOAD_FAILED"},
    };
    for (const auto& c : s_Device) {
        char szBuf[100];
        D3DXGetErrorString(c.hr, sizeof(szBuf), szBuf);
        EXPECT_STREQ(szBuf, c.szWant) << "code " << HrText(c.hr);
    }
    char szShort[6] = "xxxxx";
    D3DXGetErrorString(DDERR_SURFACELOST, 5, szShort);
    EXPECT_STREQ(szShort, "DDER") << "cut and terminated in its last byte";
    D3DXGetErrorString(DDERR_SURFACELOST, 0, szShort);
    EXPECT_STREQ(szShort, "DDER") << "a zero length writes nothing";
    D3DXGetErrorString(DDERR_SURFACELOST, 10, NULL);
}

TEST_F(ContextTest, ManyContextsLeaveNoHandlesOrHeapBlocks)
{
    // Nothing is drawn: Wine's own device keeps a few heap blocks for every
    // device that has cleared (a bare DirectDraw loop shows it), which would
    // hide what the context itself does. Warm up once for the device list.
    ASSERT_HR(MakeWindowed(), S_OK);
    m_pContext->Release();
    m_pContext = NULL;
    long nHandles = CountProcessHandles(), nBlocks = CountHeapBlocks();
    for (int i = 0; i < 30; i++) {
        ASSERT_HR(MakeWindowed(D3DX_DEFAULT, D3DX_DEFAULT, 0), S_OK) << "round " << i;
        m_pContext->Release();
        m_pContext = NULL;
    }
    EXPECT_LE(CountProcessHandles(), nHandles) << "handles before " << nHandles;
    EXPECT_LE(CountHeapBlocks(), nBlocks + 5) << "heap blocks before " << nBlocks;
}
