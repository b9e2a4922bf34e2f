// Texture creation and loading on a real Direct3D 7 device: the size rules,
// every format the device offers, the codes of bad requests, mip levels, and
// loading from memory and surfaces.
#include "zyntexdevice.h"

#include "zynformat.h"
#include "zynpixconv.h"
#include "zyntexture.h"

#include "../../support/zyntexture_local.h"

class TextureCreate : public TextureDeviceTest {};

static DWORD SurfaceFormatOf(IDirectDrawSurface7* p, DWORD* pWidth, DWORD* pHeight)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    p->GetSurfaceDesc(&ddsd);
    *pWidth = ddsd.dwWidth;
    *pHeight = ddsd.dwHeight;
    return D3DXMakeSurfaceFormat(&ddsd.ddpfPixelFormat);
}

TEST_F(TextureCreate, EveryOfferedFormatSizeRuleAndMipCount)
{
    static const struct {
        DWORD nWidth, nHeight, dwFlags;
        DWORD nLevels;   // levels of the record; the chain is the device's
    } sizes[] = {{1, 1, 0, 1}, {100, 100, 0, 7}, {256, 64, 0, 7}, {64, 64, D3DX_TEXTURE_NOMIPMAP, 0}};
    std::vector<D3DX_SURFACEFORMAT> formats = TextureFormats();
    ASSERT_FALSE(formats.empty());
    for (D3DX_SURFACEFORMAT format : formats) {
        for (const auto& s : sizes) {
            // DirectDraw refuses block formats below a whole block
            bool bBlocks = format == D3DX_SF_DXT1 || format == D3DX_SF_DXT3 || format == D3DX_SF_DXT5;
            if (bBlocks && s.nWidth < 4)
                continue;
            SCOPED_TRACE(testing::Message() << "format " << format << ", " << s.nWidth << " x " << s.nHeight
                                            << ", flags " << s.dwFlags);
            DWORD dwFlags = s.dwFlags, nWidth = s.nWidth, nHeight = s.nHeight, nMips = 99;
            DWORD dwWantFlags = s.dwFlags, nWantWidth = s.nWidth, nWantHeight = s.nHeight;
            D3DX_SURFACEFORMAT wanted = format, got = format;
            ASSERT_HR(D3DXCheckTextureRequirements(m_pDevice, &dwWantFlags, &nWantWidth, &nWantHeight, &wanted), S_OK);
            IDirectDrawSurface7* pTexture = NULL;
            HRESULT hr = D3DXCreateTexture(m_pDevice, &dwFlags, &nWidth, &nHeight, &got, NULL, &pTexture, &nMips);
            ASSERT_HR(hr, S_OK);
            ASSERT_TRUE(pTexture != NULL);
            EXPECT_EQ(got, format) << "an offered format is kept";
            EXPECT_EQ(nMips, 0u);
            DWORD nSurfaceWidth, nSurfaceHeight;
            EXPECT_EQ(SurfaceFormatOf(pTexture, &nSurfaceWidth, &nSurfaceHeight), (DWORD)format);
            EXPECT_EQ(nSurfaceWidth, nWantWidth);
            EXPECT_EQ(nSurfaceHeight, nWantHeight);
            EXPECT_EQ(nWidth, nWantWidth);
            EXPECT_EQ(nSurfaceWidth & (nSurfaceWidth - 1), 0u) << "power of two";
            DWORD nChain = GetMipCount(pTexture);
            if (dwFlags & D3DX_TEXTURE_NOMIPMAP)
                EXPECT_EQ(nChain, 1u);
            else
                EXPECT_GE(nChain, 1u + (nSurfaceWidth > 1 && nSurfaceHeight > 1));
            TextureRecord record = {};
            ASSERT_TRUE(GetTextureRecord(pTexture, &record));
            EXPECT_EQ(record.dwSize, 20u);
            EXPECT_EQ(record.dwWidth, s.nWidth) << "the record keeps the size asked for";
            EXPECT_EQ(record.dwHeight, s.nHeight);
            EXPECT_EQ(record.dwMipCount, s.nLevels);
            EXPECT_EQ(pTexture->Release(), 0u);
        }
    }
}

