#include "tools/tessaro/records/Arguments.h"

#include "tools/tessaro/records/Blocks.h"
#include "tools/tessaro/records/Records.h"

#include <algorithm>
#include <cstring>
#include <fmt/format.h>

namespace tessaro
{
namespace
{
template <class T>
T Read(void const* pValue)
{
    T t;
    std::memcpy(&t, pValue, sizeof t);
    return t;
}

json NumberJson(tagArgumentType const& tType, void const* pValue)
{
    const long long llValue = NumberAt(tType, pValue);
    return tType.bSigned ? json(llValue) : json(static_cast<unsigned long long>(llValue));
}

json HandleJson(void const* h)
{
    return fmt::format("{:#x}", reinterpret_cast<std::uintptr_t>(h));
}

// As much of a caller's record as it says that there is.
json RecordJson(tagRecord const& tRecord, void const* pData)
{
    std::vector<unsigned char> abyCopy(tRecord.nSize);
    const std::size_t nGiven = tRecord.bSized ? Read<std::uint32_t>(pData) : tRecord.nSize;
    std::memcpy(abyCopy.data(), pData, std::min(nGiven, tRecord.nSize));
    return ToJson(tRecord, abyCopy.data());
}

template <class Block>
json BlockJson(void const* pBlock, bool bWithRecord)
{
    auto const& t = *static_cast<Block const*>(pBlock);
    tagRecord const* const ptRecord = BlockRecord(t.type);
    json tResult = {{"type", NameOf(static_cast<eConfigType>(t.type))}, {"index", t.index}};
    if (t.extra[1] != 0)
    {
        tResult["stream"] = NameOf(static_cast<eStreamKind>(t.extra[1]));
    }
    if (bWithRecord && ptRecord)
    {
        tResult["record"] = RecordJson(*ptRecord, t.data);
    }
    return tResult;
}

// What is passed itself.
json ValueJson(tagArgumentType const& tType, void const* pValue)
{
    switch (tType.eKind)
    {
    case eArgument::Number:
        return NumberJson(tType, pValue);
    case eArgument::Named:
        return NameOf(tType.pfnNames(), NumberAt(tType, pValue));
    case eArgument::Record:
        return ToJson(tType.pfnRecord(), pValue);
    default: // a callback
        return Read<void*>(pValue) ? "function" : "none";
    }
}

// What a pointer leads to; not null, but a pointer without a type.
json PointedJson(tagTracedCall const& tCall, std::string const& strName, tagArgumentType const& tType, void const* p,
                 bool bAfter)
{
    const bool bFilled = bAfter == tCall.Reads(); // now it holds what matters
    switch (tType.eKind)
    {
    case eArgument::Pointer:
    {
        tagRecord const* const ptRecord = strName[0] == 'h' ? nullptr : tCall.RecordBehind();
        return ptRecord && p ? (bFilled ? RecordJson(*ptRecord, p) : json(nullptr))
               : bAfter      ? json(nullptr)
                             : HandleJson(p);
    }
    case eArgument::NewHandle:
        return bAfter ? HandleJson(Read<void*>(p)) : json(nullptr);
    case eArgument::Text:
    {
        const bool bShown = strName.starts_with("sz") && bAfter == (strName == "szDays");
        return bShown ? json(static_cast<char const*>(p)) : json(nullptr);
    }
    case eArgument::Block:
        return !bAfter || tCall.Reads() ? BlockJson<tagConfigInformation>(p, bFilled) : json(nullptr);
    case eArgument::BlockV2:
        return !bAfter || tCall.Reads() ? BlockJson<tagConfigInformationV2>(p, bFilled) : json(nullptr);
    case eArgument::Buffer:
        return bAfter ? json(nullptr) : json{{"bytes", static_cast<tagBuffer const*>(p)->dwLength}};
    case eArgument::RecordAt:
        // Both before and after where the call doesn't only fill it: what was agreed, found, written.
        return bAfter || !tCall.Reads() ? RecordJson(tType.pfnRecord(), p) : json(nullptr);
    case eArgument::NamedAt:
        return bAfter ? json(NameOf(tType.pfnNames(), NumberAt(tType, p))) : json(nullptr);
    case eArgument::NumberAt:
        return bAfter || strName == "pdwCount" || strName == "pdwLength" ? NumberJson(tType, p) : json(nullptr);
    default: // a hardware address or a buffer: its length says more
        return nullptr;
    }
}
} // namespace

std::vector<std::string> SplitNames(std::string const& strNames)
{
    std::vector<std::string> astrNames;
    for (std::size_t nBegin = 0; nBegin < strNames.size();)
    {
        const auto nEnd = std::min(strNames.find(',', nBegin), strNames.size());
        astrNames.push_back(strNames.substr(nBegin, nEnd - nBegin));
        nBegin = strNames.find_first_not_of(' ', nEnd + 1);
    }
    return astrNames;
}

long long NumberAt(tagArgumentType const& tType, void const* pValue)
{
    const bool bSigned = tType.bSigned;
    switch (tType.nSize)
    {
    case 1:
        return Read<std::uint8_t>(pValue);
    case 2:
        return Read<std::uint16_t>(pValue);
    case 4:
        return bSigned ? Read<std::int32_t>(pValue) : static_cast<long long>(Read<std::uint32_t>(pValue));
    default:
        return Read<std::int64_t>(pValue);
    }
}

tagRecord const* tagTracedCall::RecordBehind() const
{
    const auto it = tWords.find("dwType");
    const auto dwType = it == tWords.end() ? 0 : static_cast<unsigned int>(it->second);
    return Is("IpcPara")                           ? CameraRecord(dwType)
           : Is("SetMiscPara")                     ? (dwType == eMiscFault ? &RecordOf<tagDeviceFault>() : nullptr)
           : Is("GetPack") || Is("Getpackageinfo") ? &RecordOf<tagRTSPPackageInfo>()
                                                   : nullptr;
}

json ArgumentJson(tagTracedCall const& tCall, std::string const& strName, tagArgumentType const& tType,
                  void const* pValue, bool bAfter)
{
    switch (tType.eKind)
    {
    case eArgument::Number:
    case eArgument::Named:
    case eArgument::Record:
    case eArgument::Function:
        return bAfter ? json(nullptr) : ValueJson(tType, pValue);
    default:
        break;
    }
    void const* const p = Read<void*>(pValue);
    return p || tType.eKind == eArgument::Pointer ? PointedJson(tCall, strName, tType, p, bAfter) : json(nullptr);
}
} // namespace tessaro
