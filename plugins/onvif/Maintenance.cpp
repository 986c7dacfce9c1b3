// Restart and factory values, the device's log, and other files that it makes of itself.

#include "plugins/onvif/Maintenance.h"

#include "plugins/onvif/Convert.h"
#include "plugins/onvif/Operations.h"

#include "plugins/common/Text.h"

#include <algorithm>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr std::size_t g_nMostEntries = 20000;
constexpr std::size_t g_nMostFile = 64U << 20;

// --- files -----------------------------------------------------------------------------------------------------------

int Fetch(CLogin& tLogin, std::string_view strAddress, std::string& strFile)
{
    if (strAddress.empty())
    {
        return eResultNotSupported;
    }
    tagHttpAnswer tAnswer = tLogin.Client().Get(std::string(strAddress), g_nMostFile);
    strFile = std::move(tAnswer.strBody);
    return tAnswer.nResult != eResultOk                       ? tAnswer.nResult
           : tAnswer.nStatus == 200                           ? int{eResultOk}
           : tAnswer.nStatus == 401 || tAnswer.nStatus == 403 ? int{eResultWrongLogin}
                                                              : int{eResultRefused};
}

// A text in the answer itself, or under an address that GetSystemUris names.
int ReadLogText(CLogin& tLogin, char const* szType, std::string& strText)
{
    const CAnswer tAnswer =
        tLogin.Call({eService::Device, "GetSystemLog", CXmlWriter().Add("tds:LogType", szType).Take()});
    strText = onvif::Text(tAnswer.Body(), "SystemLog/String");
    if (!strText.empty() || IsSilent(tAnswer))
    {
        return tAnswer.Result();
    }
    const CAnswer tUris = tLogin.Call({eService::Device, "GetSystemUris"});
    for (pugi::xml_node tLog : Children(Child(tUris.Body(), "SystemLogUris"), "SystemLog"))
    {
        if (onvif::Text(tLog, "Type") == szType)
        {
            return Fetch(tLogin, onvif::Text(tLog, "Uri"), strText);
        }
    }
    return tAnswer.Result();
}

int ReadByUri(CLogin& tLogin, char const* szUri, std::string& strFile)
{
    const CAnswer tUris = tLogin.Call({eService::Device, "GetSystemUris"});
    return tUris ? Fetch(tLogin, onvif::Text(tUris.Body(), szUri), strFile) : tUris.Result();
}

// --- log entries -----------------------------------------------------------------------------------------------------

// The time that a line begins with: 2024-05-31T08:00:00Z, or with a blank between day and time. 0: it has none.
int64_t TimeOf(std::string_view strLine)
{
    constexpr std::size_t nLength = sizeof "2024-05-31T08:00:00" - 1;
    const std::size_t nBegin = strLine.starts_with('[') ? 1 : 0;
    if (strLine.size() < nBegin + nLength)
    {
        return 0;
    }
    std::size_t nEnd = strLine.find_first_of(" ]\t", nBegin + nLength);
    nEnd = nEnd == std::string_view::npos ? strLine.size() : nEnd;
    std::string strTime(strLine.substr(nBegin, nEnd - nBegin));
    strTime[10] = strTime[10] == ' ' ? 'T' : strTime[10];
    const auto llTime = ParseTime(strTime);
    return llTime ? *llTime : ParseTime(strTime.substr(0, nLength)).value_or(0);
}

// A line without a time belongs to the one before it.
void TakeLines(std::string_view strText, eLogType eType, std::vector<tagLogQueryResult>& atEntries)
{
    const std::size_t nFirst = atEntries.size();
    int64_t llTimeUs = 0;
    while (!strText.empty() && atEntries.size() < g_nMostEntries)
    {
        const std::size_t nEnd = std::min(strText.find_first_of("\r\n"), strText.size());
        const std::string_view strLine = strText.substr(0, nEnd);
        strText.remove_prefix(std::min(nEnd + 1, strText.size()));
        if (!strLine.empty())
        {
            const int64_t llThis = TimeOf(strLine);
            llTimeUs = llThis ? llThis : llTimeUs;
            tagLogQueryResult& t = atEntries.emplace_back();
            t.dwSize = sizeof t;
            t.dwType = static_cast<uint32_t>(eType);
            t.llTimeUs = llTimeUs;
            plugin::CopyText(t.szText, strLine);
        }
    }
    // Some devices have the newest entry first.
    if (nFirst < atEntries.size() && atEntries[nFirst].llTimeUs > atEntries.back().llTimeUs)
    {
        std::reverse(atEntries.begin() + static_cast<std::ptrdiff_t>(nFirst), atEntries.end());
    }
}

