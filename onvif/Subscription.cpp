#include "onvif/Subscription.h"

#include "onvif/Listener.h"

#include "protocol/PluginInterface.h"

#include <algorithm>
#include <utility>

namespace onvif
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tAsked = 60s;    // how long a subscription is to live
constexpr auto g_tLongest = 24h;  // that we believe; it is renewed before
constexpr auto g_tPull = 10s;     // how long the device is to wait for an event
constexpr auto g_tLook = 500ms;   // how soon it is seen that the login lives again
constexpr auto g_tLeave = 1000ms; // for saying good-bye
constexpr unsigned g_nMessages = 100;
constexpr std::size_t g_nMostStates = 10000; // a device that always has more would never let a caller go
constexpr std::chrono::seconds g_atPauses[] = {0s, 0s, 1s, 2s, 4s, 8s, 16s, 30s};

constexpr char g_szCreate[] = "http://www.onvif.org/ver10/events/wsdl/EventPortType/CreatePullPointSubscriptionRequest";
constexpr char g_szPull[] = "http://www.onvif.org/ver10/events/wsdl/PullPointSubscription/PullMessagesRequest";
constexpr char g_szSubscribe[] = "http://docs.oasis-open.org/wsn/bw-2/NotificationProducer/SubscribeRequest";
constexpr char g_szRenew[] = "http://docs.oasis-open.org/wsn/bw-2/SubscriptionManager/RenewRequest";
constexpr char g_szUnsubscribe[] = "http://docs.oasis-open.org/wsn/bw-2/SubscriptionManager/UnsubscribeRequest";

std::int64_t Ms(std::chrono::milliseconds tTime)
{
    return tTime.count();
}

// The device is there, but doesn't do it: with a fault.
bool IsFault(CAnswer const& tAnswer)
{
    return !tAnswer && tAnswer.Answered();
}

// What a failure says of a subscription. eResultNotFound: the device has forgotten it.
int ResultOf(CAnswer const& tAnswer)
{
    return IsFault(tAnswer) && tAnswer.Result() != eResultWrongLogin ? int{eResultNotFound} : tAnswer.Result();
}

tagRequest ToManager(std::string const& strTo, std::string const& strHeader, char const* szName, char const* szAction)
{
    tagRequest tRequest{eService::Events, szName};
    tRequest.strTo = strTo;
    tRequest.strHeader = strHeader;
    tRequest.szAction = szAction;
    return tRequest;
}
} // namespace

CSubscription::CSubscription(std::shared_ptr<CClient> pClient, std::shared_ptr<CWatch> pWatch,
                             std::shared_ptr<ISubscriber> pSubscriber, std::shared_ptr<CListener> pListener)
    : m_pClient(std::move(pClient)), m_pGroup(m_pClient->Group()), m_pWatch(std::move(pWatch)),
      m_pSubscriber(std::move(pSubscriber)), m_pListener(std::move(pListener)),
      m_strLocalHost(m_pListener ? CListener::LocalHostTowards(m_pClient->Address()) : std::string())
{
}

void CSubscription::Begin()
{
    m_pClient->Http().Begin(Run(shared_from_this()));
}

void CSubscription::End()
{
    m_bEnded = true;
}

// --- one subscription ------------------------------------------------------------------------------------------------

// Until when the device keeps it; on its own clock, so only the difference counts.
void CSubscription::TakeTimes(CAnswer const& tAnswer, tagManager& tManager)
{
    const auto llNow = Time(tAnswer.Body(), "CurrentTime");
    const auto llEnd = Time(tAnswer.Body(), "TerminationTime");
    const bool bTold = llNow && llEnd && *llEnd > *llNow;
    const std::chrono::microseconds tTold(bTold ? *llEnd - *llNow : 0);
    tManager.tGranted = bTold ? std::min<std::chrono::microseconds>(tTold, g_tLongest) : g_tAsked;
    tManager.tEnds = Clock::now() + tManager.tGranted;
}

rtsp::CTask<int> CSubscription::CreatePullPoint(std::shared_ptr<CClient> pClient, tagManager* ptManager)
{
    if (!pClient->Has(eService::Events))
    {
        co_return eResultNotSupported;
    }
    tagRequest tRequest{eService::Events, "CreatePullPointSubscription"};
    tRequest.strBody = CXmlWriter().Add("tev:InitialTerminationTime", DurationText(Ms(g_tAsked))).Take();
    tRequest.szAction = g_szCreate;
    tagRequest tPlain = tRequest;
    tPlain.strBody.clear();
    CAnswer tAnswer = co_await pClient->CallAsync(std::move(tRequest));
    if (IsFault(tAnswer) && tAnswer.Result() != eResultNotSupported && tAnswer.Result() != eResultWrongLogin)
    {
        tAnswer = co_await pClient->CallAsync(std::move(tPlain)); // it may not take the time that was asked for
    }
    if (!tAnswer)
    {
        co_return tAnswer.Result();
    }
    const pugi::xml_node tReference = Child(tAnswer.Body(), "SubscriptionReference");
    ptManager->strTo = Text(tReference, "Address");
    ptManager->strHeader = SerializedChildren(Child(tReference, "ReferenceParameters"));
    TakeTimes(tAnswer, *ptManager);
    co_return ptManager->strTo.empty() ? int{eResultRefused} : int{eResultOk};
}

