#include "onvif/Client.h"

#include "onvif/Security.h"

#include "protocol/PluginInterface.h"
#include "rtsp/Authentication.h"
#include "rtsp/Text.h"

#include <algorithm>
#include <utility>

namespace onvif
{
namespace
{
using std::chrono::milliseconds;

constexpr std::int64_t g_llClockMoved = 2'000'000; // microseconds: worth a second try

std::int64_t NowUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

milliseconds Left(Clock::time_point tUntil)
{
    return std::max(milliseconds(1), std::chrono::ceil<milliseconds>(tUntil - Clock::now()));
}

std::string ElementOf(tagRequest const& tRequest)
{
    const std::string strName = tRequest.szName;
    return strName.find(':') == std::string::npos ? NameOf(tRequest.eTo).szPrefix + (':' + strName) : strName;
}

// Our password goes over the network as a digest only.
std::vector<std::string_view> DigestsOf(std::vector<std::string> const& astrChallenges)
{
    std::vector<std::string_view> astrDigests;
    std::ranges::copy_if(astrChallenges, std::back_inserter(astrDigests),
                         [](std::string const& str) { return !rtsp::BeginsInAnyCase(str, "basic"); });
    return astrDigests;
}

bool WasRefusedForLogin(CAnswer const& tAnswer)
{
    return tAnswer.Result() == eResultWrongLogin;
}
} // namespace

struct CClient::tagState
{
    explicit tagState(tagClientOptions const& t) : tAuthenticator(t.strUser, t.strPassword) {}

    rtsp::CAuthenticator tAuthenticator;
    bool bKnowsServices = false;
};

CClient::CClient(CHttp& tHttp, tagClientOptions tOptions)
    : m_tHttp(tHttp), m_tOptions(std::move(tOptions)),
      m_ptState(new tagState(m_tOptions), [](tagState* pt) { delete pt; })
{
}

// --- doors for any thread --------------------------------------------------------------------------------------------

int CClient::Login()
{
    return m_tHttp.Wait(LoginAsync()).value_or(eResultNotStarted);
}

int CClient::Ping(milliseconds tLimit)
{
    return m_tHttp.Wait(PingAsync(tLimit)).value_or(eResultNotStarted);
}

void CClient::Interrupt(int nResult)
{
    const auto pEnded = [this]
    {
        const std::lock_guard tLock(m_tMutex);
        return std::exchange(m_pGroup, std::make_shared<CHttpGroup>());
    }();
    m_tHttp.End(pEnded, nResult);
}

std::shared_ptr<CHttpGroup> CClient::Group() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_pGroup;
}

CAnswer CClient::Call(tagRequest tRequest)
{
    return m_tHttp.Wait(CallAsync(std::move(tRequest))).value_or(CAnswer::Failed(eResultNotStarted));
}

tagHttpAnswer CClient::Get(std::string strAnnounced, std::size_t nMost)
{
    tagHttpAnswer tNone;
    tNone.nResult = eResultNotStarted;
    return m_tHttp.Wait(GetAsync(std::move(strAnnounced), nMost)).value_or(std::move(tNone));
}

bool CClient::Has(eService eWhich) const
{
    const std::lock_guard tLock(m_tMutex);
    return !m_astrServices[static_cast<std::size_t>(eWhich)].empty();
}

std::string CClient::Reachable(std::string_view strAnnounced) const
{
    const std::lock_guard tLock(m_tMutex);
    return onvif::Reachable(strAnnounced, m_tOptions.tAddress, m_wAnnouncedPort);
}

std::int64_t CClient::DeviceTimeUs() const
{
    return NowUs() + m_llOffsetUs;
}

tagDeviceInformation CClient::Information() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_tInformation;
}

void CClient::OnResult(std::function<void(int)> fnResult)
{
    const std::lock_guard tLock(m_tMutex);
    m_fnResult = std::move(fnResult);
}

// --- the HTTP thread -------------------------------------------------------------------------------------------------

