// Large raw blocks for the kernel's modules: stream buffers, the GLPort vertex
// pool, path strings. Small records and tables use the ordinary heap.
//
// Step by step: p = zynAlloc(n); use the n zero-filled bytes at a stable
// address; zynFree(p) and set p to null. Release code tests its pointer first,
// so a null block is never handed to zynFree.
//
// Results: zynAlloc gives null for a size of 0 (nothing is allocated) and when
// memory is exhausted; the caller turns that into its own failure.
#ifndef ZYNMEMORY_H
#define ZYNMEMORY_H

#include "zynapi.h"

ZYN_API void* zynAlloc(unsigned long dwSize);
ZYN_API void zynFree(void* pBlock);

#endif
