// Pixel conversion through real DirectDraw surfaces: round trips through every
// pair of formats the platform can make, the filters on known patterns, and
// the blitter's refusals.
#include "zyntexdevice.h"

#include "zynformat.h"
#include "zynpixconv.h"

struct ChannelBits {
    D3DX_SURFACEFORMAT format;
    int a, r, g, b;    // bits kept of each channel; 0: the channel does not survive
    int nExtra;        // tolerance on top, for formats that convert (YUV)
};
static const ChannelBits g_aChannels[] = {
    {D3DX_SF_R8G8B8, 0, 8, 8, 8, 0},    {D3DX_SF_A8R8G8B8, 8, 8, 8, 8, 0}, {D3DX_SF_X8R8G8B8, 0, 8, 8, 8, 0},
    {D3DX_SF_R5G6B5, 0, 5, 6, 5, 0},    {D3DX_SF_R5G5B5, 0, 5, 5, 5, 0},   {D3DX_SF_A1R5G5B5, 1, 5, 5, 5, 0},
    {D3DX_SF_X4R4G4B4, 0, 4, 4, 4, 0},  {D3DX_SF_A4R4G4B4, 4, 4, 4, 4, 0}, {D3DX_SF_L8, 0, 0, 0, 0, 0},
    {D3DX_SF_A8L8, 8, 0, 0, 0, 0},      {D3DX_SF_U8V8, 0, 8, 8, 0, 0},     {D3DX_SF_U5V5L6, 0, 5, 5, 6, 0},
    {D3DX_SF_U8V8L8, 0, 8, 8, 8, 0},    {D3DX_SF_UYVY, 0, 8, 8, 8, 6},     {D3DX_SF_YUY2, 0, 8, 8, 8, 6},
    {D3DX_SF_DXT1, 1, 5, 6, 5, 0},      {D3DX_SF_DXT3, 4, 5, 6, 5, 0},     {D3DX_SF_DXT5, 8, 5, 6, 5, 0},
    {D3DX_SF_R3G3B2, 0, 3, 3, 2, 0},    {D3DX_SF_A8, 8, 0, 0, 0, 0},
};

// One step of the narrower of two channels; -1 when the channel is lost.
static int StepOf(int nBitsA, int nBitsB)
{
    int n = nBitsA < nBitsB ? nBitsA : nBitsB;
    return n == 0 ? -1 : n >= 8 ? 0 : 256 >> n;
}

// 16 x 16, one colour for each 4 x 4 block (so DXT and YUV pairs lose no more
// than their channel depth), alpha 0x88 and above (DXT1 keeps every colour).
static std::vector<DWORD> BlockPattern()
{
    static const DWORD adwAlpha[4] = {0xFF, 0xCC, 0x99, 0x88};
    std::vector<DWORD> pixels(256);
    for (int y = 0; y < 16; y++)
        for (int x = 0; x < 16; x++) {
            int b = (y / 4) * 4 + x / 4;
            pixels[y * 16 + x] = (adwAlpha[b & 3] << 24) | ((b * 16 + 8) << 16) | ((255 - b * 13) << 8) | (b * 37 % 256);
        }
    return pixels;
}

class PixConvRoundTrip : public TextureDeviceTest {};

// Whether B holds every bit of every channel of A, so that A -> B -> A must give
// A back bit for bit. The YUV forms and luminance convert rather than keep bits.
static bool KeepsEveryBit(const ChannelBits& a, const ChannelBits& b)
{
    if (a.nExtra || b.nExtra)
        return false;
    for (const ChannelBits* p : {&a, &b})
        if (p->format == D3DX_SF_L8 || p->format == D3DX_SF_A8L8)
            return false;
    return b.a >= a.a && b.r >= a.r && b.g >= a.g && b.b >= a.b;
}

