#include "plugins/device/Serial.h"

#include "plugins/device/Device.h"
#include "plugins/device/Settings.h"

namespace device
{
int CSerial::Open(tagTransparentChannelPara const& tPara)
{
    if (tPara.dwPort >= m_tDevice.Blueprint().dwSerialPorts)
    {
        return eResultNoChannel;
    }
    tagTransparentChannelPara t = tPara;
    t.dwBaudRate = t.dwBaudRate ? t.dwBaudRate : 9600;
    t.dwDataBits = t.dwDataBits ? t.dwDataBits : 8;
    t.dwStopBits = t.dwStopBits ? t.dwStopBits : 1;
    if (!InRange(t, {{&tagTransparentChannelPara::dwKind, 0, eSerialRS485},
                     {&tagTransparentChannelPara::dwBaudRate, 50, 4000000},
                     {&tagTransparentChannelPara::dwDataBits, 5, 8},
                     {&tagTransparentChannelPara::dwStopBits, 1, 2},
                     {&tagTransparentChannelPara::dwParity, 0, eParityEven},
                     {&tagTransparentChannelPara::dwFlow, 0, eFlowSoftware}}))
    {
        return eResultBadArgument;
    }
    return m_tLines.try_emplace(tPara.dwPort).second ? int{eResultOk} : int{eResultBusy};
}

std::string CSerial::Write(uint32_t dwPort, std::string_view strBytes)
{
    std::string strAnswer;
    std::string& strLine = m_tLines[dwPort];
    for (const char c : strBytes)
    {
        if (c != '\r' && c != '\n')
        {
            strLine += c;
        }
        // A line end of two characters is one; and no line is endless.
        else if (!strLine.empty())
        {
            strAnswer += Answer(dwPort, strLine) + "\r\n";
            strLine.clear();
        }
        if (strLine.size() > 1024)
        {
            strLine.clear();
        }
    }
    return strAnswer;
}

std::string CSerial::Answer(uint32_t dwPort, std::string const& strLine) const
{
    if (strLine == "ID?")
    {
        return "INSTRUMENT " + std::to_string(dwPort);
    }
    if (strLine == "TIME?")
    {
        return UtcText(m_tDevice.Clock().NowUs());
    }
    return "OK " + strLine;
}
} // namespace device
