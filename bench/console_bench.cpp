// BENCH console_statements_per_s: simple statements ("Print x" and a command of
// a module with a prefix) through zynConsole_ExecuteString, best of five rounds.
// BENCH console_print_growth_bytes: growth of the busy bytes of all heaps over
// 1,000,000 prints after a warm-up, with a log open; the goal is 0.
#include "zynbench.h"

#include "zynconsole.h"

#include <stdio.h>

static void Nothing(unsigned long, int, char**) {}

// Busy bytes of every heap of the process (Wine reports no private usage).
static SIZE_T HeapBusyBytes()
{
    HANDLE hHeaps[256];
    DWORD nHeaps = GetProcessHeaps(256, hHeaps);
    SIZE_T nBytes = 0;
    for (DWORD i = 0; i < nHeaps && i < 256; i++) {
        if (!HeapLock(hHeaps[i]))
            continue;
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(hHeaps[i], &entry)) {
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)
                nBytes += entry.cbData;
        }
        HeapUnlock(hHeaps[i]);
    }
    return nBytes;
}

int main()
{
    Bench_Start();
    if (FAILED(zynConsole_Initialize())) {
        fprintf(stderr, "console_bench: the console does not start\n");
        return 1;
    }
    zynConsole_RegisterCommand("Bench", "Two", 2, Nothing, 0x7000, 0, 0);
    char szLog[MAX_PATH];
    GetTempPathA(sizeof(szLog), szLog);
    lstrcatA(szLog, "console_bench.log");

    const int nLines = 100000;
    double fBest = 0;
    for (int nRound = 0; nRound < 5; nRound++) {
        double t0 = Bench_Seconds();
        for (int i = 0; i < nLines; i++)
            zynConsole_ExecuteString((i & 1) ? "Print x" : "Bench:Two a \"b c\"");
        double fRate = nLines / (Bench_Seconds() - t0);
        fBest = fRate > fBest ? fRate : fBest;
    }
    Bench_Report("console_statements_per_s", fBest);

    zynConsole_EnableLog(szLog);
    for (int i = 0; i < 100000; i++)
        zynConsole_Print("line %d %s %5.2f\n", i, "text", i * 0.5);
    SIZE_T nBefore = HeapBusyBytes();
    for (int i = 0; i < 1000000; i++)
        zynConsole_Print("line %d %s %5.2f\n", i, "text", i * 0.5);
    SIZE_T nAfter = HeapBusyBytes();
    Bench_Report("console_print_growth_bytes", (double)nAfter - (double)nBefore);

    zynConsole_Finalize();
    DeleteFileA(szLog);
    return 0;
}
