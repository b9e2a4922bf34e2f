// Helpers of the image tests: names under ZYN_TESTDATA, whole files, pictures
// read through zynFileIO and zynImage_ReadSurface, and comparison with
// ImageMagick's decode of the same file (NAME.rgba, RGBA rows top first).
#ifndef ZYNIMAGE_TESTFILES_H
#define ZYNIMAGE_TESTFILES_H

#include "zyntest.h"
#include "zynimage.h"

#include <random>
#include <string>
#include <vector>

// ZYN_TESTDATA (or "testdata") joined with a relative name, Windows separators.
std::string TestData(const std::string& szRelative);
std::vector<BYTE> ReadWholeFile(const std::string& szName);
void WriteWholeFile(const std::string& szName, const std::vector<BYTE>& data);

// One damaged copy of a file: a cut, a run of random bytes, or an extreme
// field written somewhere in the first nHeader bytes.
std::vector<BYTE> MutateBytes(const std::vector<BYTE>& base, std::mt19937& rng, size_t nHeader);

// Opens szName with zynCreateFile and reads it with zynImage_ReadSurface; the
// handle is closed either way. lpSurface belongs to the caller (FreeDesc).
HRESULT ReadSurfaceFile(const std::string& szName, DDSURFACEDESC2* pDesc);
void FreeDesc(DDSURFACEDESC2* pDesc);

// Compares 32-bit top-first pixels (blue, green, red, alpha) with ImageMagick's
// RGBA decode; nTolerance per channel, alpha only when bAlpha.
::testing::AssertionResult MatchesReference(const BYTE* pPixels, DWORD nWidth, DWORD nHeight,
                                            const std::string& szReference, int nTolerance, bool bAlpha);

#endif
