#include "zynkernel_fixture.h"

int KernelTest::CountInkPixels(const RECT& rc, DWORD dwBackground)
{
    IDirectDrawSurface7* pBack = g_pD3DX->GetBackBuffer(0);
    if (!pBack)
        return -1;
    int nInk = 0;
    for (int y = rc.top; y < rc.bottom; y++)
        for (int x = rc.left; x < rc.right; x++)
            if (!ColorNear(ReadSurfacePixel(pBack, x, y), dwBackground, 32))
                nInk++;
    pBack->Release();
    return nInk;
}
