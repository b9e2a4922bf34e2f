// The JPEG library interface of the image readers: a record, an init, a read in
// two steps (parameters, then the whole picture) and a free. Decoding is done by
// stb_image; this layer reads the frame header itself, so that four-channel
// (CMYK) files report their true channel count.
//
// Step by step: ijlInit(&jcp); set JPGFile (file modes) or JPGBytes and
// JPGSizeBytes (memory modes); ijlRead(&jcp, IJL_JFILE_READPARAMS or
// IJL_JBUFF_READPARAMS) fills JPGWidth, JPGHeight, JPGChannels; set DIBBytes,
// DIBWidth, DIBHeight, DIBPadBytes, DIBChannels and DIBColor; ijlRead with
// IJL_JFILE_READWHOLEIMAGE or IJL_JBUFF_READWHOLEIMAGE; ijlFree(&jcp).
//
// Instead of giving a block, a caller may set DIBAllocate with DIBBytes null,
// DIBChannels 4, DIBColor IJL_BGR (or IJL_OTHER) and DIBPadBytes 0: the
// whole-image read then leaves the decoder's own block of blue, green, red, 255
// in DIBBytes, and the caller releases it with delete[] (one copy fewer).
//
// Results: IJL_OK (0) on success, a negative IJLERR otherwise; after a failed
// read the output block may hold part of a picture, and a block the read was
// to allocate is not there (DIBBytes stays null).
//
// Limits: DIBChannels 3 or 4, rows top first, DIBWidth and DIBHeight equal to
// the picture's. DIBColor IJL_BGR, IJL_RGB, or IJL_OTHER (taken as blue, green,
// red, also for CMYK files, which stb_image turns to RGB). In file mode the
// file's bytes are held between ijlRead and ijlFree. Nothing is kept between an
// ijlFree and the next ijlInit.
#ifndef ZYNIJL_H
#define ZYNIJL_H

#include <windows.h>

enum IJLERR {
    IJL_OK = 0,
    IJL_NULL_POINTER = -1,
    IJL_INVALID_PARAM = -2,
    IJL_FILE_ERROR = -3,
    IJL_BAD_STREAM = -4,
    IJL_MEMORY_ERROR = -5,
    IJL_DIB_MISMATCH = -6,
    IJL_DECODE_ERROR = -7,
};

enum IJLIOTYPE {
    IJL_JFILE_READPARAMS = 0,
    IJL_JBUFF_READPARAMS = 1,
    IJL_JFILE_READWHOLEIMAGE = 2,
    IJL_JBUFF_READWHOLEIMAGE = 3,
};

enum IJL_COLOR {
    IJL_RGB = 1,
    IJL_BGR = 2,
    IJL_YCBCR = 3,
    IJL_G = 4,
    IJL_OTHER = 255,
};

struct ZYNIJLSTATE;

struct JPEG_CORE_PROPERTIES {
    // the output picture (in)
    BYTE* DIBBytes;
    DWORD DIBWidth;
    int DIBHeight;
    DWORD DIBPadBytes;
    DWORD DIBChannels;
    IJL_COLOR DIBColor;
    BOOL DIBAllocate;    // the read allocates DIBBytes itself (see above)
    // the compressed stream (in) and what its header says (out)
    const char* JPGFile;
    const BYTE* JPGBytes;
    DWORD JPGSizeBytes;
    DWORD JPGWidth;
    DWORD JPGHeight;
    DWORD JPGChannels;
    IJL_COLOR JPGColor;
    // working state between ijlInit and ijlFree
    ZYNIJLSTATE* pState;
};

// jpeg calls
IJLERR ijlInit(JPEG_CORE_PROPERTIES* jcprops);
IJLERR ijlFree(JPEG_CORE_PROPERTIES* jcprops);
IJLERR ijlRead(JPEG_CORE_PROPERTIES* jcprops, IJLIOTYPE iotype);

#endif
