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

constexpr unsigned g_nMostTries = 6;               // of one request, with challenges and redirections
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

// Over an open network our password goes as a digest only.
std::vector<std::string_view> SafeOf(std::vector<std::string> const& astrChallenges, bool bTls)
{
    std::vector<std::string_view> astrSafe;
    std::ranges::copy_if(astrChallenges, std::back_inserter(astrSafe),
                         [=](std::string const& str) { return bTls || !rtsp::BeginsInAnyCase(str, "basic"); });
    return astrSafe;
}

std::string_view PathIn(std::string_view strUrl)
{
    const std::size_t nPath = strUrl.find('/', strUrl.find("://") + 3);
    return nPath == std::string_view::npos ? "/" : strUrl.substr(nPath);
}

// Empty: it says no such thing, or names another host, where our login has no business.
std::string MovedTo(tagHttpAnswer const& tAnswer, std::string const& strFrom)
{
    const bool bMoved =
        tAnswer.nStatus == 301 || tAnswer.nStatus == 302 || tAnswer.nStatus == 307 || tAnswer.nStatus == 308;
    if (tAnswer.nResult != eResultOk || !bMoved)
    {
        return {};
    }
    const tagAddress tFrom = ParseAddress(strFrom).value_or(tagAddress{});
    tagAddress tTo = tFrom;
    tTo.strPath = tAnswer.strLocation;
    const auto tWhole = ParseAddress(tAnswer.strLocation);
    return tWhole && tWhole->strHost == tFrom.strHost        ? tWhole->Text()
           : !tWhole && tAnswer.strLocation.starts_with('/') ? tTo.Text()
                                                             : std::string();
}

std::string ActionOf(tagRequest const& tRequest)
{
    if (tRequest.szAction)
    {
        return std::string("; action=\"") + tRequest.szAction + '"';
    }
    const bool bOwn = std::string_view(tRequest.szName).find(':') == std::string_view::npos;
    return bOwn ? std::string("; action=\"") + NameOf(tRequest.eTo).szNamespace + '/' + tRequest.szName + '"'
                : std::string();
}

// A device that says a wrong length has answered all the same when the whole document came.
bool IsComplete(tagHttpAnswer const& tAnswer)
{
    const bool bCut = tAnswer.nResult == eResultConnectionLost || tAnswer.nResult == eResultTimeOut;
    return tAnswer.nResult == eResultOk ||
           (bCut && tAnswer.nStatus == 200 && rtsp::Trim(tAnswer.strBody).ends_with("Envelope>"));
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
    unsigned nChallenges = 0; ///< that were taken
    unsigned nGood = 0;       ///< the last one whose answer let a request in
};

CClient::CClient(CHttp& tHttp, tagClientOptions tOptions)
    : m_tHttp(tHttp), m_tOptions(std::move(tOptions)),
      m_ptState(new tagState(m_tOptions), [](tagState* pt) { delete pt; })
{
}

CClient::~CClient()
{
    m_tHttp.End(m_pGroup, eResultBadHandle); // and its connections
}

// --- doors for any thread --------------------------------------------------------------------------------------------

int CClient::Login()
{
    return m_tHttp.Run(LoginAsync()).value_or(eResultNotStarted);
}

int CClient::Ping(milliseconds tLimit)
{
    return m_tHttp.Run(PingAsync(tLimit)).value_or(eResultNotStarted);
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
    return m_tHttp.Run(CallAsync(std::move(tRequest))).value_or(CAnswer::Failed(eResultNotStarted));
}

tagHttpAnswer CClient::Get(std::string strAnnounced, std::size_t nMost)
{
    tagHttpAnswer tNone;
    tNone.nResult = eResultNotStarted;
    return m_tHttp.Run(GetAsync(std::move(strAnnounced), nMost)).value_or(std::move(tNone));
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
    m_pfnResult = std::make_shared<std::function<void(int)> const>(std::move(fnResult));
}

// --- coroutines ------------------------------------------------------------------------------------------------------

void CClient::Tell(int nResult)
{
    const auto pfnResult = [this]
    {
        const std::lock_guard tLock(m_tMutex);
        return m_pfnResult;
    }();
    if (pfnResult && *pfnResult)
    {
        (*pfnResult)(nResult);
    }
}

std::string CClient::Authorization(std::string_view strMethod, std::string_view strUrl, unsigned& nChallenge)
{
    const std::lock_guard tLock(m_tMutex);
    nChallenge = m_ptState->nChallenges;
    return m_ptState->tAuthenticator.Authorization(strMethod, PathIn(strUrl));
}

