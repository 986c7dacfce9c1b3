// Reads a fleet file:
//
//   state = "state"               # a folder, relative to this file: devices keep their state there over a restart
//   default = true                # whether a device stands at every address that isn't named here
//
//   [[device]]
//   address = "camera-{}"         # {} is a number from 0, with count
//   count = 100
//   port = 8000                   # answers there alone; without: at every port
//   name, model, serial, firmware, time_zone = "..."
//   channels = 8
//   audio = true                  # its channels have sound
//   ptz = 2                       # so many channels move, from the first on
//   main = { codec = "h264", width = 1280, height = 720, rate = 25 }
//   sub = { codec = "h264", width = 640, height = 360, rate = 15 }
//   inputs, outputs, serial_ports, disks, disk_gib, screens = 4
//   recordings = { count = 144, every = 600, seconds = 60 }
//   end_lost_logins = true        # a login that is lost isn't tried again
//   [[device.channel]]            # for one channel after the other, in place of what stands above
//   main, sub, audio, ptz
//   [[device.user]]               # in place of admin and viewer
//   name = "guard", password = "...", level = "operator"
//   [[device.fault]]              # from its begin on
//   kind = "busy"; channel, ms, count, value, offset_us, user
//   [device.onvif]                # for tools/onvif_device alone: its quirks

#include "plugins/device/ClipSizes.h"
#include "plugins/device/Fleet.h"
#include "plugins/device/Text.h"

#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <toml++/toml.h>

namespace device
{
namespace
{
struct tagWord
{
    char const* szName;
    uint32_t dwValue;
};
constexpr tagWord g_atCodecs[] = {{"h264", eCodecH264}, {"h265", eCodecH265}};
constexpr tagWord g_atLevels[] = {
    {"viewer", eUserViewer}, {"operator", eUserOperator}, {"administrator", eUserAdministrator}};
constexpr tagWord g_atFaults[] = {{"lock_out", eFaultLockOut},
                                  {"busy", eFaultBusy},
                                  {"slow", eFaultSlow},
                                  {"hang", eFaultHang},
                                  {"drop", eFaultDrop},
                                  {"restart", eFaultRestart},
                                  {"clock_drift", eFaultClockDrift},
                                  {"clock_jump", eFaultClockJump},
                                  {"stall", eFaultStall},
                                  {"lose", eFaultLose},
                                  {"damage", eFaultDamage},
                                  {"disk_full", eFaultDiskFull},
                                  {"disk_error", eFaultDiskError},
                                  {"video_loss", eFaultVideoLoss},
                                  {"motion", eFaultMotion},
                                  {"tamper", eFaultTamper},
                                  {"alarm_input", eFaultAlarmInput},
                                  {"force_off", eFaultForceOff},
                                  {"register", eFaultRegister}};

[[noreturn]] void Fail(toml::node const& tNode, std::string const& strWhy)
{
    std::ostringstream tText;
    tText << "line " << tNode.source().begin.line << ": " << strWhy;
    throw std::runtime_error(tText.str());
}

// A table of which every key must be asked for: one that nobody knows is a slip of the pen.
class CTable
{
public:
    explicit CTable(toml::node const& tNode) : m_tNode(tNode)
    {
        if (!tNode.is_table())
        {
            Fail(tNode, "a table is expected");
        }
    }
    ~CTable() noexcept(false)
    {
        if (std::uncaught_exceptions() == m_nExceptions)
        {
            for (auto const& [tKey, tValue] : *m_tNode.as_table())
            {
                if (std::ranges::find(m_astrAsked, tKey.str()) == m_astrAsked.end())
                {
                    Fail(tValue, "unknown key " + std::string(tKey.str()));
                }
            }
        }
    }
    CTable(CTable const&) = delete;
    CTable& operator=(CTable const&) = delete;

