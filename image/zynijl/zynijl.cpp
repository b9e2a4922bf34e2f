// The JPEG layer over stb_image. The parameter read parses the markers up to
// the frame header here; the whole-image read decodes to four channels (the
// fast path of stb_image's colour conversion) through colour kernels of our
// own that store blue first, and either packs the result into the caller's
// block or hands the block itself over (DIBAllocate).
#include "zynijl.h"

#include <stdlib.h>
#include <string.h>

#include <new>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// stb_image allocates through new[] and delete[], so that its output block can
// be handed to callers that release pictures with delete[] (the JPEG decoder
// never grows a block, but stb_image wants all three)
static void* StbAlloc(size_t nBytes) { return new (std::nothrow) BYTE[nBytes]; }
static void StbFree(void* p) { delete[] (BYTE*)p; }
[[maybe_unused]] static void* StbRealloc(void* p, size_t nOld, size_t nNew)
{
    BYTE* pNew = (BYTE*)StbAlloc(nNew);
    if (pNew && p)
        memcpy(pNew, p, nOld < nNew ? nOld : nNew);
    if (pNew)
        StbFree(p);
    return pNew;
}

#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_JPEG
#define STBI_NO_STDIO
#define STBI_NO_FAILURE_STRINGS
#define STBI_ASSERT(x) ((void)0)
#define STBI_MALLOC(n) StbAlloc(n)
#define STBI_FREE(p) StbFree(p)
#define STBI_REALLOC_SIZED(p, nOld, nNew) StbRealloc(p, nOld, nNew)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wimplicit-fallthrough"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#include "stb_image.h"
#pragma GCC diagnostic pop

struct ZYNIJLSTATE {
    BYTE* pFileBytes;    // the named file's contents, in file modes
    DWORD nFileBytes;
};

// Reads the named file once; later reads of the same record reuse the bytes.
static IJLERR LoadFile(JPEG_CORE_PROPERTIES* p)
{
    ZYNIJLSTATE* pState = p->pState;
    if (pState->pFileBytes)
        return IJL_OK;
    if (p->JPGFile == NULL)
        return IJL_INVALID_PARAM;
    HANDLE hFile = CreateFileA(p->JPGFile, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, NULL);
    if (hFile == INVALID_HANDLE_VALUE)
        return IJL_FILE_ERROR;
    DWORD nSize = GetFileSize(hFile, NULL);
    BYTE* pBytes = nSize == INVALID_FILE_SIZE ? NULL : (BYTE*)malloc(nSize ? nSize : 1);
    DWORD nRead = 0;
    BOOL bOk = pBytes && ReadFile(hFile, pBytes, nSize, &nRead, NULL) && nRead == nSize;
    CloseHandle(hFile);
    if (!bOk) {
        free(pBytes);
        return IJL_FILE_ERROR;
    }
    pState->pFileBytes = pBytes;
    pState->nFileBytes = nSize;
    return IJL_OK;
}

static IJLERR GetStream(JPEG_CORE_PROPERTIES* p, BOOL bFile, const BYTE** ppBytes, DWORD* pSize)
{
    if (bFile) {
        IJLERR err = LoadFile(p);
        if (err != IJL_OK)
            return err;
        *ppBytes = p->pState->pFileBytes;
        *pSize = p->pState->nFileBytes;
        return IJL_OK;
    }
    if (p->JPGBytes == NULL)
        return IJL_INVALID_PARAM;
    *ppBytes = p->JPGBytes;
    *pSize = p->JPGSizeBytes;
    return IJL_OK;
}

static BOOL IsFrameMarker(BYTE m)
{
    return m >= 0xC0 && m <= 0xCF && m != 0xC4 && m != 0xC8 && m != 0xCC;
}

