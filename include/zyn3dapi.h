// The 3D API: textures for the host as plain surface pointers, the texture
// search path and the device state. A texture handle is the top
// IDirectDrawSurface7 of the texture typed as void*, ready for SetTexture.
//
// Step by step: the kernel starts the module (zyn3DAPI_Initialize) while it
// starts and stops it (zyn3DAPI_Finalize) while it stops; between the two the
// texture calls work. Give a texture back with zyn3DAPI_DestroyTexture, never
// with Release.
//
// Results: 0 (S_OK) or 0x80004005 (E_FAIL), also for a call while the module
// is not started or with a null texture.
//
// Search path: zyn3DAPI_Initialize adds the program's folder, folder\base\ and
// folder\base\models\; the host adds more with zyn3DAPI_AddTexturePath, and
// zyn3DAPI_FindTextureFile turns a texture name into the name of a file that
// exists, loose or inside a zip archive, through zynFileIO. Names pass through
// buffers of 256 bytes; the path only grows and outlives zyn3DAPI_Finalize.
//
// Ownership: zyn3DAPI_DestroyMipMaps replaces the caller's texture by a new
// surface holding its top level alone; the old one is given back as by
// zyn3DAPI_DestroyTexture.
#ifndef ZYN3DAPI_H
#define ZYN3DAPI_H

#include <windows.h>
#include <ddraw.h>

#include "zynapi.h"

// module
// Marks the module as started; 0 also when it already was.
ZYN_API HRESULT zyn3DAPI_Initialize();
// Marks it as stopped; E_FAIL when it was not started.
ZYN_API HRESULT zyn3DAPI_Finalize();

// texture objects
// Gives a texture back and clears *ppTexture. E_FAIL when not started or for a null texture.
ZYN_API HRESULT zyn3DAPI_DestroyTexture(void** ppTexture);
// Replaces *ppTexture by a managed copy of its top level with no mip levels.
// E_FAIL when not started, for a null texture, or when the copy cannot be made
// (the old texture then stays as it was).
ZYN_API HRESULT zyn3DAPI_DestroyMipMaps(void** ppTexture);

// texture search path
// Both add one folder, or a ';' list taken as one text, unless the text is already a piece of the path.
ZYN_API HRESULT zyn3DAPI_SetTexturePath(char* szPath);
ZYN_API HRESULT zyn3DAPI_AddTexturePath(char* szPath);
// Copies the whole path (empty while none) into szBuffer, which must hold it.
ZYN_API HRESULT zyn3DAPI_GetTexturePath(char* szBuffer);
// Finds the file for a texture name; szResult must hold 256 bytes. 0 if found, 0x80004005 if not.
ZYN_API HRESULT zyn3DAPI_FindTextureFile(char* szName, char* szResult);

#endif
