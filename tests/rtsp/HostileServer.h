#pragma once

#include "tests/rtsp/Support.h"

#include <cerrno>
#include <map>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

/// A chunk of an RTSP connection: RTP or RTCP as it comes interleaved. nLength: what its header says; -1: the truth.
inline std::string Interleaved(std::string const& strPacket, int nChannel = 0, int nLength = -1)
{
    const std::size_t n = nLength < 0 ? strPacket.size() : static_cast<std::size_t>(nLength);
    return std::string{'$', static_cast<char>(nChannel), static_cast<char>(n >> 8), static_cast<char>(n)} + strPacket;
}

inline std::string Word(std::uint32_t dwWord)
{
    return {static_cast<char>(dwWord >> 24), static_cast<char>(dwWord >> 16), static_cast<char>(dwWord >> 8),
            static_cast<char>(dwWord)};
}

/// A unit of an aggregate. nLength: what its size field says; -1: the truth.
inline std::string Sized(std::string const& strUnit, int nLength = -1)
{
    return Word(nLength < 0 ? static_cast<std::uint32_t>(strUnit.size()) : static_cast<std::uint32_t>(nLength))
               .substr(2) +
           strUnit;
}

/// Makes the RTP packets of one stream.
class CRtp
{
public:
    static constexpr std::uint32_t dwPerFrame = 3600; ///< 40 ms

    std::uint16_t wSequence = 100;
    std::uint32_t dwStamp = 1000;
    std::uint32_t dwStep = dwPerFrame;

    /// One packet as it is, not interleaved yet. nFirst: version, padding, extension and CSRC count.
    std::string Bare(std::string const& strPayload, int nType = 96, int nFirst = 0x80)
    {
        const auto wNumber = wSequence++;
        return std::string{static_cast<char>(nFirst), static_cast<char>(nType), static_cast<char>(wNumber >> 8),
                           static_cast<char>(wNumber)} +
               Word(dwStamp) + Word(0x1234) + strPayload;
    }
    std::string Packet(std::string const& strPayload, int nType = 96, int nFirst = 0x80)
    {
        return Interleaved(Bare(strPayload, nType, nFirst));
    }
    void Next() { dwStamp += dwStep; }
    /// A key frame with its parameter sets, or a frame that isn't one, in one packet.
    std::string Frame(bool bKey = true)
    {
        const std::string strSlice = (bKey ? "\x65" : "\x41") + std::string("\x88\x84\x21\xA0") + std::string(40, 'x');
        std::string strFrame = Packet(bKey ? "\x78" + Sized({"\x67\x42\0\x0A\xF8\x41\xA2", 7}) +
                                                 Sized("\x68\xCE\x38\x80") + Sized(strSlice)
                                           : strSlice);
        Next();
        return strFrame;
    }
    /// A piece of a fragmented key frame.
    std::string Fragment(bool bStart, bool bEnd)
    {
        return Packet(std::string{'\x7C', static_cast<char>((bStart << 7) | (bEnd << 6) | 5)} +
                      std::string(bStart ? "\x88\x84\x21\xA0" : "yyyy") + std::string(40, 'y'));
    }
};

/// Where a behaviour begins.
enum class eStep
{
    Options,
    Describe,
    Sdp, ///< the body of the answer to DESCRIBE
    Setup,
    Play,
    Pause,
    Stream, ///< in front of the good packets
};

/// What comes after what is sent.
enum class eThen
{
    GoOn,
    Close,
    Reset,
    Stall, ///< says nothing any more, and doesn't read
    Flood, ///< sends the same without end
};

struct tagBehaviour
{
    std::string strName;
    eStep eAt = eStep::Stream;
    std::string strFind; ///< a part of the good answer; empty: all of it
    std::string strPut;  ///< what stands there instead; {url}, {cseq} and {n} (a number that changes) are filled in
    eThen eAfter = eThen::GoOn;
    std::function<std::string(CRtp&)> fnStream = nullptr; ///< of eStep::Stream
    std::chrono::milliseconds tAfter{};                   ///< of eStep::Stream: so much of good packets before eAfter
};

