#include "tools/onvif_device/Server.h"

#include "tools/onvif_device/Exchange.h"
#include "tools/onvif_device/Face.h"
#include "tools/onvif_device/RtspSide.h"

#include "plugins/device/Device.h"
#include "plugins/device/Worker.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <microhttpd.h>
#include <mutex>
#include <openssl/rand.h>
#include <stdexcept>
#include <thread>
#include <vector>
#include <zlib.h>

namespace onvif_device
{
namespace
{
constexpr char const* g_szRealm = "device";
constexpr unsigned g_nNonceSeconds = 300;
constexpr std::size_t g_nMaxBody = 64 << 20; // firmware
constexpr unsigned g_nIdleSeconds = 120;
constexpr int64_t g_llForcedOffUs = 1000000; // so long nobody listens

// One connection's request while it is served.
struct tagPending
{
    tagExchange tExchange;
    bool bBegun = false;
};

// An answer that goes out piece by piece.
struct tagPieces
{
    std::string strAll;
    std::size_t nPiece;
    int64_t llPieceMs;
    std::size_t nEnd; // where it breaks off
    bool bBreak;
};

ssize_t ReadPiece(void* pContext, uint64_t ullPosition, char* pTo, std::size_t nMost)
{
    auto const& t = *static_cast<tagPieces const*>(pContext);
    if (ullPosition >= t.nEnd)
    {
        return t.bBreak ? MHD_CONTENT_READER_END_WITH_ERROR : MHD_CONTENT_READER_END_OF_STREAM;
    }
    if (t.llPieceMs != 0 && ullPosition != 0)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(t.llPieceMs));
    }
    const std::size_t nLength = std::min({nMost, t.nPiece, t.nEnd - static_cast<std::size_t>(ullPosition)});
    std::memcpy(pTo, t.strAll.data() + ullPosition, nLength);
    return static_cast<ssize_t>(nLength);
}

void FreePieces(void* pContext)
{
    delete static_cast<tagPieces*>(pContext);
}

std::string Gzip(std::string const& strPlain)
{
    z_stream tStream{};
    constexpr int nGzipWindow = 15 + 16;
    deflateInit2(&tStream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, nGzipWindow, 8, Z_DEFAULT_STRATEGY);
    std::string strPacked(deflateBound(&tStream, strPlain.size()), '\0');
    tStream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(strPlain.data()));
    tStream.avail_in = static_cast<uInt>(strPlain.size());
    tStream.next_out = reinterpret_cast<Bytef*>(strPacked.data());
    tStream.avail_out = static_cast<uInt>(strPacked.size());
    deflate(&tStream, Z_FINISH);
    strPacked.resize(tStream.total_out);
    deflateEnd(&tStream);
    return strPacked;
}

std::string HeaderOf(MHD_Connection* pConnection, char const* szName)
{
    char const* const szValue = MHD_lookup_connection_value(pConnection, MHD_HEADER_KIND, szName);
    return szValue ? szValue : "";
}

class CHttpServer final : public CServer
{
public:
    CHttpServer(std::shared_ptr<CFace> pFace, tagServerOptions tOptions)
        : m_pFace(std::move(pFace)), m_tOptions(std::move(tOptions)), m_dwPort(m_tOptions.dwPort),
          m_dwRun(RunOf(m_pFace->Device()))
    {
        if (RAND_bytes(reinterpret_cast<unsigned char*>(m_szRandom), sizeof m_szRandom) != 1)
        {
            throw std::runtime_error("there are no random numbers");
        }
        Listen();
    }
    ~CHttpServer() override { Stop(); }

    uint32_t Port() const override { return m_dwPort; }

    void Stop() override
    {
        const std::lock_guard tUpLock(m_tUpMutex);
        m_bEnded = true;
        Close();
    }

    void Wake() override
    {
        const std::lock_guard tLock(m_tMutex);
        ++m_ullWakes;
        for (MHD_Connection* const p : m_apSuspended)
        {
            MHD_resume_connection(p);
        }
        m_apSuspended.clear();
    }

