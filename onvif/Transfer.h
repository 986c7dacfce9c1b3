#pragma once

#include "onvif/Http.h"

#include <array>
#include <curl/curl.h>

namespace onvif
{
/// libcurl and OpenSSL, set up once for the process. Throws std::bad_alloc.
void SetUpHttpLibraries();

/// One request on its way by libcurl. The same object takes one after the other. One thread at a time.
class CTransfer
{
public:
    /// Throws std::bad_alloc.
    CTransfer();
    ~CTransfer();
    CTransfer(CTransfer const&) = delete;
    CTransfer& operator=(CTransfer const&) = delete;

    /// Adds itself to pMulti, with a connection of the group's. All of it stays until End. eResultOk: it is on its way.
    int Begin(CURLM* pMulti, CHttpGroup& tGroup, tagHttpRequest const& tRequest, tagHttpAnswer& tAnswer);
    /// It is over as libcurl says.
    void Finish(CURLcode eCode);
    /// It is to end, whatever has come: its answer is nResult.
    void Abandon(int nResult);

    /// Whose message this is.
    static CTransfer& Of(CURL* pHandle);
    CHttpGroup& Group() const { return *m_ptGroup; }

private:
    void SetUp();
    void SetUpTls();
    void Leave();
    static int OnProgress(void* pThis, curl_off_t, curl_off_t, curl_off_t, curl_off_t nSent);
    static std::size_t OnBody(char* pcData, std::size_t, std::size_t nSize, void* pThis);
    static std::size_t OnHeader(char* pcData, std::size_t, std::size_t nSize, void* pThis);

    CURL* const m_pHandle;
    bool m_bTells = false; ///< the handle is set up so
    CURLM* m_pMulti = nullptr;
    CHttpGroup* m_ptGroup = nullptr;
    void* m_pConnection = nullptr;
    tagHttpRequest const* m_ptRequest = nullptr;
    tagHttpAnswer* m_ptAnswer = nullptr;
    std::size_t m_nHeader = 0; ///< bytes of the answer's
    std::array<std::string, 3> m_astrHeaders;
    std::array<curl_slist, 3> m_atHeaders{};
    std::size_t m_nHeaders = 0;
    std::array<char, CURL_ERROR_SIZE> m_szError{};
};
} // namespace onvif