bool IsAsked(tagLogQueryFactor const& tFactor, tagLogQueryResult const& t)
{
    const auto fnSame = [](char a, char b) { return std::tolower(a & 0xFF) == std::tolower(b & 0xFF); };
    const std::string_view strText = t.szText;
    const auto fnHolds = [&](std::string const& strPart)
    {
        return strPart.empty() ||
               std::search(strText.begin(), strText.end(), strPart.begin(), strPart.end(), fnSame) != strText.end();
    };
    return (tFactor.llStartUs == 0 || t.llTimeUs >= tFactor.llStartUs) &&
           (tFactor.llEndUs == 0 || (t.llTimeUs != 0 && t.llTimeUs < tFactor.llEndUs)) &&
           fnHolds(plugin::Text(tFactor.szText)) && fnHolds(plugin::Text(tFactor.szUserName));
}

int ReadLog(CLogin& tLogin, uint32_t dwTypes, std::vector<tagLogQueryResult>& atEntries)
{
    int nResult = eResultNotSupported;
    for (const auto& [szType, eType] : {std::pair{"System", eLogSystem}, std::pair{"Access", eLogAccess}})
    {
        if (dwTypes != 0 && (dwTypes & static_cast<uint32_t>(eType)) == 0)
        {
            continue;
        }
        std::string strText;
        const int nThis = ReadLogText(tLogin, szType, strText);
        nResult = nResult == eResultOk ? nResult : nThis; // few devices have both
        TakeLines(strText, eType, atEntries);
    }
    std::ranges::stable_sort(atEntries, {}, &tagLogQueryResult::llTimeUs);
    return nResult;
}
} // namespace

int ReadDeviceFile(CLogin& tLogin, eFileKind eKind, std::string& strFile)
{
    switch (eKind)
    {
    case eFileLog:
        return ReadLogText(tLogin, "System", strFile);
    case eFileSupport:
    {
        const CAnswer tAnswer = tLogin.Call({eService::Device, "GetSystemSupportInformation"});
        strFile = onvif::Text(tAnswer.Body(), "SupportInformation/String");
        return !strFile.empty() || IsSilent(tAnswer) ? tAnswer.Result() : ReadByUri(tLogin, "SupportInfoUri", strFile);
    }
    case eFileConfiguration:
        return ReadByUri(tLogin, "SystemBackupUri", strFile);
    default:
        return eResultNotSupported;
    }
}

// --- entry points ----------------------------------------------------------------------------------------------------

int Serve(tagCall<&CClientProtocolBase::DeviceControl>, void* hLogin, eRemoteDeviceControl eControl)
{
    return With<CLogin>(
        hLogin,
        [&](CLogin const& tLogin) -> int
        {
            switch (eControl)
            {
            case eDeviceRestart:
                return tLogin.Call({eService::Device, "SystemReboot"}).Result();
            case eDeviceFactoryDefault:
            case eDeviceFactoryReset:
                return tLogin
                    .Call({eService::Device, "SetSystemFactoryDefault",
                           CXmlWriter()
                               .Add("tds:FactoryDefault", eControl == eDeviceFactoryReset ? "Hard" : "Soft")
                               .Take()})
                    .Result();
            case eDeviceShutDown: // ONVIF has no words for these two
            case eDeviceClearLog:
                return eResultNotSupported;
            }
            return eResultBadArgument;
        });
}

int Serve(tagCall<&CClientProtocolBase::HistoryLogQueryConnect>, void** phQuery, void* hLogin,
          tagLogQueryFactor* ptFactor)
{
    return With<CLogin>(hLogin,
                        [&](CLogin& tLogin) -> int
                        {
                            tagLogQueryFactor tFactor{};
                            if (!phQuery || Adapter_ProtocolSet::ReadRecord(tFactor, ptFactor) != eResultOk)
                            {
                                return eResultBadArgument;
                            }
                            std::vector<tagLogQueryResult> atFound;
                            if (const int nResult = ReadLog(tLogin, tFactor.dwTypes, atFound))
                            {
                                return nResult;
                            }
                            std::erase_if(atFound, [&](tagLogQueryResult const& t) { return !IsAsked(tFactor, t); });
                            *phQuery = Face().tHandles.Add(
                                std::make_shared<CLogQuery>(tLogin.shared_from_this(), std::move(atFound)));
                            return eResultOk;
                        });
}

int Serve(tagCall<&CClientProtocolBase::HistoryLogQueryNext>, void* hQuery, tagLogQueryResult* ptResult)
{
    return With<CLogQuery>(hQuery, [&](CLogQuery& tQuery) { return tQuery.Next(ptResult); });
}
} // namespace onvifclient
