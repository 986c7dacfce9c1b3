#include "tools/onvif_device/Quirks.h"

#include "tools/onvif_device/Values.h"

#include <algorithm>
#include <variant>

namespace onvif_device
{
namespace
{
using Member = std::variant<std::string tagQuirks::*, bool tagQuirks::*, int64_t tagQuirks::*>;

struct tagRow
{
    char const* szName;
    Member tMember;
    char const* szWords; // a text can be one of these; null: anything
};
const tagRow g_atRows[] = {
    {"auth", &tagQuirks::strAuth, "any wsse digest both none"},
    {"digest", &tagQuirks::strDigest, "md5 sha256"},
    {"window", &tagQuirks::llWindow, nullptr},
    {"reuse_nonces", &tagQuirks::bReuseNonces, nullptr},
    {"host", &tagQuirks::strHost, nullptr},
    {"rtsp_host", &tagQuirks::strRtspHost, nullptr},
    {"odd_paths", &tagQuirks::bOddPaths, nullptr},
    {"reference_parameters", &tagQuirks::bReference, nullptr},
    {"probe_answers", &tagQuirks::llProbeAnswers, nullptr},
    {"odd_prefixes", &tagQuirks::bOddPrefixes, nullptr},
    {"fault_status", &tagQuirks::llFaultStatus, nullptr},
    {"half", &tagQuirks::llHalf, nullptr},
    {"empty", &tagQuirks::llEmpty, nullptr},
    {"piece", &tagQuirks::llPiece, nullptr},
    {"piece_ms", &tagQuirks::llPieceMs, nullptr},
    {"compress", &tagQuirks::bCompress, nullptr},
    {"sparse", &tagQuirks::bSparse, nullptr},
    {"without", &tagQuirks::strWithout, nullptr},
    {"ignore_timeout", &tagQuirks::bIgnoreTimeout, nullptr},
    {"pull_points", &tagQuirks::llMaxPullPoints, nullptr},
};

bool Contains(std::string const& strWords, std::string const& strWord)
{
    const auto astrWords = Words(strWords);
    return std::ranges::find(astrWords, strWord) != astrWords.end();
}
} // namespace

bool SetQuirk(tagQuirks& tQuirks, std::string const& strName, std::string const& strValue)
{
    auto const* const it = std::ranges::find(g_atRows, strName, [](tagRow const& t) { return std::string(t.szName); });
    if (it == std::end(g_atRows))
    {
        return false;
    }
    if (auto const* const ppstr = std::get_if<std::string tagQuirks::*>(&it->tMember))
    {
        if (it->szWords && !Contains(it->szWords, strValue))
        {
            return false;
        }
        tQuirks.** ppstr = strValue;
        return true;
    }
    if (auto const* const ppb = std::get_if<bool tagQuirks::*>(&it->tMember))
    {
        return ParseBoolean(strValue, tQuirks.**ppb);
    }
    return ParseNumber(strValue, tQuirks.*std::get<int64_t tagQuirks::*>(it->tMember));
}

bool IsWithout(tagQuirks const& tQuirks, std::string const& strWord)
{
    return Contains(tQuirks.strWithout, strWord);
}
} // namespace onvif_device
