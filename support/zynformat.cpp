// The pixel format table: 42 rows of a DDPIXELFORMAT, the bytes a pixel and
// the format code. A row with code 0 is a format we recognise and have no code
// for. Look-ups compare whole records byte for byte, so a row must be exactly
// what DirectDraw reports, unused fields zero.
#include "zynformat.h"

#include <string.h>

struct FormatRow {
    DDPIXELFORMAT ddpf;
    DWORD nBytes;
    DWORD dwCode;
};

#define FOURCC(a, b, c, d) ((DWORD)(a) | ((DWORD)(b) << 8) | ((DWORD)(c) << 16) | ((DWORD)(d) << 24))
#define ROW(code, bytes, flags, fourcc, bits, r, g, b, a) \
    {{sizeof(DDPIXELFORMAT), flags, fourcc, {bits}, {r}, {g}, {b}, {a}}, bytes, code}

static const FormatRow s_Formats[] = {
    ROW(0, 0, 0x840, 0, 1, 0, 0, 0, 0),
    ROW(0, 0, 0x850, 0, 1, 0, 0, 0, 0),
    ROW(0, 0, 0x1040, 0, 2, 0, 0, 0, 0),
    ROW(0, 0, 0x1050, 0, 2, 0, 0, 0, 0),
    ROW(D3DX_SF_PALETTE4, 0, 0x48, 0, 4, 0, 0, 0, 0),
    ROW(0, 0, 0x58, 0, 4, 0, 0, 0, 0),
    ROW(D3DX_SF_PALETTE8, 1, 0x60, 0, 8, 0, 0, 0, 0),
    ROW(D3DX_SF_R3G3B2, 1, 0x40, 0, 8, 0xE0, 0x1C, 0x3, 0),
    ROW(D3DX_SF_A4R4G4B4, 2, 0x41, 0, 16, 0xF00, 0xF0, 0xF, 0xF000),
    ROW(D3DX_SF_R5G6B5, 2, 0x40, 0, 16, 0xF800, 0x7E0, 0x1F, 0),
    ROW(0, 0, 0x40, 0, 16, 0x1F, 0x7E0, 0xF800, 0),
    ROW(D3DX_SF_R5G5B5, 2, 0x40, 0, 16, 0x7C00, 0x3E0, 0x1F, 0),
    ROW(D3DX_SF_A1R5G5B5, 2, 0x41, 0, 16, 0x7C00, 0x3E0, 0x1F, 0x8000),
    ROW(D3DX_SF_R8G8B8, 3, 0x40, 0, 24, 0xFF0000, 0xFF00, 0xFF, 0),
    ROW(0, 0, 0x40, 0, 24, 0xFF, 0xFF00, 0xFF0000, 0),
    ROW(D3DX_SF_X8R8G8B8, 4, 0x40, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0),
    ROW(0, 0, 0x40, 0, 32, 0xFF, 0xFF00, 0xFF0000, 0),
    ROW(D3DX_SF_A8R8G8B8, 4, 0x41, 0, 32, 0xFF0000, 0xFF00, 0xFF, 0xFF000000),
    ROW(0, 0, 0x41, 0, 32, 0xFF, 0xFF00, 0xFF0000, 0xFF000000),
    ROW(D3DX_SF_L8, 1, 0x20000, 0, 8, 0xFF, 0, 0, 0),
    ROW(D3DX_SF_A8L8, 2, 0x20001, 0, 16, 0xFF, 0, 0, 0xFF00),
    ROW(D3DX_SF_U8V8, 2, 0x80000, 0, 16, 0xFF, 0xFF00, 0, 0),
    ROW(D3DX_SF_U5V5L6, 2, 0xC0000, 0, 16, 0x1F, 0x3E0, 0xFC00, 0),
    ROW(D3DX_SF_U8V8L8, 3, 0xC0000, 0, 24, 0xFF, 0xFF00, 0xFF0000, 0),
    ROW(D3DX_SF_Z16S0, 2, 0x400, 0, 16, 0, 0xFFFF, 0, 0),
    ROW(D3DX_SF_Z24S8, 4, 0x4400, 0, 32, 0x8, 0xFFFFFF00, 0xFF, 0),
    ROW(D3DX_SF_Z15S1, 2, 0x4400, 0, 16, 0x1, 0xFFFE, 0x1, 0),
    ROW(D3DX_SF_Z24S4, 4, 0x4400, 0, 32, 0x8, 0xFFFFFF, 0xFF000000, 0),
    ROW(D3DX_SF_Z16S1, 2, 0x4400, 0, 16, 0x1, 0x7FFF, 0x8000, 0),
    ROW(D3DX_SF_Z32S0, 4, 0x400, 0, 32, 0, 0xFFFFFFFF, 0, 0),
    ROW(D3DX_SF_DXT1, 0, 0x4, FOURCC('D', 'X', 'T', '1'), 0, 0, 0, 0, 0),
    ROW(0, 0, 0x4, FOURCC('D', 'X', 'T', '2'), 0, 0, 0, 0, 0),
    ROW(D3DX_SF_DXT3, 0, 0x4, FOURCC('D', 'X', 'T', '3'), 0, 0, 0, 0, 0),
    ROW(0, 0, 0x4, FOURCC('D', 'X', 'T', '4'), 0, 0, 0, 0, 0),
    ROW(D3DX_SF_DXT5, 0, 0x4, FOURCC('D', 'X', 'T', '5'), 0, 0, 0, 0, 0),
    ROW(D3DX_SF_A8, 1, 0x2, 0, 8, 0, 0, 0, 0),
    ROW(0, 0, 0x20001, 0, 8, 0xF, 0, 0, 0xF0),
    ROW(0, 0, 0x41, 0, 16, 0xE0, 0x1C, 0x3, 0xFF00),
    ROW(0, 0, 0x61, 0, 16, 0, 0, 0, 0xFF00),
    ROW(D3DX_SF_UYVY, 0, 0x4, FOURCC('U', 'Y', 'V', 'Y'), 0, 0, 0, 0, 0),
    ROW(D3DX_SF_YUY2, 0, 0x4, FOURCC('Y', 'U', 'Y', '2'), 0, 0, 0, 0, 0),
    ROW(D3DX_SF_X4R4G4B4, 2, 0x40, 0, 16, 0xF00, 0xF0, 0xF, 0),
};
static const int NUM_FORMATS = sizeof(s_Formats) / sizeof(s_Formats[0]);
static_assert(sizeof(s_Formats) / sizeof(s_Formats[0]) == 42, "the format table has 42 rows");

