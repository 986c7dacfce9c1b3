#pragma once

#include "plugins/device/Session.h"

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace onvif_device
{
class CFace;

/// One request by HTTP, and its answer.
struct tagExchange
{
    /// @name The request
    /// @{
    std::string strMethod;
    std::string strPath;
    std::string strHost; ///< host and port, as the client wrote them
    bool bTls = false;
    std::string strContentType;
    std::string strBody;
    std::string strDigestUser;                                    ///< of the HTTP digest; empty: there is none
    std::function<bool(std::string const& strPassword)> fnDigest; ///< whether the HTTP digest is that of a password
    int64_t llArrivedUs = 0;                                      ///< device::SteadyUs
    /// @}

    /// @name What has been found out about it
    /// @{
    bool bAdmitted = false;      ///< the device's faults let it in
    bool bHangs = false;         ///< it gets no answer
    bool bAuthenticated = false; ///< tCaller holds
    device::tagCaller tCaller{{}, 0, 5000};
    /// @}

    /// @name The answer
    /// @{
    int64_t llWaitUntilUs = 0; ///< not yet: ask again then, or when something has happened to the device
    bool bDrop = false;        ///< none: the connection is closed
    unsigned nStatus = 200;
    std::string strType = "application/soap+xml; charset=utf-8";
    std::string strAnswer;
    bool bChallenge = false; ///< asks for an HTTP digest
    /// @}
};

/// Answers a request, or sets llWaitUntilUs or bDrop.
void Serve(CFace& tFace, tagExchange& tExchange);

/// @name Parts of it
/// @{

/// A SOAP request.
void ServeSoap(CFace& tFace, tagExchange& tExchange);
/// What is fetched, or sent to the device: pictures, log, firmware.
void ServeFile(CFace& tFace, tagExchange& tExchange);
/// @}
} // namespace onvif_device