// Walks the markers from the start of image to the first frame header.
static IJLERR ReadFrameHeader(const BYTE* pBytes, DWORD nSize, DWORD* pWidth, DWORD* pHeight, DWORD* pChannels)
{
    if (nSize < 4 || pBytes[0] != 0xFF || pBytes[1] != 0xD8)
        return IJL_BAD_STREAM;
    DWORD i = 2;
    for (;;) {
        while (i < nSize && pBytes[i] != 0xFF)
            i++;
        while (i < nSize && pBytes[i] == 0xFF)
            i++;
        if (i >= nSize)
            return IJL_BAD_STREAM;
        BYTE m = pBytes[i++];
        if (m == 0x01 || (m >= 0xD0 && m <= 0xD8))
            continue;
        if (m == 0xD9 || m == 0xDA || nSize - i < 2)
            return IJL_BAD_STREAM;
        DWORD nLength = (DWORD)(pBytes[i] << 8 | pBytes[i + 1]);
        if (nLength < 2 || nLength > nSize - i)
            return IJL_BAD_STREAM;
        if (IsFrameMarker(m)) {
            if (nLength < 8)
                return IJL_BAD_STREAM;
            const BYTE* f = pBytes + i + 2;
            *pHeight = (DWORD)(f[1] << 8 | f[2]);
            *pWidth = (DWORD)(f[3] << 8 | f[4]);
            *pChannels = f[5];
            return *pWidth && *pHeight && *pChannels ? IJL_OK : IJL_BAD_STREAM;
        }
        i += nLength;
    }
}

// Swaps the first and third byte of nPixels 4-byte pixels in place.
static void SwapRedBlue(BYTE* p, size_t nPixels)
{
    size_t i = 0;
#ifdef __SSE2__
    const __m128i mKeep = _mm_set1_epi32((int)0xFF00FF00);
    for (; i + 4 <= nPixels; i += 4) {
        __m128i v = _mm_loadu_si128((const __m128i*)(p + i * 4));
        __m128i rb = _mm_andnot_si128(mKeep, v);
        rb = _mm_or_si128(_mm_srli_epi32(rb, 16), _mm_slli_epi32(rb, 16));
        _mm_storeu_si128((__m128i*)(p + i * 4), _mm_or_si128(_mm_and_si128(v, mKeep), rb));
    }
#endif
    for (; i < nPixels; i++) {
        BYTE t = p[i * 4];
        p[i * 4] = p[i * 4 + 2];
        p[i * 4 + 2] = t;
    }
}

// The colour conversion kernels below take the place of stb_image's own, with
// the same sums, and store blue first. The decode always asks for 4 bytes a
// pixel, so nStep is 4.

// stb_image's scalar conversion, then red and blue swapped while the row is in the cache.
static void ColourRowBgr(stbi_uc* pOut, const stbi_uc* pY, const stbi_uc* pCb, const stbi_uc* pCr, int nCount, int nStep)
{
    stbi__YCbCr_to_RGB_row(pOut, pY, pCb, pCr, nCount, nStep);
    SwapRedBlue(pOut, (size_t)nCount);
}

#ifdef STBI_SSE2
// The SSE2 conversion of stb_image (fixed point in 4096ths, eight pixels at a
// time) with blue packed before red; the last pixels go the scalar way.
static void ColourRowBgrSse2(stbi_uc* pOut, const stbi_uc* pY, const stbi_uc* pCb, const stbi_uc* pCr, int nCount,
                             int nStep)
{
    const __m128i mSign = _mm_set1_epi8(-0x80);
    const __m128i mCrToR = _mm_set1_epi16((short)(1.40200f * 4096.0f + 0.5f));
    const __m128i mCrToG = _mm_set1_epi16(-(short)(0.71414f * 4096.0f + 0.5f));
    const __m128i mCbToG = _mm_set1_epi16(-(short)(0.34414f * 4096.0f + 0.5f));
    const __m128i mCbToB = _mm_set1_epi16((short)(1.77200f * 4096.0f + 0.5f));
    const __m128i mYBias = _mm_set1_epi8((char)128);
    const __m128i mAlpha = _mm_set1_epi16(255);
    int i = 0;
    for (; nStep == 4 && i + 8 <= nCount; i += 8, pOut += 32) {
        __m128i y = _mm_srli_epi16(_mm_unpacklo_epi8(mYBias, _mm_loadl_epi64((const __m128i*)(pY + i))), 4);
        __m128i cb = _mm_unpacklo_epi8(_mm_setzero_si128(), _mm_xor_si128(_mm_loadl_epi64((const __m128i*)(pCb + i)), mSign));
        __m128i cr = _mm_unpacklo_epi8(_mm_setzero_si128(), _mm_xor_si128(_mm_loadl_epi64((const __m128i*)(pCr + i)), mSign));
        __m128i r = _mm_srai_epi16(_mm_add_epi16(_mm_mulhi_epi16(mCrToR, cr), y), 4);
        __m128i g = _mm_add_epi16(_mm_add_epi16(_mm_mulhi_epi16(mCbToG, cb), y), _mm_mulhi_epi16(cr, mCrToG));
        __m128i b = _mm_srai_epi16(_mm_add_epi16(y, _mm_mulhi_epi16(cb, mCbToB)), 4);
        __m128i br = _mm_packus_epi16(b, r);
        __m128i ga = _mm_packus_epi16(_mm_srai_epi16(g, 4), mAlpha);
        __m128i lo = _mm_unpacklo_epi8(br, ga);
        __m128i hi = _mm_unpackhi_epi8(br, ga);
        _mm_storeu_si128((__m128i*)pOut, _mm_unpacklo_epi16(lo, hi));
        _mm_storeu_si128((__m128i*)(pOut + 16), _mm_unpackhi_epi16(lo, hi));
    }
    ColourRowBgr(pOut, pY + i, pCb + i, pCr + i, nCount - i, nStep);
}
#endif

