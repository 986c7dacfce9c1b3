#pragma once

#include "Export.h"

/// The operating system behind small classes.
namespace Adapter_System
{
/// One shared library opened at run time. Owns it: destroying the object closes the library; copies never share it.
/// Not synchronised: one thread at a time. Results: 0 done, 1 failed (a diagnostic line says why).
/// @ingroup classes
class TESSARO_API CModule
{
public:
    CModule();
    CModule(CModule const& tOther); ///< a module with no library open
    ~CModule();
    virtual CModule& operator=(CModule const& tOther); ///< changes nothing

    /// Forgets the library without closing it; answers 0.
    int Initialize();
    /// Opens szPath with lazy binding, its symbols kept local. A bare file name is looked for on the dynamic loader's
    /// search path. A library that is open already isn't closed first. A library whose constructor throws ends the
    /// process, after a line that names it.
    int Open(char const* szPath);
    /// pAddress: the symbol's address, null when the library lacks it; untouched when no library is open.
    int Export(char const* szName, void*& pAddress);
    /// Closes the library if one is open; always 0.
    int Close();

private:
    void* m_hModule;
};
} // namespace Adapter_System
