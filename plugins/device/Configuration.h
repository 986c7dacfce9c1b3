#pragma once

#include "plugins/device/Part.h"
#include "plugins/device/Session.h"

#include "protocol/interface/Camera.h"
#include "protocol/interface/Configuration.h"
#include "protocol/interface/Live.h"

#include <cstddef>
#include <string>

namespace device
{
/// The main or the sub stream, whichever of its numbers was given; 0 is the main one. -1: neither.
int StreamIndex(uint32_t dwStreamKind);

/// The device's configuration blocks.
class CConfiguration : public CPart
{
public:
    using CPart::CPart;

    /// Fills pData with the block's record, and dwLength with its length. pData has room for any record.
    int Read(tagCaller const& tCaller, uint32_t dwType, uint32_t dwIndex, uint32_t dwStreamKind, unsigned char* pData,
             uint32_t& dwLength);
    /// Lays a record over the block, and reports it. nLength: bytes at pData.
    int Write(tagCaller const& tCaller, uint32_t dwType, uint32_t dwIndex, uint32_t dwStreamKind,
              unsigned char const* pData, std::size_t nLength);
    /// Back to the factory's values.
    void Reset(bool bAll);
    /// A block was changed in another way.
    void Changed(uint32_t dwType, uint32_t dwIndex, tagCaller const* ptCaller);

    /// A block as it is, by its record: Get<tagConfigMotion>(0). The index must be one that there is.
    template <class Record>
    Record Get(uint32_t dwIndex = 0, uint32_t dwStreamKind = 0) const;
    std::string Mac() const;
    std::string SerialNumber() const;
};

/// The clock goes on beside what is kept.
template <>
tagConfigClock CConfiguration::Get(uint32_t dwIndex, uint32_t dwStreamKind) const;
} // namespace device
