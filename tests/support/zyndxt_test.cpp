// DXT blocks: the codec's own rules on small blocks, our decoder against the
// platform's (a DXT surface filled with our blocks, Blt to A8R8G8B8), and the
// encoder's error on ImageMagick's built-in pictures.
#include "zyntexdevice.h"

#include "zyndxt.h"
#include "zynformat.h"

#include <math.h>
#include <random>

static DWORD Word(const BYTE* p, int i) { return p[2 * i] | (p[2 * i + 1] << 8); }
static DWORD Codes(const BYTE* p) { return p[4] | (p[5] << 8) | (p[6] << 16) | ((DWORD)p[7] << 24); }

TEST(DxtCodec, SixteenEqualPixelsGiveOneColourAndZeroCodes)
{
    DWORD adw[16];
    for (DWORD& c : adw)
        c = 0xFF3366CC;
    BYTE block[8];
    DXT_EncodeBlock(ZYN_FOURCC_DXT1, adw, block);
    EXPECT_EQ(Word(block, 0), Word(block, 1));
    EXPECT_EQ(Word(block, 0), (0x33u >> 3) << 11 | (0x66u >> 2) << 5 | (0xCCu >> 3));
    EXPECT_EQ(Codes(block), 0u);
}

TEST(DxtCodec, AllTransparentDxt1BlockIsTheEmptyBlock)
{
    DWORD adw[16] = {};
    BYTE block[8];
    DXT_EncodeBlock(ZYN_FOURCC_DXT1, adw, block);
    EXPECT_EQ(Word(block, 0), 0u);
    EXPECT_EQ(Word(block, 1), 0xFFFFu);
    EXPECT_EQ(Codes(block), 0xFFFFFFFFu);
    DWORD adwOut[16];
    DXT_DecodeBlock(ZYN_FOURCC_DXT1, block, adwOut);
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(adwOut[i], 0u) << "pixel " << i;
}

TEST(DxtCodec, Dxt1ModeFollowsTransparency)
{
    DWORD adw[16];
    for (int i = 0; i < 16; i++)
        adw[i] = (i & 1) ? 0xFFFF0000 : 0xFF0000FF;
    BYTE block[8];
    DXT_EncodeBlock(ZYN_FOURCC_DXT1, adw, block);
    EXPECT_GT(Word(block, 0), Word(block, 1)) << "an opaque block takes the four-colour mode";
    DWORD adwOut[16];
    DXT_DecodeBlock(ZYN_FOURCC_DXT1, block, adwOut);
    for (int i = 0; i < 16; i++)
        EXPECT_TRUE(ColorNear(adwOut[i], adw[i], 0, true)) << "pixel " << i;

    adw[5] = 0x00123456;
    DXT_EncodeBlock(ZYN_FOURCC_DXT1, adw, block);
    EXPECT_LE(Word(block, 0), Word(block, 1)) << "a transparent pixel needs the three-colour mode";
    EXPECT_EQ((Codes(block) >> 10) & 3, 3u) << "the transparent pixel's code";
    DXT_DecodeBlock(ZYN_FOURCC_DXT1, block, adwOut);
    EXPECT_EQ(adwOut[5], 0u);
    EXPECT_TRUE(ColorNear(adwOut[4], 0xFF0000FF, 0, true));
}

TEST(DxtCodec, Dxt5FlatAlphaHasZeroCodesAndDecodesToIt)
{
    DWORD adw[16];
    for (int i = 0; i < 16; i++)
        adw[i] = 0x80000000u | (i * 0x0F0F0F);
    BYTE block[16];
    DXT_EncodeBlock(ZYN_FOURCC_DXT5, adw, block);
    EXPECT_EQ(block[0], 0x80);
    EXPECT_EQ(block[1], 0x80);
    for (int i = 2; i < 8; i++)
        EXPECT_EQ(block[i], 0) << "code byte " << i;
    DWORD adwOut[16];
    DXT_DecodeBlock(ZYN_FOURCC_DXT5, block, adwOut);
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(adwOut[i] >> 24, 0x80u) << "pixel " << i;
}

