// zyn3DAPI_DestroyMipMaps through the DLL: a managed mip-mapped texture made
// with DirectDraw is replaced by a copy of its top level alone.
#include "zyntest.h"
#include "zyn3dapi.h"

class DestroyMipMaps : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_HR(DirectDrawCreateEx(NULL, (void**)&m_pDD, IID_IDirectDraw7, NULL), S_OK);
        ASSERT_HR(m_pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL), S_OK);
        ASSERT_HR(zyn3DAPI_Initialize(), S_OK);
    }
    void TearDown() override
    {
        zyn3DAPI_Finalize();
        if (m_pDD) {
            EXPECT_EQ(m_pDD->Release(), 0u) << "DirectDraw has references left";
        }
    }
    IDirectDrawSurface7* MakeMipTexture()
    {
        DDSURFACEDESC2 ddsd = {};
        ddsd.dwSize = sizeof(ddsd);
        ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
        ddsd.dwWidth = 32;
        ddsd.dwHeight = 16;
        ddsd.ddsCaps.dwCaps = DDSCAPS_TEXTURE | DDSCAPS_MIPMAP | DDSCAPS_COMPLEX;
        ddsd.ddsCaps.dwCaps2 = DDSCAPS2_TEXTUREMANAGE;
        ddsd.ddpfPixelFormat.dwSize = sizeof(DDPIXELFORMAT);
        ddsd.ddpfPixelFormat.dwFlags = DDPF_RGB | DDPF_ALPHAPIXELS;
        ddsd.ddpfPixelFormat.dwRGBBitCount = 32;
        ddsd.ddpfPixelFormat.dwRBitMask = 0xFF0000;
        ddsd.ddpfPixelFormat.dwGBitMask = 0xFF00;
        ddsd.ddpfPixelFormat.dwBBitMask = 0xFF;
        ddsd.ddpfPixelFormat.dwRGBAlphaBitMask = 0xFF000000;
        IDirectDrawSurface7* p = NULL;
        EXPECT_HR(m_pDD->CreateSurface(&ddsd, &p, NULL), S_OK);
        if (p && SUCCEEDED(p->Lock(NULL, &ddsd, DDLOCK_WAIT, NULL))) {
            for (DWORD y = 0; y < 16; y++)
                for (DWORD x = 0; x < 32; x++)
                    ((DWORD*)((BYTE*)ddsd.lpSurface + y * ddsd.lPitch))[x] = 0x80000000u | (y << 16) | (x << 8) | 0x5A;
            p->Unlock(NULL);
        }
        return p;
    }
    IDirectDraw7* m_pDD = NULL;
};

TEST_F(DestroyMipMaps, TopLevelIsKeptAndTheChainIsGone)
{
    IDirectDrawSurface7* pOld = MakeMipTexture();
    ASSERT_TRUE(pOld != NULL);
    void* pTexture = pOld;
    ASSERT_HR(zyn3DAPI_DestroyMipMaps(&pTexture), S_OK);
    ASSERT_TRUE(pTexture != NULL);
    EXPECT_NE(pTexture, (void*)pOld) << "a new surface replaces the old";
    IDirectDrawSurface7* pNew = (IDirectDrawSurface7*)pTexture;
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ASSERT_HR(pNew->GetSurfaceDesc(&ddsd), S_OK);
    EXPECT_EQ(ddsd.dwWidth, 32u);
    EXPECT_EQ(ddsd.dwHeight, 16u);
    EXPECT_EQ(ddsd.ddsCaps.dwCaps & DDSCAPS_MIPMAP, 0u) << "caps " << std::hex << ddsd.ddsCaps.dwCaps;
    EXPECT_EQ(ddsd.ddsCaps.dwCaps2 & DDSCAPS2_TEXTUREMANAGE, (DWORD)DDSCAPS2_TEXTUREMANAGE);
    for (int y = 0; y < 16; y += 5)
        for (int x = 0; x < 32; x += 7)
            EXPECT_EQ(ReadSurfacePixel(pNew, x, y), 0x80000000u | (y << 16) | (x << 8) | 0x5A) << x << ", " << y;
    EXPECT_HR(zyn3DAPI_DestroyTexture(&pTexture), S_OK);
    EXPECT_TRUE(pTexture == NULL);
}

TEST_F(DestroyMipMaps, RefusedWhenNotStartedOrNull)
{
    void* pNull = NULL;
    EXPECT_HR(zyn3DAPI_DestroyMipMaps(&pNull), E_FAIL);
    IDirectDrawSurface7* pOld = MakeMipTexture();
    void* pTexture = pOld;
    zyn3DAPI_Finalize();
    EXPECT_HR(zyn3DAPI_DestroyMipMaps(&pTexture), E_FAIL);
    EXPECT_EQ(pTexture, (void*)pOld) << "the texture stays as it was";
    EXPECT_EQ(pOld->Release(), 0u);
    zyn3DAPI_Initialize();
}