HRESULT WINAPI D3DXMakeDDPixelFormat(D3DX_SURFACEFORMAT format, DDPIXELFORMAT* pddpf)
{
    if (!pddpf)
        return D3DXERR_NULLPOINTER;
    if (format == D3DX_SF_UNKNOWN)
        return D3DXERR_INVALIDPARAMETER;
    for (int i = 0; i < NUM_FORMATS; i++) {
        if (s_Formats[i].dwCode == (DWORD)format) {
            *pddpf = s_Formats[i].ddpf;
            return S_OK;
        }
    }
    return D3DXERR_INVALIDPARAMETER;
}

D3DX_SURFACEFORMAT WINAPI D3DXMakeSurfaceFormat(const DDPIXELFORMAT* pddpf)
{
    if (!pddpf)
        return D3DX_SF_UNKNOWN;
    for (int i = 0; i < NUM_FORMATS; i++)
        if (memcmp(&s_Formats[i].ddpf, pddpf, sizeof(DDPIXELFORMAT)) == 0)
            return (D3DX_SURFACEFORMAT)s_Formats[i].dwCode;
    return D3DX_SF_UNKNOWN;
}

DWORD D3DXGetFormatBytes(D3DX_SURFACEFORMAT format)
{
    if (format == D3DX_SF_UNKNOWN)
        return 0;
    for (int i = 0; i < NUM_FORMATS; i++)
        if (s_Formats[i].dwCode == (DWORD)format)
            return s_Formats[i].nBytes;
    return 0;
}