TEST_F(TextureCreate, BadRequestsGiveTheirCodes)
{
    DWORD nWidth = 64, nHeight = 64, nZero = 0, nDefault = D3DX_DEFAULT;
    D3DX_SURFACEFORMAT format = D3DX_SF_A8R8G8B8;
    IDirectDrawSurface7* pTexture = (IDirectDrawSurface7*)1;
    EXPECT_HR(D3DXCreateTexture(m_pDevice, NULL, &nWidth, &nHeight, NULL, NULL, &pTexture, NULL), D3DXERR_NULLPOINTER);
    EXPECT_HR(D3DXCreateTexture(m_pDevice, NULL, &nWidth, &nHeight, &format, NULL, NULL, NULL), D3DXERR_NULLPOINTER);
    EXPECT_HR(D3DXCreateTexture(m_pDevice, NULL, NULL, &nHeight, &format, NULL, &pTexture, NULL), D3DXERR_NULLPOINTER);
    EXPECT_TRUE(pTexture == NULL) << "the output is cleared first";
    EXPECT_HR(D3DXCreateTexture(m_pDevice, NULL, &nZero, &nHeight, &format, NULL, &pTexture, NULL),
              D3DXERR_INVALIDPARAMETER);
    EXPECT_HR(D3DXCreateTexture(m_pDevice, NULL, &nWidth, &nDefault, &format, NULL, &pTexture, NULL),
              D3DXERR_INVALIDPARAMETER);
    EXPECT_HR(D3DXCheckTextureRequirements(m_pDevice, NULL, &nZero, NULL, NULL), D3DXERR_INVALIDPARAMETER);
    EXPECT_HR(D3DXCreateCubeMapTexture(m_pDevice, NULL, 0x10000, 0, &nWidth, &nHeight, &format, NULL, &pTexture, NULL),
              D3DXERR_INVALIDPARAMETER) << "a face bit outside 0xFC00";
    EXPECT_HR(D3DXGetNthMipmap(0, NULL, NULL), D3DXERR_NULLPOINTER);

    PixConv_StopTables();
    EXPECT_HR(D3DXCreateTexture(m_pDevice, NULL, &nWidth, &nHeight, &format, NULL, &pTexture, NULL),
              D3DXERR_D3DXNOTSTARTEDYET);
    DWORD adw[4] = {};
    EXPECT_HR(D3DXLoadTextureFromMemory(m_pDevice, m_pTarget, 0, adw, NULL, D3DX_SF_A8R8G8B8, 0, NULL, 1),
              D3DXERR_D3DXNOTSTARTEDYET);
    EXPECT_HR(PixConv_StartTables(), S_OK);
}

TEST_F(TextureCreate, SizeRulesOfTheSoftwareDevice)
{
    UseSoftwareDevice();
    static const struct {
        DWORD nWidth, nWant;
    } cases[] = {{100, 128}, {1, 1}, {256, 256}, {D3DX_DEFAULT, 1024}, {3000, 1024}};
    for (const auto& c : cases) {
        DWORD nWidth = c.nWidth, nHeight = 8;
        EXPECT_HR(D3DXCheckTextureRequirements(m_pDevice, NULL, &nWidth, &nHeight, NULL), S_OK);
        EXPECT_EQ(nWidth, c.nWant) << "asked for " << c.nWidth;
    }
}

TEST_F(TextureCreate, MissingFormatsFollowThePreferenceRow)
{
    std::vector<D3DX_SURFACEFORMAT> offered = TextureFormats();
    auto has = [&](D3DX_SURFACEFORMAT f) { return std::find(offered.begin(), offered.end(), f) != offered.end(); };
    if (has(D3DX_SF_A8) || !has(D3DX_SF_A8R8G8B8))
        GTEST_SKIP() << "the device offers A8, or lacks A8R8G8B8";
    D3DX_SURFACEFORMAT format = D3DX_SF_A8;
    EXPECT_HR(D3DXCheckTextureRequirements(m_pDevice, NULL, NULL, NULL, &format), S_OK);
    EXPECT_EQ(format, D3DX_SF_A8R8G8B8) << "A8 falls back to the first offered of its row";
    if (!has(D3DX_SF_R3G3B2) && has(D3DX_SF_X4R4G4B4)) {
        format = D3DX_SF_R3G3B2;
        EXPECT_HR(D3DXCheckTextureRequirements(m_pDevice, NULL, NULL, NULL, &format), S_OK);
        EXPECT_EQ(format, D3DX_SF_X4R4G4B4);
    }
}

TEST_F(TextureCreate, CubeMapHasSixFaces)
{
    DWORD nWidth = 32, nHeight = 32;
    D3DX_SURFACEFORMAT format = D3DX_SF_A8R8G8B8;
    IDirectDrawSurface7* pCube = NULL;
    HRESULT hr = D3DXCreateCubeMapTexture(m_pDevice, NULL, 0, 0, &nWidth, &nHeight, &format, NULL, &pCube, NULL);
    if (hr == D3DERR_TEXTURE_NO_SUPPORT)
        GTEST_SKIP() << "the device has no cube maps";
    ASSERT_HR(hr, S_OK);
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    pCube->GetSurfaceDesc(&ddsd);
    EXPECT_EQ(ddsd.ddsCaps.dwCaps2 & (DDSCAPS2_CUBEMAP | DDSCAPS2_CUBEMAP_POSITIVEX),
              (DWORD)(DDSCAPS2_CUBEMAP | DDSCAPS2_CUBEMAP_POSITIVEX)) << "the top surface is the first face";
    DDSCAPS2 caps = {DDSCAPS_TEXTURE, DDSCAPS2_CUBEMAP_NEGATIVEZ, 0, {0}};
    IDirectDrawSurface7* pFace = NULL;
    EXPECT_HR(pCube->GetAttachedSurface(&caps, &pFace), S_OK) << "the last face";
    if (pFace)
        pFace->Release();
    EXPECT_EQ(pCube->Release(), 0u);
}

