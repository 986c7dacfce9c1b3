#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace onvif_device
{
/// Writes XML. Names have the prefixes of Names.h.
class CXml
{
public:
    using Attributes = std::vector<std::pair<char const*, std::string>>;

    /// bOddPrefixes: other prefixes are written, which stand for the same.
    explicit CXml(bool bOddPrefixes = false) : m_bOddPrefixes(bOddPrefixes) {}

    /// An element with what fnInside writes.
    template <std::invocable F>
    CXml& In(std::string_view strName, Attributes const& atAttributes, F fnInside)
    {
        Begin(strName, atAttributes);
        fnInside();
        End(strName);
        return *this;
    }
    template <std::invocable F>
    CXml& In(std::string_view strName, F fnInside)
    {
        return In(strName, {}, std::move(fnInside));
    }
    /// An element with a text.
    CXml& Put(std::string_view strName, std::string_view strText, Attributes const& atAttributes = {});
    CXml& Put(std::string_view strName, char const* szText) { return Put(strName, std::string_view(szText)); }
    CXml& Put(std::string_view strName, bool bValue) { return Put(strName, bValue ? "true" : "false"); }
    CXml& Put(std::string_view strName, double fValue) { return Put(strName, Number(fValue)); }
    template <std::integral Integer>
    CXml& Put(std::string_view strName, Integer nValue)
    {
        return Put(strName, std::to_string(nValue));
    }
    /// An element with nothing but attributes.
    CXml& Empty(std::string_view strName, Attributes const& atAttributes = {});
    /// One and the same element with each of the texts.
    CXml& Each(std::string_view strName, std::vector<std::string> const& astrTexts);
    /// The bounds of a number.
    template <class Number>
    CXml& Range(std::string_view strName, Number tLeast, Number tMost)
    {
        return In(strName, [&] { Put("tt:Min", tLeast).Put("tt:Max", tMost); });
    }
    /// What is XML already.
    CXml& Raw(std::string_view strXml);

    /// A name as it is written: for texts that are names, such as topics.
    std::string Name(std::string_view strName) const;
    /// xmlns attributes of all namespaces.
    Attributes Declarations() const;
    static std::string Number(double fValue);

    std::string const& Text() const { return m_strText; }
    bool IsOdd() const { return m_bOddPrefixes; }

private:
    void Begin(std::string_view strName, Attributes const& atAttributes);
    void End(std::string_view strName);
    void Open(std::string_view strName, Attributes const& atAttributes);
    void Escape(std::string_view strText);

    std::string m_strText;
    bool m_bOddPrefixes;
};
} // namespace onvif_device