bool CClient::TakeChallenges(tagHttpAnswer const& tAnswer, std::string_view strUrl, unsigned nAnswered, unsigned& nOwn)
{
    const std::lock_guard tLock(m_tMutex);
    if (nAnswered != m_ptState->nChallenges)
    {
        return true; // another call has been given a newer one meanwhile: that one is answered
    }
    if (nAnswered != nOwn && nAnswered != m_ptState->nGood)
    {
        // It was given to another call, and may be good for that one's address or connection alone: that it was refused
        // here says nothing of the password.
        m_ptState->tAuthenticator = rtsp::CAuthenticator(m_tOptions.strUser, m_tOptions.strPassword);
    }
    const bool bTaken =
        m_ptState->tAuthenticator.TakeChallenges(SafeOf(tAnswer.astrChallenges, strUrl.starts_with("https")));
    m_ptState->nChallenges += bTaken ? 1 : 0;
    nOwn = m_ptState->nChallenges;
    return bTaken;
}

void CClient::LetIn(unsigned nAnswered)
{
    const std::lock_guard tLock(m_tMutex);
    m_ptState->nGood = std::max(m_ptState->nGood, nAnswered);
}

unsigned CClient::Challenges() const
{
    const std::lock_guard tLock(m_tMutex);
    return m_ptState->nChallenges;
}

// Answers challenges, and follows a device that moves itself to another of its own ports.
rtsp::CTask<tagHttpAnswer> CClient::Send(tagHttpRequest tRequest, eProof eWith, Clock::time_point tUntil,
                                         std::shared_ptr<CHttpGroup> pGroup, std::string strToken)
{
    const auto pThis = shared_from_this();
    pGroup = pGroup ? std::move(pGroup) : Group();
    char const* const szMethod = tRequest.strBody.empty() ? "GET" : "POST";
    tRequest.bCheckCertificate = m_tOptions.bCheckCertificate;
    tagHttpAnswer tAnswer;
    bool bAgain = true;
    unsigned nOwn = 0; // the challenge that came to this request
    for (unsigned nTry = 0; bAgain && nTry < g_nMostTries; ++nTry)
    {
        unsigned nChallenge = 0;
        tRequest.tLimit = Left(tUntil);
        tRequest.strAuthorization =
            eWith == eProof::None ? std::string() : Authorization(szMethod, tRequest.strUrl, nChallenge);
        tAnswer = co_await m_tHttp.Send(pGroup, tRequest);
        bAgain = false;
        if (tAnswer.nResult == eResultOk && tAnswer.nStatus == 401 && eWith != eProof::None)
        {
            bAgain = TakeChallenges(tAnswer, tRequest.strUrl, nChallenge, nOwn);
        }
        else if (const std::string strMoved = MovedTo(tAnswer, tRequest.strUrl); !strMoved.empty())
        {
            tRequest.strUrl = strMoved;
            bAgain = true;
        }
        else if (tAnswer.nResult == eResultOk && !tRequest.strAuthorization.empty())
        {
            LetIn(nChallenge);
        }
        if (bAgain && !strToken.empty())
        {
            // A device takes each token once.
            const std::string strNew = UsernameToken(m_tOptions.strUser, m_tOptions.strPassword, DeviceTimeUs());
            tRequest.strBody.replace(tRequest.strBody.find(strToken), strToken.size(), strNew);
            strToken = strNew;
        }
    }
    if (!pGroup->IsEnded())
    {
        Tell(tAnswer.nResult);
    }
    co_return tAnswer;
}

std::string CClient::AddressFor(tagRequest const& tRequest) const
{
    if (!tRequest.strTo.empty())
    {
        return Reachable(tRequest.strTo);
    }
    const std::lock_guard tLock(m_tMutex);
    std::string const& strService = m_astrServices[static_cast<std::size_t>(tRequest.eTo)];
    return strService.empty() && tRequest.eTo == eService::Device ? m_tOptions.tAddress.Text() : strService;
}

