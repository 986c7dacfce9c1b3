#include "rtsp/Socket.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <new>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace rtsp
{
namespace
{
constexpr int g_nUdpBuffer = 2 * 1024 * 1024; // key frames come in bursts
constexpr int g_nPortTries = 100;

template <class T>
int SetOption(int nFile, int nLevel, int nOption, T const& tValue)
{
    return setsockopt(nFile, nLevel, nOption, &tValue, sizeof tValue) == 0 ? 0 : errno;
}

CSocket OpenUdp(int nFamily)
{
    CSocket tSocket(socket(nFamily, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    SetOption(tSocket.File(), SOL_SOCKET, SO_RCVBUF, g_nUdpBuffer);
    return tSocket;
}

int Bind(CSocket const& tSocket, tagEndpoint const& tLocal)
{
    return bind(tSocket.File(), tLocal.Address(), tLocal.nLength) == 0 ? 0 : errno;
}

// The number of the interface that has this address; 0: the system chooses.
unsigned InterfaceOf(tagEndpoint const& tLocal)
{
    ifaddrs* ptFirst = nullptr;
    if (getifaddrs(&ptFirst) != 0)
    {
        return 0;
    }
    const std::unique_ptr<ifaddrs, void (*)(ifaddrs*)> ptOwner(ptFirst, &freeifaddrs);
    for (ifaddrs const* pt = ptFirst; pt; pt = pt->ifa_next)
    {
        if (!pt->ifa_addr || pt->ifa_addr->sa_family != tLocal.Family())
        {
            continue;
        }
        tagEndpoint tOther;
        tOther.nLength = tLocal.nLength;
        std::memcpy(&tOther.tAddress, pt->ifa_addr, tLocal.nLength);
        if (tOther.IsSameHost(tLocal))
        {
            return if_nametoindex(pt->ifa_name);
        }
    }
    return 0;
}

int Join(CSocket const& tSocket, tagEndpoint const& tGroup, unsigned nInterface, tagEndpoint const& tSource)
{
    const int nLevel = tGroup.Family() == AF_INET6 ? IPPROTO_IPV6 : IPPROTO_IP;
    if (tSource.nLength != 0)
    {
        group_source_req tRequest{};
        tRequest.gsr_interface = nInterface;
        std::memcpy(&tRequest.gsr_group, &tGroup.tAddress, tGroup.nLength);
        std::memcpy(&tRequest.gsr_source, &tSource.tAddress, tSource.nLength);
        return SetOption(tSocket.File(), nLevel, MCAST_JOIN_SOURCE_GROUP, tRequest);
    }
    group_req tRequest{};
    tRequest.gr_interface = nInterface;
    std::memcpy(&tRequest.gr_group, &tGroup.tAddress, tGroup.nLength);
    return SetOption(tSocket.File(), nLevel, MCAST_JOIN_GROUP, tRequest);
}

int OpenOfGroup(tagEndpoint const& tGroup, unsigned nInterface, tagEndpoint const& tSource, CSocket& tSocket)
{
    tSocket = OpenUdp(tGroup.Family());
    if (!tSocket)
    {
        return errno;
    }
    const int nOne = 1;
    SetOption(tSocket.File(), SOL_SOCKET, SO_REUSEADDR, nOne);
    tagEndpoint tLocal = tGroup; // to its address, or what is sent to other groups of this port would come too
    if (tLocal.Family() == AF_INET6)
    {
        reinterpret_cast<sockaddr_in6&>(tLocal.tAddress).sin6_scope_id = nInterface;
    }
    if (const int nError = Bind(tSocket, tLocal); nError != 0)
    {
        return nError;
    }
    return Join(tSocket, tGroup, nInterface, tSource);
}

// Of one thread. Only what is used of it becomes real memory, and goes back when the thread ends.
class CReceiveRoom
{
public:
    CReceiveRoom()
    {
        void* const p =
            mmap(nullptr, nBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (p == MAP_FAILED)
        {
            throw std::bad_alloc();
        }
        m_pbyRoom = static_cast<unsigned char*>(p);
        for (unsigned i = 0; i < g_nMostDatagrams; ++i)
        {
            atParts[i] = {m_pbyRoom + i * g_nReceiveBytes, g_nReceiveBytes};
        }
    }
    ~CReceiveRoom() { munmap(m_pbyRoom, nBytes); }
    CReceiveRoom(CReceiveRoom const&) = delete;
    CReceiveRoom& operator=(CReceiveRoom const&) = delete;

    std::span<unsigned char> First() { return {m_pbyRoom, g_nReceiveBytes}; }

    std::array<iovec, g_nMostDatagrams> atParts{};
    std::array<mmsghdr, g_nMostDatagrams> atHeaders{};
    std::array<tagDatagram, g_nMostDatagrams> atDatagrams{};

private:
    static constexpr std::size_t nBytes = g_nMostDatagrams * g_nReceiveBytes;

    unsigned char* m_pbyRoom;
};

CReceiveRoom& Room()
{
    thread_local CReceiveRoom g_tRoom;
    return g_tRoom;
}
} // namespace

CSocket::~CSocket()
{
    if (m_nFile >= 0)
    {
        close(m_nFile);
    }
}

int BeginConnect(tagEndpoint const& tPeer, CSocket& tSocket)
{
    tSocket = CSocket(socket(tPeer.Family(), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!tSocket)
    {
        return errno;
    }
    const int nOne = 1;
    SetOption(tSocket.File(), IPPROTO_TCP, TCP_NODELAY, nOne);
    return connect(tSocket.File(), tPeer.Address(), tPeer.nLength) == 0 ? 0 : errno;
}

int ConnectResult(int nFile)
{
    int nError = 0;
    socklen_t nLength = sizeof nError;
    return getsockopt(nFile, SOL_SOCKET, SO_ERROR, &nError, &nLength) == 0 ? nError : errno;
}

tagEndpoint LocalEndpoint(int nFile)
{
    tagEndpoint tLocal;
    tLocal.nLength = sizeof tLocal.tAddress;
    if (getsockname(nFile, tLocal.Address(), &tLocal.nLength) != 0)
    {
        tLocal.nLength = 0;
    }
    return tLocal;
}

int OpenUdpPair(tagEndpoint const& tLocal, tagUdpPair& tPair)
{
    int nError = EADDRINUSE;
    for (int i = 0; i < g_nPortTries && nError == EADDRINUSE; ++i)
    {
        tagEndpoint tHere = tLocal;
        tHere.SetPort(0);
        CSocket tFirst = OpenUdp(tLocal.Family());
        CSocket tSecond = OpenUdp(tLocal.Family());
        if (!tFirst || !tSecond)
        {
            return errno;
        }
        if (nError = Bind(tFirst, tHere); nError != 0)
        {
            continue;
        }
        const std::uint16_t wPort = LocalEndpoint(tFirst.File()).Port();
        const bool bEven = wPort % 2 == 0;
        tHere.SetPort(bEven ? static_cast<std::uint16_t>(wPort + 1) : static_cast<std::uint16_t>(wPort - 1));
        if (nError = Bind(tSecond, tHere); nError == 0)
        {
            tPair.tRtp = std::move(bEven ? tFirst : tSecond);
            tPair.tRtcp = std::move(bEven ? tSecond : tFirst);
            tPair.wPort = static_cast<std::uint16_t>(wPort & ~1U);
        }
    }
    return nError;
}

int JoinGroup(tagEndpoint const& tGroup, std::uint16_t wRtcpPort, tagEndpoint const& tLocal, tagEndpoint const& tSource,
              tagUdpPair& tPair)
{
    const unsigned nInterface = InterfaceOf(tLocal);
    tagEndpoint tRtcp = tGroup;
    tRtcp.SetPort(wRtcpPort);
    if (const int nError = OpenOfGroup(tGroup, nInterface, tSource, tPair.tRtp); nError != 0)
    {
        return nError;
    }
    tPair.wPort = tGroup.Port();
    return OpenOfGroup(tRtcp, nInterface, tSource, tPair.tRtcp);
}

std::span<unsigned char> ReceiveBuffer()
{
    return Room().First();
}

std::span<tagDatagram const> ReceiveDatagrams(int nFile)
{
    CReceiveRoom& tRoom = Room();
    for (unsigned i = 0; i < g_nMostDatagrams; ++i)
    {
        msghdr& tHeader = tRoom.atHeaders[i].msg_hdr;
        tHeader = {};
        tHeader.msg_name = tRoom.atDatagrams[i].tFrom.Address();
        tHeader.msg_namelen = sizeof(sockaddr_storage);
        tHeader.msg_iov = &tRoom.atParts[i];
        tHeader.msg_iovlen = 1;
    }
    const int nReceived = recvmmsg(nFile, tRoom.atHeaders.data(), g_nMostDatagrams, MSG_DONTWAIT, nullptr);
    const std::size_t nDatagrams = nReceived < 0 ? 0 : static_cast<std::size_t>(nReceived);
    for (std::size_t i = 0; i < nDatagrams; ++i)
    {
        tRoom.atDatagrams[i].abyData = {static_cast<unsigned char*>(tRoom.atParts[i].iov_base),
                                        tRoom.atHeaders[i].msg_len};
        tRoom.atDatagrams[i].tFrom.nLength = tRoom.atHeaders[i].msg_hdr.msg_namelen;
    }
    return {tRoom.atDatagrams.data(), nDatagrams};
}
} // namespace rtsp