// Whether stb_image wrote the colours of this stream through its colour
// conversion kernel: YCbCr and YCCK do; grey needs no order; RGB and CMYK
// streams are written red first by the decoder itself.
static BOOL UsedColourKernel(const stbi__jpeg* j)
{
    if (j->s->img_n == 3)
        return !(j->rgb == 3 || (j->app14_color_transform == 0 && !j->jfif));
    return j->s->img_n == 4 && j->app14_color_transform != 0;
}

// Decodes to 4 bytes a pixel (blue, green, red, 255), rows top first, in a
// block from new[]; null on failure.
static BYTE* DecodeBgra(const BYTE* pBytes, DWORD nSize, int* pWidth, int* pHeight)
{
    stbi__context ctx;
    stbi__start_mem(&ctx, pBytes, (int)nSize);
    stbi__jpeg* j = (stbi__jpeg*)stbi__malloc(sizeof(stbi__jpeg));
    if (j == NULL)
        return NULL;
    j->s = &ctx;
    stbi__setup_jpeg(j);
    // the vector kernel where stb_image chose its own
#ifdef STBI_SSE2
    j->YCbCr_to_RGB_kernel = j->YCbCr_to_RGB_kernel == stbi__YCbCr_to_RGB_simd ? ColourRowBgrSse2 : ColourRowBgr;
#else
    j->YCbCr_to_RGB_kernel = ColourRowBgr;
#endif
    int nComponents = 0;
    BYTE* pOut = load_jpeg_image(j, pWidth, pHeight, &nComponents, 4);
    if (pOut && j->s->img_n >= 3 && !UsedColourKernel(j))
        SwapRedBlue(pOut, (size_t)*pWidth * *pHeight);
    STBI_FREE(j);
    return pOut;
}

// Packs blue-green-red-alpha rows into the caller's block.
static void PackRows(const BYTE* pBgra, JPEG_CORE_PROPERTIES* p)
{
    DWORD nWidth = p->DIBWidth, nHeight = (DWORD)p->DIBHeight;
    BOOL bRgb = p->DIBColor == IJL_RGB;
    BYTE* pRow = p->DIBBytes;
    for (DWORD y = 0; y < nHeight; y++) {
        const BYTE* s = pBgra + (size_t)y * nWidth * 4;
        BYTE* d = pRow;
        if (p->DIBChannels == 4) {
            memcpy(d, s, (size_t)nWidth * 4);
            if (bRgb)
                SwapRedBlue(d, nWidth);
        } else if (bRgb) {
            for (DWORD x = 0; x < nWidth; x++, s += 4, d += 3) {
                d[0] = s[2];
                d[1] = s[1];
                d[2] = s[0];
            }
        } else {
            for (DWORD x = 0; x < nWidth; x++, s += 4, d += 3) {
                d[0] = s[0];
                d[1] = s[1];
                d[2] = s[2];
            }
        }
        pRow += (size_t)nWidth * p->DIBChannels + p->DIBPadBytes;
    }
}