    toml::node const* Ask(char const* szKey)
    {
        m_astrAsked.emplace_back(szKey);
        return m_tNode.as_table()->get(szKey);
    }
    void Read(char const* szKey, std::string& strValue)
    {
        if (toml::node const* const pNode = Ask(szKey))
        {
            const auto tValue = pNode->value_exact<std::string>();
            strValue = tValue ? *tValue : (Fail(*pNode, std::string(szKey) + " is no text"), "");
        }
    }
    void Read(char const* szKey, bool& bValue)
    {
        if (toml::node const* const pNode = Ask(szKey))
        {
            const auto tValue = pNode->value_exact<bool>();
            bValue = tValue ? *tValue : (Fail(*pNode, std::string(szKey) + " is neither true nor false"), false);
        }
    }
    template <class Integer>
    void Read(char const* szKey, Integer& nValue, int64_t llLeast, int64_t llMost)
    {
        if (toml::node const* const pNode = Ask(szKey))
        {
            const auto tValue = pNode->value_exact<int64_t>();
            if (!tValue || *tValue < llLeast || *tValue > llMost)
            {
                Fail(*pNode, std::string(szKey) + " is no number from " + std::to_string(llLeast) + " to " +
                                 std::to_string(llMost));
            }
            nValue = static_cast<Integer>(*tValue);
        }
    }
    template <std::size_t nWords>
    void Read(char const* szKey, tagWord const (&atWords)[nWords], uint32_t& dwValue)
    {
        std::string strWord;
        Read(szKey, strWord);
        const auto it = std::ranges::find(atWords, strWord, [](tagWord const& t) { return std::string(t.szName); });
        if (it != std::end(atWords))
        {
            dwValue = it->dwValue;
        }
        else if (!strWord.empty())
        {
            Fail(m_tNode, std::string(szKey) + " can't be " + strWord);
        }
    }
    // A table whose keys somebody else knows: texts, numbers, true and false.
    void Read(char const* szKey, std::map<std::string, std::string>& tValues)
    {
        toml::node const* const pNode = Ask(szKey);
        if (pNode && !pNode->is_table())
        {
            Fail(*pNode, std::string(szKey) + " is no table");
        }
        for (auto const& [tKey, tValue] : pNode ? *pNode->as_table() : toml::table{})
        {
            std::string& strValue = tValues[std::string(tKey.str())];
            if (const auto tText = tValue.value_exact<std::string>())
            {
                strValue = *tText;
            }
            else if (const auto tFlag = tValue.value_exact<bool>())
            {
                strValue = *tFlag ? "true" : "false";
            }
            else if (const auto tNumber = tValue.value_exact<int64_t>())
            {
                strValue = std::to_string(*tNumber);
            }
            else
            {
                Fail(tValue, std::string(tKey.str()) + " is no text, no number and neither true nor false");
            }
        }
    }
    template <class F>
    void ForEach(char const* szKey, F fnEach)
    {
        toml::node const* const pNode = Ask(szKey);
        if (pNode && !pNode->is_array())
        {
            Fail(*pNode, std::string(szKey) + " is no list");
        }
        for (std::size_t i = 0; pNode && i < pNode->as_array()->size(); ++i)
        {
            CTable tEntry(*pNode->as_array()->get(i));
            fnEach(tEntry, i);
        }
    }

private:
    toml::node const& m_tNode;
    std::vector<std::string> m_astrAsked;
    int m_nExceptions = std::uncaught_exceptions();
};

void ReadStream(CTable& tParent, char const* szKey, tagVideoBlueprint& tVideo)
{
    if (toml::node const* const pNode = tParent.Ask(szKey))
    {
        CTable tTable(*pNode);
        uint32_t dwRate = tVideo.dwFrameRate / 1000;
        tTable.Read("codec", g_atCodecs, tVideo.dwCodec);
        tTable.Read("width", tVideo.dwWidth, 16, 8192);
        tTable.Read("height", tVideo.dwHeight, 16, 8192);
        tTable.Read("rate", dwRate, 1, 60);
        tVideo.dwFrameRate = dwRate * 1000;
        if (!HasClip(tVideo.dwCodec, tVideo.dwWidth, tVideo.dwHeight))
        {
            Fail(*pNode, std::string("there is no picture of this codec and size for ") + szKey);
        }
    }
}

void ReadChannel(CTable& tTable, tagChannelBlueprint& tChannel)
{
    ReadStream(tTable, "main", tChannel.atStreams[0]);
    ReadStream(tTable, "sub", tChannel.atStreams[1]);
    tTable.Read("audio", tChannel.bAudio);
}

tagDeviceFault ReadFault(CTable& tTable)
{
    tagDeviceFault tFault{};
    tFault.dwSize = sizeof tFault;
    std::string strUser;
    tTable.Read("kind", g_atFaults, tFault.dwFault);
    tTable.Read("channel", tFault.dwChannel, 0, 1023);
    tTable.Read("ms", tFault.dwMilliseconds, 0, INT32_MAX);
    tTable.Read("count", tFault.dwCount, 0, INT32_MAX);
    tTable.Read("value", tFault.dwValue, INT32_MIN, INT32_MAX);
    tTable.Read("offset_us", tFault.llOffsetUs, INT64_MIN, INT64_MAX);
    tTable.Read("user", strUser);
    CopyText(tFault.szUserName, strUser);
    return tFault;
}

tagDeviceBlueprint ReadDevice(CTable& tTable, uint32_t& dwCount)
{
    tagDeviceBlueprint tBlueprint = DefaultBlueprint();
    uint32_t dwChannels = 4;
    uint32_t dwPTZ = 2;
    uint32_t dwGibibytes = 4096;
    tagChannelBlueprint tChannel;
    tTable.Read("address", tBlueprint.strAddress);
    tTable.Read("count", dwCount, 1, 10000);
    tTable.Read("port", tBlueprint.dwPort, 1, 65535);
    tTable.Read("name", tBlueprint.strName);
    tTable.Read("model", tBlueprint.strModel);
    tTable.Read("serial", tBlueprint.strSerialNumber);
    tTable.Read("firmware", tBlueprint.strFirmware);
    tTable.Read("time_zone", tBlueprint.strTimeZone);
    tTable.Read("channels", dwChannels, 1, 64);
    tTable.Read("ptz", dwPTZ, 0, 64);
    tTable.Read("inputs", tBlueprint.dwInputs, 0, 32);
    tTable.Read("outputs", tBlueprint.dwOutputs, 0, 32);
    tTable.Read("serial_ports", tBlueprint.dwSerialPorts, 0, 16);
    tTable.Read("disks", tBlueprint.dwDisks, 0, 16);
    tTable.Read("disk_gib", dwGibibytes, 1, 1 << 20);
    tTable.Read("screens", tBlueprint.dwScreens, 0, 16);
    tTable.Read("end_lost_logins", tBlueprint.bLoginsEnd);
    tTable.Read("onvif", tBlueprint.tOnvif);
    tBlueprint.ullDiskBytes = uint64_t{dwGibibytes} << 30;
    ReadChannel(tTable, tChannel);
    tBlueprint.atChannels.assign(dwChannels, tChannel);
    for (uint32_t i = 0; i < dwChannels; ++i)
    {
        tBlueprint.atChannels[i].bPTZ = i < dwPTZ;
    }
    tTable.ForEach("channel",
                   [&](CTable& tEntry, std::size_t i)
                   {
                       tBlueprint.atChannels.resize(std::max(tBlueprint.atChannels.size(), i + 1), tChannel);
                       ReadChannel(tEntry, tBlueprint.atChannels[i]);
                       tEntry.Read("ptz", tBlueprint.atChannels[i].bPTZ);
                   });
    tTable.ForEach("user",
                   [&](CTable& tEntry, std::size_t i)
                   {
                       tagUserBlueprint tUser;
                       tEntry.Read("name", tUser.strName);
                       tEntry.Read("password", tUser.strPassword);
                       tEntry.Read("level", g_atLevels, tUser.dwLevel);
                       tBlueprint.atUsers.resize(i);
                       tBlueprint.atUsers.push_back(tUser);
                   });
    tTable.ForEach("fault", [&](CTable& tEntry, std::size_t) { tBlueprint.atFaults.push_back(ReadFault(tEntry)); });
    if (toml::node const* const pNode = tTable.Ask("recordings"))
    {
        CTable tRecordings(*pNode);
        tRecordings.Read("count", tBlueprint.tRecordings.dwCount, 0, 1000000);
        tRecordings.Read("every", tBlueprint.tRecordings.dwEverySeconds, 1, 86400);
        tRecordings.Read("seconds", tBlueprint.tRecordings.dwSeconds, 1, 86400);
    }
    return tBlueprint;
}

std::string Numbered(std::string strText, uint32_t n)
{
    const auto nPlace = strText.find("{}");
    return nPlace == std::string::npos ? strText : strText.replace(nPlace, 2, std::to_string(n));
}

void ReadAll(toml::table const& tRoot, std::filesystem::path const& tFolder, tagFleetFile& tFile)
{
    CTable tTable(tRoot);
    std::string strState;
    tTable.Read("state", strState);
    tTable.Read("default", tFile.bDefault);
    if (!strState.empty())
    {
        std::filesystem::create_directories(tFolder / strState);
    }
    tTable.ForEach("device",
                   [&](CTable& tEntry, std::size_t)
                   {
                       uint32_t dwCount = 1;
                       const tagDeviceBlueprint tBlueprint = ReadDevice(tEntry, dwCount);
                       if (tBlueprint.strAddress.empty())
                       {
                           throw std::runtime_error("a device has no address");
                       }
                       for (uint32_t i = 0; i < dwCount; ++i)
                       {
                           tagDeviceBlueprint tOne = tBlueprint;
                           tOne.strAddress = Numbered(tBlueprint.strAddress, i);
                           tOne.strName = Numbered(tBlueprint.strName, i);
                           tOne.strSerialNumber = Numbered(tBlueprint.strSerialNumber, i);
                           if (!strState.empty())
                           {
                               std::string strName = tOne.strAddress + '_' + std::to_string(tOne.dwPort);
                               std::ranges::replace(strName, '/', '_');
                               tOne.strStatePath = (tFolder / strState / strName).string();
                           }
                           tFile.atDevices.push_back(std::move(tOne));
                       }
                   });
}
} // namespace

uint32_t FaultByName(std::string const& strName)
{
    const auto it = std::ranges::find(g_atFaults, strName, [](tagWord const& t) { return std::string(t.szName); });
    return it == std::end(g_atFaults) ? uint32_t{eFaultNone} : it->dwValue;
}

tagFleetFile ReadFleetFile(std::string const& strPath)
{
    tagFleetFile tFile;
    try
    {
        ReadAll(toml::parse_file(strPath), std::filesystem::path(strPath).parent_path(), tFile);
    }
    catch (toml::parse_error const& tError)
    {
        std::ostringstream tText;
        tText << strPath << ": line " << tError.source().begin.line << ": " << tError.description();
        throw std::runtime_error(tText.str());
    }
    catch (std::exception const& tError)
    {
        throw std::runtime_error(strPath + ": " + tError.what());
    }
    return tFile;
}
} // namespace device