/// A server that behaves badly, as the address tells: rtsp://.../<index of the behaviour>/<so many sessions>, after
/// which it is good. A tiny H.264 stream. One thread; loopback only.
class CHostileServer
{
public:
    static constexpr int nAlways = 1'000'000;

    explicit CHostileServer(std::vector<tagBehaviour> const& atBehaviours)
        : m_atBehaviours(atBehaviours), m_anDone(atBehaviours.size())
    {
        Start();
    }
    ~CHostileServer() { Stop(); }
    CHostileServer(CHostileServer const&) = delete;
    CHostileServer& operator=(CHostileServer const&) = delete;

    std::string Url(std::size_t iBehaviour, int nSessions = 1) const
    {
        return "rtsp://127.0.0.1:" + std::to_string(m_nPort) + "/" + std::to_string(iBehaviour) + "/" +
               std::to_string(nSessions);
    }
    /// Closes everything and begins anew, on the same port.
    void Reboot()
    {
        Stop();
        Start();
    }
    /// Until this behaviour was shown so often.
    void AwaitDone(std::size_t iBehaviour, int nTimes = 1)
    {
        std::unique_lock tLock(m_tMutex);
        EXPECT_TRUE(m_tChanged.wait_for(tLock, g_tPatience, [&] { return m_anDone[iBehaviour] >= nTimes; }))
            << m_atBehaviours[iBehaviour].strName;
    }
    /// Until all clients have gone.
    void AwaitNoPeers()
    {
        std::unique_lock tLock(m_tMutex);
        EXPECT_TRUE(m_tChanged.wait_for(tLock, g_tPatience, [&] { return m_nPeers == 0; }));
    }
    int Done(std::size_t iBehaviour)
    {
        const std::lock_guard tLock(m_tMutex);
        return m_anDone[iBehaviour];
    }

private:
    struct tagPeer
    {
        int nSocket = -1;
        std::string strIn{}, strOut{}, strFlood{};
        std::size_t nSent = 0; ///< of strOut
        int iBehaviour = -1;
        bool bHostile = false;
        bool bPlaying = false;
        eThen eNow = eThen::GoOn;
        CRtp tRtp{};
        int nFrames = 0;                         ///< good ones
        Clock::time_point tNextFrame{}, tTurn{}; ///< tTurn: when eAfter comes
    };

    void Start()
    {
        m_nWake = eventfd(0, EFD_CLOEXEC);
        m_nListen = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        const int nOne = 1;
        sockaddr_in tAddress{};
        tAddress.sin_family = AF_INET;
        tAddress.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        tAddress.sin_port = htons(static_cast<std::uint16_t>(m_nPort));
        socklen_t nLength = sizeof tAddress;
        auto* const ptAddress = reinterpret_cast<sockaddr*>(&tAddress);
        setsockopt(m_nListen, SOL_SOCKET, SO_REUSEADDR, &nOne, sizeof nOne);
        ASSERT_EQ(bind(m_nListen, ptAddress, nLength), 0);
        ASSERT_EQ(listen(m_nListen, 1000), 0);
        ASSERT_EQ(getsockname(m_nListen, ptAddress, &nLength), 0);
        m_nPort = ntohs(tAddress.sin_port);
        m_nPoll = epoll_create1(EPOLL_CLOEXEC);
        Watch(m_nWake, EPOLLIN, EPOLL_CTL_ADD);
        Watch(m_nListen, EPOLLIN, EPOLL_CTL_ADD);
        m_tThread = std::thread([this] { Run(); });
    }

    void Stop()
    {
        eventfd_write(m_nWake, 1);
        m_tThread.join();
        for (auto const& [nSocket, tPeer] : m_atPeers)
        {
            close(nSocket);
        }
        m_atPeers.clear();
        close(m_nListen);
        close(m_nWake);
        close(m_nPoll);
    }

    void Watch(int nSocket, std::uint32_t uEvents, int nHow)
    {
        epoll_event tEvent{};
        tEvent.events = uEvents;
        tEvent.data.fd = nSocket;
        epoll_ctl(m_nPoll, nHow, nSocket, &tEvent);
    }

