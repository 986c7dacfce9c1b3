#include "onvif/Discovery.h"

#include "onvif/Client.h"
#include "onvif/DiscoverySockets.h"

#include <algorithm>
#include <map>
#include <utility>

namespace onvif
{
namespace
{
using namespace std::chrono_literals;

constexpr auto g_tRepeat = 500ms; // a datagram may be lost: each probe goes out twice
constexpr auto g_tNextProbe = 2500ms;
constexpr auto g_tAnswerTime = 1500ms; // for the last answers
constexpr std::size_t g_nMostDevices = 10000;
} // namespace

// What was asked for at one Start. The HTTP thread's, but for its making.
class CDiscovery::CSearch : public std::enable_shared_from_this<CSearch>
{
public:
    CSearch(CHttp& tHttp, std::function<void(tagFound const&)> fnFound) : m_tHttp(tHttp), m_fnFound(std::move(fnFound))
    {
    }

    bool Open(tagWhere const& tWhere)
    {
        m_atSockets = tWhere.strAddress.empty() ? OpenMulticast(tWhere.strInterface, tWhere.bIPv4, tWhere.bIPv6)
                                                : OpenUnicast(tWhere.strAddress, tWhere.bIPv4, tWhere.bIPv6);
        return !m_atSockets.empty();
    }
    void Begin(tagWhere const& tWhere)
    {
        for (CProbeSocket const& tSocket : m_atSockets)
        {
            m_tHttp.Begin(Listen(shared_from_this(), tSocket));
        }
        m_tHttp.Begin(Ask(shared_from_this(), tWhere, false));
    }
    void Again(tagWhere const& tWhere) { m_tHttp.Begin(Ask(shared_from_this(), tWhere, true)); }
    void End() { m_tHttp.End(m_pGroup, -1); }

private:
    struct tagKnown
    {
        tagFound tFound;
        Clock::time_point tHeard;
    };

    // The coroutines hold pThis: the sockets live as long as they.
    rtsp::CTask<> Listen(std::shared_ptr<CSearch> pThis, CProbeSocket const& tSocket)
    {
        while (co_await m_tHttp.Readable(m_pGroup, tSocket.File()))
        {
            tagPeer tFrom;
            while (const auto strMessage = tSocket.Receive(tFrom, m_acRoom))
            {
                for (tagAnnouncement const& tSaid : ParseAnnouncements(*strMessage))
                {
                    Take(tSaid, tFrom);
                }
            }
        }
        pThis.reset();
    }

    rtsp::CTask<> Ask(std::shared_ptr<CSearch> pThis, tagWhere tWhere, bool bReportAll)
    {
        const unsigned nTurn = ++m_nTurn;
        const auto tBegan = Clock::now();
        const auto tUntil = tBegan + tWhere.tFor;
        if (bReportAll)
        {
            for (auto const& [strKey, tKnown] : m_tKnown)
            {
                m_fnFound(tKnown.tFound);
            }
        }
        bool bAlive = true;
        while (bAlive && nTurn == m_nTurn && Clock::now() < tUntil)
        {
            const std::string strIds[] = {NewId(), NewId()};
            Probe(strIds);
            bAlive = co_await m_tHttp.Until(m_pGroup, Clock::now() + g_tRepeat);
            if (bAlive)
            {
                Probe(strIds);
                if (!tWhere.strAddress.empty() && m_tKnown.empty())
                {
                    co_await AskByHttp(tWhere);
                }
                bAlive = co_await m_tHttp.Until(m_pGroup, std::min(tUntil, Clock::now() + g_tNextProbe));
            }
        }
        bAlive = bAlive && co_await m_tHttp.Until(m_pGroup, Clock::now() + g_tAnswerTime);
        if (bAlive && bReportAll && nTurn == m_nTurn)
        {
            ForgetSilent(tBegan);
        }
        pThis.reset();
    }

    void Probe(std::string const (&strIds)[2]) const
    {
        // Each device answers to one of these; some to one of them only.
        const std::string strCameras = ProbeMessage("dn:NetworkVideoTransmitter", strIds[0]);
        const std::string strAll = ProbeMessage("tds:Device", strIds[1]);
        for (CProbeSocket const& tSocket : m_atSockets)
        {
            if (tSocket.Asks())
            {
                tSocket.Send(strCameras);
                tSocket.Send(strAll);
            }
        }
    }

