// Image files: Targa, Windows Bitmap, JPEG and DDS pictures turned into one
// pixel form, 32 bits a pixel, bytes blue, green, red, alpha, rows tight, the
// bottom row first in memory while the picture sits in an image object.
//
// Step by step: open a file with zynCreateFile (zynfileio.h), then
// zynImage_ReadSurface(hFile, &desc) chooses the reader by the first 20 bytes
// and fills desc with the picture, top row first, in desc.lpSurface. Or build
// one of the image classes, call Load(name, NULL) or Load(NULL, handle), and
// hand the pixels on with zynImage_ToSurfaceDesc.
//
// Results: 0 or 0x80004005 (E_FAIL). A failed Load leaves its reason in the
// object's error text (GetErrorText) in the words of each reader; the kernel
// shows none of them. zynImage_ReadSurface closes the handle on every failure
// and leaves it open on success.
//
// Ownership: desc.lpSurface belongs to the caller, released with delete[].
// Limits: pictures above ZYNIMAGE_MAX_PIXELS pixels are refused, so that a
// lying header cannot make a reader allocate gigabytes.
#ifndef ZYNIMAGE_H
#define ZYNIMAGE_H

#include <windows.h>
#include <ddraw.h>

#include "zynapi.h"

#define ZYNIMAGE_MAX_PIXELS (64u * 1024u * 1024u)

// the base of all image classes; the virtual slots keep this order
struct zynImageSurfaceReader;

class ZYN_API zynImage {
public:
    zynImage();
    virtual ~zynImage();
    virtual DWORD GetWidth();
    virtual DWORD GetHeight();
    virtual HRESULT Load(const char* pszFile, HANDLE hFile) = 0;
    virtual HRESULT Free();
    virtual HRESULT Flip();
    virtual BOOL HasAlpha();

    const char* GetErrorText() const { return m_szError; }
    const char* GetFormatName() const { return m_szFormat; }
    const BYTE* GetPixels() const { return m_pPixels; }

protected:
    friend ZYN_API HRESULT zynImage_ToSurfaceDesc(zynImage* pImage, DDSURFACEDESC2* pDesc);
    friend struct zynImageSurfaceReader;
    // Fills pDesc from the image and moves the pixel block to it. The rows are
    // flipped first (virtual Flip) unless bTopFirst says they are top first already.
    void HandOver(DDSURFACEDESC2* pDesc, BOOL bTopFirst);
    HRESULT FreePixels();
    void SetError(const char* szText);
    void SetFormat(const char* szText);
    // Opens pszFile (through zynFileIO, or the file system for bFileSystem), or
    // takes hFile when no name is given; INVALID_HANDLE_VALUE on failure, with
    // "Don't find file." or "Invalid Handle Value." when bNamedErrors.
    HANDLE OpenSource(const char* pszFile, HANDLE hFile, BOOL bNamedErrors, BOOL bFileSystem);
    void CloseSource(const char* pszFile, HANDLE hFile);
    // Fails with "Error Loading File.", closing a file opened by name.
    HRESULT LoadError(const char* pszFile, HANDLE hFile);

    BYTE* m_pPixels;
    char m_szError[127];
    char m_szFormat[128];
};

#pragma pack(push, 1)
struct ZYNIMAGE_TGAHEADER {
    signed char idLength;
    BYTE colorMapType;
    BYTE imageType;
    BYTE colorMapSpec[5];
    WORD xOrigin;
    WORD yOrigin;
    WORD width;
    WORD height;
    BYTE bitsPerPixel;
    BYTE descriptor;
};
#pragma pack(pop)

