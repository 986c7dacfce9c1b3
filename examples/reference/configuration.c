/* [configuration] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Changes some bytes of a device's configuration: reads the block, changes it, writes it back. What dwType and dwIndex
   name, and what stands where in the block, the device protocol defines. */
int ChangeConfig(int nLoginID, uint32_t dwType, uint32_t dwIndex, size_t nOffset, void const* pNew, size_t nLength)
{
    tagConfigInformation* const ptBlock = calloc(1, sizeof *ptBlock); /* a quarter of a megabyte: not on the stack */
    int nResult = eResultNoEntryPoint;
    if (ptBlock && nOffset <= sizeof ptBlock->data && nLength <= sizeof ptBlock->data - nOffset)
    {
        ptBlock->type = dwType;
        ptBlock->index = dwIndex;
        nResult = ClientAdapter_GetConfig(nLoginID, ptBlock);
        if (nResult == eResultOk)
        {
            memcpy(ptBlock->data + nOffset, pNew, nLength);
            nResult = ClientAdapter_SetConfig(nLoginID, ptBlock);
        }
    }
    free(ptBlock);
    return nResult;
}

/* Attributes are the RTSP plug-in's own: no login. */
void PrintStreams(void)
{
    unsigned long dwOpen = 0, dwMost = 0;
    if (ClientAdapter_GetAttribute(eAttributeOpenStreams, &dwOpen) == eResultOk &&
        ClientAdapter_GetAttribute(eAttributeMaxChannel, &dwMost) == eResultOk)
    {
        printf("%lu of at most %lu RTSP streams are open\n", dwOpen, dwMost);
    }
}
/* [configuration] */
