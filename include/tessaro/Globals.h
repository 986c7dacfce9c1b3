/* The exported classes and objects, in C++20.
   The file below is found from the root in the source tree, and from here where it is installed. */
#include "adapter/Globals.h"
