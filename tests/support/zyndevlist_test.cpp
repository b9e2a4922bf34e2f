// The device list against what DirectDraw and Direct3D report in the same
// process: devices, rasterizers, indices and levels, display modes, and the
// formats a device offers.
#include "zyntest.h"
#include "zyndevlist.h"

#include <set>
#include <tuple>
#include <vector>

class DeviceListTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_HR(D3DXInitialize(), S_OK);
        try {
            g_pD3DXGlobals->Init();
        } catch (const CD3DXException& e) {
            FAIL() << "device list: " << e.m_szMessage << " " << HrText(e.m_hr);
        }
    }
    void TearDown() override { EXPECT_HR(D3DXUninitialize(), S_OK); }

    // Resolves an index or a level the way the library does; returns the code.
    HRESULT Map(DWORD* pIndex)
    {
        try {
            g_pD3DXGlobals->CheckAndMapD3duHandle(pIndex);
        } catch (const CD3DXException& e) {
            return e.m_hr;
        }
        return S_OK;
    }
};

static HRESULT WINAPI CountRasterizer(LPSTR, LPSTR, LPD3DDEVICEDESC7 pDesc, LPVOID pContext)
{
    ((std::vector<GUID>*)pContext)->push_back(pDesc->deviceGUID);
    return D3DENUMRET_OK;
}

TEST_F(DeviceListTest, EveryRasterizerOfThePrimaryDriverHasOneIndexInOrder)
{
    // what Direct3D itself offers on the primary display driver
    IDirectDraw7* pDD = NULL;
    ASSERT_HR(DirectDrawCreateEx(NULL, (void**)&pDD, IID_IDirectDraw7, NULL), S_OK);
    IDirect3D7* pD3D = NULL;
    ASSERT_HR(pDD->QueryInterface(IID_IDirect3D7, (void**)&pD3D), S_OK);
    std::vector<GUID> offered;
    pD3D->EnumDevices(CountRasterizer, &offered);
    pD3D->Release();
    pDD->Release();

    static const struct {
        int nLevel;
        const GUID* pGuid;
    } order[] = {{-2, &IID_IDirect3DNullDevice}, {-3, &IID_IDirect3DRefDevice}, {-4, &IID_IDirect3DRGBDevice},
                 {-5, &IID_IDirect3DHALDevice}, {-6, &IID_IDirect3DTnLHalDevice}};
    std::vector<int> wantLevels;
    for (const auto& o : order)
        for (const GUID& g : offered)
            if (g == *o.pGuid)
                wantLevels.push_back(o.nLevel);

    CD3duDeviceList* pList = g_pD3DXGlobals->m_pDeviceList;
    ASSERT_EQ(pList->m_nCount, (DWORD)wantLevels.size()) << "one DirectDraw device here";
    // the head has the highest index; indices run 0..n-1 in the order above
    DWORD nExpectIndex = pList->m_nCount;
    for (CD3duDeviceNode* p = pList->m_pHead; p; p = p->m_pNext) {
        nExpectIndex--;
        SCOPED_TRACE(p->m_szDescription);
        EXPECT_EQ(p->m_nIndex, nExpectIndex);
        EXPECT_EQ(p->m_nHWLevel, wantLevels[nExpectIndex]);
        EXPECT_TRUE(p->m_bDesktop) << "the primary display driver drives the desktop";
        EXPECT_TRUE(strstr(p->m_szDescription, " \\ ") != NULL) << "device and rasterizer names joined";
        EXPECT_EQ(g_pD3DXGlobals->FindNode(p->m_nIndex), p);
    }
}

