#include "bindings/CProtocolPrivate.h"

#include <cstring>
#include <memory>
#include <new>

namespace Adapter_ProtocolSet
{
namespace
{
using GetConfigEntry = tagCall<&CClientProtocolBase::GetConfig>::Function;

// A quarter of a megabyte is too much for the small stacks of an application's threads. All bytes are zero. Null when
// memory runs out: the query then answers as if the plug-in could not be asked.
std::unique_ptr<tagConfigInformation> MakeTemporary()
{
    return std::unique_ptr<tagConfigInformation>(new (std::nothrow) tagConfigInformation{});
}

// A null record is the plug-in's to refuse.
template <class Record>
bool IsSpecialQuery(Record const* ptConfig)
{
    return ptConfig && ptConfig->type == 209 && ptConfig->index == 0xFFFFFFFF;
}

// The plug-in doesn't know type 209; the same answer stands in its block of type 101.
template <class Record>
int SpecialQuery(GetConfigEntry* pfnGetConfig, void* hLogin, Record& tTarget)
{
    const auto ptAsked = MakeTemporary();
    if (!ptAsked)
    {
        return eResultNoEntryPoint;
    }
    ptAsked->type = 101;
    ptAsked->index = 4;
    ptAsked->extra[0] = 72;
    if (const int nResult = pfnGetConfig(hLogin, ptAsked.get()))
    {
        return nResult;
    }
    constexpr std::size_t nText = 18;
    const std::uint32_t adwHead[] = {1, 0};
    std::memcpy(tTarget.data, adwHead, sizeof adwHead);
    char const* const szAnswer = reinterpret_cast<char const*>(ptAsked->data + 52);
    const std::size_t nLength = strnlen(szAnswer, nText);
    std::memcpy(tTarget.data + sizeof adwHead, szAnswer, nLength);
    std::memset(tTarget.data + sizeof adwHead + nLength, 0, nText - nLength);
    return eResultOk;
}

void CopyHead(tagConfigInformation& tTo, tagConfigInformationV2 const& tFrom)
{
    tTo.type = tFrom.type;
    tTo.index = tFrom.index;
    std::memcpy(tTo.extra, tFrom.extra, sizeof tTo.extra);
}
} // namespace

int CProtocolSetPrivate::Run(tagCall<&CClientProtocolBase::GetConfig>, void* hLogin, tagConfigInformation* ptConfig)
{
    const auto pfnGetConfig = m_tEntry.Get<&CClientProtocolBase::GetConfig>();
    if (!pfnGetConfig)
    {
        return eResultNoEntryPoint;
    }
    return IsSpecialQuery(ptConfig) ? SpecialQuery(pfnGetConfig, hLogin, *ptConfig) : pfnGetConfig(hLogin, ptConfig);
}

int CProtocolSetPrivate::Run(tagCall<&CClientProtocolBase::SetConfigV2>, void* hLogin, tagConfigInformationV2* ptConfig)
{
    if (const auto pfnSetConfigV2 = m_tEntry.Get<&CClientProtocolBase::SetConfigV2>())
    {
        return pfnSetConfigV2(hLogin, ptConfig);
    }
    const auto pfnSetConfig = m_tEntry.Get<&CClientProtocolBase::SetConfig>();
    const auto ptFirst = pfnSetConfig && ptConfig ? MakeTemporary() : nullptr;
    if (!ptFirst)
    {
        return eResultNoEntryPoint;
    }
    CopyHead(*ptFirst, *ptConfig);
    std::memcpy(ptFirst->data, ptConfig->data, sizeof ptFirst->data);
    return pfnSetConfig(hLogin, ptFirst.get());
}

int CProtocolSetPrivate::Run(tagCall<&CClientProtocolBase::GetConfigV2>, void* hLogin, tagConfigInformationV2* ptConfig)
{
    if (const auto pfnGetConfigV2 = m_tEntry.Get<&CClientProtocolBase::GetConfigV2>())
    {
        return pfnGetConfigV2(hLogin, ptConfig);
    }
    const auto pfnGetConfig = m_tEntry.Get<&CClientProtocolBase::GetConfig>();
    if (!pfnGetConfig)
    {
        return eResultNoEntryPoint;
    }
    if (IsSpecialQuery(ptConfig))
    {
        return SpecialQuery(pfnGetConfig, hLogin, *ptConfig);
    }
    const auto ptFirst = ptConfig ? MakeTemporary() : nullptr;
    if (!ptFirst)
    {
        return eResultNoEntryPoint;
    }
    CopyHead(*ptFirst, *ptConfig);
    if (const int nResult = pfnGetConfig(hLogin, ptFirst.get()))
    {
        return nResult;
    }
    ptConfig->extra[0] = ptFirst->extra[0];
    std::memcpy(ptConfig->data, ptFirst->data, sizeof ptConfig->data);
    return eResultOk;
}
} // namespace Adapter_ProtocolSet