    void OnEvent(device::tagDeviceEvent const& tEvent) override
    {
        if (tEvent.eEvent == eEventLoginLost || tEvent.eEvent == eEventLoginRestored)
        {
            const std::lock_guard tUpLock(m_tUpMutex);
            m_pFace->Rtsp().SetUp(m_pFace->Index(), tEvent.eEvent == eEventLoginRestored);
            tEvent.eEvent == eEventLoginRestored ? Reopen() : GoDown();
        }
        m_pFace->Subscriptions().Tell(MessagesOf(m_pFace->Device(), tEvent));
        Wake();
    }

    void OnForcedOff() override
    {
        const std::lock_guard tUpLock(m_tUpMutex);
        m_pFace->Rtsp().SetUp(m_pFace->Index(), false);
        Close();
        m_pFace->Subscriptions().Clear();
        device::DeliveryWorker().At(device::SteadyUs() + g_llForcedOffUs,
                                    [pWeak = weak_from_this()]
                                    {
                                        if (const auto pServer = pWeak.lock())
                                        {
                                            static_cast<CHttpServer&>(*pServer).ComeBack();
                                        }
                                    });
    }

private:
    static uint32_t RunOf(device::CDevice& tDevice)
    {
        device::tagStreamState tState;
        tDevice.StreamState(0, eStreamMain, tState);
        return tState.dwRun;
    }

    void GoDown()
    {
        Close();
        // What a device only remembers in memory is gone when it has restarted, and stays when its cable was pulled.
        if (const uint32_t dwRun = RunOf(m_pFace->Device()); dwRun != m_dwRun)
        {
            m_dwRun = dwRun;
            m_pFace->Subscriptions().Clear();
        }
    }

    void ComeBack()
    {
        const std::lock_guard tUpLock(m_tUpMutex);
        device::tagStreamState tState;
        if (m_pFace->Device().StreamState(0, eStreamMain, tState) == eResultOk && tState.bUp)
        {
            m_pFace->Rtsp().SetUp(m_pFace->Index(), true);
            Reopen();
        }
    }

    void Reopen()
    {
        if (!m_bEnded && !m_pDaemon)
        {
            try
            {
                Listen();
            }
            catch (std::runtime_error const& tError)
            {
                std::fprintf(stderr, "onvif_device: %s\n", tError.what());
            }
        }
    }

    void Listen()
    {
        sockaddr_storage tAddress{};
        auto* const pt4 = reinterpret_cast<sockaddr_in*>(&tAddress);
        auto* const pt6 = reinterpret_cast<sockaddr_in6*>(&tAddress);
        const bool b6 = inet_pton(AF_INET6, m_tOptions.strListen.c_str(), &pt6->sin6_addr) == 1;
        tAddress.ss_family = b6 ? AF_INET6 : AF_INET;
        (b6 ? pt6->sin6_port : pt4->sin_port) = htons(static_cast<uint16_t>(m_dwPort));
        if (!b6 && inet_pton(AF_INET, m_tOptions.strListen.c_str(), &pt4->sin_addr) != 1)
        {
            throw std::runtime_error(m_tOptions.strListen + " is no address");
        }
        const bool bTls = !m_tOptions.strCertificate.empty();
        const unsigned nFlags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME |
                                (b6 ? unsigned{MHD_USE_IPv6} : 0U) | (bTls ? unsigned{MHD_USE_TLS} : 0U);
        const std::array<MHD_OptionItem, 3> atTls{
            {{bTls ? MHD_OPTION_HTTPS_MEM_CERT : MHD_OPTION_END, 0, m_tOptions.strCertificate.data()},
             {MHD_OPTION_HTTPS_MEM_KEY, 0, m_tOptions.strCertificate.data()},
             {MHD_OPTION_END, 0, nullptr}}};
        {
            const std::lock_guard tLock(m_tMutex);
            m_bClosing = false;
        }
        m_pDaemon = MHD_start_daemon(nFlags, static_cast<uint16_t>(m_dwPort), nullptr, nullptr, &OnRequest, this,
                                     MHD_OPTION_SOCK_ADDR, reinterpret_cast<sockaddr*>(&tAddress),
                                     MHD_OPTION_LISTENING_ADDRESS_REUSE, 1U, MHD_OPTION_NOTIFY_COMPLETED, &OnCompleted,
                                     this, MHD_OPTION_CONNECTION_TIMEOUT, g_nIdleSeconds, MHD_OPTION_DIGEST_AUTH_RANDOM,
                                     sizeof m_szRandom, m_szRandom, MHD_OPTION_NONCE_NC_SIZE, 1000U, MHD_OPTION_ARRAY,
                                     atTls.data(), MHD_OPTION_END);
        if (!m_pDaemon)
        {
            throw std::runtime_error("port " + std::to_string(m_dwPort) + " can't be listened at");
        }
        if (m_dwPort == 0)
        {
            m_dwPort = MHD_get_daemon_info(m_pDaemon, MHD_DAEMON_INFO_BIND_PORT)->port;
        }
    }

