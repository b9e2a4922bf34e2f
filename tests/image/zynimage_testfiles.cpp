#include "zynimage_testfiles.h"
#include "zynfileio.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <sstream>

std::string TestData(const std::string& szRelative)
{
    const char* szRoot = getenv("ZYN_TESTDATA");
    std::string szName = std::string(szRoot && *szRoot ? szRoot : "testdata") + "\\" + szRelative;
    for (char& c : szName) {
        if (c == '/')
            c = '\\';
    }
    return szName;
}

std::vector<BYTE> ReadWholeFile(const std::string& szName)
{
    std::vector<BYTE> data;
    FILE* f = fopen(szName.c_str(), "rb");
    if (f == NULL)
        return data;
    fseek(f, 0, SEEK_END);
    data.resize((size_t)ftell(f));
    fseek(f, 0, SEEK_SET);
    if (!data.empty() && fread(data.data(), 1, data.size(), f) != data.size())
        data.clear();
    fclose(f);
    return data;
}

void WriteWholeFile(const std::string& szName, const std::vector<BYTE>& data)
{
    HANDLE h = CreateFileA(szName.c_str(), GENERIC_WRITE, 0, NULL, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, NULL);
    DWORD nWritten = 0;
    if (h != INVALID_HANDLE_VALUE) {
        WriteFile(h, data.data(), (DWORD)data.size(), &nWritten, NULL);
        CloseHandle(h);
    }
}

std::vector<BYTE> MutateBytes(const std::vector<BYTE>& base, std::mt19937& rng, size_t nHeader)
{
    std::vector<BYTE> data = base;
    switch (rng() % 4) {
    case 0:
        data.resize(rng() % data.size());
        break;
    case 1:
        for (int k = 1 + rng() % 4; k > 0; k--)
            data[rng() % data.size()] ^= (BYTE)(1 + rng() % 255);
        break;
    default: {
        static const DWORD s_Extremes[] = {0, 1, 0xFF, 0x7F, 0x80, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
        size_t nAt = rng() % std::min(nHeader, data.size() - 4);
        DWORD v = s_Extremes[rng() % (sizeof(s_Extremes) / sizeof(s_Extremes[0]))];
        memcpy(&data[nAt], &v, 1 + rng() % 4);
        break;
    }
    }
    return data;
}

HRESULT ReadSurfaceFile(const std::string& szName, DDSURFACEDESC2* pDesc)
{
    memset(pDesc, 0, sizeof(*pDesc));
    void* h = zynCreateFile(szName.c_str(), GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    if (h == INVALID_HANDLE_VALUE)
        return E_HANDLE;
    HRESULT hr = zynImage_ReadSurface(h, pDesc);
    if (SUCCEEDED(hr))
        zynCloseHandle(h);
    return hr;
}

void FreeDesc(DDSURFACEDESC2* pDesc)
{
    delete[] (BYTE*)pDesc->lpSurface;
    pDesc->lpSurface = NULL;
}

::testing::AssertionResult MatchesReference(const BYTE* pPixels, DWORD nWidth, DWORD nHeight,
                                            const std::string& szReference, int nTolerance, bool bAlpha)
{
    std::vector<BYTE> want = ReadWholeFile(szReference);
    if (want.size() != (size_t)nWidth * nHeight * 4)
        return ::testing::AssertionFailure() << "reference " << szReference << " holds " << want.size()
                                             << " bytes, expected " << nWidth << " x " << nHeight << " x 4";
    if (pPixels == NULL)
        return ::testing::AssertionFailure() << "no pixels";
    for (DWORD y = 0; y < nHeight; y++) {
        for (DWORD x = 0; x < nWidth; x++) {
            const BYTE* g = pPixels + ((size_t)y * nWidth + x) * 4;
            const BYTE* w = want.data() + ((size_t)y * nWidth + x) * 4;
            DWORD dwGot = (DWORD)g[3] << 24 | (DWORD)g[2] << 16 | (DWORD)g[1] << 8 | g[0];
            DWORD dwWant = (DWORD)w[3] << 24 | (DWORD)w[0] << 16 | (DWORD)w[1] << 8 | w[2];
            ::testing::AssertionResult r = ColorNear(dwGot, dwWant, nTolerance, bAlpha);
            if (!r)
                return ::testing::AssertionFailure() << "pixel (" << x << ", " << y << "): " << r.message();
        }
    }
    return ::testing::AssertionSuccess();
}
