#pragma once

#include "protocol/IProtocol.h"
#include "tools/tessaro/records/Tables.h"

#include <RecordTables.h>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <type_traits>
#include <vector>

/// The arguments of entry points and callbacks as data: enough to show one, and to make it again.
namespace tessaro
{
/// What an argument is.
enum class eArgument : unsigned char
{
    Number,
    Named,     ///< a value of an enumeration
    Record,    ///< by value: what callbacks get
    Pointer,   ///< void*: a handle if its name begins with h
    NewHandle, ///< where a handle goes
    Function,  ///< a callback
    Text,      ///< a text, or room for one
    Bytes,     ///< a hardware address, or a buffer
    Block,     ///< a tagConfigInformation
    BlockV2,   ///< a tagConfigInformationV2
    Buffer,    ///< a tagBuffer
    RecordAt,  ///< a pointer to a record
    NamedAt,   ///< where a value of an enumeration goes
    NumberAt,  ///< where a number is, or goes
};

struct tagArgumentType
{
    eArgument eKind;
    std::size_t nSize = 0; ///< of the number
    bool bSigned = false;
    tagNames const& (*pfnNames)() = nullptr;
    tagRecord const& (*pfnRecord)() = nullptr;
};

template <class T>
constexpr tagArgumentType ArgumentType()
{
    using Pointed = std::remove_cv_t<std::remove_pointer_t<T>>;
    if constexpr (std::is_enum_v<T>)
    {
        return {eArgument::Named, sizeof(T), true, &NamesOf<T>};
    }
    else if constexpr (std::is_integral_v<T>)
    {
        return {eArgument::Number, sizeof(T), std::is_signed_v<T>};
    }
    else if constexpr (std::is_class_v<T>)
    {
        return {eArgument::Record, 0, false, nullptr, &RecordOf<T>};
    }
    else if constexpr (std::is_same_v<T, void*> || std::is_same_v<T, IProtocol*>)
    {
        return {eArgument::Pointer};
    }
    else if constexpr (std::is_same_v<T, void**>)
    {
        return {eArgument::NewHandle};
    }
    else if constexpr (std::is_function_v<Pointed>)
    {
        return {eArgument::Function};
    }
    else if constexpr (std::is_same_v<Pointed, char>)
    {
        return {eArgument::Text};
    }
    else if constexpr (std::is_same_v<Pointed, unsigned char>)
    {
        return {eArgument::Bytes};
    }
    else if constexpr (std::is_same_v<Pointed, tagConfigInformation>)
    {
        return {eArgument::Block};
    }
    else if constexpr (std::is_same_v<Pointed, tagConfigInformationV2>)
    {
        return {eArgument::BlockV2};
    }
    else if constexpr (std::is_same_v<Pointed, tagBuffer>)
    {
        return {eArgument::Buffer};
    }
    else if constexpr (std::is_class_v<Pointed>)
    {
        return {eArgument::RecordAt, 0, false, nullptr, &RecordOf<Pointed>};
    }
    else if constexpr (std::is_enum_v<Pointed>)
    {
        return {eArgument::NamedAt, sizeof(Pointed), true, &NamesOf<Pointed>};
    }
    else
    {
        static_assert(std::is_integral_v<Pointed>);
        return {eArgument::NumberAt, sizeof(Pointed), std::is_signed_v<Pointed>};
    }
}

/// The names of a row's arguments: "hLogin, ptPara".
std::vector<std::string> SplitNames(std::string const& strNames);

/// The number, or the enumerator, that lies at pValue.
long long NumberAt(tagArgumentType const& tType, void const* pValue);

/// A call as the plug-in sees it: what handling one argument needs to know of the others.
struct tagTracedCall
{
    std::string strOperation;
    std::map<std::string, long long> tWords; ///< arguments that are numbers, by name

    /// The call fills the records it gets.
    bool Reads() const { return Is("Get") || Is("Next"); }
    /// What is behind a pointer without a type; null: not known.
    tagRecord const* RecordBehind() const;

private:
    bool Is(char const* szPart) const { return strOperation.find(szPart) != std::string::npos; }
};

/// The argument that lies at pValue as JSON, before the call (bAfter: after it, where it was filled). Null: nothing to
/// show.
nlohmann::ordered_json ArgumentJson(tagTracedCall const& tCall, std::string const& strName,
                                    tagArgumentType const& tType, void const* pValue, bool bAfter);
} // namespace tessaro
