// zyndemo: the smallest complete host of zynKernel, and the model to copy when
// writing one. It includes only the exported headers (zynkernel.h) and links
// only the import library zynKernel.lib.
//
// Step by step, as main() below does it:
//   1. zynKernel_Initialize: let the kernel make its window (title, instance),
//      or make a window of our own whose procedure calls zynKernel_WndProc and
//      pass its handle (--own-window).
//   2. Install the host's routines: zynKernel_SetRenderRoutine (called once a
//      frame inside the scene, with the target cleared and the device unlit,
//      untextured, alpha-blended and writing depth), a key routine, and a
//      cascade routine that sees every window message last.
//   3. zynKernel_MainLoop until the window closes, Escape is pressed or the
//      routine calls zynKernel_BreakMainLoop.
//   4. zynKernel_Finalize.
// The render routine draws a spinning colour cube with plain Direct3D 7 calls
// on g_pD3DDev; the matrices are computed here with plain arithmetic.
//
// Options: --frames N (quit after N frames), --screenshot FILE.png (write the
// last frame), --fullscreen, --size WxH (default 640x480), --own-window.
// Exit codes: 0 done; 1 bad command line; 2 the kernel did not start or the
// frame loop ended on a failure; 3 the last frame is blank (fewer than
// DEMO_MIN_COLOURS colours); 4 the last frame could not be read or written.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <math.h>
#include <algorithm>
#include <vector>

#include "zynkernel.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include "stb_image_write.h"
#pragma GCC diagnostic pop

// The FPS line alone gives a couple of colours on the background; the shaded
// cube gives hundreds.
#define DEMO_MIN_COLOURS 16

struct DemoOptions {
    int nFrames;              // quit after this many frames; 0 runs until closed
    const char* szScreenshot; // PNG written from the last frame, or null
    int bFullscreen;
    int bOwnWindow;
    DWORD dwWidth, dwHeight;
};

static DemoOptions g_Options = {0, NULL, 0, 0, 640, 480};
static int g_nFramesDrawn;       // frames the render routine has drawn
static double g_fStartSeconds;   // clock at the first frame, for the animation
static HHOOK g_hMessageBoxHook;  // closes message boxes in a headless run

// ---------------------------------------------------------------------------
// the scene: a unit cube whose corners carry their own colour

struct DemoVertex {
    float x, y, z;
    DWORD dwDiffuse;
};
#define DEMO_FVF (D3DFVF_XYZ | D3DFVF_DIFFUSE)

static const DemoVertex g_CubeCorners[8] = {
    {-1, -1, -1, 0xFF000000}, {1, -1, -1, 0xFFFF0000}, {-1, 1, -1, 0xFF00FF00}, {1, 1, -1, 0xFFFFFF00},
    {-1, -1, 1, 0xFF0000FF},  {1, -1, 1, 0xFFFF00FF},  {-1, 1, 1, 0xFF00FFFF},  {1, 1, 1, 0xFFFFFFFF},
};
// Two triangles a face, clockwise seen from outside (Direct3D's front faces).
static WORD g_CubeIndices[36] = {
    0, 2, 3, 0, 3, 1,  // z = -1
    4, 5, 7, 4, 7, 6,  // z = +1
    0, 4, 6, 0, 6, 2,  // x = -1
    1, 3, 7, 1, 7, 5,  // x = +1
    0, 1, 5, 0, 5, 4,  // y = -1
    2, 6, 7, 2, 7, 3,  // y = +1
};

static D3DMATRIX IdentityMatrix()
{
    D3DMATRIX m;
    memset(&m, 0, sizeof(m));
    m._11 = m._22 = m._33 = m._44 = 1.0f;
    return m;
}

