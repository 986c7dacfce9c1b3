#include "plugins/onvif/PTZ.h"

#include "plugins/common/Text.h"

#include "protocol/interface/Results.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr std::size_t g_nMost = 1000;
constexpr int64_t g_llFull = 10000;

// A preset that the device tells the position of. Some say only where the head stands, some nothing.
void TakePosition(tagNode const& tNode, pugi::xml_node tPosition, tagPTZPreset& t)
{
    const pugi::xml_node tHead = Child(tPosition, "PanTilt");
    const pugi::xml_node tZoom = Child(tPosition, "Zoom");
    if (tagSpace const* const pt = Usual(tNode.atPosition); pt && tHead)
    {
        t.nPan = static_cast<int32_t>(pt->tX.Share(AttributeNumber(tHead, "x"), 2 * g_llFull) - g_llFull);
        t.nTilt = static_cast<int32_t>(pt->tY.Share(AttributeNumber(tHead, "y"), 2 * g_llFull) - g_llFull);
    }
    if (tagSpace const* const pt = Usual(tNode.atZoomPosition); pt && tZoom)
    {
        t.nZoom = static_cast<int32_t>(pt->tX.Share(AttributeNumber(tZoom, "x"), g_llFull));
    }
}

bool IsNumber(tagNode const& tNode, uint32_t dwPreset)
{
    return dwPreset >= 1 && (tNode.dwPresets == 0 || dwPreset <= std::max(tNode.dwPresets, 255U));
}
} // namespace

int CHead::Presets(std::vector<tagPTZPreset>& atPresets)
{
    const tagUse tUse = Used();
    return tUse.pNode ? AskPresets(tUse, atPresets) : int{eResultOk};
}

int CHead::AskPresets(tagUse const& tUse, std::vector<tagPTZPreset>& atPresets)
{
    const CAnswer tAnswer = m_pClient->Call({eService::PTZ, "GetPresets", Body(tUse).Take()});
    if (!tAnswer)
    {
        return tAnswer.Result();
    }
    std::vector<std::pair<std::string, std::string>> atNames;
    for (pugi::xml_node tPreset : Children(tAnswer.Body(), "Preset"))
    {
        const std::string_view strToken = Attribute(tPreset, "token");
        if (strToken.empty() || atPresets.size() == g_nMost)
        {
            continue;
        }
        atNames.emplace_back(strToken, Text(tPreset, "Name"));
        tagPTZPreset& t = atPresets.emplace_back();
        plugin::CopyText(t.szName, atNames.back().second);
        TakePosition(*tUse.pNode, Child(tPreset, "PTZPosition"), t);
    }
    const std::lock_guard tLock(m_tMutex);
    m_tPresetNumbers.Take("Preset", atNames);
    for (std::size_t i = 0; i < atPresets.size(); ++i)
    {
        atPresets[i].dwPreset = m_tPresetNumbers.Number(atNames[i].first);
    }
    std::ranges::sort(atPresets, {}, &tagPTZPreset::dwPreset);
    m_atPresets = atPresets;
    std::erase_if(m_atPresets, [](tagPTZPreset const& t) { return t.nPan == 0 && t.nTilt == 0 && t.nZoom == 0; });
    return eResultOk;
}

// The token of a preset; eResultNotFound: there is none.
int CHead::PresetToken(tagUse const& tUse, uint32_t dwPreset, std::string& strToken)
{
    if (!IsNumber(*tUse.pNode, dwPreset))
    {
        return eResultBadArgument;
    }
    {
        const std::lock_guard tLock(m_tMutex);
        strToken = m_tPresetNumbers.Token(dwPreset);
    }
    if (!strToken.empty())
    {
        return eResultOk;
    }
    std::vector<tagPTZPreset> atPresets;
    const int nResult = AskPresets(tUse, atPresets);
    const std::lock_guard tLock(m_tMutex);
    strToken = m_tPresetNumbers.Token(dwPreset);
    return nResult != eResultOk ? nResult : strToken.empty() ? int{eResultNotFound} : int{eResultOk};
}

int CHead::SetPreset(tagUse const& tUse, uint32_t dwPreset, std::string const& strName)
{
    std::string strToken;
    const int nFound = PresetToken(tUse, dwPreset, strToken);
    if (nFound != eResultOk && nFound != eResultNotFound)
    {
        return nFound;
    }
    CXmlWriter tBody = Body(tUse);
    if (!strName.empty() || strToken.empty())
    {
        // A new one's name tells its number to whoever logs in later.
        tBody.Add("tptz:PresetName", strName.empty() ? "Preset " + std::to_string(dwPreset) : strName);
    }
    if (!strToken.empty())
    {
        tBody.Add("tptz:PresetToken", strToken);
    }
    const CAnswer tAnswer = m_pClient->Call({eService::PTZ, "SetPreset", tBody.Take()});
    if (tAnswer && strToken.empty())
    {
        const std::string strNew(Text(tAnswer.Body(), "PresetToken"));
        const std::lock_guard tLock(m_tMutex);
        if (!strNew.empty())
        {
            m_tPresetNumbers.Set(strNew, dwPreset);
        }
    }
    return tAnswer.Result();
}

int CHead::CallPreset(tagUse const& tUse, uint32_t dwPreset, int32_t nSpeed)
{
    if (nSpeed < 0 || nSpeed > g_llFull)
    {
        return eResultBadArgument;
    }
    std::string strToken;
    if (const int nResult = PresetToken(tUse, dwPreset, strToken))
    {
        return nResult;
    }
    CXmlWriter tBody = Body(tUse);
    tBody.Add("tptz:PresetToken", strToken).Raw(SpeedText(*tUse.pNode, nSpeed, "tptz:Speed"));
    const int nResult = Send("GotoPreset", std::move(tBody));
    if (nResult == eResultOk)
    {
        Ended(eMotionHead);
        Ended(eMotionZoom);
    }
    else if (nResult == eResultNotFound)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tPresetNumbers.Remove(strToken); // somebody else has removed it
    }
    return nResult;
}

int CHead::RemovePreset(tagUse const& tUse, uint32_t dwPreset)
{
    std::string strToken;
    if (const int nResult = PresetToken(tUse, dwPreset, strToken))
    {
        return nResult == eResultBadArgument ? int{eResultNotFound} : nResult;
    }
    const int nResult = Send("RemovePreset", Body(tUse).Add("tptz:PresetToken", strToken));
    if (nResult == eResultOk || nResult == eResultNotFound)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tPresetNumbers.Remove(strToken);
        std::erase_if(m_atPresets, [&](tagPTZPreset const& t) { return t.dwPreset == dwPreset; });
    }
    return nResult;
}
} // namespace onvifclient
