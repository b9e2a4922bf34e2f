// zynImage_ReadSurface asks the Targa and JPEG readers for their rows top first
// instead of loading them bottom first and flipping. These tests hold that short
// way to the long one (Load on the handle, then zynImage_ToSurfaceDesc) byte for
// byte, on good files, generated ones and damaged ones, and the JPEG colours to
// stb_image's own decode of the same file.
#include "zynimage_testfiles.h"
#include "zynfileio.h"

#include <algorithm>

// stb_image itself, as Debian ships it, for the JPEG comparison
#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_JPEG
#define STBI_NO_STDIO
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include "stb_image.h"
#pragma GCC diagnostic pop

// What one read gave: the result, the record, and where the handle was left.
struct ReadResult {
    HRESULT hr;
    DDSURFACEDESC2 desc;
    DWORD dwPos;
};

// The short way: zynImage_ReadSurface, which closes the handle itself on failure.
static ReadResult ReadShort(const std::string& szName)
{
    ReadResult r = {E_HANDLE, {}, 0};
    void* h = zynCreateFile(szName.c_str(), GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    if (h == INVALID_HANDLE_VALUE)
        return r;
    r.hr = zynImage_ReadSurface(h, &r.desc);
    if (SUCCEEDED(r.hr)) {
        r.dwPos = zynSetFilePointer(h, 0, NULL, FILE_CURRENT);
        zynCloseHandle(h);
    }
    return r;
}

// The long way: the reader's Load on the rewound handle, then the hand-over.
static ReadResult ReadLong(const std::string& szName, bool bJpeg)
{
    ReadResult r = {E_HANDLE, {}, 0};
    void* h = zynCreateFile(szName.c_str(), GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    if (h == INVALID_HANDLE_VALUE)
        return r;
    zynImageJpeg jpeg;
    zynImageTarga targa;
    zynImage* pImage = bJpeg ? (zynImage*)&jpeg : (zynImage*)&targa;
    r.hr = pImage->Load(NULL, h);
    if (SUCCEEDED(r.hr)) {
        zynImage_ToSurfaceDesc(pImage, &r.desc);
        r.dwPos = zynSetFilePointer(h, 0, NULL, FILE_CURRENT);
    }
    zynCloseHandle(h);
    return r;
}

// Both ways on one file: the same result and, on success, the same record,
// pixels (unless bPixels is false) and handle position. Both blocks are released.
static ::testing::AssertionResult SameBothWays(const std::string& szName, bool bJpeg, bool bPixels = true)
{
    ReadResult a = ReadShort(szName), b = ReadLong(szName, bJpeg);
    BYTE* pShort = (BYTE*)a.desc.lpSurface;
    BYTE* pLong = (BYTE*)b.desc.lpSurface;
    ::testing::AssertionResult result = ::testing::AssertionSuccess();
    if (a.hr == E_HANDLE || b.hr == E_HANDLE) {
        result = ::testing::AssertionFailure() << szName << " did not open";
    } else if (a.hr != b.hr) {
        result = ::testing::AssertionFailure() << "zynImage_ReadSurface gave " << HrText(a.hr) << ", Load gave "
                                               << HrText(b.hr);
    } else if (SUCCEEDED(a.hr)) {
        a.desc.lpSurface = b.desc.lpSurface = NULL;
        size_t nBytes = (size_t)a.desc.dwWidth * a.desc.dwHeight * 4;
        const BYTE* pDiff = std::mismatch(pShort, pShort + nBytes, pLong).first;
        if (memcmp(&a.desc, &b.desc, sizeof(a.desc)) != 0)
            result = ::testing::AssertionFailure() << "the records differ";
        else if (bPixels && pDiff != pShort + nBytes)
            result = ::testing::AssertionFailure() << "byte " << (pDiff - pShort) << " is " << (int)*pDiff
                                                   << " the short way, " << (int)pLong[pDiff - pShort] << " the long way";
        else if (a.dwPos != b.dwPos)
            result = ::testing::AssertionFailure() << "handle left at " << a.dwPos << " the short way, " << b.dwPos
                                                   << " the long way";
    }
    delete[] pShort;
    delete[] pLong;
    return result;
}

static void ExpectLoadsSameBothWays(const char* szFile, bool bJpeg)
{
    SCOPED_TRACE(szFile);
    DDSURFACEDESC2 desc;
    EXPECT_HR(ReadSurfaceFile(TestData(szFile), &desc), S_OK);
    FreeDesc(&desc);
    EXPECT_TRUE(SameBothWays(TestData(szFile), bJpeg));
}

TEST(ImageTopFirst, EveryTargaAndJpegVariantEqualsLoadAndHandOver)
{
    static const char* s_Targa[] = {"image/tga24.tga", "image/tga32.tga", "image/tga24rle.tga", "image/tga32rle.tga",
                                    "image/tga24rle_w5.tga", "image/tga24top.tga", "image/tga32top.tga",
                                    "image/tga32id127.tga", "image/tga32_footer.tga",
                                    "zip/pak_deflated.zip/Maps/Wall.TGA"};
    static const char* s_Jpeg[] = {"image/jpg_color.jpg", "image/jpg_grey.jpg", "image/jpg_prog.jpg",
                                   "image/jpg_h2.jpg", "image/jpg_cmyk_jfif.jpg", "zip/pak_stored.zip/Photo.JPG"};
    for (const char* szFile : s_Targa)
        ExpectLoadsSameBothWays(szFile, false);
    for (const char* szFile : s_Jpeg)
        ExpectLoadsSameBothWays(szFile, true);
}

// A plain true-colour Targa of random pixels, with a footer behind them.
static std::vector<BYTE> MakeTarga(WORD nWidth, WORD nHeight, BYTE nDescriptor, size_t nFooter, std::mt19937& rng)
{
    std::vector<BYTE> data(18 + (size_t)nWidth * nHeight * 3 + nFooter);
    data[2] = 2;
    memcpy(&data[12], &nWidth, 2);
    memcpy(&data[14], &nHeight, 2);
    data[16] = 24;
    data[17] = nDescriptor;
    for (size_t i = 18; i < data.size(); i++)
        data[i] = (BYTE)rng();
    return data;
}

TEST(ImageTopFirst, TargaRowsReadInPiecesEqualTheWholeFileRead)
{
    // 700 rows of 900 bytes take three pieces of the streamed read; footers of
    // a few bytes and of more than a piece; empty pictures; a file cut short
    struct Case {
        WORD nWidth, nHeight;
        BYTE nDescriptor;
        size_t nFooter, nCut;
    };
    static const Case s_Cases[] = {{300, 700, 0, 0, 0},  {300, 700, 32, 26, 0}, {300, 700, 8, 300000, 0},
                                   {5, 3, 32, 0, 0},     {1, 1, 0, 1, 0},       {0, 4, 0, 7, 0},
                                   {4, 0, 32, 5, 0},     {300, 700, 0, 0, 1},   {300, 700, 32, 0, 300 * 3 * 350}};
    std::mt19937 rng(0x70F);
    std::string szName = TestData("image/tmp_topfirst.tga");
    for (const Case& c : s_Cases) {
        SCOPED_TRACE(testing::Message() << c.nWidth << " x " << c.nHeight << ", descriptor " << (int)c.nDescriptor
                                        << ", footer " << c.nFooter << ", cut " << c.nCut);
        std::vector<BYTE> data = MakeTarga(c.nWidth, c.nHeight, c.nDescriptor, c.nFooter, rng);
        data.resize(data.size() - c.nCut);
        WriteWholeFile(szName, data);
        EXPECT_TRUE(SameBothWays(szName, false));
        ReadResult r = ReadShort(szName);
        EXPECT_HR(r.hr, c.nCut ? E_FAIL : S_OK);
        delete[] (BYTE*)r.desc.lpSurface;
    }
    DeleteFileA(szName.c_str());
}

TEST(ImageTopFirst, DamagedFilesGiveTheSameResultBothWays)
{
    // Only damage that leaves the bytes of the format choice (0 to 3, 16, 17)
    // alone is compared: other damage sends the short way to another reader.
    // The pixels of damaged JPEGs are not compared: where a damaged stream
    // leaves parts of a colour plane undecoded, stb_image converts whatever its
    // fresh allocation held, so even two loads the same way can differ there.
    struct Case {
        const char* szFile;
        size_t nHeader;
        bool bJpeg;
    };
    static const Case s_Cases[] = {{"image/tga24.tga", 18, false}, {"image/tga24top.tga", 18, false},
                                   {"image/tga32rle.tga", 18, false}, {"image/jpg_color.jpg", 600, true},
                                   {"image/jpg_prog.jpg", 600, true}};
    static const int MUTATIONS_PER_FILE = 150;
    std::mt19937 rng(0x5A3E);
    std::string szName = TestData("image/tmp_topfirst_damaged.bin");
    int nCompared = 0;
    for (const Case& c : s_Cases) {
        std::vector<BYTE> base = ReadWholeFile(TestData(c.szFile));
        ASSERT_GT(base.size(), 20u) << c.szFile;
        for (int i = 0; i < MUTATIONS_PER_FILE; i++) {
            std::vector<BYTE> data = MutateBytes(base, rng, c.nHeader);
            static const int s_Choice[] = {0, 1, 2, 3, 16, 17};
            bool bSameChoice = data.size() >= 20;
            for (int k : s_Choice)
                bSameChoice = bSameChoice && data[k] == base[k];
            if (!bSameChoice)
                continue;
            WriteWholeFile(szName, data);
            EXPECT_TRUE(SameBothWays(szName, c.bJpeg, !c.bJpeg)) << "mutation " << i << " of " << c.szFile;
            nCompared++;
        }
    }
    DeleteFileA(szName.c_str());
    EXPECT_GT(nCompared, 300) << "too few damaged files reached the readers";
}

// The RGB form of a baseline JPEG: component ids 'R', 'G', 'B' in the frame
// and scan headers, which tells decoders to leave the colours untransformed.
static std::vector<BYTE> WithRgbComponentIds(std::vector<BYTE> data)
{
    for (size_t i = 2; i + 4 < data.size(); i++) {
        if (data[i] != 0xFF || (data[i + 1] != 0xC0 && data[i + 1] != 0xDA))
            continue;
        size_t nFirst = data[i + 1] == 0xC0 ? i + 10 : i + 5;
        size_t nStride = data[i + 1] == 0xC0 ? 3 : 2;
        for (int k = 0; k < 3; k++)
            data[nFirst + k * nStride] = (BYTE)"RGB"[k];
        if (data[i + 1] == 0xDA)
            break;
    }
    return data;
}

TEST(ImageJpeg, ColoursAreStbImagesDecodeWithBlueFirst)
{
    // the colour kernels of the JPEG layer store blue first; their sums must be
    // the decoder's own, so that no pixel differs from stb_image's RGBA in anything
    // but the order of red and blue
    std::string szRgb = TestData("image/tmp_jpg_rgb_ids.jpg");
    std::vector<BYTE> ycbcr = ReadWholeFile(TestData("image/jpg_color.jpg")), rgb = WithRgbComponentIds(ycbcr);
    ASSERT_NE(ycbcr, rgb) << "no frame header found to give RGB ids";
    WriteWholeFile(szRgb, rgb);
    static const char* s_Files[] = {"image/jpg_color.jpg", "image/jpg_grey.jpg", "image/jpg_prog.jpg",
                                    "image/jpg_h2.jpg", "image/jpg_cmyk_jfif.jpg", "image/tmp_jpg_rgb_ids.jpg"};
    for (const char* szFile : s_Files) {
        SCOPED_TRACE(szFile);
        std::vector<BYTE> file = ReadWholeFile(TestData(szFile));
        int nWidth = 0, nHeight = 0, nChannels = 0;
        stbi_uc* pWant = stbi_load_from_memory(file.data(), (int)file.size(), &nWidth, &nHeight, &nChannels, 4);
        ASSERT_NE(pWant, nullptr);
        DDSURFACEDESC2 desc;
        ASSERT_HR(ReadSurfaceFile(TestData(szFile), &desc), S_OK);
        ASSERT_EQ(desc.dwWidth, (DWORD)nWidth);
        ASSERT_EQ(desc.dwHeight, (DWORD)nHeight);
        const BYTE* pGot = (const BYTE*)desc.lpSurface;
        for (int i = 0; i < nWidth * nHeight; i++) {
            const BYTE* g = pGot + i * 4;
            const BYTE* w = pWant + i * 4;
            ASSERT_TRUE(g[0] == w[2] && g[1] == w[1] && g[2] == w[0] && g[3] == 255)
                << "pixel " << i << " is " << ColorText(*(const DWORD*)g) << ", stb_image gives red " << (int)w[0]
                << ", green " << (int)w[1] << ", blue " << (int)w[2];
        }
        stbi_image_free(pWant);
        FreeDesc(&desc);
        EXPECT_TRUE(SameBothWays(TestData(szFile), true));
    }
    DeleteFileA(szRgb.c_str());
}