// Row vectors, as Direct3D multiplies them: a * b applies a first.
static D3DMATRIX MultiplyMatrices(const D3DMATRIX& a, const D3DMATRIX& b)
{
    // The sixteen fields _11 to _44 lie in row order.
    const float* pA = &a._11;
    const float* pB = &b._11;
    D3DMATRIX m;
    float* pM = &m._11;
    for (int r = 0; r < 4; r++)
        for (int c = 0; c < 4; c++) {
            float fSum = 0.0f;
            for (int k = 0; k < 4; k++)
                fSum += pA[r * 4 + k] * pB[k * 4 + c];
            pM[r * 4 + c] = fSum;
        }
    return m;
}

static D3DMATRIX RotationY(float fAngle)
{
    D3DMATRIX m = IdentityMatrix();
    m._11 = cosf(fAngle);
    m._13 = -sinf(fAngle);
    m._31 = sinf(fAngle);
    m._33 = cosf(fAngle);
    return m;
}

static D3DMATRIX RotationX(float fAngle)
{
    D3DMATRIX m = IdentityMatrix();
    m._22 = cosf(fAngle);
    m._23 = sinf(fAngle);
    m._32 = -sinf(fAngle);
    m._33 = cosf(fAngle);
    return m;
}

// Left-handed perspective: x and y scaled by the field of view, z from
// fNear..fFar to 0..1, w = z.
static D3DMATRIX Perspective(float fFovY, float fAspect, float fNear, float fFar)
{
    D3DMATRIX m;
    memset(&m, 0, sizeof(m));
    float fScaleY = 1.0f / tanf(fFovY * 0.5f);
    float fQ = fFar / (fFar - fNear);
    m._11 = fScaleY / fAspect;
    m._22 = fScaleY;
    m._33 = fQ;
    m._34 = 1.0f;
    m._43 = -fQ * fNear;
    return m;
}

static double Seconds()
{
    LARGE_INTEGER freq, now;
    QueryPerformanceFrequency(&freq);
    QueryPerformanceCounter(&now);
    return (double)now.QuadPart / (double)freq.QuadPart;
}

// Called by the kernel once a frame, between BeginScene and EndScene.
static void DemoRender(int bPaused)
{
    if (g_nFramesDrawn == 0)
        g_fStartSeconds = Seconds();
    // Paused, the cube holds still; frames go on being drawn.
    static float s_fAngle = 0.0f;
    static double s_fLastSeconds = 0.0;
    double fNow = Seconds() - g_fStartSeconds;
    if (!bPaused)
        s_fAngle += (float)(fNow - s_fLastSeconds);
    s_fLastSeconds = fNow;

    DWORD dwWidth = 1, dwHeight = 1;
    g_pD3DX->GetBufferSize(&dwWidth, &dwHeight);

    // Spin about the cube's vertical axis, then tip its top towards the camera.
    D3DMATRIX world = MultiplyMatrices(RotationY(s_fAngle + 0.6f), RotationX(-0.5f));
    D3DMATRIX view = IdentityMatrix();
    view._43 = 5.0f;  // the camera 5 units in front of the cube, looking down +z
    D3DMATRIX projection = Perspective(3.14159265f / 3.0f, (float)dwWidth / (float)dwHeight, 1.0f, 100.0f);
    g_pD3DDev->SetTransform(D3DTRANSFORMSTATE_WORLD, &world);
    g_pD3DDev->SetTransform(D3DTRANSFORMSTATE_VIEW, &view);
    g_pD3DDev->SetTransform(D3DTRANSFORMSTATE_PROJECTION, &projection);

    g_pD3DDev->SetRenderState(D3DRENDERSTATE_ZENABLE, D3DZB_TRUE);
    g_pD3DDev->SetRenderState(D3DRENDERSTATE_CULLMODE, D3DCULL_CCW);
    g_pD3DDev->DrawIndexedPrimitive(D3DPT_TRIANGLELIST, DEMO_FVF, (void*)g_CubeCorners, 8, g_CubeIndices, 36, 0);

    zynKernel_DrawDebugText(0.01f, 0.0f, 0xFFFFFFFF, (char*)"zyndemo: Esc quits, Pause holds the cube");

    g_nFramesDrawn++;
    if (g_Options.nFrames > 0 && g_nFramesDrawn >= g_Options.nFrames)
        zynKernel_BreakMainLoop();
}