rtsp::CTask<CAnswer> CSubscription::Pull(std::shared_ptr<CClient> pClient, tagManager* ptManager,
                                         std::chrono::milliseconds tWait)
{
    tagRequest tRequest = ToManager(ptManager->strTo, ptManager->strHeader, "PullMessages", g_szPull);
    tRequest.strBody =
        CXmlWriter().Add("tev:Timeout", DurationText(Ms(tWait))).Add("tev:MessageLimit", g_nMessages).Take();
    tRequest.tLimit = tWait + pClient->Limit();
    CAnswer tAnswer = co_await pClient->CallAsync(std::move(tRequest));
    if (tAnswer)
    {
        TakeTimes(tAnswer, *ptManager);
    }
    co_return tAnswer;
}

// Says good-bye to a subscription that nobody wants any more.
rtsp::CTask<> CSubscription::Leave(std::shared_ptr<CClient> pClient, tagManager tManager)
{
    tagRequest tRequest = ToManager(tManager.strTo, tManager.strHeader, "wsnt:Unsubscribe", g_szUnsubscribe);
    tRequest.tLimit = g_tLeave;
    co_await pClient->CallAsync(std::move(tRequest));
}

rtsp::CTask<int> CSubscription::StatesOf(std::shared_ptr<CClient> pClient, std::vector<tagNotification>* patStates)
{
    tagManager tManager;
    int nResult = co_await CreatePullPoint(pClient, &tManager);
    if (nResult != eResultOk)
    {
        co_return nResult;
    }
    // All states come with the first answers; one without any is the end of them.
    for (std::size_t nCount = 1; nCount != 0 && nResult == eResultOk;)
    {
        const CAnswer tAnswer = co_await Pull(pClient, &tManager, 1s);
        nResult = tAnswer.Result();
        nCount = 0;
        for (tagNotification& t : ReadNotifications(tAnswer.Body()))
        {
            nCount += t.eWhat == eChange::Initialized ? 1 : 0;
            patStates->push_back(std::move(t));
        }
        nCount = nCount < g_nMessages || patStates->size() >= g_nMostStates ? 0 : nCount;
    }
    co_await Leave(pClient, std::move(tManager));
    co_return nResult;
}

int CSubscription::ReadStates(CClient& tClient, std::vector<tagNotification>& atStates)
{
    const auto nResult = tClient.Http().Run(StatesOf(tClient.shared_from_this(), &atStates));
    return nResult.value_or(eResultNotStarted);
}

// --- a subscription that lives on ------------------------------------------------------------------------------------

// Where a device has no pull points, it sends.
rtsp::CTask<int> CSubscription::Subscribe()
{
    if (!m_strListener.empty())
    {
        m_pListener->Close(std::exchange(m_strListener, {})); // that of a subscription which was lost
    }
    m_strListener = m_strLocalHost.empty() ? std::string() : m_pListener->Open(m_strLocalHost, m_pSubscriber);
    if (m_strListener.empty())
    {
        co_return eResultNotSupported;
    }
    tagRequest tRequest{eService::Events, "wsnt:Subscribe"};
    tRequest.szAction = g_szSubscribe;
    tRequest.strBody = CXmlWriter()
                           .Open("wsnt:ConsumerReference")
                           .Add("wsa:Address", m_strListener)
                           .Close()
                           .Add("wsnt:InitialTerminationTime", DurationText(Ms(g_tAsked)))
                           .Take();
    const CAnswer tAnswer = co_await m_pClient->CallAsync(std::move(tRequest));
    if (tAnswer)
    {
        const pugi::xml_node tReference = Child(tAnswer.Body(), "SubscriptionReference");
        m_tManager.strTo = Text(tReference, "Address");
        m_tManager.strHeader = SerializedChildren(Child(tReference, "ReferenceParameters"));
        TakeTimes(tAnswer, m_tManager);
    }
    if (!tAnswer || m_tManager.strTo.empty())
    {
        m_pListener->Close(std::exchange(m_strListener, {}));
        co_return tAnswer ? int{eResultRefused} : tAnswer.Result();
    }
    co_return eResultOk;
}

rtsp::CTask<int> CSubscription::Create()
{
    int nResult = eResultNotSupported;
    if (!m_bPullsFail)
    {
        nResult = co_await CreatePullPoint(m_pClient, &m_tManager);
        m_bPullsFail = nResult == eResultNotSupported;
    }
    // A device that has no pull points left may still send.
    const bool bHasNone = nResult == eResultNotSupported || nResult == eResultRefused || nResult == eResultBusy;
    if (bHasNone && m_pClient->Has(eService::Events))
    {
        const int nSubscribed = co_await Subscribe();
        nResult = nSubscribed == eResultOk ? nSubscribed : nResult;
    }
    co_return nResult;
}

