#include "zynbench.h"

#include <fcntl.h>
#include <io.h>
#include <stdio.h>

double Bench_Seconds()
{
    static LARGE_INTEGER s_freq;
    if (!s_freq.QuadPart)
        QueryPerformanceFrequency(&s_freq);
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    return (double)now.QuadPart / (double)s_freq.QuadPart;
}

void Bench_Report(const char* szName, double fValue)
{
    printf("BENCH %s %.4f\n", szName, fValue);
    fflush(stdout);
}

void Bench_Start()
{
    _setmode(_fileno(stdout), _O_BINARY);
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}
