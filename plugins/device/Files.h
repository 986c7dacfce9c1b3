#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"
#include "plugins/device/WallView.h"

#include "protocol/interface/Queries.h"

#include <map>
#include <string>
#include <vector>

namespace device
{
/// The files on the device that are no recordings: snapshots, configuration, log, what was sent to it.
class CFiles : public CPart
{
public:
    using CPart::CPart;

    int Query(tagFileQueryFactor const& tFactor, std::vector<tagFileQueryResult>& atFound) const;
    /// Null when there is none.
    SharedBytes Find(uint32_t dwKind, std::string const& strName) const;
    void KeepPicture(uint32_t dwChannel, std::string const& strName, SharedBytes pData);
    /// Takes a file that was sent: firmware changes the version and restarts the device, a configuration is restored.
    /// An empty name: the device finds one. eResultRefused: not what its kind says; eResultDeviceFull.
    int Receive(tagCaller const& tCaller, uint32_t dwKind, std::string const& strName, SharedBytes const& pData);
    /// Whether a file of this kind can be sent to the device at all.
    static bool CanReceive(uint32_t dwKind);

private:
    struct tagFile
    {
        tagFileQueryResult tEntry{};
        SharedBytes pData;
    };
    void Add(uint32_t dwKind, uint32_t dwChannel, std::string const& strName, SharedBytes pData);
    std::string Configuration() const;
    bool Restore(tagCaller const& tCaller, std::string const& strText);

    std::vector<tagFile> m_atFiles;
};
} // namespace device
