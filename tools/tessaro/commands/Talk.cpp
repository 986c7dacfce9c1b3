// talk: sound to a device, and what it says in return.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Interrupt.h"
#include "tools/tessaro/Stream.h"
#include "tools/tessaro/media/Sound.h"

#include <RecordTables.h>
#include <memory>
#include <mutex>

namespace tessaro
{
namespace
{
struct tagTalkOptions
{
    std::string strAddress;
    tagLiveOptions tLive;
    std::string strSound;
    std::string strListen;
    double dSeconds = 0;
};

struct tagHeard
{
    std::mutex tMutex;
    std::unique_ptr<CWavFile> pFile;
    std::uint64_t ullPackets = 0;
};

int OnVoice(void*, eVoiceStreamSource, tagStreamVoiceFrame const* ptFrame, unsigned long dwUser)
{
    auto& tHeard = *reinterpret_cast<tagHeard*>(dwUser);
    const std::lock_guard tLock(tHeard.tMutex);
    ++tHeard.ullPackets;
    if (tHeard.pFile)
    {
        tHeard.pFile->Take(*ptFrame);
    }
    return 0;
}

// Sends a packet each dwPacketMs; the device keeps no time for its caller.
std::uint64_t Send(COutput& tOut, int nVoice, CSoundSource& tSource, tagVoiceStreamPara const& tAgreed, long long llEnd)
{
    std::uint64_t ullSent = 0;
    const long long llBegin = NowMs();
    for (std::vector<unsigned char> aby = tSource.Next(); !aby.empty() && NowMs() < llEnd; aby = tSource.Next())
    {
        tagBuffer tBuffer{aby.data(), static_cast<std::uint32_t>(aby.size())};
        Check(ClientAdapter_VoiceStreamSend(nVoice, &tBuffer), "sending sound");
        ++ullSent;
        const long long llNext = llBegin + static_cast<long long>(ullSent * tAgreed.dwPacketMs);
        WaitUntil([&] { return NowMs() >= llNext; }, llNext - NowMs());
        if (CInterrupt::Instance().Asked())
        {
            break;
        }
        if (ullSent % 50 == 0)
        {
            tOut.Status(fmt::format("talking for {} s", ullSent * tAgreed.dwPacketMs / 1000));
        }
    }
    return ullSent;
}

int Run(tagContext& tContext, tagTalkOptions const& tOptions)
{
    if (tOptions.strSound.empty() && tOptions.strListen.empty())
    {
        throw CFailure(eExitUsage, "there is nothing to do: give a sound file, --listen, or both");
    }
    tagHeard tHeard;
    tHeard.pFile = tOptions.strListen.empty() ? nullptr : std::make_unique<CWavFile>(tOptions.strListen);
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("way to talk");
    CLiveStream tParent(tSession, tOptions.tLive, nullptr);
    auto tPara = Sized<tagVoiceStreamPara>();
    tPara.dwCodec = eCodecG711A;
    tPara.dwSampleRate = 8000;
    tPara.dwFlags = tOptions.strSound.empty() ? eVoiceListenOnly : 0;
    CMedia tVoice(&ClientAdapter_VoiceStreamDisconnect);
    Check(ClientAdapter_VoiceStreamConnect(tVoice.Target(), tParent.Id(), &tPara), "opening the voice connection");
    Check(ClientAdapter_VoiceStreamCB(tVoice.Id(), &OnVoice, reinterpret_cast<unsigned long>(&tHeard)),
          "asking for voice");
    const json tAgreed = ToJson(tPara);
    tContext.tOut.Say("agreed on {}, {} Hz, packets of {} ms", tAgreed["codec"].get<std::string>(), tPara.dwSampleRate,
                      tPara.dwPacketMs);
    const long long llEnd =
        tOptions.dSeconds > 0 ? NowMs() + static_cast<long long>(tOptions.dSeconds * 1000) : INT64_MAX;
    std::uint64_t ullSent = 0;
    if (!tOptions.strSound.empty())
    {
        CSoundSource tSource(tOptions.strSound, tPara);
        ullSent = Send(tContext.tOut, tVoice.Id(), tSource, tPara, llEnd);
    }
    if (!tOptions.strListen.empty() && (tOptions.strSound.empty() || tOptions.dSeconds > 0))
    {
        WaitUntil([&] { return NowMs() >= llEnd; }, llEnd == INT64_MAX ? -1 : llEnd - NowMs());
    }
    tVoice.Shut();
    tContext.tOut.EndStatus();
    const std::lock_guard tLock(tHeard.tMutex);
    tContext.tOut.Say("{} packets sent, {} heard", ullSent, tHeard.ullPackets);
    tContext.tOut.Result({{"agreed", tAgreed},
                          {"sent_packets", ullSent},
                          {"heard_packets", tHeard.ullPackets},
                          {"heard_bytes", tHeard.pFile ? tHeard.pFile->Bytes() : 0}});
    return eExitDone;
}
} // namespace

void DeclareTalk(CLine& tLine)
{
    auto pt = std::make_shared<tagTalkOptions>();
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.Option("sound", pt->strSound,
                 "what to say: any file with sound, or - for 16-bit samples from standard input: "
                 "arecord -t raw -f S16_LE -r 8000 | tessaro talk ADDRESS -");
    AddLiveOptions(tLine, pt->tLive);
    tLine.Option("--listen", pt->strListen, "write what the device says there, as WAV").Value("FILE");
    tLine.Option("--seconds", pt->dSeconds, "for so long; else to the sound's end, or until Ctrl-C")
        .Positive()
        .Value("N");
    tLine.Does([pt](tagContext& tContext) { return Run(tContext, *pt); });
}
} // namespace tessaro