rtsp::CTask<CAnswer> CClient::Exchange(tagRequest tRequest, eProof eWith, Clock::time_point tUntil)
{
    tagHttpRequest tHttp;
    tHttp.strUrl = AddressFor(tRequest);
    if (tHttp.strUrl.empty())
    {
        co_return CAnswer::Failed(eResultNotSupported, "the device has no such service");
    }
    std::string strHeader = std::move(tRequest.strHeader);
    if (tRequest.szAction)
    {
        CXmlWriter tXml;
        tXml.Add("wsa:Action", tRequest.szAction);
        tXml.Add("wsa:To", tRequest.strTo.empty() ? tHttp.strUrl : tRequest.strTo);
        strHeader += tXml.Take();
    }
    const std::string strToken = eWith == eProof::Full && !m_tOptions.strUser.empty()
                                     ? UsernameToken(m_tOptions.strUser, m_tOptions.strPassword, DeviceTimeUs())
                                     : std::string();
    strHeader += strToken;
    tHttp.strBody = Envelope(ElementOf(tRequest), tRequest.strBody, strHeader);
    tHttp.strType = "application/soap+xml; charset=utf-8" + ActionOf(tRequest);
    tagHttpAnswer tAnswer = co_await Send(std::move(tHttp), eWith, tUntil, nullptr, strToken);
    CAnswer tRead = IsComplete(tAnswer) ? CAnswer::Read(tAnswer.nStatus, std::move(tAnswer.strBody))
                                        : CAnswer::Failed(tAnswer.nResult, tAnswer.strError);
    tRead.SetDate(std::move(tAnswer.strDate));
    co_return tRead;
}

namespace
{
// Whole seconds; nothing: it isn't there, or is no time.
std::optional<std::int64_t> ClockOf(pugi::xml_node tUtc)
{
    long long anPart[6] = {};
    std::size_t nPart = 0;
    for (char const* const szPath : {"Date/Year", "Date/Month", "Date/Day", "Time/Hour", "Time/Minute", "Time/Second"})
    {
        const auto llPart = Integer(tUtc, szPath);
        if (!llPart || *llPart < 0 || *llPart > 9999)
        {
            return std::nullopt;
        }
        anPart[nPart++] = *llPart;
    }
    char szText[160];
    std::snprintf(szText, sizeof szText, "%04lld-%02lld-%02lldT%02lld:%02lld:%02lldZ", anPart[0], anPart[1], anPart[2],
                  anPart[3], anPart[4], anPart[5]);
    return ParseTime(szText);
}
} // namespace

// A device that doesn't tell its clock in words may do it in its answer's header.
void CClient::TakeClock(CAnswer const& tAnswer, std::int64_t llSent)
{
    auto llDevice = ClockOf(Find(tAnswer.Body(), "SystemDateAndTime/UTCDateTime"));
    if (!llDevice)
    {
        llDevice = ParseHttpDate(tAnswer.Date());
    }
    if (llDevice)
    {
        m_llOffsetUs = *llDevice - (llSent + (NowUs() - llSent) / 2);
    }
}

rtsp::CTask<int> CClient::AskClock(Clock::time_point tUntil)
{
    tagRequest tRequest;
    tRequest.szName = "GetSystemDateAndTime";
    std::int64_t llSent = NowUs();
    CAnswer tAnswer = co_await Exchange(tRequest, eProof::None, tUntil);
    if (tAnswer.HttpStatus() == 401 && !m_tOptions.strUser.empty())
    {
        // It tells nobody without a login: an answer to its challenge doesn't need the clock.
        const unsigned nChallenges = Challenges();
        llSent = NowUs();
        tAnswer = co_await Exchange(tRequest, eProof::Http, tUntil);
        if (tAnswer.HttpStatus() == 401 && Challenges() != nChallenges)
        {
            co_return eResultWrongLogin;
        }
    }
    TakeClock(tAnswer, llSent);
    co_return tAnswer.Answered() ? int{eResultOk} : tAnswer.Result();
}

// --- services --------------------------------------------------------------------------------------------------------

namespace
{
std::array<std::string, g_nServices> FromServices(pugi::xml_node tAnswer)
{
    std::array<std::string, g_nServices> astrAnnounced;
    for (pugi::xml_node const& tService : Children(tAnswer, "Service"))
    {
        if (tagServiceName const* const ptName = FindService(Text(tService, "Namespace")))
        {
            astrAnnounced[static_cast<std::size_t>(ptName->eWhich)] = Text(tService, "XAddr");
        }
    }
    return astrAnnounced;
}

std::array<std::string, g_nServices> FromCapabilities(pugi::xml_node tAnswer)
{
    std::array<std::string, g_nServices> astrAnnounced;
    for (std::size_t i = 0; i < g_nServices; ++i)
    {
        if (char const* const szPath = NameOf(static_cast<eService>(i)).szInCapabilities)
        {
            astrAnnounced[i] = Text(Find(Find(tAnswer, "Capabilities"), szPath), "XAddr");
        }
    }
    return astrAnnounced;
}
} // namespace

