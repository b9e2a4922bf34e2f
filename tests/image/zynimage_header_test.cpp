// Lying headers, one field at a time: each case starts from a valid file made
// by ImageMagick (or a few bytes built here), breaks one thing, and expects the
// reader's code and error text, and no pixels beyond what the data holds.
#include "zynimage_testfiles.h"

#include <string.h>

static void Put16(std::vector<BYTE>& data, size_t nAt, DWORD v)
{
    data[nAt] = (BYTE)v;
    data[nAt + 1] = (BYTE)(v >> 8);
}

static void Put32(std::vector<BYTE>& data, size_t nAt, DWORD v)
{
    memcpy(&data[nAt], &v, 4);
}

struct HeaderCase {
    const char* szWhat;
    const char* szBase;     // a valid file under image/
    size_t nAt;             // the field that lies
    int nBytes;             // 1, 2 or 4 bytes, or 0: the file is cut at nAt
    DWORD dwValue;
    HRESULT hrWant;
    const char* szError;
};

static std::vector<BYTE> Damaged(const HeaderCase& tc)
{
    std::vector<BYTE> data = ReadWholeFile(TestData(std::string("image/") + tc.szBase));
    if (data.size() < tc.nAt + 4)
        return std::vector<BYTE>();    // the base is missing or too short for this case
    if (tc.nBytes == 0)
        data.resize(tc.nAt);
    else if (tc.nBytes == 1)
        data[tc.nAt] = (BYTE)tc.dwValue;
    else if (tc.nBytes == 2)
        Put16(data, tc.nAt, tc.dwValue);
    else
        Put32(data, tc.nAt, tc.dwValue);
    return data;
}

// Runs each case through the class by name; the pixels of a load that succeeds
// must be readable to their last byte.
template <class IMAGE>
static void RunCases(const HeaderCase* pCases, size_t nCases, const char* szTemp)
{
    std::string szName = TestData(std::string("image/") + szTemp);
    for (size_t i = 0; i < nCases; i++) {
        const HeaderCase& tc = pCases[i];
        SCOPED_TRACE(testing::Message() << tc.szWhat << " (" << tc.szBase << ")");
        std::vector<BYTE> data = Damaged(tc);
        ASSERT_FALSE(data.empty()) << "base file missing or shorter than " << tc.nAt + 4 << " bytes";
        WriteWholeFile(szName, data);
        IMAGE image;
        EXPECT_HR(image.Load(szName.c_str(), NULL), tc.hrWant);
        EXPECT_STREQ(image.GetErrorText(), tc.szError);
        if (SUCCEEDED(tc.hrWant) && image.GetPixels()) {
            const BYTE* p = image.GetPixels();
            size_t nBytes = (size_t)image.GetWidth() * image.GetHeight() * 4;
            volatile BYTE bSum = 0;
            for (size_t k = 0; k < nBytes; k += 61)
                bSum += p[k];
            if (nBytes)
                bSum += p[nBytes - 1];
        }
    }
    DeleteFileA(szName.c_str());
}

TEST(TargaHeaders, LyingFieldsFailWithTheReadersText)
{
    static const HeaderCase s_Cases[] = {
        {"huge width and height", "tga24.tga", 12, 4, 0xFFFFFFFF, E_FAIL, "Error Loading File."},
        {"height larger than the data", "tga32.tga", 14, 2, 0x7FFF, E_FAIL, "Error Loading File."},
        {"huge run-length picture", "tga32rle.tga", 12, 4, 0xFFFFFFFF, E_FAIL, "Error Loading File."},
        {"negative id length", "tga24.tga", 0, 1, 0x80, E_FAIL, "Error Loading File."},
        {"id length past the end", "tga24.tga", 0, 1, 0x7F, E_FAIL, "Error Loading File."},
        {"bit count 0", "tga24.tga", 16, 1, 0, E_FAIL, "Error Loading File."},
        {"bit count 8 in a run-length file", "tga32rle.tga", 16, 1, 8, E_FAIL, "Error Loading File."},
        {"header cut short", "tga24.tga", 10, 0, 0, E_FAIL, "Error Loading File."},
        {"run-length data cut short", "tga32rle.tga", 400, 0, 0, E_FAIL, "Error Loading File."},
        {"width 0 is an empty picture", "tga24.tga", 12, 2, 0, S_OK, ""},
    };
    RunCases<zynImageTarga>(s_Cases, sizeof(s_Cases) / sizeof(s_Cases[0]), "tmp_lying.tga");
}

