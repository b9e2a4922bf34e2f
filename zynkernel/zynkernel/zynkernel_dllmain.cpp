#include <windows.h>

// The kernel keeps its module handle for the font resource and the window class.
HINSTANCE g_hZynModule;

BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
    if (dwReason == DLL_PROCESS_ATTACH) {
        g_hZynModule = hInstance;
        DisableThreadLibraryCalls(hInstance);
    }
    return TRUE;
}