TEST(DxtCodec, AlphaRampsRoundTripWithinOneStep)
{
    DWORD adw[16];
    for (int i = 0; i < 16; i++)
        adw[i] = ((DWORD)(i * 17) << 24) | 0x404040;
    BYTE block[16];
    DWORD adwOut[16];
    DXT_EncodeBlock(ZYN_FOURCC_DXT3, adw, block);
    DXT_DecodeBlock(ZYN_FOURCC_DXT3, block, adwOut);
    for (int i = 0; i < 16; i++)
        EXPECT_EQ(adwOut[i] >> 24, adw[i] >> 24) << "DXT3 pixel " << i;
    DXT_EncodeBlock(ZYN_FOURCC_DXT5, adw, block);
    DXT_DecodeBlock(ZYN_FOURCC_DXT5, block, adwOut);
    for (int i = 0; i < 16; i++)
        EXPECT_NEAR((int)(adwOut[i] >> 24), (int)(adw[i] >> 24), 255 / 7 + 1) << "DXT5 pixel " << i;
}

// ---- against the platform's decoder

class DxtPlatform : public TextureDeviceTest {
protected:
    // A DXT surface of 16 x 16 holding the 16 blocks, blitted to A8R8G8B8 by DirectDraw.
    std::vector<DWORD> PlatformDecode(D3DX_SURFACEFORMAT format, const std::vector<BYTE>& blocks)
    {
        std::vector<DWORD> out;
        IDirectDrawSurface7* pDxt = MakeSurface(format, 16, 16);
        IDirectDrawSurface7* pArgb = MakeSurface(D3DX_SF_A8R8G8B8, 16, 16);
        if (pDxt && pArgb) {
            DDSURFACEDESC2 ddsd = {};
            ddsd.dwSize = sizeof(ddsd);
            if (SUCCEEDED(pDxt->Lock(NULL, &ddsd, DDLOCK_WAIT, NULL))) {
                memcpy(ddsd.lpSurface, blocks.data(), blocks.size());
                pDxt->Unlock(NULL);
                if (SUCCEEDED(pArgb->Blt(NULL, pDxt, NULL, DDBLT_WAIT, NULL)))
                    out = ReadAll(pArgb);
            }
        }
        if (pDxt)
            pDxt->Release();
        if (pArgb)
            pArgb->Release();
        return out;
    }
};

// Blocks that cover both DXT1 colour modes (with code 3 in each), equal end
// points, and both DXT5 alpha modes with codes 6 and 7. DirectDraw reads the
// colour half of DXT3 and DXT5 always as four colours, so those blocks keep
// c0 above c1, as our encoder writes them.
static std::vector<BYTE> MakeBlocks(DWORD dwFourCC, std::mt19937& rng)
{
    int nBytes = DXT_BlockBytes(dwFourCC), nColor = nBytes - 8;
    std::vector<BYTE> blocks(16 * nBytes);
    for (int b = 0; b < 16; b++) {
        BYTE* p = &blocks[b * nBytes];
        for (int i = 0; i < nBytes; i++)
            p[i] = (BYTE)rng();
        DWORD c0 = p[nColor] | (p[nColor + 1] << 8), c1 = p[nColor + 2] | (p[nColor + 3] << 8);
        bool bFourColor = (b & 1) == 0 || dwFourCC != ZYN_FOURCC_DXT1;
        if (c0 == c1 && bFourColor)
            p[nColor] ^= 1, c0 ^= 1;
        if ((c0 > c1) != bFourColor) {
            std::swap(p[nColor], p[nColor + 2]);
            std::swap(p[nColor + 1], p[nColor + 3]);
        }
        if (b == 6 && dwFourCC == ZYN_FOURCC_DXT1)   // equal end points: the three-colour mode
            p[nColor + 2] = p[nColor], p[nColor + 3] = p[nColor + 1];
        if (dwFourCC == ZYN_FOURCC_DXT5 && ((b >> 1) & 1) == (p[0] > p[1]))
            std::swap(p[0], p[1]);
    }
    return blocks;
}

