#include "tools/onvif_device/Announcer.h"

#include "tools/onvif_device/Face.h"
#include "tools/onvif_device/Names.h"
#include "tools/onvif_device/Scopes.h"
#include "tools/onvif_device/Services.h"
#include "tools/onvif_device/Values.h"
#include "tools/onvif_device/Xml.h"

#include "plugins/device/Device.h"

#include <arpa/inet.h>
#include <atomic>
#include <ifaddrs.h>
#include <net/if.h>
#include <poll.h>
#include <set>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace onvif_device
{
namespace
{
constexpr uint16_t g_wPort = 3702;
constexpr char const* g_szGroup4 = "239.255.255.250";
constexpr char const* g_szGroup6 = "ff02::c";
constexpr std::string_view g_strActions = "http://schemas.xmlsoap.org/ws/2005/04/discovery/";
constexpr char const* g_szEverybody = "urn:schemas-xmlsoap-org:ws:2005:04:discovery";
constexpr char const* g_szAnonymous = "http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous";

std::string NewMessageId()
{
    static std::atomic<uint32_t> s_dwLast{0};
    char szId[64];
    std::snprintf(szId, sizeof szId, "urn:uuid:7e55a20d-0b0c-4001-%04x-%012x", static_cast<unsigned>(getpid()) & 0xFFFF,
                  ++s_dwLast);
    return szId;
}

// The interfaces that messages to groups can go through, by their index.
std::set<unsigned> Interfaces(int nFamily)
{
    std::set<unsigned> tIndexes;
    ifaddrs* pAll = nullptr;
    if (getifaddrs(&pAll) != 0)
    {
        return tIndexes;
    }
    for (ifaddrs const* p = pAll; p; p = p->ifa_next)
    {
        const bool bUsable = (p->ifa_flags & IFF_UP) != 0 && (p->ifa_flags & (IFF_MULTICAST | IFF_LOOPBACK)) != 0;
        if (p->ifa_addr && p->ifa_addr->sa_family == nFamily && bUsable)
        {
            tIndexes.insert(if_nametoindex(p->ifa_name));
        }
    }
    freeifaddrs(pAll);
    return tIndexes;
}

std::string TextOfAddress(sockaddr_storage const& t)
{
    char szText[INET6_ADDRSTRLEN] = {};
    void const* const pAddress = t.ss_family == AF_INET
                                     ? static_cast<void const*>(&reinterpret_cast<sockaddr_in const&>(t).sin_addr)
                                     : static_cast<void const*>(&reinterpret_cast<sockaddr_in6 const&>(t).sin6_addr);
    inet_ntop(t.ss_family, pAddress, szText, sizeof szText);
    return t.ss_family == AF_INET ? szText : '[' + std::string(szText) + ']';
}

// This machine's own address on the way to another one.
std::string AddressTowards(sockaddr_storage const& tOther, socklen_t nLength)
{
    sockaddr_storage tOwn{};
    socklen_t nOwn = sizeof tOwn;
    const int nSocket = socket(tOther.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool bKnown = nSocket >= 0 && connect(nSocket, reinterpret_cast<sockaddr const*>(&tOther), nLength) == 0 &&
                        getsockname(nSocket, reinterpret_cast<sockaddr*>(&tOwn), &nOwn) == 0;
    if (nSocket >= 0)
    {
        close(nSocket);
    }
    return bKnown ? TextOfAddress(tOwn) : std::string("127.0.0.1");
}

// --- messages --------------------------------------------------------------------------------------------------------

void WriteDevice(CXml& tXml, tagAnnounced const& t, std::string const& strHost, bool bAll)
{
    device::CDevice& tDevice = t.pFace->Device();
    const tagQuirks tQuirks = t.pFace->Quirks();
    const device::CDevice::CLock tLock(tDevice);
    tXml.In("wsa04:EndpointReference", [&] { tXml.Put("wsa04:Address", EndpointOf(tDevice)); });
    if (!bAll)
    {
        return;
    }
    std::string strScopes;
    for (tagScope const& tScope : ScopesOf(tDevice))
    {
        strScopes += (strScopes.empty() ? "" : " ") + tScope.strUri;
    }
    const std::string strAddress = tQuirks.strHost.empty() ? strHost + ':' + std::to_string(t.dwPort) : tQuirks.strHost;
    tXml.Put("wsd:Types", tXml.Name("dn:NetworkVideoTransmitter") + ' ' + tXml.Name("tds:Device"));
    tXml.Put("wsd:Scopes", strScopes);
    tXml.Put("wsd:XAddrs",
             (t.bTls ? "https://" : "http://") + strAddress + PathOf(ServiceOf(eService::Device), tQuirks));
    tXml.Put("wsd:MetadataVersion", 1);
}

// strRelatesTo: the message that this one answers; empty: everybody is told.
template <class F>
std::string Message(tagAnnounced const& t, std::string const& strAction, std::string const& strRelatesTo, F fnBody)
{
    CXml tXml(t.pFace->Quirks().bOddPrefixes);
    tXml.Raw("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    tXml.In("s:Envelope", tXml.Declarations(),
            [&]
            {
                tXml.In("s:Header",
                        [&]
                        {
                            tXml.Put("wsa04:MessageID", NewMessageId());
                            if (!strRelatesTo.empty())
                            {
                                tXml.Put("wsa04:RelatesTo", strRelatesTo);
                            }
                            tXml.Put("wsa04:To", strRelatesTo.empty() ? g_szEverybody : g_szAnonymous);
                            tXml.Put("wsa04:Action", std::string(g_strActions) + strAction);
                            tXml.Empty("wsd:AppSequence", {{"InstanceId", "1"}, {"MessageNumber", "1"}});
                        });
                tXml.In("s:Body", [&] { fnBody(tXml); });
            });
    return tXml.Text();
}

// Whether a probe means this device: by type, and by scopes that its own begin with.
bool IsMeant(device::CDevice& tDevice, pugi::xml_node tProbe)
{
    const auto astrTypes = Words(ChildText(tProbe, "Types"));
    const bool bType = astrTypes.empty() ||
                       std::ranges::any_of(astrTypes,
                                           [](std::string const& str)
                                           {
                                               return LocalName(std::string_view(str)) == "NetworkVideoTransmitter" ||
                                                      LocalName(std::string_view(str)) == "Device";
                                           });
    const device::CDevice::CLock tLock(tDevice);
    const auto atScopes = ScopesOf(tDevice);
    return bType && std::ranges::all_of(Words(ChildText(tProbe, "Scopes")),
                                        [&](std::string const& strWanted) {
                                            return std::ranges::any_of(atScopes, [&](tagScope const& t)
                                                                       { return t.strUri.starts_with(strWanted); });
                                        });
}
} // namespace

struct CAnnouncer::tagSocket
{
    int nSocket = -1;
    int nFamily = AF_INET;
    std::set<unsigned> tInterfaces;
};

CAnnouncer::CAnnouncer(std::vector<tagAnnounced> atDevices, std::string strListen)
    : m_atDevices(std::move(atDevices)), m_strListen(std::move(strListen))
{
    for (const int nFamily : {AF_INET, AF_INET6})
    {
        const int nSocket = socket(nFamily, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        const int nOne = 1;
        sockaddr_storage tAddress{};
        tAddress.ss_family = static_cast<sa_family_t>(nFamily);
        (nFamily == AF_INET ? reinterpret_cast<sockaddr_in&>(tAddress).sin_port
                            : reinterpret_cast<sockaddr_in6&>(tAddress).sin6_port) = htons(g_wPort);
        setsockopt(nSocket, SOL_SOCKET, SO_REUSEADDR, &nOne, sizeof nOne);
        if (nFamily == AF_INET6)
        {
            setsockopt(nSocket, IPPROTO_IPV6, IPV6_V6ONLY, &nOne, sizeof nOne);
        }
        if (bind(nSocket, reinterpret_cast<sockaddr*>(&tAddress),
                 nFamily == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6)) != 0)
        {
            const int nError = errno;
            close(nSocket);
            if (nFamily == AF_INET)
            {
                throw std::system_error(nError, std::generic_category(), "discovery");
            }
            continue; // a machine without IPv6
        }
        tagSocket t{nSocket, nFamily, Interfaces(nFamily)};
        for (const unsigned nInterface : t.tInterfaces)
        {
            ip_mreqn t4{};
            ipv6_mreq t6{};
            inet_pton(AF_INET, g_szGroup4, &t4.imr_multiaddr);
            inet_pton(AF_INET6, g_szGroup6, &t6.ipv6mr_multiaddr);
            t4.imr_ifindex = static_cast<int>(nInterface);
            t6.ipv6mr_interface = nInterface;
            nFamily == AF_INET ? setsockopt(nSocket, IPPROTO_IP, IP_ADD_MEMBERSHIP, &t4, sizeof t4)
                               : setsockopt(nSocket, IPPROTO_IPV6, IPV6_JOIN_GROUP, &t6, sizeof t6);
        }
        m_atSockets.push_back(std::move(t));
    }
    if (pipe(m_anStop) != 0)
    {
        throw std::system_error(errno, std::generic_category(), "discovery");
    }
    m_tThread = std::thread([this] { Listen(); });
    for (std::size_t i = 0; i < m_atDevices.size(); ++i)
    {
        SayHello(i, true);
    }
}

CAnnouncer::~CAnnouncer()
{
    close(m_anStop[1]);
    m_tThread.join();
    close(m_anStop[0]);
    for (std::size_t i = 0; i < m_atDevices.size(); ++i)
    {
        SayHello(i, false);
    }
    for (tagSocket const& t : m_atSockets)
    {
        close(t.nSocket);
    }
}

void CAnnouncer::SayHello(std::size_t nDevice, bool bHello) const
{
    tagAnnounced const& tDevice = m_atDevices[nDevice];
    for (tagSocket const& t : m_atSockets)
    {
        sockaddr_storage tTo{};
        tTo.ss_family = static_cast<sa_family_t>(t.nFamily);
        auto& t4 = reinterpret_cast<sockaddr_in&>(tTo);
        auto& t6 = reinterpret_cast<sockaddr_in6&>(tTo);
        (t.nFamily == AF_INET ? t4.sin_port : t6.sin6_port) = htons(g_wPort);
        t.nFamily == AF_INET ? inet_pton(AF_INET, g_szGroup4, &t4.sin_addr)
                             : inet_pton(AF_INET6, g_szGroup6, &t6.sin6_addr);
        const socklen_t nLength = t.nFamily == AF_INET ? sizeof t4 : sizeof t6;
        for (const unsigned nInterface : t.tInterfaces)
        {
            ip_mreqn tThrough{};
            tThrough.imr_ifindex = static_cast<int>(nInterface);
            t6.sin6_scope_id = t.nFamily == AF_INET6 ? nInterface : 0;
            t.nFamily == AF_INET
                ? setsockopt(t.nSocket, IPPROTO_IP, IP_MULTICAST_IF, &tThrough, sizeof tThrough)
                : setsockopt(t.nSocket, IPPROTO_IPV6, IPV6_MULTICAST_IF, &nInterface, sizeof nInterface);
            const std::string strHost =
                m_strListen == "0.0.0.0" || m_strListen == "::" ? AddressTowards(tTo, nLength) : m_strListen;
            const std::string strMessage = Message(
                tDevice, bHello ? "Hello" : "Bye", {},
                [&](CXml& tXml)
                { tXml.In(bHello ? "wsd:Hello" : "wsd:Bye", [&] { WriteDevice(tXml, tDevice, strHost, bHello); }); });
            sendto(t.nSocket, strMessage.data(), strMessage.size(), 0, reinterpret_cast<sockaddr*>(&tTo), nLength);
        }
    }
}

void CAnnouncer::Listen()
{
    std::vector<pollfd> atPoll{{m_anStop[0], POLLIN, 0}};
    for (tagSocket const& t : m_atSockets)
    {
        atPoll.push_back({t.nSocket, POLLIN, 0});
    }
    while (poll(atPoll.data(), atPoll.size(), -1) >= 0 && atPoll[0].revents == 0)
    {
        for (std::size_t i = 0; i < m_atSockets.size(); ++i)
        {
            if (atPoll[i + 1].revents & POLLIN)
            {
                Answer(m_atSockets[i]);
            }
        }
    }
}

void CAnnouncer::Answer(tagSocket const& tSocket) const
{
    std::string strAsked(65536, '\0');
    sockaddr_storage tFrom{};
    socklen_t nLength = sizeof tFrom;
    const ssize_t nRead =
        recvfrom(tSocket.nSocket, strAsked.data(), strAsked.size(), 0, reinterpret_cast<sockaddr*>(&tFrom), &nLength);
    pugi::xml_document tDocument;
    if (nRead <= 0 || !tDocument.load_buffer(strAsked.data(), static_cast<std::size_t>(nRead)))
    {
        return;
    }
    const pugi::xml_node tEnvelope = tDocument.document_element();
    const pugi::xml_node tProbe = Child(tEnvelope, {"Body", "Probe"});
    const pugi::xml_node tResolve = Child(tEnvelope, {"Body", "Resolve"});
    const std::string strId = TextOf(Child(tEnvelope, {"Header", "MessageID"}));
    if ((!tProbe && !tResolve) || strId.empty() || NamespaceOf(tProbe ? tProbe : tResolve) != UriOf("wsd"))
    {
        return;
    }
    const std::string strHost =
        m_strListen == "0.0.0.0" || m_strListen == "::" ? AddressTowards(tFrom, nLength) : m_strListen;
    for (tagAnnounced const& t : m_atDevices)
    {
        device::CDevice& tDevice = t.pFace->Device();
        std::string strEndpoint;
        {
            const device::CDevice::CLock tLock(tDevice);
            strEndpoint = EndpointOf(tDevice);
        }
        const bool bMeant = tProbe ? IsMeant(tDevice, tProbe)
                                   : TextOf(Child(tResolve, {"EndpointReference", "Address"})) == strEndpoint;
        if (!bMeant || !tDevice.IsUp())
        {
            continue;
        }
        char const* const szMatch = tProbe ? "ProbeMatch" : "ResolveMatch";
        const std::string strAnswer = Message(
            t, szMatch + std::string("es"), strId,
            [&](CXml& tXml)
            {
                tXml.In("wsd:" + std::string(szMatch) + "es",
                        [&] { tXml.In("wsd:" + std::string(szMatch), [&] { WriteDevice(tXml, t, strHost, true); }); });
            });
        for (int64_t i = 0; i < t.pFace->Quirks().llProbeAnswers; ++i)
        {
            sendto(tSocket.nSocket, strAnswer.data(), strAnswer.size(), 0, reinterpret_cast<sockaddr*>(&tFrom),
                   nLength);
        }
    }
}
} // namespace onvif_device
