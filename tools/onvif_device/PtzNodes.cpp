// The PTZ service: what the heads can do.

#include "tools/onvif_device/MediaParts.h"
#include "tools/onvif_device/PtzParts.h"

namespace onvif_device
{
using device::CPTZ;

namespace
{
void WriteSpace(CXml& tXml, char const* szElement, char const* szSpace, bool bTwo, double fLeast)
{
    tXml.In(szElement,
            [&]
            {
                tXml.Put("tt:URI", GenericSpace(szSpace));
                tXml.Range("tt:XRange", fLeast, 1.0);
                if (bTwo)
                {
                    tXml.Range("tt:YRange", fLeast, 1.0);
                }
            });
}

void WriteSpaces(CXml& tXml, char const* szElement)
{
    tXml.In(szElement,
            [&]
            {
                WriteSpace(tXml, "tt:AbsolutePanTiltPositionSpace", "PanTiltSpaces/PositionGenericSpace", true, -1);
                WriteSpace(tXml, "tt:AbsoluteZoomPositionSpace", "ZoomSpaces/PositionGenericSpace", false, 0);
                WriteSpace(tXml, "tt:RelativePanTiltTranslationSpace", "PanTiltSpaces/TranslationGenericSpace", true,
                           -1);
                WriteSpace(tXml, "tt:RelativeZoomTranslationSpace", "ZoomSpaces/TranslationGenericSpace", false, -1);
                WriteSpace(tXml, "tt:ContinuousPanTiltVelocitySpace", "PanTiltSpaces/VelocityGenericSpace", true, -1);
                WriteSpace(tXml, "tt:ContinuousZoomVelocitySpace", "ZoomSpaces/VelocityGenericSpace", false, -1);
                WriteSpace(tXml, "tt:PanTiltSpeedSpace", "PanTiltSpaces/GenericSpeedSpace", false, 0);
                WriteSpace(tXml, "tt:ZoomSpeedSpace", "ZoomSpaces/ZoomGenericSpeedSpace", false, 0);
            });
}

void WriteNode(CCall& tCall, uint32_t dwChannel)
{
    CXml& tXml = tCall.Xml();
    const tagPTZAbility tAbility = tCall.Part<CPTZ>().Ability(dwChannel);
    tXml.In("tptz:PTZNode", {{"token", Token("PTZNode", {dwChannel})}, {"FixedHomePosition", "false"}},
            [&]
            {
                tXml.Put("tt:Name", "Head " + std::to_string(dwChannel));
                WriteSpaces(tXml, "tt:SupportedPTZSpaces");
                tXml.Put("tt:MaximumNumberOfPresets", tAbility.dwPresets).Put("tt:HomeSupported", true);
                for (tagAuxiliaryName const& t : g_atAuxiliaries)
                {
                    tXml.Put("tt:AuxiliaryCommands", std::string("tt:") + t.szName + "|On");
                    tXml.Put("tt:AuxiliaryCommands", std::string("tt:") + t.szName + "|Off");
                }
                tXml.In("tt:Extension",
                        [&]
                        {
                            tXml.In("tt:SupportedPresetTour",
                                    [&]
                                    {
                                        tXml.Put("tt:MaximumNumberOfPresetTours", tAbility.dwTours);
                                        tXml.Put("tt:PTZPresetTourOperation", "Start");
                                        tXml.Put("tt:PTZPresetTourOperation", "Stop");
                                    });
                        });
            });
}

void GetNodes(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        if (Moves(tCall, i))
        {
            WriteNode(tCall, i);
        }
    }
}

// The channel of a token; throws when it doesn't move.
uint32_t MovingAt(CCall& tCall, char const* szElement, char const* szKind)
{
    const uint32_t dwChannel = tCall.Index({szElement}, szKind, tCall.Device().Channels());
    if (!Moves(tCall, dwChannel))
    {
        FailValue("ter:NoEntity", "there is nothing of this token");
    }
    return dwChannel;
}

void GetNode(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    WriteNode(tCall, MovingAt(tCall, "NodeToken", "PTZNode"));
}

void GetConfigurations(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    for (uint32_t i = 0; i < tCall.Device().Channels(); ++i)
    {
        if (Moves(tCall, i))
        {
            WritePtzConfiguration(tCall, "tptz:PTZConfiguration", i);
        }
    }
}

void GetConfiguration(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    WritePtzConfiguration(tCall, "tptz:PTZConfiguration", MovingAt(tCall, "PTZConfigurationToken", "PTZConfig"));
}

void GetConfigurationOptions(CCall& tCall)
{
    const auto tLock = tCall.Lock();
    MovingAt(tCall, "ConfigurationToken", "PTZConfig");
    CXml& tXml = tCall.Xml();
    tXml.In("tptz:PTZConfigurationOptions",
            [&]
            {
                WriteSpaces(tXml, "tt:Spaces");
                tXml.In("tt:PTZTimeout", [&] { tXml.Put("tt:Min", "PT0.001S").Put("tt:Max", "PT60S"); });
            });
}

constexpr tagAction g_atActions[] = {
    {"GetNodes", eUserViewer, "", GetNodes},
    {"GetNode", eUserViewer, "NodeToken", GetNode},
    {"GetConfigurations", eUserViewer, "", GetConfigurations},
    {"GetConfiguration", eUserViewer, "PTZConfigurationToken", GetConfiguration},
    {"GetConfigurationOptions", eUserViewer, "ConfigurationToken", GetConfigurationOptions},
};
} // namespace

std::span<tagAction const> PtzNodeActions()
{
    return g_atActions;
}
} // namespace onvif_device
