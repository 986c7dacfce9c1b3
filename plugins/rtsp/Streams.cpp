#include "plugins/rtsp/Streams.h"

#include <cstdlib>
#include <cstring>
#include <openssl/ssl.h>
#include <string_view>
#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tEndTime = 1800ms; // of the 2 s that closing may take

template <std::size_t n>
std::string_view Text(char const (&szField)[n])
{
    return {szField, strnlen(szField, n)};
}

// Nothing: not an address of ours.
std::optional<tagStreamOptions> MakeOptions(tagRTSPClientPara const& tPara)
{
    const std::optional<tagUrl> tUrl = ParseUrl(Text(tPara.szUrl));
    if (!tUrl)
    {
        return std::nullopt;
    }
    tagStreamOptions tOptions;
    tOptions.tUrl = *tUrl;
    tOptions.strUser = Text(tPara.szUserName);
    tOptions.strPassword = Text(tPara.szPassword);
    tOptions.eTransport = static_cast<eRtspTransport>(tPara.dwStreamPara[0]);
    tOptions.eCertificate = static_cast<eRtspCertificate>(tPara.dwStreamPara[1]);
    return tOptions;
}

void OnExit()
{
    CStreams::Instance().Freeze();
}
} // namespace

CStreams& CStreams::Instance()
{
    static auto* const g_pStreams = new CStreams; // never destroyed
    return *g_pStreams;
}

int CStreams::Start()
{
    const std::lock_guard tLock(m_tMutex);
    m_bStarted = true;
    return eResultOk;
}

int CStreams::Stop()
{
    const Clock::time_point tUntil = Clock::now() + g_tEndTime;
    std::shared_ptr<CEngine> pEngine;
    std::map<std::uintptr_t, std::shared_ptr<CStream>> apStreams;
    {
        const std::lock_guard tLock(m_tMutex);
        if (!m_bStarted)
        {
            return eResultNotStarted;
        }
        m_bStarted = false;
        pEngine = std::exchange(m_pEngine, nullptr);
        apStreams = std::exchange(m_apOpen, {});
    }
    for (auto const& [uHandle, pStream] : apStreams)
    {
        pStream->Close();
    }
    for (auto const& [uHandle, pStream] : apStreams)
    {
        pStream->AwaitSilence(tUntil);
    }
    apStreams.clear();
    if (pEngine)
    {
        pEngine->Stop(tUntil);
    }
    return eResultOk;
}

int CStreams::Create(void** phStream, tagRTSPClientPara const& tPara)
{
    const std::lock_guard tLock(m_tMutex);
    if (!m_bStarted)
    {
        return eResultNotStarted;
    }
    if (m_apOpen.size() >= m_nMost)
    {
        return eResultTooManyStreams;
    }
    std::optional<tagStreamOptions> tOptions = MakeOptions(tPara);
    if (!tOptions)
    {
        return eResultBadAddress;
    }
    if (!m_pEngine)
    {
        // OpenSSL must not clean up at exit: threads that have done their work may still be ending. Where the process
        // has begun with OpenSSL before, it does; registered behind it, we are still before that.
        static const bool g_bOnce = OPENSSL_init_ssl(OPENSSL_INIT_NO_ATEXIT, nullptr) == 1 && std::atexit(&OnExit) == 0;
        static_cast<void>(g_bOnce);
        m_pEngine = std::make_shared<CEngine>();
    }
    const std::uintptr_t uHandle = m_uLastHandle + 1;
    const auto itStream = m_apOpen.emplace(uHandle, nullptr).first; // first, so that nothing can fail once it lives
    try
    {
        itStream->second = m_pEngine->Open(reinterpret_cast<void*>(uHandle), *std::move(tOptions));
    }
    catch (...)
    {
        m_apOpen.erase(itStream);
        throw;
    }
    m_uLastHandle = uHandle;
    *phStream = reinterpret_cast<void*>(uHandle);
    return eResultOk;
}

int CStreams::Destroy(void* hStream)
{
    const Clock::time_point tUntil = Clock::now() + g_tEndTime;
    std::shared_ptr<CStream> pStream;
    {
        const std::lock_guard tLock(m_tMutex);
        const auto itStream = m_apOpen.find(reinterpret_cast<std::uintptr_t>(hStream));
        if (itStream == m_apOpen.end())
        {
            return m_bStarted ? eResultBadHandle : eResultNotStarted;
        }
        pStream = std::move(itStream->second);
        m_apOpen.erase(itStream);
    }
    pStream->Close();
    return pStream->AwaitSilence(tUntil);
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

void CStreams::Freeze()
{
    std::shared_ptr<CEngine> pEngine;
    {
        const std::lock_guard tLock(m_tMutex);
        for (auto const& [uHandle, pStream] : m_apOpen)
        {
            pStream->Mute();
        }
        pEngine = m_pEngine;
    }
    if (pEngine)
    {
        pEngine->Freeze();
    }
}
} // namespace rtsp
