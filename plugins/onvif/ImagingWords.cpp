#include "plugins/onvif/ImagingWords.h"

#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Edit.h"
#include "plugins/onvif/Profiles.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace onvifclient
{
using namespace onvif;

namespace
{
// The range that a level has where the device doesn't tell.
tagSpan UsualSpan(std::string_view strPath)
{
    return strPath.ends_with("BoundaryOffset")                                            ? tagSpan{-1, 1}
           : strPath.ends_with("NoiseReduction/Level") || strPath == "Focus/DefaultSpeed" ? tagSpan{0, 1}
                                                                                          : tagSpan{0, 100};
}

std::string_view Name(std::string_view strNames, uint32_t dwWhich)
{
    for (; dwWhich > 0; --dwWhich)
    {
        const std::size_t nEnd = strNames.find(' ');
        strNames = nEnd == std::string_view::npos ? std::string_view{} : strNames.substr(nEnd + 1);
    }
    return strNames.substr(0, strNames.find(' '));
}

uint32_t NameIndex(std::string_view strNames, std::string_view strName)
{
    for (uint32_t i = 0; !Name(strNames, i).empty(); ++i)
    {
        if (Name(strNames, i) == strName)
        {
            return i;
        }
    }
    return 0;
}

// Whether the options, or where they say nothing the settings, know this name.
bool TakesName(tagImagingPlace const& tAt, tagSettings const& t, std::string_view strName)
{
    const std::string_view strOption = tAt.szOption;
    const std::size_t nSlash = strOption.rfind('/');
    const bool bWhole = nSlash == std::string_view::npos;
    const pugi::xml_node tList = bWhole ? t.Options() : Find(t.Options(), strOption.substr(0, nSlash));
    const std::string_view strList = bWhole ? strOption : strOption.substr(nSlash + 1);
    return !strName.empty() &&
           (!Children(tList, strList).empty() ? Offers(tList, strList, strName) : !Text(t.Now(), tAt.szPath).empty());
}

std::string GroupOf(tagImagingWord const& t)
{
    const std::string_view strPath = t.tAt.szPath;
    return std::string(strPath.substr(0, strPath.find('/')));
}
} // namespace

std::string SourceToken(tagChannel const& tChannel)
{
    return CXmlWriter().Add("timg:VideoSourceToken", tChannel.strSource).Take();
}

int Ask(CClient& tClient, tagChannel const& tChannel, tagSettings& t)
{
    t.tSettings = tClient.Call({eService::Imaging, "GetImagingSettings", SourceToken(tChannel)});
    if (!t.tSettings)
    {
        return t.tSettings.Result();
    }
    t.tOptions = tClient.Call({eService::Imaging, "GetOptions", SourceToken(tChannel)});
    return IsSilent(t.tOptions) ? t.tOptions.Result() : int{eResultOk}; // a device may lack options
}

uint32_t ReadWord(tagImagingPlace const& tAt, tagSettings const& t)
{
    const std::string_view strText = Text(t.Now(), tAt.szPath);
    if (tAt.eAs == eUnit::Names)
    {
        return NameIndex(tAt.szNames, strText);
    }
    if (tAt.eAs == eUnit::Duration)
    {
        return static_cast<uint32_t>(std::clamp<int64_t>(ParseDuration(strText).value_or(0) / 1000, 0, 3600));
    }
    const auto dValue = Number(t.Now(), tAt.szPath);
    const tagSpan tSpan = SpanOf(t.Options(), tAt.szOption).value_or(UsualSpan(tAt.szPath));
    const double dScale = tAt.eAs == eUnit::Hundredths ? 100 : 1;
    return !dValue                     ? 0
           : tAt.eAs == eUnit::Percent ? tSpan.Percent(*dValue)
           : tAt.eAs == eUnit::Opening ? g_dwWhole - static_cast<uint32_t>(tSpan.Share(*dValue, g_dwWhole))
                                       : static_cast<uint32_t>(std::clamp(*dValue * dScale + 0.5, 0.0, 4e9));
}

std::optional<std::string> WordText(tagImagingPlace const& tAt, tagSettings const& t, uint32_t dwValue)
{
    if (tAt.eAs == eUnit::Names)
    {
        const std::string strName(Name(tAt.szNames, dwValue));
        return TakesName(tAt, t, strName) ? std::optional(strName) : std::nullopt;
    }
    const auto tOffered = SpanOf(t.Options(), tAt.szOption);
    if (!tOffered && Text(t.Now(), tAt.szPath).empty())
    {
        return std::nullopt; // the camera lacks it
    }
    const tagSpan tSpan = tOffered.value_or(UsualSpan(tAt.szPath));
    const double dValue = tAt.eAs == eUnit::Hundredths ? dwValue / 100.0 : dwValue;
    switch (tAt.eAs)
    {
    case eUnit::Percent:
        return dwValue <= 100 ? std::optional(NumberText(tSpan.AtPercent(dwValue))) : std::nullopt;
    case eUnit::Opening:
        return dwValue <= g_dwWhole ? std::optional(NumberText(tSpan.At(g_dwWhole - dwValue, g_dwWhole)))
                                    : std::nullopt;
    case eUnit::Duration:
        return DurationText(int64_t{dwValue} * 1000);
    default:
        return !tOffered || tOffered->Holds(dValue) ? std::optional(NumberText(dValue)) : std::nullopt;
    }
}

int WriteWords(CClient& tClient, tagChannel const& tChannel, tagSettings const& tSettings,
               std::vector<tagImagingWord> const& atWords)
{
    std::set<std::string> strGroups;
    for (tagImagingWord const& t : atWords)
    {
        if (t.dwAfter != t.dwBefore)
        {
            strGroups.insert(GroupOf(t));
        }
    }
    if (strGroups.empty())
    {
        return eResultOk;
    }
    CEdit tEdit(tSettings.Now(), "ImagingSettings");
    for (pugi::xml_node tChild : tSettings.Now().children())
    {
        if (!strGroups.contains(std::string(LocalName(tChild))))
        {
            tEdit.Remove(LocalName(tChild));
        }
    }
    for (tagImagingWord const& t : atWords)
    {
        // A group that wasn't there needs its mode too.
        const bool bChanged = t.dwAfter != t.dwBefore;
        const auto strText = WordText(t.tAt, tSettings, t.dwAfter);
        if (bChanged && !strText)
        {
            return eResultBadArgument;
        }
        if (strText && (bChanged || (t.tAt.eAs == eUnit::Names && strGroups.contains(GroupOf(t)))))
        {
            tEdit.Set(t.tAt.szPath, *strText);
        }
    }
    const CAnswer tAnswer = tClient.Call({eService::Imaging, "SetImagingSettings",
                                          CXmlWriter()
                                              .Add("timg:VideoSourceToken", tChannel.strSource)
                                              .Raw(tEdit.As("timg:ImagingSettings"))
                                              .Add("timg:ForcePersistence", true)
                                              .Take()});
    return tAnswer.Result();
}
} // namespace onvifclient