TEST_F(DxtPlatform, OurDecoderMatchesTheBlitOfDirectDraw)
{
    static const struct {
        D3DX_SURFACEFORMAT format;
        DWORD dwFourCC;
    } cases[] = {{D3DX_SF_DXT1, ZYN_FOURCC_DXT1}, {D3DX_SF_DXT3, ZYN_FOURCC_DXT3}, {D3DX_SF_DXT5, ZYN_FOURCC_DXT5}};
    std::mt19937 rng(7);
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "format " << c.format);
        std::vector<BYTE> blocks = MakeBlocks(c.dwFourCC, rng);
        std::vector<DWORD> want = PlatformDecode(c.format, blocks);
        ASSERT_EQ(want.size(), 256u) << "DirectDraw did not decode the surface";
        int nWorst = 0;
        for (int b = 0; b < 16; b++) {
            DWORD adw[16];
            DXT_DecodeBlock(c.dwFourCC, &blocks[b * DXT_BlockBytes(c.dwFourCC)], adw);
            for (int i = 0; i < 16; i++) {
                DWORD dwWant = want[((b / 4) * 4 + i / 4) * 16 + (b % 4) * 4 + i % 4];
                bool bTransparent = c.dwFourCC == ZYN_FOURCC_DXT1 && (dwWant >> 24) == 0;
                // a transparent DXT1 texel's colour is not defined by the format
                if (bTransparent) {
                    EXPECT_EQ(adw[i] >> 24, 0u) << "block " << b << " pixel " << i;
                    continue;
                }
                EXPECT_TRUE(ColorNear(adw[i], dwWant, 1, true)) << "block " << b << " pixel " << i;
                for (int s = 0; s < 32; s += 8)
                    nWorst = std::max(nWorst, abs((int)((adw[i] >> s) & 0xFF) - (int)((dwWant >> s) & 0xFF)));
            }
        }
        RecordProperty("worst_channel_difference", nWorst);
    }
}

// ---- the encoder on real pictures

static double EncodePsnr(const std::vector<BYTE>& rgba, int nWidth, int nHeight)
{
    double fSum = 0;
    long nCount = 0;
    for (int by = 0; by + 4 <= nHeight; by += 4) {
        for (int bx = 0; bx + 4 <= nWidth; bx += 4) {
            DWORD adw[16], adwOut[16];
            for (int i = 0; i < 16; i++) {
                const BYTE* p = &rgba[((by + i / 4) * nWidth + bx + i % 4) * 4];
                adw[i] = 0xFF000000u | (p[0] << 16) | (p[1] << 8) | p[2];
            }
            BYTE block[8];
            DXT_EncodeBlock(ZYN_FOURCC_DXT1, adw, block);
            DXT_DecodeBlock(ZYN_FOURCC_DXT1, block, adwOut);
            for (int i = 0; i < 16; i++)
                for (int s = 0; s < 24; s += 8) {
                    double d = (double)((adw[i] >> s) & 0xFF) - (double)((adwOut[i] >> s) & 0xFF);
                    fSum += d * d;
                    nCount++;
                }
        }
    }
    return 10.0 * log10(255.0 * 255.0 / (fSum / nCount));
}

struct TestPicture {
    const char* szName;
    int nWidth, nHeight;
};
static const TestPicture g_aPictures[] = {{"rose", 70, 46}, {"logo", 640, 480}, {"wizard", 480, 640}};

// ImageMagick's built-in picture as raw RGBA bytes; empty if convert failed.
static std::vector<BYTE> LoadPicture(const TestPicture& pic)
{
    std::string szFile = TestDataFolder() + pic.szName + ".rgba";
    std::string szArgs = std::string(pic.szName) + ": -depth 8 rgba:" + szFile;
    std::vector<BYTE> rgba((size_t)pic.nWidth * pic.nHeight * 4);
    FILE* f = RunConvert(szArgs.c_str(), szFile) ? fopen(szFile.c_str(), "rb") : NULL;
    size_t nRead = f ? fread(rgba.data(), 1, rgba.size(), f) : 0;
    if (f)
        fclose(f);
    if (nRead != rgba.size())
        rgba.clear();
    return rgba;
}

TEST(DxtEncoder, ErrorOnImageMagickPicturesStaysUnderTheBound)
{
    static const double afMinPsnr[] = {26.7, 34.0, 31.5};   // measured: rose 27.2, logo 34.5, wizard 32.0 dB
    for (int p = 0; p < 3; p++) {
        const TestPicture& pic = g_aPictures[p];
        SCOPED_TRACE(pic.szName);
        std::vector<BYTE> rgba = LoadPicture(pic);
        ASSERT_FALSE(rgba.empty()) << "convert did not write " << pic.szName << ".rgba";
        double fPsnr = EncodePsnr(rgba, pic.nWidth, pic.nHeight);
        printf("DXT1 PSNR of %s: %.2f dB\n", pic.szName, fPsnr);
        EXPECT_GE(fPsnr, afMinPsnr[p]) << "DXT1 PSNR of " << pic.szName;
    }
}

// ---- the encoder's exact output, pinned

