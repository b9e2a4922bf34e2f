#include "zyntest.h"

#include <stdio.h>
#include <string.h>

struct HrName {
    HRESULT hr;
    const char* szName;
};

static const HrName s_HrNames[] = {
    {S_OK, "S_OK"},
    {S_FALSE, "S_FALSE"},
    {(HRESULT)0x80004005, "E_FAIL"},
    {(HRESULT)0x80070006, "E_HANDLE"},
    {(HRESULT)0x80004004, "E_ABORT"},
    {(HRESULT)0x80070057, "E_INVALIDARG"},
    {(HRESULT)0x80004002, "E_NOINTERFACE"},
    {(HRESULT)0x8007000E, "E_OUTOFMEMORY"},
    {(HRESULT)0x887601C2, "DDERR_SURFACELOST"},
    {(HRESULT)0x88760245, "DDERR_NOEXCLUSIVEMODE"},
    {(HRESULT)0x88760091, "DDERR_INVALIDMODE"},
};

static const char* s_D3dxNames[] = {
    "D3DXERR_NOMEMORY", "D3DXERR_NULLPOINTER", "D3DXERR_INVALIDD3DXDEVICEINDEX",
    "D3DXERR_NODIRECTDRAWAVAILABLE", "D3DXERR_NODIRECT3DAVAILABLE", "D3DXERR_NODIRECT3DDEVICEAVAILABLE",
    "D3DXERR_NOPRIMARYAVAILABLE", "D3DXERR_NOZBUFFERAVAILABLE", "D3DXERR_NOBACKBUFFERAVAILABLE",
    "D3DXERR_COULDNTUPDATECAPS", "D3DXERR_NOZBUFFER", "D3DXERR_INVALIDMODE", "D3DXERR_INVALIDPARAMETER",
    "D3DXERR_INITFAILED", "D3DXERR_STARTUPFAILED", "D3DXERR_D3DXNOTSTARTEDYET", "D3DXERR_NOTINITIALIZED",
    "D3DXERR_FAILEDDRAWTEXT", "D3DXERR_BADD3DXCONTEXT", "D3DXERR_CAPSNOTSUPPORTED",
    "D3DXERR_UNSUPPORTEDFILEFORMAT", "D3DXERR_IFLERROR", "D3DXERR_FAILEDGETCAPS",
    "D3DXERR_CANNOTRESIZEFULLSCREEN", "D3DXERR_CANNOTRESIZENONWINDOWED", "D3DXERR_FRONTBUFFERALREADYEXISTS",
    "D3DXERR_FULLSCREENPRIMARYEXISTS", "D3DXERR_GETDCFAILED", "D3DXERR_BITBLTFAILED", "D3DXERR_NOTEXTURE",
    "D3DXERR_MIPLEVELABSENT", "D3DXERR_SURFACENOTPALETTED", "D3DXERR_ENUMFORMATSFAILED",
    "D3DXERR_COLORDEPTHTOOLOW", "D3DXERR_INVALIDFILEFORMAT", "D3DXERR_NOMATCHFOUND",
};

// Names are spelled out here rather than taken from the code under test, so a
// wrong table there cannot make a wrong result look right.
std::string HrText(HRESULT hr)
{
    char szBuf[96];
    const char* szName = NULL;
    for (const HrName& n : s_HrNames)
        if (n.hr == hr)
            szName = n.szName;
    DWORD dwIndex = (DWORD)hr - 0xC8770BB8u;
    if (!szName && dwIndex < sizeof(s_D3dxNames) / sizeof(s_D3dxNames[0]))
        szName = s_D3dxNames[dwIndex];
    if (szName)
        snprintf(szBuf, sizeof(szBuf), "0x%08lX (%s)", (unsigned long)hr, szName);
    else
        snprintf(szBuf, sizeof(szBuf), "0x%08lX", (unsigned long)hr);
    return szBuf;
}

::testing::AssertionResult HrIs(const char* szGotExpr, const char* szWantExpr, HRESULT hrGot, HRESULT hrWant)
{
    if (hrGot == hrWant)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << szGotExpr << " gave " << HrText(hrGot) << ", expected "
                                         << HrText(hrWant) << " (" << szWantExpr << ")";
}

std::string ColorText(DWORD dwColor)
{
    char szBuf[16];
    snprintf(szBuf, sizeof(szBuf), "0x%08lX", (unsigned long)dwColor);
    return szBuf;
}

::testing::AssertionResult ColorNear(DWORD dwGot, DWORD dwWant, int nTolerance, bool bAlpha)
{
    for (int nShift = 0; nShift < (bAlpha ? 32 : 24); nShift += 8) {
        int nGot = (dwGot >> nShift) & 0xFF, nWant = (dwWant >> nShift) & 0xFF;
        if (abs(nGot - nWant) > nTolerance)
            return ::testing::AssertionFailure() << "got " << ColorText(dwGot) << ", expected "
                                                 << ColorText(dwWant) << " within " << nTolerance;
    }
    return ::testing::AssertionSuccess();
}

