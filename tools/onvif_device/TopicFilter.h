#pragma once

#include <array>
#include <pugixml.hpp>
#include <string>

namespace onvif_device
{
/// How a topic expression may be written.
inline constexpr std::array<char const*, 2> g_aszTopicDialects = {
    "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet",
    "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete"};

/// The topics of a TopicExpression, with the prefixes of Names.h, for MatchesTopic; empty where there is none. Throws
/// CFault.
std::string TopicsOf(pugi::xml_node tExpression);
} // namespace onvif_device
