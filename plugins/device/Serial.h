#pragma once

#include "plugins/device/Part.h"

#include "protocol/interface/Transfer.h"

#include <map>
#include <string>

namespace device
{
/// The serial ports, and what hangs on each: a small instrument that answers every line. `ID?` and `TIME?` are
/// questions; any other line comes back after `OK `. A line ends with CR or LF, an answer with both.
class CSerial : public CPart
{
public:
    using CPart::CPart;

    /// eResultNoChannel; eResultBusy; eResultBadArgument.
    int Open(tagTransparentChannelPara const& tPara);
    void Close(uint32_t dwPort) { m_tLines.erase(dwPort); }
    /// What the instrument answers to these bytes; empty: nothing yet.
    std::string Write(uint32_t dwPort, std::string_view strBytes);

private:
    std::string Answer(uint32_t dwPort, std::string const& strLine) const;

    std::map<uint32_t, std::string> m_tLines; // open ports, and the line that has begun on each
};
} // namespace device
