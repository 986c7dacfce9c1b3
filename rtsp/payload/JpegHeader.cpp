#include "rtsp/payload/JpegHeader.h"
#include "rtsp/BigEndian.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace rtsp
{
namespace
{
enum : unsigned char
{
    g_byMark = 0xFF,
    g_byBaseline = 0xC0,
    g_byHuffman = 0xC4,
    g_byLastFrame = 0xCF,
    g_byStart = 0xD8,
    g_byLastPlain = 0xD9, ///< markers without a length go up to here, from 0xD0
    g_byScan = 0xDA,
    g_byQuantization = 0xDB,
    g_byRestart = 0xDD,
};

// The tables of the JPEG standard's annex K, quantization in zigzag order.
constexpr unsigned char g_abyLuma[64] = {16, 11, 12,  14,  12,  10, 16, 14,  13,  14,  18,  17,  16, 19,  24,  40,
                                         26, 24, 22,  22,  24,  49, 35, 37,  29,  40,  58,  51,  61, 60,  57,  51,
                                         56, 55, 64,  72,  92,  78, 64, 68,  87,  69,  55,  56,  80, 109, 81,  87,
                                         95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};
constexpr unsigned char g_abyChroma[64] = {17, 18, 18, 24, 21, 24, 47, 26, 26, 47, 99, 66, 56, 66, 99, 99,
                                           99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
                                           99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
                                           99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

// How many codes there are of each length, and what they stand for.
constexpr unsigned char g_abyLumaDc[] = {0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0,  0, 0, 0, 0, 0, //
                                         0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
constexpr unsigned char g_abyChromaDc[] = {0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1,  0, 0, 0, 0, 0, //
                                           0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
constexpr unsigned char g_abyLumaAc[] = {
    0,    2,    1,    3,    3,    2,    4,    3,    5,    5,    4,    4,    0,    0,    1,    0x7D, //
    0x01, 0x02, 0x03, 0x00, 0x04, 0x11, 0x05, 0x12, 0x21, 0x31, 0x41, 0x06, 0x13, 0x51, 0x61, 0x07, 0x22, 0x71,
    0x14, 0x32, 0x81, 0x91, 0xA1, 0x08, 0x23, 0x42, 0xB1, 0xC1, 0x15, 0x52, 0xD1, 0xF0, 0x24, 0x33, 0x62, 0x72,
    0x82, 0x09, 0x0A, 0x16, 0x17, 0x18, 0x19, 0x1A, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2A, 0x34, 0x35, 0x36, 0x37,
    0x38, 0x39, 0x3A, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4A, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58, 0x59,
    0x5A, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7A, 0x83,
    0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8A, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9A, 0xA2, 0xA3,
    0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xB7, 0xB8, 0xB9, 0xBA, 0xC2, 0xC3,
    0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9, 0xCA, 0xD2, 0xD3, 0xD4, 0xD5, 0xD6, 0xD7, 0xD8, 0xD9, 0xDA, 0xE1, 0xE2,
    0xE3, 0xE4, 0xE5, 0xE6, 0xE7, 0xE8, 0xE9, 0xEA, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9, 0xFA};
constexpr unsigned char g_abyChromaAc[] = {
    0,    2,    1,    2,    4,    4,    3,    4,    7,    5,    4,    4,    0,    1,    2,    0x77, //
    0x00, 0x01, 0x02, 0x03, 0x11, 0x04, 0x05, 0x21, 0x31, 0x06, 0x12, 0x41, 0x51, 0x07, 0x61, 0x71, 0x13, 0x22,
    0x32, 0x81, 0x08, 0x14, 0x42, 0x91, 0xA1, 0xB1, 0xC1, 0x09, 0x23, 0x33, 0x52, 0xF0, 0x15, 0x62, 0x72, 0xD1,
    0x0A, 0x16, 0x24, 0x34, 0xE1, 0x25, 0xF1, 0x17, 0x18, 0x19, 0x1A, 0x26, 0x27, 0x28, 0x29, 0x2A, 0x35, 0x36,
    0x37, 0x38, 0x39, 0x3A, 0x43, 0x44, 0x45, 0x46, 0x47, 0x48, 0x49, 0x4A, 0x53, 0x54, 0x55, 0x56, 0x57, 0x58,
    0x59, 0x5A, 0x63, 0x64, 0x65, 0x66, 0x67, 0x68, 0x69, 0x6A, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79, 0x7A,
    0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 0x88, 0x89, 0x8A, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0x98, 0x99, 0x9A,
    0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 0xA9, 0xAA, 0xB2, 0xB3, 0xB4, 0xB5, 0xB6, 0xB7, 0xB8, 0xB9, 0xBA,
    0xC2, 0xC3, 0xC4, 0xC5, 0xC6, 0xC7, 0xC8, 0xC9, 0xCA, 0xD2, 0xD3, 0xD4, 0xD5, 0xD6, 0xD7, 0xD8, 0xD9, 0xDA,
    0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7, 0xE8, 0xE9, 0xEA, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xF8, 0xF9, 0xFA};

using Out = std::vector<unsigned char>;

void PutSegment(Out& abyOut, unsigned char byMarker, std::initializer_list<unsigned> auHead, Bytes abyRest = {})
{
    const std::size_t nLength = 2 + auHead.size() + abyRest.size();
    abyOut.insert(abyOut.end(),
                  {g_byMark, byMarker, static_cast<unsigned char>(nLength >> 8), static_cast<unsigned char>(nLength)});
    for (const unsigned u : auHead)
    {
        abyOut.push_back(static_cast<unsigned char>(u));
    }
    abyOut.insert(abyOut.end(), abyRest.begin(), abyRest.end());
}

// The standard tables scaled by Q, as independent JPEG encoders do it.
std::array<unsigned char, 64> Scaled(unsigned char const (&abyTable)[64], unsigned uQ)
{
    uQ = std::clamp(uQ, 1U, 99U);
    const unsigned uScale = uQ < 50 ? 5000 / uQ : 200 - uQ * 2;
    std::array<unsigned char, 64> abyScaled{};
    std::transform(std::begin(abyTable), std::end(abyTable), abyScaled.begin(),
                   [=](unsigned char by)
                   { return static_cast<unsigned char>(std::clamp((by * uScale + 50) / 100, 1U, 255U)); });
    return abyScaled;
}

bool PutQuantization(tagJpegHeader const& tHeader, Out& abyOut)
{
    if (tHeader.abyTables.empty())
    {
        PutSegment(abyOut, g_byQuantization, {0}, Scaled(g_abyLuma, tHeader.uQ));
        PutSegment(abyOut, g_byQuantization, {1}, Scaled(g_abyChroma, tHeader.uQ));
        return true;
    }
    Bytes abyRest = tHeader.abyTables;
    Bytes abyTable;
    for (unsigned i = 0; i < 2; ++i)
    {
        const bool bWide = tHeader.uPrecision >> i & 1;
        const std::size_t nLength = bWide ? 128 : 64;
        if (abyRest.size() >= nLength)
        {
            abyTable = abyRest.first(nLength);
            abyRest = abyRest.subspan(nLength);
        }
        if (abyTable.empty())
        {
            return false;
        }
        PutSegment(abyOut, g_byQuantization, {(abyTable.size() == 128 ? 16U : 0U) + i}, abyTable);
    }
    return true;
}

// Marker segments that came beside the picture.
class CSegments
{
public:
    explicit CSegments(Bytes abyAll)
    {
        while (abyAll.size() >= 4 && abyAll[0] == g_byMark)
        {
            const unsigned char byMarker = abyAll[1];
            if (byMarker == g_byMark || (byMarker >= 0xD0 && byMarker <= g_byLastPlain))
            {
                abyAll = abyAll.subspan(byMarker == g_byMark ? 1 : 2);
                continue;
            }
            const std::size_t nLength = 2 + std::size_t{Big16(abyAll, 2)};
            if (nLength < 4 || nLength > abyAll.size() || byMarker == g_byScan)
            {
                return;
            }
            const Bytes abySegment = abyAll.first(nLength);
            abyAll = abyAll.subspan(nLength);
            const bool bFrame = byMarker >= g_byBaseline && byMarker <= g_byLastFrame && byMarker != g_byHuffman;
            if (bFrame && nLength < 9)
            {
                continue;
            }
            m_abyFrame = bFrame ? abySegment : m_abyFrame;
            m_bQuantization |= byMarker == g_byQuantization;
            m_bHuffman |= byMarker == g_byHuffman;
            m_bRestart |= byMarker == g_byRestart;
            m_abyAll.insert(m_abyAll.end(), abySegment.begin(), abySegment.end());
        }
    }

    Bytes m_abyFrame;
    bool m_bQuantization = false;
    bool m_bHuffman = false;
    bool m_bRestart = false;
    Out m_abyAll;
};
} // namespace

bool MakeJpegHeader(tagJpegHeader& tHeader, std::vector<unsigned char>& abyOut)
{
    const CSegments tSegments(tHeader.abySegments);
    if (!tSegments.m_abyFrame.empty())
    {
        tHeader.dwHeight = Big16(tSegments.m_abyFrame, 5);
        tHeader.dwWidth = Big16(tSegments.m_abyFrame, 7);
    }
    if (tHeader.uType > 1 || tHeader.dwWidth == 0 || tHeader.dwHeight == 0 || tHeader.dwWidth > 0xFFFF ||
        tHeader.dwHeight > 0xFFFF)
    {
        return false;
    }
    abyOut.insert(abyOut.end(), {g_byMark, g_byStart});
    abyOut.insert(abyOut.end(), tSegments.m_abyAll.begin(), tSegments.m_abyAll.end());
    if (!tSegments.m_bQuantization && !PutQuantization(tHeader, abyOut))
    {
        return false;
    }
    if (tSegments.m_abyFrame.empty())
    {
        const unsigned uSampling = tHeader.uType == 0 ? 0x21 : 0x22;
        PutSegment(abyOut, g_byBaseline,
                   {8, tHeader.dwHeight >> 8, tHeader.dwHeight & 0xFF, tHeader.dwWidth >> 8, tHeader.dwWidth & 0xFF, 3,
                    1, uSampling, 0, 2, 0x11, 1, 3, 0x11, 1});
    }
    if (!tSegments.m_bHuffman)
    {
        PutSegment(abyOut, g_byHuffman, {0x00}, g_abyLumaDc);
        PutSegment(abyOut, g_byHuffman, {0x10}, g_abyLumaAc);
        PutSegment(abyOut, g_byHuffman, {0x01}, g_abyChromaDc);
        PutSegment(abyOut, g_byHuffman, {0x11}, g_abyChromaAc);
    }
    if (!tSegments.m_bRestart && tHeader.wRestart != 0)
    {
        PutSegment(abyOut, g_byRestart, {unsigned{tHeader.wRestart} >> 8, unsigned{tHeader.wRestart} & 0xFF});
    }
    PutSegment(abyOut, g_byScan, {3, 1, 0x00, 2, 0x11, 3, 0x11, 0, 63, 0});
    return true;
}
} // namespace rtsp
