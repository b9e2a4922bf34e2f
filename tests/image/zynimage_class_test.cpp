// The image classes used directly: error texts, format names, flips, and the
// DDS reader's two ways (raw top level, and 32-bit pixels through DirectDraw).
#include "zynimage_testfiles.h"
#include "zynfileio.h"

TEST(TargaReader, FlipTwiceRestoresPixelsAndDescriptor)
{
    zynImageTarga tga;
    ASSERT_HR(tga.Load(TestData("image/tga32rle.tga").c_str(), NULL), S_OK);
    EXPECT_STREQ(tga.GetFormatName(), "Targa RLE");
    EXPECT_TRUE(tga.HasAlpha());
    std::vector<BYTE> before(tga.GetPixels(), tga.GetPixels() + tga.GetWidth() * tga.GetHeight() * 4);
    BYTE bDescriptor = tga.GetDescriptor();
    tga.Flip();
    EXPECT_EQ(tga.GetDescriptor(), bDescriptor ^ 0x20);
    tga.Flip();
    EXPECT_EQ(tga.GetDescriptor(), bDescriptor);
    EXPECT_EQ(memcmp(before.data(), tga.GetPixels(), before.size()), 0) << "two flips changed the pixels";
}

TEST(TargaReader, TopFirstFileEndsBottomFirstWithBitFiveClear)
{
    zynImageTarga top, bottom;
    ASSERT_HR(top.Load(TestData("image/tga24top.tga").c_str(), NULL), S_OK);
    ASSERT_HR(bottom.Load(TestData("image/tga24.tga").c_str(), NULL), S_OK);
    EXPECT_EQ(top.GetDescriptor() & 0x20, 0);
    EXPECT_STREQ(top.GetFormatName(), "Targa");
    EXPECT_FALSE(top.HasAlpha());
    EXPECT_EQ(memcmp(top.GetPixels(), bottom.GetPixels(), top.GetWidth() * top.GetHeight() * 4), 0);
}

TEST(TargaReader, FailuresSayWhy)
{
    zynImageTarga tga;
    EXPECT_HR(tga.Load(NULL, NULL), E_FAIL);
    EXPECT_STREQ(tga.GetErrorText(), "");
    EXPECT_HR(tga.Load(TestData("image/no_such.tga").c_str(), NULL), E_FAIL);
    EXPECT_STREQ(tga.GetErrorText(), "Don't find file.");
    EXPECT_HR(tga.Flip(), S_OK) << "Flip of zynImageTarga reports 0 even without pixels";
}

TEST(BitmapReader, FailuresSayWhy)
{
    zynImageBitmap bmp;
    EXPECT_HR(bmp.Load(TestData("image/bmp4rle.bmp").c_str(), NULL), E_FAIL);
    EXPECT_STREQ(bmp.GetErrorText(), "Wasn't supported 4 bit Bmp with compression.");
    std::vector<BYTE> data = ReadWholeFile(TestData("image/bmp8.bmp"));
    data[30] = 4;    // compression
    std::string szName = TestData("image/tmp_bmp8c4.bmp");
    WriteWholeFile(szName, data);
    zynImageBitmap other;
    EXPECT_HR(other.Load(szName.c_str(), NULL), E_FAIL);
    EXPECT_STREQ(other.GetErrorText(), "Unknown format compression for 8 bit Bmp.");
    DeleteFileA(szName.c_str());
    EXPECT_HR(bmp.Load(TestData("image/no_such.bmp").c_str(), NULL), E_FAIL);
}

TEST(BitmapReader, DepthsWithoutConversionLoadWithPixelsLeftZero)
{
    static const char* s_Files[] = {"image/bmp1.bmp", "image/bmp16.bmp"};
    for (const char* szFile : s_Files) {
        SCOPED_TRACE(szFile);
        zynImageBitmap bmp;
        ASSERT_HR(bmp.Load(TestData(szFile).c_str(), NULL), S_OK);
        EXPECT_EQ(bmp.GetWidth(), 70u);
        EXPECT_FALSE(bmp.HasAlpha());
    }
}

