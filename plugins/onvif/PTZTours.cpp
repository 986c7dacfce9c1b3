#include "plugins/onvif/Edit.h"
#include "plugins/onvif/PTZ.h"

#include "protocol/interface/Results.h"

#include <algorithm>

// ONVIF's preset tours. It has no word for recorded movements.

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr std::size_t g_nMost = 256;
constexpr int32_t g_nMostSeconds = 3600;

bool IsRunning(pugi::xml_node tTour)
{
    return Text(tTour, "Status/State") == "Touring";
}
} // namespace

CAnswer CHead::AskTours(tagUse const& tUse)
{
    CAnswer tAnswer = m_pClient->Call({eService::PTZ, "GetPresetTours", Body(tUse).Take()});
    std::vector<std::pair<std::string, std::string>> atNames;
    for (pugi::xml_node tTour : Children(tAnswer.Body(), "PresetTour"))
    {
        if (!Attribute(tTour, "token").empty() && atNames.size() < g_nMost)
        {
            atNames.emplace_back(Attribute(tTour, "token"), Text(tTour, "Name"));
        }
    }
    if (tAnswer)
    {
        const std::lock_guard tLock(m_tMutex);
        m_tTourNumbers.Take("Tour", atNames);
    }
    return tAnswer;
}

int CHead::Tours(std::vector<tagPTZTour>& atTours)
{
    const tagUse tUse = Used();
    if (!tUse.pNode || tUse.pNode->dwTours == 0)
    {
        return eResultOk;
    }
    const CAnswer tAnswer = AskTours(tUse);
    for (pugi::xml_node tTour : Children(tAnswer.Body(), "PresetTour"))
    {
        const std::lock_guard tLock(m_tMutex);
        if (const uint32_t dwTour = m_tTourNumbers.Number(std::string(Attribute(tTour, "token"))))
        {
            const auto nStops = static_cast<uint32_t>(Children(tTour, "TourSpot").size());
            atTours.push_back({dwTour, nStops, 0, IsRunning(tTour) ? 1U : 0U});
        }
    }
    std::ranges::sort(atTours, {}, &tagPTZTour::dwTour);
    return tAnswer.Result();
}

// tTour is good as long as tAnswer.
int CHead::FindTour(tagUse const& tUse, uint32_t dwTour, std::string& strToken, pugi::xml_node& tTour, CAnswer& tAnswer)
{
    tAnswer = AskTours(tUse);
    if (!tAnswer)
    {
        return tAnswer.Result();
    }
    {
        const std::lock_guard tLock(m_tMutex);
        strToken = m_tTourNumbers.Token(dwTour);
    }
    for (pugi::xml_node tEach : Children(tAnswer.Body(), "PresetTour"))
    {
        tTour = Attribute(tEach, "token") == strToken ? tEach : tTour;
    }
    return strToken.empty() ? int{eResultNotFound} : int{eResultOk};
}

int CHead::TourCommand(tagUse const& tUse, ePTZControlCmdCode eCommand, Para const& anPara)
{
    if (tUse.pNode->dwTours == 0 || eCommand == ePTZTourRecordStart || eCommand == ePTZTourRecordStop)
    {
        return eResultNotSupported;
    }
    if (anPara[0] < 1)
    {
        return eResultBadArgument;
    }
    if (eCommand == ePTZTourAddPreset)
    {
        return AddStop(tUse, anPara);
    }
    std::string strToken;
    pugi::xml_node tTour;
    CAnswer tAnswer;
    if (const int nResult = FindTour(tUse, static_cast<uint32_t>(anPara[0]), strToken, tTour, tAnswer))
    {
        return nResult;
    }
    switch (eCommand)
    {
    case ePTZTourRun:
        return RunTour(tUse, strToken, tTour, anPara[1]);
    case ePTZTourStop:
        return IsRunning(tTour) ? Operate(tUse, strToken, "Stop") : int{eResultOk};
    default: // ePTZTourRemove
        return Send("RemovePresetTour", Body(tUse).Add("tptz:PresetTourToken", strToken));
    }
}

