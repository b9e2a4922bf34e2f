// The image base class, the choice of reader by a file's first bytes, and the
// hand-over of a loaded picture to a surface description.
#include "zynimage_local.h"
#include "zynfileio.h"

#include <string.h>

#include <new>

static const DWORD DDS_MAGIC = 0x20534444;    // "DDS "
static const DWORD IMAGE_SNIFF_BYTES = 20;

BOOL zynImage_SizeAllowed(DWORD nWidth, DWORD nHeight)
{
    return (unsigned long long)nWidth * nHeight <= ZYNIMAGE_MAX_PIXELS;
}

BYTE* zynImage_NewPixels(DWORD nWidth, DWORD nHeight, DWORD nBytesPerPixel)
{
    if (!zynImage_SizeAllowed(nWidth, nHeight))
        return NULL;
    return new (std::nothrow) BYTE[(size_t)nWidth * nHeight * nBytesPerPixel + 1];
}

void zynImage_Expand24(DWORD* pOut, const BYTE* pIn, DWORD nPixels)
{
    DWORD i = 0;
    for (; i + 1 < nPixels; i++, pIn += 3) {
        DWORD v;
        memcpy(&v, pIn, 4);
        pOut[i] = v | 0xFF000000;
    }
    if (i < nPixels)
        pOut[i] = (DWORD)pIn[0] | (DWORD)pIn[1] << 8 | (DWORD)pIn[2] << 16 | 0xFF000000;
}

void zynImage_Expand24Rows(DWORD* pOut, const BYTE* pIn, DWORD nWidth, DWORD nHeight, BOOL bReverse)
{
    if (!bReverse) {
        zynImage_Expand24(pOut, pIn, nWidth * nHeight);
        return;
    }
    for (DWORD y = 0; y < nHeight; y++)
        zynImage_Expand24(pOut + (size_t)(nHeight - 1 - y) * nWidth, pIn + (size_t)y * nWidth * 3, nWidth);
}

BOOL zynImage_ReadExact(HANDLE hFile, void* pBuffer, DWORD nCount)
{
    DWORD nRead = 0;
    zynReadFile(hFile, pBuffer, nCount, &nRead, NULL);
    return nRead == nCount;
}

zynImage::zynImage() : m_pPixels(NULL)
{
    m_szError[0] = 0;
    SetFormat("undefined");
}

zynImage::~zynImage()
{
    FreePixels();
}

DWORD zynImage::GetWidth() { return 0; }
DWORD zynImage::GetHeight() { return 0; }
BOOL zynImage::HasAlpha() { return FALSE; }
HRESULT zynImage::Free() { return FreePixels(); }

HRESULT zynImage::FreePixels()
{
    delete[] m_pPixels;
    m_pPixels = NULL;
    return S_OK;
}

void zynImage::SetError(const char* szText)
{
    lstrcpynA(m_szError, szText, sizeof(m_szError));
}

void zynImage::SetFormat(const char* szText)
{
    lstrcpynA(m_szFormat, szText, sizeof(m_szFormat));
}

HRESULT zynImage::Flip()
{
    if (m_pPixels == NULL)
        return E_FAIL;
    DWORD nWidth = GetWidth(), nHeight = GetHeight();
    size_t nRow = (size_t)nWidth * 4;
    BYTE* pTemp = new (std::nothrow) BYTE[nRow + 1];
    if (pTemp == NULL)
        return E_FAIL;
    for (DWORD y = 0; y < nHeight / 2; y++) {
        BYTE* pTop = m_pPixels + y * nRow;
        BYTE* pBottom = m_pPixels + (nHeight - 1 - y) * nRow;
        memcpy(pTemp, pTop, nRow);
        memcpy(pTop, pBottom, nRow);
        memcpy(pBottom, pTemp, nRow);
    }
    delete[] pTemp;
    return S_OK;
}