TEST_F(PixConvRoundTrip, EveryPairOfFormatsComesBackWithinOneStep)
{
    std::vector<DWORD> pattern = BlockPattern();
    std::vector<const ChannelBits*> made;
    std::string szSkipped;
    for (const ChannelBits& c : g_aChannels) {
        IDirectDrawSurface7* p = MakeSurface(c.format, 16, 16);
        if (p) {
            made.push_back(&c);
            p->Release();
        } else {
            szSkipped += " " + std::to_string(c.format);
        }
    }
    ASSERT_GE(made.size(), 8u) << "too few surface formats; refused:" << szSkipped;
    IDirectDrawSurface7* pBack = MakeSurface(D3DX_SF_A8R8G8B8, 16, 16);
    ASSERT_TRUE(pBack != NULL);
    for (const ChannelBits* pa : made) {
        for (const ChannelBits* pb : made) {
            SCOPED_TRACE(testing::Message() << "formats " << pa->format << " -> " << pb->format);
            IDirectDrawSurface7* pA = MakeSurface(pa->format, 16, 16);
            IDirectDrawSurface7* pB = MakeSurface(pb->format, 16, 16);
            EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 16, 16, D3DX_DEFAULT, pattern.data(), NULL, pA, NULL, NULL, 1), S_OK);
            EXPECT_HR(_d3dxBltSurface(pA, pB, NULL, NULL, 1), S_OK);
            if (KeepsEveryBit(*pa, *pb)) {
                // exact: A -> B -> A reads back as A itself does
                IDirectDrawSurface7* pA2 = MakeSurface(pa->format, 16, 16);
                EXPECT_HR(_d3dxBltSurface(pA, pBack, NULL, NULL, 1), S_OK);
                std::vector<DWORD> want = ReadAll(pBack);
                EXPECT_HR(_d3dxBltSurface(pB, pA2, NULL, NULL, 1), S_OK);
                EXPECT_HR(_d3dxBltSurface(pA2, pBack, NULL, NULL, 1), S_OK);
                std::vector<DWORD> back = ReadAll(pBack);
                pA2->Release();
                ASSERT_EQ(back.size(), want.size());
                for (size_t i = 0, nBad = 0; i < want.size() && nBad < 3; i++) {
                    if (back[i] != want[i]) {
                        ADD_FAILURE() << "pixel " << i << " back through the wider format: got " << ColorText(back[i])
                                      << ", expected " << ColorText(want[i]) << " as the first format holds it";
                        nBad++;
                    }
                }
            }
            EXPECT_HR(_d3dxBltSurface(pB, pBack, NULL, NULL, 1), S_OK);
            pA->Release();
            pB->Release();
            std::vector<DWORD> got = ReadAll(pBack);
            ASSERT_EQ(got.size(), 256u);
            int aStep[4] = {StepOf(pa->a, pb->a), StepOf(pa->r, pb->r), StepOf(pa->g, pb->g), StepOf(pa->b, pb->b)};
            int nExtra = pa->nExtra + pb->nExtra;
            bool bAlpha = pa->a >= 4 && pb->a >= 4;
            int nBad = 0;
            for (int i = 0; i < 256 && nBad < 3; i++) {
                for (int k = 0; k < 4; k++) {
                    if (aStep[k] < 0 || (k == 0 && !bAlpha))
                        continue;
                    int s = 24 - 8 * k;
                    int d = abs((int)((got[i] >> s) & 0xFF) - (int)((pattern[i] >> s) & 0xFF));
                    if (d > aStep[k] + nExtra) {
                        ADD_FAILURE() << "pixel " << i << " channel " << k << ": got " << ColorText(got[i])
                                      << ", sent " << ColorText(pattern[i]) << ", allowed " << aStep[k] + nExtra;
                        nBad++;
                    }
                }
            }
        }
    }
    pBack->Release();
    if (!szSkipped.empty())
        printf("surface formats DirectDraw refused:%s\n", szSkipped.c_str());
}

// A channel of n bits widened to 8 by repeating its bits downwards.
static int Widen(int q, int n)
{
    int nShift = 8 - n, v = q << nShift;
    while (nShift > 0) {
        nShift -= n;
        v |= nShift >= 0 ? q << nShift : q >> -nShift;
    }
    return v & 0xFF;
}

