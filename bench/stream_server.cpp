// Serves one H.264 clip (Annex B, 25 pictures a second, in a loop) over RTSP, RTP interleaved in the TCP connection, to
// any number of clients from one thread, so that the server's cost doesn't hide the client's:
//
//   stream_server CLIP
//
// Listens on a free port of 127.0.0.1 and prints "stream_server: port N". Ends when its standard input does. /clip
// wants the digest of user "bench" with password "bench"; /open wants no login, and of the RTSP methods no other than
// PLAY.
//
// Every client gets the clip from its beginning, with sequence numbers and time stamps of its own that have no gap; for
// a client that doesn't keep up pictures are left out, and its sequence numbers and time stamps then show it. The
// streams' pictures are spread evenly over the 40 ms. The last 8 bytes of a picture are the time at which it was handed
// to the socket; see Stamp.h.

#include "bench/Stamp.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/evp.h>
#include <set>
#include <string>
#include <string_view>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
#include <unordered_map>
#include <utility>
#include <vector>

namespace
{
using namespace std::chrono_literals;
using namespace std::string_literals;
using Clock = std::chrono::steady_clock;
using Bytes = std::basic_string<unsigned char>;
using BytesView = std::basic_string_view<unsigned char>;

constexpr auto g_tPeriod = 40ms;                // between two pictures
constexpr std::uint32_t g_dwTicks = 90 * 40;    // the same on RTP's clock of 90 kHz
constexpr std::size_t g_nPayload = 1400;        // most of an RTP packet
constexpr std::size_t g_nHeads = 4 + 12;        // of the interleaved frame and of RTP
constexpr std::size_t g_nMostWaiting = 1 << 20; // bytes that wait for a slow client

void Put(unsigned char* pby, std::uint64_t ullValue, int nBytes)
{
    while (nBytes > 0)
    {
        pby[--nBytes] = static_cast<unsigned char>(ullValue);
        ullValue >>= 8;
    }
}

// A picture as it goes out, all but sequence numbers and time stamp.
struct tagPicture
{
    Bytes abyPackets;
    std::vector<std::size_t> anPackets; // where each begins
};

struct tagClip
{
    std::vector<tagPicture> atPictures;
    Bytes abySets[2]; // sequence and picture parameter set
};

std::vector<BytesView> SplitUnits(BytesView abyStream)
{
    constexpr unsigned char abyStart[] = {0, 0, 1};
    const BytesView abyCode(abyStart, sizeof abyStart);
    std::vector<BytesView> aabyUnits;
    for (std::size_t nFrom = abyStream.find(abyCode); nFrom != BytesView::npos;)
    {
        const std::size_t nNext = abyStream.find(abyCode, nFrom += abyCode.size());
        BytesView abyUnit = abyStream.substr(nFrom, nNext - nFrom);
        while (!abyUnit.empty() && abyUnit.back() == 0) // a start code of four bytes follows
        {
            abyUnit.remove_suffix(1);
        }
        aabyUnits.push_back(abyUnit);
        nFrom = nNext;
    }
    return aabyUnits;
}

void AddPacket(tagPicture& tPicture, BytesView abyHead, BytesView abyBody)
{
    const std::size_t nAt = tPicture.abyPackets.size();
    const std::size_t nPayload = abyHead.size() + abyBody.size();
    tPicture.anPackets.push_back(nAt);
    tPicture.abyPackets.resize(nAt + g_nHeads);
    unsigned char* const pby = &tPicture.abyPackets[nAt];
    pby[0] = '$';
    Put(pby + 2, 12 + nPayload, 2);
    pby[4] = 0x80;
    pby[5] = 96;
    Put(pby + 12, 0x5EED, 4); // the source
    tPicture.abyPackets.append(abyHead).append(abyBody);
}

void AddUnit(tagPicture& tPicture, BytesView abyUnit)
{
    if (abyUnit.size() <= g_nPayload)
    {
        return AddPacket(tPicture, {}, abyUnit);
    }
    const unsigned char byFirst = abyUnit[0];
    const std::size_t nParts = (abyUnit.size() - 1 + g_nPayload - 1) / g_nPayload;
    const std::size_t nPart = (abyUnit.size() - 1 + nParts - 1) / nParts; // even: the last one has room for the stamp
    for (std::size_t nFrom = 1; nFrom < abyUnit.size(); nFrom += nPart)
    {
        const bool bLast = nFrom + nPart >= abyUnit.size();
        const int nEnds = (nFrom == 1 ? 0x80 : 0) | (bLast ? 0x40 : 0);
        const unsigned char abyHead[] = {static_cast<unsigned char>((byFirst & 0xE0) | 28),
                                         static_cast<unsigned char>((byFirst & 0x1F) | nEnds)};
        AddPacket(tPicture, {abyHead, 2}, abyUnit.substr(nFrom, nPart));
    }
}

tagClip ReadClip(char const* szPath)
{
    std::ifstream tFile(szPath, std::ios::binary);
    const std::string strFile{std::istreambuf_iterator<char>(tFile), {}};
    const Bytes abyStream(strFile.begin(), strFile.end());
    tagClip tClip;
    bool bHasSlice = true;
    for (BytesView abyUnit : SplitUnits(abyStream))
    {
        const int nType = abyUnit[0] & 0x1F;
        const bool bSlice = nType >= 1 && nType <= 5;
        if (bHasSlice && (!bSlice || (abyUnit[1] & 0x80)))
        {
            tClip.atPictures.emplace_back();
            bHasSlice = false;
        }
        bHasSlice |= bSlice;
        AddUnit(tClip.atPictures.back(), abyUnit);
        if (nType == 7 || nType == 8)
        {
            tClip.abySets[nType - 7] = abyUnit;
        }
    }
    for (tagPicture& tPicture : tClip.atPictures)
    {
        tPicture.abyPackets[tPicture.anPackets.back() + 5] |= 0x80; // the last of the picture
    }
    return tClip;
}

// The value of a quoted parameter of a header: name="value".
std::string Quoted(std::string const& strText, std::string const& strName)
{
    const std::size_t nName = strText.find(strName + "=\"");
    if (nName == std::string::npos)
    {
        return {};
    }
    const std::size_t nFrom = nName + strName.size() + 2;
    return strText.substr(nFrom, strText.find('"', nFrom) - nFrom);
}

std::string Base64(BytesView abyData)
{
    std::string strText(4 * (abyData.size() + 2) / 3 + 4, '\0');
    const int nLength = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(strText.data()), abyData.data(),
                                        static_cast<int>(abyData.size()));
    strText.resize(static_cast<std::size_t>(nLength));
    return strText;
}

