#pragma once

#include <pugixml.hpp>

namespace onvif_device
{
/// Looks whether an element holds what it must, in the right order and in the right namespaces; throws CFault.
///
/// szElements names its children in their order: "ProfileToken Velocity{PanTilt[x y]? Zoom[x]?} Timeout?".
///
/// | Written     | Is                                                                          |
/// | ----------- | --------------------------------------------------------------------------- |
/// | `Name`      | an element that must be there once                                           |
/// | `?` `*` `+` | after a name: at most once; any number of times; once at least               |
/// | `[a b]`     | attributes that it must have                                                 |
/// | `{...}`     | its children                                                                 |
/// | `(A\|B)`     | one of these                                                                 |
/// | `p:Name`    | in the namespace of this prefix; else szPrefix's, and within `{}` that of tt |
/// | `...`       | here and after it, anything                                                  |
///
/// An element without `{}` holds text, of which nothing is looked at here.
void CheckElements(pugi::xml_node tElement, char const* szElements, char const* szPrefix);
} // namespace onvif_device
