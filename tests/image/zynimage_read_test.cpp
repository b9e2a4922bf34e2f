// Pictures written by ImageMagick (and a few by tools/zyntestdata.py), read
// through zynImage_ReadSurface and compared with ImageMagick's own decode.
#include "zynimage_testfiles.h"
#include "zynfileio.h"

struct ReadCase {
    const char* szFile;
    int nTolerance;     // per channel: 0 for lossless formats
    bool bAlpha;        // HasAlpha, and alpha compared
};

// JPEG: stb_image and libjpeg differ in IDCT and chroma upsampling; measured
// differences stay below 12 for colour pictures and 2 for grey ones.
static const int JPEG_TOLERANCE = 12;
static const ReadCase s_Cases[] = {
    {"tga24.tga", 0, false}, {"tga32.tga", 0, true}, {"tga24rle.tga", 0, false}, {"tga32rle.tga", 0, true},
    {"tga24rle_w5.tga", 0, false}, {"tga24top.tga", 0, false}, {"tga32top.tga", 0, true},
    {"tga32id127.tga", 0, true}, {"tga32_footer.tga", 0, true},
    {"bmp24.bmp", 0, false}, {"bmp24_w5.bmp", 0, false}, {"bmp24_w4.bmp", 0, false}, {"bmp32.bmp", 0, false},
    {"bmp8.bmp", 0, false}, {"bmp8_w6.bmp", 0, false}, {"bmp8rle.bmp", 0, false}, {"bmp4.bmp", 0, false},
    {"bmp4_w6.bmp", 0, false}, {"bmp4_w7.bmp", 0, false}, {"bmp8_clr2.bmp", 0, false},
    {"jpg_color.jpg", JPEG_TOLERANCE, false}, {"jpg_grey.jpg", 2, false}, {"jpg_prog.jpg", JPEG_TOLERANCE, false},
    {"jpg_h2.jpg", JPEG_TOLERANCE, false},
};

TEST(ImageReadSurface, EveryAcceptedVariantMatchesImageMagick)
{
    for (const ReadCase& tc : s_Cases) {
        SCOPED_TRACE(tc.szFile);
        std::string szName = TestData(std::string("image/") + tc.szFile);
        DDSURFACEDESC2 desc;
        ASSERT_HR(ReadSurfaceFile(szName, &desc), S_OK);
        EXPECT_EQ(desc.dwFlags, 0x180Fu);
        EXPECT_EQ(desc.lPitch, (LONG)desc.dwWidth * 4);
        EXPECT_EQ(desc.ddsCaps.dwCaps2, (DWORD)DDSCAPS2_TEXTUREMANAGE);
        EXPECT_EQ(desc.ddpfPixelFormat.dwFlags, tc.bAlpha ? 0x41u : 0x40u);
        EXPECT_EQ(desc.ddpfPixelFormat.dwRGBAlphaBitMask, tc.bAlpha ? 0xFF000000u : 0u);
        EXPECT_TRUE(MatchesReference((const BYTE*)desc.lpSurface, desc.dwWidth, desc.dwHeight, szName + ".rgba",
                                     tc.nTolerance, tc.bAlpha));
        FreeDesc(&desc);
    }
}

TEST(ImageReadSurface, JpegPixelsCarryAlpha255AndGreyHasEqualChannels)
{
    DDSURFACEDESC2 desc;
    ASSERT_HR(ReadSurfaceFile(TestData("image/jpg_grey.jpg"), &desc), S_OK);
    const BYTE* p = (const BYTE*)desc.lpSurface;
    for (DWORD i = 0; i < desc.dwWidth * desc.dwHeight; i++, p += 4) {
        ASSERT_TRUE(p[0] == p[1] && p[1] == p[2] && p[3] == 255)
            << "pixel " << i << " is " << ColorText(*(const DWORD*)p) << ", expected grey with alpha 255";
    }
    FreeDesc(&desc);
}

TEST(ImageJpeg, FourChannelFileDecodesToThreeColours)
{
    // Adobe's CMYK files begin with APP14, so only the class reads them by name;
    // the JFIF form of the same file goes through the format choice. CMYK to RGB
    // conversions differ more between decoders than colour JPEGs do.
    static const int CMYK_TOLERANCE = 24;
    zynImageJpeg jpeg;
    std::string szName = TestData("image/jpg_cmyk.jpg");
    ASSERT_HR(jpeg.Load(szName.c_str(), NULL), S_OK);
    DDSURFACEDESC2 desc;
    zynImage_ToSurfaceDesc(&jpeg, &desc);
    EXPECT_TRUE(MatchesReference((const BYTE*)desc.lpSurface, desc.dwWidth, desc.dwHeight, szName + ".rgba",
                                 CMYK_TOLERANCE, false));
    FreeDesc(&desc);

    szName = TestData("image/jpg_cmyk_jfif.jpg");
    ASSERT_HR(ReadSurfaceFile(szName, &desc), S_OK);
    EXPECT_TRUE(MatchesReference((const BYTE*)desc.lpSurface, desc.dwWidth, desc.dwHeight, szName + ".rgba",
                                 CMYK_TOLERANCE, false));
    FreeDesc(&desc);
}