class ZYN_API zynImageTarga : public zynImage {
public:
    zynImageTarga();
    DWORD GetWidth() override;
    DWORD GetHeight() override;
    HRESULT Load(const char* pszFile, HANDLE hFile) override;
    HRESULT Flip() override;
    BOOL HasAlpha() override;
    BYTE GetDescriptor() const { return m_Header.descriptor; }

private:
    friend struct zynImageSurfaceReader;    // zynImage_ReadSurface's access
    // Load, leaving the rows top first when bTopFirst (as a surface has them;
    // the descriptor then has bit 5 set), else bottom first as Load does.
    HRESULT LoadRows(const char* pszFile, HANDLE hFile, BOOL bTopFirst);
    HRESULT ReadDecode(HANDLE hFile, DWORD nData);
    HRESULT ReadPlain24(HANDLE hFile, DWORD nData, BOOL bReverse);
    HRESULT Decode(const BYTE* pData, DWORD nData);
    ZYNIMAGE_TGAHEADER m_Header;
};

class ZYN_API zynImageBitmap : public zynImage {
public:
    zynImageBitmap();
    ~zynImageBitmap() override;
    DWORD GetWidth() override;
    DWORD GetHeight() override;
    HRESULT Load(const char* pszFile, HANDLE hFile) override;
    HRESULT Free() override;

private:
    HRESULT LoadRaw(const char* pszFile, HANDLE hFile);
    void ReleaseRaw();
    DWORD m_nWidth;
    DWORD m_nHeight;
    BYTE* m_pInfo;
    BYTE* m_pData;
    DWORD m_nData;
};

class ZYN_API zynImageJpeg : public zynImage {
public:
    zynImageJpeg();
    DWORD GetWidth() override;
    DWORD GetHeight() override;
    HRESULT Load(const char* pszFile, HANDLE hFile) override;

private:
    friend struct zynImageSurfaceReader;    // zynImage_ReadSurface's access
    // Load, leaving the rows top first when bTopFirst (the decoder's own block,
    // taken over as it comes), else bottom first as Load does.
    HRESULT LoadRows(const char* pszFile, HANDLE hFile, BOOL bTopFirst);
    DWORD m_nWidth;
    DWORD m_nHeight;
};

class ZYN_API zynImageDDSurface : public zynImage {
public:
    zynImageDDSurface();
    DWORD GetWidth() override;
    DWORD GetHeight() override;
    HRESULT Load(const char* pszFile, HANDLE hFile) override;
    BOOL HasAlpha() override;
    // DirectDraw for decompressing DXT files; not owned, null makes Load create its own.
    void SetDirectDraw(IDirectDraw7* pDirectDraw) { m_pDirectDraw = pDirectDraw; }

private:
    HRESULT LoadPlain(const char* pszFile, HANDLE hFile, const DDSURFACEDESC2& desc);
    HRESULT LoadCompressed(const char* pszFile, HANDLE hFile, DDSURFACEDESC2& desc);
    DWORD m_nWidth;
    DWORD m_nHeight;
    BOOL m_bHasAlpha;
    IDirectDraw7* m_pDirectDraw;
};

// Shows an image in a window as 24-bit rows padded to 4 bytes; the kernel never makes one.
class ZYN_API zynImageView {
public:
    zynImageView();
    ~zynImageView();
    void SetWindow(HWND hWnd) { m_hWnd = hWnd; }
    HRESULT Create(DWORD nWidth, DWORD nHeight, BOOL bFill, int nFillByte);
    void Free();
    // nMode 0 copies the colours, 2 lays alpha pictures over a checkerboard, others show alpha as grey.
    HRESULT FromImage(zynImage* pImage, int nMode);
    void Paint();
    const BYTE* GetBits() const { return m_pBits; }
    const BITMAPINFOHEADER* GetInfo() const { return m_pInfo; }

private:
    BYTE* m_pBits;
    HWND m_hWnd;
    BITMAPINFOHEADER* m_pInfo;
};

// image files
// Reads a whole picture from an open handle by its first bytes (DDS, "BM", JFIF,
// Targa). DDS files keep their own format and top level as stored; the others come
// as 32-bit top-down pixels. 0 or 0x80004005; the handle is closed on failure.
ZYN_API HRESULT zynImage_ReadSurface(void* hFile, DDSURFACEDESC2* pDesc);
// Fills a description from a loaded image (flipping it top row first) and moves the pixel block to it. 0.
ZYN_API HRESULT zynImage_ToSurfaceDesc(zynImage* pImage, DDSURFACEDESC2* pDesc);

#endif