static LRESULT CALLBACK TestWndProc(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (uMsg == WM_PAINT) {
        ValidateRect(hwnd, NULL);
        return 0;
    }
    if (uMsg == WM_ERASEBKGND)
        return 1;
    return DefWindowProcA(hwnd, uMsg, wParam, lParam);
}

ZynTestWindow::ZynTestWindow(int nWidth, int nHeight, DWORD dwStyle)
{
    static bool s_bRegistered = false;
    if (!s_bRegistered) {
        WNDCLASSA wc = {};
        wc.lpfnWndProc = TestWndProc;
        wc.hInstance = GetModuleHandleA(NULL);
        wc.hCursor = LoadCursor(NULL, IDC_ARROW);
        wc.hbrBackground = NULL;  // the context owns every pixel; GDI must not erase them
        wc.lpszClassName = "zynTestWindow";
        RegisterClassA(&wc);
        s_bRegistered = true;
    }
    RECT rc = {0, 0, nWidth, nHeight};
    AdjustWindowRect(&rc, dwStyle, FALSE);
    m_hwnd = CreateWindowExA(0, "zynTestWindow", "zyn test", dwStyle, 0, 0, rc.right - rc.left,
                             rc.bottom - rc.top, NULL, NULL, GetModuleHandleA(NULL), NULL);
    ShowWindow(m_hwnd, SW_SHOW);
    UpdateWindow(m_hwnd);
    PumpMessages(10);
}

ZynTestWindow::~ZynTestWindow() { Destroy(); }

void ZynTestWindow::Destroy()
{
    if (m_hwnd && IsWindow(m_hwnd))
        DestroyWindow(m_hwnd);
    m_hwnd = NULL;
    PumpMessages(0);
}

ZynScreenMode CurrentScreenMode()
{
    HDC hdc = GetDC(NULL);
    ZynScreenMode mode = {GetDeviceCaps(hdc, HORZRES), GetDeviceCaps(hdc, VERTRES), GetDeviceCaps(hdc, BITSPIXEL)};
    ReleaseDC(NULL, hdc);
    return mode;
}

void PumpMessages(DWORD nMilliseconds)
{
    DWORD dwEnd = GetTickCount() + nMilliseconds;
    do {
        MSG msg;
        while (PeekMessageA(&msg, NULL, 0, 0, PM_REMOVE)) {
            TranslateMessage(&msg);
            DispatchMessageA(&msg);
        }
        if (nMilliseconds)
            Sleep(1);
    } while ((LONG)(GetTickCount() - dwEnd) < 0);
}

// Expands one channel of a masked pixel to 8 bits.
static DWORD ExpandChannel(DWORD dwPixel, DWORD dwMask)
{
    if (!dwMask)
        return 0;
    int nShift = 0;
    while (!((dwMask >> nShift) & 1))
        nShift++;
    DWORD dwMax = dwMask >> nShift;
    return ((dwPixel & dwMask) >> nShift) * 255 / dwMax;
}

DWORD ReadSurfacePixel(IDirectDrawSurface7* pSurface, int x, int y)
{
    DDSURFACEDESC2 ddsd = {};
    ddsd.dwSize = sizeof(ddsd);
    if (FAILED(pSurface->Lock(NULL, &ddsd, DDLOCK_WAIT | DDLOCK_READONLY, NULL)))
        return 0xDEADBEEF;
    const DDPIXELFORMAT& pf = ddsd.ddpfPixelFormat;
    const BYTE* pRow = (const BYTE*)ddsd.lpSurface + y * ddsd.lPitch;
    DWORD dwPixel = 0;
    memcpy(&dwPixel, pRow + x * (pf.dwRGBBitCount / 8), pf.dwRGBBitCount / 8);
    pSurface->Unlock(NULL);
    DWORD dwAlpha = (pf.dwFlags & DDPF_ALPHAPIXELS) ? ExpandChannel(dwPixel, pf.dwRGBAlphaBitMask) : 0xFF;
    return (dwAlpha << 24) | (ExpandChannel(dwPixel, pf.dwRBitMask) << 16) |
           (ExpandChannel(dwPixel, pf.dwGBitMask) << 8) | ExpandChannel(dwPixel, pf.dwBBitMask);
}

int CountInkPixels(IDirectDrawSurface7* pSurface, const RECT& rc, DWORD dwBackground, int nStepX)
{
    if (!pSurface)
        return -1;
    int nInk = 0;
    for (int y = rc.top; y < rc.bottom; y++)
        for (int x = rc.left; x < rc.right; x += nStepX)
            nInk += !ColorNear(ReadSurfacePixel(pSurface, x, y), dwBackground, 32);
    return nInk;
}

