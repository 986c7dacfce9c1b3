#pragma once

#include "plugins/device/Blueprint.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace device
{
class CDevice;

/// All devices of the process, by address. Any thread.
class CFleet
{
public:
    /// Reads a fleet file. Devices at the addresses that it names take the place of those that were there; all others
    /// stay. Throws std::runtime_error that says where and why; nothing is changed then.
    void Load(std::string const& strPath);
    /// The file that was read last; empty: none.
    std::string File() const;
    /// The device at an address, which comes into being with the first question. Null: nobody answers there. Names
    /// that end in ".invalid" are nobody's.
    std::shared_ptr<CDevice> Find(std::string const& strAddress, uint32_t dwPort = 0);
    std::shared_ptr<CDevice> BySerialNumber(std::string const& strSerialNumber) const;
    std::shared_ptr<CDevice> ByMac(std::string const& strMac) const;
    std::vector<std::shared_ptr<CDevice>> All() const;
    /// Those that a search finds: all, and one at least where there may be one at any address.
    std::vector<std::shared_ptr<CDevice>> Neighbours();

private:
    void Save(std::string const& strKey);

    mutable std::mutex m_tMutex;
    std::map<std::string, std::shared_ptr<CDevice>> m_tDevices; // by address, or address:port
    bool m_bDefault = true;                                     // there is one at every other address
    std::string m_strFile;
};

CFleet& Fleet();

/// What a fleet file says.
struct tagFleetFile
{
    std::vector<tagDeviceBlueprint> atDevices;
    bool bDefault = true;
};
/// Throws std::runtime_error.
tagFleetFile ReadFleetFile(std::string const& strPath);
/// eFaultKind of a fault as a fleet file calls it; eFaultNone: there is none of that name.
uint32_t FaultByName(std::string const& strName);
} // namespace device
