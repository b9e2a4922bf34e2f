// Image readers against their peers on 2048 x 2048 files made by
// tools/make-testdata.sh: our reader (zynCreateFile + zynImage_ReadSurface)
// over stb_image loading the same file to four channels, and the DDS branch over
// a plain memcpy of the same number of bytes. Rounds alternate in one run; each
// side's best round counts. A value above 1.0 means our reader is faster.
#include "zynbench.h"
#include "zynfileio.h"
#include "zynimage.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define STB_IMAGE_IMPLEMENTATION
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#pragma GCC diagnostic ignored "-Wimplicit-fallthrough"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#include "stb_image.h"
#pragma GCC diagnostic pop

#include <string>
#include <vector>

static const int ROUNDS = 7;

static std::string BenchFile(const char* szName)
{
    const char* szRoot = getenv("ZYN_TESTDATA");
    return std::string(szRoot && *szRoot ? szRoot : "testdata") + "\\bench\\" + szName;
}

// Seconds for one read through our reader; negative on failure.
static double TimeOurs(const std::string& szName, size_t* pBytes)
{
    double t0 = Bench_Seconds();
    void* h = zynCreateFile(szName.c_str(), GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    DDSURFACEDESC2 desc;
    if (h == INVALID_HANDLE_VALUE || FAILED(zynImage_ReadSurface(h, &desc)))
        return -1;
    zynCloseHandle(h);
    double t = Bench_Seconds() - t0;
    *pBytes = (size_t)desc.dwWidth * desc.dwHeight * 4;
    delete[] (BYTE*)desc.lpSurface;
    return t;
}

static double TimeStb(const std::string& szName)
{
    double t0 = Bench_Seconds();
    FILE* f = fopen(szName.c_str(), "rb");
    int w = 0, h = 0, n = 0;
    stbi_uc* p = f ? stbi_load_from_file(f, &w, &h, &n, 4) : NULL;
    if (f)
        fclose(f);
    double t = Bench_Seconds() - t0;
    if (p == NULL)
        return -1;
    stbi_image_free(p);
    return t;
}

static void CompareWithStb(const char* szBench, const char* szFile)
{
    std::string szName = BenchFile(szFile);
    double fOurs = 1e9, fStb = 1e9;
    size_t nBytes = 0;
    for (int r = 0; r < ROUNDS; r++) {
        double a = TimeOurs(szName, &nBytes), b = TimeStb(szName);
        if (a < 0 || b < 0) {
            fprintf(stderr, "%s: %s could not be read\n", szBench, szName.c_str());
            return;
        }
        fOurs = a < fOurs ? a : fOurs;
        fStb = b < fStb ? b : fStb;
    }
    printf("# %s: ours %.1f MB/s, stb_image %.1f MB/s\n", szBench, nBytes / fOurs / 1e6, nBytes / fStb / 1e6);
    Bench_Report(szBench, fStb / fOurs);
}

static void CompareDdsWithMemcpy()
{
    std::string szName = BenchFile("bench.dds");
    size_t nBytes = 0;
    double fOurs = 1e9, fCopy = 1e9;
    std::vector<BYTE> src(2048 * 2048 * 4, 7), dst(src.size());
    for (int r = 0; r < ROUNDS; r++) {
        double a = TimeOurs(szName, &nBytes);
        if (a < 0) {
            fprintf(stderr, "decode_dds_vs_memcpy: %s could not be read\n", szName.c_str());
            return;
        }
        double t0 = Bench_Seconds();
        memcpy(dst.data(), src.data(), src.size());
        double b = Bench_Seconds() - t0;
        fOurs = a < fOurs ? a : fOurs;
        fCopy = b < fCopy ? b : fCopy;
    }
    printf("# decode_dds_vs_memcpy: ours %.1f MB/s, memcpy %.1f MB/s\n", nBytes / fOurs / 1e6, src.size() / fCopy / 1e6);
    Bench_Report("decode_dds_vs_memcpy", (nBytes / fOurs) / (src.size() / fCopy));
}

int main()
{
    Bench_Start();
    CompareWithStb("decode_tga_vs_stb", "bench.tga");
    CompareWithStb("decode_bmp_vs_stb", "bench.bmp");
    CompareWithStb("decode_jpeg_vs_stb", "bench.jpg");
    CompareDdsWithMemcpy();
    return 0;
}
