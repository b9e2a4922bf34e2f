// JPEG reader: the JPEG layer decodes, in two reads (parameters, then the
// whole picture) from a named disk file or from memory; memory is either the
// contents behind a zip handle or a block read here from a plain handle. The
// layer's 24-bit top-down rows become 32-bit bottom-up pixels with alpha 255;
// asked for top-down rows (zynImage_ReadSurface), the reader takes the layer's
// own 32-bit block as it comes.
#include "zynimage_local.h"
#include "zynfileio.h"
#include "zynijl/zynijl.h"

#include <string.h>

#include <new>

zynImageJpeg::zynImageJpeg() : m_nWidth(0), m_nHeight(0)
{
    SetFormat("Jpeg");
}

DWORD zynImageJpeg::GetWidth() { return m_nWidth; }
DWORD zynImageJpeg::GetHeight() { return m_nHeight; }

// Where the compressed bytes come from, and what has to be given back.
struct JpegSource {
    BOOL bMemory;
    HANDLE hZipOpened;     // a zip member opened here by name
    BYTE* pOwnBlock;       // bytes read here from a plain handle
};

static void CleanUp(JpegSource& src)
{
    if (src.hZipOpened != INVALID_HANDLE_VALUE)
        zynCloseHandle(src.hZipOpened);
    delete[] src.pOwnBlock;
}

// The whole-image read and the layer's release: a 24-bit block of our own, or
// for bTopFirst the layer's 32-bit block, in *ppBlock. The record is released
// on every path.
static HRESULT ReadPicture(JPEG_CORE_PROPERTIES& jcp, BOOL bMemory, DWORD nWidth, DWORD nHeight, BOOL bTopFirst,
                           BYTE** ppBlock)
{
    *ppBlock = NULL;
    BYTE* pDib = bTopFirst ? NULL : zynImage_NewPixels(nWidth, nHeight, 3);
    if (bTopFirst ? !zynImage_SizeAllowed(nWidth, nHeight) : pDib == NULL) {
        ijlFree(&jcp);
        return E_FAIL;
    }
    jcp.JPGColor = jcp.JPGChannels == 3 ? IJL_YCBCR : jcp.JPGChannels == 1 ? IJL_G : IJL_OTHER;
    jcp.DIBBytes = pDib;
    jcp.DIBAllocate = bTopFirst;
    jcp.DIBWidth = nWidth;
    jcp.DIBHeight = (int)nHeight;
    jcp.DIBPadBytes = 0;
    jcp.DIBChannels = bTopFirst ? 4 : 3;
    jcp.DIBColor = jcp.JPGChannels == 3 || jcp.JPGChannels == 1 ? IJL_BGR : IJL_OTHER;
    if (ijlRead(&jcp, bMemory ? IJL_JBUFF_READWHOLEIMAGE : IJL_JFILE_READWHOLEIMAGE) != IJL_OK) {
        ijlFree(&jcp);
        delete[] jcp.DIBBytes;
        return E_FAIL;
    }
    if (ijlFree(&jcp) != IJL_OK) {
        delete[] jcp.DIBBytes;
        return E_FAIL;
    }
    *ppBlock = jcp.DIBBytes;
    return S_OK;
}

HRESULT zynImageJpeg::Load(const char* pszFile, HANDLE hFile)
{
    return LoadRows(pszFile, hFile, FALSE);
}

HRESULT zynImageJpeg::LoadRows(const char* pszFile, HANDLE hFile, BOOL bTopFirst)
{
    JpegSource src = {FALSE, INVALID_HANDLE_VALUE, NULL};
    if (pszFile) {
        if (GetFileAttributesA(pszFile) != INVALID_FILE_ATTRIBUTES)
            src.bMemory = FALSE;
        else if (zynGetFileAttributes(pszFile) != INVALID_FILE_ATTRIBUTES)
            src.bMemory = TRUE;
        else {
            SetError("Can't find file.");
            return E_FAIL;
        }
    } else if (hFile == NULL) {
        return E_FAIL;
    } else {
        src.bMemory = TRUE;
    }

    JPEG_CORE_PROPERTIES jcp;
    if (ijlInit(&jcp) != IJL_OK) {
        ijlFree(&jcp);
        return E_FAIL;
    }
    if (!src.bMemory) {
        jcp.JPGFile = pszFile;
    } else {
        const BYTE* pBytes = NULL;
        DWORD nSize = 0;
        HANDLE hSource = hFile;
        if (pszFile) {
            src.hZipOpened = zynCreateFile(pszFile, GENERIC_READ, 0, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
            hSource = src.hZipOpened;
        }
        if (hSource != INVALID_HANDLE_VALUE && zynFileIO_IsZip(hSource)) {
            pBytes = (const BYTE*)hSource;
            nSize = zynGetFileSize(hSource, NULL);
        } else if (hSource != INVALID_HANDLE_VALUE && pszFile == NULL) {
            DWORD nFile = GetFileSize(hSource, NULL);
            DWORD nPos = SetFilePointer(hSource, 0, NULL, FILE_CURRENT);
            nSize = nFile != INVALID_FILE_SIZE && nPos <= nFile ? nFile - nPos : 0;
            src.pOwnBlock = new (std::nothrow) BYTE[(size_t)nSize + 1];
            DWORD nRead = 0;
            if (src.pOwnBlock == NULL || !ReadFile(hSource, src.pOwnBlock, nSize, &nRead, NULL) || nRead != nSize) {
                SetError("Error Loading File.");
                ijlFree(&jcp);
                CleanUp(src);
                return E_FAIL;
            }
            pBytes = src.pOwnBlock;
        }
        if (pBytes == NULL) {
            // a name that vanished between the look-up and the open is never passed on as an address
            ijlFree(&jcp);
            CleanUp(src);
            return E_FAIL;
        }
        jcp.JPGBytes = pBytes;
        jcp.JPGSizeBytes = nSize;
    }

    if (ijlRead(&jcp, src.bMemory ? IJL_JBUFF_READPARAMS : IJL_JFILE_READPARAMS) != IJL_OK) {
        ijlFree(&jcp);
        CleanUp(src);
        return E_FAIL;
    }
    m_nWidth = jcp.JPGWidth;
    m_nHeight = jcp.JPGHeight;
    BYTE* pBlock = NULL;
    if (FAILED(ReadPicture(jcp, src.bMemory, m_nWidth, m_nHeight, bTopFirst, &pBlock))) {
        CleanUp(src);
        return E_FAIL;
    }
    delete[] m_pPixels;
    if (bTopFirst) {
        m_pPixels = pBlock;
    } else {
        m_pPixels = zynImage_NewPixels(m_nWidth, m_nHeight, 4);
        if (m_pPixels)
            zynImage_Expand24Rows((DWORD*)m_pPixels, pBlock, m_nWidth, m_nHeight, TRUE);
        delete[] pBlock;
    }
    CleanUp(src);
    return m_pPixels ? S_OK : E_FAIL;
}