// ---------------------------------------------------------------------------
// window messages and keys

static void DemoKeyDown(HWND, int nKey)
{
    if (nKey == VK_ESCAPE)
        zynKernel_BreakMainLoop();
}

// The last stop of every message. The kernel has already posted the quit
// message for WM_CLOSE; the window itself must live until zynKernel_Finalize,
// so the default procedure (which would destroy it) does not see WM_CLOSE.
static LRESULT DemoCascade(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (uMsg == WM_CLOSE)
        return 0;
    return DefWindowProcA(hWnd, uMsg, wParam, lParam);
}

// The procedure of a window of our own: everything goes through the kernel.
static LRESULT CALLBACK DemoWndProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    return zynKernel_WndProc(hWnd, uMsg, wParam, lParam);
}

static HWND MakeOwnWindow(HINSTANCE hInstance)
{
    WNDCLASSA wc;
    memset(&wc, 0, sizeof(wc));
    wc.lpfnWndProc = DemoWndProc;
    wc.hInstance = hInstance;
    wc.hCursor = LoadCursorA(NULL, MAKEINTRESOURCEA(32512));
    wc.hbrBackground = (HBRUSH)GetStockObject(BLACK_BRUSH);
    wc.lpszClassName = "zyndemo";
    if (!RegisterClassA(&wc))
        return NULL;
    DWORD dwStyle = g_Options.bFullscreen ? WS_POPUP : WS_OVERLAPPEDWINDOW;
    RECT rc = {0, 0, (LONG)g_Options.dwWidth, (LONG)g_Options.dwHeight};
    AdjustWindowRect(&rc, dwStyle, FALSE);
    HWND hWnd = CreateWindowExA(0, "zyndemo", "zyndemo (own window)", dwStyle, CW_USEDEFAULT, CW_USEDEFAULT,
                                rc.right - rc.left, rc.bottom - rc.top, NULL, NULL, hInstance, NULL);
    if (hWnd) {
        ShowWindow(hWnd, SW_SHOW);
        UpdateWindow(hWnd);
    }
    return hWnd;
}

// A message box would wait forever for a click in a headless run: print its
// text and close it the moment it comes up. Every box of the kernel has only
// an OK button; the box's text is its static control 0xFFFF.
static LRESULT CALLBACK MessageBoxHook(int nCode, WPARAM wParam, LPARAM lParam)
{
    HWND hBox = (HWND)wParam;
    if (nCode == HCBT_ACTIVATE && GetDlgItem(hBox, 0xFFFF)) {
        char szCaption[256] = "", szText[1024] = "";
        GetWindowTextA(hBox, szCaption, sizeof(szCaption));
        GetDlgItemTextA(hBox, 0xFFFF, szText, sizeof(szText));
        fprintf(stderr, "zyndemo: message box \"%s\": %s\n", szCaption, szText);
        PostMessageA(hBox, WM_COMMAND, IDOK, 0);
    }
    return CallNextHookEx(g_hMessageBoxHook, nCode, wParam, lParam);
}

// ---------------------------------------------------------------------------
// the screenshot

// One channel of a pixel, scaled to 0..255, from its mask in the surface format.
static BYTE ExpandChannel(DWORD dwPixel, DWORD dwMask)
{
    if (!dwMask)
        return 0;
    int nShift = 0;
    while (!(dwMask & (1u << nShift)))
        nShift++;
    DWORD dwMax = dwMask >> nShift;
    return (BYTE)(((dwPixel & dwMask) >> nShift) * 255u / dwMax);
}

