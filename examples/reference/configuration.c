/* [configuration] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* Changes the bit rate of a channel's main stream: reads the block, changes the record in it, writes it back. */
int SetBitRate(int nLoginID, uint32_t dwChannel, uint32_t dwKilobits)
{
    tagConfigInformation* const ptBlock = calloc(1, sizeof *ptBlock); /* a quarter of a megabyte: not on the stack */
    int nResult = eResultNoResources;
    if (ptBlock)
    {
        tagConfigVideoEncoder tVideo;
        ptBlock->type = eConfigVideoEncoder;
        ptBlock->index = dwChannel;
        ptBlock->extra[1] = eStreamMain;
        nResult = ClientAdapter_GetConfig(nLoginID, ptBlock);
        if (nResult == eResultOk)
        {
            memcpy(&tVideo, ptBlock->data, sizeof tVideo);
            tVideo.dwBitRate = dwKilobits;
            memcpy(ptBlock->data, &tVideo, sizeof tVideo); /* what a newer device has behind it stays */
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