// A 2 x 2 run-length Targa of 32 bits: the packets given, then nothing.
static std::vector<BYTE> SmallRleTarga(const std::vector<BYTE>& packets)
{
    std::vector<BYTE> data(18, 0);
    data[2] = 10;
    Put16(data, 12, 2);
    Put16(data, 14, 2);
    data[16] = 32;
    data[17] = 8;
    data.insert(data.end(), packets.begin(), packets.end());
    return data;
}

TEST(TargaHeaders, RunsPastThePictureStopAtItsEnd)
{
    static const struct {
        const char* szWhat;
        std::vector<BYTE> packets;
        HRESULT hrWant;
        DWORD adwWant[4];
    } s_Cases[] = {
        {"one run of 128", {0xFF, 1, 2, 3, 4}, S_OK, {0x04030201, 0x04030201, 0x04030201, 0x04030201}},
        {"raw packet of 128 with two pixels of data",
         {0x7F, 1, 2, 3, 4, 5, 6, 7, 8},
         E_FAIL,
         {}},
        {"raw packet of 3, then a run of 128",
         {0x02, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 0xFF, 9, 9, 9, 9},
         S_OK,
         {0x01010101, 0x02020202, 0x03030303, 0x09090909}},
        {"run without its pixel", {0x01, 1, 1, 1, 1, 2, 2, 2, 2, 0x81}, E_FAIL, {}},
    };
    std::string szName = TestData("image/tmp_rle_small.tga");
    for (const auto& tc : s_Cases) {
        SCOPED_TRACE(tc.szWhat);
        WriteWholeFile(szName, SmallRleTarga(tc.packets));
        zynImageTarga tga;
        EXPECT_HR(tga.Load(szName.c_str(), NULL), tc.hrWant);
        EXPECT_STREQ(tga.GetErrorText(), SUCCEEDED(tc.hrWant) ? "" : "Error Loading File.");
        if (SUCCEEDED(tc.hrWant)) {
            ASSERT_TRUE(tga.GetPixels() != NULL);
            for (int i = 0; i < 4; i++)
                EXPECT_EQ(ColorText(((const DWORD*)tga.GetPixels())[i]), ColorText(tc.adwWant[i])) << "pixel " << i;
        }
    }
    DeleteFileA(szName.c_str());
}

TEST(BitmapHeaders, LyingFieldsGiveTheReadersCodeAndText)
{
    static const HeaderCase s_Cases[] = {
        {"huge width", "bmp24_w5.bmp", 18, 4, 0x7FFFFFFF, E_FAIL, "Error Loading File."},
        {"huge height", "bmp8.bmp", 22, 4, 0x7FFFFFFF, E_FAIL, "Error Loading File."},
        {"rows stored top first", "bmp24_w5.bmp", 22, 4, 0xFFFFFFF0, E_FAIL, "Error Loading File."},
        {"palette larger than the file", "bmp8.bmp", 46, 4, 0xFFFFFFFF, E_FAIL, "Error Loading File."},
        {"palette of 300 entries", "bmp8.bmp", 46, 4, 300, S_OK, ""},
        {"info header cut short", "bmp8.bmp", 30, 0, 0, E_FAIL, "Error Loading File."},
        {"palette cut short", "bmp8.bmp", 500, 0, 0, E_FAIL, "Error Loading File."},
        {"pixel data cut short", "bmp24_w5.bmp", 100, 0, 0, S_OK, ""},
        {"bit count 0", "bmp24.bmp", 28, 2, 0, S_OK, ""},
        {"4 bits with run-length compression", "bmp4.bmp", 30, 4, 2, E_FAIL,
         "Wasn't supported 4 bit Bmp with compression."},
        {"8 bits with compression 3", "bmp8.bmp", 30, 4, 3, E_FAIL, "Unknown format compression for 8 bit Bmp."},
        {"run-length height doubled", "bmp8rle.bmp", 22, 4, 92, S_OK, ""},
    };
    RunCases<zynImageBitmap>(s_Cases, sizeof(s_Cases) / sizeof(s_Cases[0]), "tmp_lying.bmp");
}

