// Small helpers shared by the benchmarks: a high-resolution clock (GetTickCount
// moves in 16 ms steps under Wine) and the "BENCH <name> <value>" output line.
#ifndef ZYNBENCH_H
#define ZYNBENCH_H

#include <windows.h>

// Seconds since an arbitrary start, from QueryPerformanceCounter.
double Bench_Seconds();
// Prints "BENCH <szName> <fValue>" on its own line and flushes.
void Bench_Report(const char* szName, double fValue);
// Binary stdout and no error dialogs; call first in main.
void Bench_Start();

#endif
