// The support layer's internal failure: thrown by value inside the layer and
// caught at every public entry, which returns m_hr. The message records the
// place; Report hands it to the debugger (Wine's +debugstr channel shows it).
#ifndef ZYNEXCEPTION_H
#define ZYNEXCEPTION_H

#include <windows.h>
#include <string.h>

struct CD3DXException {
    char m_szMessage[128];
    HRESULT m_hr;
    int m_nLine;

    CD3DXException(HRESULT hr, const char* szMessage, int nLine) : m_hr(hr), m_nLine(nLine)
    {
        strncpy(m_szMessage, szMessage ? szMessage : "", sizeof(m_szMessage) - 1);
        m_szMessage[sizeof(m_szMessage) - 1] = 0;
    }
    void Report() const
    {
        char szLine[192];
        wsprintfA(szLine, "D3DX: %s (0x%08lX, line %d)\n", m_szMessage, (unsigned long)m_hr, m_nLine);
        OutputDebugStringA(szLine);
    }
};

#define D3DX_THROW(hr, szMessage) throw CD3DXException((hr), (szMessage), __LINE__)
// Throws the call's own result with the place's message when it failed.
#define D3DX_CHECK(expr, szMessage)                 \
    do {                                            \
        HRESULT hrCheck_ = (expr);                  \
        if (FAILED(hrCheck_))                       \
            D3DX_THROW(hrCheck_, szMessage);        \
    } while (0)

// Wraps the body of a public entry: an exception becomes its result code.
#define D3DX_ENTRY_BEGIN try {
#define D3DX_ENTRY_END                              \
    }                                               \
    catch (const CD3DXException& e) {               \
        e.Report();                                 \
        return e.m_hr;                              \
    }                                               \
    catch (...) {                                   \
        return E_FAIL;                              \
    }

#endif
