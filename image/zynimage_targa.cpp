// Targa reader: true-colour pictures of 24 and 32 bits, plain (type 2) or
// run-length (type 10). Every decode is bounded by the raw data and the pixel
// block; data that ends before the picture is full fails the load.
#include "zynimage_local.h"
#include "zynfileio.h"

#include <string.h>

#include <new>

static const BYTE TGA_TOP_FIRST = 0x20;
static const DWORD TGA_CHUNK_BYTES = 256 * 1024;    // what the streamed read takes at a time

zynImageTarga::zynImageTarga()
{
    memset(&m_Header, 0, sizeof(m_Header));
    SetFormat("Targa");
}

DWORD zynImageTarga::GetWidth() { return m_Header.width; }
DWORD zynImageTarga::GetHeight() { return m_Header.height; }
BOOL zynImageTarga::HasAlpha() { return m_Header.bitsPerPixel == 32; }

HRESULT zynImageTarga::Flip()
{
    zynImage::Flip();
    m_Header.descriptor ^= TGA_TOP_FIRST;
    return S_OK;
}

// Run-length packets; TRUE when the picture was filled before the data ran out.
static BOOL DecodeRle(DWORD* pOut, DWORD nPixels, const BYTE* pIn, DWORD nData, DWORD nStep)
{
    const BYTE* pEnd = pIn + nData;
    DWORD dwFill = nStep == 3 ? 0xFF000000 : 0;
    DWORD n = 0;
    while (n < nPixels) {
        if (pIn >= pEnd)
            return FALSE;
        DWORD c = *pIn++;
        DWORD nCount = c < 128 ? c + 1 : c - 127;
        if (nCount > nPixels - n)
            nCount = nPixels - n;    // a packet past the end of the picture is cut there
        if (c < 128) {
            if ((DWORD)(pEnd - pIn) < nCount * nStep)
                return FALSE;
            for (DWORD k = 0; k < nCount; k++, pIn += nStep) {
                DWORD v = 0;
                memcpy(&v, pIn, nStep);
                pOut[n++] = v | dwFill;
            }
        } else {
            if ((DWORD)(pEnd - pIn) < nStep)
                return FALSE;
            DWORD v = 0;
            memcpy(&v, pIn, nStep);
            pIn += nStep;
            v |= dwFill;
            for (DWORD k = 0; k < nCount; k++)
                pOut[n++] = v;
        }
    }
    return TRUE;
}

HRESULT zynImageTarga::Decode(const BYTE* pData, DWORD nData)
{
    DWORD nPixels = (DWORD)m_Header.width * m_Header.height;
    DWORD* pOut = (DWORD*)m_pPixels;
    if (m_Header.imageType == 2) {
        SetFormat("Targa");
        if (m_Header.bitsPerPixel == 32)
            return nData / 4 >= nPixels ? S_OK : E_FAIL;
        if (m_Header.bitsPerPixel != 24 || nData / 3 < nPixels)
            return E_FAIL;
        zynImage_Expand24(pOut, pData, nPixels);
        return S_OK;
    }
    SetFormat("Targa RLE");
    DWORD nStep = m_Header.bitsPerPixel / 8;
    if (nStep != 3 && nStep != 4)
        return E_FAIL;
    return DecodeRle(pOut, nPixels, pData, nData, nStep) ? S_OK : E_FAIL;
}

// The pixel data read whole into a raw block and decoded from there; the
// block itself is the picture for plain 32-bit files.
HRESULT zynImageTarga::ReadDecode(HANDLE hFile, DWORD nData)
{
    BOOL bRawIsPixels = m_Header.imageType == 2 && m_Header.bitsPerPixel == 32;
    BYTE* pRaw = new (std::nothrow) BYTE[(size_t)nData + 4];
    if (pRaw && !bRawIsPixels)
        m_pPixels = zynImage_NewPixels(m_Header.width, m_Header.height, 4);
    if (pRaw == NULL || (!bRawIsPixels && m_pPixels == NULL) || !zynImage_ReadExact(hFile, pRaw, nData)) {
        delete[] pRaw;
        return E_FAIL;
    }
    if (bRawIsPixels)
        m_pPixels = pRaw;
    HRESULT hr = Decode(pRaw, nData);
    if (!bRawIsPixels)
        delete[] pRaw;
    return hr;
}