// Blocks of eight kinds that reach every branch of the encoder: noise with any
// alpha, near-flat blocks (every other one inside one 5-6-5 colour), two
// colours, ramps, cut-outs, one colour with varied alpha (every other block
// with one opaque pixel or none), greys, and saturated corners of the cube.
static void MakeEncoderBlock(int nKind, std::mt19937& rng, DWORD adw[16])
{
    DWORD dwBase = rng(), dwOther = rng();
    for (int i = 0; i < 16; i++) {
        DWORD r = rng(), c;
        switch (nKind) {
        case 0: c = r; break;
        case 1:   // every other block stays inside one 5-6-5 colour
            c = 0xFF000000u | ((dwOther & 1) ? (dwBase & 0xF8FCF8) + (r & 0x030303) : (dwBase & 0xF8F8F8) + (r & 0x070707));
            break;
        case 2: c = 0xFF000000u | ((r & 1) ? dwBase : dwOther); break;
        case 3: {
            DWORD c0 = dwBase, c1 = dwOther, t = i * 17;
            c = 0xFF000000u;
            for (int s = 0; s < 24; s += 8) {
                DWORD v = (((c0 >> s) & 0xFF) * (255 - t) + ((c1 >> s) & 0xFF) * t) / 255 + ((r >> s) & 3);
                c |= (v > 255 ? 255 : v) << s;
            }
            break;
        }
        case 4: c = ((r & 3) ? 0xFF000000u : 0) | ((dwBase & 0xE0E0E0) + (r >> 8 & 0x1F1F1F)); break;
        case 5:   // every other block has one opaque pixel or none
            c = (dwOther & 0x100) ? ((dwOther & 0x200) && (int)(dwOther & 15) == i ? 0xFF000000u : 0) : (r & 0xFF000000u);
            c |= dwBase & 0xFFFFFF;
            break;
        case 6: c = 0xFF000000u | ((r & 0xFF) * 0x010101u); break;
        default: c = 0xFF000000u | ((r & 1) ? 0xFF0000 : 0) | ((r & 2) ? 0xFF00 : 0) | ((r & 4) ? 0xFF : 0); break;
        }
        adw[i] = c;
    }
}

static DWORD Fnv1a(DWORD h, const BYTE* p, size_t n)
{
    for (size_t i = 0; i < n; i++)
        h = (h ^ p[i]) * 16777619u;
    return h;
}

// The encoder is tuned for speed: these checksums over its blocks were taken
// from the straightforward first version and must not move by a single bit.
TEST(DxtEncoder, OutputOnFixedBlocksAndPicturesIsUnchanged)
{
    static const struct {
        DWORD dwFourCC;
        DWORD dwChecksum;
    } cases[] = {{ZYN_FOURCC_DXT1, 0xf692fec2u}, {ZYN_FOURCC_DXT3, 0xdec61797u}, {ZYN_FOURCC_DXT5, 0xa76e39a5u}};
    for (int k = 0; k < 3; k++) {
        std::mt19937 rng(1234 + k);
        DWORD h = 2166136261u;
        for (int b = 0; b < 8 * 2000; b++) {
            DWORD adw[16];
            BYTE block[16];
            MakeEncoderBlock(b % 8, rng, adw);
            DXT_EncodeBlock(cases[k].dwFourCC, adw, block);
            h = Fnv1a(h, block, DXT_BlockBytes(cases[k].dwFourCC));
        }
        EXPECT_EQ(h, cases[k].dwChecksum) << "checksum of 16000 random blocks, FourCC case " << k;
    }
    DWORD h = 2166136261u;
    for (const TestPicture& pic : g_aPictures) {
        std::vector<BYTE> rgba = LoadPicture(pic);
        ASSERT_FALSE(rgba.empty()) << "convert did not write " << pic.szName << ".rgba";
        for (int by = 0; by + 4 <= pic.nHeight; by += 4)
            for (int bx = 0; bx + 4 <= pic.nWidth; bx += 4) {
                DWORD adw[16];
                for (int i = 0; i < 16; i++) {
                    const BYTE* q = &rgba[((by + i / 4) * pic.nWidth + bx + i % 4) * 4];
                    adw[i] = 0xFF000000u | (q[0] << 16) | (q[1] << 8) | q[2];
                }
                BYTE block[8];
                DXT_EncodeBlock(ZYN_FOURCC_DXT1, adw, block);
                h = Fnv1a(h, block, 8);
            }
    }
    EXPECT_EQ(h, 0xc59c14a8u) << "checksum of the DXT1 blocks of rose:, logo: and wizard:";
}
