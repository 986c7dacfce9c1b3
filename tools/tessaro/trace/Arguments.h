#pragma once

#include "tools/tessaro/records/Blocks.h"

#include <RecordTables.h>
#include <cstring>
#include <fmt/format.h>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

/// A call's arguments as JSON, by their types and names.
namespace tessaro
{
/// The names of a row's arguments: "hLogin, ptPara".
inline std::vector<std::string> SplitNames(std::string const& strNames)
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

inline json HandleText(void const* h)
{
    return fmt::format("{:#x}", reinterpret_cast<std::uintptr_t>(h));
}

/// A call as the plug-in sees it: what decoding one argument needs to know of the others.
struct tagTracedCall
{
    std::string strOperation;
    std::map<std::string, unsigned long> tWords; ///< arguments that are numbers, by name

    unsigned int Word(char const* szName) const
    {
        const auto it = tWords.find(szName);
        return it == tWords.end() ? 0 : static_cast<unsigned int>(it->second);
    }
    bool Is(char const* szPart) const { return strOperation.find(szPart) != std::string::npos; }
    /// The call fills the records it gets.
    bool Reads() const { return Is("Get") || Is("Next"); }
    /// What is behind a pointer without a type; null: not known.
    tagRecord const* RecordBehind() const
    {
        return Is("IpcPara")          ? CameraRecord(Word("dwType"))
               : Is("SetMiscPara")    ? (Word("dwType") == eMiscFault ? &RecordOf<tagDeviceFault>() : nullptr)
               : Is("GetPack")        ? &RecordOf<tagRTSPPackageInfo>()
               : Is("Getpackageinfo") ? &RecordOf<tagRTSPPackageInfo>()
                                      : nullptr;
    }
};

/// As much of a caller's record as it says that there is.
inline json RecordJson(tagRecord const& tRecord, void const* pData)
{
    std::vector<unsigned char> abyCopy(tRecord.nSize);
    std::uint32_t dwSize = static_cast<std::uint32_t>(tRecord.nSize);
    if (tRecord.bSized)
    {
        std::memcpy(&dwSize, pData, sizeof dwSize);
    }
    if (dwSize > tRecord.nSize)
    {
        dwSize = static_cast<std::uint32_t>(tRecord.nSize);
    }
    std::memcpy(abyCopy.data(), pData, dwSize);
    return ToJson(tRecord, abyCopy.data());
}

template <class T>
concept HasRecord = requires
{
    RecordOf<T>();
}
&&std::is_class_v<T> && !std::is_same_v<T, tagConfigInformation> && !std::is_same_v<T, tagConfigInformationV2>;
template <class T>
concept IsBlock = std::is_same_v<T, tagConfigInformation> || std::is_same_v<T, tagConfigInformationV2>;

template <class Block>
json BlockJson(Block const& t, bool bWithRecord)
{
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

/// An argument before the call (bAfter: after it, where it was filled). Null: nothing to show.
template <class T>
json ArgumentJson(tagTracedCall const& tCall, std::string const& strName, T tValue, bool bAfter)
{
    using Pointed = std::remove_cv_t<std::remove_pointer_t<T>>;
    if constexpr (std::is_enum_v<T>)
    {
        return bAfter ? json(nullptr) : json(NameOf(tValue));
    }
    else if constexpr (std::is_integral_v<T>)
    {
        return bAfter ? json(nullptr) : json(tValue);
    }
    else if constexpr (std::is_class_v<T>) // by value: what callbacks get
    {
        return bAfter ? json(nullptr) : ToJson(tValue);
    }
    else if constexpr (std::is_same_v<T, void*> || std::is_same_v<T, IProtocol*>)
    {
        tagRecord const* const ptRecord = strName[0] == 'h' ? nullptr : tCall.RecordBehind();
        if (ptRecord && tValue)
        {
            return bAfter == tCall.Reads() ? RecordJson(*ptRecord, tValue) : json(nullptr);
        }
        return bAfter ? json(nullptr) : HandleText(tValue);
    }
    else if constexpr (std::is_same_v<T, void**>)
    {
        return bAfter && tValue ? HandleText(*tValue) : json(nullptr);
    }
    else if constexpr (std::is_function_v<Pointed>)
    {
        return bAfter ? json(nullptr) : json(tValue ? "function" : "none");
    }
    else if constexpr (std::is_same_v<Pointed, char>)
    {
        const bool bFilled = strName == "szDays";
        return !tValue || !strName.starts_with("sz") || bFilled != bAfter ? json(nullptr) : json(std::string(tValue));
    }
    else if constexpr (std::is_same_v<Pointed, unsigned char>)
    {
        return nullptr; // a hardware address or a buffer: its length says more
    }
    else if constexpr (IsBlock<Pointed>)
    {
        return tValue && (!bAfter || tCall.Reads()) ? BlockJson(*tValue, bAfter == tCall.Reads()) : json(nullptr);
    }
    else if constexpr (std::is_same_v<Pointed, tagBuffer>)
    {
        return bAfter || !tValue ? json(nullptr) : json{{"bytes", tValue->dwLength}};
    }
    else if constexpr (HasRecord<Pointed>)
    {
        // Both before and after where the call doesn't only fill it: what was agreed, found, written.
        return tValue && (bAfter || !tCall.Reads()) ? RecordJson(RecordOf<Pointed>(), tValue) : json(nullptr);
    }
    else if constexpr (std::is_enum_v<Pointed>)
    {
        return bAfter && tValue ? json(NameOf(*tValue)) : json(nullptr);
    }
    else
    {
        static_assert(std::is_integral_v<Pointed>);
        return tValue && (bAfter || strName == "pdwCount" || strName == "pdwLength") ? json(*tValue) : json(nullptr);
    }
}
} // namespace tessaro