bool CClient::TakeServices(Addresses const& astrAnnounced)
{
    if (std::ranges::all_of(astrAnnounced, [](std::string const& str) { return str.empty(); }))
    {
        return false;
    }
    const auto tOwn = ParseAddress(astrAnnounced[static_cast<std::size_t>(eService::Device)]);
    const std::lock_guard tLock(m_tMutex);
    m_wAnnouncedPort = tOwn ? tOwn->wPort : m_tOptions.tAddress.wPort;
    for (std::size_t i = 0; i < g_nServices; ++i)
    {
        m_astrServices[i] = astrAnnounced[i].empty()
                                ? std::string()
                                : onvif::Reachable(astrAnnounced[i], m_tOptions.tAddress, m_wAnnouncedPort);
    }
    m_atUnsupported.clear();
    return true;
}

rtsp::CTask<int> CClient::AskServices(Clock::time_point tUntil)
{
    tagRequest tRequest;
    tRequest.szName = "GetServices";
    tRequest.strBody = "<tds:IncludeCapability>false</tds:IncludeCapability>";
    const CAnswer tServices = co_await Exchange(std::move(tRequest), eProof::Full, tUntil);
    if (!tServices.Answered() || WasRefusedForLogin(tServices) ||
        (tServices && TakeServices(FromServices(tServices.Body()))))
    {
        co_return tServices.Result();
    }
    tagRequest tOlder;
    tOlder.szName = "GetCapabilities";
    tOlder.strBody = "<tds:Category>All</tds:Category>";
    const CAnswer tCapabilities = co_await Exchange(std::move(tOlder), eProof::Full, tUntil);
    TakeServices(FromCapabilities(tCapabilities.Body()));
    co_return tCapabilities.Result();
}

rtsp::CTask<int> CClient::LoginAsync()
{
    const auto pThis = shared_from_this();
    const auto tUntil = Clock::now() + m_tOptions.tLoginLimit;
    int nResult = co_await AskClock(tUntil);
    if (nResult == eResultOk)
    {
        nResult = co_await AskServices(tUntil);
    }
    if (nResult == eResultOk)
    {
        tagRequest tRequest;
        tRequest.szName = "GetDeviceInformation";
        const CAnswer tAnswer = co_await Exchange(std::move(tRequest), eProof::Full, tUntil);
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

bool CClient::IsUnsupported(tagRequest const& tRequest) const
{
    const std::lock_guard tLock(m_tMutex);
    return std::ranges::any_of(m_atUnsupported,
                               [&](auto const& t) { return t.first == tRequest.eTo && t.second == tRequest.szName; });
}

rtsp::CTask<CAnswer> CClient::CallAsync(tagRequest tRequest)
{
    const auto pThis = shared_from_this();
    const auto tUntil = Clock::now() + (tRequest.tLimit.count() ? tRequest.tLimit : m_tOptions.tLimit);
    if (IsUnsupported(tRequest))
    {
        co_return CAnswer::Failed(eResultNotSupported, "asked before");
    }
    CAnswer tAnswer = co_await Exchange(tRequest, eProof::Full, tUntil);
    if (WasRefusedForLogin(tAnswer))
    {
        // Another clock is the commonest reason; the same clock means another password, or too little rights.
        const std::int64_t llOffset = m_llOffsetUs;
        if (co_await AskClock(tUntil) == eResultOk && std::abs(m_llOffsetUs - llOffset) > g_llClockMoved)
        {
            tAnswer = co_await Exchange(tRequest, eProof::Full, tUntil);
        }
    }
    if (tAnswer.Result() == eResultNotSupported && tAnswer.Answered() && !IsUnsupported(tRequest))
    {
        const std::lock_guard tLock(m_tMutex);
        m_atUnsupported.emplace_back(tRequest.eTo, tRequest.szName);
    }
    co_return tAnswer;
}

rtsp::CTask<tagHttpAnswer> CClient::GetAsync(std::string strAnnounced, std::size_t nMost)
{
    tagHttpRequest tRequest;
    tRequest.strUrl = Reachable(strAnnounced);
    tRequest.nMost = nMost;
    co_return co_await Send(std::move(tRequest), eProof::Full, Clock::now() + m_tOptions.tLimit);
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
    co_return co_await Send(std::move(tRequest), eProof::Full, Clock::now() + tLimit, std::move(pGroup));
}
} // namespace onvif
