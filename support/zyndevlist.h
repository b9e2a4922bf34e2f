// The device list: what DirectDraw devices the system has, which rasterizers
// each offers, their display modes, and what each can do at a mode. Built once
// at the first context and kept until D3DXUninitialize; a device index names a
// pair of a DirectDraw device and a rasterizer and does not change meanwhile.
//
// Step by step (the context does this): D3DXGlobals()->Init();
// CheckAndMapD3duHandle to turn an index or a D3DX_HWLEVEL_ into an index;
// FindNode for its CD3duDeviceNode; through its m_pDDNode set the cooperative
// level, the display mode and the primary; RefreshCaps at the first buffers.
//
// Failures throw CD3DXException (zynexception.h); the public entries of the
// layer catch it.
#ifndef ZYNDEVLIST_H
#define ZYNDEVLIST_H

#include "zynsupport.h"
#include "zynexception.h"

// A singly linked list of nodes whose first member is m_pNext. AddSorted puts
// a node before the first node for which Compare(new, node) is true.
template <class T>
class CD3duList {
public:
    int m_bOK;
    DWORD m_nCount;
    T* m_pHead;

    CD3duList() : m_bOK(1), m_nCount(0), m_pHead(NULL) {}
    virtual ~CD3duList() { Clear(); }
    virtual void Clear()
    {
        while (m_pHead) {
            T* pNext = m_pHead->m_pNext;
            delete m_pHead;
            m_pHead = pNext;
        }
        m_nCount = 0;
    }
    virtual void AddHead(T* pNode)
    {
        pNode->m_pNext = m_pHead;
        m_pHead = pNode;
        m_nCount++;
    }
    virtual void Remove(T* pNode)
    {
        for (T** pp = &m_pHead; *pp; pp = &(*pp)->m_pNext) {
            if (*pp == pNode) {
                *pp = pNode->m_pNext;
                pNode->m_pNext = NULL;
                m_nCount--;
                return;
            }
        }
    }
    virtual bool Compare(const T*, const T*) { return false; }
    virtual void AddSorted(T* pNode)
    {
        T** pp = &m_pHead;
        while (*pp && !Compare(pNode, *pp))
            pp = &(*pp)->m_pNext;
        pNode->m_pNext = *pp;
        *pp = pNode;
        m_nCount++;
    }
};

// what a surface format can be used for
#define D3DU_FORMAT_DEPTH        0x01
#define D3DU_FORMAT_STENCIL      0x02
#define D3DU_FORMAT_COLOR        0x04
#define D3DU_FORMAT_BUMP         0x08
#define D3DU_FORMAT_LUMINANCE    0x10
#define D3DU_FORMAT_RENDERTARGET 0x20

struct CSurfaceFormat {
    CSurfaceFormat* m_pNext;
    D3DX_SURFACEFORMAT m_Format;  // code of the format table, or D3DX_SF_UNKNOWN
    DDPIXELFORMAT m_ddpf;
    DWORD m_dwUsage;              // D3DU_FORMAT_ bits
};
typedef CD3duList<CSurfaceFormat> CSurfaceFormatList;

// Depth and stencil bits of a Z buffer format.
DWORD D3duDepthBits(const DDPIXELFORMAT& ddpf);
DWORD D3duStencilBits(const DDPIXELFORMAT& ddpf);

struct CRefreshRate {
    CRefreshRate* m_pNext;
    DWORD m_nRate;
};
class CRefreshRateList : public CD3duList<CRefreshRate> {
public:
    bool Compare(const CRefreshRate* a, const CRefreshRate* b) override { return a->m_nRate < b->m_nRate; }
    void AddRate(DWORD nRate);
    bool HasRate(DWORD nRate) const;
};

struct CVideoMode {
    CVideoMode* m_pNext;
    DWORD m_nWidth, m_nHeight, m_nBits;
    int m_bProbed;
    int m_bHave2D, m_bHave3D, m_bHaveFormats, m_bHaveTnL, m_bHaveTnLFormats;
    CRefreshRateList m_Rates;
    DDCAPS* m_pDDCaps;
    D3DDEVICEDESC7* m_pHALDesc;
    CSurfaceFormatList m_HALFormats;
    D3DDEVICEDESC7* m_pTnLDesc;
    CSurfaceFormatList m_TnLFormats;

    CVideoMode(DWORD nWidth, DWORD nHeight, DWORD nBits);
    ~CVideoMode();
};

// Sorted ascending by width, then height, then bit depth.
class CVideoModeList : public CD3duList<CVideoMode> {
public:
    bool Compare(const CVideoMode* a, const CVideoMode* b) override;
    void AddVideoMode(DWORD nWidth, DWORD nHeight, DWORD nBits, DWORD nRefresh);
    CVideoMode* Find(DWORD nWidth, DWORD nHeight, DWORD nBits) const;
};

