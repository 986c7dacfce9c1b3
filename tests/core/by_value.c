/* Records that cross by value, from C to C++: the ABI must be the same on both sides. Built with -std=c99 -pedantic. */

#include "adapter/ClientAdapter.h"

int UploadByValue(FileUploadCallback pfnUpload)
{
    const tagFileUploadState tState = {1, 2, 3, 4};
    return pfnUpload(0, tState, 6);
}

int DownloadByValue(FileDownloadCallback pfnDownload)
{
    const tagBuffer tBuffer = {0, 5};
    return pfnDownload(0, tBuffer, 7);
}
