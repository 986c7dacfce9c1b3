#include "rtsp/Resolver.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <set>
#include <thread>
#include <utility>

namespace rtsp
{
namespace
{
using namespace std::chrono_literals;

constexpr unsigned g_nMostThreads = 8;
constexpr unsigned g_nFreeOfSlow = 2;
constexpr auto g_tSlow = 1s;
constexpr auto g_tIdleTime = 2s;
constexpr std::size_t g_nMostSlowNames = 10'000; // that are remembered

int ErrnoOf(int nError)
{
    switch (nError)
    {
    case EAI_MEMORY:
        return ENOMEM;
    case EAI_SYSTEM:
        return errno;
    case EAI_AGAIN:
        return EAGAIN;
    default:
        return ENXIO; // there is no such name
    }
}

int LookUp(char const* szName, std::vector<tagEndpoint>& atFound)
{
    addrinfo tHints{};
    tHints.ai_family = AF_UNSPEC;
    tHints.ai_socktype = SOCK_STREAM;
    addrinfo* ptFirst = nullptr;
    if (const int nError = getaddrinfo(szName, nullptr, &tHints, &ptFirst); nError != 0)
    {
        return ErrnoOf(nError);
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> ptOwner(ptFirst, &freeaddrinfo);
    for (addrinfo const* pt = ptFirst; pt; pt = pt->ai_next)
    {
        if (pt->ai_family == AF_INET || pt->ai_family == AF_INET6)
        {
            tagEndpoint& tEndpoint = atFound.emplace_back();
            std::memcpy(&tEndpoint.tAddress, pt->ai_addr, pt->ai_addrlen);
            tEndpoint.nLength = pt->ai_addrlen;
        }
    }
    return atFound.empty() ? ENXIO : 0;
}
} // namespace

std::uint16_t tagEndpoint::Port() const
{
    return ntohs(Family() == AF_INET6 ? reinterpret_cast<sockaddr_in6 const&>(tAddress).sin6_port
                                      : reinterpret_cast<sockaddr_in const&>(tAddress).sin_port);
}

void tagEndpoint::SetPort(std::uint16_t wPort)
{
    (Family() == AF_INET6 ? reinterpret_cast<sockaddr_in6&>(tAddress).sin6_port
                          : reinterpret_cast<sockaddr_in&>(tAddress).sin_port) = htons(wPort);
}

bool tagEndpoint::IsSameHost(tagEndpoint const& tOther) const
{
    if (Family() != tOther.Family())
    {
        return false;
    }
    if (Family() == AF_INET6)
    {
        return std::memcmp(&reinterpret_cast<sockaddr_in6 const&>(tAddress).sin6_addr,
                           &reinterpret_cast<sockaddr_in6 const&>(tOther.tAddress).sin6_addr, sizeof(in6_addr)) == 0;
    }
    return reinterpret_cast<sockaddr_in const&>(tAddress).sin_addr.s_addr ==
           reinterpret_cast<sockaddr_in const&>(tOther.tAddress).sin_addr.s_addr;
}

tagEndpoint ParseEndpoint(std::string const& strAddress, std::uint16_t wPort)
{
    tagEndpoint tEndpoint;
    auto& tV4 = reinterpret_cast<sockaddr_in&>(tEndpoint.tAddress);
    auto& tV6 = reinterpret_cast<sockaddr_in6&>(tEndpoint.tAddress);
    const std::size_t nZone = std::min(strAddress.find('%'), strAddress.size());
    if (inet_pton(AF_INET, strAddress.c_str(), &tV4.sin_addr) == 1)
    {
        tV4.sin_family = AF_INET;
        tEndpoint.nLength = sizeof tV4;
        tEndpoint.SetPort(wPort);
    }
    else if (inet_pton(AF_INET6, strAddress.substr(0, nZone).c_str(), &tV6.sin6_addr) == 1)
    {
        tV6.sin6_family = AF_INET6;
        tV6.sin6_scope_id = nZone < strAddress.size() ? if_nametoindex(strAddress.c_str() + nZone + 1) : 0;
        tEndpoint.nLength = sizeof tV6;
        tEndpoint.SetPort(wPort);
    }
    return tEndpoint;
}

class CResolver::CImpl : public std::enable_shared_from_this<CImpl>
{
public:
    std::shared_ptr<CLookup const> Ask(std::string const& strName, std::weak_ptr<IAsker> pAsker)
    {
        const std::lock_guard tLock(m_tMutex);
        std::weak_ptr<CLookup>& pKnown = m_apUnderWay[strName];
        std::shared_ptr<CLookup> pLookup = pKnown.lock();
        if (pLookup)
        {
            pLookup->m_apAskers.push_back(std::move(pAsker));
            return pLookup;
        }
        pLookup = std::make_shared<CLookup>();
        pLookup->m_apAskers.push_back(std::move(pAsker));
        auto& astrWaiting = m_astrSlowNames.contains(strName) ? m_astrSlowWaiting : m_astrWaiting;
        if (std::find(astrWaiting.begin(), astrWaiting.end(), strName) == astrWaiting.end())
        {
            astrWaiting.push_back(strName);
        }
        pKnown = pLookup;
        if (m_astrWaiting.size() + m_astrSlowWaiting.size() > m_nIdle && m_nThreads < g_nMostThreads)
        {
            std::thread([pThis = shared_from_this()] { pThis->Run(); }).detach();
            ++m_nThreads;
        }
        m_tChanged.notify_one();
        return pLookup;
    }

