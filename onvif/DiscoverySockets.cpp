#include "onvif/DiscoverySockets.h"

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <set>
#include <unistd.h>
#include <utility>

namespace onvif
{
namespace
{
constexpr std::uint16_t g_wPort = 3702;
constexpr char g_szGroup4[] = "239.255.255.250";
constexpr char g_szGroup6[] = "ff02::c";

template <class T>
bool SetOption(int nFile, int nLevel, int nOption, T const& tValue)
{
    return setsockopt(nFile, nLevel, nOption, &tValue, sizeof tValue) == 0;
}

tagPeer Peer(sockaddr const* ptAddress, socklen_t nSize)
{
    tagPeer tPeer;
    std::memcpy(&tPeer.tAddress, ptAddress, nSize);
    tPeer.nSize = nSize;
    return tPeer;
}

tagPeer Group(int nFamily, unsigned nInterface)
{
    if (nFamily == AF_INET)
    {
        sockaddr_in t{};
        t.sin_family = AF_INET;
        t.sin_port = htons(g_wPort);
        inet_pton(AF_INET, g_szGroup4, &t.sin_addr);
        return Peer(reinterpret_cast<sockaddr const*>(&t), sizeof t);
    }
    sockaddr_in6 t{};
    t.sin6_family = AF_INET6;
    t.sin6_port = htons(g_wPort);
    t.sin6_scope_id = nInterface;
    inet_pton(AF_INET6, g_szGroup6, &t.sin6_addr);
    return Peer(reinterpret_cast<sockaddr const*>(&t), sizeof t);
}

int NewSocket(int nFamily)
{
    const int nFile = socket(nFamily, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (nFile >= 0 && nFamily == AF_INET6)
    {
        SetOption(nFile, IPPROTO_IPV6, IPV6_V6ONLY, 1);
    }
    return nFile;
}

bool Bind(int nFile, tagPeer const& tPeer)
{
    return bind(nFile, reinterpret_cast<sockaddr const*>(&tPeer.tAddress), tPeer.nSize) == 0;
}

// Sends from this address of this interface.
bool MakeAsking(int nFile, ifaddrs const& tInterface)
{
    const int nIndex = static_cast<int>(if_nametoindex(tInterface.ifa_name));
    if (tInterface.ifa_addr->sa_family == AF_INET6)
    {
        return SetOption(nFile, IPPROTO_IPV6, IPV6_MULTICAST_IF, nIndex);
    }
    ip_mreqn tRequest{};
    tRequest.imr_ifindex = nIndex;
    tRequest.imr_address = reinterpret_cast<sockaddr_in const*>(tInterface.ifa_addr)->sin_addr;
    return SetOption(nFile, IPPROTO_IP, IP_MULTICAST_IF, tRequest) &&
           Bind(nFile, Peer(tInterface.ifa_addr, sizeof(sockaddr_in)));
}

// Bound to the group: what is sent to this machine alone at that port is somebody else's.
bool MakeListening(int nFile, int nFamily, unsigned nInterface)
{
    SetOption(nFile, SOL_SOCKET, SO_REUSEADDR, 1);
    if (!Bind(nFile, Group(nFamily, nInterface)))
    {
        return false;
    }
    if (nFamily == AF_INET6)
    {
        ipv6_mreq tRequest{};
        inet_pton(AF_INET6, g_szGroup6, &tRequest.ipv6mr_multiaddr);
        tRequest.ipv6mr_interface = nInterface;
        return SetOption(nFile, IPPROTO_IPV6, IPV6_ADD_MEMBERSHIP, tRequest);
    }
    SetOption(nFile, IPPROTO_IP, IP_MULTICAST_ALL, 0);
    ip_mreqn tRequest{};
    inet_pton(AF_INET, g_szGroup4, &tRequest.imr_multiaddr);
    tRequest.imr_ifindex = static_cast<int>(nInterface);
    return SetOption(nFile, IPPROTO_IP, IP_ADD_MEMBERSHIP, tRequest);
}

template <class F>
void Add(std::vector<CProbeSocket>& atSockets, int nFamily, tagPeer const& tTo, F fnMake)
{
    const int nFile = NewSocket(nFamily);
    if (nFile >= 0)
    {
        CProbeSocket tSocket(nFile, tTo);
        if (fnMake(nFile))
        {
            atSockets.push_back(std::move(tSocket));
        }
    }
}
} // namespace

std::string tagPeer::Text() const
{
    std::array<char, NI_MAXHOST> szHost{};
    getnameinfo(reinterpret_cast<sockaddr const*>(&tAddress), nSize, szHost.data(), szHost.size(), nullptr, 0,
                NI_NUMERICHOST);
    return szHost.data();
}

CProbeSocket::CProbeSocket(CProbeSocket&& tOther) noexcept
    : m_nFile(std::exchange(tOther.m_nFile, -1)), m_tTo(tOther.m_tTo)
{
}

CProbeSocket::~CProbeSocket()
{
    if (m_nFile >= 0)
    {
        close(m_nFile);
    }
}

void CProbeSocket::SendTo(std::string_view strMessage, tagPeer const& tPeer) const
{
    sendto(m_nFile, strMessage.data(), strMessage.size(), MSG_NOSIGNAL,
           reinterpret_cast<sockaddr const*>(&tPeer.tAddress), tPeer.nSize);
}

std::optional<std::string_view> CProbeSocket::Receive(tagPeer& tFrom, std::span<char> acRoom) const
{
    tFrom.nSize = sizeof tFrom.tAddress;
    const ssize_t nLength =
        recvfrom(m_nFile, acRoom.data(), acRoom.size(), 0, reinterpret_cast<sockaddr*>(&tFrom.tAddress), &tFrom.nSize);
    return nLength < 0 ? std::nullopt
                       : std::optional(std::string_view(acRoom.data(), static_cast<std::size_t>(nLength)));
}

std::vector<CProbeSocket> OpenMulticast(std::string const& strInterface, bool bIPv4, bool bIPv6)
{
    std::vector<CProbeSocket> atSockets;
    ifaddrs* ptFirst = nullptr;
    if (getifaddrs(&ptFirst) != 0)
    {
        return atSockets;
    }
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> pAll(ptFirst, &freeifaddrs);
    std::set<std::pair<int, unsigned>> tListening; // of each interface: one for each family
    for (ifaddrs const* pt = ptFirst; pt; pt = pt->ifa_next)
    {
        const int nFamily = pt->ifa_addr ? pt->ifa_addr->sa_family : AF_UNSPEC;
        const bool bWanted = (nFamily == AF_INET && bIPv4) || (nFamily == AF_INET6 && bIPv6);
        const unsigned nUp = IFF_UP | IFF_MULTICAST;
        if (!bWanted || (pt->ifa_flags & nUp) != nUp || (!strInterface.empty() && strInterface != pt->ifa_name))
        {
            continue;
        }
        const unsigned nIndex = if_nametoindex(pt->ifa_name);
        const bool bNew = tListening.emplace(nFamily, nIndex).second;
        if (bNew || nFamily == AF_INET) // IPv6 chooses the sender's address itself
        {
            Add(atSockets, nFamily, Group(nFamily, nIndex), [&](int nFile) { return MakeAsking(nFile, *pt); });
        }
        if (bNew)
        {
            Add(atSockets, nFamily, {}, [&](int nFile) { return MakeListening(nFile, nFamily, nIndex); });
        }
    }
    return atSockets;
}

std::vector<CProbeSocket> OpenUnicast(std::string const& strHost, bool bIPv4, bool bIPv6)
{
    std::vector<CProbeSocket> atSockets;
    addrinfo tHints{};
    tHints.ai_socktype = SOCK_DGRAM;
    tHints.ai_family = bIPv4 && bIPv6 ? AF_UNSPEC : bIPv4 ? AF_INET : AF_INET6;
    addrinfo* ptFirst = nullptr;
    if (getaddrinfo(strHost.c_str(), nullptr, &tHints, &ptFirst) != 0)
    {
        return atSockets;
    }
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> pAll(ptFirst, &freeaddrinfo);
    for (addrinfo const* pt = ptFirst; pt; pt = pt->ai_next)
    {
        const tagPeer tTo = AtDiscoveryPort(Peer(pt->ai_addr, pt->ai_addrlen));
        Add(atSockets, pt->ai_family, tTo, [](int) { return true; });
    }
    return atSockets;
}

tagPeer AtDiscoveryPort(tagPeer tPeer)
{
    if (tPeer.tAddress.ss_family == AF_INET6)
    {
        reinterpret_cast<sockaddr_in6*>(&tPeer.tAddress)->sin6_port = htons(g_wPort);
    }
    else
    {
        reinterpret_cast<sockaddr_in*>(&tPeer.tAddress)->sin_port = htons(g_wPort);
    }
    return tPeer;
}
} // namespace onvif
