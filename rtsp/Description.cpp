#include "rtsp/Description.h"

#include "rtsp/Text.h"

#include <algorithm>
#include <cmath>

namespace rtsp
{
namespace
{
// Bounds, so that an SDP that is nothing but media lines or parameters stays small in memory.
constexpr std::size_t g_nMostMedia = 32;
constexpr std::size_t g_nMostLines = 256; // of one kind, in one media section
constexpr std::size_t g_nMostParameters = 64;
constexpr unsigned g_nMostPixels = 65535; // either way

// RFC 3551.
struct tagStaticType
{
    int nPayloadType;
    char const* szEncoding;
    std::uint32_t dwClockRate;
    unsigned nChannels;
};
constexpr tagStaticType g_atStaticTypes[] = {
    {0, "PCMU", 8000, 1},   {3, "GSM", 8000, 1},    {4, "G723", 8000, 1},   {5, "DVI4", 8000, 1},
    {6, "DVI4", 16000, 1},  {7, "LPC", 8000, 1},    {8, "PCMA", 8000, 1},   {9, "G722", 8000, 1},
    {10, "L16", 44100, 2},  {11, "L16", 44100, 1},  {12, "QCELP", 8000, 1}, {13, "CN", 8000, 1},
    {14, "MPA", 90000, 0},  {15, "G728", 8000, 1},  {16, "DVI4", 11025, 1}, {17, "DVI4", 22050, 1},
    {18, "G729", 8000, 1},  {25, "CELB", 90000, 0}, {26, "JPEG", 90000, 0}, {28, "NV", 90000, 0},
    {31, "H261", 90000, 0}, {32, "MPV", 90000, 0},  {33, "MP2T", 90000, 0}, {34, "H263", 90000, 0},
};

// The next word; without those that blanks only would make.
std::string_view CutWord(std::string_view& strRest)
{
    strRest = Trim(strRest);
    const std::size_t nEnd = std::min(strRest.find_first_of(" \t"), strRest.size());
    const std::string_view strWord = strRest.substr(0, nEnd);
    strRest = Trim(strRest.substr(nEnd));
    return strWord;
}

// What a line says of one payload type: "96 H264/90000".
struct tagPayloadLine
{
    int nPayloadType = -1;
    std::string_view strText;
};

void Add(std::vector<tagPayloadLine>& atLines, std::string_view strValue)
{
    const auto nPayloadType = Number<std::uint8_t>(CutWord(strValue));
    if (nPayloadType && *nPayloadType < 128 && atLines.size() < g_nMostLines)
    {
        atLines.push_back({*nPayloadType, strValue});
    }
}

std::optional<std::string_view> Find(std::vector<tagPayloadLine> const& atLines, int nPayloadType)
{
    const auto it = std::find_if(atLines.begin(), atLines.end(),
                                 [=](tagPayloadLine const& t) { return t.nPayloadType == nPayloadType; });
    return it == atLines.end() ? std::nullopt : std::optional(it->strText);
}

// A session, or a media section: lines that need all others to be understood are kept until its end.
struct tagSection
{
    tagMediaDescription tMedia;
    std::string_view strFormats; // of the media line
    std::vector<tagPayloadLine> atMaps;
    std::vector<tagPayloadLine> atFormatParameters;
    std::string_view strRange;
};

void ParseMediaLine(std::string_view strValue, tagSection& tSection)
{
    tSection.tMedia.strMedia = Lower(CutWord(strValue));
    std::string_view strPort = CutWord(strValue);
    tSection.tMedia.wPort = Number<std::uint16_t>(CutFirst(strPort, '/')).value_or(0);
    CutWord(strValue); // the profile
    tSection.strFormats = strValue;
}

// "IN IP4 239.1.2.3/127": the third part says how many addresses; IPv6 has no time to live.
void ParseConnection(std::string_view strValue, tagMediaDescription& tMedia)
{
    CutWord(strValue);
    const bool bIpv6 = EqualsInAnyCase(CutWord(strValue), "IP6");
    std::string_view strRest = CutWord(strValue);
    const std::string_view strAddress = CutFirst(strRest, '/');
    const bool bAny = strAddress == "0.0.0.0" || strAddress == "::";
    tMedia.strAddress = bAny ? std::string_view() : strAddress;
    tMedia.nTimeToLive = bIpv6 || bAny ? 0 : Number<std::uint8_t>(CutFirst(strRest, '/')).value_or(0);
}

// "incl IN IP4 232.3.4.5 192.168.9.10"; of several sources the first.
void ParseSourceFilter(std::string_view strValue, tagMediaDescription& tMedia)
{
    if (EqualsInAnyCase(CutWord(strValue), "incl"))
    {
        CutWord(strValue);
        CutWord(strValue);
        CutWord(strValue);
        tMedia.strSource = CutWord(strValue);
    }
}

// "352-288", "352,288", "352x288".
void ParseSize(std::string_view strValue, tagMediaDescription& tMedia)
{
    const std::size_t nEnd = std::min(strValue.find_first_not_of("0123456789"), strValue.size());
    const auto nWidth = Number<unsigned>(strValue.substr(0, nEnd));
    const auto nHeight = Number<unsigned>(Trim(strValue.substr(std::min(nEnd + 1, strValue.size()))));
    if (nWidth && nHeight && *nWidth > 0 && *nHeight > 0 && *nWidth <= g_nMostPixels && *nHeight <= g_nMostPixels)
    {
        tMedia.nWidth = *nWidth;
        tMedia.nHeight = *nHeight;
    }
}

void ParseFrameRate(std::string_view strValue, tagMediaDescription& tMedia)
{
    double dRate = 0;
    std::from_chars(strValue.data(), strValue.data() + strValue.size(), dRate);
    tMedia.dFrameRate = std::isfinite(dRate) && dRate > 0 && dRate <= 1000 ? dRate : 0;
}

void ParseAttribute(std::string_view strValue, tagSection& tSection)
{
    tagMediaDescription& tMedia = tSection.tMedia;
    const std::string strName = Lower(Trim(CutFirst(strValue, ':')));
    strValue = Trim(strValue);
    if (strName == "control")
    {
        tMedia.strControl = strValue;
    }
    else if (strName == "rtpmap")
    {
        Add(tSection.atMaps, strValue);
    }
    else if (strName == "fmtp")
    {
        Add(tSection.atFormatParameters, strValue);
    }
    else if (strName == "range")
    {
        tSection.strRange = strValue;
    }
    else if (strName == "source-filter")
    {
        ParseSourceFilter(strValue, tMedia);
    }
    else if (strName == "framesize")
    {
        CutWord(strValue); // the payload type
        ParseSize(strValue, tMedia);
    }
    else if (strName == "x-dimensions")
    {
        ParseSize(strValue, tMedia);
    }
    else if (strName == "framerate" || strName == "x-framerate")
    {
        ParseFrameRate(strValue, tMedia);
    }
    else if (strName == "sendrecv")
    {
        tMedia.eWay = eDirection::SendReceive;
    }
    else if (strName == "sendonly")
    {
        tMedia.eWay = eDirection::SendOnly;
    }
    else if (strName == "recvonly")
    {
        tMedia.eWay = eDirection::ReceiveOnly;
    }
    else if (strName == "inactive")
    {
        tMedia.eWay = eDirection::Inactive;
    }
}

// "H264/90000", "MPEG4-GENERIC/48000/2". False: not even a name.
bool TakeMap(std::string_view strMap, tagMediaDescription& tMedia)
{
    tMedia.strEncoding = Upper(Trim(CutFirst(strMap, '/')));
    tMedia.dwClockRate = Number<std::uint32_t>(Trim(CutFirst(strMap, '/'))).value_or(0);
    tMedia.nChannels = Number<std::uint8_t>(Trim(strMap)).value_or(0);
    return !tMedia.strEncoding.empty();
}

bool TakeStaticType(int nPayloadType, tagMediaDescription& tMedia)
{
    const auto* const pt = std::find_if(std::begin(g_atStaticTypes), std::end(g_atStaticTypes),
                                        [=](tagStaticType const& t) { return t.nPayloadType == nPayloadType; });
    if (pt == std::end(g_atStaticTypes))
    {
        return false;
    }
    tMedia.strEncoding = pt->szEncoding;
    tMedia.dwClockRate = pt->dwClockRate;
    tMedia.nChannels = pt->nChannels;
    return true;
}

void TakeParameters(std::string_view strText, tagMediaDescription& tMedia)
{
    while (!strText.empty() && tMedia.atParameters.size() < g_nMostParameters)
    {
        const tagParameter tPart = SplitParameter(CutFirst(strText, ';'));
        if (!tPart.strName.empty())
        {
            tMedia.atParameters.emplace_back(Lower(tPart.strName), tPart.strValue);
        }
    }
}

tagMediaDescription Finish(tagSection&& tSection)
{
    tagMediaDescription& tMedia = tSection.tMedia;
    tMedia.nPayloadType = -1;
    std::string_view strFormats = tSection.strFormats;
    for (bool bKnown = false; !bKnown && !strFormats.empty();)
    {
        const auto nFormat = Number<std::uint8_t>(CutWord(strFormats));
        if (nFormat && *nFormat < 128)
        {
            const auto strMap = Find(tSection.atMaps, *nFormat);
            bKnown = (strMap && TakeMap(*strMap, tMedia)) || TakeStaticType(*nFormat, tMedia);
            tMedia.nPayloadType = bKnown || tMedia.nPayloadType < 0 ? *nFormat : tMedia.nPayloadType;
        }
    }
    if (const auto strParameters = Find(tSection.atFormatParameters, tMedia.nPayloadType))
    {
        TakeParameters(*strParameters, tMedia);
    }
    return std::move(tMedia);
}
} // namespace

std::string_view tagMediaDescription::Parameter(std::string_view strName) const
{
    for (auto const& [strParameter, strValue] : atParameters)
    {
        if (strParameter == strName)
        {
            return strValue;
        }
    }
    return {};
}

std::optional<tagDescription> ParseDescription(std::string_view strSdp)
{
    using namespace std::string_view_literals;
    constexpr std::string_view strLineEnds = "\r\n\0"sv; // devices send terminators too
    tagDescription tDescription;
    tagSection tSession;
    std::vector<tagSection> atSections;
    const auto Current = [&]() -> tagSection& { return atSections.empty() ? tSession : atSections.back(); };
    while (!strSdp.empty())
    {
        std::string_view strLine = strSdp.substr(0, strSdp.find_first_of(strLineEnds));
        strSdp.remove_prefix(std::min(strLine.size() + 1, strSdp.size()));
        const std::string_view strType = Trim(CutFirst(strLine, '='));
        if (strType == "m")
        {
            if (atSections.size() == g_nMostMedia)
            {
                break;
            }
            tagSection& tSection = atSections.emplace_back();
            tSection.tMedia = tSession.tMedia;
            tSection.tMedia.strControl.clear();
            ParseMediaLine(strLine, tSection);
        }
        else if (strType == "c")
        {
            ParseConnection(strLine, Current().tMedia);
        }
        else if (strType == "a")
        {
            ParseAttribute(strLine, Current());
        }
    }
    tDescription.strControl = tSession.tMedia.strControl;
    tDescription.strRange = tSession.strRange;
    for (tagSection& tSection : atSections)
    {
        if (tDescription.strRange.empty())
        {
            tDescription.strRange = tSection.strRange;
        }
        tDescription.atMedia.push_back(Finish(std::move(tSection)));
    }
    return tDescription.atMedia.empty() ? std::nullopt : std::optional(std::move(tDescription));
}
} // namespace rtsp