    // Every connection ends, waiting ones too.
    void Close()
    {
        {
            const std::lock_guard tLock(m_tMutex);
            m_bClosing = true;
        }
        Wake();
        if (m_pDaemon)
        {
            MHD_stop_daemon(std::exchange(m_pDaemon, nullptr));
        }
    }

    static MHD_Result OnRequest(void* pServer, MHD_Connection* pConnection, char const* szPath, char const* szMethod,
                                char const*, char const* pData, std::size_t* pnLength, void** ppContext)
    {
        auto& tServer = *static_cast<CHttpServer*>(pServer);
        if (!*ppContext)
        {
            *ppContext = tServer.Begin(pConnection, szPath, szMethod).release();
            return MHD_YES;
        }
        auto& tPending = *static_cast<tagPending*>(*ppContext);
        if (*pnLength != 0)
        {
            const bool bFits = tPending.tExchange.strBody.size() + *pnLength <= g_nMaxBody;
            tPending.tExchange.strBody.append(pData, bFits ? *pnLength : 0);
            *pnLength = 0;
            return bFits ? MHD_YES : MHD_NO;
        }
        return tServer.Go(pConnection, tPending.tExchange);
    }

    static void OnCompleted(void*, MHD_Connection*, void** ppContext, MHD_RequestTerminationCode)
    {
        delete static_cast<tagPending*>(std::exchange(*ppContext, nullptr));
    }

    std::unique_ptr<tagPending> Begin(MHD_Connection* pConnection, char const* szPath, char const* szMethod)
    {
        auto pPending = std::make_unique<tagPending>();
        tagExchange& t = pPending->tExchange;
        t.strMethod = szMethod;
        t.strPath = szPath;
        t.strHost = HeaderOf(pConnection, MHD_HTTP_HEADER_HOST);
        t.strContentType = HeaderOf(pConnection, MHD_HTTP_HEADER_CONTENT_TYPE);
        t.bTls = !m_tOptions.strCertificate.empty();
        t.llArrivedUs = device::SteadyUs();
        if (char* const szUser = MHD_digest_auth_get_username(pConnection))
        {
            t.strDigestUser = szUser;
            MHD_free(szUser);
        }
        t.fnDigest = [this, pConnection, strUser = t.strDigestUser](std::string const& strPassword)
        {
            return MHD_digest_auth_check2(pConnection, g_szRealm, strUser.c_str(), strPassword.c_str(), g_nNonceSeconds,
                                          Algorithm()) == MHD_YES;
        };
        return pPending;
    }

    MHD_DigestAuthAlgorithm Algorithm() const
    {
        return m_pFace->Quirks().strDigest == "sha256" ? MHD_DIGEST_ALG_SHA256 : MHD_DIGEST_ALG_MD5;
    }

