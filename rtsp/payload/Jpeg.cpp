// RFC 2435: pictures come without their headers, which are made anew here. ONVIF's extension brings headers that the
// RFC has no room for: they take the place of those that we make.

#include "rtsp/BigEndian.h"
#include "rtsp/payload/JpegHeader.h"
#include "rtsp/payload/Marked.h"

#include <algorithm>

namespace rtsp
{
namespace
{
constexpr std::size_t g_nHeader = 8;
constexpr unsigned g_uFirstRestart = 64; // types from here on have restart markers
constexpr unsigned g_uLastRestart = 127;
constexpr unsigned g_uFirstInBand = 128; // from here on a Q's tables come with the pictures
constexpr unsigned g_uNeverKept = 255;
constexpr unsigned char g_abyEnd[] = {0xFF, 0xD9};

std::size_t Offset(Bytes abyPayload)
{
    return Big32(abyPayload, 0) & 0xFFFFFF;
}

class CJpeg final : public CMarked
{
public:
    explicit CJpeg(tagMediaDescription const& tDescription)
        : CMarked(tDescription, eCodecMJPEG, "mjpeg"), m_nWidth(tDescription.nWidth), m_nHeight(tDescription.nHeight)
    {
    }

private:
    ePlace Place(Bytes abyPayload) const override
    {
        return abyPayload.size() < g_nHeader ? ePlace::Unknown : Offset(abyPayload) == 0 ? ePlace::Begin : ePlace::GoOn;
    }

    void Add(tagRtpPacket const& tPacket, bool) override
    {
        Bytes abyData = tPacket.abyPayload;
        if (abyData.size() < g_nHeader)
        {
            m_tUnit.bDamaged |= !abyData.empty();
            return;
        }
        const std::size_t nOffset = Offset(abyData);
        const unsigned uType = abyData[4];
        const unsigned uQ = abyData[5];
        tagJpegHeader tHeader;
        tHeader.uType = uType <= g_uLastRestart ? uType % g_uFirstRestart : uType;
        tHeader.dwWidth = abyData[6] ? 8U * abyData[6] : m_nWidth;
        tHeader.dwHeight = abyData[7] ? 8U * abyData[7] : m_nHeight;
        tHeader.abySegments = tPacket.abyJpegSegments;
        abyData = abyData.subspan(g_nHeader);
        if (uType >= g_uFirstRestart && uType <= g_uLastRestart)
        {
            if (abyData.size() < 4)
            {
                m_tUnit.bDamaged = true;
                return;
            }
            tHeader.wRestart = Big16(abyData, 0);
            abyData = abyData.subspan(4);
        }
        const bool bBegun = nOffset > 0 || (TakeTables(uQ, tHeader, abyData) && Begin(tHeader));
        // What comes behind a gap would be decoded at another place.
        if (!bBegun || !m_bFrame || m_tUnit.abyData.size() != m_nScan + nOffset)
        {
            m_tUnit.bDamaged = true;
            return;
        }
        Put(abyData);
    }

    // False: the tables for this Q aren't known.
    bool TakeTables(unsigned uQ, tagJpegHeader& tHeader, Bytes& abyData)
    {
        if (uQ < g_uFirstInBand)
        {
            tHeader.uQ = uQ;
            return true;
        }
        if (abyData.size() < 4 || abyData.size() - 4 < Big16(abyData, 2))
        {
            return false;
        }
        const std::size_t nLength = Big16(abyData, 2);
        const Bytes abyTables = abyData.subspan(4, nLength);
        tHeader.uPrecision = abyData[1];
        abyData = abyData.subspan(4 + nLength);
        if (nLength > 0 && uQ != g_uNeverKept && nLength <= 256)
        {
            m_abyTables.assign(abyTables.begin(), abyTables.end());
            m_uTables = uQ;
            m_uPrecision = tHeader.uPrecision;
        }
        const bool bKept = nLength == 0 && uQ == m_uTables && uQ != g_uNeverKept;
        tHeader.abyTables = bKept ? Bytes(m_abyTables) : abyTables;
        tHeader.uPrecision = bKept ? m_uPrecision : tHeader.uPrecision;
        return bKept || nLength >= 64 || !tHeader.abySegments.empty();
    }

    bool Begin(tagJpegHeader& tHeader)
    {
        m_abyHead.clear();
        if (!MakeJpegHeader(tHeader, m_abyHead))
        {
            return false;
        }
        m_tFormat.tFrame.dwWidth = tHeader.dwWidth;
        m_tFormat.tFrame.dwHeight = tHeader.dwHeight;
        m_bFrame = m_tUnit.bKey = Put(m_abyHead);
        m_nScan = m_tUnit.abyData.size();
        m_abyHead = {};
        return m_bFrame;
    }

    void Finish() override
    {
        std::vector<unsigned char> const& abyData = m_tUnit.abyData;
        if (abyData.size() < m_nScan + 2 || !std::equal(g_abyEnd, g_abyEnd + 2, abyData.end() - 2))
        {
            Put(g_abyEnd);
        }
    }

    unsigned m_nWidth; ///< of the description: for pictures too large for the payload's header
    unsigned m_nHeight;
    std::size_t m_nScan = 0;                ///< where the picture's data begins in m_tUnit
    std::vector<unsigned char> m_abyHead;   ///< being made
    std::vector<unsigned char> m_abyTables; ///< that a Q stands for
    unsigned m_uTables = 0;                 ///< that Q
    unsigned m_uPrecision = 0;
};
} // namespace

std::unique_ptr<CPayload> MakeJpeg(tagMediaDescription const& tDescription)
{
    return std::make_unique<CJpeg>(tDescription);
}
} // namespace rtsp