TEST(BitmapReader, RunLengthDeltaStopsWithThePixelsWrittenSoFar)
{
    // 4 x 2, 8 bits: a run of 3 of entry 1, then a delta escape
    std::vector<BYTE> data = ReadWholeFile(TestData("image/bmp8_clr2.bmp"));
    ASSERT_GT(data.size(), 62u);
    data.resize(62);
    data[18] = 4;
    data[22] = 2;
    data[30] = 1;
    const BYTE rle[] = {0x03, 0x01, 0x00, 0x02, 0x05, 0x01, 0x00, 0x01};
    data.insert(data.end(), rle, rle + sizeof(rle));
    std::string szName = TestData("image/tmp_delta.bmp");
    WriteWholeFile(szName, data);
    zynImageBitmap bmp;
    ASSERT_HR(bmp.Load(szName.c_str(), NULL), S_OK);
    const DWORD* p = (const DWORD*)bmp.GetPixels();
    for (int i = 0; i < 3; i++)
        EXPECT_TRUE(ColorNear(p[i] & 0xFFFFFF, 0x0000FF, 0)) << "pixel " << i;
    EXPECT_EQ(p[3], 0u) << "a pixel after the delta escape was written";
    DeleteFileA(szName.c_str());
}

TEST(DDSReader, ReadSurfaceKeepsTheTopLevelAsStored)
{
    static const char* s_Files[] = {"image/dds_argb.dds", "image/dds_mips.dds", "image/dds_dxt1.dds",
                                    "image/dds_dxt5.dds", "image/dds_dxt3.dds", "image/dds_16_565.dds"};
    for (const char* szFile : s_Files) {
        SCOPED_TRACE(szFile);
        std::vector<BYTE> file = ReadWholeFile(TestData(szFile));
        DDSURFACEDESC2 desc;
        ASSERT_HR(ReadSurfaceFile(TestData(szFile), &desc), S_OK);
        DWORD dwMips, dwFourCC;
        memcpy(&dwMips, file.data() + 4 + 24, 4);
        memcpy(&dwFourCC, file.data() + 4 + 80, 4);
        EXPECT_EQ(desc.dwMipMapCount, dwMips);
        EXPECT_EQ(desc.ddpfPixelFormat.dwFourCC, dwFourCC);
        size_t nTop = (desc.dwFlags & DDSD_LINEARSIZE) ? desc.dwLinearSize
                                                      : desc.dwWidth * desc.ddpfPixelFormat.dwRGBBitCount / 8 * desc.dwHeight;
        ASSERT_LE(128 + nTop, file.size());
        EXPECT_EQ(memcmp(desc.lpSurface, file.data() + 128, nTop), 0) << "the top level is not the file's bytes";
        FreeDesc(&desc);
    }
}

TEST(DDSReader, EmptyPictureAndZeroBitCountGiveEmptyBlocks)
{
    std::vector<BYTE> file = ReadWholeFile(TestData("image/dds_argb.dds"));
    file.resize(128);
    std::string szName = TestData("image/tmp_empty.dds");
    file[16] = file[17] = file[18] = file[19] = 0;    // width 0
    WriteWholeFile(szName, file);
    DDSURFACEDESC2 desc;
    EXPECT_HR(ReadSurfaceFile(szName, &desc), S_OK);
    FreeDesc(&desc);
    file = ReadWholeFile(TestData("image/dds_argb.dds"));
    file.resize(128);
    file[88] = 0;    // bit count 0
    WriteWholeFile(szName, file);
    EXPECT_HR(ReadSurfaceFile(szName, &desc), S_OK);
    FreeDesc(&desc);
    DeleteFileA(szName.c_str());
}

struct DdsCase {
    const char* szFile;
    const char* szFormat;
    int nTolerance;
    bool bAlpha;
};

