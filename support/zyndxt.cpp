// DXT block codec and the per-blit block cache.
#pragma GCC optimize("O3")
#include "zyndxt.h"

#include <math.h>
#include <string.h>

// the pools: four records for a source, one for a target
static DXTBlock g_aSourcePool[4];
static DXTBlock g_TargetPool;

// eye weights of blue, green and red; a channel runs from 0 to its weight
static const float g_afChannelWeight[3] = {0.082f, 0.6094f, 0.3086f};
// ramp position to code
static const DWORD g_adwFourColorCode[4] = {0, 2, 3, 1};
static const DWORD g_adwThreeColorCode[4] = {0, 2, 1, 3};
static const DWORD g_adwAlphaCode[8] = {0, 2, 3, 4, 5, 6, 7, 1};

static inline WORD Load16(const BYTE* p) { return (WORD)(p[0] | (p[1] << 8)); }
static inline void Store16(BYTE* p, DWORD v) { p[0] = (BYTE)v; p[1] = (BYTE)(v >> 8); }

static inline DWORD Widen565(DWORD v)
{
    DWORD r = (v >> 11) & 31, g = (v >> 5) & 63, b = v & 31;
    return 0xFF000000u | (((r << 3) | (r >> 2)) << 16) | (((g << 2) | (g >> 4)) << 8) | ((b << 3) | (b >> 2));
}

static inline DWORD Pack565(DWORD r, DWORD g, DWORD b) { return ((r >> 3) << 11) | ((g >> 2) << 5) | (b >> 3); }

// ---- decoding

static void DecodeColors(const BYTE* p, DWORD adwPixels[16])
{
    DWORD c0 = Load16(p), c1 = Load16(p + 2);
    DWORD a = Widen565(c0), b = Widen565(c1);
    DWORD adwColor[4] = {a, b, 0, 0};
    if (c0 > c1) {
        DWORD c2 = 0xFF000000u, c3 = 0xFF000000u;
        for (int s = 0; s < 24; s += 8) {
            DWORD ca = (a >> s) & 0xFF, cb = (b >> s) & 0xFF;
            c2 |= ((2 * ca + cb + 1) / 3) << s;
            c3 |= ((ca + 2 * cb + 1) / 3) << s;
        }
        adwColor[2] = c2;
        adwColor[3] = c3;
    } else {
        DWORD c2 = 0xFF000000u;
        for (int s = 0; s < 24; s += 8)
            c2 |= ((((a >> s) & 0xFF) + ((b >> s) & 0xFF)) / 2) << s;
        adwColor[2] = c2;
    }
    DWORD dwCodes = p[4] | (p[5] << 8) | (p[6] << 16) | ((DWORD)p[7] << 24);
    for (int i = 0; i < 16; i++, dwCodes >>= 2)
        adwPixels[i] = adwColor[dwCodes & 3];
}

static void DecodeAlpha5(const BYTE* p, DWORD adwPixels[16])
{
    DWORD a0 = p[0], a1 = p[1], adwAlpha[8] = {a0, a1};
    if (a0 > a1) {
        for (int i = 1; i < 7; i++)
            adwAlpha[i + 1] = ((7 - i) * a0 + i * a1 + 3) / 7;
    } else {
        for (int i = 1; i < 5; i++)
            adwAlpha[i + 1] = ((5 - i) * a0 + i * a1 + 3) / 5;
        adwAlpha[6] = 0;
        adwAlpha[7] = 255;
    }
    for (int nGroup = 0; nGroup < 2; nGroup++) {
        const BYTE* q = p + 2 + nGroup * 3;
        DWORD dwCodes = q[0] | (q[1] << 8) | (q[2] << 16);
        for (int i = 0; i < 8; i++, dwCodes >>= 3) {
            DWORD& c = adwPixels[nGroup * 8 + i];
            c = (c & 0xFFFFFF) | (adwAlpha[dwCodes & 7] << 24);
        }
    }
}

