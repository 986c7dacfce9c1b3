/* Talks to a device for two seconds and listens to it: sends a tone, and counts what comes back. */

#include "Tour.h"

#include <math.h>

/* Voice from the device; dwUser is ours. */
static int OnVoice(void* hVoice, eVoiceStreamSource eSource, tagStreamVoiceFrame const* ptFrame, unsigned long dwUser)
{
    (void)hVoice;
    if (eSource == eVoiceFromDevice && ptFrame->dwLength > 0)
    {
        Count((tagCounter*)dwUser);
    }
    return 0;
}

/* One sample as G.711, by A-law or mu-law. Both have a sign, an exponent and four bits behind it. */
static unsigned char Encode(int nSample, int bALaw)
{
    const int nSign = (nSample < 0) == bALaw ? 0 : 0x80;
    int nValue = (nSample < 0 ? -nSample : nSample) + (bALaw ? 0 : 132), nExponent = 7, nShift;
    if (nValue > 32767)
    {
        nValue = 32767;
    }
    while (nExponent > 0 && !(nValue & (0x80 << nExponent)))
    {
        --nExponent;
    }
    nShift = bALaw && nExponent == 0 ? 4 : nExponent + 3;
    nValue = nSign | nExponent << 4 | ((nValue >> nShift) & 15);
    return (unsigned char)(bALaw ? nValue ^ 0x55 : ~nValue);
}

/* [say] */
/* A tone of 440 Hz, one packet after the other, each at its time. */
static int Say(int nVoice, tagVoiceStreamPara const* ptPara, int nPackets)
{
    unsigned char abyPacket[1600];
    const uint32_t dwLength = ptPara->dwSampleRate * ptPara->dwPacketMs / 1000;
    unsigned long dwSample = 0;
    if (!Expect(dwLength > 0 && dwLength <= sizeof abyPacket, "packets are of a usual length"))
    {
        return 0;
    }
    for (int i = 0; i < nPackets; ++i)
    {
        tagBuffer tPacket = {.pData = abyPacket, .dwLength = dwLength};
        for (uint32_t j = 0; j < dwLength; ++j)
        {
            abyPacket[j] = Encode((int)(8000 * sin(6.2831853 * 440 * (double)dwSample++ / ptPara->dwSampleRate)),
                                  ptPara->dwCodec == eCodecG711A);
        }
        if (!Worked(ClientAdapter_VoiceStreamSend(nVoice, &tPacket), "sending"))
        {
            return 0;
        }
        Sleep((int)ptPara->dwPacketMs);
    }
    return 1;
}
/* [say] */

/* [talk] */
/* Mu-law, where the device takes it; else what the device chooses. */
static int OpenTalk(int* pnVoice, int nStream, tagVoiceStreamPara* ptPara)
{
    int nResult;
    ptPara->dwCodec = eCodecG711U;
    nResult = ClientAdapter_VoiceStreamConnect(pnVoice, nStream, ptPara);
    if (nResult == eResultRefused)
    {
        puts("The device takes no mu-law.");
        ptPara->dwCodec = ptPara->dwSampleRate = 0;
        nResult = ClientAdapter_VoiceStreamConnect(pnVoice, nStream, ptPara);
    }
    return Worked(nResult, "opening voice talk") &&
           Expect(ptPara->dwCodec == eCodecG711U || ptPara->dwCodec == eCodecG711A, "the device takes G.711");
}

static int Talk(int nStream)
{
    tagVoiceStreamPara tPara = {.dwSize = sizeof tPara, .dwSampleRate = 8000};
    tagCounter tHeard = COUNTER;
    int nVoice = -1, bWorked;
    bWorked = OpenTalk(&nVoice, nStream, &tPara) &&
              Worked(ClientAdapter_VoiceStreamCB(nVoice, OnVoice, (unsigned long)&tHeard), "asking for voice");
    if (bWorked)
    {
        printf("Talking: %s, %" PRIu32 " samples a second, packets of %" PRIu32 " ms.\n",
               tPara.dwCodec == eCodecG711U ? "mu-law" : "A-law", tPara.dwSampleRate, tPara.dwPacketMs);
        bWorked = Say(nVoice, &tPara, 100) && Await(&tHeard, 50, 5, "voice");
    }
    ClientAdapter_VoiceStreamDisconnect(nVoice); /* tHeard isn't used after this */
    printf("Heard %lu packets.\n", Counted(&tHeard));
    return bWorked;
}
/* [talk] */

/* Voice talk belongs to a media connection: here a live stream whose frames nobody asks for. */
static int TalkBesideStream(int nLogin)
{
    tagRealStreamPara tPara = {.dwChannel = 0, .dwStreamKind = eStreamSub};
    int nStream = -1, bWorked;
    if (!Worked(ClientAdapter_RealStreamConnect(&nStream, nLogin, &tPara), "opening a stream"))
    {
        return 0;
    }
    bWorked = Talk(nStream);
    return Worked(ClientAdapter_RealStreamDisconnect(nStream), "closing the stream") && bWorked;
}

int main(int nArguments, char** aszArguments)
{
    const int nLogin = BeginTour(nArguments, aszArguments);
    return EndTour(nLogin, nLogin != -1 && TalkBesideStream(nLogin));
}
