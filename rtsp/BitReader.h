#pragma once

#include "rtsp/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace rtsp
{
/// Reads bit fields, the highest bit first. Behind the end there are zeros, and Failed is true.
class CBitReader
{
public:
    enum class eForm
    {
        Plain,
        NalUnit, ///< of H.264 or H.265: the 3 of 00 00 03 doesn't count
    };

    explicit CBitReader(Bytes abyData, eForm eOf = eForm::Plain) : m_abyData(abyData), m_eForm(eOf) {}

    bool Failed() const { return m_bFailed; }
    /// How many bits were read; of eForm::Plain only.
    std::size_t Position() const { return 8 * m_nNext - m_nBits; }

    /// nBits: at most 32.
    std::uint32_t Bits(unsigned nBits)
    {
        std::uint32_t dwValue = 0;
        for (; nBits > 0; --nBits)
        {
            dwValue = dwValue << 1 | Bit();
        }
        return dwValue;
    }
    bool Flag() { return Bit() != 0; }
    void Skip(unsigned nBits)
    {
        for (; nBits > 0 && !m_bFailed; --nBits)
        {
            Bit();
        }
    }
    /// An Exp-Golomb code.
    std::uint32_t Ue()
    {
        unsigned nZeros = 0;
        while (!m_bFailed && Bit() == 0)
        {
            ++nZeros;
        }
        m_bFailed |= nZeros > 31;
        return m_bFailed ? 0 : (std::uint32_t{1} << nZeros) - 1 + Bits(nZeros);
    }
    /// A signed one.
    std::int32_t Se()
    {
        const std::uint32_t dwCode = Ue();
        const auto nHalf = static_cast<std::int32_t>(dwCode / 2);
        return dwCode % 2 ? nHalf + 1 : -nHalf;
    }

private:
    unsigned Bit()
    {
        if (m_nBits == 0 && !NextByte())
        {
            m_bFailed = true;
            return 0;
        }
        --m_nBits;
        return m_uByte >> m_nBits & 1;
    }
    bool NextByte()
    {
        if (m_eForm == eForm::NalUnit && m_nZeros >= 2 && m_nNext < m_abyData.size() && m_abyData[m_nNext] == 3)
        {
            ++m_nNext;
            m_nZeros = 0;
        }
        if (m_nNext == m_abyData.size())
        {
            return false;
        }
        m_uByte = m_abyData[m_nNext++];
        m_nBits = 8;
        m_nZeros = m_uByte == 0 ? m_nZeros + 1 : 0;
        return true;
    }

    Bytes m_abyData;
    eForm m_eForm;
    std::size_t m_nNext = 0;
    unsigned m_uByte = 0;
    unsigned m_nBits = 0; ///< of m_uByte that aren't read yet
    unsigned m_nZeros = 0;
    bool m_bFailed = false;
};
} // namespace rtsp