void CClient::Tell(int nResult)
{
    std::function<void(int)> fnResult;
    {
        const std::lock_guard tLock(m_tMutex);
        fnResult = m_fnResult;
    }
    if (fnResult)
    {
        fnResult(nResult);
    }
}

// Sends, and answers a challenge once.
rtsp::CTask<tagHttpAnswer> CClient::Send(tagHttpRequest tRequest, bool bWithLogin, Clock::time_point tUntil,
                                         std::shared_ptr<CHttpGroup> pGroup)
{
    const auto pThis = shared_from_this();
    pGroup = pGroup ? std::move(pGroup) : Group();
    const std::string strMethod = tRequest.strBody.empty() ? "GET" : "POST";
    const auto tAddress = ParseAddress(tRequest.strUrl);
    tRequest.bCheckCertificate = m_tOptions.bCheckCertificate;
    tagHttpAnswer tAnswer;
    if (!tAddress)
    {
        tAnswer.nResult = eResultBadAddress;
        co_return tAnswer;
    }
    for (bool bAgain = true; bAgain;)
    {
        tRequest.tLimit = Left(tUntil);
        tRequest.strAuthorization =
            bWithLogin ? m_ptState->tAuthenticator.Authorization(strMethod, tAddress->strPath) : std::string();
        tAnswer = co_await m_tHttp.Send(pGroup, tRequest);
        bAgain = bWithLogin && tAnswer.nResult == eResultOk && tAnswer.nStatus == 401 && Clock::now() < tUntil &&
                 m_ptState->tAuthenticator.TakeChallenges(DigestsOf(tAnswer.astrChallenges));
    }
    Tell(tAnswer.nResult);
    co_return tAnswer;
}

rtsp::CTask<CAnswer> CClient::Exchange(tagRequest tRequest, bool bWithLogin, Clock::time_point tUntil)
{
    std::string strUrl;
    if (tRequest.strTo.empty())
    {
        const std::lock_guard tLock(m_tMutex);
        strUrl = m_astrServices[static_cast<std::size_t>(tRequest.eTo)];
        strUrl = strUrl.empty() && tRequest.eTo == eService::Device ? m_tOptions.tAddress.Text() : strUrl;
    }
    else
    {
        strUrl = Reachable(tRequest.strTo);
    }
    if (strUrl.empty())
    {
        co_return CAnswer::Failed(eResultNotSupported, "the device has no such service");
    }
    std::string strHeader = std::move(tRequest.strHeader);
    if (tRequest.szAction)
    {
        CXmlWriter tXml;
        tXml.Add("wsa:Action", tRequest.szAction).Add("wsa:To", tRequest.strTo.empty() ? strUrl : tRequest.strTo);
        strHeader += tXml.Take();
    }
    if (bWithLogin && !m_tOptions.strUser.empty())
    {
        strHeader += UsernameToken(m_tOptions.strUser, m_tOptions.strPassword, DeviceTimeUs());
    }
    tagHttpRequest tHttp;
    tHttp.strUrl = strUrl;
    tHttp.strBody = Envelope(ElementOf(tRequest), tRequest.strBody, strHeader);
    tHttp.strType = "application/soap+xml; charset=utf-8";
    if (tRequest.szAction)
    {
        tHttp.strType += std::string("; action=\"") + tRequest.szAction + '"';
    }
    else if (std::string_view(tRequest.szName).find(':') == std::string_view::npos)
    {
        tHttp.strType += std::string("; action=\"") + NameOf(tRequest.eTo).szNamespace + '/' + tRequest.szName + '"';
    }
    const tagHttpAnswer tAnswer = co_await Send(std::move(tHttp), bWithLogin, tUntil);
    co_return tAnswer.nResult == eResultOk ? CAnswer::Read(tAnswer.nStatus, tAnswer.strBody)
                                           : CAnswer::Failed(tAnswer.nResult, tAnswer.strError);
}

