#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace pugi
{
class xml_document;
class xml_node;
} // namespace pugi

namespace onvifclient
{
/// A part of a device's answer, changed in places and on its way back. What nobody here knows of stays as it was, but
/// for elements and attributes of other namespaces than ONVIF's own types. Missing elements are put where the schema
/// wants them. Paths are local names with slashes between them: "RateControl/BitrateLimit".
class CEdit
{
public:
    /// strKind: its type, which says in what order its children stand.
    CEdit(pugi::xml_node const& tGiven, std::string_view strKind);
    /// An empty one.
    explicit CEdit(std::string_view strKind);
    ~CEdit();
    CEdit(CEdit&&) noexcept;
    CEdit& operator=(CEdit&&) noexcept;

    void Set(std::string_view strPath, std::string_view strValue);
    /// strPath may be empty: of the part itself.
    void SetAttribute(std::string_view strPath, std::string_view strName, std::string_view strValue);
    /// An element, with the prefix "tt:", after others of its name.
    void Add(std::string_view strXml);
    void Remove(std::string_view strPath);
    /// As an element of this name, prefix included: "timg:ImagingSettings".
    std::string As(std::string_view strName) const;

private:
    std::unique_ptr<pugi::xml_document> m_pDocument;
};
} // namespace onvifclient