TEST_F(DeviceListTest, LevelsAndDefaultResolveToTheBestDesktopDevice)
{
    // the highest index is the best level on this machine's single card
    CD3duDeviceNode* pBest = g_pD3DXGlobals->m_pDeviceList->m_pHead;
    DWORD nIndex = D3DX_DEFAULT;
    EXPECT_HR(Map(&nIndex), S_OK);
    EXPECT_EQ(nIndex, pBest->m_nIndex);

    for (CD3duDeviceNode* p = g_pD3DXGlobals->m_pDeviceList->m_pHead; p; p = p->m_pNext) {
        DWORD nLevel = (DWORD)p->m_nHWLevel;
        EXPECT_HR(Map(&nLevel), S_OK) << "level " << p->m_nHWLevel;
        EXPECT_EQ(nLevel, p->m_nIndex) << "level " << p->m_nHWLevel;
        DWORD nSame = p->m_nIndex;
        EXPECT_HR(Map(&nSame), S_OK);
        EXPECT_EQ(nSame, p->m_nIndex) << "a good index stays as it is";
    }
    std::set<int> present;
    for (CD3duDeviceNode* p = g_pD3DXGlobals->m_pDeviceList->m_pHead; p; p = p->m_pNext)
        present.insert(p->m_nHWLevel);
    for (int nLevel = -2; nLevel >= -6; nLevel--) {
        if (present.count(nLevel))
            continue;
        DWORD n = (DWORD)nLevel;
        EXPECT_HR(Map(&n), D3DXERR_INVALIDD3DXDEVICEINDEX) << "absent level " << nLevel;
    }
    DWORD nBad = 0xFFFFFFF9;
    EXPECT_HR(Map(&nBad), D3DXERR_INVALIDD3DXDEVICEINDEX);
    DWORD nPast = g_pD3DXGlobals->m_pDeviceList->m_nCount;
    EXPECT_HR(Map(&nPast), D3DXERR_INVALIDD3DXDEVICEINDEX);
}

static HRESULT WINAPI CollectMode(LPDDSURFACEDESC2 pDesc, LPVOID pContext)
{
    auto* pModes = (std::set<std::tuple<DWORD, DWORD, DWORD, DWORD>>*)pContext;
    pModes->insert(std::make_tuple(pDesc->dwWidth, pDesc->dwHeight, pDesc->ddpfPixelFormat.dwRGBBitCount,
                                   pDesc->dwRefreshRate));
    return DDENUMRET_OK;
}

TEST_F(DeviceListTest, DisplayModesAreDirectDrawsSortedWithEachRateOnce)
{
    CDDrawDeviceNode* pNode = g_pD3DXGlobals->m_pDDrawList->m_pHead;
    ASSERT_TRUE(pNode != NULL);
    std::set<std::tuple<DWORD, DWORD, DWORD, DWORD>> reported;
    pNode->m_pDD->EnumDisplayModes(DDEDM_REFRESHRATES, NULL, &reported, CollectMode);
    ASSERT_FALSE(reported.empty());

    std::set<std::tuple<DWORD, DWORD, DWORD, DWORD>> listed;
    const CVideoMode* pPrev = NULL;
    for (const CVideoMode* p = pNode->m_Modes.m_pHead; p; p = p->m_pNext) {
        if (pPrev) {
            EXPECT_TRUE(std::make_tuple(pPrev->m_nWidth, pPrev->m_nHeight, pPrev->m_nBits) <
                        std::make_tuple(p->m_nWidth, p->m_nHeight, p->m_nBits))
                << p->m_nWidth << "x" << p->m_nHeight << "x" << p->m_nBits << " out of order or twice";
        }
        DWORD nPrevRate = 0;
        for (const CRefreshRate* r = p->m_Rates.m_pHead; r; r = r->m_pNext) {
            EXPECT_GT(r->m_nRate, nPrevRate) << "rates ascending, each once";
            nPrevRate = r->m_nRate;
            listed.insert(std::make_tuple(p->m_nWidth, p->m_nHeight, p->m_nBits, r->m_nRate));
        }
        if (!p->m_Rates.m_pHead)
            listed.insert(std::make_tuple(p->m_nWidth, p->m_nHeight, p->m_nBits, 0u));
        pPrev = p;
    }
    EXPECT_EQ(listed, reported);
}

struct FormatSet {
    std::vector<DDPIXELFORMAT> formats;
};

