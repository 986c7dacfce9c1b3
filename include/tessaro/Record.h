/* Older and newer records, for authors of plug-ins in C++20.
   The file below is found from the root in the source tree, and from here where it is installed. */
#include "protocol/Record.h"