static IJLERR ReadWholeImage(const BYTE* pBytes, DWORD nSize, JPEG_CORE_PROPERTIES* p)
{
    DWORD nFrameWidth = 0, nFrameHeight = 0, nFrameChannels = 0;
    IJLERR err = ReadFrameHeader(pBytes, nSize, &nFrameWidth, &nFrameHeight, &nFrameChannels);
    if (err != IJL_OK)
        return err;
    if (p->DIBAllocate ? p->DIBBytes != NULL : p->DIBBytes == NULL)
        return IJL_NULL_POINTER;
    if (p->DIBWidth != nFrameWidth || p->DIBHeight != (int)nFrameHeight ||
        (p->DIBChannels != 3 && p->DIBChannels != 4) ||
        (p->DIBColor != IJL_BGR && p->DIBColor != IJL_RGB && p->DIBColor != IJL_OTHER) ||
        (p->DIBAllocate && (p->DIBChannels != 4 || p->DIBColor == IJL_RGB || p->DIBPadBytes != 0)))
        return IJL_DIB_MISMATCH;
    if (nSize > 0x7FFFFFFF)
        return IJL_BAD_STREAM;
    int nWidth = 0, nHeight = 0;
    BYTE* pBgra = DecodeBgra(pBytes, nSize, &nWidth, &nHeight);
    if (pBgra == NULL)
        return IJL_DECODE_ERROR;
    if ((DWORD)nWidth != p->DIBWidth || nHeight != p->DIBHeight) {
        StbFree(pBgra);
        return IJL_DECODE_ERROR;
    }
    if (p->DIBAllocate) {
        p->DIBBytes = pBgra;
        return IJL_OK;
    }
    PackRows(pBgra, p);
    StbFree(pBgra);
    return IJL_OK;
}

IJLERR ijlInit(JPEG_CORE_PROPERTIES* jcprops)
{
    if (jcprops == NULL)
        return IJL_NULL_POINTER;
    memset(jcprops, 0, sizeof(*jcprops));
    jcprops->DIBChannels = 3;
    jcprops->DIBColor = IJL_BGR;
    jcprops->JPGChannels = 3;
    jcprops->JPGColor = IJL_YCBCR;
    jcprops->pState = (ZYNIJLSTATE*)calloc(1, sizeof(ZYNIJLSTATE));
    return jcprops->pState ? IJL_OK : IJL_MEMORY_ERROR;
}

IJLERR ijlFree(JPEG_CORE_PROPERTIES* jcprops)
{
    if (jcprops == NULL)
        return IJL_NULL_POINTER;
    if (jcprops->pState) {
        free(jcprops->pState->pFileBytes);
        free(jcprops->pState);
        jcprops->pState = NULL;
    }
    return IJL_OK;
}

IJLERR ijlRead(JPEG_CORE_PROPERTIES* jcprops, IJLIOTYPE iotype)
{
    if (jcprops == NULL || jcprops->pState == NULL)
        return IJL_NULL_POINTER;
    if (iotype < IJL_JFILE_READPARAMS || iotype > IJL_JBUFF_READWHOLEIMAGE)
        return IJL_INVALID_PARAM;
    BOOL bFile = iotype == IJL_JFILE_READPARAMS || iotype == IJL_JFILE_READWHOLEIMAGE;
    const BYTE* pBytes = NULL;
    DWORD nSize = 0;
    IJLERR err = GetStream(jcprops, bFile, &pBytes, &nSize);
    if (err != IJL_OK)
        return err;
    if (iotype == IJL_JFILE_READPARAMS || iotype == IJL_JBUFF_READPARAMS) {
        err = ReadFrameHeader(pBytes, nSize, &jcprops->JPGWidth, &jcprops->JPGHeight, &jcprops->JPGChannels);
        if (err == IJL_OK)
            jcprops->JPGColor = jcprops->JPGChannels == 3 ? IJL_YCBCR : jcprops->JPGChannels == 1 ? IJL_G : IJL_OTHER;
        return err;
    }
    return ReadWholeImage(pBytes, nSize, jcprops);
}