// Plain 24-bit pixels read a few rows at a time and expanded straight into
// their rows, in reverse order when bReverse: no block for the whole file, and
// each row is expanded while it is in the cache. Every one of the nData bytes is
// read, the footer too, so the handle ends where the whole-file read leaves it.
HRESULT zynImageTarga::ReadPlain24(HANDLE hFile, DWORD nData, BOOL bReverse)
{
    SetFormat("Targa");
    DWORD nWidth = m_Header.width, nHeight = m_Header.height;
    DWORD nRow = nWidth * 3;
    m_pPixels = zynImage_NewPixels(nWidth, nHeight, 4);
    BYTE* pChunk = new (std::nothrow) BYTE[TGA_CHUNK_BYTES];
    DWORD nRowsPerChunk = nRow ? TGA_CHUNK_BYTES / nRow : nHeight;    // a row is at most 196,605 bytes
    BOOL bOk = m_pPixels && pChunk;
    DWORD nLeft = nData;
    for (DWORD y = 0; bOk && y < nHeight && nRow; y += nRowsPerChunk) {
        DWORD nRows = nHeight - y < nRowsPerChunk ? nHeight - y : nRowsPerChunk;
        bOk = zynImage_ReadExact(hFile, pChunk, nRows * nRow);
        nLeft -= nRows * nRow;
        for (DWORD k = 0; bOk && k < nRows; k++) {
            DWORD nDest = bReverse ? nHeight - 1 - (y + k) : y + k;
            zynImage_Expand24((DWORD*)m_pPixels + (size_t)nDest * nWidth, pChunk + (size_t)k * nRow, nWidth);
        }
    }
    while (bOk && nLeft) {
        DWORD nPart = nLeft < TGA_CHUNK_BYTES ? nLeft : TGA_CHUNK_BYTES;
        bOk = zynImage_ReadExact(hFile, pChunk, nPart);
        nLeft -= nPart;
    }
    delete[] pChunk;
    return bOk ? S_OK : E_FAIL;
}

HRESULT zynImageTarga::Load(const char* pszFile, HANDLE hFile)
{
    return LoadRows(pszFile, hFile, FALSE);
}

HRESULT zynImageTarga::LoadRows(const char* pszFile, HANDLE hFile, BOOL bTopFirst)
{
    Free();
    if (pszFile == NULL && hFile == NULL)
        return E_FAIL;
    hFile = OpenSource(pszFile, hFile, TRUE, FALSE);
    if (hFile == INVALID_HANDLE_VALUE)
        return E_FAIL;
    if (!zynImage_ReadExact(hFile, &m_Header, sizeof(m_Header)))
        return LoadError(pszFile, hFile);
    BYTE text[128];
    if (m_Header.idLength > 0 && !zynImage_ReadExact(hFile, text, (DWORD)m_Header.idLength))
        return LoadError(pszFile, hFile);

    // a negative id length makes nData larger than what is left, and the read fails
    long long nData = (long long)zynGetFileSize(hFile, NULL) - (long long)sizeof(m_Header) - m_Header.idLength;
    DWORD dwLeft = zynGetFileSize(hFile, NULL) - zynSetFilePointer(hFile, 0, NULL, FILE_CURRENT);
    if (nData < 0 || nData > dwLeft)
        return LoadError(pszFile, hFile);
    DWORD nPixels = (DWORD)m_Header.width * m_Header.height;
    // no data can fill more than this, so a lying size fails before any allocation
    DWORD nStep = m_Header.bitsPerPixel / 8;
    unsigned long long nCanFill = m_Header.imageType == 2 ? nData / (nStep ? nStep : 1)
                                                          : ((unsigned long long)nData / (1 + nStep) + 1) * 128;
    if (nPixels > ZYNIMAGE_MAX_PIXELS || nPixels > nCanFill)
        return LoadError(pszFile, hFile);
    BOOL bFileTopFirst = (m_Header.descriptor & TGA_TOP_FIRST) != 0;
    BOOL bStream = bTopFirst && m_Header.imageType == 2 && m_Header.bitsPerPixel == 24;
    HRESULT hr = bStream ? ReadPlain24(hFile, (DWORD)nData, !bFileTopFirst) : ReadDecode(hFile, (DWORD)nData);
    if (FAILED(hr))
        return LoadError(pszFile, hFile);
    if (bStream)
        m_Header.descriptor |= TGA_TOP_FIRST;    // the header keeps describing the block
    else if (bFileTopFirst != (bTopFirst != FALSE))
        Flip();
    CloseSource(pszFile, hFile);
    return S_OK;
}