static HRESULT WINAPI CollectPixelFormat(LPDDPIXELFORMAT pddpf, LPVOID pContext)
{
    ((FormatSet*)pContext)->formats.push_back(*pddpf);
    return D3DENUMRET_OK;
}

TEST_F(DeviceListTest, HardwareFormatsAreTheDevicesZAndTextureFormats)
{
    CD3duDeviceNode* pNode = g_pD3DXGlobals->m_pDeviceList->m_pHead;
    if (pNode->m_nHWLevel > -5)
        GTEST_SKIP() << "no hardware rasterizer";
    try {
        pNode->RefreshCaps();
    } catch (const CD3DXException& e) {
        FAIL() << e.m_szMessage << " " << HrText(e.m_hr);
    }

    // the same device made here, on a video memory surface of the display's format
    IDirectDraw7* pDD = pNode->m_pDD;
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    ddsd.dwWidth = ddsd.dwHeight = 64;
    ddsd.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN | DDSCAPS_VIDEOMEMORY | DDSCAPS_3DDEVICE;
    IDirectDrawSurface7* pSurface = NULL;
    ASSERT_HR(pDD->CreateSurface(&ddsd, &pSurface, NULL), S_OK);
    IDirect3DDevice7* pDevice = NULL;
    ASSERT_HR(pNode->m_pD3D->CreateDevice(pNode->m_guidD3D, pSurface, &pDevice), S_OK);
    FormatSet want;
    pNode->m_pD3D->EnumZBufferFormats(pNode->m_guidD3D, CollectPixelFormat, &want);
    size_t nZ = want.formats.size();
    pDevice->EnumTextureFormats(CollectPixelFormat, &want);
    pDevice->Release();
    pSurface->Release();

    std::vector<const CSurfaceFormat*> got;
    for (const CSurfaceFormat* p = pNode->m_Formats.m_pHead; p; p = p->m_pNext)
        got.push_back(p);
    ASSERT_EQ(got.size(), want.formats.size()) << nZ << " Z formats";
    for (size_t i = 0; i < got.size(); i++) {
        SCOPED_TRACE(::testing::Message() << "format " << i);
        EXPECT_EQ(memcmp(&got[i]->m_ddpf, &want.formats[i], sizeof(DDPIXELFORMAT)), 0) << "in the order offered";
        EXPECT_EQ((got[i]->m_dwUsage & D3DU_FORMAT_DEPTH) != 0, i < nZ) << "usage 0x" << std::hex << got[i]->m_dwUsage;
    }
    // what the usage mask says of the well-known codes
    bool bSawArgb = false;
    for (const CSurfaceFormat* p : got) {
        if (p->m_Format == D3DX_SF_A8R8G8B8) {
            bSawArgb = true;
            EXPECT_TRUE(p->m_dwUsage & D3DU_FORMAT_COLOR);
            EXPECT_TRUE(p->m_dwUsage & D3DU_FORMAT_RENDERTARGET) << "A8R8G8B8 can be drawn to";
        }
        if (p->m_Format == D3DX_SF_DXT1) {
            EXPECT_EQ(p->m_dwUsage & D3DU_FORMAT_RENDERTARGET, 0u) << "DXT1 is not tried as a target";
        }
    }
    EXPECT_TRUE(bSawArgb) << "the device offers A8R8G8B8";
}

TEST_F(DeviceListTest, SoftwareRasterizerInfoComesWithADefaultName)
{
    CHelInfo* pHel = g_pD3DXGlobals->m_pHelInfo;
    ASSERT_TRUE(pHel->m_bRGB) << "the RGB rasterizer is offered here";
    CHelInfoDevice* pRGB = pHel->ForLevel(-4);
    ASSERT_TRUE(pRGB != NULL);
    EXPECT_STREQ(pRGB->m_szName, "Microsoft Direct3D RGB Software Emulation");
    EXPECT_TRUE(pRGB->m_bFormats);
    EXPECT_GT(pRGB->m_Formats.m_nCount, 0u);
    EXPECT_EQ(pHel->m_ddHelCaps.dwSize, sizeof(DDCAPS));
}
