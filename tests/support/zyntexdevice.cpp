// The support tests' device fixture and helpers.
#include "zyntexdevice.h"

#include "zynformat.h"
#include "zynpixconv.h"

#include <stdlib.h>

bool TextureDeviceTest::MakeDevice(const GUID& guid, DWORD dwMemory)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    ddsd.dwWidth = 64;
    ddsd.dwHeight = 64;
    ddsd.ddsCaps.dwCaps = DDSCAPS_OFFSCREENPLAIN | DDSCAPS_3DDEVICE | dwMemory;
    if (FAILED(m_pDD->CreateSurface(&ddsd, &m_pTarget, NULL)))
        return false;
    if (SUCCEEDED(m_pD3D->CreateDevice(guid, m_pTarget, &m_pDevice)))
        return true;
    m_pTarget->Release();
    m_pTarget = NULL;
    return false;
}

void TextureDeviceTest::SetUp()
{
    ASSERT_HR(DirectDrawCreateEx(NULL, (void**)&m_pDD, IID_IDirectDraw7, NULL), S_OK);
    ASSERT_HR(m_pDD->SetCooperativeLevel(NULL, DDSCL_NORMAL), S_OK);
    ASSERT_HR(m_pDD->QueryInterface(IID_IDirect3D7, (void**)&m_pD3D), S_OK);
    if (!MakeDevice(IID_IDirect3DHALDevice, DDSCAPS_VIDEOMEMORY)) {
        ASSERT_TRUE(MakeDevice(IID_IDirect3DRGBDevice, DDSCAPS_SYSTEMMEMORY)) << "neither HAL nor RGB device";
    }
    ASSERT_HR(PixConv_StartTables(), S_OK);
}

void TextureDeviceTest::ReleaseDevice()
{
    if (m_pDevice) {
        ULONG nLeft = m_pDevice->Release();
        EXPECT_EQ(nLeft, 0u) << "device has " << nLeft << " references left";
        m_pDevice = NULL;
    }
    if (m_pTarget)
        m_pTarget->Release();
    m_pTarget = NULL;
}

void TextureDeviceTest::UseSoftwareDevice()
{
    ReleaseDevice();
    ASSERT_TRUE(MakeDevice(IID_IDirect3DRGBDevice, DDSCAPS_SYSTEMMEMORY)) << "no RGB device";
}

void TextureDeviceTest::TearDown()
{
    PixConv_StopTables();
    ReleaseDevice();
    if (m_pD3D)
        m_pD3D->Release();
    if (m_pDD) {
        ULONG nLeft = m_pDD->Release();
        EXPECT_EQ(nLeft, 0u) << "DirectDraw has " << nLeft << " references left";
    }
    m_pD3D = NULL;
    m_pDD = NULL;
}

IDirectDrawSurface7* TextureDeviceTest::MakeSurface(D3DX_SURFACEFORMAT format, int nWidth, int nHeight)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    ddsd.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    ddsd.dwWidth = nWidth;
    ddsd.dwHeight = nHeight;
    ddsd.ddsCaps.dwCaps = DDSCAPS_TEXTURE | DDSCAPS_SYSTEMMEMORY;
    if (FAILED(D3DXMakeDDPixelFormat(format, &ddsd.ddpfPixelFormat)))
        return NULL;
    IDirectDrawSurface7* pSurface = NULL;
    if (FAILED(m_pDD->CreateSurface(&ddsd, &pSurface, NULL)))
        return NULL;
    return pSurface;
}

static HRESULT CALLBACK CollectFormat(DDPIXELFORMAT* pddpf, void* pContext)
{
    D3DX_SURFACEFORMAT nCode = D3DXMakeSurfaceFormat(pddpf);
    if (nCode != D3DX_SF_UNKNOWN)
        ((std::vector<D3DX_SURFACEFORMAT>*)pContext)->push_back(nCode);
    return D3DENUMRET_OK;
}

std::vector<D3DX_SURFACEFORMAT> TextureDeviceTest::TextureFormats()
{
    std::vector<D3DX_SURFACEFORMAT> formats;
    m_pDevice->EnumTextureFormats(CollectFormat, &formats);
    return formats;
}

std::vector<DWORD> TextureDeviceTest::ReadAll(IDirectDrawSurface7* pSurface)
{
    std::vector<DWORD> pixels;
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    HRESULT hr = pSurface->Lock(NULL, &ddsd, DDLOCK_WAIT | DDLOCK_READONLY, NULL);
    if (FAILED(hr)) {
        ADD_FAILURE() << "cannot lock the surface to read it: " << HrText(hr);
        return pixels;
    }
    for (DWORD y = 0; y < ddsd.dwHeight; y++) {
        const DWORD* pRow = (const DWORD*)((const BYTE*)ddsd.lpSurface + y * ddsd.lPitch);
        pixels.insert(pixels.end(), pRow, pRow + ddsd.dwWidth);
    }
    pSurface->Unlock(NULL);
    return pixels;
}

std::string TestDataFolder()
{
    const char* szFolder = getenv("ZYN_TESTDATA");
    std::string szPath = szFolder && *szFolder ? szFolder : "testdata";
    CreateDirectoryA(szPath.c_str(), NULL);
    return szPath + "/";
}

bool RunConvert(const char* szArguments, const std::string& szOutput)
{
    if (GetFileAttributesA(szOutput.c_str()) != INVALID_FILE_ATTRIBUTES)
        return true;
    std::string szCommand = std::string("Z:\\usr\\bin\\convert ") + szArguments;
    STARTUPINFOA si = {};
    si.cb = sizeof(si);
    PROCESS_INFORMATION pi = {};
    std::vector<char> line(szCommand.begin(), szCommand.end());
    line.push_back(0);
    if (!CreateProcessA(NULL, line.data(), NULL, NULL, FALSE, 0, NULL, NULL, &si, &pi))
        return false;
    // A Unix program's handle may signal at once: wait for the file to stop growing.
    WaitForSingleObject(pi.hProcess, 30000);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    LONGLONG nLast = -1;
    for (DWORD dwStart = GetTickCount(); GetTickCount() - dwStart < 30000; Sleep(100)) {
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!GetFileAttributesExA(szOutput.c_str(), GetFileExInfoStandard, &data))
            continue;
        LONGLONG nSize = ((LONGLONG)data.nFileSizeHigh << 32) | data.nFileSizeLow;
        if (nSize > 0 && nSize == nLast)
            return true;
        nLast = nSize;
    }
    return false;
}