// BitBlt from the window's DC into a DIB: what was presented to the window,
// whichever way (GDI or a blit to the primary surface) it got there.
DWORD ReadWindowPixel(HWND hwnd, int x, int y)
{
    HDC hdc = GetDC(hwnd);
    HDC hdcMem = CreateCompatibleDC(hdc);
    BITMAPINFO bmi = {};
    bmi.bmiHeader.biSize = sizeof(bmi.bmiHeader);
    bmi.bmiHeader.biWidth = 1;
    bmi.bmiHeader.biHeight = 1;
    bmi.bmiHeader.biPlanes = 1;
    bmi.bmiHeader.biBitCount = 32;
    void* pBits = NULL;
    HBITMAP hbm = CreateDIBSection(hdcMem, &bmi, DIB_RGB_COLORS, &pBits, NULL, 0);
    HGDIOBJ hOld = SelectObject(hdcMem, hbm);
    BitBlt(hdcMem, 0, 0, 1, 1, hdc, x, y, SRCCOPY);
    GdiFlush();
    DWORD dwPixel = *(DWORD*)pBits;
    SelectObject(hdcMem, hOld);
    DeleteObject(hbm);
    DeleteDC(hdcMem);
    ReleaseDC(hwnd, hdc);
    return 0xFF000000u | (dwPixel & 0xFFFFFF);
}

DWORD ReadPresentedPixel(IDirectDrawSurface7* pPrimary, HWND hwnd, int x, int y)
{
    POINT pt = {x, y};
    ClientToScreen(hwnd, &pt);
    return ReadSurfacePixel(pPrimary, pt.x, pt.y);
}

static HHOOK s_hMessageBoxHook;
static std::vector<ZynMessageBoxRecord> s_MessageBoxes;

// A message box is a dialog of class #32770 whose static text has the id 0xFFFF.
// It is recorded and closed the moment it is activated.
static LRESULT CALLBACK MessageBoxHook(int nCode, WPARAM wParam, LPARAM lParam)
{
    if (nCode == HCBT_ACTIVATE) {
        HWND hwnd = (HWND)wParam;
        char szClass[32] = "";
        GetClassNameA(hwnd, szClass, sizeof(szClass));
        if (strcmp(szClass, "#32770") == 0) {
            ZynMessageBoxRecord rec;
            char szBuf[1024] = "";
            GetWindowTextA(hwnd, szBuf, sizeof(szBuf));
            rec.szCaption = szBuf;
            szBuf[0] = 0;
            GetDlgItemTextA(hwnd, 0xFFFF, szBuf, sizeof(szBuf));
            rec.szText = szBuf;
            s_MessageBoxes.push_back(rec);
            PostMessageA(hwnd, WM_COMMAND, IDOK, 0);
            PostMessageA(hwnd, WM_COMMAND, IDCANCEL, 0);
        }
    }
    return CallNextHookEx(s_hMessageBoxHook, nCode, wParam, lParam);
}

void InstallMessageBoxGuard()
{
    if (!s_hMessageBoxHook)
        s_hMessageBoxHook = SetWindowsHookExA(WH_CBT, MessageBoxHook, NULL, GetCurrentThreadId());
}

std::vector<ZynMessageBoxRecord>& MessageBoxLog() { return s_MessageBoxes; }

typedef LONG(NTAPI* PFN_NTQUERYSYSTEMINFORMATION)(ULONG, PVOID, ULONG, PULONG);

struct ZynHandleEntry {
    ULONG dwOwnerPid;
    BYTE bObjectType;
    BYTE bFlags;
    USHORT wHandle;
    PVOID pObject;
    ACCESS_MASK dwAccess;
};
struct ZynHandleInfo {
    ULONG nCount;
    ZynHandleEntry Entries[1];
};

long CountProcessHandles()
{
    static PFN_NTQUERYSYSTEMINFORMATION pfnQuery =
        (PFN_NTQUERYSYSTEMINFORMATION)(void*)GetProcAddress(GetModuleHandleA("ntdll.dll"), "NtQuerySystemInformation");
    if (!pfnQuery)
        return -1;
    std::vector<BYTE> buf(1 << 20);
    ULONG nNeeded = 0;
    LONG status;
    while ((status = pfnQuery(16, buf.data(), (ULONG)buf.size(), &nNeeded)) == (LONG)0xC0000004)
        buf.resize(buf.size() * 2);
    if (status < 0)
        return -1;
    const ZynHandleInfo* pInfo = (const ZynHandleInfo*)buf.data();
    long nOurs = 0;
    for (ULONG i = 0; i < pInfo->nCount; i++)
        if (pInfo->Entries[i].dwOwnerPid == GetCurrentProcessId())
            nOurs++;
    return nOurs;
}

long CountHeapBlocks()
{
    HANDLE hHeaps[256];
    DWORD nHeaps = GetProcessHeaps(256, hHeaps);
    long nBlocks = 0;
    for (DWORD i = 0; i < nHeaps && i < 256; i++) {
        if (!HeapLock(hHeaps[i]))
            continue;
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(hHeaps[i], &entry))
            if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY)
                nBlocks++;
        HeapUnlock(hHeaps[i]);
    }
    return nBlocks;
}
