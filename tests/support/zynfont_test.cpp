// The console font resource of zynKernel.dll, made into a texture on a real
// device the way the kernel does it: size, format and every pixel's alpha.
#include "zyntexdevice.h"

#include "zyntexture.h"

class FontResource : public TextureDeviceTest {};

TEST_F(FontResource, TextureMatchesTheResource)
{
    HMODULE hDll = LoadLibraryExA("zynKernel.dll", NULL, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_TRUE(hDll != NULL) << "zynKernel.dll beside the tests, error " << GetLastError();
    HRSRC hInfo = FindResourceA(hDll, MAKEINTRESOURCEA(101), "zynFont");
    ASSERT_TRUE(hInfo != NULL) << "no zynFont 101 resource";
    EXPECT_EQ(SizeofResource(hDll, hInfo), 131200u);
    const BYTE* pFile = (const BYTE*)LockResource(LoadResource(hDll, hInfo));
    ASSERT_TRUE(pFile != NULL);
    EXPECT_EQ(memcmp(pFile, "DDS ", 4), 0);
    // the file's record has the 32-bit layout, which a 64-bit DDSURFACEDESC2
    // does not share (its lpSurface is 8 bytes): read the fields by offset
    DWORD adwRecord[31];
    memcpy(adwRecord, pFile + 4, 124);
    EXPECT_EQ(adwRecord[0], 124u) << "dwSize";
    EXPECT_EQ(adwRecord[1], 0x100Fu) << "dwFlags";
    EXPECT_EQ(adwRecord[4], 2048u) << "lPitch";
    EXPECT_EQ(adwRecord[19], 0x41u) << "pixel format flags";
    EXPECT_EQ(adwRecord[21], 32u) << "bits";
    EXPECT_EQ(adwRecord[25], 0xFF000000u) << "alpha mask";
    EXPECT_EQ(adwRecord[26], 0x1000u) << "caps";
    const DWORD* pPixels = (const DWORD*)(pFile + 128);

    DWORD nWidth = adwRecord[3], nHeight = adwRecord[2], nPitch = adwRecord[4];
    D3DX_SURFACEFORMAT format = D3DX_SF_A8R8G8B8;
    IDirectDrawSurface7* pFont = NULL;
    ASSERT_HR(D3DXCreateTexture(m_pDevice, NULL, &nWidth, &nHeight, &format, NULL, &pFont, NULL), S_OK);
    EXPECT_HR(D3DXLoadTextureFromMemory(m_pDevice, pFont, 0, (void*)pPixels, NULL, format, nPitch, NULL, 1), S_OK);
    EXPECT_EQ(nWidth, 512u);
    EXPECT_EQ(nHeight, 64u);
    EXPECT_EQ(format, D3DX_SF_A8R8G8B8);
    std::vector<DWORD> got = ReadAll(pFont);
    ASSERT_EQ(got.size(), 512u * 64u);
    int nBad = 0, nInk = 0;
    for (int i = 0; i < 512 * 64 && nBad < 5; i++) {
        if (got[i] != pPixels[i] || (got[i] & 0xFFFFFF) != 0xFFFFFF) {
            ADD_FAILURE() << "pixel (" << i % 512 << ", " << i / 512 << "): got " << ColorText(got[i]) << ", resource "
                          << ColorText(pPixels[i]);
            nBad++;
        }
        nInk += (got[i] >> 24) > 0x80;
    }
    EXPECT_GT(nInk, 1500) << "the glyphs hold ink";
    // ink in exactly the cells of characters with a glyph: '!' to '@' fill the
    // first row of cells, 'A' to '_' 31 cells of the second, 'a' to 'z' 26 of
    // the third; the fourth row (the blank's) is empty
    static const int s_anGlyphCells[4] = {32, 31, 26, 0};
    for (int nRow = 0; nRow < 4; nRow++) {
        for (int nColumn = 0; nColumn < 32; nColumn++) {
            DWORD dwInk = 0;
            for (int y = nRow * 16; y < nRow * 16 + 16; y++)
                for (int x = nColumn * 16; x < nColumn * 16 + 16; x++)
                    dwInk |= got[y * 512 + x] >> 24;
            bool bGlyph = nColumn < s_anGlyphCells[nRow];
            EXPECT_EQ(dwInk != 0, bGlyph)
                << "cell " << nColumn << " of row " << nRow << ", alpha bits seen 0x" << std::hex << dwInk << std::dec;
        }
    }
    pFont->Release();
    FreeLibrary(hDll);
}
