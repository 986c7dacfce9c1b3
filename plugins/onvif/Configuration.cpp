// Configuration blocks: which records there are, and the envelopes that they come in.

#include "plugins/onvif/Configuration.h"

#include "plugins/onvif/Imaging.h"
#include "plugins/onvif/Operations.h"
#include "plugins/onvif/Profiles.h"

#include "plugins/common/Text.h"

#include <algorithm>
#include <cstring>

namespace onvifclient
{
namespace
{
using Adapter_ProtocolSet::MergeRecord;

// --- pictures are a block and a camera parameter ---------------------------------------------------------------------

int Read(CLogin& tLogin, tagWhich const& tWhich, tagCameraPicture& t)
{
    std::shared_ptr<tagChannel const> pChannel;
    bool bMedia2 = false;
    const int nResult = FindChannel(tLogin, tWhich.dwIndex, pChannel, bMedia2);
    return nResult ? nResult : ReadPicture(tLogin.Client(), *pChannel, bMedia2, t);
}

// --- blocks ----------------------------------------------------------------------------------------------------------

// eResultNotSupported of a call that a block needs means that the device has no such block.
int ForBlock(int nResult)
{
    return nResult == eResultNotSupported ? int{eResultNotFound} : nResult;
}

// The longest record, and room for what it may grow to.
constexpr std::size_t g_nMostBytes = 4096;

struct tagBlock
{
    uint32_t dwType;
    int (*pfnRead)(CLogin&, tagWhich const&, void* pData, uint32_t& dwLength);
    int (*pfnWrite)(CLogin&, tagWhich const&, void const* pData); // null: read only
};

template <class Record>
int ReadBlock(CLogin& tLogin, tagWhich const& tWhich, void* pData, uint32_t& dwLength)
{
    static_assert(sizeof(Record) <= g_nMostBytes);
    auto& t = *new (pData) Record{};
    t.dwSize = dwLength = sizeof t;
    return Read(tLogin, tWhich, t);
}

template <class Record>
int WriteBlock(CLogin& tLogin, tagWhich const& tWhich, void const* pData)
{
    Record tBefore{};
    tBefore.dwSize = sizeof tBefore;
    if (const int nResult = ForBlock(Read(tLogin, tWhich, tBefore)))
    {
        return nResult;
    }
    Record tAfter = tBefore;
    const int nResult = MergeRecord(tAfter, static_cast<Record const*>(pData));
    return nResult ? nResult : Write(tLogin, tWhich, tBefore, tAfter);
}

template <>
int WriteBlock<tagCameraPicture>(CLogin& tLogin, tagWhich const& tWhich, void const* pData)
{
    std::shared_ptr<tagChannel const> pChannel;
    bool bMedia2 = false;
    const int nResult = FindChannel(tLogin, tWhich.dwIndex, pChannel, bMedia2);
    return nResult ? nResult
                   : WritePicture(tLogin.Client(), *pChannel, bMedia2, static_cast<tagCameraPicture const*>(pData));
}

// Without dwSize: a part of the network's record.
int ReadMacAddress(CLogin& tLogin, tagWhich const&, void* pData, uint32_t& dwLength)
{
    tagConfigNetwork tNetwork{};
    const int nResult = Read(tLogin, {eInterfaceOfLogin, 0}, tNetwork);
    auto& t = *new (pData) tagConfigMacAddress{};
    t.dwCount = 1;
    plugin::CopyText(t.szMac, plugin::Text(tNetwork.szMac));
    dwLength = sizeof t;
    return nResult;
}

template <class Record>
constexpr tagBlock Block(uint32_t dwType)
{
    return {dwType, &ReadBlock<Record>, &WriteBlock<Record>};
}
constexpr tagBlock g_atBlocks[] = {
    Block<tagConfigIdentity>(eConfigIdentity),
    Block<tagConfigNetwork>(eConfigNetwork),
    Block<tagConfigClock>(eConfigClock),
    Block<tagConfigUsers>(eConfigUsers),
    {eConfigStorage, &ReadBlock<tagConfigStorage>, nullptr},
    Block<tagConfigVideoEncoder>(eConfigVideoEncoder),
    Block<tagConfigAudioEncoder>(eConfigAudioEncoder),
    Block<tagCameraPicture>(eConfigPicture),
    Block<tagConfigOverlay>(eConfigOverlay),
    Block<tagConfigMotion>(eConfigMotion),
    Block<tagConfigPrivacy>(eConfigPrivacy),
    Block<tagConfigSchedule>(eConfigSchedule),
    Block<tagConfigAlarmInput>(eConfigAlarmInput),
    Block<tagConfigAlarmOutput>(eConfigAlarmOutput),
    {eConfigMacAddress, &ReadMacAddress, nullptr},
};

// Either envelope: both have the same members.
template <class Envelope>
int ReadEnvelope(CLogin& tLogin, Envelope* ptConfig)
{
    auto const* const ptBlock = std::ranges::find(g_atBlocks, ptConfig->type, &tagBlock::dwType);
    if (ptBlock == std::end(g_atBlocks))
    {
        return eResultNotFound;
    }
    alignas(8) unsigned char abyRecord[g_nMostBytes] = {};
    uint32_t dwLength = 0;
    const int nResult = ptBlock->pfnRead(tLogin, {ptConfig->index, ptConfig->extra[1]}, abyRecord, dwLength);
    if (nResult == eResultOk)
    {
        std::memcpy(ptConfig->data, abyRecord, dwLength);
        std::memset(ptConfig->data + dwLength, 0, sizeof ptConfig->data - dwLength);
        ptConfig->extra[0] = dwLength;
    }
    return ForBlock(nResult);
}

template <class Envelope>
int WriteEnvelope(CLogin& tLogin, Envelope const* ptConfig)
{
    auto const* const ptBlock = std::ranges::find(g_atBlocks, ptConfig->type, &tagBlock::dwType);
    uint32_t dwSize = 0;
    std::memcpy(&dwSize, ptConfig->data, sizeof dwSize);
    if (ptBlock == std::end(g_atBlocks))
    {
        return eResultNotFound;
    }
    if (!ptBlock->pfnWrite)
    {
        return eResultRefused;
    }
    if ((ptConfig->extra[0] != 0 && ptConfig->extra[0] != dwSize) || dwSize > sizeof ptConfig->data)
    {
        return eResultBadArgument;
    }
    // A copy: records want their words aligned, and the second envelope has its data wherever.
    alignas(8) unsigned char abyRecord[g_nMostBytes] = {};
    std::memcpy(abyRecord, ptConfig->data, std::min<std::size_t>(dwSize, sizeof abyRecord));
    return ptBlock->pfnWrite(tLogin, {ptConfig->index, ptConfig->extra[1]}, abyRecord);
}

template <class Envelope, class F>
int OnEnvelope(void* hLogin, Envelope* ptConfig, F fnDo)
{
    return With<CLogin>(hLogin, [&](CLogin& tLogin)
                        { return ptConfig ? fnDo(tLogin, ptConfig) : static_cast<int>(eResultBadArgument); });
}
} // namespace

int Serve(tagCall<&CClientProtocolBase::SetConfig>, void* hLogin, tagConfigInformation* ptConfig)
{
    return OnEnvelope(hLogin, ptConfig, WriteEnvelope<tagConfigInformation>);
}

int Serve(tagCall<&CClientProtocolBase::SetConfigV2>, void* hLogin, tagConfigInformationV2* ptConfig)
{
    return OnEnvelope(hLogin, ptConfig, WriteEnvelope<tagConfigInformationV2>);
}

int Serve(tagCall<&CClientProtocolBase::GetConfig>, void* hLogin, tagConfigInformation* ptConfig)
{
    return OnEnvelope(hLogin, ptConfig, ReadEnvelope<tagConfigInformation>);
}

int Serve(tagCall<&CClientProtocolBase::GetConfigV2>, void* hLogin, tagConfigInformationV2* ptConfig)
{
    return OnEnvelope(hLogin, ptConfig, ReadEnvelope<tagConfigInformationV2>);
}

// ONVIF has no way without a login: one that is open serves.
int Serve(tagCall<&CClientProtocolBase::SetConfigBySn>, char const* szSerial, tagConfigInformationV2* ptConfig)
{
    if (!szSerial || !ptConfig)
    {
        return eResultBadArgument;
    }
    const auto pLogin = Face().tHandles.First<CLogin>(
        [&](CLogin const& tLogin) { return tLogin.Client().Information().strSerialNumber == szSerial; });
    return pLogin ? WriteEnvelope(*pLogin, ptConfig) : static_cast<int>(eResultNotFound);
}
} // namespace onvifclient
