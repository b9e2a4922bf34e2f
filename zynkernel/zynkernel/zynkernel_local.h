// What the kernel's files share among themselves: the private state of the
// lifecycle that the frame and the window procedure read, and the internal
// steps one file calls in another.
#ifndef ZYNKERNEL_LOCAL_H
#define ZYNKERNEL_LOCAL_H

#include "zynkernel.h"

// lifecycle (zynkernel_main.cpp)
extern HINSTANCE g_hModule;   // this DLL
extern HWND g_hWnd;           // the render window; kept after a stop
extern int g_bActive;         // the context can draw
extern int g_bSystemReport;   // start failures show a message box
extern int g_bDebugOutput;    // the frame shows the FPS line
extern int g_bDebugTextOff;   // zynKernel_DrawDebugText draws nothing

// frame (zynkernel_frame.cpp)
extern int g_bPause;          // the render routine is told it is paused
extern int g_bStepFrame;      // one frame runs unpaused

// Shows a start failure in a box "zynKernel Error:" while reports are on.
void zynKernel_ReportFailure(const char* szText);
// Reports a broken condition to the debugger; changes nothing.
void zynKernel_Assert(int bCondition, const char* szWhat);

// commands (zynkernel_cmd.cpp): registers "Pause", "Test", "BgColor", "Memory", "Evict", "DebugOutput".
void zynKernel_RegisterCommands();

// window messages (zynkernel_wndproc.cpp)
void zynKernel_KeyDown(HWND hWnd, int nKey);
void zynKernel_KeyUp(HWND hWnd, int nKey);

#endif
