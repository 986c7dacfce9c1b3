#include "plugins/device/Files.h"

#include "plugins/device/Device.h"
#include "plugins/device/Text.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace device
{
namespace
{
constexpr std::size_t g_nPictures = 100; // kept at most
constexpr std::string_view g_strConfigurationMark = "# configuration of a simulated device";

// Files that the device makes when they are asked for.
constexpr struct
{
    uint32_t dwKind;
    char const* szName;
} g_atMade[] = {{eFileConfiguration, "configuration.txt"}, {eFileLog, "log.txt"}, {eFileSupport, "support.txt"}};

// 1.2.3 becomes 1.2.4.
std::string NextVersion(std::string const& strVersion)
{
    const auto nPoint = strVersion.rfind('.');
    const std::size_t nNumber = nPoint == std::string::npos ? 0 : nPoint + 1;
    unsigned dwNumber = 0;
    std::from_chars(strVersion.data() + nNumber, strVersion.data() + strVersion.size(), dwNumber);
    return strVersion.substr(0, nNumber) + std::to_string(dwNumber + 1);
}

// What stands after "version=" near the begin of a firmware file; empty: nothing does.
std::string VersionIn(std::string_view strFile)
{
    constexpr std::string_view strMark = "version=";
    const auto nMark = strFile.substr(0, 256).find(strMark);
    if (nMark == std::string_view::npos)
    {
        return {};
    }
    const std::string_view strRest = strFile.substr(nMark + strMark.size(), 63);
    return std::string(strRest.substr(0, strRest.find_first_not_of("0123456789.")));
}
} // namespace

void CFiles::Add(uint32_t dwKind, uint32_t dwChannel, std::string const& strName, SharedBytes pData)
{
    std::erase_if(m_atFiles,
                  [&](tagFile const& t) { return t.tEntry.dwKind == dwKind && Text(t.tEntry.szFile) == strName; });
    tagFile tFile{{}, std::move(pData)};
    tFile.tEntry.dwSize = sizeof tFile.tEntry;
    tFile.tEntry.dwKind = dwKind;
    tFile.tEntry.dwChannel = dwChannel;
    tFile.tEntry.llStartUs = tFile.tEntry.llEndUs = m_tDevice.Clock().NowUs();
    tFile.tEntry.ullLength = tFile.pData->size();
    CopyText(tFile.tEntry.szFile, strName);
    m_atFiles.push_back(std::move(tFile));
}

void CFiles::KeepPicture(uint32_t dwChannel, std::string const& strName, SharedBytes pData)
{
    Add(eFilePicture, dwChannel, strName, std::move(pData));
    if (std::ranges::count(m_atFiles, static_cast<uint32_t>(eFilePicture),
                           [](tagFile const& t) { return t.tEntry.dwKind; }) > static_cast<std::ptrdiff_t>(g_nPictures))
    {
        m_atFiles.erase(std::ranges::find(m_atFiles, static_cast<uint32_t>(eFilePicture),
                                          [](tagFile const& t) { return t.tEntry.dwKind; }));
    }
}

SharedBytes CFiles::Find(uint32_t dwKind, std::string const& strName) const
{
    for (tagFile const& t : m_atFiles)
    {
        if ((dwKind == eFileAny || t.tEntry.dwKind == dwKind) && Text(t.tEntry.szFile) == strName)
        {
            return t.pData;
        }
    }
    for (auto const& tMade : g_atMade)
    {
        if ((strName.empty() && dwKind == tMade.dwKind) ||
            (strName == tMade.szName && (dwKind == eFileAny || dwKind == tMade.dwKind)))
        {
            return ToBytes(tMade.dwKind == eFileConfiguration ? Configuration()
                           : tMade.dwKind == eFileLog         ? m_tDevice.Part<CDeviceLog>().Text()
                                                      : "firmware " + m_tDevice.Firmware() + "\n" + Configuration() +
                                                            m_tDevice.Part<CDeviceLog>().Text());
        }
    }
    return nullptr;
}

int CFiles::Query(tagFileQueryFactor const& tFactor, std::vector<tagFileQueryResult>& atFound) const
{
    if (tFactor.dwKind > eFileAudio)
    {
        return eResultBadArgument;
    }
    const bool bOfChannel = tFactor.dwKind <= eFilePicture;
    if (bOfChannel && tFactor.dwChannel >= m_tDevice.Channels())
    {
        return eResultNoChannel;
    }
    if (tFactor.dwKind == eFileRecording || tFactor.dwKind == eFileAny)
    {
        for (tagRecording const& t : m_tDevice.Part<CStorage>().Find(
                 {uint64_t{1} << tFactor.dwChannel, tFactor.dwTypes, 0, tFactor.llStartUs, tFactor.llEndUs, false, {}}))
        {
            tagFileQueryResult& tEntry = atFound.emplace_back();
            tEntry = {sizeof tEntry, eFileRecording, t.dwChannel,         t.dwType, t.llStartUs,
                      t.llEndUs,     t.ullLength,    t.bLocked ? 1U : 0U, 0,        {}};
            CopyText(tEntry.szFile, t.File());
        }
    }
    const auto fnWanted = [&](tagFileQueryResult const& t)
    {
        return (tFactor.dwKind == eFileAny || tFactor.dwKind == t.dwKind) &&
               (t.dwKind != eFilePicture || t.dwChannel == tFactor.dwChannel) &&
               (tFactor.llStartUs == 0 || t.llStartUs >= tFactor.llStartUs) &&
               (tFactor.llEndUs == 0 || t.llStartUs < tFactor.llEndUs);
    };
    for (tagFile const& t : m_atFiles)
    {
        if (fnWanted(t.tEntry))
        {
            atFound.push_back(t.tEntry);
        }
    }
    for (auto const& tMade : g_atMade)
    {
        tagFileQueryResult tEntry{};
        tEntry.dwSize = sizeof tEntry;
        tEntry.dwKind = tMade.dwKind;
        tEntry.llStartUs = tEntry.llEndUs = m_tDevice.Clock().NowUs();
        CopyText(tEntry.szFile, tMade.szName);
        if (fnWanted(tEntry))
        {
            atFound.push_back(tEntry);
        }
    }
    std::ranges::stable_sort(atFound, {}, &tagFileQueryResult::llStartUs);
    return eResultOk;
}

bool CFiles::CanReceive(uint32_t dwKind)
{
    return dwKind == eFileFirmware || dwKind == eFileConfiguration || dwKind == eFileAudio;
}

int CFiles::Receive(tagCaller const& tCaller, uint32_t dwKind, std::string const& strName, SharedBytes const& pData)
{
    const std::string_view strFile(reinterpret_cast<char const*>(pData->data()), pData->size());
    if (!CanReceive(dwKind))
    {
        return eResultNotSupported;
    }
    if (strFile.empty())
    {
        return eResultRefused;
    }
    if (dwKind == eFileConfiguration)
    {
        return Restore(tCaller, std::string(strFile)) ? int{eResultOk} : int{eResultRefused};
    }
    if (dwKind == eFileFirmware)
    {
        const std::string strVersion = VersionIn(strFile);
        m_tDevice.SetFirmware(strVersion.empty() ? NextVersion(m_tDevice.Firmware()) : strVersion);
        m_tDevice.Part<CDeviceLog>().Add(eLogSystem, "firmware " + m_tDevice.Firmware(), &tCaller);
        m_tDevice.Restart(eRestartFirmware, 2000000);
        return eResultOk;
    }
    Add(dwKind, 0, strName.empty() ? "sound-" + std::to_string(m_atFiles.size()) : strName, pData);
    return eResultOk;
}

// Every setting as "config/..." or "camera/..." and its bytes.
std::string CFiles::Configuration() const
{
    std::string strAll(g_strConfigurationMark);
    strAll += '\n';
    for (auto const& [strKey, abyValue] : m_tDevice.Store().All())
    {
        if (strKey.starts_with("config/") || strKey.starts_with("camera/"))
        {
            strAll += strKey + ' ' + ToHex(abyValue) + '\n';
        }
    }
    return strAll;
}

bool CFiles::Restore(tagCaller const& tCaller, std::string const& strText)
{
    std::istringstream tLines(strText);
    std::string strLine;
    std::getline(tLines, strLine);
    if (strLine != g_strConfigurationMark)
    {
        return false;
    }
    std::vector<std::pair<std::string, CStore::Bytes>> atSettings;
    for (std::string strKey, strHex; tLines >> strKey >> strHex;)
    {
        CStore::Bytes abyValue;
        if ((!strKey.starts_with("config/") && !strKey.starts_with("camera/")) || !FromHex(strHex, abyValue))
        {
            return false;
        }
        atSettings.emplace_back(strKey, std::move(abyValue));
    }
    m_tDevice.Store().RemoveAll("config/");
    m_tDevice.Store().RemoveAll("camera/");
    for (auto& [strKey, abyValue] : atSettings)
    {
        m_tDevice.Store().Put(strKey, std::move(abyValue));
    }
    m_tDevice.Part<CConfiguration>().Changed(eConfigIdentity, 0, &tCaller);
    return true;
}
} // namespace device
