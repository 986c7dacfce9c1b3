#pragma once

#include <cstdint>
#include <string>

namespace onvif_device
{
/// How a device's ONVIF face differs from a well-behaved one. The names in Quirks.cpp are those of a fleet file's table
/// `onvif` and of the commands on standard input.
struct tagQuirks
{
    // who is let in
    std::string strAuth = "any";   ///< any: token or HTTP digest; wsse; digest; both: both at once; none
    std::string strDigest = "md5"; ///< md5, sha256
    int64_t llWindow = 5;          ///< seconds that a token's Created may differ from the device's clock
    bool bReuseNonces = false;     ///< a token may come twice
    // what addresses say
    std::string strHost;        ///< host, or host:port, of all addresses that it announces; empty: as it was asked
    std::string strRtspHost;    ///< the same of stream addresses
    bool bOddPaths = false;     ///< services stand at unusual paths
    bool bReference = false;    ///< subscriptions are told apart by reference parameters, not by their address
    int64_t llProbeAnswers = 1; ///< times that it answers each probe
    // how answers look
    bool bOddPrefixes = false; ///< other namespace prefixes
    int64_t llFaultStatus = 0; ///< HTTP status of faults; 0: 400 and 500
    int64_t llHalf = 0;        ///< so many answers break off in the middle
    int64_t llEmpty = 0;       ///< so many answers have no body
    int64_t llPiece = 0;       ///< bytes in a chunk; 0: the whole answer at once
    int64_t llPieceMs = 0;     ///< between two chunks
    bool bCompress = false;    ///< gzip, for who takes it
    bool bSparse = false;      ///< all that may be left out is
    // what it can't do
    std::string strWithout;      ///< words: names of services and of actions
    bool bIgnoreTimeout = false; ///< a continuous move goes on after its time
    int64_t llMaxPullPoints = 8; ///< at once
};

/// Sets one by its name: "auth", "wsse". False: there is no such quirk, or it can't be that.
bool SetQuirk(tagQuirks& tQuirks, std::string const& strName, std::string const& strValue);
/// Whether a word stands in strWithout.
bool IsWithout(tagQuirks const& tQuirks, std::string const& strWord);
} // namespace onvif_device
