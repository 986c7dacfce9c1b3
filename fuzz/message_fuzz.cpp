// What comes in an RTSP connection, messages and interleaved packets: whole, byte by byte, and in other pieces.

#include "fuzz/Input.h"
#include "rtsp/Message.h"

#include <string>

namespace
{
class CLog final : public rtsp::IMessageSink
{
public:
    void OnMessage(rtsp::tagMessage&& tMessage) override
    {
        REQUIRE((tMessage.nStatus >= 100 && tMessage.nStatus <= 999) != !tMessage.strMethod.empty());
        EndJunk();
        m_strLast = Serialize(tMessage);
        m_strEvents += "message " + m_strLast;
    }
    void OnInterleaved(unsigned nChannel, rtsp::Bytes abyPacket) override
    {
        REQUIRE(nChannel < 256);
        EndJunk();
        m_nBytes += 4 + abyPacket.size();
        m_strEvents += "packet " + std::to_string(nChannel) + ' ';
        m_strEvents.append(reinterpret_cast<char const*>(abyPacket.data()), abyPacket.size());
    }
    void OnJunk(std::size_t nBytes) override
    {
        REQUIRE(nBytes > 0);
        m_nJunk += nBytes;
        m_nBytes += nBytes;
    }
    void EndJunk()
    {
        m_strEvents += m_nJunk > 0 ? "junk " + std::to_string(m_nJunk) + ' ' : std::string();
        m_nJunk = 0;
    }

    std::string m_strEvents;
    std::string m_strLast; // message
    std::size_t m_nJunk = 0;
    std::size_t m_nBytes = 0;
};

bool Take(rtsp::CMessageReader& tReader, std::string_view strBytes, CLog& tLog)
{
    // A copy of its own, so that the sanitizer sees who reads past the end, or what is gone.
    const std::string strCopy(strBytes);
    return tReader.Take({reinterpret_cast<unsigned char const*>(strCopy.data()), strCopy.size()}, tLog);
}

// Pieces of up to nMost bytes, of lengths that the seed decides.
CLog TakeInPieces(std::string_view strBytes, std::size_t nMost, std::size_t nSeed, bool& bGood)
{
    rtsp::CMessageReader tReader;
    CLog tLog;
    bGood = true;
    while (!strBytes.empty() && bGood)
    {
        nSeed = nSeed * 1103515245 + 12345;
        const std::string_view strPiece = strBytes.substr(0, 1 + (nSeed >> 16) % nMost);
        bGood = Take(tReader, strPiece, tLog);
        strBytes.remove_prefix(strPiece.size());
    }
    tLog.EndJunk();
    return tLog;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* pbyData, std::size_t nLength)
{
    const std::string_view strBytes(reinterpret_cast<char const*>(pbyData), nLength);
    rtsp::CMessageReader tReader;
    CLog tWhole;
    const bool bWhole = Take(tReader, strBytes, tWhole);
    tWhole.EndJunk();
    REQUIRE(tWhole.m_nBytes <= nLength);
    for (const std::size_t nMost : {std::size_t{1}, 2 + nLength % 100})
    {
        bool bGood = true;
        const CLog tLog = TakeInPieces(strBytes, nMost, nLength, bGood);
        REQUIRE(tLog.m_strEvents == tWhole.m_strEvents && bGood == bWhole);
    }
    if (!tWhole.m_strLast.empty() && tWhole.m_strLast.find("RTSP/") == tWhole.m_strLast.rfind("RTSP/"))
    {
        bool bGood = true;
        REQUIRE(TakeInPieces(tWhole.m_strLast, 1000, 0, bGood).m_strLast == tWhole.m_strLast);
    }
    if (bWhole && nLength % 8 == 0) // it takes long
    {
        // Whatever came, what is well formed is found again within a message and the longest packet.
        static const std::string strPacket = std::string("$\0\x03\xe8\x80", 5) + std::string(999, 'x');
        static const std::string strStream = []
        {
            std::string strText = "RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n";
            for (int i = 0; i < 70; ++i)
            {
                strText += strPacket;
            }
            return strText + "RTSP/1.0 200 OK\r\nCSeq: 2\r\n\r\n";
        }();
        static const std::string strEnd =
            "packet 0 " + strPacket.substr(4) + "message RTSP/1.0 200 OK\r\nCSeq: 2\r\n\r\n";
        CLog tLog;
        REQUIRE(Take(tReader, strStream, tLog));
        REQUIRE(tLog.m_strEvents.ends_with(strEnd));
    }
    return 0;
}
