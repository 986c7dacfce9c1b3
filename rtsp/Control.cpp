#include "rtsp/Control.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <iterator>

namespace rtsp
{
namespace
{
constexpr int g_nMostReads = 8; // in a row, so that a flood doesn't hold up what else the stream does
constexpr char g_szAgent[] = "Tessaro";

// 0: there is no number.
unsigned SequenceOf(tagMessage const& tMessage)
{
    const std::string_view strValue = tMessage.Header("CSeq");
    unsigned nSequence = 0;
    std::from_chars(strValue.data(), strValue.data() + strValue.size(), nSequence);
    return nSequence;
}
} // namespace

CControl::CControl(CLoop& tLoop, CResolver& tResolver, CStrand& tStrand, IControlOwner& tOwner, ILoopClient& tClient)
    : m_tLoop(tLoop), m_tResolver(tResolver), m_tStrand(tStrand), m_tOwner(tOwner), m_tClient(tClient)
{
}

CControl::~CControl() = default;

// --- connecting ------------------------------------------------------------------------------------------------------

CTask<int> CControl::Connect(tagPeer tPeer, Clock::time_point tUntil)
{
    Close();
    m_pAuthenticator = tPeer.pAuthenticator;
    std::vector<tagEndpoint> atEndpoints(1, ParseEndpoint(tPeer.tUrl.strHost, 0));
    if (atEndpoints[0].nLength == 0)
    {
        const std::shared_ptr<IAsker> pAsker(m_tClient.shared_from_this(), &m_tOwner);
        const std::shared_ptr<CLookup const> pLookup = m_tResolver.Ask(tPeer.tUrl.strHost, pAsker);
        while (!pLookup->IsDone())
        {
            if (m_tOwner.GivesUp() || Clock::now() >= tUntil)
            {
                co_return m_tOwner.GivesUp() ? ECANCELED : ETIMEDOUT;
            }
            co_await m_tStrand.Next(tUntil);
        }
        if (pLookup->Error() != 0)
        {
            co_return pLookup->Error();
        }
        atEndpoints = pLookup->Found();
    }
    int nError = 0;
    for (std::size_t i = 0; i < atEndpoints.size(); ++i)
    {
        atEndpoints[i].SetPort(tPeer.tUrl.wPort);
        // An address that doesn't answer leaves time for the others.
        const auto tShare = (tUntil - Clock::now()) / static_cast<long>(atEndpoints.size() - i);
        nError = co_await ConnectTo(tPeer, atEndpoints[i], Clock::now() + tShare);
        if (nError == 0 || nError == ECANCELED)
        {
            break;
        }
    }
    co_return nError;
}

CTask<int> CControl::ConnectTo(tagPeer const& tPeer, tagEndpoint const& tEndpoint, Clock::time_point tUntil)
{
    CSocket tSocket;
    int nError = BeginConnect(tEndpoint, tSocket);
    if (nError != 0 && nError != EINPROGRESS)
    {
        co_return nError;
    }
    m_pConnection = std::make_unique<CConnection>(m_tLoop, std::move(tSocket), NextTag());
    m_ePhase = ePhase::Connecting;
    m_tPeerAddress = tEndpoint;
    const auto fnWait = [&](int nNow) // an errno that ends it, or EAGAIN
    {
        if (nNow == EAGAIN && (m_tOwner.GivesUp() || Clock::now() >= tUntil))
        {
            return m_tOwner.GivesUp() ? ECANCELED : ETIMEDOUT;
        }
        return nNow;
    };
    if (nError == EINPROGRESS)
    {
        m_pConnection->AwaitWritable(m_tClient);
        m_bWritable = false;
        while ((nError = fnWait(m_bWritable ? ConnectResult(m_pConnection->File()) : EAGAIN)) == EAGAIN)
        {
            co_await m_tStrand.Next(tUntil);
        }
    }
    if (nError == 0 && tPeer.tUrl.bTls)
    {
        m_pConnection->BeginTls(tPeer.tUrl.strHost, tPeer.bTrusted);
        m_bReady = true;
        while ((nError = fnWait(std::exchange(m_bReady, false) ? m_pConnection->Handshake(m_tClient) : EAGAIN)) ==
               EAGAIN)
        {
            co_await m_tStrand.Next(tUntil);
        }
    }
    if (nError != 0)
    {
        Close();
        co_return nError;
    }
    m_ePhase = ePhase::Open;
    m_pReader = std::make_unique<CMessageReader>();
    m_pConnection->BeginReading(m_tClient);
    co_return 0;
}

void CControl::Close()
{
    m_pConnection.reset();
    m_pReader.reset();
    m_strSession.clear();
    m_nEnd.reset();
    m_tAnswer.reset();
    m_tLateAnswer.reset();
    m_nAwaited = m_nLate = m_nSequence = 0;
    m_bReadOn = m_bEndAnnounced = false;
}

// --- requests --------------------------------------------------------------------------------------------------------

CTask<int> CControl::Ask(tagMessage tRequest, tagMessage& tAnswer, Clock::time_point tUntil)
{
    for (;;)
    {
        m_tAnswer.reset();
        m_nAwaited = Put(tRequest);
        while (!m_tAnswer)
        {
            const bool bLate = Clock::now() >= tUntil;
            if (m_nEnd || m_tOwner.GivesUp() || bLate)
            {
                m_nAwaited = 0;
                co_return m_nEnd ? (*m_nEnd == 0 ? ECONNRESET : *m_nEnd) : m_tOwner.GivesUp() ? ECANCELED : ETIMEDOUT;
            }
            co_await m_tStrand.Next(tUntil);
        }
        tAnswer = *std::exchange(m_tAnswer, std::nullopt);
        if (tAnswer.nStatus != 401 || !TakeChallenges(tAnswer))
        {
            co_return 0;
        }
    }
}

bool CControl::TakeChallenges(tagMessage const& tAnswer)
{
    return m_pAuthenticator && m_pAuthenticator->TakeChallenges(tAnswer.Headers("WWW-Authenticate"));
}

void CControl::Send(tagMessage const& tRequest)
{
    m_nLate = Put(tRequest);
}

// Its CSeq.
unsigned CControl::Put(tagMessage const& tRequest)
{
    tagMessage tWhole;
    tWhole.strMethod = tRequest.strMethod;
    tWhole.strUri = tRequest.strUri;
    tWhole.atHeaders.push_back({"CSeq", std::to_string(++m_nSequence)});
    tWhole.atHeaders.push_back({"User-Agent", g_szAgent});
    if (!m_strSession.empty())
    {
        tWhole.atHeaders.push_back({"Session", m_strSession});
    }
    std::string strAuthorization =
        m_pAuthenticator ? m_pAuthenticator->Authorization(tRequest.strMethod, tRequest.strUri) : std::string();
    if (!strAuthorization.empty())
    {
        tWhole.atHeaders.push_back({"Authorization", std::move(strAuthorization)});
    }
    tWhole.atHeaders.insert(tWhole.atHeaders.end(), tRequest.atHeaders.begin(), tRequest.atHeaders.end());
    Write(Serialize(tWhole));
    return m_nSequence;
}

void CControl::SendInterleaved(unsigned nChannel, Bytes abyPacket)
{
    std::string strFramed{'$', static_cast<char>(nChannel), static_cast<char>(abyPacket.size() >> 8),
                          static_cast<char>(abyPacket.size() & 255)};
    strFramed.append(reinterpret_cast<char const*>(abyPacket.data()), abyPacket.size());
    Write(strFramed);
}

void CControl::Write(std::string_view strBytes)
{
    if (IsOpen())
    {
        Fail(m_pConnection->Write(strBytes, m_tClient));
    }
}

// 0: it didn't.
void CControl::Fail(int nError)
{
    if (nError != 0 && !m_nEnd)
    {
        m_nEnd = nError;
        m_tStrand.Notify();
    }
}

// --- what comes ------------------------------------------------------------------------------------------------------

bool CControl::OnReadable(std::uint32_t dwTag)
{
    if (!m_pConnection || m_pConnection->Tag() != dwTag)
    {
        return false;
    }
    if (m_ePhase == ePhase::Connecting)
    {
        m_bReady = true;
        m_tStrand.Notify();
    }
    else if (!m_nEnd)
    {
        Read();
    }
    return true;
}

bool CControl::OnWritable(std::uint32_t dwTag)
{
    if (!m_pConnection || m_pConnection->Tag() != dwTag)
    {
        return false;
    }
    if (m_ePhase == ePhase::Connecting)
    {
        m_bReady = m_bWritable = true;
        m_tStrand.Notify();
    }
    else if (!m_nEnd)
    {
        Fail(m_pConnection->Flush(m_tClient));
    }
    return true;
}

void CControl::ReadOn()
{
    if (m_bReadOn && IsOpen())
    {
        Read();
    }
}

void CControl::Read()
{
    const std::span<unsigned char> abyRoom = ReceiveBuffer();
    m_bReadOn = false;
    for (int i = 0; i < g_nMostReads; ++i)
    {
        const std::ptrdiff_t nRead = m_pConnection->Read(abyRoom);
        if (nRead == -EAGAIN)
        {
            break;
        }
        if (nRead <= 0)
        {
            m_nEnd = static_cast<int>(-nRead);
            m_tStrand.Notify();
            return;
        }
        if (!m_pReader->Take(abyRoom.first(static_cast<std::size_t>(nRead)), *this))
        {
            Fail(EPROTO);
            return;
        }
        if (!m_pConnection->IsTls() && static_cast<std::size_t>(nRead) < abyRoom.size())
        {
            break; // that was all
        }
    }
    if (m_nEnd)
    {
        return;
    }
    if (m_pConnection->HasMore())
    {
        m_bReadOn = true; // no readability tells of it
    }
    else
    {
        m_pConnection->AwaitReadable(m_tClient);
    }
}

void CControl::OnInterleaved(unsigned nChannel, Bytes abyPacket)
{
    m_tOwner.OnInterleaved(nChannel, abyPacket);
}

// Servers leave CSeq out, or make up their own: an answer to nothing that was sent answers what is waited for. One to
// an earlier request comes too late and is passed over.
void CControl::OnMessage(tagMessage&& tMessage)
{
    if (tMessage.nStatus == 0)
    {
        AnswerServer(tMessage);
        return;
    }
    if (tMessage.nStatus < 200) // more is to come
    {
        return;
    }
    const unsigned nSequence = SequenceOf(tMessage);
    const bool bUnknown = nSequence == 0 || nSequence > m_nSequence;
    if (m_nLate != 0 && (nSequence == m_nLate || (bUnknown && m_nAwaited == 0)))
    {
        m_nLate = 0;
        m_tLateAnswer = std::move(tMessage);
        m_tStrand.Notify();
    }
    else if (m_nAwaited != 0 && (nSequence == m_nAwaited || bUnknown))
    {
        m_nAwaited = 0;
        m_tAnswer = std::move(tMessage);
        m_tStrand.Notify();
    }
}

void CControl::AnswerServer(tagMessage const& tRequest)
{
    constexpr std::string_view g_astrKnown[] = {"OPTIONS", "GET_PARAMETER", "SET_PARAMETER", "ANNOUNCE", "REDIRECT"};
    const bool bKnown =
        std::find(std::begin(g_astrKnown), std::end(g_astrKnown), tRequest.strMethod) != std::end(g_astrKnown);
    tagMessage tAnswer;
    tAnswer.nStatus = bKnown ? 200 : 501;
    tAnswer.strReason = bKnown ? "OK" : "Not Implemented";
    tAnswer.atHeaders.push_back({"CSeq", std::string(tRequest.Header("CSeq"))});
    if (tRequest.strMethod == "OPTIONS")
    {
        tAnswer.atHeaders.push_back({"Public", "OPTIONS, GET_PARAMETER, SET_PARAMETER, ANNOUNCE, REDIRECT"});
    }
    if (tRequest.strMethod == "ANNOUNCE")
    {
        m_bEndAnnounced = true;
        m_tStrand.Notify();
    }
    Write(Serialize(tAnswer));
}
} // namespace rtsp