std::string Md5(std::string const& strText)
{
    unsigned char aby[EVP_MAX_MD_SIZE];
    unsigned int nLength = 0;
    EVP_Digest(strText.data(), strText.size(), aby, &nLength, EVP_md5(), nullptr);
    std::string strHex;
    for (unsigned int i = 0; i < nLength; ++i)
    {
        strHex += {"0123456789abcdef"[aby[i] >> 4], "0123456789abcdef"[aby[i] & 15]};
    }
    return strHex;
}

bool IsLoggedIn(std::string const& strRequest, std::string const& strMethod)
{
    static const std::string strUser = Md5("bench:bench:bench") + ":nonce:"; // user, realm, password
    return Quoted(strRequest, "response") == Md5(strUser + Md5(strMethod + ':' + Quoted(strRequest, "uri")));
}

class CClient
{
public:
    CClient(int nSocket, tagClip const& tClip) : m_nSocket(nSocket), m_tClip(tClip) {}
    ~CClient() { close(m_nSocket); }
    CClient(CClient const&) = delete;
    CClient& operator=(CClient const&) = delete;

    int Socket() const { return m_nSocket; }
    bool IsGone() const { return m_bGone; }
    bool IsPlaying() const { return m_bPlaying; }
    bool IsWaiting() const { return !m_abyOut.empty(); }
    bool HasBegunOrEndedToWait()
    {
        const bool bWaited = std::exchange(m_bWaited, IsWaiting());
        return bWaited != m_bWaited;
    }
    Clock::time_point Due() const { return m_tDue; }
    void DelayBy(Clock::duration tBy) { m_tDue += tBy; }

