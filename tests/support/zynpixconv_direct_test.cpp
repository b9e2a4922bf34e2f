// The direct row routines against the path through the common form: for every
// pair, random rows of many lengths and source offsets must come out the same
// to the bit, with the bytes past the row untouched, in both builds (plain x86,
// and AVX2 where the processor has it).
#include "zyntexdevice.h"

#include "zynformat.h"
#include "zynpixconv.h"

#include <random>
#include <string.h>

static const FormatRoutines* RoutinesOf(D3DX_SURFACEFORMAT format)
{
    for (const FormatRoutines* p = g_aFormatRoutines; p->nFormat; p++)
        if (p->nFormat == format)
            return p;
    return NULL;
}

// n pixels from pSource + nOffset pixels, through the read and write routines.
static void GeneralRow(D3DX_SURFACEFORMAT from, D3DX_SURFACEFORMAT to, int n, int nOffset, BYTE* pSource,
                       BYTE* pTarget)
{
    BltState state;
    memset(&state, 0, sizeof(state));
    state.nStepU = state.nStepV = 0x10000;
    state.nU = (nOffset << 16) + 0x8000;
    state.pSourceRow = pSource;
    state.pRow = pTarget;
    std::vector<DWORD> line(n + 2);
    DWORD* pRun = RoutinesOf(from)->pfnRead(n, line.data(), &state);
    RoutinesOf(to)->pfnWrite(n, pRun, &state);
}

TEST(PixConvDirect, EveryPairMatchesThePathThroughTheCommonForm)
{
    static const D3DX_SURFACEFORMAT aOthers[] = {D3DX_SF_R8G8B8,   D3DX_SF_X8R8G8B8, D3DX_SF_R5G6B5,  D3DX_SF_R5G5B5,
                                                 D3DX_SF_A1R5G5B5, D3DX_SF_X4R4G4B4, D3DX_SF_A4R4G4B4};
    std::mt19937 rng(11);
    int nBuilds = PixConv_HasAvx2() ? 2 : 1;
    for (int nBuild = 0; nBuild < nBuilds; nBuild++) {
        for (D3DX_SURFACEFORMAT other : aOthers) {
            for (int nWay = 0; nWay < 2; nWay++) {
                D3DX_SURFACEFORMAT from = nWay ? other : D3DX_SF_A8R8G8B8, to = nWay ? D3DX_SF_A8R8G8B8 : other;
                SCOPED_TRACE(testing::Message() << "format " << from << " to " << to << (nBuild ? " (AVX2)" : ""));
                PFNCONVERTROW pfnRow = PixConv_DirectRow(from, to, nBuild == 1);
                ASSERT_TRUE(pfnRow != NULL) << "no direct routine";
                int nFromBytes = (int)D3DXGetFormatBytes(from), nToBytes = (int)D3DXGetFormatBytes(to);
                for (int nCase = 0; nCase < 40; nCase++) {
                    int n = nCase < 20 ? nCase + 1 : 1 + (int)(rng() % 300), nOffset = (int)(rng() % 5);
                    std::vector<BYTE> source((size_t)(n + nOffset) * nFromBytes + 8);
                    for (BYTE& b : source)
                        b = (BYTE)rng();
                    if (nCase % 4 == 0)   // zero pixels, for the A1R5G5B5 rule
                        memset(source.data(), 0, source.size() / 2);
                    std::vector<BYTE> want((size_t)n * nToBytes + 16), got(want.size());
                    for (BYTE& b : want)
                        b = (BYTE)rng();
                    got = want;
                    GeneralRow(from, to, n, nOffset, source.data(), want.data());
                    pfnRow(n, source.data() + (size_t)nOffset * nFromBytes, got.data());
                    for (size_t i = 0; i < want.size(); i++)
                        if (want[i] != got[i]) {
                            ADD_FAILURE() << "row of " << n << " from offset " << nOffset << ": byte " << i << " is "
                                          << (int)got[i] << ", the general path gives " << (int)want[i];
                            break;
                        }
                }
            }
        }
    }
}

// The blitter takes the direct routine for an unscaled point blit, and the
// result equals a blit that goes through the common form pixel by pixel
// (X8R8G8B8 source, whose pair with R5G6B5 has no direct routine, holding the
// same colours with alpha 255).
TEST(PixConvDirect, BlitMemoryToMemoryTakesTheDirectRoutineWithTheSameResult)
{
    ASSERT_EQ(PixConv_StartTables(), S_OK);
    const int W = 37, H = 5;
    std::mt19937 rng(5);
    std::vector<DWORD> argb(W * H), xrgb(W * H);
    for (int i = 0; i < W * H; i++) {
        argb[i] = 0xFF000000u | (rng() & 0xFFFFFF);
        xrgb[i] = argb[i] & 0xFFFFFF;
    }
    std::vector<WORD> direct(W * H), viaXrgb(W * H, 0);
    EXPECT_HR(PixConv_BltMemoryToMemory(D3DX_SF_A8R8G8B8, W, H, 0, argb.data(), D3DX_SF_A4R4G4B4, W, H, 0,
                                        direct.data(), 1), S_OK);
    EXPECT_HR(PixConv_BltMemoryToMemory(D3DX_SF_X8R8G8B8, W, H, 0, xrgb.data(), D3DX_SF_A4R4G4B4, W, H, 0,
                                        viaXrgb.data(), 1), S_OK);
    EXPECT_TRUE(direct == viaXrgb) << "A4R4G4B4 from A8R8G8B8 and from X8R8G8B8 differ";
    EXPECT_EQ(direct[0], (WORD)(0xF000 | ((argb[0] >> 12) & 0xF00) | ((argb[0] >> 8) & 0xF0) | ((argb[0] >> 4) & 0xF)));
    PixConv_StopTables();
}
