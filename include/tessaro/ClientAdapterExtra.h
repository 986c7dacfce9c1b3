/* What the C API has beside, in C99 and C++.
   The file below is found from the root in the source tree, and from here where it is installed. */
#include "adapter/ClientAdapterExtra.h"