    void Read()
    {
        char szRead[4096];
        const ssize_t nRead = recv(m_nSocket, szRead, sizeof szRead, 0);
        if (nRead <= 0)
        {
            m_bGone |= nRead == 0 || errno != EAGAIN;
            return;
        }
        m_strIn.append(szRead, static_cast<std::size_t>(nRead));
        while (TakeOne())
        {
        }
    }

    void Flush()
    {
        const ssize_t nSent = send(m_nSocket, m_abyOut.data(), m_abyOut.size(), MSG_NOSIGNAL);
        if (nSent >= 0)
        {
            m_abyOut.erase(0, static_cast<std::size_t>(nSent));
        }
        else
        {
            m_bGone |= errno != EAGAIN;
        }
    }

    void SendPicture()
    {
        tagPicture const& tPicture = m_tClip.atPictures[m_nPicture++ % m_tClip.atPictures.size()];
        if (m_abyOut.size() < g_nMostWaiting)
        {
            if (m_nPicture % 125 == 1)
            {
                PutReport();
            }
            const std::size_t nAt = m_abyOut.size();
            m_abyOut += tPicture.abyPackets;
            std::uint16_t wSequence = m_wSequence;
            for (std::size_t nPacket : tPicture.anPackets)
            {
                Put(&m_abyOut[nAt + nPacket + 6], wSequence++, 2);
                Put(&m_abyOut[nAt + nPacket + 8], m_dwStamp, 4);
            }
            PutStamp(m_abyOut.data() + m_abyOut.size());
            Flush();
        }
        m_wSequence = static_cast<std::uint16_t>(m_wSequence + tPicture.anPackets.size());
        m_dwStamp += g_dwTicks;
    }

private:
    // What the client sent: a request, or an interleaved frame, which is skipped.
    bool TakeOne()
    {
        if (m_strIn.size() < 4)
        {
            return false;
        }
        if (m_strIn[0] == '$')
        {
            const std::size_t nLength =
                4U + static_cast<unsigned char>(m_strIn[2]) * 256U + static_cast<unsigned char>(m_strIn[3]);
            const bool bWhole = m_strIn.size() >= nLength;
            m_strIn.erase(0, bWhole ? nLength : 0);
            return bWhole;
        }
        const std::size_t nEnd = m_strIn.find("\r\n\r\n");
        if (nEnd == std::string::npos)
        {
            return false;
        }
        Answer(m_strIn.substr(0, nEnd + 2));
        m_strIn.erase(0, nEnd + 4);
        return true;
    }

