// Surface format codes and DirectDraw pixel formats: the table that ties the
// two together, shared by the device list and the texture layer.
//
// Step by step: D3DXMakeSurfaceFormat to name a DDPIXELFORMAT a device
// offered; D3DXMakeDDPixelFormat to describe a surface of a given code;
// D3DXGetFormatBytes for the bytes a pixel.
//
// Results: D3DXMakeDDPixelFormat returns S_OK, D3DXERR_NULLPOINTER or
// D3DXERR_INVALIDPARAMETER (a code of 0 or one that stands in no row);
// D3DXMakeSurfaceFormat returns D3DX_SF_UNKNOWN for a null pointer or a format
// that matches no row byte for byte.
#ifndef ZYNFORMAT_H
#define ZYNFORMAT_H

#include "zynsupport.h"

HRESULT WINAPI D3DXMakeDDPixelFormat(D3DX_SURFACEFORMAT format, DDPIXELFORMAT* pddpf);
D3DX_SURFACEFORMAT WINAPI D3DXMakeSurfaceFormat(const DDPIXELFORMAT* pddpf);
// Bytes a pixel of a code (0 for block, packed YUV and palette-4 formats, and unknown codes).
DWORD D3DXGetFormatBytes(D3DX_SURFACEFORMAT format);

#endif
