// What the texture creation and loading files share: the record on each
// texture's top surface and the small surface helpers.
#ifndef ZYNTEXTURE_LOCAL_H
#define ZYNTEXTURE_LOCAL_H

#include "zyntexture.h"

// The record on a texture's top surface, under g_guidTextureRecord.
struct TextureRecord {
    DWORD dwSize;      // 20
    DWORD dwFlags;     // creation flags
    DWORD dwWidth;     // size the caller asked for
    DWORD dwHeight;
    DWORD dwMipCount;  // levels of a chain of that size; 0 without mip maps
};

extern const GUID g_guidTextureRecord;

// True and the record if the surface carries one.
bool GetTextureRecord(IDirectDrawSurface7* pSurface, TextureRecord* pRecord);
// Levels of the chain below and with the surface (1 without a chain).
DWORD GetMipCount(IDirectDrawSurface7* pSurface);

#endif
