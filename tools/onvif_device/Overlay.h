#pragma once

#include "tools/onvif_device/Call.h"

namespace onvif_device
{
/// @name A place in the picture: ONVIF's runs from -1 to 1, left to right and bottom to top; the device's in
/// ten-thousandths from its top left.
/// @{
double ToX(uint32_t dwLeft);
double ToY(uint32_t dwTop);
uint32_t FromX(double fX);
uint32_t FromY(double fY);
/// The x and y attributes; throws CFault.
void ReadPoint(pugi::xml_node tPoint, double& fX, double& fY);
/// @}

/// The X, Y and Z attributes of a colour as red, green, blue; and back. Throws CFault.
CXml::Attributes ColourAttributes(uint32_t dwColour);
uint32_t ReadColour(pugi::xml_node tColour, uint32_t dwElse);
} // namespace onvif_device