HANDLE zynImage::OpenSource(const char* pszFile, HANDLE hFile, BOOL bNamedErrors, BOOL bFileSystem)
{
    if (pszFile == NULL)
        return hFile ? hFile : INVALID_HANDLE_VALUE;
    DWORD dwAttr = bFileSystem ? GetFileAttributesA(pszFile) : zynGetFileAttributes(pszFile);
    if (bNamedErrors && dwAttr == INVALID_FILE_ATTRIBUTES) {
        SetError("Don't find file.");
        return INVALID_HANDLE_VALUE;
    }
    HANDLE hOpened = bFileSystem
        ? CreateFileA(pszFile, GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL)
        : zynCreateFile(pszFile, GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    if (hOpened == INVALID_HANDLE_VALUE && bNamedErrors)
        SetError("Invalid Handle Value.");
    return hOpened;
}

void zynImage::CloseSource(const char* pszFile, HANDLE hFile)
{
    if (pszFile)
        zynCloseHandle(hFile);
}

HRESULT zynImage::LoadError(const char* pszFile, HANDLE hFile)
{
    SetError("Error Loading File.");
    CloseSource(pszFile, hFile);
    return E_FAIL;
}

HRESULT zynImage_ToSurfaceDesc(zynImage* pImage, DDSURFACEDESC2* pDesc)
{
    pImage->HandOver(pDesc, FALSE);
    return S_OK;
}

void zynImage::HandOver(DDSURFACEDESC2* pDesc, BOOL bTopFirst)
{
    memset(pDesc, 0, sizeof(*pDesc));
    pDesc->dwSize = sizeof(*pDesc);
    pDesc->dwFlags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH | DDSD_PITCH | DDSD_LPSURFACE | DDSD_PIXELFORMAT;
    pDesc->dwMipMapCount = 0;
    pDesc->ddsCaps.dwCaps = DDSCAPS_TEXTURE;
    pDesc->ddsCaps.dwCaps2 = DDSCAPS2_TEXTUREMANAGE;
    pDesc->dwWidth = GetWidth();
    pDesc->lPitch = (LONG)(GetWidth() * 4);
    pDesc->dwHeight = GetHeight();
    DDPIXELFORMAT& pf = pDesc->ddpfPixelFormat;
    pf.dwSize = sizeof(DDPIXELFORMAT);
    pf.dwFlags = DDPF_RGB;
    pf.dwRGBBitCount = 32;
    pf.dwRBitMask = 0xFF0000;
    pf.dwGBitMask = 0xFF00;
    pf.dwBBitMask = 0xFF;
    pf.dwRGBAlphaBitMask = 0;
    if (HasAlpha()) {
        pf.dwFlags |= DDPF_ALPHAPIXELS;
        pf.dwRGBAlphaBitMask = 0xFF000000;
    }
    if (!bTopFirst)
        Flip();
    pDesc->lpSurface = m_pPixels;
    m_pPixels = NULL;
}

enum ImageReader { READER_NONE, READER_DDS, READER_BITMAP, READER_JPEG, READER_TARGA };

// Which reader the first bytes ask for.
static ImageReader ChooseReader(const BYTE* b)
{
    DWORD dwMagic = (DWORD)b[0] | (DWORD)b[1] << 8 | (DWORD)b[2] << 16 | (DWORD)b[3] << 24;
    if (dwMagic == DDS_MAGIC)
        return READER_DDS;
    if (b[0] == 'B' && b[1] == 'M')
        return READER_BITMAP;
    if (b[0] == 0xFF && b[1] == 0xD8 && b[2] == 0xFF && b[3] == 0xE0)
        return READER_JPEG;
    if ((b[2] == 2 || b[2] == 10) && (b[16] == 24 || b[16] == 32) && (b[17] == 0 || b[17] == 8 || b[17] == 32))
        return READER_TARGA;
    return READER_NONE;
}

static HRESULT FailAndClose(void* hFile)
{
    zynCloseHandle(hFile);
    return E_FAIL;
}

// What zynImage_ReadSurface does beyond the public calls: the Targa and JPEG
// readers are asked for their rows top first, which is what Load followed by
// zynImage_ToSurfaceDesc gives too, without turning them round twice. The
// image object dies here, so nothing else can tell the two ways apart.
struct zynImageSurfaceReader {
    template <class READER>
    static HRESULT ReadTopFirst(HANDLE hFile, DDSURFACEDESC2* pDesc)
    {
        READER image;
        HRESULT hr = image.LoadRows(NULL, hFile, TRUE);
        if (SUCCEEDED(hr))
            image.HandOver(pDesc, TRUE);
        return hr;
    }
};

static HRESULT ReadBitmap(HANDLE hFile, DDSURFACEDESC2* pDesc)
{
    zynImageBitmap image;
    HRESULT hr = image.Load(NULL, hFile);
    if (SUCCEEDED(hr))
        zynImage_ToSurfaceDesc(&image, pDesc);
    return hr;
}

HRESULT zynImage_ReadSurface(void* hFile, DDSURFACEDESC2* pDesc)
{
    if (pDesc == NULL)
        return FailAndClose(hFile);
    BYTE head[IMAGE_SNIFF_BYTES];
    zynSetFilePointer(hFile, 0, NULL, FILE_BEGIN);
    BOOL bEnough = zynImage_ReadExact(hFile, head, sizeof(head));
    zynSetFilePointer(hFile, 0, NULL, FILE_BEGIN);
    if (!bEnough)
        return FailAndClose(hFile);
    HRESULT hr = E_FAIL;
    switch (ChooseReader(head)) {
    case READER_DDS:
        return zynImage_ReadDDSurface(hFile, pDesc);
    case READER_BITMAP:
        hr = ReadBitmap(hFile, pDesc);
        break;
    case READER_JPEG:
        hr = zynImageSurfaceReader::ReadTopFirst<zynImageJpeg>(hFile, pDesc);
        break;
    case READER_TARGA:
        hr = zynImageSurfaceReader::ReadTopFirst<zynImageTarga>(hFile, pDesc);
        break;
    case READER_NONE:
        break;
    }
    return SUCCEEDED(hr) ? S_OK : FailAndClose(hFile);
}
