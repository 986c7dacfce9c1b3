#pragma once

#include <exception>
#include <string>
#include <utility>

namespace onvif_device
{
class CXml;

/// Whose mistake it was.
enum class eBlame : unsigned char
{
    Sender,
    Receiver,
    MustUnderstand,
    VersionMismatch,
};

/// A SOAP fault, thrown where something is wrong with a request.
class CFault : public std::exception
{
public:
    /// Subcodes with their prefix: "ter:InvalidArgVal"; empty: none.
    CFault(eBlame eWhose, std::string strCode, std::string strDetail, std::string strReason)
        : m_eWhose(eWhose), m_strCode(std::move(strCode)), m_strDetail(std::move(strDetail)),
          m_strReason(std::move(strReason))
    {
    }
    char const* what() const noexcept override { return m_strReason.c_str(); }
    /// The element in a body.
    void Write(CXml& tXml) const;
    /// The HTTP status that goes with it.
    unsigned Status() const;
    bool IsNotAuthorized() const { return m_strCode == "ter:NotAuthorized"; }

private:
    eBlame m_eWhose;
    std::string m_strCode;
    std::string m_strDetail; // the subcode of the subcode
    std::string m_strReason;
};

/// A value that can't be: the two subcodes of most faults.
[[noreturn]] void FailValue(std::string strDetail, std::string strReason);
/// The device can't do it.
[[noreturn]] void FailAction(std::string const& strDetail, std::string strReason);
[[noreturn]] void FailNotAuthorized(std::string strReason);
/// Throws what stands for an ePluginResult that isn't eResultOk. strDetail: for what isn't there.
void Require(int nResult, std::string const& strDetail = "ter:NoEntity");
} // namespace onvif_device