// One DirectDraw device.
struct CDDrawDeviceNode {
    CDDrawDeviceNode* m_pNext;
    int m_bDesktop;
    GUID* m_pGuid;                  // null for the primary display driver
    GUID m_guidDevice;              // tells two enumerations of one card apart
    HMONITOR m_hMonitor;
    IDirectDraw7* m_pDD;
    IDirect3D7* m_pD3D;
    IDirectDrawSurface7* m_pPrimary;  // shared by the contexts on this device
    DWORD m_nPrimaryBackBuffers;
    int m_bPrimary3D;
    int m_nExclusive;               // contexts at full screen
    DWORD m_dwCoopFlags;
    HWND m_hwndCoop, m_hwndCoopFocus;
    char* m_pszDescription;
    char* m_pszTnLName;
    char* m_pszHALName;
    int m_bHAL, m_bTnL;
    CVideoModeList m_Modes;
    int m_bEnumOK;

    CDDrawDeviceNode();
    ~CDDrawDeviceNode();
    void SetCooperativeLevel(HWND hwnd, DWORD dwFlags, HWND hwndFocus, int bRelease);
    void SetDisplayMode(DWORD nWidth, DWORD nHeight, DWORD nBits, DWORD nRefresh, DWORD dwFlags);
    void CreatePrimary(int bFullscreen, DWORD nBackBuffers);
    IDirectDrawSurface7* GetPrimary();
    void ReleasePrimary();
    void GetCurrentVideoMode(CVideoMode* pMode);
};

class CDDrawDeviceList : public CD3duList<CDDrawDeviceNode> {
public:
    void Build();
};

struct CHelInfoDevice {
    char m_szName[128];
    int m_bFormats;
    D3DDEVICEDESC7 m_Desc;
    CSurfaceFormatList m_Formats;
};

// What the software rasterizers can do; needs no hardware.
class CHelInfo {
public:
    DDCAPS m_ddHelCaps;
    int m_bRGB, m_bRef, m_bNull;
    CHelInfoDevice* m_pRGB;
    CHelInfoDevice* m_pRef;
    CHelInfoDevice* m_pNull;

    CHelInfo();
    ~CHelInfo();
    void Initialize();
    CHelInfoDevice* ForLevel(int nLevel);
};

// One pair of a DirectDraw device and a rasterizer: what an index means.
struct CD3duDeviceNode {
    CD3duDeviceNode* m_pNext;
    CDDrawDeviceNode* m_pDDNode;
    IDirectDraw7* m_pDD;
    IDirect3D7* m_pD3D;
    DDCAPS m_ddCaps, m_ddHelCaps;
    D3DDEVICEDESC7 m_Desc;
    CSurfaceFormatList m_Formats;
    // public record
    DWORD m_nIndex;
    int m_nHWLevel;
    GUID m_guidDDraw;
    GUID m_guidD3D;
    char m_szDescription[256];
    HMONITOR m_hMonitor;
    int m_bDesktop;

    CD3duDeviceNode();
    ~CD3duDeviceNode();
    void RefreshCaps();
    void GetCapsAtVideoMode(CVideoMode* pMode, D3DDEVICEDESC7** ppDesc, DDCAPS** ppDDCaps, DDCAPS** ppHelCaps,
                            CSurfaceFormatList** ppFormats);
};

class CD3duDeviceList : public CD3duList<CD3duDeviceNode> {
public:
    void Build(CDDrawDeviceList* pDDrawList, CHelInfo* pHel);
};

class CD3duContext;
struct CD3duContextNode {
    CD3duContextNode* m_pNext;
    CD3duContext* m_pContext;
};
class CD3duContextList : public CD3duList<CD3duContextNode> {
public:
    void AddD3duContext(CD3duContext* pContext);
    void RemoveD3duContext(CD3duContext* pContext);
};

class CD3duGlobals {
public:
    int m_bInitialized;
    CHelInfo* m_pHelInfo;
    CDDrawDeviceList* m_pDDrawList;
    CD3duDeviceList* m_pDeviceList;
    CD3duContextList* m_pContextList;

    CD3duGlobals();
    ~CD3duGlobals();
    void Init();
    void CheckAndMapD3duHandle(DWORD* pIndex);
    void FindBestMatchForHWLevel(DWORD dwLevel, DWORD* pIndex);
    CD3duDeviceNode* FindNode(DWORD nIndex);
};

extern CD3duGlobals* g_pD3DXGlobals;

#endif
