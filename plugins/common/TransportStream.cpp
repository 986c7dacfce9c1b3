#include "plugins/common/FileWriter.h"

#include "protocol/interface/Frames.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace plugin
{
namespace
{
constexpr std::size_t g_nPacket = 188;
constexpr uint32_t g_dwTablePid = 0x1000;
constexpr uint32_t g_dwVideoPid = 0x100;
constexpr uint32_t g_dwNullPid = 0x1FFF;
constexpr int64_t g_llFirstTicks = 90000; // of the first picture, 90 kHz: the clock reference may come before it
constexpr int64_t g_llAheadTicks = 18000; // by so much

// The CRC of tables: polynomial 0x04C11DB7, from the highest bit.
uint32_t Crc(Output const& abyTable)
{
    uint32_t dwCrc = 0xFFFFFFFF;
    for (const unsigned char byTable : abyTable)
    {
        dwCrc ^= uint32_t{byTable} << 24;
        for (int i = 0; i < 8; ++i)
        {
            dwCrc = dwCrc << 1 ^ ((dwCrc & 0x80000000) != 0 ? 0x04C11DB7 : 0);
        }
    }
    return dwCrc;
}

class CTransportStream final : public CFileWriter
{
public:
    CTransportStream(uint32_t dwCodec, std::string_view strMaker) : m_dwCodec(dwCodec), m_strMaker(strMaker) {}

    void Begin(Output& abyOut) override
    {
        if (!m_strMaker.empty())
        {
            Output abyText(m_strMaker.begin(), m_strMaker.end());
            abyText.resize(g_nPacket - 4, 0xFF);
            Header(g_dwNullPid, false, 1, m_byNull, abyOut);
            abyOut.insert(abyOut.end(), abyText.begin(), abyText.end());
        }
        Programs(abyOut);
    }

    void Add(tagSample const& tSample, Output& abyOut) override
    {
        if (!tSample.bVideo)
        {
            return;
        }
        if (tSample.bKey)
        {
            Programs(abyOut);
            Streams(m_dwCodec, abyOut);
        }
        const int64_t llTicks = g_llFirstTicks + tSample.llTimeUs * 9 / 100;
        Output abyPacket{0, 0, 1, 0xE0, 0, 0, 0x80, 0x80, 5};
        Time(0x20, llTicks, abyPacket);
        // An access unit delimiter: any kind of slice may follow.
        const std::string_view strDelimiter = m_dwCodec == eCodecH264 ? std::string_view("\0\0\0\1\x09\xF0", 6)
                                                                      : std::string_view("\0\0\0\1\x46\1\x50", 7);
        abyPacket.insert(abyPacket.end(), strDelimiter.begin(), strDelimiter.end());
        abyPacket.insert(abyPacket.end(), tSample.tData.begin(), tSample.tData.end());
        Packets(abyPacket, llTicks - g_llAheadTicks, tSample.bKey, abyOut);
    }

    void End(Output&) override {}

private:
    // dwAdaptation: 1 payload, 3 adaptation field and payload.
    static void Header(uint32_t dwPid, bool bStart, unsigned nAdaptation, unsigned char& byCount, Output& abyOut)
    {
        abyOut.push_back(0x47);
        abyOut.push_back(static_cast<unsigned char>((bStart ? 0x40 : 0) | dwPid >> 8));
        abyOut.push_back(static_cast<unsigned char>(dwPid));
        abyOut.push_back(static_cast<unsigned char>(nAdaptation << 4 | (byCount & 15U)));
        ++byCount;
    }

    static void Table(uint32_t dwPid, unsigned char& byCount, Output abyTable, Output& abyOut)
    {
        abyTable[2] = static_cast<unsigned char>(abyTable.size() + 4 - 3); // what follows the length, with the CRC
        const uint32_t dwCrc = Crc(abyTable);
        for (int nShift = 24; nShift >= 0; nShift -= 8)
        {
            abyTable.push_back(static_cast<unsigned char>(dwCrc >> nShift));
        }
        Header(dwPid, true, 1, byCount, abyOut);
        abyOut.push_back(0);
        abyOut.insert(abyOut.end(), abyTable.begin(), abyTable.end());
        abyOut.insert(abyOut.end(), g_nPacket - 5 - abyTable.size(), 0xFF);
    }

    // One program.
    void Programs(Output& abyOut)
    {
        Table(0, m_byPrograms, {0, 0xB0, 0, 0, 1, 0xC1, 0, 0, 0, 1, 0xE0 | g_dwTablePid >> 8, g_dwTablePid & 0xFF},
              abyOut);
    }

    // One stream in it.
    void Streams(uint32_t dwCodec, Output& abyOut)
    {
        constexpr unsigned char byHigh = 0xE0 | g_dwVideoPid >> 8;
        constexpr unsigned char byLow = g_dwVideoPid & 0xFF;
        const unsigned char byType = dwCodec == eCodecH264 ? 0x1B : 0x24;
        Table(g_dwTablePid, m_byStreams,
              {2, 0xB0, 0, 0, 1, 0xC1, 0, 0, byHigh, byLow, 0xF0, 0, byType, byHigh, byLow, 0xF0, 0}, abyOut);
    }

    // 33 bits in five bytes.
    static void Time(unsigned nPrefix, int64_t llTicks, Output& abyOut)
    {
        abyOut.push_back(static_cast<unsigned char>(nPrefix | (llTicks >> 29 & 0x0E) | 1));
        abyOut.push_back(static_cast<unsigned char>(llTicks >> 22));
        abyOut.push_back(static_cast<unsigned char>(llTicks >> 14 | 1));
        abyOut.push_back(static_cast<unsigned char>(llTicks >> 7));
        abyOut.push_back(static_cast<unsigned char>(llTicks << 1 | 1));
    }

    void Packets(Output const& abyData, int64_t llClock, bool bKey, Output& abyOut)
    {
        for (std::size_t nSent = 0; nSent < abyData.size();)
        {
            const bool bFirst = nSent == 0;
            Output abyField; // after its length
            if (bFirst)
            {
                abyField = {static_cast<unsigned char>(bKey ? 0x50 : 0x10),
                            static_cast<unsigned char>(llClock >> 25),
                            static_cast<unsigned char>(llClock >> 17),
                            static_cast<unsigned char>(llClock >> 9),
                            static_cast<unsigned char>(llClock >> 1),
                            static_cast<unsigned char>((llClock & 1) << 7 | 0x7E),
                            0};
            }
            const std::size_t nLeft = abyData.size() - nSent;
            const bool bField = bFirst || nLeft < g_nPacket - 4;
            const std::size_t nRoom = g_nPacket - 4 - (bField ? 1 + abyField.size() : 0);
            const std::size_t nNow = std::min(nLeft, nRoom);
            Header(g_dwVideoPid, bFirst, bField ? 3 : 1, m_byVideo, abyOut);
            if (bField)
            {
                if (abyField.empty() && nNow < nRoom)
                {
                    abyField.push_back(0); // no flags
                }
                abyField.resize(g_nPacket - 5 - nNow, 0xFF);
                abyOut.push_back(static_cast<unsigned char>(abyField.size()));
                abyOut.insert(abyOut.end(), abyField.begin(), abyField.end());
            }
            const auto it = abyData.begin() + static_cast<std::ptrdiff_t>(nSent);
            abyOut.insert(abyOut.end(), it, it + static_cast<std::ptrdiff_t>(nNow));
            nSent += nNow;
        }
    }

    const uint32_t m_dwCodec;
    const std::string m_strMaker;
    unsigned char m_byNull = 0;
    unsigned char m_byPrograms = 0;
    unsigned char m_byStreams = 0;
    unsigned char m_byVideo = 0;
};
} // namespace

std::unique_ptr<CFileWriter> MakeTransportStream(uint32_t dwVideoCodec, std::string_view strMaker)
{
    return std::make_unique<CTransportStream>(dwVideoCodec, strMaker);
}

Output TransportStreamHeader(std::string_view strMaker)
{
    Output abyHeader;
    CTransportStream(eCodecH264, strMaker).Begin(abyHeader);
    return abyHeader;
}
} // namespace plugin
