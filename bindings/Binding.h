#pragma once

#include "protocol/Operation.h"
#include "system/Module.h"

#include <array>
#include <span>

namespace Adapter_ProtocolSet
{
/// One entry point to look up: the operation it serves, and its name where that isn't prefix + operation.
struct tagLookUp
{
    eOperation eOp{};
    char const* szSymbol = nullptr;
};

/// What makes one binding differ from another, as data.
struct tagBindingProfile
{
    char const* szSource;                ///< source file named in the binding's own lines
    int nNullPathLine;                   ///< line of "Failed" for a null path
    char szPrefix[16];                   ///< of the entry points' names
    std::span<tagLookUp const> atLookUp; ///< the entry points, in look-up order
    int nOpenedLine = 0;                 ///< line of szOpened
    char const* szOpened = nullptr;      ///< written once the plug-in is open, null: nothing
    char const* szOpenFailed = nullptr;  ///< printed when it can't be opened, null: nothing

    /// Whether the binding asks the plug-in for this operation at all. Those it doesn't ask for succeed with 0.
    constexpr bool Serves(eOperation eOp) const
    {
        for (tagLookUp const& tRow : atLookUp)
        {
            if (tRow.eOp == eOp)
            {
                return true;
            }
        }
        return false;
    }
};

/// The entry points that every device protocol has, in look-up order: all operations but these ten.
consteval auto CommonLookUp()
{
    std::array<tagLookUp, g_nOperations - 10> atRows{};
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
            atRows.at(n++).eOp = eOp;
        }
    }
    return atRows;
}

/// atRows with atNew put in directly after eAfter.
template <std::size_t nRows, std::size_t nNew>
consteval auto Inserted(std::array<tagLookUp, nRows> const& atRows, eOperation eAfter, tagLookUp const (&atNew)[nNew])
{
    std::array<tagLookUp, nRows + nNew> atResult{};
    std::size_t n = 0;
    for (tagLookUp const& tRow : atRows)
    {
        atResult.at(n++) = tRow;
        if (tRow.eOp == eAfter)
        {
            for (tagLookUp const& tNew : atNew)
            {
                atResult.at(n++) = tNew;
            }
        }
    }
    return atResult;
}

/// A plug-in's entry points, by operation. Written while its binding is constructed, then only read: any number of
/// threads may call through it.
class CEntryTable
{
public:
    /// Opens the plug-in and looks every entry point up; each that is missing stays null and has its line.
    /// 4 for a null path, else 0.
    int Bind(Adapter_System::CModule& tModule, tagBindingProfile const& tProfile, char const* szPath);

    /// The entry point that serves Op, null when the plug-in lacks it.
    template <auto Op>
    auto Get() const
    {
        return As<typename tagCall<Op>::Function>(g_eNumber<Op>);
    }

    /// The same for an entry point whose parameters aren't its operation's.
    template <class F>
    F* As(eOperation eOp) const
    {
        return reinterpret_cast<F*>(m_apEntry[static_cast<std::size_t>(eOp)]);
    }

private:
    std::array<void*, g_nOperations> m_apEntry{};
};

/// The rule of every regular operation: the plug-in's answer, 1 when it lacks the entry point, 0 when the binding never
/// asks for it.
template <tagBindingProfile const& tProfile, auto Op, class... A>
int Forward(CEntryTable const& tEntry, A... tArguments)
{
    if constexpr (tProfile.Serves(g_eNumber<Op>))
    {
        const auto pfnEntry = tEntry.Get<Op>();
        return pfnEntry ? pfnEntry(tArguments...) : static_cast<int>(eResultNoEntryPoint);
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
