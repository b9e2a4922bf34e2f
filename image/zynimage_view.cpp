// zynImageView: an image as 24-bit bottom-up rows, painted into a window.
#include "zynimage.h"

#include <string.h>

#include <new>

static const DWORD VIEW_INFO_BLOCK = 44;
static const double VIEW_ALPHA_SCALE = 0.003921569;    // 1 / 255

static DWORD PaddedRow(DWORD nWidth) { return (nWidth * 3 + 3) & ~3u; }

zynImageView::zynImageView() : m_pBits(NULL), m_hWnd(NULL), m_pInfo(NULL) {}

zynImageView::~zynImageView()
{
    Free();
}

void zynImageView::Free()
{
    delete[] m_pBits;
    delete[] (BYTE*)m_pInfo;
    m_pBits = NULL;
    m_pInfo = NULL;
}

HRESULT zynImageView::Create(DWORD nWidth, DWORD nHeight, BOOL bFill, int nFillByte)
{
    Free();
    if ((unsigned long long)nWidth * nHeight > ZYNIMAGE_MAX_PIXELS)
        return E_FAIL;
    m_pInfo = (BITMAPINFOHEADER*)new BYTE[VIEW_INFO_BLOCK]();
    m_pInfo->biSize = sizeof(BITMAPINFOHEADER);
    m_pInfo->biWidth = (LONG)nWidth;
    m_pInfo->biHeight = (LONG)nHeight;
    m_pInfo->biPlanes = 1;
    m_pInfo->biBitCount = 24;
    m_pInfo->biCompression = BI_RGB;
    size_t nBytes = (size_t)PaddedRow(nWidth) * nHeight;
    m_pBits = new (std::nothrow) BYTE[nBytes + 1];
    if (m_pBits == NULL)
        return E_FAIL;
    if (bFill)
        memset(m_pBits, nFillByte, nBytes);
    return S_OK;
}

HRESULT zynImageView::FromImage(zynImage* pImage, int nMode)
{
    const BYTE* pPixels = pImage ? pImage->GetPixels() : NULL;
    if (pPixels == NULL)
        return E_FAIL;
    DWORD nWidth = pImage->GetWidth(), nHeight = pImage->GetHeight();
    if (FAILED(Create(nWidth, nHeight, FALSE, 0)))
        return E_FAIL;
    BOOL bAlpha = nMode != 0 && pImage->HasAlpha();
    for (DWORD y = 0; y < nHeight; y++) {
        const BYTE* s = pPixels + (size_t)y * nWidth * 4;
        BYTE* d = m_pBits + (size_t)y * PaddedRow(nWidth);
        for (DWORD x = 0; x < nWidth; x++, s += 4, d += 3) {
            if (!bAlpha) {
                d[0] = s[0], d[1] = s[1], d[2] = s[2];
            } else if (nMode == 2) {
                int c = ((x / 8 + y / 8) % 2 == 0) ? 255 : 0;
                for (int k = 0; k < 3; k++)
                    d[k] = (BYTE)(int)(c + (s[k] - c) * s[3] * VIEW_ALPHA_SCALE);
            } else {
                d[0] = d[1] = d[2] = s[3];
            }
        }
    }
    return S_OK;
}

void zynImageView::Paint()
{
    if (m_hWnd == NULL || !IsWindow(m_hWnd) || m_pBits == NULL || m_pInfo == NULL)
        return;
    PAINTSTRUCT ps;
    HDC hdc = BeginPaint(m_hWnd, &ps);
    SetDIBitsToDevice(hdc, 0, 0, (DWORD)m_pInfo->biWidth, (DWORD)m_pInfo->biHeight, 0, 0, 0,
                      (UINT)m_pInfo->biHeight, m_pBits, (BITMAPINFO*)m_pInfo, DIB_RGB_COLORS);
    EndPaint(m_hWnd, &ps);
}
