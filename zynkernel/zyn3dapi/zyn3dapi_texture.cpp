// Texture objects of the 3D API: giving textures back and dropping their mip
// levels. The module's started flag lives here too; the texture list and the
// search path join this module with their own files.
#include "zyn3dapi.h"
#include "zyn3dapi_local.h"

#include <string.h>

static int g_b3DAPIInitialized;   // between zyn3DAPI_Initialize and zyn3DAPI_Finalize

BOOL zyn3DAPI_IsStarted()
{
    return g_b3DAPIInitialized;
}

HRESULT zyn3DAPI_Initialize()
{
    if (g_b3DAPIInitialized)
        return S_OK;
    g_b3DAPIInitialized = 1;
    zyn3DAPI_AddDefaultTexturePaths();
    return S_OK;
}

HRESULT zyn3DAPI_Finalize()
{
    if (!g_b3DAPIInitialized)
        return E_FAIL;
    g_b3DAPIInitialized = 0;
    return S_OK;
}

HRESULT zyn3DAPI_DestroyTexture(void** ppTexture)
{
    if (!g_b3DAPIInitialized || !ppTexture || !*ppTexture)
        return E_FAIL;
    ((IDirectDrawSurface7*)*ppTexture)->Release();
    *ppTexture = NULL;
    return S_OK;
}

HRESULT zyn3DAPI_DestroyMipMaps(void** ppTexture)
{
    if (!g_b3DAPIInitialized || !ppTexture || !*ppTexture)
        return E_FAIL;
    IDirectDrawSurface7* pOld = (IDirectDrawSurface7*)*ppTexture;
    DDSURFACEDESC2 ddsd;
    memset(&ddsd, 0, sizeof(ddsd));
    ddsd.dwSize = sizeof(ddsd);
    if (FAILED(pOld->GetSurfaceDesc(&ddsd)))
        return E_FAIL;
    ddsd.dwFlags = DDSD_CAPS | DDSD_HEIGHT | DDSD_WIDTH | DDSD_PIXELFORMAT;
    ddsd.ddsCaps.dwCaps = DDSCAPS_TEXTURE;
    ddsd.ddsCaps.dwCaps2 = DDSCAPS2_TEXTUREMANAGE;
    ddsd.ddsCaps.dwCaps3 = 0;
    ddsd.ddsCaps.dwCaps4 = 0;
    // the DirectDraw object that made the texture, which is the kernel's own
    IUnknown* pOwner = NULL;
    IDirectDraw7* pDD = NULL;
    if (FAILED(pOld->GetDDInterface((void**)&pOwner)) || !pOwner)
        return E_FAIL;
    HRESULT hrQuery = pOwner->QueryInterface(IID_IDirectDraw7, (void**)&pDD);
    pOwner->Release();
    if (FAILED(hrQuery) || !pDD)
        return E_FAIL;
    IDirectDrawSurface7* pNew = NULL;
    HRESULT hr = pDD->CreateSurface(&ddsd, &pNew, NULL);
    pDD->Release();
    if (FAILED(hr) || !pNew)
        return E_FAIL;
    if (FAILED(pNew->BltFast(0, 0, pOld, NULL, DDBLTFAST_WAIT))) {
        pNew->Release();
        return E_FAIL;
    }
    void* pCopy = pOld;
    zyn3DAPI_DestroyTexture(&pCopy);
    *ppTexture = pNew;
    return S_OK;
}