rtsp::CTask<int> CClient::AskClock(Clock::time_point tUntil)
{
    tagRequest tRequest;
    tRequest.szName = "GetSystemDateAndTime";
    const std::int64_t llSent = NowUs();
    const CAnswer tAnswer = co_await Exchange(std::move(tRequest), false, tUntil);
    if (!tAnswer.Answered())
    {
        co_return tAnswer.Result();
    }
    const pugi::xml_node tUtc = Find(tAnswer.Body(), "SystemDateAndTime/UTCDateTime");
    const auto fnPart = [&](char const* szPath) { return Integer(tUtc, szPath); };
    const auto nYear = fnPart("Date/Year");
    const auto nMonth = fnPart("Date/Month");
    const auto nDay = fnPart("Date/Day");
    const auto nHour = fnPart("Time/Hour");
    const auto nMinute = fnPart("Time/Minute");
    const auto nSecond = fnPart("Time/Second");
    if (nYear && nMonth && nDay && nHour && nMinute && nSecond)
    {
        char szText[160];
        std::snprintf(szText, sizeof szText, "%04lld-%02lld-%02lldT%02lld:%02lld:%02lldZ",
                      static_cast<long long>(*nYear), static_cast<long long>(*nMonth), static_cast<long long>(*nDay),
                      static_cast<long long>(*nHour), static_cast<long long>(*nMinute),
                      static_cast<long long>(*nSecond));
        if (const auto llDevice = ParseTime(szText))
        {
            m_llOffsetUs = *llDevice - (llSent + (NowUs() - llSent) / 2);
        }
    }
    co_return eResultOk;
}

void CClient::TakeService(eService eWhich, std::string_view strAddress)
{
    std::string& strService = m_astrServices[static_cast<std::size_t>(eWhich)];
    if (strService.empty() && !strAddress.empty())
    {
        strService = onvif::Reachable(strAddress, m_tOptions.tAddress, m_wAnnouncedPort);
    }
}

rtsp::CTask<int> CClient::AskServices(Clock::time_point tUntil)
{
    tagRequest tRequest;
    tRequest.szName = "GetServices";
    tRequest.strBody = CXmlWriter().Add("tds:IncludeCapability", false).Take();
    const CAnswer tServices = co_await Exchange(std::move(tRequest), true, tUntil);
    if (tServices)
    {
        const std::lock_guard tLock(m_tMutex);
        const auto atServices = Children(tServices.Body(), "Service");
        for (pugi::xml_node const& tService : atServices)
        {
            const auto tAddress = ParseAddress(Text(tService, "XAddr"));
            if (Text(tService, "Namespace") == NameOf(eService::Device).szNamespace && tAddress)
            {
                m_wAnnouncedPort = tAddress->wPort;
            }
        }
        for (pugi::xml_node const& tService : atServices)
        {
            if (tagServiceName const* const ptName = FindService(Text(tService, "Namespace")))
            {
                TakeService(ptName->eWhich, Text(tService, "XAddr"));
            }
        }
        co_return eResultOk;
    }
    if (!tServices.Answered() || WasRefusedForLogin(tServices))
    {
        co_return tServices.Result();
    }
    tagRequest tOlder;
    tOlder.szName = "GetCapabilities";
    tOlder.strBody = CXmlWriter().Add("tds:Category", "All").Take();
    const CAnswer tCapabilities = co_await Exchange(std::move(tOlder), true, tUntil);
    if (tCapabilities)
    {
        const std::lock_guard tLock(m_tMutex);
        const pugi::xml_node tAll = Child(tCapabilities.Body(), "Capabilities");
        if (const auto tAddress = ParseAddress(Text(tAll, "Device/XAddr")))
        {
            m_wAnnouncedPort = tAddress->wPort;
        }
        for (std::size_t i = 0; i < g_nServices; ++i)
        {
            tagServiceName const& tName = NameOf(static_cast<eService>(i));
            if (tName.szInCapabilities)
            {
                TakeService(tName.eWhich, Text(Find(tAll, tName.szInCapabilities), "XAddr"));
            }
        }
    }
    co_return tCapabilities.Result();
}

