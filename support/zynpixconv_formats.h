// The packed pixel formats as small traits records: how many bytes a pixel
// takes, and Decode / Encode between one raw pixel and the common 0xAARRGGBB
// form. The run templates of zynpixconv_formats.cpp and the direct row
// routines of zynpixconv_direct.cpp are both built from these, so the two
// paths through a pair of formats give the same bits.
#ifndef ZYNPIXCONV_FORMATS_H
#define ZYNPIXCONV_FORMATS_H

#include "zynpixconv.h"

#include <string.h>

// ---- raw pixels of 1 to 4 bytes

template <int BYTES> static inline DWORD LoadRaw(const BYTE* p);
template <> inline DWORD LoadRaw<1>(const BYTE* p) { return *p; }
template <> inline DWORD LoadRaw<2>(const BYTE* p) { WORD w; memcpy(&w, p, 2); return w; }
template <> inline DWORD LoadRaw<3>(const BYTE* p) { return p[0] | (p[1] << 8) | (p[2] << 16); }
template <> inline DWORD LoadRaw<4>(const BYTE* p) { DWORD d; memcpy(&d, p, 4); return d; }

template <int BYTES> static inline void StoreRaw(BYTE* p, DWORD v);
template <> inline void StoreRaw<1>(BYTE* p, DWORD v) { *p = (BYTE)v; }
template <> inline void StoreRaw<2>(BYTE* p, DWORD v) { WORD w = (WORD)v; memcpy(p, &w, 2); }
template <> inline void StoreRaw<3>(BYTE* p, DWORD v) { p[0] = (BYTE)v; p[1] = (BYTE)(v >> 8); p[2] = (BYTE)(v >> 16); }
template <> inline void StoreRaw<4>(BYTE* p, DWORD v) { memcpy(p, &v, 4); }

static inline DWORD Widen5(DWORD v) { return (v << 3) | (v >> 2); }
static inline DWORD Widen6(DWORD v) { return (v << 2) | (v >> 4); }
static inline DWORD Widen3(DWORD v) { return (v << 5) | (v << 2) | (v >> 1); }

// ---- traits of the packed formats

struct FmtA8R8G8B8 {
    enum { BYTES = 4 };
    static DWORD Decode(DWORD v) { return v; }
    static DWORD Encode(DWORD c) { return c; }
};
struct FmtR8G8B8 {
    enum { BYTES = 3 };
    static DWORD Decode(DWORD v) { return 0xFF000000u | v; }
    static DWORD Encode(DWORD c) { return c & 0xFFFFFF; }
};
struct FmtX8R8G8B8 {
    enum { BYTES = 4 };
    static DWORD Decode(DWORD v) { return 0xFF000000u | v; }
    static DWORD Encode(DWORD c) { return c; }
};
struct FmtR5G6B5 {
    enum { BYTES = 2 };
    static DWORD Decode(DWORD v)
    {
        return 0xFF000000u | (Widen5(v >> 11) << 16) | (Widen6((v >> 5) & 63) << 8) | Widen5(v & 31);
    }
    static DWORD Encode(DWORD c) { return ((c >> 8) & 0xF800) | ((c >> 5) & 0x7E0) | ((c >> 3) & 0x1F); }
};
struct FmtR5G5B5 {
    enum { BYTES = 2 };
    static DWORD Decode(DWORD v)
    {
        return 0xFF000000u | (Widen5((v >> 10) & 31) << 16) | (Widen5((v >> 5) & 31) << 8) | Widen5(v & 31);
    }
    static DWORD Encode(DWORD c) { return 0x8000 | ((c >> 9) & 0x7C00) | ((c >> 6) & 0x3E0) | ((c >> 3) & 0x1F); }
};
struct FmtA1R5G5B5 {
    enum { BYTES = 2 };
    static DWORD Decode(DWORD v) { return (FmtR5G5B5::Decode(v) & 0xFFFFFF) | ((v & 0x8000) ? 0xFF000000u : 0); }
    static DWORD Encode(DWORD c)
    {
        return c ? ((c >> 16) & 0x8000) | ((c >> 9) & 0x7C00) | ((c >> 6) & 0x3E0) | ((c >> 3) & 0x1F) : 0;
    }
};
struct FmtA4R4G4B4 {
    enum { BYTES = 2 };
    static DWORD Decode(DWORD v)
    {
        return ((v >> 12) * 17) << 24 | (((v >> 8) & 15) * 17) << 16 | (((v >> 4) & 15) * 17) << 8 | (v & 15) * 17;
    }
    static DWORD Encode(DWORD c)
    {
        return ((c >> 16) & 0xF000) | ((c >> 12) & 0xF00) | ((c >> 8) & 0xF0) | ((c >> 4) & 0xF);
    }
};
struct FmtX4R4G4B4 {
    enum { BYTES = 2 };
    static DWORD Decode(DWORD v) { return 0xFF000000u | FmtA4R4G4B4::Decode(v & 0xFFF); }
    static DWORD Encode(DWORD c) { return FmtA4R4G4B4::Encode(c) & 0xFFF; }
};
struct FmtL8 {
    enum { BYTES = 1 };
    static DWORD Decode(DWORD v) { return 0xFF000000u | v * 0x010101u; }
    static DWORD Encode(DWORD c) { return PixConv_Luminance(c); }
};
struct FmtA8L8 {
    enum { BYTES = 2 };
    static DWORD Decode(DWORD v) { return ((v >> 8) << 24) | (v & 0xFF) * 0x010101u; }
    static DWORD Encode(DWORD c) { return PixConv_Luminance(c); }
};
struct FmtU8V8 {
    enum { BYTES = 2 };
    static DWORD Decode(DWORD v) { return 0xFF000000u | ((v >> 8) << 16) | ((v & 0xFF) << 8); }
    static DWORD Encode(DWORD c) { return ((c >> 8) & 0xFF00) | ((c >> 8) & 0xFF); }
};
struct FmtU5V5L6 {
    enum { BYTES = 2 };
    static DWORD Decode(DWORD v)
    {
        return 0xFF000000u | (Widen5(v >> 11) << 16) | (Widen5((v >> 6) & 31) << 8) | Widen6(v & 63);
    }
    static DWORD Encode(DWORD c) { return ((c >> 8) & 0xF800) | ((c >> 5) & 0x7C0) | ((c >> 2) & 0x3F); }
};
struct FmtR3G3B2 {
    enum { BYTES = 1 };
    static DWORD Decode(DWORD v) { return 0xFF000000u | (Widen3(v >> 5) << 16) | (Widen3((v >> 2) & 7) << 8) | (v & 3) * 85; }
    static DWORD Encode(DWORD p)
    {
        DWORD t = p - ((p >> 3) & 0x1F1F00);
        t = t + 0x101020 - ((t >> 2) & 63);
        return ((t >> 16) & 0xE0) | ((t >> 11) & 0x1C) | ((t >> 6) & 3);
    }
};
struct FmtA8 {
    enum { BYTES = 1 };
    static DWORD Decode(DWORD v) { return v << 24; }
    static DWORD Encode(DWORD c) { return c >> 24; }
};

#endif
