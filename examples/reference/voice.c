/* [voice] */
#include <tessaro/ClientAdapter.h>

#include <stdio.h>

/* Opens voice talk beside a live stream, in the codec that the device likes best. The new media ID, or -1; *ptPara
   then says how to code what is sent. */
int OpenVoice(int nStreamID, tagVoiceStreamPara* ptPara, StreamVoiceCallback pfnVoice, void* pUser)
{
    int nVoiceID = -1, nResult;
    *ptPara = (tagVoiceStreamPara){.dwSize = sizeof *ptPara};
    nResult = ClientAdapter_VoiceStreamConnect(&nVoiceID, nStreamID, ptPara);
    if (nResult == eResultOk)
    {
        nResult = ClientAdapter_VoiceStreamCB(nVoiceID, pfnVoice, (unsigned long)pUser);
    }
    if (nResult != eResultOk)
    {
        fprintf(stderr, "voice talk: %d\n", nResult);
        if (nVoiceID != -1) /* also a connection that failed has taken an ID */
        {
            ClientAdapter_VoiceStreamDisconnect(nVoiceID);
        }
        return -1;
    }
    return nVoiceID;
}

/* Sends one packet of voice; pData is ours again afterwards. */
int Say(int nVoiceID, unsigned char* pData, uint32_t dwLength)
{
    tagBuffer tBuffer = {.pData = pData, .dwLength = dwLength};
    return ClientAdapter_VoiceStreamSend(nVoiceID, &tBuffer);
}
/* [voice] */
