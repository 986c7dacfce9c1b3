#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"

#include "protocol/interface/Configuration.h"

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace device
{
/// What is on: motion, inputs, outputs, lost pictures, covered cameras, disks.
class CAlarms : public CPart
{
public:
    explicit CAlarms(CDevice& tDevice);

    /// dwType: eDeviceEvent, 0: any. Ends motion, inputs, tamper and video loss, and the outputs that they switched on.
    int Clear(tagCaller const& tCaller, uint32_t dwType, uint32_t dwChannel);
    /// dwOn: 0 off, 1 on, more: milliseconds.
    int SetOutput(tagCaller const& tCaller, uint32_t dwOutput, uint32_t dwOn);
    /// dwCount: room at pdwState in words; becomes the number of contacts.
    int InputStates(uint32_t& dwCount, unsigned long* pdwState) const;
    int OutputStates(uint32_t& dwCount, unsigned long* pdwState) const;

    /// Something begins or ends; reported when it changed. What the configuration asks for beside happens too.
    void Set(eDeviceEvent eEvent, uint32_t dwWhere, uint32_t dwState, tagCaller const* ptCaller = nullptr);
    /// What a camera sees or an input feels. It counts when it has lasted as long as the configuration says.
    void Sense(eDeviceEvent eEvent, uint32_t dwWhere, bool bOn);
    bool IsOn(eDeviceEvent eEvent, uint32_t dwWhere) const;
    /// All states that aren't 0.
    void ForEach(std::function<void(eDeviceEvent, uint32_t dwWhere, uint32_t dwState)> const& fnState) const;
    void Advance();
    int64_t NextDue() const;
    /// Outputs fall off: the device has stopped.
    void Halt();

private:
    using Key = std::pair<eDeviceEvent, uint32_t>;
    struct tagSensed
    {
        bool bOn;
        int64_t llCountsUs; // steady
    };
    int64_t HoldUs(eDeviceEvent eEvent, uint32_t dwWhere, bool bOn) const;
    void Act(tagConfigAction const& tAction, bool bOn, eDeviceEvent eEvent);
    void Switch(uint32_t dwOutput, bool bOn, uint32_t dwMilliseconds, tagCaller const* ptCaller);

    std::map<Key, uint32_t> m_tStates;
    std::map<Key, tagSensed> m_tSensed;    // what doesn't count yet
    std::vector<int64_t> m_allOutputEndUs; // when each output falls off by itself
};
} // namespace device
