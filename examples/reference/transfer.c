/* [transfer] */
#include "adapter/ClientAdapter.h"

#include <stdio.h>

/* Each block as it comes; the block is the plug-in's again when we return. dwUser is ours: the file to write. */
static int OnBlock(void* hDownload, tagBuffer tBlock, unsigned long dwUser)
{
    FILE* const pFile = (FILE*)dwUser;
    (void)hDownload;
    if (fwrite(tBlock.pData, 1, tBlock.dwLength, pFile) != tBlock.dwLength)
    {
        fputs("the disk is full\n", stderr);
    }
    return 0;
}

/* Starts a download into pFile, which must stay open until CloseDownload has returned. ptPara, which names the file, is
   an incomplete type here: it comes from code that has the device plug-in's own header, as eStart does. */
int OpenDownload(int nLoginID, tagFileDownloadPara* ptPara, eFileTransferControl eStart, FILE* pFile, int* pnMediaID)
{
    int nResult;
    *pnMediaID = -1;
    nResult = ClientAdapter_FileDownloadConnect(pnMediaID, nLoginID, ptPara);
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_FileDownloadCB(*pnMediaID, OnBlock, (unsigned long)pFile);
    }
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_FileDownloadControl(*pnMediaID, eStart);
    }
    return nResult; /* close it in any case */
}

void CloseDownload(int nMediaID)
{
    if (nMediaID != -1)
    {
        ClientAdapter_FileDownloadDisconnect(nMediaID);
    }
}
/* [transfer] */
