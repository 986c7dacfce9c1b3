#include "onvif/HttpCallers.h"

#include "onvif/Transfer.h"

#include "protocol/PluginInterface.h"

#include <csignal>
#include <ctime>
#include <new>
#include <utility>

namespace onvif
{
namespace
{
constexpr std::size_t g_nSpareDrivers = 8;
constexpr int g_nLookMs = 60000; // libcurl wakes up by itself for its own times, and is woken for ours

// libcurl sends without SIGPIPE, but OpenSSL on its behalf may not, and the thread is the application's.
class CWithoutPipeSignal
{
public:
    CWithoutPipeSignal()
    {
        sigemptyset(&m_tPipe);
        sigaddset(&m_tPipe, SIGPIPE);
        sigset_t tPending;
        sigpending(&tPending);
        m_bPending = sigismember(&tPending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_tPipe, &m_tBefore);
    }
    ~CWithoutPipeSignal()
    {
        const timespec tNoTime{};
        while (!m_bPending && sigtimedwait(&m_tPipe, nullptr, &tNoTime) == SIGPIPE)
        {
        }
        pthread_sigmask(SIG_SETMASK, &m_tBefore, nullptr);
    }
    CWithoutPipeSignal(CWithoutPipeSignal const&) = delete;
    CWithoutPipeSignal& operator=(CWithoutPipeSignal const&) = delete;

private:
    sigset_t m_tPipe;
    sigset_t m_tBefore;
    bool m_bPending; // one that isn't ours
};
} // namespace

// What one thread needs to drive one transfer.
class CHttpCallers::CDriver
{
public:
    CDriver() : m_pMulti(curl_multi_init())
    {
        if (!m_pMulti)
        {
            throw std::bad_alloc();
        }
    }
    ~CDriver() { curl_multi_cleanup(m_pMulti); }
    CDriver(CDriver const&) = delete;
    CDriver& operator=(CDriver const&) = delete;

    void Wake() { curl_multi_wakeup(m_pMulti); }

    template <class F>
    void Perform(CHttpGroup& tGroup, tagHttpRequest const& tRequest, tagHttpAnswer& tAnswer, F fnMustEnd)
    {
        tAnswer.nResult = m_tTransfer.Begin(m_pMulti, tGroup, tRequest, tAnswer);
        if (tAnswer.nResult != eResultOk)
        {
            return;
        }
        std::optional<CURLcode> eCode;
        while (!(eCode = Step()) && !fnMustEnd() &&
               curl_multi_poll(m_pMulti, nullptr, 0, g_nLookMs, nullptr) == CURLM_OK)
        {
        }
        if (eCode)
        {
            m_tTransfer.Finish(*eCode);
        }
        else
        {
            m_tTransfer.Abandon(fnMustEnd() ? tGroup.Result() : int{eResultNoResources});
        }
    }

    CHttpGroup const* m_ptGroup = nullptr; // whose transfer it is

private:
    // Nothing: it isn't over yet.
    std::optional<CURLcode> Step()
    {
        int nRunning = 0;
        if (curl_multi_perform(m_pMulti, &nRunning) != CURLM_OK)
        {
            return CURLE_OUT_OF_MEMORY;
        }
        int nLeft = 0;
        CURLMsg const* const ptMessage = nRunning == 0 ? curl_multi_info_read(m_pMulti, &nLeft) : nullptr;
        return ptMessage && ptMessage->msg == CURLMSG_DONE ? std::optional(ptMessage->data.result) : std::nullopt;
    }

    CURLM* const m_pMulti;
    CTransfer m_tTransfer;
};

// A driver for as long as a request takes, which can be woken meanwhile.
class CHttpCallers::CLease
{
public:
    CLease(CHttpCallers& tCallers, CHttpGroup const& tGroup) : m_tCallers(tCallers)
    {
        std::unique_lock tLock(m_tCallers.m_tMutex);
        if (m_tCallers.m_apSpare.empty())
        {
            tLock.unlock();
            m_pDriver = std::make_unique<CDriver>();
            tLock.lock();
        }
        else
        {
            m_pDriver = std::move(m_tCallers.m_apSpare.back());
            m_tCallers.m_apSpare.pop_back();
        }
        m_pDriver->m_ptGroup = &tGroup;
        m_tCallers.m_apBusy.push_back(m_pDriver.get());
    }
    ~CLease()
    {
        const std::lock_guard tLock(m_tCallers.m_tMutex);
        std::erase(m_tCallers.m_apBusy, m_pDriver.get());
        if (m_tCallers.m_apSpare.size() < g_nSpareDrivers)
        {
            m_tCallers.m_apSpare.push_back(std::move(m_pDriver));
        }
    }
    CLease(CLease const&) = delete;
    CLease& operator=(CLease const&) = delete;

    CDriver* operator->() const { return m_pDriver.get(); }

private:
    CHttpCallers& m_tCallers;
    std::unique_ptr<CDriver> m_pDriver;
};

CHttpCallers::CHttpCallers()
{
    m_apSpare.reserve(g_nSpareDrivers);
}

CHttpCallers::~CHttpCallers() = default;

bool CHttpCallers::Enter()
{
    const std::lock_guard tLock(m_tMutex);
    m_nInside += m_bStopping ? 0 : 1;
    return !m_bStopping;
}

void CHttpCallers::Leave()
{
    const std::lock_guard tLock(m_tMutex);
    if (--m_nInside == 0 && m_bStopping)
    {
        m_tLeft.notify_all();
    }
}

// After Stop every group that is met is ended, so that its coroutines see it.
bool CHttpCallers::MustEnd(CHttpGroup& tGroup) const
{
    if (m_bStopping)
    {
        tGroup.End(eResultNotStarted);
    }
    return tGroup.IsEnded();
}

void CHttpCallers::Perform(CHttpGroup& tGroup, tagHttpRequest const& tRequest, tagHttpAnswer& tAnswer)
{
    std::optional<CWithoutPipeSignal> tWithoutSignal;
    if (tRequest.strUrl.starts_with("https"))
    {
        tWithoutSignal.emplace();
    }
    // Whoever ends the group says so in it first and wakes then: from here on we are woken.
    const CLease pDriver(*this, tGroup);
    if (MustEnd(tGroup))
    {
        tAnswer.nResult = tGroup.Result();
        return;
    }
    pDriver->Perform(tGroup, tRequest, tAnswer, [&] { return MustEnd(tGroup); });
}

void CHttpCallers::Wake(CHttpGroup const& tGroup)
{
    const std::lock_guard tLock(m_tMutex);
    for (CDriver* const ptDriver : m_apBusy)
    {
        if (ptDriver->m_ptGroup == &tGroup)
        {
            ptDriver->Wake();
        }
    }
}

void CHttpCallers::Stop()
{
    std::unique_lock tLock(m_tMutex);
    m_bStopping = true;
    for (CDriver* const ptDriver : m_apBusy)
    {
        ptDriver->Wake();
    }
    m_tLeft.wait(tLock, [this] { return m_nInside == 0; });
    m_apSpare.clear();
}

void CHttpCallers::Start()
{
    const std::lock_guard tLock(m_tMutex);
    m_bStopping = false;
}
} // namespace onvif