    void Answer(std::string const& strRequest)
    {
        const std::string strMethod = strRequest.substr(0, strRequest.find(' '));
        const std::size_t nNumber = strRequest.find("CSeq:");
        const bool bOpen = strMethod == "OPTIONS" || strRequest.find("/open RTSP/1.0\r\n") != std::string::npos;
        const bool bAllowed = bOpen || IsLoggedIn(strRequest, strMethod);
        std::string strAnswer = bAllowed ? "RTSP/1.0 200 OK\r\n" : "RTSP/1.0 401 Unauthorized\r\n";
        strAnswer += nNumber == std::string::npos
                         ? ""s
                         : strRequest.substr(nNumber, strRequest.find("\r\n", nNumber) + 2 - nNumber);
        strAnswer += "Session: 1;timeout=60\r\n";
        std::string strBody;
        if (!bAllowed)
        {
            strAnswer += "WWW-Authenticate: Digest realm=\"bench\", nonce=\"nonce\"\r\n";
        }
        else if (strMethod == "OPTIONS")
        {
            strAnswer += "Public: OPTIONS, DESCRIBE, SETUP, PLAY, GET_PARAMETER, TEARDOWN\r\n";
        }
        else if (strMethod == "DESCRIBE")
        {
            strBody = "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=clip\r\nc=IN IP4 0.0.0.0\r\nt=0 0\r\n"
                      "m=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\na=fmtp:96 packetization-mode=1;"
                      "sprop-parameter-sets=" +
                      Base64(m_tClip.abySets[0]) + ',' + Base64(m_tClip.abySets[1]) + "\r\na=control:track\r\n";
            strAnswer += "Content-Type: application/sdp\r\nContent-Length: " + std::to_string(strBody.size()) + "\r\n";
        }
        else if (strMethod == "SETUP")
        {
            strAnswer += "Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n";
        }
        else if (strMethod == "PLAY" && !m_bPlaying)
        {
            m_bPlaying = true;
            m_tDue = Clock::now();
        }
        m_bGone |= strMethod == "TEARDOWN";
        strAnswer += "\r\n" + strBody;
        m_abyOut.append(strAnswer.begin(), strAnswer.end());
        Flush();
    }

    // A sender report: what time it is at the next picture.
    void PutReport()
    {
        const auto tNow = std::chrono::system_clock::now().time_since_epoch();
        const auto nMicroseconds =
            static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(tNow).count());
        unsigned char aby[4 + 28] = {'$', 1, 0, 28, 0x80, 200, 0, 6};
        Put(aby + 8, 0x5EED, 4);
        Put(aby + 12, nMicroseconds / 1000000 + 2208988800U, 4);
        Put(aby + 16, (nMicroseconds % 1000000 << 32) / 1000000, 4);
        Put(aby + 20, m_dwStamp, 4);
        m_abyOut.append(aby, sizeof aby);
    }

    const int m_nSocket;
    tagClip const& m_tClip;
    std::string m_strIn;
    Bytes m_abyOut; // what waits for the socket
    std::size_t m_nPicture = 0;
    Clock::time_point m_tDue; // the next picture
    std::uint32_t m_dwStamp = 90000;
    std::uint16_t m_wSequence = 1;
    bool m_bPlaying = false;
    bool m_bWaited = false;
    bool m_bGone = false;
};

int Listen()
{
    const int nListener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    sockaddr_in tAddress{};
    tAddress.sin_family = AF_INET;
    tAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t nLength = sizeof tAddress;
    auto* const ptAddress = reinterpret_cast<sockaddr*>(&tAddress);
    if (bind(nListener, ptAddress, nLength) != 0 || listen(nListener, 1024) != 0 ||
        getsockname(nListener, ptAddress, &nLength) != 0)
    {
        std::perror("stream_server");
        std::exit(EXIT_FAILURE);
    }
    std::printf("stream_server: port %d\n", ntohs(tAddress.sin_port));
    std::fflush(stdout);
    return nListener;
}

// All clients, and when each is due.
class CServer
{
public:
    explicit CServer(tagClip const& tClip) : m_tClip(tClip)
    {
        Watch(STDIN_FILENO, EPOLLIN, EPOLL_CTL_ADD);
        Watch(m_nListener, EPOLLIN, EPOLL_CTL_ADD);
    }

    // Until standard input ends.
    void Run()
    {
        while (true)
        {
            epoll_event atReady[256];
            const int nReady = Wait(atReady, 256);
            for (int i = 0; i < nReady; ++i)
            {
                const int nFile = atReady[i].data.fd;
                char chIgnored;
                if (nFile == STDIN_FILENO && read(nFile, &chIgnored, 1) <= 0)
                {
                    return;
                }
                if (nFile == m_nListener)
                {
                    Accept();
                }
                else if (nFile != STDIN_FILENO)
                {
                    Serve(nFile, atReady[i].events);
                }
            }
            while (!m_tDue.empty() && m_tDue.begin()->first <= Clock::now())
            {
                SendFirst();
            }
        }
    }

private:
    void Watch(int nFile, std::uint32_t dwEvents, int nOperation) const
    {
        epoll_event tEvent{};
        tEvent.events = dwEvents;
        tEvent.data.fd = nFile;
        epoll_ctl(m_nEpoll, nOperation, nFile, &tEvent);
    }

