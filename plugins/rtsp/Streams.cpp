#include "plugins/rtsp/Streams.h"

#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tEndTime = 1800ms; // of the 2 s that closing may take
} // namespace

CStreams& CStreams::Instance()
{
    static auto* const g_pStreams = new CStreams; // never destroyed
    return *g_pStreams;
}

int CStreams::Start()
{
    Bury({});
    const std::lock_guard tLock(m_tMutex);
    if (!m_bStarted)
    {
        TakeStackLog();
        m_bStarted = true;
    }
    return eResultOk;
}

int CStreams::Stop()
{
    Streams apStreams;
    {
        const std::lock_guard tLock(m_tMutex);
        if (!m_bStarted)
        {
            return eResultNotStarted;
        }
        m_bStarted = false;
        apStreams = std::exchange(m_apEnding, {});
        for (auto const& [uHandle, pStream] : m_apOpen)
        {
            apStreams.push_back(pStream);
        }
        m_apOpen.clear();
    }
    End(std::move(apStreams));
    GiveBackStackLog();
    return eResultOk;
}

int CStreams::Create(void** phStream, tagRTSPClientPara const& tPara)
{
    Bury({});
    const std::lock_guard tLock(m_tMutex);
    if (!m_bStarted)
    {
        return eResultNotStarted;
    }
    if (m_apOpen.size() >= m_nMost)
    {
        return eResultTooManyStreams;
    }
    std::optional<tagAddress> tAddress = MakeAddress(tPara);
    if (!tAddress)
    {
        return eResultBadAddress;
    }
    const std::uintptr_t uHandle = m_uLastHandle + 1;
    auto& pStream = m_apOpen[uHandle]; // first, so that nothing can fail once the thread runs
    try
    {
        pStream = std::make_shared<CStream>(reinterpret_cast<void*>(uHandle), *std::move(tAddress));
    }
    catch (...)
    {
        m_apOpen.erase(uHandle);
        throw;
    }
    m_uLastHandle = uHandle;
    *phStream = reinterpret_cast<void*>(uHandle);
    return eResultOk;
}

int CStreams::Destroy(void* hStream)
{
    Streams apStreams;
    {
        const std::lock_guard tLock(m_tMutex);
        const auto itStream = m_apOpen.find(reinterpret_cast<std::uintptr_t>(hStream));
        if (itStream == m_apOpen.end())
        {
            return m_bStarted ? eResultBadHandle : eResultNotStarted;
        }
        apStreams.push_back(itStream->second);
        m_apOpen.erase(itStream);
    }
    End(std::move(apStreams));
    return eResultOk;
}

std::shared_ptr<CStream> CStreams::Find(void* hStream)
{
    const std::lock_guard tLock(m_tMutex);
    const auto itStream = m_apOpen.find(reinterpret_cast<std::uintptr_t>(hStream));
    return itStream == m_apOpen.end() ? nullptr : itStream->second;
}

void CStreams::SetMost(unsigned nStreams)
{
    const std::lock_guard tLock(m_tMutex);
    m_nMost = nStreams == 0 ? nDefaultMost : nStreams;
}

unsigned CStreams::Most()
{
    const std::lock_guard tLock(m_tMutex);
    return m_nMost;
}

unsigned CStreams::Open()
{
    const std::lock_guard tLock(m_tMutex);
    return static_cast<unsigned>(m_apOpen.size());
}

void CStreams::MuteAll()
{
    const std::lock_guard tLock(m_tMutex);
    for (auto const& [uHandle, pStream] : m_apOpen)
    {
        pStream->MuteNow();
    }
}

// All at once, so that many take no longer than one.
void CStreams::End(Streams apStreams)
{
    const Clock::time_point tUntil = Clock::now() + g_tEndTime;
    for (auto const& pStream : apStreams)
    {
        pStream->RequestEnd();
    }
    for (auto const& pStream : apStreams)
    {
        pStream->Mute();
    }
    for (auto const& pStream : apStreams)
    {
        pStream->WaitForEnd(tUntil);
    }
    Bury(std::move(apStreams));
}

// A stream is destroyed where its thread can be joined at once: never on that thread, and never before it has ended.
void CStreams::Bury(Streams apStreams)
{
    Streams apEnded;
    const std::lock_guard tLock(m_tMutex);
    m_apEnding.insert(m_apEnding.end(), apStreams.begin(), apStreams.end());
    apStreams.clear();
    for (auto& pStream : m_apEnding)
    {
        if (pStream->WaitForEnd(Clock::time_point::min()))
        {
            apEnded.push_back(std::move(pStream));
        }
    }
    std::erase(m_apEnding, nullptr);
}
} // namespace rtsp
