// config: configuration blocks and camera parameters, read and written as JSON.

#include "tools/tessaro/Command.h"
#include "tools/tessaro/Failure.h"
#include "tools/tessaro/Session.h"
#include "tools/tessaro/records/Blocks.h"

#include <RecordTables.h>
#include <fstream>
#include <iostream>
#include <memory>

namespace tessaro
{
namespace
{
// What a block is about, and with it what its index counts.
enum class eOf
{
    Device,
    Channel,
    Input,
    Output,
    Camera ///< a channel, through ClientAdapter_GetIpcPara
};

struct tagBlock
{
    char const* szName;
    unsigned int dwType;
    eOf eWhat;
    bool bStreams; ///< one for the main and one for the sub stream

    tagRecord const& Record() const { return *(eWhat == eOf::Camera ? CameraRecord(dwType) : BlockRecord(dwType)); }
};
constexpr tagBlock g_atBlocks[] = {
    {"identity", eConfigIdentity, eOf::Device, false},  {"network", eConfigNetwork, eOf::Device, false},
    {"clock", eConfigClock, eOf::Device, false},        {"users", eConfigUsers, eOf::Device, false},
    {"storage", eConfigStorage, eOf::Device, false},    {"video", eConfigVideoEncoder, eOf::Channel, true},
    {"audio", eConfigAudioEncoder, eOf::Channel, true}, {"picture", eConfigPicture, eOf::Channel, false},
    {"overlay", eConfigOverlay, eOf::Channel, false},   {"motion", eConfigMotion, eOf::Channel, false},
    {"privacy", eConfigPrivacy, eOf::Channel, false},   {"schedule", eConfigSchedule, eOf::Channel, false},
    {"input", eConfigAlarmInput, eOf::Input, false},    {"output", eConfigAlarmOutput, eOf::Output, false},
    {"day-night", eCameraDayNight, eOf::Camera, false}, {"exposure", eCameraExposure, eOf::Camera, false},
    {"focus", eCameraFocus, eOf::Camera, false},
};

struct tagConfigOptions
{
    std::string strAddress;
    std::string strBlock;
    unsigned int dwIndex = 0;
    bool bSub = false;
    std::string strValue;
};

using Bytes = std::vector<unsigned char>;

tagBlock const& Find(std::string const& strName)
{
    std::string strAll;
    for (tagBlock const& t : g_atBlocks)
    {
        if (strName == t.szName)
        {
            return t;
        }
        strAll += (strAll.empty() ? "" : ", ") + std::string(t.szName);
    }
    throw CFailure(eExitUsage, fmt::format("there is no block \"{}\"", strName), "the blocks are " + strAll);
}

std::string What(tagBlock const& tBlock, unsigned int dwIndex)
{
    return tBlock.eWhat == eOf::Device ? tBlock.szName : fmt::format("{} {}", tBlock.szName, dwIndex);
}

int Read(CSession const& tSession, tagBlock const& tBlock, unsigned int dwIndex, bool bSub, Bytes& abyRecord)
{
    abyRecord.assign(tBlock.Record().nSize, 0);
    if (tBlock.eWhat != eOf::Camera)
    {
        return tSession.ReadBlock(static_cast<eConfigType>(tBlock.dwType), dwIndex,
                                  tBlock.bStreams ? (bSub ? eStreamSub : eStreamMain) : 0, abyRecord.data(),
                                  abyRecord.size());
    }
    const auto dwSize = static_cast<std::uint32_t>(abyRecord.size());
    std::memcpy(abyRecord.data(), &dwSize, sizeof dwSize);
    return ClientAdapter_GetIpcPara(tSession.Login(), static_cast<int>(dwIndex), tBlock.dwType, abyRecord.data(),
                                    dwSize);
}

int Write(CSession const& tSession, tagBlock const& tBlock, unsigned int dwIndex, bool bSub, Bytes& abyRecord)
{
    return tBlock.eWhat == eOf::Camera ? ClientAdapter_SetIpcPara(tSession.Login(), static_cast<int>(dwIndex),
                                                                  tBlock.dwType, abyRecord.data(), abyRecord.size())
                                       : tSession.WriteBlock(static_cast<eConfigType>(tBlock.dwType), dwIndex,
                                                             tBlock.bStreams ? (bSub ? eStreamSub : eStreamMain) : 0,
                                                             abyRecord.data(), abyRecord.size());
}

unsigned int Count(tagConfigIdentity const& tIdentity, eOf eWhat)
{
    return eWhat == eOf::Device   ? 1
           : eWhat == eOf::Input  ? tIdentity.dwAlarmInputs
           : eWhat == eOf::Output ? tIdentity.dwAlarmOutputs
                                  : tIdentity.dwChannels;
}

// Every block that the device has: what a restore needs.
json All(CSession const& tSession)
{
    tagConfigIdentity tIdentity{};
    Check(tSession.Read(eConfigIdentity, 0, tIdentity), "reading what the device has");
    json tResult = json::object();
    Bytes abyRecord;
    for (tagBlock const& tBlock : g_atBlocks)
    {
        for (unsigned int i = 0; i < Count(tIdentity, tBlock.eWhat); ++i)
        {
            for (const bool bSub : {false, true})
            {
                if ((!bSub || tBlock.bStreams) && Read(tSession, tBlock, i, bSub, abyRecord) == eResultOk)
                {
                    tResult[What(tBlock, i) + (bSub ? " sub" : "")] = ToJson(tBlock.Record(), abyRecord.data());
                }
            }
        }
    }
    return tResult;
}

int Get(tagContext& tContext, tagConfigOptions const& tOptions)
{
    tagBlock const* const ptBlock = tOptions.strBlock.empty() ? nullptr : &Find(tOptions.strBlock);
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("configuration");
    json tResult;
    if (!ptBlock)
    {
        tResult = All(tSession);
    }
    else
    {
        Bytes abyRecord;
        Check(Read(tSession, *ptBlock, tOptions.dwIndex, tOptions.bSub, abyRecord),
              "reading " + What(*ptBlock, tOptions.dwIndex));
        tResult = ToJson(ptBlock->Record(), abyRecord.data());
    }
    tContext.tOut.Fields(tResult);
    tContext.tOut.Result(tResult);
    return eExitDone;
}

// A whole JSON document, of a file or of standard input, or one value: "brightness=60".
json Wanted(std::string const& strValue)
{
    try
    {
        const auto nEqual = strValue.find('=');
        if (nEqual != std::string::npos && strValue[0] != '{')
        {
            const std::string strText = strValue.substr(nEqual + 1);
            json tValue = json::parse(strText, nullptr, false);
            tValue = tValue.is_discarded() ? json(strText) : tValue;
            json tResult = json::object();
            tResult[json::json_pointer("/" + strValue.substr(0, nEqual))] = tValue;
            return tResult;
        }
        if (strValue.starts_with('{'))
        {
            return json::parse(strValue);
        }
        std::ifstream tFile(strValue);
        if (strValue != "-" && !tFile)
        {
            throw CFailure(eExitUsage, fmt::format("{} can't be read", strValue));
        }
        return json::parse(strValue == "-" ? std::cin : tFile);
    }
    catch (json::exception const& tError)
    {
        throw CFailure(eExitUsage, fmt::format("{} is no JSON: {}", strValue, tError.what()));
    }
}

int Set(tagContext& tContext, tagConfigOptions const& tOptions)
{
    tagBlock const& tBlock = Find(tOptions.strBlock);
    const json tWanted = Wanted(tOptions.strValue);
    const CSession tSession(tContext, tOptions.strAddress);
    tSession.NeedsDevice("configuration");
    const std::string strWhat = What(tBlock, tOptions.dwIndex);
    Bytes abyRecord;
    Check(Read(tSession, tBlock, tOptions.dwIndex, tOptions.bSub, abyRecord), "reading " + strWhat);
    const json tBefore = ToJson(tBlock.Record(), abyRecord.data());
    Arena tArena;
    try
    {
        FromJson(tBlock.Record(), tWanted, abyRecord.data(), tArena);
    }
    catch (std::invalid_argument const& tError)
    {
        throw CFailure(eExitUsage, tError.what(),
                       fmt::format("tessaro config {} fields {}", tOptions.strAddress, tBlock.szName));
    }
    Check(Write(tSession, tBlock, tOptions.dwIndex, tOptions.bSub, abyRecord), "writing " + strWhat);
    Check(Read(tSession, tBlock, tOptions.dwIndex, tOptions.bSub, abyRecord), "reading " + strWhat + " again");
    const json tAfter = ToJson(tBlock.Record(), abyRecord.data());
    json tChanged = json::object();
    for (auto const& [strKey, tValue] : tAfter.items())
    {
        if (tBefore[strKey] != tValue)
        {
            tChanged[strKey] = {{"before", tBefore[strKey]}, {"now", tValue}};
            tContext.tOut.Say("{}: {} -> {}", strKey, tBefore[strKey].dump(), tValue.dump());
        }
    }
    tContext.tOut.Say("{}", tChanged.empty() ? "nothing has changed" : "written");
    tContext.tOut.Result({{"changed", tChanged}});
    return eExitDone;
}

void DescribeFields(tagRecord const& tRecord, std::string const& strBefore, json& tRows)
{
    for (tagField const& t : tRecord.atFields)
    {
        if ((t.dwFlags & g_bHidden) != 0)
        {
            continue;
        }
        const std::string strKey = strBefore + t.szKey;
        tRows.push_back({{"field", strKey}, {"meaning", t.szMeaning}, {"values", t.ptNames ? t.ptNames->List() : ""}});
        if (t.ptRecord)
        {
            DescribeFields(*t.ptRecord, strKey + (t.eKind == eShape::Record ? "." : "[]."), tRows);
        }
    }
}

int Fields(tagContext& tContext, tagConfigOptions const& tOptions)
{
    json tRows = json::array();
    if (tOptions.strBlock.empty())
    {
        for (tagBlock const& t : g_atBlocks)
        {
            tRows.push_back({{"block", t.szName},
                             {"index", t.eWhat == eOf::Device   ? ""
                                       : t.eWhat == eOf::Input  ? "input"
                                       : t.eWhat == eOf::Output ? "output"
                                                                : "channel"}});
        }
        tContext.tOut.Table({{"BLOCK", "block"}, {"INDEX", "index"}}, tRows);
        tContext.tOut.Result({{"blocks", tRows}});
        return eExitDone;
    }
    DescribeFields(Find(tOptions.strBlock).Record(), "", tRows);
    tContext.tOut.Table({{"FIELD", "field"}, {"MEANING", "meaning"}, {"VALUES", "values"}}, tRows);
    tContext.tOut.Result({{"fields", tRows}});
    return eExitDone;
}
} // namespace

void DeclareConfig(CLine& tLine)
{
    auto pt = std::make_shared<tagConfigOptions>();
    const auto Add =
        [&](char const* szName, char const* szHelp, int (*pfn)(tagContext&, tagConfigOptions const&), bool bBlock)
    {
        CLine tAction = tLine.Add(szName, szHelp, [pt, pfn](tagContext& t) { return pfn(t, *pt); });
        tAction.Option("block", pt->strBlock, "which block; tessaro config ADDRESS fields lists them").Needed(bBlock);
        return tAction;
    };
    tLine.Option("address", pt->strAddress, g_szAddressHelp).Needed();
    tLine.NeedsCommand();
    CLine tGet = Add("get", "read a block, or all of them", &Get, false);
    CLine tSet = Add("set", "write a block: read it, change what is named, write it back", &Set, true);
    Add("fields", "what the fields of a block mean, from the interface's own words; without a block: the blocks",
        &Fields, false);
    for (CLine* const pAction : {&tGet, &tSet})
    {
        pAction->Option("--index", pt->dwIndex, "which channel, input or output, from 0").Value("N");
        pAction->Flag("--sub", pt->bSub, "of the sub stream");
    }
    tSet.Option("value", pt->strValue,
                "field=value, or JSON: '{...}', a file's name, or - for standard input; passwords of users so, never "
                "on the command line")
        .Needed();
}
} // namespace tessaro