// Colours of the premultiplied forms never stand above their alpha.
static void Unpremultiply(DWORD adwPixels[16])
{
    for (int i = 0; i < 16; i++) {
        DWORD c = adwPixels[i], a = c >> 24;
        if (a == 0) {
            adwPixels[i] = 0;
        } else if (a < 255) {
            DWORD out = c & 0xFF000000u;
            for (int s = 0; s < 24; s += 8) {
                DWORD v = (c >> s) & 0xFF;
                out |= (v > a ? a : v) << s;
            }
            adwPixels[i] = out;
        }
    }
}

void DXT_DecodeBlock(DWORD dwFourCC, const BYTE* pBlock, DWORD adwPixels[16])
{
    if (dwFourCC == ZYN_FOURCC_DXT1) {
        DecodeColors(pBlock, adwPixels);
        for (int i = 0; i < 16; i++)
            if (!(adwPixels[i] >> 24))
                adwPixels[i] = 0;
        return;
    }
    DecodeColors(pBlock + 8, adwPixels);
    if (dwFourCC == ZYN_FOURCC_DXT2 || dwFourCC == ZYN_FOURCC_DXT3) {
        for (int i = 0; i < 16; i++) {
            DWORD a = (Load16(pBlock + (i >> 2) * 2) >> ((i & 3) * 4)) & 0xF;
            adwPixels[i] = (adwPixels[i] & 0xFFFFFF) | (((a << 4) | a) << 24);
        }
    } else {
        DecodeAlpha5(pBlock, adwPixels);
    }
    if (dwFourCC == ZYN_FOURCC_DXT2 || dwFourCC == ZYN_FOURCC_DXT4)
        Unpremultiply(adwPixels);
}

// ---- encoding
//
// The encoder's arithmetic is fixed to the last bit (its blocks are compared
// against recorded checksums), so every float sum below keeps its operands and
// their order; the speed comes from tables, a channel-major layout whose loops
// the compiler can run four pixels at a time, the symmetric half of the 3 x 3
// matrix, and stopping the squarings once they repeat themselves.

