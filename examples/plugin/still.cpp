// A plug-in in eighty lines, braces not counted: a camera that is a JPEG file. The login's address is the file's name;
// a stream is the file as a picture, ten times a second, also when it is replaced meanwhile.
//
// It serves the private protocol, whose plug-in an application inserts itself: see docs/guide/plugin.md.

#include "plugins/common/Callback.h"
#include "plugins/common/Handles.h"
#include "plugins/common/Text.h"
#include "protocol/CClientProtocolBase.h"
#include "system/Call.h"

#include <atomic>
#include <fstream>
#include <iterator>

namespace still
{
/* [things] */
struct tagThing // what a handle stands for
{
    std::string strPath;
    std::atomic<void*> hStream = nullptr;           // a stream's own handle
    plugin::CCallback<StreamMediaCallback> tFrames; // where its frames go
    virtual ~tagThing() = default;
};
struct tagLogin : tagThing
{
};
struct tagStream : tagThing
{
};
plugin::CHandles<tagThing> g_tOpen;
std::atomic<bool> g_bStarted = false;
/* [things] */

/* [run] */
// On the stream's own thread, which ends by itself when the stream is closed.
void Run(std::weak_ptr<tagStream> const& ptOpen)
{
    // What isn't named is 0.
    tagStreamMediaFrame t{.dwCodec = eCodecMJPEG, .szCodecName = "mjpeg", .dwFlags = eFrameKey};
    while (const auto pt = ptOpen.lock())
    {
        const std::vector<unsigned char> aby{std::istreambuf_iterator<char>(std::ifstream(pt->strPath).rdbuf()), {}};
        // Segments: 0xFF, a kind, a length in two bytes; in those of the kinds C0 to C3 follows the size of the
        // picture.
        std::size_t n = 2;
        while (n + 9 < aby.size() && (aby[n + 1] & 0xFC) != 0xC0)
        {
            n += 2u + aby[n + 2] * 256u + aby[n + 3];
        }
        if (n + 9 < aby.size())
        {
            t.dwHeight = aby[n + 5] * 256u + aby[n + 6];
            t.dwWidth = aby[n + 7] * 256u + aby[n + 8];
            t.pData = aby.data();
            t.dwLength = static_cast<uint32_t>(aby.size());
            t.dwSequence += pt->tFrames.Call(pt->hStream.load(), &t) ? 1 : 0;
            t.llPresentationTimeUs = t.dwSequence * INT64_C(100000);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}
/* [run] */

/* [serve] */
using Base = Adapter_ProtocolSet::CClientProtocolBase;
bool IsStarted()
{
    return g_bStarted;
}
template <auto Op, class... A>
int Serve(tagCall<Op>, A...) // whatever has no line below
{
    return eResultNotSupported;
}
int Serve(tagCall<&Base::Start>)
{
    return g_bStarted = true, eResultOk;
}
int Serve(tagCall<&Base::SetProtocolInterface>, IProtocol*)
{
    return eResultOk;
}
int Serve(tagCall<&Base::Stop>)
{
    g_bStarted = false;
    for (auto const& pt : g_tOpen.TakeAll())
    {
        pt->tFrames.Close();
    }
    return eResultOk;
}
int Serve(tagCall<&Base::UserLogin>, void** phLogin, tagUserLoginPara* pt)
{
    if (!phLogin || !pt || plugin::Text(pt->szUserName) != "admin" || plugin::Text(pt->szPassword) != "admin")
    {
        return phLogin && pt ? eResultWrongLogin : eResultBadArgument; // a device would be asked
    }
    auto ptLogin = std::make_shared<tagLogin>();
    ptLogin->strPath = plugin::Text(pt->szAddress);
    if (!std::ifstream(ptLogin->strPath))
    {
        return eResultUnreachable;
    }
    *phLogin = g_tOpen.Add(std::move(ptLogin));
    return eResultOk;
}
int Serve(tagCall<&Base::UserLogout>, void* hLogin)
{
    return g_tOpen.Take<tagLogin>(hLogin) ? int{eResultOk} : int{eResultBadHandle};
}
int Serve(tagCall<&Base::RealStreamConnect>, void** phStream, void* hLogin, tagRealStreamPara* pt)
{
    const auto ptLogin = g_tOpen.Find<tagLogin>(hLogin);
    if (!ptLogin || !phStream || !pt || pt->dwChannel != 0)
    {
        return !ptLogin ? eResultBadHandle : phStream && pt ? eResultNoChannel : eResultBadArgument;
    }
    auto ptStream = std::make_shared<tagStream>();
    ptStream->strPath = ptLogin->strPath;
    std::thread(Run, std::weak_ptr<tagStream>(ptStream)).detach(); // owned by its handle, not by its thread
    *phStream = ptStream->hStream = g_tOpen.Add(ptStream);
    return eResultOk;
}
int Serve(tagCall<&Base::RealStreamDisconnect>, void* hStream)
{
    const auto pt = g_tOpen.Take<tagStream>(hStream);
    return !pt ? int{eResultBadHandle} : pt->tFrames.Close() ? int{eResultOk} : int{eResultStillRunning};
}
int Serve(tagCall<&Base::StreamMediaCB>, void* hStream, StreamMediaCallback pfnFrame, unsigned long dwUser)
{
    const auto pt = g_tOpen.Find<tagStream>(hStream);
    return !pt ? int{eResultBadHandle} : pt->tFrames.Set(pfnFrame, dwUser) ? int{eResultOk} : int{eResultStillRunning};
}
int Serve(tagCall<&Base::StreamMediaControl>, void* hStream, eTaskControl eControl)
{
    const int nAnswer = eControl == eTaskPlay ? int{eResultOk} : int{eResultNotSupported}; // it plays all the time
    return g_tOpen.Find<tagStream>(hStream) ? nAnswer : int{eResultBadHandle};
}
/* [serve] */
} // namespace still

/* [names] */
#define PLUGIN_PREFIX    VornClient_
#define PLUGIN_NAMESPACE still
#include "plugins/common/EntryPoints.h"
/* [names] */
