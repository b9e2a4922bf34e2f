/* Renders the console font: a 512 x 64 A8R8G8B8 DDS file of 16 x 16 glyph
 * cells, 32 to a row, white with the glyph's antialiased coverage in alpha.
 * Row 0 holds '!' to '@', row 1 'A' to '_', row 2 'a' to 'z'; row 3 stays
 * empty (the blank's cell is its last one). Built for the host and run by
 * tools/make-font.sh:
 *     zynfont_gen FONT.ttf OUT.dds
 */
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb_truetype.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { WIDTH = 512, HEIGHT = 64, CELL = 16, PIXEL_HEIGHT = 16 };

static unsigned char g_aAlpha[HEIGHT][WIDTH];

static int CellOf(int c, int* pCol, int* pRow)
{
    if (c >= 0x21 && c <= 0x40) { *pCol = c - 0x21; *pRow = 0; return 1; }
    if (c >= 0x41 && c <= 0x5F) { *pCol = c - 0x41; *pRow = 1; return 1; }
    if (c >= 0x61 && c <= 0x7A) { *pCol = c - 0x61; *pRow = 2; return 1; }
    return 0;
}

static unsigned char* ReadAll(const char* szName, long* pnSize)
{
    FILE* f = fopen(szName, "rb");
    if (!f) return NULL;
    fseek(f, 0, SEEK_END);
    *pnSize = ftell(f);
    fseek(f, 0, SEEK_SET);
    unsigned char* p = malloc(*pnSize);
    if (p && fread(p, 1, *pnSize, f) != (size_t)*pnSize) { free(p); p = NULL; }
    fclose(f);
    return p;
}

static void Put32(unsigned char* p, unsigned int v)
{
    p[0] = v & 0xFF; p[1] = (v >> 8) & 0xFF; p[2] = (v >> 16) & 0xFF; p[3] = v >> 24;
}

int main(int argc, char** argv)
{
    if (argc != 3) { fprintf(stderr, "usage: zynfont_gen FONT.ttf OUT.dds\n"); return 2; }
    long nSize = 0;
    unsigned char* pTtf = ReadAll(argv[1], &nSize);
    stbtt_fontinfo font;
    if (!pTtf || !stbtt_InitFont(&font, pTtf, stbtt_GetFontOffsetForIndex(pTtf, 0))) {
        fprintf(stderr, "zynfont_gen: cannot read the font %s\n", argv[1]);
        return 1;
    }
    float fScale = stbtt_ScaleForPixelHeight(&font, PIXEL_HEIGHT);
    int nAscent, nDescent, nGap;
    stbtt_GetFontVMetrics(&font, &nAscent, &nDescent, &nGap);
    int nBaseline = (int)(nAscent * fScale + 0.5f);

    for (int c = 0x21; c < 0x7F; c++) {
        int nCol, nRow;
        if (!CellOf(c, &nCol, &nRow)) continue;
        int x0, y0, x1, y1;
        stbtt_GetCodepointBitmapBox(&font, c, fScale, fScale, &x0, &y0, &x1, &y1);
        unsigned char aGlyph[CELL * 2][CELL * 2];
        memset(aGlyph, 0, sizeof(aGlyph));
        int w = x1 - x0, h = y1 - y0;
        if (w > CELL * 2) w = CELL * 2;
        if (h > CELL * 2) h = CELL * 2;
        stbtt_MakeCodepointBitmap(&font, &aGlyph[0][0], w, h, CELL * 2, fScale, fScale, c);
        /* one pixel in from the cell's left edge: the console advances by 11 */
        for (int y = 0; y < h; y++) {
            for (int x = 0; x < w; x++) {
                int px = 1 + x0 + x, py = nBaseline + y0 + y;
                if (px < 0 || px >= CELL || py < 0 || py >= CELL) continue;
                g_aAlpha[nRow * CELL + py][nCol * CELL + px] = aGlyph[y][x];
            }
        }
    }

    static unsigned char aFile[4 + 124 + WIDTH * HEIGHT * 4];
    memset(aFile, 0, sizeof(aFile));
    memcpy(aFile, "DDS ", 4);
    unsigned char* d = aFile + 4;
    Put32(d + 0, 124);          /* dwSize */
    Put32(d + 4, 0x100F);       /* caps, height, width, pitch, pixel format */
    Put32(d + 8, HEIGHT);
    Put32(d + 12, WIDTH);
    Put32(d + 16, WIDTH * 4);   /* lPitch */
    Put32(d + 72, 32);          /* ddpfPixelFormat.dwSize */
    Put32(d + 76, 0x41);        /* RGB with alpha */
    Put32(d + 84, 32);
    Put32(d + 88, 0xFF0000);
    Put32(d + 92, 0xFF00);
    Put32(d + 96, 0xFF);
    Put32(d + 100, 0xFF000000u);
    Put32(d + 104, 0x1000);     /* ddsCaps.dwCaps: texture */
    unsigned char* p = aFile + 128;
    for (int y = 0; y < HEIGHT; y++)
        for (int x = 0; x < WIDTH; x++, p += 4)
            Put32(p, 0x00FFFFFFu | ((unsigned int)g_aAlpha[y][x] << 24));

    FILE* f = fopen(argv[2], "wb");
    if (!f || fwrite(aFile, 1, sizeof(aFile), f) != sizeof(aFile)) {
        fprintf(stderr, "zynfont_gen: cannot write %s\n", argv[2]);
        return 1;
    }
    fclose(f);
    free(pTtf);
    return 0;
}
