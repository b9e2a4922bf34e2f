// BENCH dxt1_psnr_minus_stb: our DXT1 PSNR minus stb_dxt's in its high-quality
// mode, over ImageMagick's rose:, logo: and wizard: together, in dB.
// BENCH dxt1_speed_vs_stb: our blocks a second over stb_dxt's default mode,
// alternating rounds in one run, best round of each.
#include "zynbench.h"

#include "zyndxt.h"

#define STB_DXT_IMPLEMENTATION
#include <stb_dxt.h>

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string>
#include <vector>

struct Picture {
    const char* szName;
    int nWidth, nHeight;
    std::vector<BYTE> rgba;
};

// ImageMagick's built-in picture as raw RGBA, written by /usr/bin/convert. The
// Unix program is started directly (cmd.exe cannot run it), and its handle may
// signal before the file is complete: wait until the file has all its bytes.
static bool LoadPicture(Picture& pic)
{
    const char* szFolder = getenv("ZYN_TESTDATA");
    std::string szFile = std::string(szFolder && *szFolder ? szFolder : "testdata") + "/" + pic.szName + ".rgba";
    size_t nBytes = (size_t)pic.nWidth * pic.nHeight * 4;
    CreateDirectoryA(szFile.substr(0, szFile.rfind('/')).c_str(), NULL);
    for (int nTry = 0; nTry < 300; nTry++) {
        FILE* f = fopen(szFile.c_str(), "rb");
        if (f) {
            pic.rgba.resize(nBytes);
            size_t nRead = fread(pic.rgba.data(), 1, nBytes, f);
            fclose(f);
            if (nRead == nBytes)
                return true;
        } else if (nTry == 0) {
            std::string szCommand = std::string("Z:\\usr\\bin\\convert ") + pic.szName + ": -depth 8 rgba:" + szFile;
            std::vector<char> line(szCommand.begin(), szCommand.end());
            line.push_back(0);
            STARTUPINFOA si = {};
            si.cb = sizeof(si);
            PROCESS_INFORMATION pi = {};
            if (!CreateProcessA(NULL, line.data(), NULL, NULL, FALSE, 0, NULL, NULL, &si, &pi))
                return false;
            WaitForSingleObject(pi.hProcess, 30000);
            CloseHandle(pi.hThread);
            CloseHandle(pi.hProcess);
        }
        Sleep(100);
    }
    return false;
}

// Blocks of the picture as 16 pixels each: ours 0xAARRGGBB, stb's RGBA bytes.
static void Blocks(const Picture& pic, std::vector<DWORD>& ours, std::vector<BYTE>& stb)
{
    for (int by = 0; by + 4 <= pic.nHeight; by += 4)
        for (int bx = 0; bx + 4 <= pic.nWidth; bx += 4)
            for (int i = 0; i < 16; i++) {
                const BYTE* p = &pic.rgba[((by + i / 4) * pic.nWidth + bx + i % 4) * 4];
                ours.push_back(0xFF000000u | (p[0] << 16) | (p[1] << 8) | p[2]);
                stb.insert(stb.end(), {p[0], p[1], p[2], 255});
            }
}

static double SquaredError(const std::vector<DWORD>& ours, const std::vector<BYTE>& blocks)
{
    double fSum = 0;
    for (size_t b = 0; b < ours.size() / 16; b++) {
        DWORD adw[16];
        DXT_DecodeBlock(ZYN_FOURCC_DXT1, &blocks[b * 8], adw);
        for (int i = 0; i < 16; i++)
            for (int s = 0; s < 24; s += 8) {
                double d = (double)((ours[b * 16 + i] >> s) & 0xFF) - (double)((adw[i] >> s) & 0xFF);
                fSum += d * d;
            }
    }
    return fSum;
}

int main()
{
    Bench_Start();
    Picture aPictures[] = {{"rose", 70, 46, {}}, {"logo", 640, 480, {}}, {"wizard", 480, 640, {}}};
    std::vector<DWORD> ours;
    std::vector<BYTE> stb;
    for (Picture& pic : aPictures) {
        if (!LoadPicture(pic)) {
            fprintf(stderr, "dxt_bench: convert did not make %s\n", pic.szName);
            return 1;
        }
        Blocks(pic, ours, stb);
    }
    size_t nBlocks = ours.size() / 16;
    std::vector<BYTE> ourBlocks(nBlocks * 8), stbBlocks(nBlocks * 8);

    for (size_t b = 0; b < nBlocks; b++)
        stb_compress_dxt_block(&stbBlocks[b * 8], &stb[b * 64], 0, STB_DXT_HIGHQUAL);
    double fBestOurs = 1e9, fBestStb = 1e9;
    std::vector<BYTE> fast(nBlocks * 8);
    for (int nRound = 0; nRound < 8; nRound++) {
        double t = Bench_Seconds();
        for (size_t b = 0; b < nBlocks; b++)
            DXT_EncodeBlock(ZYN_FOURCC_DXT1, &ours[b * 16], &ourBlocks[b * 8]);
        fBestOurs = std::min(fBestOurs, Bench_Seconds() - t);
        t = Bench_Seconds();
        for (size_t b = 0; b < nBlocks; b++)
            stb_compress_dxt_block(&fast[b * 8], &stb[b * 64], 0, STB_DXT_NORMAL);
        fBestStb = std::min(fBestStb, Bench_Seconds() - t);
    }
    double fSamples = (double)nBlocks * 16 * 3;
    double fOurPsnr = 10 * log10(255.0 * 255.0 * fSamples / SquaredError(ours, ourBlocks));
    double fStbPsnr = 10 * log10(255.0 * 255.0 * fSamples / SquaredError(ours, stbBlocks));
    printf("  %zu blocks; PSNR ours %.2f dB, stb high quality %.2f dB\n", nBlocks, fOurPsnr, fStbPsnr);
    printf("  ours %.0f blocks/s, stb default %.0f blocks/s\n", nBlocks / fBestOurs, nBlocks / fBestStb);
    Bench_Report("dxt1_psnr_minus_stb", fOurPsnr - fStbPsnr);
    Bench_Report("dxt1_speed_vs_stb", fBestStb / fBestOurs);
    return 0;
}