    void End()
    {
        const std::lock_guard tLock(m_tMutex);
        m_bEnding = true;
        m_tChanged.notify_all();
    }

private:
    bool MaySlowOneRun() const { return m_nSlowRunning + g_nFreeOfSlow < g_nMostThreads; }
    bool IsWork() const { return !m_astrWaiting.empty() || (!m_astrSlowWaiting.empty() && MaySlowOneRun()); }

    // A thread that runs out of memory drops its question: who asked waits until the time is over.
    void Run()
    {
        std::unique_lock tLock(m_tMutex);
        for (;;)
        {
            ++m_nIdle;
            const bool bWork = m_tChanged.wait_for(tLock, g_tIdleTime, [this] { return m_bEnding || IsWork(); });
            --m_nIdle;
            if (m_bEnding || !bWork)
            {
                break;
            }
            try
            {
                Answer(tLock);
            }
            catch (std::bad_alloc const&)
            {
                if (!tLock)
                {
                    tLock.lock();
                }
            }
        }
        --m_nThreads;
    }

    void Answer(std::unique_lock<std::mutex>& tLock)
    {
        const bool bSlow = m_astrWaiting.empty();
        std::vector<std::string>& astrWaiting = bSlow ? m_astrSlowWaiting : m_astrWaiting;
        const std::string strName = std::move(astrWaiting.back());
        astrWaiting.pop_back();
        const auto itKnown = m_apUnderWay.find(strName);
        const std::shared_ptr<CLookup> pLookup = itKnown == m_apUnderWay.end() ? nullptr : itKnown->second.lock();
        if (!pLookup)
        {
            m_apUnderWay.erase(strName);
            return;
        }
        m_nSlowRunning += bSlow;
        tLock.unlock();
        const auto tBegan = std::chrono::steady_clock::now();
        pLookup->m_nError = LookUp(strName.c_str(), pLookup->m_atFound);
        const bool bWasSlow = std::chrono::steady_clock::now() - tBegan > g_tSlow;
        tLock.lock();
        m_nSlowRunning -= bSlow;
        m_apUnderWay.erase(strName);
        const auto apAskers = std::move(pLookup->m_apAskers);
        pLookup->m_bDone.store(true, std::memory_order_release);
        if (!bWasSlow)
        {
            m_astrSlowNames.erase(strName);
        }
        else if (m_astrSlowNames.size() < g_nMostSlowNames)
        {
            m_astrSlowNames.insert(strName);
        }
        tLock.unlock();
        for (auto const& pWeak : apAskers)
        {
            if (const std::shared_ptr<IAsker> pAsker = pWeak.lock())
            {
                pAsker->OnLookedUp();
            }
        }
        tLock.lock();
    }

    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::map<std::string, std::weak_ptr<CLookup>> m_apUnderWay;
    std::vector<std::string> m_astrWaiting; ///< the newest last
    std::vector<std::string> m_astrSlowWaiting;
    std::set<std::string> m_astrSlowNames;
    unsigned m_nThreads = 0;
    unsigned m_nIdle = 0;
    unsigned m_nSlowRunning = 0;
    bool m_bEnding = false;
};

CResolver::CResolver() : m_pImpl(std::make_shared<CImpl>()) {}

CResolver::~CResolver()
{
    m_pImpl->End();
}

std::shared_ptr<CLookup const> CResolver::Ask(std::string const& strName, std::weak_ptr<IAsker> pAsker)
{
    return m_pImpl->Ask(strName, std::move(pAsker));
}
} // namespace rtsp
