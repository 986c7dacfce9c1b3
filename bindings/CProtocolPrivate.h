#pragma once

#include "bindings/Binding.h"

namespace Adapter_ProtocolSet
{
inline constexpr auto g_aePrivateLookUp = CommonLookUp();

inline constexpr tagBindingProfile g_tPrivateProfile{
    .szSource = "CProtocolPrivate.cpp",
    .nNullPathLine = 23,
    .szPrefix = "VornClient_",
    .aeLookUp = g_aePrivateLookUp,
};

/// The private device protocol. Irregular: one configuration query is turned into another, and a plug-in that knows
/// only the first record layout is served by converting the second.
class CProtocolSetPrivate final : public CClientProtocolBase
{
public:
    CProtocolSetPrivate() = default;
    explicit CProtocolSetPrivate(char const* szPath) { Intialize(szPath); }
    ~CProtocolSetPrivate() override { Destroy(); }

    int Intialize(char const* szPath) { return m_tEntry.Bind(m_tModule, g_tPrivateProfile, szPath); }
    int Destroy() { return m_tModule.Close(); }
    CEntryTable const& Entries() const { return m_tEntry; }

#define OPERATION(line, ...) OVERRIDDEN(__VA_ARGS__)
#include "protocol/operations.def"

private:
    tagCall<&CClientProtocolBase::GetConfig>::Named Run;
    tagCall<&CClientProtocolBase::GetConfigV2>::Named Run;
    tagCall<&CClientProtocolBase::SetConfigV2>::Named Run;
    template <auto Op, class... A>
    int Run(tagCall<Op>, A... tArguments)
    {
        return Forward<g_tPrivateProfile, Op>(m_tEntry, tArguments...);
    }

    Adapter_System::CModule m_tModule;
    CEntryTable m_tEntry;
};
} // namespace Adapter_ProtocolSet
