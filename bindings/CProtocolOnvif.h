#pragma once

#include "bindings/Binding.h"

namespace Adapter_ProtocolSet
{
inline constexpr auto g_aeOnvifLookUp = Inserted(
    Inserted(CommonLookUp(), eOperation::StreamMediaControl, {eOperation::GetLoginLevel, eOperation::GetLoginMac}),
    eOperation::SetProtocolInterface, {eOperation::SetConfigBySn});

inline constexpr tagBindingProfile g_tOnvifProfile{
    .szSource = "CProtocolOnvif.cpp",
    .nNullPathLine = 23,
    .szPrefix = "OnvifClient_",
    .aeLookUp = g_aeOnvifLookUp,
    .nOpenedLine = 156,
    .szOpened = "CProtocolSetOnvif OPEN",
};

/// ONVIF. Irregular: the two login queries refuse a null output pointer.
class CProtocolSetOnvif final : public CClientProtocolBase
{
public:
    CProtocolSetOnvif() = default;
    explicit CProtocolSetOnvif(char const* szPath) { Intialize(szPath); }
    ~CProtocolSetOnvif() override { Destroy(); }

    int Intialize(char const* szPath) { return m_tEntry.Bind(m_tModule, g_tOnvifProfile, szPath); }
    int Destroy() { return m_tModule.Close(); }
    CEntryTable const& Entries() const { return m_tEntry; }

#define OPERATION(line, ...) OVERRIDDEN(__VA_ARGS__)
#include "protocol/operations.def"

private:
    tagCall<&CClientProtocolBase::GetLoginLevel>::Named Run;
    tagCall<&CClientProtocolBase::GetLoginMac>::Named Run;
    template <auto Op, class... A>
    int Run(tagCall<Op>, A... tArguments)
    {
        return Forward<g_tOnvifProfile, Op>(m_tEntry, tArguments...);
    }

    Adapter_System::CModule m_tModule;
    CEntryTable m_tEntry;
};
} // namespace Adapter_ProtocolSet
