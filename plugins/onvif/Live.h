#pragma once

#include "plugins/onvif/Media.h"
#include "protocol/IProtocol.h"

#include <chrono>
#include <mutex>

namespace onvifclient
{
/// Which live stream, and how it travels.
struct tagLiveWish
{
    std::string strProfile;
    bool bMedia2 = false;
    tagRealStreamPara tPara{}; ///< the words for the RTSP plug-in
};

/// A live stream: one of the RTSP plug-in's, driven through the adapter, with a handle of ours in front. Where the
/// device gives its stream another address, it goes on there.
class CLive : public CMedia, public std::enable_shared_from_this<CLive>
{
public:
    /// tProtocols: good until Stop.
    CLive(std::shared_ptr<CLogin> pLogin, IProtocol& tProtocols, tagLiveWish tWish)
        : CMedia(std::move(pLogin)), m_tProtocols(tProtocols), m_tWish(std::move(tWish))
    {
    }

    /// Connects to strUrl; frames come once there is a callback.
    int Open(std::string const& strUrl);
    bool Close() override;
    int Control(eTaskControl eControl) override;
    /// Null ends it.
    int SetFrameCallback(CCallback<StreamMediaCallback>& tCallback, StreamMediaCallback pfnFrame, unsigned long dwUser);
    int Info(tagRTSPPackageInfo& tInfo) const;
    tagLiveWish const& Wish() const { return m_tWish; }

    std::atomic<void*> m_hStream{nullptr}; ///< ours
    CCallback<StreamMediaCallback> m_tFrames;
    CCallback<StreamMediaCallback> m_tRaw;

private:
    int Connect(std::string const& strUrl, void*& hInner);
    void TakeFrames(void* hInner);
    void TakeEvents(void* hInner);
    void* Inner() const;
    int OnFrame(tagStreamMediaFrame const& tFrame);
    void OnEvent(unsigned long dwEvent, unsigned long dwWord2);
    void Move(tagStreamMediaFrame& tFrame);
    void GoOn(std::string const& strUrl);
    static rtsp::CTask<> AskAgain(std::shared_ptr<CLive> pSelf);

    IProtocol& m_tProtocols;
    const tagLiveWish m_tWish;
    std::atomic<bool> m_bAwaitKey{true};

    mutable std::mutex m_tMutex;
    void* m_hInner = nullptr; // the RTSP plug-in's; null: not open
    bool m_bClosed = false;
    bool m_bFrames = false; // a callback was registered
    bool m_bPaused = false;
    bool m_bAsking = false;
    std::string m_strUrl;
    std::string m_strNext;             // where the stream is now
    onvif::Clock::time_point m_tAsked; // when the address was asked for last

    // The time line over a change of streams; only touched by frames, which come one at a time.
    std::atomic<bool> m_bNewLine{false};
    int64_t m_llShiftUs = 0;
    int64_t m_llLastUs = 0;
    onvif::Clock::time_point m_tLast;
};
} // namespace onvifclient
