#include "plugins/onvif/PTZNode.h"

#include "onvif/Client.h"

#include "protocol/interface/PTZ.h"
#include "protocol/interface/Results.h"

#include <algorithm>
#include <utility>

namespace onvifclient
{
namespace
{
using namespace onvif;

constexpr std::size_t g_nMostSpaces = 16;
constexpr std::size_t g_nMostAuxiliaries = 64;

constexpr std::pair<char const*, Spaces tagNode::*> g_atSpaces[] = {
    {"AbsolutePanTiltPositionSpace", &tagNode::atPosition},
    {"AbsoluteZoomPositionSpace", &tagNode::atZoomPosition},
    {"RelativePanTiltTranslationSpace", &tagNode::atTranslation},
    {"RelativeZoomTranslationSpace", &tagNode::atZoomTranslation},
    {"ContinuousPanTiltVelocitySpace", &tagNode::atVelocity},
    {"ContinuousZoomVelocitySpace", &tagNode::atZoomVelocity},
    {"PanTiltSpeedSpace", &tagNode::atSpeed},
    {"ZoomSpeedSpace", &tagNode::atZoomSpeed},
};

// One or several, with blanks between them.
void AddAuxiliaries(tagNode& tNode, std::string_view strCommands)
{
    while (!strCommands.empty() && tNode.astrAuxiliaries.size() < g_nMostAuxiliaries)
    {
        const std::size_t nEnd = std::min(strCommands.find(' '), strCommands.size());
        if (nEnd != 0)
        {
            tNode.astrAuxiliaries.emplace_back(strCommands.substr(0, nEnd));
        }
        strCommands.remove_prefix(std::min(nEnd + 1, strCommands.size()));
    }
}

// What the names of an auxiliary hold, in the order of ePTZAuxiliaryKind. "tt:IRLamp|On" is ONVIF's own spelling, and
// makers have theirs.
constexpr std::string_view g_astrKinds[] = {"wiper", "wash", "light", "ir", "heat"};
} // namespace

std::string AuxiliaryCommand(tagNode const& tNode, uint32_t dwKind, bool bOn)
{
    const auto it = std::ranges::find_if(
        tNode.astrAuxiliaries,
        [&](std::string strCommand)
        {
            std::ranges::transform(strCommand, strCommand.begin(),
                                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
            const std::size_t nName = strCommand.find(':') + 1; // npos + 1 is 0
            const bool bInfrared = strCommand.compare(nName, 2, "ir") == 0 || strCommand.compare(nName, 2, "in") == 0;
            const bool bKind = dwKind == ePTZInfrared
                                   ? bInfrared
                                   : !bInfrared && strCommand.find(g_astrKinds[dwKind - 1], nName) != std::string::npos;
            return bKind && strCommand.ends_with(bOn ? "|on" : "|off");
        });
    return it == tNode.astrAuxiliaries.end() ? std::string() : *it;
}

double SpeedIn(tagSpan const& tSpan, int32_t nSpeed)
{
    return nSpeed >= 0 ? tSpan.dMost * nSpeed / 10000 : tSpan.dLeast * -static_cast<double>(nSpeed) / 10000;
}

int AskNode(CClient& tClient, std::string const& strToken, tagNode& tNode)
{
    CAnswer tAnswer = tClient.Call({eService::PTZ, "GetNode", CXmlWriter().Add("tptz:NodeToken", strToken).Take()});
    pugi::xml_node tFound = Child(tAnswer.Body(), "PTZNode");
    if (!tAnswer && !IsSilent(tAnswer))
    {
        // There are devices that know only how to tell of all.
        tAnswer = tClient.Call({eService::PTZ, "GetNodes"});
        const auto atNodes = Children(tAnswer.Body(), "PTZNode");
        const auto it = std::ranges::find(atNodes, strToken, [](auto const& t) { return Attribute(t, "token"); });
        tFound = it == atNodes.end() ? pugi::xml_node{} : *it;
    }
    if (!tAnswer)
    {
        return tAnswer.Result();
    }
    const pugi::xml_node tSpaces = Child(tFound, "SupportedPTZSpaces");
    for (auto const& [szName, pSpaces] : g_atSpaces)
    {
        for (pugi::xml_node tSpace : Children(tSpaces, szName))
        {
            const auto tX = SpanOf(tSpace, "XRange");
            const tagSpan tY = SpanOf(tSpace, "YRange").value_or(tX.value_or(tagSpan{}));
            if (tX && (tNode.*pSpaces).size() < g_nMostSpaces)
            {
                (tNode.*pSpaces).push_back({std::string(Text(tSpace, "URI")), *tX, tY});
            }
        }
    }
    tNode.dwPresets = Word(tFound, "MaximumNumberOfPresets");
    tNode.bHome = Truth(tFound, "HomeSupported").value_or(false);
    for (pugi::xml_node tCommand : Children(tFound, "AuxiliaryCommands"))
    {
        AddAuxiliaries(tNode, Text(tCommand));
    }
    if (tNode.astrAuxiliaries.empty())
    {
        const CAnswer tDevice = tClient.Call({eService::Device, "GetServiceCapabilities"});
        AddAuxiliaries(tNode, Attribute(Find(tDevice.Body(), "Capabilities/Misc"), "AuxiliaryCommands"));
        tNode.bDeviceAuxiliaries = true;
    }
    tNode.dwTours = Word(tFound, "Extension/SupportedPresetTour/MaximumNumberOfPresetTours");
    return eResultOk;
}

tagSpace const* Named(Spaces const& atSpaces, std::string_view strPart)
{
    const auto it =
        std::ranges::find_if(atSpaces, [&](tagSpace const& t) { return t.strUri.find(strPart) != std::string::npos; });
    return it == atSpaces.end() ? nullptr : &*it;
}

tagSpace const* Usual(Spaces const& atSpaces)
{
    tagSpace const* const ptGeneric = Named(atSpaces, "Generic");
    return ptGeneric || atSpaces.empty() ? ptGeneric : &atSpaces.front();
}
} // namespace onvifclient
