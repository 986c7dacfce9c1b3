#pragma once

/// What g_cVersion holds.
#define TESSARO_BUILD "Build 1.0.0.29024"
