#pragma once

#include "rtsp/Stream.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace rtsp
{
/// All streams of the process, by handle. Handles are numbers that are never given twice, so one of a closed stream is
/// known for what it is. Thread-safe. Lives until the process has ended: its streams may deliver until then.
class CStreams
{
public:
    static constexpr unsigned nDefaultMost = 1000;

    static CStreams& Instance();

    int Start();
    /// Ends every stream; done within 2 s. Threads that need longer (a name look-up can't be interrupted, a callback
    /// may still run), and the caller's own, end by themselves.
    int Stop();

    int Create(void** phStream, tagRTSPClientPara const& tPara);
    int Destroy(void* hStream);
    /// Null for a handle that no open stream has.
    std::shared_ptr<CStream> Find(void* hStream);

    void SetMost(unsigned nStreams); ///< 0: nDefaultMost
    unsigned Most();
    unsigned Open();
    /// For a process that ends without a stop: streams call nobody any more.
    void Freeze();

private:
    std::mutex m_tMutex;
    bool m_bStarted = false;
    std::shared_ptr<CEngine> m_pEngine; ///< from the first stream on
    std::map<std::uintptr_t, std::shared_ptr<CStream>> m_apOpen;
    std::uintptr_t m_uLastHandle = 0;
    unsigned m_nMost = nDefaultMost;
};
} // namespace rtsp
