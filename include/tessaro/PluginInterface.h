/* Records and codes, for authors of plug-ins in C99 and C++.
   The file below is found from the root in the source tree, and from here where it is installed. */
#include "protocol/PluginInterface.h"
