// The event service: pull points and base notification.

#include "tools/onvif_device/Call.h"
#include "tools/onvif_device/Exchange.h"
#include "tools/onvif_device/TopicFilter.h"

#include "plugins/device/Worker.h"

namespace onvif_device
{
namespace
{
constexpr int64_t g_llUsualUs = 60000000;
constexpr int64_t g_llLongestUs = 3600000000;
constexpr int64_t g_llLongestPullUs = 60000000;
constexpr std::string_view g_strPath = "/onvif/subscription/";

[[noreturn]] void FailGone()
{
    throw CFault(eBlame::Sender, "wsrfr:ResourceUnknownFault", {}, "there is no such subscription");
}

// --- when it ends ----------------------------------------------------------------------------------------------------

// The end that was asked for, on the steady clock; the device's own may be years off, and may jump.
int64_t EndAt(CCall& tCall, CCall::Path astrPath)
{
    const int64_t llNowUs = tCall.Device().NowUs();
    int64_t llEndUs = llNowUs + g_llUsualUs;
    const std::string strTime = tCall.Text(astrPath);
    if (!strTime.empty() && !ParseTimeOrDuration(strTime, llNowUs, llEndUs))
    {
        throw CFault(eBlame::Sender, "wsnt:UnacceptableTerminationTimeFault", {}, strTime + " is no time");
    }
    if (llEndUs <= llNowUs)
    {
        throw CFault(eBlame::Sender, "wsnt:UnacceptableInitialTerminationTimeFault", {}, "that time is over");
    }
    return device::SteadyUs() + std::min(llEndUs - llNowUs, g_llLongestUs);
}

void WriteTimes(CCall& tCall, int64_t llEndUs, char const* szCurrent, char const* szEnd, bool bEndFirst)
{
    const int64_t llNowUs = tCall.Device().NowUs();
    const std::string strEnd = DateTime(llNowUs + llEndUs - device::SteadyUs());
    tCall.Xml().Put(bEndFirst ? szEnd : szCurrent, bEndFirst ? strEnd : DateTime(llNowUs));
    tCall.Xml().Put(bEndFirst ? szCurrent : szEnd, bEndFirst ? DateTime(llNowUs) : strEnd);
}

// --- which one -------------------------------------------------------------------------------------------------------

std::string SubscriptionOf(CCall& tCall)
{
    if (tCall.Quirks().bReference)
    {
        return ChildText(tCall.Header(), "SubscriptionId");
    }
    std::string const& strPath = tCall.Exchange().strPath;
    return strPath.starts_with(g_strPath) ? strPath.substr(g_strPath.size()) : std::string();
}

std::string AddressOf(CCall& tCall, std::string const& strId)
{
    return tCall.Quirks().bReference ? tCall.ServiceAddress(eService::Events)
                                     : tCall.Address(std::string(g_strPath) + strId);
}

void Open(CCall& tCall, std::string const& strConsumer)
{
    CXml& tXml = tCall.Xml();
    const int64_t llEndUs = EndAt(tCall, {"InitialTerminationTime"});
    const std::string strId =
        tCall.Face().Subscriptions().Add(TopicsOf(tCall.At({"Filter", "TopicExpression"})), strConsumer, llEndUs,
                                         static_cast<std::size_t>(tCall.Quirks().llMaxPullPoints));
    if (strId.empty())
    {
        throw CFault(eBlame::Receiver, "ter:Action", "ter:MaxPullPoints", "there are too many pull points already");
    }
    const char* const szReference = strConsumer.empty() ? "tev:SubscriptionReference" : "wsnt:SubscriptionReference";
    tXml.In(szReference,
            [&]
            {
                tXml.Put("wsa:Address", AddressOf(tCall, strId));
                if (tCall.Quirks().bReference)
                {
                    tXml.In("wsa:ReferenceParameters", [&] { tXml.Put("box:SubscriptionId", strId); });
                }
            });
    WriteTimes(tCall, llEndUs, "wsnt:CurrentTime", "wsnt:TerminationTime", false);
}

void CreatePullPointSubscription(CCall& tCall)
{
    Open(tCall, {});
}

void Subscribe(CCall& tCall)
{
    Open(tCall, tCall.Text({"ConsumerReference", "Address"}));
}

// --- messages --------------------------------------------------------------------------------------------------------

void PullMessages(CCall& tCall)
{
    const std::string strId = SubscriptionOf(tCall);
    const int64_t llForUs = std::clamp<int64_t>(tCall.DurationUs({"Timeout"}, 0), 0, g_llLongestPullUs);
    const auto nMost = static_cast<std::size_t>(tCall.Integer({"MessageLimit"}, 1, 1 << 20));
    const int64_t llUntilUs = tCall.Exchange().llArrivedUs + llForUs;
    CSubscriptions& tSubscriptions = tCall.Face().Subscriptions();
    std::vector<tagMessage> atMessages;
    int64_t llEndUs = 0;
    if (!tSubscriptions.Pull(strId, nMost, atMessages) || !tSubscriptions.EndOf(strId, llEndUs))
    {
        FailGone();
    }
    if (atMessages.empty() && device::SteadyUs() < llUntilUs)
    {
        throw tagNotYet{llUntilUs};
    }
    WriteTimes(tCall, llEndUs, "tev:CurrentTime", "tev:TerminationTime", false);
    for (tagMessage const& t : atMessages)
    {
        t.Write(tCall.Xml(), AddressOf(tCall, strId));
    }
}

void Renew(CCall& tCall)
{
    const int64_t llEndUs = EndAt(tCall, {"TerminationTime"});
    if (!tCall.Face().Subscriptions().Renew(SubscriptionOf(tCall), llEndUs))
    {
        FailGone();
    }
    WriteTimes(tCall, llEndUs, "wsnt:CurrentTime", "wsnt:TerminationTime", true);
}

void Unsubscribe(CCall& tCall)
{
    if (!tCall.Face().Subscriptions().Remove(SubscriptionOf(tCall)))
    {
        FailGone();
    }
}

void SetSynchronizationPoint(CCall& tCall)
{
    if (!tCall.Face().Subscriptions().Synchronize(SubscriptionOf(tCall)))
    {
        FailGone();
    }
}

void GetEventProperties(CCall& tCall)
{
    CXml& tXml = tCall.Xml();
    tXml.Put("tev:TopicNamespaceLocation", "http://www.onvif.org/onvif/ver10/topics/topicns.xml");
    tXml.Put("wsnt:FixedTopicSet", true);
    tXml.In("wstop:TopicSet", [&] { WriteTopicSet(tXml); });
    for (char const* const szDialect : g_aszTopicDialects)
    {
        tXml.Put("wsnt:TopicExpressionDialect", szDialect);
    }
    tXml.Put("tev:MessageContentFilterDialect", "http://www.onvif.org/ver10/tev/messageContentFilter/ItemFilter");
    tXml.Put("tev:MessageContentSchemaLocation", "http://www.onvif.org/onvif/ver10/schema/onvif.xsd");
}

#define ONVIF_FILTER "Filter{wsnt:TopicExpression[Dialect]* wsnt:MessageContent[Dialect]*}?"
constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::Events>},
    {"GetEventProperties", eUserViewer, "", GetEventProperties},
    {"CreatePullPointSubscription", eUserViewer, ONVIF_FILTER " InitialTerminationTime? SubscriptionPolicy{...}? ...",
     CreatePullPointSubscription},
    {"PullMessages", eUserViewer, "Timeout MessageLimit ...", PullMessages},
    {"SetSynchronizationPoint", eUserViewer, "", SetSynchronizationPoint},
    {"wsnt:Subscribe", eUserViewer,
     "ConsumerReference{wsa:Address ...} " ONVIF_FILTER " InitialTerminationTime? SubscriptionPolicy{...}? ...",
     Subscribe},
    {"wsnt:Renew", eUserViewer, "TerminationTime ...", Renew},
    {"wsnt:Unsubscribe", eUserViewer, "...", Unsubscribe},
};
} // namespace

std::span<tagAction const> EventActions()
{
    return g_atActions;
}
} // namespace onvif_device
