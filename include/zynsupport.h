// The graphics support layer: the library beneath the engine that owns the
// device list, the graphics context, surface formats, pixel conversion and
// texture loading. This header holds what all of it shares: the result codes,
// the surface format codes, the level of a device, and the start and stop of
// the library.
//
// Step by step: D3DXInitialize once, then D3DXCreateContextEx (zyncontext.h)
// for a context; texture functions (zyntexture.h) once the library is started;
// D3DXUninitialize last. D3DXGetErrorString turns any result into its name.
//
// Results: 0 (S_OK) or a negative code: a DirectDraw or Direct3D code passed on
// unchanged, or one of the D3DXERR_ codes below. Inside, failures travel as
// CD3DXException and every public entry catches it and returns its code, so
// nothing is ever thrown across the library's boundary.
//
// The layer is linked into zynKernel.dll as a static library and not exported;
// hosts reach it through the kernel's exported g_pD3DX context.
#ifndef ZYNSUPPORT_H
#define ZYNSUPPORT_H

#include <windows.h>
#include <ddraw.h>
#include <d3d.h>

#include "zynmath.h"

#define D3DX_DEFAULT 0xFFFFFFFFu

// result codes: 0xC8770BB8 plus the index in this list
#define D3DXERR_CODE(n) ((HRESULT)(0xC8770BB8u + (n)))
#define D3DXERR_NOMEMORY                  D3DXERR_CODE(0)
#define D3DXERR_NULLPOINTER               D3DXERR_CODE(1)
#define D3DXERR_INVALIDD3DXDEVICEINDEX    D3DXERR_CODE(2)
#define D3DXERR_NODIRECTDRAWAVAILABLE     D3DXERR_CODE(3)
#define D3DXERR_NODIRECT3DAVAILABLE       D3DXERR_CODE(4)
#define D3DXERR_NODIRECT3DDEVICEAVAILABLE D3DXERR_CODE(5)
#define D3DXERR_NOPRIMARYAVAILABLE        D3DXERR_CODE(6)
#define D3DXERR_NOZBUFFERAVAILABLE        D3DXERR_CODE(7)
#define D3DXERR_NOBACKBUFFERAVAILABLE     D3DXERR_CODE(8)
#define D3DXERR_COULDNTUPDATECAPS         D3DXERR_CODE(9)
#define D3DXERR_NOZBUFFER                 D3DXERR_CODE(10)
#define D3DXERR_INVALIDMODE               D3DXERR_CODE(11)
#define D3DXERR_INVALIDPARAMETER          D3DXERR_CODE(12)
#define D3DXERR_INITFAILED                D3DXERR_CODE(13)
#define D3DXERR_STARTUPFAILED             D3DXERR_CODE(14)
#define D3DXERR_D3DXNOTSTARTEDYET         D3DXERR_CODE(15)
#define D3DXERR_NOTINITIALIZED            D3DXERR_CODE(16)
#define D3DXERR_FAILEDDRAWTEXT            D3DXERR_CODE(17)
#define D3DXERR_BADD3DXCONTEXT            D3DXERR_CODE(18)
#define D3DXERR_CAPSNOTSUPPORTED          D3DXERR_CODE(19)
#define D3DXERR_UNSUPPORTEDFILEFORMAT     D3DXERR_CODE(20)
#define D3DXERR_IFLERROR                  D3DXERR_CODE(21)
#define D3DXERR_FAILEDGETCAPS             D3DXERR_CODE(22)
#define D3DXERR_CANNOTRESIZEFULLSCREEN    D3DXERR_CODE(23)
#define D3DXERR_CANNOTRESIZENONWINDOWED   D3DXERR_CODE(24)
#define D3DXERR_FRONTBUFFERALREADYEXISTS  D3DXERR_CODE(25)
#define D3DXERR_FULLSCREENPRIMARYEXISTS   D3DXERR_CODE(26)
#define D3DXERR_GETDCFAILED               D3DXERR_CODE(27)
#define D3DXERR_BITBLTFAILED              D3DXERR_CODE(28)
#define D3DXERR_NOTEXTURE                 D3DXERR_CODE(29)
#define D3DXERR_MIPLEVELABSENT            D3DXERR_CODE(30)
#define D3DXERR_SURFACENOTPALETTED        D3DXERR_CODE(31)
#define D3DXERR_ENUMFORMATSFAILED         D3DXERR_CODE(32)
#define D3DXERR_COLORDEPTHTOOLOW          D3DXERR_CODE(33)
#define D3DXERR_INVALIDFILEFORMAT         D3DXERR_CODE(34)
#define D3DXERR_NOMATCHFOUND              D3DXERR_CODE(35)

// levels of hardware acceleration, usable in place of a device index
#define D3DX_HWLEVEL_NULL      ((DWORD)-2)
#define D3DX_HWLEVEL_REFERENCE ((DWORD)-3)
#define D3DX_HWLEVEL_2D        ((DWORD)-4)
#define D3DX_HWLEVEL_RASTER    ((DWORD)-5)
#define D3DX_HWLEVEL_TL        ((DWORD)-6)

// surface formats
typedef enum _D3DX_SURFACEFORMAT {
    D3DX_SF_UNKNOWN = 0,
    D3DX_SF_R8G8B8 = 1,
    D3DX_SF_A8R8G8B8 = 2,
    D3DX_SF_X8R8G8B8 = 3,
    D3DX_SF_R5G6B5 = 4,
    D3DX_SF_R5G5B5 = 5,
    D3DX_SF_PALETTE4 = 6,
    D3DX_SF_PALETTE8 = 7,
    D3DX_SF_A1R5G5B5 = 8,
    D3DX_SF_X4R4G4B4 = 9,
    D3DX_SF_A4R4G4B4 = 10,
    D3DX_SF_L8 = 11,
    D3DX_SF_A8L8 = 12,
    D3DX_SF_U8V8 = 13,
    D3DX_SF_U5V5L6 = 14,
    D3DX_SF_U8V8L8 = 15,
    D3DX_SF_UYVY = 16,
    D3DX_SF_YUY2 = 17,
    D3DX_SF_DXT1 = 18,
    D3DX_SF_DXT3 = 19,
    D3DX_SF_DXT5 = 20,
    D3DX_SF_R3G3B2 = 21,
    D3DX_SF_A8 = 22,
    D3DX_SF_TEXTUREMAX = 23,
    // depth buffer formats share the table (device list)
    D3DX_SF_Z16S0 = 0x100,
    D3DX_SF_Z32S0 = 0x101,
    D3DX_SF_Z15S1 = 0x102,
    D3DX_SF_Z24S8 = 0x103,
    D3DX_SF_Z16S1 = 0x104,
    D3DX_SF_Z24S4 = 0x105,
    D3DX_SF_FORCEDWORD = 0x7FFFFFFF
} D3DX_SURFACEFORMAT;

// library
// Starts the library; a second call does nothing and succeeds.
HRESULT WINAPI D3DXInitialize();
// Stops the library and deletes its lists. D3DXERR_D3DXNOTSTARTEDYET when not started.
HRESULT WINAPI D3DXUninitialize();
// Writes the name of hr ("DDERR_SURFACELOST", "Unrecognized error: 0x...") into
// pBuffer, at most nLength characters, always terminated. Does nothing for a
// zero length or a null buffer.
void WINAPI D3DXGetErrorString(HRESULT hr, DWORD nLength, char* pBuffer);

#endif