    void Run()
    {
        for (Clock::time_point tTick{};;)
        {
            std::array<epoll_event, 64> atEvents;
            const int nEvents = epoll_wait(m_nPoll, atEvents.data(), static_cast<int>(atEvents.size()), 10);
            for (int i = 0; i < nEvents; ++i)
            {
                const int nSocket = atEvents[static_cast<std::size_t>(i)].data.fd;
                if (nSocket == m_nWake)
                {
                    return;
                }
                if (nSocket == m_nListen)
                {
                    Accept();
                }
                else
                {
                    Receive(m_atPeers.at(nSocket));
                }
            }
            if (const auto tNow = Clock::now(); tNow >= tTick)
            {
                tTick = tNow + 10ms;
                std::for_each(m_atPeers.begin(), m_atPeers.end(), [&](auto& t) { Tick(t.second, tNow); });
            }
            std::erase_if(m_atPeers, [](auto const& t) { return t.second.nSocket < 0; });
            const std::lock_guard tLock(m_tMutex);
            m_nPeers = m_atPeers.size();
            m_tChanged.notify_all();
        }
    }

    void Accept()
    {
        for (int nSocket; (nSocket = accept4(m_nListen, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC)) >= 0;)
        {
            m_atPeers[nSocket] = {.nSocket = nSocket}; // its number may be that of one that ended just now
            Watch(nSocket, EPOLLIN, EPOLL_CTL_ADD);
        }
    }

    void Receive(tagPeer& tPeer)
    {
        std::array<char, 4096> acBuffer;
        const ssize_t nRead = tPeer.nSocket < 0 ? 0 : recv(tPeer.nSocket, acBuffer.data(), acBuffer.size(), 0);
        if (nRead < 0 && errno == EAGAIN)
        {
            return;
        }
        if (nRead <= 0)
        {
            return End(tPeer, eThen::Close);
        }
        tPeer.strIn.append(acBuffer.data(), static_cast<std::size_t>(nRead));
        TakeRequests(tPeer);
        Flush(tPeer);
    }

    void Tick(tagPeer& tPeer, Clock::time_point tNow)
    {
        if (tPeer.eNow == eThen::Flood && tPeer.strOut.empty() && tNow >= tPeer.tNextFrame)
        {
            tPeer.strOut = tPeer.strFlood;
            tPeer.tNextFrame = tNow + 300ms; // clients read it byte by byte
        }
        if (tPeer.eNow == eThen::GoOn && tPeer.bPlaying && tNow >= tPeer.tNextFrame)
        {
            // Slower after a while, and few key frames: many streams share a small machine.
            tPeer.strOut += tPeer.tRtp.Frame(tPeer.nFrames % 8 == 0);
            tPeer.tNextFrame = tNow + (++tPeer.nFrames < 10 ? 40ms : 400ms);
        }
        Flush(tPeer);
        if (tPeer.tTurn != Clock::time_point{} && tNow >= tPeer.tTurn)
        {
            tPeer.tTurn = {};
            Turn(tPeer);
        }
    }

    static void Flush(tagPeer& tPeer)
    {
        if (tPeer.nSocket < 0 || tPeer.strOut.empty())
        {
            return;
        }
        const ssize_t nSent =
            send(tPeer.nSocket, tPeer.strOut.data() + tPeer.nSent, tPeer.strOut.size() - tPeer.nSent, MSG_NOSIGNAL);
        tPeer.nSent += static_cast<std::size_t>(std::max<ssize_t>(nSent, 0));
        if (tPeer.nSent == tPeer.strOut.size())
        {
            tPeer.strOut.clear();
            tPeer.nSent = 0;
        }
    }

    static void End(tagPeer& tPeer, eThen eHow)
    {
        if (tPeer.nSocket < 0)
        {
            return;
        }
        const linger tLinger{eHow == eThen::Reset, 0};
        setsockopt(tPeer.nSocket, SOL_SOCKET, SO_LINGER, &tLinger, sizeof tLinger);
        for (char szRest[4096]; eHow == eThen::Close && recv(tPeer.nSocket, szRest, sizeof szRest, 0) > 0;)
        {
            // or closing is a reset
        }
        close(tPeer.nSocket);
        tPeer.nSocket = -1;
    }