TEST_F(PixConvRoundTrip, EachRgbFormatReadsBackAsItsTopBitsWidened)
{
    // every value of each channel once, in its own pixel, across 256 pixels
    std::vector<DWORD> pattern(256);
    for (DWORD i = 0; i < 256; i++)
        pattern[i] = (i << 24) | ((i * 7 & 0xFF) << 16) | ((i * 13 & 0xFF) << 8) | (255 - i);
    static const ChannelBits s_Rgb[] = {
        {D3DX_SF_R8G8B8, 0, 8, 8, 8, 0},   {D3DX_SF_A8R8G8B8, 8, 8, 8, 8, 0}, {D3DX_SF_X8R8G8B8, 0, 8, 8, 8, 0},
        {D3DX_SF_R5G6B5, 0, 5, 6, 5, 0},   {D3DX_SF_R5G5B5, 0, 5, 5, 5, 0},   {D3DX_SF_A1R5G5B5, 1, 5, 5, 5, 0},
        {D3DX_SF_X4R4G4B4, 0, 4, 4, 4, 0}, {D3DX_SF_A4R4G4B4, 4, 4, 4, 4, 0},
    };
    IDirectDrawSurface7* pBack = MakeSurface(D3DX_SF_A8R8G8B8, 16, 16);
    ASSERT_TRUE(pBack != NULL);
    int nMade = 0;
    for (const ChannelBits& c : s_Rgb) {
        SCOPED_TRACE(testing::Message() << "format " << c.format);
        IDirectDrawSurface7* p = MakeSurface(c.format, 16, 16);
        if (!p)
            continue;
        nMade++;
        EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 16, 16, D3DX_DEFAULT, pattern.data(), NULL, p, NULL, NULL, 1), S_OK);
        EXPECT_HR(_d3dxBltSurface(p, pBack, NULL, NULL, 1), S_OK);
        p->Release();
        std::vector<DWORD> got = ReadAll(pBack);
        ASSERT_EQ(got.size(), 256u);
        const int anBits[4] = {c.a, c.r, c.g, c.b};
        for (int i = 0, nBad = 0; i < 256 && nBad < 3; i++) {
            DWORD dwWant = 0;
            for (int k = 0; k < 4; k++) {
                int s = 24 - 8 * k, v = (pattern[i] >> s) & 0xFF;
                int w = anBits[k] ? Widen(v >> (8 - anBits[k]), anBits[k]) : 255;
                dwWant |= (DWORD)w << s;
            }
            if (c.format == D3DX_SF_A1R5G5B5 && pattern[i] == 0)
                dwWant = 0;    // a pixel of 0 stays 0
            if (got[i] != dwWant) {
                ADD_FAILURE() << "pixel " << i << ": sent " << ColorText(pattern[i]) << ", got " << ColorText(got[i])
                              << ", expected " << ColorText(dwWant);
                nBad++;
            }
        }
    }
    pBack->Release();
    EXPECT_GE(nMade, 6) << "too few RGB surface formats were made";
}

class PixConvFilter : public TextureDeviceTest {};

TEST_F(PixConvFilter, BoxFilterOfACheckerboardGivesTheMean)
{
    std::vector<DWORD> checker(64);
    for (int i = 0; i < 64; i++)
        checker[i] = ((i / 8 + i % 8) & 1) ? 0xFFFFFFFF : 0x00000000;
    IDirectDrawSurface7* pHalf = MakeSurface(D3DX_SF_A8R8G8B8, 4, 4);
    ASSERT_TRUE(pHalf != NULL);
    // zero pixels take no part in an A8R8G8B8 filter, so use grey instead of 0
    for (DWORD& c : checker)
        c = c ? 0xFFFFFFFF : 0xFF000001;
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 8, 8, 0, checker.data(), NULL, pHalf, NULL, NULL, D3DX_DEFAULT), S_OK);
    std::vector<DWORD> got = ReadAll(pHalf);
    ASSERT_EQ(got.size(), 16u);
    for (int i = 0; i < 16; i++)
        EXPECT_TRUE(ColorNear(got[i], 0xFF808080, 2, true)) << "pixel " << i;
    pHalf->Release();
}

TEST_F(PixConvFilter, PointHalvingTakesEveryOtherPixelFromTheSecond)
{
    DWORD adwRow[4] = {0xFF000000, 0xFF111111, 0xFF222222, 0xFF333333};
    IDirectDrawSurface7* pHalf = MakeSurface(D3DX_SF_R5G6B5, 2, 1);
    ASSERT_TRUE(pHalf != NULL);
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 4, 1, 16, adwRow, NULL, pHalf, NULL, NULL, 1), S_OK);
    EXPECT_TRUE(ColorNear(ReadSurfacePixel(pHalf, 0, 0), 0xFF111111, 8));
    EXPECT_TRUE(ColorNear(ReadSurfacePixel(pHalf, 1, 0), 0xFF333333, 8));
    pHalf->Release();
}

