// Serves one H.264 clip (Annex B, 25 pictures a second, in a loop) over RTSP, RTP interleaved in the TCP connection, to
// any number of clients from one thread, so that the server's cost doesn't hide the client's:
//
//   stream_server CLIP
//
// Listens on a free port of 127.0.0.1 and prints "stream_server: port N". Ends when its standard input does. Every
// client gets the clip from its beginning, with sequence numbers and time stamps of its own that have no gap; for a
// client that doesn't keep up pictures are left out, and its sequence numbers and time stamps then show it.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
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
    for (std::size_t nFrom = 1; nFrom < abyUnit.size(); nFrom += g_nPayload)
    {
        const bool bLast = nFrom + g_nPayload >= abyUnit.size();
        const int nEnds = (nFrom == 1 ? 0x80 : 0) | (bLast ? 0x40 : 0);
        const unsigned char abyHead[] = {static_cast<unsigned char>((byFirst & 0xE0) | 28),
                                         static_cast<unsigned char>((byFirst & 0x1F) | nEnds)};
        AddPacket(tPicture, {abyHead, 2}, abyUnit.substr(nFrom, g_nPayload));
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

std::string Base64(BytesView abyData)
{
    constexpr char szDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string strText;
    for (std::size_t i = 0; i < abyData.size(); i += 3)
    {
        std::uint32_t dw = 0;
        for (std::size_t k = i; k < i + 3; ++k)
        {
            dw = dw << 8 | (k < abyData.size() ? abyData[k] : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k)
        {
            strText += i + k <= abyData.size() ? szDigits[dw >> (18 - 6 * k) & 63] : '=';
        }
    }
    return strText;
}

class CClient
{
public:
    CClient(int nSocket, tagClip const& tClip) : m_nSocket(nSocket), m_tClip(tClip) {}
    ~CClient() { close(m_nSocket); }
    CClient(CClient const&) = delete;
    CClient& operator=(CClient const&) = delete;

    pollfd Waits() const { return {m_nSocket, static_cast<short>(m_abyOut.empty() ? POLLIN : POLLIN | POLLOUT), 0}; }
    bool IsGone() const { return m_bGone; }
    bool IsPlaying() const { return m_bPlaying; }
    Clock::time_point Due() const { return m_tDue; }

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
        m_tDue += g_tPeriod;
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
        std::string strAnswer = "RTSP/1.0 200 OK\r\n";
        strAnswer += nNumber == std::string::npos
                         ? ""s
                         : strRequest.substr(nNumber, strRequest.find("\r\n", nNumber) + 2 - nNumber);
        strAnswer += "Session: 1;timeout=60\r\n";
        std::string strBody;
        if (strMethod == "OPTIONS")
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
    Clock::time_point m_tDue;
    std::uint32_t m_dwStamp = 90000;
    std::uint16_t m_wSequence = 1;
    bool m_bPlaying = false;
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

void Serve(int nListener, tagClip const& tClip)
{
    std::vector<std::unique_ptr<CClient>> apClients;
    std::vector<pollfd> atWaits;
    while (true)
    {
        Clock::time_point tNext = Clock::now() + 1s;
        atWaits.assign({{STDIN_FILENO, POLLIN, 0}, {nListener, POLLIN, 0}});
        for (auto const& pClient : apClients)
        {
            atWaits.push_back(pClient->Waits());
            tNext = pClient->IsPlaying() ? std::min(tNext, pClient->Due()) : tNext;
        }
        const auto tWait = std::chrono::ceil<std::chrono::milliseconds>(tNext - Clock::now());
        poll(atWaits.data(), atWaits.size(), std::max(0, static_cast<int>(tWait.count())));
        char chIgnored;
        if (atWaits[0].revents && read(STDIN_FILENO, &chIgnored, 1) <= 0)
        {
            return;
        }
        const Clock::time_point tNow = Clock::now();
        for (std::size_t i = 0; i < apClients.size(); ++i)
        {
            CClient& tClient = *apClients[i];
            const short nReady = atWaits[i + 2].revents;
            if (nReady & ~POLLOUT)
            {
                tClient.Read();
            }
            if (nReady & POLLOUT)
            {
                tClient.Flush();
            }
            while (!tClient.IsGone() && tClient.IsPlaying() && tClient.Due() <= tNow)
            {
                tClient.SendPicture();
            }
        }
        std::erase_if(apClients, [](auto const& pClient) { return pClient->IsGone(); });
        for (int nSocket; (nSocket = accept4(nListener, nullptr, nullptr, SOCK_NONBLOCK)) >= 0;)
        {
            const int nOn = 1;
            setsockopt(nSocket, IPPROTO_TCP, TCP_NODELAY, &nOn, sizeof nOn);
            apClients.push_back(std::make_unique<CClient>(nSocket, tClip));
        }
    }
}
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
    Serve(Listen(), tClip);
    return EXIT_SUCCESS;
}