TEST(ImageJpeg, FirstJpegRowLandsLastInMemoryBeforeTheHandOver)
{
    zynImageJpeg jpeg;
    std::string szName = TestData("image/jpg_h2.jpg");
    ASSERT_HR(jpeg.Load(szName.c_str(), NULL), S_OK);
    ASSERT_EQ(jpeg.GetHeight(), 2u);
    std::vector<BYTE> bottomFirst(jpeg.GetPixels(), jpeg.GetPixels() + jpeg.GetWidth() * 2 * 4);
    DDSURFACEDESC2 desc;
    zynImage_ToSurfaceDesc(&jpeg, &desc);
    EXPECT_EQ(jpeg.GetPixels(), nullptr);
    EXPECT_EQ(memcmp(bottomFirst.data(), (BYTE*)desc.lpSurface + desc.dwWidth * 4, desc.dwWidth * 4), 0)
        << "the object's first row is not the picture's second";
    FreeDesc(&desc);
}

TEST(ImageJpeg, MissingNameAndNoSourceAreRefused)
{
    zynImageJpeg jpeg;
    EXPECT_HR(jpeg.Load(NULL, NULL), E_FAIL);
    EXPECT_STREQ(jpeg.GetErrorText(), "");
    EXPECT_HR(jpeg.Load(TestData("image/no_such.jpg").c_str(), NULL), E_FAIL);
    EXPECT_STREQ(jpeg.GetErrorText(), "Can't find file.");
}

TEST(ImageJpeg, PlainHandleIsReadFromItsPosition)
{
    std::string szName = TestData("image/jpg_color.jpg");
    HANDLE h = CreateFileA(szName.c_str(), GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    zynImageJpeg jpeg;
    EXPECT_HR(jpeg.Load(NULL, h), S_OK);
    EXPECT_EQ(jpeg.GetWidth(), 70u);
    SetFilePointer(h, 10, NULL, FILE_BEGIN);
    zynImageJpeg second;
    EXPECT_HR(second.Load(NULL, h), E_FAIL) << "a stream that starts ten bytes in is no JPEG";
    CloseHandle(h);
}

struct ChoiceCase {
    const char* szFile;
    HRESULT hr;
    const char* szWhy;
};

TEST(ImageFormatChoice, FirstBytesDecideAndTheExtensionDoesNot)
{
    static const ChoiceCase s_Choices[] = {
        {"image/bad_jpg_app1.jpg", E_FAIL, "a JPEG whose first marker is APP1 goes on to the Targa test"},
        {"image/jpg_cmyk.jpg", E_FAIL, "APP14 first is not the JFIF form"},
        {"image/bmp4rle.bmp", E_FAIL, "4-bit run-length bitmap"},
        {"image/tga24.tga", S_OK, "plain Targa"},
        {"image/dds_argb.dds", S_OK, "DDS"},
    };
    for (const ChoiceCase& tc : s_Choices) {
        SCOPED_TRACE(tc.szWhy);
        DDSURFACEDESC2 desc;
        EXPECT_HR(ReadSurfaceFile(TestData(tc.szFile), &desc), tc.hr);
        FreeDesc(&desc);
    }
    // a bitmap named .tga is read as a bitmap
    std::vector<BYTE> bmp = ReadWholeFile(TestData("image/bmp24.bmp"));
    std::string szWall = TestData("image/tmp_wall.tga");
    WriteWholeFile(szWall, bmp);
    DDSURFACEDESC2 desc;
    ASSERT_HR(ReadSurfaceFile(szWall, &desc), S_OK);
    EXPECT_TRUE(MatchesReference((const BYTE*)desc.lpSurface, desc.dwWidth, desc.dwHeight,
                                 TestData("image/bmp24.bmp.rgba"), 0, false));
    FreeDesc(&desc);
    DeleteFileA(szWall.c_str());
}

TEST(ImageFormatChoice, ShortFileIsRefusedAndItsHandleClosed)
{
    std::vector<BYTE> bmp = ReadWholeFile(TestData("image/bmp24.bmp"));
    bmp.resize(19);
    std::string szName = TestData("image/tmp_short.bmp");
    WriteWholeFile(szName, bmp);
    void* h = zynCreateFile(szName.c_str(), GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    DDSURFACEDESC2 desc;
    EXPECT_HR(zynImage_ReadSurface(h, &desc), E_FAIL);
    EXPECT_FALSE(zynCloseHandle(h)) << "the handle was still open after the failure";
    DeleteFileA(szName.c_str());
}

TEST(ImageFormatChoice, TargaDescriptor40IsRefusedAnd32IsReadAndFlipped)
{
    std::vector<BYTE> tga = ReadWholeFile(TestData("image/tga32top.tga"));
    ASSERT_GT(tga.size(), 18u);
    std::string szName = TestData("image/tmp_desc.tga");
    tga[17] = 40;
    WriteWholeFile(szName, tga);
    DDSURFACEDESC2 desc;
    EXPECT_HR(ReadSurfaceFile(szName, &desc), E_FAIL);
    tga[17] = 32;
    WriteWholeFile(szName, tga);
    ASSERT_HR(ReadSurfaceFile(szName, &desc), S_OK);
    EXPECT_TRUE(MatchesReference((const BYTE*)desc.lpSurface, desc.dwWidth, desc.dwHeight,
                                 TestData("image/tga32top.tga.rgba"), 0, true));
    FreeDesc(&desc);
    DeleteFileA(szName.c_str());
}
