#include "onvif/Transfer.h"

#include "protocol/PluginInterface.h"
#include "rtsp/Text.h"

#include <algorithm>
#include <new>
#include <openssl/ssl.h>
#include <string_view>
#include <utility>

namespace onvif
{
namespace
{
constexpr std::size_t g_nMostHeader = 64U << 10;
constexpr std::size_t g_nAsksFirst = 1U << 20;

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

CURL* MakeHandle()
{
    SetUpHttpLibraries();
    CURL* const pHandle = curl_easy_init();
    if (!pHandle)
    {
        throw std::bad_alloc();
    }
    return pHandle;
}
} // namespace

// They are never cleaned up: threads that have done their work may still be ending when the process does.
void SetUpHttpLibraries()
{
    static const bool s_bDone =
        OPENSSL_init_ssl(OPENSSL_INIT_NO_ATEXIT, nullptr) == 1 && curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    if (!s_bDone)
    {
        throw std::bad_alloc();
    }
}

std::optional<std::int64_t> ParseHttpDate(std::string const& strDate)
{
    const std::time_t nSeconds = strDate.empty() ? -1 : curl_getdate(strDate.c_str(), nullptr);
    return nSeconds < 0 ? std::nullopt : std::optional(std::int64_t{nSeconds} * 1000000);
}

// --- connections -----------------------------------------------------------------------------------------------------

// Each is a libcurl share, which holds one connection, and which one transfer at a time uses, whatever thread drives
// it: so libcurl needs no locks.

CHttpGroup::~CHttpGroup()
{
    m_nEnded = eResultBadHandle;
    CloseConnections();
}

bool CHttpGroup::End(int nResult)
{
    int nNotYet = 0;
    return m_nEnded.compare_exchange_strong(nNotYet, nResult);
}

void* CHttpGroup::TakeConnection()
{
    {
        const std::lock_guard tLock(m_tMutex);
        if (m_nIdle != 0)
        {
            return m_apIdle[--m_nIdle];
        }
    }
    CURLSH* const pConnection = curl_share_init();
    if (pConnection && curl_share_setopt(pConnection, CURLSHOPT_SHARE, CURL_LOCK_DATA_CONNECT) != CURLSHE_OK)
    {
        curl_share_cleanup(pConnection);
        return nullptr;
    }
    return pConnection;
}

void CHttpGroup::ReturnConnection(void* pConnection)
{
    {
        const std::lock_guard tLock(m_tMutex);
        if (!IsEnded() && m_nIdle < m_apIdle.size())
        {
            m_apIdle[m_nIdle++] = pConnection;
            return;
        }
    }
    curl_share_cleanup(pConnection);
}

void CHttpGroup::CloseConnections()
{
    const std::lock_guard tLock(m_tMutex);
    while (m_nIdle != 0)
    {
        curl_share_cleanup(m_apIdle[--m_nIdle]);
    }
}

// --- a transfer ------------------------------------------------------------------------------------------------------

// What is the same for all requests.
CTransfer::CTransfer() : m_pHandle(MakeHandle())
{
    curl_easy_setopt(m_pHandle, CURLOPT_PRIVATE, this);
    curl_easy_setopt(m_pHandle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(m_pHandle, CURLOPT_PROXY, ""); // devices stand on networks of their own
    curl_easy_setopt(m_pHandle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(m_pHandle, CURLOPT_QUICK_EXIT, 1L); // doesn't wait for a name look-up that hangs
    curl_easy_setopt(m_pHandle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(m_pHandle, CURLOPT_ACCEPT_ENCODING, "gzip"); // what comes may be coded in other ways too
    curl_easy_setopt(m_pHandle, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(m_pHandle, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(m_pHandle, CURLOPT_ERRORBUFFER, m_szError.data());
    curl_easy_setopt(m_pHandle, CURLOPT_WRITEFUNCTION, &OnBody);
    curl_easy_setopt(m_pHandle, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(m_pHandle, CURLOPT_HEADERFUNCTION, &OnHeader);
    curl_easy_setopt(m_pHandle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(m_pHandle, CURLOPT_XFERINFOFUNCTION, &OnProgress);
    curl_easy_setopt(m_pHandle, CURLOPT_XFERINFODATA, this);
}

CTransfer::~CTransfer()
{
    curl_easy_cleanup(m_pHandle);
}

CTransfer& CTransfer::Of(CURL* pHandle)
{
    char* pcThis = nullptr;
    curl_easy_getinfo(pHandle, CURLINFO_PRIVATE, &pcThis);
    return *reinterpret_cast<CTransfer*>(pcThis);
}

int CTransfer::Begin(CURLM* pMulti, CHttpGroup& tGroup, tagHttpRequest const& tRequest, tagHttpAnswer& tAnswer)
{
    m_ptGroup = &tGroup;
    m_ptRequest = &tRequest;
    m_ptAnswer = &tAnswer;
    m_nHeader = 0;
    m_szError[0] = '\0';
    SetUp();
    m_pConnection = tGroup.TakeConnection();
    if (!m_pConnection)
    {
        return eResultNoResources;
    }
    curl_easy_setopt(m_pHandle, CURLOPT_SHARE, m_pConnection);
    if (curl_multi_add_handle(pMulti, m_pHandle) != CURLM_OK)
    {
        Leave();
        return eResultNoResources;
    }
    m_pMulti = pMulti;
    return eResultOk;
}

// Sets all that differs between requests.
void CTransfer::SetUp()
{
    tagHttpRequest const& tRequest = *m_ptRequest;
    const auto nLimit = static_cast<long>(std::max<std::int64_t>(1, tRequest.tLimit.count()));
    curl_easy_setopt(m_pHandle, CURLOPT_URL, tRequest.strUrl.c_str());
    curl_easy_setopt(m_pHandle, CURLOPT_TIMEOUT_MS, nLimit);
    curl_easy_setopt(m_pHandle, CURLOPT_CONNECTTIMEOUT_MS, nLimit);
    if (tRequest.strUrl.starts_with("https"))
    {
        SetUpTls();
    }
    m_nHeaders = 0;
    const auto fnHeader = [this](std::string_view strName, std::string_view strValue)
    {
        std::string& strLine = m_astrHeaders[m_nHeaders];
        strLine.assign(strName).append(strValue);
        m_atHeaders[m_nHeaders] = {strLine.data(), nullptr};
        if (m_nHeaders != 0)
        {
            m_atHeaders[m_nHeaders - 1].next = &m_atHeaders[m_nHeaders];
        }
        ++m_nHeaders;
    };
    if (tRequest.strBody.empty())
    {
        curl_easy_setopt(m_pHandle, CURLOPT_HTTPGET, 1L);
    }
    else
    {
        curl_easy_setopt(m_pHandle, CURLOPT_POST, 1L);
        curl_easy_setopt(m_pHandle, CURLOPT_POSTFIELDS, tRequest.strBody.data());
        curl_easy_setopt(m_pHandle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(tRequest.strBody.size()));
        fnHeader("Content-Type: ", tRequest.strType);
        if (tRequest.strBody.size() >= g_nAsksFirst)
        {
            fnHeader("Expect:", {}); // libcurl would ask whether the device wants a long one
        }
    }
    if (!tRequest.strAuthorization.empty())
    {
        fnHeader("Authorization: ", tRequest.strAuthorization);
    }
    curl_easy_setopt(m_pHandle, CURLOPT_HTTPHEADER, m_nHeaders == 0 ? nullptr : m_atHeaders.data());
    // A long way is no reason to give up, a device that has stopped to take anything is.
    const bool bTells = tRequest.fnSent != nullptr;
    if (bTells || m_bTells)
    {
        curl_easy_setopt(m_pHandle, CURLOPT_LOW_SPEED_LIMIT, bTells ? 1L : 0L);
        curl_easy_setopt(m_pHandle, CURLOPT_LOW_SPEED_TIME, bTells ? 300L : 0L);
        curl_easy_setopt(m_pHandle, CURLOPT_NOPROGRESS, bTells ? 0L : 1L);
    }
    m_bTells = bTells;
}

// Who shows any certificate may also speak as old cameras do.
void CTransfer::SetUpTls()
{
    const bool bCheck = m_ptRequest->bCheckCertificate;
    curl_easy_setopt(m_pHandle, CURLOPT_SSL_VERIFYPEER, bCheck ? 1L : 0L);
    curl_easy_setopt(m_pHandle, CURLOPT_SSL_VERIFYHOST, bCheck ? 2L : 0L);
    curl_easy_setopt(m_pHandle, CURLOPT_SSLVERSION,
                     static_cast<long>(bCheck ? CURL_SSLVERSION_DEFAULT : CURL_SSLVERSION_TLSv1));
    curl_easy_setopt(m_pHandle, CURLOPT_SSL_CIPHER_LIST, bCheck ? nullptr : "DEFAULT:@SECLEVEL=0");
}

void CTransfer::Finish(CURLcode eCode)
{
    long nStatus = 0;
    curl_easy_getinfo(m_pHandle, CURLINFO_RESPONSE_CODE, &nStatus);
    m_ptAnswer->nResult = ResultOf(eCode);
    m_ptAnswer->nStatus = static_cast<int>(nStatus);
    if (eCode != CURLE_OK)
    {
        m_ptAnswer->strError = m_szError[0] ? m_szError.data() : curl_easy_strerror(eCode);
    }
    Leave();
}

void CTransfer::Abandon(int nResult)
{
    Leave();
    *m_ptAnswer = {};
    m_ptAnswer->nResult = nResult;
}

void CTransfer::Leave()
{
    if (m_pMulti)
    {
        curl_multi_remove_handle(std::exchange(m_pMulti, nullptr), m_pHandle);
    }
    curl_easy_setopt(m_pHandle, CURLOPT_SHARE, nullptr);
    m_ptGroup->ReturnConnection(std::exchange(m_pConnection, nullptr));
}

int CTransfer::OnProgress(void* pThis, curl_off_t, curl_off_t, curl_off_t, curl_off_t nSent)
{
    static_cast<CTransfer*>(pThis)->m_ptRequest->fnSent(static_cast<std::uint64_t>(nSent));
    return 0;
}

std::size_t CTransfer::OnBody(char* pcData, std::size_t, std::size_t nSize, void* pThis)
try
{
    auto& t = *static_cast<CTransfer*>(pThis);
    if (nSize > t.m_ptRequest->nMost - t.m_ptAnswer->strBody.size())
    {
        return CURL_WRITEFUNC_ERROR;
    }
    t.m_ptAnswer->strBody.append(pcData, nSize);
    return nSize;
}
catch (...)
{
    return CURL_WRITEFUNC_ERROR;
}

std::size_t CTransfer::OnHeader(char* pcData, std::size_t, std::size_t nSize, void* pThis)
try
{
    auto& t = *static_cast<CTransfer*>(pThis);
    tagHttpAnswer& tAnswer = *t.m_ptAnswer;
    std::string_view strLine(pcData, nSize);
    t.m_nHeader += nSize;
    if (t.m_nHeader > g_nMostHeader)
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
            return nSize;
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
} // namespace onvif
