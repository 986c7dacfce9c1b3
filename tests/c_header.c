/* The C API and the plug-in interface, as a C99 program sees them: built with -std=c99 -pedantic. */

#include "adapter/ClientAdapter.h"

static int OnFrame(void* hStream, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    return hStream && ptFrame && ptFrame->dwFlags == eFrameKey && dwUser ? eResultOk : eResultUnknownMedia;
}

/* Records that cross by value, from C to C++: the ABI must be the same on both sides. */
int PassByValue(FileUploadCallback pfnUpload, FileDownloadCallback pfnDownload)
{
    tagFileUploadState tState = {1, 2, 3, 4};
    tagBuffer tBuffer = {0, 5};
    return pfnUpload(0, tState, 6) + pfnDownload(0, tBuffer, 7);
}

int UseApi(void)
{
    int nLogin = -1;
    int nMedia = -1;
    tagUserLoginPara tLogin = {.szAddress = "rtsp://192.0.2.10/live"};
    tagRealStreamPara tStream = {.dwStreamKind = eStreamMain};
    eProtocolType eType = eProtocolRTSP;
    return ClientAdapter_UserLogin(&nLogin, eType, &tLogin) ||
           ClientAdapter_RealStreamConnect(&nMedia, nLogin, &tStream) ||
           ClientAdapter_StreamMediaCB(nMedia, OnFrame, 1) || ClientAdapter_RealStreamDisconnect(nMedia) ||
           ClientAdapter_UserLogout(nLogin);
}