TEST_F(PixConvFilter, BilinearStretchOfTwoPixelsRampsBetweenThem)
{
    DWORD adwRow[2] = {0xFF000000, 0xFFFF0000};
    IDirectDrawSurface7* pWide = MakeSurface(D3DX_SF_A8R8G8B8, 8, 1);
    ASSERT_TRUE(pWide != NULL);
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 2, 1, 0, adwRow, NULL, pWide, NULL, NULL, 2), S_OK);
    std::vector<DWORD> got = ReadAll(pWide);
    ASSERT_EQ(got.size(), 8u);
    EXPECT_TRUE(ColorNear(got[0], 0xFF000000, 2)) << "the left edge takes the left pixel alone";
    EXPECT_TRUE(ColorNear(got[7], 0xFFFF0000, 2)) << "the right edge takes the right pixel alone";
    for (int i = 1; i < 8; i++)
        EXPECT_GE((got[i] >> 16) & 0xFF, (got[i - 1] >> 16) & 0xFF) << "pixel " << i << " of the ramp";
    pWide->Release();
}

TEST_F(PixConvFilter, A1R5G5B5KeepsZeroAndTakesTheAlphaBit)
{
    DWORD adw[2] = {0x00000000, 0xFF000000};
    IDirectDrawSurface7* p = MakeSurface(D3DX_SF_A1R5G5B5, 2, 1);
    ASSERT_TRUE(p != NULL);
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 2, 1, 0, adw, NULL, p, NULL, NULL, 1), S_OK);
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ASSERT_HR(p->Lock(NULL, &ddsd, DDLOCK_WAIT, NULL), S_OK);
    WORD aw[2];
    memcpy(aw, ddsd.lpSurface, 4);
    p->Unlock(NULL);
    EXPECT_EQ(aw[0], 0u);
    EXPECT_EQ(aw[1], 0x8000u);
    p->Release();
}

TEST_F(PixConvFilter, BadBlitsAreRefused)
{
    DWORD adw[16] = {};
    IDirectDrawSurface7* p = MakeSurface(D3DX_SF_A8R8G8B8, 4, 4);
    ASSERT_TRUE(p != NULL);
    RECT rcOutside = {2, 2, 6, 6}, rcEmpty = {1, 1, 1, 3};
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 4, 4, 0, adw, NULL, p, NULL, &rcOutside, 1), E_NOTIMPL);
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 4, 4, 0, adw, NULL, p, &rcEmpty, NULL, 1), E_NOTIMPL);
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 4, 4, 0, NULL, NULL, p, NULL, NULL, 1), E_NOTIMPL);
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_PALETTE8, 4, 4, 0, adw, NULL, p, NULL, NULL, 1), E_NOTIMPL) << "no palette";
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 4, 4, 0, adw, NULL, p, NULL, NULL, 3), E_NOTIMPL) << "filter 3";
    EXPECT_HR(_d3dxBltSurface(p, p, NULL, NULL, 1), E_NOTIMPL) << "a surface onto itself";

    // counted starts: one more start and stop leaves the tables standing
    EXPECT_HR(PixConv_StartTables(), S_OK);
    PixConv_StopTables();
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 4, 4, 0, adw, NULL, p, NULL, NULL, 1), S_OK);
    PixConv_StopTables();
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_A8R8G8B8, 4, 4, 0, adw, NULL, p, NULL, NULL, 1), D3DXERR_D3DXNOTSTARTEDYET);
    EXPECT_HR(PixConv_StartTables(), S_OK);
    p->Release();
}

TEST_F(PixConvFilter, Palette8TakesTheNearestEntry)
{
    PALETTEENTRY aEntries[256] = {};
    aEntries[1] = {200, 0, 0, 0};
    aEntries[2] = {0, 0, 200, 0};
    BYTE abIndex[4] = {1, 2, 2, 1};
    IDirectDrawSurface7* p = MakeSurface(D3DX_SF_A8R8G8B8, 4, 1);
    ASSERT_TRUE(p != NULL);
    EXPECT_HR(_d3dxBltMemory(D3DX_SF_PALETTE8, 4, 1, 0, abIndex, aEntries, p, NULL, NULL, 1), S_OK);
    std::vector<DWORD> got = ReadAll(p);
    ASSERT_GE(got.size(), 2u);
    EXPECT_EQ(got[0], 0xFFC80000u);
    EXPECT_EQ(got[1], 0xFF0000C8u);
    p->Release();
}