    // What comes after the hostile bytes.
    void Turn(tagPeer& tPeer)
    {
        tagBehaviour const& tBehaviour = m_atBehaviours[static_cast<std::size_t>(tPeer.iBehaviour)];
        tPeer.eNow = tBehaviour.eAfter;
        if (tPeer.eNow == eThen::Close || tPeer.eNow == eThen::Reset)
        {
            Flush(tPeer);
            End(tPeer, tPeer.eNow);
        }
        else if (tPeer.eNow == eThen::Stall)
        {
            Watch(tPeer.nSocket, 0, EPOLL_CTL_MOD);
        }
        const std::lock_guard tLock(m_tMutex);
        ++m_anDone[static_cast<std::size_t>(tPeer.iBehaviour)];
        m_tChanged.notify_all();
    }

    void TakeRequests(tagPeer& tPeer)
    {
        while (tPeer.nSocket >= 0 && tPeer.eNow == eThen::GoOn && !tPeer.strIn.empty())
        {
            std::string& strIn = tPeer.strIn;
            std::size_t nLength = 0;
            if (strIn[0] == '$') // the client's RTCP
            {
                nLength = strIn.size() < 4
                              ? strIn.size() + 1
                              : 4U + static_cast<unsigned char>(strIn[2]) * 256U + static_cast<unsigned char>(strIn[3]);
            }
            else if (const std::size_t nEnd = strIn.find("\r\n\r\n"); nEnd == std::string::npos)
            {
                return;
            }
            else
            {
                nLength = nEnd + 4;
            }
            if (nLength > strIn.size())
            {
                return;
            }
            const std::string strRequest = strIn.substr(0, nLength);
            strIn.erase(0, nLength);
            if (strRequest[0] != '$')
            {
                Answer(tPeer, strRequest);
            }
        }
    }

    // The value of a header of a request.
    static std::string Header(std::string const& strRequest, std::string const& strName)
    {
        const std::size_t nAt = strRequest.find("\r\n" + strName + ": ");
        const std::size_t nValue = nAt + strName.size() + 4;
        return nAt == std::string::npos ? "" : strRequest.substr(nValue, strRequest.find("\r\n", nValue) - nValue);
    }

    // Which behaviour the address asks for, and whether it is still shown.
    void Choose(tagPeer& tPeer, std::string const& strUrl)
    {
        const std::string strPath = strUrl.substr(std::min(strUrl.find('/', 8), strUrl.size()));
        int iBehaviour = 0;
        int nSessions = 0;
        if (std::sscanf(strPath.c_str(), "/%d/%d", &iBehaviour, &nSessions) == 2)
        {
            tPeer.iBehaviour = iBehaviour;
            tPeer.bHostile = m_anSessions[strPath]++ < nSessions;
        }
    }