void CClient::Forget()
{
    const std::lock_guard tLock(m_tMutex);
    m_astrServices = {};
    m_tUnsupported.clear();
}

rtsp::CTask<int> CClient::LoginAsync()
{
    const auto pThis = shared_from_this();
    const auto tUntil = Clock::now() + m_tOptions.tLoginLimit;
    Forget();
    int nResult = co_await AskClock(tUntil);
    if (nResult == eResultOk)
    {
        nResult = co_await AskServices(tUntil);
    }
    if (nResult == eResultOk)
    {
        tagRequest tRequest;
        tRequest.szName = "GetDeviceInformation";
        const CAnswer tAnswer = co_await Exchange(std::move(tRequest), true, tUntil);
        nResult = tAnswer.Result() == eResultNotSupported ? int{eResultOk} : tAnswer.Result();
        const std::lock_guard tLock(m_tMutex);
        m_tInformation = {std::string(Text(tAnswer.Body(), "Manufacturer")), std::string(Text(tAnswer.Body(), "Model")),
                          std::string(Text(tAnswer.Body(), "FirmwareVersion")),
                          std::string(Text(tAnswer.Body(), "SerialNumber")),
                          std::string(Text(tAnswer.Body(), "HardwareId"))};
    }
    co_return nResult;
}

rtsp::CTask<int> CClient::PingAsync(milliseconds tLimit)
{
    const auto pThis = shared_from_this();
    co_return co_await AskClock(Clock::now() + tLimit);
}

rtsp::CTask<CAnswer> CClient::CallAsync(tagRequest tRequest)
{
    const auto pThis = shared_from_this();
    const auto tUntil = Clock::now() + (tRequest.tLimit.count() ? tRequest.tLimit : m_tOptions.tLimit);
    const std::pair<eService, std::string> tWhat(tRequest.eTo, tRequest.szName);
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_tUnsupported.contains(tWhat))
        {
            co_return CAnswer::Failed(eResultNotSupported, "asked before");
        }
    }
    tagRequest tAgain = tRequest;
    CAnswer tAnswer = co_await Exchange(std::move(tRequest), true, tUntil);
    if (WasRefusedForLogin(tAnswer))
    {
        // Another clock is the commonest reason; the same clock means another password, or too little rights.
        const std::int64_t llOffset = m_llOffsetUs;
        if (co_await AskClock(tUntil) == eResultOk && std::abs(m_llOffsetUs - llOffset) > g_llClockMoved)
        {
            tAnswer = co_await Exchange(std::move(tAgain), true, tUntil);
        }
    }
    if (tAnswer.Result() == eResultNotSupported && tAnswer.Answered())
    {
        const std::lock_guard tLock(m_tMutex);
        m_tUnsupported.insert(tWhat);
    }
    co_return tAnswer;
}

rtsp::CTask<tagHttpAnswer> CClient::GetAsync(std::string strAnnounced, std::size_t nMost)
{
    tagHttpRequest tRequest;
    tRequest.strUrl = Reachable(strAnnounced);
    tRequest.nMost = nMost;
    co_return co_await Send(std::move(tRequest), true, Clock::now() + m_tOptions.tLimit);
}

rtsp::CTask<tagHttpAnswer> CClient::PutAsync(std::string strAnnounced, std::string strBody, std::string strType,
                                             milliseconds tLimit, std::shared_ptr<CHttpGroup> pGroup,
                                             std::function<void(std::uint64_t)> fnSent)
{
    tagHttpRequest tRequest;
    tRequest.strUrl = Reachable(strAnnounced);
    tRequest.strBody = std::move(strBody);
    tRequest.strType = std::move(strType);
    tRequest.fnSent = std::move(fnSent);
    co_return co_await Send(std::move(tRequest), true, Clock::now() + tLimit, std::move(pGroup));
}
} // namespace onvif
