// What the image readers share beyond the exported header: bounded pixel
// allocation, exact reads through zynFileIO, and the DDS branch of the format
// choice.
#ifndef ZYNIMAGE_LOCAL_H
#define ZYNIMAGE_LOCAL_H

#include "zynimage.h"

// Whether a picture of nWidth x nHeight pixels is within ZYNIMAGE_MAX_PIXELS.
BOOL zynImage_SizeAllowed(DWORD nWidth, DWORD nHeight);

// A block of nWidth x nHeight x nBytesPerPixel bytes from new[], or null when
// the picture is above ZYNIMAGE_MAX_PIXELS or memory runs out. Not cleared.
BYTE* zynImage_NewPixels(DWORD nWidth, DWORD nHeight, DWORD nBytesPerPixel);

// nPixels of 3 bytes (blue, green, red) to 32-bit words with alpha 255; never
// reads a byte past the last pixel's three.
void zynImage_Expand24(DWORD* pOut, const BYTE* pIn, DWORD nPixels);
// The same for nHeight tight rows of nWidth pixels, the row order turned
// round when bReverse: one pass instead of an expansion and a flip.
void zynImage_Expand24Rows(DWORD* pOut, const BYTE* pIn, DWORD nWidth, DWORD nHeight, BOOL bReverse);

// TRUE when exactly nCount bytes came.
BOOL zynImage_ReadExact(HANDLE hFile, void* pBuffer, DWORD nCount);

// Reads a DDS file's record and top level into pDesc, the handle at the start
// of the file. 0, or 0x80004005 with the handle closed.
HRESULT zynImage_ReadDDSurface(HANDLE hFile, DDSURFACEDESC2* pDesc);

#endif
