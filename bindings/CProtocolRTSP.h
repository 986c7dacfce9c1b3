#pragma once

#include "bindings/Binding.h"

namespace Adapter_ProtocolSet
{
inline constexpr eOperation g_aeRTSPLookUp[] = {
    eOperation::Start,
    eOperation::Stop,
    eOperation::RealStreamConnect,
    eOperation::StreamMediaCB,
    eOperation::SubscribeEvent,
    eOperation::StreamMediaControl,
    eOperation::SetRtspEvenCb,
    eOperation::RealStreamDisconnect,
    eOperation::SetProtocolInterface,
    eOperation::GetAttribute,
    eOperation::ForceIFrame,
    eOperation::SetCallbackFunc,
    eOperation::SetProductMode,
    eOperation::GetPackageInfo,
    eOperation::SetMaxChannel,
};
inline constexpr tagIrregularName g_atRTSPNames[] = {
    {eOperation::RealStreamConnect, "RTSPClient_Create"},
    {eOperation::StreamMediaCB, "RTSPClient_StreamCB"},
    {eOperation::SubscribeEvent, "RTSPClient_EventCB"},
    {eOperation::StreamMediaControl, "RTSPClient_Control"},
    {eOperation::RealStreamDisconnect, "RTSPClient_Destroy"},
    {eOperation::GetAttribute, "RTSP_GetAttribute"},
    {eOperation::ForceIFrame, "RTSP_ForceIFrame"},
};

inline constexpr tagBindingProfile g_tRTSPProfile{
    .szSource = "CProtocolRTSP.cpp",
    .nNullPathLine = 28,
    .szPrefix = "RTSPClient_",
    .aeLookUp = g_aeRTSPLookUp,
    .atIrregular = g_atRTSPNames,
    .nOpenedLine = 51,
    .szOpened = "CProtocolSetRTSP OPEN",
};

/// RTSP. A device of this protocol has no login: a login is a record in the handle registry that keeps the prepared
/// stream addresses and the credentials, and the login handle is that record's index. Each live stream is a client of
/// its own in the plug-in, and an event subscription of a login goes to the stream opened last before it.
class CProtocolSetRTSP final : public CClientProtocolBase
{
public:
    CProtocolSetRTSP() = default;
    explicit CProtocolSetRTSP(char const* szPath) { Intialize(szPath); }
    ~CProtocolSetRTSP() override { Destroy(); }

    int Intialize(char const* szPath) { return m_tEntry.Bind(m_tModule, g_tRTSPProfile, szPath); }
    int Destroy() { return m_tModule.Close(); }
    CEntryTable const& Entries() const { return m_tEntry; }

#define OPERATION(line, ...) OVERRIDDEN(__VA_ARGS__)
#include "protocol/operations.def"

private:
    tagCall<&CClientProtocolBase::UserLogin>::Named Run;
    tagCall<&CClientProtocolBase::UserLogout>::Named Run;
    tagCall<&CClientProtocolBase::RealStreamConnect>::Named Run;
    tagCall<&CClientProtocolBase::SubscribeEvent>::Named Run;
    tagCall<&CClientProtocolBase::StreamMediaControl>::Named Run;
    template <auto Op, class... A>
    int Run(tagCall<Op>, A... tArguments)
    {
        return Forward<g_tRTSPProfile, Op>(m_tEntry, tArguments...);
    }

    Adapter_System::CModule m_tModule;
    CEntryTable m_tEntry;
};
} // namespace Adapter_ProtocolSet
