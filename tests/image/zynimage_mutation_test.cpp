// Seeded mutations of valid files: bytes flipped, header fields set to extreme
// values, files cut short. Every reader must answer with a code and, when it
// succeeds, a block as large as the picture it reports. ZYN_MUTATIONS sets the
// count per reader (2,000 by default; tools/mutate-images.sh runs 10,000).
#include "zynimage_testfiles.h"
#include "zynfileio.h"

#include <stdio.h>
#include <stdlib.h>


static int MutationCount()
{
    const char* sz = getenv("ZYN_MUTATIONS");
    int n = sz ? atoi(sz) : 0;
    return n > 0 ? n : 2000;
}

struct MutationCase {
    const char* szFile;
    size_t nHeader;     // where extreme values go: the header and palette
};

static void RunReaderMutations(const MutationCase* pCases, size_t nCases, unsigned nSeed)
{
    std::mt19937 rng(nSeed);
    // one file per suite case: ctest runs the cases side by side
    std::string szName = TestData("image/tmp_mutation" + std::to_string(nSeed) + ".bin");
    int nCount = MutationCount(), nLoaded = 0;
    for (int i = 0; i < nCount; i++) {
        const MutationCase& tc = pCases[i % nCases];
        static std::vector<BYTE> s_Base[8];
        if (s_Base[i % nCases].empty())
            s_Base[i % nCases] = ReadWholeFile(TestData(tc.szFile));
        std::vector<BYTE> data = MutateBytes(s_Base[i % nCases], rng, tc.nHeader);
        WriteWholeFile(szName, data);
        DDSURFACEDESC2 desc;
        HRESULT hr = ReadSurfaceFile(szName, &desc);
        ASSERT_TRUE(hr == S_OK || hr == E_FAIL) << "mutation " << i << " of " << tc.szFile << " gave " << HrText(hr);
        if (hr == S_OK) {
            // the whole block the description promises must be there: the top level
            // of a DDS file as its record gives it, or the 32-bit picture
            size_t nBytes = (size_t)desc.dwWidth * desc.dwHeight * 4;
            if (desc.dwFlags != 0x180F)
                nBytes = (desc.dwFlags & DDSD_LINEARSIZE) ? desc.dwLinearSize
                                                         : (size_t)desc.dwWidth * desc.ddpfPixelFormat.dwRGBBitCount / 8 * desc.dwHeight;
            volatile BYTE bSum = 0;
            for (size_t k = 0; k < nBytes; k += 64)
                bSum += ((BYTE*)desc.lpSurface)[k];
            nLoaded++;
            FreeDesc(&desc);
        }
    }
    DeleteFileA(szName.c_str());
    ::testing::Test::RecordProperty("loaded", nLoaded);
    printf("%d of %d damaged files still loaded\n", nLoaded, nCount);
}

TEST(ImageMutation, DamagedTargaFilesNeverCrash)
{
    static const MutationCase s_Cases[] = {{"image/tga32rle.tga", 18}, {"image/tga24.tga", 18}, {"image/tga24rle.tga", 18}};
    RunReaderMutations(s_Cases, 3, 0x7A6A);
}

TEST(ImageMutation, DamagedBitmapFilesNeverCrash)
{
    static const MutationCase s_Cases[] = {{"image/bmp8rle.bmp", 60}, {"image/bmp4_w7.bmp", 118}, {"image/bmp24_w5.bmp", 54}};
    RunReaderMutations(s_Cases, 3, 0xB3B3);
}

TEST(ImageMutation, DamagedJpegFilesNeverCrash)
{
    static const MutationCase s_Cases[] = {{"image/jpg_color.jpg", 600}, {"image/jpg_prog.jpg", 600}};
    RunReaderMutations(s_Cases, 2, 0x1F1F);
}

TEST(ImageMutation, DamagedDdsFilesNeverCrash)
{
    static const MutationCase s_Cases[] = {{"image/dds_dxt5.dds", 128}, {"image/dds_16_4444.dds", 128}};
    RunReaderMutations(s_Cases, 2, 0xDD5);
}

TEST(ImageMutation, DamagedArchivesNeverCrashOrGiveWrongBytes)
{
    std::vector<BYTE> base = ReadWholeFile(TestData("zip/pak_deflated.zip"));
    std::vector<BYTE> photo = ReadWholeFile(TestData("image/jpg_color.jpg"));
    ASSERT_FALSE(base.empty());
    std::mt19937 rng(0x21F);
    int nCount = MutationCount();
    for (int i = 0; i < nCount; i++) {
        // each archive under its own name, so nothing of an earlier one can linger
        std::string szZip = TestData("zip/tmp_mutation" + std::to_string(i % 2) + ".zip");
        WriteWholeFile(szZip, MutateBytes(base, rng, base.size()));
        void* h = zynCreateFile((szZip + "\\photo.jpg").c_str(), GENERIC_READ, 0, NULL, OPEN_EXISTING, 0, NULL);
        if (h != INVALID_HANDLE_VALUE) {
            // a member that opens passed its CRC: its bytes are the original ones
            DWORD nSize = zynGetFileSize(h, NULL);
            ASSERT_TRUE(nSize == photo.size() && memcmp(h, photo.data(), nSize) == 0) << "mutation " << i;
            zynCloseHandle(h);
        }
        DDSURFACEDESC2 desc;
        if (SUCCEEDED(ReadSurfaceFile(szZip + "\\maps\\wall.tga", &desc)))
            FreeDesc(&desc);
        zynGetFileAttributes((szZip + "\\textures\\sub").c_str());
    }
    DeleteFileA(TestData("zip/tmp_mutation0.zip").c_str());
    DeleteFileA(TestData("zip/tmp_mutation1.zip").c_str());
}