    // For files that are ready, or until the next picture is due.
    int Wait(epoll_event* atReady, int nMost) const
    {
        const std::chrono::nanoseconds tLeft = m_tDue.empty() ? 1s : m_tDue.begin()->first - Clock::now();
        const long nLeft = std::max<long>(0, tLeft.count());
        const timespec tWait{nLeft / 1000000000, nLeft % 1000000000};
        return epoll_pwait2(m_nEpoll, atReady, nMost, &tWait, nullptr);
    }

    void Accept()
    {
        for (int nSocket; (nSocket = accept4(m_nListener, nullptr, nullptr, SOCK_NONBLOCK)) >= 0;)
        {
            const int nOn = 1;
            setsockopt(nSocket, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn);
            m_apClients[nSocket] = std::make_unique<CClient>(nSocket, m_tClip);
            Watch(nSocket, EPOLLIN, EPOLL_CTL_ADD);
        }
    }

    void Serve(int nSocket, std::uint32_t dwEvents)
    {
        CClient& tClient = *m_apClients.at(nSocket);
        const bool bPlayed = tClient.IsPlaying();
        if (dwEvents & ~static_cast<std::uint32_t>(EPOLLOUT))
        {
            tClient.Read();
        }
        if (dwEvents & EPOLLOUT)
        {
            tClient.Flush();
        }
        if (tClient.IsPlaying() && !bPlayed)
        {
            // Multiples of the golden ratio lie evenly in a circle, however many there are.
            const auto tPhase = std::fmod(++m_nPlayed * 0.618034, 1) * g_tPeriod;
            tClient.DelayBy(std::chrono::duration_cast<Clock::duration>(tPhase));
            m_tDue.emplace(tClient.Due(), &tClient);
        }
        Settle(tClient);
    }

    // The picture that is due first.
    void SendFirst()
    {
        CClient& tClient = *m_tDue.begin()->second;
        m_tDue.erase(m_tDue.begin());
        tClient.SendPicture();
        tClient.DelayBy(g_tPeriod);
        m_tDue.emplace(tClient.Due(), &tClient);
        Settle(tClient);
    }

    // After anything that may have left bytes that wait, or ended the client.
    void Settle(CClient& tClient)
    {
        if (tClient.IsGone())
        {
            m_tDue.erase({tClient.Due(), &tClient});
            m_apClients.erase(tClient.Socket());
        }
        else if (tClient.HasBegunOrEndedToWait())
        {
            Watch(tClient.Socket(), tClient.IsWaiting() ? EPOLLIN | EPOLLOUT : EPOLLIN, EPOLL_CTL_MOD);
        }
    }

    tagClip const& m_tClip;
    const int m_nListener = Listen();
    const int m_nEpoll = epoll_create1(0);
    std::unordered_map<int, std::unique_ptr<CClient>> m_apClients; // by socket
    std::set<std::pair<Clock::time_point, CClient*>> m_tDue;       // when, and whose next picture
    int m_nPlayed = 0;
};
} // namespace

int main(int nArguments, char** aszArguments)
{
    rlimit tFiles{};
    getrlimit(RLIMIT_NOFILE, &tFiles);
    tFiles.rlim_cur = tFiles.rlim_max;
    setrlimit(RLIMIT_NOFILE, &tFiles);
    const tagClip tClip = nArguments == 2 ? ReadClip(aszArguments[1]) : tagClip{};
    if (tClip.abySets[0].empty() || tClip.abySets[1].empty())
    {
        std::fputs("usage: stream_server CLIP, an H.264 byte stream\n", stderr);
        return EXIT_FAILURE;
    }
    CServer(tClip).Run();
    return EXIT_SUCCESS;
}
