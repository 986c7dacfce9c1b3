#pragma once

#include "tools/tessaro/Address.h"
#include "tools/tessaro/Context.h"

#include <functional>
#include <map>

namespace tessaro
{
/// The library, started as long as one of these lives. Made and destroyed by the main thread.
class CService
{
public:
    CService();
    ~CService();
    CService(CService const&) = delete;
    CService& operator=(CService const&) = delete;

    /// Puts another plug-in in the place of a protocol's, if it isn't there already. Throws CFailure when it doesn't
    /// start.
    void Insert(eProtocolType eProtocol, std::string const& strPlugin);

private:
    static inline int m_nStarted = 0;
    static inline std::map<eProtocolType, std::string> m_tInserted;
};

/// A login to a device, and the library with it.
class CSession
{
public:
    /// Logs in; asks for the password if one is needed. Throws CFailure.
    CSession(tagContext& tContext, std::string const& strAddress);
    ~CSession();
    CSession(CSession const&) = delete;
    CSession& operator=(CSession const&) = delete;

    int Login() const { return m_nLogin; }
    tagAddress const& Address() const { return m_tAddress; }
    bool IsRtsp() const { return m_tAddress.eProtocol == eProtocolRTSP; }
    /// Throws CFailure for a stream, which is no device.
    void NeedsDevice(char const* szWhat) const;

    /// Reads a configuration block's record; the call's result.
    template <class Record>
    int Read(eConfigType eType, unsigned int dwIndex, Record& t, unsigned int dwStream = 0) const
    {
        return ReadBlock(eType, dwIndex, dwStream, &t, sizeof t);
    }
    int ReadBlock(eConfigType eType, unsigned int dwIndex, unsigned int dwStream, void* pRecord,
                  std::size_t nRecord) const;
    int WriteBlock(eConfigType eType, unsigned int dwIndex, unsigned int dwStream, void const* pRecord,
                   std::size_t nRecord) const;
    /// Channels of the device; 1 of a stream or where the device doesn't say.
    unsigned int Channels() const;

private:
    tagAddress m_tAddress;
    CService m_tService;
    int m_nLogin = -1;
};

/// The address's protocol, and how to log in. Asks for the password if one is needed.
tagUserLoginPara LoginRecord(tagContext const& tContext, tagAddress const& tAddress);

/// Something open under a media ID, closed at the end.
class CMedia
{
public:
    using Close = int (*)(int);
    explicit CMedia(Close pfnClose) : m_pfnClose(pfnClose) {}
    ~CMedia() { Shut(); }
    CMedia(CMedia const&) = delete;
    CMedia& operator=(CMedia const&) = delete;

    int* Target() { return &m_nId; } ///< for the opening function
    int Id() const { return m_nId; }
    int Shut(); ///< the closing function's result

private:
    Close m_pfnClose;
    int m_nId = -1;
};

/// Events of a login, as long as this object lives. The function runs on threads of the plug-in.
class CEventSubscription
{
public:
    using Handler =
        std::function<void(unsigned long dwEvent, unsigned long dwWord2, unsigned long dwWord3, unsigned long dwWord4)>;
    CEventSubscription(int nLogin, unsigned long dwMask, Handler fnHandler);
    ~CEventSubscription();
    CEventSubscription(CEventSubscription const&) = delete;
    CEventSubscription& operator=(CEventSubscription const&) = delete;
    int Result() const { return m_nResult; }

private:
    struct tagState;
    int m_nLogin;
    int m_nResult;
    tagState& m_tState;
};
} // namespace tessaro
