#include "plugins/onvif/Edit.h"

#include <algorithm>
#include <cstring>
#include <pugixml.hpp>
#include <sstream>
#include <utility>

namespace onvifclient
{
namespace
{
constexpr std::string_view g_strTypes = "http://www.onvif.org/ver10/schema";
constexpr std::string_view g_strPrefix = "tt:";
constexpr int g_nMostDepth = 32;

// In what order children stand, by their parent's name.
struct tagOrder
{
    std::string_view strParent;
    std::string_view strChildren;
};
constexpr tagOrder g_atOrders[] = {
    {"ImagingSettings",
     "BacklightCompensation Brightness ColorSaturation Contrast Exposure Focus IrCutFilter Sharpness "
     "WideDynamicRange WhiteBalance Extension"},
    {"BacklightCompensation", "Mode Level"},
    {"WideDynamicRange", "Mode Level"},
    {"Exposure", "Mode Priority Window MinExposureTime MaxExposureTime MinGain MaxGain MinIris MaxIris ExposureTime "
                 "Gain Iris"},
    {"Focus", "AutoFocusMode DefaultSpeed NearLimit FarLimit Extension"},
    {"WhiteBalance", "Mode CrGain CbGain Extension"},
    {"Extension", "ImageStabilization IrCutFilterAutoAdjustment ToneCompensation Defogging NoiseReduction Rotate "
                  "Extension"},
    {"IrCutFilterAutoAdjustment", "BoundaryType BoundaryOffset ResponseTime Extension"},
    {"Defogging", "Mode Level Extension"},
    {"Rotate", "Mode Degree Extension"},
    {"VideoEncoderConfiguration",
     "Name UseCount Encoding Resolution Quality RateControl MPEG4 H264 Multicast SessionTimeout"},
    {"VideoEncoder", "Name UseCount Encoding Resolution RateControl Multicast Quality"},
    {"AudioEncoderConfiguration", "Name UseCount Encoding Bitrate SampleRate Multicast SessionTimeout"},
    {"AudioEncoder", "Name UseCount Encoding Multicast Bitrate SampleRate"},
    {"RateControl", "FrameRateLimit EncodingInterval BitrateLimit"},
    {"Resolution", "Width Height"},
    {"H264", "GovLength H264Profile"},
    {"MPEG4", "GovLength Mpeg4Profile"},
    {"OSD", "VideoSourceConfigurationToken Type Position TextString Image Extension"},
    {"Position", "Type Pos Extension"},
    {"TextString", "Type DateFormat TimeFormat FontSize FontColor BackgroundColor PlainText Extension"},
    {"PresetTour", "Name Status AutoStart StartingCondition TourSpot Extension"},
    {"RecordingConfiguration", "Source Content MaximumRetentionTime"},
    {"StartingCondition", "RecurringTime RecurringDuration RandomPresetOrder Extension"},
};

std::string_view Local(char const* szName)
{
    char const* const pColon = std::strchr(szName, ':');
    return pColon ? pColon + 1 : szName;
}

// Where a name stands among its parent's children; one that isn't known comes last.
std::size_t Place(std::string_view strParent, std::string_view strName)
{
    auto const* const pOrder = std::ranges::find(g_atOrders, strParent, &tagOrder::strParent);
    std::size_t nPlace = 0;
    for (std::string_view strLeft = pOrder == std::end(g_atOrders) ? std::string_view{} : pOrder->strChildren;
         !strLeft.empty(); ++nPlace)
    {
        const std::size_t nEnd = std::min(strLeft.find(' '), strLeft.size());
        if (strLeft.substr(0, nEnd) == strName)
        {
            return nPlace;
        }
        strLeft.remove_prefix(std::min(nEnd + 1, strLeft.size()));
    }
    return std::string_view::npos;
}

// An element of another maker's namespace. One whose prefix nobody declared counts as ours.
bool IsForeign(pugi::xml_node const& tNode)
{
    char const* const pColon = std::strchr(tNode.name(), ':');
    const std::string strAttribute = pColon ? "xmlns:" + std::string(tNode.name(), pColon) : std::string("xmlns");
    for (pugi::xml_node tAt = tNode; tAt; tAt = tAt.parent())
    {
        if (const pugi::xml_attribute tDeclared = tAt.attribute(strAttribute.c_str()))
        {
            return tDeclared.value() != g_strTypes;
        }
    }
    return false;
}

void Copy(pugi::xml_node& tTo, pugi::xml_node const& tFrom, int nDepth)
{
    for (pugi::xml_attribute const& tAttribute : tFrom.attributes())
    {
        if (!std::strchr(tAttribute.name(), ':') && std::strcmp(tAttribute.name(), "xmlns") != 0)
        {
            tTo.append_attribute(tAttribute.name()) = tAttribute.value();
        }
    }
    for (pugi::xml_node const& tChild : tFrom.children())
    {
        if (tChild.type() != pugi::node_element)
        {
            tTo.append_child(tChild.type()).set_value(tChild.value());
        }
        else if (nDepth < g_nMostDepth && !IsForeign(tChild))
        {
            auto tCopy = tTo.append_child((std::string(g_strPrefix) += Local(tChild.name())).c_str());
            Copy(tCopy, tChild, nDepth + 1);
        }
    }
}

pugi::xml_node Child(pugi::xml_node const& tParent, std::string_view strName)
{
    return tParent.find_child([&](pugi::xml_node const& t) { return Local(t.name()) == strName; });
}

// The child of this name, which is made where it must stand.
pugi::xml_node Make(pugi::xml_node& tParent, std::string_view strName)
{
    if (const pugi::xml_node tChild = Child(tParent, strName))
    {
        return tChild;
    }
    const std::string strFull = std::string(g_strPrefix).append(strName);
    const std::string_view strParent = Local(tParent.name());
    const std::size_t nPlace = Place(strParent, strName);
    for (pugi::xml_node const& tChild : tParent.children())
    {
        if (tChild.type() == pugi::node_element && nPlace < Place(strParent, Local(tChild.name())))
        {
            return tParent.insert_child_before(strFull.c_str(), tChild);
        }
    }
    return tParent.append_child(strFull.c_str());
}

// Calls fnStep with each name of a path.
template <class F>
void Walk(std::string_view strPath, F fnStep)
{
    while (!strPath.empty())
    {
        const std::size_t nEnd = std::min(strPath.find('/'), strPath.size());
        fnStep(strPath.substr(0, nEnd));
        strPath.remove_prefix(std::min(nEnd + 1, strPath.size()));
    }
}

pugi::xml_node MakePath(pugi::xml_document const& tDocument, std::string_view strPath)
{
    pugi::xml_node tNode = tDocument.first_child();
    Walk(strPath, [&](std::string_view strName) { tNode = Make(tNode, strName); });
    return tNode;
}
} // namespace

CEdit::CEdit(pugi::xml_node const& tGiven, std::string_view strKind) : CEdit(strKind)
{
    auto tRoot = m_pDocument->first_child();
    Copy(tRoot, tGiven, 0);
}

CEdit::CEdit(std::string_view strKind) : m_pDocument(std::make_unique<pugi::xml_document>())
{
    m_pDocument->append_child(std::string(strKind).c_str());
}

CEdit::~CEdit() = default;
CEdit::CEdit(CEdit&&) noexcept = default;
CEdit& CEdit::operator=(CEdit&&) noexcept = default;

void CEdit::Set(std::string_view strPath, std::string_view strValue)
{
    MakePath(*m_pDocument, strPath).text().set(std::string(strValue).c_str());
}

void CEdit::SetAttribute(std::string_view strPath, std::string_view strName, std::string_view strValue)
{
    pugi::xml_node tNode = MakePath(*m_pDocument, strPath);
    const std::string strAttribute(strName);
    pugi::xml_attribute tAttribute = tNode.attribute(strAttribute.c_str());
    if (!tAttribute)
    {
        tAttribute = tNode.append_attribute(strAttribute.c_str());
    }
    tAttribute = std::string(strValue).c_str();
}

void CEdit::Add(std::string_view strXml)
{
    pugi::xml_document tElement;
    tElement.load_buffer(strXml.data(), strXml.size());
    pugi::xml_node tRoot = m_pDocument->first_child();
    const std::string_view strParent = Local(tRoot.name());
    const std::size_t nPlace = Place(strParent, Local(tElement.first_child().name()));
    for (pugi::xml_node const& tChild : tRoot.children())
    {
        if (tChild.type() == pugi::node_element && nPlace < Place(strParent, Local(tChild.name())))
        {
            tRoot.insert_copy_before(tElement.first_child(), tChild);
            return;
        }
    }
    tRoot.append_copy(tElement.first_child());
}

void CEdit::Remove(std::string_view strPath)
{
    pugi::xml_node tNode = m_pDocument->first_child();
    Walk(strPath, [&](std::string_view strName) { tNode = Child(tNode, strName); });
    tNode.parent().remove_child(tNode);
}

std::string CEdit::As(std::string_view strName) const
{
    std::ostringstream tText;
    pugi::xml_node tRoot = m_pDocument->first_child();
    const std::string strKind = tRoot.name();
    tRoot.set_name(std::string(strName).c_str());
    tRoot.print(tText, "", pugi::format_raw);
    tRoot.set_name(strKind.c_str());
    return tText.str();
}
} // namespace onvifclient
