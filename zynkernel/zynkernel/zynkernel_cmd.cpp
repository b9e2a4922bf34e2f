// The kernel's console commands ("Pause", "Test", "BgColor", "Memory", "Evict",
// "DebugOutput"), the memory report, and running frames for a while.
#include "zynkernel/zynkernel_local.h"
#include "zynconsole.h"

#include <stdlib.h>

enum {
    ID_PAUSE = 0xC01, ID_TEST = 0xC02, ID_BGCOLOR = 0xC03, ID_MEMORY = 0xC04, ID_EVICT = 0xC0A,
    ID_DEBUGOUTPUT = 0xC0B
};

struct KERNELCOMMAND {
    const char* szModule;
    const char* szName;
    unsigned long dwID;
    int nArgs, nOptional;
};

// in order of registration
static const KERNELCOMMAND g_Commands[] = {
    {"Kernel", "Pause", ID_PAUSE, 0, 0},       {"", "Test", ID_TEST, 0, 0},
    {"Kernel", "BgColor", ID_BGCOLOR, 3, 3},   {"Kernel", "Memory", ID_MEMORY, 0, 0},
    {"Kernel", "Evict", ID_EVICT, 0, 0},       {"Kernel", "DebugOutput", ID_DEBUGOUTPUT, 1, 0},
};

void zynKernel_RegisterCommands()
{
    for (const KERNELCOMMAND& c : g_Commands)
        zynConsole_RegisterCommand(c.szModule, c.szName, c.nArgs, zynKernel_CommandRoutine, c.dwID, c.nOptional, 0);
}

void zynKernel_RenderFor(DWORD dwMilliseconds)
{
    DWORD dwStart = GetTickCount();
    while (GetTickCount() - dwStart < dwMilliseconds)
        zynKernel_Render();
}

// Free and total texture memory of one kind; the results of the query are not looked at.
static void QueryMemory(DWORD dwCaps, DWORD* pFree, DWORD* pTotal)
{
    DDSCAPS2 caps = {};
    caps.dwCaps = dwCaps;
    g_pDD->GetAvailableVidMem(&caps, pTotal, pFree);
}

// Local video memory for textures, then texture memory of every kind.
static void QueryTextureMemory(DWORD* pLocalFree, DWORD* pLocalTotal, DWORD* pAllFree, DWORD* pAllTotal)
{
    QueryMemory(DDSCAPS_TEXTURE | DDSCAPS_LOCALVIDMEM, pLocalFree, pLocalTotal);
    QueryMemory(DDSCAPS_TEXTURE, pAllFree, pAllTotal);
}

HRESULT zynKernel_Memory(DWORD* pLocalFree, DWORD* pLocalTotal, DWORD* pAllFree, DWORD* pAllTotal)
{
    if (!g_bActive || g_pDD == NULL)
        return E_FAIL;
    QueryTextureMemory(pLocalFree, pLocalTotal, pAllFree, pAllTotal);
    return S_OK;
}

static void MemoryCommand()
{
    DWORD dwLocalFree = 0, dwLocalTotal = 0, dwAllFree = 0, dwAllTotal = 0;
    if (g_pDD != NULL)
        QueryTextureMemory(&dwLocalFree, &dwLocalTotal, &dwAllFree, &dwAllTotal);
    zynConsole_UrgentPrint("Local: %d/%d; AGP: %d/%d", dwLocalFree >> 20, dwLocalTotal >> 20, dwAllFree >> 20,
                           dwAllTotal >> 20);
}

// Console output with frames running in between.
static void TestCommand()
{
    zynConsole_Print("Console test");
    zynConsole_Print("\nDemonstrates\tstandart console behaviour...");
    zynConsole_Print("\nHeavy\t\tcalculations...");
    zynConsole_Print("\nPerforming");
    for (int i = 0; i < 20; i++) {
        zynConsole_Print(".");
        zynKernel_RenderFor(20);
    }
    zynConsole_Print("\nDone.");
    zynConsole_Print("\nAnother test...");
    zynConsole_Print("\nPerforming:     ");
    for (int i = 0; i <= 100; i++) {
        zynConsole_Print("\b\b\b\b%3d%%", i);
        zynKernel_RenderFor(10);
    }
    zynConsole_Print("\nDone0xfe.");
    zynConsole_Print("\nTable:E");
    zynConsole_Print("\n");
    for (int i = 1; i <= 5; i++)
        zynConsole_Print("\tCol%d", i);
    for (int i = 1; i <= 5; i++) {
        zynConsole_Print("\nLine%d", i);
        for (int k = 0; k < 5; k++)
            zynConsole_Print("\t%d", rand());
    }
    zynConsole_Print("\nDone.\nPress any key....");
}

void zynKernel_CommandRoutine(unsigned long dwID, int nArgs, char** ppArgs)
{
    switch (dwID) {
    case ID_PAUSE: g_bPause = !g_bPause; break;
    case ID_TEST: TestCommand(); break;
    case ID_BGCOLOR:
        if (ppArgs != NULL) {
            DWORD dwRed = atoi(ppArgs[0] ? ppArgs[0] : "") & 0xFF, dwGreen = atoi(ppArgs[1] ? ppArgs[1] : "") & 0xFF;
            DWORD dwBlue = atoi(ppArgs[2] ? ppArgs[2] : "") & 0xFF;
            zynKernel_SetBackgroundColor(0xFF000000 | dwRed << 16 | dwGreen << 8 | dwBlue);
        }
        break;
    case ID_MEMORY: MemoryCommand(); break;
    case ID_EVICT:
        if (g_pD3D != NULL)
            g_pD3D->EvictManagedTextures();
        break;
    case ID_DEBUGOUTPUT:
        if (ppArgs != NULL && nArgs >= 1)
            g_bDebugTextOff = (atoi(ppArgs[0] ? ppArgs[0] : "") == 0);
        break;
    default: break;
    }
}