TEST(BitmapHeaders, IndicesPastAShortPaletteReadAsZero)
{
    // biClrUsed 2: two entries are read, and the data starts right behind them,
    // so the rest of the file's palette is taken as pixels, mostly indices past 1
    std::vector<BYTE> data = ReadWholeFile(TestData("image/bmp8.bmp"));
    ASSERT_GT(data.size(), 1100u);
    Put32(data, 46, 2);
    std::string szName = TestData("image/tmp_short_palette.bmp");
    WriteWholeFile(szName, data);
    zynImageBitmap bmp;
    ASSERT_HR(bmp.Load(szName.c_str(), NULL), S_OK);
    DWORD nWidth = bmp.GetWidth(), nHeight = bmp.GetHeight();
    DWORD nStride = (nWidth + 3) & ~3u;
    const BYTE* pData = &data[54 + 8];
    DWORD adwPalette[2];
    memcpy(adwPalette, &data[54], 8);
    const DWORD* p = (const DWORD*)bmp.GetPixels();
    ASSERT_TRUE(p != NULL);
    int nBad = 0;
    for (DWORD y = 0; y < nHeight && nBad < 3; y++) {
        for (DWORD x = 0; x < nWidth && nBad < 3; x++) {
            size_t nAt = (size_t)y * nStride + x;
            DWORD dwWant = 0;
            if (nAt < data.size() - 62)
                dwWant = pData[nAt] < 2 ? adwPalette[pData[nAt]] : 0;
            if (p[y * nWidth + x] != dwWant) {
                ADD_FAILURE() << "pixel (" << x << ", " << y << ") is " << ColorText(p[y * nWidth + x]) << ", expected "
                              << ColorText(dwWant);
                nBad++;
            }
        }
    }
    DeleteFileA(szName.c_str());
}

// An 8-bit run-length bitmap of 4 x 2 with a grey ramp for a palette; the data given.
static std::vector<BYTE> SmallRleBitmap(const std::vector<BYTE>& rle)
{
    std::vector<BYTE> data(54 + 1024, 0);
    data[0] = 'B';
    data[1] = 'M';
    Put32(data, 14, 40);
    Put32(data, 18, 4);
    Put32(data, 22, 2);
    Put16(data, 26, 1);
    Put16(data, 28, 8);
    Put32(data, 30, 1);
    for (DWORD i = 0; i < 256; i++)
        Put32(data, 54 + i * 4, i * 0x010101);
    data.insert(data.end(), rle.begin(), rle.end());
    return data;
}