    // Answers, or lets the request wait until something happens.
    MHD_Result Go(MHD_Connection* pConnection, tagExchange& tExchange)
    {
        for (;;)
        {
            const uint64_t ullWakes = Wakes();
            Serve(*m_pFace, tExchange);
            if (tExchange.llWaitUntilUs == 0 || tExchange.bDrop)
            {
                return tExchange.bDrop ? MHD_NO : Answer(pConnection, tExchange);
            }
            const std::lock_guard tLock(m_tMutex);
            if (m_bClosing)
            {
                return MHD_NO;
            }
            if (ullWakes == m_ullWakes)
            {
                m_apSuspended.push_back(pConnection);
                MHD_suspend_connection(pConnection);
                WakeAt(tExchange.llWaitUntilUs);
                return MHD_YES;
            }
        }
    }

    uint64_t Wakes() const
    {
        const std::lock_guard tLock(m_tMutex);
        return m_ullWakes;
    }

    void WakeAt(int64_t llAtUs)
    {
        if (llAtUs != device::g_llNever)
        {
            device::TimeWorker().At(llAtUs,
                                    [pWeak = weak_from_this()]
                                    {
                                        if (const auto pServer = pWeak.lock())
                                        {
                                            pServer->Wake();
                                        }
                                    });
        }
    }

    MHD_Result Answer(MHD_Connection* pConnection, tagExchange& tExchange)
    {
        const tagQuirks tQuirks = m_pFace->Quirks();
        const bool bHalf = m_pFace->TakeOne(&tagQuirks::llHalf);
        const bool bNothing = m_pFace->TakeOne(&tagQuirks::llEmpty);
        std::string strBody = bNothing ? std::string() : std::move(tExchange.strAnswer);
        const bool bPack = tQuirks.bCompress &&
                           HeaderOf(pConnection, MHD_HTTP_HEADER_ACCEPT_ENCODING).find("gzip") != std::string::npos;
        strBody = bPack ? Gzip(strBody) : std::move(strBody);
        MHD_Response* const pResponse = MakeResponse(std::move(strBody), tQuirks, bHalf);
        MHD_add_response_header(pResponse, MHD_HTTP_HEADER_CONTENT_TYPE, tExchange.strType.c_str());
        if (bPack)
        {
            MHD_add_response_header(pResponse, MHD_HTTP_HEADER_CONTENT_ENCODING, "gzip");
        }
        const MHD_Result eResult =
            tExchange.bChallenge
                ? MHD_queue_auth_fail_response2(pConnection, g_szRealm, "opaque", pResponse, MHD_NO, Algorithm())
                : MHD_queue_response(pConnection, tExchange.nStatus, pResponse);
        MHD_destroy_response(pResponse);
        return eResult;
    }

    static MHD_Response* MakeResponse(std::string strBody, tagQuirks const& tQuirks, bool bHalf)
    {
        if (tQuirks.llPiece == 0 && !bHalf)
        {
            return MHD_create_response_from_buffer(strBody.size(), strBody.data(), MHD_RESPMEM_MUST_COPY);
        }
        const std::size_t nAll = strBody.size();
        const std::size_t nPiece = tQuirks.llPiece ? static_cast<std::size_t>(tQuirks.llPiece) : nAll;
        auto* const pPieces =
            new tagPieces{std::move(strBody), nPiece, tQuirks.llPieceMs, bHalf ? nAll / 2 : nAll, bHalf};
        // Half an answer has the whole one's length; pieces have none: they are chunked.
        return MHD_create_response_from_callback(bHalf ? nAll : MHD_SIZE_UNKNOWN, 4096, &ReadPiece, pPieces,
                                                 &FreePieces);
    }

    const std::shared_ptr<CFace> m_pFace;
    tagServerOptions m_tOptions;
    uint32_t m_dwPort;
    uint32_t m_dwRun;
    char m_szRandom[16] = {};

    std::mutex m_tUpMutex; // of opening and closing
    bool m_bEnded = false;
    MHD_Daemon* m_pDaemon = nullptr;

    mutable std::mutex m_tMutex;
    bool m_bClosing = false;
    uint64_t m_ullWakes = 0;
    std::vector<MHD_Connection*> m_apSuspended;
};
} // namespace

std::shared_ptr<CServer> CServer::Start(std::shared_ptr<CFace> pFace, tagServerOptions tOptions)
{
    return std::make_shared<CHttpServer>(std::move(pFace), std::move(tOptions));
}
} // namespace onvif_device
