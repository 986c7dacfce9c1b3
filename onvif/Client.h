#pragma once

#include "onvif/Address.h"
#include "onvif/Http.h"
#include "onvif/Soap.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace onvif
{
/// Which device, and who asks.
struct tagClientOptions
{
    tagAddress tAddress;
    std::string strUser; ///< empty: without a login
    std::string strPassword;
    std::chrono::milliseconds tLoginLimit{10000};
    std::chrono::milliseconds tLimit{5000}; ///< of every other call
    bool bCheckCertificate = false;
};

/// A call of a device's.
struct tagRequest
{
    eService eTo = eService::Device;
    char const* szName = "";             ///< "GetProfiles": in the service's namespace; or with a prefix: "wsnt:Renew"
    std::string strBody = {};            ///< the request element's content: CXmlWriter
    std::chrono::milliseconds tLimit{0}; ///< 0: the login's
    std::string strTo = {};              ///< an address instead of the service's: a subscription's, as it was announced
    std::string strHeader = {};          ///< header blocks: a subscription's reference parameters
    char const* szAction = nullptr;      ///< wsa:Action, sent with wsa:To where it is given
};

/// What GetDeviceInformation tells.
struct tagDeviceInformation
{
    std::string strManufacturer;
    std::string strModel;
    std::string strFirmware;
    std::string strSerialNumber;
    std::string strHardware;
};

/// One device as one user sees it. All that is sent to a device goes through here: it knows the device's clock and its
/// services, answers both kinds of challenges, and remembers what the device can't do.
///
/// Members without "Async" may be called from any thread but the HTTP thread; where they ask the device, they block, at
/// most for the time limit. The Async ones are awaited, on the HTTP thread or in CHttp::Run, and keep the client alive
/// by themselves; put their arguments into variables first (GCC 12 destroys temporaries of a co_await twice).
class CClient : public std::enable_shared_from_this<CClient>
{
public:
    CClient(CHttp& tHttp, tagClientOptions tOptions);
    ~CClient();
    CClient(CClient const&) = delete;
    CClient& operator=(CClient const&) = delete;

    /// Asks for the clock, the services, and whether this user may log in. A wrong password is tried once. May be
    /// repeated, after the device has restarted: what was remembered of it is forgotten. 0 or an ePluginResult.
    int Login();
    rtsp::CTask<int> LoginAsync();
    /// Asks the clock without credentials: whether anybody answers.
    int Ping(std::chrono::milliseconds tLimit);
    rtsp::CTask<int> PingAsync(std::chrono::milliseconds tLimit);
    /// All calls that wait end at once with nResult; later ones run: streams outlive their login.
    void Interrupt(int nResult);

    CAnswer Call(tagRequest tRequest);
    rtsp::CTask<CAnswer> CallAsync(tagRequest tRequest);
    /// A file of the device's by HTTP, a snapshot: strAnnounced is its address as the device gave it.
    tagHttpAnswer Get(std::string strAnnounced, std::size_t nMost = 8U << 20);
    rtsp::CTask<tagHttpAnswer> GetAsync(std::string strAnnounced, std::size_t nMost = 8U << 20);
    /// Sends a file to an address that the device gave: a firmware. It ends with pGroup; fnSent hears now and then how
    /// many bytes have gone.
    rtsp::CTask<tagHttpAnswer> PutAsync(std::string strAnnounced, std::string strBody, std::string strType,
                                        std::chrono::milliseconds tLimit, std::shared_ptr<CHttpGroup> pGroup,
                                        std::function<void(std::uint64_t)> fnSent);

    /// After a login: whether the device has this service.
    bool Has(eService eWhich) const;
    /// An address that the device announced, as it can be reached from here. Of any scheme: rtsp too.
    std::string Reachable(std::string_view strAnnounced) const;
    tagAddress const& Address() const { return m_tOptions.tAddress; }
    std::string const& User() const { return m_tOptions.strUser; }
    std::string const& Password() const { return m_tOptions.strPassword; }
    std::chrono::milliseconds Limit() const { return m_tOptions.tLimit; }
    /// What the device's clock shows, microseconds since 1970; the offset to this machine's clock is known from the
    /// last login or ping.
    std::int64_t DeviceTimeUs() const;
    std::int64_t ClockOffsetUs() const { return m_llOffsetUs; }
    tagDeviceInformation Information() const;

    /// fnResult hears on the thread that made it of every call how it ended: 0 when the device has answered, if only
    /// with a fault, else an ePluginResult. It mustn't block. Null: nobody does.
    void OnResult(std::function<void(int nResult)> fnResult);
    CHttp& Http() const { return m_tHttp; }
    /// For waits that end with Interrupt.
    std::shared_ptr<CHttpGroup> Group() const;

private:
    struct tagState;
    /// Which proofs of the password a request carries.
    enum class eProof
    {
        None,
        Http, ///< an answer to the device's HTTP challenge, where it asks for one
        Full, ///< that and a UsernameToken
    };

    rtsp::CTask<CAnswer> Exchange(tagRequest tRequest, eProof eWith, Clock::time_point tUntil);
    /// pGroup: null, the login's. strToken: the UsernameToken in the request's body, which further tries replace.
    rtsp::CTask<tagHttpAnswer> Send(tagHttpRequest tRequest, eProof eWith, Clock::time_point tUntil,
                                    std::shared_ptr<CHttpGroup> pGroup = nullptr, std::string strToken = {});
    /// The Authorization header; nChallenge: which challenge it answers.
    std::string Authorization(std::string_view strMethod, std::string_view strUrl, unsigned& nChallenge);
    /// Those of a 401 to what answered nAnswered; false: the login is wrong. nOwn: the last one that was given to this
    /// very request.
    bool TakeChallenges(tagHttpAnswer const& tAnswer, std::string_view strUrl, unsigned nAnswered, unsigned& nOwn);
    void LetIn(unsigned nAnswered);
    unsigned Challenges() const;
    std::string AddressFor(tagRequest const& tRequest) const;
    bool IsUnsupported(tagRequest const& tRequest) const;
    void TakeClock(CAnswer const& tAnswer, std::int64_t llSent);
    rtsp::CTask<int> AskClock(Clock::time_point tUntil);
    rtsp::CTask<int> AskServices(Clock::time_point tUntil);
    using Addresses = std::array<std::string, g_nServices>;
    /// What the device's services are, each with its address as the device announces it. False: none that is known.
    bool TakeServices(Addresses const& astrAnnounced);
    void Tell(int nResult);

    CHttp& m_tHttp;
    const tagClientOptions m_tOptions;
    std::atomic<std::int64_t> m_llOffsetUs{0};

    mutable std::mutex m_tMutex;
    const std::unique_ptr<tagState, void (*)(tagState*)> m_ptState; ///< what it knows of the device's challenges
    std::shared_ptr<CHttpGroup> m_pGroup = std::make_shared<CHttpGroup>();
    Addresses m_astrServices;           ///< as they can be reached; empty: there is none
    std::uint16_t m_wAnnouncedPort = 0; ///< of the device's HTTP server, as it announces it
    std::vector<std::pair<eService, std::string>> m_atUnsupported;
    tagDeviceInformation m_tInformation;
    std::shared_ptr<std::function<void(int)> const> m_pfnResult;
};
} // namespace onvif