// Channel k of byte v weighted for the eye: v × weight × (1/255), as floats.
struct WeightTable {
    float af[3][256];
    WeightTable()
    {
        for (int k = 0; k < 3; k++)
            for (int v = 0; v < 256; v++)
                af[k][v] = (float)v * g_afChannelWeight[k] * 0.003921569f;
    }
};
static const WeightTable g_Weighted;
// 1 for the pixels of a 4-bit mask that are set, 0 for the others
static const float g_afKeepNibble[16][4] = {
    {0, 0, 0, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}, {1, 1, 0, 0}, {0, 0, 1, 0}, {1, 0, 1, 0}, {0, 1, 1, 0}, {1, 1, 1, 0},
    {0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, {1, 1, 0, 1}, {0, 0, 1, 1}, {1, 0, 1, 1}, {0, 1, 1, 1}, {1, 1, 1, 1}};

struct Vec3 {
    float v[3];
};

static inline float Dot(const Vec3& a, const Vec3& b) { return a.v[0] * b.v[0] + a.v[1] * b.v[1] + a.v[2] * b.v[2]; }

static inline Vec3 Weighted(DWORD c)
{
    Vec3 r;
    for (int k = 0; k < 3; k++)
        r.v[k] = g_Weighted.af[k][(c >> (8 * k)) & 0xFF];
    return r;
}

static inline void StoreColorHalf(BYTE* p, DWORD c0, DWORD c1, DWORD dwCodes)
{
    Store16(p, c0);
    Store16(p + 2, c1);
    p[4] = (BYTE)dwCodes; p[5] = (BYTE)(dwCodes >> 8); p[6] = (BYTE)(dwCodes >> 16); p[7] = (BYTE)(dwCodes >> 24);
}

// The flat case: one colour for the whole block, left-out pixels transparent.
static void EncodeFlat(BYTE* p, const DWORD adwPixels[16], DWORD dwMask)
{
    DWORD c = adwPixels[0], dwCodes = 0;
    if (dwMask != 0xFFFF) {
        for (int i = 0; i < 16; i++)
            if (dwMask & (1u << i))
                c = adwPixels[i];
        for (int i = 15; i >= 0; i--)
            dwCodes = (dwCodes << 2) | ((dwMask & (1u << i)) ? 0 : 3);
    }
    DWORD w = Pack565((c >> 16) & 0xFF, (c >> 8) & 0xFF, c & 0xFF);
    StoreColorHalf(p, w, w, dwCodes);
}

// The symmetric 3 x 3 matrix as its upper half: 00 01 02 11 12 22. A square of
// a symmetric matrix is symmetric to the bit (each lower element is the same
// products in the same order), so the upper half is all there is to compute.
struct SymMatrix {
    float m00, m01, m02, m11, m12, m22;
};

static inline SymMatrix Square(const SymMatrix& s)
{
    SymMatrix r;
    r.m00 = s.m00 * s.m00 + s.m01 * s.m01 + s.m02 * s.m02;
    r.m01 = s.m00 * s.m01 + s.m01 * s.m11 + s.m02 * s.m12;
    r.m02 = s.m00 * s.m02 + s.m01 * s.m12 + s.m02 * s.m22;
    r.m11 = s.m01 * s.m01 + s.m11 * s.m11 + s.m12 * s.m12;
    r.m12 = s.m01 * s.m02 + s.m11 * s.m12 + s.m12 * s.m22;
    r.m22 = s.m02 * s.m02 + s.m12 * s.m12 + s.m22 * s.m22;
    return r;
}

static inline bool SameBits(const SymMatrix& a, const SymMatrix& b) { return memcmp(&a, &b, sizeof(a)) == 0; }

#if defined(__SSE2__)
// The same rounds in SSE lanes, for speed: the matrix as three full rows, a
// square as row_i = m_i0 * row0 + m_i1 * row1 + m_i2 * row2. Each lane does
// the scalar Square's products, which commute exactly, and adds them in the
// same order, so every element comes out to the same bits; the lower half
// equals the upper half, as the scalar comment says.
#include <emmintrin.h>

struct SymRows {
    __m128 r0, r1, r2;   // lane 3 is 0
};

#define ZYN_BROADCAST(v, i) _mm_shuffle_ps((v), (v), _MM_SHUFFLE(i, i, i, i))

static inline __m128 SquareRow(__m128 row, const SymRows& m)
{
    __m128 t = _mm_add_ps(_mm_mul_ps(ZYN_BROADCAST(row, 0), m.r0), _mm_mul_ps(ZYN_BROADCAST(row, 1), m.r1));
    return _mm_add_ps(t, _mm_mul_ps(ZYN_BROADCAST(row, 2), m.r2));
}

static inline SymRows SquareRows(const SymRows& m)
{
    SymRows r = {SquareRow(m.r0, m), SquareRow(m.r1, m), SquareRow(m.r2, m)};
    return r;
}

static inline bool SameRows(const SymRows& a, const SymRows& b)
{
    __m128i e = _mm_and_si128(
        _mm_and_si128(_mm_cmpeq_epi32(_mm_castps_si128(a.r0), _mm_castps_si128(b.r0)),
                      _mm_cmpeq_epi32(_mm_castps_si128(a.r1), _mm_castps_si128(b.r1))),
        _mm_cmpeq_epi32(_mm_castps_si128(a.r2), _mm_castps_si128(b.r2)));
    return (_mm_movemask_ps(_mm_castsi128_ps(e)) & 7) == 7;
}

static inline float Element(__m128 v, int i)
{
    float af[4];
    _mm_storeu_ps(af, v);
    return af[i];
}

static bool PrincipalMatrix(SymMatrix& s)
{
    SymRows cur = {_mm_setr_ps(s.m00, s.m01, s.m02, 0), _mm_setr_ps(s.m01, s.m11, s.m12, 0),
                   _mm_setr_ps(s.m02, s.m12, s.m22, 0)};
    SymRows before = cur;
    bool bDone = false;
    for (int nPass = 0; nPass < 9 && !bDone; nPass++) {
        SymRows r = SquareRows(SquareRows(cur));
        float fTrace = Element(r.r0, 0) + Element(r.r1, 1) + Element(r.r2, 2);
        if (fTrace == 0 || !isfinite(fTrace))
            return false;
        __m128 vScale = _mm_set1_ps(3.0f / fTrace);
        r.r0 = _mm_mul_ps(r.r0, vScale);
        r.r1 = _mm_mul_ps(r.r1, vScale);
        r.r2 = _mm_mul_ps(r.r2, vScale);
        bool bEvenLeft = ((8 - nPass) & 1) == 0;
        if (SameRows(r, cur) || (SameRows(r, before) && bEvenLeft)) {
            cur = r;
            bDone = true;
        } else if (SameRows(r, before)) {
            bDone = true;   // cur and r take turns, and cur is the ninth
        } else {
            before = cur;
            cur = r;
        }
    }
    float af0[4], af1[4], af2[4];
    _mm_storeu_ps(af0, cur.r0);
    _mm_storeu_ps(af1, cur.r1);
    _mm_storeu_ps(af2, cur.r2);
    s.m00 = af0[0]; s.m01 = af0[1]; s.m02 = af0[2];
    s.m11 = af1[1]; s.m12 = af1[2]; s.m22 = af2[2];
    return true;
}
#else
// Nine rounds of two squarings and a rescale to trace 3; false when the trace
// is 0 or no longer finite. A round is a fixed function of the matrix, so once
// a round gives back the matrix of one or two rounds before, the rest of the
// nine would only repeat that cycle: the answer is taken from it.
static bool PrincipalMatrix(SymMatrix& s)
{
    SymMatrix before = s;   // the matrix of the round before s
    for (int nPass = 0; nPass < 9; nPass++) {
        SymMatrix r = Square(Square(s));
        float fTrace = r.m00 + r.m11 + r.m22;
        if (fTrace == 0 || !isfinite(fTrace))
            return false;
        float fScale = 3.0f / fTrace;
        r.m00 *= fScale; r.m01 *= fScale; r.m02 *= fScale;
        r.m11 *= fScale; r.m12 *= fScale; r.m22 *= fScale;
        bool bEvenLeft = ((8 - nPass) & 1) == 0;
        if (SameBits(r, s) || (SameBits(r, before) && bEvenLeft)) {
            s = r;
            return true;
        }
        if (SameBits(r, before))
            return true;   // s and r take turns, and s is the ninth
        before = s;
        s = r;
    }
    return true;
}
#endif

// Moves whichever end lies beyond the limit of channel k onto it, along the segment.
static void ClipEnd(Vec3& e0, Vec3& e1, int k, float fLimit, bool bBelow)
{
    float d0 = e0.v[k] - fLimit, d1 = e1.v[k] - fLimit;
    if ((d0 < 0) == (d1 < 0) || d0 == d1)
        return;
    Vec3& out = ((d0 < 0) == bBelow) ? e0 : e1;
    const Vec3& in = (&out == &e0) ? e1 : e0;
    float t = (fLimit - in.v[k]) / (out.v[k] - in.v[k]);
    for (int j = 0; j < 3; j++)
        out.v[j] = in.v[j] + (out.v[j] - in.v[j]) * t;
    out.v[k] = fLimit;
}

static DWORD QuantiseEnd(const Vec3& e)
{
    DWORD b[3];
    for (int k = 0; k < 3; k++) {
        float f = e.v[k] * 255.0f / g_afChannelWeight[k];
        b[k] = f <= 0 ? 0 : f >= 255 ? 255 : (DWORD)f;
    }
    return Pack565(b[2], b[1], b[0]);
}

// Bit i set for each pixel that is encoded: one with a channel outside
// [dwLow, dwHigh]. A range with low above high in a channel holds nothing.
static DWORD IncludedPixels(const DWORD adwPixels[16], DWORD dwLow, DWORD dwHigh)
{
    for (int s = 0; s < 24; s += 8)
        if (((dwLow >> s) & 0xFF) > ((dwHigh >> s) & 0xFF))
            return 0xFFFF;
    DWORD dwMask = 0;
    for (int i = 0; i < 16; i++)
        for (int s = 0; s < 24; s += 8) {
            DWORD v = (adwPixels[i] >> s) & 0xFF;
            if (v < ((dwLow >> s) & 0xFF) || v > ((dwHigh >> s) & 0xFF))
                dwMask |= 1u << i;
        }
    return dwMask;
}

// Encodes the colour half. Pixels whose three channels all lie in
// [dwLow, dwHigh] (per channel) are left out and get code 3.
static void EncodeColors(BYTE* p, const DWORD adwPixels[16], DWORD dwLow, DWORD dwHigh)
{
    DWORD dwMask = IncludedPixels(adwPixels, dwLow, dwHigh);
    int n = __builtin_popcount(dwMask);
    if (n == 0)
        return StoreColorHalf(p, 0, 0xFFFF, 0xFFFFFFFF);
    bool bAlike = true;
    for (int i = 1; i < 16 && bAlike; i++)
        bAlike = ((adwPixels[i] ^ adwPixels[0]) & 0xFFFFFF) == 0;
    if (bAlike)
        return EncodeFlat(p, adwPixels, dwMask);

    // Weighted colours by channel, the mean of the included ones taken off.
    // A left-out pixel is multiplied by 0 on its way into the sums: adding 0
    // leaves every sum as the included pixels alone make it.
    float aP[3][16], afKeep[16], afMean[3];
    for (int i = 0; i < 16; i += 4)
        memcpy(&afKeep[i], g_afKeepNibble[(dwMask >> i) & 15], sizeof(g_afKeepNibble[0]));
    const BYTE* pBytes = (const BYTE*)adwPixels;   // blue, green, red, alpha
    for (int k = 0; k < 3; k++) {
        float fSum = 0;
        for (int i = 0; i < 16; i++) {
            aP[k][i] = g_Weighted.af[k][pBytes[4 * i + k]];
            fSum += aP[k][i] * afKeep[i];
        }
        afMean[k] = fSum / (float)n;
        for (int i = 0; i < 16; i++)
            aP[k][i] -= afMean[k];
    }
    SymMatrix s = {0, 0, 0, 0, 0, 0};
    for (int i = 0; i < 16; i++) {
        float b = aP[0][i] * afKeep[i], g = aP[1][i] * afKeep[i], r = aP[2][i] * afKeep[i];
        s.m00 += b * b; s.m01 += b * g; s.m02 += b * r;
        s.m11 += g * g; s.m12 += g * r; s.m22 += r * r;
    }
    if (!PrincipalMatrix(s))
        return EncodeFlat(p, adwPixels, dwMask);
    // the row of the largest diagonal element, over its square root
    const float afRows[3][3] = {{s.m00, s.m01, s.m02}, {s.m01, s.m11, s.m12}, {s.m02, s.m12, s.m22}};
    int k = 0;
    for (int j = 1; j < 3; j++)
        if (afRows[j][j] > afRows[k][k])
            k = j;
    Vec3 axis;
    float fNorm = afRows[k][k] > 0 ? sqrtf(afRows[k][k]) : 0;
    for (int j = 0; j < 3; j++)
        axis.v[j] = fNorm > 0 ? afRows[k][j] / fNorm : 0;
    float fAxis2 = Dot(axis, axis);
    if (fAxis2 == 0)
        return EncodeFlat(p, adwPixels, dwMask);

    // the included pixels' extent along the axis; a left-out one stands at
    // the starting values, which never win
    float afLow[16], afHigh[16];
    for (int i = 0; i < 16; i++) {
        float t = (aP[0][i] * axis.v[0] + aP[1][i] * axis.v[1] + aP[2][i] * axis.v[2]) / fAxis2;
        afLow[i] = afKeep[i] != 0 ? t : 99999.0f;
        afHigh[i] = afKeep[i] != 0 ? t : -99999.0f;
    }
    float tMin = 99999.0f, tMax = -99999.0f;
    for (int i = 0; i < 16; i++) {
        tMin = afLow[i] < tMin ? afLow[i] : tMin;
        tMax = afHigh[i] > tMax ? afHigh[i] : tMax;
    }
    Vec3 e0, e1;
    for (int j = 0; j < 3; j++) {
        e0.v[j] = tMin * axis.v[j] + afMean[j];
        e1.v[j] = tMax * axis.v[j] + afMean[j];
    }
    for (int j = 0; j < 3; j++) {
        ClipEnd(e0, e1, j, 0.0f, true);
        ClipEnd(e0, e1, j, g_afChannelWeight[j], false);
    }
    DWORD c0 = QuantiseEnd(e0), c1 = QuantiseEnd(e1);
    if ((n == 16 && c1 > c0) || (n < 16 && c1 < c0)) {
        DWORD t = c0;
        c0 = c1;
        c1 = t;
    }
    e0 = Weighted(Widen565(c0));
    e1 = Weighted(Widen565(c1));
    Vec3 d;
    for (int j = 0; j < 3; j++)
        d.v[j] = e1.v[j] - e0.v[j];
    float fD2 = Dot(d, d);
    if (fD2 == 0 && n == 16)
        return EncodeFlat(p, adwPixels, dwMask);
    float fInv = fD2 > 0 ? 1.0f / fD2 : 0.0f;

    // ramp positions: four steps with all sixteen pixels, else three
    float fSteps = n == 16 ? 4.0f : 3.0f;
    int nTop = n == 16 ? 3 : 2;
    int anStep[16];
    for (int i = 0; i < 16; i++) {
        float t = 0;
        t += (aP[0][i] + afMean[0] - e0.v[0]) * d.v[0];
        t += (aP[1][i] + afMean[1] - e0.v[1]) * d.v[1];
        t += (aP[2][i] + afMean[2] - e0.v[2]) * d.v[2];
        float f = t * fInv * fSteps;
        anStep[i] = f < 0 ? 0 : f >= fSteps ? nTop : (int)f;
    }
    const DWORD* pdwCode = n == 16 ? g_adwFourColorCode : g_adwThreeColorCode;
    DWORD dwCodes = 0;
    for (int i = 15; i >= 0; i--)
        dwCodes = (dwCodes << 2) | pdwCode[anStep[i]];
    if (n < 16)
        for (int i = 0; i < 16; i++)
            dwCodes |= ((dwMask >> i) & 1 ? 0 : 3u) << (2 * i);   // left out: code 3
    StoreColorHalf(p, c0, c1, dwCodes);
}

static void EncodeAlpha5(BYTE* p, const DWORD adwPixels[16])
{
    DWORD a0 = 0, a1 = 255;
    for (int i = 0; i < 16; i++) {
        DWORD a = adwPixels[i] >> 24;
        a0 = a > a0 ? a : a0;
        a1 = a < a1 ? a : a1;
    }
    p[0] = (BYTE)a0;
    p[1] = (BYTE)a1;
    if (a0 == a1) {
        memset(p + 2, 0, 6);
        return;
    }
    float fScale = 8.0f / ((float)a1 - (float)a0);
    DWORD dwBits = 0;
    for (int i = 15; i >= 0; i--) {
        int t = (int)floorf(((float)(adwPixels[i] >> 24) - (float)a0) * fScale);
        t = t < 0 ? 0 : t > 7 ? 7 : t;
        dwBits = (dwBits << 3) | g_adwAlphaCode[t];
        if (i == 8 || i == 0) {
            BYTE* q = p + (i == 8 ? 5 : 2);
            q[0] = (BYTE)dwBits; q[1] = (BYTE)(dwBits >> 8); q[2] = (BYTE)(dwBits >> 16);
            dwBits = 0;
        }
    }
}

void DXT_EncodeBlock(DWORD dwFourCC, const DWORD adwPixels[16], BYTE* pBlock)
{
    if (dwFourCC == ZYN_FOURCC_DXT1) {
        DWORD dwAlphaBits = 0x80000000u;
        for (int i = 0; i < 16; i++)
            dwAlphaBits &= adwPixels[i];
        bool bOpaque = dwAlphaBits != 0;
        if (bOpaque)
            return EncodeColors(pBlock, adwPixels, 0xFFFFFF, 0);
        // the smallest colour no opaque pixel has stands for the transparent ones
        DWORD k = 0;
        for (bool bTaken = true; bTaken; k += bTaken) {
            bTaken = false;
            for (int i = 0; i < 16; i++)
                if ((adwPixels[i] & 0x80000000u) && (adwPixels[i] & 0xFFFFFF) == k)
                    bTaken = true;
        }
        DWORD adwWork[16];
        for (int i = 0; i < 16; i++)
            adwWork[i] = (adwPixels[i] & 0x80000000u) ? adwPixels[i] : k;
        return EncodeColors(pBlock, adwWork, k, k);
    }
    if (dwFourCC == ZYN_FOURCC_DXT2 || dwFourCC == ZYN_FOURCC_DXT3) {
        for (int nRow = 0; nRow < 4; nRow++) {
            DWORD w = 0;
            for (int i = 3; i >= 0; i--)
                w = (w << 4) | (adwPixels[nRow * 4 + i] >> 28);
            Store16(pBlock + nRow * 2, w);
        }
    } else {
        EncodeAlpha5(pBlock, adwPixels);
    }
    EncodeColors(pBlock + 8, adwPixels, 0xFFFFFF, 0);
}

// ---- block cache

void InitBlockCache(BltSide* pSide, DWORD dwFourCC)
{
    DXTBlock* pPool = pSide->bIsTarget ? &g_TargetPool : g_aSourcePool;
    int nCount = pSide->bIsTarget ? 1 : 4;
    for (int i = 0; i < nCount; i++) {
        pPool[i].pNext = i + 1 < nCount ? &pPool[i + 1] : NULL;
        pPool[i].dwFourCC = dwFourCC;
        pPool[i].x = pPool[i].y = -1;
    }
    pSide->pBlocks = pPool;
}

static BYTE* BlockAddress(const DXTBlock* pBlock, const BltSide* pSide)
{
    int nBlockX = pBlock->x >> 2, nBlockY = pBlock->y >> 2;
    return pSide->pBits + (size_t)(nBlockY * pSide->nPitch + nBlockX) * DXT_BlockBytes(pBlock->dwFourCC);
}

void DecodeBlock(DXTBlock* pBlock, BltSide* pSide)
{
    DXT_DecodeBlock(pBlock->dwFourCC, BlockAddress(pBlock, pSide), pBlock->adwPixels);
}

void EncodeBlock(DXTBlock* pBlock, BltSide* pSide)
{
    if (pBlock->x == -1 || pBlock->y == -1)
        return;
    DXT_EncodeBlock(pBlock->dwFourCC, pBlock->adwPixels, BlockAddress(pBlock, pSide));
}

DWORD* BlockPixel(int x, int y, BltSide* pSide)
{
    int bx = x & ~3, by = y & ~3, nIndex = (y & 3) * 4 + (x & 3);
    DXTBlock* pHead = pSide->pBlocks;
    if (pHead->x == bx && pHead->y == by)
        return &pHead->adwPixels[nIndex];
    DXTBlock* pPrev = pHead;
    for (DXTBlock* p = pHead->pNext; p; pPrev = p, p = p->pNext) {
        if (p->x == bx && p->y == by) {
            pPrev->pNext = p->pNext;
            p->pNext = pHead;
            pSide->pBlocks = p;
            return &p->adwPixels[nIndex];
        }
    }
    // the tail (pPrev) is the least recently used
    DXTBlock* pTail = pPrev;
    if (pSide->bIsTarget)
        EncodeBlock(pTail, pSide);
    pTail->x = bx;
    pTail->y = by;
    DecodeBlock(pTail, pSide);
    if (pTail != pHead) {
        DXTBlock* q = pHead;
        while (q->pNext != pTail)
            q = q->pNext;
        q->pNext = NULL;
        pTail->pNext = pHead;
        pSide->pBlocks = pTail;
    }
    return &pTail->adwPixels[nIndex];
}

void FlushBlocks(BltState* pState)
{
    for (DXTBlock* p = pState->target.pBlocks; p; p = p->pNext)
        EncodeBlock(p, &pState->target);
}
