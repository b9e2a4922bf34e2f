// DXT blocks: the codec between one 4 x 4 block of DXT1 to DXT5 and sixteen
// 0xAARRGGBB pixels, and the small block cache through which the blitter reads
// and writes single pixels of a DXT surface.
//
// Step by step, inside one blit: InitBlockCache on each DXT side, BlockPixel
// for every pixel read or written (a target block is decoded before it is
// first written, so a partial write keeps the block's other pixels), and
// FlushBlocks at the end to encode what the target's cache still holds.
//
// The encoder fits the colour line along the principal axis of the block's
// colours, weighted for the eye (blue 0.082, green 0.6094, red 0.3086), found
// by repeated squaring of the 3 x 3 covariance matrix.
//
// Limits: four cached blocks for a source, one for a target, shared globals:
// one blit at a time.
#ifndef ZYNDXT_H
#define ZYNDXT_H

#include "zynpixconv.h"

#define ZYN_FOURCC(a, b, c, d) ((DWORD)(a) | ((DWORD)(b) << 8) | ((DWORD)(c) << 16) | ((DWORD)(d) << 24))
#define ZYN_FOURCC_DXT1 ZYN_FOURCC('D', 'X', 'T', '1')
#define ZYN_FOURCC_DXT2 ZYN_FOURCC('D', 'X', 'T', '2')
#define ZYN_FOURCC_DXT3 ZYN_FOURCC('D', 'X', 'T', '3')
#define ZYN_FOURCC_DXT4 ZYN_FOURCC('D', 'X', 'T', '4')
#define ZYN_FOURCC_DXT5 ZYN_FOURCC('D', 'X', 'T', '5')

struct DXTBlock {
    DXTBlock* pNext;
    DWORD dwFourCC;
    int x, y;              // top-left pixel of the block, -1 while empty
    DWORD adwPixels[16];   // rows of four
};

// Bytes of one block: 8 for DXT1, 16 for the others.
inline int DXT_BlockBytes(DWORD dwFourCC) { return dwFourCC == ZYN_FOURCC_DXT1 ? 8 : 16; }

// codec on raw blocks
void DXT_DecodeBlock(DWORD dwFourCC, const BYTE* pBlock, DWORD adwPixels[16]);
void DXT_EncodeBlock(DWORD dwFourCC, const DWORD adwPixels[16], BYTE* pBlock);

// block cache of a blit side
void InitBlockCache(BltSide* pSide, DWORD dwFourCC);
DWORD* BlockPixel(int x, int y, BltSide* pSide);
void FlushBlocks(BltState* pState);
void DecodeBlock(DXTBlock* pBlock, BltSide* pSide);
void EncodeBlock(DXTBlock* pBlock, BltSide* pSide);

#endif
