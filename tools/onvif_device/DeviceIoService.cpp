// The service for contacts, serial ports, and what else is plugged in.

#include "tools/onvif_device/Contacts.h"

namespace onvif_device
{
using device::Text;

void GetRelayOutputs(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    CXml& tXml = tCall.Xml();
    for (uint32_t i = 0; i < tCall.Device().Blueprint().dwOutputs; ++i)
    {
        const auto t = tCall.Get<tagConfigAlarmOutput>(i);
        tXml.In(tCall.Name("RelayOutputs"), {{"token", Token("Relay", {i})}},
                [&]
                {
                    tXml.In("tt:Properties",
                            [&]
                            {
                                tXml.Put("tt:Mode", t.dwPulseMs ? "Monostable" : "Bistable");
                                tXml.Put("tt:DelayTime", Duration(int64_t{t.dwPulseMs} * 1000));
                                tXml.Put("tt:IdleState", t.dwIdle == eContactClosed ? "closed" : "open");
                            });
                });
    }
}

void SetRelayOutputSettings(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const bool bInside = tCall.Has({"RelayOutput"});
    uint32_t dwOutput = 0;
    const std::string strToken =
        bInside ? tCall.At({"RelayOutput"}).attribute("token").value() : tCall.Text({"RelayOutputToken"});
    if (!ParseToken(strToken, "Relay", {&dwOutput}) || dwOutput >= tCall.Device().Blueprint().dwOutputs)
    {
        FailValue("ter:RelayToken", "there is no output " + strToken);
    }
    const pugi::xml_node tProperties = bInside ? tCall.At({"RelayOutput", "Properties"}) : tCall.At({"Properties"});
    auto t = tCall.Get<tagConfigAlarmOutput>(dwOutput);
    int64_t llDelayUs = 0;
    const std::string strMode = ChildText(tProperties, "Mode");
    const std::string strIdle = ChildText(tProperties, "IdleState");
    if (!ParseDuration(ChildText(tProperties, "DelayTime"), llDelayUs) ||
        (strMode != "Monostable" && strMode != "Bistable") || (strIdle != "open" && strIdle != "closed"))
    {
        FailValue("ter:ModeError", "the properties are none");
    }
    if (strMode == "Monostable" && (llDelayUs < 1000 || llDelayUs > 3600000000))
    {
        FailValue("ter:ModeError", "the output must stay on from a millisecond to an hour");
    }
    t.dwPulseMs = strMode == "Monostable" ? static_cast<uint32_t>(llDelayUs / 1000) : 0;
    t.dwIdle = strIdle == "closed" ? eContactClosed : eContactOpen;
    tCall.Set(eConfigAlarmOutput, t, dwOutput);
}

void SetRelayOutputState(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwOutput =
        tCall.Index({"RelayOutputToken"}, "Relay", tCall.Device().Blueprint().dwOutputs, "ter:RelayToken");
    Require(tCall.Part<device::CAlarms>().SetOutput(tCall.Caller(), dwOutput,
                                                    tCall.Word({"LogicalState"}, {"inactive", "active"})));
}

namespace
{
void GetDigitalInputs(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (uint32_t i = 0; i < tCall.Device().Blueprint().dwInputs; ++i)
    {
        const auto t = tCall.Get<tagConfigAlarmInput>(i);
        tCall.Xml().Empty("tmd:DigitalInputs", {{"token", Token("Input", {i})},
                                                {"IdleState", t.dwIdle == eContactClosed ? "closed" : "open"}});
    }
}

void SetDigitalInputConfigurations(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (const pugi::xml_node tNode : tCall.Request().children())
    {
        uint32_t dwInput = 0;
        if (tNode.type() != pugi::node_element)
        {
            continue;
        }
        if (!ParseToken(tNode.attribute("token").value(), "Input", {&dwInput}) ||
            dwInput >= tCall.Device().Blueprint().dwInputs)
        {
            FailValue("ter:InvalidDigitalInputToken", "there is no such input");
        }
        auto t = tCall.Get<tagConfigAlarmInput>(dwInput);
        const std::string strIdle = tNode.attribute("IdleState").value();
        t.dwIdle = strIdle == "closed" ? uint32_t{eContactClosed}
                   : strIdle == "open" ? uint32_t{eContactOpen}
                                       : t.dwIdle;
        tCall.Set(eConfigAlarmInput, t, dwInput);
    }
}

void WriteTokens(CCall& tCall, char const* szKind, uint32_t dwCount)
{
    for (uint32_t i = 0; i < dwCount; ++i)
    {
        tCall.Xml().Put("tmd:Token", Token(szKind, {i}));
    }
}

void GetVideoSources(CCall& tCall)
{
    WriteTokens(tCall, "VideoSource", tCall.Device().Channels());
}

void GetAudioSources(CCall& tCall)
{
    WriteTokens(tCall, "AudioSource", tCall.Device().Channels());
}

void GetAudioOutputs(CCall& tCall)
{
    WriteTokens(tCall, "AudioOutput", 1);
}

void GetVideoOutputs(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (uint32_t i = 0; i < tCall.Device().Blueprint().dwScreens; ++i)
    {
        tagDecoderVideoStandardConfig tSignal{};
        tSignal.dwSize = sizeof tSignal;
        tCall.Part<device::CWall>().Signal(i, tSignal);
        tCall.Xml().In("tmd:VideoOutputs", {{"token", Token("VideoOutput", {i})}},
                       [&]
                       {
                           tCall.Xml().In("tt:Layout", [] {});
                           tCall.Xml().In("tt:Resolution",
                                          [&]
                                          {
                                              tCall.Xml().Put("tt:Width", tSignal.dwWidth);
                                              tCall.Xml().Put("tt:Height", tSignal.dwHeight);
                                          });
                           tCall.Xml().Put("tt:RefreshRate", tSignal.dwFrameRate / 1000.0);
                       });
    }
}

void GetSerialPorts(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (uint32_t i = 0; i < tCall.Device().Blueprint().dwSerialPorts; ++i)
    {
        tCall.Xml().Empty("tmd:SerialPort", {{"token", Token("SerialPort", {i})}});
    }
}

void SendReceiveSerialCommand(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    const uint32_t dwPort =
        tCall.Has({"Token"})
            ? tCall.Index({"Token"}, "SerialPort", tCall.Device().Blueprint().dwSerialPorts, "ter:InvalidSerialPort")
            : 0;
    tagTransparentChannelPara tPara{};
    tPara.dwSize = sizeof tPara;
    tPara.dwPort = dwPort;
    device::CSerial& tSerial = tCall.Part<device::CSerial>();
    Require(tSerial.Open(tPara));
    const std::string strAnswer = tSerial.Write(dwPort, tCall.Text({"SerialData", "String"}) + "\r\n");
    tSerial.Close(dwPort);
    tCall.Xml().In("tmd:SerialData", [&] { tCall.Xml().Put("tmd:String", strAnswer); });
}

constexpr tagAction g_atActions[] = {
    {"GetServiceCapabilities", 0, "", ServeCapabilities<eService::DeviceIo>},
    {"GetRelayOutputs", eUserViewer, "", GetRelayOutputs},
    {"SetRelayOutputSettings", eUserAdministrator, "RelayOutput[token]{Properties{Mode DelayTime IdleState} ...}",
     SetRelayOutputSettings},
    {"SetRelayOutputState", eUserOperator, "RelayOutputToken LogicalState", SetRelayOutputState},
    {"GetDigitalInputs", eUserViewer, "", GetDigitalInputs},
    {"SetDigitalInputConfigurations", eUserAdministrator, "DigitalInputs[token]{...}+", SetDigitalInputConfigurations},
    {"GetVideoSources", eUserViewer, "", GetVideoSources},
    {"GetVideoOutputs", eUserViewer, "", GetVideoOutputs},
    {"GetAudioSources", eUserViewer, "", GetAudioSources},
    {"GetAudioOutputs", eUserViewer, "", GetAudioOutputs},
    {"GetSerialPorts", eUserViewer, "", GetSerialPorts},
    {"SendReceiveSerialCommand", eUserOperator, "Token? SerialData{tmd:String}? TimeOut? DataLength? Delimiter?",
     SendReceiveSerialCommand},
};
} // namespace

std::span<tagAction const> DeviceIoActions()
{
    return g_atActions;
}
} // namespace onvif_device
