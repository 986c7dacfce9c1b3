#pragma once

#include "rtsp/Address.h"
#include "rtsp/Authentication.h"
#include "rtsp/Connection.h"
#include "rtsp/Message.h"
#include "rtsp/Strand.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rtsp
{
/// Whom a control connection serves.
class IControlOwner : public IAsker
{
public:
    /// RTP or RTCP that came in the connection.
    virtual void OnInterleaved(unsigned nChannel, Bytes abyPacket) = 0;
    /// Waiting is to end: what waits answers ECANCELED.
    virtual bool GivesUp() const = 0;

protected:
    ~IControlOwner() = default;
};

/// One RTSP connection to a server: requests, their answers, what the server asks, and packets in between. Inside its
/// owner's strand. What it waits for shows by CStrand::Next.
class CControl final : private IMessageSink
{
public:
    /// tOwner and tClient are one object, which owns this one.
    CControl(CLoop& tLoop, CResolver& tResolver, CStrand& tStrand, IControlOwner& tOwner, ILoopClient& tClient);
    ~CControl();
    CControl(CControl const&) = delete;
    CControl& operator=(CControl const&) = delete;

    struct tagPeer
    {
        tagUrl tUrl;
        bool bTrusted = false;                    ///< rtsps: it must prove who it is
        CAuthenticator* pAuthenticator = nullptr; ///< null: there is none for this server
    };
    /// Looks the host up and connects, to one address after the other. 0, or an errno.
    CTask<int> Connect(tagPeer tPeer, Clock::time_point tUntil);
    void Close();
    /// It is of no use any more: nError is how it ended.
    void Fail(int nError);
    bool IsOpen() const { return m_tConnection && !m_nEnd; }
    /// How the connection ended: an errno, 0: the server closed it. Nothing: it hasn't.
    std::optional<int> End() const { return m_nEnd; }

    /// Sends a request and waits for its answer; answers challenges. 0, or an errno. What every request carries (CSeq,
    /// session, credentials) is added.
    CTask<int> Ask(tagMessage tRequest, tagMessage& tAnswer, Clock::time_point tUntil);
    /// Sends a request whose answer LateAnswer tells. One at a time.
    void Send(tagMessage const& tRequest);
    std::optional<tagMessage> LateAnswer() { return std::exchange(m_tLateAnswer, std::nullopt); }
    /// For the request after a 401 that LateAnswer told. True: it is worth trying again.
    bool TakeChallenges(tagMessage const& tAnswer);
    void SendInterleaved(unsigned nChannel, Bytes abyPacket);

    /// The session that requests carry; empty: none.
    void SetSession(std::string strSession) { m_strSession = std::move(strSession); }
    std::string const& Session() const { return m_strSession; }

    /// What the loop told. False: the tag is another's.
    bool OnReadable(std::uint32_t dwTag);
    bool OnWritable(std::uint32_t dwTag);
    /// A full share was read, and no readability tells that there is more.
    bool WantsReadOn() const { return m_bReadOn; }
    void ReadOn();

    tagEndpoint const& Peer() const { return m_tPeerAddress; }
    tagEndpoint Local() const { return LocalEndpoint(m_tConnection->File()); }
    /// The server announced that what it sends has come to its end.
    bool IsEndAnnounced() const { return m_bEndAnnounced; }
    std::uint32_t NextTag() { return ++m_dwTag; }

private:
    enum class ePhase
    {
        Connecting, ///< Connect looks at the socket itself
        Open,
    };

    CTask<int> ConnectTo(tagPeer const& tPeer, tagEndpoint const& tEndpoint, Clock::time_point tUntil);
    unsigned Put(tagMessage const& tRequest);
    void Write(std::string_view strBytes);
    void Read();
    void AnswerServer(tagMessage const& tRequest);

    void OnMessage(tagMessage&& tMessage) override;
    void OnInterleaved(unsigned nChannel, Bytes abyPacket) override;
    void OnJunk(std::size_t) override {}

    CLoop& m_tLoop;
    CResolver& m_tResolver;
    CStrand& m_tStrand;
    IControlOwner& m_tOwner;
    ILoopClient& m_tClient;
    std::optional<CConnection> m_tConnection;
    ePhase m_ePhase = ePhase::Connecting;
    CMessageReader m_tReader;
    CAuthenticator* m_pAuthenticator = nullptr;
    tagEndpoint m_tPeerAddress;
    std::string m_strSession;
    std::optional<int> m_nEnd;
    std::uint32_t m_dwTag = 0;
    unsigned m_nSequence = 0; ///< CSeq of the last request
    unsigned m_nAwaited = 0;  ///< CSeq of the request that Ask waits for; 0: none
    unsigned m_nLate = 0;     ///< CSeq of the request that Send sent; 0: none
    std::optional<tagMessage> m_tAnswer;
    std::optional<tagMessage> m_tLateAnswer;
    bool m_bWritable = false; ///< while connecting: the socket told so
    bool m_bReady = false;    ///< while agreeing on keys: the socket told something
    bool m_bReadOn = false;
    bool m_bEndAnnounced = false;
};
} // namespace rtsp
