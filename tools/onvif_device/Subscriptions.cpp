#include "tools/onvif_device/Subscriptions.h"

#include "tools/onvif_device/Xml.h"

#include "plugins/device/Worker.h"

#include <algorithm>
#include <curl/curl.h>

namespace onvif_device
{
namespace
{
constexpr std::size_t g_nWaiting = 1000; // messages that wait at most; the oldest one goes
constexpr std::size_t g_nPosts = 1000;
constexpr long g_lPostSeconds = 3;

std::size_t Ignore(char*, std::size_t nSize, std::size_t nCount, void*)
{
    return nSize * nCount;
}

void Send(std::string const& strTo, std::string const& strBody)
{
    CURL* const pCurl = curl_easy_init();
    curl_slist* const pHeaders =
        curl_slist_append(nullptr, "Content-Type: application/soap+xml; charset=utf-8; "
                                   "action=\"http://docs.oasis-open.org/wsn/bw-2/NotificationConsumer/Notify\"");
    curl_easy_setopt(pCurl, CURLOPT_URL, strTo.c_str());
    curl_easy_setopt(pCurl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(pCurl, CURLOPT_HTTPHEADER, pHeaders);
    curl_easy_setopt(pCurl, CURLOPT_POSTFIELDS, strBody.c_str());
    curl_easy_setopt(pCurl, CURLOPT_TIMEOUT, g_lPostSeconds);
    curl_easy_setopt(pCurl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(pCurl, CURLOPT_WRITEFUNCTION, Ignore);
    curl_easy_perform(pCurl); // nobody there: the message is lost, as it is meant to be
    curl_slist_free_all(pHeaders);
    curl_easy_cleanup(pCurl);
}
} // namespace

CSubscriptions::~CSubscriptions()
{
    {
        const std::lock_guard tLock(m_tMutex);
        m_bStop = true;
    }
    m_tPosted.notify_all();
    if (m_tPoster.joinable())
    {
        m_tPoster.join();
    }
}

// Forgets those whose time is over.
CSubscriptions::tagSubscription* CSubscriptions::Find(std::string const& strId)
{
    const int64_t llNowUs = device::SteadyUs();
    std::erase_if(m_tSubscriptions, [&](auto const& tEntry) { return tEntry.second.llEndUs <= llNowUs; });
    const auto it = m_tSubscriptions.find(strId);
    return it == m_tSubscriptions.end() ? nullptr : &it->second;
}

std::string CSubscriptions::Add(std::string const& strFilter, std::string const& strConsumer, int64_t llEndUs,
                                std::size_t nMost)
{
    const auto atStates = InitialMessages(m_tDevice);
    const std::lock_guard tLock(m_tMutex);
    Find({});
    const auto nPull =
        std::ranges::count_if(m_tSubscriptions, [](auto const& tEntry) { return tEntry.second.strConsumer.empty(); });
    if (strConsumer.empty() && static_cast<std::size_t>(nPull) >= nMost)
    {
        return {};
    }
    const std::string strId = std::to_string(++m_dwLast);
    tagSubscription& tNew = m_tSubscriptions[strId];
    tNew.strFilter = strFilter;
    tNew.strConsumer = strConsumer;
    tNew.llEndUs = llEndUs;
    Give(strId, tNew, atStates);
    return strId;
}

bool CSubscriptions::Renew(std::string const& strId, int64_t llEndUs)
{
    const std::lock_guard tLock(m_tMutex);
    tagSubscription* const pt = Find(strId);
    if (pt)
    {
        pt->llEndUs = llEndUs;
    }
    return pt != nullptr;
}

bool CSubscriptions::Remove(std::string const& strId)
{
    const std::lock_guard tLock(m_tMutex);
    return Find(strId) && m_tSubscriptions.erase(strId) != 0;
}

bool CSubscriptions::Synchronize(std::string const& strId)
{
    const auto atStates = InitialMessages(m_tDevice);
    const std::lock_guard tLock(m_tMutex);
    tagSubscription* const pt = Find(strId);
    if (pt)
    {
        Give(strId, *pt, atStates);
    }
    return pt != nullptr;
}

bool CSubscriptions::EndOf(std::string const& strId, int64_t& llEndUs)
{
    const std::lock_guard tLock(m_tMutex);
    tagSubscription const* const pt = Find(strId);
    llEndUs = pt ? pt->llEndUs : 0;
    return pt != nullptr;
}

bool CSubscriptions::Pull(std::string const& strId, std::size_t nMost, std::vector<tagMessage>& atMessages)
{
    const std::lock_guard tLock(m_tMutex);
    tagSubscription* const pt = Find(strId);
    if (!pt || !pt->strConsumer.empty())
    {
        return false;
    }
    const auto itEnd = pt->atWaiting.begin() + static_cast<std::ptrdiff_t>(std::min(nMost, pt->atWaiting.size()));
    atMessages.assign(pt->atWaiting.begin(), itEnd);
    pt->atWaiting.erase(pt->atWaiting.begin(), itEnd);
    return true;
}

void CSubscriptions::Clear()
{
    const std::lock_guard tLock(m_tMutex);
    m_tSubscriptions.clear();
    m_atPosts.clear();
}

std::size_t CSubscriptions::Count()
{
    const std::lock_guard tLock(m_tMutex);
    Find({});
    return m_tSubscriptions.size();
}

void CSubscriptions::Tell(std::vector<tagMessage> const& atMessages)
{
    const std::lock_guard tLock(m_tMutex);
    Find({});
    for (auto& [strId, tSubscription] : m_tSubscriptions)
    {
        Give(strId, tSubscription, atMessages);
    }
}

void CSubscriptions::Give(std::string const& strId, tagSubscription& tSubscription,
                          std::vector<tagMessage> const& atMessages)
{
    for (tagMessage const& t : atMessages)
    {
        if (!MatchesTopic(tSubscription.strFilter, t.strTopic))
        {
            continue;
        }
        if (!tSubscription.strConsumer.empty())
        {
            if (m_atPosts.size() < g_nPosts)
            {
                m_atPosts.push_back({tSubscription.strConsumer, strId, t});
            }
            continue;
        }
        tSubscription.atWaiting.push_back(t);
        if (tSubscription.atWaiting.size() > g_nWaiting)
        {
            tSubscription.atWaiting.pop_front();
        }
    }
    if (!m_atPosts.empty() && !m_tPoster.joinable())
    {
        m_tPoster = std::thread([this] { Post(); });
    }
    m_tPosted.notify_all();
}

void CSubscriptions::Post()
{
    std::unique_lock tLock(m_tMutex);
    while (!m_bStop)
    {
        if (m_atPosts.empty())
        {
            m_tPosted.wait(tLock);
            continue;
        }
        const tagPost tPost = std::move(m_atPosts.front());
        m_atPosts.pop_front();
        tLock.unlock();
        CXml tXml;
        tXml.In(
            "s:Envelope", tXml.Declarations(),
            [&]
            {
                tXml.In("s:Header", [&]
                        { tXml.Put("wsa:Action", "http://docs.oasis-open.org/wsn/bw-2/NotificationConsumer/Notify"); });
                tXml.In("s:Body",
                        [&] { tXml.In("wsnt:Notify", [&] { tPost.tMessage.Write(tXml, "urn:" + tPost.strFrom); }); });
            });
        Send(tPost.strTo, tXml.Text());
        tLock.lock();
    }
}
} // namespace onvif_device
