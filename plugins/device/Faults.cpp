#include "plugins/device/Faults.h"

#include "plugins/device/Device.h"
#include "plugins/device/Discovery.h"
#include "plugins/device/Text.h"

#include <algorithm>

namespace device
{
namespace
{
// What dwChannel of a fault counts.
enum class eWhere : unsigned char
{
    Device,
    Channel,
    Disk,
    Input,
};

struct tagKind
{
    eFaultKind eKind;
    eWhere eWhat;
    bool bOnce;               // happens, and is over
    eDeviceEvent eEvent = {}; // the state that it sets
};
constexpr tagKind g_atKinds[] = {
    {eFaultLockOut, eWhere::Device, false},
    {eFaultBusy, eWhere::Device, false},
    {eFaultSlow, eWhere::Device, false},
    {eFaultHang, eWhere::Device, false},
    {eFaultDrop, eWhere::Device, true},
    {eFaultRestart, eWhere::Device, true},
    {eFaultClockDrift, eWhere::Device, false},
    {eFaultClockJump, eWhere::Device, true},
    {eFaultStall, eWhere::Channel, false},
    {eFaultLose, eWhere::Channel, false},
    {eFaultDamage, eWhere::Channel, false},
    {eFaultDiskFull, eWhere::Disk, false},
    {eFaultDiskError, eWhere::Disk, false},
    {eFaultVideoLoss, eWhere::Channel, false, eEventVideoLoss},
    {eFaultMotion, eWhere::Channel, false, eEventMotion},
    {eFaultTamper, eWhere::Channel, false, eEventTamper},
    {eFaultAlarmInput, eWhere::Input, false, eEventAlarmInput},
    {eFaultForceOff, eWhere::Device, true},
    {eFaultRegister, eWhere::Device, true},
};

tagKind const* KindOf(uint32_t dwFault)
{
    const auto it = std::ranges::find(g_atKinds, static_cast<eFaultKind>(dwFault), &tagKind::eKind);
    return it == std::end(g_atKinds) ? nullptr : it;
}

uint32_t CountOf(tagDeviceBlueprint const& tBlueprint, eWhere eWhat)
{
    switch (eWhat)
    {
    case eWhere::Channel:
        return static_cast<uint32_t>(tBlueprint.atChannels.size());
    case eWhere::Disk:
        return tBlueprint.dwDisks;
    case eWhere::Input:
        return tBlueprint.dwInputs;
    case eWhere::Device:
        break;
    }
    return 1;
}

bool Covers(tagDeviceFault const& tFault, uint32_t dwChannel)
{
    return tFault.dwChannel == TESSARO_ALL || dwChannel == TESSARO_ALL || tFault.dwChannel == dwChannel;
}
} // namespace

int CFaults::Set(tagDeviceFault const& tFault)
{
    if (tFault.dwFault == eFaultNone)
    {
        EndAll();
        return eResultOk;
    }
    tagKind const* const ptKind = KindOf(tFault.dwFault);
    const bool bThousand = tFault.dwFault == eFaultLose || tFault.dwFault == eFaultDamage;
    if (!ptKind || (bThousand && tFault.dwValue > 1000))
    {
        return eResultBadArgument;
    }
    tagDeviceFault tNew = tFault;
    if (ptKind->eWhat == eWhere::Device)
    {
        tNew.dwChannel = TESSARO_ALL;
    }
    else if (tNew.dwChannel != TESSARO_ALL && tNew.dwChannel >= CountOf(m_tDevice.Blueprint(), ptKind->eWhat))
    {
        return eResultNoChannel;
    }
    if (!ptKind->bOnce)
    {
        std::erase_if(m_atActive, [&](tagActive const& t)
                      { return t.tFault.dwFault == tNew.dwFault && t.tFault.dwChannel == tNew.dwChannel; });
        m_atActive.push_back({tNew, tNew.dwMilliseconds && tNew.dwFault != eFaultLockOut
                                        ? m_tDevice.SteadyNow() + int64_t{tNew.dwMilliseconds} * 1000
                                        : g_llNever});
    }
    Apply(tNew, true);
    return eResultOk;
}

// What a fault changes beside being on.
void CFaults::Apply(tagDeviceFault const& tFault, bool bOn)
{
    tagKind const& tKind = *KindOf(tFault.dwFault);
    const int64_t llForUs = int64_t{tFault.dwMilliseconds} * 1000;
    for (uint32_t i = 0; i < CountOf(m_tDevice.Blueprint(), tKind.eWhat); ++i)
    {
        if (!Covers(tFault, i) && tKind.eWhat != eWhere::Device)
        {
            continue;
        }
        switch (tKind.eKind)
        {
        case eFaultDrop:
            m_tDevice.Drop(llForUs);
            break;
        case eFaultRestart:
            m_tDevice.Restart(eRestartFault, llForUs ? llForUs : 5000000);
            break;
        case eFaultClockDrift:
            m_tDevice.Clock().Drift(bOn ? static_cast<int32_t>(tFault.dwValue) : 0);
            break;
        case eFaultClockJump:
            m_tDevice.Clock().Jump(tFault.llOffsetUs);
            m_tDevice.Raise(eEventClockChanged, static_cast<uint32_t>(tFault.llOffsetUs / 1000));
            m_tDevice.Part<CStorage>().CheckSchedules();
            break;
        case eFaultDiskFull:
        case eFaultDiskError:
            m_tDevice.Part<CStorage>().SetDiskFault(i, tKind.eKind == eFaultDiskFull, bOn);
            break;
        case eFaultForceOff:
            m_tDevice.EndSessions(Text(tFault.szUserName));
            break;
        case eFaultRegister:
            Discovery().Register(m_tDevice);
            break;
        default:
            if (tKind.eEvent != eDeviceEvent{})
            {
                m_tDevice.Part<CAlarms>().Sense(tKind.eEvent, i, bOn);
            }
        }
    }
    m_tDevice.Touch();
}

void CFaults::EndAll()
{
    const auto atEnded = std::exchange(m_atActive, {});
    for (tagActive const& tActive : atEnded)
    {
        Apply(tActive.tFault, false);
    }
    m_tDevice.Part<CUsers>().UnlockAll();
    m_tDevice.Connect();
}

void CFaults::Advance()
{
    std::vector<tagDeviceFault> atEnded;
    std::erase_if(m_atActive,
                  [&](tagActive const& tActive)
                  {
                      const bool bOver = tActive.llEndUs <= m_tDevice.SteadyNow();
                      if (bOver)
                      {
                          atEnded.push_back(tActive.tFault);
                      }
                      return bOver;
                  });
    for (tagDeviceFault const& tFault : atEnded)
    {
        Apply(tFault, false);
    }
}

int64_t CFaults::NextDue() const
{
    int64_t llDueUs = g_llNever;
    for (tagActive const& tActive : m_atActive)
    {
        llDueUs = std::min(llDueUs, tActive.llEndUs);
    }
    return llDueUs;
}

tagDeviceFault const* CFaults::On(eFaultKind eKind, uint32_t dwChannel) const
{
    for (tagActive const& tActive : m_atActive)
    {
        if (tActive.tFault.dwFault == static_cast<uint32_t>(eKind) && Covers(tActive.tFault, dwChannel))
        {
            return &tActive.tFault;
        }
    }
    return nullptr;
}

int CFaults::Get(tagDeviceFault& tFault) const
{
    const auto it =
        std::ranges::find_if(m_atActive,
                             [&](tagActive const& t) {
                                 return tFault.dwFault == eFaultNone ||
                                        (t.tFault.dwFault == tFault.dwFault && Covers(t.tFault, tFault.dwChannel));
                             });
    if (it == m_atActive.end())
    {
        return eResultNotFound;
    }
    tFault = it->tFault;
    if (it->llEndUs != g_llNever)
    {
        tFault.dwMilliseconds = static_cast<uint32_t>((it->llEndUs - m_tDevice.SteadyNow()) / 1000 + 1);
    }
    return eResultOk;
}

bool CFaults::TakeHang()
{
    const auto it = std::ranges::find_if(m_atActive, [](tagActive const& t) { return t.tFault.dwFault == eFaultHang; });
    if (it == m_atActive.end())
    {
        return false;
    }
    if (it->tFault.dwCount != 0 && --it->tFault.dwCount == 0)
    {
        m_atActive.erase(it);
    }
    return true;
}

void CFaults::Describe(uint32_t dwChannel, tagStreamState& tState) const
{
    const auto fnValue = [&](eFaultKind eKind)
    {
        tagDeviceFault const* const ptFault = On(eKind, dwChannel);
        return ptFault ? ptFault->dwValue : 0;
    };
    tState.bStalled = On(eFaultStall, dwChannel) != nullptr;
    tState.dwLose = fnValue(eFaultLose);
    tState.dwDamage = fnValue(eFaultDamage);
}
} // namespace device