rtsp::CTask<int> CSubscription::Renew()
{
    tagRequest tRequest = ToManager(m_tManager.strTo, m_tManager.strHeader, "wsnt:Renew", g_szRenew);
    tRequest.strBody = CXmlWriter().Add("wsnt:TerminationTime", DurationText(Ms(g_tAsked))).Take();
    const CAnswer tAnswer = co_await m_pClient->CallAsync(std::move(tRequest));
    if (tAnswer)
    {
        TakeTimes(tAnswer, m_tManager);
    }
    // Some devices know no renewal: pulling is enough for them.
    const bool bEnough = tAnswer.Result() == eResultNotSupported && m_strListener.empty();
    co_return bEnough ? int{eResultOk} : ResultOf(tAnswer);
}

// Keeps it alive and hands on what comes, until it fails.
rtsp::CTask<int> CSubscription::Serve()
{
    const Clock::duration tMargin = std::min<Clock::duration>(g_tAsked, m_tManager.tGranted) / 2;
    while (!IsOver())
    {
        const Clock::duration tLeft = m_tManager.tEnds - Clock::now();
        if (tLeft <= tMargin)
        {
            const int nResult = co_await Renew();
            if (nResult != eResultOk)
            {
                co_return nResult;
            }
            m_tManager.tEnds = std::max(m_tManager.tEnds, Clock::now() + tMargin + 1s);
            m_bServed = true;
        }
        else if (!m_strListener.empty())
        {
            const auto tUntil = Clock::now() + std::min<Clock::duration>(tLeft - tMargin, 1s);
            co_await m_pClient->Http().Until(m_pGroup, tUntil);
        }
        else
        {
            const auto tWait = std::clamp<std::chrono::milliseconds>(
                std::chrono::duration_cast<std::chrono::milliseconds>(tMargin / 2), 1000ms, g_tPull);
            const CAnswer tAnswer = co_await Pull(m_pClient, &m_tManager, tWait);
            if (!tAnswer)
            {
                co_return ResultOf(tAnswer);
            }
            m_bServed = true;
            auto atEvents = ReadNotifications(tAnswer.Body());
            if (!atEvents.empty() && !IsOver())
            {
                m_pSubscriber->OnEvents(std::move(atEvents));
            }
        }
    }
    co_return eResultOk;
}

rtsp::CTask<> CSubscription::Run(std::shared_ptr<CSubscription> pSelf)
{
    CSubscription& t = *pSelf;
    bool bHad = false;     // there was one before
    bool bWasLost = false; // the device was out of reach
    std::size_t nFailures = 0;
    while (!t.IsOver())
    {
        const auto tPause = t.m_pWatch->IsAlive()
                                ? std::chrono::milliseconds(g_atPauses[std::min(nFailures, std::size(g_atPauses) - 1)])
                                : g_tLook;
        if (tPause.count() != 0)
        {
            co_await t.m_pClient->Http().Until(t.m_pGroup, Clock::now() + tPause);
        }
        if (t.m_pWatch->Status() == eLoginEnded)
        {
            t.m_pSubscriber->OnNone(eResultWrongLogin);
            break;
        }
        if (t.IsOver() || !t.m_pWatch->IsAlive())
        {
            nFailures = 0; // what failed was the login
            continue;
        }
        int nResult = eResultOk;
        if (t.m_tManager.strTo.empty())
        {
            nResult = co_await t.Create();
            if (nResult == eResultNotSupported)
            {
                t.m_pSubscriber->OnNone(nResult);
                break;
            }
            if (nResult == eResultOk && std::exchange(bHad, true))
            {
                t.m_pSubscriber->OnGap(bWasLost);
            }
            bWasLost = false;
        }
        t.m_bServed = false;
        if (nResult == eResultOk)
        {
            nResult = co_await t.Serve();
        }
        nFailures = t.m_bServed ? 0 : nFailures + 1;
        if (nResult == eResultWrongLogin)
        {
            t.m_pWatch->Doubt();
        }
        // What only couldn't be reached may still be there, as long as its time isn't over.
        const bool bForgotten = nResult == eResultNotFound;
        const bool bOver = Clock::now() >= t.m_tManager.tEnds;
        bWasLost = !bOver && (bForgotten ? bWasLost : nResult != eResultOk);
        if (bForgotten || bOver)
        {
            t.m_tManager.strTo.clear();
        }
    }
    if (!t.m_strListener.empty())
    {
        t.m_pListener->Close(std::exchange(t.m_strListener, {}));
    }
    if (!t.m_tManager.strTo.empty() && t.m_pWatch->IsAlive())
    {
        co_await Leave(t.m_pClient, t.m_tManager);
    }
}
} // namespace onvif
