/* [transfer] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Each block as it comes; the block is the plug-in's again when we return. dwUser is ours: the file to write. */
static int OnBlock(void* hDownload, tagBuffer tBlock, unsigned long dwUser)
{
    FILE* const pFile = (FILE*)dwUser;
    (void)hDownload;
    if (!tBlock.pData)
    {
        printf("the end: %s (%u)\n", tBlock.dwLength == eResultOk ? "all has come" : "broken off", tBlock.dwLength);
    }
    else if (fwrite(tBlock.pData, 1, tBlock.dwLength, pFile) != tBlock.dwLength)
    {
        fputs("the disk is full\n", stderr);
    }
    return 0;
}

/* Starts a download of a recorded file into pFile, which must stay open until CloseDownload has returned. szFile: its
   name on the device, from a query. */
int OpenDownload(int nLoginID, char const* szFile, FILE* pFile, int* pnMediaID)
{
    tagFileDownloadPara tPara = {.dwSize = sizeof tPara, .dwKind = eFileRecording, .dwFormat = eFileFormatMp4};
    int nResult;
    *pnMediaID = -1;
    snprintf(tPara.szFile, sizeof tPara.szFile, "%s", szFile);
    nResult = ClientAdapter_FileDownloadConnect(pnMediaID, nLoginID, &tPara);
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_FileDownloadCB(*pnMediaID, OnBlock, (unsigned long)pFile);
    }
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_FileDownloadControl(*pnMediaID, eTransferStart);
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
