// Texture utilities of the support layer: what a device can take, making empty
// textures and cube maps, finding a level of a mip chain, and filling a texture
// from memory or from another surface (with conversion, scaling and the
// building of lower levels through the blitter).
//
// Step by step: D3DXInitialize; D3DXCheckTextureRequirements when the caller
// wants to know the size and format first; D3DXCreateTexture (or
// D3DXCreateCubeMapTexture); D3DXLoadTextureFromMemory or
// D3DXLoadTextureFromSurface with level D3DX_DEFAULT to fill the top level and
// build the others; D3DXGetNthMipmap to reach one level.
//
// Results: S_OK, a DirectDraw/Direct3D code passed on, or a D3DXERR_ code:
// D3DXERR_D3DXNOTSTARTEDYET before D3DXInitialize (creation and loading only),
// D3DXERR_NULLPOINTER for a missing required pointer, D3DXERR_INVALIDPARAMETER
// for a zero or default size where a real one is needed, D3DXERR_NOMATCHFOUND
// when the device offers no usable texture format. On failure *ppTexture is null.
//
// Ownership: a function that hands out a surface hands out one reference,
// which the caller releases; D3DXGetNthMipmap does so for level 0 as well.
// Every texture made here carries a 20-byte record (flags, the size asked for,
// the level count of that size) that lets the loaders work in the caller's
// terms when the device changed the size. Palette arguments are accepted and
// ignored by the creation functions.
#ifndef ZYNTEXTURE_H
#define ZYNTEXTURE_H

#include "zynsupport.h"

// creation flags: bits 0 to 2 the texture stage
#define D3DX_TEXTURE_NOMIPMAP 0x100
// filters
#define D3DX_FT_POINT 1
#define D3DX_FT_LINEAR 2

// texture creation
// Changes flags, size and format to what the device can do; null pointers stand for defaults.
HRESULT WINAPI D3DXCheckTextureRequirements(IDirect3DDevice7* pDevice, DWORD* pFlags, DWORD* pWidth,
                                            DWORD* pHeight, D3DX_SURFACEFORMAT* pFormat);
// Makes an empty texture; flags, size and format come back as the device took them.
HRESULT WINAPI D3DXCreateTexture(IDirect3DDevice7* pDevice, DWORD* pFlags, DWORD* pWidth, DWORD* pHeight,
                                 D3DX_SURFACEFORMAT* pFormat, IDirectDrawPalette* pPalette,
                                 IDirectDrawSurface7** ppTexture, DWORD* pNumMipMaps);
// Makes an empty cube map of the faces (DDSCAPS2_CUBEMAP_* bits; 0 or D3DX_DEFAULT for all six).
HRESULT WINAPI D3DXCreateCubeMapTexture(IDirect3DDevice7* pDevice, DWORD* pFlags, DWORD dwFaces,
                                        DWORD dwColorEmptyFaces, DWORD* pWidth, DWORD* pHeight,
                                        D3DX_SURFACEFORMAT* pFormat, IDirectDrawPalette* pPalette,
                                        IDirectDrawSurface7** ppTexture, DWORD* pNumMipMaps);

// texture loading
// One level of a chain (0 or D3DX_DEFAULT the top); past the end, the last level.
HRESULT WINAPI D3DXGetNthMipmap(DWORD dwLevel, IDirectDrawSurface7* pTexture, IDirectDrawSurface7** ppLevel);
// Fills a level from pixels in memory (pitch may be D3DX_DEFAULT); level D3DX_DEFAULT
// fills the top and builds the lower levels. pPalette: 256 entries for the palette forms.
HRESULT WINAPI D3DXLoadTextureFromMemory(IDirect3DDevice7* pDevice, IDirectDrawSurface7* pTexture, DWORD dwLevel,
                                         void* pMemory, PALETTEENTRY* pPalette, D3DX_SURFACEFORMAT format,
                                         DWORD dwPitch, RECT* pDestRect, DWORD dwFilter);
// Fills a level from another surface; level D3DX_DEFAULT with no rectangles copies
// a chain of the same length level by level.
HRESULT WINAPI D3DXLoadTextureFromSurface(IDirect3DDevice7* pDevice, IDirectDrawSurface7* pTexture, DWORD dwLevel,
                                          IDirectDrawSurface7* pSource, RECT* pSrcRect, RECT* pDestRect,
                                          DWORD dwFilter);

#endif