TEST(BitmapHeaders, RunLengthDataPastEitherEndStopsThere)
{
    static const struct {
        const char* szWhat;
        std::vector<BYTE> rle;
        DWORD adwWant[8];
    } s_Cases[] = {
        {"a run of 255 fills the picture and stops", {0xFF, 7}, {7, 7, 7, 7, 7, 7, 7, 7}},
        {"an absolute run of 16 with three bytes of data", {0x00, 0x10, 1, 2, 3}, {1, 2, 3, 0, 0, 0, 0, 0}},
        {"an absolute run past the picture", {0x02, 5, 0x00, 0x08, 1, 2, 3, 4, 5, 6, 7, 8}, {5, 5, 1, 2, 3, 4, 5, 6}},
        {"a run without its index", {0x03, 4, 0x02}, {4, 4, 4, 0, 0, 0, 0, 0}},
        {"an escape without its second byte", {0x01, 9, 0x00}, {9, 0, 0, 0, 0, 0, 0, 0}},
    };
    std::string szName = TestData("image/tmp_rle_small.bmp");
    for (const auto& tc : s_Cases) {
        SCOPED_TRACE(tc.szWhat);
        WriteWholeFile(szName, SmallRleBitmap(tc.rle));
        zynImageBitmap bmp;
        ASSERT_HR(bmp.Load(szName.c_str(), NULL), S_OK);
        ASSERT_TRUE(bmp.GetPixels() != NULL);
        for (int i = 0; i < 8; i++) {
            DWORD dwGot = ((const DWORD*)bmp.GetPixels())[i];
            EXPECT_EQ(ColorText(dwGot), ColorText(tc.adwWant[i] * 0x010101)) << "pixel " << i;
        }
    }
    DeleteFileA(szName.c_str());
}

TEST(DDSHeaders, LyingFieldsFailWithTheReadersText)
{
    static const HeaderCase s_Cases[] = {
        {"huge plain picture", "dds_argb.dds", 12, 4, 0x7FFFFFFF, E_FAIL, "Error Loading File."},
        {"plain rows cut short", "dds_argb.dds", 2000, 0, 0, E_FAIL, "Error Loading File."},
        {"record cut short", "dds_argb.dds", 60, 0, 0, E_FAIL, "Error Loading File."},
        {"unknown FourCC", "dds_dxt5.dds", 84, 4, 0x31545859, E_FAIL, "Can't create surface."},
        {"compressed width 0", "dds_dxt1.dds", 16, 4, 0, E_FAIL, "Can't create surface."},
        {"linear size past the end", "dds_dxt5.dds", 20, 4, 0x00100000, E_FAIL, "Error Loading File."},
        {"bit count 0 in a plain file", "dds_argb.dds", 88, 4, 0, S_OK, ""},
    };
    RunCases<zynImageDDSurface>(s_Cases, sizeof(s_Cases) / sizeof(s_Cases[0]), "tmp_lying.dds");
}

TEST(ImageFormatChoice, LyingHeadersThroughReadSurfaceGiveEFail)
{
    // the same damage through the format choice: a code, the handle closed, nothing handed over
    static const HeaderCase s_Cases[] = {
        {"huge Targa", "tga24.tga", 12, 4, 0xFFFFFFFF, E_FAIL, ""},
        {"Targa of bit count 0", "tga24.tga", 16, 1, 0, E_FAIL, ""},
        {"huge bitmap", "bmp24_w5.bmp", 18, 4, 0x7FFFFFFF, E_FAIL, ""},
        {"DDS larger than its data", "dds_argb.dds", 12, 4, 0x7FFFFFFF, E_FAIL, ""},
        {"JPEG cut in its header", "jpg_color.jpg", 100, 0, 0, E_FAIL, ""},
    };
    std::string szName = TestData("image/tmp_lying_choice.bin");
    for (const HeaderCase& tc : s_Cases) {
        SCOPED_TRACE(tc.szWhat);
        std::vector<BYTE> data = Damaged(tc);
        ASSERT_FALSE(data.empty()) << "base file missing or too short";
        WriteWholeFile(szName, data);
        DDSURFACEDESC2 desc;
        EXPECT_HR(ReadSurfaceFile(szName, &desc), tc.hrWant);
        EXPECT_TRUE(desc.lpSurface == NULL) << "a failed read hands over no block";
        // the handle was closed by the failed read, so the file can go at once
        EXPECT_TRUE(DeleteFileA(szName.c_str())) << "file still open, error " << GetLastError();
    }
}
