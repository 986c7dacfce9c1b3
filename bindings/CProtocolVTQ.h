#pragma once

#include "bindings/Binding.h"

namespace Adapter_ProtocolSet
{
inline constexpr auto g_aeVTQLookUp = Inserted(Inserted(Inserted(CommonLookUp(), eOperation::UserLogout,
                                                                 {eOperation::GetLoginStatus, eOperation::GetLoginLevel,
                                                                  eOperation::GetLoginMac, eOperation::GetPackInfo}),
                                                        eOperation::SetConfigV2, {eOperation::SetConfigBySn}),
                                               eOperation::SetProtocolInterface, {eOperation::SetCallbackFunc});
inline constexpr tagIrregularName g_atVTQNames[] = {{eOperation::GetPackInfo, "VTQClient_Getpackageinfo"}};

inline constexpr tagBindingProfile g_tVTQProfile{
    .szSource = "CProtocolVTQ.cpp",
    .nNullPathLine = 23,
    .szPrefix = "VTQClient_",
    .aeLookUp = g_aeVTQLookUp,
    .atIrregular = g_atVTQNames,
    .nOpenedLine = 159,
    .szOpened = "CProtocolSetVTQ OPEN",
    .szOpenFailed = "open vtq client fail ",
};

/// VTQ. Irregular: three login queries refuse a null output pointer, and a missing ForceIFrame writes a line on every call.
class CProtocolSetVTQ final : public CClientProtocolBase
{
public:
    CProtocolSetVTQ() = default;
    explicit CProtocolSetVTQ(char const* szPath) { Intialize(szPath); }
    ~CProtocolSetVTQ() override { Destroy(); }

    int Intialize(char const* szPath) { return m_tEntry.Bind(m_tModule, g_tVTQProfile, szPath); }
    int Destroy() { return m_tModule.Close(); }
    CEntryTable const& Entries() const { return m_tEntry; }

#define OPERATION(line, ...) OVERRIDDEN(__VA_ARGS__)
#include "protocol/operations.def"

private:
    tagCall<&CClientProtocolBase::GetLoginLevel>::Named Run;
    tagCall<&CClientProtocolBase::GetLoginMac>::Named Run;
    tagCall<&CClientProtocolBase::GetPackInfo>::Named Run;
    tagCall<&CClientProtocolBase::ForceIFrame>::Named Run;
    template <auto Op, class... A>
    int Run(tagCall<Op>, A... tArguments)
    {
        return Forward<g_tVTQProfile, Op>(m_tEntry, tArguments...);
    }

    Adapter_System::CModule m_tModule;
    CEntryTable m_tEntry;
};
} // namespace Adapter_ProtocolSet
