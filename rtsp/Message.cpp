#include "rtsp/Message.h"

#include "rtsp/BigEndian.h"
#include "rtsp/Text.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace rtsp
{
namespace
{
constexpr std::size_t g_nLongestMethod = 24;
constexpr std::size_t g_nLongestUri = 4096;
constexpr std::size_t g_nMostBlanks = 4;
constexpr std::size_t g_nLongestStatus = 16; // "RTSP/1.0", blanks, the status and what ends it
constexpr std::size_t g_nKeptRoom = 4096;    // of memory, while nothing waits in it

enum class eMatch
{
    No,
    Maybe, ///< as far as the bytes go
    Yes,
};

// Compares a text piece by piece. Once a piece doesn't fit, or the text has ended, the others change nothing.
class CMatcher
{
public:
    explicit CMatcher(std::string_view strText) : m_strText(strText) {}

    template <class F>
    CMatcher& Some(std::size_t nLeast, std::size_t nMost, F IsOneOfThem)
    {
        for (std::size_t n = 0; m_eResult == eMatch::Yes; ++n)
        {
            if (n == nMost)
            {
                return *this;
            }
            if (m_nAt == m_strText.size())
            {
                m_eResult = eMatch::Maybe;
            }
            else if (!IsOneOfThem(m_strText[m_nAt]))
            {
                m_eResult = n < nLeast ? eMatch::No : eMatch::Yes;
                return *this;
            }
            else
            {
                ++m_nAt;
            }
        }
        return *this;
    }
    CMatcher& Version()
    {
        for (const char c : std::string_view("RTSP/"))
        {
            Some(1, 1, [c](char cOther) { return c == cOther; });
        }
        return Some(1, 1, &IsDigit).Some(1, 1, [](char c) { return c == '.'; }).Some(1, 1, &IsDigit);
    }
    eMatch Result() const { return m_eResult; }

private:
    std::string_view m_strText;
    std::size_t m_nAt = 0;
    eMatch m_eResult = eMatch::Yes;
};

bool IsOfMethod(char c)
{
    return (c >= 'A' && c <= 'Z') || c == '_';
}
bool EndsWord(char c)
{
    return IsBlank(c) || c == '\r' || c == '\n';
}

// "RTSP/1.0 200 ": nothing else has it, wherever it stands.
eMatch MatchStatus(std::string_view strText)
{
    return CMatcher(strText)
        .Version()
        .Some(1, g_nMostBlanks, &IsBlank)
        .Some(1, 1, [](char c) { return IsDigit(c) && c != '0'; })
        .Some(2, 2, &IsDigit)
        .Some(1, 1, &EndsWord)
        .Result();
}

// "METHOD uri RTSP/1.0".
eMatch MatchRequest(std::string_view strText)
{
    return CMatcher(strText)
        .Some(2, g_nLongestMethod, &IsOfMethod)
        .Some(1, g_nMostBlanks, &IsBlank)
        .Some(1, g_nLongestUri, [](char c) { return c != ' ' && !IsControl(c); })
        .Some(1, g_nMostBlanks, &IsBlank)
        .Version()
        .Some(1, 1, &EndsWord)
        .Result();
}

eMatch MatchStart(std::string_view strText)
{
    if (!strText.empty() && !IsOfMethod(strText.front())) // as most of what junk is made of
    {
        return eMatch::No;
    }
    const eMatch eStatus = MatchStatus(strText);
    return eStatus == eMatch::Yes ? eStatus : std::max(eStatus, MatchRequest(strText));
}

std::size_t FindStatus(std::string_view strText, std::size_t nFrom)
{
    std::size_t n = strText.find("RTSP/", nFrom);
    while (n != std::string_view::npos && MatchStatus(strText.substr(n)) != eMatch::Yes)
    {
        n = strText.find("RTSP/", n + 1);
    }
    return n;
}

std::string_view Text(Bytes abyData)
{
    return {reinterpret_cast<char const*>(abyData.data()), abyData.size()};
}

// The head of a message, its empty line included.
tagMessage ParseHead(std::string_view strHead)
{
    tagMessage tMessage;
    std::string_view strStart = Trim(CutFirst(strHead, '\n'));
    const bool bResponse = MatchStatus(std::string(strStart) + '\n') == eMatch::Yes;
    const std::string_view strFirst = strStart.substr(0, strStart.find_first_of(" \t"));
    strStart = Trim(strStart.substr(strFirst.size()));
    const std::string_view strSecond = strStart.substr(0, strStart.find_first_of(" \t"));
    if (bResponse)
    {
        tMessage.nStatus = Number<int>(strSecond.substr(0, 3)).value_or(0);
        tMessage.strReason = Trim(strStart.substr(strSecond.size()));
    }
    else
    {
        tMessage.strMethod = strFirst;
        tMessage.strUri = strSecond;
    }
    while (!strHead.empty())
    {
        std::string_view strLine = CutFirst(strHead, '\n');
        if (!strLine.empty() && IsBlank(strLine.front()) && !tMessage.atHeaders.empty())
        {
            std::string& strValue = tMessage.atHeaders.back().strValue;
            strLine = Trim(strLine);
            strValue.append(strValue.empty() || strLine.empty() ? 0 : 1, ' ').append(strLine);
        }
        else if (strLine.find(':') != std::string_view::npos)
        {
            const std::string_view strName = Trim(CutFirst(strLine, ':'));
            tMessage.atHeaders.push_back({std::string(strName), std::string(Trim(strLine))});
        }
    }
    return tMessage;
}

// What doesn't begin with a number says nothing.
std::size_t BodyLength(tagMessage const& tMessage)
{
    for (const std::string_view strLength : tMessage.Headers("Content-Length"))
    {
        const std::size_t nDigits = std::min(strLength.find_first_not_of("0123456789"), strLength.size());
        if (nDigits > 0)
        {
            return Number<std::size_t>(strLength.substr(0, nDigits)).value_or(std::numeric_limits<std::size_t>::max());
        }
    }
    return 0;
}

// Whether there is an interleaved packet at this place, as far as it can be seen; nEnd is then where it ends.
eMatch MatchPacket(Bytes abyData, std::size_t nAt, std::size_t& nEnd)
{
    if (abyData.size() - nAt < 5)
    {
        return nAt < abyData.size() && abyData[nAt] != '$' ? eMatch::No : eMatch::Maybe;
    }
    const std::size_t nLength = Big16(abyData, nAt + 2);
    nEnd = nAt + 4 + nLength;
    // RTP and RTCP begin with the same version; nothing of theirs is shorter.
    return abyData[nAt] == '$' && nLength >= 8 && abyData[nAt + 4] >> 6 == 2 ? eMatch::Yes : eMatch::No;
}

std::string OneLine(std::string_view strText)
{
    std::string strLine(strText);
    std::replace_if(strLine.begin(), strLine.end(), &IsControl, ' ');
    return strLine;
}
} // namespace

std::string_view tagMessage::Header(std::string_view strName) const
{
    for (tagHeader const& tHeader : atHeaders)
    {
        if (EqualsInAnyCase(tHeader.strName, strName))
        {
            return tHeader.strValue;
        }
    }
    return {};
}

std::vector<std::string_view> tagMessage::Headers(std::string_view strName) const
{
    std::vector<std::string_view> astrValues;
    for (tagHeader const& tHeader : atHeaders)
    {
        if (EqualsInAnyCase(tHeader.strName, strName))
        {
            astrValues.push_back(tHeader.strValue);
        }
    }
    return astrValues;
}

std::string Serialize(tagMessage const& tMessage)
{
    std::string strText;
    if (tMessage.nStatus != 0)
    {
        strText = "RTSP/1.0 " + std::to_string(tMessage.nStatus) + ' ' + OneLine(tMessage.strReason);
    }
    else
    {
        strText = OneLine(tMessage.strMethod) + ' ' + OneLine(tMessage.strUri) + " RTSP/1.0";
    }
    for (tagHeader const& tHeader : tMessage.atHeaders)
    {
        if (!EqualsInAnyCase(tHeader.strName, "Content-Length"))
        {
            strText += "\r\n" + OneLine(tHeader.strName) + ": " + OneLine(tHeader.strValue);
        }
    }
    if (!tMessage.strBody.empty())
    {
        strText += "\r\nContent-Length: " + std::to_string(tMessage.strBody.size());
    }
    return strText + "\r\n\r\n" + tMessage.strBody;
}

bool CMessageReader::Take(Bytes abyData, IMessageSink& tSink)
{
    while (!m_abyRest.empty() && !abyData.empty() && !m_bEndless)
    {
        // A packet gets no more than its own bytes, so that those behind it are read where they are.
        const std::size_t nMore =
            m_nNeeded == 0 ? abyData.size() : std::min(m_nNeeded - m_abyRest.size(), abyData.size());
        m_abyRest.reserve(m_nNeeded);
        m_abyRest.insert(m_abyRest.end(), abyData.begin(), abyData.begin() + static_cast<std::ptrdiff_t>(nMore));
        abyData = abyData.subspan(nMore);
        if (m_abyRest.size() >= m_nNeeded)
        {
            const std::size_t nRead = Read(m_abyRest, tSink);
            m_abyRest.erase(m_abyRest.begin(), m_abyRest.begin() + static_cast<std::ptrdiff_t>(nRead));
        }
    }
    if (m_abyRest.empty() && !m_bEndless)
    {
        if (m_abyRest.capacity() > g_nKeptRoom)
        {
            m_abyRest = std::vector<unsigned char>();
        }
        abyData = abyData.subspan(Read(abyData, tSink));
        m_abyRest.assign(abyData.begin(), abyData.end());
    }
    return !m_bEndless;
}

// Reads what is complete, and returns how many bytes that was.
std::size_t CMessageReader::Read(Bytes abyData, IMessageSink& tSink)
{
    std::size_t nRead = 0;
    while (nRead < abyData.size() && !m_bEndless)
    {
        const std::size_t n = ReadNext(abyData.subspan(nRead), tSink);
        if (n == 0)
        {
            break;
        }
        nRead += n;
    }
    return nRead;
}

// The length of what was read; 0: more bytes are needed.
std::size_t CMessageReader::ReadNext(Bytes abyData, IMessageSink& tSink)
{
    m_nNeeded = 0;
    if (m_bLost)
    {
        return FindPlace(abyData, tSink);
    }
    if (m_nHead > 0)
    {
        return ReadBody(abyData, tSink);
    }
    if (abyData[0] == '$')
    {
        m_nNeeded = abyData.size() < 4 ? 4 : std::size_t{4} + Big16(abyData, 2);
        if (abyData.size() < m_nNeeded)
        {
            return 0;
        }
        tSink.OnInterleaved(abyData[1], abyData.subspan(4, m_nNeeded - 4));
        return m_nNeeded;
    }
    if (abyData[0] == '\r' || abyData[0] == '\n')
    {
        return 1;
    }
    return ReadMessage(abyData, tSink);
}

std::size_t CMessageReader::ReadMessage(Bytes abyData, IMessageSink& tSink)
{
    const std::string_view strData = Text(abyData.first(std::min(abyData.size(), nLongestHead)));
    if (m_nSearched == 0)
    {
        const eMatch eStart = MatchStart(strData);
        if (eStart != eMatch::Yes)
        {
            m_bLost = eStart == eMatch::No;
            return m_bLost ? FindPlace(abyData, tSink) : 0;
        }
    }
    // Line by line. m_nSearched is where the first one begins that isn't complete yet.
    for (bool bComplete = true; bComplete;)
    {
        const std::size_t nLine = m_nSearched;
        std::size_t nEnd = strData.find('\n', nLine);
        bComplete = nEnd != std::string_view::npos;
        nEnd = bComplete ? nEnd : strData.size();
        const std::string_view strLine = strData.substr(nLine, nEnd - nLine);
        if (nLine > 0 && bComplete && (strLine.empty() || strLine == "\r"))
        {
            m_nHead = nEnd + 1;
            m_nBody = BodyLength(ParseHead(strData.substr(0, m_nHead)));
            m_nSearched = m_nHead;
            m_bEndless = m_nBody > nLongestBody;
            return m_bEndless ? 0 : ReadBody(abyData, tSink);
        }
        // The next message begins before this one has ended: it was cut off.
        std::size_t nStart =
            FindStatus(strData.substr(0, std::min(nEnd + 1, strData.size())), std::max<std::size_t>(nLine, 1));
        if (nLine > 0 && MatchRequest(strData.substr(nLine)) == eMatch::Yes)
        {
            nStart = nLine;
        }
        // A packet begins in the middle of it.
        const auto itAlien =
            std::find_if(strLine.begin(), strLine.end(), [](char c) { return IsControl(c) && c != '\t' && c != '\r'; });
        const std::size_t nAlien = itAlien == strLine.end()
                                       ? std::string_view::npos
                                       : std::min(strData.find('$', std::max<std::size_t>(nLine, 1)),
                                                  nLine + static_cast<std::size_t>(itAlien - strLine.begin()));
        if (std::min(nStart, nAlien) != std::string_view::npos)
        {
            m_bLost = nAlien < nStart;
            return PassOver(std::min(nStart, nAlien), tSink);
        }
        m_nSearched = bComplete ? nEnd + 1 : nLine;
    }
    m_bEndless = strData.size() == nLongestHead;
    return 0;
}

std::size_t CMessageReader::ReadBody(Bytes abyData, IMessageSink& tSink)
{
    std::size_t nWhole = m_nHead + m_nBody;
    const std::string_view strData = Text(abyData.first(std::min(abyData.size(), nWhole)));
    // A body that was announced too long ends where the next message begins.
    const std::size_t nStart = FindStatus(strData, m_nSearched);
    nWhole = std::min(nWhole, nStart);
    if (strData.size() < nWhole)
    {
        m_nSearched = std::max(m_nHead, strData.size() - std::min(strData.size(), g_nLongestStatus));
        return 0;
    }
    tagMessage tMessage = ParseHead(strData.substr(0, m_nHead));
    tMessage.strBody = strData.substr(m_nHead, nWhole - m_nHead);
    m_nHead = 0;
    m_nSearched = 0;
    tSink.OnMessage(std::move(tMessage));
    return nWhole;
}

// Among junk, a message is known by how it begins. A packet looks like any four bytes: it counts when another packet or
// a message follows it, and when no message begins inside it. Of those that do, the one that ends first.
std::size_t CMessageReader::FindPlace(Bytes abyData, IMessageSink& tSink)
{
    const std::string_view strData = Text(abyData);
    std::size_t nMessage = m_nSearched;
    eMatch eMessage = eMatch::No;
    for (; nMessage < strData.size(); ++nMessage)
    {
        eMessage = MatchStart(strData.substr(nMessage));
        if (eMessage != eMatch::No)
        {
            break;
        }
    }
    std::size_t nPlace = nMessage;
    std::size_t nKept = nMessage;
    std::size_t nFirstEnd = std::string_view::npos;
    for (std::size_t n = strData.find('$'); n < nMessage; n = strData.find('$', n + 1))
    {
        std::size_t nEnd = nMessage;
        std::size_t nNextEnd = nMessage;
        eMatch ePacket = MatchPacket(abyData, n, nEnd);
        if (ePacket == eMatch::Yes && nEnd < nMessage)
        {
            ePacket = MatchPacket(abyData, nEnd, nNextEnd);
        }
        else if (ePacket == eMatch::Yes)
        {
            // Up to where it is known that no message begins.
            ePacket = eMessage != eMatch::Yes ? eMatch::Maybe : nEnd == nMessage ? eMatch::Yes : eMatch::No;
        }
        if (ePacket == eMatch::Maybe)
        {
            nKept = std::min(nKept, n);
        }
        else if (ePacket == eMatch::Yes && nEnd < nFirstEnd)
        {
            nFirstEnd = nEnd;
            nPlace = n;
        }
    }
    if (eMessage == eMatch::Yes || nFirstEnd != std::string_view::npos)
    {
        m_bLost = false;
        m_nSearched = 0;
        // Nothing is passed over when the junk before it already was.
        return nPlace > 0 ? PassOver(nPlace, tSink) : ReadNext(abyData, tSink);
    }
    m_nSearched = nMessage - nKept;
    if (nKept == 0)
    {
        return 0;
    }
    tSink.OnJunk(nKept);
    return nKept;
}

std::size_t CMessageReader::PassOver(std::size_t nBytes, IMessageSink& tSink)
{
    m_nSearched = 0;
    tSink.OnJunk(nBytes);
    return nBytes;
}
} // namespace rtsp