    void Answer(tagPeer& tPeer, std::string const& strRequest)
    {
        const std::string strMethod = strRequest.substr(0, strRequest.find(' '));
        const std::string strUrl =
            strRequest.substr(strMethod.size() + 1, strRequest.find(' ', strMethod.size() + 1) - strMethod.size() - 1);
        if (tPeer.iBehaviour < 0)
        {
            Choose(tPeer, strUrl);
        }
        const std::map<std::string, eStep> aeSteps{{"OPTIONS", eStep::Options},
                                                   {"DESCRIBE", eStep::Describe},
                                                   {"SETUP", eStep::Setup},
                                                   {"PLAY", eStep::Play},
                                                   {"PAUSE", eStep::Pause}};
        const auto itStep = aeSteps.find(strMethod);
        const std::string strCSeq = Header(strRequest, "CSeq");
        const auto fnEdited = [&](eStep eAt, std::string strGood)
        {
            if (!IsTurn(tPeer, eAt))
            {
                return strGood;
            }
            tagBehaviour const& tBehaviour = m_atBehaviours[static_cast<std::size_t>(tPeer.iBehaviour)];
            std::string strPut = tBehaviour.strPut;
            Replace(strPut, "{cseq}", strCSeq);
            Replace(strPut, "{n}", std::to_string(++m_nNumber));
            Replace(strPut, "{url}", Url(static_cast<std::size_t>(tPeer.iBehaviour), nAlways));
            tPeer.strFlood = strPut;
            if (tBehaviour.strFind.empty())
            {
                return strPut;
            }
            EXPECT_TRUE(Replace(strGood, tBehaviour.strFind, strPut)) << tBehaviour.strName;
            return strGood;
        };
        std::string strAnswer = "RTSP/1.0 200 OK\r\nCSeq: " + strCSeq + "\r\n";
        if (strMethod == "OPTIONS")
        {
            strAnswer += "Public: OPTIONS, DESCRIBE, SETUP, PLAY, PAUSE, TEARDOWN\r\n\r\n";
        }
        else if (strMethod == "DESCRIBE")
        {
            const std::string strSdp =
                fnEdited(eStep::Sdp, "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=t\r\nc=IN IP4 0.0.0.0\r\nt=0 0\r\n"
                                     "a=control:*\r\nm=video 0 RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n"
                                     "a=fmtp:96 packetization-mode=1;sprop-parameter-sets=Z0IACvhBog==,aM44gA==\r\n"
                                     "a=control:track\r\n");
            strAnswer += "Content-Type: application/sdp\r\nContent-Length: " + std::to_string(strSdp.size()) +
                         "\r\n\r\n" + strSdp;
        }
        else
        {
            strAnswer += "Session: 1;timeout=60\r\n";
            strAnswer += strMethod == "SETUP" ? "Transport: " + Header(strRequest, "Transport") + "\r\n\r\n" : "\r\n";
        }
        if (itStep != aeSteps.end())
        {
            strAnswer = fnEdited(itStep->second, strAnswer);
        }
        tPeer.strOut += strAnswer;
        if (strMethod == "TEARDOWN")
        {
            Flush(tPeer);
            End(tPeer, eThen::Close);
        }
        else if (itStep != aeSteps.end() &&
                 (IsTurn(tPeer, itStep->second) || (itStep->second == eStep::Describe && IsTurn(tPeer, eStep::Sdp))))
        {
            Turn(tPeer);
        }
        if (strMethod == "PLAY")
        {
            Play(tPeer);
        }
        tPeer.bPlaying &= strMethod != "PAUSE";
    }

    void Play(tagPeer& tPeer)
    {
        tPeer.bPlaying = true;
        tPeer.nFrames = 0;
        tPeer.tNextFrame = Clock::now();
        if (IsTurn(tPeer, eStep::Stream))
        {
            tagBehaviour const& tBehaviour = m_atBehaviours[static_cast<std::size_t>(tPeer.iBehaviour)];
            tPeer.strFlood = tBehaviour.fnStream ? tBehaviour.fnStream(tPeer.tRtp) : tBehaviour.strPut;
            tPeer.strOut += tPeer.strFlood;
            tPeer.tTurn = Clock::now() + tBehaviour.tAfter;
            if (tBehaviour.tAfter == 0ms) // at once: the client may be gone soon
            {
                Flush(tPeer);
                tPeer.tTurn = {};
                Turn(tPeer);
            }
        }
    }

    bool IsTurn(tagPeer const& tPeer, eStep eAt) const
    {
        return tPeer.bHostile && m_atBehaviours[static_cast<std::size_t>(tPeer.iBehaviour)].eAt == eAt;
    }

    static bool Replace(std::string& strIn, std::string const& strFind, std::string const& strPut)
    {
        const std::size_t nAt = strIn.find(strFind);
        if (nAt != std::string::npos)
        {
            strIn.replace(nAt, strFind.size(), strPut);
        }
        return nAt != std::string::npos;
    }

    std::vector<tagBehaviour> const& m_atBehaviours;
    int m_nPort = 0;
    int m_nListen = -1;
    int m_nWake = -1;
    int m_nPoll = -1;
    std::thread m_tThread;

    // --- the thread's own ---
    std::map<int, tagPeer> m_atPeers;        ///< by socket
    std::map<std::string, int> m_anSessions; ///< by path
    int m_nNumber = 0;

    // --- shared ---
    std::mutex m_tMutex;
    std::condition_variable m_tChanged;
    std::size_t m_nPeers = 0;
    std::vector<int> m_anDone; ///< times each behaviour was shown
};
