#pragma once

#include "protocol/Operation.h"
#include "system/Module.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace Adapter_ProtocolSet
{
/// An entry point whose name isn't prefix + operation.
struct tagIrregularName
{
    eOperation eOp;
    char const* szSymbol;
};

/// What makes one binding differ from another, as data.
struct tagBindingProfile
{
    char const* szSource;                 ///< source file named in the binding's own lines
    int nNullPathLine;                    ///< line of "Failed" for a null path
    char szPrefix[16];                    ///< of the entry points' names
    std::span<eOperation const> aeLookUp; ///< the operations with an entry point, in look-up order
    std::span<tagIrregularName const> atIrregular = {};
    int nOpenedLine = 0;                ///< line of szOpened
    char const* szOpened = nullptr;     ///< written once the plug-in is open, null: nothing
    char const* szOpenFailed = nullptr; ///< printed when it can't be opened, null: nothing

    /// Whether the binding asks the plug-in for this operation at all. Those it doesn't ask for succeed with 0.
    constexpr bool Serves(eOperation eOp) const { return std::ranges::find(aeLookUp, eOp) != aeLookUp.end(); }
};

/// Room for the name of any entry point.
inline constexpr std::size_t g_nSymbolRoom = []
{
    std::size_t nLongest = 0;
    for (const std::string_view strName : g_aszOperation)
    {
        nLongest = std::max(nLongest, strName.size());
    }
    return sizeof tagBindingProfile::szPrefix + nLongest;
}();

/// An operation and the name of its entry point; null: there is none.
struct tagEntryName
{
    eOperation eOp{};
    char const* szSymbol = nullptr;
};

/// What the profile looks up at place iEntry; the name may stand in szRoom.
tagEntryName EntryName(tagBindingProfile const& tProfile, std::size_t iEntry, char (&szRoom)[g_nSymbolRoom]);

/// The entry points that every device protocol has, in look-up order: all operations but these ten.
consteval auto CommonLookUp()
{
    std::array<eOperation, g_nOperations - 10> aeRows{};
    std::size_t n = 0;
    for (std::size_t i = 0; i < g_nOperations; ++i)
    {
        switch (const auto eOp = static_cast<eOperation>(i))
        {
        case eOperation::GetLoginLevel:
        case eOperation::GetLoginMac:
        case eOperation::GetPackInfo:
        case eOperation::GetLoginStatus:
        case eOperation::SetCallbackFunc:
        case eOperation::SetConfigBySn:
        case eOperation::SetRtspEvenCb:
        case eOperation::SetProductMode:
        case eOperation::GetPackageInfo:
        case eOperation::SetMaxChannel:
            break;
        default:
            aeRows.at(n++) = eOp;
        }
    }
    return aeRows;
}

/// aeRows with aeNew put in directly after eAfter.
template <std::size_t nRows, std::size_t nNew>
consteval auto Inserted(std::array<eOperation, nRows> const& aeRows, eOperation eAfter, eOperation const (&aeNew)[nNew])
{
    std::array<eOperation, nRows + nNew> aeResult{};
    const auto itAfter = std::ranges::find(aeRows, eAfter) + 1;
    const auto itNew = std::copy(aeRows.begin(), itAfter, aeResult.begin());
    std::copy(itAfter, aeRows.end(), std::copy(std::begin(aeNew), std::end(aeNew), itNew));
    return aeResult;
}

/// A plug-in's entry points, by operation. Written while its binding is constructed, then only read: any number of
/// threads may call through it.
class CEntryTable
{
public:
    /// Opens the plug-in and looks every entry point up; each that is missing stays null and has its line.
    /// 4 for a null path, else 0.
    int Bind(Adapter_System::CModule& tModule, tagBindingProfile const& tProfile, char const* szPath);

    CEntryTable() { m_apEntry.fill(MissingEntry()); }

    /// Calls the entry point that serves Op; 1 when the plug-in lacks it.
    template <auto Op, class... A>
    int Call(A... tArguments) const
    {
        return At<typename tagCall<Op>::Function>(g_eNumber<Op>)(tArguments...);
    }

    /// The entry point that serves Op, null when the plug-in lacks it.
    template <auto Op>
    auto Get() const
    {
        return As<typename tagCall<Op>::Function>(g_eNumber<Op>);
    }

    /// Whether the plug-in has the entry point.
    bool Has(eOperation eOp) const { return m_apEntry[static_cast<std::size_t>(eOp)] != MissingEntry(); }

    /// The same for an entry point whose parameters aren't its operation's.
    template <class F>
    F* As(eOperation eOp) const
    {
        return Has(eOp) ? At<F>(eOp) : nullptr;
    }

private:
    /// Stands where the plug-in has no entry point, so that a call needn't look whether it has. Whatever it is called
    /// with stays unread: the caller of a C function puts its arguments there and takes them away again.
    static int Missing();
    static void* MissingEntry() { return reinterpret_cast<void*>(&Missing); }

    template <class F>
    F* At(eOperation eOp) const
    {
        return reinterpret_cast<F*>(m_apEntry[static_cast<std::size_t>(eOp)]);
    }

    std::array<void*, g_nOperations> m_apEntry;
};

/// The rule of every regular operation: the plug-in's answer, 1 when it lacks the entry point, 0 when the binding never
/// asks for it.
template <tagBindingProfile const& tProfile, auto Op, class... A>
int Forward(CEntryTable const& tEntry, A... tArguments)
{
    if constexpr (tProfile.Serves(g_eNumber<Op>))
    {
        return tEntry.Call<Op>(tArguments...);
    }
    else
    {
        return eResultOk;
    }
}

/// One override of a binding: its own Run for the operation if it declares one, else the regular rule.
#define OVERRIDDEN(name, ...)                                                                                          \
    int name(PARAMETERS(&CClientProtocolBase::name, __VA_ARGS__)) override                                             \
    {                                                                                                                  \
        return Run(tagCall<&CClientProtocolBase::name> {} __VA_OPT__(,) __VA_ARGS__);                                  \
    }
} // namespace Adapter_ProtocolSet
