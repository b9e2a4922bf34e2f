// What the kernel's frame costs on top of a bare Direct3D 7 frame. One window
// and one context (640x480, windowed, 16 colour and 16 depth bits, as a
// restart makes them) serve both sides; rounds alternate so that drifts of the
// machine hit both alike:
//   kernel:       zynKernel_Render with an empty host routine, FPS line on;
//   kernel_nofps: the same with zynKernel_EnableDebugOutput(0);
//   raw:          BeginScene, Clear(target and depth), EndScene, UpdateFrame(0).
// The machine is shared, so a round's speed swings; the ratios are the
// medians of each round's kernel / raw ratio, which sets a round against its
// neighbour, and the fps figures are the frames over the seconds of all rounds.
// frame_fps_line_ms is what the FPS line adds to a frame. A host's view: only
// zynkernel.h and the import library.
#include <stdio.h>
#include <algorithm>

#include "zynbench.h"
#include "zynkernel.h"

#define FRAMES_PER_ROUND 200
#define ROUNDS 12

static void EmptyRender(int) {}

// Gives the window its messages between rounds, outside the timed part.
static void PumpMessages()
{
    MSG msg;
    while (PeekMessageA(&msg, NULL, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
}

// A bare Direct3D 7 frame on the kernel's context, as a program without the
// kernel would draw it.
static HRESULT RawFrame()
{
    if (SUCCEEDED(g_pD3DDev->BeginScene())) {
        g_pD3DX->Clear(D3DCLEAR_TARGET | D3DCLEAR_ZBUFFER);
        g_pD3DDev->EndScene();
    }
    return g_pD3DX->UpdateFrame(0);
}

// Seconds for FRAMES_PER_ROUND frames, or a negative number when a frame failed.
static double TimeRound(HRESULT (*pfnFrame)())
{
    PumpMessages();
    double fStart = Bench_Seconds();
    for (int i = 0; i < FRAMES_PER_ROUND; i++) {
        HRESULT hr = pfnFrame();
        if (FAILED(hr)) {
            fprintf(stderr, "frame_bench: a frame failed with 0x%08lX\n", (unsigned long)hr);
            return -1.0;
        }
    }
    return Bench_Seconds() - fStart;
}

int main()
{
    Bench_Start();
    zynKernel_EnableSystemReport(0);
    HRESULT hr = zynKernel_Initialize((char*)"frame_bench", GetModuleHandleA(NULL), 1, D3DX_DEFAULT, 640, 480, 16,
                                      16, 0, 0);
    if (FAILED(hr)) {
        fprintf(stderr, "frame_bench: zynKernel_Initialize failed with 0x%08lX\n", (unsigned long)hr);
        return 1;
    }
    zynKernel_SetRenderRoutine(EmptyRender);

    // One untimed round of each warms the driver and lets the FPS line appear.
    TimeRound(RawFrame);
    TimeRound(zynKernel_Render);

    // Each round runs the three kinds in a rotated order, so none always
    // follows the same one.
    HRESULT (*const pfnKinds[3])() = {RawFrame, zynKernel_Render, zynKernel_Render};
    const int bFPSLine[3] = {1, 1, 0};
    double fTotal[3] = {0.0, 0.0, 0.0};
    double fRatio[ROUNDS], fRatioNoFPS[ROUNDS];
    for (int nRound = 0; nRound < ROUNDS; nRound++) {
        double fSeconds[3];
        for (int i = 0; i < 3; i++) {
            int nKind = (nRound + i) % 3;
            zynKernel_EnableDebugOutput(bFPSLine[nKind]);
            fSeconds[nKind] = TimeRound(pfnKinds[nKind]);
            if (fSeconds[nKind] < 0.0) {
                zynKernel_Finalize();
                return 1;
            }
            fTotal[nKind] += fSeconds[nKind];
        }
        fRatio[nRound] = fSeconds[0] / fSeconds[1];
        fRatioNoFPS[nRound] = fSeconds[0] / fSeconds[2];
        printf("round %2d: raw %6.1f fps, kernel %6.1f fps, kernel without FPS line %6.1f fps\n", nRound,
               FRAMES_PER_ROUND / fSeconds[0], FRAMES_PER_ROUND / fSeconds[1], FRAMES_PER_ROUND / fSeconds[2]);
    }
    zynKernel_Finalize();

    double nFrames = (double)FRAMES_PER_ROUND * ROUNDS;
    std::sort(fRatio, fRatio + ROUNDS);
    std::sort(fRatioNoFPS, fRatioNoFPS + ROUNDS);
    Bench_Report("frame_kernel_fps", nFrames / fTotal[1]);
    Bench_Report("frame_raw_fps", nFrames / fTotal[0]);
    Bench_Report("frame_overhead_ratio", (fRatio[ROUNDS / 2 - 1] + fRatio[ROUNDS / 2]) / 2.0);
    Bench_Report("frame_kernel_nofps_fps", nFrames / fTotal[2]);
    Bench_Report("frame_overhead_ratio_nofps", (fRatioNoFPS[ROUNDS / 2 - 1] + fRatioNoFPS[ROUNDS / 2]) / 2.0);
    Bench_Report("frame_fps_line_ms", (fTotal[1] - fTotal[2]) * 1000.0 / nFrames);
    return 0;
}