    // A device that has discovery switched off.
    rtsp::CTask<> AskByHttp(tagWhere tWhere)
    {
        tagClientOptions tOptions;
        const auto tAddress = ParseDevice(tWhere.strAddress, tWhere.wPort);
        if (!tAddress)
        {
            co_return;
        }
        tOptions.tAddress = *tAddress;
        const auto pClient = std::make_shared<CClient>(m_tHttp, std::move(tOptions));
        const int nResult = co_await pClient->PingAsync(2s);
        if (nResult == 0 && m_tKnown.empty())
        {
            tagFound tFound;
            tFound.tSaid.strEndpoint = tAddress->Text();
            tFound.tAddress = *tAddress;
            m_tKnown[tFound.tSaid.strEndpoint] = {tFound, Clock::now()};
            m_fnFound(tFound);
        }
    }

    void Take(tagAnnouncement const& tSaid, tagPeer const& tFrom)
    {
        const auto itKnown = m_tKnown.find(tSaid.strEndpoint);
        if (tSaid.bBye)
        {
            if (itKnown != m_tKnown.end() && !std::exchange(itKnown->second.tFound.bGone, true))
            {
                m_fnFound(itKnown->second.tFound);
            }
            return;
        }
        const auto tAddress = Choose(tSaid, tFrom.Text());
        if (!tAddress) // it says hello, but not from where
        {
            const tagPeer tThere = AtDiscoveryPort(tFrom);
            for (CProbeSocket const& tSocket : m_atSockets)
            {
                if (tSocket.Asks())
                {
                    tSocket.SendTo(ProbeMessage("tds:Device", NewId()), tThere);
                }
            }
            return;
        }
        if (itKnown == m_tKnown.end() && m_tKnown.size() >= g_nMostDevices)
        {
            return;
        }
        tagKnown& tKnown = m_tKnown[tSaid.strEndpoint];
        tKnown.tHeard = Clock::now();
        if (itKnown == m_tKnown.end() || IsNews(tKnown.tFound, tSaid))
        {
            tKnown.tFound = {tSaid, *tAddress, false};
            m_fnFound(tKnown.tFound);
        }
    }

    // By another of its interfaces it has another address, and says nothing new.
    static bool IsNews(tagFound const& tKnown, tagAnnouncement const& tSaid)
    {
        tagAnnouncement const& t = tKnown.tSaid;
        return tKnown.bGone || t.strName != tSaid.strName || t.strHardware != tSaid.strHardware ||
               t.strLocation != tSaid.strLocation ||
               (t.strVersion != tSaid.strVersion && t.astrAddresses != tSaid.astrAddresses);
    }

    void ForgetSilent(Clock::time_point tSince)
    {
        for (auto& [strKey, tKnown] : m_tKnown)
        {
            if (tKnown.tHeard < tSince && !std::exchange(tKnown.tFound.bGone, true))
            {
                m_fnFound(tKnown.tFound);
            }
        }
    }

    CHttp& m_tHttp;
    const std::function<void(tagFound const&)> m_fnFound;
    const std::shared_ptr<CHttpGroup> m_pGroup = std::make_shared<CHttpGroup>();
    std::vector<CProbeSocket> m_atSockets;
    std::vector<char> m_acRoom = std::vector<char>(65536); ///< of one datagram at a time
    std::map<std::string, tagKnown> m_tKnown;              ///< by endpoint
    unsigned m_nTurn = 0;                                  ///< a later question ends an earlier one
};

CDiscovery::CDiscovery(CHttp& tHttp, std::function<void(tagFound const&)> fnFound)
    : m_tHttp(tHttp), m_fnFound(std::move(fnFound))
{
}

CDiscovery::~CDiscovery()
{
    Stop();
}

bool CDiscovery::Start(tagWhere const& tWhere)
{
    const auto pSearch = std::make_shared<CSearch>(m_tHttp, m_fnFound);
    Stop();
    if (!pSearch->Open(tWhere))
    {
        return false;
    }
    const std::lock_guard tLock(m_tMutex);
    m_pSearch = pSearch;
    pSearch->Begin(tWhere);
    return true;
}

bool CDiscovery::Again(tagWhere const& tWhere)
{
    const std::lock_guard tLock(m_tMutex);
    if (m_pSearch)
    {
        m_pSearch->Again(tWhere);
    }
    return m_pSearch != nullptr;
}

void CDiscovery::Stop()
{
    const std::lock_guard tLock(m_tMutex);
    if (const auto pSearch = std::exchange(m_pSearch, nullptr))
    {
        pSearch->End();
    }
}
} // namespace onvif
