// A Direct3D 7 device for the support layer's tests, made directly with
// DirectDraw: an off-screen 3D surface and a HAL device on it (the software
// RGB device on request), the conversion tables started around each test, and
// helpers to make plain system-memory surfaces of any format and read them back.
#ifndef ZYNTEXDEVICE_H
#define ZYNTEXDEVICE_H

#include "zyntest.h"
#include "zynsupport.h"

#include <vector>

class TextureDeviceTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    // Makes the device again as the software rasteriser.
    void UseSoftwareDevice();

    // A system-memory off-screen surface of the format; null if DirectDraw refuses it.
    IDirectDrawSurface7* MakeSurface(D3DX_SURFACEFORMAT format, int nWidth, int nHeight);
    // Formats the device offers for textures that have a code.
    std::vector<D3DX_SURFACEFORMAT> TextureFormats();
    // Every pixel of an A8R8G8B8 surface, rows top first.
    std::vector<DWORD> ReadAll(IDirectDrawSurface7* pSurface);

    IDirectDraw7* m_pDD = NULL;
    IDirect3D7* m_pD3D = NULL;
    IDirectDrawSurface7* m_pTarget = NULL;
    IDirect3DDevice7* m_pDevice = NULL;

private:
    bool MakeDevice(const GUID& guid, DWORD dwMemory);
    void ReleaseDevice();
};

// Runs ImageMagick's convert with the arguments; true when the output file appeared.
bool RunConvert(const char* szArguments, const std::string& szOutput);
// The test data folder (ZYN_TESTDATA, else "testdata"), made if missing, with a trailing slash.
std::string TestDataFolder();

#endif
