#include "rtsp/Text.h"

#include <algorithm>

namespace rtsp
{
std::string Lower(std::string_view strText)
{
    std::string strLower(strText);
    std::transform(strLower.begin(), strLower.end(), strLower.begin(), &LowerCase);
    return strLower;
}

std::string Upper(std::string_view strText)
{
    std::string strUpper(strText);
    std::transform(strUpper.begin(), strUpper.end(), strUpper.begin(), &UpperCase);
    return strUpper;
}

bool EqualsInAnyCase(std::string_view strOne, std::string_view strOther)
{
    return std::equal(strOne.begin(), strOne.end(), strOther.begin(), strOther.end(),
                      [](char c, char cOther) { return LowerCase(c) == LowerCase(cOther); });
}

bool BeginsInAnyCase(std::string_view strText, std::string_view strBeginning)
{
    return EqualsInAnyCase(strText.substr(0, strBeginning.size()), strBeginning);
}

std::string_view Trim(std::string_view strText)
{
    constexpr std::string_view strBlanks = " \t\r\n";
    const std::size_t nBegin = std::min(strText.find_first_not_of(strBlanks), strText.size());
    return strText.substr(nBegin, strText.find_last_not_of(strBlanks) + 1 - nBegin);
}

std::string_view CutFirst(std::string_view& strRest, char cSeparator)
{
    const std::size_t nEnd = std::min(strRest.find(cSeparator), strRest.size());
    const std::string_view strFirst = strRest.substr(0, nEnd);
    strRest.remove_prefix(std::min(nEnd + 1, strRest.size()));
    return strFirst;
}

tagParameter SplitParameter(std::string_view strText)
{
    tagParameter tParameter;
    tParameter.strName = Trim(CutFirst(strText, '='));
    tParameter.strValue = Trim(strText);
    if (tParameter.strValue.size() >= 2 && tParameter.strValue.front() == '"' && tParameter.strValue.back() == '"')
    {
        tParameter.strValue = Trim(tParameter.strValue.substr(1, tParameter.strValue.size() - 2));
    }
    return tParameter;
}
} // namespace rtsp
