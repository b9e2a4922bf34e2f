// The large-block helpers: zero-filled blocks at stable addresses, and
// nothing for a size of 0.
#include "zyntest.h"
#include "zynmemory.h"

#include <string.h>

TEST(KernelMemory, SizeZeroGivesNull)
{
    EXPECT_TRUE(zynAlloc(0) == NULL);
}

TEST(KernelMemory, BlocksAreZeroedEvenWhereEarlierBlocksWereFilled)
{
    static const unsigned long sizes[] = {1, 28, 4096, 65536 + 3, 1 << 20};
    for (int nRound = 0; nRound < 3; nRound++) {
        for (unsigned long dwSize : sizes) {
            unsigned char* pBlock = (unsigned char*)zynAlloc(dwSize);
            ASSERT_TRUE(pBlock != NULL) << "size " << dwSize;
            unsigned long dwFirstNonZero = dwSize;
            for (unsigned long i = 0; i < dwSize && dwFirstNonZero == dwSize; i++)
                if (pBlock[i])
                    dwFirstNonZero = i;
            EXPECT_EQ(dwFirstNonZero, dwSize) << "size " << dwSize << ", round " << nRound;
            memset(pBlock, 0xA5, dwSize);
            zynFree(pBlock);
        }
    }
}

TEST(KernelMemory, FreedBlocksLeaveNothingBehind)
{
    void* pWarm = zynAlloc(64);
    zynFree(pWarm);
    long nBefore = CountHeapBlocks();
    void* pBlocks[200];
    for (int i = 0; i < 200; i++)
        pBlocks[i] = zynAlloc(100 + i * 37);
    EXPECT_GE(CountHeapBlocks() - nBefore, 200) << "blocks are not counted, so this test sees nothing";
    for (int i = 0; i < 200; i++)
        zynFree(pBlocks[i]);
    EXPECT_EQ(CountHeapBlocks() - nBefore, 0);
}
