// Direct row routines for the common pairs around A8R8G8B8: one loop that
// decodes the source pixel and encodes the target pixel with the very same
// per-format rules as the read and write routines (zynpixconv_formats.h), so
// the result equals the path through the common form bit for bit. Each pair
// is built twice, for plain x86 and for AVX2; the blitter picks one once per
// blit, and only where no filter, scaling or palette applies.
#pragma GCC optimize("O3")
#include "zynpixconv_formats.h"

#include <string.h>

// ---- four pixels at a time; 24-bit pixels go as three 32-bit words

template <int BYTES> static inline void Load4(const BYTE* p, DWORD v[4])
{
    for (int k = 0; k < 4; k++)
        v[k] = LoadRaw<BYTES>(p + k * BYTES);
}
template <> inline void Load4<3>(const BYTE* p, DWORD v[4])
{
    DWORD w[3];
    memcpy(w, p, sizeof(w));
    v[0] = w[0] & 0xFFFFFF;
    v[1] = (w[0] >> 24) | ((w[1] & 0xFFFF) << 8);
    v[2] = (w[1] >> 16) | ((w[2] & 0xFF) << 16);
    v[3] = w[2] >> 8;
}

template <int BYTES> static inline void Store4(BYTE* p, const DWORD v[4])
{
    for (int k = 0; k < 4; k++)
        StoreRaw<BYTES>(p + k * BYTES, v[k]);
}
template <> inline void Store4<3>(BYTE* p, const DWORD v[4])
{
    DWORD w0 = (v[0] & 0xFFFFFF) | (v[1] << 24), w1 = ((v[1] >> 8) & 0xFFFF) | (v[2] << 16),
          w2 = ((v[2] >> 16) & 0xFF) | (v[3] << 8);
    memcpy(p, &w0, 4);
    memcpy(p + 4, &w1, 4);
    memcpy(p + 8, &w2, 4);
}

template <class S, class T>
static inline __attribute__((always_inline)) void ConvertRowBody(int n, const BYTE* __restrict pSource,
                                                                 BYTE* __restrict pTarget)
{
    int i = 0;
    if constexpr (S::BYTES == 3 || T::BYTES == 3) {
        for (; i + 4 <= n; i += 4) {
            DWORD v[4];
            Load4<S::BYTES>(pSource + i * S::BYTES, v);
            for (int k = 0; k < 4; k++)
                v[k] = T::Encode(S::Decode(v[k]));
            Store4<T::BYTES>(pTarget + i * T::BYTES, v);
        }
    }
    for (; i < n; i++)
        StoreRaw<T::BYTES>(pTarget + i * T::BYTES, T::Encode(S::Decode(LoadRaw<S::BYTES>(pSource + i * S::BYTES))));
}

template <class S, class T> static void ConvertRow(int n, const BYTE* pSource, BYTE* pTarget)
{
    ConvertRowBody<S, T>(n, pSource, pTarget);
}

template <class S, class T> __attribute__((target("avx2"))) static void ConvertRowAvx2(int n, const BYTE* pSource, BYTE* pTarget)
{
    ConvertRowBody<S, T>(n, pSource, pTarget);
}

// ---- the pairs

struct DirectPair {
    D3DX_SURFACEFORMAT nFrom, nTo;
    PFNCONVERTROW pfnPlain, pfnAvx2;
};

#define PAIR(from, S, to, T) {from, to, ConvertRow<S, T>, ConvertRowAvx2<S, T>}
#define BOTH_WAYS(code, F) PAIR(D3DX_SF_A8R8G8B8, FmtA8R8G8B8, code, F), PAIR(code, F, D3DX_SF_A8R8G8B8, FmtA8R8G8B8)

static const DirectPair g_aDirectPairs[] = {
    BOTH_WAYS(D3DX_SF_R8G8B8, FmtR8G8B8),     BOTH_WAYS(D3DX_SF_X8R8G8B8, FmtX8R8G8B8),
    BOTH_WAYS(D3DX_SF_R5G6B5, FmtR5G6B5),     BOTH_WAYS(D3DX_SF_R5G5B5, FmtR5G5B5),
    BOTH_WAYS(D3DX_SF_A1R5G5B5, FmtA1R5G5B5), BOTH_WAYS(D3DX_SF_X4R4G4B4, FmtX4R4G4B4),
    BOTH_WAYS(D3DX_SF_A4R4G4B4, FmtA4R4G4B4),
};

bool PixConv_HasAvx2()
{
    static int s_nAvx2 = -1;
    if (s_nAvx2 < 0) {
        __builtin_cpu_init();
        s_nAvx2 = __builtin_cpu_supports("avx2") ? 1 : 0;
    }
    return s_nAvx2 == 1;
}

PFNCONVERTROW PixConv_DirectRow(D3DX_SURFACEFORMAT nFrom, D3DX_SURFACEFORMAT nTo, bool bAvx2)
{
    for (const DirectPair& pair : g_aDirectPairs)
        if (pair.nFrom == nFrom && pair.nTo == nTo)
            return bAvx2 ? pair.pfnAvx2 : pair.pfnPlain;
    return NULL;
}