// Copies a locked 16, 24 or 32-bit RGB surface into tight R, G, B bytes.
static int ReadSurfaceRGB(IDirectDrawSurface7* pSurface, std::vector<BYTE>& rgb, int* pWidth, int* pHeight)
{
    DDSURFACEDESC2 ddsd;
    memset(&ddsd, 0, sizeof(ddsd));
    ddsd.dwSize = sizeof(ddsd);
    HRESULT hr = pSurface->Lock(NULL, &ddsd, DDLOCK_WAIT | DDLOCK_READONLY, NULL);
    if (FAILED(hr)) {
        fprintf(stderr, "zyndemo: cannot lock the frame's surface (0x%08lX)\n", (unsigned long)hr);
        return 0;
    }
    const DDPIXELFORMAT& pf = ddsd.ddpfPixelFormat;
    DWORD dwBytes = pf.dwRGBBitCount / 8;
    int bOk = (pf.dwFlags & DDPF_RGB) && dwBytes >= 2 && dwBytes <= 4;
    if (bOk) {
        *pWidth = (int)ddsd.dwWidth;
        *pHeight = (int)ddsd.dwHeight;
        rgb.resize((size_t)ddsd.dwWidth * ddsd.dwHeight * 3);
        BYTE* pOut = rgb.data();
        for (DWORD y = 0; y < ddsd.dwHeight; y++) {
            const BYTE* pRow = (const BYTE*)ddsd.lpSurface + (size_t)y * ddsd.lPitch;
            for (DWORD x = 0; x < ddsd.dwWidth; x++) {
                DWORD dwPixel = 0;
                memcpy(&dwPixel, pRow + x * dwBytes, dwBytes);
                *pOut++ = ExpandChannel(dwPixel, pf.dwRBitMask);
                *pOut++ = ExpandChannel(dwPixel, pf.dwGBitMask);
                *pOut++ = ExpandChannel(dwPixel, pf.dwBBitMask);
            }
        }
    } else {
        fprintf(stderr, "zyndemo: the frame's surface is not 16, 24 or 32-bit RGB\n");
    }
    pSurface->Unlock(NULL);
    return bOk;
}

static size_t CountColours(const std::vector<BYTE>& rgb)
{
    std::vector<DWORD> colours(rgb.size() / 3);
    for (size_t i = 0; i < colours.size(); i++)
        colours[i] = ((DWORD)rgb[i * 3] << 16) | ((DWORD)rgb[i * 3 + 1] << 8) | rgb[i * 3 + 2];
    std::sort(colours.begin(), colours.end());
    return (size_t)(std::unique(colours.begin(), colours.end()) - colours.begin());
}

// Reads the last frame: in a window the context's back buffer keeps it after
// the present; at full screen the flip has moved it to the front buffer.
// Returns the exit code: 0, 3 (blank) or 4 (not read or not written).
static int WriteScreenshot(const char* szFile)
{
    IDirectDrawSurface7* pSurface = NULL;
    if (g_bFullscreen) {
        pSurface = g_pPrimaryBuffer;
        if (pSurface)
            pSurface->AddRef();
    } else {
        pSurface = g_pD3DX->GetBackBuffer(0);
    }
    if (!pSurface) {
        fprintf(stderr, "zyndemo: no surface holds the last frame\n");
        return 4;
    }
    std::vector<BYTE> rgb;
    int nWidth = 0, nHeight = 0;
    int bRead = ReadSurfaceRGB(pSurface, rgb, &nWidth, &nHeight);
    pSurface->Release();
    if (!bRead)
        return 4;

    if (!stbi_write_png(szFile, nWidth, nHeight, 3, rgb.data(), nWidth * 3)) {
        fprintf(stderr, "zyndemo: cannot write %s\n", szFile);
        return 4;
    }
    size_t nColours = CountColours(rgb);
    printf("zyndemo: wrote %s, %dx%d, %u colours\n", szFile, nWidth, nHeight, (unsigned)nColours);
    if (nColours < DEMO_MIN_COLOURS) {
        fprintf(stderr, "zyndemo: the last frame looks blank: %u colours, expected at least %d\n",
                (unsigned)nColours, DEMO_MIN_COLOURS);
        return 3;
    }
    return 0;
}

// ---------------------------------------------------------------------------

