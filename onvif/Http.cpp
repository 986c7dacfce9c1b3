#include "onvif/Http.h"

#include "protocol/PluginInterface.h"
#include "rtsp/Text.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <curl/curl.h>
#include <deque>
#include <map>
#include <new>
#include <openssl/ssl.h>
#include <string_view>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace onvif
{
namespace
{
constexpr std::size_t g_nSpareHandles = 8;
constexpr std::size_t g_nMostHeader = 64U << 10;

// libcurl and OpenSSL are set up once, and never cleaned up: threads that have done their work may still be ending when
// the process does.
void SetUpLibraries()
{
    static const bool s_bDone =
        OPENSSL_init_ssl(OPENSSL_INIT_NO_ATEXIT, nullptr) == 1 && curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    if (!s_bDone)
    {
        throw std::bad_alloc();
    }
}

int ResultOf(CURLcode eCode)
{
    switch (eCode)
    {
    case CURLE_OK:
        return eResultOk;
    case CURLE_OPERATION_TIMEDOUT:
        return eResultTimeOut;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
        return eResultUnreachable;
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
        return eResultBadAddress;
    case CURLE_OUT_OF_MEMORY:
        return eResultNoResources;
    case CURLE_WRITE_ERROR: // longer than we take
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
        return eResultRefused;
    default:
        return eResultConnectionLost;
    }
}

// Runs a task, and frees itself when it has ended.
struct tagDetached
{
    struct promise_type
    {
        tagDetached get_return_object() noexcept { return {}; }
        std::suspend_never initial_suspend() noexcept { return {}; }
        std::suspend_never final_suspend() noexcept { return {}; }
        void return_void() noexcept {}
        void unhandled_exception() noexcept {} // a task that found no memory ends
    };
};
} // namespace

std::optional<std::int64_t> ParseHttpDate(std::string const& strDate)
{
    const std::time_t nSeconds = strDate.empty() ? -1 : curl_getdate(strDate.c_str(), nullptr);
    return nSeconds < 0 ? std::nullopt : std::optional(std::int64_t{nSeconds} * 1000000);
}

class CHttp::CImpl
{
public:
    CImpl()
    {
        SetUpLibraries();
        m_nEpoll = epoll_create1(EPOLL_CLOEXEC);
        m_nWake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        m_pMulti = curl_multi_init();
        epoll_event tEvent{};
        tEvent.events = EPOLLIN;
        tEvent.data.fd = m_nWake;
        if (m_nEpoll < 0 || m_nWake < 0 || !m_pMulti || epoll_ctl(m_nEpoll, EPOLL_CTL_ADD, m_nWake, &tEvent) != 0)
        {
            CleanUp();
            throw std::bad_alloc();
        }
        curl_multi_setopt(m_pMulti, CURLMOPT_SOCKETFUNCTION, &OnSocket);
        curl_multi_setopt(m_pMulti, CURLMOPT_SOCKETDATA, this);
        curl_multi_setopt(m_pMulti, CURLMOPT_TIMERFUNCTION, &OnTimer);
        curl_multi_setopt(m_pMulti, CURLMOPT_TIMERDATA, this);
    }
    ~CImpl() { CleanUp(); }

    // --- any thread ---

    bool Begin(rtsp::CTask<> tTask)
    {
        {
            const std::lock_guard tLock(m_tMutex);
            if (m_bStopping)
            {
                return false;
            }
            m_atNew.push_back(std::move(tTask));
            if (!m_tThread.joinable())
            {
                m_tThread = std::thread([this] { Run(); });
            }
        }
        Wake(); // outside, or the thread would wake up and wait for us
        return true;
    }
    void End(std::shared_ptr<CHttpGroup> const& pGroup)
    {
        {
            const std::lock_guard tLock(m_tMutex);
            m_apEnded.push_back(pGroup);
        }
        Wake();
    }
    void Stop()
    {
        std::thread tThread;
        {
            const std::lock_guard tLock(m_tMutex);
            m_bStopping = true;
            tThread = std::move(m_tThread);
            Wake();
        }
        if (tThread.joinable())
        {
            tThread.join();
        }
    }
    void Start()
    {
        const std::lock_guard tLock(m_tMutex);
        m_bStopping = false;
        m_bAllEnded = false;
    }
    bool IsThisThread() const { return m_tThreadId == std::this_thread::get_id(); }

    // --- the thread ---

    bool Send(CSend& tSend)
    {
        const int nEnded = EndedResult(*tSend.m_pGroup);
        const int nResult = nEnded ? nEnded : TrySend(tSend);
        tSend.m_tAnswer.nResult = nResult;
        return nResult == eResultOk;
    }
    bool Pause(CPause& tPause)
    {
        if (EndedResult(*tPause.m_pGroup))
        {
            return false;
        }
        m_tPauses.emplace(tPause.m_tWhen, &tPause);
        return true;
    }
    bool Watch(CReadable& tReadable)
    {
        epoll_event tEvent{};
        tEvent.data.fd = tReadable.m_nFile;
        tEvent.events = EPOLLIN;
        if (EndedResult(*tReadable.m_pGroup) || epoll_ctl(m_nEpoll, EPOLL_CTL_ADD, tReadable.m_nFile, &tEvent) != 0)
        {
            return false;
        }
        m_tWatched.emplace(tReadable.m_nFile, &tReadable);
        return true;
    }

private:
    struct tagTransfer
    {
        CSend* pSend;
        curl_slist* ptHeaders;
        std::size_t nHeader = 0;
        std::array<char, CURL_ERROR_SIZE> szError{};
    };

    void CleanUp()
    {
        for (CURL* const pHandle : m_apSpare)
        {
            curl_easy_cleanup(pHandle);
        }
        CloseConnections([](CHttpGroup const*) { return true; });
        if (m_pMulti)
        {
            curl_multi_cleanup(m_pMulti);
        }
        for (const int nFile : {m_nEpoll, m_nWake})
        {
            if (nFile >= 0)
            {
                close(nFile);
            }
        }
    }

    void Wake()
    {
        const std::uint64_t ullOne = 1;
        (void)!write(m_nWake, &ullOne, sizeof ullOne);
    }

    // After Stop every group that is met is ended, so that its coroutines see it.
    int EndedResult(CHttpGroup& tGroup) const
    {
        int nNotYet = 0;
        if (m_bAllEnded)
        {
            tGroup.m_nEnded.compare_exchange_strong(nNotYet, eResultNotStarted);
        }
        return tGroup.Result();
    }

    tagDetached Detach(rtsp::CTask<> tTask)
    {
        struct tagCount
        {
            explicit tagCount(std::size_t& n) : nRunning(n) { ++nRunning; }
            ~tagCount() { --nRunning; }
            std::size_t& nRunning;
        } tCount(m_nRunning);
        co_await tTask;
    }

    void Run()
    {
        m_tThreadId = std::this_thread::get_id();
        sigset_t tSignals;
        sigemptyset(&tSignals);
        sigaddset(&tSignals, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &tSignals, nullptr); // a device may close its connection while we write
        while (TakePosted())
        {
            OnTime();
            std::array<epoll_event, 64> atEvents{};
            const int nEvents = epoll_wait(m_nEpoll, atEvents.data(), static_cast<int>(atEvents.size()), WaitTime());
            for (int i = 0; i < nEvents; ++i)
            {
                OnEvent(atEvents[static_cast<std::size_t>(i)]);
            }
            FinishDone();
        }
        m_tThreadId = std::thread::id();
    }

    void OnTime()
    {
        // What begins sets libcurl's timer to now.
        for (auto tNow = Clock::now(); m_tCurlTime <= tNow || FirstPause() <= tNow; tNow = Clock::now())
        {
            if (std::exchange(m_tCurlTime, Clock::time_point::max()) <= tNow)
            {
                int nRunning = 0;
                curl_multi_socket_action(m_pMulti, CURL_SOCKET_TIMEOUT, 0, &nRunning);
                FinishDone();
            }
            FinishPauses(tNow);
        }
    }

    Clock::time_point FirstPause() const
    {
        return m_tPauses.empty() ? Clock::time_point::max() : m_tPauses.begin()->first;
    }

    // False: stopped, and nothing is left.
    bool TakePosted()
    {
        std::deque<rtsp::CTask<>> atNew;
        std::vector<std::shared_ptr<CHttpGroup>> apEnded;
        bool bStopping = false;
        {
            const std::lock_guard tLock(m_tMutex);
            atNew.swap(m_atNew);
            apEnded.swap(m_apEnded);
            bStopping = m_bStopping;
        }
        for (auto const& pGroup : apEnded)
        {
            FinishIf([&](CHttpGroup& tGroup) { return &tGroup == pGroup.get(); });
            CloseConnections([&](CHttpGroup const* ptGroup) { return ptGroup == pGroup.get(); });
        }
        for (rtsp::CTask<>& tTask : atNew)
        {
            Detach(std::move(tTask));
        }
        if (bStopping)
        {
            m_bAllEnded = true;
            FinishIf([this](CHttpGroup& tGroup) { return EndedResult(tGroup) != 0; });
            CloseConnections([](CHttpGroup const*) { return true; });
        }
        return !bStopping || m_nRunning != 0;
    }

    int WaitTime() const
    {
        const auto tFirst = std::min(m_tCurlTime, FirstPause());
        if (tFirst == Clock::time_point::max())
        {
            return -1;
        }
        const auto tWait = std::chrono::ceil<std::chrono::milliseconds>(tFirst - Clock::now());
        return static_cast<int>(std::clamp<std::int64_t>(tWait.count(), 0, 1 << 30));
    }

    void OnEvent(epoll_event const& tEvent)
    {
        if (tEvent.data.fd == m_nWake)
        {
            std::uint64_t ullCount = 0;
            (void)!read(m_nWake, &ullCount, sizeof ullCount);
            return;
        }
        if (m_tWatched.contains(tEvent.data.fd))
        {
            FinishWatch(tEvent.data.fd, true);
            return;
        }
        const int nWhat = (tEvent.events & EPOLLIN ? CURL_CSELECT_IN : 0) |
                          (tEvent.events & EPOLLOUT ? CURL_CSELECT_OUT : 0) |
                          (tEvent.events & (EPOLLERR | EPOLLHUP) ? CURL_CSELECT_ERR : 0);
        int nRunning = 0;
        curl_multi_socket_action(m_pMulti, tEvent.data.fd, nWhat, &nRunning);
    }

    // --- transfers ---

    int TrySend(CSend& tSend)
    {
        CURL* const pHandle = TakeHandle();
        if (!pHandle)
        {
            return eResultNoResources;
        }
        tagTransfer& tTransfer = m_tTransfers.emplace(pHandle, tagTransfer{&tSend, nullptr}).first->second;
        SetUp(pHandle, tTransfer);
        curl_easy_setopt(pHandle, CURLOPT_SHARE, ConnectionsOf(tSend.m_pGroup.get()));
        if (curl_multi_add_handle(m_pMulti, pHandle) != CURLM_OK)
        {
            Release(pHandle);
            return eResultNoResources;
        }
        return eResultOk;
    }

    // A group has connections of its own, which are closed with it. Null: they stay until the device closes them.
    CURLSH* ConnectionsOf(CHttpGroup const* ptGroup)
    {
        CURLSH*& pConnections = m_apConnections[ptGroup];
        if (!pConnections)
        {
            pConnections = curl_share_init();
            curl_share_setopt(pConnections, CURLSHOPT_SHARE, CURL_LOCK_DATA_CONNECT);
        }
        return pConnections;
    }

    // Of those that have no transfers.
    template <class F>
    void CloseConnections(F fnOf)
    {
        std::erase_if(m_apConnections,
                      [&](auto const& tEntry)
                      {
                          const bool bCloses = fnOf(tEntry.first);
                          if (bCloses && tEntry.second)
                          {
                              curl_share_cleanup(tEntry.second);
                          }
                          return bCloses;
                      });
    }

    CURL* TakeHandle()
    {
        if (!m_apSpare.empty())
        {
            CURL* const pHandle = m_apSpare.back();
            m_apSpare.pop_back();
            return pHandle;
        }
        CURL* const pHandle = curl_easy_init();
        if (pHandle)
        {
            curl_easy_setopt(pHandle, CURLOPT_PROTOCOLS_STR, "http,https");
            curl_easy_setopt(pHandle, CURLOPT_PROXY, ""); // devices stand on networks of their own
            curl_easy_setopt(pHandle, CURLOPT_NOSIGNAL, 1L);
            curl_easy_setopt(pHandle, CURLOPT_QUICK_EXIT, 1L); // doesn't wait for a name look-up that hangs
            curl_easy_setopt(pHandle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
            curl_easy_setopt(pHandle, CURLOPT_ACCEPT_ENCODING, "");
            curl_easy_setopt(pHandle, CURLOPT_PATH_AS_IS, 1L);
            curl_easy_setopt(pHandle, CURLOPT_TCP_KEEPALIVE, 1L);
            curl_easy_setopt(pHandle, CURLOPT_WRITEFUNCTION, &OnBody);
            curl_easy_setopt(pHandle, CURLOPT_HEADERFUNCTION, &OnHeader);
        }
        return pHandle;
    }

    // Sets all that differs between requests: handles are used again as they are.
    static void SetUp(CURL* pHandle, tagTransfer& tTransfer)
    {
        tagHttpRequest const& tRequest = tTransfer.pSend->m_tRequest;
        const auto nLimit = static_cast<long>(std::max<std::int64_t>(1, tRequest.tLimit.count()));
        curl_easy_setopt(pHandle, CURLOPT_URL, tRequest.strUrl.c_str());
        curl_easy_setopt(pHandle, CURLOPT_TIMEOUT_MS, nLimit);
        curl_easy_setopt(pHandle, CURLOPT_CONNECTTIMEOUT_MS, nLimit);
        curl_easy_setopt(pHandle, CURLOPT_ERRORBUFFER, tTransfer.szError.data());
        curl_easy_setopt(pHandle, CURLOPT_WRITEDATA, &tTransfer);
        curl_easy_setopt(pHandle, CURLOPT_HEADERDATA, &tTransfer);
        if (tRequest.strUrl.starts_with("https"))
        {
            // Who shows any certificate may also speak as old cameras do.
            const bool bCheck = tRequest.bCheckCertificate;
            curl_easy_setopt(pHandle, CURLOPT_SSL_VERIFYPEER, bCheck ? 1L : 0L);
            curl_easy_setopt(pHandle, CURLOPT_SSL_VERIFYHOST, bCheck ? 2L : 0L);
            curl_easy_setopt(pHandle, CURLOPT_SSLVERSION,
                             static_cast<long>(bCheck ? CURL_SSLVERSION_DEFAULT : CURL_SSLVERSION_TLSv1));
            curl_easy_setopt(pHandle, CURLOPT_SSL_CIPHER_LIST, bCheck ? nullptr : "DEFAULT:@SECLEVEL=0");
        }
        const auto fnHeader = [&](std::string const& strLine)
        {
            if (curl_slist* const ptMore = curl_slist_append(tTransfer.ptHeaders, strLine.c_str()))
            {
                tTransfer.ptHeaders = ptMore;
            }
        };
        if (tRequest.strBody.empty())
        {
            curl_easy_setopt(pHandle, CURLOPT_HTTPGET, 1L);
        }
        else
        {
            curl_easy_setopt(pHandle, CURLOPT_POST, 1L);
            curl_easy_setopt(pHandle, CURLOPT_POSTFIELDS, tRequest.strBody.data());
            curl_easy_setopt(pHandle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(tRequest.strBody.size()));
            fnHeader("Content-Type: " + tRequest.strType);
            fnHeader("Expect:");
        }
        // A long way is no reason to give up, a device that has stopped to take anything is.
        const bool bTells = tRequest.fnSent != nullptr;
        curl_easy_setopt(pHandle, CURLOPT_LOW_SPEED_LIMIT, bTells ? 1L : 0L);
        curl_easy_setopt(pHandle, CURLOPT_LOW_SPEED_TIME, bTells ? 300L : 0L);
        curl_easy_setopt(pHandle, CURLOPT_NOPROGRESS, bTells ? 0L : 1L);
        curl_easy_setopt(pHandle, CURLOPT_XFERINFOFUNCTION, &OnProgress);
        curl_easy_setopt(pHandle, CURLOPT_XFERINFODATA, &tTransfer);
        if (!tRequest.strAuthorization.empty())
        {
            fnHeader("Authorization: " + tRequest.strAuthorization);
        }
        curl_easy_setopt(pHandle, CURLOPT_HTTPHEADER, tTransfer.ptHeaders);
    }

    static int OnProgress(void* pTransfer, curl_off_t, curl_off_t, curl_off_t, curl_off_t nSent)
    {
        static_cast<tagTransfer*>(pTransfer)->pSend->m_tRequest.fnSent(static_cast<std::uint64_t>(nSent));
        return 0;
    }

    static std::size_t OnBody(char* pcData, std::size_t, std::size_t nSize, void* pTransfer)
    try
    {
        CSend& tSend = *static_cast<tagTransfer*>(pTransfer)->pSend;
        if (nSize > tSend.m_tRequest.nMost - tSend.m_tAnswer.strBody.size())
        {
            return CURL_WRITEFUNC_ERROR;
        }
        tSend.m_tAnswer.strBody.append(pcData, nSize);
        return nSize;
    }
    catch (...)
    {
        return CURL_WRITEFUNC_ERROR;
    }

    static std::size_t OnHeader(char* pcData, std::size_t, std::size_t nSize, void* pTransfer)
    try
    {
        auto& tTransfer = *static_cast<tagTransfer*>(pTransfer);
        tagHttpAnswer& tAnswer = tTransfer.pSend->m_tAnswer;
        std::string_view strLine(pcData, nSize);
        tTransfer.nHeader += nSize;
        if (tTransfer.nHeader > g_nMostHeader)
        {
            return 0;
        }
        if (strLine.starts_with("HTTP/")) // a later answer counts
        {
            tAnswer = {};
        }
        const std::string_view strName = rtsp::Trim(rtsp::CutFirst(strLine, ':'));
        const std::pair<std::string_view, std::string*> atWanted[] = {
            {"Content-Type", &tAnswer.strType}, {"Location", &tAnswer.strLocation}, {"Date", &tAnswer.strDate}};
        for (auto const& [strWanted, pstrValue] : atWanted)
        {
            if (rtsp::EqualsInAnyCase(strName, strWanted))
            {
                *pstrValue = rtsp::Trim(strLine);
            }
        }
        if (rtsp::EqualsInAnyCase(strName, "WWW-Authenticate"))
        {
            tAnswer.astrChallenges.emplace_back(rtsp::Trim(strLine));
        }
        return nSize;
    }
    catch (...)
    {
        return 0;
    }

    static int OnSocket(CURL*, curl_socket_t nFile, int nWhat, void* pThis, void* pKnown)
    {
        auto& tThis = *static_cast<CImpl*>(pThis);
        epoll_event tEvent{};
        tEvent.data.fd = nFile;
        tEvent.events = (nWhat & CURL_POLL_IN ? EPOLLIN : 0U) | (nWhat & CURL_POLL_OUT ? EPOLLOUT : 0U);
        const int nAction = nWhat == CURL_POLL_REMOVE ? EPOLL_CTL_DEL : pKnown ? EPOLL_CTL_MOD : EPOLL_CTL_ADD;
        epoll_ctl(tThis.m_nEpoll, nAction, nFile, &tEvent);
        curl_multi_assign(tThis.m_pMulti, nFile, nAction == EPOLL_CTL_DEL ? nullptr : pThis);
        return 0;
    }

    static int OnTimer(CURLM*, long nMilliseconds, void* pThis)
    {
        static_cast<CImpl*>(pThis)->m_tCurlTime =
            nMilliseconds < 0 ? Clock::time_point::max() : Clock::now() + std::chrono::milliseconds(nMilliseconds);
        return 0;
    }

    // --- ends ---

    CSend* Release(CURL* pHandle)
    {
        const auto it = m_tTransfers.find(pHandle);
        CSend* const pSend = it->second.pSend;
        curl_easy_setopt(pHandle, CURLOPT_SHARE, nullptr);
        curl_slist_free_all(it->second.ptHeaders);
        m_tTransfers.erase(it);
        if (m_apSpare.size() < g_nSpareHandles)
        {
            m_apSpare.push_back(pHandle);
        }
        else
        {
            curl_easy_cleanup(pHandle);
        }
        return pSend;
    }

    void FinishDone()
    {
        int nLeft = 0;
        while (CURLMsg const* const ptMessage = curl_multi_info_read(m_pMulti, &nLeft))
        {
            if (ptMessage->msg != CURLMSG_DONE)
            {
                continue;
            }
            CURL* const pHandle = ptMessage->easy_handle;
            const CURLcode eCode = ptMessage->data.result;
            tagTransfer const& tTransfer = m_tTransfers.at(pHandle);
            tagHttpAnswer& tAnswer = tTransfer.pSend->m_tAnswer;
            long nStatus = 0;
            curl_easy_getinfo(pHandle, CURLINFO_RESPONSE_CODE, &nStatus);
            tAnswer.nResult = ResultOf(eCode);
            tAnswer.nStatus = static_cast<int>(nStatus);
            if (eCode != CURLE_OK)
            {
                tAnswer.strError = tTransfer.szError[0] ? tTransfer.szError.data() : curl_easy_strerror(eCode);
            }
            curl_multi_remove_handle(m_pMulti, pHandle);
            Release(pHandle)->m_tCaller.resume();
        }
    }

    void FinishPauses(Clock::time_point tNow)
    {
        while (!m_tPauses.empty() && m_tPauses.begin()->first <= tNow)
        {
            CPause* const pPause = m_tPauses.begin()->second;
            m_tPauses.erase(m_tPauses.begin());
            pPause->m_tCaller.resume();
        }
    }

    void FinishWatch(int nFile, bool bReadable)
    {
        epoll_ctl(m_nEpoll, EPOLL_CTL_DEL, nFile, nullptr);
        CReadable* const pReadable = m_tWatched.at(nFile);
        m_tWatched.erase(nFile);
        pReadable->m_bReadable = bReadable;
        pReadable->m_tCaller.resume();
    }

    // Who is resumed may begin new ones, also in the same group; these end by themselves.
    template <class F>
    void FinishIf(F fnEnds)
    {
        std::vector<CURL*> apHandles;
        for (auto const& [pHandle, tTransfer] : m_tTransfers)
        {
            if (fnEnds(*tTransfer.pSend->m_pGroup))
            {
                apHandles.push_back(pHandle);
            }
        }
        std::vector<int> anWatched;
        for (auto const& [nFile, pReadable] : m_tWatched)
        {
            if (fnEnds(*pReadable->m_pGroup))
            {
                anWatched.push_back(nFile);
            }
        }
        std::vector<CPause*> apPauses;
        std::erase_if(m_tPauses,
                      [&](auto const& tEntry)
                      {
                          const bool bEnds = fnEnds(*tEntry.second->m_pGroup);
                          if (bEnds)
                          {
                              apPauses.push_back(tEntry.second);
                          }
                          return bEnds;
                      });
        for (CURL* const pHandle : apHandles)
        {
            curl_multi_remove_handle(m_pMulti, pHandle);
            CSend* const pSend = Release(pHandle);
            pSend->m_tAnswer = {};
            pSend->m_tAnswer.nResult = EndedResult(*pSend->m_pGroup);
            pSend->m_tCaller.resume();
        }
        for (const int nFile : anWatched)
        {
            FinishWatch(nFile, false);
        }
        for (CPause* const pPause : apPauses)
        {
            pPause->m_tCaller.resume();
        }
    }

    int m_nEpoll = -1;
    int m_nWake = -1;
    CURLM* m_pMulti = nullptr;

    std::mutex m_tMutex;
    std::deque<rtsp::CTask<>> m_atNew;
    std::vector<std::shared_ptr<CHttpGroup>> m_apEnded;
    bool m_bStopping = false;
    std::thread m_tThread;
    std::atomic<std::thread::id> m_tThreadId{};

    // --- the thread's ---
    std::map<CHttpGroup const*, CURLSH*> m_apConnections;
    std::map<CURL*, tagTransfer> m_tTransfers;
    std::multimap<Clock::time_point, CPause*> m_tPauses;
    std::map<int, CReadable*> m_tWatched;
    std::vector<CURL*> m_apSpare;
    Clock::time_point m_tCurlTime = Clock::time_point::max();
    std::size_t m_nRunning = 0;
    bool m_bAllEnded = false;
};

CHttp::CHttp() : m_pImpl(std::make_shared<CImpl>()) {}

CHttp::~CHttp()
{
    Stop();
}

void CHttp::Begin(rtsp::CTask<> tTask)
{
    (void)TryBegin(std::move(tTask));
}

bool CHttp::TryBegin(rtsp::CTask<> tTask)
{
    return m_pImpl->Begin(std::move(tTask));
}

void CHttp::End(std::shared_ptr<CHttpGroup> const& pGroup, int nResult)
{
    int nNotYet = 0;
    if (pGroup->m_nEnded.compare_exchange_strong(nNotYet, nResult))
    {
        m_pImpl->End(pGroup);
    }
}

void CHttp::Stop()
{
    m_pImpl->Stop();
}

void CHttp::Start()
{
    m_pImpl->Start();
}

bool CHttp::IsThisThread() const
{
    return m_pImpl->IsThisThread();
}

CHttp::CSend CHttp::Send(std::shared_ptr<CHttpGroup> pGroup, tagHttpRequest tRequest)
{
    return {*m_pImpl, std::move(pGroup), std::move(tRequest)};
}

CHttp::CPause CHttp::Until(std::shared_ptr<CHttpGroup> pGroup, Clock::time_point tWhen)
{
    return {*m_pImpl, std::move(pGroup), tWhen};
}

CHttp::CReadable CHttp::Readable(std::shared_ptr<CHttpGroup> pGroup, int nFile)
{
    return {*m_pImpl, std::move(pGroup), nFile};
}

bool CHttp::CReadable::await_suspend(std::coroutine_handle<> tCaller)
{
    m_tCaller = tCaller;
    return m_tImpl.Watch(*this);
}

bool CHttp::CSend::await_suspend(std::coroutine_handle<> tCaller)
{
    m_tCaller = tCaller;
    return m_tImpl.Send(*this);
}

bool CHttp::CPause::await_suspend(std::coroutine_handle<> tCaller)
{
    m_tCaller = tCaller;
    return m_tImpl.Pause(*this);
}

void CHttp::Notify(tagWaiter& tWaiter)
{
    {
        const std::lock_guard tLock(tWaiter.tMutex);
        tWaiter.bDone = true;
    }
    tWaiter.tChanged.notify_all();
}

void CHttp::Await(tagWaiter& tWaiter)
{
    std::unique_lock tLock(tWaiter.tMutex);
    tWaiter.tChanged.wait(tLock, [&] { return tWaiter.bDone; });
}
} // namespace onvif