class TextureLoad : public TextureDeviceTest {
protected:
    IDirectDrawSurface7* Make(DWORD nWidth, DWORD nHeight, DWORD dwFlags = 0,
                              D3DX_SURFACEFORMAT format = D3DX_SF_A8R8G8B8)
    {
        IDirectDrawSurface7* p = NULL;
        EXPECT_HR(D3DXCreateTexture(m_pDevice, &dwFlags, &nWidth, &nHeight, &format, NULL, &p, NULL), S_OK);
        return p;
    }
};

TEST_F(TextureLoad, LevelPastTheEndGivesTheLastLevel)
{
    IDirectDrawSurface7* pTexture = Make(16, 16);
    ASSERT_TRUE(pTexture != NULL);
    DWORD nCount = GetMipCount(pTexture);
    ASSERT_GT(nCount, 1u) << "no mip chain on this device";
    IDirectDrawSurface7 *pLast = NULL, *pPast = NULL;
    EXPECT_HR(D3DXGetNthMipmap(nCount - 1, pTexture, &pLast), S_OK);
    EXPECT_HR(D3DXGetNthMipmap(nCount + 5, pTexture, &pPast), S_OK);
    EXPECT_EQ(pPast, pLast);
    DWORD w, h;
    SurfaceFormatOf(pLast, &w, &h);
    EXPECT_EQ(w, 1u);
    pLast->Release();
    pPast->Release();
    EXPECT_EQ(pTexture->Release(), 0u) << "levels were given out with one reference each";
}

TEST_F(TextureLoad, AskedSizeIsStretchedOverTheRoundedSurface)
{
    IDirectDrawSurface7* pTexture = Make(100, 100, D3DX_TEXTURE_NOMIPMAP);
    ASSERT_TRUE(pTexture != NULL);
    DWORD w, h;
    SurfaceFormatOf(pTexture, &w, &h);
    ASSERT_EQ(w, 128u);
    std::vector<DWORD> pixels(100 * 100);
    for (int i = 0; i < 100 * 100; i++)
        pixels[i] = (i % 100) < 50 ? 0xFFFF0000 : 0xFF0000FF;
    EXPECT_HR(D3DXLoadTextureFromMemory(m_pDevice, pTexture, 0, pixels.data(), NULL, D3DX_SF_A8R8G8B8, D3DX_DEFAULT,
                                        NULL, 1), S_OK);
    EXPECT_EQ(ReadSurfacePixel(pTexture, 0, 0), 0xFFFF0000u);
    EXPECT_EQ(ReadSurfacePixel(pTexture, 63, 127), 0xFFFF0000u);
    EXPECT_EQ(ReadSurfacePixel(pTexture, 65, 0), 0xFF0000FFu) << "the picture's right half covers the surface's";
    EXPECT_EQ(ReadSurfacePixel(pTexture, 127, 64), 0xFF0000FFu);
    pTexture->Release();
}

TEST_F(TextureLoad, DefaultLevelBuildsTheLowerLevels)
{
    IDirectDrawSurface7* pTexture = Make(16, 16, 0, D3DX_SF_R5G6B5);
    ASSERT_TRUE(pTexture != NULL);
    ASSERT_GT(GetMipCount(pTexture), 1u) << "no mip chain on this device";
    std::vector<DWORD> checker(256);
    for (int i = 0; i < 256; i++)
        checker[i] = ((i / 16 + i % 16) & 1) ? 0xFFFFFFFF : 0xFF000000;
    EXPECT_HR(D3DXLoadTextureFromMemory(m_pDevice, pTexture, D3DX_DEFAULT, checker.data(), NULL, D3DX_SF_A8R8G8B8, 0,
                                        NULL, D3DX_DEFAULT), S_OK);
    IDirectDrawSurface7* pLevel = NULL;
    EXPECT_HR(D3DXGetNthMipmap(2, pTexture, &pLevel), S_OK);
    for (int x = 0; x < 4; x++)
        EXPECT_TRUE(ColorNear(ReadSurfacePixel(pLevel, x, 1), 0xFF7F7F7F, 12)) << "level 2, pixel " << x;
    pLevel->Release();

    // a chain onto a chain of the same length, level by level
    IDirectDrawSurface7* pCopy = Make(16, 16, 0, D3DX_SF_A8R8G8B8);
    EXPECT_HR(D3DXLoadTextureFromSurface(m_pDevice, pCopy, D3DX_DEFAULT, pTexture, NULL, NULL, 1), S_OK);
    EXPECT_HR(D3DXGetNthMipmap(2, pCopy, &pLevel), S_OK);
    EXPECT_TRUE(ColorNear(ReadSurfacePixel(pLevel, 1, 1), 0xFF7F7F7F, 12));
    pLevel->Release();
    pCopy->Release();
    pTexture->Release();
}