static int ParseOptions(int argc, char** argv)
{
    for (int i = 1; i < argc; i++) {
        const char* szArg = argv[i];
        const char* szValue = i + 1 < argc ? argv[i + 1] : NULL;
        if (strcmp(szArg, "--fullscreen") == 0) {
            g_Options.bFullscreen = 1;
        } else if (strcmp(szArg, "--own-window") == 0) {
            g_Options.bOwnWindow = 1;
        } else if (strcmp(szArg, "--frames") == 0 && szValue) {
            g_Options.nFrames = atoi(szValue);
            i++;
            if (g_Options.nFrames <= 0)
                return 0;
        } else if (strcmp(szArg, "--screenshot") == 0 && szValue) {
            g_Options.szScreenshot = szValue;
            i++;
        } else if (strcmp(szArg, "--size") == 0 && szValue) {
            unsigned long w = 0, h = 0;
            i++;
            if (sscanf(szValue, "%lux%lu", &w, &h) != 2 || w < 16 || h < 16 || w > 8192 || h > 8192)
                return 0;
            g_Options.dwWidth = (DWORD)w;
            g_Options.dwHeight = (DWORD)h;
        } else {
            return 0;
        }
    }
    return 1;
}

int main(int argc, char** argv)
{
    if (!ParseOptions(argc, argv)) {
        fprintf(stderr, "usage: zyndemo [--frames N] [--screenshot FILE.png] [--fullscreen] [--size WxH] "
                        "[--own-window]\n");
        return 1;
    }
    if (g_Options.nFrames > 0 || g_Options.szScreenshot)
        g_hMessageBoxHook = SetWindowsHookExA(WH_CBT, MessageBoxHook, NULL, GetCurrentThreadId());

    // 1. Start: 32 colour bits, 24 depth bits (devices pair 32-bit colour with
    // 24-bit depth), no stencil, double buffered.
    HINSTANCE hInstance = GetModuleHandleA(NULL);
    int bWindowed = !g_Options.bFullscreen;
    HWND hOwnWindow = NULL;
    HRESULT hr;
    if (g_Options.bOwnWindow) {
        hOwnWindow = MakeOwnWindow(hInstance);
        if (!hOwnWindow) {
            fprintf(stderr, "zyndemo: cannot make the window\n");
            return 2;
        }
        hr = zynKernel_Initialize(hOwnWindow, bWindowed, D3DX_DEFAULT, 0, 0, 32, 24, 0, 0);
    } else {
        hr = zynKernel_Initialize((char*)"zyndemo", hInstance, bWindowed, D3DX_DEFAULT, g_Options.dwWidth,
                                  g_Options.dwHeight, 32, 24, 0, 0);
    }
    int nExit = 0;
    if (FAILED(hr)) {
        fprintf(stderr, "zyndemo: zynKernel_Initialize failed (0x%08lX)\n", (unsigned long)hr);
        nExit = 2;
    } else {
        // 2. The host's routines.
        zynKernel_SetRenderRoutine(DemoRender);
        zynKernel_SetKeyDownRoutine(DemoKeyDown);
        zynKernel_SetWndProcCascade(DemoCascade);
        zynKernel_SetBackgroundColor(0xFF203048);

        // 3. Frames until closed, Escape or --frames. On a failed frame the
        // kernel has shown the error and stopped itself.
        hr = zynKernel_MainLoop();
        if (FAILED(hr) || !g_pD3DX) {
            fprintf(stderr, "zyndemo: the frame loop ended on 0x%08lX\n", (unsigned long)hr);
            nExit = 2;
        } else if (g_Options.szScreenshot) {
            nExit = WriteScreenshot(g_Options.szScreenshot);
        }
        // 4. Stop.
        zynKernel_Finalize();
    }
    printf("zyndemo: %d frames\n", g_nFramesDrawn);
    if (hOwnWindow) {
        DestroyWindow(hOwnWindow);
        UnregisterClassA("zyndemo", hInstance);
    }
    if (g_hMessageBoxHook)
        UnhookWindowsHookEx(g_hMessageBoxHook);
    return nExit;
}
