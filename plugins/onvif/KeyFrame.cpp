#include "plugins/onvif/KeyFrame.h"

#include "plugins/onvif/Live.h"
#include "plugins/onvif/StreamAddress.h"

#include <condition_variable>

namespace onvifclient
{
namespace
{
struct tagCatch
{
    std::mutex tMutex;
    std::condition_variable tChanged;
    std::string strFrame;
};

int OnFrame(void*, tagStreamMediaFrame const* ptFrame, unsigned long dwUser)
{
    auto& t = *reinterpret_cast<tagCatch*>(dwUser);
    const std::lock_guard tLock(t.tMutex);
    if (t.strFrame.empty() && ptFrame->dwMediaType == eMediaVideo && (ptFrame->dwFlags & eFrameKey) != 0 &&
        (ptFrame->dwFlags & eFrameDamaged) == 0)
    {
        t.strFrame.assign(reinterpret_cast<char const*>(ptFrame->pData), ptFrame->dwLength);
        t.tChanged.notify_all();
    }
    return eResultOk;
}
} // namespace

int TakeKeyFrame(CLogin& tLogin, bool bMedia2, std::string const& strProfile, std::string& strFrame)
{
    IProtocol* const pProtocols = Face().pProtocols;
    if (!pProtocols)
    {
        return eResultNotSupported;
    }
    const auto tUntil = onvif::Clock::now() + tLogin.Client().Limit();
    std::string strUrl;
    if (const int nResult = StreamAddress(tLogin, bMedia2, strProfile, eRtspTcp, strUrl))
    {
        return nResult;
    }
    const auto pLive =
        std::make_shared<CLive>(tLogin.shared_from_this(), *pProtocols, tagLiveWish{strProfile, bMedia2, {}});
    if (const int nResult = pLive->Open(strUrl))
    {
        return nResult;
    }
    tagCatch t;
    pLive->SetFrameCallback(pLive->m_tFrames, &OnFrame, reinterpret_cast<unsigned long>(&t));
    {
        std::unique_lock tLock(t.tMutex);
        while (t.strFrame.empty() && onvif::Clock::now() < tUntil && !tLogin.Client().Group()->IsEnded())
        {
            t.tChanged.wait_for(tLock, std::chrono::milliseconds(50)); // a logout is to end it too
        }
    }
    pLive->Close();
    strFrame = std::move(t.strFrame);
    return strFrame.empty() ? int{eResultTimeOut} : int{eResultOk};
}
} // namespace onvifclient