TEST(DDSurfaceClass, PlainAndCompressedFilesMatchImageMagick)
{
    // DXT: Wine's blit and ImageMagick interpolate the block colours with
    // their own rounding; the difference stays within 8 a channel.
    static const DdsCase s_Cases[] = {
        {"image/dds_argb.dds", "DDS8888 1mips", 0, true}, {"image/dds_mips.dds", "DDS8888 4mips", 0, true},
        {"image/dds_x888.dds", "DDS0888 1mips", 0, false}, {"image/dds_dxt1.dds", "DXT1 7mips", 8, false},
        {"image/dds_dxt3.dds", "DXT3 0mips", 8, true}, {"image/dds_dxt5.dds", "DXT5 4mips", 8, true},
    };
    for (const DdsCase& tc : s_Cases) {
        SCOPED_TRACE(tc.szFile);
        zynImageDDSurface dds;
        std::string szName = TestData(tc.szFile);
        ASSERT_HR(dds.Load(szName.c_str(), NULL), S_OK) << dds.GetErrorText();
        EXPECT_STREQ(dds.GetFormatName(), tc.szFormat);
        DDSURFACEDESC2 desc;
        zynImage_ToSurfaceDesc(&dds, &desc);
        EXPECT_TRUE(MatchesReference((const BYTE*)desc.lpSurface, desc.dwWidth, desc.dwHeight, szName + ".rgba",
                                     tc.nTolerance, tc.bAlpha));
        FreeDesc(&desc);
    }
}

TEST(DDSurfaceClass, TwentyFourBitFilesAreTakenRedFirst)
{
    // ImageMagick writes blue first (its red mask is 0xFF0000), so our red is its blue
    zynImageDDSurface dds;
    std::string szName = TestData("image/dds_rgb24.dds");
    ASSERT_HR(dds.Load(szName.c_str(), NULL), S_OK);
    EXPECT_STREQ(dds.GetFormatName(), "DD Surface");
    DDSURFACEDESC2 desc;
    zynImage_ToSurfaceDesc(&dds, &desc);
    BYTE* p = (BYTE*)desc.lpSurface;
    for (DWORD i = 0; i < desc.dwWidth * desc.dwHeight; i++)
        std::swap(p[i * 4], p[i * 4 + 2]);
    EXPECT_TRUE(MatchesReference(p, desc.dwWidth, desc.dwHeight, szName + ".rgba", 0, false));
    FreeDesc(&desc);
}

struct Dds16Case {
    const char* szFile;
    const char* szFormat;
    DWORD dwMask;            // channels compared
    DWORD dwPixels[4];       // the first row's words 0xFFFF, 0x0001, 0xF00F, 0x8000 as 0xAARRGGBB
};

TEST(DDSurfaceClass, SixteenBitWordsConvertByTheirMasks)
{
    static const Dds16Case s_Cases[] = {
        {"image/dds_16_565.dds", "DDS0565 0mips", 0xFFFFFF, {0xFFFFFF, 0x000008, 0xF6007B, 0x830000}},
        {"image/dds_16_555.dds", "DDS0555 0mips", 0xFFFFFF, {0xFFFFFF, 0x000008, 0xE6007B, 0x000000}},
        {"image/dds_16_1555.dds", "DDS1555 0mips", 0xFFFFFFFF, {0xFFFFFFFF, 0x00000008, 0xFFE6007B, 0xFF000000}},
        {"image/dds_16_4444.dds", "DDS4444 0mips", 0xFFFFFFFF, {0xFFFFFFFF, 0x00000011, 0xFF0000FF, 0x88000000}},
    };
    for (const Dds16Case& tc : s_Cases) {
        SCOPED_TRACE(tc.szFile);
        zynImageDDSurface dds;
        ASSERT_HR(dds.Load(TestData(tc.szFile).c_str(), NULL), S_OK);
        EXPECT_STREQ(dds.GetFormatName(), tc.szFormat);
        // bottom row first in the object: the file's first row is the second in memory
        const DWORD* p = (const DWORD*)dds.GetPixels() + 4;
        for (int i = 0; i < 4; i++)
            EXPECT_EQ(ColorText(p[i] & tc.dwMask), ColorText(tc.dwPixels[i] & tc.dwMask)) << "word " << i;
    }
}