int CHead::Operate(tagUse const& tUse, std::string const& strTour, char const* szOperation)
{
    return Send("OperatePresetTour",
                Body(tUse).Add("tptz:PresetTourToken", strTour).Add("tptz:Operation", szOperation));
}

int CHead::Modify(tagUse const& tUse, CEdit const& tTour)
{
    return Send("ModifyPresetTour", Body(tUse).Raw(tTour.As("tptz:PresetTour")));
}

// A tour begins to exist with its first preset.
int CHead::AddStop(tagUse const& tUse, Para const& anPara)
{
    if (anPara[2] < 0 || anPara[2] > g_nMostSeconds || anPara[3] < 0 || anPara[3] > g_nFull)
    {
        return eResultBadArgument;
    }
    std::string strPreset;
    if (const int nResult = PresetToken(tUse, static_cast<uint32_t>(anPara[1]), strPreset))
    {
        return nResult == eResultBadArgument ? int{eResultNotFound} : nResult;
    }
    const auto dwTour = static_cast<uint32_t>(anPara[0]);
    std::string strToken;
    pugi::xml_node tTour;
    CAnswer tAnswer;
    const int nFound = FindTour(tUse, dwTour, strToken, tTour, tAnswer);
    if (nFound != eResultOk && nFound != eResultNotFound)
    {
        return nFound;
    }
    const bool bNew = nFound == eResultNotFound;
    if (bNew)
    {
        tAnswer = m_pClient->Call({eService::PTZ, "CreatePresetTour", Body(tUse).Take()});
        strToken = Text(tAnswer.Body(), "PresetTourToken");
        if (strToken.empty())
        {
            return tAnswer ? int{eResultRefused} : tAnswer.Result();
        }
    }
    CEdit tEdit = bNew ? CEdit("PresetTour") : CEdit(tTour, "PresetTour");
    if (bNew)
    {
        // Its name tells its number to whoever logs in later.
        tEdit.SetAttribute("", "token", strToken);
        tEdit.Set("Name", "Tour " + std::to_string(dwTour));
        tEdit.Set("Status/State", "Idle");
        tEdit.Set("AutoStart", "false");
        tEdit.Set("StartingCondition", "");
        const std::lock_guard tLock(m_tMutex);
        m_tTourNumbers.Set(strToken, dwTour);
    }
    CXmlWriter tSpot;
    tSpot.Open("tt:TourSpot").Open("tt:PresetDetail").Add("tt:PresetToken", strPreset).Close();
    tSpot.Raw(anPara[3] == 0 ? std::string() : SpeedText(*tUse.pNode, anPara[3], "tt:Speed"));
    tSpot.Add("tt:StayTime", DurationText(int64_t{anPara[2]} * 1000));
    tEdit.Add(tSpot.Take());
    const int nResult = Modify(tUse, tEdit);
    if (nResult != eResultOk && bNew)
    {
        Send("RemovePresetTour", Body(tUse).Add("tptz:PresetTourToken", strToken)); // nothing is left of it
    }
    return nResult;
}

// nRounds: 0 for ever.
int CHead::RunTour(tagUse const& tUse, std::string const& strToken, pugi::xml_node tTour, int32_t nRounds)
{
    if (nRounds < 0)
    {
        return eResultBadArgument;
    }
    if (Word(tTour, "StartingCondition/RecurringTime") != static_cast<uint32_t>(nRounds))
    {
        CEdit tEdit(tTour, "PresetTour");
        tEdit.Remove("StartingCondition/RecurringTime");
        if (nRounds != 0)
        {
            tEdit.Set("StartingCondition/RecurringTime", std::to_string(nRounds));
        }
        if (const int nResult = Modify(tUse, tEdit))
        {
            return nResult;
        }
    }
    return Operate(tUse, strToken, "Start");
}

// Whoever started them.
void CHead::StopTours(tagUse const& tUse)
{
    if (tUse.pNode->dwTours == 0)
    {
        return;
    }
    const CAnswer tAnswer = AskTours(tUse);
    for (pugi::xml_node tTour : Children(tAnswer.Body(), "PresetTour"))
    {
        if (IsRunning(tTour))
        {
            Operate(tUse, std::string(Attribute(tTour, "token")), "Stop");
        }
    }
}
} // namespace onvifclient
