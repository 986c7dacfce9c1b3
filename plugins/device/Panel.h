#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"

#include "protocol/interface/Panels.h"

namespace device
{
/// The front panel.
class CPanel : public CPart
{
public:
    using CPart::CPart;

    int Status(tagPanelStatusInfo& tStatus) const;
    int SetStatus(tagCaller const& tCaller, tagPanelStatusInfo const* ptStatus);
    int Control(tagCaller const& tCaller, tagPanelControlParameter const& tPara);
    /// Sounds for so long.
    void Beep(uint32_t dwMilliseconds);

private:
    tagPanelStatusInfo Shown() const;

    uint32_t m_dwLampsOn = 0;
    uint32_t m_dwLampsBlinking = 0;
    uint32_t m_dwBrightness = 50;
    bool m_bLocked = false;
    uint32_t m_dwLastKey = 0;
    int64_t m_llBeepEndUs = 0;
    int64_t m_llTestEndUs = 0;
    std::string m_strLine1;
    std::string m_strLine2;
};
} // namespace device
