// What the kernel's files share among themselves: the private state of the
// lifecycle and the frame, and the internal steps one file calls in another.
#ifndef ZYNKERNEL_LOCAL_H
#define ZYNKERNEL_LOCAL_H

#include "zynkernel.h"

extern HINSTANCE g_hModule;
extern HWND g_hWnd;
extern int g_bActive;
extern int g_bSystemReport;

#endif