TEST(DDSurfaceClass, FailuresSayWhy)
{
    zynImageDDSurface dds;
    EXPECT_HR(dds.Load(TestData("image/no_such.dds").c_str(), NULL), E_FAIL);
    EXPECT_STREQ(dds.GetErrorText(), "Don't find file.");
    std::vector<BYTE> file = ReadWholeFile(TestData("image/dds_argb.dds"));
    std::string szName = TestData("image/tmp_linear.dds");
    file[10] |= 0x08;    // linear size flag in a plain file
    WriteWholeFile(szName, file);
    EXPECT_HR(dds.Load(szName.c_str(), NULL), E_FAIL);
    EXPECT_STREQ(dds.GetErrorText(), "Linear Size!.");
    file = ReadWholeFile(TestData("image/dds_dxt5.dds"));
    file.resize(200);
    WriteWholeFile(szName, file);
    EXPECT_HR(dds.Load(szName.c_str(), NULL), E_FAIL);
    EXPECT_STREQ(dds.GetErrorText(), "Error Loading File.");
    DeleteFileA(szName.c_str());
}

TEST(ImageView, CheckerboardModeBlendsAlphaOverSquaresOfEight)
{
    zynImageTarga tga;
    ASSERT_HR(tga.Load(TestData("image/tga32.tga").c_str(), NULL), S_OK);
    zynImageView view;
    ASSERT_HR(view.FromImage(&tga, 2), S_OK);
    DWORD nRow = (tga.GetWidth() * 3 + 3) & ~3u;
    for (DWORD y = 0; y < tga.GetHeight(); y += 5) {
        for (DWORD x = 0; x < tga.GetWidth(); x += 7) {
            const BYTE* s = tga.GetPixels() + (y * tga.GetWidth() + x) * 4;
            int c = ((x / 8 + y / 8) % 2 == 0) ? 255 : 0;
            int want = (int)(c + (s[0] - c) * s[3] * 0.003921569);
            EXPECT_EQ(view.GetBits()[y * nRow + x * 3], want) << "blue at (" << x << ", " << y << ")";
        }
    }
}

TEST(DDSurfaceClass, PremultipliedFilesLoadThroughADxt1Surface)
{
    // ImageMagick reads neither DXT2 nor DXT4, and the detour through a DXT1
    // surface reads colour halves with c0 <= c1 in DXT1's three-colour mode, so
    // no independent decode exists to hold the pixels to: the load, its name,
    // alpha flag and size are checked, and that the picture is not blank.
    static const struct {
        const char* szFile;
        const char* szFormat;
    } s_Cases[] = {{"image/dds_dxt2.dds", "DXT2 0mips"}, {"image/dds_dxt4.dds", "DXT4 0mips"}};
    for (const auto& tc : s_Cases) {
        SCOPED_TRACE(tc.szFile);
        zynImageDDSurface dds;
        ASSERT_HR(dds.Load(TestData(tc.szFile).c_str(), NULL), S_OK) << dds.GetErrorText();
        EXPECT_STREQ(dds.GetFormatName(), tc.szFormat);
        EXPECT_TRUE(dds.HasAlpha());
        ASSERT_EQ(dds.GetWidth(), 64u);
        ASSERT_EQ(dds.GetHeight(), 64u);
        const DWORD* p = (const DWORD*)dds.GetPixels();
        ASSERT_TRUE(p != NULL);
        DWORD dwOr = 0, dwAnd = 0xFFFFFFFF;
        for (int i = 0; i < 64 * 64; i++)
            dwOr |= p[i], dwAnd &= p[i];
        EXPECT_NE(dwOr & 0xFFFFFF, dwAnd & 0xFFFFFF) << "every pixel has the same colour";
    }
}
