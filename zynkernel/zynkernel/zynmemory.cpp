// Large blocks as locked global memory objects: zero-filled when handed out,
// at an address that stays the same until they are given back. Nothing is
// stored in front of a block; the system finds the handle from the address.
#include <windows.h>

#include "zynmemory.h"
#include "zynkernel/zynkernel_local.h"

void* zynAlloc(unsigned long dwSize)
{
    if (dwSize == 0)
        return NULL;
    void* pBlock = GlobalLock(GlobalAlloc(GHND, dwSize));
    zynKernel_Assert(pBlock != NULL, "zynAlloc: out of memory");
    return pBlock;
}

void zynFree(void* pBlock)
{
    HGLOBAL hBlock = GlobalHandle(pBlock);
    zynKernel_Assert(hBlock != NULL, "zynFree: not a block of zynAlloc");
    zynKernel_Assert(GlobalSize(hBlock) != 0, "zynFree: block of size 0");
    GlobalUnlock(GlobalHandle(pBlock));
    GlobalFree(GlobalHandle(pBlock));
}
